// Sums of products of columns.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "kels/types.h"

namespace kels::training {

// What products are formed and summed in: extended precision, or exactly.
template <class T>
using CovarianceSum = std::conditional_t<std::is_same_v<T, Kel16s>, int64_t, long double>;

// sums[k] = sum over the rows of (x[i + k] - m) * (x[j] - m).
template <class Rows, class T, class S, std::size_t... k>
void columnProducts(const Rows& rows, int height, std::ptrdiff_t i, std::ptrdiff_t j, T mean, S* sums,
                    std::index_sequence<k...>) {
    const S m = mean;
    S local[] = {S(0 * k)...};
    for (std::ptrdiff_t row = 0; row < height; ++row) {
        const T* const x = rows[row];
        const S right = x[j] - m;
        ((local[k] += (x[i + static_cast<std::ptrdiff_t>(k)] - m) * right), ...);
    }
    ((sums[k] = local[k]), ...);
}

// dst[i][j] += val * sum (x_i - mean_j) * (x_j - mean_j) for i <= j, and dst[j][i] = dst[i][j].  Columns i are taken
// kBlock at a time; a block may reach over columns that are not asked for, whose sums are dropped.
template <std::size_t kBlock, class Rows, class T, class Matrix>
void accumulateCovariance(const Rows& rows, int height, const T* mean, const Matrix& dst, int width, Kel64f val) {
    constexpr auto block = static_cast<std::ptrdiff_t>(kBlock);
    CovarianceSum<T> sums[kBlock];
    for (std::ptrdiff_t j = 0; j < width; ++j) {
        for (std::ptrdiff_t i = 0; i <= j; i += block) {
            const std::ptrdiff_t begin = std::min(i, width - block);
            columnProducts(rows, height, begin, j, mean[j], sums, std::make_index_sequence<kBlock>());
            for (std::ptrdiff_t k = i; k <= j && k < begin + block; ++k) {
                const long double added = static_cast<long double>(val) * static_cast<long double>(sums[k - begin]);
                dst[k][j] = static_cast<Kel64f>(dst[k][j] + added);
                dst[j][k] = dst[k][j];
            }
        }
    }
}

template <class Rows, class T, class Matrix>
void accumulateCovariance(const Rows& rows, int height, const T* mean, const Matrix& dst, int width, Kel64f val) {
    if (width < 4) return accumulateCovariance<1>(rows, height, mean, dst, width, val);
    accumulateCovariance<4>(rows, height, mean, dst, width, val);
}

}  // namespace kels::training
