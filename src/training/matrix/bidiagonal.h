// A matrix with at least as many rows as columns as U B V', where B has elements on its diagonal and above it only
// (Golub and Van Loan, 5.4); and B's singular values by implicit QR steps (8.6), which rotate columns of U and V.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "core/simd/vec.h"
#include "kels/types.h"
#include "training/matrix/reflections.h"

namespace kels::matrix {

// The columns of U (rows x count) and V (count x count), the diagonal of B and what is right of it, and scratch.
struct Bidiagonal {
    std::size_t rows, count;
    Columns u, v;
    Kel64f *diagonal, *above;            // count of each; the last `above` is 0
    Kel64f *leftFactors, *rightFactors;  // of reflections, then cosines and sines
    Kel64f *leftCosines, *leftSines;     // count of each
    Kel64f *rightCosines, *rightSines;
    Kel64f *reflections, *product;  // two strides of u, and one
};

// ---- reduction ------------------------------------------------------------------------------------------------------

// product = sum of x[j] * columns[j] over the columns first .. last - 1, in rows from `from` on; then columns[j] -=
// factor * x[j] * product.
inline void reflectRows(const Kel64f* x, Kel64f factor, std::size_t from, std::size_t rows, const Columns& columns,
                        std::size_t first, std::size_t last, Kel64f* product) {
    constexpr std::size_t w = lanes<Kel64f>;
    using V = Vec<Kel64f>;
    if (factor == 0) return;
    std::fill(product + from, product + roundUp(rows, w), 0.0);
    forColumns(first, last, [&](auto group, std::size_t j) {
        constexpr std::size_t n = group;
        for (std::size_t i = from; i < rows; i += w) {
            V sum = load(product + i), other(0.0);
#pragma GCC unroll 8
            for (std::size_t r = 0; r < n; r += 2) {
                sum = mulAdd(V(x[j + r]), load(columns[j + r] + i), sum);
                if (r + 1 < n) other = mulAdd(V(x[j + r + 1]), load(columns[j + r + 1] + i), other);
            }
            store(product + i, V(sum + other));
        }
    });
    forColumns(first, last, [&](auto group, std::size_t j) {
        constexpr std::size_t n = group;
        for (std::size_t i = from; i < rows; i += w) {
            const V p = load(product + i) * -factor;
#pragma GCC unroll 8
            for (std::size_t r = 0; r < n; ++r) {
                Kel64f* const at = columns[j + r] + i;
                store(at, mulAdd(p, V(x[j + r]), load(at)));
            }
        }
    });
}

// Takes A in the columns of u and leaves U, B and V.
inline void reduce(Bidiagonal& b) {
    constexpr std::size_t w = lanes<Kel64f>;
    const std::size_t n = b.count;
    std::fill_n(b.above, n, 0.0);
    b.rightFactors[0] = 0;
    for (std::size_t k = 0; k < n; ++k) {
        const Reflection left = reflectionOf(b.u[k], k, b.rows, b.reflections, b.u.stride);
        b.leftFactors[k] = left.factor;
        b.diagonal[k] = left.value;
        reflect({b.reflections, left.factor}, k, b.rows, b.u, k + 1, n);
        if (k + 1 == n) break;
        Kel64f* const row = b.v[k + 1];
        for (std::size_t j = k + 1; j < n; ++j) row[j] = b.u[j][k];
        const Reflection right = reflectionOf(row, k + 1, n, b.reflections, b.v.stride);
        b.rightFactors[k + 1] = right.factor;
        b.above[k] = right.value;
        reflectRows(row, right.factor, (k + 1) / w * w, b.rows, b.u, k + 1, n, b.product);
    }
    for (std::size_t j = 0; j < n; ++j) {
        std::fill(b.v[j] + n, b.v[j] + b.v.stride, 0.0);
    }
    formOrthonormal(b.u, n, b.rows, b.leftFactors, b.reflections);
    formOrthonormal(b.v, n, n, b.rightFactors, b.reflections);
}

// ---- rotations ------------------------------------------------------------------------------------------------------

// The rotation that takes (x, y) to (length, 0).
struct Rotation {
    Rotation(Kel64f x, Kel64f y) : cosine(1), sine(0), length(x) {
        if (y == 0) return;
        // Squares that would vanish are formed of multiples.
        const bool tiny = std::max(std::fabs(x), std::fabs(y)) < 0x1p-400;
        if (tiny) {
            x *= 0x1p600;
            y *= 0x1p600;
        }
        length = std::sqrt(x * x + y * y);
        cosine = x / length;
        sine = y / length;
        if (tiny) length *= 0x1p-600;
    }

