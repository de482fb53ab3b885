#include "kels/log.h"

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <vector>

#include "scoring/log_add.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

constexpr long double kInf = HUGE_VALL;
const float kNaN = std::nanf("");

KelStatus add(const Kel32f* src, Kel32f* srcDst, int len, int hint) {
    return kelsLogAdd_32f(src, srcDst, len, hint);
}
KelStatus add(const Kel64f* src, Kel64f* srcDst, int len, int hint) {
    return kelsLogAdd_64f(src, srcDst, len, hint);
}
KelStatus add(const Kel32s* src, Kel32s* srcDst, int len, int scaleFactor, int hint) {
    return kelsLogAdd_32s_Sfs(src, srcDst, len, scaleFactor, hint);
}
KelStatus add(const Kel16s* src, Kel16s* srcDst, int len, int scaleFactor, int hint) {
    return kelsLogAdd_16s_Sfs(src, srcDst, len, scaleFactor, hint);
}
KelStatus subtract(const Kel32f* src, Kel32f* srcDst, int len) {
    return kelsLogSub_32f(src, srcDst, len);
}
KelStatus subtract(const Kel64f* src, Kel64f* srcDst, int len) {
    return kelsLogSub_64f(src, srcDst, len);
}
KelStatus subtract(const Kel32s* src, Kel32s* srcDst, int len, int scaleFactor = 0) {
    return kelsLogSub_32s_Sfs(src, srcDst, len, scaleFactor);
}
KelStatus subtract(const Kel16s* src, Kel16s* srcDst, int len, int scaleFactor = 0) {
    return kelsLogSub_16s_Sfs(src, srcDst, len, scaleFactor);
}
KelStatus sum(const Kel32f* src, Kel32f* pSum, int len) {
    return kelsLogSum_32f(src, pSum, len);
}
KelStatus sum(const Kel64f* src, Kel64f* pSum, int len) {
    return kelsLogSum_64f(src, pSum, len);
}
KelStatus sum(const Kel32s* src, Kel32s* pSum, int len, int scaleFactor = 0) {
    return kelsLogSum_32s_Sfs(src, pSum, len, scaleFactor);
}
KelStatus sum(const Kel16s* src, Kel16s* pSum, int len, int scaleFactor = 0) {
    return kelsLogSum_16s_Sfs(src, pSum, len, scaleFactor);
}

template <class T>
T add(T a, T b, int hint) {
    EXPECT_EQ(add(&a, &b, 1, hint), 0);
    return b;
}
template <class T>
T subtract(T a, T b) {
    EXPECT_EQ(subtract(&a, &b, 1), 0);
    return b;
}
template <class T, class... Scale>
T sum(const std::vector<T>& v, Scale... scaleFactor) {
    T result = 77;
    EXPECT_EQ(sum(v.data(), &result, static_cast<int>(v.size()), scaleFactor...), 0);
    return result;
}

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

// What rounding may add to the single-precision polynomial at d: Horner's rule with its own error carried along.
long double fastRounding(long double d) {
    constexpr long double u = FLT_EPSILON / 2;
    const Kel64f* p[3];
    kels::GetLogAddConst_F(&p[0], &p[1], &p[2]);
    const int piece = d > -2.55L ? 0 : d > -6.8L ? 1 : 2;
    const long double points[] = {0, -2.55L, -6.8L};
    const long double t = d - points[piece], errorOfT = u * (2 * std::fabs(d) + std::fabs(points[piece]));
    long double q = p[piece][0], error = u * std::fabs(q);
    for (int i = 1; i < 11; ++i) {
        const long double next = q * t + p[piece][i];
        error = error * std::fabs(t) + std::fabs(q) * errorOfT +
                u * (std::fabs(q * t) + std::fabs(next) + std::fabs(static_cast<long double>(p[piece][i])));
        q = next;
    }
    return 1.01L * error;
}

