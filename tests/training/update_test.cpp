#include "kels/update.h"

#include <algorithm>
#include <cmath>

#include "kels/stats.h"
#include "support/checks.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

#define FORMS(name) \
    static constexpr auto name = std::get<sizeof(T) / 8>(std::tuple(&kels##name##_32f, &kels##name##_64f));
template <class T>
struct Forms {
    FORMS(UpdateMean)
    FORMS(UpdateVar)
    FORMS(UpdateWeight)
    FORMS(MeanVarAcc)
    FORMS(GaussianSplit)
    FORMS(GaussianMerge)
    FORMS(GaussianDist)
    FORMS(WeightedSum)
    FORMS(WeightedSumHalf)
    FORMS(DcsClustLAccumulate)
    FORMS(DcsClustLAccumulate_DirectVar)
    static constexpr auto Compute =
        std::get<sizeof(T) / 8>(std::tuple(&kelsDcsClustLCompute_32f64f, &kelsDcsClustLCompute_64f));
};

template <class T>
using Array = test::Guarded<T>;

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

// Every formula in the order of its operations, at every length, in place.
TYPED_TEST(Update, FormulasToTheBit) {
    using T = TypeParam;
    using F = Forms<T>;
    for (int n = 1; n <= 70; ++n) {
        const auto a = this->values(n), b = this->values(n), c = this->values(n), d = this->positive(n);
        const T p = this->positive(1)[0], q = this->positive(1)[0], r = 1 / (p + q);
        const auto apply = [n](auto formula) {
            std::vector<T> result(n);
            for (int k = 0; k < n; ++k) result[k] = formula(k);
            return result;
        };
        Array<T> x(a), y(b), z(c), v(d), s(n), t(n);

        EXPECT_EQ(F::UpdateMean(x, y, n, p), 0);
        EXPECT_TRUE(test::sameBits(y, apply([&](int k) { return b[k] + a[k] / p; })));

        const auto variance = [&](int k) { return d[k] / q - (a[k] / p) * (a[k] / p); };
        const auto floored = apply([&](int k) { return variance(k) > c[k] ? variance(k) : c[k]; });
        EXPECT_EQ(F::UpdateVar(x, v, z, v, n, p, q), floored == c ? 11 : 0);
        EXPECT_TRUE(test::sameBits(v, floored));

        T sum = 5, expectedSum = 0;
        const auto weights = apply([&](int k) { return a[k] / p > q ? a[k] / p : q; });
        for (const T w : weights) expectedSum += w;
        EXPECT_EQ(F::UpdateWeight(x, s, n, &sum, p, q), weights == std::vector<T>(n, q) ? 11 : 0);
        EXPECT_TRUE(test::sameBits(s, weights));
        EXPECT_TRUE(test::sameBits(sum, expectedSum));

        Array<T> first(c), second(d);
        EXPECT_EQ(F::MeanVarAcc(Array<T>(a), Array<T>(b), first, second, n, p), 0);
        EXPECT_TRUE(test::sameBits(first, apply([&](int k) { return c[k] + p * (a[k] - b[k]); })));
        EXPECT_TRUE(test::sameBits(second, apply([&](int k) { return d[k] + (a[k] - b[k]) * (p * (a[k] - b[k])); })));

        Array<T> mean(a), deviations(d);
        EXPECT_EQ(F::GaussianSplit(mean, deviations, s, t, n, q), 0);
        EXPECT_TRUE(test::sameBits(mean, apply([&](int k) { return a[k] + q * std::sqrt(d[k]); })));
        EXPECT_TRUE(test::sameBits(s, apply([&](int k) { return a[k] - q * std::sqrt(d[k]); })));
        EXPECT_TRUE(test::sameBits(t, d));

        EXPECT_EQ(F::WeightedSum(Array<T>(a), Array<T>(c), s, n, p, q), 0);
        EXPECT_TRUE(test::sameBits(s, apply([&](int k) { return a[k] * (p * r) + c[k] * (q * r); })));
        EXPECT_EQ(F::WeightedSumHalf(Array<T>(a), z, z, n, p, q), 0);
        EXPECT_TRUE(test::sameBits(z, apply([&](int k) { return a[k] * r + c[k] * (q * r); })));

        const auto sums = apply([&](int k) { return a[k] * p; });
        Array<T> states(a), squares(b);
        EXPECT_EQ(F::DcsClustLAccumulate(states, squares, states, squares, n, p), 0);
        EXPECT_TRUE(test::sameBits(states, sums));
        EXPECT_TRUE(test::sameBits(squares, apply([&](int k) { return (a[k] * a[k] + 1 / b[k]) * p; })));
        EXPECT_EQ(F::DcsClustLAccumulate_DirectVar(Array<T>(a), Array<T>(b), s, t, n, p), 0);
        EXPECT_TRUE(test::sameBits(s, sums));
        EXPECT_TRUE(test::sameBits(t, apply([&](int k) { return (a[k] * a[k] + b[k]) * p; })));
    }
}

TYPED_TEST(Update, FloorsAreStrictAndEveryPlaceCounts) {
    using T = TypeParam;
    for (int n = 1; n < 40; ++n) {
        for (int above = -1; above < n; ++above) {  // the one component above its floor, if any
            Array<T> zero(n), acc(std::vector<T>(n, 2)), floor(std::vector<T>(n, 1)), result(n);
            floor[0] = this->kNaN;  // whatever is compared with it, the floor is stored
            if (above >= 0) acc[above] = 3, floor[above] = 1;
            const KelStatus status = above < 0 ? 11 : 0;
            auto expected = floor.vector();
            if (above >= 0) expected[above] = 1.5;
            EXPECT_EQ(Forms<T>::UpdateVar(zero, acc, floor, result, n, 2, 2), status) << n << " " << above;
            EXPECT_TRUE(test::sameBits(result, expected));
            T sum;
            acc[0] = above == 0 ? 3 : this->kNaN;
            EXPECT_EQ(Forms<T>::UpdateWeight(acc, result, n, &sum, 2, 1), status);
            EXPECT_EQ(sum, n + (above < 0 ? T(0) : T(0.5)));
        }
    }
}

TYPED_TEST(Update, ChecksInTheirOrder) {
    using T = TypeParam;
    using F = Forms<T>;
    const T least = std::nextafter(this->kNormal, T(1));
    const struct {
        T occ;
        KelStatus status;
    } occupations[] = {{-1, -67},           {this->kNaN, -67}, {-this->kNormal, -67}, {0, 16}, {T(-0.0), 16},
                       {this->kNormal, 16}, {least, 0},        {this->kInf, 0}};
    for (const auto& [occ, status] : occupations) {
        T acc = 0, floor = -1, v = 7, sum = 7;
        Kel64f result = 7;
        EXPECT_EQ(F::UpdateMean(&acc, &v, 1, occ), status) << occ;
        EXPECT_EQ(F::UpdateVar(&acc, &acc, &floor, &v, 1, 1, occ), status) << occ;
        EXPECT_EQ(F::UpdateVar(&acc, &acc, &floor, &v, 1, occ, 1), status) << occ;
        EXPECT_EQ(F::UpdateVar(&acc, &acc, &floor, &v, 1, 0, occ), status == -67 ? -67 : 16) << occ;
        EXPECT_EQ(F::UpdateVar(&acc, &acc, &floor, &v, 1, occ, 0), status == -67 ? -67 : 16) << occ;
        if (status != 0) {
            EXPECT_EQ(v, 7);
        }
        EXPECT_EQ(F::UpdateWeight(&acc, &v, 1, &sum, occ, -1), status) << occ;
        EXPECT_EQ(sum, status == 0 ? v : 7);
        EXPECT_EQ(F::Compute(&acc, &acc, 1, &result, occ), status < 0 ? -67 : occ == 0 ? 16 : occ < 1 ? 7 : 0);
        EXPECT_EQ(result == 7, status < 0);
        EXPECT_EQ(result == -1e10, occ == 0);
    }
    // Pointers before the length, but for a few; both before occupations.
    T v = 7;
    Kel64f result = 7;
    const bool single = sizeof(T) == 4;
    for (const int n : {0, 1}) {
        const KelStatus lengthFirst = n == 0 ? -6 : -8;
        test::expectForEachNull(F::UpdateMean, {&v, &v, n, -1}, -8);
        test::expectForEachNull(F::UpdateVar, {&v, &v, &v, &v, n, -1, -1}, -8);
        test::expectForEachNull(F::UpdateWeight, {&v, &v, n, &v, -1, 0}, -8);
        test::expectForEachNull(F::MeanVarAcc, {&v, &v, &v, &v, n, 1}, -8);
        test::expectForEachNull(F::GaussianSplit, {&v, &v, &v, &v, n, 1}, single ? lengthFirst : -8);
        test::expectForEachNull(F::GaussianMerge, {&v, &v, &v, &v, &v, &v, n, &v, 1, 1}, lengthFirst);
        test::expectForEachNull(F::GaussianDist, {&v, &v, &v, &v, n, &v, 1, 1, 1, 1}, lengthFirst);
        test::expectForEachNull(F::WeightedSum, {&v, &v, &v, n, 1, 1}, -8);
        test::expectForEachNull(F::WeightedSumHalf, {&v, &v, &v, n, 1, 1}, -8);
        test::expectForEachNull(F::DcsClustLAccumulate, {&v, &v, &v, &v, n, 1}, -8);
        test::expectForEachNull(F::DcsClustLAccumulate_DirectVar, {&v, &v, &v, &v, n, 1}, -8);
        test::expectForEachNull(F::Compute, {&v, &v, n, &result, -1}, -8);
    }
    EXPECT_EQ(F::UpdateMean(&v, &v, 0, -1), -6);
    EXPECT_EQ(F::UpdateVar(&v, &v, &v, &v, 0, -1, -1), -6);
    EXPECT_EQ(F::UpdateWeight(&v, &v, 0, &v, -1, 0), -6);
    EXPECT_EQ(F::MeanVarAcc(&v, &v, &v, &v, 0, 1), -6);
    EXPECT_EQ(F::GaussianSplit(&v, &v, &v, &v, 0, 1), -6);
    EXPECT_EQ(F::WeightedSum(&v, &v, &v, 0, 1, 1), -6);
    EXPECT_EQ(F::WeightedSumHalf(&v, &v, &v, -1, 1, 1), -6);
    EXPECT_EQ(F::DcsClustLAccumulate(&v, &v, &v, &v, 0, 1), -6);
    EXPECT_EQ(F::DcsClustLAccumulate_DirectVar(&v, &v, &v, &v, 0, 1), -6);
    EXPECT_EQ(F::Compute(&v, &v, 0, &result, -1), -6);
    EXPECT_EQ(v, 7);
    EXPECT_EQ(result, 7);
}

constexpr long double kLn2Pi = 1.8378770664093;  // the double

// n factors and their exponents, each wrong by a part in 2^53, two logarithms and a few operations on the total.
long double logBound(int n, long double total) {
    return (n + 8 * std::fabs(total) + 8) * 0x1p-53L;
}
template <class T>
testing::AssertionResult near(T got, long double exact, long double bound) {
    bound += std::ldexp(std::fabs(exact), -std::numeric_limits<T>::digits);  // the rounding of the result
    if (std::fabs(got - exact) <= bound) return testing::AssertionSuccess();
    return testing::AssertionFailure() << got << " instead of " << exact << ", bound " << bound;
}

TYPED_TEST(Update, MergeAndItsCost) {
    using T = TypeParam;
    for (int n = 1; n <= 200; n += n < 70 ? 1 : 13) {
        auto v1 = this->positive(n), v2 = this->positive(n);
        if (n % 3 == 0) v1[n / 2] = v2[n / 2] = this->kNormal / 8;  // with large ones beside it
        if (n % 5 == 0) v1[n - 1] = std::numeric_limits<T>::max() / 8192;
        Array<T> m1(this->values(n)), m2(this->values(n)), u1(v1), u2(v2), m(n), v(n);
        if (n % 3 == 0) m1[n / 2] = m2[n / 2] = 0;
        const T w1 = this->positive(1)[0], w2 = this->positive(1)[0], total = w1 + w2;
        long double logs = 0, magnitudes = n * kLn2Pi;
        std::vector<T> mean(n), var(n);
        for (int k = 0; k < n; ++k) {
            mean[k] = (w1 * m1[k] + w2 * m2[k]) / total;
            var[k] = (w1 * (m1[k] * m1[k] + v1[k]) + w2 * (m2[k] * m2[k] + v2[k])) / total - mean[k] * mean[k];
            logs += std::log(static_cast<long double>(var[k]));
            magnitudes += std::fabs(std::log(static_cast<long double>(var[k])));
        }
        T det, cost;
        ASSERT_EQ(Forms<T>::GaussianMerge(m1, u1, m2, u2, m, v, n, &det, w1, w2), 0);
        EXPECT_TRUE(test::sameBits(m, mean));
        EXPECT_TRUE(test::sameBits(v, var));
        EXPECT_TRUE(near(det, n * kLn2Pi - logs, logBound(n, magnitudes))) << n;
        EXPECT_EQ(Forms<T>::GaussianDist(m1, u1, m2, u2, n, &cost, w1, 3, w2, -5), 0);
        const long double exact = w1 * 3.0L - w2 * 5.0L - total * (n * kLn2Pi - logs);
        EXPECT_TRUE(near(cost, exact, total * logBound(n, magnitudes) + (w1 * 3.0L + w2 * 5.0L) * 0x1p-51L)) << n;
    }
}

TYPED_TEST(Update, MergeStopsAtTheFirstVarianceWithoutLogarithm) {
    using T = TypeParam;
    for (int n : {1, 5, 13, 39, 64, 65, 130}) {
        for (int fault = 0; fault < n; ++fault) {
            for (const T bad : {T(0), T(-0.5)}) {
                Array<T> ones(std::vector<T>(n, 1)), vars(std::vector<T>(n, 1)), m(std::vector<T>(n, 7)),
                    v(std::vector<T>(n, 7));
                vars[n - 1] = bad == 0 ? -1 : 0;  // the other fault, behind
                vars[fault] = bad;
                T det = 0, cost = 0;
                const KelStatus status = bad == 0 ? 7 : 8;
                EXPECT_EQ(Forms<T>::GaussianMerge(ones, vars, ones, vars, m, v, n, &det, 1, 1), status);
                EXPECT_EQ(Forms<T>::GaussianDist(ones, vars, ones, vars, n, &cost, 1, 2, 1, 2), status);
                EXPECT_TRUE(test::sameBits(det, bad == 0 ? this->kInf : this->kNaN));
                EXPECT_TRUE(test::sameBits(cost, det));
                auto expectedMean = std::vector<T>(n, 7), expectedVar = expectedMean;
                std::fill_n(expectedMean.begin(), fault + 1, T(1));
                std::copy_n(vars.data(), fault + 1, expectedVar.begin());
                EXPECT_TRUE(test::sameBits(m, expectedMean));
                EXPECT_TRUE(test::sameBits(v, expectedVar)) << n << " " << fault;
            }
        }
    }
    T one = 1, nan = this->kNaN, m, v, det;
    EXPECT_EQ(Forms<T>::GaussianMerge(&one, &nan, &one, &one, &m, &v, 1, &det, 1, 1), 0);
    EXPECT_TRUE(std::isnan(det));
}

TYPED_TEST(Update, WeightsThatCancelGiveSigns) {
    using T = TypeParam;
    for (const auto f : {Forms<T>::WeightedSum, Forms<T>::WeightedSumHalf}) {
        Array<T> a{3, 1, 2, 0, -3, 5}, b{1, 3, 2, 0, -1, 5}, result(6);
        EXPECT_EQ(f(a, b, result, 6, T(0.1), T(-0.1)), 6);
        const T inf = this->kInf, nan = this->kNaN;
        EXPECT_TRUE(test::sameBits(result, std::vector<T>{inf, -inf, nan, nan, -inf, nan}));
    }
}

TYPED_TEST(Update, ClusterLikelihood) {
    using T = TypeParam;
    for (int n = 1; n <= 200; n += n < 70 ? 1 : 13) {
        Array<T> mean(this->values(n)), var(this->positive(n)), sum(n), sqr(n);
        const T occ = this->positive(1)[0] + 1;
        long double logs = 0, magnitudes = 0, own = 0;
        Forms<T>::DcsClustLAccumulate_DirectVar(mean, var, sum, sqr, n, occ);
        for (int k = 0; k < n; ++k) {
            if (n > 8) sqr[k] = std::ldexp(std::fabs(sqr[k]), 2);  // well above the squares of the sums
            const Kel64f u = Kel64f{sqr[k]} * occ - Kel64f{sum[k]} * sum[k];
            logs += std::log(static_cast<long double>(u));
            magnitudes += std::fabs(std::log(static_cast<long double>(u)));
            own += std::log(static_cast<long double>(var[k]));
        }
        Kel64f result;
        const KelStatus status = Forms<T>::Compute(sum, sqr, n, &result, occ);
        if (std::isnan(logs)) {  // a variance lost beside its mean's square
            EXPECT_EQ(status, 8);
            continue;
        }
        EXPECT_EQ(status, 0);
        const long double constant = n * (2 * std::log(static_cast<long double>(occ)) - 2.8378770664093453);
        EXPECT_TRUE(near(result, occ / 2 * (constant - logs), occ * logBound(n, magnitudes + std::fabs(constant))));
    }
    // A state of its own is worth -occ / 2 * (len * (1 + ln(2 pi)) + sum ln var).
    T mean[] = {1, -2, 0}, var[] = {4, 1, 0.5}, sum[3], sqr[3];
    Kel64f result;
    Forms<T>::DcsClustLAccumulate_DirectVar(mean, var, sum, sqr, 3, 8);
    EXPECT_EQ(Forms<T>::Compute(sum, sqr, 3, &result, 8), 0);
    EXPECT_NEAR(result, -4 * (3 * (1 + static_cast<double>(kLn2Pi)) + std::log(2.0)), 1e-12);
}

TYPED_TEST(Update, ClusterWithoutVariance) {
    using T = TypeParam;
    for (const int n : {1, 4, 39, 64, 65, 100}) {
        for (int zero = 0; zero < n; ++zero) {
            Array<T> sum(std::vector<T>(n, 2)), sqr(std::vector<T>(n, 3));
            Kel64f result = 0;
            sqr[zero] = 1;  // 1 * 4 - 2^2
            EXPECT_EQ(Forms<T>::Compute(sum, sqr, n, &result, 4), 7);
            EXPECT_EQ(result, -HUGE_VAL);
            sqr[n - 1 - zero] = 0;  // before or behind it
            EXPECT_EQ(Forms<T>::Compute(sum, sqr, n, &result, 4), 8);
            EXPECT_TRUE(std::isnan(result));
        }
    }
}

TEST(UpdateFixed, WeightedSums) {
    test::Random random(8);
    const std::pair<float, float> weights[] = {{1, 2}, {0.3f, 0.6f}, {-5, 6}, {1e-3f, 1}, {3, -1}, {1e9f, -0.9999e9f}};
    for (int n = 1; n < 70; ++n) {
        for (const auto& [p, q] : weights) {
            const auto a = random.vector<Kel16s>(n), b = random.vector<Kel16s>(n);
            Array<Kel16s> x(a), y(b), plain(n);
            std::vector<Kel16s> expected[2];
            const float r = 1 / (p + q);
            for (int k = 0; k < n; ++k) {
                for (const float first : {p * r, r}) {
                    const float sum = a[k] * first + b[k] * (q * r);
                    expected[first == r].push_back(static_cast<Kel16s>(std::clamp(sum, -32768.0f, 32767.0f)));
                    if (p == 1) break;
                }
            }
            test::inEveryRoundingMode([&] { EXPECT_EQ(kelsWeightedSum_16s(x, y, plain, n, p, q), 0); },
                                      [&] { EXPECT_EQ(plain.vector(), expected[p * r == r]) << n << " " << p; });
            if (p == 1) continue;
            EXPECT_EQ(kelsWeightedSumHalf_16s(x, y, y, n, p, q), 0);
            EXPECT_EQ(y.vector(), expected[1]) << n << " " << p;
        }
    }
    for (const auto f : {kelsWeightedSum_16s, kelsWeightedSumHalf_16s}) {
        Kel16s a[] = {3, 1, 2, -3}, b[] = {1, 3, 2, -1}, result[4];
        EXPECT_EQ(f(a, b, result, 4, 0.1f, -0.1f), 6);
        EXPECT_EQ(std::vector(result, result + 4), (std::vector<Kel16s>{32767, -32768, 0, -32768}));
        test::expectForEachNull(f, {a, b, result, 0, 1, -1}, -8);
        EXPECT_EQ(f(a, b, result, 0, 1, -1), -6);
    }
}

TEST(Bhattacharyya, AgainstTheFormula) {
    test::Random random(4);
    for (int n = 1; n <= 200; n += n < 70 ? 1 : 13) {
        std::vector<Kel32f> values[4];
        for (auto& v : values) {
            for (int k = 0; k < n; ++k) v.push_back(std::fabs(random.value<Kel32f>(18)) + 1e-5f);
        }
        Array<Kel32f> m1(values[0]), v1(values[1]), m2(values[2]), v2(values[3]);
        long double distance = 0, averages = 0, logs1 = 0, logs2 = 0, magnitudes = 0;
        for (int k = 0; k < n; ++k) {
            const long double d = static_cast<long double>(m1[k]) - m2[k],
                              both = static_cast<long double>(v1[k]) + v2[k];
            distance += d * d / both;
            averages += std::log(both / 2);
            logs1 += std::log(static_cast<long double>(v1[k]));
            logs2 += std::log(static_cast<long double>(v2[k]));
            magnitudes += std::fabs(std::log(both / 2));
        }
        const auto s1 = static_cast<Kel32f>(logs1), s2 = static_cast<Kel32f>(logs2);
        const long double exact = distance / 4 + averages / 2 - (logs1 + logs2) / 4;
        const long double given = distance / 4 + averages / 2 - (static_cast<long double>(s1) + s2) / 4;
        const long double bound = (n + 8) * 0x1p-52L * distance / 4 + 3 * logBound(n, magnitudes);
        Kel64f result, slog;
        Kel32f rounded, roundedSlog;
        EXPECT_EQ(kelsBhatDist_32f64f(m1, v1, m2, v2, n, &result), 0);
        EXPECT_EQ(kelsBhatDistSLog_32f64f(m1, v1, m2, v2, n, &slog, s1, s2), 0);
        EXPECT_TRUE(near(result, exact, bound)) << n;
        EXPECT_TRUE(near(slog, given, bound + std::fabs(s1) * 0x1p-53L + std::fabs(s2) * 0x1p-53L)) << n;
        EXPECT_EQ(kelsBhatDist_32f(m1, v1, m2, v2, n, &rounded), 0);
        EXPECT_EQ(kelsBhatDistSLog_32f(m1, v1, m2, v2, n, &roundedSlog, s1, s2), 0);
        EXPECT_EQ(rounded, static_cast<Kel32f>(result));
        EXPECT_EQ(roundedSlog, static_cast<Kel32f>(slog));
        EXPECT_EQ(kelsBhatDist_32f64f(m1, v1, m1, v1, n, &result), 0);
        EXPECT_EQ(result, 0);  // exactly: no rounding of one logarithm beside another's
    }
}

TEST(Bhattacharyya, FirstFaultyComponentDecides) {
    const Kel32f limit = 1e-6f;  // below the double of that name
    const Kel32f good = std::nextafter(limit, 1.0f);
    for (const int n : {1, 3, 13, 64, 65, 130}) {
        for (int at = 0; at < n; ++at) {
            for (int which = 0; which < 4; ++which) {
                for (const Kel32f bad : {-good, limit, 0.0f, -0.0f}) {
                    std::vector<Kel32f> values(n, good);
                    Array<Kel32f> a[] = {values, values, values, values};
                    a[which][at] = bad;
                    if (which > 0 && bad < 0) a[which - 1][at] = 0;           // signs before magnitudes
                    if (at + 1 < n) a[3 - which][at + 1] = bad < 0 ? 0 : -1;  // behind
                    const KelStatus status = bad < 0 ? 8 : 7;
                    Kel64f result[2] = {};
                    Kel32f rounded[2] = {};
                    EXPECT_EQ(kelsBhatDist_32f64f(a[0], a[1], a[2], a[3], n, result), status);
                    EXPECT_EQ(kelsBhatDistSLog_32f64f(a[0], a[1], a[2], a[3], n, result + 1, 1, 1), status);
                    EXPECT_EQ(kelsBhatDist_32f(a[0], a[1], a[2], a[3], n, rounded), status);
                    EXPECT_EQ(kelsBhatDistSLog_32f(a[0], a[1], a[2], a[3], n, rounded + 1, 1, 1), status);
                    for (const Kel64f x : {result[0], result[1], Kel64f{rounded[0]}, Kel64f{rounded[1]}}) {
                        EXPECT_TRUE(test::sameBits(x, bad < 0 ? NAN : HUGE_VAL));
                    }
                }
            }
        }
    }
    Kel32f v = good, rounded = 7;
    Kel64f result = 7;
    EXPECT_EQ(kelsBhatDist_32f(&v, &v, &v, &v, 1, &rounded), 0);
    for (const int n : {0, 1}) {
        test::expectForEachNull(kelsBhatDist_32f64f, {&v, &v, &v, &v, n, &result}, -8);
        test::expectForEachNull(kelsBhatDist_32f, {&v, &v, &v, &v, n, &v}, -8);
        test::expectForEachNull(kelsBhatDistSLog_32f64f, {&v, &v, &v, &v, n, &result, 1, 1}, -8);
        test::expectForEachNull(kelsBhatDistSLog_32f, {&v, &v, &v, &v, n, &v, 1, 1}, -8);
    }
    EXPECT_EQ(kelsBhatDist_32f64f(&v, &v, &v, &v, 0, &result), -6);
    EXPECT_EQ(kelsBhatDist_32f(&v, &v, &v, &v, 0, &v), -6);
    EXPECT_EQ(kelsBhatDistSLog_32f64f(&v, &v, &v, &v, 0, &result, 1, 1), -6);
    EXPECT_EQ(kelsBhatDistSLog_32f(&v, &v, &v, &v, 0, &v, 1, 1), -6);
    EXPECT_EQ(result, 7);
    EXPECT_EQ(v, good);
}

}  // namespace
