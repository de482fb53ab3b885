#include "kels/stats.h"

#include "core/check.h"
#include "core/rows.h"
#include "training/columns/statistics.h"

using namespace kels;

// ---- means and variances --------------------------------------------------------------------------------------------

KelStatus kelsMeanColumn_32f_D2(const Kel32f* pSrc, int height, int srcStep, Kel32f* pDstMean, int width) {
    if (stepTooSmall(srcStep, width)) return kelStatusStep;
    if (anyNull(pSrc, pDstMean)) return kelStatusNullPtr;
    if (height < 1 || width < 1) return kelStatusSize;
    columnMeans(StepRows(pSrc, srcStep), height, width, pDstMean);
    return kelStatusOk;
}
KelStatus kelsVarColumn_32f_D2(const Kel32f* pSrc, int height, int srcStep, const Kel32f* pSrcMean, Kel32f* pDstVar,
                               int width) {
    if (stepTooSmall(srcStep, width)) return kelStatusStep;
    if (anyNull(pSrc, pSrcMean, pDstVar)) return kelStatusNullPtr;
    if (height < 2 || width < 1) return kelStatusSize;
    columnVariances(StepRows(pSrc, srcStep), height, width, pSrcMean, pDstVar);
    return kelStatusOk;
}
KelStatus kelsMeanVarColumn_32f_D2(const Kel32f* pSrc, int height, int srcStep, Kel32f* pDstMean, Kel32f* pDstVar,
                                   int width) {
    if (anyNull(pSrc, pDstMean, pDstVar)) return kelStatusNullPtr;
    if (height < 2 || width < 1) return kelStatusSize;
    if (stepTooSmall(srcStep, width)) return kelStatusStep;
    columnMeansAndVariances(StepRows(pSrc, srcStep), height, width, pDstMean, pDstVar);
    return kelStatusOk;
}
KelStatus kelsMeanColumn_32f_D2L(const Kel32f** pSrc, int height, Kel32f* pDstMean, int width) {
    if (anyNull(pSrc, pDstMean)) return kelStatusNullPtr;
    if (height < 1 || width < 1) return kelStatusSize;
    columnMeans(PointerRows(pSrc), height, width, pDstMean);
    return kelStatusOk;
}
KelStatus kelsVarColumn_32f_D2L(const Kel32f** pSrc, int height, const Kel32f* pSrcMean, Kel32f* pDstVar, int width) {
    if (anyNull(pSrc, pSrcMean, pDstVar)) return kelStatusNullPtr;
    if (height < 2 || width < 1) return kelStatusSize;
    columnVariances(PointerRows(pSrc), height, width, pSrcMean, pDstVar);
    return kelStatusOk;
}
KelStatus kelsMeanVarColumn_32f_D2L(const Kel32f** pSrc, int height, Kel32f* pDstMean, Kel32f* pDstVar, int width) {
    if (anyNull(pSrc, pDstMean, pDstVar)) return kelStatusNullPtr;
    if (height < 2 || width < 1) return kelStatusSize;
    columnMeansAndVariances(PointerRows(pSrc), height, width, pDstMean, pDstVar);
    return kelStatusOk;
}

// ---- the older names ------------------------------------------------------------------------------------------------

KelStatus kelsMeanCol_32f_D2(const Kel32f* pSrc, int height, int srcStep, Kel32f* pDstMean, int width) {
    return kelsMeanColumn_32f_D2(pSrc, height, srcStep, pDstMean, width);
}
KelStatus kelsMeanCol_32f_D2L(const Kel32f** pSrc, int height, Kel32f* pDstMean, int width) {
    return kelsMeanColumn_32f_D2L(pSrc, height, pDstMean, width);
}
KelStatus kelsVarCol_32f_D2(const Kel32f* pSrc, int height, int srcStep, const Kel32f* pSrcMean, Kel32f* pDstVar,
                            int width) {
    return kelsVarColumn_32f_D2(pSrc, height, srcStep, pSrcMean, pDstVar, width);
}
KelStatus kelsVarCol_32f_D2L(const Kel32f** pSrc, int height, const Kel32f* pSrcMean, Kel32f* pDstVar, int width) {
    return kelsVarColumn_32f_D2L(pSrc, height, pSrcMean, pDstVar, width);
}
KelStatus kelsMeanVarCol_32f_D2(const Kel32f* pSrc, int height, int srcStep, Kel32f* pDstMean, Kel32f* pDstVar,
                                int width) {
    return kelsMeanVarColumn_32f_D2(pSrc, height, srcStep, pDstMean, pDstVar, width);
}
KelStatus kelsMeanVarCol_32f_D2L(const Kel32f** pSrc, int height, Kel32f* pDstMean, Kel32f* pDstVar, int width) {
    return kelsMeanVarColumn_32f_D2L(pSrc, height, pDstMean, pDstVar, width);
}

// ---- weighted -------------------------------------------------------------------------------------------------------

