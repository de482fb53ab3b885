// One vector under one Gaussian, with inverse variances or unit variances.
// Forms without a scale factor, and Low forms whose scores are floats, forward to the scaled ones.
#include "kels/gauss.h"

#include "core/check.h"
#include "scoring/gauss/walk.h"

namespace {
using namespace kels;
using namespace kels::gauss;
}  // namespace

// ---- inverse variances ---------------------------------------------------------------------------------------------

KelStatus kelsLogGaussSingle_64f(const Kel64f* pSrc, const Kel64f* pMean, const Kel64f* pIvar, int len, Kel64f* pResult,
                                 Kel64f gConst) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMean, pIvar, pResult)) return fault;
    *pResult = scoreOf<Extended<InverseVariance>>(Item{pSrc, pMean, pIvar}, toSize(len), Half(SameConstant{gConst}));
    return kelStatusOk;
}

KelStatus kelsLogGaussSingle_32f(const Kel32f* pSrc, const Kel32f* pMean, const Kel32f* pIvar, int len, Kel32f* pResult,
                                 Kel32f gConst) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMean, pIvar, pResult)) return fault;
    *pResult =
        scoreOf<SinglePrecision<InverseVariance>>(Item{pSrc, pMean, pIvar}, toSize(len), Half(SameConstant{gConst}));
    return kelStatusOk;
}

KelStatus kelsLogGaussSingle_32f64f(const Kel32f* pSrc, const Kel32f* pMean, const Kel32f* pIvar, int len,
                                    Kel64f* pResult, Kel64f gConst) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMean, pIvar, pResult)) return fault;
    *pResult = scoreOf<Extended<InverseVariance>>(Item{pSrc, pMean, pIvar}, toSize(len), Half(SameConstant{gConst}));
    return kelStatusOk;
}

KelStatus kelsLogGaussSingle_16s32f(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pIvar, int len,
                                    Kel32f* pResult, Kel32f gConst) {
    return kelsLogGaussSingle_Scaled_16s32f(pSrc, pMean, pIvar, len, pResult, gConst, 0);
}

KelStatus kelsLogGaussSingle_Scaled_16s32f(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pIvar, int len,
                                           Kel32f* pResult, Kel32f gConst, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMean, pIvar, pResult)) return fault;
    *pResult = scoreOf<SinglePrecision<InverseVariance>>(Item{pSrc, pMean, pIvar}, toSize(len),
                                                         HalfScaled(SameConstant{gConst}, scaleFactor));
    return kelStatusOk;
}

KelStatus kelsLogGaussSingle_16s32s_Sfs(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pIvar, int len,
                                        Kel32s* pResult, Kel32s gConst, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMean, pIvar, pResult)) return fault;
    *pResult = scoreOf<Exact<InverseVariance>>(Item{pSrc, pMean, pIvar}, toSize(len),
                                               HalfShifted(Saturated(), SameConstant{gConst}, scaleFactor));
    return kelStatusOk;
}

KelStatus kelsLogGaussSingle_Low_16s32f(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pIvar, int len,
                                        Kel32f* pResult, Kel32f gConst) {
    return kelsLogGaussSingle_LowScaled_16s32f(pSrc, pMean, pIvar, len, pResult, gConst, 0);
}

KelStatus kelsLogGaussSingle_LowScaled_16s32f(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pIvar, int len,
                                              Kel32f* pResult, Kel32f gConst, int scaleFactor) {
    return kelsLogGaussSingle_Scaled_16s32f(pSrc, pMean, pIvar, len, pResult, gConst, scaleFactor);
}

KelStatus kelsLogGaussSingle_Low_16s32s_Sfs(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pIvar, int len,
                                            Kel32s* pResult, Kel32s gConst, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMean, pIvar, pResult)) return fault;
    *pResult = scoreOf<Exact<InverseVariance>>(Item{pSrc, pMean, pIvar}, toSize(len),
                                               HalfShifted(Wrapped(), SameConstant{gConst}, scaleFactor));
    return kelStatusOk;
}

