#include "kels/update.h"

#include <algorithm>
#include <cmath>

#include "kels/stats.h"
#include "support/checks.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

// A function by the element type T.
#define F(name) std::get<sizeof(T) / 8>(std::tuple(&kels##name##_32f, &kels##name##_64f))
#define COMPUTE std::get<sizeof(T) / 8>(std::tuple(&kelsDcsClustLCompute_32f64f, &kelsDcsClustLCompute_64f))

template <class T>
using Array = test::Guarded<T>;
using L = long double;

template <class T>
class Update : public testing::Test {
  protected:
    static constexpr T kNormal = std::numeric_limits<T>::min(), kInf = std::numeric_limits<T>::infinity(),
                       kNaN = std::numeric_limits<T>::quiet_NaN();
    std::vector<T> values(int n) { return random.vector<T>(n); }
    std::vector<T> positive(int n) {
        auto v = random.vector<T>(n);
        for (auto& x : v) x = std::fabs(x);
        return v;
    }
    test::Random random{3};
};
using FloatTypes = testing::Types<Kel32f, Kel64f>;
TYPED_TEST_SUITE(Update, FloatTypes);

// Every formula in the order of its operations, at every length, in place where that is allowed.
TYPED_TEST(Update, FormulasToTheBit) {
    using T = TypeParam;
    for (int n = 1; n <= 70; ++n) {
        const auto a = this->values(n), b = this->values(n), c = this->values(n), d = this->positive(n);
        const T p = this->positive(1)[0], q = this->positive(1)[0], r = 1 / (p + q);
        const auto expect = [n](KelStatus status, const Array<T>& got, auto formula) {
            EXPECT_TRUE(status == 0 || status == 11);
            for (int k = 0; k < n; ++k) EXPECT_TRUE(test::sameBits(got[k], T(formula(k)))) << n << " " << k;
        };
        Array<T> x(a), y(b), mean(b), floors(c), var(d), s(n), t(n), first(c), second(d), split(a);
        expect(F(UpdateMean)(x, mean, n, p), mean, [&](int k) { return b[k] + a[k] / p; });
        expect(F(UpdateVar)(x, var, floors, var, n, p, q), var, [&](int k) {
            const T v = d[k] / q - (a[k] / p) * (a[k] / p);
            return v > c[k] ? v : c[k];
        });
        T sum = 5, expectedSum = 0;
        expect(F(UpdateWeight)(x, s, n, &sum, p, q), s, [&](int k) { return a[k] / p > q ? a[k] / p : q; });
        for (int k = 0; k < n; ++k) expectedSum += s[k];
        EXPECT_TRUE(test::sameBits(sum, expectedSum));

        expect(F(MeanVarAcc)(x, y, first, second, n, p), first, [&](int k) { return c[k] + p * (a[k] - b[k]); });
        expect(0, second, [&](int k) { return d[k] + (a[k] - b[k]) * (p * (a[k] - b[k])); });
        Array<T> deviations(d);
        expect(F(GaussianSplit)(split, deviations, s, t, n, q), t, [&](int k) { return d[k]; });
        expect(0, split, [&](int k) { return a[k] + q * std::sqrt(d[k]); });
        expect(0, s, [&](int k) { return a[k] - q * std::sqrt(d[k]); });

        const T p1 = p * r, q1 = q * r;
        expect(F(WeightedSum)(x, floors, s, n, p, q), s, [&](int k) { return a[k] * p1 + c[k] * q1; });
        expect(F(WeightedSumHalf)(x, floors, floors, n, p, q), floors, [&](int k) { return a[k] * r + c[k] * q1; });
        const auto sums = [&](int k) { return a[k] * p; };
        expect(F(DcsClustLAccumulate_DirectVar)(x, y, s, t, n, p), s, sums);
        expect(0, t, [&](int k) { return (a[k] * a[k] + b[k]) * p; });
        expect(F(DcsClustLAccumulate)(x, y, x, y, n, p), x, sums);
        expect(0, y, [&](int k) { return (a[k] * a[k] + 1 / b[k]) * p; });
    }
}

