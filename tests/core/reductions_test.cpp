#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>

#include "kels.h"
#include "support/checks.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

using test::Guarded;

// Terms of which the later ones cancel most of the earlier: their sum is far below every term.
template <class T>
std::vector<T> cancelling(test::Random& random, std::size_t n) {
    std::vector<T> v = random.vector<T>(n, 20);
    for (std::size_t i = n / 2; i + 1 < n; ++i) v[i] = -v[n - 1 - i];
    std::shuffle(v.begin(), v.end(), std::mt19937(5));
    return v;
}

// A sum or a dot product to far below a rounding of extended precision.
struct Reference {
    template <class T>
    explicit Reference(const std::vector<T>& a, const std::vector<T>& b = {}) : n(a.size()) {
        for (std::size_t i = 0; i < n; ++i) {
            const __float128 term = static_cast<__float128>(a[i]) * (b.empty() ? 1 : b[i]);
            sum += term;
            magnitudes += term < 0 ? -term : term;
        }
    }
    template <class T>
    void expect(T got) const {
        const auto exact = static_cast<long double>(sum);
        const T nearest = std::fabs(static_cast<T>(exact));
        const long double halfUlp = (std::nextafter(nearest, std::numeric_limits<T>::infinity()) - nearest) * 0.5L;
        // An 80-bit accumulator loses this much before its one rounding to T, whose last bit may turn a tie: 2^-10 of
        // a half unit of a double.
        const long double loss = static_cast<long double>(n) * 0x1p-64L * static_cast<long double>(magnitudes);
        EXPECT_LE(static_cast<long double>(std::fabs(got - exact)), halfUlp * (1 + 0x1p-10L) + loss) << n << " terms";
    }
    std::size_t n;
    __float128 sum = 0, magnitudes = 0;
};

std::vector<int> lengths() {
    std::vector<int> v(70);
    std::iota(v.begin(), v.end(), 1);
    v.insert(v.end(), {1000, 4096, 4097, 20011, 100003});
    return v;
}

// A function by the element type T.
#define F(name) std::get<sizeof(T) / 8>(std::tuple(&kels##name##_32f, &kels##name##_64f))
template <class T>
class FloatReductions : public testing::Test {};
using FloatTypes = testing::Types<Kel32f, Kel64f>;
TYPED_TEST_SUITE(FloatReductions, FloatTypes);

TYPED_TEST(FloatReductions, LoseNoMoreThanExtendedPrecision) {
    using T = TypeParam;
    test::Random random(21);
    for (const int n : lengths()) {
        for (const bool cancels : {false, true}) {
            const auto a = cancels ? cancelling<T>(random, n) : random.vector<T>(n);
            const auto b = cancels ? std::vector<T>(n, random.value<T>()) : random.vector<T>(n);
            const Guarded<T> x(a), y(b);
            const Reference products(a, b);
            Kel64f wide;
            if constexpr (std::is_same_v<T, Kel64f>) {
                EXPECT_EQ(kelsDotProd_64f(x.data(), y.data(), n, &wide), 0);
            } else {
                const Reference terms(a);
                Kel32f result;
                for (const int hint : {0, 2, 7}) {
                    EXPECT_EQ(kelsSum_32f(x.data(), n, &result, hint), 0);
                    terms.expect(result);
                }
                EXPECT_EQ(kelsDotProd_32f(x.data(), y.data(), n, &result), 0);
                products.expect(result);
                EXPECT_EQ(kelsDotProd_32f64f(x.data(), y.data(), n, &wide), 0);
            }
            products.expect(wide);
        }
    }
}

TEST(Reductions, SumsMeetInfinityNaNAndOverflowAsExtendedPrecisionDoes) {
    constexpr Kel64f big = std::numeric_limits<Kel64f>::max();
    const std::vector<Kel64f> ones(64, 1.0);
    std::vector<Kel64f> v(64, 0.0);
    v[3] = v[19] = big, v[35] = -big;  // a lane on the way overflows a double
    Kel64f dot;
    kelsDotProd_64f(v.data(), ones.data(), 64, &dot);
    EXPECT_EQ(dot, big);
    v[35] = INFINITY;
    kelsDotProd_64f(v.data(), ones.data(), 64, &dot);
    EXPECT_EQ(dot, INFINITY);

    Kel32f sum;
    for (const Kel32f special : {INFINITY, -INFINITY, NAN}) {
        std::vector<Kel32f> f(64, 1.0f);
        f[40] = special;
        for (const int hint : {kelHintNone, kelHintFast}) {
            kelsSum_32f(f.data(), 64, &sum, hint);
            EXPECT_TRUE(test::sameBits(sum, special));
        }
    }
    kelsSum_32f(std::vector<Kel32f>(64, std::numeric_limits<Kel32f>::max()).data(), 64, &sum, kelHintNone);
    EXPECT_EQ(sum, INFINITY);
}

