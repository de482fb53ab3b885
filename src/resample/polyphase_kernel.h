// Interpolation with a filter table of any resolution.
//
// The table h[0..L] holds nStep points to one period of the slower of the two rates.  For vectors it is laid out as
// rows: row p, 0 <= p <= nStep, holds h(|p - m nStep|) for m = -half .. half + 1, zero where that is beyond L.  A place
// p + a between two knots, 0 <= a < 1, is (1 - a) row p + a row p + 1.  The same rows serve both directions:
//
//   up    an output at t = i + place / nStep is the sum of x[i + m] row[m]: rows run along the inputs;
//   down  an input that lies at k + place / nStep on the grid of the outputs adds x row[m] to output k + m: rows run
//         along the outputs, because stretching the filter makes outputs, not inputs, whole periods apart.
//
// Every output is the same sum in the same order however the signal is cut into calls.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

#include "core/memory.h"
#include "core/simd.h"
#include "resample/samples.h"

namespace kels {

// Where the rows stand and how to find the two that a place lies between.
class FilterRows {
  public:
    static constexpr int kSpread = 4;  // rows that are used at once, each one place further than the one before
    static constexpr int kWidth = static_cast<int>(lanes<Kel32f>);
    static constexpr int kMargin = 2 * kWidth;
    static_assert(kMargin >= kWidth - 1 + kSpread - 1);

    // The rows of a table whose last point is L = last.  A sample up to `tolerance` beyond it counts, so that a sample
    // at L takes part whichever way its time is rounded.
    FilterRows(Kel32f* rows, int last, int nStep, Kel64f tolerance = 0)
        : rows_(rows),
          nStep_(nStep),
          half_(last / nStep),
          lowEdge_(last % nStep),
          highEdge_(nStep - 1 - lowEdge_),
          tolerance_(tolerance) {}

    static int64_t stride(int last, int nStep) {
        return roundUp<int64_t>(2 * (static_cast<int64_t>(last) / nStep) + 2, kWidth) + kMargin;
    }
    // Rows 0 to nStep and the two that replace others at the edges.
    static int64_t floats(int last, int nStep) {
        return stride(last, nStep) * (static_cast<int64_t>(nStep) + 3) + kMargin;
    }

    template <class T>
    void fill(const T* h, int last);

    std::ptrdiff_t half() const { return half_; }
    std::size_t taps() const { return 2 * static_cast<std::size_t>(half_) + 2; }

    struct Place {
        const Kel32f *low, *high;  // the two rows, at m = -half; kMargin zeros in front and behind
        Kel32f weight;             // of the second
    };
    Place at(Kel64f fraction) const {
        const Kel64f place = fraction * nStep_;
        const int p = std::min(static_cast<int>(place), nStep_ - 1);
        const Kel64f a = place - p;
        // Beyond L the filter ends; it does not run out over one more step, as the two rows would have it.
        const int low = p == lowEdge_ && a > tolerance_ ? nStep_ + 1 : p;
        const int high = p == highEdge_ && a < 1 - tolerance_ ? nStep_ + 2 : p + 1;
        return {row(low), row(high), static_cast<Kel32f>(a)};
    }

  private:
    std::size_t stride() const { return roundUp<std::size_t>(taps(), kWidth) + kMargin; }
    Kel32f* row(int p) const { return rows_ + static_cast<std::size_t>(p) * stride() + kMargin; }

    Kel32f* rows_;
    int nStep_;
    std::ptrdiff_t half_;
    int lowEdge_, highEdge_;  // row lowEdge has L as its first value, row highEdge + 1 as its last one
    Kel64f tolerance_;
};

template <class T>
void FilterRows::fill(const T* h, int last) {
    std::fill_n(rows_, stride() * (static_cast<std::size_t>(nStep_) + 3) + kMargin, 0.0f);
    const auto fillRow = [&](Kel32f* taps, int64_t p) {
        for (std::ptrdiff_t m = -half_; m <= half_ + 1; ++m) {
            const int64_t k = std::abs(p - static_cast<int64_t>(m) * nStep_);
            if (k <= last) taps[m + half_] = factorOf(h[k]);
        }
    };
    for (int p = 0; p <= nStep_; ++p) fillRow(row(p), p);
    fillRow(row(nStep_ + 1), lowEdge_);
    row(nStep_ + 1)[0] = 0;
    fillRow(row(nStep_ + 2), highEdge_ + 1);
    row(nStep_ + 2)[2 * half_ + 1] = 0;
}

// The time line of one call.
struct ResampleTimes {
    Kel64f start, step;  // of outputs, in input samples
    Kel64f reach;        // of the filter, in input samples, with the tolerance
    Kel64f factor;

