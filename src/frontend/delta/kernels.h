// Derivatives of feature vectors over time: what the streaming, the whole-array and the Aurora functions share.
//
// Columns are taken a vector at a time and followed from row to row, so that the window of rows around the current one
// slides through registers and every value is loaded once.  The rows of a block are taken in slabs that stay in the
// first-level cache while statics, deltas and accelerations pass over them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <type_traits>

#include "core/scaling.h"
#include "core/simd/vec.h"
#include "core/simd/integers.h"
#include "kels/delta.h"

namespace kels {

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
    // Held to what `store` saturates, and rounded down.
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
    if (width < w) return body(PartBlock<A>{static_cast<std::size_t>(width)}, 0);
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

// ---- statics -------------------------------------------------------------------------------------------------------

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

// ---- derivatives ---------------------------------------------------------------------------------------------------

// Sum of k * (row[t + k] - row[t - k]) over k = 1 .. W, for rows t - W .. t + W.
template <int W, class V>
V regressionSum(const V (&row)[2 * W + 1]) {
    V sum = row[W + 1] - row[W - 1];
    for (int k = 2; k <= W; ++k) {
        sum += V(static_cast<typename V::value_type>(k)) * (row[W + k] - row[W - k]);
    }
    return sum;
}

// The derivative of a given order by regression over +-W rows.
template <int W, class A, class Multipliers>
struct Regression {
    template <class Block>
    auto forBlock(const Block& block, std::ptrdiff_t column) const {
        return [a = arithmetic, m = multipliers.load(block, order, column)](const auto& window) {
            return a.finish(regressionSum<W>(window) * m);
        };
    }

    A arithmetic;
    Multipliers multipliers;
    int order;
};

// One derivative of a stream: `width` columns at `out` computed by a rule from the columns at `in` of the same array,
// over windows of +-W rows whose missing rows are the nearest ones that exist.  It follows the statics `lag` rows
// behind until the stream ends.
template <int W, class A, class Rule>
class Derivative {
    using T = typename A::Element;
    using V = typename A::Value;

  public:
    // `history` rows stand in the array already; their last `lag` rows are still to be computed.
    Derivative(const T* in, T* out, int step, int width, std::ptrdiff_t history, std::ptrdiff_t lag, Rule rule)
        : in_(in),
          out_(out),
          step_(step),
          width_(width),
          lag_(lag),
          done_(std::max(history - lag, std::ptrdiff_t{0})),
          rule_(rule) {}

    // Computes what `rows` rows of statics allow; with `last` all of them.
    void advance(std::ptrdiff_t rows, bool last) {
        const std::ptrdiff_t end = last ? rows : rows - lag_;
        if (end <= done_) return;
        forEachBlock<A>(width_, [&](auto block, std::ptrdiff_t column) {
            slide(block, in_ + column, out_ + column, end, rows - 1, rule_.forBlock(block, column));
        });
        done_ = end;
    }

  private:
    template <class Block, class Value>
    void slide(Block block, const T* in, T* out, std::ptrdiff_t end, std::ptrdiff_t lastRow, Value value) const {
        V window[2 * W + 1];
        for (int k = 1; k <= 2 * W; ++k) {
            window[k] = block.load(in + std::clamp<std::ptrdiff_t>(done_ - W - 1 + k, 0, lastRow) * step_);
        }
        for (std::ptrdiff_t t = done_; t < end; ++t) {
            for (int k = 0; k < 2 * W; ++k) window[k] = window[k + 1];
            window[2 * W] = block.load(in + std::min(t + W, lastRow) * step_);
            block.store(out + t * step_, value(window));
        }
    }

