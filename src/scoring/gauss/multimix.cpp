// One vector under many Gaussians: scores and Mahalanobis distances.
// Names with a 2 forward to those of MultiMix, and forms without a scale factor to the scaled ones.
#include "kels/block.h"

#include "scoring/checks.h"
#include "scoring/gauss/walk.h"

namespace {
using namespace kels;
using namespace kels::gauss;
using namespace kels::scoring;
}  // namespace

// ---- float models ---------------------------------------------------------------------------------------------------

KelStatus kelsLogGaussMultiMix_64f_D2(const Kel64f* pMean, const Kel64f* pIvar, int step, const Kel64f* pSrc, int width,
                                      Kel64f* pSrcDst, int height) {
    if (const KelStatus fault = blockFault(step, width, height, pMean, pIvar, pSrc, pSrcDst)) return fault;
    score<Extended<InverseVariance>>(gaussians(pSrc, StepRows(pMean, step), StepRows(pIvar, step)), toSize(height),
                                     toSize(width), Half(ConstantOf{pSrcDst}), StoreTo{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussMultiMix_64f_D2L(const Kel64f** ppMean, const Kel64f** ppIvar, const Kel64f* pSrc, int width,
                                       Kel64f* pSrcDst, int height) {
    if (const KelStatus fault = rowsFault(width, height, ppMean, ppIvar, pSrc, pSrcDst)) return fault;
    score<Extended<InverseVariance>>(gaussians(pSrc, PointerRows(ppMean), PointerRows(ppIvar)), toSize(height),
                                     toSize(width), Half(ConstantOf{pSrcDst}), StoreTo{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussMultiMix_32f_D2(const Kel32f* pMean, const Kel32f* pIvar, int step, const Kel32f* pSrc, int width,
                                      Kel32f* pSrcDst, int height) {
    if (const KelStatus fault = blockFault(step, width, height, pMean, pIvar, pSrc, pSrcDst)) return fault;
    score<SinglePrecision<InverseVariance>>(gaussians(pSrc, StepRows(pMean, step), StepRows(pIvar, step)),
                                            toSize(height), toSize(width), Half(ConstantOf{pSrcDst}), StoreTo{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussMultiMix_32f_D2L(const Kel32f** ppMean, const Kel32f** ppIvar, const Kel32f* pSrc, int width,
                                       Kel32f* pSrcDst, int height) {
    if (const KelStatus fault = rowsFault(width, height, ppMean, ppIvar, pSrc, pSrcDst)) return fault;
    score<SinglePrecision<InverseVariance>>(gaussians(pSrc, PointerRows(ppMean), PointerRows(ppIvar)), toSize(height),
                                            toSize(width), Half(ConstantOf{pSrcDst}), StoreTo{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGauss2_64f_D2(const Kel64f* pMean, const Kel64f* pIvar, int step, const Kel64f* pSrc, int width,
                               Kel64f* pSrcDst, int height) {
    return kelsLogGaussMultiMix_64f_D2(pMean, pIvar, step, pSrc, width, pSrcDst, height);
}

KelStatus kelsLogGauss2_64f_D2L(const Kel64f** ppMean, const Kel64f** ppIvar, const Kel64f* pSrc, int width,
                                Kel64f* pSrcDst, int height) {
    return kelsLogGaussMultiMix_64f_D2L(ppMean, ppIvar, pSrc, width, pSrcDst, height);
}

KelStatus kelsLogGauss2_32f_D2(const Kel32f* pMean, const Kel32f* pIvar, int step, const Kel32f* pSrc, int width,
                               Kel32f* pSrcDst, int height) {
    return kelsLogGaussMultiMix_32f_D2(pMean, pIvar, step, pSrc, width, pSrcDst, height);
}

KelStatus kelsLogGauss2_32f_D2L(const Kel32f** ppMean, const Kel32f** ppIvar, const Kel32f* pSrc, int width,
                                Kel32f* pSrcDst, int height) {
    return kelsLogGaussMultiMix_32f_D2L(ppMean, ppIvar, pSrc, width, pSrcDst, height);
}

// ---- 16-bit models --------------------------------------------------------------------------------------------------

KelStatus kelsLogGaussMultiMix_16s32s_D2Sfs(const Kel16s* pMean, const Kel16s* pIvar, int step, const Kel16s* pSrc,
                                            int width, Kel32s* pSrcDst, int height, int scaleFactor) {
    if (const KelStatus fault = blockFault(step, width, height, pMean, pIvar, pSrc, pSrcDst)) return fault;
    score<Exact<InverseVariance>>(gaussians(pSrc, StepRows(pMean, step), StepRows(pIvar, step)), toSize(height),
                                  toSize(width), HalfShifted(Saturated(), ConstantOf{pSrcDst}, scaleFactor),
                                  StoreTo{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussMultiMix_16s32s_D2LSfs(const Kel16s** ppMean, const Kel16s** ppIvar, const Kel16s* pSrc,
                                             int width, Kel32s* pSrcDst, int height, int scaleFactor) {
    if (const KelStatus fault = rowsFault(width, height, ppMean, ppIvar, pSrc, pSrcDst)) return fault;
    score<Exact<InverseVariance>>(gaussians(pSrc, PointerRows(ppMean), PointerRows(ppIvar)), toSize(height),
                                  toSize(width), HalfShifted(Saturated(), ConstantOf{pSrcDst}, scaleFactor),
                                  StoreTo{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussMultiMix_Low_16s32s_D2Sfs(const Kel16s* pMean, const Kel16s* pIvar, int step, const Kel16s* pSrc,
                                                int width, Kel32s* pSrcDst, int height, int scaleFactor) {
    if (const KelStatus fault = blockFault(step, width, height, pMean, pIvar, pSrc, pSrcDst)) return fault;
    score<Exact<InverseVariance>>(gaussians(pSrc, StepRows(pMean, step), StepRows(pIvar, step)), toSize(height),
                                  toSize(width), HalfShifted(Wrapped(), ConstantOf{pSrcDst}, scaleFactor),
                                  StoreTo{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussMultiMix_Low_16s32s_D2LSfs(const Kel16s** ppMean, const Kel16s** ppIvar, const Kel16s* pSrc,
                                                 int width, Kel32s* pSrcDst, int height, int scaleFactor) {
    if (const KelStatus fault = rowsFault(width, height, ppMean, ppIvar, pSrc, pSrcDst)) return fault;
    score<Exact<InverseVariance>>(gaussians(pSrc, PointerRows(ppMean), PointerRows(ppIvar)), toSize(height),
                                  toSize(width), HalfShifted(Wrapped(), ConstantOf{pSrcDst}, scaleFactor),
                                  StoreTo{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussMultiMix_Scaled_16s32f_D2(const Kel16s* pMean, const Kel16s* pIvar, int step, const Kel16s* pSrc,
                                                int width, Kel32f* pSrcDst, int height, int scaleFactor) {
    if (const KelStatus fault = blockFault(step, width, height, pMean, pIvar, pSrc, pSrcDst)) return fault;
    score<SinglePrecision<InverseVariance>>(gaussians(pSrc, StepRows(pMean, step), StepRows(pIvar, step)),
                                            toSize(height), toSize(width), HalfScaled(ConstantOf{pSrcDst}, scaleFactor),
                                            StoreTo{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussMultiMix_Scaled_16s32f_D2L(const Kel16s** ppMean, const Kel16s** ppIvar, const Kel16s* pSrc,
                                                 int width, Kel32f* pSrcDst, int height, int scaleFactor) {
    if (const KelStatus fault = rowsFault(width, height, ppMean, ppIvar, pSrc, pSrcDst)) return fault;
    score<SinglePrecision<InverseVariance>>(gaussians(pSrc, PointerRows(ppMean), PointerRows(ppIvar)), toSize(height),
                                            toSize(width), HalfScaled(ConstantOf{pSrcDst}, scaleFactor),
                                            StoreTo{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussMultiMix_16s32f_D2(const Kel16s* pMean, const Kel16s* pIvar, int step, const Kel16s* pSrc,
                                         int width, Kel32f* pSrcDst, int height) {
    return kelsLogGaussMultiMix_Scaled_16s32f_D2(pMean, pIvar, step, pSrc, width, pSrcDst, height, 0);
}

KelStatus kelsLogGaussMultiMix_16s32f_D2L(const Kel16s** ppMean, const Kel16s** ppIvar, const Kel16s* pSrc, int width,
                                          Kel32f* pSrcDst, int height) {
    return kelsLogGaussMultiMix_Scaled_16s32f_D2L(ppMean, ppIvar, pSrc, width, pSrcDst, height, 0);
}

// ---- Mahalanobis distances ------------------------------------------------------------------------------------------

KelStatus kelsMahDistMultiMix_64f_D2(const Kel64f* pMean, const Kel64f* pIvar, int step, const Kel64f* pSrc, int width,
                                     Kel64f* pDst, int height) {
    if (const KelStatus fault = blockFault(step, width, height, pMean, pIvar, pSrc, pDst)) return fault;
    score<Extended<InverseVariance>>(gaussians(pSrc, StepRows(pMean, step), StepRows(pIvar, step)), toSize(height),
                                     toSize(width), Distance<Kel64f>(), StoreTo{pDst});
    return kelStatusOk;
}

KelStatus kelsMahDistMultiMix_64f_D2L(const Kel64f** ppMean, const Kel64f** ppIvar, const Kel64f* pSrc, int width,
                                      Kel64f* pDst, int height) {
    if (const KelStatus fault = rowsFault(width, height, ppMean, ppIvar, pSrc, pDst)) return fault;
    score<Extended<InverseVariance>>(gaussians(pSrc, PointerRows(ppMean), PointerRows(ppIvar)), toSize(height),
                                     toSize(width), Distance<Kel64f>(), StoreTo{pDst});
    return kelStatusOk;
}

KelStatus kelsMahDistMultiMix_32f_D2(const Kel32f* pMean, const Kel32f* pIvar, int step, const Kel32f* pSrc, int width,
                                     Kel32f* pDst, int height) {
    if (const KelStatus fault = blockFault(step, width, height, pMean, pIvar, pSrc, pDst)) return fault;
    score<SinglePrecision<InverseVariance>>(gaussians(pSrc, StepRows(pMean, step), StepRows(pIvar, step)),
                                            toSize(height), toSize(width), Distance<Kel32f>(), StoreTo{pDst});
    return kelStatusOk;
}

KelStatus kelsMahDistMultiMix_32f_D2L(const Kel32f** ppMean, const Kel32f** ppIvar, const Kel32f* pSrc, int width,
                                      Kel32f* pDst, int height) {
    if (const KelStatus fault = rowsFault(width, height, ppMean, ppIvar, pSrc, pDst)) return fault;
    score<SinglePrecision<InverseVariance>>(gaussians(pSrc, PointerRows(ppMean), PointerRows(ppIvar)), toSize(height),
                                            toSize(width), Distance<Kel32f>(), StoreTo{pDst});
    return kelStatusOk;
}

KelStatus kelsMahDist2_64f_D2(const Kel64f* pMean, const Kel64f* pIvar, int step, const Kel64f* pSrc, int width,
                              Kel64f* pDst, int height) {
    return kelsMahDistMultiMix_64f_D2(pMean, pIvar, step, pSrc, width, pDst, height);
}

KelStatus kelsMahDist2_64f_D2L(const Kel64f** ppMean, const Kel64f** ppIvar, const Kel64f* pSrc, int width,
                               Kel64f* pDst, int height) {
    return kelsMahDistMultiMix_64f_D2L(ppMean, ppIvar, pSrc, width, pDst, height);
}

KelStatus kelsMahDist2_32f_D2(const Kel32f* pMean, const Kel32f* pIvar, int step, const Kel32f* pSrc, int width,
                              Kel32f* pDst, int height) {
    return kelsMahDistMultiMix_32f_D2(pMean, pIvar, step, pSrc, width, pDst, height);
}

KelStatus kelsMahDist2_32f_D2L(const Kel32f** ppMean, const Kel32f** ppIvar, const Kel32f* pSrc, int width,
                               Kel32f* pDst, int height) {
    return kelsMahDistMultiMix_32f_D2L(ppMean, ppIvar, pSrc, width, pDst, height);
}
