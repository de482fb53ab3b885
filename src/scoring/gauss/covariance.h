// The exponent of a Gaussian whose inverse covariance is block-diagonal: the sum over the blocks of d' * B * d.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "core/memory.h"
#include "core/scaling.h"
#include "core/simd/accurate_sum.h"
#include "kels/core.h"
#include "kels/model.h"
#include "scoring/block_matrix.h"

namespace kels::gauss {

using scoring::BlockMatrix;

// An arithmetic gives the types of a difference and of the sum.  subtract() forms all differences vector - mean; plus()
// adds what one row contributes: its product with the differences of its block, times its own component of
// vector - mean.

struct SingleBlocks {
    using Difference = Kel32f;
    using Sum = Kel64f;
    static void subtract(const Kel32f* vector, const Kel32f* mean, Difference* d, std::size_t len) {
        for (std::size_t i = 0; i < len; ++i) d[i] = vector[i] - mean[i];
    }
    static Sum plus(Sum sum, Kel32f vector, Kel32f mean, const Kel32f* row, const Difference* d, std::size_t n) {
        return sum + Kel64f{vector - mean} * roundedSum(FloatProducts{row, d}, n);
    }
};

struct ExtendedBlocks {
    using Difference = long double;
    using Sum = long double;
    template <class T>
    static void subtract(const T* vector, const T* mean, Difference* d, std::size_t len) {
        for (std::size_t i = 0; i < len; ++i) d[i] = static_cast<long double>(vector[i]) - mean[i];
    }
    template <class T>
    struct Products {
        const T* row;
        const Difference* d;
        long double extended(std::size_t i) const { return row[i] * d[i]; }
    };
    template <class T>
    static Sum plus(Sum sum, T vector, T mean, const T* row, const Difference* d, std::size_t n) {
        return sum + (static_cast<long double>(vector) - mean) * plainExtendedSum(Products<T>{row, d}, n);
    }
};

// 16-bit models: exact products with saturated differences, summed in floating point...
struct ShortBlocks {
    using Difference = Kel16s;
    using Sum = Kel64f;
    static void subtract(const Kel16s* vector, const Kel16s* mean, Difference* d, std::size_t len) {
        for (std::size_t i = 0; i < len; ++i) d[i] = saturate<Kel16s>(vector[i] - mean[i]);
    }
    static int64_t product(const Kel16s* row, const Difference* d, std::size_t n) {
        int64_t sum = 0;
        for (std::size_t i = 0; i < n; ++i) sum += Kel32s{row[i]} * d[i];
        return sum;
    }
    static Sum plus(Sum sum, Kel16s vector, Kel16s mean, const Kel16s* row, const Difference* d, std::size_t n) {
        return sum + static_cast<Kel64f>(vector - mean) * static_cast<Kel64f>(product(row, d, n));
    }
};

// ... or in 64 bits, which wrap around.
struct ExactShortBlocks : ShortBlocks {
    using Sum = int64_t;
    static Sum plus(Sum sum, Kel16s vector, Kel16s mean, const Kel16s* row, const Difference* d, std::size_t n) {
        const auto difference = static_cast<uint64_t>(int64_t{vector - mean});
        return static_cast<Sum>(static_cast<uint64_t>(sum) + difference * static_cast<uint64_t>(product(row, d, n)));
    }
};

// d' * B * d over all blocks; `d` is scratch of as many elements as the matrix has rows.
template <class Arithmetic, class T>
typename Arithmetic::Sum blockSum(const T* vector, const T* mean, const BlockMatrix<T>& matrix,
                                  typename Arithmetic::Difference* d) {
    Arithmetic::subtract(vector, mean, d, static_cast<std::size_t>(matrix.rowCount));
    typename Arithmetic::Sum sum = 0;
    std::size_t start = 0;
    for (int block = 0; block < matrix.blockCount; ++block) {
        const auto n = static_cast<std::size_t>(matrix.blockSizes[block]);
        for (std::size_t row = start; row < start + n; ++row) {
            sum = Arithmetic::plus(sum, vector[row], mean[row], matrix.rowPointers[row], d + start, n);
        }
        start += n;
    }
    return sum;
}

// The score in *result, or no memory for the differences: they are on the stack below 112 components.
template <class Arithmetic, class T, class Finish>
KelStatus scoreWithBlocks(const T* vector, const T* mean, const BlockMatrix<T>& matrix, const Finish& finish,
                          typename Finish::Score* result) {
    Scratch<typename Arithmetic::Difference, 111> d(matrix.rowCount);
    if (d.failed()) return kelStatusNoMemory;
    *result = finish(0, blockSum<Arithmetic>(vector, mean, matrix, d.data()));
    return kelStatusOk;
}

}  // namespace kels::gauss
