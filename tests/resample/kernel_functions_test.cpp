#include <algorithm>
#include <cmath>
#include <limits>

#include "kels.h"
#include "support/checks.h"
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
    std::vector<Kel64f> x64;
    for (int e = -1074; e < 1024; ++e) {
        for (int i = 0; i < 20; ++i) x64.push_back(std::ldexp(random.uniform(-2, 2), e));
        for (int i = 0; i < 100 && e >= -149 && e < 128; ++i) {
            x.push_back(static_cast<Kel32f>(std::ldexp(random.uniform(-2, 2), e)));
        }
    }
    for (int i = 0; i < 20000; ++i) {
        x.push_back(static_cast<Kel32f>(random.uniform(-30, 30)));
        x64.push_back(random.uniform(-28, 28));
    }
    for (int k = 1; k < 1100000; k += 1 + k / 64) {  // next to the zeros of the sine
        const double zero = k * std::acos(-1.0);
        const auto near = static_cast<Kel32f>(zero);
        x.insert(x.end(), {near, std::nextafter(near, 0.0f), -std::nextafter(near, 1e9f)});
        if (k < 5000) x64.insert(x64.end(), {-zero, std::nextafter(zero, 0.0), std::nextafter(zero, 1e9)});
    }
    const int len = static_cast<int>(x.size());
    x64.insert(x64.begin(), x.begin(), x.end());  // the forms share these
    const Guarded<Kel32f> src(x);
    Guarded<Kel32f> y32(x.size());
    Guarded<Kel64f> y64(x64.size()), wide(x.size());
    test::inEveryRoundingMode(
        [&] {
            ASSERT_EQ(f.of32(src.data(), y32, len), 0);
            ASSERT_EQ(f.of64(x64.data(), y64, static_cast<int>(x64.size())), 0);
            ASSERT_EQ(f.wide(src.data(), wide, len), 0);
        },
        [&] {
            double worst32 = 0, worst64 = 0;
            for (std::size_t i = 0; i < x64.size(); ++i) {
                worst64 = std::max(worst64, test::ulpError(y64[i], f.exact(x64[i], test::opaque(x64[i] * x64[i]))));
                if (i >= x.size()) continue;
                worst32 = std::max(worst32, test::ulpError(y32[i], f.exact(x[i], test::opaque(x[i] * x[i]))));
                ASSERT_TRUE(test::sameBits(wide[i], y64[i])) << x[i];
            }
            EXPECT_LE(worst32, f.ulp32);
            EXPECT_LE(worst64, f.ulp64);
        });
}

TEST_P(KernelFunctions, TakeEveryLengthInPlaceToo) {
    const Function& f = GetParam();
    test::Random random(8);
    std::vector<Kel32f> x = random.vector<Kel32f>(80, 3), all32(80);
    std::vector<Kel64f> x64(x.begin(), x.end()), all64(80);
    f.of32(x.data(), all32.data(), 80);
    f.of64(x64.data(), all64.data(), 80);
    for (int len = 80; len > 0; --len) {
        x.resize(len), x64.resize(len), all32.resize(len), all64.resize(len);
        const Guarded<Kel32f> src(x);
        Guarded<Kel32f> dst(len), both(x);
        Guarded<Kel64f> wide(len), both64(x64);
        ASSERT_EQ(f.of32(src.data(), dst, len), 0);
        ASSERT_EQ(f.wide(src.data(), wide, len), 0);
        ASSERT_EQ(f.inPlace32(both, len), 0);
        ASSERT_EQ(f.inPlace64(both64, len), 0);
        EXPECT_TRUE(test::sameBits(dst, all32) && test::sameBits(both, all32));
        EXPECT_TRUE(test::sameBits(wide, all64) && test::sameBits(both64, all64));
    }
}

TEST_P(KernelFunctions, CheckPointersThenLength) {
    const Function& f = GetParam();
    test::expectVectorChecks({-8, -6}, f.of32, f.of64, f.wide, f.inPlace32, f.inPlace64);
    Kel64f x = 7;
    EXPECT_EQ(f.inPlace64(&x, -1), kelStatusSize);
}

}  // namespace
