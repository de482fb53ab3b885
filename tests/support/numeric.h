// Distances between floating-point results, bit-exact comparison, and rounding modes to run a call in.
#pragma once

#include <gtest/gtest.h>

#include <cfenv>
#include <cmath>
#include <concepts>
#include <limits>
#include <vector>

#include "support/transform.h"

namespace test {

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
template <std::floating_point T>
bool sameBits(T a, T b) {
    return std::isnan(a) ? std::isnan(b) : a == b && std::signbit(a) == std::signbit(b);
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

// The same for what rounds in a way of its own in any mode; for anything else in the default mode alone.
template <class Call, class Check = void (*)()>
void inRoundingModes(
    bool every, Call call, Check check = [] {}) {
    if (every) return inEveryRoundingMode(call, check);
    call();
    check();
}

}  // namespace test
