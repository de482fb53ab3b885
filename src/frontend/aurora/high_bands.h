// Three bands above 4 kHz: coded against the low half before it is denoised and read back against it afterwards, and
// with their noise subtracted.
#pragma once

#include <cmath>
#include <cstddef>

#include "frontend/aurora/activity.h"
#include "frontend/aurora/bounds.h"
#include "frontend/aurora/sums.h"
#include "kels/aurora.h"

namespace kels::aurora {

inline constexpr std::size_t kHighBands = 3, kLowBands = 23;
inline constexpr Kel64f kEmphasis = 1.9;  // what the low half gains by its pre-emphasis near its end

// ---- codes ---------------------------------------------------------------------------------------------------------

struct BinRange {
    std::size_t first, last;
};
inline constexpr BinRange kCodingBins[kHighBands] = {{33, 38}, {39, 48}, {49, 64}};
inline constexpr BinRange kDecodingBins[kHighBands] = {{66, 76}, {78, 96}, {98, 128}};

// The logarithms of `share` of the sums over ranges of bins.
inline void referenceLogs(const Kel32f* spectrum, const BinRange (&ranges)[kHighBands], Kel64f share, Kel32f* dst) {
    for (std::size_t i = 0; i < kHighBands; ++i) {
        const auto [first, last] = ranges[i];
        dst[i] = static_cast<Kel32f>(limitedLog(share * sumOf(spectrum + first, last - first + 1)));
    }
}

inline void codeBands(const Kel32f* ref, const Kel32f* bands, Kel32f* codes) {
    for (std::size_t i = 0; i < kHighBands; ++i) {
        const Kel64f level = limitedLog(bands[i]);
        for (std::size_t j = 0; j < kHighBands; ++j) codes[kHighBands * i + j] = static_cast<Kel32f>(ref[j] - level);
    }
}

// dst may be ref.
inline void decodeBands(const Kel32f* ref, const Kel32f* codes, Kel32f* dst) {
    const Kel32f r0 = ref[0], r1 = ref[1], r2 = ref[2];
    for (std::size_t i = 0; i < kHighBands; ++i, codes += kHighBands) {
        dst[i] = 0.1f * (r0 - codes[0]) + 0.2f * (r1 - codes[1]) + 0.7f * (r2 - codes[2]);
    }
}

// ---- subtraction ---------------------------------------------------------------------------------------------------

// A noise energy after a frame without speech.
inline Kel32f followedNoise(Kel32f noise, Kel32f energy, Kel32s frame) {
    if (frame == 1) return notBelow(energy, kLeast);
    Kel64f share = 0.005;
    if (frame < kLearning) {
        share = 1.0 / frame;
    } else if (energy < noise) {
        share = frame < 100 ? 1.0 / frame : 0.01;
    }
    const auto next = static_cast<Kel32f>(noise + share * (Kel64f{energy} - noise));
    return std::isnan(next) ? noise : notBelow(next, kLeast);
}

// dst may be src.
inline void subtractNoise(KelHighBandState_Aurora& s, const Kel32f* src, Kel32f* dst) {
    constexpr Kel64f kLeastEnergy = 0.001, kFollowed = 1.2, kLoud = 2.2;
    constexpr Kel32f kTakenOff = 1.5f, kLeft = 0.1f;
    countUp(s.frameCount);
    const Kel64f level = std::log(notBelow(sumOf(src, kHighBands), kLeastEnergy));
    const Kel64f mean = s.meanEn;
    if (level - mean < kFollowed || s.frameCount < kLearning) {
        s.meanEn = static_cast<Kel32f>(mean + shareOf(level, mean, s.frameCount, 0.02, 0.005) * (level - mean));
    }
    decide(s, level - s.meanEn > kLoud);
    for (std::size_t i = 0; i < kHighBands; ++i) {
        const Kel32f energy = src[i];
        if (s.vadFlag == 0) s.noise[i] = followedNoise(s.noise[i], energy, s.frameCount);
        dst[i] = notBelow(energy - kTakenOff * s.noise[i], kLeft * energy);
    }
}

// ---- merging -------------------------------------------------------------------------------------------------------

// The energy that the upper half adds to the frame's.
inline Kel32f mergeBands(const Kel32f* coded, const Kel32f* high, Kel32f* logs) {
    const Kel64f emphasis = std::log(kEmphasis);
    Kel32f* const upper = logs + kLowBands;
    for (std::size_t i = 0; i < kHighBands; ++i) {
        upper[i] = static_cast<Kel32f>(0.7 * (coded[i] + emphasis) + 0.3 * limitedLog(kEmphasis * high[i]));
    }
    Kel32f* const joint = upper - 1;  // the bands on both sides of 4 kHz
    const Kel32f mean = 0.5f * (joint[0] + joint[1]);
    joint[0] = 0.6f * joint[0] + 0.4f * mean;
    joint[1] = 0.6f * joint[1] + 0.4f * mean;
    Kel64f energy = 0;
    for (std::size_t i = 0; i < kHighBands; ++i) energy += std::exp(upper[i] - emphasis);
    return static_cast<Kel32f>(energy);
}

}  // namespace kels::aurora
