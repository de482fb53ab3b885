// Resampling by an integer rate pair with one filter per phase.
//
// Outputs repeat their phases after `phases` outputs and `down` inputs.  Up to four outputs that follow each other form
// a group: their filters start from the sample at which the first of them starts, each shifted by its own distance, so
// that every vector of samples that is loaded serves all of them.  A group's filters are stored as they are used:
// vector 0 of each member, vector 1 of each member, and so on.  Outputs one or more periods apart share the filters in
// the same way.
//
// The filters' tails are added before their lobes: while a sum is small, so is its rounding.  First comes what lies
// behind the lobes, from a vector on that is common to the group, then all from the beginning up to there.
//
// Which taps meet in a lane of a vector and when, and so how an output is rounded, depends on its phase alone.
#pragma once

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>

#include "core/check.h"
#include "core/memory.h"
#include "core/simd/vec.h"
#include "resample/sample_conversion.h"

namespace kels {

inline constexpr int kMostMembers = 4;

// The head of a fixed state; the groups' starts and filters follow at the offsets it names, so that the block may move.
struct FixedState {
    Kel32s phases, down, len;  // output rate and input rate without common factors; width of the filters
    Kel32s inverse;            // of down modulo phases: the outputs from phase 0 to phase 1
    Kel32s members, groups;    // of a group; of a period
    Kel32s vectors;            // of one output of a group
    Kel32s tail;               // the place behind the lobes of a group's filters, at a whole vector
    Kel32s startsAt, filtersAt;

    // The first sample of output q of a period, relative to the sample at which the period starts.
    int64_t startOf(int64_t q) const;
    const Kel32s* starts() const {
        return reinterpret_cast<const Kel32s*>(reinterpret_cast<const Kel8u*>(this) + startsAt);
    }
    const Kel32f* filters(int group) const {
        const auto* const all = reinterpret_cast<const Kel32f*>(reinterpret_cast<const Kel8u*>(this) + filtersAt);
        return all + static_cast<std::size_t>(group) * groupFloats();
    }
    std::ptrdiff_t span() const { return static_cast<std::ptrdiff_t>(toSize(vectors) * lanes<Kel32f>); }
    std::size_t groupFloats() const { return toSize(vectors) * toSize(members) * lanes<Kel32f>; }
    // Outputs of a group; the last one may be short of members.
    int outputs(int group) const { return std::min(members, phases - group * members); }

