// Language-model scores: a floor, then a scale and an offset.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "core/simd/vec.h"
#include "kels/types.h"

namespace kels::rank {

// dst[i] = max(src[i], floor) * mul + add.  An element that is not a number counts as the floor.
inline void scaleFloored(const Kel32f* src, Kel32f* dst, std::size_t len, Kel32f floor, Kel32f mul, Kel32f add) {
    using V = Vec<Kel32f>;
    const auto scaled = [=](const V& x) { return V(greaterOf(x, V(floor)) * mul + add); };
    map(dst, len, scaled, 0.0f, src);
}

// The same modulo 2^32.
inline void scaleFloored(const Kel16s* src, Kel32s* dst, std::size_t len, Kel16s floor, Kel16s mul, Kel32s add) {
    for (std::size_t i = 0; i < len; ++i) {
        const auto product = static_cast<uint32_t>(mul * std::max(src[i], floor));
        dst[i] = static_cast<Kel32s>(product + static_cast<uint32_t>(add));
    }
}

}  // namespace kels::rank
