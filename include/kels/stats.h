/* Statistics of feature vectors for training: means, variances and sums of the columns of a block, accumulators of
 * single vectors, variances from accumulated sums, covariances.
 *
 * A block has `height` rows (frames) of `width` columns (components): D2 one array with srcStep elements from row to
 * row, D2L an array of row pointers.  Results are vectors of `width` elements; r = 1 / height and r1 = 1 / (height - 1)
 * are rounded to Kel32f.  Sums go down a column in the order of its rows, partial sums of four rows first, in the element
 * type; so a column gives the same result at every width and in both layouts.  A destination may be one of the vectors
 * read, never a part of the block.
 *
 * The order of the checks differs from group to group and is given as: step (srcStep below width, -37; D2 only), null (a
 * pointer, -8), size (height below 1 or the stated number, width or len below 1, -6).
 */
#ifndef KELS_STATS_H
#define KELS_STATS_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Means and unbiased variances, S1 and S2 being the sums of x and of x^2:
 *
 *   MeanColumn      mean = S1 * r                                    checks step, null, size
 *   VarColumn       var  = (S2 - height * m^2) * r1, m = pSrcMean    checks step, null, size (height 2)
 *   MeanVarColumn   both, in one pass, with the mean it computes     checks null, size (height 2), step
 */
KELS_API KelStatus kelsMeanColumn_32f_D2(const Kel32f* pSrc, int height, int srcStep, Kel32f* pDstMean, int width);
KELS_API KelStatus kelsVarColumn_32f_D2(const Kel32f* pSrc, int height, int srcStep, const Kel32f* pSrcMean,
                                        Kel32f* pDstVar, int width);
KELS_API KelStatus kelsMeanVarColumn_32f_D2(const Kel32f* pSrc, int height, int srcStep, Kel32f* pDstMean,
                                            Kel32f* pDstVar, int width);
KELS_API KelStatus kelsMeanColumn_32f_D2L(const Kel32f** pSrc, int height, Kel32f* pDstMean, int width);
KELS_API KelStatus kelsVarColumn_32f_D2L(const Kel32f** pSrc, int height, const Kel32f* pSrcMean, Kel32f* pDstVar,
                                         int width);
KELS_API KelStatus kelsMeanVarColumn_32f_D2L(const Kel32f** pSrc, int height, Kel32f* pDstMean, Kel32f* pDstVar,
                                             int width);

/* Older names of the same six functions. */
KELS_API KelStatus kelsMeanCol_32f_D2(const Kel32f* pSrc, int height, int srcStep, Kel32f* pDstMean, int width);
KELS_API KelStatus kelsMeanCol_32f_D2L(const Kel32f** pSrc, int height, Kel32f* pDstMean, int width);
KELS_API KelStatus kelsVarCol_32f_D2(const Kel32f* pSrc, int height, int srcStep, const Kel32f* pSrcMean,
                                     Kel32f* pDstVar, int width);
KELS_API KelStatus kelsVarCol_32f_D2L(const Kel32f** pSrc, int height, const Kel32f* pSrcMean, Kel32f* pDstVar,
                                      int width);
KELS_API KelStatus kelsMeanVarCol_32f_D2(const Kel32f* pSrc, int height, int srcStep, Kel32f* pDstMean, Kel32f* pDstVar,
                                         int width);
KELS_API KelStatus kelsMeanVarCol_32f_D2L(const Kel32f** pSrc, int height, Kel32f* pDstMean, Kel32f* pDstVar,
                                          int width);

/* The same with a weight for each row, height of them, which the caller has normalised: nothing is divided by their sum.
 *
 *   mean = sum w * x,  var = sum w * x^2 - m^2        m: pSrcMean, or in the MeanVar forms the mean computed
 *
 * Checks: null, step, size.
 */
KELS_API KelStatus kelsWeightedMeanColumn_32f_D2(const Kel32f* pSrc, int srcStep, const Kel32f* pWgt, int height,
                                                 Kel32f* pDstMean, int width);
KELS_API KelStatus kelsWeightedMeanColumn_64f_D2(const Kel64f* pSrc, int srcStep, const Kel64f* pWgt, int height,
                                                 Kel64f* pDstMean, int width);
KELS_API KelStatus kelsWeightedVarColumn_32f_D2(const Kel32f* pSrc, int srcStep, const Kel32f* pWgt, int height,
                                                const Kel32f* pSrcMean, Kel32f* pDstVar, int width);
KELS_API KelStatus kelsWeightedVarColumn_64f_D2(const Kel64f* pSrc, int srcStep, const Kel64f* pWgt, int height,
                                                const Kel64f* pSrcMean, Kel64f* pDstVar, int width);
KELS_API KelStatus kelsWeightedMeanVarColumn_32f_D2(const Kel32f* pSrc, int srcStep, const Kel32f* pWgt, int height,
                                                    Kel32f* pDstMean, Kel32f* pDstVar, int width);
