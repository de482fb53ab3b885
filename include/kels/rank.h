/* After the scores: the N-th largest of them, floored language-model scores, normalisation into a range, the unit curve;
 * and two kernel functions of windows and interpolation.
 *
 * All: a null pointer gives -8, then a len below 1 gives -6; further checks follow where they are named.  Source and
 * destination may be the same array.
 */
#ifndef KELS_RANK_H
#define KELS_RANK_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* *res = the element at index N of src sorted in descending order: N = 0 gives the maximum, N = len - 1 the minimum.  An
 * N outside 0..len-1 gives -5.  src stays as it is.  The time is proportional to len whatever the elements are: they
 * are counted by their highest differing bits, and only those in the bin that holds the N-th are looked at again (radix
 * selection; D. Knuth, The Art of Computer Programming 3, 5.2.5).  +0 stands above -0, and NaN beyond the infinity of its
 * sign.
 *
 * Memory: scratch of len elements, in the 32s form 4 * len; on the stack up to 4 KiB.  -9 when there is none.
 */
KELS_API KelStatus kelsNthMaxElement_32f(const Kel32f* src, int len, int N, Kel32f* res);
KELS_API KelStatus kelsNthMaxElement_64f(const Kel64f* src, int len, int N, Kel64f* res);
KELS_API KelStatus kelsNthMaxElement_32s(const Kel32s* src, int len, int N, Kel32s* res);

/* dst[i] = (src[i] > val ? src[i] : val) * mul + add; so an element that is not a number counts as val.  LMThreshold is
 * the same function with the scalars first.  The 16-bit form computes with 32-bit integers and keeps the low 32 bits.
 */
KELS_API KelStatus kelsScaleLM_32f(const Kel32f* src, Kel32f* dst, int len, Kel32f val, Kel32f mul, Kel32f add);
KELS_API KelStatus kelsLMThreshold_32f(Kel32f val, Kel32f mul, Kel32f add, const Kel32f* src, Kel32f* dst, int len);
KELS_API KelStatus kelsScaleLM_16s32s(const Kel16s* src, Kel32s* dst, int len, Kel16s val, Kel16s mul, Kel32s add);

/* Normalisation into a range.  With mn and mx the smallest and the largest element (MinMax forms: valMin and valMax) and
 * d = mx - mn, the span from lo = mn + lowCut * d to hi = mn + highCut * d is mapped onto 0..range, and what lies
 * outside goes to its ends:
 *
 *     dst[i] = max(min(src[i], hi) - lo, 0) * range / (highCut * d - lowCut * d)
 *
 * in single precision.  An element that is not a number counts as hi.  Integer results are rounded to the nearest, ties
 * to even, whatever the caller's rounding mode, and saturated.
 *
 * Checks after the length: 0 <= lowCut < highCut <= 1 and range >= 0 must hold, in the MinMax forms valMin <= valMax too,
 * or -5 results; so it does when src holds nothing but NaN, or begins with one.  mn equal to mx: every dst[i] is 0 and
 * the warning 4 is returned.
 */
KELS_API KelStatus kelsNormalizeInRange_32f(const Kel32f* src, Kel32f* dst, int len, Kel32f lowCut, Kel32f highCut,
                                            Kel32f range);
KELS_API KelStatus kelsNormalizeInRange_32f_I(Kel32f* srcDst, int len, Kel32f lowCut, Kel32f highCut, Kel32f range);
KELS_API KelStatus kelsNormalizeInRange_16s(const Kel16s* src, Kel16s* dst, int len, Kel32f lowCut, Kel32f highCut,
                                            Kel32f range);
KELS_API KelStatus kelsNormalizeInRange_16s_I(Kel16s* srcDst, int len, Kel32f lowCut, Kel32f highCut, Kel32f range);
KELS_API KelStatus kelsNormalizeInRange_16s8u(const Kel16s* src, Kel8u* dst, int len, Kel32f lowCut, Kel32f highCut,
                                              Kel32f range);
KELS_API KelStatus kelsNormalizeInRange_32f16s(const Kel32f* src, Kel16s* dst, int len, Kel32f lowCut, Kel32f highCut,
                                               Kel32f range);
KELS_API KelStatus kelsNormalizeInRange_32f8u(const Kel32f* src, Kel8u* dst, int len, Kel32f lowCut, Kel32f highCut,
                                              Kel32f range);
