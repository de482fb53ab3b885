// Every row of a block times a matrix, plus an offset.
//
// The matrix is turned over and packed in panels of a few vectors of outputs by kDepth inputs, which the nearest cache
// holds; under a panel all rows pass, kTileRows at a time, and their sums stay in registers.  Between two panels of the
// same outputs sums wait in the destination.  So an output is always the sum of its terms in the order of the inputs,
// then the offset, one operation of the element type after the other: its bits depend on nothing else.
#pragma once

#include <algorithm>
#include <cstddef>

#include "core/check.h"
#include "core/memory.h"
#include "core/simd/transpose.h"
#include "core/simd/vec.h"
#include "kels/types.h"

namespace kels::matrix {

// Rows and vectors of outputs whose sums the registers hold beside a few values.
#if defined(__AVX512F__)
inline constexpr std::size_t kTileRows = 8, kTileVectors = 3;
#elif defined(__i386__)
inline constexpr std::size_t kTileRows = 2, kTileVectors = 2;
#elif defined(__AVX2__)
inline constexpr std::size_t kTileRows = 4, kTileVectors = 3;
#else
inline constexpr std::size_t kTileRows = 4, kTileVectors = 2;
#endif
inline constexpr std::size_t kDepth = 128;

// A part of the matrix, turned over: `inputs` lines of `vectors` vectors of outputs, of which `outputs` count.
template <class T>
struct Panel {
    const T* offset;  // null before the last inputs, and where there is none
    std::size_t firstOutput, outputs, vectors, firstInput, inputs;
    alignas(64) T lines[kDepth * kTileVectors * lanes<T>];
};

// The rows of a matrix without those before `row`, without the columns before `column`.
template <class Rows>
struct PartOf {
    auto operator[](std::ptrdiff_t i) const { return rows[row + i] + column; }

    const Rows& rows;
    std::ptrdiff_t row, column;
};

template <class Rows, class T>
void pack(const Rows& matrix, Panel<T>& panel) {
    const std::size_t stride = panel.vectors * lanes<T>;
    if (panel.outputs < stride) std::fill_n(panel.lines, panel.inputs * stride, T());
    const PartOf<Rows> part{matrix, static_cast<std::ptrdiff_t>(panel.firstOutput),
                            static_cast<std::ptrdiff_t>(panel.firstInput)};
    transpose(part, panel.outputs, panel.inputs, panel.lines, stride);
}

// Adds the panel's terms to the sums of rowCount rows, whose inputs are at src and whose outputs go to dst.
template <std::size_t rowCount, std::size_t vectors, class T>
void tile(const T* const (&src)[rowCount], const Panel<T>& panel, T* const (&dst)[rowCount]) {
    constexpr std::size_t w = lanes<T>;
    using V = Vec<T>;
    const std::size_t lastLanes = panel.outputs - (vectors - 1) * w;  // w: all of them
    V sums[rowCount][vectors];
#pragma GCC unroll 8
    for (std::size_t r = 0; r < rowCount; ++r) {
#pragma GCC unroll 8
        for (std::size_t v = 0; v < vectors; ++v) {
            const T* const p = dst[r] + v * w;
            if (panel.firstInput == 0) {
                sums[r][v] = V(T());
            } else {
                sums[r][v] = v + 1 == vectors && lastLanes < w ? loadPart(p, lastLanes) : load(p);
            }
        }
    }
    const T* line = panel.lines;
    for (std::size_t k = 0; k < panel.inputs; ++k, line += vectors * w) {
        V a[vectors];
#pragma GCC unroll 8
        for (std::size_t v = 0; v < vectors; ++v) a[v] = load(line + v * w);
#pragma GCC unroll 8
        for (std::size_t r = 0; r < rowCount; ++r) {
            const V x(src[r][k]);
#pragma GCC unroll 8
            for (std::size_t v = 0; v < vectors; ++v) sums[r][v] = mulAdd(x, a[v], sums[r][v]);
        }
    }
#pragma GCC unroll 8
    for (std::size_t v = 0; v < vectors; ++v) {
        const bool part = v + 1 == vectors && lastLanes < w;
        V offset(T{});
        if (panel.offset != nullptr) {
            const T* const p = panel.offset + v * w;
            offset = part ? loadPart(p, lastLanes) : load(p);
        }
#pragma GCC unroll 8
        for (std::size_t r = 0; r < rowCount; ++r) {
            T* const p = dst[r] + v * w;
            if (part) {
                storePart(p, V(sums[r][v] + offset), lastLanes);
            } else {
                store(p, V(sums[r][v] + offset));
            }
        }
    }
}

// Rows from t on, `rowCount` at a time while there are so many, then half as many.
template <std::size_t rowCount, std::size_t vectors, class Src, class T, class Dst>
void tiles(const Src& src, const Panel<T>& panel, const Dst& dst, std::ptrdiff_t t, std::ptrdiff_t height) {
    constexpr auto step = static_cast<std::ptrdiff_t>(rowCount);
    for (; t + step <= height; t += step) {
        const T* from[rowCount];
        T* to[rowCount];
        for (std::ptrdiff_t r = 0; r < step; ++r) {
            from[r] = src[t + r] + panel.firstInput;
            to[r] = dst[t + r] + panel.firstOutput;
        }
        tile<rowCount, vectors>(from, panel, to);
    }
    if constexpr (rowCount > 1) tiles<rowCount / 2, vectors>(src, panel, dst, t, height);
}
template <std::size_t vectors, class Src, class T, class Dst>
void passUnder(const Src& src, const Panel<T>& panel, const Dst& dst, int height) {
    if constexpr (vectors > 1) {
        if (panel.vectors < vectors) return passUnder<vectors - 1>(src, panel, dst, height);
    }
    tiles<kTileRows, vectors>(src, panel, dst, 0, height);
}

// dst[t] = matrix src[t] + offset for `height` rows; offset may be null.
template <class Src, class Matrix, class T, class Dst>
void transformRows(const Src& src, const Matrix& matrix, const T* offset, const Dst& dst, int srcWidth, int dstWidth,
                   int height) {
    constexpr std::size_t w = lanes<T>;
    const std::size_t inputs = toSize(srcWidth), outputs = toSize(dstWidth);
    const std::size_t allVectors = (outputs + w - 1) / w, panels = (allVectors + kTileVectors - 1) / kTileVectors;
    Panel<T> panel;
    panel.firstOutput = 0;
    for (std::size_t n = 0; n < panels; ++n, panel.firstOutput += panel.outputs) {
        // Vectors are dealt out evenly: four of them fill two panels of two.
        panel.vectors = allVectors * (n + 1) / panels - allVectors * n / panels;
        panel.outputs = std::min(panel.vectors * w, outputs - panel.firstOutput);
        for (panel.firstInput = 0; panel.firstInput < inputs; panel.firstInput += kDepth) {
            panel.inputs = std::min(kDepth, inputs - panel.firstInput);
            const bool last = panel.firstInput + panel.inputs == inputs;
            panel.offset = last && offset != nullptr ? offset + panel.firstOutput : nullptr;
            pack(matrix, panel);
            passUnder<kTileVectors>(src, panel, dst, height);
        }
    }
}

}  // namespace kels::matrix
