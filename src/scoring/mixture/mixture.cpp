// One vector under a mixture of Gaussians.
// Low forms forward to the scaled ones.
#include "kels/mixture.h"

#include "scoring/checks.h"
#include "scoring/mixture/sum.h"

namespace {
using namespace kels;
using namespace kels::gauss;
using namespace kels::mixture;
using namespace kels::scoring;
}  // namespace

KelStatus kelsLogGaussMixture_32f_D2(const Kel32f* pSrc, const Kel32f* pMean, const Kel32f* pIvar, int height, int step,
                                     int width, const Kel32f* pDets, Kel32f* pResult) {
    if (const KelStatus fault = mixtureFault(step, width, height, pSrc, pMean, pIvar, pDets, pResult)) return fault;
    *pResult =
        mixtureScore<SinglePrecision<InverseVariance>>(gaussians(pSrc, StepRows(pMean, step), StepRows(pIvar, step)),
                                                       toSize(height), toSize(width), Half(ConstantOf{pDets}));
    return kelStatusOk;
}

KelStatus kelsLogGaussMixture_32f_D2L(const Kel32f* pSrc, const Kel32f** ppMean, const Kel32f** ppIvar, int height,
                                      int width, const Kel32f* pDets, Kel32f* pResult) {
    if (const KelStatus fault = rowsFault(width, height, pSrc, ppMean, ppIvar, pDets, pResult)) return fault;
    *pResult = mixtureScore<SinglePrecision<InverseVariance>>(gaussians(pSrc, PointerRows(ppMean), PointerRows(ppIvar)),
                                                              toSize(height), toSize(width), Half(ConstantOf{pDets}));
    return kelStatusOk;
}

KelStatus kelsLogGaussMixture_64f_D2(const Kel64f* pSrc, const Kel64f* pMean, const Kel64f* pIvar, int height, int step,
                                     int width, const Kel64f* pDets, Kel64f* pResult) {
    if (const KelStatus fault = mixtureFault(step, width, height, pSrc, pMean, pIvar, pDets, pResult)) return fault;
    *pResult = mixtureScore<Extended<InverseVariance>>(gaussians(pSrc, StepRows(pMean, step), StepRows(pIvar, step)),
                                                       toSize(height), toSize(width), Half(ConstantOf{pDets}));
    return kelStatusOk;
}

KelStatus kelsLogGaussMixture_64f_D2L(const Kel64f* pSrc, const Kel64f** ppMean, const Kel64f** ppIvar, int height,
                                      int width, const Kel64f* pDets, Kel64f* pResult) {
    if (const KelStatus fault = rowsFault(width, height, pSrc, ppMean, ppIvar, pDets, pResult)) return fault;
    *pResult = mixtureScore<Extended<InverseVariance>>(gaussians(pSrc, PointerRows(ppMean), PointerRows(ppIvar)),
                                                       toSize(height), toSize(width), Half(ConstantOf{pDets}));
    return kelStatusOk;
}

KelStatus kelsLogGaussMixture_IdVar_32f_D2(const Kel32f* pSrc, const Kel32f* pMean, int height, int step, int width,
                                           const Kel32f* pDets, Kel32f* pResult) {
    if (const KelStatus fault = mixtureFault(step, width, height, pSrc, pMean, pDets, pResult)) return fault;
    *pResult = mixtureScore<SinglePrecision<UnitVariance>>(gaussians(pSrc, StepRows(pMean, step)), toSize(height),
                                                           toSize(width), Half(ConstantOf{pDets}));
    return kelStatusOk;
}

KelStatus kelsLogGaussMixture_IdVar_32f_D2L(const Kel32f* pSrc, const Kel32f** ppMean, int height, int width,
                                            const Kel32f* pDets, Kel32f* pResult) {
    if (const KelStatus fault = rowsFault(width, height, pSrc, ppMean, pDets, pResult)) return fault;
    *pResult = mixtureScore<SinglePrecision<UnitVariance>>(gaussians(pSrc, PointerRows(ppMean)), toSize(height),
                                                           toSize(width), Half(ConstantOf{pDets}));
    return kelStatusOk;
}

KelStatus kelsLogGaussMixture_IdVar_64f_D2(const Kel64f* pSrc, const Kel64f* pMean, int height, int step, int width,
                                           const Kel64f* pDets, Kel64f* pResult) {
    if (const KelStatus fault = mixtureFault(step, width, height, pSrc, pMean, pDets, pResult)) return fault;
    *pResult = mixtureScore<Extended<UnitVariance>>(gaussians(pSrc, StepRows(pMean, step)), toSize(height),
                                                    toSize(width), Half(ConstantOf{pDets}));
    return kelStatusOk;
}

