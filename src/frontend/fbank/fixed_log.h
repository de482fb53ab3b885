// Natural logarithm and exponential of 64-bit fixed-point numbers in integer arithmetic alone: the same bits on every
// machine.  The integer mel filter bank lies its corners with them.
//
// ownNatLog, ownExpFix and _ExpTable1 are names that the interface fixes; the names behind them are the house's own.
#pragma once

#include <cstdint>

#include "kels/types.h"

namespace kels::fbank {

// ln(x * 2^-q) of x > 0, with q fraction bits, |q| up to 64; a result beyond 64 bits is saturated.  The error is below
// half a unit of the result + 2^-26.
int64_t fixedLogarithm(int64_t x, int q);

// e^(x * 2^-argBits) * 2^-scaleFactor to the nearest integer, ties to even; saturated.  |argBits| and |scaleFactor| up
// to 64, so (x, 22, -22) takes and gives 22 fraction bits.  The relative error before rounding is below
// 2^-26 + |x * 2^-argBits| * 2^-31, and 2^-25 more where the argument has over 24 fraction bits.
int64_t fixedExponential(int64_t x, int argBits, int scaleFactor);

}  // namespace kels::fbank

namespace kels {

// Entry k is ln(1 + 2^-(k+1)) in Q31, to the nearest.
extern const Kel32s _ExpTable1[32];

// fixedLogarithm(x, q) in *result; kelStatusBadArg, and *result left as it was, for x below 1.
KelStatus ownNatLog(int64_t x, int64_t* result, int q);

int64_t ownExpFix(int64_t x, int argBits, int scaleFactor);

}  // namespace kels
