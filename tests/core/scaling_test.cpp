// Shifts, roots and the rounding mode of the scaling helpers.
#include "core/scaling.h"

#include <cmath>

#include "support/elements.h"
#include "support/rounding.h"

using namespace kels;

namespace {

template <class T>
void checkScaling(int64_t v, int scale) {
    const long double exact = test::scaled(static_cast<long double>(v), scale);  // is exact: 64 bits are
    EXPECT_EQ(scaleHalfEven<T>(v, scale), test::halfEven<T>(static_cast<long double>(v), scale))
        << v << " >> " << scale;
    EXPECT_EQ(scaleFloor<T>(v, scale), test::saturated<T>(std::floor(exact))) << v << " >> " << scale;
    EXPECT_EQ(scaleTowardZero<T>(v, scale), test::saturated<T>(std::trunc(exact))) << v << " >> " << scale;
}

TEST(Scaling, ShiftsRoundAndSaturateAtEveryCount) {
    test::Random random;
    for (int n = -141; n <= 141; ++n) {
        const int scale = n == -141 ? INT32_MIN : n == 141 ? INT32_MAX : n;
        std::vector<int64_t> values = {0, INT64_MAX, INT64_MIN, INT64_MIN + 1};
        for (int i = 0; i < 300; ++i) values.push_back(test::anyElement<int64_t>(random) >> random.between(0, 63));
        for (const int64_t v : values) {
            const auto wide = static_cast<long double>(v);
            checkScaling<Kel16s>(v, scale);
            checkScaling<Kel32s>(v, scale);
            checkScaling<int64_t>(v, scale);
            if (scale >= 0) {
                const auto up = static_cast<int64_t>(std::floor(test::scaled(wide, scale) + 0.5L));
                EXPECT_EQ(shiftHalfUp(v, scale), up) << v << " >> " << scale;
            }
            for (const int64_t other : {values[9], INT64_MIN}) {
                EXPECT_EQ(addSaturate(v, other), test::saturated<int64_t>(wide + other));
            }
        }
    }
}

// root is the nearest to sqrt(v) * 2^-scale if v lies between the squares of its neighbouring halves, scaled; all of
// them are exact in the x87 format where they have at most 64 bits.
TEST(Scaling, RootsRoundToTheNearestInEveryMode) {
    test::Random random;
    std::vector<uint64_t> values = {0, 1, 2, 3, 4, UINT64_MAX, UINT64_MAX - 1, uint64_t{0xffffffff} * 0xffffffff};
    for (int i = 0; i < 300; ++i) {
        const auto root = static_cast<uint64_t>(random.value<int32_t>()) >> random.between(32, 62);
        const auto half = (2 * root + 1) << random.between(0, 2);
        for (const uint64_t v : {root * root, root * root + root, half * half, half * half + 1}) values.push_back(v);
        values.push_back(static_cast<uint64_t>(random.value<int64_t>()) >> random.between(0, 63));
    }
    for (const uint64_t v : values) {
        for (const int scale : {0, 1, 2, 3, 9, 31, 34, 1000, -1, -2, -12, -30, -31, -40, -41, -1000}) {
            test::inEveryRoundingMode([&] {
                const Kel32s root = scaledRoot(v, scale);
                const int held = std::clamp(scale, -100, 100);
                const auto square = [&](long double r) { return std::ldexp(r * r, 2 * held); };
                const auto exact = static_cast<long double>(v);
                const auto bound = [&](long double half) { return root % 2 == 0 ? half >= 0 : half > 0; };
                EXPECT_TRUE(root == 0 || bound(exact - square(root - 0.5L))) << v << ' ' << scale;
                EXPECT_TRUE(root == INT32_MAX || bound(square(root + 0.5L) - exact)) << v << ' ' << scale;
            });
        }
    }
}

TEST(Scaling, ScopeKeepsMasksAndRaisedFlags) {
    const unsigned before = _mm_getcsr();
    _mm_setcsr((before & ~0x3fu) | 0x2000);  // round down, no flag raised
    {
        const NearestScope scope;
        test::opaque(1.0f / test::opaque(3.0f));
    }
    const unsigned after = _mm_getcsr();
    _mm_setcsr(before);
    EXPECT_EQ(after & 0x7fc0u, (before & 0x1fc0u) | 0x2000u);
    EXPECT_NE(after & 0x20u, 0u) << "the inexact flag is kept";
}

}  // namespace
