/* Mel filter banks: from a magnitude (or power) spectrum, or from the samples of a frame, to band energies.
 *
 * A bank holds nFilter overlapping triangles over the bins of a spectrum.  Filter m (from 0) begins at bin centres[m],
 * has its top at centres[m + 1] and ends at centres[m + 2], so that neighbours overlap by half; centres[] has
 * nFilter + 2 entries, does not descend, and stays within 0 .. fftLen2 / 2.  One call gives nFilter sums
 *
 *   pDst[m] = sum over the bins i of filter m of weight(m, i) * S[i].
 *
 * Three forms of the same object:
 *   KelFilterBank_32f   float weights;
 *   KelFilterBank_16s   weights in Q14 (16384 = 1.0) for 16-bit spectra or samples;
 *   KelFilterBank_32s   weights in Q30, built by integer arithmetic alone in the caller's memory.
 *
 * fftLen is rounded up to the power of two fftLen2 = 2^fftOrder, at least 2; the spectrum has fftLen2 / 2 + 1 bins.
 *
 * The mel scale is mel(f) = melMul * ln(1 + f / melDiv); melMul = 1127, melDiv = 700 gives the usual scale
 * (O'Shaughnessy, Speech Communication, 1987).  Filter banks of this kind: Davis and Mermelstein, IEEE Trans. ASSP
 * 28(4), 1980.
 *
 * Fields of KelFilterBank_32f and _16s, in order: centres, rising, falling (weights up to and with the top, and after
 * it), flag, fftLen2, fftOrder, nFilter, nLinFilter, melMul, melDiv, ready (one byte), fftSpec, fftBuf; _16s:
 * weightShift (14).  Callers go through the functions below.
 *
 * One bank may be evaluated by several threads at once unless it transforms samples, which goes through its own buffer.
 */
#ifndef KELS_FBANK_H
#define KELS_FBANK_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct KelFilterBank_32f KelFilterBank_32f;
typedef struct KelFilterBank_16s KelFilterBank_16s;
typedef struct KelFilterBank_32s KelFilterBank_32s;

/* Construction flags: exactly one of the first two, and the third where wanted.
 *   kelFBankWeightMel  Corners are truncated to bins.  Weights are proportional to the distance in mel between the bin
 *                      and the unrounded corner; bin centres[m] itself has weight 0.
 *   kelFBankWeightBin  Corners are rounded to the nearest bin, ties to even.  With lo, top, hi for the three corners,
 *                      bin i weighs (i - lo + 1) / (top - lo + 1) up to the top and (hi + 1 - i) / (hi - top + 1) after
 *                      it: the lower corner itself weighs 1 / (top - lo + 1), not 0.
 *   kelFBankOwnFFT     The bank owns a real FFT: evaluation takes fftLen2 samples in place of a spectrum.
 */
enum { kelFBankWeightMel = 1, kelFBankWeightBin = 2, kelFBankOwnFFT = 4 };

/* Mel bank.  The nFilter + 2 corners are equally spaced in mel from lowFreq to highFreq (in Hz, both included),
 * computed in single precision:
 *   mel[k]    = k * (mel(highFreq) - mel(lowFreq)) / (nFilter + 1) + mel(lowFreq)
 *   corner[k] = (exp(mel[k] / melMul) - 1) * (fftLen2 / sampFreq * melDiv), in bins.
 * Corners that the parameters put elsewhere are moved into 0 .. fftLen2 / 2 and never descend.  _16s weights are
 * truncated to Q14 with kelFBankWeightBin and rounded to the nearest with kelFBankWeightMel.
 *
 * *pFFTOrder receives fftOrder.  The bank belongs to the caller, who ends it with kelsFBankFree_*.
 * ppFBank and pFFTOrder are not tested for null.
 * Statuses: fftLen or nFilter below 1 (-6); sampFreq not above 0 (-6); lowFreq not above 0 (-6), 0 Hz included;
 * lowFreq above highFreq (-71), equality is allowed; highFreq above sampFreq / 2 (-71); flag (-70); out of memory, or
 * fftLen above 2^30 (-9).  NaN fails the test that it meets.  With -9, *ppFBank holds null or an unfinished bank, which
 * kelsFBankFree_* takes.
 */
