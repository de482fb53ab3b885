// Log-add in extended precision, and how far the library's may be from it.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

namespace test {

template <class T>
constexpr long double kUnit = std::numeric_limits<T>::epsilon() / 2.0L;  // of rounding to nearest
template <class T>
constexpr long double kCutOff = sizeof(T) == 8 ? -23.0258509299405L : -15.3195879547406L;
template <class T>
constexpr long double kLogZero = sizeof(T) == 8 ? -1e10L : -4500000.0L;
template <class T>
constexpr long double kLeftOut = sizeof(T) == 8 ? 1.01e-10L : 2.23e-7L;  // what the cut-off costs
template <class T>
constexpr long double kPolynomials = sizeof(T) == 8 ? 3.2e-15L : 4.7e-9L;  // their distance from ln(1 + e^d)

struct Bounded {
    long double value, error;
};

// The larger operand where the smaller one is ignored, with the floor.
template <class T>
long double floored(long double m) {
    return sizeof(T) == 8 ? m < -9e9L ? kLogZero<T> : m : std::max(m, kLogZero<T>);
}

// ln(e^a + e^b) kept as T.  Within the error of the difference from the cut-off the smaller operand may be left out.
template <class T>
Bounded logAdd(const Bounded& a, const Bounded& b) {
    const long double m = std::max(a.value, b.value), d = std::min(a.value, b.value) - m;
    long double error = std::max(a.error, b.error);
    if (std::fabs(d - kCutOff<T>) <= a.error + b.error + 32 * kUnit<T>) error += kLeftOut<T>;
    if (d < kCutOff<T>) return {floored<T>(m), error};
    const long double sum = m + std::log1p(std::exp(d));
    return {sum, error + kPolynomials<T> + 1.01L * kUnit<T> * std::fabs(sum)};
}

}  // namespace test
