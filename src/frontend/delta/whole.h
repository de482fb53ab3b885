// Deltas of a whole array at once, in place.
#pragma once

#include <algorithm>
#include <cstddef>

#include "frontend/delta/columns.h"

namespace kels::delta {

// Sum of k (x[t + k] - x[t - k]) over k = 1 .. winHalf, where x is the column at `first`.  Of the first winHalf rows
// every earlier row is row 0, of the last winHalf rows every later one is the last row.
template <class V, class Block, class T>
V wholeArraySum(const Block& block, const T* first, std::ptrdiff_t t, std::ptrdiff_t height, std::ptrdiff_t step,
                int winHalf) {
    const T* const last = first + (height - 1) * step;
    const std::ptrdiff_t back = t < winHalf ? 0 : step;
    const std::ptrdiff_t ahead = t >= height - winHalf ? 0 : step;
    const T* earlier = (back == 0 ? first : first + t * step) - back;
    const T* later = (ahead == 0 ? last : first + t * step) + ahead;
    V sum = block.load(later) - block.load(earlier);
    for (int k = 2; k <= winHalf; ++k) {
        earlier -= back;
        later += ahead;
        sum += V(static_cast<typename V::value_type>(k)) * (block.load(later) - block.load(earlier));
    }
    return sum;
}

// Deltas at the columns behind the `width` statics.
template <class A, class Multipliers, class T = typename A::Element>
void evalDeltas(A arithmetic, T* srcDst, int height, int rowStep, int width, int winHalf, Multipliers multipliers) {
    using V = typename A::Value;
    const std::ptrdiff_t step = rowStep;
    for (std::ptrdiff_t from = 0; from < height; from += kSlabRows) {
        const std::ptrdiff_t to = std::min<std::ptrdiff_t>(from + kSlabRows, height);
        forEachBlock<A>(width, [&](auto block, std::ptrdiff_t column) {
            const V multiplier = multipliers.load(block, 1, column);
            T* const first = srcDst + column;
            for (std::ptrdiff_t t = from; t < to; ++t) {
                const V sum = wholeArraySum<V>(block, first, t, height, step, winHalf);
                block.store(first + t * step + width, arithmetic.finish(sum * multiplier));
            }
        });
    }
}

}  // namespace kels::delta
