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
#include "resample/by_key.h"
#include "resample/filter_rows.h"
#include "resample/samples.h"

namespace kels {

// An input's share in the outputs.
struct InputShare {
    std::ptrdiff_t zero;  // output that the first value of the rows belongs to
    Kel32f lowWeight, highWeight;
};

// sums[zero + i] += what inputs of the same rows give there, from <= i < to, Vectors vectors at a time.
template <std::size_t... I>
[[gnu::always_inline]] inline void spreadRows(std::index_sequence<I...>, const Kel32f* low, const Kel32f* high,
                                              std::ptrdiff_t from, std::ptrdiff_t to, const InputShare* inputs,
                                              std::size_t n, Kel32f* sums, std::ptrdiff_t outputs) {
    constexpr auto w = static_cast<std::ptrdiff_t>(lanes<Kel32f>);
    constexpr std::ptrdiff_t step = sizeof...(I) * w;
    struct Knot {
        Vec<Kel32f> low, high;
    };
    for (std::ptrdiff_t i = from; i < to; i += step) {
        const auto run = [=](const auto&... knot) __attribute__((always_inline)) {
            for (std::size_t k = 0; k < n; ++k) {
                const std::ptrdiff_t at = inputs[k].zero + i;
                if (at <= -step || at >= outputs) continue;
                const Vec<Kel32f> lowWeight(inputs[k].lowWeight), highWeight(inputs[k].highWeight);
                Kel32f* const sum = sums + at;
                (store(sum + I * w, mulAdd(highWeight, knot.high, mulAdd(lowWeight, knot.low, load(sum + I * w)))),
                 ...);
            }
        };
        run(Knot{held(load(low + i + I * w)), held(load(high + i + I * w))}...);
    }
}

// As interpolate, for factor < 1 and filters of up to kMostInputs samples.
template <class S>
[[gnu::noinline]] void decimate(const FilterRows& rows, const ResampleTimes& times, int64_t firstOutput,
                                std::size_t count, const S* src, int len, Kel32f* sums) {
    constexpr auto w = static_cast<std::ptrdiff_t>(lanes<Kel32f>);
    constexpr int vectors = sizeof(void*) == 8 ? 4 : 2;  // whose two rows the registers hold
    constexpr std::ptrdiff_t margin = vectors * w;
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

    alignas(64) Kel32f part[kMostOutputs + 2 * margin];
    const std::size_t room = roundUp(count, lanes<Kel32f>);
    std::fill_n(part, room + 2 * margin, 0.0f);
    std::fill_n(sums, room, 0.0f);

    const auto onGrid = [&](std::size_t n) {
        return (static_cast<Kel64f>(begin + static_cast<std::ptrdiff_t>(n)) - start) * times.factor;
    };
    ByKey<kMostInputs, kMostKeys> order;
    const std::size_t keys = std::min(rows.knots(), kMostKeys);
    order.sort(inputs, keys, [&](std::size_t n) {
        const Kel64f u = onGrid(n);
        return static_cast<int>((u - std::floor(u)) * static_cast<Kel64f>(keys));
    });

    struct Input {
        FilterRows::Place place;
        InputShare share;
    };
    const auto at = [&](std::size_t n) __attribute__((always_inline)) {
        const Kel64f u = onGrid(n), k = std::floor(u);
        const auto place = rows.at(u - k);
        const auto sample = static_cast<Kel32f>(x[begin + static_cast<std::ptrdiff_t>(n)]);
        return Input{
            place, {static_cast<std::ptrdiff_t>(k) - rows.half(), sample * (1 - place.weight), sample * place.weight}};
    };
    const std::ptrdiff_t padded = roundUp(static_cast<std::ptrdiff_t>(rows.taps()), w);
    const std::ptrdiff_t whole = padded / margin * margin;
    std::size_t i = 0;
    for (std::size_t p = 1; p <= kParts; ++p) {
        const std::size_t partEnd = p == kParts ? inputs : order.end(keys * p / kParts);
        while (i < partEnd) {
            const Input first = at(order[i]);
            InputShare some[8] = {first.share};
            std::size_t n = 1;
            for (; n < 8 && i + n < partEnd; ++n) {
                const Input next = at(order[i + n]);
                if (next.place.low != first.place.low || next.place.high != first.place.high) break;
                some[n] = next.share;
            }
            i += n;
            spreadRows(std::make_index_sequence<vectors>(), first.place.low, first.place.high, 0, whole, some, n,
                       part + margin, outputs);
            spreadRows(std::make_index_sequence<1>(), first.place.low, first.place.high, whole, padded, some, n,
                       part + margin, outputs);
        }
        for (std::ptrdiff_t n = 0; n < outputs; n += w) {
            store(sums + n, Vec<Kel32f>(load(sums + n) + load(part + margin + n)));
            store(part + margin + n, Vec<Kel32f>(0));
        }
    }
}

// One input on the grid of the outputs: its two rows from the first output on, times its value.
struct SpreadInput {
    const Kel32f *low, *high;
    Kel32f lowWeight, highWeight;
};

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

// The same for filters of any length, input by input.  sums has room for one more vector.
template <class S>
[[gnu::noinline]] void decimateInTime(const FilterRows& rows, const ResampleTimes& times, int64_t firstOutput,
                                      std::size_t count, const S* src, int len, Kel32f* sums) {
    constexpr auto w = static_cast<std::ptrdiff_t>(lanes<Kel32f>);
    constexpr std::ptrdiff_t most = FilterRows::kSpread;  // inputs at once
    const Kel64f base = std::floor(times.at(firstOutput));
    const Kel64f start = times.at(firstOutput) - base;
    const S* const x = src + static_cast<std::ptrdiff_t>(base);
    const Kel64f last = start + static_cast<Kel64f>(count - 1) * times.step;
    const auto outputs = static_cast<std::ptrdiff_t>(count);
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
        const std::ptrdiff_t to = std::min(k - rows.half() + static_cast<std::ptrdiff_t>(rows.taps()), outputs);
        switch (n) {
            case 1:
                spread(std::make_index_sequence<1>(), together, inputs, sums, from, to);
                break;
            case 2:
                spread(std::make_index_sequence<2>(), together, inputs, sums, from, to);
                break;
            case 3:
                spread(std::make_index_sequence<3>(), together, inputs, sums, from, to);
                break;
            default:
                spread(std::make_index_sequence<most>(), together, inputs, sums, from, to);
        }
    }
}

}  // namespace kels
