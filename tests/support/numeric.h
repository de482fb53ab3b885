// Distances between floating-point results, bit-exact comparison, and rounding modes to run a call in.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cfenv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <vector>

namespace test {

using Real = long double;  // what references compute in

// |got - exact| in units of the last place of T at `exact`.
template <class T>
double ulpError(T got, long double exact) {
    if (std::isnan(exact) || std::isinf(exact)) {
        return (std::isnan(exact) && std::isnan(got)) || static_cast<long double>(got) == exact ? 0 : HUGE_VAL;
    }
    int exponent;
    std::frexp(exact, &exponent);
    if (exact == 0 || exponent < std::numeric_limits<T>::min_exponent) exponent = std::numeric_limits<T>::min_exponent;
    const long double ulp = std::ldexp(1.0L, exponent - std::numeric_limits<T>::digits);
    return static_cast<double>(std::fabs(static_cast<long double>(got) - exact) / ulp);
}

// The same value to the bit, or both not a number.
inline bool sameBits(float a, float b) {
    return (std::isnan(a) && std::isnan(b)) || std::bit_cast<uint32_t>(a) == std::bit_cast<uint32_t>(b);
}
inline bool sameBits(double a, double b) {
    return (std::isnan(a) && std::isnan(b)) || std::bit_cast<uint64_t>(a) == std::bit_cast<uint64_t>(b);
}

template <class A, class B>
::testing::AssertionResult sameBits(const A& got, const B& expected) {
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if (!sameBits(got[i], expected[i])) {
            return ::testing::AssertionFailure() << "at " << i << ": " << got[i] << " instead of " << expected[i];
        }
    }
    return ::testing::AssertionSuccess();
}

inline ::testing::AssertionResult near(long double got, long double exact, long double bound) {
    if (std::fabs(got - exact) <= bound) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << got << " instead of " << exact << ", bound " << bound;
}

// A whole number as an integer type T holds it, any number as T holds it, and v * 2^-scaleFactor for any scale factor.
template <class T>
T saturated(long double v) {
    return static_cast<T>(std::clamp<long double>(v, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
}
template <class T>
T nearest(long double v) {
    if constexpr (std::is_integral_v<T>) return saturated<T>(std::nearbyint(v));
    if constexpr (!std::is_integral_v<T>) return static_cast<T>(v);
}
inline long double scaled(long double v, int scaleFactor) {
    return std::ldexp(v, -std::clamp(scaleFactor, -300, 300));
}

// The value made opaque to the optimiser, so that it is computed in the rounding mode of this moment.
template <class T>
T opaque(T v) {
    volatile T w = v;
    return w;
}

// Runs `call` in each rounding mode, checks that the mode survives, and then runs `check` in the default one.
template <class Call, class Check>
void inEveryRoundingMode(Call call, Check check) {
    for (const int mode : {FE_TONEAREST, FE_DOWNWARD, FE_UPWARD, FE_TOWARDZERO}) {
        std::fesetround(mode);
        call();
        const int after = std::fegetround();
        std::fesetround(FE_TONEAREST);
        EXPECT_EQ(after, mode);
        check();
    }
}
template <class Call>
void inEveryRoundingMode(Call call) {
    inEveryRoundingMode(call, [] {});
}

// In the default mode, and if T is an integer type in every other one.
template <class T, class Call>
void inRoundingModesOf(Call call) {
    call();
    if (std::is_integral_v<T>) inEveryRoundingMode(call);
}

}  // namespace test
