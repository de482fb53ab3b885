#include <algorithm>
#include <climits>
#include <cmath>
#include <compare>
#include <numeric>

#include "kels.h"
#include "support/allocation.h"
#include "support/checks.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

using test::Guarded;

// ---- the N-th largest ----------------------------------------------------------------------------------------------

template <class T>
constexpr auto kNthMax = kelsNthMaxElement_32f;
template <>
constexpr auto kNthMax<Kel64f> = kelsNthMaxElement_64f;
template <>
constexpr auto kNthMax<Kel32s> = kelsNthMaxElement_32s;

template <class T>
class NthMax : public ::testing::Test {};
using RankedTypes = ::testing::Types<Kel32f, Kel64f, Kel32s>;
TYPED_TEST_SUITE(NthMax, RankedTypes);

TYPED_TEST(NthMax, IsTheElementAtThatPlaceWhateverTheOrder) {
    using T = TypeParam;
    using Limits = std::numeric_limits<T>;
    test::Random random(1);
    for (const int len : {1, 2, 3, 4, 7, 31, 32, 33, 34, 63, 64, 65, 200, 2047, 2048, 5000}) {
        std::vector<T> wide = random.vector<T>(len, 40), near(len), few(len), special(len, T(-7));
        for (auto& x : near) x = static_cast<T>(1000000 + random.between(0, 9999));  // alike in their high bits
        for (auto& x : few) x = static_cast<T>(random.between(-2, 2));
        const T ends[] = {-T(0), T(-Limits::quiet_NaN()), 1, Limits::infinity(), Limits::quiet_NaN(),
                          0,     -Limits::infinity()};
        std::copy_n(ends, std::min(len, 7), special.begin());
        auto rising = near, falling = near;
        std::sort(rising.begin(), rising.end());
        std::reverse_copy(rising.begin(), rising.end(), falling.begin());
        auto pipe = rising;
        std::reverse(pipe.begin() + len / 2, pipe.end());
        for (const auto& v : {wide, near, few, special, rising, falling, pipe}) {
            auto sorted = v;
            std::sort(sorted.begin(), sorted.end(), [](T a, T b) { return std::strong_order(a, b) > 0; });
            const Guarded<T> src(v);
            for (int n = 0; n < len; n += n < 7 || n > len - 8 || len < 70 ? 1 : len / 9) {
                T result{};
                ASSERT_EQ(kNthMax<T>(src.data(), len, n, &result), 0);
                ASSERT_TRUE(std::strong_order(result, sorted[n]) == 0)
                    << n << " of " << len << ": " << result << " instead of " << sorted[n];
            }
        }
    }
}

TYPED_TEST(NthMax, ChecksAndMemory) {
    using T = TypeParam;
    test::expectVectorChecks({-8, -6}, kNthMax<T>);
    const std::vector<T> v(5000, T(3));
    T result(77);
    EXPECT_EQ(kNthMax<T>(v.data(), 0, -1, &result), kelStatusSize);
    for (const int n : {-1, 5, INT_MAX, INT_MIN}) EXPECT_EQ(kNthMax<T>(v.data(), 5, n, &result), kelStatusBadArg);
    EXPECT_EQ(result, T(77));
    test::failEachAllocation([&](int failing, const test::AllocationWatch& watch) {
        result = 77;
        const bool fails = failing == 0;
        EXPECT_EQ(kNthMax<T>(v.data(), 5000, 9, &result), fails ? kelStatusNoMemory : kelStatusOk);
        EXPECT_EQ(result, T(fails ? 77 : 3));
        EXPECT_EQ(watch.unreleased(), 0);
    });
}

// ---- language-model scaling ----------------------------------------------------------------------------------------

