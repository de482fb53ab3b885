/** @defgroup stats Statistics for training
 *
 * Means, variances and covariances of feature vectors, as training needs them: over the rows of a block, or
 * accumulated one vector at a time.
 *
 * @code{.c}
 * // Brings the columns of a block to mean 0 and variance 1.
 * Kel32f frames[4][2] = {{1, 10}, {2, 30}, {3, 20}, {4, 40}}, mean[2], var[2];
 * if (kelsMeanVarColumn_32f_D2(frames[0], 4, 2, mean, var, 2) == kelStatusOk) {
 *     for (int i = 0; i < 4; ++i) {
 *         for (int k = 0; k < 2; ++k) frames[i][k] = (frames[i][k] - mean[k]) / sqrtf(var[k]);
 *     }
 *     printf("the first frame is now %.2f %.2f\n", frames[0][0], frames[0][1]);
 * }
 * @endcode
 *
 * ## What it computes
 * For each column of a block, S1 is the sum of the values x and S2 the sum of their squares.  Means and variances
 * come from these sums; each group of functions says how.  The factors r = 1 / height and r1 = 1 / (height - 1) are
 * rounded to Kel32f.
 *
 * ## Shapes and units
 * A block has `height` rows (frames) of `width` columns (components).  In the D2 forms it is one array with srcStep
 * elements from row to row, in the D2L forms an array of row pointers.  Results are vectors of `width` elements.  A
 * destination may be one of the vectors that are read, but never a part of the block.
 *
 * ## Accuracy
 * Float sums are formed in the element type, down a column in the order of its rows, four rows at a time.  A column
 * therefore gives the same result at every width and in both layouts.  Sums of 16-bit values are exact.
 *
 * ## Checks, in order
 * They differ from group to group.  "Step" is srcStep below width in a D2 form, kelStatusStep.  "Null" is a null
 * pointer, kelStatusNullPtr.  "Size" is height below 1 or the number given, or width or len below 1, kelStatusSize.
 *
 * | functions                                             | order                         |
 * |-------------------------------------------------------|-------------------------------|
 * | MeanColumn, MeanCol                                   | step, null, size              |
 * | VarColumn, VarCol of floats                           | step, null, size (height 2)   |
 * | VarColumn of 16 bits                                  | null, size (height 2), step   |
 * | MeanVarColumn, MeanVarCol                             | null, size (height 2), step   |
 * | WeightedMeanColumn, WeightedVarColumn, -MeanVarColumn | null, step, size              |
 * | SumMeanVar                                            | step, null, size              |
 * | AccCovarianceMatrix                                   | null, size, step (either one) |
 * | MeanVarAcc, NewVar                                    | null, size                    |
 *
 * ## Source
 * The functions are in `src/training/columns/`, `src/training/moments.cpp` and `src/training/covariance.cpp`.
 * @{
 */
