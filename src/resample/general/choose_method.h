// Resampling by any factor with a filter table.
//
// There are several ways to compute an output, which suit different factors and lengths.  Where times have no rounding,
// which one is taken depends on the factor and the filter alone.  In each of them an output is the same sum in the same
// order however many others there are.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "resample/general/decimate_by_fraction.h"
#include "resample/general/decimate_in_time.h"
#include "resample/general/filter_rows.h"
#include "resample/general/periodic_filters.h"
#include "resample/general/interpolate.h"
#include "resample/sample_conversion.h"

namespace kels {

// Produces `count` outputs.
template <class S, class T>
void resample(const FilterRows& rows, const FilterTable<T>& table, const ResampleTimes& times, int count, const S* src,
              int len, S* dst, Kel32f gain) {
    if (count == 0) return;
    const bool down = times.factor < 1;
    const bool exact = std::floor(times.step * 0x1p40) == times.step * 0x1p40;  // so are its multiples
    // To make a filter costs downwards as much as about ten outputs, upwards as one.
    const Period period =
        tapsOf(rows, times) <= Kel64f{kMostTaps} ? periodOf(times.step, down ? 8 : 256) : Period{0, 0};
    const bool periodic = period.outputs > 0 && (period.outputs <= 8 || (!exact && count / 2 >= period.outputs));
    const bool ordered = down && !periodic && !exact && worthOrdering(times, std::min(count, kMostSpread));

    constexpr int samplesNear = 8192;
    const int most = periodic || !down ? samplesNear : ordered ? kMostSpread : kMostInTime;
    const int parts = (count - 1) / most + 1;
    for (int part = 0; part < parts; ++part) {
        const auto first = static_cast<int>(static_cast<int64_t>(count) * part / parts);
        const int n = static_cast<int>(static_cast<int64_t>(count) * (part + 1) / parts) - first;
        const auto put = [=](int k, Kel32f sum) { storeSample(dst + first + k, sum, gain); };
        const auto putAll = [=](Kel32f* sums) { storeSamples(dst + first, sums, static_cast<std::size_t>(n), gain); };
        if (periodic)
            resampleInPeriods(rows, table, times, period, first, n, src, len, put);
        else if (!down)
            interpolate(rows, times, first, n, src, len, put);
        else if (ordered)
            decimate(rows, times, first, n, src, len, putAll);
        else
            decimateInTime(rows, times, first, static_cast<std::size_t>(n), src, len, putAll);
    }
}

}  // namespace kels
