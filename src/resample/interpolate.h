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
void interpolate(const FilterRows& rows, const ResampleTimes& times, int64_t first, std::size_t count, const S* src,
                 int len, Put put) {
    constexpr std::size_t w = lanes<Kel32f>;
    const Kel64f base = std::floor(times.at(first));
    const Kel64f fraction = times.at(first) - base;
    const S* const origin = src + static_cast<std::ptrdiff_t>(base) - rows.half();
    const std::size_t padded = roundUp(rows.taps(), w);

    struct Output {
        const S* x;
        FilterRows::Place place;
    };
    const auto at = [&](std::size_t n) __attribute__((always_inline)) {
        const Kel64f offset = fraction + static_cast<Kel64f>(static_cast<int>(n)) * times.step;
        const int whole = static_cast<int>(offset);
        return Output{origin + whole, rows.at(offset - whole)};
    };
    // The rows end in zeros, so that samples behind the reach do no harm; but behind src + len there are none.
    std::size_t inside = count;
    while (inside > 0 && static_cast<std::size_t>(src + len - at(inside - 1).x) < padded) --inside;

    const FractionOrder order(fraction, times.step, inside);
    std::size_t next = order.lowest();
    for (std::size_t i = 0; i < inside; i += 4) {
        std::size_t n[4];
        const S* x[4];
        FilterRows::Place places[4];
        for (std::size_t k = 0; k < 4; ++k) {
            n[k] = next;  // behind the last one come the first ones again
            const Output output = at(next);
            x[k] = output.x;
            places[k] = output.place;
            next = order.after(next);
        }
        alongRows(
            places, 0, padded,
            [&] {
                return FourInterpolations<S>{{x[0], x[1], x[2], x[3]}, {}};
            },
            [&](const FourInterpolations<S>& four) {
                Kel32f sums[4];
                sumsOf4(four.sums[0].sum(places[0].weight), four.sums[1].sum(places[1].weight),
                        four.sums[2].sum(places[2].weight), four.sums[3].sum(places[3].weight), sums);
                for (std::size_t k = 0; k < 4; ++k) put(n[k], sums[k]);
            });
    }
    for (std::size_t n = inside; n < count; ++n) {
        const auto output = at(n);
        Interpolation a;
        const auto add = [&](std::size_t i, const Vec<Kel32f>& samples) {
            a.add(samples, load(output.place.low + i), load(output.place.high + i));
        };
        const std::size_t room = std::min(padded, static_cast<std::size_t>(src + len - output.x));
        std::size_t i = 0;
        for (; i + w <= room; i += w) add(i, loadSamples(output.x + i));
        if (i < room) add(i, loadSamples(output.x + i, room - i));
        const auto sum = a.sum(output.place.weight);
        Kel32f four[4];
        sumsOf4(sum, sum, sum, sum, four);
        put(n, four[0]);
    }
}

}  // namespace kels
