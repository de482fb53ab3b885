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
            const Guarded<T> src(v);
            for (int n = 0; n < len; n += n < 7 || n > len - 8 || len < 70 ? 1 : len / 9) {
                Guarded<T> result(1);
                ASSERT_EQ(nthMax(src.data(), len, n, result.data()), 0);
                ASSERT_TRUE(std::strong_order(result[0], sorted[n]) == 0) << n << " of " << len << ": " << result[0];
            }
        }
    }
}

TYPED_TEST(NthMax, ChecksAndMemory) {
    using T = TypeParam;
    constexpr int kLen = 1, kN = 2;
    const auto form = nthMax.of<T>();
    expectVectorChecks({kelStatusNullPtr, kelStatusSize}, form);
    expectSteps(form, {0, 5, 0, 0},
                {{kN, -1, kelStatusBadArg},
                 {kN, 5, kelStatusBadArg},
                 {kN, INT_MAX, kelStatusBadArg},
                 {kLen, 0, kelStatusSize}});
    const std::vector<T> v(5000, T(3));
    failEachAllocation([&](int failing, const AllocationWatch& watch) {
        T result(77);
        EXPECT_EQ(nthMax(v.data(), 5000, 9, &result), failing == 0 ? kelStatusNoMemory : kelStatusOk);
        EXPECT_EQ(result, T(failing == 0 ? 77 : 3));
        EXPECT_EQ(watch.unreleased(), 0);
    });
}

// ---- language-model scaling ----------------------------------------------------------------------------------------

TEST(ScaleLM, FloorsThenScales) {
    Random random(2);
    for (int len = 1; len <= 70; ++len) {
        std::vector<Kel32f> v = random.vector<Kel32f>(len), expected;
        v[len / 2] = NAN;
        const Kel32f val = random.value<Kel32f>(4), mul = random.value<Kel32f>(4), add = random.value<Kel32f>(4);
        for (const Kel32f x : v) expected.push_back(opaque((x > val ? x : val) * mul) + add);
        const Guarded<Kel32f> src(v);
        Guarded<Kel32f> dst(len), both(v);
        ASSERT_EQ(kelsScaleLM_32f(src.data(), dst, len, val, mul, add), 0);
        ASSERT_EQ(kelsLMThreshold_32f(val, mul, add, both, both, len), 0);
        EXPECT_TRUE(dst.vector() == expected && both.vector() == expected);

        const Guarded<Kel16s> shorts(random.vector<Kel16s>(len));
        Guarded<Kel32s> ints(len);
        const auto floor = random.value<Kel16s>(), factor = random.value<Kel16s>();
        ASSERT_EQ(kelsScaleLM_16s32s(shorts.data(), ints, len, floor, factor, INT_MAX - len), 0);
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
        const Guarded<S> src(v);
        Guarded<D> dst(len), dst2(len);
        inEveryRoundingMode([&] {
            EXPECT_EQ(own(src.data(), dst, len, low, high, static_cast<float>(range)), 0);
            EXPECT_EQ(given(src.data(), dst2, len, v[0], v[len - 1], low, high, static_cast<float>(range)), 0);
            EXPECT_TRUE(dst.vector() == expected && dst2.vector() == expected) << len;
        });
        const Guarded<S> constant(std::vector<S>(len, S(-5)));
        EXPECT_EQ(own(constant.data(), dst, len, 0, 1, 1), kelStatusNoOperation);
        EXPECT_EQ(given(src.data(), dst2, len, 2, 2, 0, 1, 1), kelStatusNoOperation);
        EXPECT_TRUE(dst.vector() == std::vector<D>(len) && dst2.vector() == std::vector<D>(len));
    }
}

// The cuts stand at `place`, the range behind them.
template <class... A>
void checkArguments(KelStatus (*f)(A...), const std::array<double, sizeof...(A)>& good, int place) {
    const int low = place, high = place + 1, range = place + 2;
    expectVectorChecks({kelStatusNullPtr, kelStatusSize}, f);
    for (const auto& [which, value] : {std::pair(low, -0.1),
                                       {low, double(NAN)},
                                       {low, 1.0},
                                       {high, 1.1},
                                       {high, double(NAN)},
                                       {range, -1.0},
                                       {range, double(NAN)}})
        expectSteps(f, good, {{which, value, kelStatusBadArg}});
}
template <class Own, class Given>
void checkForms(Own own, Given given) {
    checkSpans(own, given);
    checkArguments(own, {0, 0, 1, 0, 1, 1}, 3);
    checkArguments(given, {0, 0, 1, 2, 2, 0, 1, 1}, 5);
    expectSteps(given, {0, 0, 1, 2, 2, 0, 1, 1}, {{3, 3, kelStatusBadArg}});  // valMin above valMax
}

TEST(Normalize, MapsTheSpanBetweenTheCuts) {
    checkForms(kelsNormalizeInRange_32f, kelsNormalizeInRangeMinMax_32f);
    checkForms(kelsNormalizeInRange_16s, kelsNormalizeInRangeMinMax_16s);
    checkForms(kelsNormalizeInRange_16s8u, kelsNormalizeInRangeMinMax_16s8u);
    checkForms(kelsNormalizeInRange_32f16s, kelsNormalizeInRangeMinMax_32f16s);
    checkForms(kelsNormalizeInRange_32f8u, kelsNormalizeInRangeMinMax_32f8u);
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

TEST(UnitCurve, FollowsItsPieces) {
    Random random(4);
    for (int len = 1; len <= 70; ++len) {
        std::vector<Kel32f> v(len);
        for (auto& x : v) x = static_cast<Kel32f>(random.uniform(-0.5, 2.5));
        v[len / 2] = len % 3 == 0 ? NAN : len % 3 == 1 ? INFINITY : -INFINITY;
        const Guarded<Kel32f> src(v);
        Guarded<Kel32f> dst(len), both(v);
        ASSERT_EQ(kelsUnitCurve_32f(src.data(), dst, len), 0);
        ASSERT_EQ(kelsUnitCurve_32f_I(both, len), 0);
        for (int i = 0; i < len; ++i) ASSERT_LE(ulpError(dst[i], unitCurve(v[i])), v[i] < 1 ? 0.5 : 1.5) << v[i];
        EXPECT_TRUE(sameBits(both, dst));
    }
}

TEST(UnitCurve, SixteenBitsAreExactBeforeOneRounding) {
    std::vector<Kel16s> v(65536);
    std::iota(v.begin(), v.end(), SHRT_MIN);
    for (const int bits : {-1, 0, 1, 7, 14, 15}) {
        for (const int scale : {0, 1, 5, -2, 40, INT_MAX, INT_MIN}) {
            Guarded<Kel16s> dst(v.size()), both(v);
            ASSERT_EQ(kelsUnitCurve_16s_Sfs(v.data(), dst, bits, 65536, scale), 0);
            ASSERT_EQ(kelsUnitCurve_16s_ISfs(both, bits, 65536, scale), 0);
            for (std::size_t i = 0; i < v.size(); ++i) {
                const Real exact = scaled(unitCurve(scaled(v[i], bits)), scale) * (1 << std::max(bits, 0));
                ASSERT_EQ(dst[i], bits >= 0 && bits <= 14 ? nearest<Kel16s>(exact) : 0) << v[i] << ", " << bits;
            }
            ASSERT_EQ(both.vector(), dst.vector());
        }
    }
}

}  // namespace
