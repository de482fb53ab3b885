#include "core/check.h"
#include "core/rows.h"
#include "kels/block.h"
#include "scoring/gauss/walk.h"

using namespace kels;

// ---- integer scores -------------------------------------------------------------------------------------------------

KelStatus kelsLogGauss_16s32s_D2Sfs(const Kel16s* pSrc, int step, const Kel16s* pMean, const Kel16s* pIvar, int width,
                                    Kel32s* pResult, int height, Kel32s gConst, int scaleFactor) {
    if (stepTooSmall(step, width)) return kelStatusStep;
    if (anyNull(pSrc, pMean, pIvar, pResult)) return kelStatusNullPtr;
    if (width < 1 || height < 1) return kelStatusSize;
    score<Exact<InverseVariance>>(frames(StepRows(pSrc, step), pMean, pIvar), toSize(height), toSize(width),
                                  HalfShifted(Saturated(), SameConstant{gConst}, scaleFactor), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsLogGauss_16s32s_D2LSfs(const Kel16s** ppSrc, const Kel16s* pMean, const Kel16s* pIvar, int width,
                                     Kel32s* pResult, int height, Kel32s gConst, int scaleFactor) {
    if (anyNull(ppSrc, pMean, pIvar, pResult)) return kelStatusNullPtr;
    if (width < 1 || height < 1) return kelStatusSize;
    score<Exact<InverseVariance>>(frames(PointerRows(ppSrc), pMean, pIvar), toSize(height), toSize(width),
                                  HalfShifted(Saturated(), SameConstant{gConst}, scaleFactor), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsLogGauss_Low_16s32s_D2Sfs(const Kel16s* pSrc, int step, const Kel16s* pMean, const Kel16s* pIvar,
                                        int width, Kel32s* pResult, int height, Kel32s gConst, int scaleFactor) {
    if (stepTooSmall(step, width)) return kelStatusStep;
    if (anyNull(pSrc, pMean, pIvar, pResult)) return kelStatusNullPtr;
    if (width < 1 || height < 1) return kelStatusSize;
    score<Exact<InverseVariance>>(frames(StepRows(pSrc, step), pMean, pIvar), toSize(height), toSize(width),
                                  HalfShifted(Wrapped(), SameConstant{gConst}, scaleFactor), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsLogGauss_Low_16s32s_D2LSfs(const Kel16s** ppSrc, const Kel16s* pMean, const Kel16s* pIvar, int width,
                                         Kel32s* pResult, int height, Kel32s gConst, int scaleFactor) {
    if (anyNull(ppSrc, pMean, pIvar, pResult)) return kelStatusNullPtr;
    if (width < 1 || height < 1) return kelStatusSize;
    score<Exact<InverseVariance>>(frames(PointerRows(ppSrc), pMean, pIvar), toSize(height), toSize(width),
                                  HalfShifted(Wrapped(), SameConstant{gConst}, scaleFactor), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsLogGauss_IdVar_16s32s_D2Sfs(const Kel16s* pSrc, int step, const Kel16s* pMean, int width, Kel32s* pResult,
                                          int height, Kel32s gConst, int scaleFactor) {
    if (stepTooSmall(step, width)) return kelStatusStep;
    if (anyNull(pSrc, pMean, pResult)) return kelStatusNullPtr;
    if (width < 1 || height < 1) return kelStatusSize;
    score<Exact<UnitVariance>>(frames(StepRows(pSrc, step), pMean), toSize(height), toSize(width),
                               HalfShifted(Saturated(), SameConstant{gConst}, scaleFactor), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsLogGauss_IdVar_16s32s_D2LSfs(const Kel16s** ppSrc, const Kel16s* pMean, int width, Kel32s* pResult,
                                           int height, Kel32s gConst, int scaleFactor) {
    if (anyNull(ppSrc, pMean, pResult)) return kelStatusNullPtr;
    if (width < 1 || height < 1) return kelStatusSize;
    score<Exact<UnitVariance>>(frames(PointerRows(ppSrc), pMean), toSize(height), toSize(width),
                               HalfShifted(Saturated(), SameConstant{gConst}, scaleFactor), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsLogGauss_IdVarLow_16s32s_D2Sfs(const Kel16s* pSrc, int step, const Kel16s* pMean, int width,
                                             Kel32s* pResult, int height, Kel32s gConst, int scaleFactor) {
    if (stepTooSmall(step, width)) return kelStatusStep;
    if (anyNull(pSrc, pMean, pResult)) return kelStatusNullPtr;
    if (width < 1 || height < 1) return kelStatusSize;
    score<Exact<UnitWrapped>>(frames(StepRows(pSrc, step), pMean), toSize(height), toSize(width),
                              HalfShifted(Wrapped(), SameConstant{gConst}, scaleFactor), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsLogGauss_IdVarLow_16s32s_D2LSfs(const Kel16s** ppSrc, const Kel16s* pMean, int width, Kel32s* pResult,
                                              int height, Kel32s gConst, int scaleFactor) {
    if (anyNull(ppSrc, pMean, pResult)) return kelStatusNullPtr;
    if (width < 1 || height < 1) return kelStatusSize;
    score<Exact<UnitWrapped>>(frames(PointerRows(ppSrc), pMean), toSize(height), toSize(width),
                              HalfShifted(Wrapped(), SameConstant{gConst}, scaleFactor), StoreTo{pResult});
    return kelStatusOk;
}

// ---- float scores ---------------------------------------------------------------------------------------------------

KelStatus kelsLogGauss_Scaled_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, const Kel16s* pIvar,
                                        int width, Kel32f* pResult, int height, Kel32f gConst, int scaleFactor) {
    if (stepTooSmall(step, width)) return kelStatusStep;
    if (anyNull(pSrc, pMean, pIvar, pResult)) return kelStatusNullPtr;
    if (width < 1 || height < 1) return kelStatusSize;
    score<SinglePrecision<InverseVariance>>(frames(StepRows(pSrc, step), pMean, pIvar), toSize(height), toSize(width),
                                  HalfScaled(SameConstant{gConst}, scaleFactor), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsLogGauss_Scaled_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, const Kel16s* pIvar, int width,
                                         Kel32f* pResult, int height, Kel32f gConst, int scaleFactor) {
    if (anyNull(ppSrc, pMean, pIvar, pResult)) return kelStatusNullPtr;
    if (width < 1 || height < 1) return kelStatusSize;
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
    if (stepTooSmall(step, width)) return kelStatusStep;
    if (anyNull(pSrc, pMean, pResult)) return kelStatusNullPtr;
    if (width < 1 || height < 1) return kelStatusSize;
    score<SinglePrecision<UnitVariance>>(frames(StepRows(pSrc, step), pMean), toSize(height), toSize(width),
                               HalfScaled(SameConstant{gConst}, scaleFactor), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsLogGauss_IdVarScaled_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, int width, Kel32f* pResult,
                                              int height, Kel32f gConst, int scaleFactor) {
    if (anyNull(ppSrc, pMean, pResult)) return kelStatusNullPtr;
    if (width < 1 || height < 1) return kelStatusSize;
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
