/** @defgroup fbank Mel filter banks
 *
 * A mel filter bank turns the spectrum of a frame, or its samples, into a few band energies spaced as the ear hears.
 *
 * @code{.c}
 * KelFilterBank_32f* bank = NULL;
 * int order = 0;
 * float spectrum[257], energy[26];
 * for (int i = 0; i < 257; ++i) spectrum[i] = 1.0f + (float)i;
 * if (kelsMelFBankInitAlloc_32f(&bank, &order, 512, 16000.0f, 64.0f, 8000.0f, 26, 1127.0f, 700.0f,
 *                               kelFBankWeightBin) == kelStatusOk &&
 *     kelsEvalFBank_32f(spectrum, energy, bank) == kelStatusOk) {
 *     printf("log energy of the first band: %.3f\n", log(energy[0]));
 * }
 * kelsFBankFree_32f(bank);
 * kelsFree(bank);
 * @endcode
 *
 * ## What it computes
 * A bank holds nFilter triangles over the bins of a spectrum.  Filter m, counted from 0, begins at bin centres[m], has
 * its top at centres[m + 1] and ends at centres[m + 2], so that neighbours overlap by half.  One call gives nFilter
 * sums:
 *
 *     pDst[m] = sum over the bins i of filter m of weight(m, i) * S[i]
 *
 * The mel scale is mel(f) = melMul * ln(1 + f / melDiv).  With melMul = 1127 and melDiv = 700 it is the usual one.
 *
 * There are three forms of the same object:
 * - KelFilterBank_32f has float weights.
 * - KelFilterBank_16s has weights in Q14, where 16384 stands for 1, for 16-bit spectra or samples.
 * - KelFilterBank_32s has weights in Q30.  It is built by integer arithmetic alone and lies in the caller's memory.
 *
 * ## Shapes and units
 * fftLen is rounded up to the power of two fftLen2 = 2^fftOrder, which is at least 2.  The spectrum, of magnitudes or
 * of powers, has fftLen2 / 2 + 1 bins, fftLen2 / sampFreq of them for each hertz.  The nFilter + 2 centres do not
 * descend and stay within 0 .. fftLen2 / 2.
 *
 * ## Ownership
 * The InitAlloc functions hand a new bank to the caller.  Ending it takes two calls: kelsFBankFree_* releases what the
 * bank owns, and kelsFree releases the small block of the bank itself.  Without the second call that block, some 50
 * bytes, is lost.  Between the two the bank is empty: every function but kelsFBankFree_* answers kelStatusNullPtr.
 *
 * Where a constructor returns kelStatusNoMemory, *ppFBank holds null or an unfinished bank.  Both calls are safe with
 * either.  With any other fault *ppFBank is as it was before.
 *
 * A KelFilterBank_32s is the caller's buffer: there is nothing to free, and it must not move.
 *
 * ## Accuracy
 * Centres and weights are computed in single precision, rounded to the nearest in every rounding mode of the caller.
 * Float sums are single precision in a free order of additions.  An integer sum is exact, or saturated at 64 bits,
 * before it is scaled.
 *
 * ## Checks, in order
 * Each group below lists its own.  A comparison that NaN takes part in fails.
 *
 * ## Threads
 * Several threads may evaluate one bank at once, unless it owns an FFT: samples are transformed in the bank's own
 * buffer.
 *
 * ## Source
 * S. B. Davis, P. Mermelstein, "Comparison of parametric representations for monosyllabic word recognition in
 * continuously spoken sentences", IEEE Trans. ASSP 28(4), 1980.  The mel scale: D. O'Shaughnessy, "Speech
 * Communication", 1987.
 * @{
 */
#ifndef KELS_FBANK_H
#define KELS_FBANK_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct KelFilterBank_32f KelFilterBank_32f;
typedef struct KelFilterBank_16s KelFilterBank_16s;
typedef struct KelFilterBank_32s KelFilterBank_32s;

/** Flags of construction: one of the first two, and the third where wanted. */
enum {
    /** Corners are truncated to bins.  A weight is proportional to the distance in mel between its bin and the
     * unrounded corner; bin centres[m] itself has weight 0. */
    kelFBankWeightMel = 1,
    /** Corners are rounded to the nearest bin, ties to even.  With lo, top and hi for the three corners, bin i weighs
     * (i - lo + 1) / (top - lo + 1) up to the top and (hi + 1 - i) / (hi - top + 1) behind it.  So the lower corner
     * itself weighs 1 / (top - lo + 1), not 0. */
    kelFBankWeightBin = 2,
    /** The bank owns a real FFT: evaluation takes fftLen2 samples in place of a spectrum. */
    kelFBankOwnFFT = 4
};