TYPED_TEST(Update, FloorsAreStrictAndEveryPlaceCounts) {
    using T = TypeParam;
    for (int n = 1; n < 40; ++n) {
        for (int above = -1; above < n; ++above) {  // the one component above its floor, if any
            Array<T> zero(n), acc(std::vector<T>(n, 2)), floor(std::vector<T>(n, 1)), result(n);
            floor[0] = this->kNaN;  // whatever is compared with it, the floor is stored
            if (above >= 0) acc[above] = 3, floor[above] = 1;
            auto expected = floor.vector();
            if (above >= 0) expected[above] = 1.5;
            EXPECT_EQ(F(UpdateVar)(zero, acc, floor, result, n, 2, 2), above < 0 ? 11 : 0) << n << " " << above;
            EXPECT_TRUE(test::sameBits(result, expected));
            T sum;
            if (above != 0) acc[0] = this->kNaN;
            EXPECT_EQ(F(UpdateWeight)(acc, result, n, &sum, 2, 1), above < 0 ? 11 : 0);
            EXPECT_EQ(sum, n + (above < 0 ? T(0) : T(0.5)));
        }
    }
}

TYPED_TEST(Update, Occupations) {
    using T = TypeParam;
    const T least = std::nextafter(this->kNormal, T(1));
    const std::pair<T, KelStatus> cases[] = {{-1, -67},           {this->kNaN, -67}, {-this->kNormal, -67}, {0, 16},
                                             {this->kNormal, 16}, {least, 0},        {T(-0.0), 16}};
    for (const auto& [occ, status] : cases) {
        T acc = 0, floor = -1, v = 7, sum = 7;
        Kel64f result = 7;
        EXPECT_EQ(F(UpdateMean)(&acc, &v, 1, occ), status) << occ;
        for (const T other : {T(1), T(0)}) {  // negative ones first, whichever argument they are
            const KelStatus both = status == 0 && other == 0 ? 16 : status;
            EXPECT_EQ(F(UpdateVar)(&acc, &acc, &floor, &v, 1, other, occ), both) << occ;
            EXPECT_EQ(F(UpdateVar)(&acc, &acc, &floor, &v, 1, occ, other), both) << occ;
        }
        EXPECT_EQ(v == 7, status != 0);
        EXPECT_EQ(F(UpdateWeight)(&acc, &v, 1, &sum, occ, -1), status) << occ;
        EXPECT_EQ(sum == 7, status != 0);
        EXPECT_EQ(COMPUTE(&acc, &acc, 1, &result, occ), status < 0 ? -67 : occ == 0 ? 16 : 7);
        EXPECT_EQ(result, status < 0 ? 7 : occ == 0 ? -1e10 : -HUGE_VAL);
    }
}

TEST(UpdateChecks, Order) {
    test::expectVectorChecks(
        {-8, -6}, kelsUpdateMean_32f, kelsUpdateMean_64f, kelsUpdateVar_32f, kelsUpdateVar_64f, kelsUpdateWeight_32f,
        kelsUpdateWeight_64f, kelsMeanVarAcc_32f, kelsMeanVarAcc_64f, kelsGaussianSplit_64f, kelsWeightedSum_32f,
        kelsWeightedSum_64f, kelsWeightedSum_16s, kelsWeightedSumHalf_32f, kelsWeightedSumHalf_64f,
        kelsWeightedSumHalf_16s, kelsBhatDist_32f64f, kelsBhatDist_32f, kelsBhatDistSLog_32f64f, kelsBhatDistSLog_32f,
        kelsDcsClustLAccumulate_32f, kelsDcsClustLAccumulate_64f, kelsDcsClustLAccumulate_DirectVar_32f,
        kelsDcsClustLAccumulate_DirectVar_64f, kelsDcsClustLCompute_32f64f, kelsDcsClustLCompute_64f);
    test::expectVectorChecks({-6, -8}, kelsGaussianSplit_32f, kelsGaussianMerge_32f, kelsGaussianMerge_64f,
                             kelsGaussianDist_32f, kelsGaussianDist_64f);
}

