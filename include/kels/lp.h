/* Linear prediction: analysis of autocorrelations and of samples, and conversions of predictors.
 *
 * A predictor of order p is the array a1 .. ap of the inverse filter A(z) = 1 + a1 z^-1 + .. + ap z^-p, without the
 * leading 1: sample x[n] is predicted by -(a1 x[n-1] + .. + ap x[n-p]).  Of it, or of the model 1/A(z), the other forms are
 *
 *   reflection coefficients k1 .. kp: ki = -(the last coefficient of the predictor of order i); |ki| < 1 if it is stable
 *   line spectral pairs (LSP): the cosines of the p frequencies, descending
 *   cepstrum c1 .. cp of 1/A(z)
 *
 * Arrays have as many elements as the order, len or width tells.  Source and destination must not overlap unless a
 * function allows it.
 *
 * Arithmetic.  Recursions and conversions run in double precision and round their results once; area ratios and tilts
 * are computed in single precision.  Orders below 64 (of the covariance method up to 20) need no memory; beyond that -9
 * (kelStatusNoMemory) is possible, with nothing written.
 *
 * 16-bit forms compute as the float forms do, round to the nearest with ties to even whatever mode the caller runs, and
 * saturate.  What an integer n is worth:
 *
 *   samples, autocorrelations, cepstra, val       n as a source; as a result the value times 2^-scaleFactor
 *   predictors, prediction errors                 as a result the value times 2^-scaleFactor, so -12 stands for Q12
 *   LSP, and predictors on the other side of LSP  n 2^scaleFactor in both directions
 *   predictors as a source of reflection          n 2^scaleFactor: the same scaleFactor that made them, Q12 for -12
 *   predictors as a source of cepstrum, spectrum  n
 *   reflection coefficients, thresholds           Q15 in both directions: n / 32768
 *   spectra, area ratios, tilts                   the value times 2^-scaleFactor
 *
 * Checks, in this order unless told otherwise: a null pointer -8; a size below 1 -6; a row step below the width -37.
 *
 * Return trips in single precision, for stable predictors and up to the rounding of the last place of each result
 * (u = 2^-24):
 *
 *   predictor - reflection - predictor   within u p (1 + |k1|) .. (1 + |kp|)
 *   predictor - LSP - predictor          within u p/2 (product of 2 + 2|x| over the even elements, plus the same over
 *                                        the odd ones)
 *   predictor - cepstrum - predictor     errors e of coefficient n within u |cn| + sum of (k / n) (u |ck a(n-k)|
 *                                        + |ck| e(n-k)), k = 1 .. n-1
 *
 * docs/accuracy.md tells what was measured.
 *
 * Methods: J. Makhoul, "Linear prediction: a tutorial review", Proc. IEEE 63(4), 1975; J. D. Markel, A. H. Gray, "Linear
 * Prediction of Speech", Springer 1976; J. Le Roux, C. Gueguen, "A fixed point computation of partial correlation
 * coefficients", IEEE Trans. ASSP 25(3), 1977; F. Itakura, "Line spectrum representation of linear predictor coefficients
 * of speech signals", JASA 57, 1975.
 */
#ifndef KELS_LP_H
#define KELS_LP_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- analysis ---------------------------------------------------------------------------------------------------- */

/* Autocorrelation r0 .. r[order] (order + 1 values) to the predictor (Durbin) or to the reflection coefficients (Schur)
 * and the final prediction error *pErr = r0 (1 - k1^2) .. (1 - kp^2).
 *
 * Statuses: pSrc or pDst null -8; order below 1 -6; pErr null -8; -117 (kelStatusLpcCalc) as soon as a prediction error,
 * r0 to begin with, is not above 0.  Then pDst holds the coefficients up to that step, its later places and *pErr are as
 * they were.
 */
KELS_API KelStatus kelsDurbin_32f(const Kel32f* pSrc, Kel32f* pDst, int order, Kel32f* pErr);
KELS_API KelStatus kelsDurbin_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int order, Kel16s* pErr, int scaleFactor);
KELS_API KelStatus kelsSchur_32f(const Kel32f* pSrc, Kel32f* pDst, int order, Kel32f* pErr);
KELS_API KelStatus kelsSchur_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int order, Kel16s* pErr, int scaleFactor);

/* len samples, which a caller will usually have windowed, to the predictor by the autocorrelation method: the sums of
 * kelsAutoCorr_32f (exact sums of 16-bit samples) rounded to single precision, then the recursion above with its -117.
 * The Neg forms give the coefficients of the other sign convention, in which x[n] is predicted by their plain sum of
 * products: exactly -1 times those of the other forms.
 *
 * Statuses: null -8; len or order below 1, or order above len, -6; no memory (also for 700 lags and more) -9; -117.
 */
KELS_API KelStatus kelsLinearPrediction_Auto_32f(const Kel32f* pSrc, int len, Kel32f* pDst, int order);
KELS_API KelStatus kelsLinearPrediction_Auto_16s_Sfs(const Kel16s* pSrc, int len, Kel16s* pDst, int order,
                                                     int scaleFactor);
KELS_API KelStatus kelsLinearPredictionNeg_Auto_32f(const Kel32f* pSrc, int len, Kel32f* pDst, int order);
KELS_API KelStatus kelsLinearPredictionNeg_Auto_16s_Sfs(const Kel16s* pSrc, int len, Kel16s* pDst, int order,
                                                        int scaleFactor);

