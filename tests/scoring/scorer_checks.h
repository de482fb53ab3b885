// What every scorer of tests/scoring/scorers.h is tried for.
#pragma once

#include "scoring/scorers.h"

namespace test {

// The formula, for all widths up to a few vectors, heights that leave every rest, and some large ones.
inline constexpr auto followsItsFormula = []<class S, class R>(const Scorer<S, R>& scorer) {
    std::vector<std::pair<int, int>> sizes = {{64, 3}, {65, 5}, {131, 2}, {70, 39}, {5, 65}, {1, 100}, {2, 1000}};
    for (int width = 1; width <= 41; ++width) sizes.insert(sizes.end(), {{1, width}, {1 + width * 5 % 9, width}});
    for (int height = 2; height <= 9; ++height) sizes.insert(sizes.end(), {{height, 4}, {height, 17}, {height, 39}});
    Random random(11);
    for (const auto& [height, width] : sizes) {
        Problem<S, R> p(scorer, random, height, width);
        const auto expected = p.expected();
        const auto call = [&] { EXPECT_EQ(p.run(), kelStatusOk); };
        const auto check = [&] {
            for (std::size_t i = 0; i < expected.size(); ++i) {
                ASSERT_TRUE(near(p.results[i], expected[i].value, expected[i].error))
                    << p.height << 'x' << width << " at " << i << ", scale " << p.arguments.scaleFactor;
            }
        };
        inRoundingModes(p.kInteger, call, check);
    }
};

// Two values a and b meet: the running result and the score, or the scores of two components, of vectors at the mean.
inline constexpr auto keepsFloorsTiesAndNaN = []<class S, class R>(const Scorer<S, R>& scorer) {
    if constexpr (std::is_floating_point_v<R>) {
        constexpr bool wide = sizeof(R) == 8;
        constexpr auto zero = static_cast<R>(wide ? -1e10 : -4500000.0), below = static_cast<R>(3 * zero);
        constexpr auto equal = static_cast<R>(wide ? 0.6931471805599475 : 0.6931471827215062);
        constexpr R nan = std::numeric_limits<R>::quiet_NaN();
        const struct {
            R a, b, sum;
        } cases[] = {{zero, R(-7.25), R(-7.25)},
                     {R(-7.25), zero, R(-7.25)},
                     {below, 2 * zero, zero},
                     {R(0.95L * zero), below, wide ? zero : R(0.95L * zero)},
                     {0, 0, equal},
                     {below, below, below + equal},
                     {zero, zero, zero + equal},
                     {R(0.0), R(-0.0), equal},
                     {R(-0.0), R(0.0), equal},
                     {nan, R(-7.25), nan},
                     {R(-7.25), nan, nan}};
        for (const auto& [a, b, sum] : cases) {
            Random random(2);
            Problem<S, R> p(scorer, random, 2, 5);
            for (auto* block : {&p.x, &p.mean, &p.ivar}) block->fill(S(1));
            std::fill_n(p.sign.data(), p.sign.size(), Kel8u{0xff});
            std::fill(p.before.begin(), p.before.end(), a);
            std::fill_n(p.constants.data(), p.constants.size(), b);
            if (p.kind.mixture()) p.constants[0] = a;
            p.arguments.gConst = b;
            p.arguments.scaleFactor = a < b ? INT_MIN : INT_MAX;
            ASSERT_EQ(p.run(), kelStatusOk);
            // Of equal values, zeros of both signs among them, the maximum is the score.
            const R score = p.kind.distance ? 0 : p.kind.items == Items::Gaussians ? a : b, most = a <= b ? b : a;
            const R expected = p.kind.adds() ? sum : p.kind.fold == Fold::Max ? most : score;
            EXPECT_TRUE(agrees(p.results[0], expected)) << a << ' ' << b;
        }
    }
};

}  // namespace test
