/** @defgroup lp Linear prediction
 *
 * Predictors of speech from autocorrelations or samples, and conversions between them, reflection coefficients, line
 * spectral pairs, cepstra and spectra.
 *
 * @code{.c}
 * float samples[400], a[10], pairs[10], cepstrum[10];
 * for (int n = 0; n < 400; ++n) samples[n] = sinf(0.3f * (float)n) + 0.1f * cosf(1.7f * (float)(n * n));
 * if (kelsLinearPrediction_Auto_32f(samples, 400, a, 10) == kelStatusOk &&
 *     kelsLPToLSP_32f(a, pairs, 10) == kelStatusOk &&
 *     kelsLPToCepstrum_32f(a, cepstrum, 10) == kelStatusOk) {
 *     printf("first line spectral frequency: %.3f rad, c1 %.3f\n", acosf(pairs[0]), cepstrum[0]);
 * }
 * @endcode
 *
 * ## What it computes
 * A predictor of order p is the array a1 .. ap of the inverse filter A(z) = 1 + a1 z^-1 + .. + ap z^-p, without the
 * leading
 * 1.  Sample x[n] is predicted by -(a1 x[n-1] + .. + ap x[n-p]).  Other forms of it, or of the model 1/A(z), are
 * - reflection coefficients k1 .. kp, where ki is minus the last coefficient of the predictor of order i; all |ki| are
 *   below 1 if it is stable;
 * - line spectral pairs (LSP), the cosines of p frequencies, descending;
 * - the cepstrum c1 .. cp of 1/A(z).
 *
 * ## Shapes and units
 * Arrays have as many elements as the order, len or width tells.  Source and destination must not overlap unless a
 * group allows it.
 *
 * What an integer n is worth in the 16-bit forms:
 *
 *     samples, autocorrelations, cepstra, val        n as a source; a result is the value times 2^-scaleFactor
 *     predictors, prediction errors                  a result is the value times 2^-scaleFactor: -12 stands for Q12
 *     LSP, and predictors on the other side of LSP   n 2^scaleFactor in both directions
 *     predictors as a source of reflection           n 2^scaleFactor: the scaleFactor that made them, -12 for Q12
 *     predictors as a source of cepstrum, spectrum   n
 *     reflection coefficients, thresholds            Q15 in both directions: n / 32768
 *     spectra, area ratios, tilts                    the value times 2^-scaleFactor
 *
 * ## Accuracy
 * Recursions and conversions run in double precision and round their results once.  Area ratios and tilts are computed
 * in single precision.  The 16-bit forms compute as the float forms do, round to the nearest with ties to even in
 * every rounding mode of the caller, and saturate.
 *
 * Return trips in single precision, for stable predictors and up to the rounding of the last place of each result,
 * stay within these bounds, where u = 2^-24:
 *
 *     predictor - reflection - predictor   u p (1 + |k1|) .. (1 + |kp|)
 *     predictor - LSP - predictor          u p/2 (product of 2 + 2|x| over the even elements, plus the same over
 *                                          the odd ones)
 *     predictor - cepstrum - predictor     errors e of coefficient n: u |cn| + sum of (k / n) (u |ck a(n-k)|
 *                                          + |ck| e(n-k)), k = 1 .. n-1
 *
 * docs/accuracy.md tells what was measured.
 *
 * ## Checks, in order
 * Where a group says nothing else:
 * 1. kelStatusNullPtr: a pointer is null.
 * 2. kelStatusSize: a size is below 1.
 * 3. kelStatusStep: a row step is below the width.
 * 4. kelStatusNoMemory: memory is out, and nothing has been written.  Orders below 64 (of the covariance method, up to
 *    20) need none.
 *
 * ## Threads
 * Nothing is kept between calls.
 *
 * ## Source
 * J. Makhoul, "Linear prediction: a tutorial review", Proc. IEEE 63(4), 1975; J. D. Markel, A. H. Gray, "Linear
 * Prediction of Speech", Springer 1976; J. Le Roux, C. Gueguen, "A fixed point computation of partial correlation
 * coefficients", IEEE Trans. ASSP 25(3), 1977; F. Itakura, "Line spectrum representation of linear predictor
 * coefficients of speech signals", JASA 57, 1975.
 * @{
 */
#ifndef KELS_LP_H
#define KELS_LP_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Analysis of an autocorrelation
 * pSrc holds r0 .. r[order], order + 1 values.  Durbin gives the predictor, Schur the reflection coefficients.  *pErr
 * becomes the final prediction error r0 (1 - k1^2) .. (1 - kp^2).
 *
 * Checks, in order:
 * 1. kelStatusNullPtr: pSrc or pDst is null.
 * 2. kelStatusSize: order is below 1.
 * 3. kelStatusNullPtr: pErr is null.
 * 4. kelStatusNoMemory.
 * 5. kelStatusLpcCalc: a prediction error, r0 to begin with, is not above 0.  pDst holds the coefficients up to that
 *    step; its later places and *pErr are as they were.
 * @{ */
KELS_API KelStatus kelsDurbin_32f(const Kel32f* pSrc, Kel32f* pDst, int order, Kel32f* pErr);
KELS_API KelStatus kelsDurbin_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int order, Kel16s* pErr, int scaleFactor);
KELS_API KelStatus kelsSchur_32f(const Kel32f* pSrc, Kel32f* pDst, int order, Kel32f* pErr);
KELS_API KelStatus kelsSchur_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int order, Kel16s* pErr, int scaleFactor);
/** @} */

