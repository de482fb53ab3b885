/** @defgroup pitch Pitch and periodicity
 *
 * The measuring half of a pitch tracker or a voicing decision: how similar speech is to itself at a range of lags,
 * which of the lags are peaks, where between two samples a peak lies, and how flat a spectrum is.
 *
 * @code{.c}
 * short frame[560]; // at 8000 Hz: a tone of 145 Hz and its octave
 * for (int i = 0; i < 560; ++i) {
 *     double angle = 6.283185307 * 145 * i / 8000;
 *     frame[i] = (short)(8000 * sin(angle) + 5000 * cos(2 * angle));
 * }
 * enum { minLag = 15, maxLag = 134, lags = maxLag - minLag + 1 };
 * float similar[lags], highest, fraction, coefficient;
 * unsigned char peak[lags];
 * kelsCrossCorrCoeffPartial_16s32f(frame, frame, 120, similar, minLag, maxLag, 0);
 * kelsMax_32f(similar, lags, &highest);
 * kelsFindPeaks_32f8u(similar, peak, lags, 0.9f * highest, 1);
 * for (int k = 1; k < lags - 1; ++k) {
 *     if (!peak[k]) continue;
 *     int lag = minLag + k - (similar[k + 1] >= similar[k - 1] ? 0 : 1);
 *     kelsCrossCorrCoeffInterpolation_16s32f(frame, frame, 120, lag, &fraction, &coefficient);
 *     printf("%.2f Hz, coefficient %.4f\n", 8000 / (lag + fraction), coefficient);
 * }
 * @endcode
 *
 * ## What it computes
 * Three measures tell how similar a signal is to itself at a lag.  They have different strengths:
 *
 *     cross-correlation coefficient   raw samples and a short window, 5 to 15 ms, whatever the lag
 *                                     follows fast changes of pitch and loudness; high at multiples of the period, too
 *     compensated autocorrelation     a windowed frame of three periods or more
 *                                     steady vowels, one frame for all lags; smears fast changes
 *     least squares                   raw samples of several periods, mean removed
 *                                     noise: it averages all periods, and is about 0 for noise at every lag
 *
 * Peaks of any of them are candidates for the pitch period.  The choice among the candidates over time, usually by
 * dynamic programming, and the decision between voiced and unvoiced remain to the caller; the program examples/pitch
 * is a whole tracker.
 *
 * ## Shapes and units
 * Samples may be in any unit: no coefficient depends on it.  A lag is a number of samples, and the frequency of lag
 * T is the sampling rate over T.  A range of lags minLag .. maxLag includes both; the result of lag k stands at
 * pDst[k - minLag], so pDst holds maxLag - minLag + 1 values.
 *
 * Sources and destinations do not overlap, nor do two destinations.  Two sources may overlap or be the same array.
 *
 * ## Accuracy
 * Sums are those of double precision; sums of 16-bit samples are exact.  Results are rounded once.  Nothing is
 * handed from lag to lag: a loud burst leaves no error in the quiet windows behind it.  No finite sample makes
 * anything overflow on the way.  With c a coefficient and v a value,
 *
 *     coefficients, 16-bit            1.0001 2^-24 |c| + 2^-149
 *     coefficients, float             2^-24 |c| + (2 len + 8) 2^-53
 *     compensated autocorrelation     2^-20 |pWinCorr[0] / pWinCorr[k]| + 2^-22 |v|
 *     least squares                   2^-24 |v| + 16 (len + 16) 2^-53
 *     entropy                         2^-24 |v| + (len + 100) 2^-50
 *     frequencies of marks            one unit in the last place; strengths 1e-6
 *
 * ## Checks, in order
 * Each function has its own order, which stands with it.  An error means that nothing has been written.  After a
 * warning (kelStatusDivByZero, kelStatusLogZero, kelStatusLogNegative) all outputs have been written.
 *
 * ## Threads
 * Nothing is kept between calls.
 *
 * ## Source
 * D.  Talkin, "A robust algorithm for pitch tracking (RAPT)", in Kleijn and Paliwal (eds.), Speech Coding and
 * Synthesis, Elsevier 1995 (coefficients, peaks); Y.  Medan, E.  Yair, D.  Chazan, "Super resolution pitch
 * determination of speech signals", IEEE Trans.  Signal Processing 39(1), 1991 (the point between two lags); P.
 * Boersma, "Accurate short-term analysis of the fundamental frequency and the harmonics-to-noise ratio of a sampled
 * sound", Proc.  Institute of Phonetic Sciences 17, Amsterdam 1993 (the window taken out); D.  H.  Friedman,
 * "Pseudo-maximum-likelihood speech pitch extraction", IEEE Trans.  ASSP 25(3), 1977, and R.  Tucker, "Voice
 * activity detection using a periodicity measure", IEE Proc.  I 139(4), 1992 (least squares); J.-L.  Shen, J.-W.
 * Hung, L.-S.  Lee, "Robust entropy-based endpoint detection for speech recognition in noisy environments", ICSLP
 * 1998 (entropy).
 * @{
 */
