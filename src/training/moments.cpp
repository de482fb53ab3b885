#include "training/moments.h"

#include "core/check.h"
#include "kels/stats.h"

using namespace kels;

KelStatus kelsMeanVarAcc_32f(const Kel32f* pSrc, const Kel32f* pMean, Kel32f* pDstMeanAcc, Kel32f* pDstVarAcc, int len,
                             Kel32f val) {
    if (anyNull(pSrc, pMean, pDstMeanAcc, pDstVarAcc)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    accumulateMoments(pSrc, pMean, pDstMeanAcc, pDstVarAcc, size(len), val);
    return kelStatusOk;
}
KelStatus kelsMeanVarAcc_64f(const Kel64f* pSrc, const Kel64f* pMean, Kel64f* pDstMeanAcc, Kel64f* pDstVarAcc, int len,
                             Kel64f val) {
    if (anyNull(pSrc, pMean, pDstMeanAcc, pDstVarAcc)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    accumulateMoments(pSrc, pMean, pDstMeanAcc, pDstVarAcc, size(len), val);
    return kelStatusOk;
}
