/* Dynamic time warping: the cost of the best monotone alignment of two sequences of feature vectors.
 *
 * Sequences.  height1 and height2 rows of `width` elements: one array each with a common row step (D2), or an array of
 * row pointers each (D2L).  The longer sequence is the outer one, of N rows, walked row by row; the shorter is the inner
 * one, of M rows.  Of two equally long sequences the first is the outer one.  So exchanging the sequences changes
 * nothing when their lengths differ, but may when they are equal.
 *
 * Cost.  d(i, j) is the Euclidean distance of outer row i and inner row j.  Every outer row is used once; meanwhile the
 * inner index stays, advances by one or advances by two:
 *
 *     D(0, j) = d(0, j)
 *     D(i, j) = d(i, j) + min(D(i-1, j), D(i-1, j-1), D(i-1, j-2))
 *
 * over predecessors that the search has kept.  Steps have no weights and the result is not divided by a length: it is
 * the smallest D(N-1, j).  Both ends are open over a range of inner indices.
 *
 * Band.  With t = min(delta, M - 1), outer row i reaches the inner indices
 *
 *     max(0, 2*i - (t + 2*N - M + 1)) .. min(t + 2*i, M - 1)
 *
 * so a path starts in 0..t and ends in max(0, M - 3 - t)..M - 1.  A negative delta leaves no path.
 *
 * Beam.  With m the smallest cost of a row, its span is cut back from the upper end, then from the lower one, while the
 * cost at that end exceeds (m + 1.1920929e-7) + beam; a negative beam counts as 0.  Cells inside the span stay, whatever
 * they cost.  The next row begins where the span begins, ends two indices behind it at most, and keeps to the band.  A
 * beam is a heuristic: what it cuts off may have been the start of the best path.
 *
 * Result.  3.4028235e38, still with status 0, when no path remains: a negative delta, or rows at infinite distance.  A
 * distance that overflows or is not a number closes its cell like an infinite one.
 *
 * Integer forms.  The elements become floats as they are, `beam` is a cost in the same unit (not scaled), and the float
 * result is stored times 2^-scaleFactor, rounded half to even and saturated: 2147483647 where no path remains, unless a
 * large scaleFactor brings 3.4028235e38 into range.
 *
 * Memory.  Costs take 8 * (ceil((M + 8) / 4) + ceil((N + 3) / 4)) floats, on the stack up to 512 of them; a rearranged
 * copy of the inner sequence takes less than (M + 48) * width floats, on the stack up to 4096.  Larger ones are
 * allocated and released by the call.  The integer forms first allocate a float copy of each sequence; when memory runs
 * out at the second copy, the first is not released.
 *
 * Checks, in this order: a null pointer -8; a height or width below 1 -6; D2: srcStep below width -6 (not -37); then, on
 * the way, -9 when memory is out.  *pDist is written last and only with status 0.
 *
 * Sources: H. Sakoe, S. Chiba, Dynamic programming algorithm optimization for spoken word recognition, IEEE Trans. ASSP
 * 26 (1978) 43-49, for the band; the steps are those of F. Itakura, Minimum prediction residual principle applied to
 * speech recognition, IEEE Trans. ASSP 23 (1975) 67-72, without the rule against staying twice in a row.
 */
#ifndef KELS_DTW_H
#define KELS_DTW_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* float */
KELS_API KelStatus kelsDTW_L2_32f_D2L(const Kel32f** ppSrc1, int height1, const Kel32f** ppSrc2, int height2, int width,
                                      Kel32f* pDist, int delta, Kel32f beam);
KELS_API KelStatus kelsDTW_L2_32f_D2(const Kel32f* pSrc1, int height1, const Kel32f* pSrc2, int height2, int width,
                                     int srcStep, Kel32f* pDist, int delta, Kel32f beam);

/* 8-bit and 16-bit integers, scaled result */
KELS_API KelStatus kelsDTW_L2_8u32s_D2Sfs(const Kel8u* pSrc1, int height1, const Kel8u* pSrc2, int height2, int width,
                                          int srcStep, Kel32s* pDist, int delta, Kel32s beam, int scaleFactor);
KELS_API KelStatus kelsDTW_L2_8u32s_D2LSfs(const Kel8u** ppSrc1, int height1, const Kel8u** ppSrc2, int height2,
                                           int width, Kel32s* pDist, int delta, Kel32s beam, int scaleFactor);
KELS_API KelStatus kelsDTW_L2Low_16s32s_D2Sfs(const Kel16s* pSrc1, int height1, const Kel16s* pSrc2, int height2,
                                              int width, int srcStep, Kel32s* pDist, int delta, Kel32s beam,
                                              int scaleFactor);
KELS_API KelStatus kelsDTW_L2Low_16s32s_D2LSfs(const Kel16s** ppSrc1, int height1, const Kel16s** ppSrc2, int height2,
                                               int width, Kel32s* pDist, int delta, Kel32s beam, int scaleFactor);

#ifdef __cplusplus
}
#endif

#endif
