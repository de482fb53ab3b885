// One vector under selected components of a mixture.
#include "kels/mixture.h"

#include "scoring/checks.h"
#include "scoring/mixture/sum.h"

namespace {
using namespace kels;
using namespace kels::gauss;
using namespace kels::mixture;
using namespace kels::scoring;
}  // namespace

KelStatus kelsLogGaussMixture_Select_32f_D2(const Kel32f* pSrc, const Kel32f* pMean, const Kel32f* pIvar, int height,
                                            int step, int width, const Kel32f* pDets, Kel32f* pResult,
                                            const Kel8u* pSign, int offset) {
    if (const KelStatus fault = mixtureFault(step, width, height, pSrc, pMean, pIvar, pDets, pResult, pSign))
        return fault;
    if (offset < 0) return kelStatusSize;
    *pResult = selectedScore<SinglePrecision<InverseVariance>>(
        gaussians(pSrc, StepRows(pMean, step), StepRows(pIvar, step)), SetBits(pSign, toSize(offset), toSize(height)),
        toSize(width), Half(ConstantOf{pDets}));
    return kelStatusOk;
}

KelStatus kelsLogGaussMixture_Select_32f_D2L(const Kel32f* pSrc, const Kel32f** ppMean, const Kel32f** ppIvar,
                                             int height, int width, const Kel32f* pDets, Kel32f* pResult,
                                             const Kel8u* pSign, int offset) {
    if (const KelStatus fault = rowsFault(width, height, pSrc, ppMean, ppIvar, pDets, pResult, pSign)) return fault;
    if (offset < 0) return kelStatusSize;
    *pResult = selectedScore<SinglePrecision<InverseVariance>>(
        gaussians(pSrc, PointerRows(ppMean), PointerRows(ppIvar)), SetBits(pSign, toSize(offset), toSize(height)),
        toSize(width), Half(ConstantOf{pDets}));
    return kelStatusOk;
}

KelStatus kelsLogGaussMixture_SelectIdVar_32f_D2(const Kel32f* pSrc, const Kel32f* pMean, int height, int step,
                                                 int width, const Kel32f* pDets, Kel32f* pResult, const Kel8u* pSign,
                                                 int offset) {
    if (const KelStatus fault = mixtureFault(step, width, height, pSrc, pMean, pDets, pResult, pSign)) return fault;
    if (offset < 0) return kelStatusSize;
    *pResult = selectedScore<SinglePrecision<UnitVariance>>(gaussians(pSrc, StepRows(pMean, step)),
                                                            SetBits(pSign, toSize(offset), toSize(height)),
                                                            toSize(width), Half(ConstantOf{pDets}));
    return kelStatusOk;
}

KelStatus kelsLogGaussMixture_SelectIdVar_32f_D2L(const Kel32f* pSrc, const Kel32f** ppMean, int height, int width,
                                                  const Kel32f* pDets, Kel32f* pResult, const Kel8u* pSign,
                                                  int offset) {
    if (const KelStatus fault = rowsFault(width, height, pSrc, ppMean, pDets, pResult, pSign)) return fault;
    if (offset < 0) return kelStatusSize;
    *pResult = selectedScore<SinglePrecision<UnitVariance>>(gaussians(pSrc, PointerRows(ppMean)),
                                                            SetBits(pSign, toSize(offset), toSize(height)),
                                                            toSize(width), Half(ConstantOf{pDets}));
    return kelStatusOk;
}

KelStatus kelsLogGaussMixture_SelectScaled_16s32f_D2(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pIvar,
                                                     int height, int step, int width, const Kel32f* pDets,
                                                     Kel32f* pResult, const Kel8u* pSign, int offset, int scaleFactor) {
    if (const KelStatus fault = mixtureFault(step, width, height, pSrc, pMean, pIvar, pDets, pResult, pSign))
        return fault;
    if (offset < 0) return kelStatusSize;
    *pResult = selectedScore<SinglePrecision<InverseVariance>>(
        gaussians(pSrc, StepRows(pMean, step), StepRows(pIvar, step)), SetBits(pSign, toSize(offset), toSize(height)),
        toSize(width), HalfScaled(ConstantOf{pDets}, scaleFactor));
    return kelStatusOk;
}

KelStatus kelsLogGaussMixture_SelectScaled_16s32f_D2L(const Kel16s* pSrc, const Kel16s** ppMean, const Kel16s** ppIvar,
                                                      int height, int width, const Kel32f* pDets, Kel32f* pResult,
                                                      const Kel8u* pSign, int offset, int scaleFactor) {
    if (const KelStatus fault = rowsFault(width, height, pSrc, ppMean, ppIvar, pDets, pResult, pSign)) return fault;
    if (offset < 0) return kelStatusSize;
    *pResult = selectedScore<SinglePrecision<InverseVariance>>(
        gaussians(pSrc, PointerRows(ppMean), PointerRows(ppIvar)), SetBits(pSign, toSize(offset), toSize(height)),
        toSize(width), HalfScaled(ConstantOf{pDets}, scaleFactor));
    return kelStatusOk;
}

KelStatus kelsLogGaussMixture_SelectIdVarScaled_16s32f_D2(const Kel16s* pSrc, const Kel16s* pMean, int height, int step,
                                                          int width, const Kel32f* pDets, Kel32f* pResult,
                                                          const Kel8u* pSign, int offset, int scaleFactor) {
    if (const KelStatus fault = mixtureFault(step, width, height, pSrc, pMean, pDets, pResult, pSign)) return fault;
    if (offset < 0) return kelStatusSize;
    *pResult = selectedScore<SinglePrecision<UnitVariance>>(gaussians(pSrc, StepRows(pMean, step)),
                                                            SetBits(pSign, toSize(offset), toSize(height)),
                                                            toSize(width), HalfScaled(ConstantOf{pDets}, scaleFactor));
    return kelStatusOk;
}

KelStatus kelsLogGaussMixture_SelectIdVarScaled_16s32f_D2L(const Kel16s* pSrc, const Kel16s** ppMean, int height,
                                                           int width, const Kel32f* pDets, Kel32f* pResult,
                                                           const Kel8u* pSign, int offset, int scaleFactor) {
    if (const KelStatus fault = rowsFault(width, height, pSrc, ppMean, pDets, pResult, pSign)) return fault;
    if (offset < 0) return kelStatusSize;
    *pResult = selectedScore<SinglePrecision<UnitVariance>>(gaussians(pSrc, PointerRows(ppMean)),
                                                            SetBits(pSign, toSize(offset), toSize(height)),
                                                            toSize(width), HalfScaled(ConstantOf{pDets}, scaleFactor));
    return kelStatusOk;
}
