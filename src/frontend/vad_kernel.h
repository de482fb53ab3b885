// The detectors and the state machine of voice activity detection.
//
// Each detector compares one number of the frame with a noise level of its own, which follows that number as long as it
// looks like noise.  Their answers enter a history of seven frames, and the decision is about its oldest entry.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "kels/vad.h"

namespace kels::vad {

using State = KelVADState_Aurora;

inline constexpr std::size_t kMel = 25, kSpec = 64, kHistory = 7;
inline constexpr Kel32s kLearning = 15;       // thresholds take the largest value before this frame
inline constexpr Kel32s kFirstDecision = 11;  // the frame that gives the first decision
inline constexpr Kel32s kEarly = 36;          // a long hangover before this frame makes the later ones longer
inline constexpr Kel32s kFirstHang = 23, kLaterHang = 40, kShortHang = 5;
inline constexpr int kRun = 3, kLongRun = 4, kExternalRun = 5;

inline State initialState() {
    State state = {};
    state.flushStop = -1;
    state.longHang = kFirstHang;
    return state;
}

// Streams of more frames than an int counts stay at its largest value, where nothing depends on it any more.
inline void countFrame(State& s) {
    if (s.frameCount < std::numeric_limits<Kel32s>::max()) ++s.frameCount;
}

// A noise level follows values of its own size, and slowly those far below.
inline Kel32f followed(Kel32f level, Kel64f value, Kel64f lowest) {
    return value < 1.5 * level && value > lowest * level ? static_cast<Kel32f>(0.8 * level + 0.2 * value) : level;
}
inline Kel32f sunk(Kel32f level, Kel64f value) {
    return static_cast<Kel32f>(0.97 * level + 0.03 * value);
}
inline Kel32f raised(Kel32f level, Kel64f value) {
    return static_cast<Kel32f>(std::max<Kel64f>(level, value));
}

template <class T>
void detectVariance(State& s, const T* spec) {
    Kel64f sum = 0, squares = 0;
    for (std::size_t i = 0; i < kSpec; ++i) {
        const Kel64f x = spec[i];
        sum += x;
        squares += x * x;
    }
    const Kel64f var = squares / kSpec - sum * sum / (kSpec * kSpec);
    if (s.frameCount < kLearning) s.thrVar = raised(s.thrVar, var);
    s.thrVar = followed(s.thrVar, var, 0.85);
    if (var < 0.25 * s.thrVar) s.thrVar = sunk(s.thrVar, var);
    s.varFlag = var > 1.65 * s.thrVar;
}

template <class T>
void detectEnergy(State& s, const T* mel) {
    Kel64f sum = 0;
    for (std::size_t i = 0; i < kMel; ++i) sum += mel[i];
    const Kel64f e = sum * sum - 3;
    if (s.frameCount == 1) s.thrMel = static_cast<Kel32f>(e);
    if (s.frameCount < kLearning) {
        s.meanMel = static_cast<Kel32f>(1.1 * ((s.frameCount - 1) * Kel64f{s.meanMel} + e) / s.frameCount);
        if (e / s.meanMel > 2.5) s.startTrigger = 1;
        if (s.startTrigger == 0) s.thrMel = raised(s.thrMel, e);
    }
    s.thrMel = followed(s.thrMel, e, 0.75);
    if (e <= 0.5 * s.thrMel) s.thrMel = sunk(s.thrMel, e);
    s.melFlag = e > 1.65 * s.thrMel;
}

template <class T>
void detectLowBand(State& s, const T* mel) {
    Kel64f sum = 0;
    for (std::size_t i = 1; i <= 3; ++i) sum += mel[i];
    s.band = static_cast<Kel32f>(sum / 3);
    const Kel64f b = 0.75 * s.band + 0.25 * s.prevBand;
    s.prevBand = s.band;
    if (s.frameCount < kLearning) s.thrSpec = raised(s.thrSpec, b);
    s.thrSpec = followed(s.thrSpec, b, 0.75);
    if (b <= 0.5 * s.thrSpec) s.thrSpec = sunk(s.thrSpec, b);
    s.specFlag = b > 3.25 * s.thrSpec;
}

// Moves to the oldest entry, which becomes the newest.
inline void turnHistory(State& s) {
    s.histIdx = static_cast<Kel32s>((static_cast<uint32_t>(s.histIdx) + 1) % kHistory);
}

// The longest run of active frames, from the oldest entry to the newest.
inline int longestRun(const State& s) {
    int run = 0, longest = 0;
    for (std::size_t i = 1; i <= kHistory; ++i) {
        run = s.history[(static_cast<uint32_t>(s.histIdx) + i) % kHistory] == 1 ? run + 1 : 0;
        longest = std::max(longest, run);
    }
    return longest;
}

inline void startLongHang(State& s) {
    s.hangCount = s.longHang;
    if (s.frameCount < kEarly) s.longHang = kLaterHang;
}

template <class T>
int decide(State& s, const T* mel, const T* spec, int extCount) {
    countFrame(s);
    detectVariance(s, spec);
    detectEnergy(s, mel);
    detectLowBand(s, mel);
    if (s.frameCount < kFirstDecision) return kelVadPending;

    turnHistory(s);
    const bool active = s.melFlag != 0 || s.specFlag != 0 || s.varFlag != 0 || extCount >= kExternalRun;
    s.history[s.histIdx] = active ? 1 : 0;
    const int run = longestRun(s);
    if (run >= kLongRun) startLongHang(s);
    if (run >= kRun) {
        s.shortCount = kShortHang;
        return kelVadSpeech;
    }
    if (s.hangCount != 0) --s.hangCount;
    if (s.shortCount != 0) --s.shortCount;
    return s.shortCount != 0 || s.hangCount != 0 ? kelVadSpeech : kelVadNoise;
}

inline int flush(State& s) {
    countFrame(s);
    if (s.flushStop == s.histIdx) return kelVadPending;  // all has been told
    if (s.flushStop == -1) s.flushStop = s.histIdx;
    turnHistory(s);
    if (s.histIdx == s.flushStop || s.frameCount < kFirstDecision) return kelVadPending;
    const int run = longestRun(s);
    if (run >= kLongRun) startLongHang(s);
    if (run >= kRun) s.shortCount = kShortHang;
    --s.hangCount;
    --s.shortCount;
    return s.shortCount >= 1 || s.hangCount >= 1 || run >= kRun ? kelVadSpeech : kelVadNoise;
}

}  // namespace kels::vad
