// Running maxima and sums of one vector under many Gaussians.
// Names with a 2 forward to those of MultiMix; forms without a scale factor, and Low forms whose scores are floats,
// forward to the scaled ones.
#include "kels/mixture.h"

#include "scoring/checks.h"
#include "scoring/mixture/fold.h"

namespace {
using namespace kels;
using namespace kels::gauss;
using namespace kels::mixture;
using namespace kels::scoring;
}  // namespace

// ---- maximum: float models -----------------------------------------------------------------------------------------

KelStatus kelsLogGaussMaxMultiMix_32f_D2(const Kel32f* pMean, const Kel32f* pIvar, int step, const Kel32f* pSrc,
                                         int width, const Kel32f* pDets, Kel32f* pSrcDst, int height) {
    if (const KelStatus fault = blockFault(step, width, height, pMean, pIvar, pSrc, pDets, pSrcDst)) return fault;
    score<SinglePrecision<InverseVariance>>(gaussians(pSrc, StepRows(pMean, step), StepRows(pIvar, step)),
                                            toSize(height), toSize(width), Half(ConstantOf{pDets}), MaxWith{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussMaxMultiMix_32f_D2L(const Kel32f** ppMean, const Kel32f** ppIvar, const Kel32f* pSrc, int width,
                                          const Kel32f* pDets, Kel32f* pSrcDst, int height) {
    if (const KelStatus fault = rowsFault(width, height, ppMean, ppIvar, pSrc, pDets, pSrcDst)) return fault;
    score<SinglePrecision<InverseVariance>>(gaussians(pSrc, PointerRows(ppMean), PointerRows(ppIvar)), toSize(height),
                                            toSize(width), Half(ConstantOf{pDets}), MaxWith{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussMaxMultiMix_64f_D2(const Kel64f* pMean, const Kel64f* pIvar, int step, const Kel64f* pSrc,
                                         int width, const Kel64f* pDets, Kel64f* pSrcDst, int height) {
    if (const KelStatus fault = blockFault(step, width, height, pMean, pIvar, pSrc, pDets, pSrcDst)) return fault;
    score<Extended<InverseVariance>>(gaussians(pSrc, StepRows(pMean, step), StepRows(pIvar, step)), toSize(height),
                                     toSize(width), Half(ConstantOf{pDets}), MaxWith{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussMaxMultiMix_64f_D2L(const Kel64f** ppMean, const Kel64f** ppIvar, const Kel64f* pSrc, int width,
                                          const Kel64f* pDets, Kel64f* pSrcDst, int height) {
    if (const KelStatus fault = rowsFault(width, height, ppMean, ppIvar, pSrc, pDets, pSrcDst)) return fault;
    score<Extended<InverseVariance>>(gaussians(pSrc, PointerRows(ppMean), PointerRows(ppIvar)), toSize(height),
                                     toSize(width), Half(ConstantOf{pDets}), MaxWith{pSrcDst});
    return kelStatusOk;
}

// ---- maximum: 16-bit models ----------------------------------------------------------------------------------------

KelStatus kelsLogGaussMaxMultiMix_16s32f_D2(const Kel16s* pMean, const Kel16s* pIvar, int step, const Kel16s* pSrc,
                                            int width, const Kel32f* pDets, Kel32f* pSrcDst, int height) {
    return kelsLogGaussMaxMultiMix_Scaled_16s32f_D2(pMean, pIvar, step, pSrc, width, pDets, pSrcDst, height, 0);
}

KelStatus kelsLogGaussMaxMultiMix_16s32f_D2L(const Kel16s** ppMean, const Kel16s** ppIvar, const Kel16s* pSrc,
                                             int width, const Kel32f* pDets, Kel32f* pSrcDst, int height) {
    return kelsLogGaussMaxMultiMix_Scaled_16s32f_D2L(ppMean, ppIvar, pSrc, width, pDets, pSrcDst, height, 0);
}

KelStatus kelsLogGaussMaxMultiMix_Scaled_16s32f_D2(const Kel16s* pMean, const Kel16s* pIvar, int step,
                                                   const Kel16s* pSrc, int width, const Kel32f* pDets, Kel32f* pSrcDst,
                                                   int height, int scaleFactor) {
    if (const KelStatus fault = blockFault(step, width, height, pMean, pIvar, pSrc, pDets, pSrcDst)) return fault;
    score<SinglePrecision<InverseVariance>>(gaussians(pSrc, StepRows(pMean, step), StepRows(pIvar, step)),
                                            toSize(height), toSize(width), HalfScaled(ConstantOf{pDets}, scaleFactor),
                                            MaxWith{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussMaxMultiMix_Scaled_16s32f_D2L(const Kel16s** ppMean, const Kel16s** ppIvar, const Kel16s* pSrc,
                                                    int width, const Kel32f* pDets, Kel32f* pSrcDst, int height,
                                                    int scaleFactor) {
    if (const KelStatus fault = rowsFault(width, height, ppMean, ppIvar, pSrc, pDets, pSrcDst)) return fault;
    score<SinglePrecision<InverseVariance>>(gaussians(pSrc, PointerRows(ppMean), PointerRows(ppIvar)), toSize(height),
                                            toSize(width), HalfScaled(ConstantOf{pDets}, scaleFactor),
                                            MaxWith{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussMaxMultiMix_16s32s_D2Sfs(const Kel16s* pMean, const Kel16s* pIvar, int step, const Kel16s* pSrc,
                                               int width, const Kel32s* pDets, Kel32s* pSrcDst, int height,
                                               int scaleFactor) {
    if (const KelStatus fault = blockFault(step, width, height, pMean, pIvar, pSrc, pDets, pSrcDst)) return fault;
    score<Exact<InverseVariance>>(gaussians(pSrc, StepRows(pMean, step), StepRows(pIvar, step)), toSize(height),
                                  toSize(width), HalfShifted(Saturated(), ConstantOf{pDets}, scaleFactor),
                                  MaxWith{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussMaxMultiMix_16s32s_D2LSfs(const Kel16s** ppMean, const Kel16s** ppIvar, const Kel16s* pSrc,
                                                int width, const Kel32s* pDets, Kel32s* pSrcDst, int height,
                                                int scaleFactor) {
    if (const KelStatus fault = rowsFault(width, height, ppMean, ppIvar, pSrc, pDets, pSrcDst)) return fault;
    score<Exact<InverseVariance>>(gaussians(pSrc, PointerRows(ppMean), PointerRows(ppIvar)), toSize(height),
                                  toSize(width), HalfShifted(Saturated(), ConstantOf{pDets}, scaleFactor),
                                  MaxWith{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussMaxMultiMix_LowScaled_16s32f_D2(const Kel16s* pMean, const Kel16s* pIvar, int step,
                                                      const Kel16s* pSrc, int width, const Kel32f* pDets,
                                                      Kel32f* pSrcDst, int height, int scaleFactor) {
    return kelsLogGaussMaxMultiMix_Scaled_16s32f_D2(pMean, pIvar, step, pSrc, width, pDets, pSrcDst, height,
                                                    scaleFactor);
}

KelStatus kelsLogGaussMaxMultiMix_LowScaled_16s32f_D2L(const Kel16s** ppMean, const Kel16s** ppIvar, const Kel16s* pSrc,
                                                       int width, const Kel32f* pDets, Kel32f* pSrcDst, int height,
                                                       int scaleFactor) {
    return kelsLogGaussMaxMultiMix_Scaled_16s32f_D2L(ppMean, ppIvar, pSrc, width, pDets, pSrcDst, height, scaleFactor);
}

KelStatus kelsLogGaussMaxMultiMix_Low_16s32s_D2Sfs(const Kel16s* pMean, const Kel16s* pIvar, int step,
                                                   const Kel16s* pSrc, int width, const Kel32s* pDets, Kel32s* pSrcDst,
                                                   int height, int scaleFactor) {
    if (const KelStatus fault = blockFault(step, width, height, pMean, pIvar, pSrc, pDets, pSrcDst)) return fault;
    score<Exact<InverseVariance>>(gaussians(pSrc, StepRows(pMean, step), StepRows(pIvar, step)), toSize(height),
                                  toSize(width), HalfShifted(Wrapped(), ConstantOf{pDets}, scaleFactor),
                                  MaxWith{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussMaxMultiMix_Low_16s32s_D2LSfs(const Kel16s** ppMean, const Kel16s** ppIvar, const Kel16s* pSrc,
                                                    int width, const Kel32s* pDets, Kel32s* pSrcDst, int height,
                                                    int scaleFactor) {
    if (const KelStatus fault = rowsFault(width, height, ppMean, ppIvar, pSrc, pDets, pSrcDst)) return fault;
    score<Exact<InverseVariance>>(gaussians(pSrc, PointerRows(ppMean), PointerRows(ppIvar)), toSize(height),
                                  toSize(width), HalfShifted(Wrapped(), ConstantOf{pDets}, scaleFactor),
                                  MaxWith{pSrcDst});
    return kelStatusOk;
}

// ---- log-add: float models -----------------------------------------------------------------------------------------

KelStatus kelsLogGaussAdd2_32f_D2(const Kel32f* pMean, const Kel32f* pIvar, int step, const Kel32f* pSrc, int width,
                                  const Kel32f* pDets, Kel32f* pSrcDst, int height) {
    return kelsLogGaussAddMultiMix_32f_D2(pMean, pIvar, step, pSrc, width, pDets, pSrcDst, height);
}

KelStatus kelsLogGaussAddMultiMix_32f_D2(const Kel32f* pMean, const Kel32f* pIvar, int step, const Kel32f* pSrc,
                                         int width, const Kel32f* pDets, Kel32f* pSrcDst, int height) {
    if (const KelStatus fault = blockFault(step, width, height, pMean, pIvar, pSrc, pDets, pSrcDst)) return fault;
    score<SinglePrecision<InverseVariance>>(gaussians(pSrc, StepRows(pMean, step), StepRows(pIvar, step)),
                                            toSize(height), toSize(width), Half(ConstantOf{pDets}), LogAddTo{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussAddMultiMix_32f_D2L(const Kel32f** ppMean, const Kel32f** ppIvar, const Kel32f* pSrc, int width,
                                          const Kel32f* pDets, Kel32f* pSrcDst, int height) {
    if (const KelStatus fault = rowsFault(width, height, ppMean, ppIvar, pSrc, pDets, pSrcDst)) return fault;
    score<SinglePrecision<InverseVariance>>(gaussians(pSrc, PointerRows(ppMean), PointerRows(ppIvar)), toSize(height),
                                            toSize(width), Half(ConstantOf{pDets}), LogAddTo{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussAddMultiMix_64f_D2(const Kel64f* pMean, const Kel64f* pIvar, int step, const Kel64f* pSrc,
                                         int width, const Kel64f* pDets, Kel64f* pSrcDst, int height) {
    if (const KelStatus fault = blockFault(step, width, height, pMean, pIvar, pSrc, pDets, pSrcDst)) return fault;
    score<Extended<InverseVariance>>(gaussians(pSrc, StepRows(pMean, step), StepRows(pIvar, step)), toSize(height),
                                     toSize(width), Half(ConstantOf{pDets}), LogAddTo{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussAddMultiMix_64f_D2L(const Kel64f** ppMean, const Kel64f** ppIvar, const Kel64f* pSrc, int width,
                                          const Kel64f* pDets, Kel64f* pSrcDst, int height) {
    if (const KelStatus fault = rowsFault(width, height, ppMean, ppIvar, pSrc, pDets, pSrcDst)) return fault;
    score<Extended<InverseVariance>>(gaussians(pSrc, PointerRows(ppMean), PointerRows(ppIvar)), toSize(height),
                                     toSize(width), Half(ConstantOf{pDets}), LogAddTo{pSrcDst});
    return kelStatusOk;
}

// ---- log-add: 16-bit models ----------------------------------------------------------------------------------------

KelStatus kelsLogGaussAddMultiMix_Scaled_16s32f_D2(const Kel16s* pMean, const Kel16s* pIvar, int step,
                                                   const Kel16s* pSrc, int width, const Kel32f* pDets, Kel32f* pSrcDst,
                                                   int height, int scaleFactor) {
    if (const KelStatus fault = blockFault(step, width, height, pMean, pIvar, pSrc, pDets, pSrcDst)) return fault;
    score<SinglePrecision<InverseVariance>>(gaussians(pSrc, StepRows(pMean, step), StepRows(pIvar, step)),
                                            toSize(height), toSize(width), HalfScaled(ConstantOf{pDets}, scaleFactor),
                                            LogAddTo{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussAddMultiMix_Scaled_16s32f_D2L(const Kel16s** ppMean, const Kel16s** ppIvar, const Kel16s* pSrc,
                                                    int width, const Kel32f* pDets, Kel32f* pSrcDst, int height,
                                                    int scaleFactor) {
    if (const KelStatus fault = rowsFault(width, height, ppMean, ppIvar, pSrc, pDets, pSrcDst)) return fault;
    score<SinglePrecision<InverseVariance>>(gaussians(pSrc, PointerRows(ppMean), PointerRows(ppIvar)), toSize(height),
                                            toSize(width), HalfScaled(ConstantOf{pDets}, scaleFactor),
                                            LogAddTo{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussAddMultiMix_LowScaled_16s32f_D2(const Kel16s* pMean, const Kel16s* pIvar, int step,
                                                      const Kel16s* pSrc, int width, const Kel32f* pDets,
                                                      Kel32f* pSrcDst, int height, int scaleFactor) {
    return kelsLogGaussAddMultiMix_Scaled_16s32f_D2(pMean, pIvar, step, pSrc, width, pDets, pSrcDst, height,
                                                    scaleFactor);
}

KelStatus kelsLogGaussAddMultiMix_LowScaled_16s32f_D2L(const Kel16s** ppMean, const Kel16s** ppIvar, const Kel16s* pSrc,
                                                       int width, const Kel32f* pDets, Kel32f* pSrcDst, int height,
                                                       int scaleFactor) {
    return kelsLogGaussAddMultiMix_Scaled_16s32f_D2L(ppMean, ppIvar, pSrc, width, pDets, pSrcDst, height, scaleFactor);
}

KelStatus kelsLogGaussAddMultiMix_16s32f_D2(const Kel16s* pMean, const Kel16s* pIvar, int step, const Kel16s* pSrc,
                                            int width, const Kel32f* pDets, Kel32f* pSrcDst, int height) {
    return kelsLogGaussAddMultiMix_Scaled_16s32f_D2(pMean, pIvar, step, pSrc, width, pDets, pSrcDst, height, 0);
}

KelStatus kelsLogGaussAddMultiMix_16s32f_D2L(const Kel16s** ppMean, const Kel16s** ppIvar, const Kel16s* pSrc,
                                             int width, const Kel32f* pDets, Kel32f* pSrcDst, int height) {
    return kelsLogGaussAddMultiMix_Scaled_16s32f_D2L(ppMean, ppIvar, pSrc, width, pDets, pSrcDst, height, 0);
}
