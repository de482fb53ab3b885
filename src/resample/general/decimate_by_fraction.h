// Outputs at any times, for factors below 1: inputs are spread over the outputs around them.
//
// As when interpolating, the inputs come in the order of their fractions, here of their times on the grid of the
// outputs.  An output's sum is the same however many others there are, for its inputs always come in that order.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "core/memory.h"
#include "core/simd/vec.h"
#include "resample/general/filter_rows.h"
#include "resample/general/fraction_order.h"
#include "resample/general/output_times.h"
#include "resample/general/shared_rows.h"
#include "resample/sample_conversion.h"

namespace kels::resample::general {

inline constexpr int kMostSpread = 4096;           // outputs at once
inline constexpr std::ptrdiff_t kSumMargin = 512;  // places on both sides of their sums

// Whether that is the faster way: not for few outputs, and not where neighbours in that order are close.  For the
// processor waits where a vector of sums overlaps with one that was stored just before.
inline bool worthOrdering(const OutputTimes& times, int count) {
    const Kel64f inputs = count * times.step + 2 * times.reach;
    if (count < 1024 || inputs > 1 << 20) return false;
    return FractionOrder(0, times.factor, static_cast<int>(inputs)).leastStep() * times.factor >= 64;
}

// The sums of up to kMostSpread outputs.  What the lobe of the filter gives is kept apart: where the other sums are
// small, so is their rounding.
class SpreadSums {
  public:
    explicit SpreadSums(int count) : count_(count) {
        std::fill_n(rest_, kSumMargin + count + kSumMargin, 0.0f);
        std::fill_n(lobe_, kSumMargin + count + kSumMargin, 0.0f);
    }
    // Where the first output stands; as many places as kSumMargin before it and behind the last one may be used.
    Kel32f* rest() { return rest_ + kSumMargin; }
    Kel32f* lobe() { return lobe_ + kSumMargin; }
    int count() const { return count_; }

    Kel32f* total() {
        for (std::ptrdiff_t n = 0; n < count_; n += static_cast<std::ptrdiff_t>(lanes<Kel32f>))
            store(rest() + n, Vec<Kel32f>(load(rest() + n) + load(lobe() + n)));
        return rest();
    }

  private:
    alignas(64) Kel32f rest_[kSumMargin + kMostSpread + kSumMargin];
    alignas(64) Kel32f lobe_[kSumMargin + kMostSpread + kSumMargin];
    int count_;
};

// The parts of a row that are added to one of the sums and to the other.
class RowParts {
  public:
    explicit RowParts(const FilterRows& rows)
        : span_(static_cast<std::ptrdiff_t>(rows.span())),
          lobe_(std::max<std::ptrdiff_t>(rows.half() - 4, 0) / w * w),
          lobeEnd_(std::min(lobe_ + std::max<std::ptrdiff_t>(16, w), span_)) {}
    std::ptrdiff_t span() const { return span_; }

    // add(sums, begin, end) for each part of the row from `first` to `last`, in whole vectors.
    template <class Add>
    [[gnu::always_inline]] void forEach(SpreadSums& sums, std::ptrdiff_t first, std::ptrdiff_t last, Add add) const {
        first = std::max<std::ptrdiff_t>(first, 0) / w * w;
        last = std::min(last, span_);
        add(sums.rest(), first, std::min(last, lobe_));
        add(sums.lobe(), std::max(first, lobe_), std::min(last, lobeEnd_));
        add(sums.rest(), std::max(first, lobeEnd_), last);
    }

  private:
    static constexpr auto w = static_cast<std::ptrdiff_t>(lanes<Kel32f>);
    std::ptrdiff_t span_, lobe_, lobeEnd_;
};

// What four inputs are to the sums.
struct FourInputs {
    std::ptrdiff_t zero[4];  // outputs that the first values of the rows belong to
    Kel32f lowWeight[4], highWeight[4];
    std::ptrdiff_t from, to;  // the part of the rows that belongs to outputs of any of them
};

// What an input gives to one vector of sums.
[[gnu::always_inline]] inline void spread(const Vec<Kel32f>& lowWeight, const Vec<Kel32f>& low,
                                          const Vec<Kel32f>& highWeight, const Vec<Kel32f>& high, Kel32f* sums) {
    store(sums, mulAdd(highWeight, high, mulAdd(lowWeight, low, load(sums))));
}

// One after the other, each only as far as there are outputs: for rows that would reach beyond the margins.
[[gnu::noinline]] inline void spreadEach(FourPlaces places, FourInputs inputs, RowParts parts, SpreadSums& sums) {
    constexpr auto w = static_cast<std::ptrdiff_t>(lanes<Kel32f>);
    for (int k = 0; k < 4; ++k) {
        const std::ptrdiff_t zero = inputs.zero[k];
        const auto add = [&](Kel32f* part, std::ptrdiff_t begin, std::ptrdiff_t end) {
            for (std::ptrdiff_t n = begin; n < end; n += w)
                spread(inputs.lowWeight[k], load(places.low[k] + n), inputs.highWeight[k], load(places.high[k] + n),
                       part + zero + n);
        };
        parts.forEach(sums, -zero, sums.count() - zero, add);
    }
}

// All four at once.  What describes them is taken by value: what a store might change would be loaded again after each.
struct SpreadTogether {
    Kel32f* sums[4];  // that the first values of the rows belong to
    Vec<Kel32f> lowWeight[4], highWeight[4];

