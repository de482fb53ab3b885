/** @defgroup log Logarithms of likelihoods
 *
 * Adding, subtracting and summing the likelihoods that logarithms stand for.
 *
 * @code{.c}
 * // ln(0.5 + 0.25) twice, and back to ln 0.5.
 * Kel64f a[2] = {log(0.5), log(0.5)}, b[2] = {log(0.25), log(0.25)}, sum;
 * kelsLogAdd_64f(a, b, 2, kelHintNone);       // b: ln 0.75
 * const Kel64f terms[2] = {log(0.5), log(0.25)};
 * kelsLogSum_64f(terms, &sum, 2);             // ln 0.75
 * Kel64f difference = log(0.25);
 * kelsLogSub_64f(&sum, &difference, 1);       // ln 0.5
 * printf("%g %g %g\n", exp(b[0]), exp(sum), exp(difference));
 * @endcode
 *
 * ## What it computes
 * Logarithms are natural.
 *
 *     LogAdd   pSrcDst[i] = ln(e^pSrc[i] + e^pSrcDst[i])
 *     LogSub   pSrcDst[i] = ln(e^pSrc[i] - e^pSrcDst[i])
 *     LogSum   *pSum      = ln(e^pSrc[0] + ... + e^pSrc[len-1])
 *
 * Two numbers belong to each precision. The integer forms use those of single precision.
 *
 *              the logarithm of zero    the cut-off
 *     single   -4500000                 -15.3195879547406
 *     double   -1e10                    -23.0258509299405, which is ln 1e-10
 *
 * **Log-add.** Let m be the larger operand, and d the smaller one less m, so that d <= 0.
 *
 * - d below the cut-off: the smaller operand is ignored. The result is m; an m below -4500000 gives -4500000, and in
 *   double precision an m below -9e9 gives -1e10.
 * - all other d: the result is m + f(d), however low m is. f is a polynomial that stands for ln(1 + e^d): one for d >
 *   -2.55, one for -6.8 < d <= -2.55 and one for d <= -6.8. In double precision the limits are -3.5 and -9.
 *
 * No logarithm and no exponential is computed. Where both operands are -infinity, or both +infinity, the smaller one is
 * ignored. An operand that is NaN makes the result NaN.
 *
 * The hint of LogAdd chooses among implementations. In single precision kelHintNone and kelHintAccurate evaluate f in
 * double precision and round the result once; kelHintFast does everything in single precision. kelsLogAdd_64f has one
 * implementation. Any other hint, which is seen after the checks, computes nothing and gives kelStatusOk. The integer
 * forms still turn pSrcDst into floats and back then, so that integers beyond 24 bits may lose their low ones.
 *
 * **Log-subtract.** pSrcDst[i] < pSrc[i] must hold for every element. Let a be pSrc[i] and d be pSrcDst[i] - a.
 *
 * - d below the cut-off: the result is a, with the same floors as in log-add.
 * - all other d: the result is a + ln(1 - e^d), in double precision and rounded once. It is the logarithm of zero where
 *   1 - e^d is not above 1.0057e-37 (2.45e-308 in kelsLogSub_64f). As 1 - e^d is formed literally, operands closer than
 *   1e-16 give the logarithm of zero.
 *
 * **Log-sum.** The elements are log-added to the first one, one after the other. In single precision every sum on the
 * way is rounded to Kel32f, in double precision to Kel64f. The sum of one element is that element, which the integer
 * forms copy as it is.
 *
 * ## Shapes and units
 * Vectors have len elements; *pSum is one value. All forms of LogSum store the first element in *pSum before they read
 * the next, and kelsLogSum_32f stores every sum on the way. *pSum should therefore be no element of pSrc but the first.
 *
 * In the integer forms n stands for n * 2^-scaleFactor: scaleFactor is the number of fractional bits of all operands
 * and of the result. LogAdd and LogSum compute on n * 2^-scaleFactor rounded to Kel32f, by the single-precision rule.
 * LogSub takes that rule on exact operands, in double precision. Results are truncated toward zero and saturated.
 * -scaleFactor is limited to -150..128. The caller's rounding mode has no influence on integer results.
 *
 * ## Accuracy
 * docs/accuracy.md tabulates the errors of the polynomials. kelsLogAdd_64f is no less accurate than extended precision
 * rounded once.
 *
 * ## Checks, in order
 * - kelStatusSize: len is below 1. It comes before the pointers here.
 * - kelStatusNullPtr: a pointer is null.
 * - kelStatusOutOfRange, LogSub only: some pSrcDst[i] >= pSrc[i]. It is found before anything is written. Comparisons
 *   with NaN are false; such an element gives NaN.
 * @{
 */
#ifndef KELS_LOG_H
#define KELS_LOG_H

#include "kels/types.h"

/** The logarithm of zero: what sums of likelihoods begin with. */
#define KELS_LOG_ZERO_32F (-4500000.0f)
#define KELS_LOG_ZERO_64F (-1e10)

#ifdef __cplusplus
extern "C" {
#endif

/** @name Log-add
 * @{ */
KELS_API KelStatus kelsLogAdd_64f(const Kel64f* pSrc, Kel64f* pSrcDst, int len, int hint);
KELS_API KelStatus kelsLogAdd_32f(const Kel32f* pSrc, Kel32f* pSrcDst, int len, int hint);
KELS_API KelStatus kelsLogAdd_32s_Sfs(const Kel32s* pSrc, Kel32s* pSrcDst, int len, int scaleFactor, int hint);
KELS_API KelStatus kelsLogAdd_16s_Sfs(const Kel16s* pSrc, Kel16s* pSrcDst, int len, int scaleFactor, int hint);
/** @} */

/** @name Log-subtract
 * @{ */
KELS_API KelStatus kelsLogSub_64f(const Kel64f* pSrc, Kel64f* pSrcDst, int len);
KELS_API KelStatus kelsLogSub_32f(const Kel32f* pSrc, Kel32f* pSrcDst, int len);
KELS_API KelStatus kelsLogSub_32s_Sfs(const Kel32s* pSrc, Kel32s* pSrcDst, int len, int scaleFactor);
KELS_API KelStatus kelsLogSub_16s_Sfs(const Kel16s* pSrc, Kel16s* pSrcDst, int len, int scaleFactor);
/** @} */

/** @name Log-sum
 * @{ */
KELS_API KelStatus kelsLogSum_64f(const Kel64f* pSrc, Kel64f* pSum, int len);
KELS_API KelStatus kelsLogSum_32f(const Kel32f* pSrc, Kel32f* pSum, int len);
KELS_API KelStatus kelsLogSum_32s_Sfs(const Kel32s* pSrc, Kel32s* pSum, int len, int scaleFactor);
KELS_API KelStatus kelsLogSum_16s_Sfs(const Kel16s* pSrc, Kel16s* pSum, int len, int scaleFactor);
/** @} */

/** @name Vectors without checks
 * The single-precision vectors behind kelsLogAdd_32f: M6 for kelHintNone and kelHintAccurate, A6 for kelHintFast.
 * Nothing happens for a len below 1.
 * @{ */
KELS_API void kelsLogAddVec_32f_M6(const Kel32f* pSrc, Kel32f* pSrcDst, int len);
KELS_API void kelsLogAddVec_32f_A6(const Kel32f* pSrc, Kel32f* pSrcDst, int len);
/** @} */

#ifdef __cplusplus
}
#endif

/** @} */

#endif
