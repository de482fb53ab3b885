// Re-estimation of Gaussians: formulas to the bit, what they warn of and refuse, and arrays that overlap.
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
    const Options options = {{1.7, 0.3, 100}, {kelStatusOk, kelStatusAllFloored}};
    expectElements([](T a, T m, int, T occ) { return m + a / occ; }, options, updateMean.of<T>());
    const auto var = [](T a, T b, T floor, T, int, T p, T q) {
        const T v = b / q - (a / p) * (a / p);
        return v > floor ? v : floor;
    };
    expectElements(var, options, updateVar.of<T>());
    expectElements([](T a, T, int, T n, T floor) { return a / n > floor ? a / n : floor; }, options, updateWeights<T>);
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
TEST(UpdateWeights, WeightedSums) {
    const Options options = {{0.1, -0.1, 1, 2, -5, 6, 1e-3, 1e9, -0.9999e9}, {kelStatusOk, kelStatusDivByZero}};
    const auto expected = [](bool half) {
        return [=]<class T, class W>(T a, T b, T, int, W p, W q) -> T {
            const W r = 1 / (p + q), sum = p + q == 0 ? a * p + b * q : a * (half ? r : p * r) + b * (q * r);
            const W signs = sum == 0 ? W(NAN) : sum * W(INFINITY), value = p + q == 0 ? signs : sum;
            if constexpr (std::is_integral_v<T>) return std::isnan(value) ? 0 : saturated<T>(value);
            return static_cast<T>(value);
        };
    };
    expectElements(expected(false), options, forms(kelsWeightedSum_32f, kelsWeightedSum_64f, kelsWeightedSum_16s));
    expectElements(expected(true), options,
                   forms(kelsWeightedSumHalf_32f, kelsWeightedSumHalf_64f, kelsWeightedSumHalf_16s));
}

// Warnings: all components are floored but one, if any, wherever it is; occupations that are negative or too small.
TYPED_TEST(Update, FloorsAndOccupations) {
    using T = TypeParam;
    const T floor[39] = {}, normal = std::numeric_limits<T>::min();
    for (int n = 1; n < 40; ++n) {
        for (const int above : {-1, n / 2, n - 1}) {
            T acc[39] = {}, result[39], sum;
            if (above >= 0) acc[above] = 3;
            EXPECT_EQ(updateVar(floor, acc, floor, result, n, 2, 2), above < 0 ? kelStatusAllFloored : kelStatusOk)
                << n;
            EXPECT_EQ(updateWeight(acc, result, n, &sum, 2, 0), above < 0 ? kelStatusAllFloored : kelStatusOk) << n;
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

// ---- faults of logarithms -------------------------------------------------------------------------------------------

// One component that has no logarithm, zero or negative, with the other fault behind it: the components before it are
// written.
TYPED_TEST(Update, Merge) {
    using T = TypeParam;
    for (int n = 1; n <= 200; n += n < 70 ? 1 : 13) {
        const int fault = this->random.between(0, n - 1);
        const bool zero = n % 2;
        auto m1 = this->positive(n), m2 = this->positive(n), v1 = this->positive(n), v2 = this->positive(n);
        m1[n - 1] = m2[n - 1] = m1[fault] = m2[fault] = 0;
        v1[n - 1] = v2[n - 1] = zero ? -1 : 0;
        v1[fault] = v2[fault] = zero ? 0 : -1;
        std::vector<T> m(n, T(-7)), v(n);
        T det, cost;
        const KelStatus expected = zero ? kelStatusLogZero : kelStatusLogNegative;
        EXPECT_EQ(merge(m1.data(), v1.data(), m2.data(), v2.data(), m.data(), v.data(), n, &det, T(3), T(2)), expected);
        EXPECT_EQ(mergeCost(m1.data(), v1.data(), m2.data(), v2.data(), n, &cost, T(3), T(3), T(2), T(-5)), expected);
        EXPECT_TRUE(zero ? det == HUGE_VAL && cost == HUGE_VAL : std::isnan(det) && std::isnan(cost));
        for (int k = 0; k < n; ++k) EXPECT_EQ(m[k] == -7, k > fault) << n << " " << k;
    }
}

TYPED_TEST(Update, ClusterLikelihood) {
    using T = TypeParam;
    for (int n = 1; n <= 200; n += n < 70 ? 1 : 13) {
        auto sum = this->positive(n), sqr = this->positive(n);
        for (int k = 0; k < n; ++k) sqr[k] += sum[k] * sum[k];
        Kel64f result;
        sum[n / 2] = sqr[n / 2] = 0;  // a component without a variance
        EXPECT_EQ(clusterLikelihood(sum.data(), sqr.data(), n, &result, T(3)), kelStatusLogZero);
        EXPECT_EQ(result, -HUGE_VAL);
        sqr[n - 1] = -1;
        EXPECT_EQ(clusterLikelihood(sum.data(), sqr.data(), n, &result, T(3)), kelStatusLogNegative);
        EXPECT_TRUE(std::isnan(result));
    }
}

// One of the four values below the limit, and the other kind of fault behind it, a magnitude before a sign.
TEST(Bhattacharyya, Faults) {
    Random random(4);
    for (int n = 1; n <= 200; n += n < 70 ? 1 : 13) {
        const int fault = random.between(0, n - 1), kind = random.between(0, 3);
        const Kel32f limit = 1e-6f, bad = std::array{-1.0f, limit, 0.0f, -0.0f}[kind];  // below the double of that name
        std::vector<Kel32f> a[4];
        for (auto& values : a) values.assign(n, 2);
        a[n % 4][n - 1] = kind == 0 ? 0 : -1;
        a[(n + 1) % 4][fault] = kind == 0 ? 0 : std::nextafter(limit, 1.0f);
        a[n % 4][fault] = bad;
        const auto expect = [&]<class R>(auto f, R result, auto... sums) {
            EXPECT_EQ(f(a[0].data(), a[1].data(), a[2].data(), a[3].data(), n, &result, sums...),
                      kind == 0 ? kelStatusLogNegative : kelStatusLogZero);
            EXPECT_TRUE(kind == 0 ? std::isnan(result) : result == HUGE_VAL);
        };
        expect(kelsBhatDist_32f64f, 0.0);
        expect(kelsBhatDist_32f, 0.0f);
        expect(kelsBhatDistSLog_32f64f, 0.0, 1.0f, 1.0f);
        expect(kelsBhatDistSLog_32f, 0.0f, 1.0f, 1.0f);
    }
}

}  // namespace