KELS_API KelStatus kelsMelFBankInitAlloc_32f(KelFilterBank_32f** ppFBank, int* pFFTOrder, int fftLen, Kel32f sampFreq,
                                             Kel32f lowFreq, Kel32f highFreq, int nFilter, Kel32f melMul, Kel32f melDiv,
                                             int flag);
KELS_API KelStatus kelsMelFBankInitAlloc_16s(KelFilterBank_16s** ppFBank, int* pFFTOrder, int fftLen, Kel32f sampFreq,
                                             Kel32f lowFreq, Kel32f highFreq, int nFilter, Kel32f melMul, Kel32f melDiv,
                                             int flag);

/* Bank of nLinFilter linearly spaced filters followed by mel-spaced ones.  Corners 0 .. nLinFilter are equally spaced
 * in Hz from lowFreq to highLinFreq; from corner nLinFilter on they are equally spaced in mel up to highFreq.  With
 * nLinFilter = nFilter all nFilter + 2 corners are equally spaced from lowFreq to highLinFreq.  With kelFBankWeightMel
 * the filters whose top is one of the linear corners are weighted by the distance in bins (corners still truncated).
 * Otherwise as the mel bank.
 * Statuses: fftLen or nFilter below 1 (-6); sampFreq or lowFreq not above 0, nLinFilter outside 1 .. nFilter (-6);
 * lowFreq above highLinFreq (-71); highLinFreq above highFreq (-71); highFreq above sampFreq / 2 (-71); flag (-70);
 * memory as above (-9).
 */
KELS_API KelStatus kelsMelLinFBankInitAlloc_32f(KelFilterBank_32f** ppFBank, int* pFFTOrder, int fftLen,
                                                Kel32f sampFreq, Kel32f lowFreq, Kel32f highFreq, int nFilter,
                                                Kel32f highLinFreq, int nLinFilter, Kel32f melMul, Kel32f melDiv,
                                                int flag);
KELS_API KelStatus kelsMelLinFBankInitAlloc_16s(KelFilterBank_16s** ppFBank, int* pFFTOrder, int fftLen,
                                                Kel32f sampFreq, Kel32f lowFreq, Kel32f highFreq, int nFilter,
                                                Kel32f highLinFreq, int nLinFilter, Kel32f melMul, Kel32f melDiv,
                                                int flag);

/* Bank without centres and with zero weights, to be filled by kelsFBankSetCenters_* (which makes it usable) and then
 * kelsFBankSetCoeffs_*.  Of flag only kelFBankOwnFFT is looked at; melMul is 0, melDiv 1.
 * Statuses: fftLen or nFilter below 1 (-6); memory as above (-9).
 */
KELS_API KelStatus kelsEmptyFBankInitAlloc_32f(KelFilterBank_32f** ppFBank, int* pFFTOrder, int fftLen, int nFilter,
                                               int flag);
KELS_API KelStatus kelsEmptyFBankInitAlloc_16s(KelFilterBank_16s** ppFBank, int* pFFTOrder, int fftLen, int nFilter,
                                               int flag);

/* Fixed banks for the ETSI distributed-speech-recognition ("Aurora") front end: spectra of 65 bins, 62.5 Hz apart
 * (fftLen2 = 128 at 8000 Hz), given as spectra.  Weights fall linearly to 0 at the neighbours' centres and each
 * filter's weights add up to 1 (in Q14 up to rounding), so that a result is the weighted mean of its bins.
 *
 * Low band: 25 filters that stand on the points k = 0 .. 24, equally spaced in mel from 1 Hz to 4000 Hz and rounded to
 * bins (0 1 2 3 4 5 7 8 10 12 14 16 18 20 23 26 29 32 36 39 44 48 53 58 64); the first and the last are one-sided. 
 * This is the mel-warping of the Wiener filter in ETSI ES 202 050, 5.1.5, marginal bands included.
 *
 * High band: 3 filters for the upper half (4000 .. 8000 Hz) of 16 kHz speech after its decimation to 8000 Hz in rising
 * order of frequency: bin i stands for 4000 + 62.5 i Hz.  The tops divide that range into four parts that are equal in
 * mel (bins 13, 27, 44), and the outermost corners are its ends.
 *
 * Statuses: null pointer (-8); out of memory (-9), as above.
 */