/* The predictor by the covariance method: the least sum of squared errors over the samples order .. len-1, those that
 * have `order` samples before them.  It need not be stable.  No window is wanted: a sum of order/2 sinusoids is predicted
 * exactly.
 *
 * Statuses: null -8; sizes -6 and memory -9 as above; -117, with nothing written, where the covariance matrix is singular
 * to about 12 digits (always when order is len).
 */
KELS_API KelStatus kelsLinearPrediction_Cov_32f(const Kel32f* pSrc, int len, Kel32f* pDst, int order);
KELS_API KelStatus kelsLinearPrediction_Cov_16s_Sfs(const Kel16s* pSrc, int len, Kel16s* pDst, int order,
                                                    int scaleFactor);

/* ---- cepstrum and spectrum --------------------------------------------------------------------------------------- */

/* cn = -an - (1/n) sum over k = 1 .. n-1 of k ck a(n-k), and the same the other way round.  For a len below 22 the factor
 * 1/n is that of single precision.  pDst may be pSrc.
 */
KELS_API KelStatus kelsLPToCepstrum_32f(const Kel32f* pSrc, Kel32f* pDst, int len);
KELS_API KelStatus kelsLPToCepstrum_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, int scaleFactor);
KELS_API KelStatus kelsCepstrumToLP_32f(const Kel32f* pSrc, Kel32f* pDst, int len);
KELS_API KelStatus kelsCepstrumToLP_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, int scaleFactor);

/* pDst[k] = 1 / |S[k]| for all k of 0 .. N-1, N = 2^fftOrder, where S is the discrete Fourier transform of the N numbers
 * 0, a1 .. a[len], 0 .. 0, and val is then subtracted from S[0].  Only S[0] takes val: the leading 1 of A(z) is not part
 * of the other frequencies.  For the spectrum of 1/A(z) itself pass the coefficients 1, a1 .. ap with val 0; the delay by
 * one sample leaves magnitudes alone.
 *
 * Where S[k] is 0 pDst[k] is +infinity (32767), and the call returns 6 (kelStatusDivByZero).
 * Statuses: null -8; len below 1 -6; fftOrder outside 0..30 -15; len above N - 1 -6; no memory -9, with nothing written.
 * Memory is always needed, for the tables of the transform.
 */
KELS_API KelStatus kelsLPToSpectrum_32f(const Kel32f* pSrc, int len, Kel32f* pDst, int fftOrder, Kel32f val);
KELS_API KelStatus kelsLPToSpectrum_16s_Sfs(const Kel16s* pSrc, int len, Kel16s* pDst, int fftOrder, Kel16s val,
                                            int scaleFactor);

/* ---- reflection coefficients ------------------------------------------------------------------------------------- */

/* Step-down and step-up recursion; pDst may be pSrc.  Where some |ki| is exactly 1 no predictor of a lower order exists:
 * k1 .. k(i-1) become NaN (0 in the 16-bit form), and the call returns 6 (kelStatusDivByZero).
 */
KELS_API KelStatus kelsLPToReflection_32f(const Kel32f* pSrc, Kel32f* pDst, int len);
KELS_API KelStatus kelsLPToReflection_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, int scaleFactor);
KELS_API KelStatus kelsReflectionToLP_32f(const Kel32f* pSrc, Kel32f* pDst, int len);
KELS_API KelStatus kelsReflectionToLP_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, int scaleFactor);

/* Element by element, and pDst may be a source:
 *
 *   AR       (1 - k) / (1 + k)                at k = -1: +infinity (32767) and status 6 (kelStatusDivByZero)
 *   TrueAR   (1 + k) / (1 - k)                at k = 1 the same
 *   LAR      ln((1 - k) / (1 + k)), k held to -threshold .. threshold; computed in double precision
 *   Tilt     (|a| - |b|) / (a + b)            where the denominator is 0: NaN (0) and status 6
 *   AbsTilt  (|a| - |b|) / (|a| + |b|)        the same
 *
 * a and b are the elements of pSrc1 and pSrc2.  A threshold not above 0 and below 1 gives -7 (kelStatusOutOfRange).
 */
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

/* ---- line spectral pairs ----------------------------------------------------------------------------------------- */

/* The zeros of P(z) = A(z) + z^-(p+1) A(1/z) and Q(z) = A(z) - z^-(p+1) A(1/z) lie on the unit circle and alternate when
 * A(z) is stable; those at 1 and -1 belong to every predictor of the order and are left out.  Elements 0, 2, .. of the
 * pairs come from P, elements 1, 3, .. from Q; an odd order has one more from P.  The D2 forms convert rows of `width`
 * elements; pDst may be pSrc with the same step.
 *
 * Every stable predictor's pairs are found, to 2^-36 and what double precision leaves of the predictor, in a time that
 * depends on the order alone.  One that is not stable gives -114 (kelStatusNoRoot), and its row is left as it was; rows
 * before it have been written, later ones have not.
 *
 * LSPToLP: elements not strictly descending, or outside -1 .. 1, in any row give -115 (kelStatusBadLsp) before anything is
 * written.  Neighbours closer than the type resolves come out of LPToLSP as equal numbers and are refused on the way back.
 */
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

#ifdef __cplusplus
}
#endif

#endif
