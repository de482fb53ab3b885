// Fixed-point logarithm and exponential: binary digits of a logarithm by squaring, an exponential by shifts and
// additions.
#include "frontend/fbank/fixed_log.h"

#include <algorithm>
#include <bit>

#include "core/scaling.h"

namespace kels::fbank {
namespace {

constexpr int64_t kLn2InQ31 = 1488522236;
constexpr int64_t kLog2EInQ31 = 3098164009;
constexpr int kMantissaBits = 29;

}  // namespace

// Squaring the mantissa doubles its binary logarithm, whose integer part is then its next fraction bit.
int64_t fixedLogarithm(int64_t x, int q) {
    const int topBit = 63 - std::countl_zero(static_cast<uint64_t>(x));
    int64_t mantissa = topBit > kMantissaBits ? x >> (topBit - kMantissaBits) : x << (kMantissaBits - topBit);
    int64_t fraction = 0;  // of log2 x, Q31 when complete
    for (int bit = 0; bit < 31; ++bit) {
        mantissa = (mantissa * mantissa) >> kMantissaBits;
        fraction <<= 1;
        if (mantissa >= int64_t{2} << kMantissaBits) {
            mantissa >>= 1;
            fraction |= 1;
        }
    }
    const int64_t logarithm = (topBit - q) * kLn2InQ31 + ((fraction * kLn2InQ31) >> 31);  // Q31
    return scaleHalfEven<int64_t>(logarithm, 31 - q);
}

// e^x = 2^power * e^remainder, the remainder in [0, ln 2) and written as a sum of table entries, each of which stands
// for one multiplication by 1 + 2^-(k+1): a shift and an addition.
int64_t fixedExponential(int64_t x, int argBits, int scaleFactor) {
    constexpr int kArgBits = 24;
    constexpr int64_t kBound = int64_t{128} << kArgBits;  // beyond it every format saturates or gives zero
    constexpr int kResultBits = 61;

    const int64_t argument = std::clamp(scaleHalfEven<int64_t>(x, argBits - kArgBits), -kBound, kBound);
    const int64_t binary = argument * kLog2EInQ31;
    const int power = static_cast<int>(binary >> (kArgBits + 31));
    const int64_t fraction = (binary >> kArgBits) & 0x7fffffff;  // Q31
    int64_t remainder = (fraction * kLn2InQ31) >> 31;
    int64_t value = int64_t{1} << kResultBits;
    for (int k = 0; k < 32; ++k) {
        if (remainder > _ExpTable1[k]) {
            remainder -= _ExpTable1[k];
            value += value >> (k + 1);
        }
    }
    return scaleHalfEven<int64_t>(value, kResultBits - power + scaleFactor);
}

}  // namespace kels::fbank

namespace kels {

const Kel32s _ExpTable1[32] = {870729689, 479197128, 252937143, 130190384, 66081634, 33294987, 16712019, 8372267,
                               4190213,   2096129,   1048320,   524224,    262128,   131068,   65535,    32768,
                               16384,     8192,      4096,      2048,      1024,     512,      256,      128,
                               64,        32,        16,        8,         4,        2,        1,        0};

KelStatus ownNatLog(int64_t x, int64_t* result, int q) {
    if (x < 1) return kelStatusBadArg;
    *result = fbank::fixedLogarithm(x, q);
    return kelStatusOk;
}

int64_t ownExpFix(int64_t x, int argBits, int scaleFactor) {
    return fbank::fixedExponential(x, argBits, scaleFactor);
}

}  // namespace kels
