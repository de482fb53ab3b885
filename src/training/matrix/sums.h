// Sums along the rows and down the columns of a matrix, plain or with a factor for each element, in double precision.
//
// Products of floats and of 16-bit integers are exact as doubles, and so are sums of up to kExactTerms products of
// integers.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "core/check.h"
#include "core/memory.h"
#include "core/simd/vec.h"
#include "kels/types.h"

namespace kels::matrix {

// What sums of elements of type T end as.
template <class T>
using SumOf = std::conditional_t<std::is_same_v<T, Kel16s>, int64_t, Kel64f>;
inline constexpr std::size_t kExactTerms = std::size_t{1} << 22;

// ---- elements as doubles, two vectors at a time ---------------------------------------------------------------------

inline constexpr std::size_t kTwo = 2 * lanes<Kel64f>;

inline WideHalves loadTwo(const Kel32f* p) {
    return widen(load(p));
}
template <class T>
WideHalves loadTwo(const T* p) {
    return {loadWide(p), loadWide(p + lanes<Kel64f>)};
}

// The first n < kTwo elements, and zeros.
inline WideHalves loadTwo(const Kel32f* p, std::size_t n) {
    return widen(loadPart(p, n));
}
inline WideHalves loadTwo(const Kel64f* p, std::size_t n) {
    constexpr std::size_t w = lanes<Kel64f>;
    if (n < w) return {loadPart(p, n), Vec<Kel64f>(0.0)};
    return {load(p), loadPart(p + w, n - w)};
}
inline WideHalves loadTwo(const Kel16s* p, std::size_t n) {
    Kel16s buffer[kTwo] = {};
    for (std::size_t i = 0; i < n; ++i) buffer[i] = p[i];
    return loadTwo(buffer);
}

// ---- factors --------------------------------------------------------------------------------------------------------

// Elements that are added as they are.
struct One {};

inline WideHalves add(const WideHalves& sum, const WideHalves& a, const WideHalves& x) {
    return {mulAdd(a.low, x.low, sum.low), mulAdd(a.high, x.high, sum.high)};
}
inline WideHalves add(const WideHalves& sum, const WideHalves& a, const Vec<Kel64f>& x) {
    return {mulAdd(a.low, x, sum.low), mulAdd(a.high, x, sum.high)};
}
inline WideHalves add(const WideHalves& sum, const WideHalves& a, One) {
    return {sum.low + a.low, sum.high + a.high};
}

// The factors of the elements of a row: a vector, or none.
template <class T>
struct Factors {
    WideHalves at(std::size_t j) const { return loadTwo(x + j); }
    WideHalves at(std::size_t j, std::size_t n) const { return loadTwo(x + j, n); }

    const T* x;
};
struct NoFactors {
    One at(std::size_t, std::size_t = 0) const { return {}; }
};

// ---- along rows -----------------------------------------------------------------------------------------------------

// sums[r] = sum over begin <= j < end of rows[row + r][j] times its factor.
template <std::size_t n, class Rows, class F>
void addAlong(const Rows& rows, std::ptrdiff_t row, const F& factors, std::size_t begin, std::size_t end,
              Kel64f* sums) {
    decltype(rows[0]) p[n];
    WideHalves sum[n];
    for (std::size_t r = 0; r < n; ++r) {
        p[r] = rows[row + static_cast<std::ptrdiff_t>(r)];
        sum[r] = {Vec<Kel64f>(0.0), Vec<Kel64f>(0.0)};
    }
    std::size_t j = begin;
    for (; j + kTwo <= end; j += kTwo) {
        const auto x = factors.at(j);
        for (std::size_t r = 0; r < n; ++r) sum[r] = add(sum[r], loadTwo(p[r] + j), x);
    }
    if (j < end) {
        const auto x = factors.at(j, end - j);
        for (std::size_t r = 0; r < n; ++r) sum[r] = add(sum[r], loadTwo(p[r] + j, end - j), x);
    }
    for (std::size_t r = 0; r < n; ++r) sums[r] = stdx::reduce(sum[r].low + sum[r].high);
}

// take(i, sum) for `n` rows from `row` on.
template <std::size_t n, class Rows, class F, class Take>
void sumRows(const Rows& rows, std::ptrdiff_t row, std::size_t width, const F& factors, Take take) {
    SumOf<std::remove_cvref_t<decltype(*rows[0])>> totals[n] = {};
    for (std::size_t begin = 0; begin < width; begin += std::min(kExactTerms, width - begin)) {
        Kel64f sums[n];
        addAlong<n>(rows, row, factors, begin, begin + std::min(kExactTerms, width - begin), sums);
        for (std::size_t r = 0; r < n; ++r) totals[r] += static_cast<decltype(totals[0] + 0)>(sums[r]);
    }
    for (std::size_t r = 0; r < n; ++r) take(row + static_cast<std::ptrdiff_t>(r), totals[r]);
}

// take(i, sum) for all rows.
template <class Rows, class F, class Take>
void sumEachRow(const Rows& rows, int height, int width, const F& factors, Take take) {
    std::ptrdiff_t i = 0;
    for (; i + 4 <= height; i += 4) sumRows<4>(rows, i, toSize(width), factors, take);
    for (; i < height; ++i) sumRows<1>(rows, i, toSize(width), factors, take);
}

// ---- down columns ---------------------------------------------------------------------------------------------------

// sums[j] += terms.row(k)[from + j] * terms.factor(k) for n rows from k on.
template <std::size_t n, class Terms>
void addDown(const Terms& terms, std::ptrdiff_t k, std::size_t from, std::size_t columns, Kel64f* sums) {
    constexpr std::size_t w = lanes<Kel64f>;
    decltype(terms.row(k)) p[n];
    decltype(terms.factor(k)) x[n];
    for (std::size_t r = 0; r < n; ++r) {
        p[r] = terms.row(k + static_cast<std::ptrdiff_t>(r)) + from;
        x[r] = terms.factor(k + static_cast<std::ptrdiff_t>(r));
    }
    const auto addTo = [&](Kel64f* at, auto loadFrom) {
        WideHalves sum{load(at), load(at + w)};
        for (std::size_t r = 0; r < n; ++r) sum = add(sum, loadFrom(p[r]), x[r]);
        store(at, sum.low);
        store(at + w, sum.high);
    };
    std::size_t j = 0;
    for (; j + kTwo <= columns; j += kTwo) {
        addTo(sums + j, [j](const auto* row) { return loadTwo(row + j); });
    }
    if (j < columns) {
        addTo(sums + j, [j, columns](const auto* row) { return loadTwo(row + j, columns - j); });
    }
}

// take(from, n, sums) for panels of columns: the sums of the terms, rows with a factor each, `count` of them.
template <class Terms, class Take>
void sumDown(const Terms& terms, int count, int width, Take take) {
    constexpr std::size_t kPanel = 512;
    for (std::size_t from = 0; from < toSize(width); from += kPanel) {
        const std::size_t n = std::min(kPanel, toSize(width) - from);
        alignas(64) Kel64f sums[kPanel];
        std::fill_n(sums, roundUp(n, kTwo), 0.0);
        std::ptrdiff_t k = 0;
        for (; k + 4 <= count; k += 4) addDown<4>(terms, k, from, n, sums);
        for (; k < count; ++k) addDown<1>(terms, k, from, n, sums);
        take(from, n, sums);
    }
}

}  // namespace kels::matrix
