// Merging and distances of pairs of Gaussians; their prototypes stand in kels/update.h.
#include "training/gaussian_pairs.h"
#include "core/check.h"
#include "kels/update.h"

namespace {
using namespace kels;
using namespace kels::training;
}  // namespace

// ---- merging -------------------------------------------------------------------------------------------------------

KelStatus kelsGaussianMerge_32f(const Kel32f* pMean1, const Kel32f* pVar1, const Kel32f* pMean2, const Kel32f* pVar2,
                                Kel32f* pDstMean, Kel32f* pDstVar, int len, Kel32f* pDstDet, Kel32f wgt1, Kel32f wgt2) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pMean1, pVar1, pMean2, pVar2, pDstMean, pDstVar, pDstDet)) return kelStatusNullPtr;
    return mergeGaussians(Gaussian{pMean1, pVar1}, Gaussian{pMean2, pVar2}, pDstMean, pDstVar, toSize(len), pDstDet,
                          wgt1, wgt2);
}
KelStatus kelsGaussianMerge_64f(const Kel64f* pMean1, const Kel64f* pVar1, const Kel64f* pMean2, const Kel64f* pVar2,
                                Kel64f* pDstMean, Kel64f* pDstVar, int len, Kel64f* pDstDet, Kel64f wgt1, Kel64f wgt2) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pMean1, pVar1, pMean2, pVar2, pDstMean, pDstVar, pDstDet)) return kelStatusNullPtr;
    return mergeGaussians(Gaussian{pMean1, pVar1}, Gaussian{pMean2, pVar2}, pDstMean, pDstVar, toSize(len), pDstDet,
                          wgt1, wgt2);
}

KelStatus kelsGaussianDist_32f(const Kel32f* pMean1, const Kel32f* pVar1, const Kel32f* pMean2, const Kel32f* pVar2,
                               int len, Kel32f* pDst, Kel32f wgt1, Kel32f det1, Kel32f wgt2, Kel32f det2) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pMean1, pVar1, pMean2, pVar2, pDst)) return kelStatusNullPtr;
    return mergeCost(Gaussian{pMean1, pVar1}, Gaussian{pMean2, pVar2}, toSize(len), pDst, wgt1, det1, wgt2, det2);
}
KelStatus kelsGaussianDist_64f(const Kel64f* pMean1, const Kel64f* pVar1, const Kel64f* pMean2, const Kel64f* pVar2,
                               int len, Kel64f* pDst, Kel64f wgt1, Kel64f det1, Kel64f wgt2, Kel64f det2) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pMean1, pVar1, pMean2, pVar2, pDst)) return kelStatusNullPtr;
    return mergeCost(Gaussian{pMean1, pVar1}, Gaussian{pMean2, pVar2}, toSize(len), pDst, wgt1, det1, wgt2, det2);
}

// ---- Bhattacharyya distance ----------------------------------------------------------------------------------------

KelStatus kelsBhatDist_32f64f(const Kel32f* pMean1, const Kel32f* pVar1, const Kel32f* pMean2, const Kel32f* pVar2,
                              int len, Kel64f* pDst) {
    if (const KelStatus fault = vectorFault(len, pMean1, pVar1, pMean2, pVar2, pDst)) return fault;
    return bhattacharyya({pMean1, pVar1}, {pMean2, pVar2}, toSize(len), pDst);
}
KelStatus kelsBhatDist_32f(const Kel32f* pMean1, const Kel32f* pVar1, const Kel32f* pMean2, const Kel32f* pVar2,
                           int len, Kel32f* pDst) {
    if (const KelStatus fault = vectorFault(len, pMean1, pVar1, pMean2, pVar2, pDst)) return fault;
    return bhattacharyya({pMean1, pVar1}, {pMean2, pVar2}, toSize(len), pDst);
}
KelStatus kelsBhatDistSLog_32f64f(const Kel32f* pMean1, const Kel32f* pVar1, const Kel32f* pMean2, const Kel32f* pVar2,
                                  int len, Kel64f* pDst, Kel32f sumLogVar1, Kel32f sumLogVar2) {
    if (const KelStatus fault = vectorFault(len, pMean1, pVar1, pMean2, pVar2, pDst)) return fault;
    return bhattacharyya({pMean1, pVar1}, {pMean2, pVar2}, toSize(len), pDst, sumLogVar1, sumLogVar2);
}
KelStatus kelsBhatDistSLog_32f(const Kel32f* pMean1, const Kel32f* pVar1, const Kel32f* pMean2, const Kel32f* pVar2,
                               int len, Kel32f* pDst, Kel32f sumLogVar1, Kel32f sumLogVar2) {
    if (const KelStatus fault = vectorFault(len, pMean1, pVar1, pMean2, pVar2, pDst)) return fault;
    return bhattacharyya({pMean1, pVar1}, {pMean2, pVar2}, toSize(len), pDst, sumLogVar1, sumLogVar2);
}
