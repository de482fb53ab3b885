// A picture of a recording's pitch: the waveform, and the track over the similarity that it was found in.
#ifndef PITCH_PICTURE_H
#define PITCH_PICTURE_H

#include <string>
#include <vector>

#include "tracker.h"

namespace pitch {

struct Wave {
    std::vector<float> samples;
    int rate;
};

// The bytes of its file, an SVG or a PNG; throws std::runtime_error.
std::string pictureOf(const Wave& wave, const std::vector<Frame>& frames, const Range& range, const std::string& title,
                      bool svg);

}  // namespace pitch

#endif