KELS_API KelStatus kelsMelFBankInitAllocLow_Aurora_16s(KelFilterBank_16s** ppFBank);
KELS_API KelStatus kelsMelFBankInitAllocLow_Aurora_32f(KelFilterBank_32f** ppFBank);
KELS_API KelStatus kelsMelFBankInitAllocHigh_Aurora_16s(KelFilterBank_16s** ppFBank);
KELS_API KelStatus kelsMelFBankInitAllocHigh_Aurora_32f(KelFilterBank_32f** ppFBank);

/* Fixed-point bank in the caller's memory: the number of bytes, and the construction.  Frequencies are whole Hz, melMul
 * and melDiv are in Q15, flag must be kelFBankWeightBin.  The corners of the mel bank in Q22 arithmetic, rounded to
 * bins and kept within the spectrum; weights in Q30, truncated.  The bank begins at the first multiple of 32 in
 * pBuffer, which may have any alignment but must not move afterwards; kelsEvalFBank_32s_Sfs takes pBuffer itself. 
 * There is nothing to free.  The size is the same on every ABI:
 *   4n + 96 + 18r + 2r(fftLen2 / 2 + 9) + 2r * fftLen2 / 2 + 64, with n = nFilter and r = 2n + 4.
 *
 * Statuses of GetSize: null pSize (-8); nFilter below 1, fftLen outside 32 .. 8192 (-6); flag (-70);
 * nFilter above fftLen2 / 2 (-6).
 * Statuses of Init: null pBuffer or pFFTOrder (-8); nFilter or highFreq below 1, fftLen outside 32 .. 8192 (-6);
 * flag (-70); sampFreq outside 1 .. 48000 (-6); lowFreq below 0 (-6), here 0 Hz is allowed; highFreq not above lowFreq,
 * or above 24000 (-71); melDiv outside 0x80001 .. 0x0FFFFFFF (-5); melMul outside 0x80001 .. 0x3FFFFFFF (-5);
 * nFilter above fftLen2 / 2 + 1 (-6), one more than GetSize takes.
 */
KELS_API KelStatus kelsMelFBankGetSize_32s(int fftLen, int nFilter, int flag, int* pSize);
KELS_API KelStatus kelsMelFBankInit_32s(Kel8u* pBuffer, int* pFFTOrder, int fftLen, int sampFreq, int lowFreq,
                                        int highFreq, int nFilter, int melMul, int melDiv, int flag);

/* Evaluation: nFilter results from fftLen2 / 2 + 1 bins, or from fftLen2 samples where the bank owns an FFT.  Of a
 * given spectrum no bin after the last centre is read.
 *
 * _32f         Float sums; the order of additions is free.  Samples: the magnitudes of their unscaled FFT.
 * _16s_Sfs,    64-bit sums, times 2^-(scaleFactor + 14) toward minus infinity, then saturated: scaleFactor counts from
 * _16s32s_Sfs  the scale of the spectrum.  Samples: the transform and the magnitude keep three fraction bits each
 *              (saturating at 32 bits), which the shift takes off again.
 * _32s_Sfs     64-bit sums of (weight * S[i]) >> 8, times 2^-scaleFactor toward minus infinity (saturated to 64 bits),
 *              then shifted right by 22 with ties upward and saturated.
 *
 * No form allocates (FFTs of 2^29 samples and more do).
 *
 * Statuses: null pointer, or a bank that is freed or unfinished (-8); centres not yet set (-69); the status of the FFT.
 * _32s_Sfs: null pointer (-8); scaleFactor outside -31 .. 31 (-5).
 */
