// Weighting of a frame towards the parts of each pitch period that are loudest against the noise.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "core/simd/vec.h"
#include "kels/types.h"

namespace kels::aurora {

inline constexpr std::size_t kReach = 4;     // energies are smoothed over so many neighbours on each side
inline constexpr std::size_t kNearest = 25;  // samples from one maximum to the next
inline constexpr std::size_t kFarthest = 79;
inline constexpr Kel32f kLow = 0.4f, kRaised = 0.6f;  // halves of the weights

// Scratch of a frame: Teager energies with their margins, smoothed energies, halves of weights.
constexpr int64_t waveformScratch(int64_t len) {
    return 3 * len + 2 * static_cast<int64_t>(kReach) + 1;
}

// |x[n]^2 - x[n-1] x[n+1]|, 0 where all three are equal.
inline Kel32f teagerEnergy(Kel32f before, Kel32f x, Kel32f after) {
    return std::fabs(x * x - before * after);
}

// smooth[n] = E[n-4] + .. + E[n+4]; ends repeat.
inline void smoothedTeager(const Kel32f* x, Kel32f* energy, Kel32f* smooth, std::size_t len) {
    using V = Vec<Kel32f>;
    Kel32f* const e = energy + kReach;
    e[0] = teagerEnergy(x[0], x[0], x[std::min<std::size_t>(1, len - 1)]);
    e[len - 1] = teagerEnergy(x[len - (len > 1 ? 2 : 1)], x[len - 1], x[len - 1]);
    const auto teager = [](const V& before, const V& at, const V& after) {
        return magnitude(V(at * at - before * after));
    };
    if (len > 2) map(e + 1, len - 2, teager, 0.0f, x, x + 1, x + 2);
    std::fill_n(energy, kReach, e[0]);
    std::fill_n(e + len, kReach, e[len - 1]);
    const auto sum = [](const auto&... part) { return V((part + ...)); };
    [&]<std::size_t... J>(std::index_sequence<J...>) {
        map(smooth, len, sum, 0.0f, energy + J...);
    }
    (std::make_index_sequence<2 * kReach + 1>());
}

// Raises the weights after a maximum for four fifths of the way to its neighbour.
inline void raiseAfter(Kel32f* half, std::size_t len, std::size_t maximum, std::size_t distance) {
    const std::size_t end = std::min(maximum + (4 * distance + 4) / 5, len + kReach);
    for (std::size_t n = std::max(maximum, kReach); n < end; ++n) half[n - kReach] = kRaised;
}

// Finds the maxima, a pitch period or so apart, from the largest one outwards.
inline void weighPeriods(const Kel32f* smooth, Kel32f* half, std::size_t len) {
    const std::size_t largest = static_cast<std::size_t>(std::max_element(smooth, smooth + len) - smooth);
    if (!(smooth[largest] > 0)) return;
    std::size_t last = largest, before = len;
    while (last + kNearest < len) {
        std::size_t next = last + kNearest;
        for (std::size_t n = next + 1; n <= std::min(last + kFarthest, len - 1); ++n) {
            if (smooth[n] >= smooth[next]) next = n;
        }
        raiseAfter(half, len, last, next - last);
        before = std::exchange(last, next);
    }
    for (std::size_t first = largest; first > kNearest;) {
        const auto* const from = smooth + (first > kFarthest ? first - kFarthest : 0);
        const auto next = static_cast<std::size_t>(std::max_element(from, smooth + first - kNearest + 1) - smooth);
        raiseAfter(half, len, next, first - next);
        if (before == len) before = next;
        first = next;
    }
    if (before != len) raiseAfter(half, len, last, last - before);
}

// A frame that is audible; dst may be src.
inline void weighWaveform(const Kel32f* src, Kel32f* dst, std::size_t len, Kel32f* scratch) {
    using V = Vec<Kel32f>;
    Kel32f* const smooth = scratch + len + 2 * kReach;
    Kel32f* const half = smooth + len;
    smoothedTeager(src, scratch, smooth, len);
    std::fill_n(half, len, kLow);
    weighPeriods(smooth, half, len);
    half[len] = half[len - 1];
    const auto weigh = [](const V& x, const V& a, const V& b) { return V(x * (a + b)); };
    map(dst, len, weigh, 0.0f, src, half, half + 1);
}

}  // namespace kels::aurora
