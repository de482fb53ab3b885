/** @defgroup frame Frame conditioning
 *
 * Small operations of a speech front-end on the samples or the energies of a frame.
 *
 * @code{.c}
 * float frame[200], padded[256], last = 100.0f, changes = 0.0f;
 * for (int n = 0; n < 200; ++n) frame[n] = 100.0f + 50.0f * sinf(0.2f * (float)n);
 * kelsCompensateOffset_32f_I(frame, 200, &last, 0.0f, 0.999f);
 * kelsSignChangeRate_32f(frame, 200, &changes);
 * kelsCopyWithPadding_32f(frame, 200, padded, 256);
 * printf("%.0f sign changes\n", changes);
 * @endcode
 *
 * ## What it computes
 * Each group below says what it does.
 *
 * ## Threads
 * Nothing is kept between calls.
 * @{
 */
#ifndef KELS_FRAME_H
#define KELS_FRAME_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Offset compensation
 * The high-pass filter of first order that removes the DC offset, with a notch at 0 Hz:
 *
 *     y[n] = x[n] - x[n-1] + val * y[n-1]
 *
 * ETSI ES 201 108 uses val = 0.999.  The state is the caller's.  *pSrcLast is the last input of the frame before, and
 * becomes that of this frame, x[len-1].  dstLast is the last output of the frame before.  Both are 0 at the start of a
 * signal.  pDst may be pSrc.
 *
 * 32f: y[0] = val * dstLast + x[0] - *pSrcLast, then y[n] = val * y[n-1] + (x[n] - x[n-1]), in single precision, from
 * left to right, without fused operations.
 *
 * 16s: the same sums in single precision, whatever rounding mode the caller has set.  y[0] is truncated toward zero.
 * Every later output is rounded to the nearest, halves away from zero (0.5 is added in single precision).  All are
 * saturated, and the recursion goes on from the stored output.
 *
 * kelsCompensateOffset_16s, but not its _I form, takes val in Q12, rounded to the nearest, for n >= 1 where -1 <= val
 * <= 1: the exact val * y[n-1] + x[n] - x[n-1], halves away from zero, saturated.  From the same y[n-1] it is at most
 * one off the _I form where val is a multiple of 1/4096.  Elsewhere the rounding of val adds up to |y[n-1]| / 8192.
 *
 * Q15: val is valQ15 / 32768.  All outputs are exact sums, truncated toward zero and saturated.
 *
 * Checks, in order:
 * 1. kelStatusNullPtr: a pointer is null.
 * 2. kelStatusSize: len is below 1, or in the Q15 forms above 65535.
 * 3. kelStatusBadArg: valQ15 is below 0.
 * @{ */
KELS_API KelStatus kelsCompensateOffset_32f(const Kel32f* pSrc, Kel32f* pDst, int len, Kel32f* pSrcLast, Kel32f dstLast,
                                            Kel32f val);
KELS_API KelStatus kelsCompensateOffset_32f_I(Kel32f* pSrcDst, int len, Kel32f* pSrcLast, Kel32f dstLast, Kel32f val);
KELS_API KelStatus kelsCompensateOffset_16s(const Kel16s* pSrc, Kel16s* pDst, int len, Kel16s* pSrcLast, Kel16s dstLast,
                                            Kel32f val);
KELS_API KelStatus kelsCompensateOffset_16s_I(Kel16s* pSrcDst, int len, Kel16s* pSrcLast, Kel16s dstLast, Kel32f val);
KELS_API KelStatus kelsCompensateOffsetQ15_16s(const Kel16s* pSrc, Kel16s* pDst, int len, Kel16s* pSrcLast,
                                               Kel16s dstLast, Kel16s valQ15);
KELS_API KelStatus kelsCompensateOffsetQ15_16s_I(Kel16s* pSrcDst, int len, Kel16s* pSrcLast, Kel16s dstLast,
                                                 Kel16s valQ15);
/** @} */

/** @name Zero mean
 * Subtracts the mean of the samples, rounded to the nearest integer with halves away from zero, and saturates.  No
 * memory is needed.
 *
 * Checks, in order: kelStatusSize where len is below 1; kelStatusNullPtr.  Here the size comes first.
 * @{ */
KELS_API KelStatus kelsZeroMean_16s(Kel16s* pSrcDst, int len);
/** @} */

/** @name Energy normalisation
 * Log energies are set against the loudest frame.  They are `height` values, one column of a feature array, at
 * pSrcDst[k * step].
 *
 * Let emax be the largest value; the RT forms take the caller's maxE, a running maximum, in its place.  Let floor =
 * emax - 0.230259 * silFloor, where the factor turns decibels into natural logarithms.  Each value e becomes
 *
 *     32f   1 - (emax - max(e, floor)) * enScale
 *     16s   valShift - (emax - max(e, floor)) * enScale, truncated toward zero and saturated
 *
 * in single precision.  The 16-bit results are the same in every rounding mode.  A NaN is no maximum and stays what it
 * is.
 *
 * Checks, in order: kelStatusNullPtr; kelStatusSize where step or height is below 1.
 * @{ */
KELS_API KelStatus kelsNormEnergy_32f(Kel32f* pSrcDst, int step, int height, Kel32f silFloor, Kel32f enScale);
KELS_API KelStatus kelsNormEnergy_16s(Kel16s* pSrcDst, int step, int height, Kel16s silFloor, Kel16s valShift,
                                      Kel32f enScale);
KELS_API KelStatus kelsNormEnergy_RT_32f(Kel32f* pSrcDst, int step, int height, Kel32f silFloor, Kel32f maxE,
                                         Kel32f enScale);
KELS_API KelStatus kelsNormEnergy_RT_16s(Kel16s* pSrcDst, int step, int height, Kel16s silFloor, Kel16s maxE,
                                         Kel16s valShift, Kel32f enScale);
/** @} */

/** @name Sign changes
 * Counts over pairs of neighbouring samples, a measure of zero crossings.  One result goes to pRes; len = 1 gives 0.
 *
 * - SignChangeRate_16s counts pairs whose product is negative.  A zero never counts.
 * - SignChangeRate_32f counts pairs whose product, in single precision, is not >= 0.  NaN counts, an underflow does
 *   not.
 * - Count0_16s and _32f give half the sum of |sgn(x[n+1]) - sgn(x[n])|: a change of sign counts one, a step to or from
 *   zero one half.  The integer form rounds the total down.  sgn of NaN is 0.
 * - Xor_32f counts pairs whose sign bits differ, those of zeros and NaN included.  These are the zero crossings of the
 *   voice activity detector of ITU-T G.729 Annex B.
 *
 * Checks, in order: kelStatusNullPtr; kelStatusSize where len is below 1.
 * @{ */
KELS_API KelStatus kelsSignChangeRate_16s(const Kel16s* pSrc, int len, Kel32s* pRes);
KELS_API KelStatus kelsSignChangeRate_32f(const Kel32f* pSrc, int len, Kel32f* pRes);
KELS_API KelStatus kelsSignChangeRate_Count0_16s(const Kel16s* pSrc, int len, Kel32s* pRes);
KELS_API KelStatus kelsSignChangeRate_Count0_32f(const Kel32f* pSrc, int len, Kel32f* pRes);
KELS_API KelStatus kelsSignChangeRateXor_32f(const Kel32f* pSrc, int len, Kel32s* pRes);
/** @} */

/** @name Copy with padding
 * Copies lenSrc elements and clears the other lenDst - lenSrc elements of pDst, as a transform of a fixed length wants
 * it.  pDst may be pSrc.
 *
 * Checks, in order: kelStatusNullPtr; kelStatusSize where lenSrc or lenDst is below 1, or lenDst is below lenSrc.
 * @{ */
KELS_API KelStatus kelsCopyWithPadding_16s(const Kel16s* pSrc, int lenSrc, Kel16s* pDst, int lenDst);
KELS_API KelStatus kelsCopyWithPadding_32f(const Kel32f* pSrc, int lenSrc, Kel32f* pDst, int lenDst);
/** @} */

#ifdef __cplusplus
}
#endif

/** @} */

#endif
