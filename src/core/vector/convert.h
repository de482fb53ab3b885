// Conversion kernels between floats and integers.
#pragma once

#include <algorithm>
#include <cstddef>

#include "core/scaling.h"
#include "core/simd/integers.h"
#include "core/simd/vec.h"

namespace kels {

// dst[i] = src[i] as D; exact, or rounded in the mode that is set.
template <class S, class D>
void convertWidening(const S* src, D* dst, std::size_t len) {
    for (std::size_t i = 0; i < len; ++i) dst[i] = static_cast<D>(src[i]);
}

// dst[i] = src[i] as D, times a power of two.
template <class S, class D>
void convertScaledUp(const S* src, D* dst, std::size_t len, D multiplier) {
    for (std::size_t i = 0; i < len; ++i) dst[i] = static_cast<D>(src[i]) * multiplier;
}

// dst[i] = src[i] * 2^-scaleFactor, rounded and saturated; NaN gives the smallest integer.  ToNearest is used inside a
// NearestScope.
template <class Rounding>
void convertToInt(const Kel32f* src, Kel16s* dst, std::size_t len, int scaleFactor, Rounding rounding) {
    constexpr std::size_t w = lanes<Kel32f>;
    const SplitMultiplier m(scaleFactor);
    const auto converted = [=](const Vec<Kel32f>& x) {
        // The store saturates; only what exceeds 32 bits would come out with the wrong sign.
        return toInt(lesserOf(Vec<Kel32f>(32767.0f), Vec<Kel32f>(x * m.first * m.second)), rounding);
    };
    std::size_t i = 0;
    for (; i + 2 * w <= len; i += 2 * w) {
        storeInt16(dst + i, converted(load(src + i)), converted(load(src + i + w)));
    }
    if (i + w <= len) {
        storeInt16(dst + i, converted(load(src + i)));
        i += w;
    }
    if (i < len) storeInt16Part(dst + i, converted(loadPart(src + i, len - i)), len - i);
}

template <class Rounding>
void convertToInt(const Kel32f* src, Kel32s* dst, std::size_t len, int scaleFactor, Rounding rounding) {
    constexpr std::size_t w = lanes<Kel32f>;
    const SplitMultiplier m(scaleFactor);
    const auto converted = [=](const Vec<Kel32f>& x) {
        return toIntSaturated(Vec<Kel32f>(x * m.first * m.second), rounding);
    };
    std::size_t i = 0;
    for (; i + w <= len; i += w) store(dst + i, converted(load(src + i)));
    if (i < len) storePart(dst + i, converted(loadPart(src + i, len - i)), len - i);
}

template <class Rounding>
void convertToInt(const Kel64f* src, Kel32s* dst, std::size_t len, int scaleFactor, Rounding rounding) {
    constexpr std::size_t w = lanes<Kel64f>;
    const Kel64f m = scaleMultiplier(scaleFactor);
    const auto held = [=](const Vec<Kel64f>& x) {
        return lesserOf(greaterOf(Vec<Kel64f>(x * m), Vec<Kel64f>(-2147483648.0)), Vec<Kel64f>(2147483647.0));
    };
    std::size_t i = 0;
    for (; i + w <= len; i += w) storeInt(dst + i, held(load(src + i)), rounding);
    if (i < len) storeIntPart(dst + i, held(loadPart(src + i, len - i)), rounding, len - i);
}

// The rounding that an rndMode argument asks for: 1 to nearest with ties to even, anything else toward zero.
template <class S, class D>
void convertToIntByMode(const S* src, D* dst, std::size_t len, int rndMode, int scaleFactor) {
    const NearestScope scope;
    if (rndMode == 1) {
        convertToInt(src, dst, len, scaleFactor, ToNearest());
    } else {
        convertToInt(src, dst, len, scaleFactor, TowardZero());
    }
}

// dst[i] = src[i] * 2^-scaleFactor, half to even, saturated to 16 bits.
inline void narrowScaled(const Kel32s* src, Kel16s* dst, std::size_t len, int scaleFactor) {
    const auto each = [=](auto op) {
        for (std::size_t i = 0; i < len; ++i) dst[i] = static_cast<Kel16s>(std::clamp(op(src[i]), -32768, 32767));
    };
    if (scaleFactor > 31) {
        each([](Kel32s) { return 0; });  // at most one half, and that goes to the even 0
    } else if (scaleFactor > 0) {
        each([=](Kel32s v) { return shiftHalfEvenInRange(v, scaleFactor); });
    } else {
        const int shift = std::min(-std::max(scaleFactor, -15), 15);  // from 15 on every value but 0 saturates alike
        each([=](Kel32s v) { return std::clamp(v, -32768, 32767) * (1 << shift); });
    }
}

// Held to the range of floats; NaN becomes the lowest.
inline void narrowToFloat(const Kel64f* src, Kel32f* dst, std::size_t len) {
    constexpr Kel64f kLargest = std::numeric_limits<Kel32f>::max();
    for (std::size_t i = 0; i < len; ++i) {
        const Kel64f raised = src[i] > -kLargest ? src[i] : -kLargest;
        dst[i] = static_cast<Kel32f>(raised < kLargest ? raised : kLargest);
    }
}

}  // namespace kels
