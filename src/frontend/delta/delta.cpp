// Deltas and accelerations of streams and of whole arrays, and the copy of statics into wider rows.
#include "kels/delta.h"

#include "core/check.h"
#include "frontend/delta/aurora.h"
#include "frontend/delta/stream.h"
#include "frontend/delta/whole.h"

using namespace kels;
using namespace kels::delta;

namespace {

// ---- checks --------------------------------------------------------------------------------------------------------

// Of one block of a stream whose output rows hold `parts` blocks of `width` columns.
template <class... P>
KelStatus blockFault(int width, int dstStep, int height, int mode, int parts, int firstHeight, const P*... pointers) {
    if (anyNull(pointers...)) return kelStatusNullPtr;
    if (width < 1 || height < 0) return kelStatusSize;
    if (height == 0 && (mode & kelDeltaBlockLast) == 0) return kelStatusSize;
    if (stepTooSmall(dstStep, width, parts)) return kelStatusStep;
    if ((mode & kelDeltaBlockFirst) != 0 && height < firstHeight) return kelStatusSize;
    return kelStatusOk;
}

// Statics and `orders` derivatives over +-half rows.
template <int half, int orders, class... P>
KelStatus streamFault(int width, int dstStep, int height, int mode, const P*... pointers) {
    return blockFault(width, dstStep, height, mode, orders + 1, (orders + 1) * half, pointers...);
}

template <class... P>
KelStatus auroraFault(int dstStep, int height, int mode, const P*... pointers) {
    return blockFault(kAuroraStatics, dstStep, height, mode, 3, kAuroraHistory, pointers...);
}

template <class... P>
KelStatus evalFault(int height, int step, int width, int offset, int winHalf, const P*... pointers) {
    if (anyNull(pointers...)) return kelStatusNullPtr;
    if (height < 1 || width < 1 || winHalf < 1 || offset < 0) return kelStatusSize;
    if (height / 2 < winHalf) return kelStatusSize;
    if (stepTooSmall(step, width, 2, offset)) return kelStatusStep;
    return kelStatusOk;
}

KelStatus copyFault(int width, int dstStep, int height, const void* pSrc, const void* pDst) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (height < 1 || width < 1) return kelStatusSize;
    if (stepTooSmall(dstStep, width)) return kelStatusStep;
    return kelStatusOk;
}

}  // namespace

// ---- one multiplier for each derivative ----------------------------------------------------------------------------

KelStatus kelsDelta_Win1_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height, Kel32f val,
                                int mode) {
    if (const KelStatus fault = streamFault<1, 1>(width, dstStep, height, mode, pSrc, pDst)) return fault;
    streamDeltas<1, 1>(FloatArithmetic(), pSrc, width, pDst, dstStep, height, mode, ScalarMultipliers<Kel32f>{val, 0});
    return kelStatusOk;
}
KelStatus kelsDelta_Win2_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height, Kel32f val,
                                int mode) {
    if (const KelStatus fault = streamFault<2, 1>(width, dstStep, height, mode, pSrc, pDst)) return fault;
    streamDeltas<2, 1>(FloatArithmetic(), pSrc, width, pDst, dstStep, height, mode, ScalarMultipliers<Kel32f>{val, 0});
    return kelStatusOk;
}
KelStatus kelsDelta_Win1_16s_D2Sfs(const Kel16s* pSrc, int width, Kel16s* pDst, int dstStep, int height, Kel16s val,
                                   int mode, int scaleFactor) {
    if (const KelStatus fault = streamFault<1, 1>(width, dstStep, height, mode, pSrc, pDst)) return fault;
    streamDeltas<1, 1>(FixedArithmetic(scaleFactor), pSrc, width, pDst, dstStep, height, mode,
                       ScalarMultipliers<Kel16s>{val, 0});
    return kelStatusOk;
}
KelStatus kelsDelta_Win2_16s_D2Sfs(const Kel16s* pSrc, int width, Kel16s* pDst, int dstStep, int height, Kel16s val,
                                   int mode, int scaleFactor) {
    if (const KelStatus fault = streamFault<2, 1>(width, dstStep, height, mode, pSrc, pDst)) return fault;
    streamDeltas<2, 1>(FixedArithmetic(scaleFactor), pSrc, width, pDst, dstStep, height, mode,
                       ScalarMultipliers<Kel16s>{val, 0});
    return kelStatusOk;
}
KelStatus kelsDeltaDelta_Win1_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height, Kel32f valD,
                                     Kel32f valDD, int mode) {
    if (const KelStatus fault = streamFault<1, 2>(width, dstStep, height, mode, pSrc, pDst)) return fault;
    streamDeltas<1, 2>(FloatArithmetic(), pSrc, width, pDst, dstStep, height, mode,
                       ScalarMultipliers<Kel32f>{valD, valDD});
    return kelStatusOk;
}
KelStatus kelsDeltaDelta_Win2_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height, Kel32f valD,
                                     Kel32f valDD, int mode) {
    if (const KelStatus fault = streamFault<2, 2>(width, dstStep, height, mode, pSrc, pDst)) return fault;
    streamDeltas<2, 2>(FloatArithmetic(), pSrc, width, pDst, dstStep, height, mode,
                       ScalarMultipliers<Kel32f>{valD, valDD});
    return kelStatusOk;
}
KelStatus kelsDeltaDelta_Win1_16s_D2Sfs(const Kel16s* pSrc, int width, Kel16s* pDst, int dstStep, int height,
                                        Kel16s valD, Kel16s valDD, int mode, int scaleFactor) {
    if (const KelStatus fault = streamFault<1, 2>(width, dstStep, height, mode, pSrc, pDst)) return fault;
    streamDeltas<1, 2>(FixedArithmetic(scaleFactor), pSrc, width, pDst, dstStep, height, mode,
                       ScalarMultipliers<Kel16s>{valD, valDD});
    return kelStatusOk;
}
KelStatus kelsDeltaDelta_Win2_16s_D2Sfs(const Kel16s* pSrc, int width, Kel16s* pDst, int dstStep, int height,
                                        Kel16s valD, Kel16s valDD, int mode, int scaleFactor) {
    if (const KelStatus fault = streamFault<2, 2>(width, dstStep, height, mode, pSrc, pDst)) return fault;
    streamDeltas<2, 2>(FixedArithmetic(scaleFactor), pSrc, width, pDst, dstStep, height, mode,
                       ScalarMultipliers<Kel16s>{valD, valDD});
    return kelStatusOk;
}