#ifndef KELS_STATS_H
#define KELS_STATS_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Means and variances of columns
 * MeanColumn stores mean = S1 * r.  VarColumn stores the unbiased variance (S2 - height * m^2) * r1 about the means m
 * that pSrcMean gives.  MeanVarColumn stores both in one pass, the variance about the mean that it computes.
 * @{ */
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

/** @} */

/** @name The same under shorter names
 * Each does what the function of the longer name does, with the same checks.
 * @{ */
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

/** @} */

/** @name Weighted means and variances of columns
 * The same with a weight for each row, height of them, which add up to 1: nothing is divided by their sum.
 *
 *     mean = sum of w * x
 *     var  = sum of w * x^2 - m^2, where m is pSrcMean, or in the MeanVar forms the mean computed
 * @{ */
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

/** @} */

/** @name Sums of columns
 * S1 and S2 alone.  The I and ISfs forms add them to what the destinations hold.  From 16-bit blocks the sums are
 * exact and rounded once: to Kel32f, or times 2^-scaleFactor to the nearest integer, ties to even, and saturated.
 * The addition of the ISfs form saturates too.
 * @{ */
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

/** @} */

/** @name Accumulation of single vectors
 * One vector counts `val`, its probability of belonging to a Gaussian, and is added about that Gaussian's mean:
 *
 *     d = pSrc[k] - pMean[k]
 *     pDstMeanAcc[k] += val * d
 *     pDstVarAcc[k]  += d * (val * d)
 *
 * kelsUpdateMean and kelsUpdateVar turn the sums into parameters.
 * @{ */
KELS_API KelStatus kelsMeanVarAcc_32f(const Kel32f* pSrc, const Kel32f* pMean, Kel32f* pDstMeanAcc, Kel32f* pDstVarAcc,
                                      int len, Kel32f val);
KELS_API KelStatus kelsMeanVarAcc_64f(const Kel64f* pSrc, const Kel64f* pMean, Kel64f* pDstMeanAcc, Kel64f* pDstVarAcc,
                                      int len, Kel64f val);

/** @} */

/** @name Variances from sums
 * dst[k] = (var[k] - mean[k]^2 * valMean) * valVar.  With S1 and S2 of n rows, valMean is 1 / n and valVar 1 / (n -
 * 1).
 *
 * The integer forms compute in Kel32f, rounding to the nearest in any mode of the caller, and truncate the result
 * times 2^-scaleFactor toward zero.  Whatever lies outside the integers, above them too, and NaN becomes -2147483648.
 * @{ */
KELS_API KelStatus kelsNewVar_32f(const Kel32f* pSrcMean, const Kel32f* pSrcVar, Kel32f* pDstVar, int len,
                                  Kel32f valMean, Kel32f valVar);
KELS_API KelStatus kelsNewVar_32f_I(const Kel32f* pSrcMean, Kel32f* pSrcDstVar, int len, Kel32f valMean, Kel32f valVar);
KELS_API KelStatus kelsNewVar_32s_Sfs(const Kel32s* pSrcMean, const Kel32s* pSrcVar, Kel32s* pDstVar, int len,
                                      Kel32f valMean, Kel32f valVar, int scaleFactor);
KELS_API KelStatus kelsNewVar_32s_ISfs(const Kel32s* pSrcMean, Kel32s* pSrcDstVar, int len, Kel32f valMean,
                                       Kel32f valVar, int scaleFactor);

/** @} */

/** @name Covariances
 * Accumulation of a symmetric matrix, width x width, with dstStep elements from row to row (D2) or as row pointers
 * (D2L). For i <= j, and the same value at [j][i]:
 *
 *     pDstMatr[i][j] += val * sum over the rows of (x_i - m_j) * (x_j - m_j), where m is pMean
 *
 * Both factors are taken about the mean of the higher column.  The diagonal therefore holds centred squares, but
 * elsewhere this is the usual covariance only where m_i = m_j.  Sums of float blocks and the addition are in extended
 * precision, those of 16-bit blocks are exact; a result is rounded once to Kel64f.
 * @{ */
KELS_API KelStatus kelsAccCovarianceMatrix_32f64f_D2(const Kel32f* pSrc, int srcStep, int height, const Kel32f* pMean,
                                                     Kel64f* pDstMatr, int width, int dstStep, Kel64f val);
KELS_API KelStatus kelsAccCovarianceMatrix_32f64f_D2L(const Kel32f** pSrc, int height, const Kel32f* pMean,
                                                      Kel64f** pDstMatr, int width, Kel64f val);
KELS_API KelStatus kelsAccCovarianceMatrix_16s64f_D2(const Kel16s* pSrc, int srcStep, int height, const Kel16s* pMean,
                                                     Kel64f* pDstMatr, int width, int dstStep, Kel64f val);
KELS_API KelStatus kelsAccCovarianceMatrix_16s64f_D2L(const Kel16s** pSrc, int height, const Kel16s* pMean,
                                                      Kel64f** pDstMatr, int width, Kel64f val);

/** @} */

/** @name Means and variances of columns of 16 bits
 * These come from exact sums.  Products with r and r1 are in double precision; every result is truncated toward zero
 * and saturated, variances times 2^-scaleFactor, means unscaled.  As r is rounded to Kel32f, the mean of a column
 * whose sum is a multiple of height may come out one closer to zero (with height 25 or 100, for example).
 *
 *     MeanColumn       mean = S1 * r
 *     VarColumn        var  = (S2 - height * pSrcMean^2) * r1
 *     MeanVarColumn    both, with var = (S2 - S1^2 / height) * r1
 *
 * MeanVarColumn_16s16s32s takes S1^2 / height truncated to an integer and does not scale.
 * @{ */
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

/** @} */

#ifdef __cplusplus
}
#endif
/** @} */

#endif
