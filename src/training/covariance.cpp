// Accumulation of covariance matrices; their prototypes stand in kels/stats.h.
#include "training/covariance.h"

#include "core/rows.h"
#include "kels/stats.h"
#include "training/check.h"

namespace {
using namespace kels;
using namespace kels::training;
}  // namespace

KelStatus kelsAccCovarianceMatrix_32f64f_D2(const Kel32f* pSrc, int srcStep, int height, const Kel32f* pMean,
                                            Kel64f* pDstMatr, int width, int dstStep, Kel64f val) {
    if (const KelStatus fault = stepLastFault({srcStep, height, width}, pSrc, pMean, pDstMatr)) return fault;
    if (stepTooSmall(dstStep, width)) return kelStatusStep;
    accumulateCovariance(StepRows(pSrc, srcStep), height, pMean, StepRows(pDstMatr, dstStep), width, val);
    return kelStatusOk;
}
KelStatus kelsAccCovarianceMatrix_32f64f_D2L(const Kel32f** pSrc, int height, const Kel32f* pMean, Kel64f** pDstMatr,
                                             int width, Kel64f val) {
    if (const KelStatus fault = rowsFault(height, width, pSrc, pMean, pDstMatr)) return fault;
    accumulateCovariance(PointerRows(pSrc), height, pMean, PointerRows(pDstMatr), width, val);
    return kelStatusOk;
}
KelStatus kelsAccCovarianceMatrix_16s64f_D2(const Kel16s* pSrc, int srcStep, int height, const Kel16s* pMean,
                                            Kel64f* pDstMatr, int width, int dstStep, Kel64f val) {
    if (const KelStatus fault = stepLastFault({srcStep, height, width}, pSrc, pMean, pDstMatr)) return fault;
    if (stepTooSmall(dstStep, width)) return kelStatusStep;
    accumulateCovariance(StepRows(pSrc, srcStep), height, pMean, StepRows(pDstMatr, dstStep), width, val);
    return kelStatusOk;
}
KelStatus kelsAccCovarianceMatrix_16s64f_D2L(const Kel16s** pSrc, int height, const Kel16s* pMean, Kel64f** pDstMatr,
                                             int width, Kel64f val) {
    if (const KelStatus fault = rowsFault(height, width, pSrc, pMean, pDstMatr)) return fault;
    accumulateCovariance(PointerRows(pSrc), height, pMean, PointerRows(pDstMatr), width, val);
    return kelStatusOk;
}
