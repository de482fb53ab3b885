// Statistics of the columns of 16-bit blocks in integers; their prototypes stand in kels/stats.h.
#include "core/rows.h"
#include "core/scaling.h"
#include "kels/stats.h"
#include "training/check.h"
#include "training/columns/statistics.h"

namespace {
using namespace kels;
using namespace kels::columns;
using namespace kels::training;
}  // namespace

KelStatus kelsMeanColumn_16s_D2(const Kel16s* pSrc, int height, int srcStep, Kel16s* pDstMean, int width) {
    if (const KelStatus fault = stepFirstFault({srcStep, height, width}, pSrc, pDstMean)) return fault;
    const NearestScope nearest;
    fixedColumnMeans(StepRows(pSrc, srcStep), height, width, pDstMean);
    return kelStatusOk;
}
KelStatus kelsVarColumn_16s_D2Sfs(const Kel16s* pSrc, int height, int srcStep, const Kel16s* pSrcMean, Kel16s* pDstVar,
                                  int width, int scaleFactor) {
    if (const KelStatus fault = stepLastFault<2>({srcStep, height, width}, pSrc, pSrcMean, pDstVar)) return fault;
    const NearestScope nearest;
    fixedColumnVariances(StepRows(pSrc, srcStep), height, width, pSrcMean, pDstVar, scaleFactor);
    return kelStatusOk;
}
KelStatus kelsMeanVarColumn_16s_D2Sfs(const Kel16s* pSrc, int height, int srcStep, Kel16s* pDstMean, Kel16s* pDstVar,
                                      int width, int scaleFactor) {
    if (const KelStatus fault = stepLastFault<2>({srcStep, height, width}, pSrc, pDstMean, pDstVar)) return fault;
    const NearestScope nearest;
    fixedColumnMeansAndVariances<Centring::Exact>(StepRows(pSrc, srcStep), height, width, pDstMean, pDstVar,
                                                  scaleFactor);
    return kelStatusOk;
}
KelStatus kelsMeanVarColumn_16s32s_D2Sfs(const Kel16s* pSrc, int height, int srcStep, Kel32s* pDstMean, Kel32s* pDstVar,
                                         int width, int scaleFactor) {
    if (const KelStatus fault = stepLastFault<2>({srcStep, height, width}, pSrc, pDstMean, pDstVar)) return fault;
    const NearestScope nearest;
    fixedColumnMeansAndVariances<Centring::Exact>(StepRows(pSrc, srcStep), height, width, pDstMean, pDstVar,
                                                  scaleFactor);
    return kelStatusOk;
}
KelStatus kelsMeanVarColumn_16s16s32s_D2(const Kel16s* pSrc, int height, int srcStep, Kel16s* pDstMean, Kel32s* pDstVar,
                                         int width) {
    if (const KelStatus fault = stepLastFault<2>({srcStep, height, width}, pSrc, pDstMean, pDstVar)) return fault;
    const NearestScope nearest;
    fixedColumnMeansAndVariances<Centring::Whole>(StepRows(pSrc, srcStep), height, width, pDstMean, pDstVar, 0);
    return kelStatusOk;
}
KelStatus kelsMeanColumn_16s_D2L(const Kel16s** pSrc, int height, Kel16s* pDstMean, int width) {
    if (const KelStatus fault = rowsFault(height, width, pSrc, pDstMean)) return fault;
    const NearestScope nearest;
    fixedColumnMeans(PointerRows(pSrc), height, width, pDstMean);
    return kelStatusOk;
}
KelStatus kelsVarColumn_16s_D2LSfs(const Kel16s** pSrc, int height, const Kel16s* pSrcMean, Kel16s* pDstVar, int width,
                                   int scaleFactor) {
    if (const KelStatus fault = rowsFault<2>(height, width, pSrc, pSrcMean, pDstVar)) return fault;
    const NearestScope nearest;
    fixedColumnVariances(PointerRows(pSrc), height, width, pSrcMean, pDstVar, scaleFactor);
    return kelStatusOk;
}
KelStatus kelsMeanVarColumn_16s_D2LSfs(const Kel16s** pSrc, int height, Kel16s* pDstMean, Kel16s* pDstVar, int width,
                                       int scaleFactor) {
    if (const KelStatus fault = rowsFault<2>(height, width, pSrc, pDstMean, pDstVar)) return fault;
    const NearestScope nearest;
    fixedColumnMeansAndVariances<Centring::Exact>(PointerRows(pSrc), height, width, pDstMean, pDstVar, scaleFactor);
    return kelStatusOk;
}
KelStatus kelsMeanVarColumn_16s32s_D2LSfs(const Kel16s** pSrc, int height, Kel32s* pDstMean, Kel32s* pDstVar, int width,
                                          int scaleFactor) {
    if (const KelStatus fault = rowsFault<2>(height, width, pSrc, pDstMean, pDstVar)) return fault;
    const NearestScope nearest;
    fixedColumnMeansAndVariances<Centring::Exact>(PointerRows(pSrc), height, width, pDstMean, pDstVar, scaleFactor);
    return kelStatusOk;
}
KelStatus kelsMeanVarColumn_16s16s32s_D2L(const Kel16s** pSrc, int height, Kel16s* pDstMean, Kel32s* pDstVar,
                                          int width) {
    if (const KelStatus fault = rowsFault<2>(height, width, pSrc, pDstMean, pDstVar)) return fault;
    const NearestScope nearest;
    fixedColumnMeansAndVariances<Centring::Whole>(PointerRows(pSrc), height, width, pDstMean, pDstVar, 0);
    return kelStatusOk;
}
