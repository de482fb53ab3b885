/* Cosine transform and liftering: from N log energies of a frame to M weighted cepstra c1 .. cM and, on request, c0.
 *
 *   c[k] = lifter[k] * sum over j = 0 .. N-1 of src[j] * cos(pi * k * (j + 0.5) / N)
 *
 * This is the DCT-II without normalisation (Davis and Mermelstein, IEEE Trans. ASSP 28(4), 1980): for the orthonormal
 * one put sqrt(2 / N) into val.  Output is c1 .. cM in places 0 .. M-1; c0 comes last, in place M.
 *
 * KelDCTLifterState_32f serves float frames, _16s integer frames with 16-bit results; the weights and the cosines are
 * floats in both.  Fields in order: lifterLen (nLifter, or -1 for the Mul forms), lenDCT (N), lenCeps (M), withC0,
 * lifter (M + 1 weights), _16s: work (one frame of results), cosTab (M + 1 rows of N).
 *
 * A state never changes after its construction, but _16s frames go through its work array: one thread at a time for
 * those, any number for _32f.
 */
#ifndef KELS_DCT_H
#define KELS_DCT_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct KelDCTLifterState_32f KelDCTLifterState_32f;
typedef struct KelDCTLifterState_16s KelDCTLifterState_16s;

/* Sine lifter (Juang, Rabiner and Wilpon, IEEE Trans. ASSP 35(7), 1987), L = nLifter:
 *   lifter[k] = (1 + L / 2 * sin(pi * k / L)) * val
 * The C0 forms also produce c0, with the weight val0.  The state belongs to the caller, who ends it with
 * kelsDCTLifterFree_*.
 * Statuses: null ppState (-8); lenDCT, lenCeps or nLifter below 1, lenCeps above lenDCT (-6); out of memory (-9): then
 * *ppState holds null or an unfinished state, which kelsDCTLifterFree_* takes.
 */
KELS_API KelStatus kelsDCTLifterInitAlloc_32f(KelDCTLifterState_32f** ppState, int lenDCT, int lenCeps, int nLifter,
                                              Kel32f val);
KELS_API KelStatus kelsDCTLifterInitAlloc_16s(KelDCTLifterState_16s** ppState, int lenDCT, int lenCeps, int nLifter,
                                              Kel32f val);
KELS_API KelStatus kelsDCTLifterInitAlloc_C0_32f(KelDCTLifterState_32f** ppState, int lenDCT, int lenCeps, int nLifter,
                                                 Kel32f val, Kel32f val0);
KELS_API KelStatus kelsDCTLifterInitAlloc_C0_16s(KelDCTLifterState_16s** ppState, int lenDCT, int lenCeps, int nLifter,
                                                 Kel32f val, Kel32f val0);

/* The caller's weights: pLifter[k - 1] for ck, lenCeps of them.  The MulC0 forms also produce c0, whose weight is that
 * of the last cepstrum, pLifter[lenCeps - 1].
 * Statuses: null ppState or pLifter (-8); lenDCT or lenCeps below 1, lenCeps above lenDCT (-6); out of memory (-9).
 */
KELS_API KelStatus kelsDCTLifterInitAlloc_Mul_32f(KelDCTLifterState_32f** ppState, int lenDCT, const Kel32f* pLifter,
                                                  int lenCeps);
KELS_API KelStatus kelsDCTLifterInitAlloc_Mul_16s(KelDCTLifterState_16s** ppState, int lenDCT, const Kel32f* pLifter,
                                                  int lenCeps);
KELS_API KelStatus kelsDCTLifterInitAlloc_MulC0_32f(KelDCTLifterState_32f** ppState, int lenDCT, const Kel32f* pLifter,
                                                    int lenCeps);
KELS_API KelStatus kelsDCTLifterInitAlloc_MulC0_16s(KelDCTLifterState_16s** ppState, int lenDCT, const Kel32f* pLifter,
                                                    int lenCeps);

/* The MulC0 form with integer weights in the caller's memory: the number of bytes, (4M + 4) * N + 44 * M + 168 on every
 * ABI, and the construction.  pBuffer may have any alignment, is itself the state that kelsDCTLifter_16s_Sfs and
 * _32s16s_Sfs take, and must not move afterwards; it is not passed to kelsDCTLifterFree_16s.
 * Statuses of GetSize: null pSize (-8); lenDCT or lenCeps below 1, lenCeps above lenDCT, lenDCT above 8192 (-6).
 * Statuses of Init: null pBuffer or pLifter (-8); lenDCT or lenCeps below 1, lenCeps above lenDCT (-6).
 */
KELS_API KelStatus kelsDCTLifterGetSize_MulC0_16s(int lenDCT, int lenCeps, int* pSize);
KELS_API KelStatus kelsDCTLifterInit_MulC0_16s(Kel8u* pBuffer, int lenDCT, const Kel32s* pLifter, int lenCeps);

/* Application to one frame of lenDCT values; lenCeps results, or lenCeps + 1 with c0.  Sums are single precision, the
 * order of additions is free.  Integer forms: times 2^-scaleFactor, to the nearest, ties to even, saturated.
 * Statuses: null pointer (-8).
 */
KELS_API KelStatus kelsDCTLifter_32f(const Kel32f* pSrc, Kel32f* pDst, const KelDCTLifterState_32f* pState);
KELS_API KelStatus kelsDCTLifter_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, const KelDCTLifterState_16s* pState,
                                         int scaleFactor);
KELS_API KelStatus kelsDCTLifter_32s16s_Sfs(const Kel32s* pSrc, Kel16s* pDst, const KelDCTLifterState_16s* pState,
                                            int scaleFactor);

/* Releases what the state owns, but not the small block of the state itself (some 30 bytes); kelsFree(pState) may
 * release that too.  The state is not to be applied afterwards.
 * Statuses: null pointer (-8).
 */
KELS_API KelStatus kelsDCTLifterFree_32f(KelDCTLifterState_32f* pState);
KELS_API KelStatus kelsDCTLifterFree_16s(KelDCTLifterState_16s* pState);

#ifdef __cplusplus
}
#endif

#endif
