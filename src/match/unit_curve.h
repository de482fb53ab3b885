// The unit curve: from 0 over x^2 and 2 - (2 - x)^2 to 2.
#pragma once

#include <algorithm>
#include <cstddef>

#include "core/scaling.h"
#include "core/simd/vec.h"
#include "kels/types.h"

namespace kels::rank {

inline void unitCurve(const Kel32f* src, Kel32f* dst, std::size_t len) {
    using V = Vec<Kel32f>;
    const auto curve = [](const V& v) {
        const V x = lesserOf(greaterOf(v, V(0.0f)), V(2.0f));
        const V rest = 2.0f - x;
        V y = 2.0f - rest * rest;
        stdx::where(x < 1.0f, y) = x * x;
        return y;
    };
    map(dst, len, curve, 0.0f, src);
}

// With 0 to 14 fraction bits: exact in twice as many, of which half go before the result is scaled.
inline void unitCurve(const Kel16s* src, Kel16s* dst, std::size_t len, int fracBits, int scaleFactor) {
    const Kel32s one = 1 << fracBits;
    const int shift = std::clamp(scaleFactor, -100, 100) + fracBits;  // beyond, all results are alike
    for (std::size_t i = 0; i < len; ++i) {
        const Kel32s x = std::clamp<Kel32s>(src[i], 0, 2 * one), rest = 2 * one - x;
        dst[i] = scaleHalfEven<Kel16s>(x < one ? x * x : 2 * one * one - rest * rest, shift);
    }
}

}  // namespace kels::rank
