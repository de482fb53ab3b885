// Outputs at any times, for factors below 1: inputs are spread over the outputs around them.
//
// As when interpolating, the inputs come in the order of their fractions, here of their times on the grid of the
// outputs.  An output's sum is the same however many others there are, for its inputs always come in that order.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "core/memory.h"
#include "core/simd.h"
#include "resample/filter_rows.h"
#include "resample/four_places.h"
#include "resample/fraction_order.h"
#include "resample/samples.h"

namespace kels {

constexpr int kMostSpread = 4096;        // outputs at once
constexpr std::ptrdiff_t kMargin = 512;  // places on both sides of their sums

struct FourInputs {
    Kel32f* sums[4];  // that the first values of the rows belong to
    Vec<Kel32f> lowWeight[4], highWeight[4];

    template <class K>
    [[gnu::always_inline]] void operator()(K k, std::size_t i, const Vec<Kel32f>& low, const Vec<Kel32f>& high) {
        Kel32f* const sum = sums[k] + i;
        store(sum, mulAdd(highWeight[k], high, mulAdd(lowWeight[k], low, load(sum))));
    }
};

// put(sums) with the sums of `count` outputs, at most kMostSpread, for factor < 1.
template <class S, class Put>
void decimate(const FilterRows rows, const ResampleTimes& times, int64_t firstOutput, int count, const S* src, int len,
              Put put) {
    constexpr auto w = static_cast<std::ptrdiff_t>(lanes<Kel32f>);
    const Kel64f base = std::floor(times.at(firstOutput));
    const Kel64f start = times.at(firstOutput) - base;
    const Kel64f latest = start + (count - 1) * times.step + times.reach;
    const auto begin = static_cast<std::ptrdiff_t>(std::ceil(start - times.reach));
    const std::ptrdiff_t end =
        std::min(static_cast<std::ptrdiff_t>(std::floor(latest)) + 1, len - static_cast<std::ptrdiff_t>(base));
    const S* const x = src + static_cast<std::ptrdiff_t>(base) + begin;
    const auto inputs = static_cast<int>(end - begin);

    // Times of inputs on the grid of the outputs, from `origin` on.
    const Kel64f beforeStart = static_cast<Kel64f>(begin) - start;
    const Kel64f origin = std::floor(beforeStart * times.factor);
    const auto timeOf = [&](int n) { return (n + beforeStart) * times.factor - origin; };
    const std::ptrdiff_t firstZero = static_cast<std::ptrdiff_t>(origin) - rows.half();

    const auto span = static_cast<std::ptrdiff_t>(rows.span());
    const bool longRows = span > kMargin;
    const std::ptrdiff_t lobe = std::max<std::ptrdiff_t>(rows.half() - 4, 0) / w * w;
    const std::ptrdiff_t lobeEnd = std::min(lobe + std::max<std::ptrdiff_t>(16, w), span);
    // What the lobe of the filter gives is kept apart: where the other sums are small, so is their rounding.
    struct {
        alignas(64) Kel32f rest[kMargin + kMostSpread + kMargin], lobe[kMargin + kMostSpread + kMargin];
    } sums;
    std::fill_n(sums.rest + kMargin, count, 0.0f);
    std::fill_n(sums.lobe + kMargin, count, 0.0f);

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
        std::ptrdiff_t zero[4];              // outputs that the first values of the rows belong to
        std::ptrdiff_t from = span, to = 0;  // the part of the rows that belongs to outputs
        for (int k = 0; k < 4; ++k) {
            zero[k] = firstZero + whole[k];
            from = std::min(from, -zero[k]);
            to = std::max(to, count - zero[k]);
        }
        from = std::max<std::ptrdiff_t>(from, 0) / w * w;
        to = std::min(to, span);
        withSteps(
            places, [&](auto... step) __attribute__((always_inline)) {
                FourInputs four;
                for (int k = 0; k < 4; ++k) {
                    four.lowWeight[k] = Vec<Kel32f>(sample[k] * (1 - places.weight[k]));
                    four.highWeight[k] = Vec<Kel32f>(sample[k] * places.weight[k]);
                }
                // The values of the rows from `first` up to `last`, which are kMargin at the most.
                const auto add = [&](Kel32f * part, std::ptrdiff_t first, std::ptrdiff_t last)
                    __attribute__((always_inline)) {
                    for (int k = 0; k < 4; ++k) {
                        std::ptrdiff_t output = zero[k] + first;
                        if (longRows) output = std::clamp<std::ptrdiff_t>(output, -kMargin, count);
                        four.sums[k] = part + (kMargin + output - first);
                    }
                    alongRows<step()...>(places, static_cast<std::size_t>(first), static_cast<std::size_t>(last), four);
                };
                add(sums.lobe, lobe, lobeEnd);
                for (std::ptrdiff_t first = from; first < to; first += kMargin) {
                    const std::ptrdiff_t last = std::min(first + kMargin, to);
                    add(sums.rest, first, std::min(lobe, last));
                    add(sums.rest, std::max(lobeEnd, first), last);
                }
            });
    }
    for (std::ptrdiff_t n = kMargin; n < kMargin + count; n += w)
        store(sums.rest + n, Vec<Kel32f>(load(sums.rest + n) + load(sums.lobe + n)));
    put(sums.rest + kMargin);
}

}  // namespace kels