// ---- logarithms ------------------------------------------------------------------------------------------------------

constexpr L kLn2Pi = 1.8378770664093;  // the double

// n factors and their exponents, each wrong by a part in 2^53, two logarithms and a few operations on the total.
L logBound(int n, L total) {
    return (n + 8 * std::fabs(total) + 8) * 0x1p-53L;
}
template <class T>
testing::AssertionResult near(T got, L exact, L bound) {
    return test::near(got, exact, bound + std::ldexp(std::fabs(exact), -std::numeric_limits<T>::digits));
}

TYPED_TEST(Update, MergeAndItsCost) {
    using T = TypeParam;
    for (int n = 1; n <= 200; n += n < 70 ? 1 : 13) {
        Array<T> m1(this->values(n)), m2(this->values(n)), v1(this->positive(n)), v2(this->positive(n)), m(n), v(n);
        if (n % 3 == 0) v1[n / 2] = v2[n / 2] = this->kNormal / 8, m1[n / 2] = m2[n / 2] = 0;
        if (n % 5 == 0) v1[n - 1] = std::numeric_limits<T>::max() / 8192;
        const T w1 = this->positive(1)[0], w2 = this->positive(1)[0], total = w1 + w2;
        T det, cost;
        ASSERT_EQ(F(GaussianMerge)(m1, v1, m2, v2, m, v, n, &det, w1, w2), 0);
        EXPECT_EQ(F(GaussianDist)(m1, v1, m2, v2, n, &cost, w1, 3, w2, -5), 0);
        L logs = 0, magnitudes = n * kLn2Pi;
        for (int k = 0; k < n; ++k) {
            const T mean = (w1 * m1[k] + w2 * m2[k]) / total;
            const T var = (w1 * (m1[k] * m1[k] + v1[k]) + w2 * (m2[k] * m2[k] + v2[k])) / total - mean * mean;
            EXPECT_TRUE(test::sameBits(m[k], mean) && test::sameBits(v[k], var)) << n << " " << k;
            logs += std::log(L(var));
            magnitudes += std::fabs(std::log(L(var)));
        }
        const L exact = n * kLn2Pi - logs, bound = logBound(n, magnitudes);
        EXPECT_TRUE(near(det, exact, bound)) << n;
        EXPECT_TRUE(near(cost, w1 * 3.0L - w2 * 5.0L - total * exact, total * bound + (w1 * 3 + w2 * 5) * 0x1p-51L))
            << n;
    }
}

TYPED_TEST(Update, MergeStopsAtTheFirstVarianceWithoutLogarithm) {
    using T = TypeParam;
    for (const int n : {1, 5, 13, 39, 64, 65, 130}) {
        for (int place = 0; place < 2 * n; ++place) {
            const int fault = place / 2;
            const bool zero = place % 2;
            Array<T> ones(std::vector<T>(n, 1)), vars(ones.vector()), m(std::vector<T>(n, 7)), v(m.vector());
            vars[n - 1] = zero ? -1 : 0;  // the other fault, behind
            vars[fault] = zero ? T(0) : T(-0.5);
            T results[2] = {};
            EXPECT_EQ(F(GaussianMerge)(ones, vars, ones, vars, m, v, n, results, 1, 1), zero ? 7 : 8);
            EXPECT_EQ(F(GaussianDist)(ones, vars, ones, vars, n, results + 1, 1, 2, 1, 2), zero ? 7 : 8);
            for (const T result : results) EXPECT_TRUE(test::sameBits(result, zero ? this->kInf : this->kNaN));
            for (int k = 0; k < n; ++k) {
                EXPECT_TRUE(k > fault ? m[k] == 7 && v[k] == 7 : m[k] == 1 && v[k] == vars[k]) << n << " " << k;
            }
        }
    }
}