    Kel64f cosine, sine, length;
};

// Rotates columns `first` and first + 1, then first + 1 and first + 2, and so on.  The column that two rotations share
// stays in registers between them, a few vectors of rows at a time.
inline void rotateNeighbours(const Columns& columns, std::size_t rows, std::size_t first, std::size_t count,
                             const Kel64f* cosines, const Kel64f* sines) {
    constexpr std::size_t w = lanes<Kel64f>;
    using V = Vec<Kel64f>;
    const auto rotate = [&](auto group, std::size_t i) {
        constexpr std::size_t vectors = group;
        V held[vectors];
        Kel64f* at = columns[first] + i;
        for (std::size_t k = 0; k < vectors; ++k) held[k] = load(at + k * w);
        for (std::size_t j = 0; j < count; ++j, at += columns.stride) {
            const V c(cosines[j]), s(sines[j]);
#pragma GCC unroll 8
            for (std::size_t k = 0; k < vectors; ++k) {
                const V next = load(at + columns.stride + k * w);
                store(at + k * w, mulAdd(s, next, V(c * held[k])));
                held[k] = c * next - s * held[k];
            }
        }
        for (std::size_t k = 0; k < vectors; ++k) store(at + k * w, held[k]);
    };
#if defined(__i386__)
    constexpr std::size_t kVectors = 2;
#else
    constexpr std::size_t kVectors = 4;
#endif
    std::size_t i = 0;
    for (; i + kVectors * w <= rows; i += kVectors * w) rotate(std::integral_constant<std::size_t, kVectors>(), i);
    for (; i < rows; i += w) rotate(std::integral_constant<std::size_t, 1>(), i);
}

// Rotates two columns.
inline void rotatePair(Kel64f* x, Kel64f* y, std::size_t rows, const Rotation& by) {
    for (std::size_t i = 0; i < rows; ++i) {
        const Kel64f held = x[i];
        x[i] = by.cosine * held + by.sine * y[i];
        y[i] = by.cosine * y[i] - by.sine * held;
    }
}

// ---- iteration ------------------------------------------------------------------------------------------------------

// What follows works on the part of B from `top` to `bottom`, inclusive.

// The last diagonal element is 0: clears the element above it.
inline void clearLastColumn(Bidiagonal& b, std::size_t top, std::size_t bottom) {
    Kel64f bulge = b.above[bottom - 1];
    b.above[bottom - 1] = 0;
    for (std::size_t j = bottom; j-- > top;) {
        const Rotation by(b.diagonal[j], bulge);
        b.diagonal[j] = by.length;
        if (j > top) {
            bulge = -by.sine * b.above[j - 1];
            b.above[j - 1] *= by.cosine;
        }
        rotatePair(b.v[j], b.v[bottom], b.count, by);
    }
}

// A diagonal element is 0: clears the element right of it.
inline void clearRow(Bidiagonal& b, std::size_t row, std::size_t bottom) {
    Kel64f bulge = b.above[row];
    b.above[row] = 0;
    for (std::size_t j = row + 1; j <= bottom; ++j) {
        const Rotation by(b.diagonal[j], bulge);
        b.diagonal[j] = by.length;
        bulge = -by.sine * b.above[j];
        b.above[j] *= by.cosine;
        rotatePair(b.u[j], b.u[row], b.rows, by);
    }
}

// The eigenvalue of the last two by two elements of B'B that is nearer to the last, less the last, times 1 / unit^2.
inline Kel64f shiftOf(const Bidiagonal& b, std::size_t bottom, Kel64f unit) {
    const Kel64f last = b.diagonal[bottom] / unit, before = b.diagonal[bottom - 1] / unit;
    const Kel64f between = b.above[bottom - 1] / unit;
    const Kel64f half = ((before + last) * (before - last) + between * between) / 2;
    const Kel64f product = (last * between) * (last * between);
    if (product == 0) return 0;
    const Kel64f root = std::sqrt(half * half + product);
    return product / (half + (half < 0 ? -root : root));
}

// One implicit QR step with a shift.
inline void step(Bidiagonal& b, std::size_t top, std::size_t bottom) {
    Kel64f *const d = b.diagonal, *const e = b.above;
    const Kel64f unit = std::max({std::fabs(d[bottom]), std::fabs(d[bottom - 1]), std::fabs(e[bottom - 1]),
                                  std::fabs(d[top]), std::fabs(e[top])});
    const Kel64f first = d[top] / unit, last = d[bottom] / unit;
    Kel64f x = (first + last) * (first - last) + shiftOf(b, bottom, unit), y = first * (e[top] / unit);
    for (std::size_t j = top; j < bottom; ++j) {
        const Rotation right(x, y);
        if (j > top) e[j - 1] = right.length;
        x = right.cosine * d[j] + right.sine * e[j];
        e[j] = right.cosine * e[j] - right.sine * d[j];
        y = right.sine * d[j + 1];
        d[j + 1] *= right.cosine;
        const Rotation left(x, y);
        d[j] = left.length;
        x = left.cosine * e[j] + left.sine * d[j + 1];
        d[j + 1] = left.cosine * d[j + 1] - left.sine * e[j];
        y = left.sine * e[j + 1];
        if (j + 1 < bottom) e[j + 1] *= left.cosine;
        b.rightCosines[j - top] = right.cosine;
        b.rightSines[j - top] = right.sine;
        b.leftCosines[j - top] = left.cosine;
        b.leftSines[j - top] = left.sine;
    }
    e[bottom - 1] = x;
    rotateNeighbours(b.v, b.count, top, bottom - top, b.rightCosines, b.rightSines);
    rotateNeighbours(b.u, b.rows, top, bottom - top, b.leftCosines, b.leftSines);
}

// Makes B diagonal.  False if that takes more than 60 steps for each value.
inline bool diagonalise(Bidiagonal& b) {
    Kel64f *const d = b.diagonal, *const e = b.above;
    Kel64f norm = 0;
    for (std::size_t k = 0; k < b.count; ++k) norm = std::max({norm, std::fabs(d[k]), std::fabs(e[k])});
    const Kel64f nothing = norm * 0x1p-56;
    const auto separate = [&](std::size_t k) {
        return std::fabs(e[k]) <= std::max(nothing, (std::fabs(d[k]) + std::fabs(d[k + 1])) * 0x1p-54);
    };
    std::size_t bottom = b.count - 1;
    for (int64_t left = 60 * static_cast<int64_t>(b.count); bottom > 0; --left) {
        if (left == 0) return false;
        std::size_t top = bottom;
        while (top > 0 && !separate(top - 1)) --top;
        if (top > 0) e[top - 1] = 0;
        if (top == bottom) {
            --bottom;
            continue;
        }
        std::size_t zero = top;
        while (zero <= bottom && std::fabs(d[zero]) > nothing) ++zero;
        if (zero > bottom) {
            step(b, top, bottom);
            continue;
        }
        d[zero] = 0;
        if (zero < bottom) {
            clearRow(b, zero, bottom);
        } else {
            clearLastColumn(b, top, bottom);
        }
    }
    return true;
}

}  // namespace kels::matrix