KelStatus kelsLogGaussMixture_IdVar_64f_D2L(const Kel64f* pSrc, const Kel64f** ppMean, int height, int width,
                                            const Kel64f* pDets, Kel64f* pResult) {
    if (const KelStatus fault = rowsFault(width, height, pSrc, ppMean, pDets, pResult)) return fault;
    *pResult = mixtureScore<Extended<UnitVariance>>(gaussians(pSrc, PointerRows(ppMean)), toSize(height), toSize(width),
                                                    Half(ConstantOf{pDets}));
    return kelStatusOk;
}

KelStatus kelsLogGaussMixture_Scaled_16s32f_D2(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pIvar, int height,
                                               int step, int width, const Kel32f* pDets, Kel32f* pResult,
                                               int scaleFactor) {
    if (const KelStatus fault = mixtureFault(step, width, height, pSrc, pMean, pIvar, pDets, pResult)) return fault;
    *pResult = mixtureScore<SinglePrecision<InverseVariance>>(
        gaussians(pSrc, StepRows(pMean, step), StepRows(pIvar, step)), toSize(height), toSize(width),
        HalfScaled(ConstantOf{pDets}, scaleFactor));
    return kelStatusOk;
}

KelStatus kelsLogGaussMixture_Scaled_16s32f_D2L(const Kel16s* pSrc, const Kel16s** ppMean, const Kel16s** ppIvar,
                                                int height, int width, const Kel32f* pDets, Kel32f* pResult,
                                                int scaleFactor) {
    if (const KelStatus fault = rowsFault(width, height, pSrc, ppMean, ppIvar, pDets, pResult)) return fault;
    *pResult = mixtureScore<SinglePrecision<InverseVariance>>(gaussians(pSrc, PointerRows(ppMean), PointerRows(ppIvar)),
                                                              toSize(height), toSize(width),
                                                              HalfScaled(ConstantOf{pDets}, scaleFactor));
    return kelStatusOk;
}

KelStatus kelsLogGaussMixture_LowScaled_16s32f_D2(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pIvar,
                                                  int height, int step, int width, const Kel32f* pDets, Kel32f* pResult,
                                                  int scaleFactor) {
    return kelsLogGaussMixture_Scaled_16s32f_D2(pSrc, pMean, pIvar, height, step, width, pDets, pResult, scaleFactor);
}

KelStatus kelsLogGaussMixture_LowScaled_16s32f_D2L(const Kel16s* pSrc, const Kel16s** ppMean, const Kel16s** ppIvar,
                                                   int height, int width, const Kel32f* pDets, Kel32f* pResult,
                                                   int scaleFactor) {
    return kelsLogGaussMixture_Scaled_16s32f_D2L(pSrc, ppMean, ppIvar, height, width, pDets, pResult, scaleFactor);
}

KelStatus kelsLogGaussMixture_IdVarScaled_16s32f_D2(const Kel16s* pSrc, const Kel16s* pMean, int height, int step,
                                                    int width, const Kel32f* pDets, Kel32f* pResult, int scaleFactor) {
    if (const KelStatus fault = mixtureFault(step, width, height, pSrc, pMean, pDets, pResult)) return fault;
    *pResult = mixtureScore<SinglePrecision<UnitVariance>>(gaussians(pSrc, StepRows(pMean, step)), toSize(height),
                                                           toSize(width), HalfScaled(ConstantOf{pDets}, scaleFactor));
    return kelStatusOk;
}

KelStatus kelsLogGaussMixture_IdVarScaled_16s32f_D2L(const Kel16s* pSrc, const Kel16s** ppMean, int height, int width,
                                                     const Kel32f* pDets, Kel32f* pResult, int scaleFactor) {
    if (const KelStatus fault = rowsFault(width, height, pSrc, ppMean, pDets, pResult)) return fault;
    *pResult = mixtureScore<SinglePrecision<UnitVariance>>(gaussians(pSrc, PointerRows(ppMean)), toSize(height),
                                                           toSize(width), HalfScaled(ConstantOf{pDets}, scaleFactor));
    return kelStatusOk;
}

KelStatus kelsLogGaussMixture_IdVarLowScaled_16s32f_D2(const Kel16s* pSrc, const Kel16s* pMean, int height, int step,
                                                       int width, const Kel32f* pDets, Kel32f* pResult,
                                                       int scaleFactor) {
    return kelsLogGaussMixture_IdVarScaled_16s32f_D2(pSrc, pMean, height, step, width, pDets, pResult, scaleFactor);
}

KelStatus kelsLogGaussMixture_IdVarLowScaled_16s32f_D2L(const Kel16s* pSrc, const Kel16s** ppMean, int height,
                                                        int width, const Kel32f* pDets, Kel32f* pResult,
                                                        int scaleFactor) {
    return kelsLogGaussMixture_IdVarScaled_16s32f_D2L(pSrc, ppMean, height, width, pDets, pResult, scaleFactor);
}
