// Sine, exponential and natural logarithm of vectors, used inside a NearestScope.  Each reduces its argument, evaluates
// a minimax polynomial (exchange algorithm of Remez, in 60 digits) and puts the parts together with bit operations,
// so that all lanes take the same path.  Lanes outside the range of that path are left to the C library.
// docs/accuracy.md tabulates the errors.
#pragma once

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "core/simd/vec.h"

namespace kels {

template <class T>
struct FloatFormat;
template <>
struct FloatFormat<float> {
    using Bits = uint32_t;
    static constexpr int kFractionBits = 23, kBias = 127;
};
template <>
struct FloatFormat<double> {
    using Bits = uint64_t;
    static constexpr int kFractionBits = 52, kBias = 1023;
};

template <class T>
using VecBits = Vec<typename FloatFormat<T>::Bits>;

// x / unit to the nearest whole number: as such, and in the lowest bits of an integer (two's complement).
template <class T>
struct WholeMultiple {
    Vec<T> value;
    VecBits<T> bits;

    WholeMultiple(const Vec<T>& x, T reciprocalOfUnit) {
        // The sum's last place is 1.
        constexpr T kShift = T(3) * (typename FloatFormat<T>::Bits{1} << (FloatFormat<T>::kFractionBits - 1));
        const Vec<T> shifted = mulAdd(x, Vec<T>(reciprocalOfUnit), Vec<T>(kShift));
        value = shifted - kShift;
        bits = std::bit_cast<VecBits<T>>(shifted);
    }
};

// The polynomial of x with the given terms, the constant one first.
template <auto& terms, class T>
[[gnu::always_inline]] inline Vec<T> polynomial(const Vec<T>& x) {
    constexpr std::size_t n = sizeof(terms) / sizeof(terms[0]);
    Vec<T> sum(terms[n - 1]);
    for (std::size_t i = n - 1; i-- > 0;) sum = mulAdd(sum, x, Vec<T>(terms[i]));
    return sum;
}

// `result` with function(x) in the lanes that are not `good`.
template <class T, class Function>
[[gnu::noinline, gnu::cold]] Vec<T> laneByLane(Vec<T> result, const Vec<T>& x, const typename Vec<T>::mask_type& good,
                                               Function function) {
    for (std::size_t i = 0; i < lanes<T>; ++i) {
        if (!good[i]) result[i] = function(x[i]);
    }
    return result;
}

// ---- sine ----------------------------------------------------------------------------------------------------------

// sin(r) = r + r^3 P(r^2) for |r| <= pi/2.  The reduction is accurate, next to the zeros of the sine too, up to the
// limit.
template <class T>
struct SineRule;
template <>
struct SineRule<float> {  // to 2^-35, for arguments that are floats
    static constexpr double kTerms[] = {-0.1666666662610802, 0.008333331106784877, -0.0001984086796505925,
                                        2.7525371527741864e-06, -2.388867663694073e-08};
    static constexpr double kLimit = 0x1p20 * 3.14;
};
template <>
struct SineRule<double> {  // to 2^-61
    static constexpr double kTerms[] = {-0.16666666666666666,   0.008333333333333194,   -0.00019841269841209145,
                                        2.7557319211124256e-06, -2.505210687157892e-08, 1.605893964290323e-10,
                                        -7.642989812738825e-13, 2.7211569341005017e-15};
    static constexpr double kLimit = 0x1p12 * 3.14;
};

// The sine of x to the precision of T.
template <class T>
[[gnu::always_inline]] inline Vec<double> sine(const Vec<double>& x) {
    using V = Vec<double>;
    // Parts of pi; the first two have 33 bits, so that their products with up to 2^20 are exact.
    constexpr double kPi1 = 0x1.921fb544p+1, kPi2 = 0x1.0b4611a6p-33, kPi3 = 0x1.3198a2e037073p-68;
    constexpr double kPi23 = 0x1.0b4611a626331p-33;
    const WholeMultiple<double> k(x, 0x1.45f306dc9c883p-2);
    V r = x - k.value * kPi1;  // exact
    V low(0.0);
    if constexpr (sizeof(T) == sizeof(float)) {
        r = mulAdd(k.value, V(-kPi23), r);
    } else {
        const TwoSum difference(r, k.value * -kPi2);
        r = difference.sum;
        low = mulAdd(k.value, V(-kPi3), difference.lost);
    }
    const V square = r * r;
    if constexpr (sizeof(T) == sizeof(double)) low = mulAdd(low * square, V(-0.5), low);  // times cos r, about
    V s = r + mulAdd(r * square, polynomial<SineRule<T>::kTerms>(square), low);
    s = std::bit_cast<V>(std::bit_cast<VecBits<double>>(s) ^ (k.bits << 63));  // odd multiples of pi
    const auto good = magnitude(x) <= SineRule<T>::kLimit;
    if (!stdx::all_of(good)) [[unlikely]]
        s = laneByLane(s, x, good, [](double v) { return std::sin(v); });
    return s;
}

// ---- exponential ---------------------------------------------------------------------------------------------------

// e^r = 1 + r + r^2 P(r) for |r| <= ln(2)/2.  kLn2 and kLn2Rest make up ln 2; products of the first with the exponents
// in question are exact.  From kZero down the result is zero.
template <class T>
struct ExponentialRule;
template <>
struct ExponentialRule<float> {  // to 2^-28
    static constexpr float kTerms[] = {0.49999993432139045f, 0.16666520399084747f, 0.04166839078423679f,
                                       0.008368745106661515f, 0.0013814540063846114f};
    static constexpr float kLog2E = 0x1.715476p+0f, kLn2 = 0x1.62e4p-1f, kLn2Rest = 0x1.7f7d1cp-20f, kZero = -104.5f;
    static constexpr int kLift = 64;
};
template <>
struct ExponentialRule<double> {  // to 2^-57
    static constexpr double kTerms[] = {0.5000000000000011,    0.1666666666666641,     0.04166666666652973,
                                        0.00833333333349498,   0.0013888888943759893,  0.0001984126950576604,
                                        2.480149294966484e-05, 2.7557586811282343e-06, 2.7630306247961546e-07,
                                        2.500001637788882e-08};
    static constexpr double kLog2E = 0x1.71547652b82fep+0, kLn2 = 0x1.62e42fefp-1, kLn2Rest = 0x1.473de6af278edp-34,
                            kZero = -746;
    static constexpr int kLift = 512;
};

// e^x for x <= 0 (or NaN) to the precision of T, subnormal results included.
template <class T>
[[gnu::always_inline]] inline Vec<T> exponentialNotAbove1(const Vec<T>& x) {
    using V = Vec<T>;
    using Rule = ExponentialRule<T>;
    using Format = FloatFormat<T>;
    constexpr typename Format::Bits kLiftedBias = Format::kBias + Rule::kLift;
    constexpr T kBack = std::bit_cast<T>(typename Format::Bits{Format::kBias - Rule::kLift} << Format::kFractionBits);
    const V held = greaterOf(V(Rule::kZero), x);
    const WholeMultiple<T> k(held, Rule::kLog2E);
    const V r = mulAdd(k.value, V(-Rule::kLn2Rest), held - k.value * Rule::kLn2);
    const V e = T(1) + mulAdd(r * r, polynomial<Rule::kTerms>(r), r);
    // 2^k is lifted into the normal numbers and brought back, which rounds where the result is subnormal.
    const V power = std::bit_cast<V>((k.bits + kLiftedBias) << Format::kFractionBits);
    return e * power * kBack;
}

// e^x as the C library defines it.
template <class T>
[[gnu::always_inline]] inline Vec<T> exponential(const Vec<T>& x) {
    using V = Vec<T>;
    using Rule = ExponentialRule<T>;
    using Format = FloatFormat<T>;
    constexpr T kInfinite = sizeof(T) == sizeof(float) ? T(89) : T(710);
    const V held = lesserOf(V(kInfinite), greaterOf(V(Rule::kZero), x));
    const WholeMultiple<T> k(held, Rule::kLog2E);
    const V r = mulAdd(k.value, V(-Rule::kLn2Rest), held - k.value * Rule::kLn2);
    const V e = T(1) + mulAdd(r * r, polynomial<Rule::kTerms>(r), r);
    // 2^k in two factors, each of them a normal number; the second one rounds where the result is subnormal.
    constexpr typename Format::Bits kExponents = 4 * (Format::kBias + 1) - 1;
    const VecBits<T> biased = (k.bits + 2 * Format::kBias) & VecBits<T>(kExponents);
    const VecBits<T> half = biased >> 1;
    const auto power = [](const VecBits<T>& exponent) { return std::bit_cast<V>(exponent << Format::kFractionBits); };
    return e * power(half) * power(biased - half);
}

// ---- logarithm -----------------------------------------------------------------------------------------------------

// ln m = 2s + s^3 P(s^2) for sqrt(1/2) <= m < sqrt(2) and s = (m - 1) / (m + 1), to 2^-59.
template <class T>
struct LogarithmRule;
template <>
struct LogarithmRule<double> {
    static constexpr double kTerms[] = {0.6666666666666734,  0.39999999999413965, 0.28571428742562144,
                                        0.22222198553785505, 0.18183565407248337, 0.15314021118750684,
                                        0.14796261168009273};
};
// ln(1 + f) = f - f^2/2 + f^3 P(f) for sqrt(1/2) <= 1 + f < sqrt(2), to 2^-30.
template <>
struct LogarithmRule<float> {
    static constexpr float kTerms[] = {0.33333313f,  -0.25000009f, 0.20002124f,  -0.16668005f, 0.14219454f,
                                       -0.12405346f, 0.118886948f, -0.11677478f, 0.067476884f};
};

// The natural logarithm as the C library defines it.
[[gnu::always_inline]] inline Vec<double> logarithm(const Vec<double>& x) {
    using V = Vec<double>;
    using Bits = VecBits<double>;
    using Exp = ExponentialRule<double>;
    constexpr uint64_t kRootHalf = std::bit_cast<uint64_t>(0x1.6a09e667f3bcdp-1), kOne = uint64_t{1023} << 52;
    constexpr uint64_t kTo52 = std::bit_cast<uint64_t>(0x1p52);
    const Bits lifted = std::bit_cast<Bits>(x) + Bits(kOne - kRootHalf);
    const Bits biased = lifted >> 52;  // x = 2^k m, biased = k + 1023
    const V m = std::bit_cast<V>((lifted & Bits((uint64_t{1} << 52) - 1)) + Bits(kRootHalf));
    const V k = std::bit_cast<V>(biased | Bits(kTo52)) - (0x1p52 + 1023);
    // ln m = f - s (f - R), R = s^2 P(s^2), with f^2/2 split off: what is added to f is small.
    const V f = m - 1.0;
    const V s = f / (f + 2.0);
    const V square = s * s;
    const V half = f * f * 0.5;
    const V rest = mulAdd(s, half + square * polynomial<LogarithmRule<double>::kTerms>(square), k * Exp::kLn2Rest);
    V result = k * Exp::kLn2 - ((half - rest) - f);
    const auto good = x >= std::numeric_limits<double>::min() && x <= std::numeric_limits<double>::max();
    if (!stdx::all_of(good)) [[unlikely]]
        result = laneByLane(result, x, good, [](double v) { return std::log(v); });
    return result;
}

// The same of floats, as a sum whose head is within a few units of the last place; for positive normal numbers.
struct LogarithmParts {
    Vec<float> head, tail;

