// The table of the general form as rows of vectors.
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
#include <cstddef>
#include <cstdlib>

#include "core/memory.h"
#include "core/simd/vec.h"
#include "resample/sample_conversion.h"

namespace kels::resample::general {

struct FourPlaces;

// Where the rows stand and how to find the two that a place lies between.
class FilterRows {
  public:
    static constexpr int kSpread = 4;  // rows that are used at once, each one place further than the one before
    static constexpr int kMargin = 2 * static_cast<int>(lanes<Kel32f>);
    static_assert(kMargin >= static_cast<int>(lanes<Kel32f>) - 1 + kSpread - 1);

    // The rows of a table whose last point is L = last.  A sample up to `tolerance` beyond it counts, so that a sample
    // at L takes part whichever way its time is rounded.
    FilterRows(Kel32f* rows, int last, int nStep, Kel64f tolerance = 0)
        : rows_(rows),
          nStep_(nStep),
          half_(last / nStep),
          lowEdge_(last % nStep),
          highEdge_(nStep - 1 - lowEdge_),
          tolerance_(tolerance) {}

    // Rows 0 to nStep and the two that replace others at the edges.
    static int64_t floats(int last, int nStep) {
        const int64_t span = roundUp<int64_t>(2 * (static_cast<int64_t>(last) / nStep) + 2, lanes<Kel32f>);
        return (span + kMargin) * (static_cast<int64_t>(nStep) + 3) + kMargin;
    }

    template <class T>
    void fill(const T* h, int last);

    std::ptrdiff_t half() const { return half_; }
    // Values of a row, with the zeros that make it whole vectors.
    std::size_t span() const { return roundUp(2 * static_cast<std::size_t>(half_) + 2, lanes<Kel32f>); }

    // Two rows, from m = -half on and with kMargin zeros in front and behind, and the weight of the second.
    struct Place {
        const Kel32f *low, *high;
        Kel32f weight;
    };
    Place at(Kel64f fraction) const {
        const Kel64f place = fraction * nStep_;
        const int p = std::min(static_cast<int>(place), nStep_ - 1);
        const Kel64f a = place - p;
        return {low(p, a), high(p, a), static_cast<Kel32f>(a)};
    }
    // Of four times that are not negative, and their integer parts.
    void find(const Kel64f (&times)[4], int (&whole)[4], FourPlaces& found) const;

  private:
    std::size_t stride() const { return span() + kMargin; }
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

}  // namespace kels::resample::general
