/** @defgroup gauss One vector under one Gaussian
 *
 * How well a feature vector fits a Gaussian: the logarithm of its density, and the Mahalanobis distance behind it.
 *
 * @code{.c}
 * // The log density of x under a Gaussian with the variances 1/4 and 1.
 * const Kel32f x[2] = {1.5f, 2}, mean[2] = {1, 2}, ivar[2] = {4, 1}, logWeight = 0;
 * Kel32f det, gConst, score;
 * kelsUpdateGConst_32f(ivar, 2, &det);                      // 2 ln(2 pi) + sum of ln(variance)
 * kelsOutProbPreCalc_32f(&logWeight, &det, &gConst, 1);     // logWeight - det / 2
 * kelsLogGaussSingle_32f(x, mean, ivar, 2, &score, gConst);
 * printf("%g\n", score);                                    // -1.64473
 * @endcode
 *
 * ## What it computes
 * A Gaussian is a mean and an inverse variance for each of the len components, and a constant gConst.
 *
 *     S        = sum over i of (pSrc[i] - pMean[i])^2 * pIvar[i]
 *     score    = gConst - S / 2              (LogGaussSingle)
 *     distance = S                           (MahDistSingle)
 *
 * With gConst = ln(weight) - (len * ln(2 pi) + sum of ln(variance)) / 2, which kels/model.h computes, the score is the
 * natural logarithm of the weighted density.
 *
 * The variances are given in one of four ways:
 *
 * - the plain forms take the inverse variances;
 * - the IdVar forms take none, and all variances are 1;
 * - the DirectVar forms take the variances themselves, and divide;
 * - the BlockDVar forms take a block-diagonal inverse covariance, made by kels/model.h.
 *
 * A vector equal to the mean scores exactly gConst. Nothing is clamped in floating point: infinities and NaN act as in
 * the formula.
 *
 * ## Shapes and units
 * All arrays have len elements; *pResult is one value. Names tell the types of the vector and of the result: 32f64f
 * takes floats and gives a double.
 *
 * 16-bit models with float results (16s32f): the score is gConst - S * 2^-(scaleFactor + 1). Forms without a
 * scaleFactor use 0.
 *
 * 16-bit models with integer results (16s32s): S is shifted right by scaleFactor + 1 places, toward minus infinity, and
 * left where that count is negative. The half is thus one more place to shift, and scaleFactor -1 gives gConst - S. The
 * score is saturated to 32 bits.
 *
 * Low forms keep the low 32 bits of an integer score instead of saturating it. IdVarLow_16s32s also squares in 32 bits:
 * a difference of 46341 or more adds its square less 2^32. Low forms with float results equal their plain twins.
 *
 * ## Accuracy
 * - 32f, 16s32f: single precision, in an order of summation of the library's choice. S is wrong by at most (len / 4 +
 *   10) * 2^-24 times the sum of the magnitudes of its terms.
 * - 64f, 32f64f: as in 80-bit accumulation, rounded once to the result.
 * - 16s32s: S is exact in 64 bits.
 *
 * The alignment of the arrays changes the order of sums and nothing else.
 *
 * ## Checks, in order
 * - kelStatusNullPtr: a pointer is null.
 * - kelStatusSize: len is below 1.
 * - then what a group below names.
 *
 * ## Source
 * The log density of a normal distribution in its textbook form: L. Rabiner, B.-H. Juang, "Fundamentals of Speech
 * Recognition", 1993, section 6.6.
 *
 * Definitions: src/scoring/gauss/, in single.cpp, direct.cpp, covariance.cpp and mahalanobis.cpp.
 * @{
 */
#ifndef KELS_GAUSS_H
#define KELS_GAUSS_H

