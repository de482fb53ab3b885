// Builds the filters of the fixed form: one for each phase between two rates.
#include "resample/fixed/build.h"

#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

#include "core/layout.h"
#include "resample/filter_design.h"
#include "resample/sample_conversion.h"

namespace kels::resample::fixed {
namespace {

constexpr std::size_t kStateAlignment = 4, kFilterAlignment = 64;

// x with a x = 1 modulo m, for a and m without common factors; 0 for m = 1.
int inverseModulo(int64_t a, int64_t m) {
    int64_t r = m, next = a % m, x = 0, nextX = 1;
    while (next != 0) {
        const int64_t quotient = r / next;
        r = std::exchange(next, r - quotient * next);
        x = std::exchange(nextX, x - quotient * nextX);
    }
    return static_cast<int>(m == 1 ? 0 : (x % m + m) % m);
}

// The largest groups that leave the fewest places of the last one unused.
void chooseGroups(State& head) {
    int64_t groups = 0;
    for (int members = kMostMembers; members > 0; --members) {
        const int64_t needed = (static_cast<int64_t>(head.phases) + members - 1) / members;
        if (groups != 0 && needed * members >= groups * head.members) continue;
        groups = needed;
        head.members = members;
    }
    head.groups = static_cast<int>(groups);
}

// The steps of a course through the taps of both phases from one side, for filters that may be folded: those of twice
// the rate, if they are not too long.
int foldedSteps(const State& head) {
    if (head.phases != 2 || head.down != 1) return 0;
    const int64_t farthest = std::max(std::max(-head.startOf(0), head.startOf(0) + head.len),
                                      std::max(-head.startOf(1), head.startOf(1) + head.len - 1));
    const int64_t steps = roundUp<int64_t>(farthest / static_cast<int64_t>(lanes<Kel32f>) + 1, 2);
    return steps > kMostFoldedSteps ? 0 : static_cast<int>(steps);
}

struct Places {
    State* state;
    Kel32s* starts;
    Kel32f *filters, *folded;
};
Places arrange(Layout& layout, const State& head) {
    Places places{};
    places.state = layout.take<State>(1, kStateAlignment);
    places.starts = layout.take<Kel32s>(head.groups, kStateAlignment);
    places.filters =
        layout.take<Kel32f>(static_cast<int64_t>(head.groupFloats()) * int64_t{head.groups}, kFilterAlignment);
    places.folded = layout.take<Kel32f>(2 * int64_t{head.foldedSteps} * int64_t{lanes<Kel32f>}, kFilterAlignment);
    return places;
}
Kel32s offset(const State* from, const void* to) {
    return static_cast<Kel32s>(static_cast<const Kel8u*>(to) - reinterpret_cast<const Kel8u*>(from));
}

}  // namespace

bool measure(const Design& design, State& head, int& bytes) {
    const int common = std::gcd(design.inRate, design.outRate);
    head = {};
    head.phases = design.outRate / common;
    head.down = design.inRate / common;
    head.len = design.len;
    head.inverse = inverseModulo(head.down, head.phases);
    chooseGroups(head);
    head.foldedSteps = foldedSteps(head);

    // From the start of a group to the end of its last member's filter.
    constexpr auto w = static_cast<int64_t>(lanes<Kel32f>);
    constexpr int64_t most = std::numeric_limits<int>::max();
    const int64_t lastShift = ((head.members - 1) * static_cast<int64_t>(head.down) + head.phases - 1) / head.phases;
    const int64_t vectors = (int64_t{head.len} + 1 + lastShift + w - 1) / w;
    if (vectors * w * head.members > most / static_cast<int64_t>(sizeof(Kel32f))) return false;
    head.vectors = static_cast<int>(vectors);
    const int64_t lobe = 4 * (int64_t{head.down} / head.phases + 1);
    head.tail = static_cast<int>(std::min(roundUp<int64_t>(head.len / 2 + lobe + lastShift, w), vectors * w));

    Layout layout;
    arrange(layout, head);
    if (layout.bytes(kStateAlignment) > most) return false;
    bytes = static_cast<int>(layout.bytes(kStateAlignment));
    return true;
}

void fold(State& state) {
    state.folded = 0;
    const auto tapAt = [&](int phase, int64_t sample) {
        const int64_t k = sample - state.startOf(phase);
        return k < 0 || k > state.len ? 0.0f : std::as_const(state).tap(phase, static_cast<int>(k));
    };
    constexpr int w = static_cast<int>(lanes<Kel32f>);
    auto* taps = const_cast<Kel32f*>(state.foldedTaps(0));
    for (int phase = 0; phase < 2 && state.foldedSteps > 0; ++phase)
        for (int course = w; course-- > 0;)
            for (int step = state.foldedSteps; step-- > 0;) {
                const int distance = course + step * w;
                const Kel32f tap = tapAt(phase, -distance);
                if (tap != tapAt(phase, phase + distance)) return;
                // The sample at an output meets itself.
                *taps++ = phase == 0 && distance == 0 ? tap / 2 : tap;
            }
    state.folded = state.foldedSteps > 0 ? 1 : 0;
}

// Each filter is evaluated at its own phase; on average they have gain 1 at zero frequency.
template <class T>
void build(State* at, const State& head, const Design& design) {
    Layout layout(at);
    const Places places = arrange(layout, head);
    State& state = *at = head;
    state.startsAt = offset(at, places.starts);
    state.filtersAt = offset(at, places.filters);
    state.foldedAt = offset(at, places.folded);
    for (int g = 0; g < state.groups; ++g)
        places.starts[g] = static_cast<Kel32s>(state.startOf(static_cast<int64_t>(g) * state.members));
    std::fill_n(places.filters, toSize(state.groups) * state.groupFloats(), 0.0f);

    const Kel64f stretch = std::min(1.0, static_cast<Kel64f>(state.phases) / state.down);
    const WindowedSinc sinc(design.rollf, design.alpha, 0.5 * state.len * stretch);
    const auto weight = [&](int q, int k) {
        // The time of output q less that of the sample, times 2 phases: exact.
        const int64_t distance = 2 * (static_cast<int64_t>(q) * state.down - (state.startOf(q) + k) * state.phases);
        if (std::abs(distance) > static_cast<int64_t>(state.len) * state.phases) return 0.0;
        return sinc(static_cast<Kel64f>(distance) / (2.0 * state.phases) * stretch);
    };
    Kel64f sum = 0;
    for (int q = 0; q < state.phases; ++q)
        for (int k = 0; k <= state.len; ++k) sum += weight(q, k);
    for (int q = 0; q < state.phases; ++q)
        for (int k = 0; k <= state.len; ++k)
            state.tap(q, k) = factorOf(storedTap<T>(weight(q, k) * state.phases / sum));
    fold(state);
}
template void build<Kel32f>(State*, const State&, const Design&);
template void build<Kel16s>(State*, const State&, const Design&);

}  // namespace kels::resample::fixed