    // Where tap k of output q stands.
    Kel32f& tap(int q, int k) const {
        constexpr int w = static_cast<int>(lanes<Kel32f>);
        const int group = q / members;
        const int place = k + static_cast<int>(startOf(q) - starts()[group]);
        auto* const floats = const_cast<Kel32f*>(filters(group));
        return floats[(toSize(place / w) * toSize(members) + toSize(q % members)) * lanes<Kel32f> + toSize(place % w)];
    }
};

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
void groupAtEdge(const FixedState& state, const Kel32f* filters, const S* x, std::ptrdiff_t begin, std::ptrdiff_t end,
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
[[gnu::always_inline]] inline void groupAt(std::index_sequence<Time...>, const FixedState& state, const Kel32f* filters,
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

// Eight outputs of a filter that is the only one, `shift` samples apart, which is a whole number of vectors: every
// vector of samples serves four of them.  The filter is at least three shifts long before its tail, and behind.
template <class S>
class OverlappingOutputs {
  public:
    OverlappingOutputs(const FixedState& state, std::ptrdiff_t shift, const S* x, Kel32f* sums)
        : filter_(state.filters(0)), shift_(shift), x_(x) {
        taps(state.tail, state.span());
        taps(0, state.tail);
        sumsOf4(a_, b_, c_, d_, sums);
        sumsOf4(e_, f_, g_, h_, sums + 4);
    }
    static bool suits(const FixedState& state, int64_t shift) {
        return state.phases == 1 && 3 * shift <= std::min<std::ptrdiff_t>(state.tail, state.span() - state.tail);
    }

  private:
    // What the taps from `begin` to `end` give.
    void taps(std::ptrdiff_t begin, std::ptrdiff_t end) {
        part<0b0001>(begin, begin + shift_);
        part<0b0011>(begin + shift_, begin + 2 * shift_);
        part<0b0111>(begin + 2 * shift_, begin + 3 * shift_);
        part<0b1111>(begin + 3 * shift_, end);
        part<0b1110>(end, end + shift_);
        part<0b1100>(end + shift_, end + 2 * shift_);
        part<0b1000>(end + 2 * shift_, end + 3 * shift_);
    }
    // What the samples from `begin` to `end` give to those of the outputs whose bit is set.
    template <unsigned Outputs>
    [[gnu::always_inline]] void part(std::ptrdiff_t begin, std::ptrdiff_t end) {
        const Kel32f* const h = filter_;
        const S* const x = x_;
        const std::ptrdiff_t shift = shift_;
        Vec<Kel32f> a = a_, b = b_, c = c_, d = d_, e = e_, f = f_, g = g_, last = h_;
        for (std::ptrdiff_t i = begin; i < end; i += static_cast<std::ptrdiff_t>(lanes<Kel32f>)) {
            const auto now = inRegister(loadSamples(x + i)), later = inRegister(loadSamples(x + 4 * shift + i));
            const auto add = [&](std::ptrdiff_t member, Vec<Kel32f>& first, Vec<Kel32f>& second) {
                const auto tap = inRegister(load(h + i - member * shift));
                first = mulAdd(now, tap, first);
                second = mulAdd(later, tap, second);
            };
            if constexpr ((Outputs & 1) != 0) add(0, a, e);
            if constexpr ((Outputs & 2) != 0) add(1, b, f);
            if constexpr ((Outputs & 4) != 0) add(2, c, g);
            if constexpr ((Outputs & 8) != 0) add(3, d, last);
        }
        a_ = a, b_ = b, c_ = c, d_ = d, e_ = e, f_ = f, g_ = g, h_ = last;
    }

    const Kel32f* filter_;
    std::ptrdiff_t shift_;
    const S* x_;
    Vec<Kel32f> a_{0}, b_{0}, c_{0}, d_{0}, e_{0}, f_{0}, g_{0}, h_{0};
};

// `count` outputs from output q of the period that starts at src + base.
template <int Members, class S>
void resampleFixed(const FixedState& state, int q, int64_t base, int count, const S* src, int len, S* dst,
                   Kel32f gain) {
    constexpr int times = std::max(1, (sizeof(void*) == 8 ? 9 : 4) / Members);  // what registers hold
    const std::ptrdiff_t span = state.span();
    auto oldest = static_cast<std::ptrdiff_t>(base + state.startOf(q));  // the first sample that surely exists
    auto period = static_cast<std::ptrdiff_t>(base);
    int group = q / Members;
    int skip = q % Members;  // outputs of the first group that are not wanted
    int together = 0;        // groups to go in a walk through all of them that serves `times` periods
    Kel32f sums[std::max(times * kMostMembers, 8)] = {};
    const auto put = [&](int time, int first, int n) {
        for (int i = 0; i < n; ++i)
            storeSample(dst + toSize(time) * toSize(state.phases) + i, sums[time * kMostMembers + first + i], gain);
    };
    if constexpr (Members == 1) {
        // Outputs this far apart start a whole number of vectors apart.
        constexpr int w = static_cast<int>(lanes<Kel32f>);
        const std::ptrdiff_t apart = w / std::gcd(state.down, w);
        const int64_t shift = static_cast<int64_t>(state.down) * apart;
        while (OverlappingOutputs<S>::suits(state, shift) && count >= 8 * apart &&
               oldest + (8 * apart - 1) * state.down + span <= len) {
            for (std::ptrdiff_t i = 0; i < apart; ++i) {
                const S* const x = src + oldest + i * state.down;
                OverlappingOutputs<S>(state, static_cast<std::ptrdiff_t>(shift), x, sums);
                for (std::ptrdiff_t n = 0; n < 8; ++n) storeSample(dst + i + n * apart, sums[n], gain);
            }
            dst += 8 * apart;
            count -= static_cast<int>(8 * apart);
            oldest += 8 * static_cast<std::ptrdiff_t>(shift);
            period += 8 * static_cast<std::ptrdiff_t>(shift);
        }
    }
    while (count > 0) {
        const std::ptrdiff_t start = period + state.starts()[group];
        const Kel32f* const filters = state.filters(group);
        const S* const x = src + start;
        if (together == 0 && skip == 0 && count / times >= state.phases &&
            start + times * static_cast<std::ptrdiff_t>(state.down) + span <= len)
            together = state.groups;
        int n = state.outputs(group) - skip;
        if (together > 0) {
            groupAt<Members>(std::make_index_sequence<times>(), state, filters, x, state.down, sums);
            for (int time = 0; time < times; ++time) put(time, 0, n);
        } else {
            n = std::min(n, count);
            if (start >= oldest && start + span <= len) {
                groupAt<Members>(std::make_index_sequence<1>(), state, filters, x, 0, sums);
            } else {
                groupAtEdge<Members>(state, filters, x, oldest - start, len - start, sums);
            }
            put(0, skip, n);
        }
        dst += n;
        count -= n;
        skip = 0;
        if (++group == state.groups) {
            group = 0;
            period += state.down;
        }
        if (together > 0 && --together == 0) {
            dst += (times - 1) * static_cast<std::ptrdiff_t>(state.phases);
            count -= (times - 1) * state.phases;
            period += (times - 1) * static_cast<std::ptrdiff_t>(state.down);
        }
    }
}

}  // namespace kels
