#include <algorithm>
#include <cmath>
#include <limits>

#include "kels.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

using test::Guarded;

TEST(Roots, AbsoluteValuesAndSquareRoots) {
    test::Random random(31);
    for (std::size_t n = 1; n <= 70; ++n) {
        std::vector<Kel64f> v = random.vector<Kel64f>(n, 300);
        for (Kel64f& x : v) x = random.between(0, 9) == 0 ? -0.0 : x;
        const int len = static_cast<int>(n);
        const Guarded<Kel64f> src(v);
        Guarded<Kel64f> absolute(n), root(v);
        EXPECT_EQ(kelsAbs_64f(src.data(), absolute, len), kelStatusOk);
        const bool anyNegative = std::any_of(v.begin(), v.end(), [](Kel64f x) { return x < 0; });
        EXPECT_EQ(kelsSqrt_64f_I(root, len), anyNegative ? kelStatusSqrtNegative : kelStatusOk);
        for (std::size_t i = 0; i < n; ++i) {
            EXPECT_TRUE(test::sameBits(absolute[i], std::fabs(v[i])));
            EXPECT_TRUE(test::sameBits(root[i], std::sqrt(v[i])));
        }
        EXPECT_EQ(kelsSqrt_64f_I(absolute, len), kelStatusOk);
    }
}

TEST(Roots, MagnitudesAreAccurateOverTheWholeRangeAndInPlace) {
    test::Random random(32);
    double worst = 0;
    for (std::size_t n = 1; n <= 100; ++n) {
        std::vector<Kel32fc> v(n);
        const int binades = n % 3 == 0 ? 125 : 10;
        for (auto& z : v) z = {random.value<Kel32f>(binades), random.value<Kel32f>(random.between(0, 3) ? binades : 1)};
        if (n > 20) v[3] = {0, 0}, v[5] = {1e-40f, -1e-41f}, v[7] = {3e38f, 0}, v[9] = {INFINITY, 1}, v[11] = {NAN, 1};
        const Guarded<Kel32fc> src(v);
        Guarded<Kel32f> dst(n);
        EXPECT_EQ(kelsMagnitude_32fc(src.data(), dst, static_cast<int>(n)), kelStatusOk);
        Guarded<Kel32fc> both(v);
        EXPECT_EQ(kelsMagnitude_32fc(both.data(), &both[0].re, static_cast<int>(n)), kelStatusOk);
        for (std::size_t i = 0; i < n; ++i) {
            const long double re = v[i].re, im = v[i].im;
            worst = std::max(worst, test::ulpError(dst[i], static_cast<long double>(std::sqrt(re * re + im * im))));
            EXPECT_TRUE(test::sameBits((&both[0].re)[i], dst[i]));
        }
    }
    EXPECT_LE(worst, 1.5);
}

TEST(Roots, IntegerMagnitudesRoundToTheNearestAndSaturate) {
    test::Random random(33);
    std::vector<Kel32sc> v(1000);
    for (auto& z : v)
        z = {random.value<Kel32s>() >> random.between(0, 31), random.value<Kel32s>() >> random.between(0, 31)};
    v.push_back({INT32_MIN, INT32_MIN}), v.push_back({3, 4}), v.push_back({0, 0});
    for (const int scale : {0, 1, 3, 31, 500, -1, -3, -40, INT32_MIN, INT32_MAX}) {
        const Guarded<Kel32sc> src(v);
        Guarded<Kel32s> dst(v.size());
        const auto call = [&] {
            EXPECT_EQ(kelsMagnitude_32sc_Sfs(src.data(), dst, static_cast<int>(v.size()), scale), kelStatusOk);
        };
        test::inEveryRoundingMode(call, [&] {
            for (std::size_t i = 0; i < v.size(); ++i) {
                const long double re = v[i].re, im = v[i].im;
                const long double exact = std::ldexp(std::sqrt(re * re + im * im), -std::clamp(scale, -128, 150));
                // Half a unit, and double precision's share of the value.
                const long double held = std::min(exact, 2147483647.0L);
                ASSERT_LE(std::fabs(dst[i] - held), 0.5L + held * 0x1p-51L) << v[i].re << ", " << v[i].im;
            }
        });
    }
}

TEST(Roots, ReciprocalRootsAndTheirThresholds) {
    test::Random random(34);
    for (std::size_t n = 1; n <= 70; ++n) {
        const int len = static_cast<int>(n);
        std::vector<Kel32f> v = random.vector<Kel32f>(n);
        const Kel32f threshold = 0.3f;
        const bool any = std::any_of(v.begin(), v.end(), [=](Kel32f x) { return !(x < threshold); });
        Guarded<Kel32f> x(v);
        std::feclearexcept(FE_ALL_EXCEPT);
        EXPECT_EQ(kelsRecSqrt_32f(x, len, threshold), any ? kelStatusOk : kelStatusNoOperation);
        EXPECT_FALSE(std::fetestexcept(FE_INVALID | FE_DIVBYZERO));
        for (std::size_t i = 0; i < n; ++i) {
            if (v[i] < threshold) {
                EXPECT_EQ(x[i], threshold);
            } else {
                // Half a unit from the division; up to one from the root, near the upper end of a binade.
                EXPECT_LE(test::ulpError(x[i], 1 / std::sqrt(static_cast<long double>(v[i]))), 1.5);
            }
        }
    }
    const std::vector<Kel32s> v = {-5, 0, 1, 3, 4, 9, 100, 1000000, INT32_MAX};
    for (const int scale : {0, -4, -15, -30, 2, INT32_MIN}) {
        for (const Kel32s threshold : {1, 4, 40000}) {
            Guarded<Kel32s> wide(v), src(v);
            Guarded<Kel16s> narrow(v.size());
            EXPECT_EQ(kelsRecSqrt_32s_Sfs(wide, static_cast<int>(v.size()), threshold, scale), kelStatusOk);
            EXPECT_EQ(kelsRecSqrt_32s16s_Sfs(src, narrow, static_cast<int>(v.size()), threshold, scale), kelStatusOk);
            for (std::size_t i = 0; i < v.size(); ++i) {
                const long double root =
                    std::ldexp(1 / std::sqrt(static_cast<long double>(v[i])), -std::max(scale, -128));
                const long double exact = v[i] < threshold ? threshold : std::nearbyint(root);
                EXPECT_EQ(wide[i], static_cast<Kel32s>(std::min(exact, 2147483647.0L))) << v[i] << " scale " << scale;
                EXPECT_EQ(narrow[i], static_cast<Kel16s>(std::min(exact, 32767.0L))) << v[i] << " scale " << scale;
            }
        }
    }
    Kel32s below[] = {1, 2};
    EXPECT_EQ(kelsRecSqrt_32s_Sfs(below, 2, 3, 0), kelStatusNoOperation);
    EXPECT_TRUE(below[0] == 3 && below[1] == 3);
}