// Operands whose differences cover the pieces densely and lie on both sides of every edge as closely as can be.
template <class T>
std::vector<std::pair<T, T>> operands() {
    std::vector<std::pair<T, T>> pairs;
    test::Random random(5);
    const auto push = [&](T m, T s) {
        if (random.between(0, 1)) std::swap(m, s);
        pairs.emplace_back(m, s);
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
    return pairs;
}

template <class T>
struct Columns {
    test::Guarded<T> a, b;

    explicit Columns(const std::vector<std::pair<T, T>>& pairs) : a(pairs.size()), b(pairs.size()) {
        for (std::size_t i = 0; i < pairs.size(); ++i) {
            a[i] = pairs[i].first;
            b[i] = pairs[i].second;
        }
    }
};

template <class T>
void additionStaysWithinItsError(int hint) {
    const auto pairs = operands<T>();
    Columns<T> v(pairs);
    ASSERT_EQ(add(v.a, v.b, static_cast<int>(pairs.size()), hint), 0);
    const bool fast = sizeof(T) == 4 && hint == kelHintFast;
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const long double m = std::max(pairs[i].first, pairs[i].second);
        const long double d = std::min(pairs[i].first, pairs[i].second) - m;
        const long double exact = m + std::log1p(std::exp(d));
        // Near the cut-off the rounded difference decides.
        const long double slack = 8 * halfUlp<T>(d);
        long double bound = halfUlp<T>(exact) * 1.001L;
        if (d > kCutOff<T> - slack) bound += kPolynomialError<T> + (fast ? fastRounding(d) : 0);
        if (d < kCutOff<T> + slack) bound = std::max(bound, kLeftOut<T> + halfUlp<T>(exact));
        ASSERT_LE(std::fabs(v.b[i] - exact), bound) << pairs[i].first << " " << pairs[i].second << " hint " << hint;
    }
}
TEST(LogAdd, StaysWithinItsError) {
    for (const int hint : {0, 1, 2}) {
        additionStaysWithinItsError<Kel32f>(hint);
        additionStaysWithinItsError<Kel64f>(hint);
    }
}

// The polynomials of the double form as printed, in exact enough arithmetic: the result is theirs, rounded once.
TEST(LogAdd, DoubleFormIsRoundedOnce) {
    const Kel64f* p[3];
    kels::GetLogAddConst(&p[0], &p[1], &p[2]);
    const auto pairs = operands<Kel64f>();
    Columns<Kel64f> v(pairs);
    ASSERT_EQ(add(v.a, v.b, static_cast<int>(pairs.size()), 0), 0);
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const Kel64f m = std::max(pairs[i].first, pairs[i].second), s = std::min(pairs[i].first, pairs[i].second);
        if (s - m < -23.0258509299405) continue;
        const int piece = s - m > -3.5 ? 0 : s - m > -9 ? 1 : 2;
        const __float128 t = static_cast<__float128>(s) - m - (piece == 0 ? 0 : piece == 1 ? -3.5 : -9);
        __float128 q = p[piece][0];
        for (int k = 1; k < 22; ++k) q = q * t + p[piece][k];
        const auto exact = static_cast<long double>(m + q);
        // 80-bit evaluation errs by 2^-64 of the largest of some 60 intermediate values, none of which exceeds 2.
        const long double bound = halfUlp<Kel64f>(exact) + 60 * 2 * 0x1p-64L;
        ASSERT_LE(std::fabs(v.b[i] - exact), bound) << m << " " << s;
        ASSERT_LE(std::fabs(sum(std::vector{s, m}) - exact), bound) << m << " " << s;  // goes another way
    }
}

TEST(LogAdd, EdgesBelongToTheFartherPiece) {
    for (const int hint : {0, 1, 2}) {
        EXPECT_EQ(add(0.0, 0.0, hint), 0.6931471805599475);
        EXPECT_EQ(add(0.0, -3.5, hint), 0.02975041827262059);
        EXPECT_GT(std::fabs(add(0.0, std::nextafter(-3.5, 0.0), hint) - 0.02975041827262059), 1e-15);
        EXPECT_EQ(add(0.0, -9.0, hint), 0.00012340218972425103);
        EXPECT_GT(std::fabs(add(0.0, std::nextafter(-9.0, 0.0), hint) - 0.00012340218972425103), 5e-16);
        EXPECT_GT(add(0.0, -23.0258509299405, hint), 0.9e-10);
        EXPECT_EQ(add(0.0, std::nextafter(-23.0258509299405, -100.0), hint), 0.0);
        EXPECT_EQ(add(-100.0f, -100.0f, hint), -100.0f + 0.6931471827215062f);
        EXPECT_GT(add(0.0f, std::nextafter(-15.3195879547406f, 0.0f), hint), 2e-7f);
        EXPECT_EQ(add(0.0f, std::nextafter(-15.3195879547406f, -100.0f), hint), 0.0f);
    }
    EXPECT_EQ(add(0.0f, -2.55f, 1), 0.07518323027822499f);
    EXPECT_EQ(add(0.0f, -6.8f, 1), 0.0011131507706311817f);
}

