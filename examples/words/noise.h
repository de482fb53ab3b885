// Recordings as they would sound where it is noisy, for training and for measurements.
#ifndef WORDS_NOISE_H
#define WORDS_NOISE_H

#include <span>
#include <string_view>

#include "audio.h"

namespace words {

enum class NoiseKind { none, white, car, speech, babble };
inline constexpr NoiseKind kNoiseKinds[] = {NoiseKind::white, NoiseKind::car, NoiseKind::speech, NoiseKind::babble};
std::string_view nameOf(NoiseKind kind);

struct Surroundings {
    NoiseKind kind = NoiseKind::none;
    float snrDb = 20;            // mean power of the recording against that of the noise
    float secondsBefore = 0.5F;  // of noise alone
    float secondsAfter = 0.5F;
    unsigned draw = 0;  // another one is other noise
};

// Samples begin .. end - 1 are those of the recording.
struct NoisyRecording {
    Recording recording;
    int begin = 0;
    int end = 0;
};

// White: normally distributed samples.  Car: the same, falling by 12 dB an octave from 250 Hz on.  Speech: the same
// with the long-term spectrum of the recording.  Babble: six of the talkers at a time, each one word after the other;
// without talkers the recording itself takes their part, half of the time backwards.
NoisyRecording withNoise(const Recording& clean, const Surroundings& surroundings,
                         std::span<const Recording* const> talkers = {});

}  // namespace words

#endif
