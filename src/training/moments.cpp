// Accumulators of single vectors, and variances from accumulated sums; their prototypes stand in kels/stats.h.
#include "training/moments.h"

#include "core/check.h"
#include "kels/stats.h"

namespace {
using namespace kels;
using namespace kels::training;
}  // namespace

KelStatus kelsMeanVarAcc_32f(const Kel32f* pSrc, const Kel32f* pMean, Kel32f* pDstMeanAcc, Kel32f* pDstVarAcc, int len,
                             Kel32f val) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMean, pDstMeanAcc, pDstVarAcc)) return fault;
    accumulateMoments(pSrc, pMean, pDstMeanAcc, pDstVarAcc, toSize(len), val);
    return kelStatusOk;
}
KelStatus kelsMeanVarAcc_64f(const Kel64f* pSrc, const Kel64f* pMean, Kel64f* pDstMeanAcc, Kel64f* pDstVarAcc, int len,
                             Kel64f val) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMean, pDstMeanAcc, pDstVarAcc)) return fault;
    accumulateMoments(pSrc, pMean, pDstMeanAcc, pDstVarAcc, toSize(len), val);
    return kelStatusOk;
}

KelStatus kelsNewVar_32f(const Kel32f* pSrcMean, const Kel32f* pSrcVar, Kel32f* pDstVar, int len, Kel32f valMean,
                         Kel32f valVar) {
    if (const KelStatus fault = vectorFault(len, pSrcMean, pSrcVar, pDstVar)) return fault;
    varianceFromSums(pSrcMean, pSrcVar, pDstVar, toSize(len), valMean, valVar);
    return kelStatusOk;
}
KelStatus kelsNewVar_32f_I(const Kel32f* pSrcMean, Kel32f* pSrcDstVar, int len, Kel32f valMean, Kel32f valVar) {
    if (const KelStatus fault = vectorFault(len, pSrcMean, pSrcDstVar)) return fault;
    varianceFromSums(pSrcMean, pSrcDstVar, pSrcDstVar, toSize(len), valMean, valVar);
    return kelStatusOk;
}
KelStatus kelsNewVar_32s_Sfs(const Kel32s* pSrcMean, const Kel32s* pSrcVar, Kel32s* pDstVar, int len, Kel32f valMean,
                             Kel32f valVar, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrcMean, pSrcVar, pDstVar)) return fault;
    const NearestScope nearest;
    varianceFromSums(pSrcMean, pSrcVar, pDstVar, toSize(len), valMean, valVar, scaleFactor);
    return kelStatusOk;
}
KelStatus kelsNewVar_32s_ISfs(const Kel32s* pSrcMean, Kel32s* pSrcDstVar, int len, Kel32f valMean, Kel32f valVar,
                              int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrcMean, pSrcDstVar)) return fault;
    const NearestScope nearest;
    varianceFromSums(pSrcMean, pSrcDstVar, pSrcDstVar, toSize(len), valMean, valVar, scaleFactor);
    return kelStatusOk;
}