    template <class K>
    [[gnu::always_inline]] void operator()(K k, std::size_t i, const Vec<Kel32f>& low, const Vec<Kel32f>& high) {
        spread(lowWeight[k], low, highWeight[k], high, sums[k] + i);
    }
};
[[gnu::always_inline]] inline void spreadTogether(const FourPlaces places, const FourInputs inputs,
                                                  const RowParts& parts, SpreadSums& sums) {
    const auto run = [&](auto... step) __attribute__((always_inline)) {
        SpreadTogether four;
        for (int k = 0; k < 4; ++k) {
            four.lowWeight[k] = Vec<Kel32f>(inputs.lowWeight[k]);
            four.highWeight[k] = Vec<Kel32f>(inputs.highWeight[k]);
        }
        const auto add = [&](Kel32f * part, std::ptrdiff_t begin, std::ptrdiff_t end) __attribute__((always_inline)) {
            for (int k = 0; k < 4; ++k) four.sums[k] = part + inputs.zero[k];
            alongRows<step()...>(places, static_cast<std::size_t>(begin), static_cast<std::size_t>(end), four);
        };
        parts.forEach(sums, inputs.from, inputs.to, add);
    };
    withSteps(places, run);
}

// put(sums) with the sums of `count` outputs, at most kMostSpread, for factor < 1.
template <class S, class Put>
void decimateByFraction(const FilterRows rows, const OutputTimes& times, int64_t firstOutput, int count, const S* src,
                        int len, Put put) {
    const Kel64f base = std::floor(times.at(firstOutput));
    const Kel64f start = times.at(firstOutput) - base;
    const Kel64f latest = start + (count - 1) * times.step + times.reach;
    const auto oldest = static_cast<std::ptrdiff_t>(std::ceil(start - times.reach));
    const auto newest =
        std::min(static_cast<std::ptrdiff_t>(std::floor(latest)), len - 1 - static_cast<std::ptrdiff_t>(base));
    const S* const x = src + static_cast<std::ptrdiff_t>(base) + oldest;
    const auto inputs = static_cast<int>(newest - oldest + 1);

    // Times of inputs on the grid of the outputs, from `origin` on.
    const Kel64f beforeStart = static_cast<Kel64f>(oldest) - start;
    const Kel64f origin = std::floor(beforeStart * times.factor);
    const auto timeOf = [&](int n) { return (n + beforeStart) * times.factor - origin; };
    const std::ptrdiff_t firstZero = static_cast<std::ptrdiff_t>(origin) - rows.half();

    const RowParts parts(rows);
    const bool longRows = parts.span() > kSumMargin;
    SpreadSums sums(count);
    const FractionOrder order(timeOf(0), times.factor, inputs);
    int next = order.lowest();
    for (int i = 0; i < inputs; i += 4) {
        int whole[4];
        Kel64f t[4];
        Kel32f sample[4];
        for (int k = 0; k < 4; ++k) {
            t[k] = timeOf(next);
            sample[k] = i + k < inputs ? static_cast<Kel32f>(x[next]) : 0.0f;
            next = order.after(next);
        }
        FourPlaces places;
        rows.find(t, whole, places);
        FourInputs four;
        four.from = parts.span(), four.to = 0;
        for (int k = 0; k < 4; ++k) {
            four.zero[k] = firstZero + whole[k];
            four.lowWeight[k] = sample[k] * (1 - places.weight[k]);
            four.highWeight[k] = sample[k] * places.weight[k];
            four.from = std::min(four.from, -four.zero[k]);
            four.to = std::max(four.to, count - four.zero[k]);
        }
        if (longRows) {
            spreadEach(places, four, parts, sums);
            continue;
        }
        spreadTogether(places, four, parts, sums);
    }
    put(sums.total());
}

}  // namespace kels::resample::general
