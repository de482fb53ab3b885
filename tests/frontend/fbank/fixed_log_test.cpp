// The fixed-point logarithm and exponential against the C library, over their whole ranges.
#include "frontend/fbank/fixed_log.h"

#include "support/elements.h"

using namespace kels;

namespace {

TEST(FixedLog, TableHoldsRoundedLogarithms) {
    for (int k = 0; k < 32; ++k) {
        EXPECT_EQ(_ExpTable1[k], std::llround(std::ldexp(std::log1p(std::ldexp(1.0L, -k - 1)), 31))) << k;
    }
}

TEST(FixedLog, LogarithmOverItsWholeRange) {
    test::Random random;
    for (const int q : {-7, 0, 15, 22, 30, 31, 40, 57}) {
        for (int i = 0; i < 4000; ++i) {
            // Every magnitude from 1 to 2^63 - 1, often next to a power of two.
            const int64_t x =
                std::max<int64_t>(1, std::abs(test::anyElement<int64_t>(random) >> random.between(1, 62)));
            int64_t result = 0;
            ASSERT_EQ(ownNatLog(x, &result, q), kelStatusOk);
            const long double exact = std::log(static_cast<long double>(x)) - q * std::log(2.0L);
            const long double error = std::ldexp(static_cast<long double>(result), -q) - exact;
            ASSERT_LE(std::fabs(error), std::ldexp(0.5L, -q) + std::ldexp(1.0L, -26)) << x << " in Q" << q;
        }
    }
}

TEST(FixedLog, ExactPlacesAndFaults) {
    int64_t result = 77;
    for (const int64_t x : {int64_t{0}, INT64_MIN}) EXPECT_EQ(ownNatLog(x, &result, 22), kelStatusBadArg);
    EXPECT_EQ(result, 77);
    EXPECT_EQ(ownNatLog(1, &result, 64), kelStatusOk);
    EXPECT_EQ(result, INT64_MIN);  // -44.4 * 2^64
}

TEST(FixedLog, ExponentialOverItsRange) {
    test::Random random;
    for (const int argBits : {10, 22, 24, 40}) {
        for (const int scaleFactor : {-40, -22, 0, 5}) {
            for (int i = 0; i < 3000; ++i) {
                const double value = random.uniform(-30.0, std::min(42.0, (62 + scaleFactor) * 0.69));
                const auto x = static_cast<int64_t>(std::ldexp(value, argBits));
                const long double argument = std::ldexp(static_cast<long double>(x), -argBits);
                const long double exact = std::ldexp(std::exp(argument), -scaleFactor);
                const long double relative = std::ldexp(1.0L, -26) + std::fabs(argument) * std::ldexp(1.0L, -31) +
                                             (argBits > 24 ? std::ldexp(1.0L, -25) : 0);
                ASSERT_LE(std::fabs(ownExpFix(x, argBits, scaleFactor) - exact), 0.5L + exact * relative)
                    << argument << " from Q" << argBits << " by " << scaleFactor;
            }
        }
    }
}

TEST(FixedLog, ExponentialAtItsEnds) {
    EXPECT_EQ(ownExpFix(0, 22, -22), 1 << 22);
    EXPECT_EQ(ownExpFix(int64_t{44} << 22, 22, 0), INT64_MAX);
    EXPECT_EQ(ownExpFix(INT64_MAX, 22, 64), INT64_MAX);
    EXPECT_EQ(ownExpFix(INT64_MAX, -64, 0), INT64_MAX);
    EXPECT_EQ(ownExpFix(INT64_MIN, 22, -62), 0);
    EXPECT_EQ(ownExpFix(INT64_MIN, 64, 0), 1);  // e^-0.5 = 0.61
    EXPECT_EQ(ownExpFix(-1, 0, 0), 0);          // 0.37
}

}  // namespace
