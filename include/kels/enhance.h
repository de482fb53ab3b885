/* Noise in a power spectrum, and the gains that suppress it.
 *
 * A frame at a time: transform it (fft.h), square the magnitudes of the bins 0..fftLen/2, update the noise estimate,
 * form the signal-to-noise ratios, take gains from them and multiply the spectrum by these.  examples/denoise does it.
 *
 * Noise estimate: minima-controlled recursive averaging.  I. Cohen, B. Berdugo, Noise estimation by minima controlled
 * recursive averaging for robust speech enhancement, IEEE Signal Processing Letters 9 (2002) 12-15.  The power P of each
 * bin is smoothed, the smallest smoothed power of the last one to two periods of minWindow frames is tracked, and where
 * the smoothed power exceeds `delta` times that minimum the bin is taken for speech, which slows down the update:
 *
 *     S += (1 - alphaS) (P - S)              after minWindow frames: minimum = min(tempMinimum, S), tempMinimum = S
 *                                            else both = min(themselves, S)
 *     p += (1 - alphaP) (i - p)              i = 1 where S > delta * minimum, else 0
 *     noise += (1 - alphaD) (1 - p) (P - noise)
 *
 * The first frame sets S, both minima and the noise to P, and p to 0.  A power that does not change leaves the noise
 * exactly as it is.  In the float form each of these steps is within 4 units in the last place, however far the power
 * falls from one frame to the next.
 */
#ifndef KELS_ENHANCE_H
#define KELS_ENHANCE_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- noise estimate ---------------------------------------------------------------------------------------------- */

/* The state lies in memory of the caller, of the size that GetSize reports and aligned for this structure.  It holds
 * pointers into itself: it must not be moved.
 */
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

/* Like the above with integers throughout: the alphas and presence in Q30, delta in Q28, the powers in units of the
 * input.  Every step is rounded to the nearest unit, ties to even, so a difference below 1 / (2 (1 - alpha)) units of a
 * power is not followed any further: scale the spectrum to make that small.
 */
typedef struct KelMCRAState_32s KelMCRAState_32s;

/* *pSize in bytes: the structure and its arrays; 16 * (fftLen / 2) + 84 on i386 and 16 more with 64-bit pointers.
 * Checks: pSize null -8; fftLen outside 8..8192 -6.
 */
KELS_API KelStatus kelsGetSizeMCRA_32f(int fftLen, int* pSize);
KELS_API KelStatus kelsGetSizeMCRA_32s(int fftLen, int* pSize);

/* Init takes a hop of fftLen / 2; but its minWindow counts in frames of the largest power of two that is not above it.
 * Checks in order: pState null -8; sampleRate outside 8000..48000, or (AltInit) hop outside 1..fftLen/2, -7; fftLen
 * outside 8..8192 -6.
 */
KELS_API KelStatus kelsInitMCRA_32f(int sampleRate, int fftLen, KelMCRAState_32f* pState);
KELS_API KelStatus kelsInitMCRA_32s(int sampleRate, int fftLen, KelMCRAState_32s* pState);
KELS_API KelStatus kelsAltInitMCRA_32f(int sampleRate, int fftLen, int hop, KelMCRAState_32f* pState);
KELS_API KelStatus kelsAltInitMCRA_32s(int sampleRate, int fftLen, int hop, KelMCRAState_32s* pState);

/* One frame: pSrcPower and pNoise hold fftLen / 2 + 1 values.  pNoise is read and written; the first frame only writes
 * it.  A null pointer gives -8.
 */
KELS_API KelStatus kelsUpdateNoisePSDMCRA_32f_I(const Kel32f* pSrcPower, KelMCRAState_32f* pState, Kel32f* pNoise);
KELS_API KelStatus kelsUpdateNoisePSDMCRA_32s_I(const Kel32s* pSrcPower, KelMCRAState_32s* pState, Kel32s* pNoise);

/* ---- gains ------------------------------------------------------------------------------------------------------- */

/* Signal-to-noise ratios are power ratios.  In the 32s forms they have 15 fraction bits (1.0 is 32768) and gains have 31
 * (1.0 saturates to 2147483647), rounded to the nearest.  The gain may replace a source.  A null pointer gives -8, then a
 * len outside 1..65535 gives -119.
 */

/* Wiener: gain = snr / (1 + snr).  Negative ratios count as 0; if there is one, the status is -5, and the gains are
 * nevertheless all written.
 */
KELS_API KelStatus kelsFilterUpdateWiener_32f(const Kel32f* pSrcSnr, Kel32f* pDstGain, int len);
KELS_API KelStatus kelsFilterUpdateWiener_32s(const Kel32s* pSrcSnr, Kel32s* pDstGain, int len);

/* Ephraim-Malah: the gain with the least mean square error of the spectral amplitude, from the a-priori ratio x and the
 * a-posteriori ratio g (power of the frame over that of the noise); with v = g x / (1 + x) and the modified Bessel
 * functions I0, I1
 *
 *     gain = sqrt(pi) / 2 * sqrt(v) / g * exp(-v / 2) * ((1 + v) I0(v / 2) + v I1(v / 2))
 *
 * Y. Ephraim, D. Malah, Speech enhancement using a minimum mean-square error short-time spectral amplitude estimator,
 * IEEE Trans. ASSP 32 (1984) 1109-1121.  32f: within 1e-6 of that, relatively, for all ratios; g below
 * 1.1754943508222875e-38 counts as that, so that every gain is finite.  32s: g is held to 1..3276800 (2^-15 to 100)
 * first; gains above 1, which small g have, saturate; within half a unit of the last place and 1e-6.
 * A negative ratio in either source gives -7, seen before anything is written.
 */
KELS_API KelStatus kelsFilterUpdateEMNS_32f(const Kel32f* pSrcPriorSnr, const Kel32f* pSrcPostSnr, Kel32f* pDstGain,
                                            int len);
KELS_API KelStatus kelsFilterUpdateEMNS_32s(const Kel32s* pSrcPriorSnr, const Kel32s* pSrcPostSnr, Kel32s* pDstGain,
                                            int len);

#ifdef __cplusplus
}
#endif

#endif
