// Re-estimation of Gaussians: formulas to the bit, sums of logarithms to a bound, and what they warn of.
#include "kels/update.h"

#include "kels/stats.h"
#include "support/elements.h"
#include "support/forms.h"
#include "support/overlap.h"

namespace {

using namespace test;

constexpr auto accumulate = forms(kelsMeanVarAcc_32f, kelsMeanVarAcc_64f);
constexpr auto updateMean = forms(kelsUpdateMean_32f, kelsUpdateMean_64f);
constexpr auto updateVar = forms(kelsUpdateVar_32f, kelsUpdateVar_64f);
constexpr auto updateWeight = forms(kelsUpdateWeight_32f, kelsUpdateWeight_64f);
constexpr auto split = forms(kelsGaussianSplit_32f, kelsGaussianSplit_64f);
constexpr auto merge = forms(kelsGaussianMerge_32f, kelsGaussianMerge_64f);
constexpr auto mergeCost = forms(kelsGaussianDist_32f, kelsGaussianDist_64f);
constexpr auto weightedSum = forms(kelsWeightedSum_32f, kelsWeightedSum_64f, kelsWeightedSum_16s);
constexpr auto weightedSumHalf = forms(kelsWeightedSumHalf_32f, kelsWeightedSumHalf_64f, kelsWeightedSumHalf_16s);
constexpr auto stateStatistics = forms(kelsDcsClustLAccumulate_32f, kelsDcsClustLAccumulate_64f);
constexpr auto stateStatisticsDirect =
    forms(kelsDcsClustLAccumulate_DirectVar_32f, kelsDcsClustLAccumulate_DirectVar_64f);
constexpr auto clusterLikelihood = forms(kelsDcsClustLCompute_32f64f, kelsDcsClustLCompute_64f);

template <class T>
class Update : public testing::Test {
  protected:
    std::vector<T> positive(int n) {
        auto v = random.vector<T>(n);
        for (auto& x : v) x = std::fabs(x);
        return v;
    }
    Random random{3};
};
using FloatTypes = testing::Types<Kel32f, Kel64f>;
TYPED_TEST_SUITE(Update, FloatTypes);

// ---- formulas -------------------------------------------------------------------------------------------------------

// The sum of the weights comes from their order, too.
template <class T>
KelStatus updateWeights(const T* acc, T* weight, int len, T occ, T floor) {
    T sum = 5, expected = 0;
    const KelStatus status = updateWeight(acc, weight, len, &sum, occ, floor);
    for (int k = 0; k < len; ++k) expected += weight[k];
    EXPECT_TRUE(sameBits(sum, expected));
    return status;
}

TYPED_TEST(Update, FormulasToTheBit) {
    using T = TypeParam;
    const Options options = {{1.7, 0.3, 100}, false, {kelStatusOk, kelStatusAllFloored}},
                  inPlace = {{1.7, 0.3, 100}, true, {kelStatusOk, kelStatusAllFloored}};
    expectElements([](T a, T m, int, T occ) { return m + a / occ; }, inPlace, updateMean.of<T>());
    const auto var = [](T a, T b, T floor, T, int, T p, T q) {
        const T v = b / q - (a / p) * (a / p);
        return v > floor ? v : floor;
    };
    expectElements(var, inPlace, updateVar.of<T>());
    expectElements([](T a, T, int, T n, T floor) { return a / n > floor ? a / n : floor; }, inPlace, updateWeights<T>);
    const auto accumulated = [](T x, T mean, T a, T b, int, T val) {
        return std::tuple(a + val * (x - mean), b + (x - mean) * (val * (x - mean)));
    };
    expectElements(accumulated, options, accumulate.of<T>());
    const auto halves = [](T mean, T v, T, T, int, T val) {
        return std::tuple(mean + val * std::sqrt(v), mean - val * std::sqrt(v), v);
    };
    expectElements(halves, options, split.of<T>());
    expectElements([](T m, T v, T, T, int, T occ) { return std::tuple(m * occ, (m * m + v) * occ); }, options,
                   stateStatisticsDirect.of<T>());
    expectElements([](T m, T v, T, T, int, T occ) { return std::tuple(m * occ, (m * m + 1 / v) * occ); }, options,
                   stateStatistics.of<T>());
}

TYPED_TEST(Update, ElementsFollowOneAnotherWhereArraysOverlap) {
    using T = TypeParam;
    expectLoopWhereArraysOverlap<T, 2>([](const auto& p, int len) { updateMean.of<T>()(p[0], p[1], len, T(1.7)); });
    expectLoopWhereArraysOverlap<T, 4>(
        [](const auto& p, int len) { split.of<T>()(p[0], p[1], p[2], p[3], len, T(0.3)); });
    for (const auto statistics : {stateStatistics.of<T>(), stateStatisticsDirect.of<T>()}) {
        expectLoopWhereArraysOverlap<T, 4>(
            [=](const auto& p, int len) { statistics(p[0], p[1], p[2], p[3], len, T(1.7)); });
    }
}

// Weights that cancel leave the signs.
template <bool half>
constexpr auto expectedSum = []<class T, class W>(T a, T b, T, int, W p, W q) -> T {
    const W r = 1 / (p + q), sum = p + q == 0 ? a * p + b * q : a * (half ? r : p * r) + b * (q * r);
    const W signs = sum == 0 ? W(NAN) : sum * W(INFINITY), value = p + q == 0 ? signs : sum;
    if constexpr (std::is_integral_v<T>) return std::isnan(value) ? 0 : saturated<T>(value);
    return static_cast<T>(value);
};

TEST(UpdateWeights, WeightedSums) {
    const Options options = {{0.1, -0.1, 1, 2, -5, 6, 1e-3, 1e9, -0.9999e9}, true, {kelStatusOk, kelStatusDivByZero}};
    expectElements(expectedSum<false>, options, weightedSum);
    expectElements(expectedSum<true>, options, weightedSumHalf);
}

// Warnings: all components are floored but one, if any, wherever it is; occupations that are negative or too small.
TYPED_TEST(Update, FloorsAndOccupations) {
    using T = TypeParam;
    const T floor[39] = {}, normal = std::numeric_limits<T>::min();
    for (int n = 1; n < 40; ++n) {
        for (const int above : {-1, n / 2, n - 1}) {
            T acc[39] = {}, result[39];
            if (above >= 0) acc[above] = 3;
            EXPECT_EQ(updateVar(floor, acc, floor, result, n, 2, 2), above < 0 ? kelStatusAllFloored : kelStatusOk)
                << n;
            EXPECT_EQ(updateWeights<T>(acc, result, n, 2, 0), above < 0 ? kelStatusAllFloored : kelStatusOk) << n;
        }
    }
    constexpr KelStatus negative = kelStatusNegOcc, vanishing = kelStatusZeroOcc;
    const std::pair<T, KelStatus> cases[] = {{-1, negative}, {NAN, negative},     {-normal, negative},
                                             {0, vanishing}, {normal, vanishing}, {T(-0.0), vanishing}};
    for (const auto& [occ, status] : cases) {
        T acc = 1, v = 7, sum = 7;
        Kel64f result = 7;
        EXPECT_EQ(updateMean(&acc, &v, 1, occ), status) << occ;
        for (const T other : {T(1), T(0)}) {  // negative ones first, whichever argument they are
            EXPECT_EQ(updateVar(&acc, &acc, floor, &v, 1, other, occ), status) << occ;
            EXPECT_EQ(updateVar(&acc, &acc, floor, &v, 1, occ, other), status) << occ;
        }
        EXPECT_EQ(updateWeight(&acc, &v, 1, &sum, occ, -1), status) << occ;
        EXPECT_TRUE(v == 7 && sum == 7);
        EXPECT_EQ(clusterLikelihood(&acc, &acc, 1, &result, occ), status < 0 ? negative
                                                                  : occ == 0 ? vanishing
                                                                             : kelStatusLogNegative);
        EXPECT_TRUE(status < 0 ? result == 7 : occ == 0 ? result == -1e10 : std::isnan(result));
    }
}

// ---- logarithms -----------------------------------------------------------------------------------------------------

// A sum of logarithms, and how far off the library's may be: n factors and their exponents, each wrong by a part in
// 2^53, two logarithms and a few operations on the total.
struct Logs {
    Real sum = 0, magnitude = 0, count = 0;
    void add(Real x) {
        sum += std::log(x);
        magnitude += std::fabs(std::log(x));
        ++count;
    }
    Real bound() const { return (4 * count + 8 * magnitude + 8) * 0x1p-53L; }
};
template <class T>
testing::AssertionResult near(T got, Real exact, Real bound) {
    return test::near(got, exact, bound + std::ldexp(std::fabs(exact), -std::numeric_limits<T>::digits));
}

// Of all lengths; then with one component that has no logarithm, zero or negative, and the other fault behind it.
TYPED_TEST(Update, Merge) {
    using T = TypeParam;
    for (int n = 1; n <= 200; n += n < 70 ? 1 : 13) {
        const int fault = this->random.between(0, n - 1);
        const bool zero = n % 2;
        Guarded<T> m1(this->positive(n)), m2(this->positive(n)), v1(this->positive(n)), v2(this->positive(n)), m(n),
            v(n);
        v1[n / 2] = v2[n / 2] = std::numeric_limits<T>::min() / 8, m1[n / 2] = m2[n / 2] = 0;
        if (n % 5 == 0) v1[n - 1] = std::numeric_limits<T>::max() / 8192;
        const T w1 = this->positive(1)[0], w2 = this->positive(1)[0], total = w1 + w2;
        T det, cost;
        ASSERT_EQ(merge(m1, v1, m2, v2, m, v, n, &det, w1, w2), kelStatusOk);
        EXPECT_EQ(mergeCost(m1, v1, m2, v2, n, &cost, w1, 3, w2, -5), kelStatusOk);
        Logs logs;
        for (int k = 0; k < n; ++k) {
            const T mean = (w1 * m1[k] + w2 * m2[k]) / total;
            const T var = (w1 * (m1[k] * m1[k] + v1[k]) + w2 * (m2[k] * m2[k] + v2[k])) / total - mean * mean;
            EXPECT_TRUE(sameBits(m[k], mean) && sameBits(v[k], var)) << n << " " << k;
            logs.add(var);
        }
        const Real exact = n * Real(1.8378770664093) - logs.sum, rest = w1 * 3.0L - w2 * 5.0L;
        EXPECT_TRUE(near(det, exact, logs.bound())) << n;
        EXPECT_TRUE(near(cost, rest - total * exact, total * logs.bound() + (w1 * 3 + w2 * 5) * 0x1p-51L)) << n;

        m1[n - 1] = m2[n - 1] = m1[fault] = m2[fault] = 0;
        v1[n - 1] = v2[n - 1] = zero ? -1 : 0;
        v1[fault] = v2[fault] = zero ? 0 : -1;
        std::fill_n(m.data(), n, T(-7));
        EXPECT_EQ(merge(m1, v1, m2, v2, m, v, n, &det, w1, w2), zero ? kelStatusLogZero : kelStatusLogNegative);
        EXPECT_EQ(mergeCost(m1, v1, m2, v2, n, &cost, w1, 3, w2, -5), zero ? kelStatusLogZero : kelStatusLogNegative);
        EXPECT_TRUE(zero ? det == HUGE_VAL && cost == HUGE_VAL : std::isnan(det) && std::isnan(cost));
        for (int k = 0; k < n; ++k) EXPECT_EQ(m[k] == -7, k > fault) << n << " " << k;
    }
}

TYPED_TEST(Update, ClusterLikelihood) {
    using T = TypeParam;
    for (int n = 1; n <= 200; n += n < 70 ? 1 : 13) {
        Guarded<T> sum(this->positive(n)), sqr(this->positive(n));
        const T occ = this->positive(1)[0] + 1;
        const Real constant = n * (2 * std::log(Real(occ)) - 2.8378770664093453);
        Logs logs;
        for (int k = 0; k < n; ++k) {
            sqr[k] += sum[k] * sum[k];
            logs.add(Kel64f{sqr[k]} * occ - Kel64f{sum[k]} * sum[k]);
        }
        Kel64f result;
        EXPECT_EQ(clusterLikelihood(sum, sqr, n, &result, occ), kelStatusOk);
        const Real bound = occ * (logs.bound() + std::fabs(constant) * 0x1p-50L);
        EXPECT_TRUE(near(result, occ / 2 * (constant - logs.sum), bound)) << n;
        sum[n / 2] = sqr[n / 2] = 0;  // a component without a variance
        EXPECT_TRUE(clusterLikelihood(sum, sqr, n, &result, occ) == kelStatusLogZero && result == -HUGE_VAL);
        sqr[n - 1] = -1;
        EXPECT_TRUE(clusterLikelihood(sum, sqr, n, &result, occ) == kelStatusLogNegative && std::isnan(result));
    }
}

// Then with one of the four values below the limit, and the other kind of fault behind it, a magnitude before a sign.
TEST(Bhattacharyya, DistancesAndFaults) {
    Random random(4);
    for (int n = 1; n <= 200; n += n < 70 ? 1 : 13) {
        Guarded<Kel32f> a[] = {Guarded<Kel32f>(n), Guarded<Kel32f>(n), Guarded<Kel32f>(n), Guarded<Kel32f>(n)};
        Real distance = 0;
        Logs averages, logs1, logs2;
        for (int k = 0; k < n; ++k) {
            for (auto& values : a) values[k] = std::fabs(random.value<Kel32f>(18)) + 1e-5f;
            const Real d = Real(a[0][k]) - a[2][k], both = Real(a[1][k]) + a[3][k];
            distance += d * d / both / 4;
            averages.add(both / 2);
            logs1.add(a[1][k]);
            logs2.add(a[3][k]);
        }
        const auto s1 = static_cast<Kel32f>(logs1.sum), s2 = static_cast<Kel32f>(logs2.sum);
        const Real bound = (n + 8) * 0x1p-52L * distance + 3 * averages.bound() + std::fabs(s1 + s2) * 0x1p-52L;
        const Real half = distance + averages.sum / 2, exact = half - (logs1.sum + logs2.sum) / 4;
        const int fault = random.between(0, n - 1), kind = random.between(0, 3);
        const Kel32f limit = 1e-6f, bad = std::array{-1.0f, limit, 0.0f, -0.0f}[kind];  // below the double of that name
        const auto expect = [&]<class R>(auto f, R result, Real value, auto... sums) {
            EXPECT_EQ(f(a[0], a[1], a[2], a[3], n, &result, sums...), kelStatusOk);
            EXPECT_TRUE(near(result, value, bound)) << n;
            Guarded<Kel32f> faulty[] = {a[0].vector(), a[1].vector(), a[2].vector(), a[3].vector()};
            faulty[n % 4][n - 1] = kind == 0 ? 0 : -1;
            faulty[(n + 1) % 4][fault] = kind == 0 ? 0 : std::nextafter(limit, 1.0f);
            faulty[n % 4][fault] = bad;
            EXPECT_EQ(f(faulty[0], faulty[1], faulty[2], faulty[3], n, &result, sums...),
                      kind == 0 ? kelStatusLogNegative : kelStatusLogZero);
            EXPECT_TRUE(kind == 0 ? std::isnan(result) : result == HUGE_VAL);
        };
        expect(kelsBhatDist_32f64f, 0.0, exact);
        expect(kelsBhatDist_32f, 0.0f, exact);
        expect(kelsBhatDistSLog_32f64f, 0.0, half - (Real(s1) + s2) / 4, s1, s2);
        expect(kelsBhatDistSLog_32f, 0.0f, half - (Real(s1) + s2) / 4, s1, s2);
    }
}

}  // namespace
