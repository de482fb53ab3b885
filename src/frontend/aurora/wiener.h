// The Wiener filter in the frequency domain: the noise that it knows, its gains, and how deep they go.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "core/simd/vec.h"
#include "frontend/aurora/activity.h"
#include "frontend/aurora/bounds.h"
#include "frontend/aurora/sums.h"
#include "kels/aurora.h"

namespace kels::aurora {

using V = Vec<Kel32f>;

// ---- noise ---------------------------------------------------------------------------------------------------------

// Each noise magnitude becomes next(noise, power), but not less than the least; where that is not a number it stays.
template <class Next>
void updateNoise(const Kel32f* power, Kel32f* noise, std::size_t len, Next next) {
    const auto updated = [next](const V& p, const V& n) {
        const V now = next(n, p);
        V result = greaterOf(now, V(kLeast));
        stdx::where(now != now, result) = n;
        return result;
    };
    map(noise, len, updated, 1.0f, power, noise);
}

// The first frame, which does not look at the old values.
inline void firstNoise(const Kel32f* power, Kel32f* noise, std::size_t len) {
    const auto first = [](const V& p) { return greaterOf(V(stdx::sqrt(p)), V(kLeast)); };
    map(noise, len, first, 1.0f, power);
}

// Frames known to be noise: the mean of magnitudes, of the first hundred frames or fading.
inline void averageNoise(const Kel32f* power, Kel32f* noise, std::size_t len, int frame) {
    const Kel32f share = frame < 100 ? 1.0f / static_cast<Kel32f>(frame) : 0.01f;
    updateNoise(power, noise, len, [share](const V& n, const V& p) { return V(n + share * (stdx::sqrt(p) - n)); });
}

// Frames of which nothing is known: the mean of powers at first, then steps that follow the ratio of power and noise.
inline void trackNoise(const Kel32f* power, Kel32f* noise, std::size_t len, int frame) {
    if (frame <= kLearning) {
        const Kel32f share = 1.0f / static_cast<Kel32f>(frame);
        updateNoise(power, noise, len, [share](const V& n, const V& p) {
            const V before = n * n;
            return V(stdx::sqrt(before + share * (p - before)));
        });
        return;
    }
    updateNoise(power, noise, len, [](const V& n, const V& p) {
        const V before = n * n;
        const V ratio = p / before;
        return V(n * stdx::sqrt(0.9f + 0.1f * (p / (p + before)) * (1.0f + 1.0f / (1.0f + 0.1f * ratio))));
    });
}

// ---- gains ---------------------------------------------------------------------------------------------------------

// The gains of this frame, and its denoised magnitudes in place of those of the frame before.
inline void designFilter(const Kel32f* spec, const Kel32f* mean, const Kel32f* noise, Kel32f* denoised, Kel32f* gains,
                         std::size_t len) {
    constexpr Kel32f kFromBefore = 0.98f, kFromNow = 0.02f;
    constexpr Kel32f kLeastRatio = 0.079432823f;  // -22 dB
    const auto design = [=](const V& power, const V& smoothed, const V& n, const V& before) {
        const V ratio = stdx::sqrt(smoothed) / n;
        const V first = kFromBefore * before / n + kFromNow * greaterOf(V(ratio - 1.0f), V(0.0f));
        const V improved = greaterOf(V(first / (1.0f + first) * ratio), V(kLeastRatio));
        const V gain = improved / (1.0f + improved);
        return Pair{V(gain * stdx::sqrt(power)), gain};
    };
    mapPair(denoised, gains, len, design, 1.0f, spec, mean, noise, denoised);
}

// ---- factorisation -------------------------------------------------------------------------------------------------

inline void noteDenoised(KelGainFactState_Aurora& s, const Kel32f* denoised, std::size_t len) {
    s.denEn[0] = s.denEn[1];
    s.denEn[1] = s.denEn[2];
    s.denEn[2] = static_cast<Kel32f>(sumOf(denoised, len));
}

// How much of the gains' depth this frame gets: much in noise, little in speech.
inline Kel32f factorOf(KelGainFactState_Aurora& s, Kel64f noise) {
    constexpr Kel64f kLeastRatio = 0.00001;
    constexpr Kel32f kAudible = 100, kMargin = 3.5f, kNoiseStep = 0.15f, kSpeechStep = 0.3f, kMost = 0.8f,
                     kFewest = 0.1f;
    countUp(s.frameCount);
    const Kel64f ratio = Kel64f{s.denEn[0]} * s.denEn[1] * s.denEn[2] / (noise * noise * noise);
    const Kel64f snr = ratio > kLeastRatio ? 20.0 / 3 * std::log10(ratio) : -100.0 / 3;
    const Kel64f low = s.lowSnr;
    if (snr - low < 10 || s.frameCount < kLearning) {
        s.lowSnr = static_cast<Kel32f>(low + shareOf(snr, low, s.frameCount, 0.05, 0.01) * (snr - low));
    }
    if (s.denEn[2] > kAudible) {
        const bool isNoise = snr < s.lowSnr + kMargin;
        s.alpha = isNoise ? std::min(s.alpha + kNoiseStep, kMost) : std::max(s.alpha - kSpeechStep, kFewest);
    }
    return s.alpha;
}

inline void weakenGains(const Kel32f* src, Kel32f* dst, std::size_t len, Kel32f alpha) {
    const auto weakened = [alpha](const V& gain) { return V(alpha * gain + (1.0f - alpha)); };
    map(dst, len, weakened, 1.0f, src);
}

}  // namespace kels::aurora