    Kel64f at(int64_t n) const { return start + static_cast<Kel64f>(n) * step; }

    // How many outputs there are whose filter ends inside len inputs.
    int count(int len, Kel64f exactReach) const {
        const Kel64f latest = static_cast<Kel64f>(len) - 1 - exactReach;
        if (!(start <= latest) || !(latest - start < HUGE_VAL)) return 0;
        constexpr Kel64f most = std::numeric_limits<int>::max();
        auto n = static_cast<int64_t>(std::min((latest - start) / step, most - 1)) + 1;
        // The quotient may be rounded across an integer.
        while (n > 0 && at(n - 1) > latest) --n;
        while (n < std::numeric_limits<int>::max() && at(n) <= latest) ++n;
        return static_cast<int>(n);
    }
};

// One output: its samples, its two rows, and the two sums.
template <class S>
struct Interpolation {
    const S* x;
    FilterRows::Place place;
    Vec<Kel32f> low{0}, high{0};

    [[gnu::always_inline]] void add(std::size_t i, const Vec<Kel32f>& samples) {
        const auto once = held(samples);
        low = mulAdd(once, load(place.low + i), low);
        high = mulAdd(once, load(place.high + i), high);
    }
    Vec<Kel32f> sum() const {
        return mulAdd(high, Vec<Kel32f>(place.weight), Vec<Kel32f>(low * Vec<Kel32f>(1 - place.weight)));
    }
};

// sums[n], n < count, without gain; the samples end at src + len.
template <class S>
void interpolate(const FilterRows& rows, const ResampleTimes& times, int64_t first, std::size_t count, const S* src,
                 int len, Kel32f* sums) {
    constexpr std::size_t w = lanes<Kel32f>;
    const Kel64f base = std::floor(times.at(first));
    const Kel64f fraction = times.at(first) - base;
    const S* const origin = src + static_cast<std::ptrdiff_t>(base) - rows.half();
    const std::size_t padded = roundUp(rows.taps(), w);

    const auto at = [&](std::size_t n) __attribute__((always_inline)) {
        const Kel64f offset = fraction + static_cast<Kel64f>(n) * times.step;
        const int whole = static_cast<int>(offset);
        return Interpolation<S>{origin + whole, rows.at(offset - whole)};
    };
    // The rows end in zeros, so that samples behind the reach do no harm; but behind src + len there are none.
    const auto inside = [&](const Interpolation<S>& output) {
        return static_cast<std::size_t>(src + len - output.x) >= padded;
    };
    std::size_t n = 0;
    for (; n + 4 <= count; n += 4) {
        // Four at once hide the latency of the additions.
        auto a = at(n), b = at(n + 1), c = at(n + 2), d = at(n + 3);
        if (!inside(d)) break;
        for (std::size_t i = 0; i < padded; i += w) {
            a.add(i, loadSamples(a.x + i));
            b.add(i, loadSamples(b.x + i));
            c.add(i, loadSamples(c.x + i));
            d.add(i, loadSamples(d.x + i));
        }
        sumsOf4(a.sum(), b.sum(), c.sum(), d.sum(), sums + n);
    }
    for (; n < count; ++n) {
        auto a = at(n);
        const std::size_t room = std::min(padded, static_cast<std::size_t>(src + len - a.x));
        std::size_t i = 0;
        for (; i + w <= room; i += w) a.add(i, loadSamples(a.x + i));
        if (i < room) a.add(i, loadSamples(a.x + i, room - i));
        const auto sum = a.sum();
        Kel32f four[4];
        sumsOf4(sum, sum, sum, sum, four);
        sums[n] = four[0];
    }
}

// One input on the grid of the outputs: its two rows from the first output on, times its value.
struct SpreadInput {
    const Kel32f *low, *high;
    Kel32f lowWeight, highWeight;
};

// sums[n] += what the inputs give, begin <= n < end rounded up to whole vectors.
template <std::size_t... I>
[[gnu::always_inline]] inline void spread(std::index_sequence<I...>, bool together, const SpreadInput* inputs,
                                          Kel32f* sums, std::ptrdiff_t begin, std::ptrdiff_t end) {
    constexpr auto w = static_cast<std::ptrdiff_t>(lanes<Kel32f>);
    struct Wide {
        const Kel32f *low, *high;
        Vec<Kel32f> lowWeight, highWeight;

        [[gnu::always_inline]] Vec<Kel32f> add(std::ptrdiff_t n, const Vec<Kel32f>& sum) const {
            return mulAdd(highWeight, load(high + n), mulAdd(lowWeight, load(low + n), sum));
        }
    };
    const auto run = [=](const auto&... input) __attribute__((always_inline)) {
        if (together) {
            for (std::ptrdiff_t n = begin; n < end; n += w) {
                Vec<Kel32f> part(0);
                ((part = input.add(n, part)), ...);
                store(sums + n, Vec<Kel32f>(load(sums + n) + part));
            }
        } else {
            for (std::ptrdiff_t n = begin; n < end; n += w) {
                Vec<Kel32f> sum = load(sums + n);
                ((sum += input.add(n, Vec<Kel32f>(0))), ...);
                store(sums + n, sum);
            }
        }
    };
    run(Wide{inputs[I].low, inputs[I].high, Vec<Kel32f>(inputs[I].lowWeight), Vec<Kel32f>(inputs[I].highWeight)}...);
}

// As interpolate, for factor < 1.  sums has room for one more vector.
template <class S>
void decimate(const FilterRows& rows, const ResampleTimes& times, int64_t firstOutput, std::size_t count, const S* src,
              int len, Kel32f* sums) {
    constexpr auto w = static_cast<std::ptrdiff_t>(lanes<Kel32f>);
    constexpr std::ptrdiff_t most = FilterRows::kSpread;  // inputs at once
    const Kel64f base = std::floor(times.at(firstOutput));
    const Kel64f start = times.at(firstOutput) - base;
    const S* const x = src + static_cast<std::ptrdiff_t>(base);
    const Kel64f last = start + static_cast<Kel64f>(count - 1) * times.step;
    const auto outputs = static_cast<std::ptrdiff_t>(count);
    std::fill_n(sums, roundUp<std::size_t>(count, lanes<Kel32f>), 0.0f);

    auto j = static_cast<std::ptrdiff_t>(std::ceil(start - times.reach));
    const std::ptrdiff_t end = std::min(static_cast<std::ptrdiff_t>(std::floor(last + times.reach)) + 1,
                                        len - static_cast<std::ptrdiff_t>(base));
    const auto onGrid = [&](std::ptrdiff_t input) { return (static_cast<Kel64f>(input) - start) * times.factor; };

    // Where there are several inputs between two outputs, those are summed before they join the output: that rounds
    // less often.  They go by fours from the first one that lies there, also where that one is behind the start.
    const bool together = times.factor <= 0.5;
    auto k = static_cast<std::ptrdiff_t>(std::floor(onGrid(j)));
    const auto firstAfter = static_cast<std::ptrdiff_t>(std::ceil(start + static_cast<Kel64f>(k) * times.step));
    std::ptrdiff_t room = together ? most - (j - firstAfter) % most : most;
    while (j < end) {
        SpreadInput inputs[most]{};
        std::ptrdiff_t n = 0;
        std::ptrdiff_t first = 0;  // output that the first value of the rows belongs to
        for (; n < room && j < end; ++n, ++j) {
            const Kel64f u = onGrid(j);
            if (together && n > 0 && u >= static_cast<Kel64f>(k + 1)) break;
            while (u >= static_cast<Kel64f>(k + 1)) ++k;
            if (n == 0) first = k - rows.half();
            const auto place = rows.at(u - static_cast<Kel64f>(k));
            const auto sample = static_cast<Kel32f>(x[j]);
            const std::ptrdiff_t zero = k - rows.half();
            inputs[n] = {place.low - zero, place.high - zero, sample * (1 - place.weight), sample * place.weight};
        }
        room = most;
        const std::ptrdiff_t from = first <= 0 ? 0 : first / w * w;
        const std::ptrdiff_t to = std::min(k - rows.half() + static_cast<std::ptrdiff_t>(rows.taps()), outputs);
        switch (n) {
            case 1:
                spread(std::make_index_sequence<1>(), together, inputs, sums, from, to);
                break;
            case 2:
                spread(std::make_index_sequence<2>(), together, inputs, sums, from, to);
                break;
            case 3:
                spread(std::make_index_sequence<3>(), together, inputs, sums, from, to);
                break;
            default:
                spread(std::make_index_sequence<most>(), together, inputs, sums, from, to);
        }
    }
}

// Produces `count` outputs.
template <class S>
void resample(const FilterRows& rows, const ResampleTimes& times, int count, const S* src, int len, S* dst,
              Kel32f gain) {
    constexpr int chunk = 2048;  // many more than a filter has taps: inputs at a border are looked at twice
    alignas(64) Kel32f sums[chunk + lanes<Kel32f>];
    for (int done = 0; done < count; done += chunk) {
        const auto n = static_cast<std::size_t>(std::min(chunk, count - done));
        if (times.factor < 1)
            decimate(rows, times, done, n, src, len, sums);
        else
            interpolate(rows, times, done, n, src, len, sums);
        storeSamples(dst + done, sums, n, gain);
    }
}

}  // namespace kels
