// Statistics of the columns of blocks of floats, and of blocks of integers as floats.
#include "kels/stats.h"

#include "core/rows.h"
#include "training/check.h"
#include "training/columns/statistics.h"

namespace {
using namespace kels;
using namespace kels::columns;
using namespace kels::training;
}  // namespace

// ---- means and variances --------------------------------------------------------------------------------------------

KelStatus kelsMeanColumn_32f_D2(const Kel32f* pSrc, int height, int srcStep, Kel32f* pDstMean, int width) {
    if (const KelStatus fault = stepFirstFault({srcStep, height, width}, pSrc, pDstMean)) return fault;
    columnMeans(StepRows(pSrc, srcStep), height, width, pDstMean);
    return kelStatusOk;
}
KelStatus kelsVarColumn_32f_D2(const Kel32f* pSrc, int height, int srcStep, const Kel32f* pSrcMean, Kel32f* pDstVar,
                               int width) {
    if (const KelStatus fault = stepFirstFault<2>({srcStep, height, width}, pSrc, pSrcMean, pDstVar)) return fault;
    columnVariances(StepRows(pSrc, srcStep), height, width, pSrcMean, pDstVar);
    return kelStatusOk;
}
KelStatus kelsMeanVarColumn_32f_D2(const Kel32f* pSrc, int height, int srcStep, Kel32f* pDstMean, Kel32f* pDstVar,
                                   int width) {
    if (const KelStatus fault = stepLastFault<2>({srcStep, height, width}, pSrc, pDstMean, pDstVar)) return fault;
    columnMeansAndVariances(StepRows(pSrc, srcStep), height, width, pDstMean, pDstVar);
    return kelStatusOk;
}
KelStatus kelsMeanColumn_32f_D2L(const Kel32f** pSrc, int height, Kel32f* pDstMean, int width) {
    if (const KelStatus fault = rowsFault(height, width, pSrc, pDstMean)) return fault;
    columnMeans(PointerRows(pSrc), height, width, pDstMean);
    return kelStatusOk;
}
KelStatus kelsVarColumn_32f_D2L(const Kel32f** pSrc, int height, const Kel32f* pSrcMean, Kel32f* pDstVar, int width) {
    if (const KelStatus fault = rowsFault<2>(height, width, pSrc, pSrcMean, pDstVar)) return fault;
    columnVariances(PointerRows(pSrc), height, width, pSrcMean, pDstVar);
    return kelStatusOk;
}
KelStatus kelsMeanVarColumn_32f_D2L(const Kel32f** pSrc, int height, Kel32f* pDstMean, Kel32f* pDstVar, int width) {
    if (const KelStatus fault = rowsFault<2>(height, width, pSrc, pDstMean, pDstVar)) return fault;
    columnMeansAndVariances(PointerRows(pSrc), height, width, pDstMean, pDstVar);
    return kelStatusOk;
}

// ---- the same under short names -------------------------------------------------------------------------------------

KelStatus kelsMeanCol_32f_D2(const Kel32f* pSrc, int height, int srcStep, Kel32f* pDstMean, int width) {
    if (const KelStatus fault = stepFirstFault({srcStep, height, width}, pSrc, pDstMean)) return fault;
    columnMeans(StepRows(pSrc, srcStep), height, width, pDstMean);
    return kelStatusOk;
}
KelStatus kelsVarCol_32f_D2(const Kel32f* pSrc, int height, int srcStep, const Kel32f* pSrcMean, Kel32f* pDstVar,
                            int width) {
    if (const KelStatus fault = stepFirstFault<2>({srcStep, height, width}, pSrc, pSrcMean, pDstVar)) return fault;
    columnVariances(StepRows(pSrc, srcStep), height, width, pSrcMean, pDstVar);
    return kelStatusOk;
}
KelStatus kelsMeanVarCol_32f_D2(const Kel32f* pSrc, int height, int srcStep, Kel32f* pDstMean, Kel32f* pDstVar,
                                int width) {
    if (const KelStatus fault = stepLastFault<2>({srcStep, height, width}, pSrc, pDstMean, pDstVar)) return fault;
    columnMeansAndVariances(StepRows(pSrc, srcStep), height, width, pDstMean, pDstVar);
    return kelStatusOk;
}
KelStatus kelsMeanCol_32f_D2L(const Kel32f** pSrc, int height, Kel32f* pDstMean, int width) {
    if (const KelStatus fault = rowsFault(height, width, pSrc, pDstMean)) return fault;
    columnMeans(PointerRows(pSrc), height, width, pDstMean);
    return kelStatusOk;
}
KelStatus kelsVarCol_32f_D2L(const Kel32f** pSrc, int height, const Kel32f* pSrcMean, Kel32f* pDstVar, int width) {
    if (const KelStatus fault = rowsFault<2>(height, width, pSrc, pSrcMean, pDstVar)) return fault;
    columnVariances(PointerRows(pSrc), height, width, pSrcMean, pDstVar);
    return kelStatusOk;
}
KelStatus kelsMeanVarCol_32f_D2L(const Kel32f** pSrc, int height, Kel32f* pDstMean, Kel32f* pDstVar, int width) {
    if (const KelStatus fault = rowsFault<2>(height, width, pSrc, pDstMean, pDstVar)) return fault;
    columnMeansAndVariances(PointerRows(pSrc), height, width, pDstMean, pDstVar);
    return kelStatusOk;
}

