#include "kels/dtw.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <memory>
#include <type_traits>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

#include "support/allocation.h"
#include "support/checks.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

constexpr Kel32f kFar = 3.4028235e38f;
constexpr Kel32f kNoBeam = std::numeric_limits<Kel32f>::infinity();

template <class T>
struct Forms;
#define FORMS(T, DIST, BLOCK, LIST)       \
    template <>                           \
    struct Forms<T> {                     \
        using Dist = DIST;                \
        static constexpr auto d2 = BLOCK; \
        static constexpr auto d2l = LIST; \
    };
FORMS(Kel32f, Kel32f, kelsDTW_L2_32f_D2, kelsDTW_L2_32f_D2L)
FORMS(Kel8u, Kel32s, kelsDTW_L2_8u32s_D2Sfs, kelsDTW_L2_8u32s_D2LSfs)
FORMS(Kel16s, Kel32s, kelsDTW_L2Low_16s32s_D2Sfs, kelsDTW_L2Low_16s32s_D2LSfs)
#undef FORMS

// A sequence in both layouts: rows `step` apart up to a guard page, and rows of their own between guard pages.
template <class T>
struct Sequence {
    int height, width, step;
    test::Guarded<T> block;
    std::vector<std::unique_ptr<test::Guarded<T>>> rows;
    std::vector<const T*> list;

    Sequence(const std::vector<T>& values, int rowWidth, int rowStep)
        : height(static_cast<int>(values.size()) / rowWidth),
          width(rowWidth),
          step(rowStep),
          block(static_cast<std::size_t>((height - 1) * rowStep + rowWidth)) {
        for (int i = 0; i < height; ++i) {
            const T* const row = values.data() + i * width;
            rows.push_back(std::make_unique<test::Guarded<T>>(std::vector<T>(row, row + width),
                                                              i % 2 ? test::Edge::Begin : test::Edge::End));
            list.push_back(rows.back()->data());
            std::copy(row, row + width, block.data() + i * step);
        }
    }
    double at(int i, int k) const { return block[static_cast<std::size_t>(i * step + k)]; }
};

// What both layouts give.
template <class T, class... Scale>
auto warp(Sequence<T>& a, Sequence<T>& b, int delta, typename Forms<T>::Dist beam, Scale... scaleFactor) {
    typename Forms<T>::Dist dist = -1, other = -2;
    EXPECT_EQ(Forms<T>::d2(a.block, a.height, b.block, b.height, a.width, a.step, &dist, delta, beam, scaleFactor...),
              0);
    EXPECT_EQ(
        Forms<T>::d2l(a.list.data(), a.height, b.list.data(), b.height, a.width, &other, delta, beam, scaleFactor...),
        0);
    EXPECT_EQ(dist, other);
    return dist;
}
// One component a row.
Kel32f warp(const std::vector<Kel32f>& a, const std::vector<Kel32f>& b, int delta = INT_MAX, Kel32f beam = kNoBeam) {
    Sequence<Kel32f> sa(a, 1, 1), sb(b, 1, 1);
    return warp(sa, sb, delta, beam);
}

struct Outcome {
    double dist;
    bool clear;  // no cost but the least came closer to the bound that it was compared with than `margin` times that
};

Outcome reference(const Sequence<Kel32f>& a, const Sequence<Kel32f>& b, int delta, double beam, double margin) {
    const auto& outer = a.height >= b.height ? a : b;
    const auto& inner = a.height >= b.height ? b : a;
    const int n = outer.height, m = inner.height, d = std::min(delta, m - 1);
    std::vector<std::vector<double>> cost(n, std::vector<double>(m, kFar));
    int first = 0, last = d;  // of the row before, cut back by the beam
    double least = kFar;
    bool clear = true;
    for (int i = 0; i < n; ++i) {
        const int lo = std::max({0, 2 * i - (d + 2 * n - m + 1), first});
        const int hi = std::min({d + 2 * i, m - 1, i == 0 ? last : last + 2});
        least = kFar;
        for (int j = lo; j <= hi; ++j) {
            double sum = 0;
            for (int k = 0; k < a.width; ++k) sum += std::pow(outer.at(i, k) - inner.at(j, k), 2);
            double from = i == 0 ? 0 : kFar;
            for (int p = std::max({0, first, j - 2}); i > 0 && p <= std::min(j, last); ++p) {
                from = std::min(from, cost[i - 1][p]);
            }
            cost[i][j] = std::sqrt(sum) + from;
            least = std::min(least, cost[i][j]);
        }
        if (least >= kFar) return {kFar, clear};
        const double bound = least + 1.1920929e-7 + std::max(beam, 0.0);
        const auto beyond = [&](double c) {
            clear = clear && (c == least || std::fabs(c - bound) > margin * bound);
            return c > bound;
        };
        for (last = hi; beyond(cost[i][last]);) --last;
        for (first = lo; beyond(cost[i][first]);) ++first;
    }
    return {least, clear};
}

struct Case {
    int n, m, width, delta;
    Kel32f beam;

