// Recordings through the Aurora front end.
#ifndef WORDS_NOISE_REDUCTION_H
#define WORDS_NOISE_REDUCTION_H

#include "audio.h"
#include "kels_objects.h"

namespace words {

struct Denoised {
    Recording recording;  // at 8 kHz
    Matrix features;      // 39 a frame of 25 ms, every 10 ms
};

// Of 8 kHz at least; other rates than 8 and 16 kHz are resampled.  As the front end expects some noise before anybody
// speaks, and a recording may begin with the word, it first hears the quietest stretch of the recording for a while.
Denoised reduceNoise(const Recording& recording, float warp = 1);

}  // namespace words

#endif
