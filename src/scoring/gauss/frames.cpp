// Frames of floats under one Gaussian: scores and Mahalanobis distances.
// Names with a 1 forward to those without it.
#include "kels/block.h"

#include "scoring/checks.h"
#include "scoring/gauss/walk.h"

namespace {
using namespace kels;
using namespace kels::gauss;
using namespace kels::scoring;
}  // namespace

// ---- frames under one Gaussian --------------------------------------------------------------------------------------

KelStatus kelsLogGauss_64f_D2(const Kel64f* pSrc, int step, const Kel64f* pMean, const Kel64f* pIvar, int width,
                              Kel64f* pResult, int height, Kel64f gConst) {
    if (const KelStatus fault = blockFault(step, width, height, pSrc, pMean, pIvar, pResult)) return fault;
    score<Extended<InverseVariance>>(frames(StepRows(pSrc, step), pMean, pIvar), toSize(height), toSize(width),
                                     Half(SameConstant{gConst}), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsLogGauss_64f_D2L(const Kel64f** ppSrc, const Kel64f* pMean, const Kel64f* pIvar, int width,
                               Kel64f* pResult, int height, Kel64f gConst) {
    if (const KelStatus fault = rowsFault(width, height, ppSrc, pMean, pIvar, pResult)) return fault;
    score<Extended<InverseVariance>>(frames(PointerRows(ppSrc), pMean, pIvar), toSize(height), toSize(width),
                                     Half(SameConstant{gConst}), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsLogGauss1_64f_D2(const Kel64f* pSrc, int step, const Kel64f* pMean, const Kel64f* pIvar, int width,
                               Kel64f* pResult, int height, Kel64f gConst) {
    return kelsLogGauss_64f_D2(pSrc, step, pMean, pIvar, width, pResult, height, gConst);
}

KelStatus kelsLogGauss1_64f_D2L(const Kel64f** ppSrc, const Kel64f* pMean, const Kel64f* pIvar, int width,
                                Kel64f* pResult, int height, Kel64f gConst) {
    return kelsLogGauss_64f_D2L(ppSrc, pMean, pIvar, width, pResult, height, gConst);
}

KelStatus kelsLogGauss_IdVar_64f_D2(const Kel64f* pSrc, int step, const Kel64f* pMean, int width, Kel64f* pResult,
                                    int height, Kel64f gConst) {
    if (const KelStatus fault = blockFault(step, width, height, pSrc, pMean, pResult)) return fault;
    score<Extended<UnitVariance>>(frames(StepRows(pSrc, step), pMean), toSize(height), toSize(width),
                                  Half(SameConstant{gConst}), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsLogGauss_IdVar_64f_D2L(const Kel64f** ppSrc, const Kel64f* pMean, int width, Kel64f* pResult, int height,
                                     Kel64f gConst) {
    if (const KelStatus fault = rowsFault(width, height, ppSrc, pMean, pResult)) return fault;
    score<Extended<UnitVariance>>(frames(PointerRows(ppSrc), pMean), toSize(height), toSize(width),
                                  Half(SameConstant{gConst}), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsLogGauss_32f_D2(const Kel32f* pSrc, int step, const Kel32f* pMean, const Kel32f* pIvar, int width,
                              Kel32f* pResult, int height, Kel32f gConst) {
    if (const KelStatus fault = blockFault(step, width, height, pSrc, pMean, pIvar, pResult)) return fault;
    score<SinglePrecision<InverseVariance>>(frames(StepRows(pSrc, step), pMean, pIvar), toSize(height), toSize(width),
                                            Half(SameConstant{gConst}), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsLogGauss_32f_D2L(const Kel32f** ppSrc, const Kel32f* pMean, const Kel32f* pIvar, int width,
                               Kel32f* pResult, int height, Kel32f gConst) {
    if (const KelStatus fault = rowsFault(width, height, ppSrc, pMean, pIvar, pResult)) return fault;
    score<SinglePrecision<InverseVariance>>(frames(PointerRows(ppSrc), pMean, pIvar), toSize(height), toSize(width),
                                            Half(SameConstant{gConst}), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsLogGauss1_32f_D2(const Kel32f* pSrc, int step, const Kel32f* pMean, const Kel32f* pIvar, int width,
                               Kel32f* pResult, int height, Kel32f gConst) {
    return kelsLogGauss_32f_D2(pSrc, step, pMean, pIvar, width, pResult, height, gConst);
}

KelStatus kelsLogGauss1_32f_D2L(const Kel32f** ppSrc, const Kel32f* pMean, const Kel32f* pIvar, int width,
                                Kel32f* pResult, int height, Kel32f gConst) {
    return kelsLogGauss_32f_D2L(ppSrc, pMean, pIvar, width, pResult, height, gConst);
}

KelStatus kelsLogGauss_IdVar_32f_D2(const Kel32f* pSrc, int step, const Kel32f* pMean, int width, Kel32f* pResult,
                                    int height, Kel32f gConst) {
    if (const KelStatus fault = blockFault(step, width, height, pSrc, pMean, pResult)) return fault;
    score<SinglePrecision<UnitVariance>>(frames(StepRows(pSrc, step), pMean), toSize(height), toSize(width),
                                         Half(SameConstant{gConst}), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsLogGauss_IdVar_32f_D2L(const Kel32f** ppSrc, const Kel32f* pMean, int width, Kel32f* pResult, int height,
                                     Kel32f gConst) {
    if (const KelStatus fault = rowsFault(width, height, ppSrc, pMean, pResult)) return fault;
    score<SinglePrecision<UnitVariance>>(frames(PointerRows(ppSrc), pMean), toSize(height), toSize(width),
                                         Half(SameConstant{gConst}), StoreTo{pResult});
    return kelStatusOk;
}

// ---- Mahalanobis distances of frames --------------------------------------------------------------------------------

KelStatus kelsMahDist_64f_D2(const Kel64f* pSrc, int step, const Kel64f* pMean, const Kel64f* pIvar, int width,
                             Kel64f* pResult, int height) {
    if (const KelStatus fault = blockFault(step, width, height, pSrc, pMean, pIvar, pResult)) return fault;
    score<Extended<InverseVariance>>(frames(StepRows(pSrc, step), pMean, pIvar), toSize(height), toSize(width),
                                     Distance<Kel64f>(), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsMahDist_64f_D2L(const Kel64f** ppSrc, const Kel64f* pMean, const Kel64f* pIvar, int width,
                              Kel64f* pResult, int height) {
    if (const KelStatus fault = rowsFault(width, height, ppSrc, pMean, pIvar, pResult)) return fault;
    score<Extended<InverseVariance>>(frames(PointerRows(ppSrc), pMean, pIvar), toSize(height), toSize(width),
                                     Distance<Kel64f>(), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsMahDist_32f_D2(const Kel32f* pSrc, int step, const Kel32f* pMean, const Kel32f* pIvar, int width,
                             Kel32f* pResult, int height) {
    if (const KelStatus fault = blockFault(step, width, height, pSrc, pMean, pIvar, pResult)) return fault;
    score<SinglePrecision<InverseVariance>>(frames(StepRows(pSrc, step), pMean, pIvar), toSize(height), toSize(width),
                                            Distance<Kel32f>(), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsMahDist_32f_D2L(const Kel32f** ppSrc, const Kel32f* pMean, const Kel32f* pIvar, int width,
                              Kel32f* pResult, int height) {
    if (const KelStatus fault = rowsFault(width, height, ppSrc, pMean, pIvar, pResult)) return fault;
    score<SinglePrecision<InverseVariance>>(frames(PointerRows(ppSrc), pMean, pIvar), toSize(height), toSize(width),
                                            Distance<Kel32f>(), StoreTo{pResult});
    return kelStatusOk;
}

KelStatus kelsMahDist1_64f_D2(const Kel64f* pSrc, int step, const Kel64f* pMean, const Kel64f* pIvar, int width,
                              Kel64f* pResult, int height) {
    return kelsMahDist_64f_D2(pSrc, step, pMean, pIvar, width, pResult, height);
}

KelStatus kelsMahDist1_64f_D2L(const Kel64f** ppSrc, const Kel64f* pMean, const Kel64f* pIvar, int width,
                               Kel64f* pResult, int height) {
    return kelsMahDist_64f_D2L(ppSrc, pMean, pIvar, width, pResult, height);
}

KelStatus kelsMahDist1_32f_D2(const Kel32f* pSrc, int step, const Kel32f* pMean, const Kel32f* pIvar, int width,
                              Kel32f* pResult, int height) {
    return kelsMahDist_32f_D2(pSrc, step, pMean, pIvar, width, pResult, height);
}

KelStatus kelsMahDist1_32f_D2L(const Kel32f** ppSrc, const Kel32f* pMean, const Kel32f* pIvar, int width,
                               Kel32f* pResult, int height) {
    return kelsMahDist_32f_D2L(ppSrc, pMean, pIvar, width, pResult, height);
}
