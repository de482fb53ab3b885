// Element-wise arithmetic.  Destinations may be one of the sources.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>

#include "core/check.h"
#include "core/scaling.h"
#include "core/simd/vec.h"
#include "core/vector/fill_copy.h"

namespace kels {

template <class T>
void add(const T* a, const T* b, T* dst, std::size_t len) {
    const auto sum = [](const Vec<T>& x, const Vec<T>& y) { return x + y; };
    map(dst, len, sum, T(), a, b);
}

template <class T>
void subtract(const T* a, const T* b, T* dst, std::size_t len) {
    const auto difference = [](const Vec<T>& x, const Vec<T>& y) { return x - y; };
    map(dst, len, difference, T(), a, b);
}

template <class T>
void multiply(const T* a, const T* b, T* dst, std::size_t len) {
    const auto product = [](const Vec<T>& x, const Vec<T>& y) { return x * y; };
    map(dst, len, product, T(), a, b);
}

// A constant 0 copies, also where the sum would differ from the source (-0, signalling NaN).
template <class T>
void addConstant(const T* src, T c, T* dst, std::size_t len) {
    if (c == 0) return copy(src, dst, len);
    const auto sum = [=](const Vec<T>& x) { return x + c; };
    map(dst, len, sum, T(), src);
}

// A constant 1 leaves every element as it is, and 0 gives zeros whatever the elements are.
template <class T>
void multiplyByConstant(const T* src, T c, T* dst, std::size_t len) {
    if (c == 1) {
        if (src != dst) copy(src, dst, len);
    } else if (c == 0) {
        zero(dst, len);
    } else {
        const auto product = [=](const Vec<T>& x) { return x * c; };
        map(dst, len, product, T(), src);
    }
}

// dst = b / a.  Where the divisor is zero or NaN the result is infinite by the sign of the dividend, NaN for a dividend
// of 0 and minus infinity for one that is NaN.
template <class T>
KelStatus divide(const T* a, const T* b, T* dst, std::size_t len) {
    constexpr T kInfinity = std::numeric_limits<T>::infinity();
    using V = Vec<T>;
    typename V::mask_type substituted(false);
    const auto quotientOf = [&](const V& divisor, const V& dividend) {
        V quotient = dividend / divisor;
        const auto faulty = !(magnitude(divisor) > T(0));
        if (stdx::any_of(faulty)) {
            substituted = substituted || faulty;
            V substitute(-kInfinity);
            stdx::where(dividend > T(0), substitute) = kInfinity;
            stdx::where(dividend == T(0), substitute) = std::numeric_limits<T>::quiet_NaN();
            stdx::where(faulty, quotient) = substitute;
        }
        return quotient;
    };
    map(dst, len, quotientOf, T(1), a, b);
    return stdx::any_of(substituted) ? kelStatusDivByZero : kelStatusOk;
}

// dst = b - a, saturated.
inline void subtractSaturated(const Kel16s* a, const Kel16s* b, Kel16s* dst, std::size_t len) {
    for (std::size_t i = 0; i < len; ++i) dst[i] = static_cast<Kel16s>(std::clamp(b[i] - a[i], -32768, 32767));
}

// dst = a * b * 2^-scaleFactor, half to even, saturated.
inline void multiplyScaled(const Kel16s* a, const Kel16s* b, Kel16s* dst, std::size_t len, int scaleFactor) {
    const auto each = [=](auto op) {
        for (std::size_t i = 0; i < len; ++i) {
            dst[i] = static_cast<Kel16s>(std::clamp(op(Kel32s{a[i]} * b[i]), -32768, 32767));
        }
    };
    if (scaleFactor > 30) {
        zero(dst, len);  // no product exceeds 2^30: at most one half, and that goes to the even 0
    } else if (scaleFactor > 0) {
        each([=](Kel32s product) { return shiftHalfEvenInRange(product, scaleFactor); });
    } else {
        const int shift = std::min(-std::max(scaleFactor, -15), 15);  // from 15 on every product but 0 saturates alike
        each([=](Kel32s product) { return std::clamp(product, -32768, 32767) * (1 << shift); });
    }
}

// Of two elements src only where it compares so; where one is NaN the destination's element stays.
template <class T>
void keepGreater(const T* src, T* srcDst, std::size_t len) {
    const auto greater = [](const Vec<T>& x, const Vec<T>& y) { return greaterOf(x, y); };
    map(srcDst, len, greater, T(), src, srcDst);
}

template <class T>
void keepLesser(const T* src, T* srcDst, std::size_t len) {
    if constexpr (std::is_floating_point_v<T>) {
        const auto lesser = [](const Vec<T>& x, const Vec<T>& y) { return lesserOf(x, y); };
        map(srcDst, len, lesser, T(), src, srcDst);
    } else {
        for (std::size_t i = 0; i < len; ++i) srcDst[i] = std::min(src[i], srcDst[i]);
    }
}

}  // namespace kels