template <class T>
void floorsAndInfinities(int hint) {
    const T zero = kZero<T>, far = -zero * 100, inf = static_cast<T>(kInf), nan = kNaN;
    // Below this a maximum is the logarithm of zero; far operands only.
    const T floor = sizeof(T) == 8 ? T(-9e9) : zero;
    const struct {
        T a, b, expected;
    } cases[] = {{zero, -far, sizeof(T) == 8 ? T(-1e10) : zero},
                 {floor, -far, floor},
                 {std::nextafter(floor, -far), -far, zero},
                 {-far, 2 * -far, zero},
                 {-far, -far, -far + T(0.6931471805599453)},
                 {zero, zero, zero + T(0.6931471805599453)},
                 {-inf, -inf, zero},
                 {-inf, -far, zero},
                 {-inf, 3, 3},
                 {inf, inf, inf},
                 {inf, -inf, inf},
                 {inf, 5, inf},
                 {nan, 1, nan},
                 {nan, inf, nan},
                 {nan, -inf, nan},
                 {nan, nan, nan}};
    for (const auto& c : cases) {
        EXPECT_TRUE(test::sameBits(add(c.a, c.b, hint), c.expected)) << c.a << " " << c.b << " " << add(c.a, c.b, hint);
        EXPECT_TRUE(test::sameBits(add(c.b, c.a, hint), c.expected)) << c.b << " " << c.a << " " << add(c.b, c.a, hint);
        if (hint == 0) {  // one pair takes another way
            EXPECT_TRUE(test::sameBits(sum(std::vector{c.a, c.b}), c.expected)) << c.a << " " << c.b;
        }
    }
}
TEST(LogAdd, FloorsAndInfinities) {
    for (const int hint : {0, 1, 2}) {
        floorsAndInfinities<Kel32f>(hint);
        floorsAndInfinities<Kel64f>(hint);
    }
}

// Every element of a vector of any length and alignment is what it would be alone.
template <class T>
void vectorsAgreeWithPairs(int hint) {
    const auto pairs = operands<T>();
    test::Random random(6);
    for (int len = 1; len < 80; ++len) {
        for (const auto edge : {test::Edge::End, test::Edge::Begin}) {
            test::Guarded<T> a(len, edge), b(len, edge);
            std::vector<T> expected;
            for (int i = 0; i < len; ++i) {
                const auto& pair = pairs[random.between(0, static_cast<int>(pairs.size()) - 1)];
                a[i] = pair.first;
                b[i] = pair.second;
                expected.push_back(add(pair.first, pair.second, hint));
                if (sizeof(T) == 8 || hint == 1) continue;
                // One pair by itself takes another way to the same bits.
                EXPECT_TRUE(test::sameBits(sum(std::vector{pair.first, pair.second}), expected.back()));
            }
            ASSERT_EQ(add(a, b, len, hint), 0);
            EXPECT_TRUE(test::sameBits(b, expected)) << "length " << len << " hint " << hint;
        }
    }
}
TEST(LogAdd, VectorsAgreeWithPairs) {
    for (const int hint : {0, 1, 2}) {
        vectorsAgreeWithPairs<Kel32f>(hint);
        vectorsAgreeWithPairs<Kel64f>(hint);
    }
}

TEST(LogAdd, UncheckedVectorsAreThoseOfTheHints) {
    const auto pairs = operands<Kel32f>();
    for (const int hint : {0, 1, 2}) {
        Columns<Kel32f> v(pairs), w(pairs);
        const int len = static_cast<int>(pairs.size());
        kelsLogAdd_32f(v.a, v.b, len, hint);
        (hint == 1 ? kelsLogAddVec_32f_A6 : kelsLogAddVec_32f_M6)(w.a, w.b, len);
        EXPECT_TRUE(test::sameBits(w.b, v.b.vector())) << hint;
    }
}

TEST(LogAdd, OtherHintsComputeNothing) {
    for (const int hint : {-1, 3, 7, INT_MAX, INT_MIN}) {
        EXPECT_EQ(add(1.0f, 2.0f, hint), 2.0f);
        EXPECT_EQ(add(1.0, 2.0, hint), 2.0);
        Kel32s a = 5, b = 16777217;
        EXPECT_EQ(add(&a, &b, 1, 3, hint), 0);
        EXPECT_EQ(b, 16777216);  // through a float and back
        b = INT_MIN + 1;
        EXPECT_EQ(add(&a, &b, 1, -200, hint), 0);
        EXPECT_EQ(b, INT_MIN);  // through an infinity and back
        Kel16s c = 7, d = -12345;
        EXPECT_EQ(add(&c, &d, 1, 3, hint), 0);
        EXPECT_EQ(d, -12345);
    }
}

