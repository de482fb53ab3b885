#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>

#include "kels.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

using test::Guarded;

// The exact sum of long doubles: each addition's error is kept and added at the end, twice over.
long double exactSum(std::vector<long double> terms) {
    for (int pass = 0; pass < 3; ++pass) {
        for (std::size_t i = 1; i < terms.size(); ++i) {
            const long double a = terms[i - 1], b = terms[i], s = a + b, t = s - a;
            terms[i - 1] = (a - (s - t)) + (b - t);
            terms[i] = s;
        }
    }
    return std::accumulate(terms.begin(), terms.end(), 0.0L);
}

// Terms of which the later ones cancel most of the earlier: their sum is far below every term.
template <class T>
std::vector<T> cancelling(test::Random& random, std::size_t n) {
    std::vector<T> v = random.vector<T>(n, 20);
    for (std::size_t i = n / 2; i + 1 < n; ++i) v[i] = -v[n - 1 - i];
    std::shuffle(v.begin(), v.end(), std::mt19937(5));
    return v;
}

// An 80-bit accumulator may lose this much before its one rounding to T.
long double extendedLoss(const std::vector<long double>& terms) {
    long double magnitudes = 0;
    for (const long double t : terms) magnitudes += std::fabs(t);
    return static_cast<long double>(terms.size()) * 0x1p-64L * magnitudes;
}

template <class T>
void expectAsGoodAsExtended(T got, const std::vector<long double>& terms) {
    const long double exact = exactSum(terms);
    const auto nearest = static_cast<T>(exact);
    const long double halfUlp =
        (std::nextafter(std::fabs(nearest), std::numeric_limits<T>::infinity()) - std::fabs(nearest)) * 0.5L;
    // The last bit of an x87 rounding may turn a tie, which is 2^-10 of a half unit of a double.
    EXPECT_LE(std::fabs(got - exact), halfUlp * (1 + 0x1p-10L) + extendedLoss(terms)) << terms.size() << " terms";
}

std::vector<std::size_t> lengths() {
    std::vector<std::size_t> v(70);
    std::iota(v.begin(), v.end(), std::size_t{1});
    v.insert(v.end(), {1000, 4096, 4097, 20011, 100003});
    return v;
}

TEST(Reductions, FloatSumsLoseNoMoreThanExtendedPrecision) {
    test::Random random(21);
    for (const std::size_t n : lengths()) {
        for (const bool cancels : {false, true}) {
            const std::vector<Kel32f> a = cancels ? cancelling<Kel32f>(random, n) : random.vector<Kel32f>(n);
            const std::vector<Kel32f> b = random.vector<Kel32f>(n, cancels ? 0 : 8);
            const Guarded<Kel32f> x(a), y(b);
            std::vector<long double> terms(a.begin(), a.end()), products(n);
            for (std::size_t i = 0; i < n; ++i) products[i] = static_cast<long double>(a[i]) * b[i];
            Kel32f sum, dot;
            Kel64f wideDot;
            for (const int hint : {0, 2, 7}) {
                EXPECT_EQ(kelsSum_32f(x.data(), static_cast<int>(n), &sum, hint), kelStatusOk);
                expectAsGoodAsExtended(sum, terms);
            }
            EXPECT_EQ(kelsDotProd_32f(x.data(), y.data(), static_cast<int>(n), &dot), kelStatusOk);
            expectAsGoodAsExtended(dot, products);
            EXPECT_EQ(kelsDotProd_32f64f(x.data(), y.data(), static_cast<int>(n), &wideDot), kelStatusOk);
            expectAsGoodAsExtended(wideDot, products);
        }
    }
}

