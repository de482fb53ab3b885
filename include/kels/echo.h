/** @defgroup echo Acoustic echo cancellation
 *
 * Takes out of a microphone's signal what a loudspeaker plays: the blocks of an adaptive filter that learns the room.
 *
 * @code{.c}
 * // Blocks of 128 samples at 8 kHz, a filter of 4 * 128 samples; the room is one echo 100 samples late.
 * enum { N = 128, kBins = N + 1, kParts = 4 };
 * static Kel32fc X[kParts][kBins], H[kParts][kBins], Y[kBins], E[kBins];
 * static Kel32f P[kParts][kBins], S[kParts][kBins], near[kBins], ref[2 * N], mic[N], frame[2 * N], err[2 * N];
 * Kel32fc *x[kParts], *h[kParts];
 * Kel32f *var[kParts], *step[kParts], prior[kParts], factor, forget, heard = 0, left = 0;
 * Kel32fc* oldest;
 * int block, i, p, bytes, flag;
 * KelFFTSpec_R_32f* fft;
 * KelAECState_32f* controller;
 * kelsFFTInitAlloc_R_32f(&fft, 8, kelFftDivInvByN, kelHintNone);
 * kelsControllerGetSizeAEC_32f(N, &bytes);
 * controller = (KelAECState_32f*)kelsMalloc_8u(bytes);
 * kelsControllerInitAEC_32f(8000, N, controller);
 * for (p = 0; p < kParts; ++p) {
 *     x[p] = X[p], h[p] = H[p], var[p] = P[p], step[p] = S[p];
 *     prior[p] = 0.47f * expf(-40.0f * p * N / 8000);
 *     kelsSet_32f(prior[p], P[p], kBins);
 * }
 * for (block = 0; block < 80; ++block) {
 *     heard = left = 0;
 *     for (i = 0; i < N; ++i) {
 *         ref[i] = ref[N + i];
 *         ref[N + i] = sinf(0.01f * (block * N + i) * (block * N + i));
 *     }
 *     for (i = 0; i < N; ++i) mic[i] = 0.5f * ref[N + i - 100];
 *     // The new spectrum of the reference takes the oldest row.
 *     for (oldest = x[kParts - 1], p = kParts - 1; p > 0; --p) x[p] = x[p - 1];
 *     x[0] = oldest;
 *     kelsFFTFwd_RToCCS_32f(ref, &x[0]->re, fft, NULL);
 *     // What the filter predicts is taken away: err holds N zeros and the cleaned block.
 *     kelsFilterAECNLMS_32fc((const Kel32fc**)x, (const Kel32fc**)h, Y, kBins, kParts);
 *     Y[0].im = Y[0].re;  // from here on a CCS spectrum is a Pack spectrum
 *     kelsFFTInv_PackToR_32f(&Y[0].im, frame, fft, NULL);
 *     for (i = 0; i < N; ++i) err[N + i] = mic[i] - frame[N + i];
 *     kelsFFTFwd_RToCCS_32f(err, &E[0].re, fft, NULL);
 *     // What is left teaches the filter.
 *     kelsControllerUpdateAEC_32f(ref + N, mic, err + N, controller, &factor, &forget, &flag);
 *     for (p = 0; p < kParts && flag == kelAECPathChange; ++p) kelsSet_32f(prior[p], P[p], kBins);
 *     kelsStepSizeUpdateAECNLMS_32f((const Kel32fc**)x, (const Kel32fc**)h, E, near, var, step, kBins, kParts, factor,
 *                                   forget, 0.75f);
 *     kelsCoefUpdateAECNLMS_32fc_I((const Kel32fc**)x, E, (const Kel32f**)step, h, kBins, kParts);
 *     for (p = 0; p < kParts; ++p) {  // a partition holds N samples of the room and N zeros
 *         h[p][0].im = h[p][0].re;
 *         kelsFFTInv_PackToR_32f(&h[p][0].im, frame, fft, NULL);
 *         kelsZero_32f(frame + N, N);
 *         kelsFFTFwd_RToCCS_32f(frame, &h[p]->re, fft, NULL);
 *     }
 *     for (i = 0; i < N; ++i) heard += mic[i] * mic[i], left += err[N + i] * err[N + i];
 * }
 * printf("echo is down by %.0f dB\n", 10 * log10(heard / (left + 1e-12)));
 * kelsFFTFree_R_32f(fft);
 * kelsFree(controller);
 * @endcode
 *
 * ## What it computes
 * A far-end signal x, the *reference*, goes to the loudspeaker. The microphone's signal d holds its echo, and near-end
 * speech and noise besides. A filter predicts the echo, y. What is left is the error e = d - y: it is the cleaned
 * signal, and it drives the filter.
 *
 * The filter works block by block in the frequency domain. A block has N samples, transforms have 2 N, and the filter
 * is cut into partitions of N samples. Every bin of every partition has a *variance*, the expected square of what its
 * coefficient still lacks. Step sizes follow from the variances as in a Kalman filter with a diagonal state: large
 * where a coefficient is unknown and the reference stands above the near end, small elsewhere. A controller in the time
 * domain watches x, d and e for double talk and for changes of the echo path.
 *
 * For each block, as in the example:
 * -# Rotate the pointers to the reference's rows. Row 0 becomes the transform of the last block and the new one.
 * -# The filter predicts a spectrum. The last N samples of its inverse transform are y; the first N are of no use.
 * -# e = d - y, and its transform with N zeros in front.
 * -# The controller gives the flag, factor and forget. On kelAECPathChange all variances return to their priors.
 * -# Step sizes, then coefficients.
 * -# Each partition is transformed back, its last N samples are cleared, and it is transformed again.
 *
 * The last step may take one partition a block in turn: that saves most of the transforms and costs some dB.
 *
 * At the start all rows, the last block and near are 0, and the variances have their priors: w_p / sum of w for all
 * bins of partition p, where w_p = exp(-40 p N / sampleRate). They suit echoes of -20 to +5 dB of the reference; weaker
 * ones take a few seconds more. Where the delay may be 100 ms, three times those with exp(-20 ...) begin faster.
 *
 * | Choice | Usual value |
 * |---|---|
 * | N | 128 at 8 kHz, 256 at 16 kHz, 512 at 48 kHz |
 * | numPart | what covers 128 ms in a small room and 256 ms in a large one, plus the delay between the two streams |
 * | smooth | 0.87^r, where r = 125 N / sampleRate |
 *
 * A block leaves as soon as it is complete: nothing but collecting its N samples costs time.
 *
 * A microphone that is muted to exact zeros tells the filter that there is no echo, and leaves it without variance.
 * Skip the steps from the controller on for blocks in which all of d is 0.
 *
 * ## Shapes and units
 * Spectra have len = N + 1 bins: those of kelsFFTFwd_RToCCS_32f without a factor, read as complex values. Inverse
 * transforms divide (kelFftDivInvByN). Rows come as arrays of numPart pointers, partition 0 first, and may lie
 * anywhere. The pointers within the arrays must be valid; they are not checked. Reference rows may repeat. Otherwise
 * destinations must not overlap sources or each other.
 *
 * | Array | Contents | 32s form |
 * |---|---|---|
 * | reference rows X_p | transform of the pair of blocks that ended p blocks ago | in one unit, unscaled |
 * | coefficient rows H_p | transform of samples p N .. (p + 1) N - 1 of the room's response and N zeros | Q27 |
 * | variance rows P_p | expected squared error of H_p, not negative | Q27, saturated at 2147483647 |
 * | error E | transform of N zeros and the N samples of e | in the unit of X |
 * | near Z | smoothed power of E | the rounded root of Z, in the unit of E |
 * | step rows S_p | step sizes, from the step function to the coefficient update | S_p W in Q26, saturated |
 *
 * W is the reference's power, the sum over q of |X_q|^2.
 *
 * In the integer chain spectra come from kelsFFTFwd_RToCCS_16s32s_Sfs with scaleFactor 0. Inverse transforms run in
 * float, between kelsConvert_32s32f and kelsConvert_32f32s_Sfs; the unit Q27 passes through them. A variance whose
 * change per block is below half a unit stands still, and so does a near below about 4: do not scale transforms of
 * 16-bit samples down.
 *
 * ## Ownership
 * All arrays are the caller's. So is the controller's state: memory of the size that GetSize tells, from an 8-byte
 * boundary on. It holds no pointers, so a copy of its bytes goes on as the original would. Nothing else is kept between
 * calls.
 *
 * ## Accuracy
 * With eps = 2^-24 and as long as no product leaves the normal range of Kel32f:
 * - Filter, float: within (2 numPart + 2) eps times the sum of the magnitudes of the real products of the part.
 * - Step sizes, float: S and Z within (2 numPart + 24) eps of themselves, P within as much of the sum of the magnitudes
 *   of its two terms.
 * - Coefficients, float: within 6 eps times the sum of the magnitudes of the terms of the part.
 * - Integer forms: the formulas in double precision, rounded to the nearest integer with ties to even, saturated. A
 *   double's error may move a rounding by one unit.
 * - The controller computes in double precision, and decides alike in both forms on the same numbers.
 *
 * NaN and infinity spread as the formulas give. A controller that has met one must be initialised again.
 *
 * ## Checks, in order
 * | Functions | Statuses |
 * |---|---|
 * | ControllerGetSize | kelStatusNullPtr; kelStatusOutOfRange: len outside 32..4096 |
 * | ControllerInit | kelStatusNullPtr; kelStatusOutOfRange: sampleRate outside 8000..48000, or len outside 32..4096 |
 * | ControllerUpdate | kelStatusNullPtr |
 * | Filter, CoefUpdate | kelStatusNullPtr; kelStatusLengthRange: len outside 1..4097; kelStatusSize: numPart below 1 |
 * | StepSizeUpdate | the same; then kelStatusBadArg: factor, forget or smooth outside 0..1 or NaN |
 *
 * ## Threads
 * One controller, like the arrays of one filter, serves one stream at a time.
 *
 * ## Source
 * J.-S. Soo, K. K. Pang, Multidelay block frequency domain adaptive filter, IEEE Trans. ASSP 38 (1990); G. Enzner, P.
 * Vary, Frequency-domain adaptive Kalman filter for acoustic echo control in hands-free telephones, Signal Processing
 * 86 (2006); F. Kuech, E. Mabande, G. Enzner, State-space architecture of the partitioned-block-based acoustic echo
 * controller, ICASSP 2014; J. Benesty, D. R. Morgan, J. H. Cho, A new class of doubletalk detectors based on
 * cross-correlation, IEEE Trans. SAP 8 (2000). The slower fall of the variances, the return to the priors and the
 * constants are this library's.
 * @{
 */
