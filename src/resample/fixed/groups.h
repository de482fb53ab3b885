// Sums of the outputs of a group: one load of a vector of samples serves all members, and, where several periods are
// taken at once, one load of a vector of their filters serves all periods.
//
// The filters' tails are added before their lobes: while a sum is small, so is its rounding.  First comes what lies
// behind the lobes, from a vector on that is common to the group, then all from the beginning up to there.
//
// Which taps meet in a lane of a vector and when, and so how an output is rounded, depends on its phase alone.
#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>

#include "core/simd/row_sums.h"
#include "core/simd/vec.h"
#include "resample/fixed/state.h"
#include "resample/sample_conversion.h"

namespace kels::resample::fixed {

// One vector of the filter of each member of a group.
template <int Members>
struct GroupFilters {
    explicit GroupFilters(const Kel32f* h) : a(inRegister(load(h))) {
        constexpr std::size_t w = lanes<Kel32f>;
        if constexpr (Members > 1) b = inRegister(load(h + w));
        if constexpr (Members > 2) c = inRegister(load(h + 2 * w));
        if constexpr (Members > 3) d = inRegister(load(h + 3 * w));
    }
    Vec<Kel32f> a, b{}, c{}, d{};
};

// The sums of the members of a group, at one place of the signal.
template <int Members>
struct GroupSums {
    Vec<Kel32f> a{0}, b{0}, c{0}, d{0};

    [[gnu::always_inline]] void add(const Vec<Kel32f>& x, const GroupFilters<Members>& h) {
        const auto once = inRegister(x);
        a = mulAdd(once, h.a, a);
        if constexpr (Members > 1) b = mulAdd(once, h.b, b);
        if constexpr (Members > 2) c = mulAdd(once, h.c, c);
        if constexpr (Members > 3) d = mulAdd(once, h.d, d);
    }
    void total(Kel32f* dst) const { sumsOf4(a, b, c, d, dst); }
};

// A group's outputs where only the samples x[begin] to x[end - 1] exist; outputs that need others are not wanted.
template <int Members, class S>
void groupAtEdge(const State& state, const Kel32f* filters, const S* x, std::ptrdiff_t begin, std::ptrdiff_t end,
                 Kel32f* sums) {
    constexpr auto w = static_cast<std::ptrdiff_t>(lanes<Kel32f>);
    GroupSums<Members> group;
    const auto part = [&](std::ptrdiff_t from, std::ptrdiff_t to) {
        for (std::ptrdiff_t i = from; i < std::min(to, end); i += w) {
            Kel32f samples[lanes<Kel32f>];
            for (std::ptrdiff_t j = 0; j < w; ++j)
                samples[j] = i + j >= begin && i + j < end ? static_cast<Kel32f>(x[i + j]) : 0.0f;
            group.add(load(samples), GroupFilters<Members>(filters + i * Members));
        }
    };
    part(state.tail, state.span());
    part(0, state.tail);
    group.total(sums);
}

// A group's outputs at x, and `distance` samples further on, and so forth; sums has four places for each of these
// times.
template <int Members, std::size_t... Time, class S>
[[gnu::always_inline]] inline void groupAt(std::index_sequence<Time...>, const State& state, const Kel32f* filters,
                                           const S* x, std::ptrdiff_t distance, Kel32f* sums) {
    constexpr auto w = static_cast<std::ptrdiff_t>(lanes<Kel32f>);
    const std::ptrdiff_t span = state.span(), tail = state.tail;
    const auto run = [=](auto... group) __attribute__((always_inline)) {
        const auto part = [&](std::ptrdiff_t from, std::ptrdiff_t to) __attribute__((always_inline)) {
            for (std::ptrdiff_t i = from; i < to; i += w) {
                const GroupFilters<Members> h(filters + i * Members);
                (group.add(loadSamples(x + static_cast<std::ptrdiff_t>(Time) * distance + i), h), ...);
            }
        };
        part(tail, span);
        part(0, tail);
        (group.total(sums + Time * kMostMembers), ...);
    };
    run((static_cast<void>(Time), GroupSums<Members>())...);
}

}  // namespace kels::resample::fixed
