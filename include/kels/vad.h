/* Voice activity detection, frame by frame, as in the advanced front-end of distributed speech recognition (ETSI
 * ES 202 050).
 *
 * Three detectors look at every frame, each against a threshold that follows the noise: the energy of the mel bank, its
 * low band, and the variance of a vector of 64 values.  Whether any of them is active goes into a history of seven frames;
 * the decision is about the oldest of them: speech if at least three frames in a row are active in the history, or while
 * one of two hangovers lasts that such runs start.  So decisions lag: none comes for the first ten frames, and those
 * that are owed at the end are fetched by Flush.
 *
 * Use.  GetBufSize, a buffer of that size at any alignment, Init; Decision once a frame; Flush until it says
 * kelVadPending; Init before the next stream.  The state is the caller's and holds all there is: copying the bytes copies
 * the detector.  One state serves one stream at a time.
 *
 * Inputs of a frame: pMel, 25 values of a mel filter bank (not their logarithms); pSpec, 64 values whose variance tells
 * speech from noise, such as the gains of a noise filter; extCount, the frames that some other detector has called active
 * in a row: from 5 on the frame is active whatever the three say.
 *
 * Thresholds follow the inputs by ratios, so that a common factor on pMel or pSpec makes no difference, but for the
 * constant 3 in the energy below: energies should be large beside it.
 *
 * 16-bit forms take integers in the scale of whatever produced them and decide exactly as the float forms do on the same
 * numbers.  The state is the same, so a stream may even change from one form to the other.
 */
#ifndef KELS_VAD_H
#define KELS_VAD_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

enum { kelVadSpeech = 1, kelVadNoise = 2, kelVadPending = 4 };

/* The contents of the 64 bytes.  To be read, say for a display, with memcpy. */
typedef struct {
    Kel16s melFlag, specFlag, varFlag; /* the detectors' answers about the last frame */
    Kel16s startTrigger;               /* energy has risen within the first frames: their noise estimate is closed */
    Kel32f meanMel;                    /* mean energy of the first frames */
    Kel32f thrSpec, thrMel, thrVar;    /* noise levels of the low band, the energy, the variance */
    Kel32f prevBand, band;             /* low-band average of the last frame; both hold the same once it is decided */
    Kel32s histIdx;                    /* where the newest entry of the history stands */
    Kel32s flushStop;                  /* -1, or histIdx at the first Flush */
    Kel32s longHang;                   /* length of the long hangover */
    Kel32s hangCount, shortCount;      /* frames that the hangovers have left */
    Kel8u history[7];                  /* 1 for an active frame */
    Kel32s frameCount;
} KelVADState_Aurora;

/* 64.  Status: null -8. */
KELS_API KelStatus kelsVADGetBufSize_Aurora_32f(int* pSize);
KELS_API KelStatus kelsVADGetBufSize_Aurora_16s(int* pSize);

/* Everything 0 but flushStop -1 and longHang 23.  Status: null -8. */
KELS_API KelStatus kelsVADInit_Aurora_32f(Kel8u* pState);
KELS_API KelStatus kelsVADInit_Aurora_16s(Kel8u* pState);

/* One frame; *pRes becomes kelVadPending for the first ten, then kelVadSpeech or kelVadNoise.
 *
 *   variance  var = mean of pSpec^2 - (mean of pSpec)^2; active above 1.65 thrVar
 *   energy    e = (sum of pMel)^2 - 3; active above 1.65 thrMel
 *   low band  b = 0.75 band + 0.25 prevBand, band the mean of pMel[1..3], prevBand that of the
 *             frame before; then prevBand becomes band; active above 3.25 thrSpec
 *
 * Each threshold is the largest value of the first 14 frames (that of the energy: until an energy exceeds 2.5 times the
 * mean so far), then a fifth of each value between 0.85 (variance) or 0.75 and 1.5 times the threshold enters it, and
 * 0.03 of each below 0.25 (variance) or not above 0.5 times it.  A run of four active frames sets the long hangover to
 * longHang, which is 23 until a run of four has come before frame 36, and 40 from then on; a run of three sets the short
 * one to 5.  They count down while the run is shorter than three, the short one only as far as 0.
 *
 * Status: a null pointer -8.
 */
KELS_API KelStatus kelsVADDecision_Aurora_32f(const Kel32f* pMel, const Kel32f* pSpec, int extCount, int* pRes,
                                              Kel8u* pState);
KELS_API KelStatus kelsVADDecision_Aurora_16s(const Kel16s* pMel, const Kel16s* pSpec, int extCount, int* pRes,
                                              Kel8u* pState);

/* One of the decisions owed after the last frame: six of them, then kelVadPending however often it is called.  Calls count
 * as frames: while there are not more than ten, the answer is kelVadPending too.  Both hangovers count down in every call
 * and may become negative.  Status: null -8.
 */
KELS_API KelStatus kelsVADFlush_Aurora_32f(int* pRes, Kel8u* pState);
KELS_API KelStatus kelsVADFlush_Aurora_16s(int* pRes, Kel8u* pState);

#ifdef __cplusplus
}
#endif

#endif
