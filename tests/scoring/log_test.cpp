#include "kels/log.h"

#include <algorithm>
#include <array>
#include <cfloat>
#include <climits>
#include <cmath>
#include <vector>

#include "scoring/log_add.h"
#include "support/checks.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

using test::Guarded;

const float kNaN = std::nanf("");

template <class T>
struct Of;
#define FORMS(TYPE, SUFFIX)                                  \
    template <>                                              \
    struct Of<TYPE> {                                        \
        static constexpr auto add = kelsLogAdd##SUFFIX;      \
        static constexpr auto subtract = kelsLogSub##SUFFIX; \
        static constexpr auto sum = kelsLogSum##SUFFIX;      \
    };
FORMS(Kel32f, _32f)
FORMS(Kel64f, _64f)
FORMS(Kel32s, _32s_Sfs)
FORMS(Kel16s, _16s_Sfs)
#undef FORMS

template <class T>
T add(T a, T b, int hint) {
    EXPECT_EQ(Of<T>::add(&a, &b, 1, hint), 0);
    return b;
}
template <class T, class... Scale>
T subtract(T a, T b, Scale... scaleFactor) {
    EXPECT_EQ(Of<T>::subtract(&a, &b, 1, scaleFactor...), 0);
    return b;
}
template <class T, class... Scale>
T sum(const std::vector<T>& v, Scale... scaleFactor) {
    T result = 77;
    EXPECT_EQ(Of<T>::sum(v.data(), &result, static_cast<int>(v.size()), scaleFactor...), 0);
    return result;
}

template <class T>
class LogFloats : public ::testing::Test {};
using Floats = ::testing::Types<Kel32f, Kel64f>;
TYPED_TEST_SUITE(LogFloats, Floats);
template <class T>
class LogIntegers : public ::testing::Test {};
using Integers = ::testing::Types<Kel32s, Kel16s>;
TYPED_TEST_SUITE(LogIntegers, Integers);
template <class T>
class LogAll : public ::testing::Test {};
using All = ::testing::Types<Kel32f, Kel64f, Kel32s, Kel16s>;
TYPED_TEST_SUITE(LogAll, All);

template <class T>
constexpr long double kCutOff = sizeof(T) == 8 ? -23.0258509299405L : -15.3195879547406L;
template <class T>
constexpr T kZero = sizeof(T) == 8 ? T(-1e10) : T(-4500000);
// How far the three polynomials are from ln(1 + e^d), and what the cut-off leaves out.
template <class T>
constexpr long double kPolynomialError = sizeof(T) == 8 ? 3.17e-15L : 4.6e-9L;
template <class T>
constexpr long double kLeftOut = sizeof(T) == 8 ? 1.0001e-10L : 2.2223e-7L;

template <class T>
long double halfUlp(long double x) {
    int exponent;
    std::frexp(x, &exponent);
    return std::ldexp(0.5L, std::max(exponent, std::numeric_limits<T>::min_exponent) - std::numeric_limits<T>::digits);
}

// What rounding may add to the single-precision polynomial at d: Horner's rule errs by 2 n units of the sum of the
// absolute terms, and the argument's own error enters with a slope of less than 1.
long double fastRounding(long double d) {
    const Kel64f* p[3];
    kels::GetLogAddConst_F(&p[0], &p[1], &p[2]);
    const int piece = d > -2.55L ? 0 : d > -6.8L ? 1 : 2;
    const long double point = std::array{0.0L, -2.55L, -6.8L}[piece];
    long double terms = 0;
    for (int i = 0; i < 11; ++i) terms = terms * std::fabs(d - point) + std::fabs(p[piece][i]);
    return FLT_EPSILON / 2 * (22 * terms + 2 * std::fabs(d) + std::fabs(point));
}

// Two columns of operands whose differences cover the pieces densely and lie on both sides of every edge as closely as
// can be.
template <class T>
std::array<std::vector<T>, 2> operands() {
    std::array<std::vector<T>, 2> columns;
    test::Random random(5);
    const auto push = [&](T m, T s) {
        const int place = random.between(0, 1);
        columns[place].push_back(m);
        columns[1 - place].push_back(s);
    };
    for (double d = 0; d > -25; d -= 0.01) {
        push(0, static_cast<T>(d));
        for (const double range : {0.7, 20.0, 5000.0, 4.4e6}) {
            const auto m = static_cast<T>(random.uniform(-range, range));
            push(m, static_cast<T>(m + d + random.uniform(-0.01, 0)));
        }
    }
    for (const double edge : {-2.55, -6.8, -3.5, -9.0, -15.3195879547406, -23.0258509299405}) {
        auto d = static_cast<T>(edge);
        for (int i = 0; i < 4; ++i) d = std::nextafter(d, T(0));
        for (int i = 0; i < 9; ++i, d = std::nextafter(d, T(-100))) {
            push(0, d);
            push(T(0.25), T(0.25) + d);
            push(-d, 0);
        }
    }
    return columns;
}

