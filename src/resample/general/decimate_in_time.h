// Outputs at any times, for factors below 1: inputs are spread over the outputs around them, one after the other.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "core/memory.h"
#include "core/simd/vec.h"
#include "resample/general/filter_rows.h"
#include "resample/general/output_times.h"
#include "resample/sample_conversion.h"

namespace kels::resample::general {

// One input on the grid of the outputs: its two rows from the first output on, times its value.
struct SpreadInput {
    const Kel32f *low, *high;
    Kel32f lowWeight, highWeight;
};

inline constexpr int kMostInTime = 2048;  // outputs at once; many more than a filter has taps

// sums[n] += what the inputs give, begin <= n < end rounded up to whole vectors.
template <std::size_t... I>
[[gnu::always_inline]] inline void spread(std::index_sequence<I...>, bool together, const SpreadInput* inputs,
                                          Kel32f* sums, std::ptrdiff_t begin, std::ptrdiff_t end) {
    constexpr auto w = static_cast<std::ptrdiff_t>(lanes<Kel32f>);
    struct Wide {
        const Kel32f *low, *high;
        Vec<Kel32f> lowWeight, highWeight;

        [[gnu::always_inline]] Vec<Kel32f> add(std::ptrdiff_t n, const Vec<Kel32f>& sum) const {
            return mulAdd(highWeight, load(high + n), mulAdd(lowWeight, load(low + n), sum));
        }
    };
    const auto run = [=](const auto&... input) __attribute__((always_inline)) {
        if (together) {
            for (std::ptrdiff_t n = begin; n < end; n += w) {
                Vec<Kel32f> part(0);
                ((part = input.add(n, part)), ...);
                store(sums + n, Vec<Kel32f>(load(sums + n) + part));
            }
        } else {
            for (std::ptrdiff_t n = begin; n < end; n += w) {
                Vec<Kel32f> sum = load(sums + n);
                ((sum += input.add(n, Vec<Kel32f>(0))), ...);
                store(sums + n, sum);
            }
        }
    };
    run(Wide{inputs[I].low, inputs[I].high, Vec<Kel32f>(inputs[I].lowWeight), Vec<Kel32f>(inputs[I].highWeight)}...);
}

// The same for n inputs, 1 <= n <= FilterRows::kSpread.
inline void spreadFew(std::ptrdiff_t n, bool together, const SpreadInput* inputs, Kel32f* sums, std::ptrdiff_t begin,
                      std::ptrdiff_t end) {
    static_assert(FilterRows::kSpread == 4);
    switch (n) {
        case 1:
            return spread(std::make_index_sequence<1>(), together, inputs, sums, begin, end);
        case 2:
            return spread(std::make_index_sequence<2>(), together, inputs, sums, begin, end);
        case 3:
            return spread(std::make_index_sequence<3>(), together, inputs, sums, begin, end);
        default:
            return spread(std::make_index_sequence<4>(), together, inputs, sums, begin, end);
    }
}

// put(sums) with the sums of `count` outputs, at most kMostInTime, for factor < 1.
template <class S, class Put>
void decimateInTime(const FilterRows& rows, const OutputTimes& times, int64_t firstOutput, std::size_t count,
                    const S* src, int len, Put put) {
    constexpr auto w = static_cast<std::ptrdiff_t>(lanes<Kel32f>);
    constexpr std::ptrdiff_t most = FilterRows::kSpread;  // inputs at once
    const Kel64f base = std::floor(times.at(firstOutput));
    const Kel64f start = times.at(firstOutput) - base;
    const S* const x = src + static_cast<std::ptrdiff_t>(base);
    const Kel64f last = start + static_cast<Kel64f>(count - 1) * times.step;
    const auto outputs = static_cast<std::ptrdiff_t>(count);
    alignas(64) Kel32f sums[kMostInTime + lanes<Kel32f>];
    std::fill_n(sums, roundUp<std::size_t>(count, lanes<Kel32f>), 0.0f);

    auto j = static_cast<std::ptrdiff_t>(std::ceil(start - times.reach));
    const std::ptrdiff_t end = std::min(static_cast<std::ptrdiff_t>(std::floor(last + times.reach)) + 1,
                                        len - static_cast<std::ptrdiff_t>(base));
    const auto onGrid = [&](std::ptrdiff_t input) { return (static_cast<Kel64f>(input) - start) * times.factor; };

    // Where there are several inputs between two outputs, those are summed before they join the output: that rounds
    // less often.  They go by fours from the first one that lies there, also where that one is behind the start.
    const bool together = times.factor <= 0.5;
    auto k = static_cast<std::ptrdiff_t>(std::floor(onGrid(j)));
    const auto firstAfter = static_cast<std::ptrdiff_t>(std::ceil(start + static_cast<Kel64f>(k) * times.step));
    std::ptrdiff_t room = together ? most - (j - firstAfter) % most : most;
    while (j < end) {
        SpreadInput inputs[most]{};
        std::ptrdiff_t n = 0;
        std::ptrdiff_t first = 0;  // output that the first value of the rows belongs to
        for (; n < room && j < end; ++n, ++j) {
            const Kel64f u = onGrid(j);
            if (together && n > 0 && u >= static_cast<Kel64f>(k + 1)) break;
            while (u >= static_cast<Kel64f>(k + 1)) ++k;
            if (n == 0) first = k - rows.half();
            const auto place = rows.at(u - static_cast<Kel64f>(k));
            const auto sample = static_cast<Kel32f>(x[j]);
            const std::ptrdiff_t zero = k - rows.half();
            inputs[n] = {place.low - zero, place.high - zero, sample * (1 - place.weight), sample * place.weight};
        }
        room = most;
        const std::ptrdiff_t from = first <= 0 ? 0 : first / w * w;
        const std::ptrdiff_t to = std::min(k + rows.half() + 2, outputs);
        spreadFew(n, together, inputs, sums, from, to);
    }
    put(sums);
}

}  // namespace kels::resample::general
