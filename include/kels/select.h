/* Gaussian selection: which Gaussians of a large model are worth scoring for a frame.
 *
 * A frame is first assigned to a few clusters.  Each cluster has a shortlist, a row of bits with a 1 for every Gaussian
 * worth scoring there; the union of the shortlists of a frame's clusters is the frame's row of the sign table, which
 * the LogGaussMixture_Select functions of kels/mixture.h take.
 *
 * Rows of bits are packed eight to a byte, the most significant bit first: bit p of a row is byte p >> 3 under the mask
 * 1 << (7 - (p & 7)).  Rows of shortlists are given by row pointers; each has `step` bytes, of which `offset` bits are
 * passed over at its beginning.  Only bytes that hold a bit in use are read or written.
 *
 * Lists.  pIndices and pClusterIdx hold one list of numbers behind the other.  All lists have n numbers, or list i has
 * pCounts[i] in the Var forms.  Every number lies in 0 .. bound - 1.
 *
 * Checks of all six functions, in this order: null pointers (-8); an int argument but offset below 1, a negative offset
 * or, in the Var forms, a count below 1 (-6); a step too small for the last bit in use (-37); a number in any of the
 * lists outside 0 .. bound - 1 (-5).  Nothing is written before all lists have passed.
 *
 * Source: Bocchieri, "Vector quantization for the efficient computation of continuous density likelihoods", ICASSP
 * 1993.
 */
#ifndef KELS_SELECT_H
#define KELS_SELECT_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- shortlists -------------------------------------------------------------------------------------------------- */

/* Toggles, for every number g of list i, bit offset + g of row i: lists are rows.  There are `height` lists and rows;
 * step is at least (offset + bound + 7) >> 3.  Rows are not cleared first: a number that stands twice in a list cancels
 * itself, and a bit that was set is cleared.
 */
KELS_API KelStatus kelsFillShortlist_Row_1u(const Kel32s* pIndices, int bound, int n, Kel8u** ppRows, int height,
                                            int step, int offset);
KELS_API KelStatus kelsFillShortlist_RowVar_1u(const Kel32s* pIndices, int bound, const Kel32s* pCounts, Kel8u** ppRows,
                                               int height, int step, int offset);

/* The transpose: toggles, for every number g of list c, bit offset + c of row g.  There are `width` lists and `bound`
 * rows; step is at least (offset + width + 7) >> 3.
 */
KELS_API KelStatus kelsFillShortlist_Column_1u(const Kel32s* pIndices, int n, Kel8u** ppRows, int bound, int step,
                                               int offset, int width);
KELS_API KelStatus kelsFillShortlist_ColumnVar_1u(const Kel32s* pIndices, const Kel32s* pCounts, Kel8u** ppRows,
                                                  int bound, int step, int offset, int width);

/* ---- sign tables ------------------------------------------------------------------------------------------------- */

/* Bit j < width of row f of pDst = bit offset + j of any of the shortlist rows in list f.  There are `height` lists,
 * one for each frame, and `bound` shortlist rows; step is at least (offset + width + 7) >> 3.  pDst has height rows of
 * (width + 7) >> 3 bytes, one behind the other, each of which begins with its bit 0 and ends with zeros.
 */
KELS_API KelStatus kelsBuildSignTable_8u1u(const Kel32s* pClusterIdx, int n, const Kel8u** ppShortlist, int bound,
                                           int step, int offset, Kel8u* pDst, int height, int width);
KELS_API KelStatus kelsBuildSignTable_Var_8u1u(const Kel32s* pClusterIdx, const Kel32s* pCounts,
                                               const Kel8u** ppShortlist, int bound, int step, int offset, Kel8u* pDst,
                                               int height, int width);

#ifdef __cplusplus
}
#endif

#endif
