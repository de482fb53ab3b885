// Blind equalisation: the mean of the cepstra is led to a reference, the faster the louder the frame.
#pragma once

#include <cmath>
#include <cstddef>

#include "frontend/aurora/bounds.h"
#include "kels/types.h"

namespace kels::aurora {

inline constexpr std::size_t kCepstra = 12;

// The mean cepstrum that the standard leads to.
inline constexpr Kel32f kReference[kCepstra] = {-6.618909f, 0.198269f,  -0.740308f, 0.055132f, -0.227086f, 0.144280f,
                                                -0.112451f, -0.146940f, -0.327466f, 0.134571f, 0.027884f,  -0.114905f};

// dst may be src or ref.
inline void equalise(const Kel32f* src, const Kel32f* ref, Kel32f* dst, std::size_t len, Kel32f logE, Kel32f* bias) {
    constexpr Kel32f kLargestStep = 0.0087890625f, kQuiet = 211.0f / 64;
    const Kel32f louder = notBelow(logE - kQuiet, 0.0f);
    const Kel32f step = kLargestStep * (louder < 1 ? louder : 1.0f);
    for (std::size_t i = 0; i < len; ++i) {
        const Kel32f target = ref[i];
        const Kel32f y = src[i] - bias[i];
        dst[i] = y;
        if (std::isfinite(y)) bias[i] += step * (y - target);
    }
}

}  // namespace kels::aurora
