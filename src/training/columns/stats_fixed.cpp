#include "core/check.h"
#include "core/rows.h"
#include "core/scaling.h"
#include "kels/stats.h"
#include "training/columns/statistics.h"

using namespace kels;

KelStatus kelsMeanColumn_16s_D2(const Kel16s* pSrc, int height, int srcStep, Kel16s* pDstMean, int width) {
    if (stepTooSmall(srcStep, width)) return kelStatusStep;
    if (anyNull(pSrc, pDstMean)) return kelStatusNullPtr;
    if (height < 1 || width < 1) return kelStatusSize;
    const NearestScope nearest;
    fixedColumnMeans(StepRows(pSrc, srcStep), height, width, pDstMean);
    return kelStatusOk;
}
KelStatus kelsVarColumn_16s_D2Sfs(const Kel16s* pSrc, int height, int srcStep, const Kel16s* pSrcMean, Kel16s* pDstVar,
                                  int width, int scaleFactor) {
    if (anyNull(pSrc, pSrcMean, pDstVar)) return kelStatusNullPtr;
    if (height < 2 || width < 1) return kelStatusSize;
    if (stepTooSmall(srcStep, width)) return kelStatusStep;
    const NearestScope nearest;
    fixedColumnVariances(StepRows(pSrc, srcStep), height, width, pSrcMean, pDstVar, scaleFactor);
    return kelStatusOk;
}
KelStatus kelsMeanVarColumn_16s_D2Sfs(const Kel16s* pSrc, int height, int srcStep, Kel16s* pDstMean, Kel16s* pDstVar,
                                      int width, int scaleFactor) {
    if (anyNull(pSrc, pDstMean, pDstVar)) return kelStatusNullPtr;
    if (height < 2 || width < 1) return kelStatusSize;
    if (stepTooSmall(srcStep, width)) return kelStatusStep;
    const NearestScope nearest;
    fixedColumnMeansAndVariances<Centring::Exact>(StepRows(pSrc, srcStep), height, width, pDstMean, pDstVar,
                                                  scaleFactor);
    return kelStatusOk;
}
KelStatus kelsMeanVarColumn_16s32s_D2Sfs(const Kel16s* pSrc, int height, int srcStep, Kel32s* pDstMean, Kel32s* pDstVar,
                                         int width, int scaleFactor) {
    if (anyNull(pSrc, pDstMean, pDstVar)) return kelStatusNullPtr;
    if (height < 2 || width < 1) return kelStatusSize;
    if (stepTooSmall(srcStep, width)) return kelStatusStep;
    const NearestScope nearest;
    fixedColumnMeansAndVariances<Centring::Exact>(StepRows(pSrc, srcStep), height, width, pDstMean, pDstVar,
                                                  scaleFactor);
    return kelStatusOk;
}
KelStatus kelsMeanVarColumn_16s16s32s_D2(const Kel16s* pSrc, int height, int srcStep, Kel16s* pDstMean, Kel32s* pDstVar,
                                         int width) {
    if (anyNull(pSrc, pDstMean, pDstVar)) return kelStatusNullPtr;
    if (height < 2 || width < 1) return kelStatusSize;
    if (stepTooSmall(srcStep, width)) return kelStatusStep;
    const NearestScope nearest;
    fixedColumnMeansAndVariances<Centring::Whole>(StepRows(pSrc, srcStep), height, width, pDstMean, pDstVar, 0);
    return kelStatusOk;
}
KelStatus kelsMeanColumn_16s_D2L(const Kel16s** pSrc, int height, Kel16s* pDstMean, int width) {
    if (anyNull(pSrc, pDstMean)) return kelStatusNullPtr;
    if (height < 1 || width < 1) return kelStatusSize;
    const NearestScope nearest;
    fixedColumnMeans(PointerRows(pSrc), height, width, pDstMean);
    return kelStatusOk;
}
KelStatus kelsVarColumn_16s_D2LSfs(const Kel16s** pSrc, int height, const Kel16s* pSrcMean, Kel16s* pDstVar, int width,
                                   int scaleFactor) {
    if (anyNull(pSrc, pSrcMean, pDstVar)) return kelStatusNullPtr;
    if (height < 2 || width < 1) return kelStatusSize;
    const NearestScope nearest;
    fixedColumnVariances(PointerRows(pSrc), height, width, pSrcMean, pDstVar, scaleFactor);
    return kelStatusOk;
}
KelStatus kelsMeanVarColumn_16s_D2LSfs(const Kel16s** pSrc, int height, Kel16s* pDstMean, Kel16s* pDstVar, int width,
                                       int scaleFactor) {
    if (anyNull(pSrc, pDstMean, pDstVar)) return kelStatusNullPtr;
    if (height < 2 || width < 1) return kelStatusSize;
    const NearestScope nearest;
    fixedColumnMeansAndVariances<Centring::Exact>(PointerRows(pSrc), height, width, pDstMean, pDstVar, scaleFactor);
    return kelStatusOk;
}
KelStatus kelsMeanVarColumn_16s32s_D2LSfs(const Kel16s** pSrc, int height, Kel32s* pDstMean, Kel32s* pDstVar, int width,
                                          int scaleFactor) {
    if (anyNull(pSrc, pDstMean, pDstVar)) return kelStatusNullPtr;
    if (height < 2 || width < 1) return kelStatusSize;
    const NearestScope nearest;
    fixedColumnMeansAndVariances<Centring::Exact>(PointerRows(pSrc), height, width, pDstMean, pDstVar, scaleFactor);
    return kelStatusOk;
}
KelStatus kelsMeanVarColumn_16s16s32s_D2L(const Kel16s** pSrc, int height, Kel16s* pDstMean, Kel32s* pDstVar,
                                          int width) {
    if (anyNull(pSrc, pDstMean, pDstVar)) return kelStatusNullPtr;
    if (height < 2 || width < 1) return kelStatusSize;
    const NearestScope nearest;
    fixedColumnMeansAndVariances<Centring::Whole>(PointerRows(pSrc), height, width, pDstMean, pDstVar, 0);
    return kelStatusOk;
}
