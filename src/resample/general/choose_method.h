// Resampling by any factor with a filter table: which way an output is computed.
//
// There are several ways, which suit different factors and lengths.  Where times have no rounding, which one is taken
// depends on the factor and the filter alone.  In each of them an output is the same sum in the same order however many
// others there are.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "core/check.h"
#include "resample/general/decimate_by_fraction.h"
#include "resample/general/decimate_in_time.h"
#include "resample/general/filter_rows.h"
#include "resample/general/filter_table.h"
#include "resample/general/interpolate.h"
#include "resample/general/output_times.h"
#include "resample/general/periodic_filters.h"
#include "resample/sample_conversion.h"

namespace kels::resample::general {

enum class Method { PeriodicFilters, Interpolate, DecimateByFraction, DecimateInTime };

struct Choice {
    Method method;
    Period period;  // of PeriodicFilters
    int most;       // outputs at once
};

inline Choice chooseMethod(const FilterRows& rows, const OutputTimes& times, int count) {
    constexpr int kSamplesNear = 8192;
    const bool down = times.factor < 1;
    const bool exact = std::floor(times.step * 0x1p40) == times.step * 0x1p40;  // so are its multiples
    // To make a filter costs downwards as much as about ten outputs, upwards as one.
    const bool fits = tapsOf(rows, times) <= Kel64f{kMostTaps};
    const Period period = fits ? periodOf(times.step, down ? 8 : 256) : Period{0, 0};
    if (period.outputs > 0 && (period.outputs <= 8 || (!exact && count / 2 >= period.outputs)))
        return {Method::PeriodicFilters, period, kSamplesNear};
    if (!down) return {Method::Interpolate, {}, kSamplesNear};
    if (!exact && worthOrdering(times, std::min(count, kMostSpread)))
        return {Method::DecimateByFraction, {}, kMostSpread};
    return {Method::DecimateInTime, {}, kMostInTime};
}

// Produces `count` outputs, in parts of equal size.
template <class S, class T>
void produce(const FilterRows& rows, const FilterTable<T>& table, const OutputTimes& times, int count, const S* src,
             int len, S* dst, Kel32f gain) {
    if (count == 0) return;
    const Choice choice = chooseMethod(rows, times, count);
    const int parts = (count - 1) / choice.most + 1;
    for (int part = 0; part < parts; ++part) {
        const auto first = static_cast<int>(static_cast<int64_t>(count) * part / parts);
        const int n = static_cast<int>(static_cast<int64_t>(count) * (part + 1) / parts) - first;
        const auto put = [=](int k, Kel32f sum) { storeSample(dst + first + k, sum, gain); };
        const auto putAll = [=](Kel32f* sums) { storeSamples(dst + first, sums, toSize(n), gain); };
        switch (choice.method) {
            case Method::PeriodicFilters:
                outputsOfPeriodicFilters(rows, table, times, choice.period, first, n, src, len, put);
                break;
            case Method::Interpolate:
                interpolate(rows, times, first, n, src, len, put);
                break;
            case Method::DecimateByFraction:
                decimateByFraction(rows, times, first, n, src, len, putAll);
                break;
            case Method::DecimateInTime:
                decimateInTime(rows, times, first, toSize(n), src, len, putAll);
                break;
        }
    }
}

}  // namespace kels::resample::general