TEST(ScaleLM, FloorsThenScales) {
    test::Random random(2);
    for (int len = 1; len <= 70; ++len) {
        std::vector<Kel32f> v = random.vector<Kel32f>(len);
        v[len / 2] = NAN;
        const Kel32f val = random.value<Kel32f>(4), mul = random.value<Kel32f>(4), add = random.value<Kel32f>(4);
        const Guarded<Kel32f> src(v);
        Guarded<Kel32f> dst(len), other(len), both(v);
        ASSERT_EQ(kelsScaleLM_32f(src.data(), dst, len, val, mul, add), 0);
        ASSERT_EQ(kelsLMThreshold_32f(val, mul, add, src.data(), other, len), 0);
        ASSERT_EQ(kelsScaleLM_32f(both, both, len, val, mul, add), 0);
        for (int i = 0; i < len; ++i) {
            const Kel32f product = test::opaque(v[i] > val ? v[i] : val) * mul;
            ASSERT_TRUE(test::sameBits(dst[i], test::opaque(product) + add)) << v[i];
        }
        EXPECT_TRUE(test::sameBits(other, dst) && test::sameBits(both, dst));

        const Guarded<Kel16s> shorts(random.vector<Kel16s>(len));
        Guarded<Kel32s> ints(len);
        const auto floor = random.value<Kel16s>(), factor = random.value<Kel16s>();
        const auto offset = random.value<Kel32s>();
        ASSERT_EQ(kelsScaleLM_16s32s(shorts.data(), ints, len, floor, factor, offset), 0);
        for (int i = 0; i < len; ++i) {
            const int64_t exact = int64_t{factor} * std::max(shorts[i], floor) + offset;
            ASSERT_EQ(ints[i], static_cast<Kel32s>(static_cast<uint32_t>(exact)));
        }
    }
}

// ---- range normalisation -------------------------------------------------------------------------------------------

// Each form under one name: own span, given span.
#define FORMS(S, D, T)                                                                               \
    KelStatus own(const S* src, D* dst, int len, float low, float high, float range) {               \
        return kelsNormalizeInRange_##T(src, dst, len, low, high, range);                            \
    }                                                                                                \
    KelStatus given(const S* src, D* dst, int len, S mn, S mx, float low, float high, float range) { \
        return kelsNormalizeInRangeMinMax_##T(src, dst, len, mn, mx, low, high, range);              \
    }
FORMS(Kel32f, Kel32f, 32f)
FORMS(Kel16s, Kel16s, 16s)
FORMS(Kel16s, Kel8u, 16s8u)
FORMS(Kel32f, Kel16s, 32f16s)
FORMS(Kel32f, Kel8u, 32f8u)
#undef FORMS

template <class Pair>
class Normalize : public ::testing::Test {};
using NormalizedTypes = ::testing::Types<std::pair<Kel32f, Kel32f>, std::pair<Kel16s, Kel16s>, std::pair<Kel16s, Kel8u>,
                                         std::pair<Kel32f, Kel16s>, std::pair<Kel32f, Kel8u>>;
TYPED_TEST_SUITE(Normalize, NormalizedTypes);

TYPED_TEST(Normalize, MapsTheSpanBetweenTheCuts) {
    using S = typename TypeParam::first_type;
    using D = typename TypeParam::second_type;
    test::Random random(3);
    for (int len = 2; len < 600; len += len < 70 ? 1 : 97) {
        std::vector<S> v(len);
        for (auto& x : v) x = static_cast<S>(random.uniform(-3000, 9000));
        const auto [least, greatest] = std::minmax_element(v.begin(), v.end());
        const auto lowCut = static_cast<float>(random.uniform(0, 0.4)),
                   highCut = static_cast<float>(random.uniform(0.5, 1));
        const float range = std::is_same_v<D, Kel8u> ? 255.0f : 1000.0f;
        const long double mn = *least, d = *greatest - mn, width = (highCut - static_cast<long double>(lowCut)) * d;
        const Guarded<S> src(v);
        Guarded<D> dst(len), dst2(len);
        ASSERT_EQ(own(src.data(), dst, len, lowCut, highCut, range), 0);
        ASSERT_EQ(given(src.data(), dst2, len, *least, *greatest, lowCut, highCut, range), 0);
        for (int i = 0; i < len; ++i) {
            const long double exact = std::clamp((v[i] - mn - lowCut * d) / width, 0.0L, 1.0L) * range;
            // Both ends are rounded twice, at most at the size of an end; span, quotient, product four times.
            const long double error =
                0x1p-24L * (4 * std::max(std::fabs(mn), d + std::fabs(mn)) * range / width + 8 * exact);
            ASSERT_LE(std::fabs(dst[i] - exact), error + (std::is_integral_v<D> ? 0.5L : 0)) << v[i];
            ASSERT_EQ(dst2[i], dst[i]);
        }
    }
}

