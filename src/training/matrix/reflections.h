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

// A reflection as it is applied: v, whose rows before `begin` are 0, and its factor.
struct Mirror {
    const Kel64f* v;
    Kel64f factor;
};

// Reflects n columns from j on by one mirror, then by another; `between` is the dot product of the two.  Two at a time
// take half the traffic with memory.
template <std::size_t n>
void reflectGroup(const Mirror& one, const Mirror& other, Kel64f between, std::size_t from, std::size_t rows,
                  const Columns& columns, std::size_t j) {
    constexpr std::size_t w = lanes<Kel64f>;
    using V = Vec<Kel64f>;
    Kel64f* c[n];
    V first[n], second[n];
    for (std::size_t r = 0; r < n; ++r) {
        c[r] = columns[j + r];
        first[r] = second[r] = V(0.0);
    }
    for (std::size_t i = from; i < rows; i += w) {
        const V x = load(one.v + i), y = load(other.v + i);
#pragma GCC unroll 8
        for (std::size_t r = 0; r < n; ++r) {
            const V held = load(c[r] + i);
            first[r] = mulAdd(x, held, first[r]);
            second[r] = mulAdd(y, held, second[r]);
        }
    }
    for (std::size_t r = 0; r < n; ++r) {
        const Kel64f byOne = -one.factor * stdx::reduce(first[r]);
        first[r] = V(byOne);
        second[r] = V(-other.factor * (stdx::reduce(second[r]) + byOne * between));
    }
    for (std::size_t i = from; i < rows; i += w) {
        const V x = load(one.v + i), y = load(other.v + i);
#pragma GCC unroll 8
        for (std::size_t r = 0; r < n; ++r) {
            store(c[r] + i, mulAdd(y, second[r], mulAdd(x, first[r], load(c[r] + i))));
        }
    }
}
template <std::size_t n>
void reflectGroup(const Mirror& mirror, std::size_t from, std::size_t rows, const Columns& columns, std::size_t j) {
    constexpr std::size_t w = lanes<Kel64f>;
    using V = Vec<Kel64f>;
    Kel64f* c[n];
    V dots[n];
    for (std::size_t r = 0; r < n; ++r) {
        c[r] = columns[j + r];
        dots[r] = V(0.0);
    }
    for (std::size_t i = from; i < rows; i += w) {
        const V x = load(mirror.v + i);
#pragma GCC unroll 8
        for (std::size_t r = 0; r < n; ++r) dots[r] = mulAdd(x, load(c[r] + i), dots[r]);
    }
    for (std::size_t r = 0; r < n; ++r) dots[r] = V(-mirror.factor * stdx::reduce(dots[r]));
    for (std::size_t i = from; i < rows; i += w) {
        const V x = load(mirror.v + i);
#pragma GCC unroll 8
        for (std::size_t r = 0; r < n; ++r) store(c[r] + i, mulAdd(x, dots[r], load(c[r] + i)));
    }
}

// Reflects columns first .. last - 1 in rows from `begin` on; rows before it are 0 in the mirrors.
inline void reflect(const Mirror& mirror, std::size_t begin, std::size_t rows, const Columns& columns,
                    std::size_t first, std::size_t last) {
    if (mirror.factor == 0) return;
    const std::size_t from = begin / lanes<Kel64f> * lanes<Kel64f>;
    forColumns(first, last, [&](auto n, std::size_t j) { reflectGroup<n>(mirror, from, rows, columns, j); });
}
inline void reflect(const Mirror& one, const Mirror& other, std::size_t begin, std::size_t rows, const Columns& columns,
                    std::size_t first, std::size_t last) {
    if (one.factor == 0) return reflect(other, begin, rows, columns, first, last);
    if (other.factor == 0) return reflect(one, begin, rows, columns, first, last);
    const std::size_t from = begin / lanes<Kel64f> * lanes<Kel64f>;
    Vec<Kel64f> products(0.0);
    for (std::size_t i = from; i < rows; i += lanes<Kel64f>) {
        products = mulAdd(load(one.v + i), load(other.v + i), products);
    }
    const Kel64f between = stdx::reduce(products);
    forColumns(first, last,
               [&](auto n, std::size_t j) { reflectGroup<n>(one, other, between, from, rows, columns, j); });
}

// ---- many
// ------------------------------------------------------------------------------------------------------------

// Column k of the product of reflections k and those after it, from its place, where reflection k is kept.
inline void formColumn(Kel64f* column, std::size_t k, std::size_t rows, const Mirror& mirror) {
    std::fill_n(column, k, 0.0);
    const Kel64f scale = mirror.factor == 0 ? 0 : -mirror.factor * mirror.v[k];
    for (std::size_t i = k; i < rows; ++i) column[i] = scale == 0 ? 0 : scale * mirror.v[i];
    column[k] += 1;
}

// Replaces the columns, of which column k holds reflection k from row k on, by the first columns of their product.
// scratch: two columns.
inline void formOrthonormal(const Columns& columns, std::size_t count, std::size_t rows, const Kel64f* factors,
                            Kel64f* scratch) {
    Kel64f *const v = scratch, *const w = scratch + columns.stride;
    std::size_t left = count;
    const auto mirrorOf = [&](std::size_t k, Kel64f* place) {
        copyReflection(columns[k], k, rows, place, columns.stride);
        return Mirror{place, factors[k]};
    };
    for (; left > 1; left -= 2) {
        const std::size_t k = left - 2;
        const Mirror later = mirrorOf(k + 1, v), earlier = mirrorOf(k, w);
        reflect(later, earlier, k, rows, columns, left, count);
        formColumn(columns[k + 1], k + 1, rows, later);
        reflect(earlier, k, rows, columns, k + 1, k + 2);
        formColumn(columns[k], k, rows, earlier);
    }
    if (left == 1) {
        const Mirror only = mirrorOf(0, v);
        reflect(only, 0, rows, columns, 1, count);
        formColumn(columns[0], 0, rows, only);
    }
}

}  // namespace kels::matrix
