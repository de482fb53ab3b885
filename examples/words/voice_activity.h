// Where in a recording somebody speaks.
#ifndef WORDS_VOICE_ACTIVITY_H
#define WORDS_VOICE_ACTIVITY_H

#include <vector>

#include "kels_objects.h"

namespace words {

// Frames begin .. end - 1.
struct FrameSpan {
    int begin = 0;
    int end = 0;
};

struct VoiceActivity {
    std::vector<bool> active;        // the frames that a detector calls speech, without hangover
    std::vector<FrameSpan> regions;  // of speech, in order; with the hangover that bridges short pauses
    // From the first to the last run of active frames that is long enough to be a sound; empty if there is none.
    FrameSpan word;
};

// The detector of the distributed speech recognition front-end on the frames of a recording.  As that expects some
// noise before anybody speaks, and a recording may begin with the word, it first hears the quietest frames of the
// recording.
class SpeechDetector {
  public:
    SpeechDetector(int rate, int frameLength, int frameStep);

    // Of a signal in the range of 16-bit audio, of at least one frame.
    VoiceActivity detect(const Vector& signal) const;

  private:
    int frameLength_;
    int frameStep_;
    int fftOrder_ = 0;
    Vector window_;
    FftSpec fft_;
    FilterBank filterBank_;
};

}  // namespace words

#endif