// ---- weighted -------------------------------------------------------------------------------------------------------

KelStatus kelsWeightedMeanColumn_32f_D2(const Kel32f* pSrc, int srcStep, const Kel32f* pWgt, int height,
                                        Kel32f* pDstMean, int width) {
    if (const KelStatus fault = stepSecondFault({srcStep, height, width}, pSrc, pWgt, pDstMean)) return fault;
    weightedMeans(StepRows(pSrc, srcStep), pWgt, height, width, pDstMean);
    return kelStatusOk;
}
KelStatus kelsWeightedVarColumn_32f_D2(const Kel32f* pSrc, int srcStep, const Kel32f* pWgt, int height,
                                       const Kel32f* pSrcMean, Kel32f* pDstVar, int width) {
    if (const KelStatus fault = stepSecondFault({srcStep, height, width}, pSrc, pWgt, pSrcMean, pDstVar)) return fault;
    weightedVariances(StepRows(pSrc, srcStep), pWgt, height, width, pSrcMean, pDstVar);
    return kelStatusOk;
}
KelStatus kelsWeightedMeanVarColumn_32f_D2(const Kel32f* pSrc, int srcStep, const Kel32f* pWgt, int height,
                                           Kel32f* pDstMean, Kel32f* pDstVar, int width) {
    if (const KelStatus fault = stepSecondFault({srcStep, height, width}, pSrc, pWgt, pDstMean, pDstVar)) return fault;
    weightedMeansAndVariances(StepRows(pSrc, srcStep), pWgt, height, width, pDstMean, pDstVar);
    return kelStatusOk;
}
KelStatus kelsWeightedMeanColumn_64f_D2(const Kel64f* pSrc, int srcStep, const Kel64f* pWgt, int height,
                                        Kel64f* pDstMean, int width) {
    if (const KelStatus fault = stepSecondFault({srcStep, height, width}, pSrc, pWgt, pDstMean)) return fault;
    weightedMeans(StepRows(pSrc, srcStep), pWgt, height, width, pDstMean);
    return kelStatusOk;
}
KelStatus kelsWeightedVarColumn_64f_D2(const Kel64f* pSrc, int srcStep, const Kel64f* pWgt, int height,
                                       const Kel64f* pSrcMean, Kel64f* pDstVar, int width) {
    if (const KelStatus fault = stepSecondFault({srcStep, height, width}, pSrc, pWgt, pSrcMean, pDstVar)) return fault;
    weightedVariances(StepRows(pSrc, srcStep), pWgt, height, width, pSrcMean, pDstVar);
    return kelStatusOk;
}
KelStatus kelsWeightedMeanVarColumn_64f_D2(const Kel64f* pSrc, int srcStep, const Kel64f* pWgt, int height,
                                           Kel64f* pDstMean, Kel64f* pDstVar, int width) {
    if (const KelStatus fault = stepSecondFault({srcStep, height, width}, pSrc, pWgt, pDstMean, pDstVar)) return fault;
    weightedMeansAndVariances(StepRows(pSrc, srcStep), pWgt, height, width, pDstMean, pDstVar);
    return kelStatusOk;
}
KelStatus kelsWeightedMeanColumn_32f_D2L(const Kel32f** pSrc, const Kel32f* pWgt, int height, Kel32f* pDstMean,
                                         int width) {
    if (const KelStatus fault = rowsFault(height, width, pSrc, pWgt, pDstMean)) return fault;
    weightedMeans(PointerRows(pSrc), pWgt, height, width, pDstMean);
    return kelStatusOk;
}
KelStatus kelsWeightedVarColumn_32f_D2L(const Kel32f** pSrc, const Kel32f* pWgt, int height, const Kel32f* pSrcMean,
                                        Kel32f* pDstVar, int width) {
    if (const KelStatus fault = rowsFault(height, width, pSrc, pWgt, pSrcMean, pDstVar)) return fault;
    weightedVariances(PointerRows(pSrc), pWgt, height, width, pSrcMean, pDstVar);
    return kelStatusOk;
}
KelStatus kelsWeightedMeanVarColumn_32f_D2L(const Kel32f** pSrc, const Kel32f* pWgt, int height, Kel32f* pDstMean,
                                            Kel32f* pDstVar, int width) {
    if (const KelStatus fault = rowsFault(height, width, pSrc, pWgt, pDstMean, pDstVar)) return fault;
    weightedMeansAndVariances(PointerRows(pSrc), pWgt, height, width, pDstMean, pDstVar);
    return kelStatusOk;
}
KelStatus kelsWeightedMeanColumn_64f_D2L(const Kel64f** pSrc, const Kel64f* pWgt, int height, Kel64f* pDstMean,
                                         int width) {
    if (const KelStatus fault = rowsFault(height, width, pSrc, pWgt, pDstMean)) return fault;
    weightedMeans(PointerRows(pSrc), pWgt, height, width, pDstMean);
    return kelStatusOk;
}
KelStatus kelsWeightedVarColumn_64f_D2L(const Kel64f** pSrc, const Kel64f* pWgt, int height, const Kel64f* pSrcMean,
                                        Kel64f* pDstVar, int width) {
    if (const KelStatus fault = rowsFault(height, width, pSrc, pWgt, pSrcMean, pDstVar)) return fault;
    weightedVariances(PointerRows(pSrc), pWgt, height, width, pSrcMean, pDstVar);
    return kelStatusOk;
}
KelStatus kelsWeightedMeanVarColumn_64f_D2L(const Kel64f** pSrc, const Kel64f* pWgt, int height, Kel64f* pDstMean,
                                            Kel64f* pDstVar, int width) {
    if (const KelStatus fault = rowsFault(height, width, pSrc, pWgt, pDstMean, pDstVar)) return fault;
    weightedMeansAndVariances(PointerRows(pSrc), pWgt, height, width, pDstMean, pDstVar);
    return kelStatusOk;
}

