// Running sums of frames: the log likelihood so far of each frame.
// Names with a 1 forward to those without it; forms without a scale factor, and Low forms, forward to the scaled ones.
#include "kels/mixture.h"

#include "scoring/checks.h"
#include "scoring/mixture/fold.h"

namespace {
using namespace kels;
using namespace kels::gauss;
using namespace kels::mixture;
using namespace kels::scoring;
}  // namespace

// ---- float models --------------------------------------------------------------------------------------------------

KelStatus kelsLogGaussAdd1_32f_D2(const Kel32f* pSrc, int step, const Kel32f* pMean, const Kel32f* pIvar, int width,
                                  Kel32f* pSrcDst, int height, Kel32f gConst) {
    return kelsLogGaussAdd_32f_D2(pSrc, step, pMean, pIvar, width, pSrcDst, height, gConst);
}

KelStatus kelsLogGaussAdd_32f_D2(const Kel32f* pSrc, int step, const Kel32f* pMean, const Kel32f* pIvar, int width,
                                 Kel32f* pSrcDst, int height, Kel32f gConst) {
    if (const KelStatus fault = blockFault(step, width, height, pSrc, pMean, pIvar, pSrcDst)) return fault;
    score<SinglePrecision<InverseVariance>>(frames(StepRows(pSrc, step), pMean, pIvar), toSize(height), toSize(width),
                                            Half(SameConstant{gConst}), LogAddTo{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussAdd_32f_D2L(const Kel32f** ppSrc, const Kel32f* pMean, const Kel32f* pIvar, int width,
                                  Kel32f* pSrcDst, int height, Kel32f gConst) {
    if (const KelStatus fault = rowsFault(width, height, ppSrc, pMean, pIvar, pSrcDst)) return fault;
    score<SinglePrecision<InverseVariance>>(frames(PointerRows(ppSrc), pMean, pIvar), toSize(height), toSize(width),
                                            Half(SameConstant{gConst}), LogAddTo{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussAdd_64f_D2(const Kel64f* pSrc, int step, const Kel64f* pMean, const Kel64f* pIvar, int width,
                                 Kel64f* pSrcDst, int height, Kel64f gConst) {
    if (const KelStatus fault = blockFault(step, width, height, pSrc, pMean, pIvar, pSrcDst)) return fault;
    score<Extended<InverseVariance>>(frames(StepRows(pSrc, step), pMean, pIvar), toSize(height), toSize(width),
                                     Half(SameConstant{gConst}), LogAddTo{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussAdd_64f_D2L(const Kel64f** ppSrc, const Kel64f* pMean, const Kel64f* pIvar, int width,
                                  Kel64f* pSrcDst, int height, Kel64f gConst) {
    if (const KelStatus fault = rowsFault(width, height, ppSrc, pMean, pIvar, pSrcDst)) return fault;
    score<Extended<InverseVariance>>(frames(PointerRows(ppSrc), pMean, pIvar), toSize(height), toSize(width),
                                     Half(SameConstant{gConst}), LogAddTo{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussAdd_IdVar_32f_D2(const Kel32f* pSrc, int step, const Kel32f* pMean, int width, Kel32f* pSrcDst,
                                       int height, Kel32f gConst) {
    if (const KelStatus fault = blockFault(step, width, height, pSrc, pMean, pSrcDst)) return fault;
    score<SinglePrecision<UnitVariance>>(frames(StepRows(pSrc, step), pMean), toSize(height), toSize(width),
                                         Half(SameConstant{gConst}), LogAddTo{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussAdd_IdVar_32f_D2L(const Kel32f** ppSrc, const Kel32f* pMean, int width, Kel32f* pSrcDst,
                                        int height, Kel32f gConst) {
    if (const KelStatus fault = rowsFault(width, height, ppSrc, pMean, pSrcDst)) return fault;
    score<SinglePrecision<UnitVariance>>(frames(PointerRows(ppSrc), pMean), toSize(height), toSize(width),
                                         Half(SameConstant{gConst}), LogAddTo{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussAdd_IdVar_64f_D2(const Kel64f* pSrc, int step, const Kel64f* pMean, int width, Kel64f* pSrcDst,
                                       int height, Kel64f gConst) {
    if (const KelStatus fault = blockFault(step, width, height, pSrc, pMean, pSrcDst)) return fault;
    score<Extended<UnitVariance>>(frames(StepRows(pSrc, step), pMean), toSize(height), toSize(width),
                                  Half(SameConstant{gConst}), LogAddTo{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussAdd_IdVar_64f_D2L(const Kel64f** ppSrc, const Kel64f* pMean, int width, Kel64f* pSrcDst,
                                        int height, Kel64f gConst) {
    if (const KelStatus fault = rowsFault(width, height, ppSrc, pMean, pSrcDst)) return fault;
    score<Extended<UnitVariance>>(frames(PointerRows(ppSrc), pMean), toSize(height), toSize(width),
                                  Half(SameConstant{gConst}), LogAddTo{pSrcDst});
    return kelStatusOk;
}

// ---- 16-bit models, float scores -----------------------------------------------------------------------------------

KelStatus kelsLogGaussAdd_Scaled_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, const Kel16s* pIvar,
                                           int width, Kel32f* pSrcDst, int height, Kel32f gConst, int scaleFactor) {
    if (const KelStatus fault = blockFault(step, width, height, pSrc, pMean, pIvar, pSrcDst)) return fault;
    score<SinglePrecision<InverseVariance>>(frames(StepRows(pSrc, step), pMean, pIvar), toSize(height), toSize(width),
                                            HalfScaled(SameConstant{gConst}, scaleFactor), LogAddTo{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussAdd_Scaled_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, const Kel16s* pIvar, int width,
                                            Kel32f* pSrcDst, int height, Kel32f gConst, int scaleFactor) {
    if (const KelStatus fault = rowsFault(width, height, ppSrc, pMean, pIvar, pSrcDst)) return fault;
    score<SinglePrecision<InverseVariance>>(frames(PointerRows(ppSrc), pMean, pIvar), toSize(height), toSize(width),
                                            HalfScaled(SameConstant{gConst}, scaleFactor), LogAddTo{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussAdd_IdVarScaled_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, int width,
                                                Kel32f* pSrcDst, int height, Kel32f gConst, int scaleFactor) {
    if (const KelStatus fault = blockFault(step, width, height, pSrc, pMean, pSrcDst)) return fault;
    score<SinglePrecision<UnitVariance>>(frames(StepRows(pSrc, step), pMean), toSize(height), toSize(width),
                                         HalfScaled(SameConstant{gConst}, scaleFactor), LogAddTo{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussAdd_IdVarScaled_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, int width, Kel32f* pSrcDst,
                                                 int height, Kel32f gConst, int scaleFactor) {
    if (const KelStatus fault = rowsFault(width, height, ppSrc, pMean, pSrcDst)) return fault;
    score<SinglePrecision<UnitVariance>>(frames(PointerRows(ppSrc), pMean), toSize(height), toSize(width),
                                         HalfScaled(SameConstant{gConst}, scaleFactor), LogAddTo{pSrcDst});
    return kelStatusOk;
}

KelStatus kelsLogGaussAdd_LowScaled_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, const Kel16s* pIvar,
                                              int width, Kel32f* pSrcDst, int height, Kel32f gConst, int scaleFactor) {
    return kelsLogGaussAdd_Scaled_16s32f_D2(pSrc, step, pMean, pIvar, width, pSrcDst, height, gConst, scaleFactor);
}

KelStatus kelsLogGaussAdd_LowScaled_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, const Kel16s* pIvar,
                                               int width, Kel32f* pSrcDst, int height, Kel32f gConst, int scaleFactor) {
    return kelsLogGaussAdd_Scaled_16s32f_D2L(ppSrc, pMean, pIvar, width, pSrcDst, height, gConst, scaleFactor);
}

KelStatus kelsLogGaussAdd_IdVarLowScaled_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, int width,
                                                   Kel32f* pSrcDst, int height, Kel32f gConst, int scaleFactor) {
    return kelsLogGaussAdd_IdVarScaled_16s32f_D2(pSrc, step, pMean, width, pSrcDst, height, gConst, scaleFactor);
}

KelStatus kelsLogGaussAdd_IdVarLowScaled_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, int width,
                                                    Kel32f* pSrcDst, int height, Kel32f gConst, int scaleFactor) {
    return kelsLogGaussAdd_IdVarScaled_16s32f_D2L(ppSrc, pMean, width, pSrcDst, height, gConst, scaleFactor);
}

KelStatus kelsLogGaussAdd_IdVar_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, int width, Kel32f* pSrcDst,
                                          int height, Kel32f gConst) {
    return kelsLogGaussAdd_IdVarScaled_16s32f_D2(pSrc, step, pMean, width, pSrcDst, height, gConst, 0);
}

KelStatus kelsLogGaussAdd_IdVar_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, int width, Kel32f* pSrcDst,
                                           int height, Kel32f gConst) {
    return kelsLogGaussAdd_IdVarScaled_16s32f_D2L(ppSrc, pMean, width, pSrcDst, height, gConst, 0);
}

KelStatus kelsLogGaussAdd_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, const Kel16s* pIvar, int width,
                                    Kel32f* pSrcDst, int height, Kel32f gConst) {
    return kelsLogGaussAdd_Scaled_16s32f_D2(pSrc, step, pMean, pIvar, width, pSrcDst, height, gConst, 0);
}

KelStatus kelsLogGaussAdd_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, const Kel16s* pIvar, int width,
                                     Kel32f* pSrcDst, int height, Kel32f gConst) {
    return kelsLogGaussAdd_Scaled_16s32f_D2L(ppSrc, pMean, pIvar, width, pSrcDst, height, gConst, 0);
}
