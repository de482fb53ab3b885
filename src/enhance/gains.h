// Suppression gains from signal-to-noise ratios.  In the integer forms ratios have kSnrBits fraction bits and gains
// have kGainBits.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>

#include "core/constants.h"
#include "core/scaling.h"
#include "core/simd/elementary.h"
#include "core/simd/vec.h"
#include "core/vector/convert.h"
#include "kels/types.h"

namespace kels::enhance {

inline constexpr int kSnrBits = 15, kGainBits = 31;
inline constexpr std::size_t kGainChunk = 128;

template <class T>
bool anyNegative(const T* src, std::size_t len) {
    int found = 0;
    for (std::size_t i = 0; i < len; ++i) found |= src[i] < 0 ? 1 : 0;
    return found != 0;
}

// ---- Wiener --------------------------------------------------------------------------------------------------------

template <class T>
Vec<T> wienerGain(const Vec<T>& snr) {
    const Vec<T> x = greaterOf(Vec<T>(T(0)), snr);
    return x / (x + T(1));
}

inline void wienerGains(const Kel32f* snr, Kel32f* gain, std::size_t len) {
    map(gain, len, wienerGain<Kel32f>, 0.0f, snr);
}
inline void wienerGains(const Kel32s* snr, Kel32s* gain, std::size_t len) {
    Kel64f chunk[kGainChunk];
    const NearestScope scope;
    for (std::size_t i = 0; i < len; i += kGainChunk) {
        const std::size_t n = std::min(kGainChunk, len - i);
        convertScaledUp(snr + i, chunk, n, exactPowerOfTwo(-kSnrBits));
        map(chunk, n, wienerGain<Kel64f>, 0.0, chunk);
        convertToInt(chunk, gain + i, n, -kGainBits, ToNearest());
    }
}

// ---- Ephraim and Malah ---------------------------------------------------------------------------------------------

// The gain is sqrt(r (r + (pi/4) / g)) F(v), with r = x / (1 + x) and v = r g: the first factor has its limits for
// small and for large v, and F, which lies between 0.94 and 1.04, brings what is missing.  It is a polynomial of
// w = (v - 2.5) / (v + 2.5), which runs from -1 to 1, to 1.1e-7.
struct EphraimMalahRule {
    static constexpr Kel32f kCentre = 2.5f, kQuarterPi = static_cast<Kel32f>(kPi / 4);
    static constexpr Kel32f kTerms[] = {0.9658445679f,    0.03050982945f,    0.02242565014f,   -0.02786017908f,
                                        0.007706396614f,  -0.0009496129412f, 0.004842146779f,  -0.0007568079111f,
                                        -0.001558091515f, -0.001195272019f,  0.0007393365609f, 0.0002521456446f};
};

inline Vec<Kel32f> ephraimMalahGain(const Vec<Kel32f>& prior, const Vec<Kel32f>& post) {
    using V = Vec<Kel32f>;
    using Rule = EphraimMalahRule;
    using Limits = std::numeric_limits<Kel32f>;
    // Limited to positive finite numbers; NaN passes.
    const V x = lesserOf(V(Limits::max()), prior);
    const V g = lesserOf(V(Limits::max()), greaterOf(V(Limits::min()), post));
    const V r = x / (x + 1.0f);
    const V v = r * g;
    const V w = (v - Rule::kCentre) / (v + Rule::kCentre);
    // Two roots, for the square of a small r would vanish.
    return stdx::sqrt(r) * stdx::sqrt(r + Rule::kQuarterPi / g) * polynomial<Rule::kTerms>(w);
}

inline void ephraimMalahGains(const Kel32f* prior, const Kel32f* post, Kel32f* gain, std::size_t len) {
    map(gain, len, ephraimMalahGain, 1.0f, prior, post);
}
inline void ephraimMalahGains(const Kel32s* prior, const Kel32s* post, Kel32s* gain, std::size_t len) {
    constexpr Kel32s kLargestPost = 100 << kSnrBits;
    constexpr auto kUnit = static_cast<Kel32f>(exactPowerOfTwo(-kSnrBits));
    Kel32s limited[kGainChunk];
    Kel32f x[kGainChunk], g[kGainChunk];
    const NearestScope scope;
    for (std::size_t i = 0; i < len; i += kGainChunk) {
        const std::size_t n = std::min(kGainChunk, len - i);
        for (std::size_t k = 0; k < n; ++k) limited[k] = std::clamp(post[i + k], 1, kLargestPost);
        convertScaledUp(prior + i, x, n, kUnit);
        convertScaledUp(limited, g, n, kUnit);
        ephraimMalahGains(x, g, x, n);
        convertToInt(x, gain + i, n, -kGainBits, ToNearest());
    }
}

}  // namespace kels::enhance
