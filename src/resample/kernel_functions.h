// Element-wise kernels of interpolation and of windows: sin(x) / x and exp(-x^2).
// Arrays of one type may overlap in any way.
#pragma once

#include <cstddef>

#include "core/scaling.h"
#include "core/simd/elementary.h"
#include "core/simd/in_order.h"
#include "core/simd/vec.h"
#include "kels/types.h"

namespace kels::resample {

// sine / x, and 1 where x is zero or not a number.
template <class T>
Vec<T> quotientOfSine(const Vec<T>& sine, const Vec<T>& x) {
    Vec<T> result = sine / x;
    stdx::where(!(magnitude(x) > T(0)), result) = T(1);
    return result;
}

inline Vec<Kel32f> sincOf(const Vec<Kel32f>& x) {
    const auto [low, high] = widen(x);
    return quotientOfSine(narrow(sine<Kel32f>(low), sine<Kel32f>(high)), x);
}
inline Vec<Kel64f> sincOf(const Vec<Kel64f>& x) {
    return quotientOfSine(sine<Kel64f>(x), x);
}

template <class T>
Vec<T> gaussianOf(const Vec<T>& x) {
    return exponentialNotAbove1(Vec<T>(-(x * x)));
}

// dst[i] = op(src[i]) where op takes and gives the vectors of D.
template <class D, class Op>
void mapRounded(const D* src, D* dst, std::size_t len, Op op) {
    const NearestScope scope;
    mapInOrder(dst, len, op, D(), src);
}
template <class Op>
void mapRounded(const Kel32f* src, Kel64f* dst, std::size_t len, Op op) {
    constexpr std::size_t w = lanes<Kel64f>;
    const NearestScope scope;
    std::size_t i = 0;
    for (; i + w <= len; i += w) store(dst + i, op(loadWide(src + i)));
    if (i == len) return;
    Kel64f rest[w] = {};
    for (std::size_t k = 0; i + k < len; ++k) rest[k] = src[i + k];
    storePart(dst + i, op(load(rest)), len - i);
}

template <class S, class D>
void sinc(const S* src, D* dst, std::size_t len) {
    mapRounded(src, dst, len, [](const Vec<D>& x) { return sincOf(x); });
}
template <class S, class D>
void gaussian(const S* src, D* dst, std::size_t len) {
    mapRounded(src, dst, len, [](const Vec<D>& x) { return gaussianOf(x); });
}

}  // namespace kels::resample