TEST(Reductions, FastSumIsGoodToSinglePrecisionAndTakesAnyAlignment) {
    test::Random random(23);
    for (const int n : {1, 37, 5000, 100003}) {
        const Guarded<Kel32f> x(random.vector<Kel32f>(n));
        const Reference exact(x.vector());
        Kel32f sum;
        EXPECT_EQ(kelsSum_32f(x.data(), n, &sum, kelHintFast), 0);
        // At most 32768 / 16 + 16 single-precision additions stand behind an element.
        EXPECT_LE(std::fabs(sum - static_cast<Kel64f>(exact.sum)),
                  static_cast<Kel64f>(exact.magnitudes) * 0x1p-24 * 2100);

        std::vector<char> bytes(n * sizeof(Kel32f) + 1);
        std::memcpy(bytes.data() + 1, x.data(), n * sizeof(Kel32f));
        for (const int hint : {0, 1}) {
            EXPECT_EQ(kelsSum_32f(reinterpret_cast<const Kel32f*>(bytes.data() + 1), n, &sum, hint), 0);
            exact.expect(sum);
        }
    }
}

TEST(Reductions, IntegerSumsAreExact) {
    test::Random random(24);
    for (const int n : lengths()) {
        const bool lowest = n == 4097;
        const Guarded<Kel16s> x(lowest ? std::vector<Kel16s>(n, -32768) : random.vector<Kel16s>(n));
        const Guarded<Kel16s> y(lowest ? x.vector() : random.vector<Kel16s>(n));
        const Guarded<Kel32s> z(lowest ? std::vector<Kel32s>(n, INT32_MIN) : random.vector<Kel32s>(n));
        int64_t dot = 0, sum = 0, wideSum = 0, gotDot;
        for (int i = 0; i < n; ++i) dot += int64_t{x[i]} * y[i], sum += x[i], wideSum += z[i];
        EXPECT_EQ(kelsDotProd_16s64s(x.data(), y.data(), n, &gotDot), 0);
        EXPECT_EQ(gotDot, dot);
        Kel32f asFloat;
        test::inEveryRoundingMode([&] { EXPECT_EQ(kelsDotProd_16s32f(x.data(), y.data(), n, &asFloat), 0); },
                                  [&] { EXPECT_EQ(asFloat, static_cast<Kel32f>(dot)); });
        for (const int scale : {0, 1, 5, 31, 40, 63, 64, INT32_MAX, -1, -3, -31, -40, INT32_MIN}) {
            const auto expect = [&](auto f, const auto& src, int64_t v) {
                Kel32s got;
                EXPECT_EQ(f(src.data(), n, &got, scale), 0);
                const long double r = std::nearbyint(std::ldexp(static_cast<long double>(v), -std::max(scale, -100)));
                EXPECT_EQ(got, static_cast<Kel32s>(std::clamp(r, -2147483648.0L, 2147483647.0L)));
            };
            expect(kelsSum_16s32s_Sfs, x, sum);
            expect(kelsSum_32s_Sfs, z, wideSum);
        }
    }
}

TYPED_TEST(FloatReductions, ExtremaAreTheFirstOfEqualsAndPassOverNaN) {
    using T = TypeParam;
    test::Random random(25);
    const T nan = std::numeric_limits<T>::quiet_NaN();
    for (int n = 1; n < 9000; n = n < 130 ? n + 1 : n * 2 + 1) {
        for (int trial = 0; trial < 12; ++trial) {
            Guarded<T> v(n);
            // Few different values, so that ties are common; zeros of both signs; sometimes all below zero.
            for (int i = 0; i < n; ++i) {
                v[i] = static_cast<T>(random.between(-4, trial < 6 ? 3 : 0)) * (random.between(0, 1) ? T(1) : T(0.5));
            }
            if (trial % 3 == 1) v[random.between(0, n - 1)] = nan;
            if (trial % 3 == 2) v[n - 1] = trial < 6 ? T(9) : T(-9);
            if (trial == 10) v[0] = nan;
            int largest = 0, smallest = 0, index = -1;
            for (int i = 1; i < n; ++i) {
                if (v[i] > v[largest]) largest = i;
                if (v[i] < v[smallest]) smallest = i;
            }
            const auto expect = [&](auto f, int place, auto... indexPointer) {
                T value;
                EXPECT_EQ(f(v, n, &value, indexPointer...), 0);
                EXPECT_TRUE(test::sameBits(value, v[place]));
            };
            expect(F(Max), largest);
            expect(F(Min), smallest);
            expect(F(MaxIndx), largest, nullptr);
            expect(F(MaxIndx), largest, &index);
            ASSERT_EQ(index, largest);
        }
    }
}

TEST(Reductions, ChecksPointersBeforeLength) {
    test::expectVectorChecks({-8, -6}, kelsSum_32f, kelsSum_32s_Sfs, kelsSum_16s32s_Sfs, kelsDotProd_32f,
                             kelsDotProd_64f, kelsDotProd_32f64f, kelsDotProd_16s64s, kelsDotProd_16s32f, kelsMax_32f,
                             kelsMax_64f, kelsMin_32f, kelsMin_64f);
    Kel32f result = 5;
    int index = 5;
    for (int* const place : {&index, static_cast<int*>(nullptr)}) {
        EXPECT_EQ(kelsMaxIndx_32f(nullptr, 0, &result, place), kelStatusNullPtr);
        EXPECT_EQ(kelsMaxIndx_32f(&result, 0, nullptr, place), kelStatusNullPtr);
        EXPECT_EQ(kelsMaxIndx_32f(&result, 0, &result, place), kelStatusSize);
    }
    EXPECT_TRUE(result == 5 && index == 5);
}

}  // namespace
