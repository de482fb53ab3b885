/** @defgroup aurora Aurora front end
 *
 * The blocks of the advanced front end of distributed speech recognition (ETSI ES 202 050) from noisy speech to
 * features that noise and microphone change little: noise reduction, waveform weighting, blind equalisation, and the
 * upper half of 16 kHz speech.
 *
 * @code{.c}
 * // The gains of one bin: noise of power 400 at first, then a frame of ten times that.
 * Kel32f power = 400, mean = 400, noise = 0, denoised = 0, gain;
 * kelsNoiseSpectrumUpdate_Aurora_32f(&mean, &noise, 1, 1, kelVadNoise);  // frame 1 is noise: 20, the square root
 * kelsWienerFilterDesign_Aurora_32f(&power, &mean, &noise, &denoised, &gain, 1);
 * printf("noise passes with %.3f,", gain);
 * power = mean = 4000;
 * for (int t = 2; t < 6; ++t) {
 *     kelsNoiseSpectrumUpdate_Aurora_32f(&mean, &noise, 1, t, kelVadSpeech);  // speech leaves the noise as it is
 *     kelsWienerFilterDesign_Aurora_32f(&power, &mean, &noise, &denoised, &gain, 1);
 * }
 * printf(" speech with %.3f\n", gain);
 * @endcode
 *
 * ## What it computes
 * A Wiener filter is designed twice per frame, in mel-spaced bands, and applied to the waveform as 17 taps.  The
 * waveform is then weighted towards the parts of each pitch period that stand out best from the noise.  Its mel
 * cepstra are led towards a long-term reference.  16 kHz speech is split into half bands: the lower one goes the same
 * way, the upper one becomes three more bands.
 *
 * Each block is one function.  The caller owns every state and every delay line and joins the blocks, together with the
 * FFT (kels/fft.h), the filter banks (kels/fbank.h), the offset compensation (kels/frame.h), the cosine transform
 * (kels/dct.h), the detector of speech (kels/vad.h) and the deltas (kels/delta.h).
 *
 * Frame t = 1, 2, .. of each stage, about 80 new samples at 8 kHz:
 *  -# The 200 samples around them, from 20 before the 80 (first stage and second), times a Hann window and padded to
 *     256, are transformed with flag kelFftNoDiv.  kelsSmoothedPowerSpectrumAurora_32f makes 65 powers of them.
 *  -# First stage: kelsVADNestDecision_Aurora_32f hears the 80 samples, and its answer goes to
 *     kelsNoiseSpectrumUpdate_Aurora_32f.  Second stage: the update is called with kelVadPending.
 *  -# kelsWienerFilterDesign_Aurora_32f gives 65 gains, kelsEvalFBank_32f with the bank of
 *     kelsMelFBankInitAllocLow_Aurora_32f 25 of them.
 *  -# First stage: kelsGainFactorizationUpdate_Aurora_32f takes the denoised magnitudes, and
 *     kelsVADDecision_Aurora_32f, where decisions are wanted, the 25 and the 65 gains.  Second stage:
 *     kelsGainFactorization_Aurora_32f weakens the 25 gains.
 *  -# kelsTabsCalculation_Aurora_32f turns the 25 gains into taps, and kelsResidualFilter_Aurora_32f filters the 80
 *     samples with their 8 neighbours on each side.
 *
 * What the second stage gives has its offset compensated (kelsCompensateOffset_32f, 1 - 1/1024) and is the denoised
 * speech. Frames of 200 denoised samples go through kelsWaveProcessing_Aurora_32f, pre-emphasis by 0.9, a Hamming
 * window, the transform, a mel bank of 23 filters, logarithms and the cosine transform, and
 * kelsBlindEqualization_Aurora_32f.
 *
 * ## Shapes and units
 * Samples are floats in the range of 16-bit integers, -32768 .. 32767: several constants are energies in that scale.
 * - A transform holds the 258 values of kelsFFTFwd_RToCCS_32f of 256 points.
 * - Power spectra, noise and denoised magnitudes (square roots of powers) and gains have 65 bins, 62.5 Hz apart.  The
 *   functions on them take the number of bins as `len`, and other numbers are as good.
 * - Mel gains are 25, taps 17 and symmetric, cepstra 12 (c1 .. c12, never c0), high bands 3.
 *
 * The spectrum of the frame before, the denoised magnitudes and the bias of the equalisation are arrays of the caller's
 * that hold zeros at the start of a stream.  Noise magnitudes may hold anything then: frame 1 does not read them.
 *
 * A destination may be any one source of the same length, a reference included, and in kelsPowerSpectrum_Aurora_32f the
 * source although it is longer.  The output of kelsResidualFilter_Aurora_32f, taps and codes overlap none of their
 * sources. States and arrays that are read and written overlap nothing.
 *
 * ## Ownership
 * States are blocks of bytes in the caller's memory, at any alignment, of the size that GetBufSize reports and that is
 * the same on every ABI.  They hold no pointers: copying the bytes copies the state.  Init prepares one for a stream;
 * nothing needs to be freed.  Counters stop at 2147483647.
 *
 * ## Accuracy
 * Single precision or better.  16-bit forms compute what the float forms give for the same integers and share their
 * states.
 *
 * A sample that is not a number spoils the frames that contain it and leaves no state unusable: limits take the place
 * of what is not a number, as each function says.  kelsCompensateOffset_32f alone keeps it, so a caller who expects
 * such samples clears its two memories.  Infinite samples are not guarded.
 *
 * ## Checks, in order
 *  -# A null pointer: kelStatusNullPtr.
 *  -# `len` or `nBand` below 1, in the half-band filters also an odd `len`: kelStatusSize.
 *  -# In kelsNoiseSpectrumUpdate_Aurora_32f a frameNum below 1 or an unknown vad: kelStatusBadArg.
 *  -# In kelsWaveProcessing_Aurora_32f no memory for a frame of more than 256 samples: kelStatusNoMemory.  Nothing else
 *     allocates.
 *
 * Nothing is written at a fault, states included.
 *
 * ## Threads
 * There is no global state.  A state serves one stream at a time.
 *
 * ## Source
 * ETSI ES 202 050 V1.1.5, Advanced front-end feature extraction algorithm, 2007.  A. Agarwal, Y. M. Cheng, Two-stage
 * mel-warped Wiener filter for robust speech recognition, ASRU 1999.  D. Macho, Y. M. Cheng, SNR-dependent waveform
 * processing for improving the robustness of ASR front-end, ICASSP 2001.  L. Mauuary, Blind equalization in the
 * cepstral domain for robust telephone based speech recognition, EUSIPCO 1998.
 * @{
 */
