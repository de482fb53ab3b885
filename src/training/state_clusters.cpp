// Statistics for the clustering of states by decision trees; their prototypes stand in kels/update.h.
#include "training/state_clusters.h"
#include "core/check.h"
#include "kels/update.h"

namespace {
using namespace kels;
using namespace kels::training;
}  // namespace

KelStatus kelsDcsClustLAccumulate_32f(const Kel32f* pMean, const Kel32f* pInvVar, Kel32f* pDstSum, Kel32f* pDstSqr,
                                      int len, Kel32f occ) {
    if (const KelStatus fault = vectorFault(len, pMean, pInvVar, pDstSum, pDstSqr)) return fault;
    stateStatistics<VarianceForm::Inverse>(pMean, pInvVar, pDstSum, pDstSqr, toSize(len), occ);
    return kelStatusOk;
}
KelStatus kelsDcsClustLAccumulate_64f(const Kel64f* pMean, const Kel64f* pInvVar, Kel64f* pDstSum, Kel64f* pDstSqr,
                                      int len, Kel64f occ) {
    if (const KelStatus fault = vectorFault(len, pMean, pInvVar, pDstSum, pDstSqr)) return fault;
    stateStatistics<VarianceForm::Inverse>(pMean, pInvVar, pDstSum, pDstSqr, toSize(len), occ);
    return kelStatusOk;
}
KelStatus kelsDcsClustLAccumulate_DirectVar_32f(const Kel32f* pMean, const Kel32f* pVar, Kel32f* pDstSum,
                                                Kel32f* pDstSqr, int len, Kel32f occ) {
    if (const KelStatus fault = vectorFault(len, pMean, pVar, pDstSum, pDstSqr)) return fault;
    stateStatistics<VarianceForm::Direct>(pMean, pVar, pDstSum, pDstSqr, toSize(len), occ);
    return kelStatusOk;
}
KelStatus kelsDcsClustLAccumulate_DirectVar_64f(const Kel64f* pMean, const Kel64f* pVar, Kel64f* pDstSum,
                                                Kel64f* pDstSqr, int len, Kel64f occ) {
    if (const KelStatus fault = vectorFault(len, pMean, pVar, pDstSum, pDstSqr)) return fault;
    stateStatistics<VarianceForm::Direct>(pMean, pVar, pDstSum, pDstSqr, toSize(len), occ);
    return kelStatusOk;
}

KelStatus kelsDcsClustLCompute_32f64f(const Kel32f* pSum, const Kel32f* pSqr, int len, Kel64f* pDst, Kel32f occ) {
    if (const KelStatus fault = vectorFault(len, pSum, pSqr, pDst)) return fault;
    if (!(occ >= 0)) return kelStatusNegOcc;
    return clusterLikelihood(pSum, pSqr, toSize(len), pDst, Kel64f{occ});
}
KelStatus kelsDcsClustLCompute_64f(const Kel64f* pSum, const Kel64f* pSqr, int len, Kel64f* pDst, Kel64f occ) {
    if (const KelStatus fault = vectorFault(len, pSum, pSqr, pDst)) return fault;
    if (!(occ >= 0)) return kelStatusNegOcc;
    return clusterLikelihood(pSum, pSqr, toSize(len), pDst, occ);
}
