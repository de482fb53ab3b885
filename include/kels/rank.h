/** @defgroup rank Ranks, ranges and curves of scores
 *
 * What a decoder does with scores: picks the N-th largest, floors and scales those of a language model, maps them into
 * a range; and two kernel functions of windows and interpolation.
 *
 * @code{.c}
 * // Keep the three best of five scores: the threshold is the element of rank 2.
 * const Kel32f scores[5] = {-40, -12, -55, -20, -31};
 * Kel32f threshold, shown[5];
 * kelsNthMaxElement_32f(scores, 5, 2, &threshold);
 * kelsNormalizeInRange_32f(scores, shown, 5, 0, 1, 100);
 * printf("%g %g\n", threshold, shown[1]);  // -31 100
 * @endcode
 *
 * ## Shapes and units
 * All arrays have `len` elements. Source and destination may be the same array. Where they overlap in another way, the
 * forms from floats to floats of NormalizeInRange and NormalizeInRangeMinMax and those of one type of SinC and
 * ExpNegSqr give what a loop from the first element on gives; the other functions take no such arrays. The caller's
 * rounding mode has no influence on integer results and on the kernel functions.
 *
 * ## Checks, in order
 * - kelStatusNullPtr: a pointer is null.
 * - kelStatusSize: len is below 1.
 * - then what a group below names.
 *
 * ## Source
 * Radix selection: D. Knuth, "The Art of Computer Programming" 3, section 5.2.5.
 *
 * Definitions: src/match/rank.cpp; of the kernel functions, src/resample/kernel_functions.cpp.
 * @{
 */
#ifndef KELS_RANK_H
#define KELS_RANK_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name The N-th largest element
 * *res is the element at index N of src sorted in descending order: N = 0 gives the maximum, N = len - 1 the minimum.
 * src stays as it is. The time is proportional to len, whatever the elements are. +0 stands above -0, and NaN beyond
 * the infinity of its sign.
 *
 * Scratch memory of len elements, in the 32s form of 4 * len, is taken from the stack up to 4 KiB.
 *
 * Further checks: kelStatusBadArg for an N outside 0..len-1, then kelStatusNoMemory.
 * @{ */
KELS_API KelStatus kelsNthMaxElement_32f(const Kel32f* src, int len, int N, Kel32f* res);
KELS_API KelStatus kelsNthMaxElement_64f(const Kel64f* src, int len, int N, Kel64f* res);
KELS_API KelStatus kelsNthMaxElement_32s(const Kel32s* src, int len, int N, Kel32s* res);
/** @} */

/** @name Language-model scores
 * dst[i] = (src[i] > val ? src[i] : val) * mul + add. So an element that is not a number counts as val.
 *
 * kelsLMThreshold_32f is the same function with the scalars first. The 16-bit form computes with 32-bit integers and
 * keeps the low 32 bits.
 * @{ */
KELS_API KelStatus kelsScaleLM_32f(const Kel32f* src, Kel32f* dst, int len, Kel32f val, Kel32f mul, Kel32f add);
KELS_API KelStatus kelsLMThreshold_32f(Kel32f val, Kel32f mul, Kel32f add, const Kel32f* src, Kel32f* dst, int len);
KELS_API KelStatus kelsScaleLM_16s32s(const Kel16s* src, Kel32s* dst, int len, Kel16s val, Kel16s mul, Kel32s add);
/** @} */

/** @name Normalisation into a range
 * With mn and mx the smallest and the largest element (in the MinMax forms valMin and valMax) and d = mx - mn, the span
 * from lo = mn + lowCut * d to hi = mn + highCut * d is mapped onto 0..range. What lies outside goes to its ends:
 *
 *     dst[i] = max(min(src[i], hi) - lo, 0) * range / (highCut * d - lowCut * d)
 *
 * in single precision. An element that is not a number counts as hi. Integer results are rounded to the nearest, ties
 * to even, and saturated.
 *
 * Where mn equals mx, every dst[i] is 0 and the warning kelStatusNoOperation is returned.
 *
 * Further checks: kelStatusBadArg unless 0 <= lowCut < highCut <= 1 and range >= 0; then kelStatusBadArg unless mn <=
 * mx, which fails in the MinMax forms for valMin above valMax, and in the others when src begins with NaN.
 * @{ */
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
/** @} */

/** @name The unit curve
 * 0 below 0 and for NaN, x^2 up to 1, 2 - (2 - x)^2 up to 2, and 2 beyond. It is smooth, with the value 1 at 1.
 *
 * In the 16-bit forms elements and results have fracBits fraction bits. The exact result is scaled by 2^-scaleFactor,
 * rounded half to even and saturated. A fracBits outside 0..14 gives zeros and kelStatusOk.
 * @{ */
KELS_API KelStatus kelsUnitCurve_32f(const Kel32f* src, Kel32f* dst, int len);
KELS_API KelStatus kelsUnitCurve_32f_I(Kel32f* srcDst, int len);
KELS_API KelStatus kelsUnitCurve_16s_Sfs(const Kel16s* src, Kel16s* dst, int fracBits, int len, int scaleFactor);
KELS_API KelStatus kelsUnitCurve_16s_ISfs(Kel16s* srcDst, int fracBits, int len, int scaleFactor);
/** @} */

/** @name sin(x) / x
 * dst[i] = sin(x) / x for x = src[i] in radians, and exactly 1 where x is 0 or NaN.
 *
 * 32f: the sine is rounded to float and divided in single precision; the result is within 1.5 units in the last place
 * over the whole range. 64f and 32f64f: in double precision, within 2.5 units.
 * @{ */
KELS_API KelStatus kelsSinC_32f(const Kel32f* src, Kel32f* dst, int len);
KELS_API KelStatus kelsSinC_32f_I(Kel32f* srcDst, int len);
KELS_API KelStatus kelsSinC_64f(const Kel64f* src, Kel64f* dst, int len);
KELS_API KelStatus kelsSinC_64f_I(Kel64f* srcDst, int len);
KELS_API KelStatus kelsSinC_32f64f(const Kel32f* src, Kel64f* dst, int len);
/** @} */

/** @name exp(-x^2)
 * dst[i] = exp(-(x * x)) for x = src[i]. The square is rounded to the type of the destination, so that of 32f64f is
 * exact. The exponential of that square is within 1.1 units in the last place, subnormal results included. It is 0 for
 * large |x| and NaN for NaN.
 * @{ */
KELS_API KelStatus kelsExpNegSqr_32f(const Kel32f* src, Kel32f* dst, int len);
KELS_API KelStatus kelsExpNegSqr_32f_I(Kel32f* srcDst, int len);
KELS_API KelStatus kelsExpNegSqr_64f(const Kel64f* src, Kel64f* dst, int len);
KELS_API KelStatus kelsExpNegSqr_64f_I(Kel64f* srcDst, int len);
KELS_API KelStatus kelsExpNegSqr_32f64f(const Kel32f* src, Kel64f* dst, int len);
/** @} */

#ifdef __cplusplus
}
#endif

/** @} */

#endif
