// Frames of 16-bit integers under one Gaussian.
// Forms without a scale factor, and Low forms whose scores are floats, forward to the scaled ones.
#include "kels/block.h"

#include "scoring/checks.h"
#include "scoring/gauss/walk.h"

namespace {
using namespace kels;
using namespace kels::gauss;
using namespace kels::scoring;
}  // namespace

// ---- integer scores -------------------------------------------------------------------------------------------------

KelStatus kelsLogGauss_16s32s_D2Sfs(const Kel16s* pSrc, int step, const Kel16s* pMean, const Kel16s* pIvar, int width,
                                    Kel32s* pResult, int height, Kel32s gConst, int scaleFactor) {
    if (const KelStatus fault = blockFault(step, width, height, pSrc, pMean, pIvar, pResult)) return fault;
    score<Exact<InverseVariance>>(frames(StepRows(pSrc, step), pMean, pIvar), toSize(height), toSize(width),
                                  HalfShifted(Saturated(), SameConstant{gConst}, scaleFactor), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsLogGauss_16s32s_D2LSfs(const Kel16s** ppSrc, const Kel16s* pMean, const Kel16s* pIvar, int width,
                                     Kel32s* pResult, int height, Kel32s gConst, int scaleFactor) {
    if (const KelStatus fault = rowsFault(width, height, ppSrc, pMean, pIvar, pResult)) return fault;
    score<Exact<InverseVariance>>(frames(PointerRows(ppSrc), pMean, pIvar), toSize(height), toSize(width),
                                  HalfShifted(Saturated(), SameConstant{gConst}, scaleFactor), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsLogGauss_Low_16s32s_D2Sfs(const Kel16s* pSrc, int step, const Kel16s* pMean, const Kel16s* pIvar,
                                        int width, Kel32s* pResult, int height, Kel32s gConst, int scaleFactor) {
    if (const KelStatus fault = blockFault(step, width, height, pSrc, pMean, pIvar, pResult)) return fault;
    score<Exact<InverseVariance>>(frames(StepRows(pSrc, step), pMean, pIvar), toSize(height), toSize(width),
                                  HalfShifted(Wrapped(), SameConstant{gConst}, scaleFactor), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsLogGauss_Low_16s32s_D2LSfs(const Kel16s** ppSrc, const Kel16s* pMean, const Kel16s* pIvar, int width,
                                         Kel32s* pResult, int height, Kel32s gConst, int scaleFactor) {
    if (const KelStatus fault = rowsFault(width, height, ppSrc, pMean, pIvar, pResult)) return fault;
    score<Exact<InverseVariance>>(frames(PointerRows(ppSrc), pMean, pIvar), toSize(height), toSize(width),
                                  HalfShifted(Wrapped(), SameConstant{gConst}, scaleFactor), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsLogGauss_IdVar_16s32s_D2Sfs(const Kel16s* pSrc, int step, const Kel16s* pMean, int width, Kel32s* pResult,
                                          int height, Kel32s gConst, int scaleFactor) {
    if (const KelStatus fault = blockFault(step, width, height, pSrc, pMean, pResult)) return fault;
    score<Exact<UnitVariance>>(frames(StepRows(pSrc, step), pMean), toSize(height), toSize(width),
                               HalfShifted(Saturated(), SameConstant{gConst}, scaleFactor), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsLogGauss_IdVar_16s32s_D2LSfs(const Kel16s** ppSrc, const Kel16s* pMean, int width, Kel32s* pResult,
                                           int height, Kel32s gConst, int scaleFactor) {
    if (const KelStatus fault = rowsFault(width, height, ppSrc, pMean, pResult)) return fault;
    score<Exact<UnitVariance>>(frames(PointerRows(ppSrc), pMean), toSize(height), toSize(width),
                               HalfShifted(Saturated(), SameConstant{gConst}, scaleFactor), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsLogGauss_IdVarLow_16s32s_D2Sfs(const Kel16s* pSrc, int step, const Kel16s* pMean, int width,
                                             Kel32s* pResult, int height, Kel32s gConst, int scaleFactor) {
    if (const KelStatus fault = blockFault(step, width, height, pSrc, pMean, pResult)) return fault;
    score<Exact<UnitWrapped>>(frames(StepRows(pSrc, step), pMean), toSize(height), toSize(width),
                              HalfShifted(Wrapped(), SameConstant{gConst}, scaleFactor), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsLogGauss_IdVarLow_16s32s_D2LSfs(const Kel16s** ppSrc, const Kel16s* pMean, int width, Kel32s* pResult,
                                              int height, Kel32s gConst, int scaleFactor) {
    if (const KelStatus fault = rowsFault(width, height, ppSrc, pMean, pResult)) return fault;
    score<Exact<UnitWrapped>>(frames(PointerRows(ppSrc), pMean), toSize(height), toSize(width),
                              HalfShifted(Wrapped(), SameConstant{gConst}, scaleFactor), StoreTo{pResult});
    return kelStatusOk;
}

// ---- float scores ---------------------------------------------------------------------------------------------------

KelStatus kelsLogGauss_Scaled_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, const Kel16s* pIvar,
                                        int width, Kel32f* pResult, int height, Kel32f gConst, int scaleFactor) {
    if (const KelStatus fault = blockFault(step, width, height, pSrc, pMean, pIvar, pResult)) return fault;
    score<SinglePrecision<InverseVariance>>(frames(StepRows(pSrc, step), pMean, pIvar), toSize(height), toSize(width),
                                            HalfScaled(SameConstant{gConst}, scaleFactor), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsLogGauss_Scaled_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, const Kel16s* pIvar, int width,
                                         Kel32f* pResult, int height, Kel32f gConst, int scaleFactor) {
    if (const KelStatus fault = rowsFault(width, height, ppSrc, pMean, pIvar, pResult)) return fault;
    score<SinglePrecision<InverseVariance>>(frames(PointerRows(ppSrc), pMean, pIvar), toSize(height), toSize(width),
                                            HalfScaled(SameConstant{gConst}, scaleFactor), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsLogGauss_LowScaled_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, const Kel16s* pIvar,
                                           int width, Kel32f* pResult, int height, Kel32f gConst, int scaleFactor) {
    return kelsLogGauss_Scaled_16s32f_D2(pSrc, step, pMean, pIvar, width, pResult, height, gConst, scaleFactor);
}

KelStatus kelsLogGauss_LowScaled_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, const Kel16s* pIvar, int width,
                                            Kel32f* pResult, int height, Kel32f gConst, int scaleFactor) {
    return kelsLogGauss_Scaled_16s32f_D2L(ppSrc, pMean, pIvar, width, pResult, height, gConst, scaleFactor);
}

KelStatus kelsLogGauss_IdVarScaled_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, int width,
                                             Kel32f* pResult, int height, Kel32f gConst, int scaleFactor) {
    if (const KelStatus fault = blockFault(step, width, height, pSrc, pMean, pResult)) return fault;
    score<SinglePrecision<UnitVariance>>(frames(StepRows(pSrc, step), pMean), toSize(height), toSize(width),
                                         HalfScaled(SameConstant{gConst}, scaleFactor), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsLogGauss_IdVarScaled_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, int width, Kel32f* pResult,
                                              int height, Kel32f gConst, int scaleFactor) {
    if (const KelStatus fault = rowsFault(width, height, ppSrc, pMean, pResult)) return fault;
    score<SinglePrecision<UnitVariance>>(frames(PointerRows(ppSrc), pMean), toSize(height), toSize(width),
                                         HalfScaled(SameConstant{gConst}, scaleFactor), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsLogGauss_IdVarLowScaled_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, int width,
                                                Kel32f* pResult, int height, Kel32f gConst, int scaleFactor) {
    return kelsLogGauss_IdVarScaled_16s32f_D2(pSrc, step, pMean, width, pResult, height, gConst, scaleFactor);
}

KelStatus kelsLogGauss_IdVarLowScaled_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, int width, Kel32f* pResult,
                                                 int height, Kel32f gConst, int scaleFactor) {
    return kelsLogGauss_IdVarScaled_16s32f_D2L(ppSrc, pMean, width, pResult, height, gConst, scaleFactor);
}

KelStatus kelsLogGauss_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, const Kel16s* pIvar, int width,
                                 Kel32f* pResult, int height, Kel32f gConst) {
    return kelsLogGauss_Scaled_16s32f_D2(pSrc, step, pMean, pIvar, width, pResult, height, gConst, 0);
}

KelStatus kelsLogGauss_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, const Kel16s* pIvar, int width,
                                  Kel32f* pResult, int height, Kel32f gConst) {
    return kelsLogGauss_Scaled_16s32f_D2L(ppSrc, pMean, pIvar, width, pResult, height, gConst, 0);
}

KelStatus kelsLogGauss_Low_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, const Kel16s* pIvar, int width,
                                     Kel32f* pResult, int height, Kel32f gConst) {
    return kelsLogGauss_LowScaled_16s32f_D2(pSrc, step, pMean, pIvar, width, pResult, height, gConst, 0);
}

KelStatus kelsLogGauss_Low_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, const Kel16s* pIvar, int width,
                                      Kel32f* pResult, int height, Kel32f gConst) {
    return kelsLogGauss_LowScaled_16s32f_D2L(ppSrc, pMean, pIvar, width, pResult, height, gConst, 0);
}

KelStatus kelsLogGauss_IdVar_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, int width, Kel32f* pResult,
                                       int height, Kel32f gConst) {
    return kelsLogGauss_IdVarScaled_16s32f_D2(pSrc, step, pMean, width, pResult, height, gConst, 0);
}

KelStatus kelsLogGauss_IdVar_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, int width, Kel32f* pResult,
                                        int height, Kel32f gConst) {
    return kelsLogGauss_IdVarScaled_16s32f_D2L(ppSrc, pMean, width, pResult, height, gConst, 0);
}

KelStatus kelsLogGauss_IdVarLow_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, int width, Kel32f* pResult,
                                          int height, Kel32f gConst) {
    return kelsLogGauss_IdVarLowScaled_16s32f_D2(pSrc, step, pMean, width, pResult, height, gConst, 0);
}

KelStatus kelsLogGauss_IdVarLow_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, int width, Kel32f* pResult,
                                           int height, Kel32f gConst) {
    return kelsLogGauss_IdVarLowScaled_16s32f_D2L(ppSrc, pMean, width, pResult, height, gConst, 0);
}
