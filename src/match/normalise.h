// Floors and ranges of scores: language-model scaling, normalisation between cuts of a span, the unit curve.
#pragma once

#include <algorithm>
#include <cstddef>

#include "core/vector/convert.h"
#include "core/vector/extrema.h"
#include "core/vector/fill_copy.h"
#include "core/scaling.h"
#include "core/simd/in_order.h"
#include "core/simd/vec.h"
#include "kels/types.h"

namespace kels {

// ---- language-model scaling ----------------------------------------------------------------------------------------

// An element that is not a number counts as the floor.
inline void scaleFloored(const Kel32f* src, Kel32f* dst, std::size_t len, Kel32f floor, Kel32f mul, Kel32f add) {
    using V = Vec<Kel32f>;
    map(
        dst, len, [=](const V& x) { return V(greaterOf(x, V(floor)) * mul + add); }, 0.0f, src);
}

// Modulo 2^32.
inline void scaleFloored(const Kel16s* src, Kel32s* dst, std::size_t len, Kel16s floor, Kel16s mul, Kel32s add) {
    for (std::size_t i = 0; i < len; ++i) {
        const auto product = static_cast<uint32_t>(mul * std::max(src[i], floor));
        dst[i] = static_cast<Kel32s>(product + static_cast<uint32_t>(add));
    }
}

// ---- range normalisation -------------------------------------------------------------------------------------------

// Comparisons with NaN fail.
struct Cuts {
    Kel32f low, high, range;

    bool valid() const { return 0 <= low && low < high && high <= 1 && range >= 0; }
};

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

// The elements between two cuts of the span mn..mx, mn < mx, onto 0..range.
template <class S, class D>
void normalise(const S* src, D* dst, std::size_t len, Kel32f mn, Kel32f mx, const Cuts& cuts) {
    using V = Vec<Kel32f>;
    const Kel32f d = mx - mn;
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

// The checks of the scalars, and zeros for a span without extent.
template <class S, class D>
KelStatus normaliseSpan(const S* src, D* dst, std::size_t len, S mn, S mx, const Cuts& cuts) {
    if (!cuts.valid() || !(mn <= mx)) return kelStatusBadArg;
    if (mn == mx) {
        zero(dst, len);
        return kelStatusNoOperation;
    }
    normalise(src, dst, len, static_cast<Kel32f>(mn), static_cast<Kel32f>(mx), cuts);
    return kelStatusOk;
}

template <class S>
struct Span {
    S mn, mx;
};
inline Span<Kel32f> spanOf(const Kel32f* src, std::size_t len) {
    return {extremum<Least>(src, len), extremum<Greatest>(src, len)};
}
inline Span<Kel16s> spanOf(const Kel16s* src, std::size_t len) {
    Span<Kel16s> span{src[0], src[0]};
    for (std::size_t i = 1; i < len; ++i) {
        span.mn = std::min(span.mn, src[i]);
        span.mx = std::max(span.mx, src[i]);
    }
    return span;
}

// The same between the extrema of the elements.
template <class S, class D>
KelStatus normaliseOwnSpan(const S* src, D* dst, std::size_t len, const Cuts& cuts) {
    if (!cuts.valid()) return kelStatusBadArg;
    const auto span = spanOf(src, len);
    return normaliseSpan(src, dst, len, span.mn, span.mx, cuts);
}

// ---- unit curve ----------------------------------------------------------------------------------------------------

inline void unitCurve(const Kel32f* src, Kel32f* dst, std::size_t len) {
    using V = Vec<Kel32f>;
    map(
        dst, len,
        [](const V& v) {
            const V x = lesserOf(greaterOf(v, V(0.0f)), V(2.0f));
            const V rest = 2.0f - x;
            V y = 2.0f - rest * rest;
            stdx::where(x < 1.0f, y) = x * x;
            return y;
        },
        0.0f, src);
}

// Exact in twice the fraction bits, of which half go before the result is scaled.
inline void unitCurve(const Kel16s* src, Kel16s* dst, std::size_t len, int fracBits, int scaleFactor) {
    if (fracBits < 0 || fracBits > 14) return zero(dst, len);
    const Kel32s one = 1 << fracBits;
    const int shift = std::clamp(scaleFactor, -100, 100) + fracBits;  // beyond, all results are alike
    for (std::size_t i = 0; i < len; ++i) {
        const Kel32s x = std::clamp<Kel32s>(src[i], 0, 2 * one), rest = 2 * one - x;
        dst[i] = scaleHalfEven<Kel16s>(x < one ? x * x : 2 * one * one - rest * rest, shift);
    }
}

}  // namespace kels
