// Time warping beside a table of all cells, in exact costs and in random ones.
#include "kels/dtw.h"

#include "support/forms.h"
#include "support/support.h"

namespace {

using namespace test;

constexpr Kel32f kFar = 3.4028235e38f, kInf = HUGE_VALF;

constexpr auto warpD2 = forms(kelsDTW_L2_32f_D2, kelsDTW_L2_8u32s_D2Sfs, kelsDTW_L2Low_16s32s_D2Sfs);
constexpr auto warpD2L = forms(kelsDTW_L2_32f_D2L, kelsDTW_L2_8u32s_D2LSfs, kelsDTW_L2Low_16s32s_D2LSfs);

template <class T>
using Dist = std::conditional_t<std::is_same_v<T, Kel32f>, Kel32f, Kel32s>;

// A sequence in both layouts.
template <class T>
struct Sequence {
    int height, width, step;
    std::vector<T> block;
    std::vector<const T*> list;

    template <class Row>
    Sequence(int rowCount, int rowWidth, int rowStep, Row row)
        : height(rowCount), width(rowWidth), step(rowStep), block(rowCount * rowStep) {
        for (int i = 0; i < height; ++i) {
            const std::vector<T> values = row();
            list.push_back(&block[i * step]);
            std::copy(values.begin(), values.end(), &block[i * step]);
        }
    }
};

// What both layouts give.
template <class T, class... Scale>
Dist<T> warp(Sequence<T>& a, Sequence<T>& b, int delta, Dist<T> beam, Scale... scale) {
    Dist<T> dist = -1, other = -2;
    const KelStatus d2 =
        warpD2(a.block.data(), a.height, b.block.data(), b.height, a.width, a.step, &dist, delta, beam, scale...);
    const KelStatus d2l =
        warpD2L(a.list.data(), a.height, b.list.data(), b.height, a.width, &other, delta, beam, scale...);
    EXPECT_TRUE(d2 == kelStatusOk && d2l == kelStatusOk) << d2 << " and " << d2l;
    EXPECT_EQ(dist, other);
    return dist;
}
// One component a row.
Kel32f warp(std::vector<Kel32f> a, std::vector<Kel32f> b, int delta = INT_MAX, Kel32f beam = kInf) {
    const auto sequence = [](const std::vector<Kel32f>& v) {
        auto next = v.begin();
        return Sequence<Kel32f>(static_cast<int>(v.size()), 1, 1, [&] { return std::vector{*next++}; });
    };
    auto sa = sequence(a), sb = sequence(b);
    return warp(sa, sb, delta, beam);
}

template <class T>
double reference(const Sequence<T>& a, const Sequence<T>& b, int delta, double beam) {
    const auto& outer = a.height >= b.height ? a : b;
    const auto& inner = a.height >= b.height ? b : a;
    const int n = outer.height, m = inner.height, d = std::min(delta, m - 1);
    std::vector<std::vector<double>> cost(n, std::vector<double>(m, kFar));
    int first = 0, last = d;  // of the row before, cut back by the beam
    double least = kFar;
    for (int i = 0; i < n; ++i) {
        const int lo = std::max({0, 2 * i - (d + 2 * n - m + 1), first});
        const int hi = std::min({d + 2 * i, m - 1, i == 0 ? last : last + 2});
        least = kFar;
        for (int j = lo; j <= hi; ++j) {
            double sum = 0, from = i == 0 ? 0 : kFar;
            for (int k = 0; k < a.width; ++k) sum += std::pow(double(outer.list[i][k]) - inner.list[j][k], 2);
            for (int p = std::max({0, first, j - 2}); i > 0 && p <= std::min(j, last); ++p) {
                from = std::min(from, cost[i - 1][p]);
            }
            cost[i][j] = std::sqrt(sum) + from;
            least = std::min(least, cost[i][j]);
        }
        if (least >= kFar) return kFar;
        const double bound = least + 1.1920929e-7 + std::max(beam, 0.0);
        for (last = hi; cost[i][last] > bound;) --last;
        for (first = lo; cost[i][first] > bound;) ++first;
    }
    return least;
}

// call(a, b, delta, trial) with sequences of all sizes whose rows come from row(width); their steps exceed their widths
// now and then.
template <class T, class Row, class Call>
void forSequences(int trials, Row row, Call call) {
    Random random(3);
    for (int trial = 0; trial < trials; ++trial) {
        const int n = random.between(1, random.between(0, 9) ? 60 : 200),
                  m = random.between(0, 4) ? random.between(1, 60) : n;
        const int width = random.between(1, 45), step = width + n % 5;
        const auto next = row(random, width, trial);
        Sequence<T> a(n, width, step, next), b(m, width, step, next);
        call(a, b, std::array{-1, 0, 1, 3, 10, 30, INT_MAX}[random.between(0, 6)], trial);
    }
}

template <class T>
class Dtw : public ::testing::Test {};
using Types = ::testing::Types<Kel32f, Kel8u, Kel16s>;
TYPED_TEST_SUITE(Dtw, Types);

// Rows differ in one component only, by integers: every distance, cost and bound is exact in any order and rounding
// mode, and costs right on the bound are frequent.
TYPED_TEST(Dtw, ExactCostsAgreeToTheBit) {
    using T = TypeParam;
    const auto row = [](Random& random, int width, int trial) {
        return [&random, trial, v = random.vector<T>(width), place = random.between(0, width - 1)]() mutable {
            v[place] = static_cast<T>(random.between(0, trial % 2 ? 5 : 180));
            return v;
        };
    };
    forSequences<T>(300, row, [](auto& a, auto& b, int delta, int trial) {
        const int beam = std::array{-3, 0, 2, 9, 60, INT_MAX}[trial % 6];
        const double exact = reference(a, b, delta, beam);
        if constexpr (std::is_same_v<T, Kel32f>) {
            inEveryRoundingMode([&] { EXPECT_EQ(warp(a, b, delta, static_cast<float>(beam)), exact); });
        } else {
            for (const int scale : {0, 1, 4, -20, 100}) {
                EXPECT_EQ(warp(a, b, delta, beam, scale), halfEven<Kel32s>(exact, scale)) << scale;
            }
        }
    });
}

TEST(DtwFloat, Rules) {
    // The first of equally long sequences is walked.
    EXPECT_EQ(warp({0, 0}, {0, 5}), 0);
    EXPECT_EQ(warp({0, 5}, {0, 0}), 5);
    // The first row's second cell must survive a beam of 0, by a slack of one epsilon, for the path along 5, 5, 5.
    EXPECT_EQ(warp({0, 5, 5, 5}, {0, 1.1e-7f, 8, 5}, INT_MAX, 0), 1.1e-7f);
    EXPECT_EQ(warp({0, 5, 5, 5}, {0, 1.3e-7f, 8, 5}, INT_MAX, 0), 3);
    inEveryRoundingMode([&] {
        EXPECT_EQ(warp({1, 2, 3}, {1, 2}, INT_MIN), kFar);
        EXPECT_EQ(warp({1, kInf, 3}, {1, 2}), kFar);
        EXPECT_EQ(warp({1, NAN, 3}, {1, 2}), kFar);
        // Single unreachable cells are gone around, also where they stand at the end of a span.
        EXPECT_EQ(warp({1, 1, 1}, {1, NAN}, INT_MAX, 0), 0);
        EXPECT_EQ(warp({1, 1, 3, 3}, {kInf, 1, NAN, 2}), 2);
    });
    EXPECT_EQ(warp({1, 3e38f, 3}, {1, -3e38f}), kFar);
}

}  // namespace
