// Sums over the rows of a block, column by column: of the values, of their squares, plain or with a weight for each row.
//
// Columns are taken by vectors.  A few vectors of sums at a time stay in registers while the rows pass, in slabs of rows
// that stay in the nearest cache while all columns are served.  Within a column the values of four rows are added up and
// then go to the running sum; how rows fall into fours depends on nothing but their number.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "core/simd.h"
#include "kels/types.h"

namespace kels {

enum class Moments { First, Second, Both };

// ---- elements ------------------------------------------------------------------------------------------------------

// The type of sums: doubles for 16-bit values, whose squares they add up exactly for kExactRows rows.
template <class T>
using SumOf = std::conditional_t<std::is_same_v<T, Kel16s>, Kel64f, T>;
inline constexpr int kExactRows = 1 << 22;

struct WholeColumns {
    Vec<Kel32f> load(const Kel32f* p) const { return kels::load(p); }
    Vec<Kel64f> load(const Kel64f* p) const { return kels::load(p); }
    Vec<Kel64f> load(const Kel16s* p) const { return loadWide(p); }
};

// A block that is narrower than a vector.
struct FewColumns {
    Vec<Kel32f> load(const Kel32f* p) const { return loadPart(p, n); }
    Vec<Kel64f> load(const Kel64f* p) const { return loadPart(p, n); }
    Vec<Kel64f> load(const Kel16s* p) const {
        Kel16s buffer[lanes<Kel64f>] = {};
        for (std::size_t i = 0; i < n; ++i) buffer[i] = p[i];
        return loadWide(buffer);
    }

    std::size_t n;
};

// ---- weights -------------------------------------------------------------------------------------------------------

struct Unweighted {
    template <class V>
    V operator()(const V& x, std::ptrdiff_t) const {
        return x;
    }
};
template <class T>
struct RowWeights {
    Vec<T> operator()(const Vec<T>& x, std::ptrdiff_t row) const { return weights[row] * x; }

    const T* weights;
};
template <class T>
RowWeights(const T*) -> RowWeights<T>;

// ---- sums ----------------------------------------------------------------------------------------------------------

template <Moments m, class V>
struct Sums {
    template <class Weights>
    void add(const Weights& weighted, std::ptrdiff_t row, const V& a, const V& b, const V& c, const V& d) {
        const V p = weighted(a, row), q = weighted(b, row + 1), r = weighted(c, row + 2), s = weighted(d, row + 3);
        if constexpr (m != Moments::Second) first += (p + q) + (r + s);
        if constexpr (m != Moments::First) second += mulAdd(p, a, V(q * b)) + mulAdd(r, c, V(s * d));
    }
    template <class Weights>
    void add(const Weights& weighted, std::ptrdiff_t row, const V& a) {
        const V p = weighted(a, row);
        if constexpr (m != Moments::Second) first += p;
        if constexpr (m != Moments::First) second = mulAdd(p, a, second);
    }

