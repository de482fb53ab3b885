// Sums along filters whose values are large in the middle: the last part first, then from the beginning up to there.
// While the sum is small, so is its rounding.
#pragma once

#include <algorithm>
#include <cstddef>

#include "core/memory.h"
#include "core/simd/row_sums.h"
#include "core/simd/vec.h"
#include "resample/sample_conversion.h"

namespace kels::resample::general {

// Where the part that comes first begins, of a filter of whole vectors up to `span`, whose lobe ends at `lobe`.
inline std::size_t tailFrom(std::ptrdiff_t lobe, std::size_t span) {
    return std::min(roundUp(static_cast<std::size_t>(lobe), lanes<Kel32f>), span);
}

// add(i, samples) for every vector of x[0..count - 1], the last one filled up with zeros.
template <class S, class Add>
void addTailsFirst(const S* x, std::size_t count, std::size_t tail, Add add) {
    constexpr std::size_t w = lanes<Kel32f>;
    const auto run = [&](std::size_t begin, std::size_t end) {
        std::size_t i = begin;
        for (; i + w <= end; i += w) add(i, loadSamples(x + i));
        if (i < end) add(i, loadSamples(x + i, end - i));
    };
    run(tail, count);
    run(0, std::min(tail, count));
}

inline Kel32f totalOf(const Vec<Kel32f>& sum) {
    Kel32f four[4];
    sumsOf4(sum, sum, sum, sum, four);  // in the order of sums that come in fours
    return four[0];
}

}  // namespace kels::resample::general
