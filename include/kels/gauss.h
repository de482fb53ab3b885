/* The score of one feature vector under one Gaussian, and the Mahalanobis distance that it is built on.
 *
 * A Gaussian is a mean and an inverse variance for each of the len components, and a constant gConst that the caller
 * has prepared: normally log weight - (len * ln 2pi + sum of ln variance) / 2.  The scores are natural logarithms:
 *
 *     S     = sum over i of (pSrc[i] - pMean[i])^2 * pIvar[i]
 *     score = gConst - S / 2                                       (LogGaussSingle)
 *     dist  = S                                                    (MahDistSingle)
 *
 * Variances.  The plain forms take the inverse variances; IdVar forms take none and use 1; DirectVar forms take the
 * variances and divide; BlockDVar forms take blocks of the inverse covariance.
 *
 * Arrays have len elements; *pResult is one value.  A vector equal to the mean scores exactly gConst.  Nothing is
 * clamped in floating point: infinite and not-a-number inputs act as in the formula.
 *
 * Accuracy
 *   32f, 16s32f    single precision; the sums are taken in an order of the library's choice.  S is wrong by no more than
 *                  (len / 4 + 10) * 2^-24 times the sum of the magnitudes of its terms.
 *   64f, 32f64f    80-bit accumulation, rounded once to the result.
 *   16s32s         S is exact in 64 bits.
 * Neither the alignment of the arrays nor the number of vectors that a call scores changes more than the order of sums.
 *
 * 16-bit models.  16s32f results are gConst - S * 2^-(scaleFactor + 1); the forms without a scaleFactor use 0.  In the
 * integer results (_Sfs) the half is one more place to shift: S is shifted right by scaleFactor + 1, toward minus
 * infinity, or left where that count is negative.  So scaleFactor -1 gives gConst - S.  The difference is saturated to
 * 32 bits, except in the Low forms, which keep its low 32 bits.  IdVarLow_16s32s also squares in 32 bits: a difference
 * of 46341 and more adds its square less 2^32.  Low forms with float results equal their plain twins.
 *
 * Checks, in this order: null pointers (-8), len below 1 (-6), then what a group names.
 *
 * Source: the textbook form of the log density of a normal distribution, for example Rabiner and Juang, "Fundamentals
 * of Speech Recognition" (1993), section 6.6.
 */
#ifndef KELS_GAUSS_H
#define KELS_GAUSS_H

#include "kels/model.h"
#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- inverse variances ------------------------------------------------------------------------------------------- */

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

/* ---- unit variances ---------------------------------------------------------------------------------------------- */

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

/* ---- variances --------------------------------------------------------------------------------------------------- */

/* S = sum of (pSrc[i] - pMean[i])^2 / pVar[i].  A variance is faulty if it is zero, of either sign, or not a number.
 *
 * 32f inverts the variances into scratch memory first; no memory: -4 (kelStatusAllocError).  With a faulty variance,
 * whose inverse is infinite, the score is still stored and the call returns the warning 6 (kelStatusDivByZero).
 *
 * 64f, 32f64f and the 16s32f forms return 6 at a faulty variance and store nothing.
 *
 * 16s32s_Sfs keeps the quotients in scratch memory, no memory: -4.  S is not rounded to an integer before it is
 * multiplied by 2^-(scaleFactor + 1); the product is rounded toward minus infinity.  With a zero variance the call
 * returns 6 and stores -2147483648.
 */
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

/* ---- block-diagonal inverse covariance --------------------------------------------------------------------------- */

/* S = sum over the blocks of d' * B * d, with d the part of pSrc - pMean that belongs to block B.  A block need not be
 * symmetric.  len other than the sum of the block sizes: -6.  From len 112 on scratch memory is allocated; none: -9.
 *
 * In the 16-bit forms the difference that the block's rows are multiplied with is saturated to 16 bits, the one that
 * these products are weighted with is not; so up to 32767 apart they are what the formula says.  The 16s32s form sums in
 * 64 bits without regard to overflow, which differences of full scale meet from blocks of a few hundred rows on.
 */
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

/* ---- Mahalanobis distances --------------------------------------------------------------------------------------- */

/* *pResult = S; the integer form times 2^-scaleFactor, rounded toward minus infinity and saturated. */
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

#ifdef __cplusplus
}
#endif

#endif
