/* Polyphase resampling: another sampling rate by band-limited interpolation.
 *
 * An output at time t is the sum of x[j] h(|t - j|) over the samples around it, h the Kaiser-windowed sinc (J. O.
 * Smith, "Digital Audio Resampling"; Kaiser & Schafer 1980).  Times and positions are in input samples, src[0] at 0.
 *
 * General form: any real factor.  The state holds the filter as a table; where a sample falls between two points of the
 * table its weight is interpolated linearly, so that nStep decides how accurate the weights are.
 *
 *   window  width of the filter in input samples (for factor < 1: in output samples), at least 2 / nStep
 *   nStep   points of the table to a sample
 *   rollf   cutoff (-6 dB) as a fraction of half the slower rate, above 0 and at most 1
 *   alpha   of the Kaiser window, 1 to 700: rejection in dB is about 8.7 alpha + 8
 *   hint    recorded in flags, without influence on results
 *   factor  output rate / input rate
 *   norm    gain of the outputs
 *   pTime   in: time of the first output; out: time of the first output that was not produced
 *   pOutLen out: number of outputs, 0 if the block is too short
 *
 * Settings, for factors near and above 1 (docs/accuracy.md has them by rate, beside the libraries they are named
 * after). Pass band: up to -0.1 dB, of half the slower rate.  Rejection: of tones beyond half the slower rate.  SNR: of
 * pure tones in the pass band, the least.
 *
 *                               window  nStep  rollf  alpha   pass band  rejection  SNR
 *   fast                            46    128  0.86    6         79 %      68 dB     62 dB
 *   speech recognition              94    512  0.90    9         86 %      94 dB    102 dB
 *   like soxr HQ                   190   1024  0.956  13         93 %     127 dB    129 dB
 *   like speexdsp, quality 10      254   1024  0.974  11.3       96 %     113 dB    127 dB
 *   like libsamplerate, best       298   2048  0.969  15.5       95 %     138 dB    138 dB
 *
 * At factors below 1 short calls and some factors keep the SNR below 128 to 134 dB whatever the filter.
 *
 * The table.  With L = window * nStep / 2, truncated, and w = pi / nStep:  h[0] = rollf and h[k] = sin(k rollf w) / (k
 * w) times I0(alpha sqrt(1 - (k / L)^2)) / I0(alpha), k = 1 .. L; all divided by h[0] + 2 (h[nStep] + h[2 nStep] +
 * ...). pTable holds its tableLen = L + 1 values, then the last one again; 16-bit tables are Q15.  The state is one
 * block and read only; calls on different threads may share it.
 *
 * Which weight.  scale = nStep for factor >= 1; nStep * factor for factor < 1, which stretches the filter so that it
 * passes what the slower output rate can hold; outputs are then multiplied by factor * gain (a field, 1 unless the
 * caller changes it).  x[j] weighs h(|t - j| * scale) if |t - j| * scale <= L.
 *
 * Which outputs.  With reach = L / scale input samples: the first at *pTime, the next ones 1 / factor apart, as long as
 * t + reach <= len - 1.  L may be exceeded by 1e-5 in both comparisons, for times that are rounded.  They number about
 * (len - 1 - reach - *pTime) * factor + 1, and dst must have room for them.
 *
 * What is read.  src[j] from floor(*pTime - reach) to src[len - 1], nothing else: where *pTime < reach that is history,
 * which the caller keeps in front of src.  A signal that is to begin with its first sample begins with *pTime = 0 and
 * ceil(reach) zeros in front of src; at its end as many zeros are appended.  An infinite sample, or one that is not a
 * number, spoils outputs up to 16 samples of the slower rate (fixed form: 16 + 3 inRate / outRate input samples)
 * further from it than reach.
 *
 * Chaining blocks.  After a call the samples before floor(*pTime - reach) are no longer needed.  Move the others down
 * so that a block starts with them, add new ones behind, subtract from *pTime the number of samples by which src[0] has
 * moved, and call again.  Blocks of any lengths give what one call gives: the same bits where 1 / factor and the first
 * time are binary fractions, otherwise the same to 1e-6 of full scale.  Times are not summed up but computed from the
 * call's first one, so that their error in a call is one rounding.
 *
 * Fixed form: a filter `len` samples wide for each of the outRate / gcd(inRate, outRate) phases, each evaluated at its
 * own phase without interpolation, with gain 1 at zero frequency on average, and faster.  Phase p belongs to times of
 * fraction p / phases; other times count as the nearest one, so that a running time does not drift however long the
 * signal is.  The filter spans len INPUT samples at any rate; for outRate < inRate it is stretched, and what the
 * general form does with some window takes len = window * inRate / outRate.  reach = len / 2; times, outputs, history
 * and blocks are as above, without the tolerance.  Blocks give the same bits at any rates.
 *
 * A filter has len + 1 taps: tap k weighs src[ceil(t - len / 2) + k].  The last one is 0 but for phases at which the
 * filter ends on a sample on both sides.  Set and Get exchange filters with an array in which tap k of phase p stands
 * at p * len + k, with a len and a number of phases (height) of its own: what only one side has is passed over, and
 * stays as it is.  So a Set of what a Get with the same len and height gave changes nothing; whole filters take the
 * state's len + 1.  16-bit filters are Q15.
 *
 * 16-bit outputs are rounded to nearest, ties to even, and saturated; sums are formed in single precision.  A call
 * takes up to 44 KiB of the stack.
 *
 * States of InitAlloc go back with Free.  FixedInit builds one in pState, GetSize bytes at any address aligned to 4,
 * which is not passed to Free.
 *
 * Checks, in this order.  InitAlloc: null -8; nStep below 1 -6; window -5; rollf -5; alpha -5; memory -4.  Fixed
 * InitAlloc, Init and GetSize: null -8; a rate or len below 1 -6; rollf -5; alpha -5; memory -4.  States of 2^31 bytes
 * and more -4. Resampling: null -8; factor not above 0, infinite or not a number, or len below 1, -5 (not -6).  Set and
 * Get: null -8; len or height below 1 -6.  Free: null -8.
 */
