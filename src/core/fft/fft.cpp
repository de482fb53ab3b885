#include <cmath>
#include <limits>

#include "core/check.h"
#include "core/fft/pack.h"
#include "core/fft/spec.h"
#include "core/fft/transform.h"
#include "kels/core.h"
#include "kels/fft.h"

using namespace kels;

namespace {

bool isSpec(const KelFFTSpec_R_32f* spec) {
    return spec->identifier == kFloatSpec;
}
bool isSpec(const KelFFTSpec_R_16s32s* spec) {
    return spec->identifier == kIntegerSpec;
}

// False for a flag that is none of the four.
bool setScaling(KelFFTSpec_R_32f& spec, int flag) {
    const auto n = static_cast<long double>(int64_t{1} << spec.order);
    spec.factor = 1;
    switch (flag) {
        case kelFftDivFwdByN:
            spec.forwardScaled = 1;
            spec.factor = static_cast<Kel32f>(1 / n);
            return true;
        case kelFftDivInvByN:
            spec.inverseScaled = 1;
            spec.factor = static_cast<Kel32f>(1 / n);
            return true;
        case kelFftDivBySqrtN:
            spec.forwardScaled = 1;
            spec.inverseScaled = 1;
            spec.factor = static_cast<Kel32f>(1 / std::sqrt(n));
            return true;
        case kelFftNoDiv:
            return true;
        default:
            return false;
    }
}

}  // namespace

// ---- specifications ------------------------------------------------------------------------------------------------

KelStatus kelsFFTInitAlloc_R_32f(KelFFTSpec_R_32f** ppFFTSpec, int order, int flag, int hint) {
    if (anyNull(ppFFTSpec)) return kelStatusNullPtr;
    if (order < 0 || order > kMaxFftOrder) return kelStatusFftOrder;
    auto* const spec = allocateCleared<KelFFTSpec_R_32f>(1);
    if (spec == nullptr) return kelStatusNoMemory;
    spec->identifier = kFloatSpec;
    spec->order = order;
    spec->hint = hint;
    KelStatus status = kelStatusOk;
    if (!setScaling(*spec, flag)) {
        status = kelStatusFftFlag;
    } else if (!buildTables(*spec)) {
        status = kelStatusNoMemory;
    }
    if (status != kelStatusOk) {
        kelsFree(spec);
        return status;
    }
    *ppFFTSpec = spec;
    return kelStatusOk;
}

KelStatus kelsFFTInitAlloc_R_16s32s(KelFFTSpec_R_16s32s** ppFFTSpec, int order, int flag, int hint) {
    if (anyNull(ppFFTSpec)) return kelStatusNullPtr;
    if (order < 0 || order > kMaxFftOrder) return kelStatusFftOrder;
    const int64_t bufferBytes = integerBufferBytes(order);
    if (bufferBytes > std::numeric_limits<Kel32s>::max()) return kelStatusNoMemory;
    auto* const spec = allocateCleared<KelFFTSpec_R_16s32s>(1);
    if (spec == nullptr) return kelStatusNoMemory;
    const KelStatus status = kelsFFTInitAlloc_R_32f(&spec->inner, order, flag, hint);
    if (status != kelStatusOk) {
        kelsFree(spec);
        return status;
    }
    spec->identifier = kIntegerSpec;
    spec->order = order;
    spec->flag = flag;
    spec->hint = hint;
    spec->bufferSize = static_cast<Kel32s>(bufferBytes);
    *ppFFTSpec = spec;
    return kelStatusOk;
}

KelStatus kelsFFTFree_R_32f(KelFFTSpec_R_32f* pFFTSpec) {
    if (anyNull(pFFTSpec)) return kelStatusNullPtr;
    if (!isSpec(pFFTSpec)) return kelStatusContextMatch;
    freeTables(*pFFTSpec);
    kelsFree(pFFTSpec);
    return kelStatusOk;
}

KelStatus kelsFFTFree_R_16s32s(KelFFTSpec_R_16s32s* pFFTSpec) {
    if (anyNull(pFFTSpec)) return kelStatusNullPtr;
    if (!isSpec(pFFTSpec)) return kelStatusContextMatch;
    kelsFFTFree_R_32f(pFFTSpec->inner);
    kelsFree(pFFTSpec);
    return kelStatusOk;
}

