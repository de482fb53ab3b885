/** @defgroup fft Fourier transform of real signals
 *
 * Transforms of power-of-two lengths, products of packed spectra, and autocorrelation.
 *
 * @code{.c}
 * KelFFTSpec_R_32f* spec = NULL;
 * float x[256], spectrum[258];
 * for (int n = 0; n < 256; ++n) x[n] = cosf(6.2831853f * 10 * (float)n / 256);
 * if (kelsFFTInitAlloc_R_32f(&spec, 8, kelFftNoDiv, kelHintNone) == kelStatusOk) {
 *     kelsFFTFwd_RToCCS_32f(x, spectrum, spec, NULL);
 *     printf("bin 10: %.1f\n", spectrum[20]);  // N / 2
 *     kelsFFTFree_R_32f(spec);
 * }
 * @endcode
 *
 * ## What it computes
 * A specification holds what a transform of N = 2^order values needs.  It is built once, read by any number of
 * transforms, and freed.
 *
 *     forward  X[k] = c * sum over n of x[n] e^(-2 pi i k n / N),  k = 0 .. N/2
 *     inverse  x[n] = c * sum over k of X[k] e^(+2 pi i k n / N),  k = 0 .. N-1 with X[N-k] = conj X[k]
 *
 * The factor c is 1 unless the flag of the specification sets it for the direction:
 *
 *     kelFftDivFwdByN    forward 1/N
 *     kelFftDivInvByN    inverse 1/N
 *     kelFftDivBySqrtN   1/sqrt(N) both ways
 *     kelFftNoDiv        no factor: forward, then inverse gives N x
 *
 * ## Shapes and units
 * Spectra X[k] = R[k] + i I[k] come in two orders:
 *
 *     CCS   N + 2 values  R[0] 0 R[1] I[1] .. R[N/2-1] I[N/2-1] R[N/2] 0     (N = 1: R[0] 0)
 *     Pack  N values      R[0] R[1] I[1] .. R[N/2-1] I[N/2-1] R[N/2]         (N = 2: R[0] R[1];  N = 1: R[0])
 *
 * ## Ownership
 * The caller owns all arrays; source and destination may be the same array.  A specification belongs to the caller from
 * a successful InitAlloc to the matching Free.
 *
 * A transform takes scratch memory from pBuffer, of the size that GetBufSize tells plus 15 bytes.  The buffer may have
 * any alignment: it is used from its first 16-byte boundary on.  With a null pBuffer the call allocates that memory for
 * itself.  The size is 0 for orders below 4, and for orders whose scratch memory an int cannot count (29 and 30): those
 * allocate it in every call.
 *
 * ## Accuracy
 * In round-to-nearest the root mean square of the error is below 2^-24 sqrt(order + 2) times that of the result;
 * docs/accuracy.md has measured figures.  Builds for different processors agree within this, not to the bit.
 *
 * ## Checks, in order
 *
 *     InitAlloc    kelStatusNullPtr, kelStatusFftOrder, kelStatusNoMemory for the specification itself,
 *                  kelStatusFftFlag, kelStatusNoMemory for its tables or where a size does not fit
 *     Free         kelStatusNullPtr, kelStatusContextMatch: not a specification of the kind
 *     GetBufSize   kelStatusNullPtr for either pointer, kelStatusContextMatch
 *     transforms   kelStatusNullPtr for pFFTSpec, kelStatusContextMatch, kelStatusNullPtr for pSrc or pDst,
 *                  kelStatusNoMemory in place of a null pBuffer
 *     MulPackConj  kelStatusNullPtr, kelStatusSize
 *     AutoCorr     kelStatusNullPtr, kelStatusSize; from 700 lags on also kelStatusFftOrder where srcLen exceeds 2^29,
 *                  and kelStatusNoMemory
 *
 * After any of them nothing has been written, *ppFFTSpec is unchanged, and nothing stays allocated.
 *
 * ## Threads
 * A specification is only read by transforms.  Threads may share one as long as each has a work buffer of its own or
 * passes null.
 *
 * ## Source
 * A complex transform of N/2 points on the even and odd samples, with the usual recombination; from order 16 on in four
 * steps, so that its parts stay in the caches (C. Van Loan, Computational Frameworks for the Fast Fourier Transform,
 * SIAM 1992; D. H. Bailey, FFTs in external or hierarchical memory, J. Supercomputing 4, 1990).
 * @{
 */
