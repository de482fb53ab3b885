/** @defgroup resample Resampling
 *
 * The same signal at another sampling rate, by band-limited interpolation.
 *
 * @code{.c}
 * // 8 to 16 kHz in one go: 94 taps an output, silence before and after the 400 samples of a tone.
 * enum { kReach = 47, kLen = 400 };
 * KelResamplePolyphaseFixed_32f* state;
 * Kel32f in[kReach + kLen + kReach] = {0}, out[2 * kLen + 2];
 * Kel64f time = 0;
 * int i, count;
 * for (i = 0; i < kLen; ++i) in[kReach + i] = (Kel32f)sin(0.3 * i);
 * kelsResamplePolyphaseFixedInitAlloc_32f(&state, 8000, 16000, 94, 0.9f, 9, kelHintNone);
 * kelsResamplePolyphaseFixed_32f(state, in + kReach, kLen + kReach, out, 1, &time, &count);
 * printf("%d samples, %.4f is about %.4f\n", count, out[401], sin(0.3 * 200.5));
 * kelsResamplePolyphaseFixedFree_32f(state);
 * @endcode
 *
 * ## What it computes
 * An output at time t is the sum of x[j] h(t - j) over the samples around it, where h is a Kaiser-windowed sinc. Times
 * and positions are in input samples, with src[0] at 0.
 *
 * The **general form** takes any real factor. Its state holds the filter as a table. Where a sample falls between two
 * points of the table its weight is interpolated linearly, so that nStep decides how accurate the weights are.
 *
 * The **fixed form** takes two integer rates, and is faster. Its state holds one filter for each of the outRate /
 * gcd(inRate, outRate) phases, evaluated at that phase without interpolation.
 *
 * The arguments:
 *
 *     window   width of the filter in input samples (for factor < 1: in output samples), at least 2 / nStep
 *     nStep    points of the table to a sample
 *     rollf    cutoff (-6 dB) as a fraction of half the slower rate, above 0 and at most 1
 *     alpha    of the Kaiser window, 1 to 700: rejection in dB is about 8.7 alpha + 8
 *     hint     recorded in flags, without influence on results
 *     factor   output rate / input rate
 *     norm     gain of the outputs
 *     pTime    in: time of the first output; out: time of the first output that was not produced
 *     pOutLen  out: number of outputs, 0 if the block is too short
 *
 * Settings for factors near and above 1. Pass band: up to -0.1 dB, of half the slower rate. Rejection: of tones beyond
 * half the slower rate. SNR: of pure tones in the pass band, the least. docs/accuracy.md has them by rate, beside the
 * libraries they are named after.
 *
 *                               window  nStep  rollf  alpha   pass band  rejection  SNR
 *     fast                          46    128  0.86    6         79 %      68 dB     62 dB
 *     speech recognition            94    512  0.90    9         86 %      94 dB    102 dB
 *     like soxr HQ                 190   1024  0.956  13         93 %     127 dB    129 dB
 *     like speexdsp, quality 10    254   1024  0.974  11.3       96 %     113 dB    127 dB
 *     like libsamplerate, best     298   2048  0.969  15.5       95 %     138 dB    138 dB
 *
 * At factors below 1 short calls and some factors keep the SNR below 128 to 134 dB, whatever the filter.
 *
 * **The table of the general form.** With L = window * nStep / 2, truncated, and w = pi / nStep:
 *
 *     h[0] = rollf
 *     h[k] = sin(k rollf w) / (k w) * I0(alpha sqrt(1 - (k / L)^2)) / I0(alpha)    for k = 1..L
 *
 * and all are divided by h[0] + 2 (h[nStep] + h[2 nStep] + ...). pTable holds its tableLen = L + 1 values, then the
 * last one again.
 *
 * Let scale = nStep for factor >= 1, and nStep * factor for factor < 1. That stretches the filter so that it passes
 * what the slower output rate can hold, and outputs are then multiplied by factor * gain (a field, 1 unless the caller
 * changes it). x[j] weighs h(|t - j| * scale) if |t - j| * scale <= L.
 *
 * **The filters of the fixed form.** Each spans len input samples at any rate. What the general form does with some
 * window takes len = window, for outRate < inRate len = window * inRate / outRate. On average their gain at zero
 * frequency is 1. Phase p belongs to times of fraction p / phases. Other times count as the nearest one, so that a
 * running time does not drift, however long the signal is.
 *
 * A filter has len + 1 taps: tap k weighs src[ceil(t - len / 2) + k]. The last one is 0 but for phases at which the
 * filter ends on a sample on both sides.
 *
 * **Which outputs.** Let reach be L / scale input samples, in the fixed form len / 2. The first output is at *pTime and
 * the next ones are 1 / factor apart, as long as t + reach <= len - 1. (In the general form L may be exceeded by 1e-5,
 * for times that are rounded.) They number about (len - 1 - reach - *pTime) * factor + 1, and dst must have room for
 * them.
 *
 * ## Shapes and units
 * What is read is src[j] from floor(*pTime - reach) to src[len - 1], and nothing else. Where *pTime < reach, that is
 * history, which the caller keeps in front of src. A signal that is to begin with its first sample begins with *pTime =
 * 0 and ceil(reach) zeros in front of src. At its end as many zeros are appended.
 *
 * To chain blocks: after a call the samples before floor(*pTime - reach) are no longer needed. Move the others down so
 * that a block starts with them, add new ones behind, subtract from *pTime the number of samples by which src[0] has
 * moved, and call again.
 *
 * 16-bit tables and filters have 15 fraction bits. 16-bit outputs are rounded to the nearest, ties to even, and
 * saturated.
 *
 * ## Ownership
 * States of InitAlloc go back with Free. FixedInit builds a state in memory of the caller, of the size that GetSize
 * reports and at any address aligned to 4; that one is not passed to Free, and may be copied elsewhere. A call takes up
 * to 44 KiB of the stack.
 *
 * ## Accuracy
 * Sums are formed in single precision. Blocks of any lengths give what one call gives: in the fixed form the same bits
 * at any rates, in the general form the same bits where 1 / factor and the first time are binary fractions, and
 * otherwise the same to 1e-6 of full scale. Times are not summed up but computed from the call's first one, so that
 * their error in a call is one rounding.
 *
 * At twice the rate samples at equal distances are added before they are weighed, so that those beyond 1.7e38 overflow.
 *
 * An infinite sample, or one that is not a number, spoils outputs up to 16 samples of the slower rate (in the fixed
 * form: 16 + 3 inRate / outRate input samples) further from it than reach.
 *
 * ## Checks, in order
 * InitAlloc of the general form:
 * - kelStatusNullPtr: ppState is null.
 * - kelStatusSize: nStep is below 1.
 * - kelStatusBadArg: window, rollf or alpha, in this order, is out of range or not a number.
 * - kelStatusAllocError: memory is out, or the state would take 2^31 bytes or more.
 *
 * FixedInitAlloc, FixedInit and FixedGetSize:
 * - kelStatusNullPtr: the pointer is null.
 * - kelStatusSize: a rate or len is below 1.
 * - kelStatusBadArg: rollf or alpha is out of range or not a number.
 * - kelStatusAllocError: as above.
 *
 * Resampling:
 * - kelStatusNullPtr: a pointer is null.
 * - kelStatusBadArg: factor is not above 0, infinite or not a number, or len is below 1. (It is not kelStatusSize.)
 *
 * Set and Get: kelStatusNullPtr, then kelStatusSize for a len or height below 1. Free: kelStatusNullPtr.
 *
 * ## Threads
 * Resampling only reads a state. Calls on different threads may share it.
 *
 * ## Source
 * J. O. Smith, "Digital Audio Resampling"; J. F. Kaiser, R. W. Schafer, "On the use of the I0-sinh window for spectrum
 * analysis", IEEE Trans. ASSP 28 (1980) 105-107.
 *
 * Definitions: src/resample/general/general.cpp and src/resample/fixed/fixed.cpp.
 * @{
 */
