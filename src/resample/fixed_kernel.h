// Resampling by an integer rate pair with one filter per phase.
//
// Outputs repeat their phases after `phases` outputs and `down` inputs.  Four outputs that follow each other form a group:
// their filters start from the sample at which the first of them starts, each shifted by its own distance, so that every
// vector of samples that is loaded serves all four.  A group's filters are stored as they are used: vector 0 of the four,
// vector 1 of the four, and so on.  Two outputs a period apart share the filters in the same way.
#pragma once

#include <algorithm>
#include <cstddef>

#include "core/memory.h"
#include "core/simd.h"
#include "resample/samples.h"

namespace kels {

inline constexpr int kGroup = 4;

// The head of a fixed state; the groups' starts and filters follow at the offsets it names, so that the block may move.
struct FixedState {
    Kel32s phases, down, len;  // output rate and input rate without common factors; taps of a phase
    Kel32s inverse;            // of down modulo phases: the outputs from phase 0 to phase 1
    Kel32s period, advance;    // outputs and inputs after which the groups repeat
    Kel32s groups, vectors;    // vectors of one output of a group
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
    std::size_t groupFloats() const { return static_cast<std::size_t>(vectors) * kGroup * lanes<Kel32f>; }

    // Where tap k of output q stands.
    Kel32f& tap(int q, int k) const {
        constexpr int w = static_cast<int>(lanes<Kel32f>);
        const int group = q / kGroup, member = q % kGroup;
        const int place = k + static_cast<int>(startOf(q) - starts()[group]);
        auto* const floats = const_cast<Kel32f*>(filters(group));
        return floats[(static_cast<std::size_t>(place / w) * kGroup + static_cast<std::size_t>(member)) * w +
                      static_cast<std::size_t>(place % w)];
    }
};

// The four sums of a group's outputs at each of two signal positions.
struct GroupSums {
    Vec<Kel32f> a{0}, b{0}, c{0}, d{0};

    [[gnu::always_inline]] void add(const Vec<Kel32f>& x, const Vec<Kel32f>& ha, const Vec<Kel32f>& hb,
                                    const Vec<Kel32f>& hc, const Vec<Kel32f>& hd) {
        a = mulAdd(x, ha, a);
        b = mulAdd(x, hb, b);
        c = mulAdd(x, hc, c);
        d = mulAdd(x, hd, d);
    }
    void total(Kel32f* dst) const { sumsOf4(a, b, c, d, dst); }
};

// A group's outputs where only the samples x[begin] to x[end - 1] exist; outputs that need others are not wanted.
template <class S>
void groupOutputsAtEdge(const Kel32f* filters, std::size_t vectors, const S* x, std::ptrdiff_t begin,
                        std::ptrdiff_t end, Kel32f* sums) {
    constexpr auto w = static_cast<std::ptrdiff_t>(lanes<Kel32f>);
    GroupSums group;
    for (std::ptrdiff_t i = 0; i < static_cast<std::ptrdiff_t>(vectors) * w && i < end; i += w) {
        Kel32f samples[lanes<Kel32f>];
        for (std::ptrdiff_t j = 0; j < w; ++j)
            samples[j] = i + j >= begin && i + j < end ? static_cast<Kel32f>(x[i + j]) : 0.0f;
        const Kel32f* const h = filters + i * kGroup;
        group.add(load(samples), load(h), load(h + w), load(h + 2 * w), load(h + 3 * w));
    }
    group.total(sums);
}

// A group's outputs; all samples exist.
template <class S>
void groupOutputs(const Kel32f* filters, std::size_t vectors, const S* x, Kel32f* sums) {
    constexpr std::size_t w = lanes<Kel32f>;
    GroupSums group;
    for (std::size_t v = 0; v < vectors; ++v) {
        const Kel32f* const h = filters + v * kGroup * w;
        group.add(loadSamples(x + v * w), load(h), load(h + w), load(h + 2 * w), load(h + 3 * w));
    }
    group.total(sums);
}

// A group's outputs here and a period later; all samples exist.
template <class S>
void groupOutputsTwice(const Kel32f* filters, std::size_t vectors, const S* x, const S* later, Kel32f* sums) {
    constexpr std::size_t w = lanes<Kel32f>;
    GroupSums now, then;
    for (std::size_t v = 0; v < vectors; ++v) {
        const Kel32f* const h = filters + v * kGroup * w;
        const auto ha = load(h), hb = load(h + w), hc = load(h + 2 * w), hd = load(h + 3 * w);
        now.add(loadSamples(x + v * w), ha, hb, hc, hd);
        then.add(loadSamples(later + v * w), ha, hb, hc, hd);
    }
    now.total(sums);
    then.total(sums + kGroup);
}

// `count` outputs from output q of the period that starts at src + base.
template <class S>
void resampleFixed(const FixedState& state, int q, int64_t base, int count, const S* src, int len, S* dst,
                   Kel32f gain) {
    const auto vectors = static_cast<std::size_t>(state.vectors);
    const auto span = static_cast<std::ptrdiff_t>(vectors * lanes<Kel32f>);
    const auto put = [&](S* to, const Kel32f* sums, int n) {
        for (int i = 0; i < n; ++i) storeSample(to + i, sums[i], gain);
    };
    // The first sample that the caller vouches for.
    const auto oldest = static_cast<std::ptrdiff_t>(base + state.startOf(q));
    int group = q / kGroup;
    int skip = q % kGroup;  // members of the first group that are not wanted
    const auto next = [&](int produced) {
        dst += produced;
        count -= produced;
        skip = 0;
        if (++group == state.groups) {
            group = 0;
            base += state.advance;
        }
    };
    while (count > 0) {
        Kel32f sums[2 * kGroup];
        const auto start = static_cast<std::ptrdiff_t>(base) + state.starts()[group];
        const int members = std::min(kGroup, state.period - group * kGroup);
        if (skip == 0 && count >= state.period * 2 && start + 2 * state.advance + span <= len) {
            // Two periods, from this group round to the one before it.
            for (int i = 0; i < state.groups; ++i) {
                const S* const x = src + static_cast<std::ptrdiff_t>(base) + state.starts()[group];
                const int n = std::min(kGroup, state.period - group * kGroup);
                groupOutputsTwice(state.filters(group), vectors, x, x + state.advance, sums);
                put(dst, sums, n);
                put(dst + state.period, sums + kGroup, n);
                next(n);
            }
            dst += state.period;
            count -= state.period;
            base += state.advance;
            continue;
        }
        const S* const x = src + start;
        if (start >= oldest && start + span <= len) {
            groupOutputs(state.filters(group), vectors, x, sums);
        } else {
            groupOutputsAtEdge(state.filters(group), vectors, x, oldest - start, len - start, sums);
        }
        const int n = std::min(members - skip, count);
        put(dst, sums + skip, n);
        next(n);
    }
}

}  // namespace kels
