// The Mahalanobis distance of one vector.
#include "kels/gauss.h"

#include "core/check.h"
#include "scoring/gauss/walk.h"

namespace {
using namespace kels;
using namespace kels::gauss;
}  // namespace

KelStatus kelsMahDistSingle_64f(const Kel64f* pSrc, const Kel64f* pMean, const Kel64f* pIvar, int len,
                                Kel64f* pResult) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMean, pIvar, pResult)) return fault;
    *pResult = scoreOf<Extended<InverseVariance>>(Item{pSrc, pMean, pIvar}, toSize(len), Distance<Kel64f>());
    return kelStatusOk;
}

KelStatus kelsMahDistSingle_32f(const Kel32f* pSrc, const Kel32f* pMean, const Kel32f* pIvar, int len,
                                Kel32f* pResult) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMean, pIvar, pResult)) return fault;
    *pResult = scoreOf<SinglePrecision<InverseVariance>>(Item{pSrc, pMean, pIvar}, toSize(len), Distance<Kel32f>());
    return kelStatusOk;
}

KelStatus kelsMahDistSingle_32f64f(const Kel32f* pSrc, const Kel32f* pMean, const Kel32f* pIvar, int len,
                                   Kel64f* pResult) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMean, pIvar, pResult)) return fault;
    *pResult = scoreOf<Extended<InverseVariance>>(Item{pSrc, pMean, pIvar}, toSize(len), Distance<Kel64f>());
    return kelStatusOk;
}

KelStatus kelsMahDistSingle_16s32f(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pIvar, int len,
                                   Kel32f* pResult) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMean, pIvar, pResult)) return fault;
    *pResult = scoreOf<SinglePrecision<InverseVariance>>(Item{pSrc, pMean, pIvar}, toSize(len), Distance<Kel32f>());
    return kelStatusOk;
}

KelStatus kelsMahDistSingle_16s32s_Sfs(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pIvar, int len,
                                       Kel32s* pResult, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMean, pIvar, pResult)) return fault;
    *pResult = scoreOf<Exact<InverseVariance>>(Item{pSrc, pMean, pIvar}, toSize(len), ShiftedDistance{scaleFactor});
    return kelStatusOk;
}
