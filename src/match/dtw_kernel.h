// Dynamic time warping of two sequences of vectors.  The longer sequence is walked row by row; of the costs only the
// previous and the current row are kept.  Almost all the time goes into local distances, so the shorter sequence is
// turned over first: with one component of many rows side by side, a vector register holds that many distances, and
// no sum over its lanes and no tail over the width remains.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>

#include "core/memory.h"
#include "core/simd/transpose.h"
#include "core/simd/vec.h"

namespace kels::dtw {

// The cost of what no path reaches.  Costs that overflow, or are not a number, count as it.
inline constexpr Kel32f kUnreachable = std::numeric_limits<Kel32f>::max();

// The inner indices lo..hi, both included, that paths may visit in one outer row.
struct InnerSpan {
    int64_t lo, hi;

    bool empty() const { return hi < lo; }
};

inline InnerSpan intersection(const InnerSpan& a, const InnerSpan& b) {
    return {std::max(a.lo, b.lo), std::min(a.hi, b.hi)};
}

// The parallelogram that steps of at most two inner rows leave open, `delta` wide at both ends.
class Band {
  public:
    Band(int64_t outerRows, int64_t innerRows, int delta)
        : last_(innerRows - 1), reach_(std::min<int64_t>(delta, last_)), lag_(reach_ + 2 * outerRows - last_) {}

    InnerSpan at(int64_t outerRow) const {
        return {std::max<int64_t>(0, 2 * outerRow - lag_), std::min(reach_ + 2 * outerRow, last_)};
    }

  private:
    int64_t last_, reach_, lag_;
};

// The inner sequence with one component of consecutive rows side by side: component k of row j at data[k * stride + j].
struct TransposedRows {
    const Kel32f* data;
    std::size_t stride;

    // Room for a vector that starts at the last row, and an odd number of cache lines, so that the components of a row
    // do not compete for the same few places of the cache.
    static int64_t strideOf(int64_t rows) { return roundUp<int64_t>(rows + 15, 16) | 16; }
    static int64_t size(int64_t rows, int64_t width) { return strideOf(rows) * width; }
};
static_assert(lanes<Kel32f> <= 16);

// Fills `data`, of TransposedRows::size(height, width) elements.
template <class Rows>
TransposedRows transpose(const Rows& rows, std::size_t height, std::size_t width, Kel32f* data) {
    const auto stride = static_cast<std::size_t>(TransposedRows::strideOf(static_cast<int64_t>(height)));
    transpose(rows, height, width, data, stride);
    for (std::size_t k = 0; k < width; ++k) std::fill(data + k * stride + height, data + (k + 1) * stride, 0.0f);
    return {data, stride};
}

// One outer row against the inner rows of a span; all pointers stand at the first index of the span.
struct OuterStep {
    static constexpr std::size_t w = lanes<Kel32f>;

    const Kel32f* row;
    std::size_t width;
    const Kel32f* inner;
    std::size_t stride;
    const Kel32f* before;  // costs of the previous outer row; two places in front of the span belong to it
    Kel32f* now;           // costs to be stored, in whole vectors

    // The vectors of cells number P... from the span's cell `at` on, with all their sums in registers; gives `least`
    // lowered to their smallest costs.
    template <std::size_t... P>
    Vec<Kel32f> cells(std::size_t at, std::size_t count, Vec<Kel32f> least, std::index_sequence<P...>) const {
        Vec<Kel32f> even[] = {Vec<Kel32f>((void(P), 0.0f))...};
        Vec<Kel32f> odd[] = {Vec<Kel32f>((void(P), 0.0f))...};
        const auto addSquares = [&](std::size_t k, auto& sums) {
            const Vec<Kel32f> component(row[k]);
            const Kel32f* const column = inner + k * stride + at;
            ((sums[P] = plusSquare(sums[P], load(column + P * w) - component)), ...);
        };
        // Two sums a vector halve the latency that a short span waits for.
        std::size_t k = 0;
        for (; k + 2 <= width; k += 2) {
            addSquares(k, even);
            addSquares(k + 1, odd);
        }
        if (k < width) addSquares(k, even);
        ((least = finish(at + P * w, count, even[P] + odd[P], least)), ...);
        return least;
    }

