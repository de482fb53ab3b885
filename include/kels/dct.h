/** @defgroup dct Cosine transform and liftering
 *
 * From the log energies of a frame to weighted cepstra, which is the last step of computing MFCC.
 *
 * @code{.c}
 * KelDCTLifterState_32f* lifter = NULL;
 * float energy[26], cepstra[13];
 * for (int j = 0; j < 26; ++j) energy[j] = cosf(0.1f * (float)j);
 * if (kelsDCTLifterInitAlloc_C0_32f(&lifter, 26, 12, 22, sqrtf(2.0f / 26.0f), 1.0f) == kelStatusOk &&
 *     kelsDCTLifter_32f(energy, cepstra, lifter) == kelStatusOk) {
 *     printf("c1 %.3f, c0 %.3f\n", cepstra[0], cepstra[12]);
 * }
 * kelsDCTLifterFree_32f(lifter);
 * kelsFree(lifter);
 * @endcode
 *
 * ## What it computes
 * With N = lenDCT log energies and M = lenCeps cepstra:
 *
 *     c[k] = lifter[k] * sum over j = 0 .. N-1 of src[j] * cos(pi * k * (j + 0.5) / N)
 *
 * This is the DCT-II without normalisation: for the orthonormal one put sqrt(2 / N) into the weights.
 *
 * ## Shapes and units
 * A frame has N values.  The output is c1 .. cM in places 0 .. M-1; where a form also produces c0 it comes last, in
 * place M.  KelDCTLifterState_32f serves float frames, KelDCTLifterState_16s integer frames with 16-bit results.  The
 * weights and the cosines are floats in both.
 *
 * ## Ownership
 * The InitAlloc functions hand a new state to the caller.  Ending it takes two calls: kelsDCTLifterFree_* releases
 * what the state owns, and kelsFree releases the small block of the state itself.  Without the second call that block,
 * some 30 bytes, is lost.
 *
 * Where a constructor returns kelStatusNoMemory, *ppState holds null or an unfinished state.  Both calls are safe with
 * either.  With any other fault *ppState is as it was before.
 *
 * A state that kelsDCTLifterInit_MulC0_16s builds is the caller's buffer, and neither call takes it.
 *
 * ## Accuracy
 * Sums are single precision in a free order of additions.  Integer results are times 2^-scaleFactor, to the nearest
 * with ties to even, and saturated.
 *
 * ## Checks, in order
 * kelStatusNullPtr, then kelStatusSize, then kelStatusNoMemory; each group below says what its sizes are.
 *
 * ## Threads
 * Any number of threads may apply one KelDCTLifterState_32f at once.  A KelDCTLifterState_16s holds the sums of its
 * frame, so it serves one thread at a time.
 *
 * ## Source
 * S. B. Davis, P. Mermelstein, "Comparison of parametric representations for monosyllabic word recognition in
 * continuously spoken sentences", IEEE Trans. ASSP 28(4), 1980.  The sine lifter: B.-H. Juang, L. R. Rabiner, J. G.
 * Wilpon, "On the use of bandpass liftering in speech recognition", IEEE Trans. ASSP 35(7), 1987.
 * @{
 */
#ifndef KELS_DCT_H
#define KELS_DCT_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct KelDCTLifterState_32f KelDCTLifterState_32f;
typedef struct KelDCTLifterState_16s KelDCTLifterState_16s;

/** @name States with a sine lifter
 * The weights are lifter[k] = (1 + L / 2 * sin(pi * k / L)) * val with L = nLifter.  The C0 forms also produce c0,
 * with the weight val0.
 *
 * Checks, in order:
 * 1. kelStatusNullPtr: ppState is null.
 * 2. kelStatusSize: lenDCT, lenCeps or nLifter is below 1, or lenCeps is above lenDCT.
 * 3. kelStatusNoMemory.
 * @{ */
KELS_API KelStatus kelsDCTLifterInitAlloc_32f(KelDCTLifterState_32f** ppState, int lenDCT, int lenCeps, int nLifter,
                                              Kel32f val);
KELS_API KelStatus kelsDCTLifterInitAlloc_16s(KelDCTLifterState_16s** ppState, int lenDCT, int lenCeps, int nLifter,
                                              Kel32f val);
