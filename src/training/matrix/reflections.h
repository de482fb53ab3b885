// Householder reflections of columns that lie one behind the other, and orthonormal columns made of them.
//
// Columns are padded with zeros to whole vectors, and a reflection is kept with zeros around it, so that all loops run
// over whole vectors: rows above a reflection are multiplied by 0.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "core/memory.h"
#include "core/scaling.h"
#include "core/simd/vec.h"
#include "kels/types.h"

namespace kels::matrix {

// ---- columns --------------------------------------------------------------------------------------------------------

struct Columns {
    Kel64f* operator[](std::size_t j) const { return first + j * stride; }

    Kel64f* first;
    std::size_t stride;
};

// A stride for columns of that many rows.  Not a multiple of 64: neighbours would share the same places of the cache.
constexpr int64_t columnStride(int64_t rows) {
    constexpr int64_t w = lanes<Kel64f>;
    const int64_t stride = roundUp(rows, w);
    return stride % 64 == 0 ? stride + w : stride;
}

// Columns whose dot products and updates go side by side.
#if defined(__AVX512F__)
inline constexpr std::size_t kSideBySide = 8;
#elif defined(__i386__)
inline constexpr std::size_t kSideBySide = 2;
#else
inline constexpr std::size_t kSideBySide = 4;
#endif

// body(integral_constant n, j) for columns first .. last - 1 in groups of n.
template <class Body>
void forColumns(std::size_t first, std::size_t last, Body body) {
    std::size_t j = first;
    for (; j + kSideBySide <= last; j += kSideBySide) body(std::integral_constant<std::size_t, kSideBySide>(), j);
    for (; j < last; ++j) body(std::integral_constant<std::size_t, 1>(), j);
}

// ---- powers of two --------------------------------------------------------------------------------------------------

// 2^exponent for any exponent that doubles may differ by, as two factors.
struct PowerOfTwo {
    explicit PowerOfTwo(int exponent)
        : first(exactPowerOfTwo(exponent / 2)), second(exactPowerOfTwo(exponent - exponent / 2)) {}
    template <class V>
    friend V operator*(const V& x, const PowerOfTwo& power) {
        return x * power.first * power.second;
    }

    Kel64f first, second;
};

// e with 2^(e - 1) <= x < 2^e; 0 for what has none.
inline int exponentOf(Kel64f x) {
    int exponent = 0;
    if (std::isfinite(x)) std::frexp(x, &exponent);
    return exponent;
}

// The greatest magnitude of `rows` elements; columns are read in whole vectors.
inline Kel64f greatestMagnitude(const Kel64f* x, std::size_t rows) {
    Vec<Kel64f> greatest(0.0);
    for (std::size_t i = 0; i < rows; i += lanes<Kel64f>) greatest = greaterOf(greatest, magnitude(load(x + i)));
    return stdx::hmax(greatest);
}

// ---- one reflection -------------------------------------------------------------------------------------------------

// I - factor * v * v', which takes a vector to (value, 0, 0, ...).
struct Reflection {
    Kel64f factor;  // 0: none is needed
    Kel64f value;
};

// v: what is stored in rows begin .. rows - 1 of a column, zeros around it.
inline void copyReflection(const Kel64f* column, std::size_t begin, std::size_t rows, Kel64f* v, std::size_t stride) {
    std::fill_n(v, begin, 0.0);
    std::copy(column + begin, column + rows, v + begin);
    std::fill(v + rows, v + stride, 0.0);
}

// For rows begin .. rows - 1 of a column, which are replaced by v's elements.  The norm is formed with a scale of its
// own, for the column may be the noise that is left of others.
inline Reflection reflectionOf(Kel64f* column, std::size_t begin, std::size_t rows, Kel64f* v, std::size_t stride) {
    constexpr std::size_t w = lanes<Kel64f>;
    copyReflection(column, begin, rows, v, stride);
    const std::size_t from = begin / w * w;
    const Kel64f greatest = greatestMagnitude(v + from, rows - from);
    if (greatest == 0) return {0, 0};
    const int exponent = exponentOf(greatest);
    const PowerOfTwo unit(-exponent);
    Vec<Kel64f> squares(0.0);
    for (std::size_t i = from; i < rows; i += w) {
        const Vec<Kel64f> x = load(v + i) * unit;
        squares = mulAdd(x, x, squares);
        store(v + i, x);
    }
    const Kel64f norm = std::sqrt(stdx::reduce(squares)), head = v[begin];
    const Kel64f value = head < 0 ? norm : -norm;
    v[begin] = head - value;
    std::copy(v + begin, v + rows, column + begin);
    return {1 / (norm * (norm + std::fabs(head))), value * PowerOfTwo(exponent)};
}

// Reflects n columns from j on.
template <std::size_t n>
void reflectGroup(const Kel64f* v, Kel64f factor, std::size_t from, std::size_t rows, const Columns& columns,
                  std::size_t j) {
    constexpr std::size_t w = lanes<Kel64f>;
    using V = Vec<Kel64f>;
    Kel64f* c[n];
    V dots[n];
    for (std::size_t r = 0; r < n; ++r) {
        c[r] = columns[j + r];
        dots[r] = V(0.0);
    }
    for (std::size_t i = from; i < rows; i += w) {
        const V x = load(v + i);
#pragma GCC unroll 8
        for (std::size_t r = 0; r < n; ++r) dots[r] = mulAdd(x, load(c[r] + i), dots[r]);
    }
    for (std::size_t r = 0; r < n; ++r) dots[r] = V(-factor * stdx::reduce(dots[r]));
    for (std::size_t i = from; i < rows; i += w) {
        const V x = load(v + i);
#pragma GCC unroll 8
        for (std::size_t r = 0; r < n; ++r) store(c[r] + i, mulAdd(x, dots[r], load(c[r] + i)));
    }
}

// Reflects columns first .. last - 1 by v, whose rows before `begin` are 0.
inline void reflect(const Kel64f* v, Kel64f factor, std::size_t begin, std::size_t rows, const Columns& columns,
                    std::size_t first, std::size_t last) {
    if (factor == 0) return;
    const std::size_t from = begin / lanes<Kel64f> * lanes<Kel64f>;
    forColumns(first, last, [&](auto n, std::size_t j) { reflectGroup<n>(v, factor, from, rows, columns, j); });
}

// ---- many -----------------------------------------------------------------------------------------------------------

// Replaces the columns, of which column k holds reflection k from row k on, by the first columns of their product.
inline void formOrthonormal(const Columns& columns, std::size_t count, std::size_t rows, const Kel64f* factors,
                            Kel64f* v) {
    for (std::size_t k = count; k-- > 0;) {
        Kel64f* const column = columns[k];
        copyReflection(column, k, rows, v, columns.stride);
        reflect(v, factors[k], k, rows, columns, k + 1, count);
        std::fill_n(column, k, 0.0);
        const Kel64f scale = factors[k] == 0 ? 0 : -factors[k] * v[k];
        for (std::size_t i = k; i < rows; ++i) column[i] = scale == 0 ? 0 : scale * v[i];
        column[k] += 1;
    }
}

}  // namespace kels::matrix