#ifndef KELS_ECHO_H
#define KELS_ECHO_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** What the controller finds in a block. */
enum {
    kelAECNoReference = 0, /**< the far end is silent: without a reference step sizes vanish by themselves */
    kelAECSingleTalk = 1,  /**< the far end alone is heard */
    kelAECDoubleTalk = 2,  /**< the near end is heard, too: step sizes shrink with the error's power */
    kelAECPathChange = 3 /**< the echo path has changed: return the variances to their priors, keep the coefficients */
};

/** State of a controller; opaque. */
typedef struct KelAECState_32f KelAECState_32f;
typedef struct KelAECState_32s KelAECState_32s;

/** @name Controller
 * GetSize tells the bytes of a state for blocks of len samples (N, not bins), a multiple of 8. Init starts it for a
 * stream.
 *
 * Update takes the new blocks of reference, microphone and error, of N samples each, and gives the flag and two scalars
 * for the step sizes. With r = 125 N / sampleRate:
 *
 * | Flag | *pFactor | *pForget |
 * |---|---|---|
 * | kelAECNoReference | 1 | 0 |
 * | kelAECSingleTalk | 1 | 1 - 0.9998^r |
 * | kelAECDoubleTalk | 0.5 | 0 |
 * | kelAECPathChange | 1 | 0 |
 *
 * There is no reference while its power lies 60 dB below what it has been; the memory of that halves in 8 s. The path
 * has changed when error and predicted echo have been correlated for 48 ms; then nothing is taken for a change for half
 * a second. Otherwise there is double talk when the error's power exceeds four times what residual echo and noise
 * explain.
 * @{ */