    explicit Case(test::Random& random)
        : n(random.between(1, random.between(0, 9) ? 60 : 200)),
          m(random.between(0, 4) ? random.between(1, 60) : n),
          width(random.between(1, 45)),
          delta(std::vector{-1, 0, 1, 3, 10, 30, INT_MAX}[static_cast<std::size_t>(random.between(0, 6))]),
          beam(std::vector{-3.0f, 0.0f, 2.0f, 9.0f, 60.0f, kNoBeam}[static_cast<std::size_t>(random.between(0, 5))]) {}
};

// Rows of `c`, given the values of one: their steps exceed their widths now and then.
template <class T, class Row>
Sequence<T> sequence(const Case& c, int height, Row row) {
    std::vector<T> values;
    for (int i = 0; i < height; ++i) {
        const std::vector<T> next = row();
        values.insert(values.end(), next.begin(), next.end());
    }
    return Sequence<T>(values, c.width, c.width + c.n % 5);
}

// Rows differ in one component only, by integers: every distance, cost and bound is exact in any order and rounding
// mode, and costs right on the bound are frequent.
TEST(Dtw, ExactCostsAgreeToTheBit) {
    test::Random random(3);
    for (int trial = 0; trial < 400; ++trial) {
        const Case c(random);
        auto common = random.vector<Kel32f>(c.width);
        const int differing = random.between(0, c.width - 1), range = trial % 2 ? 3 : 90;
        const auto row = [&] {
            common[differing] = static_cast<Kel32f>(random.between(-range, range));
            return common;
        };
        auto a = sequence<Kel32f>(c, c.n, row), b = sequence<Kel32f>(c, c.m, row);
        const auto expected = static_cast<Kel32f>(reference(a, b, c.delta, c.beam, 0).dist);
        test::inEveryRoundingMode(
            [&] { EXPECT_EQ(warp(a, b, c.delta, c.beam), expected) << c.n << " x " << c.m << " x " << c.width; });
    }
}

// A distance errs by half the relative error of its sum of squares, so by less than (width + 4) / 2 + 1 units of 2^-24;
// a cost adds one unit a row.
TEST(Dtw, RoundedCostsStayWithinTheirBound) {
    test::Random random(4);
    int clear = 0;
    for (int trial = 0; trial < 300; ++trial) {
        const Case c(random);
        const auto row = [&] { return random.vector<Kel32f>(c.width, 1); };
        auto a = sequence<Kel32f>(c, c.n, row), b = sequence<Kel32f>(c, c.m, row);
        const double margin = (c.width / 2.0 + 3 + std::max(c.n, c.m)) * std::ldexp(1.0, -24);
        const Outcome expected = reference(a, b, c.delta, c.beam, 4 * margin);
        if (!expected.clear) continue;
        ++clear;
        const Kel32f got = warp(a, b, c.delta, c.beam);
        EXPECT_NEAR(got, expected.dist, margin * expected.dist) << c.n << " x " << c.m << " x " << c.width;
        if (c.n != c.m) {
            EXPECT_EQ(warp(b, a, c.delta, c.beam), got);
        }
    }
    EXPECT_GT(clear, 200);
}

TEST(Dtw, TheFirstOfEquallyLongSequencesIsWalked) {
    EXPECT_EQ(warp({0, 0}, {0, 5}), 0);
    EXPECT_EQ(warp({0, 5}, {0, 0}), 5);
}

// The first row's second cell must survive a beam of 0 for the path along 5, 5, 5 to exist.
TEST(Dtw, TheBeamHasASlackOfOneEpsilon) {
    EXPECT_EQ(warp({0, 5, 5, 5}, {0, 1.1e-7f, 8, 5}, INT_MAX, 0), 1.1e-7f);
    EXPECT_EQ(warp({0, 5, 5, 5}, {0, 1.3e-7f, 8, 5}, INT_MAX, 0), 3);
}

TEST(Dtw, NoPathGivesTheLargestFloat) {
    const Kel32f inf = std::numeric_limits<Kel32f>::infinity(), nan = std::numeric_limits<Kel32f>::quiet_NaN();
    test::inEveryRoundingMode([&] {
        EXPECT_EQ(warp({1, 2, 3}, {1, 2}, -1), kFar);
        EXPECT_EQ(warp({1, 2, 3}, {1, 2}, INT_MIN), kFar);
        EXPECT_EQ(warp({1, inf, 3}, {1, 2}), kFar);
        EXPECT_EQ(warp({1, nan, 3}, {1, 2}), kFar);
        // Single unreachable cells are gone around, also where they stand at the end of a span.
        EXPECT_EQ(warp({1, 1, 1}, {1, nan}, INT_MAX, 0), 0);
        EXPECT_EQ(warp({1, 1, 3, 3}, {inf, 1, nan, 2}), 2);
        EXPECT_EQ(warp({1, 2, 2}, {nan, 1, 2}), 0);
    });
    EXPECT_EQ(warp({1, 3e38f, 3}, {1, -3e38f}), kFar);
}