    const T* in_;
    T* out_;
    std::ptrdiff_t step_;
    int width_;
    std::ptrdiff_t lag_;
    std::ptrdiff_t done_;
    Rule rule_;
};

// ---- streams -------------------------------------------------------------------------------------------------------

inline constexpr std::ptrdiff_t kSlabRows = 32;

// Takes in one block of a stream.  statics(from, to) writes rows from .. to - 1 of the output, of which `history` were
// there before the block.  Each derivative stands behind those that it reads.
template <class Statics, class... Derivatives>
void streamBlock(std::ptrdiff_t history, int height, bool last, Statics statics, Derivatives... derivatives) {
    const std::ptrdiff_t total = history + height;
    for (std::ptrdiff_t from = history; from < total;) {
        const std::ptrdiff_t to = std::min(from + kSlabRows, total);
        statics(from, to);
        (derivatives.advance(to, false), ...);
        from = to;
    }
    if (last) (derivatives.advance(total, true), ...);
}

// Deltas (Orders 1), or deltas and accelerations (Orders 2), over +-W rows.
template <int W, int Orders, class A, class Multipliers, class T = typename A::Element>
void streamDeltas(A arithmetic, const T* src, int width, T* dst, int step, int height, int mode,
                  Multipliers multipliers) {
    const std::ptrdiff_t history = (mode & kelDeltaBlockFirst) != 0 ? 0 : (Orders + 1) * W;
    const bool last = (mode & kelDeltaBlockLast) != 0;
    const auto statics = [&](std::ptrdiff_t from, std::ptrdiff_t to) {
        writeStatics(arithmetic, src + (from - history) * width, width, dst + from * step, step, width, to - from,
                     multipliers);
    };
    using Rule = Regression<W, A, Multipliers>;
    T* const deltas = dst + width;
    const Derivative<W, A, Rule> first(dst, deltas, step, width, history, W, Rule{arithmetic, multipliers, 1});
    if constexpr (Orders == 1) {
        streamBlock(history, height, last, statics, first);
    } else {
        const Derivative<W, A, Rule> second(deltas, deltas + width, step, width, history, 2 * W,
                                            Rule{arithmetic, multipliers, 2});
        streamBlock(history, height, last, statics, first, second);
    }
}

// ---- whole arrays --------------------------------------------------------------------------------------------------

// Statics times the multipliers of order 0, in place.
template <class A, class T = typename A::Element>
void multiplyStatics(A arithmetic, T* srcDst, std::ptrdiff_t height, int step, int width,
                     const ColumnMultipliers<T>& multipliers) {
    forEachDisjointBlock<A>(width, [&](auto block, std::ptrdiff_t column) {
        const auto multiplier = multipliers.load(block, 0, column);
        T* x = srcDst + column;
        for (std::ptrdiff_t t = 0; t < height; ++t, x += step)
            block.store(x, arithmetic.finish(block.load(x) * multiplier));
    });
}

// Deltas at the columns behind the `width` statics.  Near the start row 0 stands for every earlier row of the window,
// near the end the last row for every later one.
template <class A, class Multipliers, class T = typename A::Element>
void evalDeltas(A arithmetic, T* srcDst, int height, int rowStep, int width, int winHalf, Multipliers multipliers) {
    using V = typename A::Value;
    const std::ptrdiff_t step = rowStep;
    for (std::ptrdiff_t from = 0; from < height; from += kSlabRows) {
        const std::ptrdiff_t to = std::min<std::ptrdiff_t>(from + kSlabRows, height);
        forEachBlock<A>(width, [&](auto block, std::ptrdiff_t column) {
            const V multiplier = multipliers.load(block, 1, column);
            const T* const first = srcDst + column;
            const T* const last = first + (height - std::ptrdiff_t{1}) * step;
            for (std::ptrdiff_t t = from; t < to; ++t) {
                const std::ptrdiff_t back = t < winHalf ? 0 : step;
                const std::ptrdiff_t ahead = t >= height - winHalf ? 0 : step;
                const T* before = (back == 0 ? first : first + t * step) - back;
                const T* behind = (ahead == 0 ? last : first + t * step) + ahead;
                V sum = block.load(behind) - block.load(before);
                for (int k = 2; k <= winHalf; ++k) {
                    before -= back;
                    behind += ahead;
                    sum += V(static_cast<typename V::value_type>(k)) * (block.load(behind) - block.load(before));
                }
                block.store(srcDst + t * step + width + column, arithmetic.finish(sum * multiplier));
            }
        });
    }
}

}  // namespace kels