TEST(Reductions, DoubleDotProductsLoseNoMoreThanExtendedPrecision) {
    test::Random random(22);
    for (const std::size_t n : lengths()) {
        for (const bool cancels : {false, true}) {
            std::vector<Kel64f> a = cancels ? cancelling<Kel64f>(random, n) : random.vector<Kel64f>(n);
            std::vector<Kel64f> b = cancels ? std::vector<Kel64f>(n, random.value<Kel64f>()) : random.vector<Kel64f>(n);
            const Guarded<Kel64f> x(a), y(b);
            // The product as a sum of two long doubles: halves of 26 bits multiply exactly.
            std::vector<long double> products;
            for (std::size_t i = 0; i < n; ++i) {
                const auto high = static_cast<Kel64f>(static_cast<Kel32f>(a[i]));
                products.push_back(static_cast<long double>(high) * static_cast<Kel32f>(b[i]));
                products.push_back(static_cast<long double>(high) * (b[i] - static_cast<Kel32f>(b[i])));
                products.push_back(static_cast<long double>(a[i] - high) * static_cast<Kel32f>(b[i]));
                products.push_back(static_cast<long double>(a[i] - high) * (b[i] - static_cast<Kel32f>(b[i])));
            }
            Kel64f dot;
            EXPECT_EQ(kelsDotProd_64f(x.data(), y.data(), static_cast<int>(n), &dot), kelStatusOk);
            expectAsGoodAsExtended(dot, products);
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

    std::vector<Kel32f> f(64, 1.0f);
    Kel32f sum;
    for (const auto& [special, expected] :
         {std::pair<Kel32f, Kel32f>{INFINITY, INFINITY}, {-INFINITY, -INFINITY}, {NAN, NAN}}) {
        f[40] = special;
        kelsSum_32f(f.data(), 64, &sum, kelHintNone);
        EXPECT_TRUE(test::sameBits(sum, expected));
        kelsSum_32f(f.data(), 64, &sum, kelHintFast);
        EXPECT_TRUE(test::sameBits(sum, expected));
    }
    std::fill(f.begin(), f.end(), std::numeric_limits<Kel32f>::max());
    kelsSum_32f(f.data(), 64, &sum, kelHintNone);
    EXPECT_EQ(sum, INFINITY);
}

TEST(Reductions, FastSumIsGoodToSinglePrecisionAndTakesAnyAlignment) {
    test::Random random(23);
    for (const std::size_t n : {std::size_t{1}, std::size_t{37}, std::size_t{5000}, std::size_t{100003}}) {
        const std::vector<Kel32f> a = random.vector<Kel32f>(n);
        const long double exact = exactSum({a.begin(), a.end()});
        Kel32f sum;
        const Guarded<Kel32f> x(a);
        EXPECT_EQ(kelsSum_32f(x.data(), static_cast<int>(n), &sum, kelHintFast), kelStatusOk);
        // At most 32768 / 16 + 16 single-precision additions stand behind an element.
        EXPECT_LE(std::fabs(sum - exact), extendedLoss({a.begin(), a.end()}) / n * 0x1p64L * 0x1p-24L * 2100);

        std::vector<char> bytes(n * sizeof(Kel32f) + 1);
        std::memcpy(bytes.data() + 1, a.data(), n * sizeof(Kel32f));
        for (const int hint : {0, 1}) {
            EXPECT_EQ(kelsSum_32f(reinterpret_cast<const Kel32f*>(bytes.data() + 1), static_cast<int>(n), &sum, hint),
                      kelStatusOk);
            expectAsGoodAsExtended(sum, {a.begin(), a.end()});
        }
    }
}

TEST(Reductions, IntegerSumsAreExact) {
    test::Random random(24);
    for (const std::size_t n : lengths()) {
        std::vector<Kel16s> a = random.vector<Kel16s>(n), b = random.vector<Kel16s>(n);
        std::vector<Kel32s> wide = random.vector<Kel32s>(n);
        if (n == 4097) {
            std::fill(a.begin(), a.end(), Kel16s{-32768}), b = a;
            std::fill(wide.begin(), wide.end(), INT32_MIN);
        }
        int64_t dot = 0, sum = 0, wideSum = 0;
        for (std::size_t i = 0; i < n; ++i) dot += int64_t{a[i]} * b[i], sum += a[i], wideSum += wide[i];
        const Guarded<Kel16s> x(a), y(b);
        const Guarded<Kel32s> z(wide);
        const int len = static_cast<int>(n);
        int64_t gotDot;
        EXPECT_EQ(kelsDotProd_16s64s(x.data(), y.data(), len, &gotDot), kelStatusOk);
        EXPECT_EQ(gotDot, dot);
        Kel32f asFloat;
        test::inEveryRoundingMode(
            [&] { EXPECT_EQ(kelsDotProd_16s32f(x.data(), y.data(), len, &asFloat), kelStatusOk); },
            [&] { EXPECT_EQ(asFloat, static_cast<Kel32f>(dot)); });
        for (const int scale : {0, 1, 5, 31, 40, 63, 64, INT32_MAX, -1, -3, -31, -40, INT32_MIN}) {
            const auto expected = [=](int64_t v) {
                const long double r = std::nearbyint(std::ldexp(static_cast<long double>(v), -std::max(scale, -100)));
                return static_cast<Kel32s>(std::clamp(r, -2147483648.0L, 2147483647.0L));
            };
            Kel32s got;
            EXPECT_EQ(kelsSum_16s32s_Sfs(x.data(), len, &got, scale), kelStatusOk);
            EXPECT_EQ(got, expected(sum));
            EXPECT_EQ(kelsSum_32s_Sfs(z.data(), len, &got, scale), kelStatusOk);
            EXPECT_EQ(got, expected(wideSum));
        }
    }
}

// The rule in its plainest form.
template <class T, class Beyond>
std::size_t firstExtremum(const std::vector<T>& v, Beyond beyond) {
    std::size_t best = 0;
    for (std::size_t i = 1; i < v.size(); ++i) {
        if (beyond(v[i], v[best])) best = i;
    }
    return best;
}

template <class T>
void checkExtrema(KelStatus (*max)(const T*, int, T*), KelStatus (*min)(const T*, int, T*),
                  KelStatus (*maxIndx)(const T*, int, T*, int*)) {
    test::Random random(25);
    const T nan = std::numeric_limits<T>::quiet_NaN();
    for (std::size_t n = 1; n < 9000; n = n < 130 ? n + 1 : n * 2 + 1) {
        for (int trial = 0; trial < 12; ++trial) {
            std::vector<T> v(n);
            // Few different values, so that ties are common; zeros of both signs; sometimes all below zero.
            for (T& x : v)
                x = static_cast<T>(random.between(-4, trial < 6 ? 3 : 0)) * (random.between(0, 1) ? T(1) : T(0.5));
            if (trial % 3 == 1) v[static_cast<std::size_t>(random.between(0, static_cast<int>(n) - 1))] = nan;
            if (trial % 3 == 2) v[n - 1] = trial < 6 ? T(9) : T(-9);
            if (trial == 10) v[0] = nan;
            const Guarded<T> src(v);
            const std::size_t largest = firstExtremum(v, [](T x, T than) { return x > than; });
            const std::size_t smallest = firstExtremum(v, [](T x, T than) { return x < than; });
            const int len = static_cast<int>(n);
            T value;
            int index = -1;
            EXPECT_EQ(maxIndx(src.data(), len, &value, &index), kelStatusOk);
            ASSERT_EQ(index, static_cast<int>(largest));
            EXPECT_TRUE(test::sameBits(value, v[largest]));
            EXPECT_EQ(max(src.data(), len, &value), kelStatusOk);
            EXPECT_TRUE(test::sameBits(value, v[largest]));
            EXPECT_EQ(maxIndx(src.data(), len, &value, nullptr), kelStatusOk);
            EXPECT_TRUE(test::sameBits(value, v[largest]));
            EXPECT_EQ(min(src.data(), len, &value), kelStatusOk);
            EXPECT_TRUE(test::sameBits(value, v[smallest]));
        }
    }
}

TEST(Reductions, ExtremaAreTheFirstOfEqualsAndPassOverNaN) {
    checkExtrema<Kel32f>(kelsMax_32f, kelsMin_32f, kelsMaxIndx_32f);
    checkExtrema<Kel64f>(kelsMax_64f, kelsMin_64f, kelsMaxIndx_64f);
}

TEST(Reductions, ChecksPointersBeforeLength) {
    const Kel32f f[] = {1};
    Kel32f result = 5;
    int index = 5;
    EXPECT_EQ(kelsSum_32f(nullptr, 0, &result, 1), kelStatusNullPtr);
    EXPECT_EQ(kelsSum_32f(f, 0, nullptr, 1), kelStatusNullPtr);
    EXPECT_EQ(kelsSum_32f(f, 0, &result, 1), kelStatusSize);
    EXPECT_EQ(kelsDotProd_32f(f, nullptr, 0, &result), kelStatusNullPtr);
    EXPECT_EQ(kelsDotProd_32f(f, f, -1, &result), kelStatusSize);
    EXPECT_EQ(kelsMaxIndx_32f(f, 0, nullptr, &index), kelStatusNullPtr);
    EXPECT_EQ(kelsMaxIndx_32f(f, 0, nullptr, nullptr), kelStatusNullPtr);
    EXPECT_EQ(kelsMaxIndx_32f(f, 0, &result, nullptr), kelStatusSize);
    EXPECT_EQ(kelsMaxIndx_32f(f, 0, &result, &index), kelStatusSize);
    EXPECT_TRUE(result == 5 && index == 5);
}

}  // namespace