// The integers as floats, added as such, and back: lengths around the chunks, any scale, any rounding mode.
template <class T>
void integersAddAsFloats() {
    test::Random random(7);
    constexpr int edges[] = {INT_MIN, -150, -128, -31, -1, 0, 1, 8, 16, 31, 60, 150};
    for (const int len : {1, 3, 31, 127, 128, 129, 300}) {
        for (const int scaleFactor : edges) {
            for (const int hint : {0, 1, 2}) {
                const auto a = random.vector<T>(len);
                auto b = random.vector<T>(len);
                for (int i = 0; i < len; i += 2) b[i] = static_cast<T>(a[i] - (a[i] > 9 ? random.between(0, 9) : 0));
                std::vector<T> expected;
                const int exponent = std::clamp(scaleFactor, -128, 150);
                for (int i = 0; i < len; ++i) {
                    const auto x =
                        static_cast<float>(std::ldexp(static_cast<double>(static_cast<float>(a[i])), -exponent));
                    const auto y =
                        static_cast<float>(std::ldexp(static_cast<double>(static_cast<float>(b[i])), -exponent));
                    const long double back =
                        std::ldexp(static_cast<long double>(add(x, y, hint)), std::clamp(scaleFactor, -150, 128));
                    expected.push_back(static_cast<T>(
                        std::clamp<long double>(back, std::numeric_limits<T>::min(), std::numeric_limits<T>::max())));
                }
                const test::Guarded<T> source(a);
                test::inEveryRoundingMode([&] {
                    test::Guarded<T> result(b);
                    EXPECT_EQ(add(source.data(), result, len, scaleFactor, hint), 0);
                    EXPECT_EQ(result.vector(), expected) << "scale " << scaleFactor << " hint " << hint;
                });
            }
        }
    }
}
TEST(LogAdd, IntegersAddAsFloats) {
    integersAddAsFloats<Kel16s>();
    integersAddAsFloats<Kel32s>();
}

// 1 - e^d has the errors of the exponential and of the subtraction: at most 2^-52 together.
template <class T>
void subtractionStaysWithinItsError() {
    auto pairs = operands<T>();
    for (auto& [a, b] : pairs) {
        if (a < b) std::swap(a, b);
        if (a == b) b = a - std::fabs(a) - 1;
    }
    Columns<T> v(pairs);
    ASSERT_EQ(subtract(v.a, v.b, static_cast<int>(pairs.size())), 0);
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const long double a = pairs[i].first, d = pairs[i].second - a;
        const long double larger = std::max<long double>(a, sizeof(T) == 4 ? kZero<T> : a);
        const long double rest = -std::expm1(d), exact = larger + std::log(rest);
        long double bound =
            halfUlp<T>(exact) * 1.001L + 0x1p-52L * (2 / rest + std::fabs(std::log(rest)) + std::fabs(a));
        if (d < kCutOff<T> + 8 * halfUlp<T>(d)) bound += kLeftOut<T>;
        ASSERT_LE(std::fabs(v.b[i] - exact), bound) << pairs[i].first << " " << pairs[i].second;
    }
}
TEST(LogSub, StaysWithinItsError) {
    subtractionStaysWithinItsError<Kel32f>();
    subtractionStaysWithinItsError<Kel64f>();
}

template <class T>
void subtractionLimits() {
    const T zero = kZero<T>, inf = static_cast<T>(kInf);
    EXPECT_EQ(subtract(T(0), T(-1e-17)), zero);  // 1 - e^d is 0
    EXPECT_EQ(subtract(T(-7), T(-1e6)), T(-7));
    EXPECT_EQ(subtract(T(-2e10), T(-3e10)), zero);
    EXPECT_EQ(subtract(T(3), -inf), T(3));
    EXPECT_EQ(subtract(inf, T(3)), inf);
    EXPECT_TRUE(std::isnan(subtract(T(kNaN), T(3))));
    EXPECT_TRUE(std::isnan(subtract(T(3), T(kNaN))));
}
TEST(LogSub, Limits) {
    subtractionLimits<Kel32f>();
    subtractionLimits<Kel64f>();
    EXPECT_EQ(subtract(-4500000.0f, -9e6f), -4500000.0f);
    EXPECT_EQ(subtract(-9.5e9, -9.9e9), -1e10);
    EXPECT_EQ(subtract(-9e9, -9.9e9), -9e9);
    EXPECT_EQ(subtract(INT_MAX, INT_MIN), INT_MAX);          // their difference exceeds an int
    EXPECT_EQ(subtract(INT_MIN + 1, INT_MIN), INT_MIN + 1);  // near operands know no floor
    EXPECT_EQ(subtract(-5000000, -6000000), -4500000);
}

