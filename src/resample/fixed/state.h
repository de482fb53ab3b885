// The state of the fixed form: one filter for each phase of an integer rate pair.
//
// Outputs repeat their phases after `phases` outputs and `down` inputs: a period.  Up to four outputs that follow each
// other form a group: their filters start from the sample at which the first of them starts, each shifted by its own
// distance, so that every vector of samples that is loaded serves all of them.  A group's filters are stored as they
// are used: vector 0 of each member, vector 1 of each member, and so on.
#pragma once

#include <algorithm>
#include <cstddef>

#include "core/check.h"
#include "core/scaling.h"
#include "core/simd/vec.h"
#include "kels/types.h"

namespace kels::resample::fixed {

inline constexpr int kMostMembers = 4;
inline constexpr int kMostFoldedSteps = 1024 / static_cast<int>(lanes<Kel32f>);

// The head of the state; the groups' starts and filters follow at the offsets it names, so that the block may move.
struct State {
    Kel32s phases, down, len;  // output rate and input rate without common factors; width of the filters
    Kel32s inverse;            // of down modulo phases: the outputs from phase 0 to phase 1
    Kel32s members, groups;    // of a group; of a period
    Kel32s vectors;            // of one output of a group
    Kel32s tail;               // the place behind the lobes of a group's filters, at a whole vector
    Kel32s startsAt, filtersAt;
    Kel32s foldedAt,
        foldedSteps;  // of the folded filters (folded.h): where they are and how long a course is, 0 for none
    Kel32s folded;    // 1 where they stand for the filters

    // The first sample of output q of a period, relative to the sample at which the period starts.
    int64_t startOf(int64_t q) const {
        return -divideFloor(static_cast<int64_t>(phases) * len - 2 * q * down, 2 * static_cast<int64_t>(phases));
    }
    const Kel32s* starts() const {
        return reinterpret_cast<const Kel32s*>(reinterpret_cast<const Kel8u*>(this) + startsAt);
    }
    const Kel32f* filters(int group) const {
        const auto* const all = reinterpret_cast<const Kel32f*>(reinterpret_cast<const Kel8u*>(this) + filtersAt);
        return all + toSize(group) * groupFloats();
    }
    // Of a phase, in the order in which they are used.
    const Kel32f* foldedTaps(int phase) const {
        const auto* const all = reinterpret_cast<const Kel32f*>(reinterpret_cast<const Kel8u*>(this) + foldedAt);
        return all + toSize(phase) * toSize(foldedSteps) * lanes<Kel32f>;
    }
    std::ptrdiff_t span() const { return static_cast<std::ptrdiff_t>(toSize(vectors) * lanes<Kel32f>); }
    std::size_t groupFloats() const { return toSize(vectors) * toSize(members) * lanes<Kel32f>; }
    // Outputs of a group; the last one may be short of members.
    int outputs(int group) const { return std::min(members, phases - group * members); }

    // Where tap k of output q stands.
    Kel32f& tap(int q, int k) {
        constexpr int w = static_cast<int>(lanes<Kel32f>);
        const int group = q / members;
        const int place = k + static_cast<int>(startOf(q) - starts()[group]);
        auto* const floats = const_cast<Kel32f*>(filters(group));
        return floats[(toSize(place / w) * toSize(members) + toSize(q % members)) * lanes<Kel32f> + toSize(place % w)];
    }
    Kel32f tap(int q, int k) const { return const_cast<State*>(this)->tap(q, k); }
};

// Calls each(q, phase) with every output of a period and its phase.
template <class Each>
void forEachOutput(const State& state, Each each) {
    int64_t phase = 0;
    for (int q = 0; q < state.phases; ++q) {
        each(q, static_cast<int>(phase));
        phase = (phase + state.down) % state.phases;
    }
}

}  // namespace kels::resample::fixed
