// Outputs at any times, for factors below 1: inputs are spread over the outputs around them.
//
// Each input takes two rows of the table, which is larger than the nearest caches, so that the inputs are taken in the
// order of their rows.  They are summed in kParts parts of the table before those are added: partial sums are small,
// and rounded less.  An input's place on the grid of the outputs fixes its turn.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "core/memory.h"
#include "core/simd.h"
#include "resample/filter_rows.h"
#include "resample/fraction_order.h"
#include "resample/samples.h"

namespace kels {

// An input's share in the outputs.
struct InputShare {
    std::ptrdiff_t zero;  // output that the first value of the rows belongs to
    Kel32f lowWeight, highWeight;
};

// sums[n] += what an input gives there; `from` values of its rows belong to outputs before the first one.
inline void spread(const FilterRows::Place& place, const InputShare& share, std::ptrdiff_t from, std::ptrdiff_t to,
                   Kel32f* sums) {
    const Vec<Kel32f> lowWeight(share.lowWeight), highWeight(share.highWeight);
    for (std::ptrdiff_t i = from; i < to; i += static_cast<std::ptrdiff_t>(lanes<Kel32f>)) {
        Kel32f* const sum = sums + (share.zero + i);
        store(sum, mulAdd(highWeight, load(place.high + i), mulAdd(lowWeight, load(place.low + i), load(sum))));
    }
}
struct FourSpread {
    Kel32f* sums[4];
    Vec<Kel32f> lowWeight[4], highWeight[4];

    template <class K>
    [[gnu::always_inline]] void operator()(K k, std::size_t i, const Vec<Kel32f>& low, const Vec<Kel32f>& high) {
        Kel32f* const sum = sums[k] + i;
        store(sum, mulAdd(highWeight[k], high, mulAdd(lowWeight[k], low, load(sum))));
    }
};

constexpr std::size_t kMostOutputs = 4096;
constexpr std::ptrdiff_t kMargin = 512;

// As interpolate, for factor < 1.
template <class S, class Put>
[[gnu::noinline]] void decimate(const FilterRows rows, const ResampleTimes& times, int64_t firstOutput,
                                std::size_t count, const S* src, int len, Put put) {
    constexpr auto w = static_cast<std::ptrdiff_t>(lanes<Kel32f>);
    constexpr std::size_t kParts = 8;
    const Kel64f base = std::floor(times.at(firstOutput));
    const Kel64f start = times.at(firstOutput) - base;
    const S* const x = src + static_cast<std::ptrdiff_t>(base);
    const Kel64f last = start + static_cast<Kel64f>(count - 1) * times.step;
    const auto outputs = static_cast<std::ptrdiff_t>(count);
    const auto begin = static_cast<std::ptrdiff_t>(std::ceil(start - times.reach));
    const std::ptrdiff_t end = std::min(static_cast<std::ptrdiff_t>(std::floor(last + times.reach)) + 1,
                                        len - static_cast<std::ptrdiff_t>(base));
    const auto inputs = static_cast<std::size_t>(end - begin);

    alignas(64) Kel32f sums[kMostOutputs + lanes<Kel32f>];
    alignas(64) Kel32f part[kMostOutputs + 2 * kMargin];
    std::fill_n(part, roundUp(count, lanes<Kel32f>) + 2 * kMargin, 0.0f);
    std::fill_n(sums, roundUp(count, lanes<Kel32f>), 0.0f);

    const Kel64f beforeStart = static_cast<Kel64f>(begin) - start;
    const auto onGrid = [&](std::ptrdiff_t n) {
        return (static_cast<Kel64f>(static_cast<int>(n)) + beforeStart) * times.factor;
    };
    const Kel64f lowestK = std::floor(onGrid(0));
    const std::ptrdiff_t firstZero = static_cast<std::ptrdiff_t>(lowestK) - rows.half();
    const std::ptrdiff_t padded = roundUp(static_cast<std::ptrdiff_t>(rows.taps()), w);
    const FractionOrder order(onGrid(0) - lowestK, times.factor, static_cast<std::ptrdiff_t>(inputs));
    std::ptrdiff_t next = order.lowest();

    int parts = 1;
    const auto finishPart = [&] {
        for (std::ptrdiff_t n = 0; n < outputs; n += w) {
            store(sums + n, Vec<Kel32f>(load(sums + n) + load(part + kMargin + n)));
            store(part + kMargin + n, Vec<Kel32f>(0));
        }
        ++parts;
    };
    for (std::size_t i = 0; i < inputs; i += 4) {
        Kel64f u[4];
        Kel32f sample[4];
        for (std::size_t k = 0; k < 4; ++k) {
            u[k] = onGrid(next) - lowestK;
            sample[k] = i + k < inputs ? static_cast<Kel32f>(x[begin + next]) : 0.0f;
            next = order.after(next);
        }
        int whole[4];
        FourPlaces places;
        rows.find(u, whole, places);
        while (parts <= (u[0] - whole[0]) * kParts) finishPart();
        std::ptrdiff_t zero[4];
        Kel32f lowWeight[4], highWeight[4];
        std::ptrdiff_t from = padded, to = 0;
        for (int k = 0; k < 4; ++k) {
            lowWeight[k] = sample[k] * (1 - places.weight[k]);
            highWeight[k] = sample[k] * places.weight[k];
            zero[k] = firstZero + whole[k];
            from = std::min(from, -zero[k]);
            to = std::max(to, outputs - zero[k]);
        }
        from = from <= 0 ? 0 : from / w * w;
        to = std::min(to, padded);
        if (padded <= kMargin) {
            alongRows(
                places, static_cast<std::size_t>(from), static_cast<std::size_t>(to),
                [&] {
                    FourSpread four;
                    for (int k = 0; k < 4; ++k) {
                        four.sums[k] = part + kMargin + zero[k];
                        four.lowWeight[k] = Vec<Kel32f>(lowWeight[k]);
                        four.highWeight[k] = Vec<Kel32f>(highWeight[k]);
                    }
                    return four;
                },
                [](const FourSpread&) {});
        } else {
            for (int k = 0; k < 4; ++k)
                spread({places.low[k], places.high[k], 0}, {zero[k], lowWeight[k], highWeight[k]},
                       zero[k] >= 0 ? 0 : -zero[k] / w * w, std::min(padded, outputs - zero[k]), part + kMargin);
        }
    }
    finishPart();
    for (std::size_t n = 0; n < count; ++n) put(n, sums[n]);
}

}  // namespace kels