/** @name Mel bank
 * The nFilter + 2 corners are equally spaced in mel from lowFreq to highFreq, both included and in hertz.  In single
 * precision they are
 *
 *     mel[k]    = k * (mel(highFreq) - mel(lowFreq)) / (nFilter + 1) + mel(lowFreq)
 *     corner[k] = (exp(mel[k] / melMul) - 1) * (fftLen2 / sampFreq * melDiv), in bins
 *
 * A corner that the parameters put elsewhere is moved into 0 .. fftLen2 / 2, and behind the one before it.  Weights of
 * the 16-bit form are truncated to Q14 with kelFBankWeightBin and rounded to the nearest with kelFBankWeightMel.
 * *pFFTOrder receives fftOrder.
 *
 * ppFBank and pFFTOrder are not tested for null.  Checks, in order:
 * 1. kelStatusSize: fftLen or nFilter is below 1.
 * 2. kelStatusSize: sampFreq or lowFreq is not above 0; so 0 Hz is refused.
 * 3. kelStatusFBankFreq: lowFreq is above highFreq (they may be equal).
 * 4. kelStatusFBankFreq: highFreq is above sampFreq / 2.
 * 5. kelStatusFBankFlag: flag is none of those above.
 * 6. kelStatusNoMemory: memory is out, or fftLen is above 2^30.
 * @{ */
KELS_API KelStatus kelsMelFBankInitAlloc_32f(KelFilterBank_32f** ppFBank, int* pFFTOrder, int fftLen, Kel32f sampFreq,
                                             Kel32f lowFreq, Kel32f highFreq, int nFilter, Kel32f melMul, Kel32f melDiv,
                                             int flag);
KELS_API KelStatus kelsMelFBankInitAlloc_16s(KelFilterBank_16s** ppFBank, int* pFFTOrder, int fftLen, Kel32f sampFreq,
                                             Kel32f lowFreq, Kel32f highFreq, int nFilter, Kel32f melMul, Kel32f melDiv,
                                             int flag);
/** @} */

/** @name Linear bank that goes over into a mel bank
 * nLinFilter filters that are equally spaced in frequency are followed by others that are equally spaced in mel.
 * Corners 0 .. nLinFilter go from lowFreq to highLinFreq, and from corner nLinFilter on they go up to highFreq.  With
 * nLinFilter = nFilter all nFilter + 2 corners are equally spaced from lowFreq to highLinFreq.
 *
 * With kelFBankWeightMel the filters whose top is one of the linear corners are weighted by the distance in bins,
 * their corners still truncated.  All else is as for the mel bank.
 *
 * Checks, in order:
 * 1. kelStatusSize: fftLen or nFilter is below 1.
 * 2. kelStatusSize: sampFreq or lowFreq is not above 0, or nLinFilter lies outside 1 .. nFilter.
 * 3. kelStatusFBankFreq: lowFreq is above highLinFreq, highLinFreq above highFreq, or highFreq above sampFreq / 2.
 * 4. kelStatusFBankFlag, then kelStatusNoMemory, as above.
 * @{ */
KELS_API KelStatus kelsMelLinFBankInitAlloc_32f(KelFilterBank_32f** ppFBank, int* pFFTOrder, int fftLen,
                                                Kel32f sampFreq, Kel32f lowFreq, Kel32f highFreq, int nFilter,
                                                Kel32f highLinFreq, int nLinFilter, Kel32f melMul, Kel32f melDiv,
                                                int flag);
KELS_API KelStatus kelsMelLinFBankInitAlloc_16s(KelFilterBank_16s** ppFBank, int* pFFTOrder, int fftLen,
                                                Kel32f sampFreq, Kel32f lowFreq, Kel32f highFreq, int nFilter,
                                                Kel32f highLinFreq, int nLinFilter, Kel32f melMul, Kel32f melDiv,
                                                int flag);
/** @} */

/** @name Empty bank
 * A bank without centres and with zero weights, to be filled by kelsFBankSetCenters_*, which makes it usable, and then
 * by kelsFBankSetCoeffs_*.  Of flag only kelFBankOwnFFT is looked at.
 *
 * Checks, in order: kelStatusSize where fftLen or nFilter is below 1; kelStatusNoMemory as above.
 * @{ */
KELS_API KelStatus kelsEmptyFBankInitAlloc_32f(KelFilterBank_32f** ppFBank, int* pFFTOrder, int fftLen, int nFilter,
                                               int flag);
KELS_API KelStatus kelsEmptyFBankInitAlloc_16s(KelFilterBank_16s** ppFBank, int* pFFTOrder, int fftLen, int nFilter,
                                               int flag);
/** @} */