    V first, second;
};

// Adds rows begin .. end - 1 to vectors of sums that lie side by side from `column` on, but for the last: its columns
// begin `last` behind `column`.
template <Moments m, class Columns, class Rows, class Weights, class V, std::size_t... k>
void addRows(const Columns& columns, const Rows& rows, const Weights& weights, std::ptrdiff_t begin, std::ptrdiff_t end,
             std::ptrdiff_t column, std::ptrdiff_t last, Sums<m, V>* sums, std::index_sequence<k...>) {
    const auto at = [last](std::size_t i) {
        return i + 1 < sizeof...(k) ? static_cast<std::ptrdiff_t>(i * V::size()) : last;
    };
    Sums<m, V> local[] = {sums[k]...};
    std::ptrdiff_t row = begin;
    for (; row + 4 <= end; row += 4) {
        const auto *const a = rows[row] + column, *const b = rows[row + 1] + column;
        const auto *const c = rows[row + 2] + column, *const d = rows[row + 3] + column;
        (local[k].add(weights, row, columns.load(a + at(k)), columns.load(b + at(k)), columns.load(c + at(k)),
                      columns.load(d + at(k))),
         ...);
    }
    for (; row < end; ++row) {
        const auto* const a = rows[row] + column;
        (local[k].add(weights, row, columns.load(a + at(k))), ...);
    }
    ((sums[k] = local[k]), ...);
}

// Vectors of sums that the registers hold beside a few values.
#if defined(__i386__)
inline constexpr std::size_t kGroup = 2;
#else
inline constexpr std::size_t kGroup = 5;
#endif

template <Moments m, std::size_t n, class Rows, class Weights, class V>
void addGroup(const Rows& rows, const Weights& weights, std::ptrdiff_t begin, std::ptrdiff_t end, std::ptrdiff_t column,
              std::ptrdiff_t last, std::size_t vectors, Sums<m, V>* sums) {
    if constexpr (n > 1) {
        if (vectors < n) return addGroup<m, n - 1>(rows, weights, begin, end, column, last, vectors, sums);
    }
    addRows(WholeColumns(), rows, weights, begin, end, column, last, sums, std::make_index_sequence<n>());
}

// ---- panels --------------------------------------------------------------------------------------------------------

inline constexpr std::ptrdiff_t kPanelVectors = 16;
template <class S>
inline constexpr std::ptrdiff_t kPanelColumns = kPanelVectors* static_cast<std::ptrdiff_t>(lanes<S>);

// body(from, n) for panels of columns.  None but the first is narrower than a vector.
template <class S, class Body>
void forEachPanel(int width, Body body) {
    constexpr std::ptrdiff_t w = lanes<S>;
    for (std::ptrdiff_t from = 0; from < width;) {
        const std::ptrdiff_t left = width - from;
        const std::ptrdiff_t n = left <= kPanelColumns<S> ? left : kPanelColumns<S> - w;
        body(from, static_cast<std::size_t>(n));
        from += n;
    }
}

// Adds the rows begin .. end - 1 of the n columns from `from` on to first[0 .. n-1] and second[0 .. n-1], of which the
// one that m does not ask for is not used.
template <Moments m, class Rows, class Weights, class S>
void addPanel(const Rows& rows, std::ptrdiff_t begin, std::ptrdiff_t end, std::ptrdiff_t from, std::size_t n,
              const Weights& weights, S (&first)[kPanelColumns<S>], S (&second)[kPanelColumns<S>]) {
    using V = Vec<S>;
    constexpr std::size_t w = V::size();
    constexpr std::ptrdiff_t kSlabBytes = 16384;
    const std::size_t vectors = (n + w - 1) / w;
    // The last vector ends with the last column; what it shares with the one before it comes out the same in both.
    const auto column = [=](std::size_t i) { return n < w ? 0 : std::min(i * w, n - w); };
    Sums<m, V> sums[kPanelVectors];
    for (std::size_t i = 0; i < vectors; ++i) {
        if constexpr (m != Moments::Second) sums[i].first = load(first + column(i));
        if constexpr (m != Moments::First) sums[i].second = load(second + column(i));
    }
    if (n < w) {
        addRows(FewColumns{n}, rows, weights, begin, end, from, 0, sums, std::index_sequence<0>());
    } else {
        const auto rowBytes = static_cast<std::ptrdiff_t>(n * sizeof(*rows[0]));
        const std::ptrdiff_t slab =
            vectors <= kGroup ? end - begin : std::max<std::ptrdiff_t>(4, kSlabBytes / rowBytes & ~3);
        for (std::ptrdiff_t top = begin; top < end; top += slab) {
            const std::ptrdiff_t bottom = end - top > slab ? top + slab : end;
            for (std::size_t i = 0; i < vectors; i += kGroup) {
                const std::size_t group = std::min(kGroup, vectors - i);
                const std::size_t last = column(i + group - 1) - i * w;
                addGroup<m, kGroup>(rows, weights, top, bottom, from + static_cast<std::ptrdiff_t>(i * w),
                                    static_cast<std::ptrdiff_t>(last), group, sums + i);
            }
        }
    }
    for (std::size_t i = 0; i < vectors; ++i) {
        if constexpr (m != Moments::Second) store(first + column(i), sums[i].first);
        if constexpr (m != Moments::First) store(second + column(i), sums[i].second);
    }
}

// finish(from, n, first, second) is handed the sums of the columns from `from` on, begun with what start(from, n, first,
// second) leaves there, or with zero.
struct FromZero {
    template <class S>
    void operator()(std::ptrdiff_t, std::size_t, S*, S*) const {}
};
template <Moments m, class Rows, class Weights, class Start, class Finish>
void floatColumnSums(const Rows& rows, int height, int width, const Weights& weights, Start start, Finish finish) {
    using S = std::remove_cvref_t<decltype(*rows[0])>;
    forEachPanel<S>(width, [&](std::ptrdiff_t from, std::size_t n) {
        S first[kPanelColumns<S>] = {}, second[kPanelColumns<S>] = {};
        start(from, n, first, second);
        addPanel<m>(rows, 0, height, from, n, weights, first, second);
        finish(from, n, first, second);
    });
}

// The same from 16-bit values: exact sums, as 64-bit integers.
template <Moments m, class Rows, class Finish>
void exactColumnSums(const Rows& rows, int height, int width, Finish finish) {
    using S = SumOf<Kel16s>;
    forEachPanel<S>(width, [&](std::ptrdiff_t from, std::size_t n) {
        int64_t first[kPanelColumns<S>] = {}, second[kPanelColumns<S>] = {};
        for (std::ptrdiff_t top = 0; top < height;) {
            const std::ptrdiff_t bottom = top + std::min<std::ptrdiff_t>(kExactRows, height - top);
            S firstPart[kPanelColumns<S>] = {}, secondPart[kPanelColumns<S>] = {};
            addPanel<m>(rows, top, bottom, from, n, Unweighted(), firstPart, secondPart);
            for (std::size_t j = 0; j < n; ++j) {
                first[j] += static_cast<int64_t>(firstPart[j]);
                second[j] += static_cast<int64_t>(secondPart[j]);
            }
            top = bottom;
        }
        finish(from, n, first, second);
    });
}

}  // namespace kels