// ---- one multiplier a column ---------------------------------------------------------------------------------------

KelStatus kelsDeltaMul_Win1_32f_D2(const Kel32f* pSrc, const Kel32f* pVal, int width, Kel32f* pDst, int dstStep,
                                   int height, int mode) {
    if (const KelStatus fault = streamFault<1, 1>(width, dstStep, height, mode, pSrc, pVal, pDst)) return fault;
    streamDeltas<1, 1>(FloatArithmetic(), pSrc, width, pDst, dstStep, height, mode,
                       ColumnMultipliers<Kel32f>{pVal, width});
    return kelStatusOk;
}
KelStatus kelsDeltaMul_Win2_32f_D2(const Kel32f* pSrc, const Kel32f* pVal, int width, Kel32f* pDst, int dstStep,
                                   int height, int mode) {
    if (const KelStatus fault = streamFault<2, 1>(width, dstStep, height, mode, pSrc, pVal, pDst)) return fault;
    streamDeltas<2, 1>(FloatArithmetic(), pSrc, width, pDst, dstStep, height, mode,
                       ColumnMultipliers<Kel32f>{pVal, width});
    return kelStatusOk;
}
KelStatus kelsDeltaMul_Win1_16s_D2Sfs(const Kel16s* pSrc, const Kel16s* pVal, int width, Kel16s* pDst, int dstStep,
                                      int height, int mode, int scaleFactor) {
    if (const KelStatus fault = streamFault<1, 1>(width, dstStep, height, mode, pSrc, pVal, pDst)) return fault;
    streamDeltas<1, 1>(FixedArithmetic(scaleFactor), pSrc, width, pDst, dstStep, height, mode,
                       ColumnMultipliers<Kel16s>{pVal, width});
    return kelStatusOk;
}
KelStatus kelsDeltaMul_Win2_16s_D2Sfs(const Kel16s* pSrc, const Kel16s* pVal, int width, Kel16s* pDst, int dstStep,
                                      int height, int mode, int scaleFactor) {
    if (const KelStatus fault = streamFault<2, 1>(width, dstStep, height, mode, pSrc, pVal, pDst)) return fault;
    streamDeltas<2, 1>(FixedArithmetic(scaleFactor), pSrc, width, pDst, dstStep, height, mode,
                       ColumnMultipliers<Kel16s>{pVal, width});
    return kelStatusOk;
}
KelStatus kelsDeltaDeltaMul_Win1_32f_D2(const Kel32f* pSrc, const Kel32f* pVal, int width, Kel32f* pDst, int dstStep,
                                        int height, int mode) {
    if (const KelStatus fault = streamFault<1, 2>(width, dstStep, height, mode, pSrc, pVal, pDst)) return fault;
    streamDeltas<1, 2>(FloatArithmetic(), pSrc, width, pDst, dstStep, height, mode,
                       ColumnMultipliers<Kel32f>{pVal, width});
    return kelStatusOk;
}
KelStatus kelsDeltaDeltaMul_Win2_32f_D2(const Kel32f* pSrc, const Kel32f* pVal, int width, Kel32f* pDst, int dstStep,
                                        int height, int mode) {
    if (const KelStatus fault = streamFault<2, 2>(width, dstStep, height, mode, pSrc, pVal, pDst)) return fault;
    streamDeltas<2, 2>(FloatArithmetic(), pSrc, width, pDst, dstStep, height, mode,
                       ColumnMultipliers<Kel32f>{pVal, width});
    return kelStatusOk;
}
KelStatus kelsDeltaDeltaMul_Win1_16s_D2Sfs(const Kel16s* pSrc, const Kel16s* pVal, int width, Kel16s* pDst, int dstStep,
                                           int height, int mode, int scaleFactor) {
    if (const KelStatus fault = streamFault<1, 2>(width, dstStep, height, mode, pSrc, pVal, pDst)) return fault;
    streamDeltas<1, 2>(FixedArithmetic(scaleFactor), pSrc, width, pDst, dstStep, height, mode,
                       ColumnMultipliers<Kel16s>{pVal, width});
    return kelStatusOk;
}
KelStatus kelsDeltaDeltaMul_Win2_16s_D2Sfs(const Kel16s* pSrc, const Kel16s* pVal, int width, Kel16s* pDst, int dstStep,
                                           int height, int mode, int scaleFactor) {
    if (const KelStatus fault = streamFault<2, 2>(width, dstStep, height, mode, pSrc, pVal, pDst)) return fault;
    streamDeltas<2, 2>(FixedArithmetic(scaleFactor), pSrc, width, pDst, dstStep, height, mode,
                       ColumnMultipliers<Kel16s>{pVal, width});
    return kelStatusOk;
}