KelStatus kelsWeightedMeanColumn_32f_D2(const Kel32f* pSrc, int srcStep, const Kel32f* pWgt, int height,
                                        Kel32f* pDstMean, int width) {
    if (anyNull(pSrc, pWgt, pDstMean)) return kelStatusNullPtr;
    if (stepTooSmall(srcStep, width)) return kelStatusStep;
    if (height < 1 || width < 1) return kelStatusSize;
    weightedMeans(StepRows(pSrc, srcStep), pWgt, height, width, pDstMean);
    return kelStatusOk;
}
KelStatus kelsWeightedVarColumn_32f_D2(const Kel32f* pSrc, int srcStep, const Kel32f* pWgt, int height,
                                       const Kel32f* pSrcMean, Kel32f* pDstVar, int width) {
    if (anyNull(pSrc, pWgt, pSrcMean, pDstVar)) return kelStatusNullPtr;
    if (stepTooSmall(srcStep, width)) return kelStatusStep;
    if (height < 1 || width < 1) return kelStatusSize;
    weightedVariances(StepRows(pSrc, srcStep), pWgt, height, width, pSrcMean, pDstVar);
    return kelStatusOk;
}
KelStatus kelsWeightedMeanVarColumn_32f_D2(const Kel32f* pSrc, int srcStep, const Kel32f* pWgt, int height,
                                           Kel32f* pDstMean, Kel32f* pDstVar, int width) {
    if (anyNull(pSrc, pWgt, pDstMean, pDstVar)) return kelStatusNullPtr;
    if (stepTooSmall(srcStep, width)) return kelStatusStep;
    if (height < 1 || width < 1) return kelStatusSize;
    weightedMeansAndVariances(StepRows(pSrc, srcStep), pWgt, height, width, pDstMean, pDstVar);
    return kelStatusOk;
}
KelStatus kelsWeightedMeanColumn_64f_D2(const Kel64f* pSrc, int srcStep, const Kel64f* pWgt, int height,
                                        Kel64f* pDstMean, int width) {
    if (anyNull(pSrc, pWgt, pDstMean)) return kelStatusNullPtr;
    if (stepTooSmall(srcStep, width)) return kelStatusStep;
    if (height < 1 || width < 1) return kelStatusSize;
    weightedMeans(StepRows(pSrc, srcStep), pWgt, height, width, pDstMean);
    return kelStatusOk;
}
KelStatus kelsWeightedVarColumn_64f_D2(const Kel64f* pSrc, int srcStep, const Kel64f* pWgt, int height,
                                       const Kel64f* pSrcMean, Kel64f* pDstVar, int width) {
    if (anyNull(pSrc, pWgt, pSrcMean, pDstVar)) return kelStatusNullPtr;
    if (stepTooSmall(srcStep, width)) return kelStatusStep;
    if (height < 1 || width < 1) return kelStatusSize;
    weightedVariances(StepRows(pSrc, srcStep), pWgt, height, width, pSrcMean, pDstVar);
    return kelStatusOk;
}
KelStatus kelsWeightedMeanVarColumn_64f_D2(const Kel64f* pSrc, int srcStep, const Kel64f* pWgt, int height,
                                           Kel64f* pDstMean, Kel64f* pDstVar, int width) {
    if (anyNull(pSrc, pWgt, pDstMean, pDstVar)) return kelStatusNullPtr;
    if (stepTooSmall(srcStep, width)) return kelStatusStep;
    if (height < 1 || width < 1) return kelStatusSize;
    weightedMeansAndVariances(StepRows(pSrc, srcStep), pWgt, height, width, pDstMean, pDstVar);
    return kelStatusOk;
}
KelStatus kelsWeightedMeanColumn_32f_D2L(const Kel32f** pSrc, const Kel32f* pWgt, int height, Kel32f* pDstMean,
                                         int width) {
    if (anyNull(pSrc, pWgt, pDstMean)) return kelStatusNullPtr;
    if (height < 1 || width < 1) return kelStatusSize;
    weightedMeans(PointerRows(pSrc), pWgt, height, width, pDstMean);
    return kelStatusOk;
}
KelStatus kelsWeightedVarColumn_32f_D2L(const Kel32f** pSrc, const Kel32f* pWgt, int height, const Kel32f* pSrcMean,
                                        Kel32f* pDstVar, int width) {
    if (anyNull(pSrc, pWgt, pSrcMean, pDstVar)) return kelStatusNullPtr;
    if (height < 1 || width < 1) return kelStatusSize;
    weightedVariances(PointerRows(pSrc), pWgt, height, width, pSrcMean, pDstVar);
    return kelStatusOk;
}
KelStatus kelsWeightedMeanVarColumn_32f_D2L(const Kel32f** pSrc, const Kel32f* pWgt, int height, Kel32f* pDstMean,
                                            Kel32f* pDstVar, int width) {
    if (anyNull(pSrc, pWgt, pDstMean, pDstVar)) return kelStatusNullPtr;
    if (height < 1 || width < 1) return kelStatusSize;
    weightedMeansAndVariances(PointerRows(pSrc), pWgt, height, width, pDstMean, pDstVar);
    return kelStatusOk;
}
KelStatus kelsWeightedMeanColumn_64f_D2L(const Kel64f** pSrc, const Kel64f* pWgt, int height, Kel64f* pDstMean,
                                         int width) {
    if (anyNull(pSrc, pWgt, pDstMean)) return kelStatusNullPtr;
    if (height < 1 || width < 1) return kelStatusSize;
    weightedMeans(PointerRows(pSrc), pWgt, height, width, pDstMean);
    return kelStatusOk;
}
KelStatus kelsWeightedVarColumn_64f_D2L(const Kel64f** pSrc, const Kel64f* pWgt, int height, const Kel64f* pSrcMean,
                                        Kel64f* pDstVar, int width) {
    if (anyNull(pSrc, pWgt, pSrcMean, pDstVar)) return kelStatusNullPtr;
    if (height < 1 || width < 1) return kelStatusSize;
    weightedVariances(PointerRows(pSrc), pWgt, height, width, pSrcMean, pDstVar);
    return kelStatusOk;
}
KelStatus kelsWeightedMeanVarColumn_64f_D2L(const Kel64f** pSrc, const Kel64f* pWgt, int height, Kel64f* pDstMean,
                                            Kel64f* pDstVar, int width) {
    if (anyNull(pSrc, pWgt, pDstMean, pDstVar)) return kelStatusNullPtr;
    if (height < 1 || width < 1) return kelStatusSize;
    weightedMeansAndVariances(PointerRows(pSrc), pWgt, height, width, pDstMean, pDstVar);
    return kelStatusOk;
}

