/** @defgroup update Re-estimation of Gaussians
 *
 * From accumulated statistics to the means, variances and weights of diagonal Gaussians; splitting and merging of
 * Gaussians, distances between them, and the statistics by which decision trees cluster states.
 *
 * @code{.c}
 * // One Gaussian re-estimated from three values that count fully, about its old mean 0.
 * Kel32f x[3] = {1, 2, 6}, mean = 0, var = 1, meanAcc = 0, varAcc = 0;
 * const Kel32f least = 0.01f;
 * for (int i = 0; i < 3; ++i) kelsMeanVarAcc_32f(&x[i], &mean, &meanAcc, &varAcc, 1, 1);
 * kelsUpdateVar_32f(&meanAcc, &varAcc, &least, &var, 1, 3, 3);
 * kelsUpdateMean_32f(&meanAcc, &mean, 1, 3);
 * printf("mean %.2f, variance %.2f\n", mean, var);
 * @endcode
 *
 * ## Shapes and units
 * Vectors have `len` components, and variances are per component.  A destination may be one of the sources unless a
 * group says otherwise.  Where arrays overlap in another way, UpdateMean, GaussianSplit and DcsClustLAccumulate give
 * what a loop over the components gives; the other functions take no such arrays.  Logarithms are natural.
 *
 * ## Accuracy
 * Arithmetic is in the element type, in the order written, unless a group says otherwise.  Sums of logarithms are in
 * double precision; len * ln(2 pi) is taken with ln(2 pi) = 1.8378770664093.  NaN among the elements passes through
 * the formulas and raises no status.
 *
 * ## Checks, in order
 * A null pointer is kelStatusNullPtr, a len below 1 is kelStatusSize.  The pointers are looked at first, except that
 * kelsGaussianSplit_32f, GaussianMerge and GaussianDist look at len first.  Further checks and warnings stand with
 * their groups.
 *
 * ## Source
 * The functions are in `src/training/`: `update.cpp`, `gaussian_pairs.cpp` and `state_clusters.cpp`.
 * @{
 */
