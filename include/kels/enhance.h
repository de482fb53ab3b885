/** @defgroup enhance Noise estimates and suppression gains
 *
 * How much noise there is in each bin of a power spectrum, and by how much to turn each bin down.
 *
 * @code{.c}
 * // A steady hum of power 2 in 65 bins, then a frame with a loud bin.
 * int size, k;
 * Kel32f power[65], noise[65], snr[65], gain[65];
 * KelMCRAState_32f* state;
 * kelsGetSizeMCRA_32f(128, &size);
 * state = (KelMCRAState_32f*)kelsMalloc_8u(size);
 * kelsInitMCRA_32f(8000, 128, state);
 * for (k = 0; k < 65; ++k) power[k] = 2;
 * kelsUpdateNoisePSDMCRA_32f_I(power, state, noise);
 * power[10] = 200;
 * kelsUpdateNoisePSDMCRA_32f_I(power, state, noise);
 * for (k = 0; k < 65; ++k) snr[k] = power[k] / noise[k] - 1;
 * kelsFilterUpdateWiener_32f(snr, gain, 65);
 * printf("%g %g\n", gain[5], gain[10]);  // 0 0.930615
 * kelsFree(state);
 * @endcode
 *
 * ## What it computes
 * One frame at a time: transform it (kels/fft.h), square the magnitudes of the bins 0..fftLen/2, update the noise
 * estimate, form the signal-to-noise ratios, take gains from them, and multiply the spectrum by these. examples/denoise
 * does it.
 *
 * The noise estimate is minima-controlled recursive averaging (MCRA). The power P of each bin is smoothed. The smallest
 * smoothed power of the last one to two periods of minWindow frames is tracked. Where the smoothed power exceeds delta
 * times that minimum, the bin is taken for speech, which slows the update down:
 *
 *     S       = alphaS * S + (1 - alphaS) * P
 *     minimum = min(minimum, S)                and tempMinimum = min(tempMinimum, S); but after minWindow frames
 *     minimum = min(tempMinimum, S)            and tempMinimum = S
 *     p       = alphaP * p + (1 - alphaP) * i  with i = 1 where S > delta * minimum, else 0
 *     a       = alphaD + (1 - alphaD) * p
 *     noise   = a * noise + (1 - a) * P
 *
 * The first frame sets S, both minima and the noise to P, and p to 0. A power that does not change leaves the noise
 * exactly as it is.
 *
 * ## Shapes and units
 * Spectra have fftLen / 2 + 1 values. Signal-to-noise ratios are ratios of powers. In the 32s forms of the gains,
 * ratios have 15 fraction bits (1.0 is 32768) and gains have 31 (1.0 saturates to 2147483647), rounded to the nearest.
 * Gains may be written over a source.
 *
 * ## Ownership
 * A state lies in memory of the caller, of the size that GetSize reports, and aligned for its structure. It holds
 * pointers into itself and must not be moved.
 *
 * ## Accuracy
 * MCRA, 32f: each step of a frame is within 4 units in the last place, however far the power falls. 32s: every step is
 * rounded to the nearest unit, ties to even. So a difference below 1 / (2 * (1 - alpha)) units of a power is not
 * followed any further; scale the spectrum to make that small.
 *
 * ## Threads
 * A state belongs to one call at a time.
 *
 * ## Source
 * I. Cohen, B. Berdugo, "Noise estimation by minima controlled recursive averaging for robust speech enhancement", IEEE
 * Signal Processing Letters 9 (2002) 12-15. Y. Ephraim, D. Malah, "Speech enhancement using a minimum mean-square error
 * short-time spectral amplitude estimator", IEEE Trans. ASSP 32 (1984) 1109-1121.
 *
 * Definitions: src/enhance/enhance.cpp.
 * @{
 */
#ifndef KELS_ENHANCE_H
#define KELS_ENHANCE_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A noise estimate of floats. */
typedef struct {
    Kel32s sampleRate; /* Hz */
    Kel32s fftLen;
    Kel32s orderBits; /* significant bits of fftLen / 2 */
    Kel32s reserved;
    Kel32s hop;        /* frame shift in samples */
    Kel32s minWindow;  /* frames in a period of the search for the minimum: one second */
    Kel32s frameCount; /* in this period */
    Kel32s firstFrame; /* 1 until the first update */
    Kel32f alphaD;     /* smoothing of the noise, 0.7^r with r = 125 hop / sampleRate (the hop in units of 8 ms) */
    Kel32f alphaP;     /* of the presence of speech, 0.2^r */
    Kel32f alphaS;     /* of the power, 0.8^r */
    Kel32f delta;      /* 5 */
    Kel32f* presence;  /* p, S and the two minima: fftLen / 2 + 1 values each */
    Kel32f* smoothed;
    Kel32f* minimum;
    Kel32f* tempMinimum;
} KelMCRAState_32f;

