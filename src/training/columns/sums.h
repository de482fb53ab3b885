// Sums over the rows of a block, column by column: of the values and of their squares, plain or with a weight for each
// row.  Both are always formed: together they take no longer than the block takes to arrive from memory.
//
// Columns are taken by vectors.  A few vectors of sums at a time stay in registers while the rows pass, in slabs of
// rows that stay in the nearest cache while all columns are served.  Within a column the values of four rows are added
// up and then go to the running sum; how rows fall into fours depends on nothing but their number.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "core/simd/vec.h"
#include "kels/types.h"

namespace kels::columns {

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

// Columns too few for a vector.
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

// weights.of(row) is a factor for the values of that row.
struct Unweighted {
    struct One {};
    One of(std::ptrdiff_t) const { return {}; }
};
template <class V>
V operator*(Unweighted::One, const V& x) {
    return x;
}

template <class T>
struct RowWeights {
    Vec<T> of(std::ptrdiff_t row) const { return weights[row]; }

    const T* weights;
};
template <class T>
RowWeights(const T*) -> RowWeights<T>;

// ---- sums ----------------------------------------------------------------------------------------------------------

// Adds rows begin .. end - 1 to vectors of sums.  Their columns lie side by side from `column` on, but for the last
// vector's: those begin `last` behind `column`.
template <class Columns, class Rows, class Weights, class V, std::size_t... k>
void addRows(const Columns& columns, const Rows& rows, const Weights& weights, std::ptrdiff_t begin, std::ptrdiff_t end,
             std::size_t column, std::size_t last, V* firsts, V* seconds, std::index_sequence<k...>) {
    const auto at = [last](std::size_t i) { return i + 1 < sizeof...(k) ? i * V::size() : last; };
    V first[] = {firsts[k]...}, second[] = {seconds[k]...};
    std::ptrdiff_t row = begin;
    for (; row + 4 <= end; row += 4) {
        const auto *const p = rows[row] + column, *const q = rows[row + 1] + column;
        const auto *const r = rows[row + 2] + column, *const s = rows[row + 3] + column;
        const auto wp = weights.of(row), wq = weights.of(row + 1), wr = weights.of(row + 2), ws = weights.of(row + 3);
        const auto add = [&](V & sum, V & squares, std::size_t i) __attribute__((always_inline)) {
            const V a = columns.load(p + i), b = columns.load(q + i), c = columns.load(r + i), d = columns.load(s + i);
            const V wa = wp * a, wb = wq * b, wc = wr * c, wd = ws * d;
            sum += (wa + wb) + (wc + wd);
            squares += mulAdd(wa, a, V(wb * b)) + mulAdd(wc, c, V(wd * d));
        };
        (add(first[k], second[k], at(k)), ...);
    }
    for (; row < end; ++row) {
        const auto* const p = rows[row] + column;
        const auto wp = weights.of(row);
        const auto add = [&](V & sum, V & squares, std::size_t i) __attribute__((always_inline)) {
            const V a = columns.load(p + i), wa = wp * a;
            sum += wa;
            squares = mulAdd(wa, a, squares);
        };
        (add(first[k], second[k], at(k)), ...);
    }
    ((firsts[k] = first[k], seconds[k] = second[k]), ...);
}

// Vectors that the registers hold both sums of beside a few values.
#if defined(__i386__)
inline constexpr std::size_t kGroup = 2;
#else
inline constexpr std::size_t kGroup = 4;
#endif

// n vectors, or the largest power of two of them below n that there are.  Returns how many.
template <std::size_t n, class Rows, class Weights, class V>
std::size_t addGroup(const Rows& rows, const Weights& weights, std::ptrdiff_t begin, std::ptrdiff_t end,
                     std::size_t column, std::size_t columnsLeft, V* firsts, V* seconds) {
    constexpr std::size_t w = V::size();
    if constexpr (n > 1) {
        if (columnsLeft <= (n - 1) * w) {
            return addGroup<n / 2>(rows, weights, begin, end, column, columnsLeft, firsts, seconds);
        }
    }
    // The last vector ends with the last column; what it shares with the one before it comes out the same in both.
    const std::size_t last = column + std::min(n * w, columnsLeft) - w;
    const std::size_t start = n == 1 ? last : column;
    addRows(WholeColumns(), rows, weights, begin, end, start, last - start, firsts, seconds,
            std::make_index_sequence<n>());
    return n;
}

// ---- panels --------------------------------------------------------------------------------------------------------

inline constexpr std::size_t kPanelVectors = 16;
template <class S>
inline constexpr std::size_t kPanelColumns = kPanelVectors* lanes<S>;

// body(from, n) for panels of columns.
template <class S, class Body>
void forEachPanel(int width, Body body) {
    for (std::size_t from = 0; from < static_cast<std::size_t>(width); from += kPanelColumns<S>) {
        body(from, std::min(static_cast<std::size_t>(width) - from, kPanelColumns<S>));
    }
}

// Adds the rows begin .. end - 1 of the n columns from `from` on to first[0 .. n-1] and second[0 .. n-1].
template <class Rows, class Weights, class S>
void addPanel(const Rows& rows, std::ptrdiff_t begin, std::ptrdiff_t end, std::size_t from, std::size_t n,
              const Weights& weights, S (&first)[kPanelColumns<S>], S (&second)[kPanelColumns<S>]) {
    using V = Vec<S>;
    constexpr std::size_t w = V::size();
    constexpr std::ptrdiff_t kSlabBytes = 16384;
    const std::size_t vectors = (n + w - 1) / w;
    const auto column = [=](std::size_t i) { return n < w ? 0 : std::min(i * w, n - w); };
    V firsts[kPanelVectors], seconds[kPanelVectors];
    for (std::size_t i = 0; i < vectors; ++i) {
        firsts[i] = load(first + column(i));
        seconds[i] = load(second + column(i));
    }
    if (n < w) {
        addRows(FewColumns{n}, rows, weights, begin, end, from, 0, firsts, seconds, std::index_sequence<0>());
    } else {
        const auto rowBytes = static_cast<std::ptrdiff_t>(n * sizeof(*rows[0]));
        const std::ptrdiff_t slab = std::max<std::ptrdiff_t>(4, (kSlabBytes / rowBytes) & ~3);
        for (std::ptrdiff_t top = begin; top < end; top += slab) {
            const std::ptrdiff_t bottom = end - top > slab ? top + slab : end;
            for (std::size_t i = 0; i < vectors;) {
                i += addGroup<kGroup>(rows, weights, top, bottom, from + i * w, n - i * w, firsts + i, seconds + i);
            }
        }
    }
    for (std::size_t i = 0; i < vectors; ++i) {
        store(first + column(i), firsts[i]);
        store(second + column(i), seconds[i]);
    }
}

// finish(from, n, first, second) is handed the sums of the columns from `from` on, begun with what start(from, n,
// first, second) leaves there, or with zero.
struct FromZero {
    template <class S>
    void operator()(std::size_t, std::size_t, S*, S*) const {}
};
template <class Rows, class Weights, class Start, class Finish>
void floatColumnSums(const Rows& rows, int height, int width, const Weights& weights, Start start, Finish finish) {
    using S = std::remove_cvref_t<decltype(*rows[0])>;
    forEachPanel<S>(width, [&](std::size_t from, std::size_t n) {
        S first[kPanelColumns<S>] = {}, second[kPanelColumns<S>] = {};
        start(from, n, first, second);
        addPanel(rows, 0, height, from, n, weights, first, second);
        finish(from, n, first, second);
    });
}

// The same from 16-bit values: exact sums, as 64-bit integers.
template <class Rows, class Finish>
void exactColumnSums(const Rows& rows, int height, int width, Finish finish) {
    using S = SumOf<Kel16s>;
    forEachPanel<S>(width, [&](std::size_t from, std::size_t n) {
        int64_t first[kPanelColumns<S>] = {}, second[kPanelColumns<S>] = {};
        for (std::ptrdiff_t top = 0; top < height;) {
            const std::ptrdiff_t bottom = top + std::min<std::ptrdiff_t>(kExactRows, height - top);
            S firstPart[kPanelColumns<S>] = {}, secondPart[kPanelColumns<S>] = {};
            addPanel(rows, top, bottom, from, n, Unweighted(), firstPart, secondPart);
            for (std::size_t j = 0; j < n; ++j) {
                first[j] += static_cast<int64_t>(firstPart[j]);
                second[j] += static_cast<int64_t>(secondPart[j]);
            }
            top = bottom;
        }
        finish(from, n, first, second);
    });
}

}  // namespace kels::columns
