// Entry points of the FFT: specifications, transforms, products of spectra.
#include "kels/fft.h"

#include "core/check.h"
#include "core/fft/pack.h"
#include "core/fft/transform.h"

using namespace kels;

namespace {

bool isSpec(const KelFFTSpec_R_32f* spec) {
    return spec->identifier == kFloatSpec;
}
bool isSpec(const KelFFTSpec_R_16s32s* spec) {
    return spec->identifier == kIntegerSpec;
}

}  // namespace

// ---- specifications ------------------------------------------------------------------------------------------------

KelStatus kelsFFTInitAlloc_R_32f(KelFFTSpec_R_32f** ppFFTSpec, int order, int flag, int hint) {
    if (anyNull(ppFFTSpec)) return kelStatusNullPtr;
    if (order < 0 || order > kMaxFftOrder) return kelStatusFftOrder;
    return buildSpec(ppFFTSpec, order, flag, hint);
}

KelStatus kelsFFTInitAlloc_R_16s32s(KelFFTSpec_R_16s32s** ppFFTSpec, int order, int flag, int hint) {
    if (anyNull(ppFFTSpec)) return kelStatusNullPtr;
    if (order < 0 || order > kMaxFftOrder) return kelStatusFftOrder;
    return buildSpec(ppFFTSpec, order, flag, hint);
}

KelStatus kelsFFTFree_R_32f(KelFFTSpec_R_32f* pFFTSpec) {
    if (anyNull(pFFTSpec)) return kelStatusNullPtr;
    if (!isSpec(pFFTSpec)) return kelStatusContextMatch;
    releaseSpec(pFFTSpec);
    return kelStatusOk;
}

KelStatus kelsFFTFree_R_16s32s(KelFFTSpec_R_16s32s* pFFTSpec) {
    if (anyNull(pFFTSpec)) return kelStatusNullPtr;
    if (!isSpec(pFFTSpec)) return kelStatusContextMatch;
    releaseSpec(pFFTSpec);
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
    return forwardToCcs(*pFFTSpec, pSrc, pDst, pBuffer);
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
    return forwardToCcs(*pFFTSpec, pSrc, pDst, scaleFactor, pBuffer);
}

// ---- products of spectra -------------------------------------------------------------------------------------------

KelStatus kelsMulPackConj_32f_I(const Kel32f* pSrc, Kel32f* pSrcDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pSrcDst)) return fault;
    multiplyPackedConj(pSrc, pSrcDst, toSize(len));
    return kelStatusOk;
}
