// Resampling by any factor with a filter table.
//
// Which of three ways an output is computed depends on the factor and the filter alone, and its sum is the same in the
// same order however the signal is cut into calls.
#pragma once

#include <algorithm>
#include <cstddef>

#include "resample/decimate.h"
#include "resample/filter_rows.h"
#include "resample/in_periods.h"
#include "resample/interpolate.h"
#include "resample/samples.h"

namespace kels {

// Produces `count` outputs.
template <class S, class T>
void resample(const FilterRows& rows, const FilterTable<T>& table, const ResampleTimes& times, int count, const S* src,
              int len, S* dst, Kel32f gain) {
    const bool down = times.factor < 1;
    // A filter for a fraction costs about ten outputs downwards, one upwards.
    const Period period = periodOf(times.step, down ? 8 : 256);
    const bool periodic = period.outputs > 0 && tapsOf(rows, times) <= Kel64f{kMostTaps};
    constexpr int mostAtOnce = 8192;  // whose samples are near
    const int most = down && !periodic ? kMostSpread : mostAtOnce;
    const int parts = (count + most - 1) / most;
    for (int part = 0; part < parts; ++part) {
        const auto first = static_cast<int>(static_cast<int64_t>(count) * part / parts);
        const int n = static_cast<int>(static_cast<int64_t>(count) * (part + 1) / parts) - first;
        const auto put = [=](int k, Kel32f sum) { storeSample(dst + first + k, sum, gain); };
        if (periodic)
            resampleInPeriods(rows, table, times, period, first, n, src, len, put);
        else if (down)
            decimate(rows, times, first, n, src, len,
                     [=](Kel32f* sums) { storeSamples(dst + first, sums, static_cast<std::size_t>(n), gain); });
        else
            interpolate(rows, times, first, n, src, len, put);
    }
}

}  // namespace kels
