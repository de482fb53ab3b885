// Four places in the table at once: their additions hide each other's latency, and they share loads of their rows.
#pragma once

#include <algorithm>
#include <cstddef>
#include <type_traits>

#include "core/simd/vec.h"
#include "resample/general/filter_rows.h"

namespace kels::resample::general {

struct FourPlaces {
    static constexpr int kOther = 8;

    const Kel32f *low[4], *high[4];
    Kel32f weight[4];
    int steps;  // bit k: place k + 1 takes the next rows, not the same ones; kOther where it may be any
};

// Loops over all four in each step of the way, which become vectors.
[[gnu::always_inline]] inline void FilterRows::find(const Kel64f (&times)[4], int (&whole)[4],
                                                    FourPlaces& found) const {
    Kel64f place[4];
    int p[4];
    for (int k = 0; k < 4; ++k) whole[k] = static_cast<int>(times[k]);
    for (int k = 0; k < 4; ++k) place[k] = (times[k] - whole[k]) * nStep_;
    for (int k = 0; k < 4; ++k) p[k] = std::min(static_cast<int>(place[k]), nStep_ - 1);
    for (int k = 0; k < 4; ++k) place[k] -= p[k];
    for (int k = 0; k < 4; ++k) found.weight[k] = static_cast<Kel32f>(place[k]);
    for (int k = 0; k < 4; ++k) {
        found.low[k] = low(p[k], place[k]);
        found.high[k] = high(p[k], place[k]);
    }
    const auto step = [&](int k) {
        if (found.low[k + 1] == found.low[k] && found.high[k + 1] == found.high[k]) return 0;
        return found.low[k + 1] == found.high[k] ? 1 << k : FourPlaces::kOther;
    };
    found.steps = std::min(step(0) + step(1) + step(2), FourPlaces::kOther);
}

enum class RowStep { Same, Next, Other };

// Calls run with the three steps between the rows of four places, as constants.
template <class Run>
[[gnu::always_inline]] inline void withSteps(const FourPlaces& places, Run run) {
    constexpr std::integral_constant<RowStep, RowStep::Same> same;
    constexpr std::integral_constant<RowStep, RowStep::Next> next;
    constexpr std::integral_constant<RowStep, RowStep::Other> other;
    switch (places.steps) {
        case 0:
            return run(same, same, same);
        case 1:
            return run(next, same, same);
        case 2:
            return run(same, next, same);
        case 3:
            return run(next, next, same);
        case 4:
            return run(same, same, next);
        case 5:
            return run(next, same, next);
        case 6:
            return run(same, next, next);
        case 7:
            return run(next, next, next);
        default:
            return run(other, other, other);
    }
}

// each(k, i, low, high) for every vector i of the rows from `begin` to `end`, and every place k.
template <RowStep B, RowStep C, RowStep D, class Each>
[[gnu::always_inline]] inline void alongRows(const FourPlaces& places, std::size_t begin, std::size_t end, Each& each) {
    const Kel32f* const lows[] = {places.low[0], places.low[1], places.low[2], places.low[3]};
    const Kel32f* const highs[] = {places.high[0], places.high[1], places.high[2], places.high[3]};
    for (std::size_t i = begin; i < end; i += lanes<Kel32f>) {
        Vec<Kel32f> low = inRegister(load(lows[0] + i)), high = inRegister(load(highs[0] + i));
        const auto visit = [&](auto k, RowStep step) __attribute__((always_inline)) {
            if (step != RowStep::Same) {
                low = step == RowStep::Next ? high : inRegister(load(lows[k] + i));
                high = inRegister(load(highs[k] + i));
            }
            each(k, i, low, high);
        };
        visit(std::integral_constant<int, 0>(), RowStep::Same);
        visit(std::integral_constant<int, 1>(), B);
        visit(std::integral_constant<int, 2>(), C);
        visit(std::integral_constant<int, 3>(), D);
    }
}

}  // namespace kels::resample::general