KELS_API KelStatus kelsNormalizeInRangeMinMax_32f(const Kel32f* src, Kel32f* dst, int len, Kel32f valMin, Kel32f valMax,
                                                  Kel32f lowCut, Kel32f highCut, Kel32f range);
KELS_API KelStatus kelsNormalizeInRangeMinMax_32f_I(Kel32f* srcDst, int len, Kel32f valMin, Kel32f valMax,
                                                    Kel32f lowCut, Kel32f highCut, Kel32f range);
KELS_API KelStatus kelsNormalizeInRangeMinMax_16s(const Kel16s* src, Kel16s* dst, int len, Kel16s valMin, Kel16s valMax,
                                                  Kel32f lowCut, Kel32f highCut, Kel32f range);
KELS_API KelStatus kelsNormalizeInRangeMinMax_16s_I(Kel16s* srcDst, int len, Kel16s valMin, Kel16s valMax,
                                                    Kel32f lowCut, Kel32f highCut, Kel32f range);
KELS_API KelStatus kelsNormalizeInRangeMinMax_16s8u(const Kel16s* src, Kel8u* dst, int len, Kel16s valMin,
                                                    Kel16s valMax, Kel32f lowCut, Kel32f highCut, Kel32f range);
KELS_API KelStatus kelsNormalizeInRangeMinMax_32f16s(const Kel32f* src, Kel16s* dst, int len, Kel32f valMin,
                                                     Kel32f valMax, Kel32f lowCut, Kel32f highCut, Kel32f range);
KELS_API KelStatus kelsNormalizeInRangeMinMax_32f8u(const Kel32f* src, Kel8u* dst, int len, Kel32f valMin,
                                                    Kel32f valMax, Kel32f lowCut, Kel32f highCut, Kel32f range);

/* Unit curve: 0 below 0 and for NaN, x^2 up to 1, 2 - (2 - x)^2 up to 2, and 2 beyond; smooth, with the value 1 at 1.
 * In the 16-bit forms elements and results have fracBits fraction bits; the exact result is scaled by 2^-scaleFactor,
 * rounded half to even and saturated.  A fracBits outside 0..14 gives zeros and the status 0.
 */
KELS_API KelStatus kelsUnitCurve_32f(const Kel32f* src, Kel32f* dst, int len);
KELS_API KelStatus kelsUnitCurve_32f_I(Kel32f* srcDst, int len);
KELS_API KelStatus kelsUnitCurve_16s_Sfs(const Kel16s* src, Kel16s* dst, int fracBits, int len, int scaleFactor);
KELS_API KelStatus kelsUnitCurve_16s_ISfs(Kel16s* srcDst, int fracBits, int len, int scaleFactor);

/* dst[i] = sin(x) / x, x = src[i] in radians; exactly 1 where x is 0 or NaN.  32f: the sine is rounded to float and
 * divided in single precision, within 1.5 units in the last place over the whole range.  64f and 32f64f: in double
 * precision, within 2.5 units.  The caller's rounding mode has no influence.
 */
KELS_API KelStatus kelsSinC_32f(const Kel32f* src, Kel32f* dst, int len);
KELS_API KelStatus kelsSinC_32f_I(Kel32f* srcDst, int len);
KELS_API KelStatus kelsSinC_64f(const Kel64f* src, Kel64f* dst, int len);
KELS_API KelStatus kelsSinC_64f_I(Kel64f* srcDst, int len);
KELS_API KelStatus kelsSinC_32f64f(const Kel32f* src, Kel64f* dst, int len);

/* dst[i] = exp(-(x * x)), x = src[i].  The square is rounded to the type of the destination (so that of 32f64f is exact);
 * the exponential of that square is within 1.1 units in the last place, subnormal results included.  0 for large |x|, NaN
 * for NaN.  The caller's rounding mode has no influence.
 */
KELS_API KelStatus kelsExpNegSqr_32f(const Kel32f* src, Kel32f* dst, int len);
KELS_API KelStatus kelsExpNegSqr_32f_I(Kel32f* srcDst, int len);
KELS_API KelStatus kelsExpNegSqr_64f(const Kel64f* src, Kel64f* dst, int len);
KELS_API KelStatus kelsExpNegSqr_64f_I(Kel64f* srcDst, int len);
KELS_API KelStatus kelsExpNegSqr_32f64f(const Kel32f* src, Kel64f* dst, int len);

#ifdef __cplusplus
}
#endif

#endif
