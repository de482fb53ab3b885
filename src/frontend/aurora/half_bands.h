// Two signals at half the rate: the lower half of the band, and the upper half the right way up.
//
// The upper filter is the lower one with every second sign changed, so that one pass over the samples of odd index and
// one over those of even index give both: their sum is the lower band, their difference the upper.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

#include "core/simd/vec.h"
#include "kels/aurora.h"

namespace kels::aurora {

inline constexpr std::size_t kLine = 117;                // inputs that the state keeps
inline constexpr std::size_t kBranch = (kLine + 1) / 2;  // coefficients of each pass
inline constexpr std::size_t kOutputs = 16 * 8;          // at a time; a multiple of every vector

using BranchTaps = std::array<Kel32f, kBranch>;

// The coefficients of even index; those of odd index are the same from the end.
constexpr BranchTaps evenTaps() {
    constexpr Kel32s kHalf[kBranch] = {
        1584,   805,    -4192,  -8985,   -5987,  2583,   4657,    -3035,   -7004,   1542,    8969,    567,
        -10924, -3757,  12320,  7951,    -12793, -13048, 11923,   18793,   -9331,   -24802,  4694,    30570,
        2233,   -35439, -11526, 38680,   23114,  -39474, -36701,  36999,   51797,   -30419,  -67658,  18962,
        83318,  -1927,  -97566, -21284,  108971, 51215,  -115837, -88430,  116130,  133716,  -107253, -188497,
        85497,  255795, -44643, -342699, -28185, 468096, 167799,  -696809, -519818, 1446093, 3562497};
    BranchTaps taps = {};
    for (std::size_t i = 0; i < kBranch; ++i) {
        const std::size_t j = 2 * i;
        taps[i] = static_cast<Kel32f>(kHalf[j < kBranch ? j : kLine - j]) / 8388608;
    }
    return taps;
}
inline constexpr BranchTaps kEvenTaps = evenTaps();

// The samples of one parity: those that the state has kept, then those of the part at hand.
struct Branch {
    Kel32f samples[kBranch + kOutputs] = {};

    // A vector of sums over i of tap(i) samples[k + i].
    template <class Tap>
    Vec<Kel32f> filtered(std::size_t k, Tap tap) const {
        Vec<Kel32f> even(0.0f), odd(0.0f);  // two chains of additions instead of one
        for (std::size_t i = 0; i + 1 < kBranch; i += 2) {
            even = mulAdd(load(samples + k + i), Vec<Kel32f>(tap(i)), even);
            odd = mulAdd(load(samples + k + i + 1), Vec<Kel32f>(tap(i + 1)), odd);
        }
        return mulAdd(load(samples + k + kBranch - 1), Vec<Kel32f>(tap(kBranch - 1)), even) + odd;
    }
};

// `n` outputs of each band, at most kOutputs, from 2 n inputs.
template <class T>
void splitPart(KelLowHighState_Aurora& s, const T* src, Kel32f* low, Kel32f* high, std::size_t n) {
    constexpr std::size_t w = lanes<Kel32f>;
    Branch before, at;  // the samples of odd index, which end one earlier, and those of even index
    for (std::size_t i = 0; i < kBranch; ++i) before.samples[i] = s.line[2 * i];
    for (std::size_t i = 0; i + 1 < kBranch; ++i) at.samples[i] = s.line[2 * i + 1];
    for (std::size_t i = 0; i < n; ++i) {
        at.samples[kBranch - 1 + i] = static_cast<Kel32f>(src[2 * i]);
        before.samples[kBranch + i] = static_cast<Kel32f>(src[2 * i + 1]);
    }
    Kel32f lower[kOutputs], upper[kOutputs];
    for (std::size_t k = 0; k < n; k += w) {
        const auto a = before.filtered(k, [](std::size_t i) { return kEvenTaps[i]; });
        const auto b = at.filtered(k, [](std::size_t i) { return kEvenTaps[kBranch - 1 - i]; });
        store(lower + k, Vec<Kel32f>(a + b));
        store(upper + k, Vec<Kel32f>(b - a));
    }
    std::copy_n(lower, n, low);
    for (std::size_t k = 0; k < n; ++k) high[k] = (toSize(s.phase) + k) % 2 == 0 ? upper[k] : -upper[k];
    s.phase = static_cast<Kel32s>((toSize(s.phase) + n) % 2);
    for (std::size_t i = 0; i < kBranch; ++i) s.line[2 * i] = before.samples[n + i];
    for (std::size_t i = 0; i + 1 < kBranch; ++i) s.line[2 * i + 1] = at.samples[n + i];
}

// `n` outputs of each band.
template <class T>
void splitBands(KelLowHighState_Aurora& s, const T* src, Kel32f* low, Kel32f* high, std::size_t n) {
    for (std::size_t from = 0; from < n; from += kOutputs) {
        splitPart(s, src + 2 * from, low + from, high + from, std::min(kOutputs, n - from));
    }
}

}  // namespace kels::aurora
