// Processor services: against the view of the system, and on the control registers themselves.
#include <array>
#include <bit>
#include <cfenv>
#include <cmath>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

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
    const std::vector<int> found = {kel_has_rdtsc(),        kel_is_mmx_extension(), kel_is_ssx_extension(),
                                    kel_is_vbz_extension(), kel_is_vcz_extension(), kel_is_x64e_extension()};
    EXPECT_EQ(found, (std::vector<int>{has("tsc"), has("mmx"), has("sse"), has("sse2"), has("pni"), has("lm")}));
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
    kel_set_rc_ssx(0x2000 | 0x8000 | 0x0001);  // only the field counts
    EXPECT_EQ(mxcsr(), 0x3fa0u);
    const volatile float one = 1, three = 3;
    EXPECT_LT(one / three * three, 1.0f) << "rounding down";
    EXPECT_EQ(kel_clear_ssx(), 0x3fa0);
    EXPECT_EQ(mxcsr(), 0x1f80u);
    kel_set_cw_ssx(static_cast<int>(0xffff1f80u));
    EXPECT_EQ(mxcsr(), 0x1f80u) << "bits that do not exist would be a fault";
}

TEST_F(Cpu, X87ControlWord) {
    kel_set_cw_fpu(0x0f7f);
    EXPECT_EQ(x87Word(), 0x0f7fu);
    kel_set_rcpc_fpu(0x0600 | 0x003f);  // down, 53 bits; the masks stay
    EXPECT_EQ(x87Word(), 0x067fu);
}

// Each field alone: what is set in it, and the exceptions that stay masked.
TEST_F(Cpu, SymbolsOfTheX87Words) {
    const auto expect = [](unsigned symbol, unsigned mask, unsigned hardware) {
        kel_set_cw_fpu(0x037f);
        const unsigned word = kel_control87(symbol, mask);
        EXPECT_EQ(word & (mask | kelFpuExceptionMask), symbol | (~mask & kelFpuExceptionMask));
        EXPECT_EQ(x87Word(), hardware);
        EXPECT_EQ(kel_control87(~0u, 0), word);
    };
    expect(kelFpuRoundDown, kelFpuRoundMask, 0x077f);
    expect(kelFpuRoundUp, kelFpuRoundMask, 0x0b7f);
    expect(kelFpuRoundChop, kelFpuRoundMask, 0x0f7f);
    expect(kelFpuPrecision53, kelFpuPrecisionMask, 0x027f);
    expect(kelFpuPrecision24, kelFpuPrecisionMask, 0x007f);
    expect(kelFpuAffineInfinity, kelFpuAffineInfinity, 0x137f);
    const unsigned exceptions[] = {kelFpuInvalid,  kelFpuDenormal,  kelFpuZeroDivide,
                                   kelFpuOverflow, kelFpuUnderflow, kelFpuInexact};
    for (int bit = 0; bit < 6; ++bit) expect(0, exceptions[bit], 0x037f - (1 << bit));
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

TEST(Classification, OfDoubles) {
    const double inf = HUGE_VAL, quiet = std::nan(""), signalling = std::bit_cast<double>(0x7ff0000000000001u);
    for (const double x : {0.0, 1.0, 5e-324, 1e308, inf, -inf, quiet, -quiet, signalling}) {
        EXPECT_EQ(kel_isnan(x), std::isnan(x)) << x;
        EXPECT_EQ(kel_finite(x), std::isfinite(x)) << x;
    }
}

}  // namespace