KELS_API KelStatus kelsControllerGetSizeAEC_32f(int len, int* pSize);
KELS_API KelStatus kelsControllerGetSizeAEC_32s(int len, int* pSize);
KELS_API KelStatus kelsControllerInitAEC_32f(int sampleRate, int len, KelAECState_32f* pState);
KELS_API KelStatus kelsControllerInitAEC_32s(int sampleRate, int len, KelAECState_32s* pState);
KELS_API KelStatus kelsControllerUpdateAEC_32f(const Kel32f* pSrcRef, const Kel32f* pSrcMic, const Kel32f* pSrcErr,
                                               KelAECState_32f* pState, Kel32f* pFactor, Kel32f* pForget, int* pFlag);
KELS_API KelStatus kelsControllerUpdateAEC_32s(const Kel32s* pSrcRef, const Kel32s* pSrcMic, const Kel32s* pSrcErr,
                                               KelAECState_32s* pState, Kel32f* pFactor, Kel32f* pForget, int* pFlag);
/** @} */

/** @name Filter
 * The spectrum of the predicted echo: pDst[k] = sum over p of X_p[k] H_p[k].
 * @{ */
KELS_API KelStatus kelsFilterAECNLMS_32fc(const Kel32fc** ppSrcRef, const Kel32fc** ppSrcCoef, Kel32fc* pDst, int len,
                                          int numPart);