KelStatus kelsFFTGetBufSize_R_32f(const KelFFTSpec_R_32f* pFFTSpec, int* pSize) {
    if (anyNull(pFFTSpec, pSize)) return kelStatusNullPtr;
    if (!isSpec(pFFTSpec)) return kelStatusContextMatch;
    *pSize = pFFTSpec->bufferSize;
    return kelStatusOk;
}

// ---- transforms ----------------------------------------------------------------------------------------------------

KelStatus kelsFFTFwd_RToCCS_32f(const Kel32f* pSrc, Kel32f* pDst, const KelFFTSpec_R_32f* pFFTSpec, Kel8u* pBuffer) {
    if (anyNull(pFFTSpec)) return kelStatusNullPtr;
    if (!isSpec(pFFTSpec)) return kelStatusContextMatch;
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    const WorkBuffer work(*pFFTSpec, pBuffer);
    if (work.failed()) return kelStatusNoMemory;
    forwardToCcs(*pFFTSpec, pSrc, pDst, work.floats());
    return kelStatusOk;
}

KelStatus kelsFFTFwd_RToPack_32f(const Kel32f* pSrc, Kel32f* pDst, const KelFFTSpec_R_32f* pFFTSpec, Kel8u* pBuffer) {
    if (anyNull(pFFTSpec)) return kelStatusNullPtr;
    if (!isSpec(pFFTSpec)) return kelStatusContextMatch;
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    const WorkBuffer work(*pFFTSpec, pBuffer);
    if (work.failed()) return kelStatusNoMemory;
    forwardToPack(*pFFTSpec, pSrc, pDst, work.floats());
    return kelStatusOk;
}

KelStatus kelsFFTInv_PackToR_32f(const Kel32f* pSrc, Kel32f* pDst, const KelFFTSpec_R_32f* pFFTSpec, Kel8u* pBuffer) {
    if (anyNull(pFFTSpec)) return kelStatusNullPtr;
    if (!isSpec(pFFTSpec)) return kelStatusContextMatch;
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    const WorkBuffer work(*pFFTSpec, pBuffer);
    if (work.failed()) return kelStatusNoMemory;
    inverseFromPack(*pFFTSpec, pSrc, pDst, work.floats());
    return kelStatusOk;
}

KelStatus kelsFFTFwd_RToCCS_16s32s_Sfs(const Kel16s* pSrc, Kel32s* pDst, const KelFFTSpec_R_16s32s* pFFTSpec,
                                       int scaleFactor, Kel8u* pBuffer) {
    if (anyNull(pFFTSpec)) return kelStatusNullPtr;
    if (!isSpec(pFFTSpec)) return kelStatusContextMatch;
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    Kel8u* const owned = pBuffer == nullptr ? kelsMalloc_8u(pFFTSpec->bufferSize) : nullptr;
    if (pBuffer == nullptr && owned == nullptr) return kelStatusNoMemory;
    Kel8u* const work = alignUp(pBuffer == nullptr ? owned : pBuffer, 16);

    const int order = pFFTSpec->order;
    const int n = 1 << order;
    auto* const values = reinterpret_cast<Kel32f*>(work);
    kelsConvert_16s32f(pSrc, values, n);
    const KelStatus status = kelsFFTFwd_RToCCS_32f(values, values, pFFTSpec->inner, work + spectrumBytes(order));
    if (status == kelStatusOk) kelsConvert_32f32s_Sfs(values, pDst, order == 0 ? 2 : n + 2, 1, scaleFactor);
    kelsFree(owned);
    return status;
}

// ---- products of spectra -------------------------------------------------------------------------------------------

KelStatus kelsMulPackConj_32f_I(const Kel32f* pSrc, Kel32f* pSrcDst, int len) {
    if (anyNull(pSrc, pSrcDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    multiplyPackedConj(pSrc, pSrcDst, toSize(len));
    return kelStatusOk;
}