template <class T>
void unorderedElementsAreRefused(std::vector<T> higher) {
    for (const int len : {1, 5, 6, 40, 600}) {
        for (int bad = 0; bad < len; bad += 1 + len / 7) {
            for (const T step : {0, 1}) {
                std::vector<T> a(len, higher[0]), b(len, higher[0]);
                for (auto& x : b) x = static_cast<T>(x - 3);
                b[bad] = static_cast<T>(a[bad] + step);
                const auto before = b;
                EXPECT_EQ(subtract(a.data(), b.data(), len), -7);
                EXPECT_EQ(b, before);
            }
        }
    }
    for (const T x : higher) {
        T b = x;
        EXPECT_EQ(subtract(&x, &b, 1), -7) << x;
    }
}
TEST(LogSub, UnorderedElementsAreRefused) {
    unorderedElementsAreRefused<Kel32f>({-3, HUGE_VALF, -HUGE_VALF, 0});
    unorderedElementsAreRefused<Kel64f>({-3, HUGE_VAL, -HUGE_VAL, 0});
    unorderedElementsAreRefused<Kel32s>({-3, INT_MAX, INT_MIN});
    unorderedElementsAreRefused<Kel16s>({-3, SHRT_MAX, SHRT_MIN});
    const Kel32s low = INT_MIN;
    Kel32s high = INT_MAX;
    EXPECT_EQ(subtract(&low, &high, 1), -7);
}

template <class T>
void integersSubtractExactOperands() {
    test::Random random(8);
    for (const int scaleFactor : {-3, 0, 4, 8, 12, 24, 29}) {
        test::Guarded<T> a(random.vector<T>(50)), b(50);
        std::vector<long double> exact;
        for (int i = 0; i < 50; ++i) {
            if (a[i] == std::numeric_limits<T>::min()) ++a[i];
            const int span = std::min<int64_t>(random.between(1, 40000), int64_t{a[i]} - std::numeric_limits<T>::min());
            b[i] = static_cast<T>(a[i] - span);
            const long double value = std::ldexp(static_cast<long double>(a[i]), -scaleFactor);
            const long double d = std::ldexp(-static_cast<long double>(span), -scaleFactor);
            const long double whole =
                d < kCutOff<Kel32f> ? std::max(value, -4500000.0L) : value + std::log(-std::expm1(d));
            exact.push_back(std::clamp<long double>(std::ldexp(whole, scaleFactor), std::numeric_limits<T>::min(),
                                                    std::numeric_limits<T>::max()));
        }
        const auto before = b.vector();
        test::inEveryRoundingMode([&] {
            test::Guarded<T> result(before);
            EXPECT_EQ(subtract(a, result, 50, scaleFactor), 0);
            for (int i = 0; i < 50; ++i) {
                // Truncated toward zero; double precision errs by less than a thousandth of a unit.
                EXPECT_LE(std::fabs(static_cast<long double>(result[i])), std::fabs(exact[i]) + 0.001L);
                EXPECT_LT(std::fabs(result[i] - exact[i]), 1.001L) << +a[i] << " " << +before[i] << " " << scaleFactor;
            }
        });
    }
}
TEST(LogSub, IntegersSubtractExactOperands) {
    integersSubtractExactOperands<Kel16s>();
    integersSubtractExactOperands<Kel32s>();
}

template <class T>
void sumStaysWithinItsError() {
    test::Random random(9);
    for (int len = 1; len < 300; len += 1 + len / 5) {
        test::Guarded<T> v(len);
        for (int i = 0; i < len; ++i) v[i] = static_cast<T>(random.uniform(-60, -40));
        long double total = 0, bound = 0;
        for (int i = 0; i < len; ++i) {
            total += std::exp(static_cast<long double>(v[i]));
            bound += std::max(kPolynomialError<T>, kLeftOut<T>) + halfUlp<T>(60);
        }
        EXPECT_LE(std::fabs(sum(v.vector()) - std::log(total)), len == 1 ? 1e-18L : bound) << len;
    }
}
TEST(LogSum, StaysWithinItsError) {
    sumStaysWithinItsError<Kel32f>();
    sumStaysWithinItsError<Kel64f>();
}

