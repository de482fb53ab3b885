#include "training/covariance.h"

#include "core/check.h"
#include "core/rows.h"
#include "kels/stats.h"

using namespace kels;

KelStatus kelsAccCovarianceMatrix_32f64f_D2(const Kel32f* pSrc, int srcStep, int height, const Kel32f* pMean,
                                            Kel64f* pDstMatr, int width, int dstStep, Kel64f val) {
    if (anyNull(pSrc, pMean, pDstMatr)) return kelStatusNullPtr;
    if (height < 1 || width < 1) return kelStatusSize;
    if (stepTooSmall(srcStep, width) || stepTooSmall(dstStep, width)) return kelStatusStep;
    accumulateCovariance(StepRows(pSrc, srcStep), height, pMean, StepRows(pDstMatr, dstStep), width, val);
    return kelStatusOk;
}
KelStatus kelsAccCovarianceMatrix_32f64f_D2L(const Kel32f** pSrc, int height, const Kel32f* pMean, Kel64f** pDstMatr,
                                             int width, Kel64f val) {
    if (anyNull(pSrc, pMean, pDstMatr)) return kelStatusNullPtr;
    if (height < 1 || width < 1) return kelStatusSize;
    accumulateCovariance(PointerRows(pSrc), height, pMean, PointerRows(pDstMatr), width, val);
    return kelStatusOk;
}
KelStatus kelsAccCovarianceMatrix_16s64f_D2(const Kel16s* pSrc, int srcStep, int height, const Kel16s* pMean,
                                            Kel64f* pDstMatr, int width, int dstStep, Kel64f val) {
    if (anyNull(pSrc, pMean, pDstMatr)) return kelStatusNullPtr;
    if (height < 1 || width < 1) return kelStatusSize;
    if (stepTooSmall(srcStep, width) || stepTooSmall(dstStep, width)) return kelStatusStep;
    accumulateCovariance(StepRows(pSrc, srcStep), height, pMean, StepRows(pDstMatr, dstStep), width, val);
    return kelStatusOk;
}
KelStatus kelsAccCovarianceMatrix_16s64f_D2L(const Kel16s** pSrc, int height, const Kel16s* pMean, Kel64f** pDstMatr,
                                             int width, Kel64f val) {
    if (anyNull(pSrc, pMean, pDstMatr)) return kelStatusNullPtr;
    if (height < 1 || width < 1) return kelStatusSize;
    accumulateCovariance(PointerRows(pSrc), height, pMean, PointerRows(pDstMatr), width, val);
    return kelStatusOk;
}
