/* Frame conditioning: small operations of a speech front-end on the samples or energies of a frame.  Nothing is kept
 * between calls. */
#ifndef KELS_FRAME_H
#define KELS_FRAME_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Offset compensation: the first-order high-pass filter y[n] = x[n] - x[n-1] + val * y[n-1], which removes the DC
 * offset (notch at 0 Hz; ETSI ES 201 108 uses val = 0.999).
 *
 * State is the caller's: *pSrcLast is the last input of the frame before and becomes that of this frame, x[len-1];
 * dstLast is the last output of the frame before.  Both are 0 at the start of a signal.  pDst may be pSrc.
 *
 * 32f: y[0] = val * dstLast + x[0] - *pSrcLast, then y[n] = val * y[n-1] + (x[n] - x[n-1]), in single precision, from
 * left to right, no operations fused.
 *
 * 16s: the same sums in single precision, to nearest.  y[0] is saturated or truncated toward zero; every later output
 * is saturated or rounded to the nearest, halves away from zero (0.5 is added in single precision), so the first output
 * of a frame is rounded differently.  The recursion goes on from the stored, saturated output.
 *
 * kelsCompensateOffset_16s, but not its _I form, takes val in Q12, rounded to nearest, for n >= 1 where -1 <= val <= 1:
 * the exact val * y[n-1] + x[n] - x[n-1], halves away from zero, saturated.  From the same y[n-1] it is at most one off
 * the _I form where val is a multiple of 1/4096; elsewhere the rounding of val adds up to |y[n-1]| / 8192.
 *
 * Q15: val is valQ15 / 32768; all outputs are exact, truncated toward zero and saturated.
 *
 * Results are the same in every rounding mode (16-bit forms) and on every target.
 *
 * Statuses, in order: -8 a null pointer; -6 len < 1 (Q15 forms: or len > 65535); -5 valQ15 < 0. */
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

/* Subtracts the mean of the samples, rounded to the nearest integer with halves away from zero, and saturates.  Needs
 * no memory.  Statuses, in order: -6 len < 1; -8 a null pointer (the size comes first here). */
KELS_API KelStatus kelsZeroMean_16s(Kel16s* pSrcDst, int len);

/* Normalisation of log energies: `height` values, one column of a feature array, at pSrcDst[k * step].
 *
 * With emax the largest value (RT forms: the caller's maxE, a running maximum) and floor = emax - 0.230259 * silFloor
 * (silFloor in decibels; the factor turns them into natural logarithms), each value e becomes
 *
 *   32f   1 - (emax - max(e, floor)) * enScale
 *   16s   valShift - (emax - max(e, floor)) * enScale, truncated toward zero and saturated
 *
 * in single precision; the 16-bit results are the same in every rounding mode.  Values that are not numbers are no
 * maximum and stay what they are.
 *
 * Statuses, in order: -8 a null pointer; -6 step or height < 1. */
KELS_API KelStatus kelsNormEnergy_32f(Kel32f* pSrcDst, int step, int height, Kel32f silFloor, Kel32f enScale);
KELS_API KelStatus kelsNormEnergy_16s(Kel16s* pSrcDst, int step, int height, Kel16s silFloor, Kel16s valShift,
                                      Kel32f enScale);
KELS_API KelStatus kelsNormEnergy_RT_32f(Kel32f* pSrcDst, int step, int height, Kel32f silFloor, Kel32f maxE,
                                         Kel32f enScale);
KELS_API KelStatus kelsNormEnergy_RT_16s(Kel16s* pSrcDst, int step, int height, Kel16s silFloor, Kel16s maxE,
                                         Kel16s valShift, Kel32f enScale);

/* Sign changes between neighbouring samples, a measure of zero crossings.  One result at pRes; len = 1 gives 0.
 *
 *   SignChangeRate_16s   pairs whose product is negative; a zero never counts
 *   SignChangeRate_32f   pairs whose product, in single precision, is not >= 0: NaN counts, an underflow does not
 *   Count0_16s, _32f     half the sum of |sgn(x[n+1]) - sgn(x[n])|: a change of sign counts one, a step to or from
 *                        zero one half; the integer form rounds the total down; sgn of NaN is 0
 *   Xor_32f              pairs whose sign bits differ, those of zeros and NaN included (the zero crossings of the
 *                        voice activity detector of ITU-T G.729 Annex B)
 *
 * Statuses, in order: -8 a null pointer; -6 len < 1. */
KELS_API KelStatus kelsSignChangeRate_16s(const Kel16s* pSrc, int len, Kel32s* pRes);
KELS_API KelStatus kelsSignChangeRate_32f(const Kel32f* pSrc, int len, Kel32f* pRes);
KELS_API KelStatus kelsSignChangeRate_Count0_16s(const Kel16s* pSrc, int len, Kel32s* pRes);
KELS_API KelStatus kelsSignChangeRate_Count0_32f(const Kel32f* pSrc, int len, Kel32f* pRes);
KELS_API KelStatus kelsSignChangeRateXor_32f(const Kel32f* pSrc, int len, Kel32s* pRes);

/* Copies lenSrc elements and clears the other lenDst - lenSrc of pDst.  pDst may be pSrc.
 * Statuses, in order: -8 a null pointer; -6 lenSrc or lenDst < 1, or lenDst < lenSrc. */
KELS_API KelStatus kelsCopyWithPadding_16s(const Kel16s* pSrc, int lenSrc, Kel16s* pDst, int lenDst);
KELS_API KelStatus kelsCopyWithPadding_32f(const Kel32f* pSrc, int lenSrc, Kel32f* pDst, int lenDst);

#ifdef __cplusplus
}
#endif

#endif