TYPED_TEST(Update, ClusterLikelihood) {
    using T = TypeParam;
    for (int n = 1; n <= 200; n += n < 70 ? 1 : 13) {
        Array<T> sum(this->values(n)), sqr(this->positive(n));
        const T occ = this->positive(1)[0] + 1;
        const L constant = n * (2 * std::log(L(occ)) - 2.8378770664093453);
        L logs = 0, magnitudes = std::fabs(constant);
        for (int k = 0; k < n; ++k) {
            sqr[k] += sum[k] * sum[k];
            const Kel64f u = Kel64f{sqr[k]} * occ - Kel64f{sum[k]} * sum[k];
            logs += std::log(L(u));
            magnitudes += std::fabs(std::log(L(u)));
        }
        Kel64f result;
        EXPECT_EQ(COMPUTE(sum, sqr, n, &result, occ), 0);
        EXPECT_TRUE(near(result, occ / 2 * (constant - logs), occ * logBound(n, magnitudes))) << n;
        for (int zero = 0; zero < n; zero += 1 + n / 20) {  // components without a variance
            sqr[zero] = 4 / occ, sum[zero] = 2;
            if (Kel64f{sqr[zero]} * occ != 4) sqr[zero] = sum[zero] = 0;
            EXPECT_EQ(COMPUTE(sum, sqr, n, &result, occ), 7);
            EXPECT_EQ(result, -HUGE_VAL);
        }
        sqr[n - 1] = -1;
        EXPECT_EQ(COMPUTE(sum, sqr, n, &result, occ), 8);
        EXPECT_TRUE(std::isnan(result));
    }
}

TEST(Bhattacharyya, AgainstTheFormula) {
    test::Random random(4);
    for (int n = 1; n <= 200; n += n < 70 ? 1 : 13) {
        Array<Kel32f> m1(n), v1(n), m2(n), v2(n);
        L distance = 0, averages = 0, logs1 = 0, logs2 = 0, magnitudes = 0;
        for (int k = 0; k < n; ++k) {
            for (auto* const v : {&m1, &v1, &m2, &v2}) (*v)[k] = std::fabs(random.value<Kel32f>(18)) + 1e-5f;
            const L d = L(m1[k]) - m2[k], both = L(v1[k]) + v2[k];
            distance += d * d / both;
            averages += std::log(both / 2);
            logs1 += std::log(L(v1[k]));
            logs2 += std::log(L(v2[k]));
            magnitudes += std::fabs(std::log(both / 2));
        }
        const auto s1 = static_cast<Kel32f>(logs1), s2 = static_cast<Kel32f>(logs2);
        const L bound = (n + 8) * 0x1p-52L * distance / 4 + 3 * logBound(n, magnitudes),
                half = distance / 4 + averages / 2;
        Kel64f result, slog;
        Kel32f rounded, roundedSlog;
        EXPECT_EQ(kelsBhatDist_32f64f(m1, v1, m2, v2, n, &result), 0);
        EXPECT_EQ(kelsBhatDistSLog_32f64f(m1, v1, m2, v2, n, &slog, s1, s2), 0);
        EXPECT_EQ(kelsBhatDist_32f(m1, v1, m2, v2, n, &rounded), 0);
        EXPECT_EQ(kelsBhatDistSLog_32f(m1, v1, m2, v2, n, &roundedSlog, s1, s2), 0);
        EXPECT_TRUE(near(result, half - (logs1 + logs2) / 4, bound)) << n;
        EXPECT_TRUE(near(slog, half - (L(s1) + s2) / 4, bound + std::fabs(s1 + s2) * 0x1p-52L)) << n;
        EXPECT_TRUE(rounded == static_cast<Kel32f>(result) && roundedSlog == static_cast<Kel32f>(slog));
        EXPECT_EQ(kelsBhatDist_32f64f(m1, v1, m1, v1, n, &result), 0);
        EXPECT_EQ(result, 0);  // exactly: no rounding of one logarithm beside another's
    }
}

