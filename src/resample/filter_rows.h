// The table of the general form as rows, and the times of its outputs.
//
// The table h[0..L] holds nStep points to one period of the slower of the two rates.  For vectors it is laid out as
// rows: row p, 0 <= p <= nStep, holds h(|p - m nStep|) for m = -half .. half + 1, zero where that is beyond L.  A place
// p + a between two knots, 0 <= a < 1, is (1 - a) row p + a row p + 1.  The same rows serve both directions:
//
//   up    an output at t = i + place / nStep is the sum of x[i + m] row[m]: rows run along the inputs;
//   down  an input that lies at k + place / nStep on the grid of the outputs adds x row[m] to output k + m: rows run
//         along the outputs, because stretching the filter makes outputs, not inputs, whole periods apart.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <type_traits>

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
    std::size_t knots() const { return static_cast<std::size_t>(nStep_); }
    std::size_t taps() const { return 2 * static_cast<std::size_t>(half_) + 2; }

    // Two rows, each at m = -half and with kMargin zeros in front and behind, and the weight of the second.
    struct Place {
        const Kel32f *low, *high;
        Kel32f weight;
    };
    // The places of four times that are not negative, and their integer parts.  In fours, for the compiler makes vectors.
    void find(const Kel64f (&times)[4], int (&whole)[4], struct FourPlaces& found) const;
    Place at(Kel64f fraction) const {
        const Kel64f place = fraction * nStep_;
        const int p = std::min(static_cast<int>(place), nStep_ - 1);
        const Kel64f a = place - p;
        return {low(p, a), high(p, a), static_cast<Kel32f>(a)};
    }

  private:
    std::size_t stride() const { return roundUp<std::size_t>(taps(), kWidth) + kMargin; }
    // Beyond L the filter ends; it does not run out over one more step, as the two rows would have it.
    const Kel32f* low(int p, Kel64f a) const { return row(p == lowEdge_ && a > tolerance_ ? nStep_ + 1 : p); }
    const Kel32f* high(int p, Kel64f a) const { return row(p == highEdge_ && a < 1 - tolerance_ ? nStep_ + 2 : p + 1); }
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

// Four places, and how their rows follow each other.
struct FourPlaces {
    static constexpr int kOther = 8;

    const Kel32f *low[4], *high[4];
    Kel32f weight[4];
    int steps;  // bit k: place k + 1 takes the next rows, not the same ones; kOther where it may be any
};

[[gnu::always_inline]] inline void FilterRows::find(const Kel64f (&times)[4], int (&whole)[4],
                                                    FourPlaces& found) const {
    Kel64f place[4];
    int p[4];
    for (int k = 0; k < 4; ++k) whole[k] = static_cast<int>(times[k]);
    for (int k = 0; k < 4; ++k) place[k] = (times[k] - whole[k]) * nStep_;
    for (int k = 0; k < 4; ++k) p[k] = std::min(static_cast<int>(place[k]), nStep_ - 1);
    for (int k = 0; k < 4; ++k) place[k] -= p[k];
    for (int k = 0; k < 4; ++k) found.weight[k] = static_cast<Kel32f>(place[k]);
    for (int k = 0; k < 4; ++k) {
        found.low[k] = low(p[k], place[k]);
        found.high[k] = high(p[k], place[k]);
    }
    const auto step = [&](int k) {
        const bool same = found.low[k + 1] == found.low[k] && found.high[k + 1] == found.high[k];
        return same ? 0 : found.low[k + 1] == found.high[k] ? 1 << k : FourPlaces::kOther;
    };
    found.steps = std::min(step(0) + step(1) + step(2), FourPlaces::kOther);
}

enum class RowStep { Same, Next, Other };

// Walks along the rows of four places: each(k, i, low, high) for every vector i and every place k.  Places that share
// rows share their loads.
template <RowStep B, RowStep C, RowStep D, class Each>
[[gnu::always_inline]] inline void alongRows(const FourPlaces& places, std::size_t begin, std::size_t end, Each& each) {
    const Kel32f* const rows[4][2] = {{places.low[0], places.high[0]},
                                      {places.low[1], places.high[1]},
                                      {places.low[2], places.high[2]},
                                      {places.low[3], places.high[3]}};
    for (std::size_t i = begin; i < end; i += lanes<Kel32f>) {
        Vec<Kel32f> low = held(load(rows[0][0] + i)), high = held(load(rows[0][1] + i));
        const auto visit = [&](auto k, RowStep step) __attribute__((always_inline)) {
            if (step != RowStep::Same) {
                low = step == RowStep::Next ? high : held(load(rows[k][0] + i));
                high = held(load(rows[k][1] + i));
            }
            each(k, i, low, high);
        };
        visit(std::integral_constant<int, 0>(), RowStep::Same);
        visit(std::integral_constant<int, 1>(), B);
        visit(std::integral_constant<int, 2>(), C);
        visit(std::integral_constant<int, 3>(), D);
    }
}
// The same with make() giving each, and finish(each) in the end.
template <class Make, class Finish>
[[gnu::always_inline]] inline void alongRows(const FourPlaces& places, std::size_t begin, std::size_t end, Make make,
                                             Finish finish) {
    const auto run = [&](auto b, auto c, auto d) __attribute__((always_inline)) {
        auto each = make();
        alongRows<b(), c(), d()>(places, begin, end, each);
        finish(each);
    };
    const std::integral_constant<RowStep, RowStep::Same> same;
    const std::integral_constant<RowStep, RowStep::Next> next;
    const std::integral_constant<RowStep, RowStep::Other> other;
    switch (places.steps) {
        case 0:
            return run(same, same, same);
        case 1:
            return run(next, same, same);
        case 2:
            return run(same, next, same);
        case 3:
            return run(next, next, same);
        case 4:
            return run(same, same, next);
        case 5:
            return run(next, same, next);
        case 6:
            return run(same, next, next);
        case 7:
            return run(next, next, next);
        default:
            return run(other, other, other);
    }
}

// The table itself.
template <class T>
struct FilterTable {
    const T* h;  // ends with its last point twice
    int last;
    Kel64f tolerance, scale;  // scale: points per input sample

    Kel32f at(Kel64f place) const {
        if (place > last + tolerance) return 0;
        const int k = std::min(static_cast<int>(place), last);
        const auto a = static_cast<Kel32f>(place - k);
        const Kel32f low = factorOf(h[k]);
        return low + a * (factorOf(h[k + 1]) - low);
    }
};

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

}  // namespace kels
