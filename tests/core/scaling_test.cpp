#include "core/scaling.h"

#include <cmath>

#include "support/numeric.h"
#include "support/random.h"

using namespace kels;

namespace {

// Every int64 and its quotients by powers of two are exact in the x87 format, so that the C library can round them.
long double quotient(int64_t v, int shift) {
    return std::ldexp(static_cast<long double>(v), -shift);
}

template <class T>
T held(long double v) {
    constexpr auto low = static_cast<long double>(std::numeric_limits<T>::min());
    constexpr auto high = static_cast<long double>(std::numeric_limits<T>::max());
    return v < low ? std::numeric_limits<T>::min() : v > high ? std::numeric_limits<T>::max() : static_cast<T>(v);
}

template <class T>
void checkScaling(int64_t v, int scale) {
    const long double exact = quotient(v, scale);
    EXPECT_EQ(scaleHalfEven<T>(v, scale), held<T>(std::nearbyint(exact))) << v << " >> " << scale;
    EXPECT_EQ(scaleFloor<T>(v, scale), held<T>(std::floor(exact))) << v << " >> " << scale;
    EXPECT_EQ(scaleTowardZero<T>(v, scale), held<T>(std::trunc(exact))) << v << " >> " << scale;
}

TEST(Scaling, ShiftsRoundAndSaturateAtEveryCount) {
    test::Random random;
    for (int scale = -140; scale <= 140; ++scale) {
        std::vector<int64_t> values = {0, 1, -1, 2, -2, 3, -3, INT64_MAX, INT64_MIN, INT64_MIN + 1};
        for (int bit = 1; bit < 63; ++bit) {  // halves, and their neighbours
            for (const int64_t near : {-1, 0, 1}) {
                values.push_back((int64_t{1} << bit) + near);
                values.push_back(-(int64_t{1} << bit) + near);
                values.push_back((int64_t{3} << (bit - 1)) + near);
            }
        }
        for (int i = 0; i < 50; ++i) values.push_back(random.value<int64_t>() >> random.between(0, 63));
        for (const int64_t v : values) {
            checkScaling<Kel16s>(v, scale);
            checkScaling<Kel32s>(v, scale);
            checkScaling<int64_t>(v, scale);
            if (scale >= 0) {
                EXPECT_EQ(shiftHalfUp(v, scale), static_cast<int64_t>(std::floor(quotient(v, scale) + 0.5L)))
                    << v << " >> " << scale;
            }
            EXPECT_EQ(addSaturate(v, values[5]), held<int64_t>(static_cast<long double>(v) + values[5]));
            EXPECT_EQ(addSaturate(v, INT64_MIN), held<int64_t>(static_cast<long double>(v) + INT64_MIN));
        }
    }
    for (const int extreme : {INT32_MIN, INT32_MAX}) {
        for (const int64_t v : {int64_t{0}, int64_t{5}, int64_t{-5}}) {
            const int scale = extreme < 0 ? -1000 : 1000;
            EXPECT_EQ(scaleHalfEven<Kel16s>(v, extreme), scaleHalfEven<Kel16s>(v, scale));
            EXPECT_EQ(scaleFloor<Kel16s>(v, extreme), scaleFloor<Kel16s>(v, scale));
        }
    }
}

// root is the nearest to sqrt(v) * 2^-scale if v lies between the squares of its neighbouring halves, scaled; all of them
// are exact in the x87 format where they have at most 64 bits.
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

TEST(Scaling, MultipliersArePowersOfTwoWithinTheirRange) {
    for (int scale = -400; scale <= 400; ++scale) {
        EXPECT_EQ(scaleMultiplier(scale), std::ldexp(1.0, std::min(std::max(-scale, -150), 128)));
        EXPECT_EQ(scaleMultiplier(scale, -96, 126), std::ldexp(1.0, std::min(std::max(-scale, -96), 126)));
    }
    EXPECT_EQ(scaleMultiplier(INT32_MIN), 0x1p128);
    EXPECT_EQ(scaleMultiplier(INT32_MAX), 0x1p-150);
}

TEST(Scaling, FloatsRoundToTheNearestInEveryMode) {
    test::inEveryRoundingMode([] {
        const NearestScope scope;
        EXPECT_EQ(roundSaturate<Kel32s>(test::opaque(2.5)), 2);
        EXPECT_EQ(roundSaturate<Kel32s>(test::opaque(-3.5)), -4);
        EXPECT_EQ(roundSaturate<Kel16s>(test::opaque(32767.5f)), 32767);
        EXPECT_EQ(roundSaturate<Kel16s>(test::opaque(-1e30f)), -32768);
        EXPECT_EQ(roundSaturate<Kel32s>(test::opaque(2147483647.0f)), INT32_MAX);
        EXPECT_EQ(roundSaturate<Kel32s>(test::opaque(NAN)), INT32_MIN);
        EXPECT_EQ(truncateSaturate<Kel32s>(test::opaque(-2.9)), -2);
        EXPECT_EQ(truncateSaturate<Kel16s>(test::opaque(NAN)), -32768);
        EXPECT_EQ(truncateSaturate<Kel16s>(test::opaque(40000.0)), 32767);
    });
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