TEST(LogSum, StoresOnTheWay) {
    Kel32f v[] = {-1, -2, -3};
    const Kel32f two = sum(std::vector{-1.0f, -2.0f});
    EXPECT_EQ(sum(v, v + 2, 3), 0);
    EXPECT_EQ(v[2], sum(std::vector{-1.0f, -2.0f, two}));  // met its own intermediate sum
    Kel64f w[] = {-1, -2, -3};
    EXPECT_EQ(sum(w, w + 2, 3), 0);
    EXPECT_EQ(w[2], sum(std::vector{-1.0, -2.0, -1.0}));  // met the first element
}

template <class T>
void integersSumAsFloats() {
    test::Random random(10);
    constexpr T low = std::numeric_limits<T>::min(), high = std::numeric_limits<T>::max();
    EXPECT_EQ(sum(std::vector<T>{high}, 7), high);  // a float would round it
    for (const int scaleFactor : {-20, 0, 5, 9, 15}) {
        auto v = random.vector<T>(20);
        for (auto& x : v) x = static_cast<T>(v[0] / 2 + x % 500);
        std::vector<float> logs;
        for (const T x : v) logs.push_back(std::ldexp(static_cast<float>(x), -scaleFactor));
        const long double back = std::ldexp(static_cast<long double>(sum(logs)), scaleFactor);
        const auto expected = static_cast<T>(std::clamp<long double>(back, low, high));
        test::inEveryRoundingMode([&] { EXPECT_EQ(sum(v, scaleFactor), expected) << scaleFactor; });
    }
    EXPECT_EQ(sum(std::vector<T>{high, high}, 10), high);
    EXPECT_EQ(sum(std::vector<T>{3, 3}, -200), high);  // infinite as floats
    EXPECT_EQ(sum(std::vector<T>{0, 0}, -200), 0);
    EXPECT_EQ(sum(std::vector<T>{-5, -5}, 0), -4);  // -4.3
}
TEST(LogSum, IntegersSumAsFloats) {
    integersSumAsFloats<Kel16s>();
    integersSumAsFloats<Kel32s>();
}

// Length, then pointers, then the order of the operands.
template <class T, class Call>
void checkOrder(Call call) {
    T a = 1, b = 2;
    EXPECT_EQ(call(nullptr, nullptr, 0), -6);
    EXPECT_EQ(call(&a, &b, -1), -6);
    EXPECT_EQ(call(&a, nullptr, 1), -8);
    EXPECT_EQ(call(nullptr, &b, 1), -8);
    EXPECT_EQ(b, 2);
}
TEST(Log, ChecksInOrder) {
    for (const int hint : {0, 1, 9}) {
        checkOrder<Kel32f>([=](const Kel32f* a, Kel32f* b, int len) { return add(a, b, len, hint); });
    }
    checkOrder<Kel64f>([](const Kel64f* a, Kel64f* b, int len) { return add(a, b, len, 9); });
    checkOrder<Kel32s>([](const Kel32s* a, Kel32s* b, int len) { return add(a, b, len, 0, 9); });
    checkOrder<Kel16s>([](const Kel16s* a, Kel16s* b, int len) { return add(a, b, len, 0, 9); });
    checkOrder<Kel32f>([](const Kel32f* a, Kel32f* b, int len) { return subtract(a, b, len); });
    checkOrder<Kel64f>([](const Kel64f* a, Kel64f* b, int len) { return subtract(a, b, len); });
    checkOrder<Kel32s>([](const Kel32s* a, Kel32s* b, int len) { return subtract(a, b, len); });
    checkOrder<Kel16s>([](const Kel16s* a, Kel16s* b, int len) { return subtract(a, b, len); });
    checkOrder<Kel32f>([](const Kel32f* a, Kel32f* b, int len) { return sum(a, b, len); });
    checkOrder<Kel64f>([](const Kel64f* a, Kel64f* b, int len) { return sum(a, b, len); });
    checkOrder<Kel32s>([](const Kel32s* a, Kel32s* b, int len) { return sum(a, b, len); });
    checkOrder<Kel16s>([](const Kel16s* a, Kel16s* b, int len) { return sum(a, b, len); });
}

}  // namespace
