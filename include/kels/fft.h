/* Real FFT of power-of-two lengths, products of packed spectra, autocorrelation.
 *
 * A specification holds what a transform of N = 2^order values needs; it is built once, read by any number of
 * transforms, and freed.
 *
 *   forward  X[k] = c * sum over n of x[n] e^(-2 pi i k n / N),  k = 0 .. N/2
 *   inverse  x[n] = c * sum over k of X[k] e^(+2 pi i k n / N),  k = 0 .. N-1 with X[N-k] = conj X[k]
 *
 * c is 1 unless the flag of the specification sets a factor for the direction:
 *
 *   kelFftDivFwdByN   forward 1/N                kelFftDivInvByN   inverse 1/N
 *   kelFftDivBySqrtN  1/sqrt(N) both ways        kelFftNoDiv       no factor: forward, then inverse gives N x
 *
 * Spectra X[k] = R[k] + i I[k] come in two orders:
 *
 *   CCS   N + 2 values  R[0] 0 R[1] I[1] .. R[N/2-1] I[N/2-1] R[N/2] 0     (N = 1: R[0] 0)
 *   Pack  N values      R[0] R[1] I[1] .. R[N/2-1] I[N/2-1] R[N/2]         (N = 2: R[0] R[1];  N = 1: R[0])
 *
 * Memory.  The caller owns all arrays; source and destination may be the same array.  A specification belongs to the
 * caller from a successful InitAlloc to the matching Free.
 *
 * Work buffer.  A transform takes scratch memory from pBuffer, of the size that GetBufSize tells plus 15 bytes, at any
 * alignment: it is used from its first 16-byte boundary.  With a null pBuffer it allocates that memory for the length
 * of the call.  The size is 0 for orders below 4, and for orders whose scratch memory an int cannot count (29 and 30):
 * those allocate it in every call.
 *
 * Threads.  A specification is only read by transforms: threads may share one as long as each has a work buffer of its
 * own or passes null.
 *
 * Accuracy.  In round-to-nearest the root mean square of the error is below 2^-24 sqrt(order + 2) times that of the
 * result; docs/accuracy.md has measured figures.  Builds for different processors agree within this, not to the bit.
 *
 * Method.  A complex transform of N/2 points on the even and odd samples, with the usual recombination; from order 16 on
 * in four steps, so that its parts stay in the caches (C. Van Loan, Computational Frameworks for the Fast Fourier
 * Transform, SIAM 1992; D. H. Bailey, FFTs in external or hierarchical memory, J. Supercomputing 4, 1990).
 */
#ifndef KELS_FFT_H
#define KELS_FFT_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct KelFFTSpec_R_32f KelFFTSpec_R_32f;
typedef struct KelFFTSpec_R_16s32s KelFFTSpec_R_16s32s;

enum { kelFftDivFwdByN = 1, kelFftDivInvByN = 2, kelFftDivBySqrtN = 4, kelFftNoDiv = 8 };

/* Build a specification for order 0 .. 30 with one of the four flags.  hint is kept and has no effect.
 * Statuses, in this order: ppFFTSpec null -8; order -15; no memory for the specification itself -9; flag -16; no memory
 * for its tables, or sizes that do not fit, -9.  On any of them *ppFFTSpec is unchanged and nothing stays allocated.  The
 * 16-bit form counts its work buffer in an int: -9 from order 28 on, before the flag.
 */
KELS_API KelStatus kelsFFTInitAlloc_R_32f(KelFFTSpec_R_32f** ppFFTSpec, int order, int flag, int hint);
KELS_API KelStatus kelsFFTInitAlloc_R_16s32s(KelFFTSpec_R_16s32s** ppFFTSpec, int order, int flag, int hint);

/* Statuses: null -8; not a specification of the kind -17. */
KELS_API KelStatus kelsFFTFree_R_32f(KelFFTSpec_R_32f* pFFTSpec);
KELS_API KelStatus kelsFFTFree_R_16s32s(KelFFTSpec_R_16s32s* pFFTSpec);

/* Bytes of the work buffer, without the 15 for its alignment.  Statuses: either pointer null -8; not a specification of
 * the kind -17.
 */
KELS_API KelStatus kelsFFTGetBufSize_R_32f(const KelFFTSpec_R_32f* pFFTSpec, int* pSize);

/* Transforms.  Statuses, in this order: pFFTSpec null -8; not a specification of the kind -17; pSrc or pDst null -8; no
 * memory in place of a null pBuffer -9, with pDst as it was.
 */
KELS_API KelStatus kelsFFTFwd_RToCCS_32f(const Kel32f* pSrc, Kel32f* pDst, const KelFFTSpec_R_32f* pFFTSpec,
                                         Kel8u* pBuffer);
KELS_API KelStatus kelsFFTFwd_RToPack_32f(const Kel32f* pSrc, Kel32f* pDst, const KelFFTSpec_R_32f* pFFTSpec,
                                          Kel8u* pBuffer);
KELS_API KelStatus kelsFFTInv_PackToR_32f(const Kel32f* pSrc, Kel32f* pDst, const KelFFTSpec_R_32f* pFFTSpec,
                                          Kel8u* pBuffer);

/* 16-bit samples to a CCS spectrum of 32-bit integers: the float transform, times 2^-scaleFactor, rounded to the nearest
 * integer with ties to even in whatever rounding mode the caller runs, saturated.  The work buffer, where the caller has
 * one, holds 4 N + 31 bytes more than GetBufSize tells for a float specification of the order.
 */
KELS_API KelStatus kelsFFTFwd_RToCCS_16s32s_Sfs(const Kel16s* pSrc, Kel32s* pDst, const KelFFTSpec_R_16s32s* pFFTSpec,
                                                int scaleFactor, Kel8u* pBuffer);

/* srcDst times the conjugate of src, both spectra in Pack order: the first value is real, and for an even len the last
 * one is; the pairs between them are complex.  pSrc may be pSrcDst.  Statuses: null -8; len below 1 -6.
 */
KELS_API KelStatus kelsMulPackConj_32f_I(const Kel32f* pSrc, Kel32f* pSrcDst, int len);

/* dst[k] = sum over i of src[i] src[i + k] for k below both lengths; later places become 0.  pDst must not overlap pSrc.
 * Below 700 lags each sum is a dot product rounded once; from there on all come from a transform of at least 2 srcLen
 * points and share its error, which is relative to dst[0].  Statuses: null -8; a length below 1 -6; from 700 lags on
 * those of kelsFFTInitAlloc_R_32f, and no memory -9, with nothing written.
 */
KELS_API KelStatus kelsAutoCorr_32f(const Kel32f* pSrc, int srcLen, Kel32f* pDst, int dstLen);

#ifdef __cplusplus
}
#endif

#endif