// ---- addition ------------------------------------------------------------------------------------------------------

TYPED_TEST(LogFloats, AdditionStaysWithinItsError) {
    using T = TypeParam;
    const auto [a, b] = operands<T>();
    const Guarded<T> source(a);
    const int len = static_cast<int>(a.size());
    for (const int hint : {0, 1, 2}) {
        Guarded<T> result(b), unchecked(b);
        ASSERT_EQ(Of<T>::add(source.data(), result, len, hint), 0);
        const bool fast = sizeof(T) == 4 && hint == kelHintFast;
        for (std::size_t i = 0; i < a.size(); ++i) {
            const long double m = std::max(a[i], b[i]), d = std::min(a[i], b[i]) - m;
            const long double exact = m + std::log1p(std::exp(d));
            // Near the cut-off the rounded difference decides.
            const long double slack = 8 * halfUlp<T>(d);
            long double bound = halfUlp<T>(exact) * 1.001L;
            if (d > kCutOff<T> - slack) bound += kPolynomialError<T> + (fast ? fastRounding(d) : 0);
            if (d < kCutOff<T> + slack) bound = std::max(bound, kLeftOut<T> + halfUlp<T>(exact));
            ASSERT_LE(std::fabs(result[i] - exact), bound) << a[i] << " " << b[i] << " hint " << hint;
        }
        if constexpr (sizeof(T) == 4) {
            (fast ? kelsLogAddVec_32f_A6 : kelsLogAddVec_32f_M6)(source.data(), unchecked, len);
            EXPECT_TRUE(test::sameBits(unchecked, result.vector())) << hint;
        }
    }
}

// The polynomials of the double form as printed, in exact enough arithmetic: the result is theirs, rounded once.
TEST(LogAdd, DoubleFormIsRoundedOnce) {
    const Kel64f* p[3];
    kels::GetLogAddConst(&p[0], &p[1], &p[2]);
    const auto [a, b] = operands<Kel64f>();
    for (std::size_t i = 0; i < a.size(); ++i) {
        const Kel64f m = std::max(a[i], b[i]), s = std::min(a[i], b[i]);
        if (s - m < -23.0258509299405) continue;
        const int piece = s - m > -3.5 ? 0 : s - m > -9 ? 1 : 2;
        const __float128 t = static_cast<__float128>(s) - m - (piece == 0 ? 0 : piece == 1 ? -3.5 : -9);
        __float128 q = p[piece][0];
        for (int k = 1; k < 22; ++k) q = q * t + p[piece][k];
        const auto exact = static_cast<long double>(m + q);
        // 80-bit evaluation errs by 2^-64 of the largest of some 60 intermediate values, none of which exceeds 2.
        const long double bound = halfUlp<Kel64f>(exact) + 60 * 2 * 0x1p-64L;
        ASSERT_LE(std::fabs(add(m, s, 0) - exact), bound) << m << " " << s;
        ASSERT_LE(std::fabs(sum(std::vector{s, m}) - exact), bound) << m << " " << s;  // goes another way
    }
}

// Those of the double form lie so far apart that its rounding tells them.
TEST(LogAdd, EdgesBelongToTheFartherPiece) {
    for (const int hint : {0, 1, 2}) {
        EXPECT_GT(add(0.0, -23.0258509299405, hint), 0.9e-10);
        EXPECT_EQ(add(0.0, std::nextafter(-23.0258509299405, -100.0), hint), 0.0);
        EXPECT_EQ(add(-100.0f, -100.0f, hint), -100.0f + 0.6931471827215062f);
        EXPECT_GT(add(0.0f, std::nextafter(-15.3195879547406f, 0.0f), hint), 2e-7f);
        EXPECT_EQ(add(0.0f, std::nextafter(-15.3195879547406f, -100.0f), hint), 0.0f);
    }
    EXPECT_EQ(add(0.0f, -2.55f, 1), 0.07518323027822499f);
    EXPECT_EQ(add(0.0f, -6.8f, 1), 0.0011131507706311817f);
}

