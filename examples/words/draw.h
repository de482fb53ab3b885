// Pictures of a recording and what the front end makes of it.
#ifndef WORDS_DRAW_H
#define WORDS_DRAW_H

#include "front_end.h"

namespace words {

struct UnwritablePicture : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Whether the file's name ends in .png or .svg.
bool canDraw(const std::filesystem::path& picture);

// Waveform with voice activity, log-mel spectrogram, linear-prediction envelope and cepstra over a common time axis.
// Throws UnwritablePicture with a message that names the picture.
void drawAnalysis(const std::filesystem::path& picture, const std::string& title, const Recording& recording,
                  const FrontEnd& frontEnd, const Analysis& analysis);

}  // namespace words

#endif