TEST(Bhattacharyya, FirstFaultyComponentDecides) {
    const Kel32f limit = 1e-6f, good = std::nextafter(limit, 1.0f);  // below and above the double of that name
    for (const int n : {1, 13, 64, 65, 130}) {
        for (int i = 0; i < 16 * n; ++i) {
            const int at = i / 16, which = i / 4 % 4;
            const Kel32f bad = std::array{-good, limit, 0.0f, -0.0f}[i % 4];
            const std::vector<Kel32f> values(n, good);
            Array<Kel32f> a[] = {values, values, values, values};
            a[which][at] = bad;
            if (which > 0 && bad < 0) a[which - 1][at] = 0;           // signs before magnitudes
            if (at + 1 < n) a[3 - which][at + 1] = bad < 0 ? 0 : -1;  // behind
            const auto expect = [&]<class R>(auto f, R result, auto... sums) {
                EXPECT_EQ(f(a[0], a[1], a[2], a[3], n, &result, sums...), bad < 0 ? 8 : 7);
                EXPECT_TRUE(test::sameBits(result, static_cast<R>(bad < 0 ? NAN : HUGE_VAL)));
            };
            expect(kelsBhatDist_32f64f, 0.0);
            expect(kelsBhatDistSLog_32f64f, 0.0, 1.0f, 1.0f);
            expect(kelsBhatDist_32f, 0.0f);
            expect(kelsBhatDistSLog_32f, 0.0f, 1.0f, 1.0f);
        }
    }
}

// ---- weighted averages -----------------------------------------------------------------------------------------------

TYPED_TEST(Update, WeightsThatCancelGiveSigns) {
    using T = TypeParam;
    const Kel16s signs[] = {32767, -32768, 0, 0, -32768, 0};
    for (const auto f : {F(WeightedSum), F(WeightedSumHalf)}) {
        Array<T> a{3, 1, 2, 0, -3, 5}, b{1, 3, 2, 0, -1, 5}, result(6);
        EXPECT_EQ(f(a, b, result, 6, T(0.1), T(-0.1)), 6);
        for (int k = 0; k < 6; ++k)
            EXPECT_TRUE(test::sameBits(result[k], signs[k] == 0 ? this->kNaN : signs[k] * this->kInf));
    }
    for (const auto f : {kelsWeightedSum_16s, kelsWeightedSumHalf_16s}) {
        Kel16s a[] = {3, 1, 2, 0, -3, 5}, b[] = {1, 3, 2, 0, -1, 5};
        EXPECT_EQ(f(a, b, b, 6, 0.1f, -0.1f), 6);
        EXPECT_TRUE(std::equal(b, b + 6, signs));
    }
}

TEST(UpdateFixed, WeightedSums) {
    test::Random random(8);
    const std::pair<float, float> weights[] = {{1, 2}, {0.3f, 0.6f}, {-5, 6}, {1e-3f, 1}, {3, -1}, {1e9f, -0.9999e9f}};
    for (int n = 1; n < 70; ++n) {
        for (const auto& [p, q] : weights) {
            const Array<Kel16s> a(random.vector<Kel16s>(n)), b(random.vector<Kel16s>(n));
            Array<Kel16s> dst(n);
            const float r = 1 / (p + q);
            const auto expect = [&, q = q](float first) {
                for (int k = 0; k < n; ++k) {
                    const float sum = a[k] * first + b[k] * (q * r);
                    EXPECT_EQ(dst[k], static_cast<Kel16s>(std::clamp(sum, -32768.0f, 32767.0f))) << n << " " << k;
                }
            };
            test::inEveryRoundingMode(
                [&, p = p, q = q] { EXPECT_EQ(kelsWeightedSum_16s(a.data(), b.data(), dst, n, p, q), 0); },
                [&, p = p] { expect(p * r); });
            std::copy_n(b.data(), n, dst.data());
            EXPECT_EQ(kelsWeightedSumHalf_16s(a.data(), dst, dst, n, p, q), 0);
            expect(r);
        }
    }
}

}  // namespace
