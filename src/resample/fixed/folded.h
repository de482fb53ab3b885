// Doubling the rate with filters that are symmetric: samples at the same distance before and behind an output have the
// same weight, and are added before they are multiplied.
//
// The lanes of a vector are outputs of one phase, one input sample apart.  Their samples at distance k are one vector,
// and that at distance k + w, where w is the width, is the next one of the same row: vectors move on from output to
// output in registers, and one load serves several.  So the distances are walked in w courses, each from the farthest
// one to the nearest, and the course that ends at an output itself comes last.  The tails of the filters are thus added
// before their lobes, while the sums are small and so is their rounding.
//
// Each lane adds the same terms in the same order: how an output is rounded depends on its phase alone.
#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>

#include "core/simd/vec.h"
#include "resample/fixed/state.h"
#include "resample/sample_conversion.h"

namespace kels::resample::fixed {

// What J vectors of outputs of one phase meet at one distance: the samples before them, and those behind.  They have
// two sums each, for every other distance, so that additions need not wait for each other.
template <class S, std::size_t... j>
struct Course {
    static constexpr auto w = static_cast<std::ptrdiff_t>(lanes<Kel32f>);
    static constexpr std::size_t last = sizeof...(j) - 1;

    const S *down, *up;
    Vec<Kel32f> before[sizeof...(j)] = {loadSamples(down + static_cast<std::ptrdiff_t>(j) * w)...};
    Vec<Kel32f> behind[sizeof...(j)] = {loadSamples(up + static_cast<std::ptrdiff_t>(j) * w)...};
    Vec<Kel32f> even[sizeof...(j)] = {Vec<Kel32f>((static_cast<void>(j), 0.0f))...};
    Vec<Kel32f> odd[sizeof...(j)] = {Vec<Kel32f>((static_cast<void>(j), 0.0f))...};

    [[gnu::always_inline]] void add(Kel32f weight, Vec<Kel32f> (&sums)[sizeof...(j)]) const {
        const auto tap = inRegister(Vec<Kel32f>(weight));
        ((sums[j] = mulAdd(tap, Vec<Kel32f>(before[j] + behind[j]), sums[j])), ...);
    }
    // Nearer by a vector.
    [[gnu::always_inline]] void moveOn() {
        down += w;
        up -= w;
        (moveOne(std::integral_constant<std::size_t, j>()), ...);
    }
    template <class K>
    [[gnu::always_inline]] void moveOne(K k) {
        if constexpr (k < last) {
            before[k] = before[k + 1];
            behind[last - k] = behind[last - k - 1];
        } else {
            before[last] = loadSamples(down + static_cast<std::ptrdiff_t>(last) * w);
            behind[0] = loadSamples(up);
        }
    }
};

// sums[j * w + lane] for J vectors of outputs of one phase; the nearest samples before and behind the first of them
// stand at `before` and `behind`.  All samples up to w * steps - 1 further away exist; steps is even.
template <class S, std::size_t... j>
[[gnu::always_inline]] inline void foldedSums(std::index_sequence<j...>, const Kel32f* taps, int steps, const S* before,
                                              const S* behind, Kel32f* sums) {
    constexpr auto w = static_cast<std::ptrdiff_t>(lanes<Kel32f>);
    const std::ptrdiff_t farthest = w * (steps - 1);
    (store(sums + j * lanes<Kel32f>, Vec<Kel32f>(0.0f)), ...);
    for (std::ptrdiff_t n = w; n-- > 0;) {
        Course<S, j...> course{before - n - farthest, behind + n + farthest};
        for (int step = 0;;) {
            course.add(taps[0], course.even);
            course.moveOn();
            course.add(taps[1], course.odd);
            taps += 2;
            step += 2;
            if (step == steps) break;
            course.moveOn();
        }
        (store(sums + j * lanes<Kel32f>,
               Vec<Kel32f>(load(sums + j * lanes<Kel32f>) + Vec<Kel32f>(course.even[j] + course.odd[j]))),
         ...);
    }
}

// The outputs of both phases at the positions from one sample on.
template <class S>
class FoldedOutputs {
  public:
    static constexpr auto w = static_cast<std::ptrdiff_t>(lanes<Kel32f>);
    static constexpr int kVectors = lanes<Kel32f> == 16 ? 6 : 3;  // what registers hold

    // The samples from src[oldest] to src[len - 1] exist.
    FoldedOutputs(const State& state, const S* src, std::ptrdiff_t oldest, std::ptrdiff_t len)
        : state_(state), src_(src), oldest_(oldest), len_(len) {}

    // `count` outputs from phase q of the sample at `position` on.
    void produce(int q, std::ptrdiff_t position, int count, S* dst, Kel32f gain) const {
        while (count > 0) {
            Kel32f sums[2][kVectors * lanes<Kel32f>];
            const std::ptrdiff_t wanted = (count + q + 1) / 2;
            const bool few = wanted <= w;
            if (few)
                at(std::make_index_sequence<1>(), position, sums);
            else
                at(std::make_index_sequence<kVectors>(), position, sums);
            const std::ptrdiff_t positions = std::min(wanted, few ? w : kVectors * w);
            const int n = std::min(count, static_cast<int>(2 * positions) - q);
            Kel32f both[2 * kVectors * lanes<Kel32f>];
            for (std::ptrdiff_t i = 0; i < positions; ++i) {
                both[2 * i] = sums[0][i];
                both[2 * i + 1] = sums[1][i];
            }
            storeSamples(dst, both + q, static_cast<std::size_t>(n), gain);
            dst += n;
            count -= n;
            position += positions;
            q = 0;
        }
    }

  private:
    template <std::size_t... j>
    void at(std::index_sequence<j...> vectors, std::ptrdiff_t position,
            Kel32f (*sums)[kVectors * lanes<Kel32f>]) const {
        const int steps = state_.foldedSteps;
        const std::ptrdiff_t before = w * steps - 1, behind = w * steps + static_cast<std::ptrdiff_t>(sizeof...(j)) * w;
        if (position - before >= oldest_ && position + behind <= len_) {
            const S* const x = src_ + position;
            for (int phase = 0; phase < 2; ++phase)
                foldedSums(vectors, state_.foldedTaps(phase), steps, x, x + phase, sums[phase]);
            return;
        }
        // At the ends of the signal, where zeros stand for samples that no wanted output needs.
        Kel32f samples[kMostFolded];
        const std::ptrdiff_t from = position - before;
        const std::ptrdiff_t begin = std::clamp<std::ptrdiff_t>(oldest_ - from, 0, before + behind);
        const std::ptrdiff_t end = std::clamp<std::ptrdiff_t>(len_ - from, begin, before + behind);
        std::fill_n(samples, begin, 0.0f);
        for (std::ptrdiff_t i = begin; i < end; ++i) samples[i] = static_cast<Kel32f>(src_[from + i]);
        std::fill(samples + end, samples + before + behind, 0.0f);
        const Kel32f* const x = samples + before;
        for (int phase = 0; phase < 2; ++phase)
            foldedSums(vectors, state_.foldedTaps(phase), steps, x, x + phase, sums[phase]);
    }

    // Samples around the outputs of a call of at().
    static constexpr std::size_t kMostFolded = 2 * lanes<Kel32f> * kMostFoldedSteps + kVectors * lanes<Kel32f>;

    const State& state_;
    const S* src_;
    std::ptrdiff_t oldest_, len_;
};

}  // namespace kels::resample::fixed