#ifndef KELS_UPDATE_H
#define KELS_UPDATE_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Re-estimation
 * The closing step of Baum-Welch or Viterbi training (L. Rabiner, "A tutorial on hidden Markov models", Proc. IEEE
 * 77(2), 1989), from what kelsMeanVarAcc accumulates about the old means:
 *
 *     UpdateMean     pMean[k] += pMeanAcc[k] / meanOcc
 *     UpdateVar      v = pVarAcc[k] / varOcc - (pMeanAcc[k] / meanOcc)^2
 *                    pVar[k] = v > pVarFloor[k] ? v : pVarFloor[k]
 *     UpdateWeight   w = pWgtAcc[k] / wgtOcc
 *                    pWgt[k] = w > wgtFloor ? w : wgtFloor
 *                    *pWgtSum = sum of pWgt[k], in the order of k
 *
 * Accumulators about zero want a zeroed pMean.  A value equal to its floor counts as floored.  The sum of the weights
 * is above 1 where some were raised to the floor.
 *
 * Checks behind those of the family: an occupation that is negative or NaN is kelStatusNegOcc; then one up to and
 * including the smallest normal number of the type gives the warning kelStatusZeroOcc, and nothing is written, not
 * even *pWgtSum. The warning kelStatusAllFloored says that every component was floored.
 * @{ */
KELS_API KelStatus kelsUpdateMean_32f(const Kel32f* pMeanAcc, Kel32f* pMean, int len, Kel32f meanOcc);
KELS_API KelStatus kelsUpdateMean_64f(const Kel64f* pMeanAcc, Kel64f* pMean, int len, Kel64f meanOcc);
KELS_API KelStatus kelsUpdateVar_32f(const Kel32f* pMeanAcc, const Kel32f* pVarAcc, const Kel32f* pVarFloor,
                                     Kel32f* pVar, int len, Kel32f meanOcc, Kel32f varOcc);
KELS_API KelStatus kelsUpdateVar_64f(const Kel64f* pMeanAcc, const Kel64f* pVarAcc, const Kel64f* pVarFloor,
                                     Kel64f* pVar, int len, Kel64f meanOcc, Kel64f varOcc);
KELS_API KelStatus kelsUpdateWeight_32f(const Kel32f* pWgtAcc, Kel32f* pWgt, int len, Kel32f* pWgtSum, Kel32f wgtOcc,
                                        Kel32f wgtFloor);
KELS_API KelStatus kelsUpdateWeight_64f(const Kel64f* pWgtAcc, Kel64f* pWgt, int len, Kel64f* pWgtSum, Kel64f wgtOcc,
                                        Kel64f wgtFloor);

/** @} */

/** @name Splitting
 * One Gaussian becomes two of the same variance, s = val * sqrt(pVar1[k]) to either side of it:
 *
 *     pMean2[k] = pMean1[k] - s,  pMean1[k] = pMean1[k] + s,  pVar2[k] = pVar1[k]
 *
 * The four arrays are distinct.
 * @{ */
KELS_API KelStatus kelsGaussianSplit_32f(Kel32f* pMean1, const Kel32f* pVar1, Kel32f* pMean2, Kel32f* pVar2, int len,
                                         Kel32f val);
KELS_API KelStatus kelsGaussianSplit_64f(Kel64f* pMean1, const Kel64f* pVar1, Kel64f* pMean2, Kel64f* pVar2, int len,
                                         Kel64f val);

/** @} */

/** @name Merging
 * Two Gaussians become the one that has the mean and the variance of both together.  With W = wgt1 + wgt2:
 *
 *     m = (wgt1 * m1 + wgt2 * m2) / W
 *     v = (wgt1 * (m1^2 + v1) + wgt2 * (m2^2 + v2)) / W - m^2
 *
 * Merge stores m, v and *pDstDet = len * ln(2 pi) - sum ln v.  Dist stores only what such a merge changes of the
 * weighted log-likelihood terms, from the terms det1 and det2 of the two, in double precision and rounded once:
 *
 *     *pDst = wgt1 * det1 + wgt2 * det2 - W * (len * ln(2 pi) - sum ln v)
 *
 * Warnings come from the first component whose v is not positive.  Where v is 0, it is kelStatusLogZero, and *pDstDet
 * or *pDst is +infinity; where v is negative, it is kelStatusLogNegative and NaN.  Merge has then stored m and v up
 * to and including that component, and nothing behind it.
 * @{ */
KELS_API KelStatus kelsGaussianMerge_32f(const Kel32f* pMean1, const Kel32f* pVar1, const Kel32f* pMean2,
                                         const Kel32f* pVar2, Kel32f* pDstMean, Kel32f* pDstVar, int len,
                                         Kel32f* pDstDet, Kel32f wgt1, Kel32f wgt2);
KELS_API KelStatus kelsGaussianMerge_64f(const Kel64f* pMean1, const Kel64f* pVar1, const Kel64f* pMean2,
                                         const Kel64f* pVar2, Kel64f* pDstMean, Kel64f* pDstVar, int len,
                                         Kel64f* pDstDet, Kel64f wgt1, Kel64f wgt2);
KELS_API KelStatus kelsGaussianDist_32f(const Kel32f* pMean1, const Kel32f* pVar1, const Kel32f* pMean2,
                                        const Kel32f* pVar2, int len, Kel32f* pDst, Kel32f wgt1, Kel32f det1,
                                        Kel32f wgt2, Kel32f det2);
KELS_API KelStatus kelsGaussianDist_64f(const Kel64f* pMean1, const Kel64f* pVar1, const Kel64f* pMean2,
                                        const Kel64f* pVar2, int len, Kel64f* pDst, Kel64f wgt1, Kel64f det1,
                                        Kel64f wgt2, Kel64f det2);

/** @} */

/** @name Weighted averages
 * The average of two vectors, with r = 1 / (weight1 + weight2).  In the Half forms pSrc1 already holds weighted
 * values:
 *
 *     WeightedSum       pDst[k] = pSrc1[k] * (weight1 * r) + pSrc2[k] * (weight2 * r)
 *     WeightedSumHalf   pDst[k] = pSrc1[k] * r + pSrc2[k] * (weight2 * r)
 *
 * The 16-bit forms compute in Kel32f, rounding to the nearest in any mode of the caller; results are saturated and
 * truncated toward zero.
 *
 * Where weight1 + weight2 is 0, the warning is kelStatusDivByZero, and an element is the sign of n = pSrc1[k] *
 * weight1 + pSrc2[k] * weight2 in both functions: infinite with that sign, NaN for n = 0; in 16 bits 32767, -32768 or
 * 0.
 * @{ */
KELS_API KelStatus kelsWeightedSum_32f(const Kel32f* pSrc1, const Kel32f* pSrc2, Kel32f* pDst, int len, Kel32f weight1,
                                       Kel32f weight2);
KELS_API KelStatus kelsWeightedSum_64f(const Kel64f* pSrc1, const Kel64f* pSrc2, Kel64f* pDst, int len, Kel64f weight1,
                                       Kel64f weight2);
KELS_API KelStatus kelsWeightedSum_16s(const Kel16s* pSrc1, const Kel16s* pSrc2, Kel16s* pDst, int len, Kel32f weight1,
                                       Kel32f weight2);
KELS_API KelStatus kelsWeightedSumHalf_32f(const Kel32f* pSrc1, const Kel32f* pSrc2, Kel32f* pDst, int len,
                                           Kel32f weight1, Kel32f weight2);
KELS_API KelStatus kelsWeightedSumHalf_64f(const Kel64f* pSrc1, const Kel64f* pSrc2, Kel64f* pDst, int len,
                                           Kel64f weight1, Kel64f weight2);
KELS_API KelStatus kelsWeightedSumHalf_16s(const Kel16s* pSrc1, const Kel16s* pSrc2, Kel16s* pDst, int len,
                                           Kel32f weight1, Kel32f weight2);

/** @} */

/** @name Bhattacharyya distance
 * The distance of two diagonal Gaussians (K. Fukunaga, "Introduction to Statistical Pattern Recognition"), in double
 * precision; the 32f forms round the result once:
 *
 *     *pDst = 1/4 * sum (m1 - m2)^2 / (v1 + v2) + 1/2 * sum [ ln((v1 + v2) / 2) - 1/2 * (ln v1 + ln v2) ]
 *
 * The SLog forms take sumLogVar1 = sum ln v1 and sumLogVar2 = sum ln v2 from the caller instead of computing them.
 *
 * Means and variances alike must be at least 1e-6.  The warning comes from the first component in which one of the
 * four values is not: kelStatusLogNegative and NaN when one of them is negative, else kelStatusLogZero and +infinity.
 * @{ */
KELS_API KelStatus kelsBhatDist_32f64f(const Kel32f* pMean1, const Kel32f* pVar1, const Kel32f* pMean2,
                                       const Kel32f* pVar2, int len, Kel64f* pDst);
KELS_API KelStatus kelsBhatDist_32f(const Kel32f* pMean1, const Kel32f* pVar1, const Kel32f* pMean2,
                                    const Kel32f* pVar2, int len, Kel32f* pDst);
KELS_API KelStatus kelsBhatDistSLog_32f64f(const Kel32f* pMean1, const Kel32f* pVar1, const Kel32f* pMean2,
                                           const Kel32f* pVar2, int len, Kel64f* pDst, Kel32f sumLogVar1,
                                           Kel32f sumLogVar2);
KELS_API KelStatus kelsBhatDistSLog_32f(const Kel32f* pMean1, const Kel32f* pVar1, const Kel32f* pMean2,
                                        const Kel32f* pVar2, int len, Kel32f* pDst, Kel32f sumLogVar1,
                                        Kel32f sumLogVar2);

/** @} */

/** @name Statistics of states
 * Decision trees cluster states by their likelihood (S. Young, J. Odell, P. Woodland, "Tree-based state tying for
 * high accuracy acoustic modelling", ARPA HLT workshop 1994).  These are the statistics of one state with the
 * occupation occ:
 *
 *     pDstSum[k] = pMean[k] * occ
 *     pDstSqr[k] = (pMean[k]^2 + var) * occ,  where var is 1 / pInvVar[k], or pVar[k] in the DirectVar forms
 *
 * They are stored; adding up the states of a cluster is left to the caller.
 * @{ */
KELS_API KelStatus kelsDcsClustLAccumulate_32f(const Kel32f* pMean, const Kel32f* pInvVar, Kel32f* pDstSum,
                                               Kel32f* pDstSqr, int len, Kel32f occ);
KELS_API KelStatus kelsDcsClustLAccumulate_64f(const Kel64f* pMean, const Kel64f* pInvVar, Kel64f* pDstSum,
                                               Kel64f* pDstSqr, int len, Kel64f occ);
KELS_API KelStatus kelsDcsClustLAccumulate_DirectVar_32f(const Kel32f* pMean, const Kel32f* pVar, Kel32f* pDstSum,
                                                         Kel32f* pDstSqr, int len, Kel32f occ);
KELS_API KelStatus kelsDcsClustLAccumulate_DirectVar_64f(const Kel64f* pMean, const Kel64f* pVar, Kel64f* pDstSum,
                                                         Kel64f* pDstSqr, int len, Kel64f occ);

/** @} */

/** @name Likelihood of clusters of states
 * The log-likelihood of the data behind summed statistics under their own Gaussian, all in double precision:
 *
 *     *pDst = occ / 2 * (len * (2 * ln occ - (1 + ln(2 pi))) - sum ln u)
 *         u = pSqr[k] * occ - pSum[k]^2 = occ^2 * var
 *
 * Here 1 + ln(2 pi) is 2.8378770664093453.  Checks behind those of the family: an occ that is negative or NaN is
 * kelStatusNegOcc.  Warnings: occ = 0, of either sign, is kelStatusZeroOcc and *pDst = -1e10; some u < 0 is
 * kelStatusLogNegative and NaN; else some u = 0 is kelStatusLogZero and -infinity.
 * @{ */
KELS_API KelStatus kelsDcsClustLCompute_32f64f(const Kel32f* pSum, const Kel32f* pSqr, int len, Kel64f* pDst,
                                               Kel32f occ);
KELS_API KelStatus kelsDcsClustLCompute_64f(const Kel64f* pSum, const Kel64f* pSqr, int len, Kel64f* pDst, Kel64f occ);

/** @} */

#ifdef __cplusplus
}
#endif
/** @} */

#endif