#ifndef KELS_AURORA_H
#define KELS_AURORA_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name States
 * What the bytes hold, for displays and tests, to be read with memcpy.
 * @{ */
typedef struct {
    Kel32f meanEn;      /**< the level of the noise, in sixteenths of 3 dB */
    Kel32s frameCount;  /**< frames heard */
    Kel32s vadFlag;     /**< 1 for speech, otherwise 0 */
    Kel32s hangOver;    /**< frames that the hangover has left */
    Kel32s speechCount; /**< frames of speech in a row, without hangover */
} KelVADNestState_Aurora;

typedef struct {
    Kel32f denEn[3]; /**< sums of denoised magnitudes of the last three frames, the oldest first */
    Kel32f lowSnr;   /**< the signal-to-noise ratio of frames of noise, in dB */
    Kel32f alpha;    /**< the share of the gains' depth: 0.1 in speech to 0.8 in noise */
    Kel32s frameCount;
} KelGainFactState_Aurora;

typedef struct {
    Kel32f line[117]; /**< the last inputs, the oldest first */
    Kel32s phase;     /**< 1 where the next output has an odd number */
} KelLowHighState_Aurora;

typedef struct {
    Kel32f meanEn;   /**< the logarithm of the noise's energy, all bands together */
    Kel32f noise[3]; /**< the noise's energy in each band */
    Kel32s frameCount, vadFlag, hangOver, speechCount;
} KelHighBandState_Aurora;
/** @} */

/** @name Spectrum
 * The transform of 4 (len - 1) points, 4 len - 2 values, becomes the powers of `len` bins, two of the transform's in
 * one: P[b] = (|X[2b]|^2 + |X[2b+1]|^2) / 2, but P[len-1] = |X[2 (len-1)]|^2.
 *
 * The smoothed form gives the mean of this frame's P and the one in pSpec, the frame before, and leaves this frame's P
 * in pSpec.  The first frame of a stream finds zeros there, so that its mean is half of its power.
 * @{ */
KELS_API KelStatus kelsPowerSpectrum_Aurora_32f(const Kel32f* pSrc, Kel32f* pDst, int len);
KELS_API KelStatus kelsSmoothedPowerSpectrumAurora_32f(const Kel32f* pSrc, Kel32f* pSpec, Kel32f* pDst, int len);
/** @} */

/** @name Energy detector
 * Tells speech from noise by the energy of each shift of samples, for the noise estimate of the first stage.
 *
 * The level en = 0.5 + 16 log2((64 + E) / 64) of the energy E (0 where it is not a number) is compared with a mean that
 * follows the noise: the plain mean of the first nine frames, then with the weight 0.03 falling and 0.01 rising, while
 * en is less than 20 above it; it is at least 80.  From frame 5 on a frame more than 15 above the mean is speech.
 * After five such frames in a row, fifteen more are called speech.
 *
 * *pRes becomes kelVadSpeech or kelVadNoise (kels/vad.h); *pCount the number of loud frames in a row, which is what
 * kelsVADDecision_Aurora_32f takes as extCount.  All forms share one state, KelVADNestState_Aurora, whose Init clears
 * it.
 * @{ */
KELS_API KelStatus kelsVADNestGetBufSize_Aurora_32f(int* pSize);
KELS_API KelStatus kelsVADNestGetBufSize_Aurora_16s(int* pSize);
KELS_API KelStatus kelsVADNestInit_Aurora_32f(Kel8u* pState);
KELS_API KelStatus kelsVADNestInit_Aurora_16s(Kel8u* pState);
KELS_API KelStatus kelsVADNestDecision_Aurora_32f(const Kel32f* pSrc, int len, int* pRes, int* pCount, Kel8u* pState);
KELS_API KelStatus kelsVADNestDecision_Aurora_16s(const Kel16s* pSrc, int len, int* pRes, int* pCount, Kel8u* pState);
/** @} */

/** @name Noise
 * Updates the noise magnitudes n from the smoothed power P of frame number frameNum, which counts from 1.
 *
 * | vad | new n |
 * |---|---|
 * | kelVadSpeech | as it was |
 * | kelVadNoise | the mean of sqrt(P) over the first 100 frames, then fading with the weight 0.01 |
 * | kelVadPending | over the first 10 frames the root of the mean of P, then n sqrt(u) |
 *
 * u = 0.9 + 0.1 P / (P + N) (1 + 1 / (1 + 0.1 P / N)) with N = n^2 lies between 0.9 and 1.0393: the noise falls by at
 * most 0.46 dB a frame and rises by at most 0.17 dB.  It stays at 0.9 of a steady power.
 *
 * n is at least exp(-10).  Where P is not a number n stays; in frame 1 it becomes exp(-10).
 * @{ */
KELS_API KelStatus kelsNoiseSpectrumUpdate_Aurora_32f(const Kel32f* pSrc, Kel32f* pNoise, int len, int frameNum,
                                                      int vad);
/** @} */

/** @name Wiener filter
 * Gains from this frame's power (pSpec), its smoothed power (pMean), the noise magnitudes and the denoised magnitudes
 * of the frame before (pDen, which then holds this frame's).  In each bin, with m = sqrt(mean):
 * the estimate a = 0.98 den / noise + 0.02 max(m / noise - 1, 0) of the ratio of magnitudes gives the gain h = a / (1
 * + a); from the better estimate c = max(h m / noise, 0.0794) follows the gain c / (1 + c), which goes to pDst, and
 * times sqrt(spec) to pDen.
 *
 * Gains are 0.0736 .. 1.  Noise must be positive.  A power that is not a number gives the smallest gain in its frame
 * and in the next.
 * @{ */
KELS_API KelStatus kelsWienerFilterDesign_Aurora_32f(const Kel32f* pSpec, const Kel32f* pMean, const Kel32f* pNoise,
                                                     Kel32f* pDen, Kel32f* pDst, int len);
/** @} */

/** @name Gain factorisation
 * Update takes the denoised magnitudes of the first stage, once a frame.  The other function, once a frame of the
 * second stage and with its noise, turns nBand gains g into alpha g + 1 - alpha.
 *
 * alpha follows the ratio of the last three sums of denoised magnitudes to the sum of the noise, in dB.  A frame less
 * than 3.5 dB above the lowest ratio, which is tracked, raises alpha by 0.15 up to 0.8; any other lowers it by 0.3
 * down to 0.1. Frames whose denoised sum is not above 100 leave it.  So noise is filtered to the full and speech
 * gently.
 * @{ */
KELS_API KelStatus kelsGainFactorizationGetBufSize_Aurora_32f(int* pSize);
KELS_API KelStatus kelsGainFactorizationInit_Aurora_32f(Kel8u* pState);
KELS_API KelStatus kelsGainFactorizationUpdate_Aurora_32f(const Kel32f* pDen, int len, Kel8u* pState);
KELS_API KelStatus kelsGainFactorization_Aurora_32f(const Kel32f* pNoise, int len, const Kel32f* pSrc, Kel32f* pDst,
                                                    int nBand, Kel8u* pState);
/** @} */

/** @name Taps
 * kelsTabsCalculation_Aurora_32f turns 25 mel gains into 17 taps: the inverse cosine transform over the bands' centres
 * and widths times a Hann window.  The two halves are equal bit for bit; equal gains g give a middle tap of g and, to
 * 0.002, nothing else.
 *
 * kelsResidualFilter_Aurora_32f gives pDst[n] = sum over j of pTaps[j] pSrc[n + 16 - j].  pSrc holds len + 16 samples,
 * 8 before the first output and 8 after the last: nothing is delayed.
 * @{ */
KELS_API KelStatus kelsTabsCalculation_Aurora_32f(const Kel32f* pSrc, Kel32f* pDst);
KELS_API KelStatus kelsResidualFilter_Aurora_32f(const Kel32f* pSrc, const Kel32f* pTaps, Kel32f* pDst, int len);
/** @} */

/** @name Waveform weighting
 * Looks for the maxima of the smoothed Teager energy |x[n]^2 - x[n-1] x[n+1]|, 25 to 79 samples apart, which mark pitch
 * periods.  From 4 samples before each, four fifths of the way to the next are multiplied by 1.2, the rest by 0.8, and
 * the joints by 1.  A frame with one maximum or none is multiplied by 0.8.  A frame whose energy is not at least 100
 * is copied. Frames of the front end have 200 samples.
 * @{ */
KELS_API KelStatus kelsWaveProcessing_Aurora_32f(const Kel32f* pSrc, Kel32f* pDst, int len);
/** @} */

/** @name Blind equalisation
 * pDst = pSrc - pBias, and pBias moves by s (pDst - reference), where s grows from 0 at logE = 211 / 64 to
 * 0.0087890625 one above it.  logE is the natural logarithm of the frame's energy.  The first form takes c1 .. c12 and
 * the standard's reference; the second any number of values and the caller's reference, such as the mean cepstrum of
 * training speech. A logE that is not a number leaves the bias as it is, and so does each result that is not finite.
 * @{ */
KELS_API KelStatus kelsBlindEqualization_Aurora_32f(const Kel32f* pSrc, Kel32f* pDst, Kel32f logE, Kel32f* pBias);
KELS_API KelStatus kelsBlindEqualizationRef_Aurora_32f(const Kel32f* pSrc, const Kel32f* pRef, Kel32f* pDst, int len,
                                                       Kel32f logE, Kel32f* pBias);
/** @} */

/** @name Half bands of 16 kHz speech
 * `len` samples, an even number, become len / 2 of each half band at 8 kHz.  The upper half comes out the right way
 * up: a tone at 4000 + f Hz as one at f Hz.  The symmetric filter of 118 coefficients passes to 3.4 kHz within 0.031
 * dB and stops above 4.0 kHz by 78 dB; both bands are delayed by 58.5 input samples.  Blocks of any even lengths give,
 * to rounding, what one block gives.  Both types of sample use one state, KelLowHighState_Aurora, whose Init clears it.
 * @{ */
KELS_API KelStatus kelsLowHighFilterGetBufSize_Aurora_32f(int* pSize);
KELS_API KelStatus kelsLowHighFilterInit_Aurora_32f(Kel8u* pState);
KELS_API KelStatus kelsLowHighFilter_Aurora_32f(const Kel32f* pSrc, Kel32f* pDstLow, Kel32f* pDstHigh, int len,
                                                Kel8u* pState);
KELS_API KelStatus kelsLowHighFilter_Aurora_16s32f(const Kel16s* pSrc, Kel32f* pDstLow, Kel32f* pDstHigh, int len,
                                                   Kel8u* pState);
/** @} */

/** @name High bands
 * The energies of three bands above 4 kHz are coded against the low half of the same noisy frame and read back against
 * the denoised low half, so that they lose what that has lost.  L(e) is ln e, and -10 for e not above exp(-10).
 * - CodingRef: three references, L of the sums of bins 33 .. 38, 39 .. 48 and 49 .. 64 of a spectrum of 65 bins.
 * - Coding: nine codes, pDst[3 i + j] = pRef[j] - L(pSrc[i]).
 * - DecodingRef: L of half the sums of bins 66 .. 76, 78 .. 96 and 98 .. 128 of 129 bins.
 * - Decoding: three logarithms, the sums over j of (0.1, 0.2, 0.7)[j] (pRef[j] - pSrc[3 i + j]).
 *
 * SpectralSubtraction takes 1.5 times the tracked noise off three energies and leaves at least a tenth.  Its detector
 * works as the one above on the logarithm of their sum; Init clears its state.
 *
 * Merge joins both versions to the 26 logarithms in pLog, of which 23 are there: pLog[23 + i] = 0.7 (pCoded[i] + ln
 * 1.9) + 0.3 L(1.9 pHigh[i]).  The bands on both sides of 4 kHz are led 0.4 of the way to their mean.  *pEnergy is
 * what the upper half adds to the frame's energy.
 * @{ */
KELS_API KelStatus kelsHighBandCodingRef_Aurora_32f(const Kel32f* pSrc, Kel32f* pDst);
KELS_API KelStatus kelsHighBandDecodingRef_Aurora_32f(const Kel32f* pSrc, Kel32f* pDst);
KELS_API KelStatus kelsHighBandCoding_Aurora_32f(const Kel32f* pRef, const Kel32f* pSrc, Kel32f* pDst);
KELS_API KelStatus kelsHighBandDecoding_Aurora_32f(const Kel32f* pRef, const Kel32f* pSrc, Kel32f* pDst);
KELS_API KelStatus kelsHighBandGetBufSize_Aurora_32f(int* pSize);
KELS_API KelStatus kelsHighBandInit_Aurora_32f(Kel8u* pState);
KELS_API KelStatus kelsHighBandSpectralSubtraction_Aurora_32f(const Kel32f* pSrc, Kel32f* pDst, Kel8u* pState);
KELS_API KelStatus kelsHighBandMerge_Aurora_32f(const Kel32f* pCoded, const Kel32f* pHigh, Kel32f* pLog,
                                                Kel32f* pEnergy);
/** @} */

#ifdef __cplusplus
}
#endif

/** @} */
#endif
