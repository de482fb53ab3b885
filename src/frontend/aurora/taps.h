// The Wiener filter in the time domain: 17 taps from gains in 25 mel bands, and their application.
#pragma once

#include <array>
#include <cstddef>
#include <utility>

#include "core/constants.h"
#include "core/simd/vec.h"
#include "kels/types.h"

namespace kels::aurora {

inline constexpr std::size_t kMelGains = 25, kTaps = 17, kMiddle = kTaps / 2;
inline constexpr std::size_t kHalfTaps = (kMiddle + lanes<Kel32f>) / lanes<Kel32f> * lanes<Kel32f>;

// The cosine for tables that the compiler makes; x is not above a few turns.
constexpr Kel64f tableCosine(Kel64f x) {
    constexpr Kel64f kTurn = 2 * kPi;
    while (x > kTurn / 2) x -= kTurn;
    Kel64f sum = 1, term = 1;
    for (int n = 1; n < 30; n += 2) {
        term *= -x * x / (n * (n + 1));
        sum += term;
    }
    return sum;
}

// table[k][n]: what band k gives to the taps 8 + n and 8 - n.  A band weighs by its width; the taps' window is Hann's.
using TapTable = std::array<std::array<Kel32f, kHalfTaps>, kMelGains>;
constexpr TapTable makeTapTable() {
    constexpr Kel64f kCentres[kMelGains] = {
        0,        62.5,   125,  187.5,  250,      333.333,  416.667,  520.833,  625,      750,    875,      1000, 1125,
        1270.833, 1437.5, 1625, 1812.5, 2020.833, 2229.167, 2479.167, 2729.167, 3020.833, 3312.5, 3645.833, 4000};
    constexpr Kel64f kRate = 8000, kTurn = 2 * kPi;
    TapTable table = {};
    for (std::size_t k = 0; k < kMelGains; ++k) {
        const Kel64f below = kCentres[k == 0 ? k : k - 1], above = kCentres[k + 1 == kMelGains ? k : k + 1];
        for (std::size_t n = 0; n <= kMiddle; ++n) {
            const auto place = static_cast<Kel64f>(n);
            const Kel64f window = 0.5 - 0.5 * tableCosine(kTurn * (kMiddle + place + 0.5) / kTaps);
            const Kel64f wave = tableCosine(kTurn * place * kCentres[k] / kRate);
            table[k][n] = static_cast<Kel32f>((above - below) / kRate * wave * window);
        }
    }
    return table;
}
inline constexpr TapTable kTapTable = makeTapTable();

inline void tapsOf(const Kel32f* gains, Kel32f* taps) {
    using V = Vec<Kel32f>;
    constexpr std::size_t w = lanes<Kel32f>;
    Kel32f half[kHalfTaps];
    for (std::size_t n = 0; n < kHalfTaps; n += w) {
        V sum(0.0f);
        for (std::size_t k = 0; k < kMelGains; ++k) sum = mulAdd(V(gains[k]), load(&kTapTable[k][n]), sum);
        store(half + n, sum);
    }
    for (std::size_t n = 0; n <= kMiddle; ++n) taps[kMiddle + n] = taps[kMiddle - n] = half[n];
}

// dst[n] = sum of taps[j] src[n + 16 - j].
inline void applyTaps(const Kel32f* src, const Kel32f* taps, Kel32f* dst, std::size_t len) {
    using V = Vec<Kel32f>;
    const auto filtered = [taps](const auto&... x) {
        const Kel32f* tap = taps;
        V sum(0.0f);
        ((sum = mulAdd(x, V(*tap++), sum)), ...);
        return sum;
    };
    [&]<std::size_t... J>(std::index_sequence<J...>) {
        map(dst, len, filtered, 0.0f, src + (kTaps - 1 - J)...);
    }
    (std::make_index_sequence<kTaps>());
}

}  // namespace kels::aurora