#include "kels/model.h"
#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Inverse variances
 * @{ */
KELS_API KelStatus kelsLogGaussSingle_64f(const Kel64f* pSrc, const Kel64f* pMean, const Kel64f* pIvar, int len,
                                          Kel64f* pResult, Kel64f gConst);
KELS_API KelStatus kelsLogGaussSingle_32f(const Kel32f* pSrc, const Kel32f* pMean, const Kel32f* pIvar, int len,
                                          Kel32f* pResult, Kel32f gConst);
KELS_API KelStatus kelsLogGaussSingle_32f64f(const Kel32f* pSrc, const Kel32f* pMean, const Kel32f* pIvar, int len,
                                             Kel64f* pResult, Kel64f gConst);
KELS_API KelStatus kelsLogGaussSingle_16s32f(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pIvar, int len,
                                             Kel32f* pResult, Kel32f gConst);
KELS_API KelStatus kelsLogGaussSingle_Scaled_16s32f(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pIvar,
                                                    int len, Kel32f* pResult, Kel32f gConst, int scaleFactor);
KELS_API KelStatus kelsLogGaussSingle_16s32s_Sfs(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pIvar, int len,
                                                 Kel32s* pResult, Kel32s gConst, int scaleFactor);
KELS_API KelStatus kelsLogGaussSingle_Low_16s32f(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pIvar, int len,
                                                 Kel32f* pResult, Kel32f gConst);
KELS_API KelStatus kelsLogGaussSingle_LowScaled_16s32f(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pIvar,
                                                       int len, Kel32f* pResult, Kel32f gConst, int scaleFactor);
KELS_API KelStatus kelsLogGaussSingle_Low_16s32s_Sfs(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pIvar,
                                                     int len, Kel32s* pResult, Kel32s gConst, int scaleFactor);
/** @} */

/** @name Unit variances
 * The sum of squared differences.
 * @{ */
KELS_API KelStatus kelsLogGaussSingle_IdVar_64f(const Kel64f* pSrc, const Kel64f* pMean, int len, Kel64f* pResult,
                                                Kel64f gConst);
KELS_API KelStatus kelsLogGaussSingle_IdVar_32f(const Kel32f* pSrc, const Kel32f* pMean, int len, Kel32f* pResult,
                                                Kel32f gConst);
KELS_API KelStatus kelsLogGaussSingle_IdVar_32f64f(const Kel32f* pSrc, const Kel32f* pMean, int len, Kel64f* pResult,
                                                   Kel64f gConst);
KELS_API KelStatus kelsLogGaussSingle_IdVar_16s32f(const Kel16s* pSrc, const Kel16s* pMean, int len, Kel32f* pResult,
                                                   Kel32f gConst);
KELS_API KelStatus kelsLogGaussSingle_IdVarScaled_16s32f(const Kel16s* pSrc, const Kel16s* pMean, int len,
                                                         Kel32f* pResult, Kel32f gConst, int scaleFactor);
KELS_API KelStatus kelsLogGaussSingle_IdVar_16s32s_Sfs(const Kel16s* pSrc, const Kel16s* pMean, int len,
                                                       Kel32s* pResult, Kel32s gConst, int scaleFactor);
KELS_API KelStatus kelsLogGaussSingle_IdVarLow_16s32f(const Kel16s* pSrc, const Kel16s* pMean, int len, Kel32f* pResult,
                                                      Kel32f gConst);
KELS_API KelStatus kelsLogGaussSingle_IdVarLowScaled_16s32f(const Kel16s* pSrc, const Kel16s* pMean, int len,
                                                            Kel32f* pResult, Kel32f gConst, int scaleFactor);
KELS_API KelStatus kelsLogGaussSingle_IdVarLow_16s32s_Sfs(const Kel16s* pSrc, const Kel16s* pMean, int len,
                                                          Kel32s* pResult, Kel32s gConst, int scaleFactor);
/** @} */

/** @name Variances given directly
 * S = sum of (pSrc[i] - pMean[i])^2 / pVar[i]. A variance is faulty if it is zero, of either sign, or NaN.
 *
 * 32f inverts the variances into scratch memory first. Without memory it returns kelStatusAllocError. With a faulty
 * variance it stores the score, in which the inverse is infinite, and returns the warning kelStatusDivByZero.
 *
 * 64f, 32f64f and the 16s32f forms store nothing where a variance is faulty, and return kelStatusDivByZero.
 *
 * 16s32s_Sfs keeps the quotients in scratch memory. Without memory it returns kelStatusAllocError. S is not rounded
 * before it is multiplied by 2^-(scaleFactor + 1); the product is rounded toward minus infinity. With a zero variance
 * the result is -2147483648 and the status kelStatusDivByZero.
 * @{ */
KELS_API KelStatus kelsLogGaussSingle_DirectVar_64f(const Kel64f* pSrc, const Kel64f* pMean, const Kel64f* pVar,
                                                    int len, Kel64f* pResult, Kel64f gConst);
KELS_API KelStatus kelsLogGaussSingle_DirectVar_32f(const Kel32f* pSrc, const Kel32f* pMean, const Kel32f* pVar,
                                                    int len, Kel32f* pResult, Kel32f gConst);
KELS_API KelStatus kelsLogGaussSingle_DirectVar_32f64f(const Kel32f* pSrc, const Kel32f* pMean, const Kel32f* pVar,
                                                       int len, Kel64f* pResult, Kel64f gConst);
KELS_API KelStatus kelsLogGaussSingle_DirectVar_16s32f(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pVar,
                                                       int len, Kel32f* pResult, Kel32f gConst);
KELS_API KelStatus kelsLogGaussSingle_DirectVarScaled_16s32f(const Kel16s* pSrc, const Kel16s* pMean,
                                                             const Kel16s* pVar, int len, Kel32f* pResult,
                                                             Kel32f gConst, int scaleFactor);
KELS_API KelStatus kelsLogGaussSingle_DirectVar_16s32s_Sfs(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pVar,
                                                           int len, Kel32s* pResult, Kel32s gConst, int scaleFactor);
/** @} */

/** @name Block-diagonal inverse covariance
 * S = sum over the blocks of d' * B * d, where d is the part of pSrc - pMean that belongs to block B. A block need not
 * be symmetric.
 *
 * Further checks: kelStatusSize where len is not the number of rows of the matrix; kelStatusNoMemory where the scratch
 * memory that vectors of 112 and more components need cannot be had.
 *
 * In the 16-bit forms the difference that a row of the block is multiplied with is saturated to 16 bits. The difference
 * that the product is weighted with is not. Components at most 32767 apart are therefore treated as in the formula. The
 * 16s32s form sums in 64 bits, which wrap around: differences of full scale need blocks of a few hundred rows for that.
 * @{ */
KELS_API KelStatus kelsLogGaussSingle_BlockDVar_32f(const Kel32f* pSrc, const Kel32f* pMean,
                                                    const KelBlockDMatrix_32f* pMatrix, int len, Kel32f* pResult,
                                                    Kel32f gConst);
KELS_API KelStatus kelsLogGaussSingle_BlockDVar_64f(const Kel64f* pSrc, const Kel64f* pMean,
                                                    const KelBlockDMatrix_64f* pMatrix, int len, Kel64f* pResult,
                                                    Kel64f gConst);
KELS_API KelStatus kelsLogGaussSingle_BlockDVar_32f64f(const Kel32f* pSrc, const Kel32f* pMean,
                                                       const KelBlockDMatrix_32f* pMatrix, int len, Kel64f* pResult,
                                                       Kel64f gConst);
KELS_API KelStatus kelsLogGaussSingle_BlockDVar_16s32f(const Kel16s* pSrc, const Kel16s* pMean,
                                                       const KelBlockDMatrix_16s* pMatrix, int len, Kel32f* pResult,
                                                       Kel32f gConst);
KELS_API KelStatus kelsLogGaussSingle_BlockDVarScaled_16s32f(const Kel16s* pSrc, const Kel16s* pMean,
                                                             const KelBlockDMatrix_16s* pMatrix, int len,
                                                             Kel32f* pResult, Kel32f gConst, int scaleFactor);
KELS_API KelStatus kelsLogGaussSingle_BlockDVar_16s32s_Sfs(const Kel16s* pSrc, const Kel16s* pMean,
                                                           const KelBlockDMatrix_16s* pMatrix, int len, Kel32s* pResult,
                                                           Kel32s gConst, int scaleFactor);
/** @} */

/** @name Mahalanobis distances
 * *pResult = S. The integer form multiplies S by 2^-scaleFactor, rounds toward minus infinity and saturates.
 * @{ */
KELS_API KelStatus kelsMahDistSingle_64f(const Kel64f* pSrc, const Kel64f* pMean, const Kel64f* pIvar, int len,
                                         Kel64f* pResult);
KELS_API KelStatus kelsMahDistSingle_32f(const Kel32f* pSrc, const Kel32f* pMean, const Kel32f* pIvar, int len,
                                         Kel32f* pResult);
KELS_API KelStatus kelsMahDistSingle_32f64f(const Kel32f* pSrc, const Kel32f* pMean, const Kel32f* pIvar, int len,
                                            Kel64f* pResult);
KELS_API KelStatus kelsMahDistSingle_16s32f(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pIvar, int len,
                                            Kel32f* pResult);
KELS_API KelStatus kelsMahDistSingle_16s32s_Sfs(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pIvar, int len,
                                                Kel32s* pResult, int scaleFactor);
/** @} */

#ifdef __cplusplus
}
#endif

/** @} */

#endif
