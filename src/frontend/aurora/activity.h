// The two energy detectors: a level that follows the noise, and a flag with hangover.
#pragma once

#include <cmath>
#include <cstddef>

#include "frontend/aurora/bounds.h"
#include "frontend/aurora/sums.h"
#include "kels/aurora.h"

namespace kels::aurora {

inline constexpr Kel32s kLearning = 10;     // levels are plain means before this frame
inline constexpr Kel32s kFirstDecided = 5;  // the frames before are noise
inline constexpr Kel32s kLongSpeech = 5;    // so many frames of speech in a row earn a hangover
inline constexpr Kel32s kHangOver = 15;

// The share of a new value in a level: in the mean of the first frames its part, later one of two by its side.
inline Kel64f shareOf(Kel64f value, Kel64f level, Kel32s frame, Kel64f falling, Kel64f rising) {
    if (frame < kLearning) return 1.0 / frame;
    return value < level ? falling : rising;
}

// Takes the answer for one frame.
template <class State>
void decide(State& s, bool loud) {
    if (loud) {
        s.vadFlag = 1;
        countUp(s.speechCount);
        return;
    }
    if (s.speechCount >= kLongSpeech) s.hangOver = kHangOver;
    s.speechCount = 0;
    s.vadFlag = s.hangOver != 0 ? 1 : 0;
    if (s.hangOver != 0) --s.hangOver;
}

// One shift of samples for the noise estimate.  Levels are in sixteenths of 3 dB.
template <class T>
void hearShift(KelVADNestState_Aurora& s, const T* src, std::size_t len) {
    constexpr Kel64f kLeastEnergy = 64, kFollowed = 20, kLoud = 15, kLeastMean = 80;
    countUp(s.frameCount);
    const Kel64f energy = notBelow(energyOf(src, len), 0.0);
    const Kel64f level = 0.5 + 16 * std::log2((kLeastEnergy + energy) / kLeastEnergy);
    const Kel64f mean = s.meanEn;
    if (level - mean < kFollowed || s.frameCount < kLearning) {
        const Kel64f share = shareOf(level, mean, s.frameCount, 0.03, 0.01);
        s.meanEn = static_cast<Kel32f>(notBelow(mean + share * (level - mean), kLeastMean));
    }
    if (s.frameCount >= kFirstDecided) decide(s, level - s.meanEn > kLoud);
}

}  // namespace kels::aurora