template <class T>
class DtwForms : public ::testing::Test {};
using AllForms = ::testing::Types<Kel32f, Kel8u, Kel16s>;
TYPED_TEST_SUITE(DtwForms, AllForms);

TYPED_TEST(DtwForms, StatusesInOrder) {
    using Form = Forms<TypeParam>;
    test::expectChecks<test::Places{-1, 1, 4}>({-8, -6}, 1, Form::d2, Form::d2l);
    test::expectChecks<test::Places{-1, 3, 4}>({-8, -6}, 1, Form::d2, Form::d2l);
    test::expectChecks<test::Places{-1, -1, 5}>({-8, -6}, 1, Form::d2);  // a step below the width
}

TYPED_TEST(DtwForms, EveryFailedAllocationIsReported) {
    using Form = Forms<TypeParam>;
    constexpr int height = 200, width = 30;
    constexpr bool floats = std::is_same_v<TypeParam, Kel32f>;
    const std::vector<TypeParam> values(height * width, 1);
    const TypeParam* const x = values.data();
    int failures = 0;
    test::failEachAllocation([&](int n, const test::AllocationWatch& watch) {
#if defined(__SANITIZE_ADDRESS__)
        const __lsan::ScopedDisabler oneBlockStays;
#endif
        typename Form::Dist dist = 7;
        KelStatus status;
        if constexpr (floats) {
            status = Form::d2(x, height, x, height, width, width, &dist, height, 1000);
        } else {
            status = Form::d2(x, height, x, height, width, width, &dist, height, 1000, 0);
        }
        const bool failed = watch.calls() == n + 1;
        EXPECT_EQ(status, failed ? kelStatusNoMemory : kelStatusOk);
        EXPECT_EQ(dist, failed ? 7 : 0);
        EXPECT_EQ(watch.unreleased(), !floats && n == 1 ? 1 : 0);
        failures += failed;
    });
    EXPECT_EQ(failures, floats ? 2 : 4);
}

TEST(Dtw, SmallProblemsAllocateNothing) {
    const std::vector<Kel32f> values(126 * 13);
    Kel32f dist = 0;
    const test::AllocationWatch watch;
    kelsDTW_L2_32f_D2(values.data(), 125, values.data(), 120, 13, 13, &dist, 120, 1);
    EXPECT_EQ(watch.calls(), 0);
    kelsDTW_L2_32f_D2(values.data(), 126, values.data(), 120, 13, 13, &dist, 120, 1);
    EXPECT_EQ(watch.calls(), 1);
}

template <class T>
class DtwIntegers : public ::testing::Test {};
using IntegerForms = ::testing::Types<Kel8u, Kel16s>;
TYPED_TEST_SUITE(DtwIntegers, IntegerForms);

// dist * 2^-scaleFactor, half to even, saturated; exact in every rounding mode.
Kel32s scaled(Kel32f dist, int scaleFactor) {
    const long double v = std::ldexp(static_cast<long double>(dist), -scaleFactor);
    if (v >= INT_MAX) return INT_MAX;
    const long double whole = std::floor(v), rest = v - whole;
    const auto down = static_cast<Kel32s>(whole);
    return down + (rest > 0.5L || (rest == 0.5L && down % 2 != 0) ? 1 : 0);
}

TYPED_TEST(DtwIntegers, ScaleTheFloatResult) {
    test::Random random(5);
    for (int trial = 0; trial < 60; ++trial) {
        const Case c(random);
        const int step = c.width + trial % 3;
        const auto v1 = random.vector<TypeParam>(c.n * c.width), v2 = random.vector<TypeParam>(c.m * c.width);
        Sequence<TypeParam> a(v1, c.width, step), b(v2, c.width, step);
        Sequence<Kel32f> fa({v1.begin(), v1.end()}, c.width, step), fb({v2.begin(), v2.end()}, c.width, step);
        const Kel32s beam = std::isinf(c.beam) ? INT_MAX : static_cast<Kel32s>(c.beam) * 100;
        for (const int scaleFactor : {0, 1, 4, 31, -2, -20, 100}) {
            test::inEveryRoundingMode([&] {
                const Kel32s expected = scaled(warp(fa, fb, c.delta, static_cast<Kel32f>(beam)), scaleFactor);
                EXPECT_EQ(warp(a, b, c.delta, beam, scaleFactor), expected) << scaleFactor;
            });
        }
    }
}

TYPED_TEST(DtwIntegers, CopiesThatCannotBeCountedAreOutOfMemory) {
    const TypeParam value = 0;
    const TypeParam* row = &value;
    Kel32s dist = 7;
    for (const auto& [height1, height2] : {std::pair(INT_MAX, 1), {1, INT_MAX}, {INT_MAX, INT_MAX}}) {
        EXPECT_EQ(Forms<TypeParam>::d2l(&row, height1, &row, height2, INT_MAX, &dist, 0, 0, 0), kelStatusNoMemory);
    }
    EXPECT_EQ(dist, 7);
}

}  // namespace
