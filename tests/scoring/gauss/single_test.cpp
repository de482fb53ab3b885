// One vector under one Gaussian: at the ends of the range, and with variances that are none.
#include <kels.h>

#include "support/support.h"

namespace {

// Differences, weights and their products beyond what a double holds, in sums and scores that it does hold.
TEST(VectorScores, DoublesHoldWhereProductsLeaveTheRange) {
    const struct {
        Kel64f difference, weight, constant;
    } cases[] = {{1e200, 1e-300, -3},   {1e-200, 1e300, -1e-101}, {0x1p-537, 0x1p1000, 0},
                 {0x1.9p511, 2, 1e308}, {HUGE_VAL, 1, 0},         {1e308, 2, 0},
                 {1, 1, -HUGE_VAL}};
    for (const auto& c : cases) {
        for (const int place : {0, 3, 8}) {
            Kel64f x[9] = {}, mean[9] = {}, ivar[9] = {}, score = 77;
            x[place] = c.difference;
            ivar[place] = c.weight;
            ASSERT_EQ(kelsLogGaussSingle_64f(x, mean, ivar, 9, &score, c.constant), 0);
            const long double sum = static_cast<long double>(c.difference) * c.difference * c.weight;
            EXPECT_TRUE(test::sameBits(score, static_cast<Kel64f>(c.constant - 0.5L * sum))) << score;
        }
    }
}

// More terms of one sign at the ends of the range than 53 bits hold.
TEST(VectorScores, IntegerSumsStayExactOverLongRowsOfExtremes) {
    constexpr int kLength = 30001;
    const std::vector<Kel16s> low(kLength, -32768), high(kLength, 32767);
    Kel32s score = 0;
    const int64_t sum = int64_t{kLength} * 65535 * 65535 * -32768;
    ASSERT_EQ(kelsLogGaussSingle_Low_16s32s_Sfs(high.data(), low.data(), low.data(), kLength, &score, 9, -1), 0);
    EXPECT_EQ(score, static_cast<Kel32s>(static_cast<uint32_t>(9 - sum)));
    ASSERT_EQ(kelsLogGaussSingle_16s32s_Sfs(high.data(), low.data(), low.data(), kLength, &score, 9, 33), 0);
    EXPECT_EQ(score, 9 - (sum >> 34));
}

// ---- variances given directly --------------------------------------------------------------------------------------

TEST(DirectVariances, AFaultyOneIsAWarningThatTheFormsAnswerDifferently) {
    for (const Kel32f faulty : {0.0f, -0.0f, NAN}) {
        const auto expect = [=]<class S, class R>(auto f, S, R expected, auto... scale) {
            const S x[] = {3, 1, 2}, m[] = {1, 1, 1}, v[] = {1, 1, std::is_integral_v<S> ? S(0) : S(faulty)};
            R result = 77;
            EXPECT_EQ(f(x, m, v, 3, &result, 5, scale...), kelStatusDivByZero);
            EXPECT_EQ(result, expected);
        };
        expect(kelsLogGaussSingle_DirectVar_32f, Kel32f(), -INFINITY);
        expect(kelsLogGaussSingle_DirectVar_64f, Kel64f(), Kel64f(77));
        expect(kelsLogGaussSingle_DirectVar_32f64f, Kel32f(), Kel64f(77));
        expect(kelsLogGaussSingle_DirectVar_16s32f, Kel16s(), Kel32f(77));
        expect(kelsLogGaussSingle_DirectVarScaled_16s32f, Kel16s(), Kel32f(77), 0);
        expect(kelsLogGaussSingle_DirectVar_16s32s_Sfs, Kel16s(), INT_MIN, 0);
    }
}

}  // namespace
