// Frame conditioning: offset compensation, zero mean, energy normalisation, sign changes, copy with padding.
#include "kels/frame.h"

#include "core/check.h"
#include "frontend/frame_kernels.h"

using namespace kels;
using namespace kels::frame;

namespace {

constexpr int kLongestQ15 = 65535;

template <class... P>
KelStatus offsetQ15Fault(int len, int valQ15, const P*... pointers) {
    if (anyNull(pointers...)) return kelStatusNullPtr;
    if (len < 1 || len > kLongestQ15) return kelStatusSize;
    if (valQ15 < 0) return kelStatusBadArg;
    return kelStatusOk;
}

KelStatus columnFault(int step, int height, const void* pSrcDst) {
    if (anyNull(pSrcDst)) return kelStatusNullPtr;
    if (step < 1 || height < 1) return kelStatusSize;
    return kelStatusOk;
}

KelStatus paddingFault(int lenSrc, int lenDst, const void* pSrc, const void* pDst) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (lenSrc < 1 || lenDst < 1 || lenDst < lenSrc) return kelStatusSize;
    return kelStatusOk;
}

}  // namespace

// ---- offset compensation -------------------------------------------------------------------------------------------

KelStatus kelsCompensateOffset_32f(const Kel32f* pSrc, Kel32f* pDst, int len, Kel32f* pSrcLast, Kel32f dstLast,
                                   Kel32f val) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst, pSrcLast)) return fault;
    compensateOffset(pSrc, pDst, len, pSrcLast, dstLast, val);
    return kelStatusOk;
}
KelStatus kelsCompensateOffset_32f_I(Kel32f* pSrcDst, int len, Kel32f* pSrcLast, Kel32f dstLast, Kel32f val) {
    if (const KelStatus fault = vectorFault(len, pSrcDst, pSrcLast)) return fault;
    compensateOffset(pSrcDst, pSrcDst, len, pSrcLast, dstLast, val);
    return kelStatusOk;
}
KelStatus kelsCompensateOffset_16s(const Kel16s* pSrc, Kel16s* pDst, int len, Kel16s* pSrcLast, Kel16s dstLast,
                                   Kel32f val) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst, pSrcLast)) return fault;
    const NearestScope nearest;
    if (-1.0f <= val && val <= 1.0f) {
        compensateOffsetQ12(pSrc, pDst, len, pSrcLast, dstLast, val);
    } else {
        compensateOffset(pSrc, pDst, len, pSrcLast, dstLast, val);
    }
    return kelStatusOk;
}
KelStatus kelsCompensateOffset_16s_I(Kel16s* pSrcDst, int len, Kel16s* pSrcLast, Kel16s dstLast, Kel32f val) {
    if (const KelStatus fault = vectorFault(len, pSrcDst, pSrcLast)) return fault;
    const NearestScope nearest;
    compensateOffset(pSrcDst, pSrcDst, len, pSrcLast, dstLast, val);
    return kelStatusOk;
}
KelStatus kelsCompensateOffsetQ15_16s(const Kel16s* pSrc, Kel16s* pDst, int len, Kel16s* pSrcLast, Kel16s dstLast,
                                      Kel16s valQ15) {
    if (const KelStatus fault = offsetQ15Fault(len, valQ15, pSrc, pDst, pSrcLast)) return fault;
    compensateOffsetQ15(pSrc, pDst, len, pSrcLast, dstLast, valQ15);
    return kelStatusOk;
}
KelStatus kelsCompensateOffsetQ15_16s_I(Kel16s* pSrcDst, int len, Kel16s* pSrcLast, Kel16s dstLast, Kel16s valQ15) {
    if (const KelStatus fault = offsetQ15Fault(len, valQ15, pSrcDst, pSrcLast)) return fault;
    compensateOffsetQ15(pSrcDst, pSrcDst, len, pSrcLast, dstLast, valQ15);
    return kelStatusOk;
}

// ---- zero mean -----------------------------------------------------------------------------------------------------

KelStatus kelsZeroMean_16s(Kel16s* pSrcDst, int len) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pSrcDst)) return kelStatusNullPtr;
    zeroMean(pSrcDst, len);
    return kelStatusOk;
}

// ---- energy normalisation ------------------------------------------------------------------------------------------

