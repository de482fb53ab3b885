// Square roots, their reciprocals, and magnitudes of complex numbers.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "core/check.h"
#include "core/scaling.h"
#include "core/simd/vec.h"
#include "core/vector/convert.h"

namespace kels {

inline KelStatus squareRoot(Kel64f* srcDst, std::size_t len) {
    Vec<Kel64f>::mask_type negative(false);
    const auto root = [&](const Vec<Kel64f>& x) {
        negative = negative || x < 0.0;
        return stdx::sqrt(x);
    };
    map(srcDst, len, root, 0.0, srcDst);
    return stdx::any_of(negative) ? kelStatusSqrtNegative : kelStatusOk;
}

// Below the threshold the threshold itself is stored.
inline KelStatus reciprocalRoot(Kel32f* srcDst, std::size_t len, Kel32f threshold) {
    using V = Vec<Kel32f>;
    V::mask_type processed(false);
    const auto reciprocal = [&](const V& x) {
        const auto below = x < threshold;
        processed = processed || !below;
        V positive = x;
        stdx::where(below, positive) = threshold;  // no root of a negative number is ever taken
        V result = 1.0f / stdx::sqrt(positive);
        stdx::where(below, result) = threshold;
        return result;
    };
    map(srcDst, len, reciprocal, 0.0f, srcDst);
    return stdx::any_of(processed) ? kelStatusOk : kelStatusNoOperation;
}

// 2^-scaleFactor / sqrt(src), to the nearest; below the threshold the threshold itself, unscaled.  dst may be src.
template <class D>
KelStatus reciprocalRootScaled(const Kel32s* src, D* dst, std::size_t len, Kel32s threshold, int scaleFactor) {
    const Kel64f multiplier = scaleMultiplier(scaleFactor);
    const NearestScope scope;
    bool processed = false;
    for (std::size_t i = 0; i < len; ++i) {
        const bool below = src[i] < threshold;
        processed |= !below;
        dst[i] = below ? saturate<D>(threshold) : roundSaturate<D>(multiplier / std::sqrt(Kel64f(src[i])));
    }
    return processed ? kelStatusOk : kelStatusNoOperation;
}

// sqrt(re^2 + im^2).  dst may begin where src does.
inline void magnitudes(const Kel32fc* src, Kel32f* dst, std::size_t len) {
    // Squares within these limits neither overflow nor lose digits; others are taken in double precision.
    constexpr Kel32f kLow = 0x1p-100f, kHigh = 0x1p126f;
    constexpr std::size_t w = lanes<Kel32f>;
    const auto* in = reinterpret_cast<const Kel32f*>(src);
    const auto careful = [=](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            const Kel64f re = in[2 * i], im = in[2 * i + 1];
            dst[i] = static_cast<Kel32f>(std::sqrt(re * re + im * im));
        }
    };
    std::size_t i = 0;
    for (; i + w <= len; i += w) {
        const auto [re, im] = deinterleave(load(in + 2 * i), load(in + 2 * i + w));
        const Vec<Kel32f> square = mulAdd(re, re, im * im);
        if (stdx::all_of(square >= kLow && square <= kHigh)) {
            store(dst + i, Vec<Kel32f>(stdx::sqrt(square)));
        } else {
            careful(i, i + w);
        }
    }
    careful(i, len);
}

// The same of integers, times 2^-scaleFactor, in double precision and rounded to the nearest.
inline void magnitudesScaled(const Kel32sc* src, Kel32s* dst, std::size_t len, int scaleFactor) {
    constexpr std::size_t kChunk = 128;
    Kel64f roots[kChunk];
    const NearestScope scope;
    for (std::size_t i = 0; i < len; i += kChunk) {
        const std::size_t n = std::min(kChunk, len - i);
        for (std::size_t k = 0; k < n; ++k) {
            const Kel64f re = src[i + k].re, im = src[i + k].im;
            roots[k] = std::sqrt(re * re + im * im);
        }
        convertToInt(roots, dst + i, n, scaleFactor, ToNearest());
    }
}

}  // namespace kels