KELS_API KelStatus kelsWeightedMeanVarColumn_64f_D2(const Kel64f* pSrc, int srcStep, const Kel64f* pWgt, int height,
                                                    Kel64f* pDstMean, Kel64f* pDstVar, int width);
KELS_API KelStatus kelsWeightedMeanColumn_32f_D2L(const Kel32f** pSrc, const Kel32f* pWgt, int height, Kel32f* pDstMean,
                                                  int width);
KELS_API KelStatus kelsWeightedMeanColumn_64f_D2L(const Kel64f** pSrc, const Kel64f* pWgt, int height, Kel64f* pDstMean,
                                                  int width);
KELS_API KelStatus kelsWeightedVarColumn_32f_D2L(const Kel32f** pSrc, const Kel32f* pWgt, int height,
                                                 const Kel32f* pSrcMean, Kel32f* pDstVar, int width);
KELS_API KelStatus kelsWeightedVarColumn_64f_D2L(const Kel64f** pSrc, const Kel64f* pWgt, int height,
                                                 const Kel64f* pSrcMean, Kel64f* pDstVar, int width);
KELS_API KelStatus kelsWeightedMeanVarColumn_32f_D2L(const Kel32f** pSrc, const Kel32f* pWgt, int height,
                                                     Kel32f* pDstMean, Kel32f* pDstVar, int width);
KELS_API KelStatus kelsWeightedMeanVarColumn_64f_D2L(const Kel64f** pSrc, const Kel64f* pWgt, int height,
                                                     Kel64f* pDstMean, Kel64f* pDstVar, int width);

/* S1 and S2 alone; the _I and _ISfs forms add them to what the destinations hold.  From 16-bit blocks they are exact
 * and rounded once: to Kel32f, or times 2^-scaleFactor to the nearest integer, ties to even, and saturated.  The
 * addition of the _ISfs form saturates too.  Checks: step, null, size.
 */
KELS_API KelStatus kelsSumMeanVar_32f(const Kel32f* pSrc, int srcStep, int height, Kel32f* pDstSum, Kel32f* pDstSumSq,
                                      int width);
KELS_API KelStatus kelsSumMeanVar_32f_I(const Kel32f* pSrc, int srcStep, int height, Kel32f* pDstSum, Kel32f* pDstSumSq,
                                        int width);
KELS_API KelStatus kelsSumMeanVar_16s32f(const Kel16s* pSrc, int srcStep, int height, Kel32f* pDstSum,
                                         Kel32f* pDstSumSq, int width);
KELS_API KelStatus kelsSumMeanVar_16s32f_I(const Kel16s* pSrc, int srcStep, int height, Kel32f* pDstSum,
                                           Kel32f* pDstSumSq, int width);
KELS_API KelStatus kelsSumMeanVar_16s32s_Sfs(const Kel16s* pSrc, int srcStep, int height, Kel32s* pDstSum,
                                             Kel32s* pDstSumSq, int width, int scaleFactor);
KELS_API KelStatus kelsSumMeanVar_16s32s_ISfs(const Kel16s* pSrc, int srcStep, int height, Kel32s* pDstSum,
                                              Kel32s* pDstSumSq, int width, int scaleFactor);

/* Accumulation of one vector that counts val (its probability of belonging to a Gaussian), about that Gaussian's mean:
 *
 *   d = pSrc[k] - pMean[k],  pDstMeanAcc[k] += val * d,  pDstVarAcc[k] += d * (val * d)
 *
 * kelsUpdateMean_* and kelsUpdateVar_* turn the sums into parameters.  Checks: null, size.
 */
KELS_API KelStatus kelsMeanVarAcc_32f(const Kel32f* pSrc, const Kel32f* pMean, Kel32f* pDstMeanAcc, Kel32f* pDstVarAcc,
                                      int len, Kel32f val);
KELS_API KelStatus kelsMeanVarAcc_64f(const Kel64f* pSrc, const Kel64f* pMean, Kel64f* pDstMeanAcc, Kel64f* pDstVarAcc,
                                      int len, Kel64f val);

/* Variances from sums: dst[k] = (var[k] - mean[k]^2 * valMean) * valVar; with S1 and S2 of n rows valMean is 1 / n and
 * valVar 1 / (n - 1).  The integer forms compute in Kel32f, rounding to the nearest in any mode of the caller, and
 * truncate the result times 2^-scaleFactor toward zero; whatever lies outside the integers, above them too, and NaN
 * becomes -2147483648.  Checks: null, size.
 */
KELS_API KelStatus kelsNewVar_32f(const Kel32f* pSrcMean, const Kel32f* pSrcVar, Kel32f* pDstVar, int len,
                                  Kel32f valMean, Kel32f valVar);
KELS_API KelStatus kelsNewVar_32f_I(const Kel32f* pSrcMean, Kel32f* pSrcDstVar, int len, Kel32f valMean, Kel32f valVar);
KELS_API KelStatus kelsNewVar_32s_Sfs(const Kel32s* pSrcMean, const Kel32s* pSrcVar, Kel32s* pDstVar, int len,
                                      Kel32f valMean, Kel32f valVar, int scaleFactor);