/** The same of integers: the alphas and the presence of speech have 30 fraction bits, delta has 28, and powers are in
 * units of the input. */
typedef struct KelMCRAState_32s KelMCRAState_32s;

/** @name The size of a noise estimate
 * *pSize in bytes covers the structure and its arrays: 16 * (fftLen / 2) + 84 on i386, and 16 more with 64-bit
 * pointers.
 *
 * Checks: kelStatusNullPtr; kelStatusSize for an fftLen outside 8..8192.
 * @{ */
KELS_API KelStatus kelsGetSizeMCRA_32f(int fftLen, int* pSize);
KELS_API KelStatus kelsGetSizeMCRA_32s(int fftLen, int* pSize);
/** @} */

/** @name The beginning of a noise estimate
 * Init takes a hop of fftLen / 2, but counts its minWindow in frames of the largest power of two that is not above it.
 * AltInit takes the hop that it is given.
 *
 * Checks: kelStatusNullPtr; kelStatusOutOfRange for a sampleRate outside 8000..48000, and in AltInit for a hop outside
 * 1..fftLen/2; kelStatusSize for an fftLen outside 8..8192.
 * @{ */
KELS_API KelStatus kelsInitMCRA_32f(int sampleRate, int fftLen, KelMCRAState_32f* pState);
KELS_API KelStatus kelsInitMCRA_32s(int sampleRate, int fftLen, KelMCRAState_32s* pState);
KELS_API KelStatus kelsAltInitMCRA_32f(int sampleRate, int fftLen, int hop, KelMCRAState_32f* pState);
KELS_API KelStatus kelsAltInitMCRA_32s(int sampleRate, int fftLen, int hop, KelMCRAState_32s* pState);
/** @} */

/** @name A frame
 * pNoise is read and written; the first frame only writes it. Check: kelStatusNullPtr.
 * @{ */
KELS_API KelStatus kelsUpdateNoisePSDMCRA_32f_I(const Kel32f* pSrcPower, KelMCRAState_32f* pState, Kel32f* pNoise);
KELS_API KelStatus kelsUpdateNoisePSDMCRA_32s_I(const Kel32s* pSrcPower, KelMCRAState_32s* pState, Kel32s* pNoise);
/** @} */

/** @name Wiener gains
 * gain = snr / (1 + snr). Negative ratios count as 0. If there is one, the status is kelStatusBadArg, and the gains are
 * nevertheless all written.
 *
 * Checks: kelStatusNullPtr; kelStatusLengthRange for a len outside 1..65535.
 * @{ */
KELS_API KelStatus kelsFilterUpdateWiener_32f(const Kel32f* pSrcSnr, Kel32f* pDstGain, int len);
KELS_API KelStatus kelsFilterUpdateWiener_32s(const Kel32s* pSrcSnr, Kel32s* pDstGain, int len);
/** @} */

/** @name Ephraim-Malah gains
 * The gain with the least mean square error of the spectral amplitude, from the a-priori ratio x and the a-posteriori
 * ratio g (the power of the frame over that of the noise). With v = g * x / (1 + x) and the modified Bessel functions
 * I0 and I1:
 *
 *     gain = sqrt(pi) / 2 * sqrt(v) / g * exp(-v / 2) * ((1 + v) * I0(v / 2) + v * I1(v / 2))
 *
 * 32f: within 1e-6 of that, relatively, for all ratios. A g below 1.1754943508222875e-38 counts as that, so that every
 * gain is finite.
 *
 * 32s: g is first limited to 1..3276800, which is 2^-15 to 100. Gains above 1, which small g have, saturate. Others are
 * within half a unit of the last place and 1e-6.
 *
 * Checks: kelStatusNullPtr; kelStatusLengthRange for a len outside 1..65535; kelStatusOutOfRange for a negative ratio
 * in either source, before anything is written.
 * @{ */
KELS_API KelStatus kelsFilterUpdateEMNS_32f(const Kel32f* pSrcPriorSnr, const Kel32f* pSrcPostSnr, Kel32f* pDstGain,
                                            int len);
KELS_API KelStatus kelsFilterUpdateEMNS_32s(const Kel32s* pSrcPriorSnr, const Kel32s* pSrcPostSnr, Kel32s* pDstGain,
                                            int len);
/** @} */

#ifdef __cplusplus
}
#endif

/** @} */

#endif