TYPED_TEST(LogFloats, FloorsAndInfinities) {
    using T = TypeParam;
    const T zero = kZero<T>, far = -zero * 100, inf = static_cast<T>(HUGE_VAL), nan = kNaN, ln2 = T(0.6931471805599453);
    // Below this a maximum is the logarithm of zero; far operands only.
    const T floor = sizeof(T) == 8 ? T(-9e9) : zero;
    const T cases[][3] = {{zero, -far, zero},     {floor, -far, floor},     {std::nextafter(floor, -far), -far, zero},
                          {-far, 2 * -far, zero}, {-far, -far, -far + ln2}, {zero, zero, zero + ln2},
                          {-inf, -inf, zero},     {-inf, -far, zero},       {-inf, 3, 3},
                          {inf, inf, inf},        {inf, -inf, inf},         {inf, 5, inf},
                          {nan, 1, nan},          {nan, inf, nan},          {nan, -inf, nan},
                          {nan, nan, nan}};
    for (const auto& [a, b, expected] : cases) {
        for (const int hint : {0, 1, 2}) {
            EXPECT_TRUE(test::sameBits(add(a, b, hint), expected)) << a << " " << b << " " << add(a, b, hint);
            EXPECT_TRUE(test::sameBits(add(b, a, hint), expected)) << b << " " << a << " " << add(b, a, hint);
        }
        EXPECT_TRUE(test::sameBits(sum(std::vector{a, b}), expected)) << a << " " << b;  // one pair takes another way
    }
}

// Every element of a vector of any length and alignment is what it would be alone.
TYPED_TEST(LogFloats, VectorsAgreeWithPairs) {
    using T = TypeParam;
    const auto all = operands<T>();
    test::Random random(6);
    for (const int hint : {0, 1, 2}) {
        for (int len = 1; len < 80; ++len) {
            const auto edge = len % 2 ? test::Edge::End : test::Edge::Begin;
            Guarded<T> a(len, edge), b(len, edge);
            std::vector<T> expected;
            for (int i = 0; i < len; ++i) {
                const int place = random.between(0, static_cast<int>(all[0].size()) - 1);
                a[i] = all[0][place], b[i] = all[1][place];
                expected.push_back(add(a[i], b[i], hint));
                if (sizeof(T) == 8 || hint == 1) continue;
                // One pair by itself takes another way to the same bits.
                EXPECT_TRUE(test::sameBits(sum(std::vector<T>{a[i], b[i]}), expected.back()));
            }
            ASSERT_EQ(Of<T>::add(a, b, len, hint), 0);
            EXPECT_TRUE(test::sameBits(b, expected)) << "length " << len << " hint " << hint;
        }
    }
}

TEST(LogAdd, OtherHintsComputeNothing) {
    for (const int hint : {-1, 3, 7, INT_MAX, INT_MIN}) {
        EXPECT_EQ(add(1.0f, 2.0f, hint), 2.0f);
        EXPECT_EQ(add(1.0, 2.0, hint), 2.0);
        const auto scaled = [&]<class T>(T b, int scaleFactor) {
            const T a = 5;
            EXPECT_EQ(Of<T>::add(&a, &b, 1, scaleFactor, hint), 0);
            return b;
        };
        EXPECT_EQ(scaled(16777217, 3), 16777216);       // through a float and back
        EXPECT_EQ(scaled(INT_MIN + 1, -200), INT_MIN);  // through an infinity and back
        EXPECT_EQ(scaled(Kel16s(-12345), 3), -12345);
    }
    Kel32f x = 1;
    EXPECT_EQ(kelsLogAdd_32f(&x, nullptr, 1, 9), kelStatusNullPtr);
    EXPECT_EQ(kelsLogAdd_32f(&x, nullptr, 0, 9), kelStatusSize);
}

// An integer as the float that is computed with, and a result back, truncated.
float unscale(int x, int scaleFactor) {
    return static_cast<float>(
        std::ldexp(static_cast<double>(static_cast<float>(x)), -std::clamp(scaleFactor, -128, 150)));
}
template <class T>
T rescale(long double x, int scaleFactor) {
    using Limits = std::numeric_limits<T>;
    const long double back = std::ldexp(x, std::clamp(scaleFactor, -150, 128));
    return static_cast<T>(std::clamp<long double>(back, Limits::min(), Limits::max()));
}

