// Derivatives of a stream of feature vectors that comes in blocks.
//
// Columns are taken a vector at a time and followed from row to row, so that the window of rows around the current one
// slides through registers and every value is loaded once.  The rows of a block are taken in slabs that stay in the
// first-level cache while statics, deltas and accelerations pass over them.
#pragma once

#include <algorithm>
#include <cstddef>

#include "frontend/delta/columns.h"
#include "frontend/delta/statics.h"
#include "kels/delta.h"

namespace kels::delta {

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

}  // namespace kels::delta
