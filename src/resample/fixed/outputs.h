// The outputs of one call of the fixed form, in the order of their times: where the signal allows it many at once, near
// its ends one group after the other.  They have the same bits either way.
#pragma once

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>

#include "resample/fixed/groups.h"
#include "resample/fixed/overlapping.h"

namespace kels::resample::fixed {

// Where a call stands.
struct Cursor {
    int group;              // the next one
    std::ptrdiff_t period;  // the sample at which its period starts
    int left;               // outputs
};

template <int Members, class S>
class Outputs {
  public:
    Outputs(const State& state, const S* src, int len, S* dst, Kel32f gain)
        : state_(state), src_(src), len_(len), dst_(dst), gain_(gain) {}

    // `count` outputs from output q of the period that starts at src + base.
    void produce(int q, int64_t base, int count) {
        at_ = {q / Members, static_cast<std::ptrdiff_t>(base), count};
        if (q % Members != 0) oneGroup(q % Members);
        if constexpr (Members == 1) overlapping();
        severalPeriods();
        while (at_.left > 0) oneGroup(0);
    }

  private:
    static constexpr int kPeriods = std::max(1, (sizeof(void*) == 8 ? 9 : 4) / Members);  // what registers hold

    // Eight outputs at a time of a filter that is the only one.  Those that are `apart` outputs apart start a whole
    // number of vectors apart.
    void overlapping() {
        constexpr int w = static_cast<int>(lanes<Kel32f>);
        const int apart = w / std::gcd(state_.down, w);
        const auto shift = static_cast<std::ptrdiff_t>(state_.down) * apart;
        if (!OverlappingOutputs<S>::suits(state_, shift)) return;
        while (at_.left >= 8 * apart &&
               start() + (8 * apart - 1) * std::ptrdiff_t{state_.down} + state_.span() <= len_) {
            for (int i = 0; i < apart; ++i) {
                Kel32f sums[8];
                OverlappingOutputs<S>(state_, shift, src_ + start() + i * std::ptrdiff_t{state_.down}, sums);
                for (int n = 0; n < 8; ++n) storeSample(dst_ + i + n * apart, sums[n], gain_);
            }
            dst_ += 8 * apart;
            at_.left -= 8 * apart;
            at_.period += 8 * shift;
        }
    }

    // Once through all groups, each for kPeriods periods.
    void severalPeriods() {
        Kel32f sums[kPeriods * kMostMembers] = {};
        while (at_.left / kPeriods >= state_.phases &&
               start() + kPeriods * static_cast<std::ptrdiff_t>(state_.down) + state_.span() <= len_) {
            for (int i = 0; i < state_.groups; ++i) {
                groupAt<Members>(std::make_index_sequence<kPeriods>(), state_, state_.filters(at_.group),
                                 src_ + start(), state_.down, sums);
                const int n = state_.outputs(at_.group);
                for (int period = 0; period < kPeriods; ++period)
                    put(dst_ + toSize(period) * toSize(state_.phases), sums + period * kMostMembers, n);
                advance(n);
            }
            dst_ += (kPeriods - 1) * static_cast<std::ptrdiff_t>(state_.phases);
            at_.left -= (kPeriods - 1) * state_.phases;
            at_.period += (kPeriods - 1) * static_cast<std::ptrdiff_t>(state_.down);
        }
    }

    // Without its first `skip` outputs, which may need samples that do not exist.
    void oneGroup(int skip) {
        Kel32f sums[2 * kMostMembers] = {};  // so that all are there from `skip` on
        const Kel32f* const filters = state_.filters(at_.group);
        // How far behind the start of the group the first sample stands that surely exists.
        const std::ptrdiff_t begin =
            skip == 0 ? 0
                      : at_.period + static_cast<std::ptrdiff_t>(state_.startOf(at_.group * Members + skip)) - start();
        if (begin == 0 && start() + state_.span() <= len_) {
            groupAt<Members>(std::make_index_sequence<1>(), state_, filters, src_ + start(), 0, sums);
        } else {
            groupAtEdge<Members>(state_, filters, src_ + start(), begin, len_ - start(), sums);
        }
        const int n = std::min(state_.outputs(at_.group) - skip, at_.left);
        put(dst_, sums + skip, n);
        advance(n);
    }

    void put(S* dst, const Kel32f* sums, int n) const {
        const Kel32f gain = gain_;  // which a store might be taken to change
        if (n == Members) {
            for (int k = 0; k < Members; ++k) storeSample(dst + k, sums[k], gain);
        } else {
            for (int k = 0; k < n; ++k) storeSample(dst + k, sums[k], gain);
        }
    }

    // The sample at which the next group starts.
    std::ptrdiff_t start() const { return at_.period + state_.starts()[at_.group]; }

    // Behind a group, of which n outputs were stored.
    void advance(int n) {
        dst_ += n;
        at_.left -= n;
        if (++at_.group < state_.groups) return;
        at_.group = 0;
        at_.period += state_.down;
    }

    const State& state_;
    const S* src_;
    std::ptrdiff_t len_;
    S* dst_;
    Kel32f gain_;
    Cursor at_{};
};

}  // namespace kels::resample::fixed