#ifndef KELS_FFT_H
#define KELS_FFT_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct KelFFTSpec_R_32f KelFFTSpec_R_32f;
typedef struct KelFFTSpec_R_16s32s KelFFTSpec_R_16s32s;

enum { kelFftDivFwdByN = 1, kelFftDivInvByN = 2, kelFftDivBySqrtN = 4, kelFftNoDiv = 8 };

/** @name Specifications
 * For an order of 0 .. 30 and one of the four flags.  hint is kept and has no effect.  The 16-bit form counts its work
 * buffer in an int: kelStatusNoMemory from order 28 on, before the flag is looked at.  GetBufSize tells the bytes of
 * the work buffer, without the 15 for its alignment.
 * @{ */
KELS_API KelStatus kelsFFTInitAlloc_R_32f(KelFFTSpec_R_32f** ppFFTSpec, int order, int flag, int hint);
KELS_API KelStatus kelsFFTInitAlloc_R_16s32s(KelFFTSpec_R_16s32s** ppFFTSpec, int order, int flag, int hint);
KELS_API KelStatus kelsFFTFree_R_32f(KelFFTSpec_R_32f* pFFTSpec);
KELS_API KelStatus kelsFFTFree_R_16s32s(KelFFTSpec_R_16s32s* pFFTSpec);
KELS_API KelStatus kelsFFTGetBufSize_R_32f(const KelFFTSpec_R_32f* pFFTSpec, int* pSize);
/** @} */

/** @name Transforms
 * The 16-bit form is the float transform, times 2^-scaleFactor, rounded to the nearest integer with ties to even in
 * every rounding mode of the caller, and saturated.  Its work buffer, where the caller has one, holds 4 N + 31 bytes
 * more than GetBufSize tells for a float specification of the order.
 * @{ */
KELS_API KelStatus kelsFFTFwd_RToCCS_32f(const Kel32f* pSrc, Kel32f* pDst, const KelFFTSpec_R_32f* pFFTSpec,
                                         Kel8u* pBuffer);
KELS_API KelStatus kelsFFTFwd_RToPack_32f(const Kel32f* pSrc, Kel32f* pDst, const KelFFTSpec_R_32f* pFFTSpec,
                                          Kel8u* pBuffer);
KELS_API KelStatus kelsFFTInv_PackToR_32f(const Kel32f* pSrc, Kel32f* pDst, const KelFFTSpec_R_32f* pFFTSpec,
                                          Kel8u* pBuffer);
KELS_API KelStatus kelsFFTFwd_RToCCS_16s32s_Sfs(const Kel16s* pSrc, Kel32s* pDst, const KelFFTSpec_R_16s32s* pFFTSpec,
                                                int scaleFactor, Kel8u* pBuffer);
/** @} */

/** @name Products and autocorrelation
 * MulPackConj multiplies pSrcDst by the conjugate of pSrc, both spectra in Pack order: the first value is real, and for
 * an even len the last one is; the pairs between them are complex.  pSrc may be pSrcDst.
 *
 * AutoCorr gives pDst[k], the sum over i of pSrc[i] pSrc[i + k], for k below both lengths; later places become 0.  pDst
 * must not overlap pSrc.  Below 700 lags each sum is a dot product rounded once.  From there on all come from a
 * transform of at least 2 srcLen points and share its error, which is relative to pDst[0].
 * @{ */
KELS_API KelStatus kelsMulPackConj_32f_I(const Kel32f* pSrc, Kel32f* pSrcDst, int len);
KELS_API KelStatus kelsAutoCorr_32f(const Kel32f* pSrc, int srcLen, Kel32f* pDst, int dstLen);
/** @} */

#ifdef __cplusplus
}
#endif
/** @} */
#endif