KELS_API KelStatus kelsEvalFBank_32f(const Kel32f* pSrc, Kel32f* pDst, KelFilterBank_32f* pFBank);
KELS_API KelStatus kelsEvalFBank_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, KelFilterBank_16s* pFBank, int scaleFactor);
KELS_API KelStatus kelsEvalFBank_16s32s_Sfs(const Kel16s* pSrc, Kel32s* pDst, KelFilterBank_16s* pFBank,
                                            int scaleFactor);
KELS_API KelStatus kelsEvalFBank_32s_Sfs(const Kel32s* pSrc, Kel32s* pDst, KelFilterBank_32s* pFBank, int scaleFactor);

/* The nFilter + 2 centres.  Setting them makes an empty bank usable and leaves all weights as they are.
 * Statuses: null pointer, or a bank that is freed or unfinished (-8); Get: centres not yet set (-69); centres that
 * begin below 0, descend anywhere or end above fftLen2 / 2 (-69).
 */
KELS_API KelStatus kelsFBankGetCenters_32f(const KelFilterBank_32f* pFBank, int* pCenters);
KELS_API KelStatus kelsFBankGetCenters_16s(const KelFilterBank_16s* pFBank, int* pCenters);
KELS_API KelStatus kelsFBankSetCenters_32f(KelFilterBank_32f* pFBank, const int* pCenters);
KELS_API KelStatus kelsFBankSetCenters_16s(KelFilterBank_16s* pFBank, const int* pCenters);

/* The weights of filter fIdx, counted from 1, as floats: centres[fIdx] - centres[fIdx - 1] + 1 of the rising side, then
 * centres[fIdx + 1] - centres[fIdx] of the falling side.  Get also takes fIdx = nFilter + 1, a spare filter of zeros
 * that has the rising side only; Set does not.  _16s converts from and to Q14, to the nearest, ties to even, saturated.
 * Statuses: null pointer, or a bank that is freed or unfinished (-8); centres not yet set (-69); fIdx (-6).
 */
KELS_API KelStatus kelsFBankGetCoeffs_32f(const KelFilterBank_32f* pFBank, int fIdx, Kel32f* pCoeffs);
KELS_API KelStatus kelsFBankGetCoeffs_16s(const KelFilterBank_16s* pFBank, int fIdx, Kel32f* pCoeffs);
KELS_API KelStatus kelsFBankSetCoeffs_32f(KelFilterBank_32f* pFBank, int fIdx, const Kel32f* pCoeffs);
KELS_API KelStatus kelsFBankSetCoeffs_16s(KelFilterBank_16s* pFBank, int fIdx, const Kel32f* pCoeffs);

/* Releases what the bank owns, but not the small block of the bank itself (some 50 bytes), which every function but
 * Free then answers with -8; kelsFree(pFBank) may release that too.  Takes a bank whose constructor returned -9.
 * Statuses: null pointer (-8).
 */
KELS_API KelStatus kelsFBankFree_32f(KelFilterBank_32f* pFBank);
KELS_API KelStatus kelsFBankFree_16s(KelFilterBank_16s* pFBank);

/* Frequencies to mel, ln(src * (1 / melDiv) + 1) * melMul, and back, (exp(src * (1 / melMul)) - 1) * melDiv, in single
 * precision; pDst may be pSrc.
 * Statuses: null pointer (-8); len below 1 (-6); melMul or melDiv not above 0 (-6).
 */
KELS_API KelStatus kelsLinearToMel_32f(const Kel32f* pSrc, Kel32f* pDst, int len, Kel32f melMul, Kel32f melDiv);
KELS_API KelStatus kelsMelToLinear_32f(const Kel32f* pSrc, Kel32f* pDst, int len, Kel32f melMul, Kel32f melDiv);

#ifdef __cplusplus
}
#endif

#endif
