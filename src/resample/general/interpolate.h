// Outputs at any times, for factors from 1 on.
//
// Each output takes two rows of the table, which is larger than the nearest caches.  So the outputs are computed in the
// order of their fractions: rows come one after the other, and outputs between the same ones share them.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "core/memory.h"
#include "core/simd/row_sums.h"
#include "core/simd/vec.h"
#include "resample/general/filter_rows.h"
#include "resample/general/filter_sum.h"
#include "resample/general/fraction_order.h"
#include "resample/general/output_times.h"
#include "resample/general/shared_rows.h"
#include "resample/sample_conversion.h"

namespace kels::resample::general {

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
        sums[k].add(inRegister(loadSamples(x[k] + i)), low, high);
    }
};

// put(n, sum) for n < count, without gain; the samples end at src + len.
template <class S, class Put>
void interpolate(const FilterRows rows, const OutputTimes& times, int64_t first, int count, const S* src, int len,
                 Put put) {
    const Kel64f base = std::floor(times.at(first));
    const Kel64f fraction = times.at(first) - base;
    const S* const origin = src + static_cast<std::ptrdiff_t>(base) - rows.half();
    const std::size_t span = rows.span(), tail = tailFrom(rows.half() + 4, span);

    const auto timeOf = [&](int n) { return fraction + n * times.step; };
    // The rows end in zeros, so that samples behind the reach do no harm; but behind src + len there are none.
    const auto room = [&](int n) { return static_cast<std::size_t>(src + len - origin - static_cast<int>(timeOf(n))); };
    int inside = count;
    while (inside > 0 && room(inside - 1) < span) --inside;

    const FractionOrder order(fraction, times.step, inside);
    int next = order.lowest();
    for (int i = 0; i < inside; i += 4) {
        int n[4], whole[4];
        Kel64f t[4];
        for (int& output : n) {
            output = next;  // behind the last one come the first ones again
            next = order.after(next);
        }
        for (int k = 0; k < 4; ++k) t[k] = timeOf(n[k]);
        FourPlaces places;
        rows.find(t, whole, places);
        withSteps(
            places, [&](auto... step) __attribute__((always_inline)) {
                FourInterpolations<S> four{{origin + whole[0], origin + whole[1], origin + whole[2], origin + whole[3]},
                                           {}};
                alongRows<step()...>(places, tail, span, four);
                alongRows<step()...>(places, 0, tail, four);
                Kel32f sums[4];
                sumsOf4(four.sums[0].sum(places.weight[0]), four.sums[1].sum(places.weight[1]),
                        four.sums[2].sum(places.weight[2]), four.sums[3].sum(places.weight[3]), sums);
                for (int k = 0; k < 4; ++k) put(n[k], sums[k]);
            });
    }
    for (int n = inside; n < count; ++n) {
        const Kel64f t = timeOf(n);
        const S* const x = origin + static_cast<int>(t);
        const auto place = rows.at(t - static_cast<int>(t));
        Interpolation output;
        addTailsFirst(x, std::min(span, room(n)), tail, [&](std::size_t i, const Vec<Kel32f>& samples) {
            output.add(samples, load(place.low + i), load(place.high + i));
        });
        put(n, totalOf(output.sum(place.weight)));
    }
}

}  // namespace kels::resample::general
