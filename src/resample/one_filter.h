// Outputs that share one filter and lie equally far apart.
//
// Every output is the sum over one vector of products that runs along its filter, however many are computed at once.
#pragma once

#include <algorithm>
#include <cstddef>
#include <numeric>

#include "core/simd.h"
#include "core/simd_rows.h"
#include "resample/samples.h"

namespace kels {

// The outputs whose samples begin at a, b, c and d.
template <class S>
struct FourOutputs {
    const S *xa, *xb, *xc, *xd;
    Vec<Kel32f> a{0}, b{0}, c{0}, d{0};

    [[gnu::always_inline]] void add(std::ptrdiff_t i, const Vec<Kel32f>& tap) {
        a = mulAdd(tap, loadSamples(xa + i), a);
        b = mulAdd(tap, loadSamples(xb + i), b);
        c = mulAdd(tap, loadSamples(xc + i), c);
        d = mulAdd(tap, loadSamples(xd + i), d);
    }
    void total(Kel32f* sums) const { sumsOf4(a, b, c, d, sums); }
};

// Eight outputs `shift` samples apart, which is a whole number of vectors: every vector of samples serves four of them.
// The filter is at least three shifts long.
template <class S>
class OverlappingOutputs {
  public:
    OverlappingOutputs(const Kel32f* filter, std::ptrdiff_t span, std::ptrdiff_t shift, const S* x, Kel32f* sums)
        : filter_(filter), shift_(shift), x_(x) {
        part<0b0001>(0, shift);
        part<0b0011>(shift, 2 * shift);
        part<0b0111>(2 * shift, 3 * shift);
        part<0b1111>(3 * shift, span);
        part<0b1110>(span, span + shift);
        part<0b1100>(span + shift, span + 2 * shift);
        part<0b1000>(span + 2 * shift, span + 3 * shift);
        sumsOf4(a_, b_, c_, d_, sums);
        sumsOf4(e_, f_, g_, h_, sums + 4);
    }

  private:
    // What the samples from `begin` to `end` give to those of the outputs whose bit is set.
    template <unsigned Outputs>
    [[gnu::always_inline]] void part(std::ptrdiff_t begin, std::ptrdiff_t end) {
        const Kel32f* const h = filter_;
        const S* const x = x_;
        const std::ptrdiff_t shift = shift_;
        Vec<Kel32f> a = a_, b = b_, c = c_, d = d_, e = e_, f = f_, g = g_, last = h_;
        for (std::ptrdiff_t i = begin; i < end; i += static_cast<std::ptrdiff_t>(lanes<Kel32f>)) {
            const auto now = held(loadSamples(x + i)), later = held(loadSamples(x + 4 * shift + i));
            const auto add = [&](std::ptrdiff_t member, Vec<Kel32f>& first, Vec<Kel32f>& second) {
                const auto tap = held(load(h + i - member * shift));
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

// put(n, sum) for `count` outputs whose samples begin at x + n * distance, 0 <= n < count, and end before `end`.  The
// filter is padded with zeros to `span`, a whole number of vectors; nothing is read from `end` on.
template <class S, class Put>
void outputsOfOneFilter(const Kel32f* filter, std::ptrdiff_t span, const S* x, const S* end, std::ptrdiff_t distance,
                        int count, Put put) {
    constexpr auto w = static_cast<std::ptrdiff_t>(lanes<Kel32f>);
    Kel32f sums[8];
    const auto start = [=](int n) { return x + static_cast<std::ptrdiff_t>(n) * distance; };
    // Outputs that have all of the padded span.
    const std::ptrdiff_t room = end - x - span;
    const int whole = room < 0 ? 0 : static_cast<int>(std::min<std::ptrdiff_t>(count, room / distance + 1));
    int n = 0;
    const std::ptrdiff_t apart = w / std::gcd(distance, w);  // of outputs that start a whole number of vectors apart
    if (3 * apart * distance <= span) {
        for (const int eight = static_cast<int>(8 * apart); n + eight <= whole; n += eight) {
            for (int i = 0; i < apart; ++i) {
                OverlappingOutputs<S>(filter, span, apart * distance, start(n + i), sums);
                for (int k = 0; k < 8; ++k) put(n + i + k * static_cast<int>(apart), sums[k]);
            }
        }
    }
    const auto four = [&](int i) { return FourOutputs<S>{start(i), start(i + 1), start(i + 2), start(i + 3)}; };
    for (; n + 8 <= whole; n += 8) {
        FourOutputs<S> first = four(n), second = four(n + 4);
        for (std::ptrdiff_t i = 0; i < span; i += w) {
            const auto tap = held(load(filter + i));
            first.add(i, tap);
            second.add(i, tap);
        }
        first.total(sums);
        second.total(sums + 4);
        for (int k = 0; k < 8; ++k) put(n + k, sums[k]);
    }
    while (n < whole) {
        const int last = std::min(3, whole - 1 - n);
        FourOutputs<S> some{start(n), start(n + std::min(1, last)), start(n + std::min(2, last)), start(n + last)};
        for (std::ptrdiff_t i = 0; i < span; i += w) some.add(i, held(load(filter + i)));
        some.total(sums);
        for (int k = 0; k <= last; ++k) put(n + k, sums[k]);
        n += last + 1;
    }
    for (; n < count; ++n) {
        const std::ptrdiff_t samples = std::min(span, end - start(n));
        Vec<Kel32f> sum(0);
        std::ptrdiff_t i = 0;
        for (; i + w <= samples; i += w) sum = mulAdd(load(filter + i), loadSamples(start(n) + i), sum);
        if (i < samples)
            sum = mulAdd(load(filter + i), loadSamples(start(n) + i, static_cast<std::size_t>(samples - i)), sum);
        sumsOf4(sum, sum, sum, sum, sums);
        put(n, sums[0]);
    }
}

}  // namespace kels
