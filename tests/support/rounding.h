// What integer results should be: exact values, scaled, rounded and saturated by the C library.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace test {

// v held to the range of T; NaN gives the smallest T.
template <class T>
T held(long double v) {
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
    return held<T>(std::nearbyint(scaled(v, scaleFactor)));
}

}  // namespace test
