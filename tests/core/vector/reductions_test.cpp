// Dot products, sums and extrema.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>

#include "kels.h"
#include "support/forms.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"
#include "support/rounding.h"

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
        // An 80-bit accumulator loses this much before its one rounding to T, whose last bit may turn a tie: 2^-10 of
        // a half unit of a double.
        const long double loss = static_cast<long double>(n) * 0x1p-64L * static_cast<long double>(magnitudes);
        int exponent;
        std::frexp(std::fabs(exact) + loss, &exponent);
        const long double ulp = std::ldexp(1.0L, exponent - std::numeric_limits<T>::digits);
        EXPECT_TRUE(test::near(got, exact, ulp / 2 * (1 + 0x1p-10L) + loss)) << n << " terms";
    }
    std::size_t n;
    __float128 sum = 0, magnitudes = 0;
};

constexpr int nextLength(int n) {
    return n < 70 ? n + 1 : 7 * n + 3;  // 493, 3454, 24181
}

constexpr auto dotProd = test::forms(kelsDotProd_32f, kelsDotProd_64f);
constexpr auto maxOf = test::forms(kelsMax_32f, kelsMax_64f);
constexpr auto minOf = test::forms(kelsMin_32f, kelsMin_64f);
constexpr auto maxIndx = test::forms(kelsMaxIndx_32f, kelsMaxIndx_64f);

template <class T>
class FloatReductions : public testing::Test {};
using FloatTypes = testing::Types<Kel32f, Kel64f>;
TYPED_TEST_SUITE(FloatReductions, FloatTypes);

TYPED_TEST(FloatReductions, LoseNoMoreThanExtendedPrecision) {
    using T = TypeParam;
    test::Random random(21);
    for (int n = 1; n < 100000; n = nextLength(n)) {
        for (const bool cancels : {false, true}) {
            const Guarded<T> x(cancels ? cancelling<T>(random, n) : random.vector<T>(n));
            const Guarded<T> y(cancels ? std::vector<T>(n, random.value<T>()) : random.vector<T>(n));
            const Reference products(x.vector(), y.vector());
            T dot;
            EXPECT_EQ(dotProd(x.data(), y.data(), n, &dot), 0);
            products.expect(dot);
            if constexpr (std::is_same_v<T, Kel32f>) {
                Kel64f wide;
                EXPECT_EQ(kelsDotProd_32f64f(x.data(), y.data(), n, &wide), 0);
                products.expect(wide);
                const Reference terms(x.vector());
                std::vector<char> bytes(n * sizeof(T) + 1);  // off the alignment of a float
                auto* const askew = reinterpret_cast<Kel32f*>(bytes.data() + 1);
                std::memcpy(bytes.data() + 1, x.data(), n * sizeof(T));
                Kel32f sum;
                for (const auto& [from, hint] : {std::pair(x.data(), 0), {x.data(), 2}, {askew, 0}, {askew, 1}}) {
                    EXPECT_EQ(kelsSum_32f(from, n, &sum, hint), 0);
                    terms.expect(sum);
                }
                // Fast: at most 32768 / 16 + 16 single-precision additions stand behind an element.
                EXPECT_EQ(kelsSum_32f(x.data(), n, &sum, kelHintFast), 0);
                const auto bound = static_cast<long double>(terms.magnitudes) * 0x1p-24L * std::min(n, 2100);
                EXPECT_TRUE(test::near(sum, static_cast<long double>(terms.sum), bound));
            }
        }
    }
}

