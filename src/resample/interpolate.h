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
#include "resample/by_key.h"
#include "resample/filter_rows.h"
#include "resample/samples.h"

namespace kels {

// One output between two rows: its samples, and the two sums.
template <class S>
struct Interpolation {
    const S* x;
    Kel32f weight;  // of the second row
    Vec<Kel32f> low{0}, high{0};

    [[gnu::always_inline]] void add(const Vec<Kel32f>& samples, const Vec<Kel32f>& lowTap, const Vec<Kel32f>& highTap) {
        const auto once = held(samples);
        low = mulAdd(once, lowTap, low);
        high = mulAdd(once, highTap, high);
    }
    Vec<Kel32f> sum() const { return mulAdd(high, Vec<Kel32f>(weight), Vec<Kel32f>(low * Vec<Kel32f>(1 - weight))); }
};

// The sums of outputs of the same rows; x has `span` samples.
template <std::size_t... I, class S>
[[gnu::always_inline]] inline void interpolateTogether(std::index_sequence<I...>, const Kel32f* low, const Kel32f* high,
                                                       std::size_t span, const S* const* x, const Kel32f* weights,
                                                       Kel32f* four) {
    const auto run = [=](auto... output) __attribute__((always_inline)) {
        for (std::size_t i = 0; i < span; i += lanes<Kel32f>) {
            const auto lowTap = held(load(low + i)), highTap = held(load(high + i));
            (output.add(loadSamples(output.x + i), lowTap, highTap), ...);
        }
        const Vec<Kel32f> sums[] = {output.sum()...};
        constexpr std::size_t last = sizeof...(I) - 1;
        sumsOf4(sums[0], sums[std::min<std::size_t>(1, last)], sums[std::min<std::size_t>(2, last)], sums[last], four);
    };
    run(Interpolation<S>{x[I], weights[I]}...);
}

// sums[n], n < count, without gain; the samples end at src + len.
template <class S>
[[gnu::noinline]] void interpolate(const FilterRows& rows, const ResampleTimes& times, int64_t first, std::size_t count,
                                   const S* src, int len, Kel32f* sums) {
    constexpr std::size_t w = lanes<Kel32f>;
    const Kel64f base = std::floor(times.at(first));
    const Kel64f fraction = times.at(first) - base;
    const S* const origin = src + static_cast<std::ptrdiff_t>(base) - rows.half();
    const std::size_t padded = roundUp(rows.taps(), w);

    const auto timeOf = [&](std::size_t n) { return fraction + static_cast<Kel64f>(n) * times.step; };
    struct Output {
        const S* x;
        FilterRows::Place place;
        bool likeThat(const Output& o) const { return place.low == o.place.low && place.high == o.place.high; }
    };
    const auto at = [&](std::size_t n) __attribute__((always_inline)) {
        const Kel64f offset = timeOf(n);
        const int whole = static_cast<int>(offset);
        return Output{origin + whole, rows.at(offset - whole)};
    };
    // The rows end in zeros, so that samples behind the reach do no harm; but behind src + len there are none.
    std::size_t inside = count;
    while (inside > 0 && static_cast<std::size_t>(src + len - at(inside - 1).x) < padded) --inside;

    ByKey<kMostOutputs, kMostOutputs> order;
    const std::size_t keys = std::min(inside, rows.knots());
    order.sort(inside, keys, [&](std::size_t n) {
        const Kel64f offset = timeOf(n);
        return static_cast<int>((offset - static_cast<int>(offset)) * static_cast<Kel64f>(keys));
    });
    Output next = inside > 0 ? at(order[0]) : Output{};
    for (std::size_t i = 0; i < inside;) {
        const Output now = next;
        const S* x[4] = {now.x};
        Kel32f weights[4] = {now.place.weight};
        std::size_t n = 1;
        for (; i + n < inside; ++n) {
            next = at(order[i + n]);
            if (n == 4 || !next.likeThat(now)) break;
            x[n] = next.x;
            weights[n] = next.place.weight;
        }
        Kel32f four[4];
        switch (n) {
            case 1:
                interpolateTogether(std::make_index_sequence<1>(), now.place.low, now.place.high, padded, x, weights,
                                    four);
                break;
            case 2:
                interpolateTogether(std::make_index_sequence<2>(), now.place.low, now.place.high, padded, x, weights,
                                    four);
                break;
            case 3:
                interpolateTogether(std::make_index_sequence<3>(), now.place.low, now.place.high, padded, x, weights,
                                    four);
                break;
            default:
                interpolateTogether(std::make_index_sequence<4>(), now.place.low, now.place.high, padded, x, weights,
                                    four);
        }
        for (std::size_t k = 0; k < n; ++k) sums[order[i + k]] = four[k];
        i += n;
    }
    for (std::size_t n = inside; n < count; ++n) {
        const Output output = at(n);
        Interpolation<S> a{output.x, output.place.weight};
        const auto add = [&](std::size_t i, const Vec<Kel32f>& samples) {
            a.add(samples, load(output.place.low + i), load(output.place.high + i));
        };
        const std::size_t room = std::min(padded, static_cast<std::size_t>(src + len - a.x));
        std::size_t i = 0;
        for (; i + w <= room; i += w) add(i, loadSamples(a.x + i));
        if (i < room) add(i, loadSamples(a.x + i, room - i));
        const auto sum = a.sum();
        Kel32f four[4];
        sumsOf4(sum, sum, sum, sum, four);
        sums[n] = four[0];
    }
}

}  // namespace kels
