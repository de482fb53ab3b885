/* Logarithms of likelihoods: adding, subtracting and summing what they stand for.
 *
 *     LogAdd   pSrcDst[i] = ln(e^pSrc[i] + e^pSrcDst[i])
 *     LogSub   pSrcDst[i] = ln(e^pSrc[i] - e^pSrcDst[i])
 *     LogSum   *pSum      = ln(e^pSrc[0] + ... + e^pSrc[len-1])
 *
 * Logarithms are natural.  The logarithm of zero is -4500000 in single precision and in the integer forms, and -1e10 in
 * double precision.  "Cut-off" is -15.3195879547406 and -23.0258509299405 (ln 1e-10) respectively.
 *
 * Log-add of two values.  With m the larger operand and d <= 0 the smaller one less m: below the cut-off the smaller
 * operand is ignored and the result is m, but not below -4500000 (in double precision an m below -9e9 becomes -1e10).
 * From the cut-off on the result is m + f(d), however small m is; f is a polynomial that stands for ln(1 + e^d), one
 * for d > -2.55, one for -6.8 < d <= -2.55, one for d <= -6.8 (in double precision -3.5 and -9).  No logarithm or
 * exponential is computed.  Errors are tabulated in docs/accuracy.md.  Both operands -infinity count as below the
 * cut-off, and so do both +infinity; an operand that is not a number makes the result one.
 *
 * hint, of LogAdd.  In single precision kelHintNone and kelHintAccurate evaluate f in double precision and round the
 * result once; kelHintFast does all in single precision.  kelsLogAdd_64f has one implementation, no less accurate than
 * extended precision rounded once.  With any other hint, seen after the checks, nothing is computed and the status is
 * 0; the integer forms then still turn pSrcDst into floats and back, so that integers beyond 24 bits may lose their low
 * ones.
 *
 * Log-subtract.  pSrcDst[i] < pSrc[i] must hold for every element.  With a = pSrc[i] and d = pSrcDst[i] - a: below the
 * cut-off the result is a, with the same floors as above; otherwise a + ln(1 - e^d), in double precision and rounded
 * once, or the logarithm of zero where 1 - e^d is not above 1.0057e-37 (2.45e-308 in kelsLogSub_64f).  As 1 - e^d is
 * formed literally, operands closer than 1e-16 give the logarithm of zero.
 *
 * Log-sum.  The first element, to which the others are log-added one after the other: in single precision with a
 * rounding to Kel32f after every element (kelsLogSum_32f stores every intermediate sum in *pSum), in double precision
 * with one to Kel64f.  A sum of one element is that element, which the integer forms copy unscaled.
 *
 * Integer forms.  An integer n stands for n * 2^-scaleFactor: scaleFactor is the number of fractional bits of all
 * operands and of the result.  Results are truncated toward zero and saturated.  LogAdd and LogSum compute on
 * n * 2^-scaleFactor rounded to Kel32f, by the single-precision rule; LogSub takes that rule on exact operands and
 * truncates the double-precision result.  -scaleFactor is held to -150..128.  The caller's rounding mode has no
 * influence on integer results.
 *
 * Checks, in this order (lengths come before pointers here): len below 1 -6; a null pointer -8; LogSub: some
 * pSrcDst[i] >= pSrc[i] -7, found before anything is written (comparisons with NaN are false, and such an element
 * results in NaN).
 *
 * All forms of LogSum store the first element in *pSum before they read the next; so *pSum should not be an element of
 * pSrc but the first.
 */
#ifndef KELS_LOG_H
#define KELS_LOG_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

KELS_API KelStatus kelsLogAdd_64f(const Kel64f* pSrc, Kel64f* pSrcDst, int len, int hint);
KELS_API KelStatus kelsLogAdd_32f(const Kel32f* pSrc, Kel32f* pSrcDst, int len, int hint);
KELS_API KelStatus kelsLogAdd_32s_Sfs(const Kel32s* pSrc, Kel32s* pSrcDst, int len, int scaleFactor, int hint);
KELS_API KelStatus kelsLogAdd_16s_Sfs(const Kel16s* pSrc, Kel16s* pSrcDst, int len, int scaleFactor, int hint);

KELS_API KelStatus kelsLogSub_64f(const Kel64f* pSrc, Kel64f* pSrcDst, int len);
KELS_API KelStatus kelsLogSub_32f(const Kel32f* pSrc, Kel32f* pSrcDst, int len);
KELS_API KelStatus kelsLogSub_32s_Sfs(const Kel32s* pSrc, Kel32s* pSrcDst, int len, int scaleFactor);
KELS_API KelStatus kelsLogSub_16s_Sfs(const Kel16s* pSrc, Kel16s* pSrcDst, int len, int scaleFactor);

KELS_API KelStatus kelsLogSum_64f(const Kel64f* pSrc, Kel64f* pSum, int len);
KELS_API KelStatus kelsLogSum_32f(const Kel32f* pSrc, Kel32f* pSum, int len);
KELS_API KelStatus kelsLogSum_32s_Sfs(const Kel32s* pSrc, Kel32s* pSum, int len, int scaleFactor);
KELS_API KelStatus kelsLogSum_16s_Sfs(const Kel16s* pSrc, Kel16s* pSum, int len, int scaleFactor);

/* The single-precision vectors behind kelsLogAdd_32f, without checks: M6 for the hints 0 and 2, A6 for hint 1.  Nothing
 * happens for a len below 1.
 */
KELS_API void kelsLogAddVec_32f_M6(const Kel32f* pSrc, Kel32f* pSrcDst, int len);
KELS_API void kelsLogAddVec_32f_A6(const Kel32f* pSrc, Kel32f* pSrcDst, int len);

#ifdef __cplusplus
}
#endif

#endif