// ---- Aurora --------------------------------------------------------------------------------------------------------

KelStatus kelsDeltaDelta_Aurora_32f_D2(const Kel32f* pSrc, Kel32f* pDst, int dstStep, int height, int mode) {
    if (const KelStatus fault = auroraFault(dstStep, height, mode, pSrc, pDst)) return fault;
    streamAurora(FloatArithmetic(), pSrc, static_cast<const Kel32f*>(nullptr), pDst, dstStep, height, mode);
    return kelStatusOk;
}
KelStatus kelsDeltaDelta_Aurora_16s_D2Sfs(const Kel16s* pSrc, Kel16s* pDst, int dstStep, int height, int mode,
                                          int scaleFactor) {
    if (const KelStatus fault = auroraFault(dstStep, height, mode, pSrc, pDst)) return fault;
    streamAurora(FixedArithmetic(scaleFactor), pSrc, static_cast<const Kel16s*>(nullptr), pDst, dstStep, height, mode);
    return kelStatusOk;
}
KelStatus kelsDeltaDeltaMul_Aurora_32f_D2(const Kel32f* pSrc, const Kel32f* pVal, Kel32f* pDst, int dstStep, int height,
                                          int mode) {
    if (const KelStatus fault = auroraFault(dstStep, height, mode, pSrc, pVal, pDst)) return fault;
    streamAurora(FloatArithmetic(), pSrc, pVal, pDst, dstStep, height, mode);
    return kelStatusOk;
}
KelStatus kelsDeltaDeltaMul_Aurora_16s_D2Sfs(const Kel16s* pSrc, const Kel16s* pVal, Kel16s* pDst, int dstStep,
                                             int height, int mode, int scaleFactor) {
    if (const KelStatus fault = auroraFault(dstStep, height, mode, pSrc, pVal, pDst)) return fault;
    streamAurora(FixedArithmetic(scaleFactor), pSrc, pVal, pDst, dstStep, height, mode);
    return kelStatusOk;
}

// ---- whole arrays --------------------------------------------------------------------------------------------------