KELS_API KelStatus kelsNewVar_32s_ISfs(const Kel32s* pSrcMean, Kel32s* pSrcDstVar, int len, Kel32f valMean,
                                       Kel32f valVar, int scaleFactor);

/* Accumulation of a symmetric matrix, width x width, with dstStep elements from row to row (D2) or as row pointers
 * (D2L).  For i <= j, and the same value at [j][i]:
 *
 *   pDstMatr[i][j] += val * sum over the rows of (x_i - m_j) * (x_j - m_j),  m = pMean
 *
 * Both factors are taken about the mean of the higher column; so the diagonal holds centred squares, but elsewhere
 * this is the usual covariance only where m_i = m_j.  Sums of float blocks and the addition are in extended precision,
 * those of 16-bit blocks are exact; a result is rounded once to Kel64f.  Checks: null, size, step (srcStep or dstStep).
 */
KELS_API KelStatus kelsAccCovarianceMatrix_32f64f_D2(const Kel32f* pSrc, int srcStep, int height, const Kel32f* pMean,
                                                     Kel64f* pDstMatr, int width, int dstStep, Kel64f val);
KELS_API KelStatus kelsAccCovarianceMatrix_32f64f_D2L(const Kel32f** pSrc, int height, const Kel32f* pMean,
                                                      Kel64f** pDstMatr, int width, Kel64f val);
KELS_API KelStatus kelsAccCovarianceMatrix_16s64f_D2(const Kel16s* pSrc, int srcStep, int height, const Kel16s* pMean,
                                                     Kel64f* pDstMatr, int width, int dstStep, Kel64f val);
KELS_API KelStatus kelsAccCovarianceMatrix_16s64f_D2L(const Kel16s** pSrc, int height, const Kel16s* pMean,
                                                      Kel64f** pDstMatr, int width, Kel64f val);

/* Means and variances of 16-bit blocks, from exact sums.  Products with r and r1 are in double precision; every result
 * is truncated toward zero and saturated, variances times 2^-scaleFactor, means unscaled.  As r is rounded to Kel32f, the
 * mean of a column whose sum is a multiple of height may come out one closer to zero (height 25 or 100, for example).
 *
 *   MeanColumn                     mean = S1 * r                          checks step, null, size
 *   VarColumn                      var = (S2 - height * pSrcMean^2) * r1  checks null, size (height 2), step
 *   MeanVarColumn                  var = (S2 - S1^2 / height) * r1        checks null, size (height 2), step
 *   MeanVarColumn_16s16s32s        the same with S1^2 / height truncated to an integer, unscaled
 */
KELS_API KelStatus kelsMeanColumn_16s_D2(const Kel16s* pSrc, int height, int srcStep, Kel16s* pDstMean, int width);
KELS_API KelStatus kelsMeanColumn_16s_D2L(const Kel16s** pSrc, int height, Kel16s* pDstMean, int width);
KELS_API KelStatus kelsVarColumn_16s_D2Sfs(const Kel16s* pSrc, int height, int srcStep, const Kel16s* pSrcMean,
                                           Kel16s* pDstVar, int width, int scaleFactor);
KELS_API KelStatus kelsVarColumn_16s_D2LSfs(const Kel16s** pSrc, int height, const Kel16s* pSrcMean, Kel16s* pDstVar,
                                            int width, int scaleFactor);
KELS_API KelStatus kelsMeanVarColumn_16s_D2Sfs(const Kel16s* pSrc, int height, int srcStep, Kel16s* pDstMean,
                                               Kel16s* pDstVar, int width, int scaleFactor);
KELS_API KelStatus kelsMeanVarColumn_16s_D2LSfs(const Kel16s** pSrc, int height, Kel16s* pDstMean, Kel16s* pDstVar,
                                                int width, int scaleFactor);
KELS_API KelStatus kelsMeanVarColumn_16s32s_D2Sfs(const Kel16s* pSrc, int height, int srcStep, Kel32s* pDstMean,
                                                  Kel32s* pDstVar, int width, int scaleFactor);
KELS_API KelStatus kelsMeanVarColumn_16s32s_D2LSfs(const Kel16s** pSrc, int height, Kel32s* pDstMean, Kel32s* pDstVar,
                                                   int width, int scaleFactor);
KELS_API KelStatus kelsMeanVarColumn_16s16s32s_D2(const Kel16s* pSrc, int height, int srcStep, Kel16s* pDstMean,
                                                  Kel32s* pDstVar, int width);
KELS_API KelStatus kelsMeanVarColumn_16s16s32s_D2L(const Kel16s** pSrc, int height, Kel16s* pDstMean, Kel32s* pDstVar,
                                                   int width);

#ifdef __cplusplus
}
#endif

#endif
