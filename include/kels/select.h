/** @defgroup select Gaussian selection
 *
 * Which Gaussians of a large model are worth scoring for a frame.
 *
 * @code{.c}
 * // 16 Gaussians, two clusters: Gaussians 0, 1, 2 are worth scoring in cluster 0, and 2, 9, 15 in cluster 1.
 * Kel8u shortlists[2][2] = {{0}};
 * Kel8u* rows[2] = {shortlists[0], shortlists[1]};
 * const Kel32s gaussians[6] = {0, 1, 2, 2, 9, 15};
 * kelsFillShortlist_Row_1u(gaussians, 16, 3, rows, 2, 2, 0);
 *
 * // A frame that lies between both clusters.
 * const Kel32s clusters[2] = {0, 1};
 * const Kel8u* lists[2] = {shortlists[0], shortlists[1]};
 * Kel8u signs[2];
 * kelsBuildSignTable_8u1u(clusters, 2, lists, 2, 2, 0, signs, 1, 16);
 * printf("%02x %02x\n", signs[0], signs[1]);     // e0 41: bits 0, 1, 2, 9 and 15
 * @endcode
 *
 * ## What it computes
 * A frame is first assigned to a few clusters. Each cluster has a shortlist: a row of bits with a 1 for every Gaussian
 * worth scoring there. The union of the shortlists of a frame's clusters is the frame's row of the sign table. The
 * LogGaussMixture_Select functions of kels/mixture.h take such a row.
 *
 * ## Shapes and units
 * Rows of bits are packed eight to a byte, the most significant bit first: bit p of a row is byte p >> 3 under the mask
 * 1 << (7 - (p & 7)). Rows of shortlists are given by row pointers. Each has `step` bytes, of which the first `offset`
 * bits are passed over. Only bytes that hold a bit in use are read or written.
 *
 * pIndices and pClusterIdx hold lists of numbers, one behind the other. All lists have n numbers; in the Var forms list
 * i has pCounts[i]. Every number lies in 0 .. bound - 1.
 *
 * ## Checks, in order
 * - kelStatusNullPtr: a pointer is null. Row pointers are not looked at.
 * - kelStatusSize: an int argument other than offset is below 1, offset is negative, or a count of a Var form is below
 *   1.
 * - kelStatusStep: a row of step bytes does not hold the last bit in use.
 * - kelStatusBadArg: a number of any list lies outside 0 .. bound - 1.
 *
 * Nothing is written before all lists have passed.
 *
 * ## Source
 * E. Bocchieri, "Vector quantization for the efficient computation of continuous density likelihoods", ICASSP 1993.
 * @{
 */
#ifndef KELS_SELECT_H
#define KELS_SELECT_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Shortlists whose lists are rows
 * Toggles, for every number g of list i, bit offset + g of row i. There are `height` lists and rows; step is at least
 * (offset + bound + 7) >> 3.
 *
 * Rows are not cleared first. A number that stands twice in a list cancels itself, and a bit that was set is cleared.
 * @{ */
KELS_API KelStatus kelsFillShortlist_Row_1u(const Kel32s* pIndices, int bound, int n, Kel8u** ppRows, int height,
                                            int step, int offset);
KELS_API KelStatus kelsFillShortlist_RowVar_1u(const Kel32s* pIndices, int bound, const Kel32s* pCounts, Kel8u** ppRows,
                                               int height, int step, int offset);
/** @} */

/** @name Shortlists whose lists are columns
 * The transpose: toggles, for every number g of list c, bit offset + c of row g. There are `width` lists and `bound`
 * rows; step is at least (offset + width + 7) >> 3.
 * @{ */
KELS_API KelStatus kelsFillShortlist_Column_1u(const Kel32s* pIndices, int n, Kel8u** ppRows, int bound, int step,
                                               int offset, int width);
KELS_API KelStatus kelsFillShortlist_ColumnVar_1u(const Kel32s* pIndices, const Kel32s* pCounts, Kel8u** ppRows,
                                                  int bound, int step, int offset, int width);
/** @} */

/** @name Sign tables
 * Bit j < width of row f of pDst is set where bit offset + j of any shortlist row in list f is. There are `height`
 * lists, one for each frame, and `bound` shortlist rows; step is at least (offset + width + 7) >> 3.
 *
 * pDst has height rows of (width + 7) >> 3 bytes, one behind the other. Each begins with its bit 0 and ends with zeros.
 * @{ */
KELS_API KelStatus kelsBuildSignTable_8u1u(const Kel32s* pClusterIdx, int n, const Kel8u** ppShortlist, int bound,
                                           int step, int offset, Kel8u* pDst, int height, int width);
KELS_API KelStatus kelsBuildSignTable_Var_8u1u(const Kel32s* pClusterIdx, const Kel32s* pCounts,
                                               const Kel8u** ppShortlist, int bound, int step, int offset, Kel8u* pDst,
                                               int height, int width);
/** @} */

#ifdef __cplusplus
}
#endif

/** @} */

#endif
