#include <algorithm>
#include <cmath>
#include <limits>

#include "kels.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

using test::Guarded;

// One kernel function: its three forms, the two in place, and what it stands for at x, whose square was rounded to q.
struct Function {
    KelStatus (*of32)(const Kel32f*, Kel32f*, int);
    KelStatus (*of64)(const Kel64f*, Kel64f*, int);
    KelStatus (*wide)(const Kel32f*, Kel64f*, int);
    KelStatus (*inPlace32)(Kel32f*, int);
    KelStatus (*inPlace64)(Kel64f*, int);
    long double (*exact)(long double x, long double q);
    double ulp32, ulp64;
};
const Function kFunctions[] = {
    {kelsSinC_32f, kelsSinC_64f, kelsSinC_32f64f, kelsSinC_32f_I, kelsSinC_64f_I,
     [](long double x, long double) { return x == 0 || std::isnan(x) ? 1 : std::sin(x) / x; }, 1.5, 2.5},
    {kelsExpNegSqr_32f, kelsExpNegSqr_64f, kelsExpNegSqr_32f64f, kelsExpNegSqr_32f_I, kelsExpNegSqr_64f_I,
     [](long double, long double q) { return std::exp(-q); }, 1.1, 1.1}};

class KernelFunctions : public ::testing::TestWithParam<Function> {};
INSTANTIATE_TEST_SUITE_P(Both, KernelFunctions, ::testing::ValuesIn(kFunctions),
                         [](const auto& info) { return info.index == 0 ? "SinC" : "ExpNegSqr"; });

TEST_P(KernelFunctions, AreAccurateOverAllBinadesInAllForms) {
    const Function& f = GetParam();
    test::Random random(7);
    std::vector<Kel32f> x = {0.0f, -0.0f, NAN, INFINITY, -INFINITY, 1e6f, -1e6f, 3.4e38f, 1e-45f};
    for (int e = -149; e < 128; ++e) {
        for (int i = 0; i < 100; ++i) x.push_back(static_cast<Kel32f>(std::ldexp(random.uniform(-2, 2), e)));
    }
    for (int i = 0; i < 20000; ++i) x.push_back(static_cast<Kel32f>(random.uniform(-30, 30)));
    const long double pi = std::acos(-1.0L);
    for (int k = 1; k < 1100000; k += 1 + k / 64) {  // next to the zeros of the sine
        const auto zero = static_cast<Kel32f>(k * pi);
        x.insert(x.end(), {zero, std::nextafter(zero, 0.0f), -std::nextafter(zero, 1e9f)});
    }
    const int len = static_cast<int>(x.size());
    const std::vector<Kel64f> x64(x.begin(), x.end());
    const Guarded<Kel32f> src(x);
    Guarded<Kel32f> y32(x.size());
    Guarded<Kel64f> y64(x.size()), wide(x.size());
    test::inEveryRoundingMode(
        [&] {
            ASSERT_EQ(f.of32(src.data(), y32, len), 0);
            ASSERT_EQ(f.of64(x64.data(), y64, len), 0);
            ASSERT_EQ(f.wide(src.data(), wide, len), 0);
        },
        [&] {
            double worst32 = 0, worst64 = 0;
            for (int i = 0; i < len; ++i) {
                const Kel32f q = test::opaque(x[i] * x[i]);
                const Kel64f q64 = test::opaque(x64[i] * x64[i]);
                worst32 = std::max(worst32, test::ulpError(y32[i], f.exact(x[i], q)));
                worst64 = std::max(worst64, test::ulpError(y64[i], f.exact(x[i], q64)));
                ASSERT_TRUE(test::sameBits(wide[i], y64[i])) << x[i];
            }
            EXPECT_LE(worst32, f.ulp32);
            EXPECT_LE(worst64, f.ulp64);
        });
}

TEST_P(KernelFunctions, AreAccurateForFullMantissas) {
    const Function& f = GetParam();
    test::Random random(9);
    std::vector<Kel64f> x;
    for (int e = -1074; e < 1024; ++e) {
        for (int i = 0; i < 20; ++i) x.push_back(std::ldexp(random.uniform(-2, 2), e));
    }
    for (int i = 0; i < 20000; ++i) x.push_back(random.uniform(-28, 28));
    for (int k = 1; k < 5000; ++k) {
        const auto zero = static_cast<Kel64f>(k * std::acos(-1.0L));
        x.insert(x.end(), {-zero, std::nextafter(zero, 0.0), std::nextafter(zero, 1e9)});
    }
    std::vector<Kel64f> y(x.size());
    ASSERT_EQ(f.of64(x.data(), y.data(), static_cast<int>(x.size())), 0);
    double worst = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        worst = std::max(worst, test::ulpError(y[i], f.exact(x[i], test::opaque(x[i] * x[i]))));
    }
    EXPECT_LE(worst, f.ulp64);
}

TEST_P(KernelFunctions, TakeEveryLengthInPlaceToo) {
    const Function& f = GetParam();
    test::Random random(8);
    const std::vector<Kel32f> x = random.vector<Kel32f>(80, 3);
    const std::vector<Kel64f> x64(x.begin(), x.end());
    std::vector<Kel32f> all32(80);
    std::vector<Kel64f> all64(80);
    f.of32(x.data(), all32.data(), 80);
    f.of64(x64.data(), all64.data(), 80);
    for (int len = 1; len <= 80; ++len) {
        const Guarded<Kel32f> src({x.begin(), x.begin() + len});
        Guarded<Kel32f> dst(len), both(src.vector());
        Guarded<Kel64f> wide(len), both64({x64.begin(), x64.begin() + len});
        ASSERT_EQ(f.of32(src.data(), dst, len), 0);
        ASSERT_EQ(f.wide(src.data(), wide, len), 0);
        ASSERT_EQ(f.inPlace32(both, len), 0);
        ASSERT_EQ(f.inPlace64(both64, len), 0);
        const std::vector<Kel32f> first32(all32.begin(), all32.begin() + len);
        const std::vector<Kel64f> first64(all64.begin(), all64.begin() + len);
        EXPECT_TRUE(test::sameBits(dst, first32) && test::sameBits(both, first32));
        EXPECT_TRUE(test::sameBits(wide, first64) && test::sameBits(both64, first64));
    }
}

TEST_P(KernelFunctions, CheckPointersThenLength) {
    const Function& f = GetParam();
    Kel32f a[] = {7};
    Kel64f b[] = {7};
    for (const int len : {1, 0}) {
        EXPECT_EQ(f.of32(nullptr, a, len), kelStatusNullPtr);
        EXPECT_EQ(f.of32(a, nullptr, len), kelStatusNullPtr);
        EXPECT_EQ(f.of64(nullptr, b, len), kelStatusNullPtr);
        EXPECT_EQ(f.of64(b, nullptr, len), kelStatusNullPtr);
        EXPECT_EQ(f.wide(nullptr, b, len), kelStatusNullPtr);
        EXPECT_EQ(f.wide(a, nullptr, len), kelStatusNullPtr);
        EXPECT_EQ(f.inPlace32(nullptr, len), kelStatusNullPtr);
        EXPECT_EQ(f.inPlace64(nullptr, len), kelStatusNullPtr);
    }
    for (const KelStatus s :
         {f.of32(a, a, 0), f.of64(b, b, -1), f.wide(a, b, 0), f.inPlace32(a, 0), f.inPlace64(b, 0)}) {
        EXPECT_EQ(s, kelStatusSize);
    }
    EXPECT_TRUE(a[0] == 7 && b[0] == 7);
}

}  // namespace
