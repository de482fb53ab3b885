// The transform, the filter bank and the cosine transform applied to rows of frames.
#include "core/check.h"
#include "core/fft/spec.h"
#include "core/fft/transform.h"
#include "frontend/dct.h"
#include "frontend/fbank/eval.h"
#include "kels/features.h"

using namespace kels;

KelStatus kelsFFTFwd_RToCCS_32f_D2(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, int height,
                                   const KelFFTSpec_R_32f* pFFTSpec, Kel8u* pBuffer) {
    if (anyNull(pFFTSpec)) return kelStatusNullPtr;
    if (pFFTSpec->identifier != kFloatSpec) return kelStatusContextMatch;
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (height < 1) return kelStatusSize;
    const int points = 1 << pFFTSpec->order;
    if (stepTooSmall(srcStep, points) || stepTooSmall(dstStep, points, 1, points == 1 ? 1 : 2)) return kelStatusStep;
    const WorkBuffer work(*pFFTSpec, pBuffer);
    if (work.failed()) return kelStatusNoMemory;
    const StepRows<const Kel32f> src(pSrc, srcStep);
    const StepRows<Kel32f> dst(pDst, dstStep);
    for (int i = 0; i < height; ++i) forwardToCcs(*pFFTSpec, src[i], dst[i], work.floats());
    return kelStatusOk;
}

KelStatus kelsEvalFBank_32f_D2(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, int height,
                               KelFilterBank_32f* pFBank) {
    if (const KelStatus fault = fbank::evalFault(pSrc, pDst, pFBank)) return fault;
    if (height < 1) return kelStatusSize;
    const bool ofSamples = (pFBank->flag & kelFBankOwnFFT) != 0;
    const int width = ofSamples ? pFBank->fftLen2 : pFBank->fftLen2 / 2 + 1;
    if (stepTooSmall(srcStep, width) || stepTooSmall(dstStep, pFBank->nFilter)) return kelStatusStep;
    const StepRows<const Kel32f> src(pSrc, srcStep);
    const StepRows<Kel32f> dst(pDst, dstStep);
    for (int i = 0; i < height; ++i) {
        if (const KelStatus fault = fbank::evaluate(src[i], dst[i], *pFBank)) return fault;
    }
    return kelStatusOk;
}

KelStatus kelsDCTLifter_32f_D2(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, int height,
                               const KelDCTLifterState_32f* pState) {
    if (anyNull(pSrc, pDst, pState)) return kelStatusNullPtr;
    if (height < 1) return kelStatusSize;
    const int withC0 = pState->withC0 != 0 ? 1 : 0;
    if (stepTooSmall(srcStep, pState->lenDCT) || stepTooSmall(dstStep, pState->lenCeps, 1, withC0))
        return kelStatusStep;
    const StepRows<const Kel32f> src(pSrc, srcStep);
    const StepRows<Kel32f> dst(pDst, dstStep);
    for (int i = 0; i < height; ++i) dct::transformFrame(*pState, src[i], dst[i]);
    return kelStatusOk;
}
