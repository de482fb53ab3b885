// Addition, subtraction and summation of logarithms.
#include "kels/log.h"

#include <climits>

#include "support/elements.h"
#include "support/forms.h"
#include "support/rounding.h"

namespace {

using test::Near;

template <class T>
constexpr long double kLogZero = sizeof(T) == 8 ? -1e10L : -4500000.0L;

constexpr auto kAdd = test::forms(kelsLogAdd_32f, kelsLogAdd_64f, kelsLogAdd_32s_Sfs, kelsLogAdd_16s_Sfs);
constexpr auto kSubtract = test::forms(kelsLogSub_32f, kelsLogSub_64f, kelsLogSub_32s_Sfs, kelsLogSub_16s_Sfs);
constexpr auto kSum = test::forms(kelsLogSum_32f, kelsLogSum_64f, kelsLogSum_32s_Sfs, kelsLogSum_16s_Sfs);

template <class T>
T add(T a, T b, int hint) {
    EXPECT_EQ(kAdd(&a, &b, 1, hint), 0);
    return b;
}
template <class T, class... Scale>
T subtract(T a, T b, Scale... scaleFactor) {
    EXPECT_EQ(kSubtract(&a, &b, 1, scaleFactor...), 0);
    return b;
}
template <class T, class... Scale>
T sum(const std::vector<T>& v, Scale... scaleFactor) {
    T result = 77;
    EXPECT_EQ(kSum(v.data(), &result, static_cast<int>(v.size()), scaleFactor...), 0);
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

// ---- addition ------------------------------------------------------------------------------------------------------

// Those of the double form lie so far apart that its rounding tells them.
TEST(LogAdd, EdgesBelongToTheFartherPiece) {
    for (const int hint : {0, 1, 2}) {
        EXPECT_GT(add(0.0, -23.0258509299405, hint), 0.9e-10);
        EXPECT_EQ(add(0.0, std::nextafter(-23.0258509299405, -100.0), hint), 0.0);
        EXPECT_GT(add(0.0f, std::nextafter(-15.3195879547406f, 0.0f), hint), 2e-7f);
        EXPECT_EQ(add(0.0f, std::nextafter(-15.3195879547406f, -100.0f), hint), 0.0f);
    }
    for (const int none : {-1, 3, INT_MIN}) EXPECT_TRUE(add(1.0, 2.0, none) == 2 && add(1.0f, 2.0f, none) == 2);
    EXPECT_EQ(add(0.0f, -2.55f, 1), 0.07518323027822499f);
    EXPECT_EQ(add(0.0f, -6.8f, 1), 0.0011131507706311817f);
}

TYPED_TEST(LogFloats, FloorsAndInfinities) {
    using T = TypeParam;
    const T zero = kLogZero<T>, far = -zero * 100, inf = static_cast<T>(HUGE_VAL), nan = NAN,
            ln2 = T(0.6931471805599453);
    // Below this a maximum is the logarithm of zero; far operands only.
    const T floor = sizeof(T) == 8 ? T(-9e9) : zero;
    const T cases[][3] = {{floor, -far, floor},   {std::nextafter(floor, -far), -far, zero},
                          {-far, 2 * -far, zero}, {-far, -far, -far + ln2},
                          {-inf, -inf, zero},     {-inf, -far, zero},
                          {-inf, 3, 3},           {inf, inf, inf},
                          {inf, -inf, inf},       {nan, 1, nan},
                          {nan, inf, nan},        {nan, -inf, nan}};
    for (const auto& [a, b, expected] : cases) {
        for (const int hint : {0, 1, 2}) {
            EXPECT_TRUE(test::sameBits(add(a, b, hint), expected)) << a << " " << b << " " << add(a, b, hint);
            EXPECT_TRUE(test::sameBits(add(b, a, hint), expected)) << b << " " << a << " " << add(b, a, hint);
        }
        EXPECT_TRUE(test::sameBits(sum(std::vector{a, b}), expected)) << a << " " << b;  // one pair takes another way
    }
}

// An integer as the float that is computed with, and a result back, truncated.
float unscale(int x, int scaleFactor) {
    return static_cast<float>(test::scaled(static_cast<float>(x), std::clamp(scaleFactor, -128, 150)));
}
template <class T>
T rescale(long double x, int scaleFactor) {
    return test::saturated<T>(std::trunc(std::ldexp(x, std::clamp(scaleFactor, -150, 128))));
}

TYPED_TEST(LogIntegers, AddAsFloats) {
    using T = TypeParam;
    const auto sum = [](T a, T b, int, int scaleFactor, int hint) {
        const float x = unscale(a, scaleFactor), y = unscale(b, scaleFactor);
        return rescale<T>(hint < 0 || hint > 2 ? y : add(x, y, hint), scaleFactor);
    };
    test::expectElements(sum, {.scalars = {INT_MIN, 0, -31, 1, 8, 2, 11, 0, 26, 1, 31, 2, 150, 0, 28}}, kAdd.of<T>());
}

// ---- subtraction ---------------------------------------------------------------------------------------------------

// Operands in the order that a subtraction needs: b becomes the smaller one.
template <class T>
T lowered(T a, T b) {
    return static_cast<T>(a - 1 - std::abs(b / 4));
}
template <class T>
KelStatus subtractLowered(const T* a, T* b, int len, int scaleFactor) {
    for (int i = 0; i < len; ++i) b[i] = lowered(a[i], b[i]);
    return kSubtract(a, b, len, scaleFactor);
}

// Halves of the range, so that nothing lowered leaves it.  Truncated toward zero; double precision errs by less than a
// thousandth of a unit.
TYPED_TEST(LogIntegers, Subtraction) {
    using T = TypeParam;
    const auto difference = [](T a, T b, int, int scaleFactor) {
        const long double m = test::scaled(a, scaleFactor), d = test::scaled(lowered(a, b), scaleFactor) - m;
        const long double whole = d < -15.3195879547406L ? std::max(m, kLogZero<Kel32f>) : m + std::log(-std::expm1(d));
        const long double exact = std::clamp<long double>(test::scaled(whole, -scaleFactor),
                                                          std::numeric_limits<T>::min(), std::numeric_limits<T>::max());
        return Near{exact - std::copysign(std::min(0.5L, std::fabs(exact)), exact), 0.501L};
    };
    const auto half = [](test::Random& random, double) { return std::trunc(random.value<T>() / 2.0); };
    test::expectElements(difference, {.scalars = {-3, 0, 4, 8, 12, 24, 29}, .input = half}, subtractLowered<T>);
}

TEST(LogSub, Limits) {
    EXPECT_EQ(subtract(0.0, -1e-17), -1e10);  // 1 - e^d is 0
    EXPECT_EQ(subtract(0.0f, -1e-17f), -4500000.0f);
    EXPECT_EQ(subtract(-9.5e9, -9.9e9), -1e10);
    EXPECT_EQ(subtract(-9e9, -9.9e9), -9e9);
    EXPECT_EQ(subtract(3.0, -HUGE_VAL), 3.0);
    EXPECT_TRUE(std::isnan(subtract<double>(3, NAN)) && std::isnan(subtract<float>(NAN, 3)));
    EXPECT_EQ(subtract(INT_MAX, INT_MIN, 0), INT_MAX);          // their difference exceeds an int
    EXPECT_EQ(subtract(INT_MIN + 1, INT_MIN, 0), INT_MIN + 1);  // near operands know no floor
    EXPECT_EQ(subtract(-5000000, -6000000, 0), -4500000);
}

template <class T, class... Scale>
void expectRefusal(T low, T high, Scale... scaleFactor) {
    for (const auto& [a, b] : {std::pair<T, T>(0, 0), {low, low}, {high, high}, {low, high}, {-3, -2}}) {
        for (int bad = 0; bad < 300; bad += 23) {
            std::vector<T> as(300, -3), bs(300, -6);
            as[bad] = a;
            bs[bad] = b;
            const auto before = bs;
            EXPECT_EQ(kSubtract(as.data(), bs.data(), 300, scaleFactor...), kelStatusOutOfRange) << a << " " << b;
            EXPECT_EQ(bs, before);
        }
    }
}
TEST(LogSub, UnorderedElementsAreRefused) {
    expectRefusal<Kel32f>(-INFINITY, INFINITY);
    expectRefusal<Kel64f>(-INFINITY, INFINITY);
    expectRefusal<Kel32s>(INT_MIN, INT_MAX, 0);
    expectRefusal<Kel16s>(-32768, 32767, 0);
}

// ---- sum -----------------------------------------------------------------------------------------------------------

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
    EXPECT_EQ(sum(std::vector<T>{-5, -5}, 0), -4);  // -4.3
}

}  // namespace
