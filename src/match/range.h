// Normalisation into a range: the elements between two cuts of a span are mapped onto it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <type_traits>

#include "core/scaling.h"
#include "core/simd/in_order.h"
#include "core/simd/vec.h"
#include "core/vector/convert.h"
#include "core/vector/extrema.h"
#include "kels/types.h"

namespace kels::rank {

// The part of a span that is mapped, as shares of it, and what it is mapped onto: 0..range.
struct Cuts {
    Kel32f low, high, range;
};

// The least and the greatest element.
template <class S>
struct Extrema {
    S least, greatest;
};
inline Extrema<Kel32f> extremaOf(const Kel32f* src, std::size_t len) {
    return {extremum<Least>(src, len), extremum<Greatest>(src, len)};
}
inline Extrema<Kel16s> extremaOf(const Kel16s* src, std::size_t len) {
    Extrema<Kel16s> found{src[0], src[0]};
    for (std::size_t i = 1; i < len; ++i) {
        found.least = std::min(found.least, src[i]);
        found.greatest = std::max(found.greatest, src[i]);
    }
    return found;
}

// Elements as floats on the way, a chunk at a time; results of an integer type inside a NearestScope.
inline constexpr std::size_t kNormaliseChunk = 256;

inline const Kel32f* asFloats(const Kel32f* src, Kel32f*, std::size_t) {
    return src;
}
inline const Kel32f* asFloats(const Kel16s* src, Kel32f* chunk, std::size_t len) {
    convertWidening(src, chunk, len);
    return chunk;
}
inline void storeRounded(const Kel32f* chunk, Kel16s* dst, std::size_t len) {
    convertToInt(chunk, dst, len, 0, ToNearest());
}
inline void storeRounded(const Kel32f* chunk, Kel8u* dst, std::size_t len) {
    Kel16s whole[kNormaliseChunk];
    storeRounded(chunk, whole, len);
    for (std::size_t i = 0; i < len; ++i) dst[i] = static_cast<Kel8u>(std::clamp<Kel16s>(whole[i], 0, 255));
}

// The elements between two cuts of a span that has some extent onto 0..range.
template <class S, class D>
void normalise(const S* src, D* dst, std::size_t len, const Extrema<S>& span, const Cuts& cuts) {
    using V = Vec<Kel32f>;
    const auto mn = static_cast<Kel32f>(span.least), d = static_cast<Kel32f>(span.greatest) - mn;
    const Kel32f high = cuts.high * d + mn, low = mn + cuts.low * d;
    const Kel32f scale = cuts.range / (cuts.high * d - cuts.low * d);
    const auto op = [=](const V& x) { return V(greaterOf(lesserOf(x, V(high)) - low, V(0.0f)) * scale); };
    if constexpr (std::is_same_v<D, Kel32f>) {
        mapInOrder(dst, len, op, 0.0f, src);
    } else {
        Kel32f chunk[kNormaliseChunk];
        const NearestScope scope;
        for (std::size_t i = 0; i < len; i += kNormaliseChunk) {
            const std::size_t n = std::min(kNormaliseChunk, len - i);
            map(chunk, n, op, 0.0f, asFloats(src + i, chunk, n));
            storeRounded(chunk, dst + i, n);
        }
    }
}

}  // namespace kels::rank
