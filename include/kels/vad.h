/** @defgroup vad Voice activity detection
 *
 * Tells speech from noise, frame by frame, as the advanced front-end of distributed speech recognition does.
 *
 * @code{.c}
 * unsigned char detector[64];
 * float mel[25], gains[64];
 * int decision = kelVadPending;
 * kelsVADInit_Aurora_32f(detector);
 * for (int frame = 0; frame < 40; ++frame) {
 *     for (int i = 0; i < 25; ++i) mel[i] = frame < 30 ? 100.0f : 900.0f;
 *     for (int i = 0; i < 64; ++i) gains[i] = 1.0f + 0.1f * sinf((float)(i * frame));
 *     kelsVADDecision_Aurora_32f(mel, gains, 0, &decision, detector);
 * }
 * do {
 *     kelsVADFlush_Aurora_32f(&decision, detector);
 * } while (decision != kelVadPending);
 * @endcode
 *
 * ## What it computes
 * Three detectors look at every frame, each against a threshold that follows the noise: the energy of the mel bank,
 * its low band, and the variance of a vector of 64 values.  Whether any of them is active goes into a history of seven
 * frames.  The decision is about the oldest of them: speech if at least three frames in a row are active in the
 * history, or while one of two hangovers lasts that such runs start.
 *
 * So decisions lag: none comes for the first ten frames, and those that are owed at the end are fetched by Flush.
 *
 * ## Shapes and units
 * The inputs of a frame are
 * - pMel, 25 values of a mel filter bank, not their logarithms;
 * - pSpec, 64 values whose variance tells speech from noise, such as the gains of a noise filter;
 * - extCount, the number of frames that some other detector has called active in a row.  From 5 on the frame is active
 *   whatever the three detectors say.
 *
 * Thresholds follow the inputs by ratios.  A common factor on pMel or pSpec makes no difference, but for the constant
 * 3 in the energy below: energies should be large beside it.
 *
 * The 16-bit forms take integers in the scale of whatever produced them, and decide exactly as the float forms do on
 * the same numbers.  The state is the same, so a stream may even change from one form to the other.
 *
 * ## Ownership
 * The state is the caller's and holds all there is: copying the bytes copies the detector.  Use it so: GetBufSize, a
 * buffer of that size at any alignment, Init; Decision once a frame; Flush until it says kelVadPending; Init before
 * the next stream.
 *
 * ## Accuracy
 * Sums and comparisons are in double precision, thresholds are stored in single precision.
 *
 * ## Checks, in order
 * kelStatusNullPtr, where a pointer is null, is the only one.
 *
 * ## Threads
 * One state serves one stream at a time.
 *
 * ## Source
 * ETSI ES 202 050, advanced front-end feature extraction.
 * @{
 */
#ifndef KELS_VAD_H
#define KELS_VAD_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Decisions.  Pending: there is none yet, or none is left to flush. */
enum { kelVadSpeech = 1, kelVadNoise = 2, kelVadPending = 4 };

/** The contents of the state, to be read with memcpy, say for a display. */
typedef struct {
    Kel16s melFlag, specFlag, varFlag; /**< answers about the last frame: of the energy, the low band, the variance */
    Kel16s startTrigger;               /**< energy has risen within the first frames: their noise estimate is closed */
    Kel32f meanMel;                    /**< mean energy of the first frames */
    Kel32f thrSpec, thrMel, thrVar;    /**< noise levels of the low band, the energy, the variance */
    Kel32f prevBand, band;             /**< low-band average of the last frame: both hold it after a decision */
    Kel32s histIdx;                    /**< where the newest entry of the history stands */
    Kel32s flushStop;                  /**< -1, or histIdx at the first Flush */
    Kel32s longHang;                   /**< length of the long hangover */
    Kel32s hangCount, shortCount;      /**< frames that the hangovers have left */
    Kel8u history[7];                  /**< 1 for an active frame */
    Kel32s frameCount;                 /**< decisions and flushes since Init */
} KelVADState_Aurora;

/** @name Size
 * *pSize becomes 64.
 * @{ */
KELS_API KelStatus kelsVADGetBufSize_Aurora_32f(int* pSize);
KELS_API KelStatus kelsVADGetBufSize_Aurora_16s(int* pSize);
/** @} */

/** @name Start of a stream
 * Everything becomes 0 but flushStop, which becomes -1, and longHang, which becomes 23.
 * @{ */
KELS_API KelStatus kelsVADInit_Aurora_32f(Kel8u* pState);
KELS_API KelStatus kelsVADInit_Aurora_16s(Kel8u* pState);
/** @} */

/** @name Decision
 * Takes one frame.  *pRes becomes kelVadPending for the first ten frames, then kelVadSpeech or kelVadNoise.
 *
 *     variance  v = mean of pSpec^2 - (mean of pSpec)^2        active above 1.65 thrVar
 *     energy    e = (sum of pMel)^2 - 3                        active above 1.65 thrMel
 *     low band  b = 0.75 band + 0.25 prevBand                  active above 3.25 thrSpec
 *
 * Here band is the mean of pMel[1 .. 3] and prevBand that of the frame before; afterwards prevBand becomes band.
 *
 * Each threshold is the largest value of the first 14 frames; that of the energy stops growing once an energy exceeds
 * 2.5 times the mean so far.  Then, in every frame, a fifth of a value enters the threshold if it lies between 0.75
 * (variance: 0.85) and 1.5 times the threshold, and 0.03 of a value that is not above 0.5 times it (variance: below
 * 0.25 times).
 *
 * A run of four active frames sets the long hangover to longHang.  That is 23 until a run of four has come before
 * frame 36, and 40 from then on.  A run of three sets the short hangover to 5.  Both count down to 0 while the run is
 * shorter than three.
 * @{ */
KELS_API KelStatus kelsVADDecision_Aurora_32f(const Kel32f* pMel, const Kel32f* pSpec, int extCount, int* pRes,
                                              Kel8u* pState);
KELS_API KelStatus kelsVADDecision_Aurora_16s(const Kel16s* pMel, const Kel16s* pSpec, int extCount, int* pRes,
                                              Kel8u* pState);
/** @} */

/** @name End of a stream
 * Gives one of the decisions that are owed after the last frame: six of them, then kelVadPending however often it is
 * called.  Calls count as frames, and while there are not more than ten the answer is kelVadPending, too.  Both
 * hangovers count down in every call and may become negative.
 * @{ */
KELS_API KelStatus kelsVADFlush_Aurora_32f(int* pRes, Kel8u* pState);
KELS_API KelStatus kelsVADFlush_Aurora_16s(int* pRes, Kel8u* pState);
/** @} */

#ifdef __cplusplus
}
#endif

/** @} */

#endif
