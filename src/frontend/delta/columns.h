// How derivatives see their columns: the arithmetic of an element type, a vector of columns at a time, and the
// multipliers that belong to them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <type_traits>

#include "core/check.h"
#include "core/scaling.h"
#include "core/simd/integers.h"
#include "core/simd/vec.h"

namespace kels::delta {

inline constexpr std::ptrdiff_t kSlabRows = 32;  // rows that are taken together: they stay in the first-level cache

// ---- arithmetic ----------------------------------------------------------------------------------------------------

struct FloatArithmetic {
    using Element = Kel32f;
    using Value = Vec<Kel32f>;

    static Value load(const Kel32f* p) { return kels::load(p); }
    static void store(Kel32f* p, const Value& v) { kels::store(p, v); }
    static Value finish(const Value& product) { return product; }
};

// 16-bit values with a scale factor, computed in doubles: differences, their products with 16-bit multipliers and the
// scaled products are all exact there, so that only the closing step rounds, and it rounds down in every rounding mode.
struct FixedArithmetic {
    using Element = Kel16s;
    using Value = Vec<Kel64f>;

    explicit FixedArithmetic(int scaleFactor) : unit(scaleMultiplier(scaleFactor)) {}

    static Value load(const Kel16s* p) { return loadWide(p); }
    static void store(Kel16s* p, const Value& v) { storeInt16(p, v); }
    // Limited to what `store` saturates, and rounded down.
    Value finish(const Value& product) const {
        return floorOf(lesserOf(product * unit, Value(std::numeric_limits<Kel32s>::max())));
    }

    Kel64f unit;
};

// ---- columns -------------------------------------------------------------------------------------------------------

// A full vector of columns.
template <class A>
struct WholeBlock {
    using T = typename A::Element;
    using V = typename A::Value;

    V load(const T* p) const { return A::load(p); }
    void store(T* p, const V& v) const { A::store(p, v); }
};

// The first n columns of a vector.
template <class A>
struct PartBlock {
    using T = typename A::Element;
    using V = typename A::Value;
    static constexpr std::size_t w = V::size();

    V load(const T* p) const {
        if constexpr (std::is_same_v<V, Vec<T>>) return loadPart(p, n);
        T buffer[w] = {};
        std::copy_n(p, std::min(n, w), buffer);
        return A::load(buffer);
    }
    void store(T* p, const V& v) const {
        if constexpr (std::is_same_v<V, Vec<T>>) return storePart(p, v, n);
        T buffer[w];
        A::store(buffer, v);
        std::copy_n(buffer, std::min(n, w), p);
    }

    std::size_t n;
};

// body(block, column) for blocks that cover `width` columns.  The last block reaches back to columns that an earlier
// one has covered rather than being a part of a vector, so body reads nothing that it has written.
template <class A, class Body>
void forEachBlock(int width, Body body) {
    constexpr std::ptrdiff_t w = A::Value::size();
    if (width < w) return body(PartBlock<A>{toSize(width)}, 0);
    for (std::ptrdiff_t c = 0; c < width; c += w) body(WholeBlock<A>(), std::min(c, width - w));
}

// The same with every column in one block only.
template <class A, class Body>
void forEachDisjointBlock(int width, Body body) {
    constexpr std::ptrdiff_t w = A::Value::size();
    std::ptrdiff_t c = 0;
    for (; c + w <= width; c += w) body(WholeBlock<A>(), c);
    if (c < width) body(PartBlock<A>{static_cast<std::size_t>(width - c)}, c);
}

// ---- multipliers ---------------------------------------------------------------------------------------------------

// One multiplier for each derivative; statics stay as they are.
template <class T>
struct ScalarMultipliers {
    template <class Block>
    typename Block::V load(const Block&, int order, std::ptrdiff_t) const {
        return typename Block::V(order == 1 ? delta : acceleration);
    }

    T delta, acceleration;
};

// A row of `width` multipliers for the statics (order 0), then one for each derivative.
template <class T>
struct ColumnMultipliers {
    template <class Block>
    typename Block::V load(const Block& block, int order, std::ptrdiff_t column) const {
        return block.load(values + static_cast<std::ptrdiff_t>(order) * width + column);
    }

    const T* values;
    int width;
};

}  // namespace kels::delta
