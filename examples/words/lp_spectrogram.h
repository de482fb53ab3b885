// The spectral envelope of a recording by linear prediction: formants without the pitch.
#ifndef WORDS_LP_SPECTROGRAM_H
#define WORDS_LP_SPECTROGRAM_H

#include "audio.h"
#include "front_end.h"

namespace words {

// Levels in decibels from 0 Hz (first column) to half the sample rate; a row a frame of the front end.
Matrix lpSpectrogram(const Recording& recording, const FrontEnd& frontEnd);

}  // namespace words

#endif
