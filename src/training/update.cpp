// From accumulated statistics to means, variances and weights; splitting and averaging of parameter vectors.
#include "kels/update.h"

#include <limits>

#include "core/check.h"
#include "training/update.h"

namespace {

using namespace kels;
using namespace kels::training;

// Nothing can be divided by an occupation that is negative or NaN, nor by one too small for a normal number.
template <class... T>
KelStatus occupationStatus(T... occupations) {
    if ((!(occupations >= 0) || ...)) return kelStatusNegOcc;
    return ((occupations <= std::numeric_limits<T>::min()) || ...) ? kelStatusZeroOcc : kelStatusOk;
}

}  // namespace

// ---- means, variances, weights -------------------------------------------------------------------------------------

KelStatus kelsUpdateMean_32f(const Kel32f* pMeanAcc, Kel32f* pMean, int len, Kel32f meanOcc) {
    if (const KelStatus fault = vectorFault(len, pMeanAcc, pMean)) return fault;
    if (const KelStatus status = occupationStatus(meanOcc)) return status;
    updateMean(pMeanAcc, pMean, toSize(len), meanOcc);
    return kelStatusOk;
}
KelStatus kelsUpdateMean_64f(const Kel64f* pMeanAcc, Kel64f* pMean, int len, Kel64f meanOcc) {
    if (const KelStatus fault = vectorFault(len, pMeanAcc, pMean)) return fault;
    if (const KelStatus status = occupationStatus(meanOcc)) return status;
    updateMean(pMeanAcc, pMean, toSize(len), meanOcc);
    return kelStatusOk;
}

KelStatus kelsUpdateVar_32f(const Kel32f* pMeanAcc, const Kel32f* pVarAcc, const Kel32f* pVarFloor, Kel32f* pVar,
                            int len, Kel32f meanOcc, Kel32f varOcc) {
    if (const KelStatus fault = vectorFault(len, pMeanAcc, pVarAcc, pVarFloor, pVar)) return fault;
    if (const KelStatus status = occupationStatus(meanOcc, varOcc)) return status;
    return updateVariance(pMeanAcc, pVarAcc, pVarFloor, pVar, toSize(len), meanOcc, varOcc);
}
KelStatus kelsUpdateVar_64f(const Kel64f* pMeanAcc, const Kel64f* pVarAcc, const Kel64f* pVarFloor, Kel64f* pVar,
                            int len, Kel64f meanOcc, Kel64f varOcc) {
    if (const KelStatus fault = vectorFault(len, pMeanAcc, pVarAcc, pVarFloor, pVar)) return fault;
    if (const KelStatus status = occupationStatus(meanOcc, varOcc)) return status;
    return updateVariance(pMeanAcc, pVarAcc, pVarFloor, pVar, toSize(len), meanOcc, varOcc);
}

KelStatus kelsUpdateWeight_32f(const Kel32f* pWgtAcc, Kel32f* pWgt, int len, Kel32f* pWgtSum, Kel32f wgtOcc,
                               Kel32f wgtFloor) {
    if (const KelStatus fault = vectorFault(len, pWgtAcc, pWgt, pWgtSum)) return fault;
    if (const KelStatus status = occupationStatus(wgtOcc)) return status;
    return updateWeight(pWgtAcc, pWgt, toSize(len), pWgtSum, wgtOcc, wgtFloor);
}
KelStatus kelsUpdateWeight_64f(const Kel64f* pWgtAcc, Kel64f* pWgt, int len, Kel64f* pWgtSum, Kel64f wgtOcc,
                               Kel64f wgtFloor) {
    if (const KelStatus fault = vectorFault(len, pWgtAcc, pWgt, pWgtSum)) return fault;
    if (const KelStatus status = occupationStatus(wgtOcc)) return status;
    return updateWeight(pWgtAcc, pWgt, toSize(len), pWgtSum, wgtOcc, wgtFloor);
}

// ---- splitting -----------------------------------------------------------------------------------------------------

KelStatus kelsGaussianSplit_32f(Kel32f* pMean1, const Kel32f* pVar1, Kel32f* pMean2, Kel32f* pVar2, int len,
                                Kel32f val) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pMean1, pVar1, pMean2, pVar2)) return kelStatusNullPtr;
    splitGaussian(pMean1, pVar1, pMean2, pVar2, toSize(len), val);
    return kelStatusOk;
}
KelStatus kelsGaussianSplit_64f(Kel64f* pMean1, const Kel64f* pVar1, Kel64f* pMean2, Kel64f* pVar2, int len,
                                Kel64f val) {
    if (const KelStatus fault = vectorFault(len, pMean1, pVar1, pMean2, pVar2)) return fault;
    splitGaussian(pMean1, pVar1, pMean2, pVar2, toSize(len), val);
    return kelStatusOk;
}

// ---- weighted averages ---------------------------------------------------------------------------------------------

KelStatus kelsWeightedSum_32f(const Kel32f* pSrc1, const Kel32f* pSrc2, Kel32f* pDst, int len, Kel32f weight1,
                              Kel32f weight2) {
    if (const KelStatus fault = vectorFault(len, pSrc1, pSrc2, pDst)) return fault;
    return weightedAverage(pSrc1, pSrc2, pDst, toSize(len), weight1, weight2, FirstSource::Plain);
}
KelStatus kelsWeightedSum_64f(const Kel64f* pSrc1, const Kel64f* pSrc2, Kel64f* pDst, int len, Kel64f weight1,
                              Kel64f weight2) {
    if (const KelStatus fault = vectorFault(len, pSrc1, pSrc2, pDst)) return fault;
    return weightedAverage(pSrc1, pSrc2, pDst, toSize(len), weight1, weight2, FirstSource::Plain);
}
KelStatus kelsWeightedSum_16s(const Kel16s* pSrc1, const Kel16s* pSrc2, Kel16s* pDst, int len, Kel32f weight1,
                              Kel32f weight2) {
    if (const KelStatus fault = vectorFault(len, pSrc1, pSrc2, pDst)) return fault;
    return weightedAverage(pSrc1, pSrc2, pDst, toSize(len), weight1, weight2, FirstSource::Plain);
}

KelStatus kelsWeightedSumHalf_32f(const Kel32f* pSrc1, const Kel32f* pSrc2, Kel32f* pDst, int len, Kel32f weight1,
                                  Kel32f weight2) {
    if (const KelStatus fault = vectorFault(len, pSrc1, pSrc2, pDst)) return fault;
    return weightedAverage(pSrc1, pSrc2, pDst, toSize(len), weight1, weight2, FirstSource::Weighted);
}
KelStatus kelsWeightedSumHalf_64f(const Kel64f* pSrc1, const Kel64f* pSrc2, Kel64f* pDst, int len, Kel64f weight1,
                                  Kel64f weight2) {
    if (const KelStatus fault = vectorFault(len, pSrc1, pSrc2, pDst)) return fault;
    return weightedAverage(pSrc1, pSrc2, pDst, toSize(len), weight1, weight2, FirstSource::Weighted);
}
KelStatus kelsWeightedSumHalf_16s(const Kel16s* pSrc1, const Kel16s* pSrc2, Kel16s* pDst, int len, Kel32f weight1,
                                  Kel32f weight2) {
    if (const KelStatus fault = vectorFault(len, pSrc1, pSrc2, pDst)) return fault;
    return weightedAverage(pSrc1, pSrc2, pDst, toSize(len), weight1, weight2, FirstSource::Weighted);
}
