// What integer results should be: exact values, scaled, rounded and saturated by the C library.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace test {

// v, whole, in the range of T; NaN gives the smallest T.
template <class T>
T saturated(long double v) {
    using Limits = std::numeric_limits<T>;
    return !(v > Limits::min()) ? Limits::min() : v >= Limits::max() ? Limits::max() : static_cast<T>(v);
}

// v * 2^-scaleFactor; exact where v has 64 bits.
inline long double scaled(long double v, int scaleFactor) {
    return std::ldexp(v, -std::clamp(scaleFactor, -1100, 1100));
}

// The same to the nearest T, ties to even.
template <class T>
T halfEven(long double v, int scaleFactor) {
    return saturated<T>(std::nearbyint(scaled(v, scaleFactor)));
}

// v as T holds it.
template <class T>
T nearest(long double v) {
    if constexpr (std::is_integral_v<T>) return halfEven<T>(v, 0);
    if constexpr (!std::is_integral_v<T>) return static_cast<T>(v);
}

}  // namespace test
