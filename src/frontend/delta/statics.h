// The statics of output rows: copied, or multiplied column by column.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "core/check.h"
#include "frontend/delta/columns.h"

namespace kels::delta {

// Copies `rows` rows of `rowBytes` bytes; the steps are in bytes, too.  Short rows go in the largest chunks that fit,
// the last one reaching back.
template <std::size_t Chunk = 64>
void copyRows(const char* src, std::ptrdiff_t srcStep, char* dst, std::ptrdiff_t dstStep, std::size_t rowBytes,
              std::ptrdiff_t rows) {
    if constexpr (Chunk > 1) {
        if (rowBytes < Chunk) return copyRows<Chunk / 2>(src, srcStep, dst, dstStep, rowBytes, rows);
    }
    for (; rows > 0; --rows, src += srcStep, dst += dstStep) {
        if (rowBytes > 4 * Chunk) {
            std::memcpy(dst, src, rowBytes);
            continue;
        }
        for (std::size_t i = 0; i < rowBytes; i += Chunk) {
            const std::size_t at = std::min(i, rowBytes - Chunk);
            std::memcpy(dst + at, src + at, Chunk);
        }
    }
}

template <class T>
void copyRows(const T* src, std::ptrdiff_t srcStep, T* dst, std::ptrdiff_t dstStep, int width, std::ptrdiff_t rows) {
    constexpr std::ptrdiff_t size = sizeof(T);
    copyRows<64>(reinterpret_cast<const char*>(src), srcStep * size, reinterpret_cast<char*>(dst), dstStep * size,
                 static_cast<std::size_t>(width) * sizeof(T), rows);
}

template <class A, class T = typename A::Element>
void writeStatics(A, const T* src, std::ptrdiff_t srcStep, T* dst, std::ptrdiff_t dstStep, int width,
                  std::ptrdiff_t rows, const ScalarMultipliers<T>&) {
    copyRows(src, srcStep, dst, dstStep, width, rows);
}

template <class A, class T = typename A::Element>
void writeStatics(A arithmetic, const T* src, std::ptrdiff_t srcStep, T* dst, std::ptrdiff_t dstStep, int width,
                  std::ptrdiff_t rows, const ColumnMultipliers<T>& multipliers) {
    forEachBlock<A>(width, [&](auto block, std::ptrdiff_t column) {
        const auto multiplier = multipliers.load(block, 0, column);
        for (std::ptrdiff_t t = 0; t < rows; ++t) {
            const auto x = block.load(src + t * srcStep + column);
            block.store(dst + t * dstStep + column, arithmetic.finish(x * multiplier));
        }
    });
}

// Statics times the multipliers of order 0, in place.
template <class A, class T = typename A::Element>
void multiplyStatics(A arithmetic, T* srcDst, std::ptrdiff_t height, int step, int width,
                     const ColumnMultipliers<T>& multipliers) {
    forEachDisjointBlock<A>(width, [&](auto block, std::ptrdiff_t column) {
        const auto multiplier = multipliers.load(block, 0, column);
        T* x = srcDst + column;
        for (std::ptrdiff_t t = 0; t < height; ++t, x += step) {
            block.store(x, arithmetic.finish(block.load(x) * multiplier));
        }
    });
}

}  // namespace kels::delta