/** @name Analysis of samples, autocorrelation method
 * len samples, which a caller will usually have windowed, give the predictor.  The sums of kelsAutoCorr_32f (of 16-bit
 * samples, exact sums) are rounded to single precision and go through the recursion above.
 *
 * The Neg forms have the other sign convention, in which x[n] is predicted by the plain sum of products.  Their
 * coefficients are exactly -1 times those of the other forms.
 *
 * Checks, in order:
 * 1. kelStatusNullPtr.
 * 2. kelStatusSize: len or order is below 1, or order is above len.
 * 3. kelStatusNoMemory; 700 lags and more need memory, too.
 * 4. kelStatusLpcCalc, as above.
 * @{ */
KELS_API KelStatus kelsLinearPrediction_Auto_32f(const Kel32f* pSrc, int len, Kel32f* pDst, int order);
KELS_API KelStatus kelsLinearPrediction_Auto_16s_Sfs(const Kel16s* pSrc, int len, Kel16s* pDst, int order,
                                                     int scaleFactor);
KELS_API KelStatus kelsLinearPredictionNeg_Auto_32f(const Kel32f* pSrc, int len, Kel32f* pDst, int order);
KELS_API KelStatus kelsLinearPredictionNeg_Auto_16s_Sfs(const Kel16s* pSrc, int len, Kel16s* pDst, int order,
                                                        int scaleFactor);
/** @} */

/** @name Analysis of samples, covariance method
 * The predictor with the least sum of squared errors over the samples order .. len-1, those that have `order` samples
 * before them.  It need not be stable.  No window is wanted: a sum of order/2 sinusoids is predicted exactly.
 *
 * Checks, in order:
 * 1. kelStatusNullPtr.
 * 2. kelStatusSize: len or order is below 1, or order is above len.
 * 3. kelStatusNoMemory.
 * 4. kelStatusLpcCalc: the covariance matrix is singular to about 12 digits, which it always is when order is len.
 *    Nothing has been written.
 * @{ */
KELS_API KelStatus kelsLinearPrediction_Cov_32f(const Kel32f* pSrc, int len, Kel32f* pDst, int order);
KELS_API KelStatus kelsLinearPrediction_Cov_16s_Sfs(const Kel16s* pSrc, int len, Kel16s* pDst, int order,
                                                    int scaleFactor);
/** @} */

/** @name Cepstrum
 * cn = -an - (1/n) sum over k = 1 .. n-1 of k ck a(n-k), and the same the other way round.  For a len below 22 the
 * factor 1/n is that of single precision.  pDst may be pSrc.
 * @{ */
KELS_API KelStatus kelsLPToCepstrum_32f(const Kel32f* pSrc, Kel32f* pDst, int len);
KELS_API KelStatus kelsLPToCepstrum_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, int scaleFactor);
KELS_API KelStatus kelsCepstrumToLP_32f(const Kel32f* pSrc, Kel32f* pDst, int len);
KELS_API KelStatus kelsCepstrumToLP_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, int scaleFactor);
/** @} */

/** @name Spectrum
 * pDst[k] = 1 / |S[k]| for all k of 0 .. N-1, N = 2^fftOrder.  S is the discrete Fourier transform of the N numbers 0,
 * a1 ..  a[len], 0 .. 0, and val is subtracted from S[0] afterwards.
 *
 * Only S[0] takes val: the leading 1 of A(z) is not part of the other frequencies.  For the spectrum of 1/A(z) itself
 * pass the coefficients 1, a1 .. ap with val 0; the delay by one sample leaves magnitudes alone.
 *
 * Where S[k] is 0 pDst[k] is +infinity (in the 16-bit form 32767), and the call returns kelStatusDivByZero.
 *
 * Checks, in order:
 * 1. kelStatusNullPtr.
 * 2. kelStatusSize: len is below 1.
 * 3. kelStatusFftOrder: fftOrder lies outside 0 .. 30.
 * 4. kelStatusSize: len is above N - 1.
 * 5. kelStatusNoMemory.  The tables of the transform always need memory.
 * @{ */
KELS_API KelStatus kelsLPToSpectrum_32f(const Kel32f* pSrc, int len, Kel32f* pDst, int fftOrder, Kel32f val);
KELS_API KelStatus kelsLPToSpectrum_16s_Sfs(const Kel16s* pSrc, int len, Kel16s* pDst, int fftOrder, Kel16s val,
                                            int scaleFactor);
/** @} */