// Lengths around the chunks, any scale, any rounding mode.
TYPED_TEST(LogIntegers, AddAsFloats) {
    using T = TypeParam;
    test::Random random(7);
    for (const int len : {1, 3, 31, 127, 128, 129, 300}) {
        for (const int scaleFactor : {INT_MIN, -150, -128, -31, -1, 0, 1, 8, 16, 31, 60, 150}) {
            for (const int hint : {0, 1, 2}) {
                const Guarded<T> a(random.vector<T>(len));
                auto b = random.vector<T>(len), expected = b;
                for (int i = 0; i < len; ++i) {
                    if (i % 2 == 0) b[i] = static_cast<T>(a[i] - (a[i] > 9 ? random.between(0, 9) : 0));
                    const float logSum = add(unscale(a[i], scaleFactor), unscale(b[i], scaleFactor), hint);
                    expected[i] = rescale<T>(logSum, scaleFactor);
                }
                test::inEveryRoundingMode([&] {
                    Guarded<T> result(b);
                    EXPECT_EQ(Of<T>::add(a.data(), result, len, scaleFactor, hint), 0);
                    EXPECT_EQ(result.vector(), expected) << "scale " << scaleFactor << " hint " << hint;
                });
            }
        }
    }
}

// ---- subtraction ---------------------------------------------------------------------------------------------------

// 1 - e^d has the errors of the exponential and of the subtraction: at most 2^-52 together.
TYPED_TEST(LogFloats, SubtractionStaysWithinItsError) {
    using T = TypeParam;
    auto [a, b] = operands<T>();
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (a[i] < b[i]) std::swap(a[i], b[i]);
        if (a[i] == b[i]) b[i] = a[i] - std::fabs(a[i]) - 1;
    }
    const Guarded<T> source(a);
    Guarded<T> result(b);
    ASSERT_EQ(Of<T>::subtract(source.data(), result, static_cast<int>(a.size())), 0);
    for (std::size_t i = 0; i < a.size(); ++i) {
        const long double m = a[i], d = b[i] - m, rest = -std::expm1(d);
        const long double exact = (sizeof(T) == 4 ? std::max<long double>(m, kZero<T>) : m) + std::log(rest);
        long double bound =
            halfUlp<T>(exact) * 1.001L + 0x1p-52L * (2 / rest + std::fabs(std::log(rest)) + std::fabs(m));
        if (d < kCutOff<T> + 8 * halfUlp<T>(d)) bound += kLeftOut<T>;
        ASSERT_LE(std::fabs(result[i] - exact), bound) << a[i] << " " << b[i];
    }
}

TYPED_TEST(LogFloats, LimitsOfSubtraction) {
    using T = TypeParam;
    const T zero = kZero<T>, inf = static_cast<T>(HUGE_VAL), nan = kNaN;
    const T cases[][3] = {{0, T(-1e-17), zero},  // 1 - e^d is 0
                          {-7, T(-1e6), -7},    {T(-2e10), T(-3e10), zero}, {3, -inf, 3}, {inf, 3, inf}, {nan, 3, nan},
                          {3, nan, nan}};
    for (const auto& [a, b, expected] : cases) EXPECT_TRUE(test::sameBits(subtract(a, b), expected)) << a << " " << b;
}
TEST(LogSub, Limits) {
    EXPECT_EQ(subtract(-4500000.0f, -9e6f), -4500000.0f);
    EXPECT_EQ(subtract(-9.5e9, -9.9e9), -1e10);
    EXPECT_EQ(subtract(-9e9, -9.9e9), -9e9);
    EXPECT_EQ(subtract(INT_MAX, INT_MIN, 0), INT_MAX);          // their difference exceeds an int
    EXPECT_EQ(subtract(INT_MIN + 1, INT_MIN, 0), INT_MIN + 1);  // near operands know no floor
    EXPECT_EQ(subtract(-5000000, -6000000, 0), -4500000);
}

TYPED_TEST(LogAll, UnorderedElementsAreRefused) {
    using T = TypeParam;
    using Limits = std::numeric_limits<T>;
    const auto status = [](const std::vector<T>& a, std::vector<T>& b) {
        if constexpr (Limits::is_integer)
            return Of<T>::subtract(a.data(), b.data(), static_cast<int>(a.size()), 0);
        else
            return Of<T>::subtract(a.data(), b.data(), static_cast<int>(a.size()));
    };
    const T high = Limits::is_integer ? Limits::max() : Limits::infinity(),
            low = Limits::is_integer ? Limits::min() : -high;
    for (const auto& [a, b] : {std::pair<T, T>(0, 0), {low, low}, {high, high}, {low, high}, {-3, -2}}) {
        std::vector<T> refused = {b};
        EXPECT_EQ(status({a}, refused), -7) << a << " " << b;
    }
    for (const int len : {5, 6, 40, 600}) {
        for (int bad = 0; bad < len; bad += 1 + len / 7) {
            std::vector<T> b(len, -6);
            b[bad] = static_cast<T>(-3 + bad % 2);
            const auto before = b;
            EXPECT_EQ(status(std::vector<T>(len, -3), b), -7);
            EXPECT_EQ(b, before);
        }
    }
}