/** @name Banks of the Aurora front-end
 * Fixed banks of the distributed-speech-recognition front-end, for spectra of 65 bins that are 62.5 Hz apart (fftLen2
 * = 128 at 8000 Hz).  Weights fall linearly to 0 at the neighbours' centres, and each filter's weights add up to 1 (in
 * Q14 up to their rounding), so that a result is the weighted mean of its bins.
 *
 * Low: 25 filters on the points 0 .. 24 that are equally spaced in mel from 1 Hz to 4000 Hz and rounded to bins (0 1 2
 * 3 4 5 7 8 10 12 14 16 18 20 23 26 29 32 36 39 44 48 53 58 64).  The first and the last filter have one side only.
 * This is the mel warping of the Wiener filter in ETSI ES 202 050, 5.1.5, with its marginal bands.
 *
 * High: 3 filters for the upper half, 4000 .. 8000 Hz, of speech at 16 kHz that was brought down to 8000 Hz in rising
 * order of frequency.  Bin i stands for 4000 + 62.5 i Hz.  The tops, bins 13, 27 and 44, divide that range into four
 * parts that are equal in mel, and the outermost corners are its ends.
 *
 * Checks, in order: kelStatusNullPtr; kelStatusNoMemory.
 * @{ */
KELS_API KelStatus kelsMelFBankInitAllocLow_Aurora_16s(KelFilterBank_16s** ppFBank);
KELS_API KelStatus kelsMelFBankInitAllocLow_Aurora_32f(KelFilterBank_32f** ppFBank);
KELS_API KelStatus kelsMelFBankInitAllocHigh_Aurora_16s(KelFilterBank_16s** ppFBank);
KELS_API KelStatus kelsMelFBankInitAllocHigh_Aurora_32f(KelFilterBank_32f** ppFBank);
/** @} */

/** @name Fixed-point bank in the caller's memory
 * GetSize tells the number of bytes, Init builds the bank in them.  Frequencies are whole hertz, melMul and melDiv are
 * in Q15, and flag must be kelFBankWeightBin.  The corners are those of the mel bank in Q22 arithmetic, rounded to
 * bins and kept within the spectrum; weights are truncated to Q30.
 *
 * pBuffer may have any alignment: the bank begins at its first multiple of 32.  kelsEvalFBank_32s_Sfs takes pBuffer
 * itself.  The size is the same on every ABI; with n = nFilter and r = 2n + 4 it is
 *
 *     4n + 96 + 18r + 2r (fftLen2 / 2 + 9) + 2r fftLen2 / 2 + 64
 *
 * Checks of GetSize, in order:
 * 1. kelStatusNullPtr: pSize is null.
 * 2. kelStatusSize: nFilter is below 1, or fftLen lies outside 32 .. 8192.
 * 3. kelStatusFBankFlag: flag is not kelFBankWeightBin.
 * 4. kelStatusSize: nFilter is above fftLen2 / 2.
 *
 * Checks of Init, in order:
 * 1. kelStatusNullPtr: pBuffer or pFFTOrder is null.
 * 2. kelStatusSize: nFilter or highFreq is below 1, or fftLen lies outside 32 .. 8192.
 * 3. kelStatusFBankFlag: flag is not kelFBankWeightBin.
 * 4. kelStatusSize: sampFreq lies outside 1 .. 48000, or lowFreq is below 0.  Here 0 Hz is allowed.
 * 5. kelStatusFBankFreq: highFreq is not above lowFreq, or is above 24000.
 * 6. kelStatusBadArg: melDiv lies outside 0x80001 .. 0x0FFFFFFF, or melMul outside 0x80001 .. 0x3FFFFFFF.
 * 7. kelStatusSize: nFilter is above fftLen2 / 2 + 1, one more than GetSize takes.
 * @{ */
KELS_API KelStatus kelsMelFBankGetSize_32s(int fftLen, int nFilter, int flag, int* pSize);
KELS_API KelStatus kelsMelFBankInit_32s(Kel8u* pBuffer, int* pFFTOrder, int fftLen, int sampFreq, int lowFreq,
                                        int highFreq, int nFilter, int melMul, int melDiv, int flag);
/** @} */

/** @name Evaluation
 * nFilter results from fftLen2 / 2 + 1 bins, or from fftLen2 samples where the bank owns an FFT.  Of a given spectrum
 * no bin behind the last centre is read.
 *
 * - _32f sums in single precision.  Samples: the magnitudes of their unscaled FFT are weighted.
 * - _16s_Sfs and _16s32s_Sfs give sum * 2^-(scaleFactor + 14), rounded toward minus infinity and saturated: the 14
 *   takes off the fraction bits of the weights, so that scaleFactor counts from the scale of the spectrum.  Samples:
 *   the transform and the magnitude keep three fraction bits each, saturating at 32 bits, which the shift takes off
 *   again.
 * - _32s_Sfs sums (weight * S[i]) >> 8 and multiplies by 2^-scaleFactor, toward minus infinity and saturated to 64
 *   bits; then it shifts right by 22 with ties upward, and saturates.
 *
 * No form allocates, unless it owns an FFT of 2^29 samples or more.
 *
 * Checks, in order:
 * 1. kelStatusNullPtr: a pointer is null, or the bank was freed or is unfinished.
 * 2. kelStatusFBankState: the centres are not yet set.
 * 3. The status of the FFT.
 *
 * Checks of _32s_Sfs, in order: kelStatusNullPtr; kelStatusBadArg where scaleFactor lies outside -31 .. 31.
 * @{ */