KelStatus kelsEvalDelta_32f_D2(Kel32f* pSrcDst, int height, int step, int width, int offset, int winHalf, Kel32f val) {
    if (const KelStatus fault = evalFault(height, step, width, offset, winHalf, pSrcDst)) return fault;
    evalDeltas(FloatArithmetic(), pSrcDst + offset, height, step, width, winHalf, ScalarMultipliers<Kel32f>{val, 0});
    return kelStatusOk;
}
KelStatus kelsEvalDelta_16s_D2Sfs(Kel16s* pSrcDst, int height, int step, int width, int offset, int winHalf, Kel16s val,
                                  int scaleFactor) {
    if (const KelStatus fault = evalFault(height, step, width, offset, winHalf, pSrcDst)) return fault;
    evalDeltas(FixedArithmetic(scaleFactor), pSrcDst + offset, height, step, width, winHalf,
               ScalarMultipliers<Kel16s>{val, 0});
    return kelStatusOk;
}
KelStatus kelsEvalDeltaMul_32f_D2(Kel32f* pSrcDst, const Kel32f* pVal, int height, int step, int width, int offset,
                                  int winHalf) {
    if (const KelStatus fault = evalFault(height, step, width, offset, winHalf, pSrcDst, pVal)) return fault;
    const ColumnMultipliers<Kel32f> multipliers{pVal, width};
    multiplyStatics(FloatArithmetic(), pSrcDst + offset, height, step, width, multipliers);
    evalDeltas(FloatArithmetic(), pSrcDst + offset, height, step, width, winHalf, multipliers);
    return kelStatusOk;
}
KelStatus kelsEvalDeltaMul_16s_D2Sfs(Kel16s* pSrcDst, const Kel16s* pVal, int height, int step, int width, int offset,
                                     int winHalf, int scaleFactor) {
    if (const KelStatus fault = evalFault(height, step, width, offset, winHalf, pSrcDst, pVal)) return fault;
    const ColumnMultipliers<Kel16s> multipliers{pVal, width};
    multiplyStatics(FixedArithmetic(scaleFactor), pSrcDst + offset, height, step, width, multipliers);
    evalDeltas(FixedArithmetic(scaleFactor), pSrcDst + offset, height, step, width, winHalf, multipliers);
    return kelStatusOk;
}

// ---- short names ---------------------------------------------------------------------------------------------------

KelStatus kelsDeltaW1_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height, Kel32f val,
                             int mode) {
    if (const KelStatus fault = streamFault<1, 1>(width, dstStep, height, mode, pSrc, pDst)) return fault;
    streamDeltas<1, 1>(FloatArithmetic(), pSrc, width, pDst, dstStep, height, mode, ScalarMultipliers<Kel32f>{val, 0});
    return kelStatusOk;
}
KelStatus kelsDeltaW2_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height, Kel32f val,
                             int mode) {
    if (const KelStatus fault = streamFault<2, 1>(width, dstStep, height, mode, pSrc, pDst)) return fault;
    streamDeltas<2, 1>(FloatArithmetic(), pSrc, width, pDst, dstStep, height, mode, ScalarMultipliers<Kel32f>{val, 0});
    return kelStatusOk;
}
KelStatus kelsDeltaDeltaW1_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height, Kel32f valD,
                                  Kel32f valDD, int mode) {
    if (const KelStatus fault = streamFault<1, 2>(width, dstStep, height, mode, pSrc, pDst)) return fault;
    streamDeltas<1, 2>(FloatArithmetic(), pSrc, width, pDst, dstStep, height, mode,
                       ScalarMultipliers<Kel32f>{valD, valDD});
    return kelStatusOk;
}
KelStatus kelsDeltaDeltaW2_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height, Kel32f valD,
                                  Kel32f valDD, int mode) {
    if (const KelStatus fault = streamFault<2, 2>(width, dstStep, height, mode, pSrc, pDst)) return fault;
    streamDeltas<2, 2>(FloatArithmetic(), pSrc, width, pDst, dstStep, height, mode,
                       ScalarMultipliers<Kel32f>{valD, valDD});
    return kelStatusOk;
}

// ---- copy ----------------------------------------------------------------------------------------------------------

KelStatus kelsCopyColumn_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height) {
    if (const KelStatus fault = copyFault(width, dstStep, height, pSrc, pDst)) return fault;
    copyRows(pSrc, width, pDst, dstStep, width, height);
    return kelStatusOk;
}
KelStatus kelsCopyColumn_16s_D2(const Kel16s* pSrc, int width, Kel16s* pDst, int dstStep, int height) {
    if (const KelStatus fault = copyFault(width, dstStep, height, pSrc, pDst)) return fault;
    copyRows(pSrc, width, pDst, dstStep, width, height);
    return kelStatusOk;
}
KelStatus kelsCopyCol_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height) {
    if (const KelStatus fault = copyFault(width, dstStep, height, pSrc, pDst)) return fault;
    copyRows(pSrc, width, pDst, dstStep, width, height);
    return kelStatusOk;
}
