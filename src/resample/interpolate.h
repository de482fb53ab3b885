// Outputs at any times, for factors from 1 on.
//
// Each output takes two rows of the table, which is larger than the nearest caches.  So the outputs are computed in the
// order of their rows: those of the same rows load them together, and the next ones find the second row at hand.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "core/memory.h"
#include "core/simd.h"
#include "core/simd_rows.h"
#include "resample/filter_rows.h"
#include "resample/fraction_order.h"
#include "resample/samples.h"

namespace kels {

// The two sums of an output.
struct Interpolation {
    Vec<Kel32f> low{0}, high{0};

    [[gnu::always_inline]] void add(const Vec<Kel32f>& samples, const Vec<Kel32f>& lowTaps,
                                    const Vec<Kel32f>& highTaps) {
        low = mulAdd(samples, lowTaps, low);
        high = mulAdd(samples, highTaps, high);
    }
    Vec<Kel32f> sum(Kel32f weight) const {
        return mulAdd(high, Vec<Kel32f>(weight), Vec<Kel32f>(low * Vec<Kel32f>(1 - weight)));
    }
};
template <class S>
struct FourInterpolations {
    const S* x[4];
    Interpolation sums[4];

    template <class K>
    [[gnu::always_inline]] void operator()(K k, std::size_t i, const Vec<Kel32f>& low, const Vec<Kel32f>& high) {
        sums[k].add(held(loadSamples(x[k] + i)), low, high);
    }
};

// put(n, sum) for n < count, without gain; the samples end at src + len.
template <class S, class Put>
void interpolate(const FilterRows rows, const ResampleTimes& times, int64_t first, std::size_t count, const S* src,
                 int len, Put put) {
    constexpr std::size_t w = lanes<Kel32f>;
    const Kel64f base = std::floor(times.at(first));
    const Kel64f fraction = times.at(first) - base;
    const S* const origin = src + static_cast<std::ptrdiff_t>(base) - rows.half();
    const std::size_t padded = roundUp(rows.taps(), w);

    const auto timeOf = [&](std::size_t n) { return fraction + static_cast<Kel64f>(static_cast<int>(n)) * times.step; };
    // The rows end in zeros, so that samples behind the reach do no harm; but behind src + len there are none.
    const auto room = [&](std::size_t n) {
        return static_cast<std::size_t>(src + len - origin - static_cast<int>(timeOf(n)));
    };
    std::size_t inside = count;
    while (inside > 0 && room(inside - 1) < padded) --inside;

    const FractionOrder order(fraction, times.step, static_cast<std::ptrdiff_t>(inside));
    std::ptrdiff_t next = order.lowest();
    for (std::size_t i = 0; i < inside; i += 4) {
        std::size_t n[4];
        for (std::size_t& output : n) {
            output = static_cast<std::size_t>(next);  // behind the last one come the first ones again
            next = order.after(next);
        }
        const Kel64f t[4] = {timeOf(n[0]), timeOf(n[1]), timeOf(n[2]), timeOf(n[3])};
        int whole[4];
        FourPlaces places;
        rows.find(t, whole, places);
        alongRows(
            places, 0, padded,
            [&] {
                return FourInterpolations<S>{
                    {origin + whole[0], origin + whole[1], origin + whole[2], origin + whole[3]}, {}};
            },
            [&](const FourInterpolations<S>& four) {
                Kel32f sums[4];
                sumsOf4(four.sums[0].sum(places.weight[0]), four.sums[1].sum(places.weight[1]),
                        four.sums[2].sum(places.weight[2]), four.sums[3].sum(places.weight[3]), sums);
                for (std::size_t k = 0; k < 4; ++k) put(n[k], sums[k]);
            });
    }
    for (std::size_t n = inside; n < count; ++n) {
        const Kel64f t = timeOf(n);
        const S* const x = origin + static_cast<int>(t);
        const auto place = rows.at(t - static_cast<int>(t));
        Interpolation a;
        const auto add = [&](std::size_t i, const Vec<Kel32f>& samples) {
            a.add(samples, load(place.low + i), load(place.high + i));
        };
        const std::size_t end = std::min(padded, room(n));
        std::size_t i = 0;
        for (; i + w <= end; i += w) add(i, loadSamples(x + i));
        if (i < end) add(i, loadSamples(x + i, end - i));
        const auto sum = a.sum(place.weight);
        Kel32f four[4];
        sumsOf4(sum, sum, sum, sum, four);
        put(n, four[0]);
    }
}

}  // namespace kels
