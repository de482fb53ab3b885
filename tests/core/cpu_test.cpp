#include <cfenv>
#include <cmath>
#include <fstream>
#include <limits>
#include <string>

#include "kels.h"
#include "support/numeric.h"

namespace {

unsigned mxcsr() {
    return __builtin_ia32_stmxcsr();
}
unsigned x87Word() {
    uint16_t word;
    asm volatile("fnstcw %0" : "=m"(word));
    return word;
}

// Each test ends with the control state it began with.
class Cpu : public ::testing::Test {
  protected:
    void SetUp() override { std::fegetenv(&state_); }
    void TearDown() override { std::fesetenv(&state_); }

  private:
    std::fenv_t state_;
};

TEST_F(Cpu, AgreesWithTheSystemsView) {
    std::ifstream file("/proc/cpuinfo");
    std::string line, flags;
    while (flags.empty() && std::getline(file, line)) {
        if (line.rfind("flags", 0) == 0) flags = line.substr(line.find(':') + 1) + " ";
    }
    if (flags.empty()) GTEST_SKIP() << "no /proc/cpuinfo";
    const auto has = [&](const char* flag) { return flags.find(' ' + std::string(flag) + ' ') != std::string::npos; };
    EXPECT_EQ(kel_has_cpuid(), 1);
    EXPECT_GE(kel_max_cpuid_input(), 1);
    EXPECT_EQ(kel_has_rdtsc(), has("tsc"));
    EXPECT_EQ(kel_is_mmx_extension(), has("mmx"));
    EXPECT_EQ(kel_is_ssx_extension(), has("sse"));
    EXPECT_EQ(kel_is_vbz_extension(), has("sse2"));
    EXPECT_EQ(kel_is_vcz_extension(), has("pni"));
    EXPECT_EQ(kel_is_x64e_extension(), has("lm"));
    EXPECT_LE(kel_is_htt_extension(), has("ht"));
    EXPECT_EQ(kel_is_GenuineOrvex(), 0);
    EXPECT_EQ(kel_tst_daz_ssx(), 1) << "every processor with SSE3 has it";
    EXPECT_GT(kel_get_talvine_ident() >> 16, 4);
    const uint64_t before = kel_get_talvine_counter();
    EXPECT_GT(kel_get_talvine_counter(), before);
}

TEST_F(Cpu, SimdControlWord) {
    kel_set_cw_ssx(0x1f80 | 0x4000 | 0x0020);
    EXPECT_EQ(mxcsr(), 0x5fa0u);
    kel_set_rc_ssx(0x2000 | 0x1c00 | 0x0001);  // only the field counts
    EXPECT_EQ(mxcsr(), 0x3fa0u);
    const volatile float one = 1, three = 3;
    EXPECT_LT(one / three * three, 1.0f) << "rounding down";
    EXPECT_EQ(kel_clear_ssx(), 0x3fa0);
    EXPECT_EQ(mxcsr(), 0x1f80u);
    kel_set_cw_ssx(static_cast<int>(0xffff1f80u));
    EXPECT_EQ(mxcsr(), 0x1f80u) << "bits that do not exist would be a fault";
}

TEST_F(Cpu, X87ControlWord) {
    const unsigned before = x87Word();
    kel_set_rcpc_fpu(0x0600 | 0x003f);  // down, 53 bits; the masks stay
    EXPECT_EQ(x87Word(), (before & ~0x0f00u) | 0x0600u);
    kel_set_cw_fpu(0x0f7f);
    EXPECT_EQ(x87Word(), 0x0f7fu);
}

TEST_F(Cpu, SymbolsOfTheX87Words) {
    kel_set_cw_fpu(0x037f);
    EXPECT_EQ(kel_control87(~0u, 0), unsigned{kelFpuExceptionMask} | kelFpuPrecision64 | kelFpuRoundNearest);
    EXPECT_EQ(x87Word(), 0x037fu);
    const struct {
        unsigned symbol, mask, hardware;
    } cases[] = {{kelFpuRoundDown, kelFpuRoundMask, 0x077f},
                 {kelFpuRoundUp, kelFpuRoundMask, 0x0b7f},
                 {kelFpuRoundChop, kelFpuRoundMask, 0x0f7f},
                 {kelFpuPrecision53, kelFpuPrecisionMask, 0x027f},
                 {kelFpuPrecision24, kelFpuPrecisionMask, 0x007f},
                 {kelFpuAffineInfinity, kelFpuAffineInfinity, 0x137f},
                 {0, kelFpuInvalid, 0x037e},
                 {0, kelFpuDenormal, 0x037d},
                 {0, kelFpuZeroDivide, 0x037b},
                 {0, kelFpuOverflow, 0x0377},
                 {0, kelFpuUnderflow, 0x036f},
                 {0, kelFpuInexact, 0x035f}};
    for (const auto& c : cases) {
        kel_set_cw_fpu(0x037f);
        kel_clear87();
        const unsigned word = kel_control87(c.symbol, c.mask);
        EXPECT_EQ(word & c.mask, c.symbol);
        EXPECT_EQ(word & ~c.mask & kelFpuExceptionMask, ~c.mask & kelFpuExceptionMask);
        EXPECT_EQ(x87Word(), c.hardware);
        EXPECT_EQ(kel_control87(0, 0), word);
    }
}

TEST_F(Cpu, StatusAndItsClearing) {
    kel_set_cw_fpu(0x037f);
    kel_clear87();
    EXPECT_EQ(kel_status87(), 0u);
    const volatile long double zero = 0, one = 1;
    volatile long double result = one / zero;
    EXPECT_EQ(kel_status87(), unsigned{kelFpuZeroDivide});
    result = zero / zero;
    EXPECT_EQ(kel_clear87(), unsigned{kelFpuZeroDivide} | kelFpuInvalid);
    EXPECT_EQ(kel_status87(), 0u);
    static_cast<void>(result);
}

TEST_F(Cpu, Classification) {
    using Limits = std::numeric_limits<double>;
    for (const double x : {0.0, 1.0, Limits::denorm_min(), Limits::max()}) {
        for (const double y : {x, -x}) EXPECT_TRUE(kel_isnan(y) == 0 && kel_finite(y) == 1) << y;
    }
    for (const double x : {HUGE_VAL, -HUGE_VAL}) EXPECT_TRUE(kel_isnan(x) == 0 && kel_finite(x) == 0);
    for (const uint64_t bits : {0x7ff0000000000001u, 0xfff8000000000000u, 0x7fffffffffffffffu}) {
        const auto nan = std::bit_cast<double>(bits);
        EXPECT_TRUE(kel_isnan(nan) == 1 && kel_finite(nan) == 0);
    }
}

}  // namespace