KelStatus kelsNormEnergy_32f(Kel32f* pSrcDst, int step, int height, Kel32f silFloor, Kel32f enScale) {
    if (const KelStatus fault = columnFault(step, height, pSrcDst)) return fault;
    normaliseEnergy(pSrcDst, step, height, silFloor, largestEnergy(pSrcDst, step, height), 1.0f, enScale);
    return kelStatusOk;
}
KelStatus kelsNormEnergy_16s(Kel16s* pSrcDst, int step, int height, Kel16s silFloor, Kel16s valShift, Kel32f enScale) {
    if (const KelStatus fault = columnFault(step, height, pSrcDst)) return fault;
    const NearestScope nearest;
    normaliseEnergy(pSrcDst, step, height, silFloor, largestEnergy(pSrcDst, step, height), valShift, enScale);
    return kelStatusOk;
}
KelStatus kelsNormEnergy_RT_32f(Kel32f* pSrcDst, int step, int height, Kel32f silFloor, Kel32f maxE, Kel32f enScale) {
    if (const KelStatus fault = columnFault(step, height, pSrcDst)) return fault;
    normaliseEnergy(pSrcDst, step, height, silFloor, maxE, 1.0f, enScale);
    return kelStatusOk;
}
KelStatus kelsNormEnergy_RT_16s(Kel16s* pSrcDst, int step, int height, Kel16s silFloor, Kel16s maxE, Kel16s valShift,
                                Kel32f enScale) {
    if (const KelStatus fault = columnFault(step, height, pSrcDst)) return fault;
    const NearestScope nearest;
    normaliseEnergy(pSrcDst, step, height, silFloor, maxE, valShift, enScale);
    return kelStatusOk;
}

// ---- sign changes --------------------------------------------------------------------------------------------------

KelStatus kelsSignChangeRate_16s(const Kel16s* pSrc, int len, Kel32s* pRes) {
    if (const KelStatus fault = vectorFault(len, pSrc, pRes)) return fault;
    *pRes = static_cast<Kel32s>(countNegativeProducts(pSrc, len));
    return kelStatusOk;
}
KelStatus kelsSignChangeRate_32f(const Kel32f* pSrc, int len, Kel32f* pRes) {
    if (const KelStatus fault = vectorFault(len, pSrc, pRes)) return fault;
    *pRes = static_cast<Kel32f>(countNegativeProducts(pSrc, len));
    return kelStatusOk;
}
KelStatus kelsSignChangeRate_Count0_16s(const Kel16s* pSrc, int len, Kel32s* pRes) {
    if (const KelStatus fault = vectorFault(len, pSrc, pRes)) return fault;
    *pRes = static_cast<Kel32s>(countSignSteps(pSrc, len) / 2);
    return kelStatusOk;
}
KelStatus kelsSignChangeRate_Count0_32f(const Kel32f* pSrc, int len, Kel32f* pRes) {
    if (const KelStatus fault = vectorFault(len, pSrc, pRes)) return fault;
    *pRes = static_cast<Kel32f>(countSignSteps(pSrc, len)) * 0.5f;
    return kelStatusOk;
}
KelStatus kelsSignChangeRateXor_32f(const Kel32f* pSrc, int len, Kel32s* pRes) {
    if (const KelStatus fault = vectorFault(len, pSrc, pRes)) return fault;
    *pRes = static_cast<Kel32s>(countSignBitChanges(pSrc, len));
    return kelStatusOk;
}

// ---- copy with padding ---------------------------------------------------------------------------------------------

KelStatus kelsCopyWithPadding_16s(const Kel16s* pSrc, int lenSrc, Kel16s* pDst, int lenDst) {
    if (const KelStatus fault = paddingFault(lenSrc, lenDst, pSrc, pDst)) return fault;
    copyWithPadding(pSrc, toSize(lenSrc), pDst, toSize(lenDst));
    return kelStatusOk;
}
KelStatus kelsCopyWithPadding_32f(const Kel32f* pSrc, int lenSrc, Kel32f* pDst, int lenDst) {
    if (const KelStatus fault = paddingFault(lenSrc, lenDst, pSrc, pDst)) return fault;
    copyWithPadding(pSrc, toSize(lenSrc), pDst, toSize(lenDst));
    return kelStatusOk;
}
