// Conversion kernels between floats and integers.
#pragma once

#include <algorithm>
#include <cstddef>

#include "core/scaling.h"
#include "core/simd.h"

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

namespace detail {

// Runs block(src, dst) over whole blocks of N elements, the rest through buffers.
template <std::size_t N, class S, class D, class Block>
void inBlocks(const S* src, D* dst, std::size_t len, Block block) {
    std::size_t i = 0;
    for (; i + N <= len; i += N) block(src + i, dst + i);
    if (i == len) return;
    S in[N] = {};
    D out[N];
    std::copy_n(src + i, len - i, in);
    block(in, out);
    std::copy_n(out, len - i, dst + i);
}

}  // namespace detail

// dst[i] = src[i] * 2^-scaleFactor, rounded and saturated; NaN gives the smallest integer.  ToNearest is used inside a
// NearestScope.
template <class Rounding>
void convertToInt(const Kel32f* src, Kel16s* dst, std::size_t len, int scaleFactor, Rounding rounding) {
    const SplitMultiplier m(scaleFactor);
    detail::inBlocks<lanes<Kel32f>>(src, dst, len, [=](const Kel32f* from, Kel16s* to) {
        const Vec<Kel32f> v = load(from) * m.first * m.second;
        const Vec<Kel32f> held = lesserOf(greaterOf(v, Vec<Kel32f>(-32768.0f)), Vec<Kel32f>(32767.0f));
        storeInt16(to, toInt(held, rounding));
    });
}

template <class Rounding>
void convertToInt(const Kel32f* src, Kel32s* dst, std::size_t len, int scaleFactor, Rounding rounding) {
    const SplitMultiplier m(scaleFactor);
    detail::inBlocks<lanes<Kel32f>>(src, dst, len, [=](const Kel32f* from, Kel32s* to) {
        store(to, toIntSaturated(Vec<Kel32f>(load(from) * m.first * m.second), rounding));
    });
}

template <class Rounding>
void convertToInt(const Kel64f* src, Kel32s* dst, std::size_t len, int scaleFactor, Rounding rounding) {
    const Kel64f m = scaleMultiplier(scaleFactor);
    detail::inBlocks<lanes<Kel64f>>(src, dst, len, [=](const Kel64f* from, Kel32s* to) {
        const Vec<Kel64f> v = load(from) * m;
        storeInt(to, lesserOf(greaterOf(v, Vec<Kel64f>(-2147483648.0)), Vec<Kel64f>(2147483647.0)), rounding);
    });
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