TEST(Roots, ReciprocalRootsCheckPointerLengthThreshold) {
    Kel32f f[] = {9};
    Kel32s s[] = {9};
    EXPECT_EQ(kelsRecSqrt_32f(nullptr, 0, -1), kelStatusNullPtr);
    EXPECT_EQ(kelsRecSqrt_32f(f, 0, -1), kelStatusSize);
    for (const Kel32f faulty : {0.0f, -1.0f, NAN}) EXPECT_EQ(kelsRecSqrt_32f(f, 1, faulty), kelStatusBadArg);
    EXPECT_EQ(kelsRecSqrt_32s_Sfs(s, 1, 0, 0), kelStatusBadArg);
    EXPECT_EQ(kelsRecSqrt_32s16s_Sfs(s, nullptr, 0, 0, 0), kelStatusNullPtr);
    EXPECT_TRUE(f[0] == 9 && s[0] == 9);
}

TEST(Roots, IntegerLogarithms) {
    const std::vector<Kel32s> largest = {1,       4,       12,       33,       90,        244,       665,
                                         1808,    4914,    13359,    36315,    98715,     268337,    729416,
                                         1982759, 5389698, 14650719, 39824784, 108254987, 294267566, 799902177};
    std::vector<Kel32s> v, expected;
    for (std::size_t k = 0; k < largest.size(); ++k) {
        v.insert(v.end(), {largest[k], largest[k] + 1});
        expected.insert(expected.end(), {static_cast<Kel32s>(k), static_cast<Kel32s>(k) + 1});
    }
    for (int bit = 1; bit < 31; ++bit) {
        for (const Kel32s x : {(1 << bit) - 1, 1 << bit, (1 << bit) + 1}) {
            v.push_back(x), expected.push_back(static_cast<Kel32s>(std::lround(std::log(static_cast<long double>(x)))));
        }
    }
    v.push_back(INT32_MAX), expected.push_back(21);
    const int len = static_cast<int>(v.size());
    for (const int shift : {0, 1, 4, 31, 32, 1000}) {
        Guarded<Kel32s> src(v), dst(v.size());
        EXPECT_EQ(kelsLn_32s_Sfs(src, dst, len, shift), kelStatusOk);
        EXPECT_EQ(kelsLn_32s_ISfs(src, len, shift), kelStatusOk);
        for (std::size_t i = 0; i < v.size(); ++i) {
            EXPECT_EQ(dst[i], expected[i] >> std::min(shift, 31)) << v[i];
            EXPECT_EQ(src[i], dst[i]);
        }
    }
    for (const int scale : {-1, -10, -20, -27, -31, INT32_MIN}) {
        std::vector<Kel32s> dst(v.size());
        const auto call = [&] { EXPECT_EQ(kelsLn_32s_Sfs(v.data(), dst.data(), len, scale), kelStatusOk); };
        test::inEveryRoundingMode(call, [&] {
            for (std::size_t i = 0; i < v.size(); ++i) {
                const long double exact = std::ldexp(std::log(static_cast<long double>(v[i])), -std::max(scale, -128));
                EXPECT_LE(std::fabs(dst[i] - std::min(exact, 2147483647.0L)), 0.5L + 0x1p-20L) << v[i];
            }
        });
    }
}

TEST(Roots, IntegerLogarithmsOfZeroAndNegativesKeepTheFirstWarning) {
    const Kel32s mixed[] = {1, 4, 5, 0, -3};
    Kel32s dst[5];
    EXPECT_EQ(kelsLn_32s_Sfs(mixed, dst, 5, 0), kelStatusLogZero);
    EXPECT_TRUE(std::equal(dst, dst + 5, std::vector<Kel32s>{0, 1, 2, INT32_MIN, INT32_MIN}.begin()));
    const Kel32s other[] = {-3, 0, 7};
    EXPECT_EQ(kelsLn_32s_Sfs(other, dst, 3, 40), kelStatusLogNegative);
    EXPECT_TRUE(dst[0] == INT32_MIN && dst[1] == INT32_MIN && dst[2] == 0) << "the substitute is never shifted";
    EXPECT_EQ(kelsLn_32s_Sfs(nullptr, dst, 0, 0), kelStatusNullPtr);
    EXPECT_EQ(kelsLn_32s_ISfs(dst, 0, 0), kelStatusSize);
}

}  // namespace