#ifndef KELS_RESAMPLE_H
#define KELS_RESAMPLE_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** The state of the general form. */
typedef struct {
    Kel32s own[2];  /* of the library */
    Kel32f invStep; /* 1 / nStep */
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

/** @name The general form
 * @{ */
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
/** @} */

/** @name States of the fixed form
 * @{ */
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
KELS_API KelStatus kelsResamplePolyphaseFixedFree_32f(KelResamplePolyphaseFixed_32f* pState);
KELS_API KelStatus kelsResamplePolyphaseFixedFree_16s(KelResamplePolyphaseFixed_16s* pState);
/** @} */

/** @name The fixed form
 * @{ */
KELS_API KelStatus kelsResamplePolyphaseFixed_32f(const KelResamplePolyphaseFixed_32f* pState, const Kel32f* pSrc,
                                                  int len, Kel32f* pDst, Kel32f norm, Kel64f* pTime, int* pOutLen);
KELS_API KelStatus kelsResamplePolyphaseFixed_16s(const KelResamplePolyphaseFixed_16s* pState, const Kel16s* pSrc,
                                                  int len, Kel16s* pDst, Kel32f norm, Kel64f* pTime, int* pOutLen);
/** @} */

/** @name Filters of one's own
 * Set and Get exchange filters with an array in which tap k of phase p stands at p * len + k. It has a len and a number
 * of phases (height) of its own. What only one side has is passed over, and stays as it is. So a Set of what a Get with
 * the same len and height gave changes nothing. Whole filters take the state's len + 1.
 * @{ */
KELS_API KelStatus kelsResamplePolyphaseSetFixedFilter_32f(KelResamplePolyphaseFixed_32f* pState, const Kel32f* pSrc,
                                                           int len, int height);
KELS_API KelStatus kelsResamplePolyphaseSetFixedFilter_16s(KelResamplePolyphaseFixed_16s* pState, const Kel16s* pSrc,
                                                           int len, int height);
KELS_API KelStatus kelsResamplePolyphaseGetFixedFilter_32f(const KelResamplePolyphaseFixed_32f* pState, Kel32f* pDst,
                                                           int len, int height);
KELS_API KelStatus kelsResamplePolyphaseGetFixedFilter_16s(const KelResamplePolyphaseFixed_16s* pState, Kel16s* pDst,
                                                           int len, int height);
/** @} */

#ifdef __cplusplus
}
#endif

/** @} */

#endif
