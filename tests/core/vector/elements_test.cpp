// Fill, copy, conversion, arithmetic, roots and logarithms of vectors.
#include <climits>
#include <numeric>

#include "kels.h"
#include "support/elements.h"
#include "support/forms.h"
#include "support/rounding.h"

namespace {

using test::expectElements;
using test::Near;
using test::Options;
using test::Ulps;

constexpr double kInf = HUGE_VAL;
constexpr auto kNaN = std::numeric_limits<double>::quiet_NaN();
const Options kPlain;

// ---- fill, copy, arithmetic ----------------------------------------------------------------------------------------

TEST(Elements, FillAndCopy) {
    expectElements([](auto value, auto...) { return value; }, {.scalars = {100.3}}, kelsSet_8u, kelsSet_16s,
                   kelsSet_32s, kelsSet_32f, kelsSet_64f);
    expectElements([](auto...) { return 0; }, kPlain, kelsZero_8u, kelsZero_16s, kelsZero_32f, kelsZero_64f);
    expectElements([](auto x, auto...) { return x; }, kPlain, kelsCopy_8u, kelsCopy_16s, kelsCopy_32f, kelsCopy_64f,
                   kelsMove_32f);
}

// Around the size from which the caches are passed by.
TEST(Elements, FillsOfMegabytes) {
    for (const std::size_t n : {(1 << 20) - 1, 1 << 20, (1 << 20) + 77}) {
        test::Guarded<Kel32f> dst(n + 13);
        EXPECT_EQ(kelsSet_32f(0.1f, dst, static_cast<int>(n)), 0);
        EXPECT_EQ(std::count(dst.data(), dst.data() + n + 13, 0.1f), static_cast<std::ptrdiff_t>(n));
    }
}

TEST(Elements, MoveTakesOverlappingArrays) {
    for (const int shift : {-5, -1, 1, 5}) {
        std::vector<Kel32f> v(100);
        std::iota(v.begin(), v.end(), 0.0f);
        Kel32f* const middle = v.data() + 10;
        EXPECT_EQ(kelsMove_32f(middle, middle + shift, 80), 0);
        for (int i = 0; i < 80; ++i) EXPECT_EQ(middle[shift + i], static_cast<Kel32f>(10 + i));
    }
}

TEST(Elements, Arithmetic) {
    expectElements([](auto a, auto b, auto...) { return a + b; }, kPlain, kelsAdd_32f_I, kelsAdd_64f_I);
    expectElements([](auto a, auto b, auto...) { return b - a; }, kPlain, kelsSub_32f, kelsSub_64f, kelsSub_32f_I,
                   kelsSub_64f_I);
    expectElements([](int a, int b, auto...) { return test::saturated<Kel16s>(b - a); }, kPlain, kelsSub_16s);
    expectElements([](auto a, auto b, auto...) { return a * b; }, kPlain, kelsMul_32f);
    expectElements([](auto a, auto b, auto...) { return a > b ? a : b; }, kPlain, kelsMaxEvery_32f_I);
    expectElements([](auto a, auto b, auto...) { return a < b ? a : b; }, kPlain, kelsMinEvery_32f_I,
                   kelsMinEvery_32s_I);
    const auto quotient = [](auto divisor, auto dividend, auto...) {
        if (std::fabs(divisor) > 0) return dividend / divisor;
        return static_cast<decltype(divisor)>(dividend > 0 ? kInf : dividend == 0 ? kNaN : -kInf);
    };
    expectElements(quotient, {.statuses = {kelStatusOk, kelStatusDivByZero}}, kelsDiv_32f, kelsDiv_64f);
    const auto scaled = [](int a, int b, int, int, int scale) { return test::halfEven<Kel16s>(a * b, scale); };
    Options scales = {.scalars = {INT_MIN, INT_MAX}};
    for (int scale = -33; scale < 34; ++scale) scales.scalars.push_back(scale);
    expectElements(scaled, scales, kelsMul_16s_Sfs);
}

TEST(Elements, Constants) {
    const Options constants = {.scalars = {0.0, -0.0, 1, -1, 0.1, 3e-5, kInf, kNaN},
                               .statuses = {kelStatusOk, kelStatusDivByZeroErr}};
    const auto product = [](auto x, auto c) { return c == 0 ? decltype(x)(0) : x * c; };
    const auto ratio = [=](auto x, auto c, auto before) { return std::fabs(c) > 0 ? product(x, 1 / c) : before; };
    expectElements([](auto x, auto c, auto...) { return c == 0 ? x : x + c; }, constants, kelsAddC_32f);
    expectElements([=](auto x, auto c, auto...) { return product(x, c); }, constants, kelsMulC_32f, kelsMulC_64f);
    expectElements([=](auto c, auto x, int) { return product(x, c); }, constants, kelsMulC_32f_I, kelsMulC_64f_I);
    expectElements([=](auto x, auto c, auto y, int) { return ratio(x, c, y); }, constants, kelsDivC_32f, kelsDivC_64f);
    expectElements([=](auto c, auto x, int) { return ratio(x, c, x); }, constants, kelsDivC_32f_I, kelsDivC_64f_I);
}

// ---- conversion ----------------------------------------------------------------------------------------------------

// Floats that lie close to halves and to the ends of an integer type when they are scaled.
template <class I>
double edges(test::Random& random, double scale) {
    const double ends[] = {0, std::numeric_limits<I>::min(), std::numeric_limits<I>::max(), 1e30};
    const double end = ends[random.between(0, 3)] + random.between(-8, 8) / 4.0;
    const double x = random.between(0, 2) ? end : random.value<double>(20);
    const double beside = random.between(0, 1) ? x : x + std::fabs(x) * random.between(-1, 1) * 0x1p-23;
    if (random.between(0, 30) == 0) return random.between(0, 1) ? kNaN : random.between(0, 1) ? kInf : -kInf;
    return std::ldexp(beside, static_cast<int>(std::clamp(scale, -96.0, 96.0)));
}

template <class F, class I, KelStatus (*convert)(const F*, I*, int, int, int)>
void expectToInt() {
    const Options options = {{0, 1, -1, 15, -15, 40, 126, -126, 130, 150, INT_MAX, INT_MIN}, {0}, edges<I>};
    const auto value = [](F x, int scale) {
        return std::ldexp(static_cast<long double>(x), -std::clamp(scale, -128, 150));
    };
    expectElements([=](F x, I, int, int scale) { return test::saturated<I>(std::nearbyint(value(x, scale))); }, options,
                   +[](const F* src, I* dst, int len, int scale) { return convert(src, dst, len, 1, scale); });
    expectElements(
        [=](F x, I, int, int scale) { return test::saturated<I>(std::trunc(value(x, scale))); }, options,
        +[](const F* src, I* dst, int len, int scale) { return convert(src, dst, len, len % 2 * 2, scale); });
}

TEST(Elements, FloatsToIntegers) {
    expectToInt<Kel32f, Kel16s, kelsConvert_32f16s_Sfs>();
    expectToInt<Kel32f, Kel32s, kelsConvert_32f32s_Sfs>();
    expectToInt<Kel64f, Kel32s, kelsConvert_64f32s_Sfs>();
}

TEST(Elements, IntegersToFloatsAndShorts) {
    expectElements([](int x, auto...) { return x; }, kPlain, kelsConvert_8u32f, kelsConvert_16s32f, kelsConvert_32s32f);
    // Beyond its range a scale factor stands for the end of the range: no product overflows.
    const auto expect = [&](int lowest, int highest, auto f) {
        const auto scaled = [=](auto x, auto before, int, int scale) {
            return std::ldexp(static_cast<decltype(before)>(x), -std::clamp(scale, lowest, highest));
        };
        const Options scales = {.scalars = {0, 1, -3, 15, 1.0 * lowest, lowest - 1.0, 1.0 * highest, highest + 1.0,
                                            -5000, 5000, INT_MAX, INT_MIN}};
        expectElements(scaled, scales, f);
    };
    expect(-112, 126, kelsConvert_16s32f_Sfs);
    expect(-96, 126, kelsConvert_32s32f_Sfs);
    expect(-1008, 1022, kelsConvert_16s64f_Sfs);
    Options shifts = {.scalars = {INT_MIN, INT_MAX}};
    for (int scale = -33; scale < 34; ++scale) shifts.scalars.push_back(scale);
    expectElements([](int x, int, int, int scale) { return test::halfEven<Kel16s>(x, scale); }, shifts,
                   kelsConvert_32s16s_Sfs);
}

TEST(Elements, DoublesToFloats) {
    static constexpr double largest = std::numeric_limits<Kel32f>::max();
    const auto narrowed = [](double x, auto...) { return x > -largest ? std::min(x, largest) : -largest; };
    expectElements(narrowed, kPlain, kelsConvert_64f32f);
}

// ---- roots and logarithms ------------------------------------------------------------------------------------------

TEST(Elements, AbsoluteValuesAndRoots) {
    expectElements([](double x, auto...) { return std::fabs(x); }, kPlain, kelsAbs_64f);
    expectElements([](double x, int) { return std::sqrt(x); }, {.statuses = {kelStatusOk, kelStatusSqrtNegative}},
                   kelsSqrt_64f_I);
    // A bad threshold leaves all as it is.
    const auto reciprocal = [](Kel32f x, int, Kel32f threshold) {
        if (!(threshold > 0)) return Ulps{x, 0};
        // Half a unit from the division; up to one from the root, near the upper end of a binade.
        return x < threshold ? Ulps{threshold, 0} : Ulps{1 / std::sqrt(static_cast<long double>(x)), 1.5};
    };
    const Options thresholds = {{0.3, 1e-4, 100, 0, -0.0, -1, kNaN},
                                {kelStatusOk, kelStatusNoOperation, kelStatusBadArg}};
    expectElements(reciprocal, thresholds, kelsRecSqrt_32f);
    const Options options = {{4, -6, 1, -15, 40000, -24, 3, 2, 1, INT_MIN, 0},
                             {kelStatusOk, kelStatusNoOperation, kelStatusBadArg}};
    const auto scaledReciprocal = [](int x, auto before, int threshold, int scale) {
        using D = decltype(before);
        if (threshold < 1) return before;
        const long double root = 1 / std::sqrt(static_cast<long double>(x));
        return x < threshold ? test::saturated<D>(threshold) : test::halfEven<D>(root, std::max(scale, -128));
    };
    expectElements([=](int x, int, int t, int scale) { return scaledReciprocal(x, x, t, scale); }, options,
                   kelsRecSqrt_32s_Sfs);
    expectElements([=](int x, Kel16s y, int, int t, int scale) { return scaledReciprocal(x, y, t, scale); }, options,
                   kelsRecSqrt_32s16s_Sfs);
}

TEST(Elements, Magnitudes) {
    const auto length = [](auto z) { return std::sqrt(z.re * 1.0L * z.re + z.im * 1.0L * z.im); };
    const auto rounded = [=](Kel32fc z, auto...) {
        const long double exact = length(z);
        return Ulps{exact > std::numeric_limits<Kel32f>::max() ? kInf : exact, 1.5};
    };
    expectElements(rounded, kPlain, kelsMagnitude_32fc);
    const auto scaled = [=](Kel32sc z, int, int, int scale) {
        const long double exact = std::min(test::scaled(length(z), std::clamp(scale, -128, 150)), 2147483647.0L);
        return Near{exact, 0.5L + exact * 0x1p-51L};  // half a unit, and double precision's share of the value
    };
    expectElements(scaled, {.scalars = {0, 1, 3, 31, -1, -40, INT_MIN, INT_MAX}}, kelsMagnitude_32sc_Sfs);
    Kel32fc both[] = {{3, 4}, {5, 12}, {8, 15}, {7, 24}, {0, 0}};
    EXPECT_EQ(kelsMagnitude_32fc(both, &both[0].re, 5), 0);
    EXPECT_TRUE(both[0].re == 5 && both[0].im == 13 && both[1].re == 17 && both[1].im == 25 && both[2].re == 0);
}

TEST(Elements, IntegerLogarithms) {
    const auto logarithm = [](int x, int scale) {
        if (x <= 0) return Near{INT_MIN, 0};
        const long double exact = std::log(static_cast<long double>(x));
        if (scale >= 0) return Near{static_cast<long double>(std::lround(exact) >> std::min(scale, 31)), 0};
        return Near{std::min(test::scaled(exact, scale), 2147483647.0L), 0.5L + 0x1p-20L};
    };
    const Options options = {{0, 1, 4, 31, 1000, -1, -10, -27, -31, INT_MIN},
                             {kelStatusOk, kelStatusLogZero, kelStatusLogNegative}};
    expectElements([=](int x, int, int, int scale) { return logarithm(x, scale); }, options, kelsLn_32s_Sfs);
    expectElements([=](int x, int, int scale) { return logarithm(x, scale); }, options, kelsLn_32s_ISfs);
    for (int k = 0; k < 21; ++k) {  // the integers beside the edges between results
        Kel32s x[] = {static_cast<Kel32s>(std::exp(k + 0.5L)), static_cast<Kel32s>(std::exp(k + 0.5L)) + 1};
        EXPECT_EQ(kelsLn_32s_ISfs(x, 2, 0), 0);
        EXPECT_TRUE(x[0] == k && x[1] == k + 1) << k;
    }
}

// ---- statuses ------------------------------------------------------------------------------------------------------

// The first element that has a substitute decides, wherever it is.
TEST(Elements, Warnings) {
    for (const int place : {0, 15, 16, 63, 98, 99}) {
        const auto with = [=]<class T>(T usual, T particular) {
            std::vector<T> v(100, usual);
            v[place] = particular;
            return v;
        };
        Kel32f quotients[100];
        for (const Kel32f divisor : {0.0f, -0.0f, NAN, 1.0f}) {
            const KelStatus expected = divisor == 1 ? 0 : kelStatusDivByZero;
            EXPECT_EQ(kelsDiv_32f(with(2.0f, divisor).data(), with(2.0f, 1.0f).data(), quotients, 100), expected);
        }
        EXPECT_EQ(kelsSqrt_64f_I(with(2.0, -1.0).data(), 100), kelStatusSqrtNegative);
        EXPECT_EQ(kelsRecSqrt_32f(with(2.0f, 3.0f).data(), 100, 3), 0);
        EXPECT_EQ(kelsRecSqrt_32f(with(2.0f, 2.0f).data(), 100, 3), kelStatusNoOperation);
        EXPECT_EQ(kelsRecSqrt_32s_Sfs(with(2, 3).data(), 100, 3, 0), 0);
        EXPECT_EQ(kelsRecSqrt_32s_Sfs(with(2, 2).data(), 100, 3, 0), kelStatusNoOperation);
        EXPECT_EQ(kelsLn_32s_ISfs(with(2, 0).data(), 100, 0), kelStatusLogZero);
        EXPECT_EQ(kelsLn_32s_ISfs(with(2, -1).data(), 100, -3), kelStatusLogNegative);
        EXPECT_EQ(kelsLn_32s_ISfs(with(INT_MIN, 0).data(), 100, 0),
                  place == 0 ? kelStatusLogZero : kelStatusLogNegative);
    }
}

}  // namespace
