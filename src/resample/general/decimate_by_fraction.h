// Outputs at any times, for factors below 1: inputs are spread over the outputs around them.
//
// As when interpolating, the inputs come in the order of their fractions, here of their times on the grid of the
// outputs.  An output's sum is the same however many others there are, for its inputs always come in that order.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "core/memory.h"
#include "core/simd/vec.h"
#include "resample/general/filter_rows.h"
#include "resample/general/shared_rows.h"
#include "resample/general/fraction_order.h"
#include "resample/sample_conversion.h"

namespace kels {

inline constexpr int kMostSpread = 4096;           // outputs at once
inline constexpr std::ptrdiff_t kSumMargin = 512;  // places on both sides of their sums

// What an input gives to one vector of sums.
[[gnu::always_inline]] inline void spread(const Vec<Kel32f>& lowWeight, const Vec<Kel32f>& low,
                                          const Vec<Kel32f>& highWeight, const Vec<Kel32f>& high, Kel32f* sums) {
    store(sums, mulAdd(highWeight, high, mulAdd(lowWeight, low, load(sums))));
}
struct FourInputs {
    Kel32f* sums[4];  // that the first values of the rows belong to
    Vec<Kel32f> lowWeight[4], highWeight[4];

    template <class K>
    [[gnu::always_inline]] void operator()(K k, std::size_t i, const Vec<Kel32f>& low, const Vec<Kel32f>& high) {
        spread(lowWeight[k], low, highWeight[k], high, sums[k] + i);
    }
};

// Whether that is the faster way: not for few outputs, and not where neighbours in that order are close.  For the
// processor waits where a vector of sums overlaps with one that was stored just before.
inline bool worthOrdering(const ResampleTimes& times, int count) {
    const Kel64f inputs = count * times.step + 2 * times.reach;
    if (count < 1024 || inputs > 1 << 20) return false;
    return FractionOrder(0, times.factor, static_cast<int>(inputs)).leastStep() * times.factor >= 64;
}

// put(sums) with the sums of `count` outputs, at most kMostSpread, for factor < 1.
template <class S, class Put>
void decimate(const FilterRows rows, const ResampleTimes& times, int64_t firstOutput, int count, const S* src, int len,
              Put put) {
    constexpr auto w = static_cast<std::ptrdiff_t>(lanes<Kel32f>);
    const Kel64f base = std::floor(times.at(firstOutput));
    const Kel64f start = times.at(firstOutput) - base;
    const Kel64f latest = start + (count - 1) * times.step + times.reach;
    const auto oldest = static_cast<std::ptrdiff_t>(std::ceil(start - times.reach));
    const auto newest =
        std::min(static_cast<std::ptrdiff_t>(std::floor(latest)), len - 1 - static_cast<std::ptrdiff_t>(base));
    const S* const x = src + static_cast<std::ptrdiff_t>(base) + oldest;
    const auto inputs = static_cast<int>(newest - oldest + 1);

    // Times of inputs on the grid of the outputs, from `origin` on.
    const Kel64f beforeStart = static_cast<Kel64f>(oldest) - start;
    const Kel64f origin = std::floor(beforeStart * times.factor);
    const auto timeOf = [&](int n) { return (n + beforeStart) * times.factor - origin; };
    const std::ptrdiff_t firstZero = static_cast<std::ptrdiff_t>(origin) - rows.half();

    const auto span = static_cast<std::ptrdiff_t>(rows.span());
    const std::ptrdiff_t lobe = std::max<std::ptrdiff_t>(rows.half() - 4, 0) / w * w;
    const std::ptrdiff_t lobeEnd = std::min(lobe + std::max<std::ptrdiff_t>(16, w), span);
    // What the lobe of the filter gives is kept apart: where the other sums are small, so is their rounding.
    struct {
        alignas(64) Kel32f rest[kSumMargin + kMostSpread + kSumMargin], lobe[kSumMargin + kMostSpread + kSumMargin];
    } sums;
    std::fill_n(sums.rest, kSumMargin + count + kSumMargin, 0.0f);
    std::fill_n(sums.lobe, kSumMargin + count + kSumMargin, 0.0f);

    const FractionOrder order(timeOf(0), times.factor, inputs);
    int next = order.lowest();
    for (int i = 0; i < inputs; i += 4) {
        int whole[4];
        Kel64f t[4];
        Kel32f sample[4];
        for (int k = 0; k < 4; ++k) {
            t[k] = timeOf(next);
            sample[k] = i + k < inputs ? static_cast<Kel32f>(x[next]) : 0.0f;
            next = order.after(next);
        }
        FourPlaces places;
        rows.find(t, whole, places);
        std::ptrdiff_t zero[4];  // outputs that the first values of the rows belong to
        Kel32f lowWeight[4], highWeight[4];
        std::ptrdiff_t from = span, to = 0;  // the part of the rows that belongs to outputs
        for (int k = 0; k < 4; ++k) {
            zero[k] = firstZero + whole[k];
            lowWeight[k] = sample[k] * (1 - places.weight[k]);
            highWeight[k] = sample[k] * places.weight[k];
            from = std::min(from, -zero[k]);
            to = std::max(to, count - zero[k]);
        }
        // Calls part(sums, begin, end) for the parts of the rows that are added to each of the sums.
        const auto inParts = [&](std::ptrdiff_t first, std::ptrdiff_t last, auto part) __attribute__((always_inline)) {
            first = std::max<std::ptrdiff_t>(first, 0) / w * w;
            last = std::min(last, span);
            part(sums.rest + kSumMargin, first, std::min(last, lobe));
            part(sums.lobe + kSumMargin, std::max(first, lobe), std::min(last, lobeEnd));
            part(sums.rest + kSumMargin, std::max(first, lobeEnd), last);
        };
        if (span > kSumMargin) {
            for (int k = 0; k < 4; ++k)
                inParts(-zero[k], count - zero[k], [&](Kel32f* part, std::ptrdiff_t begin, std::ptrdiff_t end) {
                    for (std::ptrdiff_t n = begin; n < end; n += w)
                        spread(lowWeight[k], load(places.low[k] + n), highWeight[k], load(places.high[k] + n),
                               part + zero[k] + n);
                });
            continue;
        }
        withSteps(
            places, [&](auto... step) __attribute__((always_inline)) {
                FourInputs four;
                for (int k = 0; k < 4; ++k) {
                    four.lowWeight[k] = Vec<Kel32f>(lowWeight[k]);
                    four.highWeight[k] = Vec<Kel32f>(highWeight[k]);
                }
                inParts(
                    from,
                    to, [&](Kel32f * part, std::ptrdiff_t begin, std::ptrdiff_t end) __attribute__((always_inline)) {
                        for (int k = 0; k < 4; ++k) four.sums[k] = part + zero[k];
                        alongRows<step()...>(places, static_cast<std::size_t>(begin), static_cast<std::size_t>(end),
                                             four);
                    });
            });
    }
    for (std::ptrdiff_t n = kSumMargin; n < kSumMargin + count; n += w)
        store(sums.rest + n, Vec<Kel32f>(load(sums.rest + n) + load(sums.lobe + n)));
    put(sums.rest + kSumMargin);
}

}  // namespace kels
