// Sums of products of one window with many windows of a signal, and the energies of these windows.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "core/simd/accurate_sum.h"
#include "core/simd/vec.h"
#include "core/vector/convert.h"
#include "core/vector/reductions.h"
#include "kels/types.h"

namespace kels::pitch {

// What sums of products of T are kept in: those of 16-bit samples are exact.
template <class T>
using Sum = std::conditional_t<std::is_integral_v<T>, int64_t, Kel64f>;

inline constexpr std::size_t kLags = 64;  // lags that are worked on together

// sums[k] = sum of x[i] y[i + k], for `vectors` vectors of lags.
template <std::size_t vectors>
void sumVectorsOfLags(const Kel64f* x, const Kel64f* y, std::size_t len, Kel64f* sums) {
    std::array<Wide, vectors> sum{};
    for (std::size_t i = 0; i < len; ++i) {
        const Wide factor(x[i]);
        for (std::size_t v = 0; v < vectors; ++v) sum[v] = mulAdd(factor, load(y + i + v * kWide), sum[v]);
    }
    for (std::size_t v = 0; v < vectors; ++v) store(sums + v * kWide, sum[v]);
}

// The same for `lags` <= kLags lags.  sums has room for kLags, and y for a vector behind what is needed.
inline void sumLags(const Kel64f* x, const Kel64f* y, std::size_t len, std::size_t lags, Kel64f* sums) {
    constexpr std::size_t kMost = std::min<std::size_t>(8, kLags / kWide);
    for (std::size_t k = 0; k < lags;) {
        const std::size_t vectors = (lags - k + kWide - 1) / kWide;
        const auto sum = [&]<std::size_t n>(std::integral_constant<std::size_t, n>) {
            sumVectorsOfLags<n>(x, y + k, len, sums + k);
            k += n * kWide;
        };
        if (vectors >= kMost) {
            sum(std::integral_constant<std::size_t, kMost>());
        } else if (vectors >= 4) {
            sum(std::integral_constant<std::size_t, 4>());
        } else if (vectors >= 2) {
            sum(std::integral_constant<std::size_t, 2>());
        } else {
            sum(std::integral_constant<std::size_t, 1>());
        }
    }
}

// sums[k] = sum over i < len of x[i] y[i + k], for `lags` <= kLags lags.  The samples are taken to double precision in
// pieces that are summed for all lags; a piece of 16-bit samples has exact sums.
template <class T>
void correlate(const T* x, const T* y, std::size_t len, std::size_t lags, Sum<T>* sums) {
    constexpr std::size_t kPiece = 256;
    alignas(64) std::array<Kel64f, kPiece> wideX;
    alignas(64) std::array<Kel64f, kPiece + kLags + kWide> wideY;
    alignas(64) std::array<Kel64f, kLags> part;
    std::fill_n(sums, lags, Sum<T>());
    for (std::size_t i = 0; i < len; i += kPiece) {
        const std::size_t n = std::min(kPiece, len - i), read = n + lags - 1;
        convertWidening(x + i, wideX.data(), n);
        convertWidening(y + i, wideY.data(), read);
        std::fill_n(wideY.data() + read, kWide, 0.0);
        sumLags(wideX.data(), wideY.data(), n, lags, part.data());
        for (std::size_t k = 0; k < lags; ++k) sums[k] += static_cast<Sum<T>>(part[k]);
    }
}

// The sum of the squares of x.
inline int64_t energy(const Kel16s* x, std::size_t len) {
    return integerDot(x, x, len);
}
inline Kel64f energy(const Kel32f* x, std::size_t len) {
    return static_cast<Kel64f>(extendedSum(FloatProducts{x, x}, len));
}

// energies[k] = energy(y + k, len), for `lags` <= min(kLags, len) windows.  Squares are only ever added: what all
// windows share, what is before it and what is behind it, so that a loud sample leaves no error in windows without it.
template <class T>
void windowEnergies(const T* y, std::size_t len, std::size_t lags, Sum<T>* energies) {
    const auto square = [=](std::size_t i) { return static_cast<Sum<T>>(y[i]) * static_cast<Sum<T>>(y[i]); };
    energies[lags - 1] = Sum<T>();
    for (std::size_t k = lags - 1; k-- > 0;) energies[k] = energies[k + 1] + square(k);
    Sum<T> rest = energy(y + (lags - 1), len - (lags - 1));
    energies[0] += rest;
    for (std::size_t k = 1; k < lags; ++k) {
        rest += square(len + k - 1);
        energies[k] += rest;
    }
}

}  // namespace kels::pitch