    [[gnu::always_inline]] explicit LogarithmParts(const Vec<float>& x) {
        using V = Vec<float>;
        using Bits = VecBits<float>;
        using Exp = ExponentialRule<float>;
        constexpr uint32_t kRootHalf = std::bit_cast<uint32_t>(0x1.6a09e6p-1f), kOne = uint32_t{127} << 23;
        constexpr uint32_t kTo23 = std::bit_cast<uint32_t>(0x1p23f);
        const Bits lifted = std::bit_cast<Bits>(x) + Bits(kOne - kRootHalf);
        const V m = std::bit_cast<V>((lifted & Bits((uint32_t{1} << 23) - 1)) + Bits(kRootHalf));
        const V k = std::bit_cast<V>((lifted >> 23) | Bits(kTo23)) - (0x1p23f + 127);
        const V f = m - 1.0f, whole = k * Exp::kLn2;
        const V square = f * f;
        const V rest = mulAdd(square * f, polynomial<LogarithmRule<float>::kTerms>(f), k * Exp::kLn2Rest);
        const V small = square * 0.5f - rest;
        // Each sum begins with the larger part, so what it loses is exact.
        const V first = f - small, firstLost = (f - first) - small;
        head = whole + first;
        tail = (first - (head - whole)) + firstLost;
    }
};

// `result` where x is a positive normal number, function(x) elsewhere.
template <class Function>
[[gnu::always_inline]] inline Vec<float> unlessUnusual(Vec<float> result, const Vec<float>& x, Function function) {
    const auto good = x >= std::numeric_limits<float>::min() && x <= std::numeric_limits<float>::max();
    if (!stdx::all_of(good)) [[unlikely]]
        result = laneByLane(result, x, good, function);
    return result;
}

[[gnu::always_inline]] inline Vec<float> logarithm(const Vec<float>& x) {
    const LogarithmParts parts(x);
    return unlessUnusual(parts.head + parts.tail, x, [](float v) { return std::log(v); });
}

// The logarithm to base 10 as the C library defines it.
[[gnu::always_inline]] inline Vec<double> logarithm10(const Vec<double>& x) {
    return logarithm(x) * 0x1.bcb7b1526e50ep-2;
}
[[gnu::always_inline]] inline Vec<float> logarithm10(const Vec<float>& x) {
    using V = Vec<float>;
    // Half the digits of the head times as many of the factor, log10 e, make an exact product.
    constexpr float kFactor = 0x1.bcb7b2p-2f, kHigh = 0x1.bccp-2f, kLow = -0x1.09d5b2p-15f;
    const LogarithmParts parts(x);
    const V head = std::bit_cast<V>(std::bit_cast<VecBits<float>>(parts.head) & VecBits<float>(~uint32_t{0xfff}));
    const V rest = mulAdd(V((parts.head - head) + parts.tail), V(kFactor), head * kLow);
    return unlessUnusual(mulAdd(head, V(kHigh), rest), x, [](float v) { return std::log10(v); });
}

}  // namespace kels