#ifndef KELS_PITCH_H
#define KELS_PITCH_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Cross-correlation coefficients
 * With x = pSrc1 and y = pSrc2, and sums over i = 0 .. len-1:
 *
 *     c(k) = sum of x[i] y[k+i] / sqrt((sum of x[i]^2 + bias) (sum of y[k+i]^2 + bias))
 *
 * CrossCorrCoeff gives the lags 0 .. dstLen-1 with bias 0.  It reads len samples of pSrc1 and len + dstLen - 1 of
 * pSrc2.  Partial gives the lags minLag .. maxLag and reads pSrc2[minLag .. maxLag+len-1] alone.  Its lags may be
 * negative, so that a window can be compared with the past.
 *
 * For pitch both pointers are the same.  With different signals the functions find a delay, or the best place to
 * join two pieces of a waveform.
 *
 * The bias is an energy, as of noise that is added to both windows: len times the square of its RMS value.  It pulls
 * the coefficients of quiet windows to 0 and leaves those of loud ones alone.  A window without energy gives exactly
 * 0: silence is not periodic.
 *
 * All coefficients lie in -1 .. 1.  A window against itself gives exactly 1, against its negative exactly -1.  NaN or
 * infinity among the samples makes those coefficients NaN whose windows contain it, and no others.
 *
 * Checks, in order:
 * 1. kelStatusNullPtr.
 * 2. kelStatusSize: len or dstLen is below 1.
 * 3. kelStatusBadArg: maxLag is below minLag.
 * 4. kelStatusOutOfRange: bias is negative or NaN.
 * @{ */
KELS_API KelStatus kelsCrossCorrCoeff_32f(const Kel32f* pSrc1, const Kel32f* pSrc2, int len, Kel32f* pDst, int dstLen);
KELS_API KelStatus kelsCrossCorrCoeff_16s32f(const Kel16s* pSrc1, const Kel16s* pSrc2, int len, Kel32f* pDst,
                                             int dstLen);
KELS_API KelStatus kelsCrossCorrCoeffPartial_32f(const Kel32f* pSrc1, const Kel32f* pSrc2, int len, Kel32f* pDst,
                                                 int minLag, int maxLag, Kel32f bias);
KELS_API KelStatus kelsCrossCorrCoeffPartial_16s32f(const Kel16s* pSrc1, const Kel16s* pSrc2, int len, Kel32f* pDst,
                                                    int minLag, int maxLag, Kel32f bias);
/** @} */

/** @name The coefficient between two lags
 * The window at the lag lag + f is modelled by (1 - f) y + f z, where y = pSrc2[lag ..] and z = pSrc2[lag + 1 ..],
 * len samples each.  So len + 1 samples are read, and lag may be negative.  *pFrac becomes the f at which the
 * coefficient with x = pSrc1 is stationary, *pCoeff the coefficient there; it is a maximum where *pCoeff is
 * positive.  With xy the sum of x[i] y[i], and so on:
 *
 *     f = N / D    N = xz a + yz d           a = sum of y (y - z)    d = sum of x (z - y)
 *                  D = xz a + xy b           b = sum of z (z - y)
 *     coefficient = ((1-f) xy + f xz) / sqrt(xx ((1-f)^2 yy + 2 f (1-f) yz + f^2 zz))
 *
 * Let k be the lag of a peak: pass lag k if c(k+1) >= c(k-1), otherwise k - 1.  Then f lies in 0 .. 1 but for noise,
 * and the period is lag + f.  Far outside of 0 .. 1, where the model does not hold, try the neighbouring lag.  f is
 * not limited; the coefficient is, to -1 .. 1, and 0 where rounding leaves nothing of the window.
 *
 * Where D is 0 both results are +infinity for N > 0, -infinity for N < 0 and NaN for N = 0, and the status is
 * kelStatusDivByZero.  Silence and windows with y = z come out so.
 *
 * Checks, in order:
 * 1. kelStatusNullPtr.
 * 2. kelStatusSize: len is below 1.
 * @{ */
KELS_API KelStatus kelsCrossCorrCoeffInterpolation_32f(const Kel32f* pSrc1, const Kel32f* pSrc2, int len, int lag,
                                                       Kel32f* pFrac, Kel32f* pCoeff);
KELS_API KelStatus kelsCrossCorrCoeffInterpolation_16s32f(const Kel16s* pSrc1, const Kel16s* pSrc2, int len, int lag,
                                                          Kel32f* pFrac, Kel32f* pCoeff);
/** @} */

/** @name Periodicity by autocorrelation
 * pSrc is a frame without its mean, multiplied by a window.  pWinCorr[k] is the autocorrelation of that window at
 * lag k, made once with kelsAutoCorr_32f; of a frame without window it is len - k.  Its places 0 and minLag ..
 * maxLag are read.  With r(k) = sum of pSrc[i] pSrc[i+k]:
 *
 *     value(k) = (r(k) / r(0)) (pWinCorr[0] / pWinCorr[k])
 *
 * Values are near 1 at the period of a voiced frame and exactly 1 at lag 0; elsewhere they may exceed 1 a little.  A
 * frame without energy gives 0 at every lag, a frame with a NaN gives NaN.  Multiplying the frame by a power of two
 * changes no bit of the results.
 *
 * pWinCorr[k] = 0 gives +infinity, -infinity or NaN by the sign of r(k) pWinCorr[0], and kelStatusDivByZero.  Keep
 * lags to half of the frame: beyond, the division blows up noise.
 *
 * Checks, in order:
 * 1. kelStatusNullPtr.
 * 2. kelStatusSize: len is below 1.
 * 3. kelStatusBadArg: minLag is negative, maxLag below minLag, or maxLag not below len.
 * 4. kelStatusNoMemory; from 701 lags on a transform needs memory.
 * @{ */
KELS_API KelStatus kelsPeriodicity_32f(const Kel32f* pSrc, int len, const Kel32f* pWinCorr, Kel32f* pDst, int minLag,
                                       int maxLag);
/** @} */

/** @name Periodicity by least squares
 * The signal of period P that is closest to the frame has at each phase the mean of the samples of that phase.  Its
 * energy, without what unrelated samples would contribute and over that of the frame, is the measure.  Of phase i =
 * 0 .. P-1 let K be the number of samples i, i + P, i + 2P, .. below len, S their sum and Q the sum of their squares.
 * Over the phases with K >= 2:
 *
 *     value(P) = sum of (S^2 - Q) / K  /  sum of Q (K - 1) / K
 *
 * The value is 1 for a periodic frame, about 0 for white noise at every P, and never below -1/(K-1).  It is 1 at the
 * multiples of the period, too: take the smallest P among the best.  A denominator of 0 gives 0.
 *
 * A constant offset has any period: remove the mean first.  A sample that stands alone at its phase has no part in
 * the value, not even if it is NaN; a NaN anywhere else gives NaN.
 *
 * Checks, in order:
 * 1. kelStatusNullPtr.
 * 2. kelStatusSize: len is below 1.
 * 3. kelStatusBadArg: minLag is below 1, maxLag below minLag, or maxLag not below len.
 * 4. kelStatusNoMemory; frames above 1024 samples need memory.
 * @{ */
KELS_API KelStatus kelsPeriodicityLSPE_32f(const Kel32f* pSrc, int len, Kel32f* pDst, int minLag, int maxLag);
KELS_API KelStatus kelsPeriodicityLSPE_16s32f(const Kel16s* pSrc, int len, Kel32f* pDst, int minLag, int maxLag);
/** @} */

/** @name Peaks of a curve
 * pDst[i] becomes 1 where a peak of pSrc is and 0 elsewhere.  A peak is a run of equal values, none of them at an
 * end of the curve, with lower values on both sides, and not below the threshold; its middle is flagged (of two
 * middles, the first).  A peak is dropped when another one less than minDist away is higher, or as high and
 * earlier.  Dropped ones drop others all the same, so that the outcome depends on no order of work.
 *
 * A minDist of 1 drops nothing, a threshold of -infinity takes all peaks.  For a threshold relative to the highest
 * value take kelsMax_32f first.  A NaN and its neighbours are no peaks; a threshold of NaN gives no flags.
 *
 * Checks, in order:
 * 1. kelStatusNullPtr.
 * 2. kelStatusLengthRange: len is below 1 or above 65535.
 * 3. kelStatusBadArg: minDist is below 1.
 * 4. kelStatusNoMemory; curves above 2047 values need memory.
 * @{ */
KELS_API KelStatus kelsFindPeaks_32f8u(const Kel32f* pSrc, Kel8u* pDst, int len, Kel32f threshold, int minDist);
/** @} */

/** @name Candidates from pitch marks
 * Marks are positions in samples, strictly ascending, with fractions where there are any.  Floats keep whole samples
 * only up to 2^24, so count them from the start of the frame or utterance.
 *
 * Span m = 1 .. nCand steps over m marks.  Let mu be the mean of its J = nMark - m intervals pMark[i+m] - pMark[i],
 * and s2 their variance with divisor J - 1:
 *
 *     pF0[m-1]       = sampleRate / mu
 *     pStrength[m-1] = max(0, 1 - sqrt(m s2) / mu)
 *
 * Both are 0 where J is below 2, or the frequency lies outside minF0 .. maxF0; the ends belong to the range.  The
 * strength is 1 for even marks and about 0 for marks at random, whatever the span.  Where every period has a mark
 * too many, the true frequency stands at span 2 with the greater strength.  Even marks are as strong at span 2, an
 * octave down: give octaves a cost.
 *
 * Checks, in order:
 * 1. kelStatusNullPtr.
 * 2. kelStatusSize: nMark or nCand is below 1.
 * 3. kelStatusBadArg: sampleRate is not positive and finite, minF0 is not above 0, maxF0 is not minF0 or above, or one
 *    of them is NaN.
 * 4. kelStatusOutOfRange: a mark is not finite, or not above the one before.
 * @{ */
KELS_API KelStatus kelsPitchmarkToF0Cand_32f(const Kel32f* pMark, int nMark, Kel32f* pF0, Kel32f* pStrength, int nCand,
                                             Kel32f sampleRate, Kel32f minF0, Kel32f maxF0);
/** @} */

/** @name Entropy of a spectrum
 * *pEntropy = - sum of p[i] ln p[i] with p[i] = pSrc[i] / sum of pSrc, in nats.  pSrc is a power or magnitude
 * spectrum or any distribution; zeros of either sign add nothing.  The entropy lies in 0 .. ln len, near 0 for a
 * tone and near ln len for noise.  Divide it by ln len for a measure from 0 to 1.
 *
 * A negative element gives NaN and kelStatusLogNegative.  If all are zero, it gives -infinity and kelStatusLogZero.
 * NaN or infinity among elements of which none is negative gives NaN.
 *
 * Checks, in order:
 * 1. kelStatusNullPtr.
 * 2. kelStatusSize: len is below 1.
 * @{ */
KELS_API KelStatus kelsEntropy_32f(const Kel32f* pSrc, int len, Kel32f* pEntropy);
/** @} */

#ifdef __cplusplus
}
#endif

/** @} */

#endif
