// Largest scores, floors, ranges and unit curves beside sorted copies and exact formulas.
#include "kels/rank.h"

#include <compare>
#include <numeric>

#include "support/forms.h"
#include "support/overlap.h"
#include "support/support.h"

namespace {

using namespace test;

// ---- the N-th largest ----------------------------------------------------------------------------------------------

constexpr auto nthMax = forms(kelsNthMaxElement_32f, kelsNthMaxElement_64f, kelsNthMaxElement_32s);

template <class T>
class NthMax : public ::testing::Test {};
using RankedTypes = ::testing::Types<Kel32f, Kel64f, Kel32s>;
TYPED_TEST_SUITE(NthMax, RankedTypes);

TYPED_TEST(NthMax, IsTheElementAtThatPlaceWhateverTheOrder) {
    using T = TypeParam;
    using Limits = std::numeric_limits<T>;
    const T ends[] = {-T(0), T(-Limits::quiet_NaN()), 1, Limits::infinity(), Limits::quiet_NaN(),
                      0,     -Limits::infinity()};
    Random random(1);
    for (const int len : {1, 2, 3, 31, 32, 33, 34, 64, 200, 2047, 2048, 5000}) {
        std::vector<T> wide = random.vector<T>(len, 40), alike(len), few(len);  // alike in their high bits
        for (auto& x : alike) x = static_cast<T>(1000000 + random.between(0, 9999));
        for (auto& x : few) x = ends[random.between(0, 6)];
        auto rising = alike;
        std::sort(rising.begin(), rising.end());
        for (const auto& v : {wide, alike, few, rising}) {
            auto sorted = v;
            std::sort(sorted.begin(), sorted.end(), [](T a, T b) { return std::strong_order(a, b) > 0; });
            for (int n = 0; n < len; n += n < 7 || n > len - 8 || len < 70 ? 1 : len / 9) {
                T result;
                ASSERT_EQ(nthMax(v.data(), len, n, &result), 0);
                ASSERT_TRUE(std::strong_order(result, sorted[n]) == 0) << n << " of " << len << ": " << result;
            }
        }
    }
}

// ---- language-model scaling ----------------------------------------------------------------------------------------

TEST(ScaleLM, FloorsThenScales) {
    Random random(2);
    for (int len = 1; len <= 70; ++len) {
        std::vector<Kel32f> v = random.vector<Kel32f>(len), expected;
        v[len / 2] = NAN;
        const Kel32f val = random.value<Kel32f>(4), mul = random.value<Kel32f>(4), add = random.value<Kel32f>(4);
        for (const Kel32f x : v) expected.push_back(opaque((x > val ? x : val) * mul) + add);
        std::vector<Kel32f> dst(len), other(len);
        ASSERT_EQ(kelsScaleLM_32f(v.data(), dst.data(), len, val, mul, add), 0);
        ASSERT_EQ(kelsLMThreshold_32f(val, mul, add, v.data(), other.data(), len), 0);
        EXPECT_TRUE(dst == expected && other == expected);

        const auto shorts = random.vector<Kel16s>(len);
        std::vector<Kel32s> ints(len);
        const auto floor = random.value<Kel16s>(), factor = random.value<Kel16s>();
        ASSERT_EQ(kelsScaleLM_16s32s(shorts.data(), ints.data(), len, floor, factor, INT_MAX - len), 0);
        for (int i = 0; i < len; ++i) {
            const int64_t exact = int64_t{factor} * std::max(shorts[i], floor) + INT_MAX - len;
            ASSERT_EQ(ints[i], static_cast<Kel32s>(static_cast<uint32_t>(exact)));
        }
    }
}

// ---- range normalisation -------------------------------------------------------------------------------------------

// Spans and cuts are such that nothing is rounded before the result is.  `own` looks for the span, `given` is told.
template <class S, class D>
void checkSpans(KelStatus (*own)(const S*, D*, int, Kel32f, Kel32f, Kel32f),
                KelStatus (*given)(const S*, D*, int, S, S, Kel32f, Kel32f, Kel32f)) {
    Random random(3);
    const std::pair<float, float> cuts[] = {{0, 1}, {0.25f, 0.75f}, {0.375f, 0.5f}, {0.5f, 1}};
    for (int len = 3; len < 600; len += len < 70 ? 1 : 97) {
        const int least = random.between(-9000, 9000), span = 1 << random.between(3, 12);
        const auto [low, high] = cuts[random.between(0, 3)];
        const int range = len % 3 == 0 ? 1 << 20 : random.between(1, 2000);
        std::vector<S> v(len);
        for (auto& x : v) x = static_cast<S>(random.between(least, least + span));
        v[0] = static_cast<S>(least);
        v[len - 1] = static_cast<S>(least + span);
        if (std::is_floating_point_v<S>) v[1] = static_cast<S>(NAN);
        std::vector<D> expected;
        for (const S x : v) {
            const Real above = std::isnan(Real(x)) ? span : x - least;
            const Real exact =
                (std::clamp<Real>(above, low * span, high * span) - low * span) * range / ((high - low) * span);
            expected.push_back(nearest<D>(exact));
        }
        std::vector<D> dst(len), dst2(len);
        inEveryRoundingMode([&] {
            EXPECT_EQ(own(v.data(), dst.data(), len, low, high, static_cast<float>(range)), 0);
            EXPECT_EQ(given(v.data(), dst2.data(), len, v[0], v[len - 1], low, high, static_cast<float>(range)), 0);
            EXPECT_TRUE(dst == expected && dst2 == expected) << len;
        });
        EXPECT_EQ(own(std::vector<S>(len, S(-5)).data(), dst.data(), len, 0, 1, 1), kelStatusNoOperation);
        EXPECT_EQ(given(v.data(), dst2.data(), len, 2, 2, 0, 1, 1), kelStatusNoOperation);
        EXPECT_TRUE(dst == std::vector<D>(len) && dst2 == std::vector<D>(len));
    }
}

TEST(Normalize, MapsTheSpanBetweenTheCuts) {
    checkSpans(kelsNormalizeInRange_32f, kelsNormalizeInRangeMinMax_32f);
    checkSpans(kelsNormalizeInRange_16s, kelsNormalizeInRangeMinMax_16s);
    checkSpans(kelsNormalizeInRange_16s8u, kelsNormalizeInRangeMinMax_16s8u);
    checkSpans(kelsNormalizeInRange_32f16s, kelsNormalizeInRangeMinMax_32f16s);
    checkSpans(kelsNormalizeInRange_32f8u, kelsNormalizeInRangeMinMax_32f8u);
    checkSpans(apart<kelsNormalizeInRange_32f_I>, apart<kelsNormalizeInRangeMinMax_32f_I>);
    checkSpans(apart<kelsNormalizeInRange_16s_I>, apart<kelsNormalizeInRangeMinMax_16s_I>);
    const Kel32f numberBehind[] = {NAN, 1};
    Kel32f dst[] = {9, 9};
    EXPECT_EQ(kelsNormalizeInRange_32f(numberBehind, dst, 2, 0, 1, 1), kelStatusBadArg);
    EXPECT_EQ(kelsNormalizeInRangeMinMax_32f(numberBehind, dst, 2, NAN, 1, 0, 1, 1), kelStatusBadArg);
    EXPECT_EQ(dst[0], 9);
}

TEST(Normalize, ElementsFollowOneAnotherWhereArraysOverlap) {
    expectLoopWhereArraysOverlap<Kel32f, 2>(
        [](const auto& p, int len) { kelsNormalizeInRangeMinMax_32f(p[0], p[1], len, 0, 2.9f, 0.1f, 0.9f, 2.7f); });
}

// ---- unit curve ----------------------------------------------------------------------------------------------------

Real unitCurve(Real v) {
    const Real x = v > 0 ? std::min(v, 2.0L) : 0;
    return x < 1 ? x * x : 2 - (2 - x) * (2 - x);
}

TEST(UnitCurve, IsFlatBeyondItsEnds) {
    const Kel32f v[] = {-INFINITY, NAN, -1, -0.0f, 0.5f, 1, 1.5f, 2, 3, INFINITY};
    const std::vector<Kel32f> expected = {0, 0, 0, 0, 0.25f, 1, 1.75f, 2, 2, 2};
    std::vector<Kel32f> dst(10), both(v, v + 10);
    ASSERT_EQ(kelsUnitCurve_32f(v, dst.data(), 10), 0);
    ASSERT_EQ(kelsUnitCurve_32f_I(both.data(), 10), 0);
    EXPECT_TRUE(dst == expected && both == expected);
}

TEST(UnitCurve, SixteenBitsAreExactBeforeOneRounding) {
    std::vector<Kel16s> v(65536);
    std::iota(v.begin(), v.end(), SHRT_MIN);
    for (const int bits : {-1, 0, 1, 7, 14, 15}) {
        for (const int scale : {0, 1, 5, -2, 40, INT_MAX, INT_MIN}) {
            std::vector<Kel16s> dst(v.size()), both = v;
            ASSERT_EQ(kelsUnitCurve_16s_Sfs(v.data(), dst.data(), bits, 65536, scale), 0);
            ASSERT_EQ(kelsUnitCurve_16s_ISfs(both.data(), bits, 65536, scale), 0);
            for (std::size_t i = 0; i < v.size(); ++i) {
                const Real exact = scaled(unitCurve(scaled(v[i], bits)), scale) * (1 << std::max(bits, 0));
                ASSERT_EQ(dst[i], bits >= 0 && bits <= 14 ? nearest<Kel16s>(exact) : 0) << v[i] << ", " << bits;
            }
            ASSERT_EQ(both, dst);
        }
    }
}

}  // namespace