TYPED_TEST(Normalize, ChecksAndEmptySpans) {
    using S = typename TypeParam::first_type;
    using D = typename TypeParam::second_type;
    const S src[] = {1, 3, 2};
    D dst[3] = {9, 9, 9};
    EXPECT_EQ(given(src, dst, 0, 3, 2, 1, 0, 1), kelStatusSize);
    const float bad[][3] = {{-0.1f, 1, 1}, {0.5f, 0.5f, 1}, {0, 1.1f, 1}, {0, 1, -1},
                            {NAN, 1, 1},   {0, NAN, 1},     {0, 1, NAN}};
    for (const auto& [low, high, range] : bad) {
        EXPECT_EQ(own(src, dst, 3, low, high, range), kelStatusBadArg);
        EXPECT_EQ(given(src, dst, 3, 2, 2, low, high, range), kelStatusBadArg);
    }
    EXPECT_EQ(given(src, dst, 3, 3, 2, 0, 1, 1), kelStatusBadArg);
    if constexpr (std::is_floating_point_v<S>) {
        const S unordered[] = {NAN, NAN};
        EXPECT_EQ(given(src, dst, 3, NAN, 2, 0, 1, 1), kelStatusBadArg);
        EXPECT_EQ(given(src, dst, 3, 1, NAN, 0, 1, 1), kelStatusBadArg);
        EXPECT_EQ(own(unordered, dst, 2, 0, 1, 1), kelStatusBadArg);
    }
    EXPECT_TRUE(dst[0] == 9 && dst[1] == 9 && dst[2] == 9);
    EXPECT_EQ(given(src, dst, 2, 2, 2, 0, 1, 1), kelStatusNoOperation);
    EXPECT_TRUE(dst[0] == 0 && dst[1] == 0 && dst[2] == 9);
    const std::vector<S> constant(40, S(-5));
    Guarded<D> zeros(std::vector<D>(40, D(9)));
    EXPECT_EQ(own(constant.data(), zeros, 40, 0, 1, 1), kelStatusNoOperation);
    EXPECT_EQ(zeros.vector(), std::vector<D>(40));
    EXPECT_EQ(own(src, dst, 3, 0, 1, 0), kelStatusOk);
}

TEST(NormalizeForms, RoundToTheEvenIntegerAndSaturate) {
    std::vector<Kel16s> v(301);
    std::iota(v.begin(), v.end(), Kel16s(-150));
    const std::vector<Kel32f> floats(v.begin(), v.end());
    test::inEveryRoundingMode([&] {
        for (const float range : {150.0f, 1e7f}) {  // halves, and beyond both types
            Guarded<Kel16s> a(301), b(301), inPlace(v);
            Guarded<Kel8u> c(301), d(301);
            EXPECT_EQ(own(v.data(), a, 301, 0, 1, range), 0);
            EXPECT_EQ(own(floats.data(), b, 301, 0, 1, range), 0);
            EXPECT_EQ(own(v.data(), c, 301, 0, 1, range), 0);
            EXPECT_EQ(own(floats.data(), d, 301, 0, 1, range), 0);
            EXPECT_EQ(kelsNormalizeInRange_16s_I(inPlace, 301, 0, 1, range), 0);
            for (int i = 0; i < 301; ++i) {
                const int half = i / 2 + (i % 4 == 3), exact = range < 1000 ? half : i == 0 ? 0 : INT_MAX;
                EXPECT_EQ(a[i], std::min(exact, 32767));
                EXPECT_EQ(c[i], std::min(exact, 255));
                EXPECT_TRUE(b[i] == a[i] && d[i] == c[i] && inPlace[i] == a[i]);
            }
        }
    });
    Guarded<Kel16s> both(v), apart(301);
    EXPECT_EQ(kelsNormalizeInRangeMinMax_16s_I(both, 301, -100, 50, 0.25f, 0.75f, 9), 0);
    EXPECT_EQ(given(v.data(), apart, 301, -100, 50, 0.25f, 0.75f, 9), 0);
    EXPECT_EQ(both.vector(), apart.vector());
    Guarded<Kel32f> f{NAN, -INFINITY, 4, 8, INFINITY}, g = {5, 4, 8};
    EXPECT_EQ(kelsNormalizeInRangeMinMax_32f_I(f, 5, 4, 8, 0, 1, 2), 0);
    EXPECT_TRUE(test::sameBits(f, std::vector<Kel32f>{2, 0, 0, 2, 2}));
    EXPECT_EQ(kelsNormalizeInRange_32f_I(g, 3, 0, 1, 2), 0);
    EXPECT_TRUE(test::sameBits(g, std::vector<Kel32f>{0.5f, 0, 2}));
}