KELS_API KelStatus kelsDCTLifterInitAlloc_C0_32f(KelDCTLifterState_32f** ppState, int lenDCT, int lenCeps, int nLifter,
                                                 Kel32f val, Kel32f val0);
KELS_API KelStatus kelsDCTLifterInitAlloc_C0_16s(KelDCTLifterState_16s** ppState, int lenDCT, int lenCeps, int nLifter,
                                                 Kel32f val, Kel32f val0);
/** @} */

/** @name States with the caller's weights
 * pLifter holds lenCeps weights: pLifter[k - 1] is that of ck.  The MulC0 forms also produce c0, whose weight is that
 * of the last cepstrum, pLifter[lenCeps - 1].
 *
 * Checks, in order:
 * 1. kelStatusNullPtr: ppState or pLifter is null.
 * 2. kelStatusSize: lenDCT or lenCeps is below 1, or lenCeps is above lenDCT.
 * 3. kelStatusNoMemory.
 * @{ */
KELS_API KelStatus kelsDCTLifterInitAlloc_Mul_32f(KelDCTLifterState_32f** ppState, int lenDCT, const Kel32f* pLifter,
                                                  int lenCeps);
KELS_API KelStatus kelsDCTLifterInitAlloc_Mul_16s(KelDCTLifterState_16s** ppState, int lenDCT, const Kel32f* pLifter,
                                                  int lenCeps);
KELS_API KelStatus kelsDCTLifterInitAlloc_MulC0_32f(KelDCTLifterState_32f** ppState, int lenDCT, const Kel32f* pLifter,
                                                    int lenCeps);
KELS_API KelStatus kelsDCTLifterInitAlloc_MulC0_16s(KelDCTLifterState_16s** ppState, int lenDCT, const Kel32f* pLifter,
                                                    int lenCeps);
/** @} */

/** @name State in the caller's memory
 * The MulC0 form with integer weights.  GetSize tells the number of bytes, (4M + 4) * N + 44 * M + 168 on every ABI,
 * and Init builds the state in them.  pBuffer may have any alignment and must not move afterwards.  It is itself the
 * state that kelsDCTLifter_16s_Sfs and kelsDCTLifter_32s16s_Sfs take.
 *
 * Checks of GetSize, in order:
 * 1. kelStatusNullPtr: pSize is null.
 * 2. kelStatusSize: lenDCT or lenCeps is below 1, lenCeps is above lenDCT, or lenDCT is above 8192.
 *
 * Checks of Init, in order:
 * 1. kelStatusNullPtr: pBuffer or pLifter is null.
 * 2. kelStatusSize: lenDCT or lenCeps is below 1, or lenCeps is above lenDCT.
 * @{ */
KELS_API KelStatus kelsDCTLifterGetSize_MulC0_16s(int lenDCT, int lenCeps, int* pSize);
KELS_API KelStatus kelsDCTLifterInit_MulC0_16s(Kel8u* pBuffer, int lenDCT, const Kel32s* pLifter, int lenCeps);
/** @} */

/** @name Application
 * One frame of lenDCT values gives lenCeps results, or lenCeps + 1 with c0.
 *
 * Check: kelStatusNullPtr.
 * @{ */
KELS_API KelStatus kelsDCTLifter_32f(const Kel32f* pSrc, Kel32f* pDst, const KelDCTLifterState_32f* pState);
KELS_API KelStatus kelsDCTLifter_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, const KelDCTLifterState_16s* pState,
                                         int scaleFactor);
KELS_API KelStatus kelsDCTLifter_32s16s_Sfs(const Kel32s* pSrc, Kel16s* pDst, const KelDCTLifterState_16s* pState,
                                            int scaleFactor);
/** @} */

/** @name Release
 * Releases what the state owns but not the block of the state itself, which takes kelsFree(pState) behind this call.
 * The state is not to be applied any more.
 *
 * Check: kelStatusNullPtr.
 * @{ */
KELS_API KelStatus kelsDCTLifterFree_32f(KelDCTLifterState_32f* pState);
KELS_API KelStatus kelsDCTLifterFree_16s(KelDCTLifterState_16s* pState);
/** @} */

#ifdef __cplusplus
}
#endif

/** @} */

#endif