#ifndef KELS_RESAMPLE_H
#define KELS_RESAMPLE_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct {
    Kel32s own[2];   /* of the library */
    Kel32f invStep;  /* 1 / nStep */
    Kel32s nStep;
    Kel32s tableLen; /* L + 1 */
    Kel32f gain;     /* of outputs at factor < 1; 1 */
    Kel32s flags;    /* 1 for kelHintAccurate, 2 for other hints */
    Kel32f* pTable;  /* directly behind the structure */
} KelResamplePolyphase_32f;

typedef struct {
    Kel32s own[2];
    Kel32f invStep;
    Kel32s nStep;
    Kel32s tableLen;
    Kel32f gain;
    Kel32s flags;
    Kel16s* pTable;
} KelResamplePolyphase_16s;

typedef struct KelResamplePolyphaseFixed_32f KelResamplePolyphaseFixed_32f;
typedef struct KelResamplePolyphaseFixed_16s KelResamplePolyphaseFixed_16s;

/* General form. */
KELS_API KelStatus kelsResamplePolyphaseInitAlloc_32f(KelResamplePolyphase_32f** ppState, Kel32f window, int nStep,
                                                      Kel32f rollf, Kel32f alpha, int hint);
KELS_API KelStatus kelsResamplePolyphaseInitAlloc_16s(KelResamplePolyphase_16s** ppState, Kel32f window, int nStep,
                                                      Kel32f rollf, Kel32f alpha, int hint);
KELS_API KelStatus kelsResamplePolyphase_32f(const KelResamplePolyphase_32f* pState, const Kel32f* pSrc, int len,
                                             Kel32f* pDst, Kel64f factor, Kel32f norm, Kel64f* pTime, int* pOutLen);
KELS_API KelStatus kelsResamplePolyphase_16s(const KelResamplePolyphase_16s* pState, const Kel16s* pSrc, int len,
                                             Kel16s* pDst, Kel64f factor, Kel32f norm, Kel64f* pTime, int* pOutLen);
KELS_API KelStatus kelsResamplePolyphaseFree_32f(KelResamplePolyphase_32f* pState);
KELS_API KelStatus kelsResamplePolyphaseFree_16s(KelResamplePolyphase_16s* pState);

/* Fixed form. */
KELS_API KelStatus kelsResamplePolyphaseFixedInitAlloc_32f(KelResamplePolyphaseFixed_32f** ppState, int inRate,
                                                           int outRate, int len, Kel32f rollf, Kel32f alpha, int hint);
KELS_API KelStatus kelsResamplePolyphaseFixedInitAlloc_16s(KelResamplePolyphaseFixed_16s** ppState, int inRate,
                                                           int outRate, int len, Kel32f rollf, Kel32f alpha, int hint);
KELS_API KelStatus kelsResamplePolyphaseFixedGetSize_32f(int inRate, int outRate, int len, Kel32f rollf, Kel32f alpha,
                                                         int hint, int* pSize);
KELS_API KelStatus kelsResamplePolyphaseFixedGetSize_16s(int inRate, int outRate, int len, Kel32f rollf, Kel32f alpha,
                                                         int hint, int* pSize);
KELS_API KelStatus kelsResamplePolyphaseFixedInit_32f(KelResamplePolyphaseFixed_32f* pState, int inRate, int outRate,
                                                      int len, Kel32f rollf, Kel32f alpha, int hint);
KELS_API KelStatus kelsResamplePolyphaseFixedInit_16s(KelResamplePolyphaseFixed_16s* pState, int inRate, int outRate,
                                                      int len, Kel32f rollf, Kel32f alpha, int hint);
KELS_API KelStatus kelsResamplePolyphaseFixed_32f(const KelResamplePolyphaseFixed_32f* pState, const Kel32f* pSrc,
                                                  int len, Kel32f* pDst, Kel32f norm, Kel64f* pTime, int* pOutLen);
KELS_API KelStatus kelsResamplePolyphaseFixed_16s(const KelResamplePolyphaseFixed_16s* pState, const Kel16s* pSrc,
                                                  int len, Kel16s* pDst, Kel32f norm, Kel64f* pTime, int* pOutLen);
KELS_API KelStatus kelsResamplePolyphaseSetFixedFilter_32f(KelResamplePolyphaseFixed_32f* pState, const Kel32f* pSrc,
                                                           int len, int height);
KELS_API KelStatus kelsResamplePolyphaseSetFixedFilter_16s(KelResamplePolyphaseFixed_16s* pState, const Kel16s* pSrc,
                                                           int len, int height);
KELS_API KelStatus kelsResamplePolyphaseGetFixedFilter_32f(const KelResamplePolyphaseFixed_32f* pState, Kel32f* pDst,
                                                           int len, int height);
KELS_API KelStatus kelsResamplePolyphaseGetFixedFilter_16s(const KelResamplePolyphaseFixed_16s* pState, Kel16s* pDst,
                                                           int len, int height);
KELS_API KelStatus kelsResamplePolyphaseFixedFree_32f(KelResamplePolyphaseFixed_32f* pState);
KELS_API KelStatus kelsResamplePolyphaseFixedFree_16s(KelResamplePolyphaseFixed_16s* pState);

#ifdef __cplusplus
}
#endif

#endif
