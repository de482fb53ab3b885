// Downsampling by a whole number has one filter, and outputs that follow each other share most of their samples.
#pragma once

#include <algorithm>
#include <cstddef>

#include "core/simd/row_sums.h"
#include "core/simd/vec.h"
#include "resample/fixed/state.h"
#include "resample/sample_conversion.h"

namespace kels::resample::fixed {

// Eight outputs of a filter that is the only one, `shift` samples apart, which is a whole number of vectors: every
// vector of samples serves four of them.  The filter is at least three shifts long before its tail, and behind.
template <class S>
class OverlappingOutputs {
  public:
    OverlappingOutputs(const State& state, std::ptrdiff_t shift, const S* x, Kel32f* sums)
        : filter_(state.filters(0)), shift_(shift), x_(x) {
        taps(state.tail, state.span());
        taps(0, state.tail);
        sumsOf4(a_, b_, c_, d_, sums);
        sumsOf4(e_, f_, g_, h_, sums + 4);
    }
    static bool suits(const State& state, int64_t shift) {
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

}  // namespace kels::resample::fixed
