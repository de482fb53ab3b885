/** @defgroup dtw Dynamic time warping
 *
 * How far two sequences of feature vectors are apart when the time of one may be stretched: the cost of the best
 * monotone alignment.
 *
 * @code{.c}
 * // The same rise and fall at two speeds, one number a row: they align without cost.
 * const Kel32f slow[6] = {0, 0, 1, 1, 2, 0}, fast[4] = {0, 1, 2, 0};
 * Kel32f cost;
 * kelsDTW_L2_32f_D2(slow, 6, fast, 4, 1, 1, &cost, 4, 1e9f);
 * printf("%g\n", cost);  // 0
 * @endcode
 *
 * ## What it computes
 * The longer sequence is the outer one, of N rows, and is walked row by row. The shorter is the inner one, of M rows.
 * Of two equally long sequences the first is the outer one. So exchanging the sequences changes nothing when their
 * lengths differ, but may when they are equal.
 *
 * d(i, j) is the Euclidean distance of outer row i and inner row j. Every outer row is used once. From one outer row to
 * the next the inner index stays, advances by one or advances by two:
 *
 *     D(0, j) = d(0, j)
 *     D(i, j) = d(i, j) + min(D(i-1, j), D(i-1, j-1), D(i-1, j-2))
 *
 * over the predecessors that the search has kept. Steps have no weights, and the result is not divided by a length. It
 * is the smallest D(N-1, j): both ends are open over a range of inner indices.
 *
 * **Band.** With t = min(delta, M - 1), outer row i reaches the inner indices
 *
 *     max(0, 2*i - (t + 2*N - M + 1)) .. min(t + 2*i, M - 1)
 *
 * A path thus starts in 0..t and ends in max(0, M - 3 - t)..M - 1. A negative delta leaves no path.
 *
 * **Beam.** With m the smallest cost of a row, the span of that row is cut back from the upper end, then from the lower
 * one, while the cost at that end exceeds (m + 1.1920929e-7) + beam. A negative beam counts as 0. Cells inside the span
 * stay, whatever they cost. The next row begins where the span begins, ends two indices behind it at most, and keeps to
 * the band. A beam is a heuristic: what it cuts off may have been the start of the best path.
 *
 * **No path.** The result is 3.4028235e38, with the status kelStatusOk, when no path remains: with a negative delta, or
 * rows at infinite distance. A distance that overflows or is not a number closes its cell like an infinite one.
 *
 * ## Shapes and units
 * The sequences have height1 and height2 rows of `width` elements. D2: each is one array, and both have the same row
 * step srcStep, in elements. D2L: each is an array of row pointers.
 *
 * Integer forms take their elements as the floats of the same value. `beam` is a cost in the same unit, not scaled. The
 * result is stored times 2^-scaleFactor, rounded half to even and saturated: 2147483647 where no path remains, unless a
 * large scaleFactor brings 3.4028235e38 into range.
 *
 * ## Ownership
 * Small problems need no memory but the stack: up to 512 floats of costs, of which there are 8 * (ceil((M + 8) / 4) +
 * ceil((N + 3) / 4)), and up to 4096 floats for a rearranged copy of the inner sequence, which takes less than (M + 48)
 * * width. Larger ones are allocated and released by the call. The integer forms first allocate a float copy of each
 * sequence; when memory runs out at the second copy, the first is not released.
 *
 * ## Accuracy
 * Distances and costs are formed in single precision. A distance is wrong by less than width / 2 + 3 units of 2^-24 of
 * itself, and each row of the path adds one unit to its cost.
 *
 * ## Checks, in order
 * - kelStatusNullPtr: a pointer is null.
 * - kelStatusSize: a height or the width is below 1.
 * - kelStatusSize: in D2 forms, srcStep is below width. (It is not kelStatusStep.)
 * - kelStatusNoMemory: there is no memory on the way.
 *
 * *pDist is written last, and only with kelStatusOk.
 *
 * ## Source
 * The band is that of H. Sakoe, S. Chiba, "Dynamic programming algorithm optimization for spoken word recognition",
 * IEEE Trans. ASSP 26 (1978) 43-49. The steps are those of F. Itakura, "Minimum prediction residual principle applied
 * to speech recognition", IEEE Trans. ASSP 23 (1975) 67-72, without the rule against staying twice in a row.
 *
 * Definitions: src/match/dtw.cpp.
 * @{
 */
#ifndef KELS_DTW_H
#define KELS_DTW_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Floats
 * @{ */
KELS_API KelStatus kelsDTW_L2_32f_D2L(const Kel32f** ppSrc1, int height1, const Kel32f** ppSrc2, int height2, int width,
                                      Kel32f* pDist, int delta, Kel32f beam);
KELS_API KelStatus kelsDTW_L2_32f_D2(const Kel32f* pSrc1, int height1, const Kel32f* pSrc2, int height2, int width,
                                     int srcStep, Kel32f* pDist, int delta, Kel32f beam);
/** @} */

/** @name 8-bit and 16-bit integers, with a scaled result
 * @{ */
KELS_API KelStatus kelsDTW_L2_8u32s_D2Sfs(const Kel8u* pSrc1, int height1, const Kel8u* pSrc2, int height2, int width,
                                          int srcStep, Kel32s* pDist, int delta, Kel32s beam, int scaleFactor);
KELS_API KelStatus kelsDTW_L2_8u32s_D2LSfs(const Kel8u** ppSrc1, int height1, const Kel8u** ppSrc2, int height2,
                                           int width, Kel32s* pDist, int delta, Kel32s beam, int scaleFactor);
KELS_API KelStatus kelsDTW_L2Low_16s32s_D2Sfs(const Kel16s* pSrc1, int height1, const Kel16s* pSrc2, int height2,
                                              int width, int srcStep, Kel32s* pDist, int delta, Kel32s beam,
                                              int scaleFactor);
KELS_API KelStatus kelsDTW_L2Low_16s32s_D2LSfs(const Kel16s** ppSrc1, int height1, const Kel16s** ppSrc2, int height2,
                                               int width, Kel32s* pDist, int delta, Kel32s beam, int scaleFactor);
/** @} */

#ifdef __cplusplus
}
#endif

/** @} */

#endif