// ---- unit curve ----------------------------------------------------------------------------------------------------

TEST(UnitCurve, FollowsItsPieces) {
    test::Random random(4);
    for (int len = 1; len <= 70; ++len) {
        std::vector<Kel32f> v(len);
        for (auto& x : v) x = static_cast<Kel32f>(random.uniform(-0.5, 2.5));
        v[len / 2] = NAN, v[len / 3] = len % 2 ? INFINITY : -INFINITY;
        const Guarded<Kel32f> src(v);
        Guarded<Kel32f> dst(len), both(v);
        ASSERT_EQ(kelsUnitCurve_32f(src.data(), dst, len), 0);
        ASSERT_EQ(kelsUnitCurve_32f_I(both, len), 0);
        for (int i = 0; i < len; ++i) {
            const long double x = v[i] > 0 ? std::min(v[i], 2.0f) : 0, rest = 2 - x;
            const long double exact = x < 1 ? x * x : 2 - rest * rest;
            ASSERT_LE(test::ulpError(dst[i], exact), x < 1 ? 0.5 : 1.5) << v[i];
        }
        EXPECT_TRUE(test::sameBits(both, dst));
    }
}

TEST(UnitCurve, SixteenBitsAreExactBeforeOneRounding) {
    std::vector<Kel16s> v(65536);
    std::iota(v.begin(), v.end(), SHRT_MIN);
    for (const int bits : {0, 1, 7, 13, 14}) {
        for (const int scale : {0, 1, 5, -2, 40, -40, INT_MAX, INT_MIN}) {
            Guarded<Kel16s> dst(v.size()), both(v);
            ASSERT_EQ(kelsUnitCurve_16s_Sfs(v.data(), dst, bits, 65536, scale), 0);
            ASSERT_EQ(kelsUnitCurve_16s_ISfs(both, bits, 65536, scale), 0);
            for (std::size_t i = 0; i < v.size(); ++i) {
                const long double x = std::clamp(std::ldexp(static_cast<long double>(v[i]), -bits), 0.0L, 2.0L);
                const long double y = x < 1 ? x * x : 2 - (2 - x) * (2 - x);
                const long double exact = std::ldexp(y, bits - std::clamp(scale, -200, 200));
                ASSERT_EQ(dst[i], std::min(std::nearbyint(exact), 32767.0L))
                    << v[i] << ", " << bits << " bits, scale " << scale;
            }
            ASSERT_EQ(both.vector(), dst.vector());
        }
    }
    for (const int bits : {-1, 15, INT_MAX, INT_MIN}) {
        Kel16s y[] = {5, 5, 5, 5};
        EXPECT_EQ(kelsUnitCurve_16s_Sfs(v.data(), y, bits, 1, 0), 0);
        EXPECT_EQ(kelsUnitCurve_16s_ISfs(y + 2, bits, 1, 0), 0);
        EXPECT_TRUE(y[0] == 0 && y[1] == 5 && y[2] == 0 && y[3] == 5);
    }
}

TEST(Ranking, PointersAreCheckedBeforeLengths) {
    test::expectVectorChecks({-8, -6}, kelsScaleLM_32f, kelsLMThreshold_32f, kelsScaleLM_16s32s, kelsUnitCurve_32f,
                             kelsUnitCurve_32f_I, kelsNormalizeInRange_32f, kelsNormalizeInRange_16s,
                             kelsNormalizeInRange_16s8u, kelsNormalizeInRange_32f16s, kelsNormalizeInRange_32f8u,
                             kelsNormalizeInRange_32f_I, kelsNormalizeInRange_16s_I, kelsNormalizeInRangeMinMax_32f,
                             kelsNormalizeInRangeMinMax_16s, kelsNormalizeInRangeMinMax_16s8u,
                             kelsNormalizeInRangeMinMax_32f16s, kelsNormalizeInRangeMinMax_32f8u,
                             kelsNormalizeInRangeMinMax_32f_I, kelsNormalizeInRangeMinMax_16s_I);
    test::expectChecks<test::Places{-1, -1, 3}>({-8, -6}, 1, kelsUnitCurve_16s_Sfs);
    test::expectChecks<test::Places{-1, -1, 2}>({-8, -6}, 1, kelsUnitCurve_16s_ISfs);
}

}  // namespace