/** @name Reflection coefficients
 * Step-down and step-up recursion; pDst may be pSrc.  Where some |ki| is exactly 1 no predictor of a lower order
 * exists: k1 .. k(i-1) become NaN (0 in the 16-bit form), and the call returns kelStatusDivByZero.
 * @{ */
KELS_API KelStatus kelsLPToReflection_32f(const Kel32f* pSrc, Kel32f* pDst, int len);
KELS_API KelStatus kelsLPToReflection_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, int scaleFactor);
KELS_API KelStatus kelsReflectionToLP_32f(const Kel32f* pSrc, Kel32f* pDst, int len);
KELS_API KelStatus kelsReflectionToLP_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, int scaleFactor);
/** @} */

/** @name Area ratios and tilts of reflection coefficients
 * Element by element; pDst may be a source.  a and b are the elements of pSrc1 and pSrc2.
 *
 *     AR       (1 - k) / (1 + k)           at k = -1: +infinity (32767) and kelStatusDivByZero
 *     TrueAR   (1 + k) / (1 - k)           at k = 1: the same
 *     LAR      ln((1 - k) / (1 + k))       k limited to -threshold .. threshold; in double precision
 *     Tilt     (|a| - |b|) / (a + b)       denominator 0: NaN (0) and kelStatusDivByZero
 *     AbsTilt  (|a| - |b|) / (|a| + |b|)   denominator 0: the same
 *
 * LAR checks last that the threshold is above 0 and below 1, otherwise it returns kelStatusOutOfRange.
 * @{ */
KELS_API KelStatus kelsReflectionToAR_32f(const Kel32f* pSrc, Kel32f* pDst, int len);
KELS_API KelStatus kelsReflectionToAR_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, int scaleFactor);
KELS_API KelStatus kelsReflectionToTrueAR_32f(const Kel32f* pSrc, Kel32f* pDst, int len);
KELS_API KelStatus kelsReflectionToTrueAR_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, int scaleFactor);
KELS_API KelStatus kelsReflectionToLAR_32f(const Kel32f* pSrc, Kel32f* pDst, int len, Kel32f threshold);
KELS_API KelStatus kelsReflectionToLAR_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, Kel16s threshold,
                                               int scaleFactor);
KELS_API KelStatus kelsReflectionToTilt_32f(const Kel32f* pSrc1, const Kel32f* pSrc2, Kel32f* pDst, int len);
KELS_API KelStatus kelsReflectionToTilt_16s_Sfs(const Kel16s* pSrc1, const Kel16s* pSrc2, Kel16s* pDst, int len,
                                                int scaleFactor);
KELS_API KelStatus kelsReflectionToAbsTilt_32f(const Kel32f* pSrc1, const Kel32f* pSrc2, Kel32f* pDst, int len);
KELS_API KelStatus kelsReflectionToAbsTilt_16s_Sfs(const Kel16s* pSrc1, const Kel16s* pSrc2, Kel16s* pDst, int len,
                                                   int scaleFactor);
/** @} */

/** @name Line spectral pairs
 * The zeros of P(z) = A(z) + z^-(p+1) A(1/z) and Q(z) = A(z) - z^-(p+1) A(1/z) lie on the unit circle and alternate
 * when A(z) is stable.  Those at 1 and -1 belong to every predictor of the order and are left out.  Elements 0, 2, ..
 * of the pairs come from P, elements 1, 3, .. from Q; an odd order has one more from P.  The D2 forms convert rows of
 * `width` elements.  pDst may be pSrc with the same step.
 *
 * LPToLSP finds the pairs of every stable predictor, to 2^-36 and what double precision leaves of the predictor, in a
 * time that depends on the order alone.  A predictor that is not stable gives kelStatusNoRoot, and its row is left as
 * it was; the rows before it have been written, the later ones have not.
 *
 * LSPToLP returns kelStatusBadLsp, before anything is written, where elements of any row are not strictly descending
 * or lie outside -1 .. 1.  Neighbours closer than the type resolves come out of LPToLSP as equal numbers and are
 * refused on the way back.
 * @{ */
KELS_API KelStatus kelsLPToLSP_32f(const Kel32f* pSrc, Kel32f* pDst, int len);
KELS_API KelStatus kelsLPToLSP_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, int scaleFactor);
KELS_API KelStatus kelsLPToLSP_32f_D2(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, int width,
                                      int height);
KELS_API KelStatus kelsLPToLSP_16s_D2Sfs(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, int width,
                                         int height, int scaleFactor);
KELS_API KelStatus kelsLSPToLP_32f(const Kel32f* pSrc, Kel32f* pDst, int len);
KELS_API KelStatus kelsLSPToLP_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, int scaleFactor);
KELS_API KelStatus kelsLSPToLP_32f_D2(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, int width,
                                      int height);
KELS_API KelStatus kelsLSPToLP_16s_D2Sfs(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, int width,
                                         int height, int scaleFactor);
/** @} */

#ifdef __cplusplus
}
#endif

/** @} */

#endif