TEST(Reductions, SumsMeetInfinityNaNAndOverflowAsExtendedPrecisionDoes) {
    const std::vector<Kel64f> ones(64, 1.0);
    for (const Kel64f last : {-1e308, Kel64f{INFINITY}}) {
        std::vector<Kel64f> v(64, 0.0);
        v[3] = v[19] = 1e308, v[35] = last;  // a lane on the way overflows a double
        Kel64f dot;
        kelsDotProd_64f(v.data(), ones.data(), 64, &dot);
        EXPECT_EQ(dot, std::fabs(last));
    }
    for (const Kel32f special : {INFINITY, -INFINITY, NAN, 3e38f}) {
        std::vector<Kel32f> f(64, 1.0f);
        std::fill_n(&f[40], 2, special);
        for (const int hint : {kelHintNone, kelHintFast}) {
            Kel32f sum;
            kelsSum_32f(f.data(), 64, &sum, hint);
            EXPECT_TRUE(test::sameBits(sum, special == 3e38f ? INFINITY : special));
        }
    }
}

TEST(Reductions, IntegerSumsAreExact) {
    test::Random random(24);
    for (int n = 1; n < 100000; n = nextLength(n)) {
        const bool lowest = n == 3454;
        const Guarded<Kel16s> x(lowest ? std::vector<Kel16s>(n, -32768) : random.vector<Kel16s>(n));
        const Guarded<Kel16s> y(lowest ? x.vector() : random.vector<Kel16s>(n));
        const Guarded<Kel32s> z(lowest ? std::vector<Kel32s>(n, INT32_MIN) : random.vector<Kel32s>(n));
        int64_t dot = 0, gotDot;
        for (int i = 0; i < n; ++i) dot += int64_t{x[i]} * y[i];
        EXPECT_EQ(kelsDotProd_16s64s(x.data(), y.data(), n, &gotDot), 0);
        EXPECT_EQ(gotDot, dot);
        Kel32f asFloat;
        test::inEveryRoundingMode([&] { EXPECT_EQ(kelsDotProd_16s32f(x.data(), y.data(), n, &asFloat), 0); },
                                  [&] { EXPECT_EQ(asFloat, static_cast<Kel32f>(dot)); });
        for (const int scale : {0, 1, 5, 31, 40, 63, 64, INT32_MAX, -1, -3, -31, -40, INT32_MIN}) {
            Kel32s got;
            EXPECT_EQ(kelsSum_16s32s_Sfs(x.data(), n, &got, scale), 0);
            EXPECT_EQ(got, test::halfEven<Kel32s>(std::accumulate(x.data(), x.data() + n, int64_t{0}), scale));
            EXPECT_EQ(kelsSum_32s_Sfs(z.data(), n, &got, scale), 0);
            EXPECT_EQ(got, test::halfEven<Kel32s>(std::accumulate(z.data(), z.data() + n, int64_t{0}), scale));
        }
    }
}

TYPED_TEST(FloatReductions, ExtremaAreTheFirstOfEqualsAndPassOverNaN) {
    using T = TypeParam;
    test::Random random(25);
    for (int n = 1; n < 9000; n = n < 130 ? n + 1 : n * 2 + 1) {
        for (int trial = 0; trial < 12; ++trial) {
            Guarded<T> v(n);
            // Few different values, so that ties are common; a zero of either sign; sometimes all below zero.
            for (int i = 0; i < n; ++i) v[i] = static_cast<T>(random.between(-4, trial < 6 ? 3 : 0)) * T(0.5);
            if (trial % 3 == 1) v[random.between(0, n - 1)] = std::numeric_limits<T>::quiet_NaN();
            if (trial % 3 == 2) v[n - 1] = trial < 6 ? T(9) : T(-9);
            if (trial == 10) v[0] = std::numeric_limits<T>::quiet_NaN();
            int largest = 0, smallest = 0, index = -1;
            for (int i = 1; i < n; ++i) {
                if (v[i] > v[largest]) largest = i;
                if (v[i] < v[smallest]) smallest = i;
            }
            const auto expect = [&](const auto& f, int place, auto... indexPointer) {
                T value;
                EXPECT_EQ(f(v, n, &value, indexPointer...), 0);
                EXPECT_TRUE(test::sameBits(value, v[place]));
            };
            expect(maxOf, largest);
            expect(minOf, smallest);
            expect(maxIndx, largest, nullptr);
            expect(maxIndx, largest, &index);
            ASSERT_EQ(index, largest);
        }
    }
}

}  // namespace