    static Vec<Kel32f> plusSquare(const Vec<Kel32f>& sum, const Vec<Kel32f>& difference) {
        return mulAdd(difference, difference, sum);
    }

    // Stores the costs of the vector of cells from j on, whose distances have the given squares.  Lanes behind the last
    // cell of the span become unreachable.
    Vec<Kel32f> finish(std::size_t j, std::size_t count, const Vec<Kel32f>& squares, const Vec<Kel32f>& least) const {
        const Kel32f* const from = before + j;
        const Vec<Kel32f> reached = lesserOf(load(from), lesserOf(load(from - 1), load(from - 2)));
        Vec<Kel32f> cost = lesserOf(stdx::sqrt(squares) + reached, Vec<Kel32f>(kUnreachable));
        if (j + w > count) {
            const Vec<Kel32f> lane([](auto i) { return static_cast<Kel32f>(i); });
            stdx::where(lane >= static_cast<Kel32f>(static_cast<int>(count - j)), cost) = kUnreachable;
        }
        store(now + j, cost);
        return lesserOf(cost, least);
    }

    // The smallest cost of `count` cells.
    Kel32f run(std::size_t count) const {
        Vec<Kel32f> least(kUnreachable);
        std::size_t at = 0;
        for (; at + 3 * w < count; at += 4 * w) least = cells(at, count, least, std::make_index_sequence<4>());
        if (at + 2 * w < count) {
            least = cells(at, count, least, std::make_index_sequence<3>());
        } else if (at + w < count) {
            least = cells(at, count, least, std::make_index_sequence<2>());
        } else if (at < count) {
            least = cells(at, count, least, std::make_index_sequence<1>());
        }
        return stdx::hmin(least);
    }
};

// Two rows of costs: before an inner index 0 stand the two places that its predecessors would have, behind the last one
// those of the next two indices and of a vector that overhangs.
inline constexpr int64_t kCostLead = 2;
inline constexpr int64_t kCostTrail = 16;
constexpr int64_t costRowSize(int64_t innerRows) {
    return kCostLead + innerRows + kCostTrail;
}

// The smallest accumulated cost over the last outer row, or kUnreachable.  `costs` holds two rows of
// costRowSize(innerRows).
template <class Rows>
Kel32f warp(const Rows& outer, int64_t outerRows, const TransposedRows& inner, int64_t innerRows, std::size_t width,
            int delta, Kel32f beam, Kel32f* costs) {
    constexpr Kel32f slack = std::numeric_limits<Kel32f>::epsilon();
    const Kel32f allowance = beam > 0 ? beam : 0;
    const Band band(outerRows, innerRows, delta);
    Kel32f* before = costs + kCostLead;
    Kel32f* now = before + costRowSize(innerRows);
    std::fill(costs, costs + 2 * costRowSize(innerRows), 0.0f);  // a path begins anywhere in the first span, at no cost

    InnerSpan span = band.at(0);
    if (span.empty()) return kUnreachable;
    for (int64_t i = 0;;) {
        const OuterStep step = {outer[static_cast<std::ptrdiff_t>(i)],
                                width,
                                inner.data + span.lo,
                                inner.stride,
                                before + span.lo,
                                now + span.lo};
        const Kel32f least = step.run(static_cast<std::size_t>(span.hi - span.lo + 1));
        if (least >= kUnreachable) return kUnreachable;
        if (++i == outerRows) return least;

        // The cell of the least cost itself lies within the bound and ends both loops.
        const Kel32f bound = least + slack + allowance;
        while (now[span.hi] > bound) --span.hi;
        while (now[span.lo] > bound) ++span.lo;
        for (const int64_t outside : {span.lo - 2, span.lo - 1, span.hi + 1, span.hi + 2}) now[outside] = kUnreachable;
        span = intersection({span.lo, span.hi + 2}, band.at(i));
        std::swap(before, now);
    }
}

}  // namespace kels::dtw