KELS_API KelStatus kelsFilterAECNLMS_32sc(const Kel32sc** ppSrcRef, const Kel32sc** ppSrcCoef, Kel32sc* pDst, int len,
                                          int numPart);
/** @} */

/** @name Step sizes
 * With f = factor, g = forget and b = smooth, for every bin:
 *
 *     e2  = |E[k]|^2 / 2 + (|E[k-1]|^2 + |E[k+1]|^2) / 4      neighbours outside are mirrored at the border
 *     Z   = b Z + (1 - b) e2
 *     D   = (sum over p of P_p |X_p|^2) / 2 + max(Z, e2)
 *     S_p = f P_p / D                                         0 where D is below 2^-126 (32s: where it is 0)
 *     P_p = (1 - g) (1 - S_p |X_p|^2 / 4) P_p + g |H_p|^2
 *
 * With len = 1 the only bin is its own neighbour. H_p are the coefficients before their update. forget = 1 sets P to
 * |H|^2; forget = 0 and factor = 0 leave P as it is and give steps of 0; smooth = 1 holds near.
 * @{ */
KELS_API KelStatus kelsStepSizeUpdateAECNLMS_32f(const Kel32fc** ppSrcRef, const Kel32fc** ppSrcCoef,
                                                 const Kel32fc* pSrcErr, Kel32f* pSrcDstNear, Kel32f** ppSrcDstVar,
                                                 Kel32f** ppDstStep, int len, int numPart, Kel32f factor, Kel32f forget,
                                                 Kel32f smooth);
KELS_API KelStatus kelsStepSizeUpdateAECNLMS_32s(const Kel32sc** ppSrcRef, const Kel32sc** ppSrcCoef,
                                                 const Kel32sc* pSrcErr, Kel32s* pSrcDstNear, Kel32s** ppSrcDstVar,
                                                 Kel32s** ppDstStep, int len, int numPart, Kel32f factor, Kel32f forget,
                                                 Kel32f smooth);
/** @} */

/** @name Coefficients
 * H_p[k] += S_p[k] conj(X_p[k]) E[k]. The integer form rounds the increment, leaves bins without any reference as they
 * are, and saturates.
 * @{ */
KELS_API KelStatus kelsCoefUpdateAECNLMS_32fc_I(const Kel32fc** ppSrcRef, const Kel32fc* pSrcErr,
                                                const Kel32f** ppSrcStep, Kel32fc** ppSrcDstCoef, int len, int numPart);
KELS_API KelStatus kelsCoefUpdateAECNLMS_32sc_I(const Kel32sc** ppSrcRef, const Kel32sc* pSrcErr,
                                                const Kel32s** ppSrcStep, Kel32sc** ppSrcDstCoef, int len, int numPart);
/** @} */

#ifdef __cplusplus
}
#endif

/** @} */

#endif