// ---- sums and sums of squares ---------------------------------------------------------------------------------------

KelStatus kelsSumMeanVar_32f(const Kel32f* pSrc, int srcStep, int height, Kel32f* pDstSum, Kel32f* pDstSumSq,
                             int width) {
    if (stepTooSmall(srcStep, width)) return kelStatusStep;
    if (anyNull(pSrc, pDstSum, pDstSumSq)) return kelStatusNullPtr;
    if (height < 1 || width < 1) return kelStatusSize;
    sumsAndSquares<Replace>(StepRows(pSrc, srcStep), height, width, pDstSum, pDstSumSq);
    return kelStatusOk;
}
KelStatus kelsSumMeanVar_32f_I(const Kel32f* pSrc, int srcStep, int height, Kel32f* pDstSum, Kel32f* pDstSumSq,
                               int width) {
    if (stepTooSmall(srcStep, width)) return kelStatusStep;
    if (anyNull(pSrc, pDstSum, pDstSumSq)) return kelStatusNullPtr;
    if (height < 1 || width < 1) return kelStatusSize;
    sumsAndSquares<Accumulate>(StepRows(pSrc, srcStep), height, width, pDstSum, pDstSumSq);
    return kelStatusOk;
}
KelStatus kelsSumMeanVar_16s32f(const Kel16s* pSrc, int srcStep, int height, Kel32f* pDstSum, Kel32f* pDstSumSq,
                                int width) {
    if (stepTooSmall(srcStep, width)) return kelStatusStep;
    if (anyNull(pSrc, pDstSum, pDstSumSq)) return kelStatusNullPtr;
    if (height < 1 || width < 1) return kelStatusSize;
    sumsAndSquares<Replace>(StepRows(pSrc, srcStep), height, width, pDstSum, pDstSumSq);
    return kelStatusOk;
}
KelStatus kelsSumMeanVar_16s32f_I(const Kel16s* pSrc, int srcStep, int height, Kel32f* pDstSum, Kel32f* pDstSumSq,
                                  int width) {
    if (stepTooSmall(srcStep, width)) return kelStatusStep;
    if (anyNull(pSrc, pDstSum, pDstSumSq)) return kelStatusNullPtr;
    if (height < 1 || width < 1) return kelStatusSize;
    sumsAndSquares<Accumulate>(StepRows(pSrc, srcStep), height, width, pDstSum, pDstSumSq);
    return kelStatusOk;
}
KelStatus kelsSumMeanVar_16s32s_Sfs(const Kel16s* pSrc, int srcStep, int height, Kel32s* pDstSum, Kel32s* pDstSumSq,
                                    int width, int scaleFactor) {
    if (stepTooSmall(srcStep, width)) return kelStatusStep;
    if (anyNull(pSrc, pDstSum, pDstSumSq)) return kelStatusNullPtr;
    if (height < 1 || width < 1) return kelStatusSize;
    sumsAndSquaresScaled<Replace>(StepRows(pSrc, srcStep), height, width, pDstSum, pDstSumSq, scaleFactor);
    return kelStatusOk;
}
KelStatus kelsSumMeanVar_16s32s_ISfs(const Kel16s* pSrc, int srcStep, int height, Kel32s* pDstSum, Kel32s* pDstSumSq,
                                     int width, int scaleFactor) {
    if (stepTooSmall(srcStep, width)) return kelStatusStep;
    if (anyNull(pSrc, pDstSum, pDstSumSq)) return kelStatusNullPtr;
    if (height < 1 || width < 1) return kelStatusSize;
    sumsAndSquaresScaled<Accumulate>(StepRows(pSrc, srcStep), height, width, pDstSum, pDstSumSq, scaleFactor);
    return kelStatusOk;
}