KELS_API KelStatus kelsEvalFBank_32f(const Kel32f* pSrc, Kel32f* pDst, KelFilterBank_32f* pFBank);
KELS_API KelStatus kelsEvalFBank_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, KelFilterBank_16s* pFBank, int scaleFactor);
KELS_API KelStatus kelsEvalFBank_16s32s_Sfs(const Kel16s* pSrc, Kel32s* pDst, KelFilterBank_16s* pFBank,
                                            int scaleFactor);
KELS_API KelStatus kelsEvalFBank_32s_Sfs(const Kel32s* pSrc, Kel32s* pDst, KelFilterBank_32s* pFBank, int scaleFactor);
/** @} */

/** @name Centres
 * The nFilter + 2 centres, in bins.  Setting them makes an empty bank usable and leaves all weights as they are.
 *
 * Checks, in order:
 * 1. kelStatusNullPtr: a pointer is null, or the bank was freed or is unfinished.
 * 2. kelStatusFBankState, of Get: the centres are not yet set.
 * 3. kelStatusFBankState: centres begin below 0, descend anywhere, or end above fftLen2 / 2.
 * @{ */
KELS_API KelStatus kelsFBankGetCenters_32f(const KelFilterBank_32f* pFBank, int* pCenters);
KELS_API KelStatus kelsFBankGetCenters_16s(const KelFilterBank_16s* pFBank, int* pCenters);
KELS_API KelStatus kelsFBankSetCenters_32f(KelFilterBank_32f* pFBank, const int* pCenters);
KELS_API KelStatus kelsFBankSetCenters_16s(KelFilterBank_16s* pFBank, const int* pCenters);
/** @} */

/** @name Weights
 * The weights of filter fIdx, which is counted from 1 here, as floats: centres[fIdx] - centres[fIdx - 1] + 1 of the
 * rising side, then centres[fIdx + 1] - centres[fIdx] of the falling side.  Get also takes fIdx = nFilter + 1, a spare
 * filter of zeros that has a rising side only.  The 16-bit form converts from and to Q14, to the nearest with ties to
 * even, and saturates.
 *
 * Checks, in order:
 * 1. kelStatusNullPtr: a pointer is null, or the bank was freed or is unfinished.
 * 2. kelStatusFBankState: the centres are not yet set.
 * 3. kelStatusSize: fIdx lies outside 1 .. nFilter (Get: nFilter + 1).
 * @{ */
KELS_API KelStatus kelsFBankGetCoeffs_32f(const KelFilterBank_32f* pFBank, int fIdx, Kel32f* pCoeffs);
KELS_API KelStatus kelsFBankGetCoeffs_16s(const KelFilterBank_16s* pFBank, int fIdx, Kel32f* pCoeffs);
KELS_API KelStatus kelsFBankSetCoeffs_32f(KelFilterBank_32f* pFBank, int fIdx, const Kel32f* pCoeffs);
KELS_API KelStatus kelsFBankSetCoeffs_16s(KelFilterBank_16s* pFBank, int fIdx, const Kel32f* pCoeffs);
/** @} */

/** @name Release
 * Releases what the bank owns but not the block of the bank itself, which takes kelsFree(pFBank) behind this call.
 * Calling it twice does no harm.
 *
 * Check: kelStatusNullPtr.
 * @{ */
KELS_API KelStatus kelsFBankFree_32f(KelFilterBank_32f* pFBank);
KELS_API KelStatus kelsFBankFree_16s(KelFilterBank_16s* pFBank);
/** @} */

/** @name Frequencies and mel
 * LinearToMel gives ln(src * (1 / melDiv) + 1) * melMul, MelToLinear gives (exp(src * (1 / melMul)) - 1) * melDiv,
 * both in single precision.  pDst may be pSrc.
 *
 * Checks, in order: kelStatusNullPtr; kelStatusSize where len is below 1, or melMul or melDiv is not above 0.
 * @{ */
KELS_API KelStatus kelsLinearToMel_32f(const Kel32f* pSrc, Kel32f* pDst, int len, Kel32f melMul, Kel32f melDiv);
KELS_API KelStatus kelsMelToLinear_32f(const Kel32f* pSrc, Kel32f* pDst, int len, Kel32f melMul, Kel32f melDiv);
/** @} */

#ifdef __cplusplus
}
#endif

/** @} */

#endif
