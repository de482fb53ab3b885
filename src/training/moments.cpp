#include "training/moments.h"

#include "core/check.h"
#include "kels/stats.h"

using namespace kels;

KelStatus kelsMeanVarAcc_32f(const Kel32f* pSrc, const Kel32f* pMean, Kel32f* pDstMeanAcc, Kel32f* pDstVarAcc, int len,
                             Kel32f val) {
    if (anyNull(pSrc, pMean, pDstMeanAcc, pDstVarAcc)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    accumulateMoments(pSrc, pMean, pDstMeanAcc, pDstVarAcc, toSize(len), val);
    return kelStatusOk;
}
KelStatus kelsMeanVarAcc_64f(const Kel64f* pSrc, const Kel64f* pMean, Kel64f* pDstMeanAcc, Kel64f* pDstVarAcc, int len,
                             Kel64f val) {
    if (anyNull(pSrc, pMean, pDstMeanAcc, pDstVarAcc)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    accumulateMoments(pSrc, pMean, pDstMeanAcc, pDstVarAcc, toSize(len), val);
    return kelStatusOk;
}

KelStatus kelsNewVar_32f(const Kel32f* pSrcMean, const Kel32f* pSrcVar, Kel32f* pDstVar, int len, Kel32f valMean,
                         Kel32f valVar) {
    if (anyNull(pSrcMean, pSrcVar, pDstVar)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    varianceFromSums(pSrcMean, pSrcVar, pDstVar, toSize(len), valMean, valVar);
    return kelStatusOk;
}
KelStatus kelsNewVar_32f_I(const Kel32f* pSrcMean, Kel32f* pSrcDstVar, int len, Kel32f valMean, Kel32f valVar) {
    if (anyNull(pSrcMean, pSrcDstVar)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    varianceFromSums(pSrcMean, pSrcDstVar, pSrcDstVar, toSize(len), valMean, valVar);
    return kelStatusOk;
}
KelStatus kelsNewVar_32s_Sfs(const Kel32s* pSrcMean, const Kel32s* pSrcVar, Kel32s* pDstVar, int len, Kel32f valMean,
                             Kel32f valVar, int scaleFactor) {
    if (anyNull(pSrcMean, pSrcVar, pDstVar)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    const NearestScope nearest;
    varianceFromSums(pSrcMean, pSrcVar, pDstVar, toSize(len), valMean, valVar, scaleFactor);
    return kelStatusOk;
}
KelStatus kelsNewVar_32s_ISfs(const Kel32s* pSrcMean, Kel32s* pSrcDstVar, int len, Kel32f valMean, Kel32f valVar,
                              int scaleFactor) {
    if (anyNull(pSrcMean, pSrcDstVar)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    const NearestScope nearest;
    varianceFromSums(pSrcMean, pSrcDstVar, pSrcDstVar, toSize(len), valMean, valVar, scaleFactor);
    return kelStatusOk;
}