// ---- sums and sums of squares ---------------------------------------------------------------------------------------

KelStatus kelsSumMeanVar_32f(const Kel32f* pSrc, int srcStep, int height, Kel32f* pDstSum, Kel32f* pDstSumSq,
                             int width) {
    if (const KelStatus fault = stepFirstFault({srcStep, height, width}, pSrc, pDstSum, pDstSumSq)) return fault;
    sumsAndSquares<Replace>(StepRows(pSrc, srcStep), height, width, pDstSum, pDstSumSq);
    return kelStatusOk;
}
KelStatus kelsSumMeanVar_32f_I(const Kel32f* pSrc, int srcStep, int height, Kel32f* pDstSum, Kel32f* pDstSumSq,
                               int width) {
    if (const KelStatus fault = stepFirstFault({srcStep, height, width}, pSrc, pDstSum, pDstSumSq)) return fault;
    sumsAndSquares<Accumulate>(StepRows(pSrc, srcStep), height, width, pDstSum, pDstSumSq);
    return kelStatusOk;
}
KelStatus kelsSumMeanVar_16s32f(const Kel16s* pSrc, int srcStep, int height, Kel32f* pDstSum, Kel32f* pDstSumSq,
                                int width) {
    if (const KelStatus fault = stepFirstFault({srcStep, height, width}, pSrc, pDstSum, pDstSumSq)) return fault;
    sumsAndSquares<Replace>(StepRows(pSrc, srcStep), height, width, pDstSum, pDstSumSq);
    return kelStatusOk;
}
KelStatus kelsSumMeanVar_16s32f_I(const Kel16s* pSrc, int srcStep, int height, Kel32f* pDstSum, Kel32f* pDstSumSq,
                                  int width) {
    if (const KelStatus fault = stepFirstFault({srcStep, height, width}, pSrc, pDstSum, pDstSumSq)) return fault;
    sumsAndSquares<Accumulate>(StepRows(pSrc, srcStep), height, width, pDstSum, pDstSumSq);
    return kelStatusOk;
}
KelStatus kelsSumMeanVar_16s32s_Sfs(const Kel16s* pSrc, int srcStep, int height, Kel32s* pDstSum, Kel32s* pDstSumSq,
                                    int width, int scaleFactor) {
    if (const KelStatus fault = stepFirstFault({srcStep, height, width}, pSrc, pDstSum, pDstSumSq)) return fault;
    sumsAndSquaresScaled<Replace>(StepRows(pSrc, srcStep), height, width, pDstSum, pDstSumSq, scaleFactor);
    return kelStatusOk;
}
KelStatus kelsSumMeanVar_16s32s_ISfs(const Kel16s* pSrc, int srcStep, int height, Kel32s* pDstSum, Kel32s* pDstSumSq,
                                     int width, int scaleFactor) {
    if (const KelStatus fault = stepFirstFault({srcStep, height, width}, pSrc, pDstSum, pDstSumSq)) return fault;
    sumsAndSquaresScaled<Accumulate>(StepRows(pSrc, srcStep), height, width, pDstSum, pDstSumSq, scaleFactor);
    return kelStatusOk;
}