// ---- unit variances ------------------------------------------------------------------------------------------------

KelStatus kelsLogGaussSingle_IdVar_64f(const Kel64f* pSrc, const Kel64f* pMean, int len, Kel64f* pResult,
                                       Kel64f gConst) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMean, pResult)) return fault;
    *pResult = scoreOf<Extended<UnitVariance>>(Item{pSrc, pMean}, toSize(len), Half(SameConstant{gConst}));
    return kelStatusOk;
}

KelStatus kelsLogGaussSingle_IdVar_32f(const Kel32f* pSrc, const Kel32f* pMean, int len, Kel32f* pResult,
                                       Kel32f gConst) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMean, pResult)) return fault;
    *pResult = scoreOf<SinglePrecision<UnitVariance>>(Item{pSrc, pMean}, toSize(len), Half(SameConstant{gConst}));
    return kelStatusOk;
}

KelStatus kelsLogGaussSingle_IdVar_32f64f(const Kel32f* pSrc, const Kel32f* pMean, int len, Kel64f* pResult,
                                          Kel64f gConst) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMean, pResult)) return fault;
    *pResult = scoreOf<Extended<UnitVariance>>(Item{pSrc, pMean}, toSize(len), Half(SameConstant{gConst}));
    return kelStatusOk;
}

KelStatus kelsLogGaussSingle_IdVar_16s32f(const Kel16s* pSrc, const Kel16s* pMean, int len, Kel32f* pResult,
                                          Kel32f gConst) {
    return kelsLogGaussSingle_IdVarScaled_16s32f(pSrc, pMean, len, pResult, gConst, 0);
}

KelStatus kelsLogGaussSingle_IdVarScaled_16s32f(const Kel16s* pSrc, const Kel16s* pMean, int len, Kel32f* pResult,
                                                Kel32f gConst, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMean, pResult)) return fault;
    *pResult = scoreOf<SinglePrecision<UnitVariance>>(Item{pSrc, pMean}, toSize(len),
                                                      HalfScaled(SameConstant{gConst}, scaleFactor));
    return kelStatusOk;
}

KelStatus kelsLogGaussSingle_IdVar_16s32s_Sfs(const Kel16s* pSrc, const Kel16s* pMean, int len, Kel32s* pResult,
                                              Kel32s gConst, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMean, pResult)) return fault;
    *pResult = scoreOf<Exact<UnitVariance>>(Item{pSrc, pMean}, toSize(len),
                                            HalfShifted(Saturated(), SameConstant{gConst}, scaleFactor));
    return kelStatusOk;
}

KelStatus kelsLogGaussSingle_IdVarLow_16s32f(const Kel16s* pSrc, const Kel16s* pMean, int len, Kel32f* pResult,
                                             Kel32f gConst) {
    return kelsLogGaussSingle_IdVarLowScaled_16s32f(pSrc, pMean, len, pResult, gConst, 0);
}

KelStatus kelsLogGaussSingle_IdVarLowScaled_16s32f(const Kel16s* pSrc, const Kel16s* pMean, int len, Kel32f* pResult,
                                                   Kel32f gConst, int scaleFactor) {
    return kelsLogGaussSingle_IdVarScaled_16s32f(pSrc, pMean, len, pResult, gConst, scaleFactor);
}

KelStatus kelsLogGaussSingle_IdVarLow_16s32s_Sfs(const Kel16s* pSrc, const Kel16s* pMean, int len, Kel32s* pResult,
                                                 Kel32s gConst, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMean, pResult)) return fault;
    *pResult = scoreOf<Exact<UnitWrapped>>(Item{pSrc, pMean}, toSize(len),
                                           HalfShifted(Wrapped(), SameConstant{gConst}, scaleFactor));
    return kelStatusOk;
}