TYPED_TEST(LogIntegers, SubtractExactOperands) {
    using T = TypeParam;
    using Limits = std::numeric_limits<T>;
    test::Random random(8);
    for (const int scaleFactor : {-3, 0, 4, 8, 12, 24, 29}) {
        Guarded<T> a(random.vector<T>(50));
        std::vector<T> b;
        std::vector<long double> exact;
        for (int i = 0; i < 50; ++i) {
            if (a[i] == Limits::min()) ++a[i];
            const int span = std::min<int64_t>(random.between(1, 40000), int64_t{a[i]} - Limits::min());
            b.push_back(static_cast<T>(a[i] - span));
            const long double value = std::ldexp(static_cast<long double>(a[i]), -scaleFactor);
            const long double d = std::ldexp(-static_cast<long double>(span), -scaleFactor);
            const long double whole =
                d < kCutOff<Kel32f> ? std::max(value, -4500000.0L) : value + std::log(-std::expm1(d));
            exact.push_back(std::clamp<long double>(std::ldexp(whole, scaleFactor), Limits::min(), Limits::max()));
        }
        test::inEveryRoundingMode([&] {
            Guarded<T> result(b);
            EXPECT_EQ(Of<T>::subtract(a, result, 50, scaleFactor), 0);
            for (int i = 0; i < 50; ++i) {
                // Truncated toward zero; double precision errs by less than a thousandth of a unit.
                EXPECT_LE(std::fabs(static_cast<long double>(result[i])), std::fabs(exact[i]) + 0.001L);
                EXPECT_LT(std::fabs(result[i] - exact[i]), 1.001L) << +a[i] << " " << +b[i] << " " << scaleFactor;
            }
        });
    }
}

// ---- sum -----------------------------------------------------------------------------------------------------------

TYPED_TEST(LogFloats, SumStaysWithinItsError) {
    using T = TypeParam;
    test::Random random(9);
    for (int len = 1; len < 300; len += 1 + len / 5) {
        Guarded<T> v(len);
        long double total = 0;
        for (int i = 0; i < len; ++i) {
            v[i] = static_cast<T>(random.uniform(-60, -40));
            total += std::exp(static_cast<long double>(v[i]));
        }
        const long double bound = len * (std::max(kPolynomialError<T>, kLeftOut<T>) + halfUlp<T>(60));
        T result;
        EXPECT_EQ(Of<T>::sum(v, &result, len), 0);
        EXPECT_LE(std::fabs(result - std::log(total)), len == 1 ? 1e-18L : bound) << len;
    }
}

TEST(LogSum, StoresOnTheWay) {
    Kel32f v[] = {-1, -2, -3};
    const Kel32f two = sum(std::vector{-1.0f, -2.0f});
    EXPECT_EQ(kelsLogSum_32f(v, v + 2, 3), 0);
    EXPECT_EQ(v[2], sum(std::vector{-1.0f, -2.0f, two}));  // met its own intermediate sum
    Kel64f w[] = {-1, -2, -3};
    EXPECT_EQ(kelsLogSum_64f(w, w + 2, 3), 0);
    EXPECT_EQ(w[2], sum(std::vector{-1.0, -2.0, -1.0}));  // met the first element
}

TYPED_TEST(LogIntegers, SumAsFloats) {
    using T = TypeParam;
    test::Random random(10);
    for (const int scaleFactor : {-20, 0, 5, 9, 15}) {
        auto v = random.vector<T>(20);
        std::vector<float> logs;
        for (auto& x : v) {
            x = static_cast<T>(v[0] / 2 + x % 500);
            logs.push_back(unscale(x, scaleFactor));
        }
        const T expected = rescale<T>(sum(logs), scaleFactor);
        test::inEveryRoundingMode([&] { EXPECT_EQ(sum(v, scaleFactor), expected) << scaleFactor; });
    }
    constexpr T high = std::numeric_limits<T>::max();
    EXPECT_EQ(sum(std::vector<T>{high - 70}, 7), high - 70);  // a float would round it
    EXPECT_EQ(sum(std::vector<T>{high, high}, 10), high);
    EXPECT_EQ(sum(std::vector<T>{3, 3}, -200), high);  // infinite as floats
    EXPECT_EQ(sum(std::vector<T>{0, 0}, -200), 0);
    EXPECT_EQ(sum(std::vector<T>{-5, -5}, 0), -4);  // -4.3
}

TYPED_TEST(LogAll, ChecksInOrder) {
    test::expectVectorChecks({-6, -8}, Of<TypeParam>::add, Of<TypeParam>::subtract, Of<TypeParam>::sum);
}

}  // namespace
