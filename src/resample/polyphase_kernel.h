// Resampling by any factor with a filter table.
//
// Where times repeat their fractions, each fraction has a filter of its own, made once for many outputs; where they do
// not, every output looks at two rows of the table.  Which way is taken depends on the factor and the filter alone.
// Every output is the same sum in the same order however the signal is cut into calls.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "core/memory.h"
#include "core/simd.h"
#include "resample/decimate.h"
#include "resample/filter_rows.h"
#include "resample/interpolate.h"
#include "resample/one_filter.h"
#include "resample/samples.h"

namespace kels {

// The least number of outputs after which the fractions of the times repeat, and the number of inputs that these take.
struct Period {
    int outputs, inputs;  // 0 where there is no such number up to `most`
};
inline Period periodOf(Kel64f step, int most) {
    // The convergents of the continued fraction of `step`, which is the quotient but for rounding.
    Kel64f rest = step, inputs = 1, outputs = 0, inputsBefore = 0, outputsBefore = 1;
    for (;;) {
        const Kel64f whole = std::floor(rest);
        inputsBefore = std::exchange(inputs, whole * inputs + inputsBefore);
        outputsBefore = std::exchange(outputs, whole * outputs + outputsBefore);
        if (!(outputs <= most && inputs <= 1 << 20)) return {0, 0};
        if (std::fabs(outputs * step - inputs) <= inputs * 0x1p-51)
            return {static_cast<int>(outputs), static_cast<int>(inputs)};
        rest = 1 / (rest - whole);
    }
}

constexpr int kMostTaps = 4096;  // of a filter that is made for a fraction

// The filter of outputs at `fraction`, padded with zeros to whole vectors; returns the sample that it begins with.
inline std::ptrdiff_t filterUp(const FilterRows& rows, Kel64f fraction, Kel32f* filter) {
    const auto place = rows.at(fraction);
    for (std::size_t i = 0; i < rows.taps(); i += lanes<Kel32f>) {
        const auto low = load(place.low + i), high = load(place.high + i);
        store(filter + i, mulAdd(Vec<Kel32f>(place.weight), Vec<Kel32f>(high - low), low));
    }
    return -rows.half();
}
template <class T>
std::ptrdiff_t filterDown(const FilterTable<T>& table, const ResampleTimes& times, Kel64f fraction, Kel32f* filter,
                          std::ptrdiff_t span) {
    const auto first = static_cast<std::ptrdiff_t>(std::ceil(fraction - times.reach));
    const Kel64f before = static_cast<Kel64f>(first) - fraction;
    for (std::ptrdiff_t i = 0; i < span; ++i)
        filter[i] = table.at(std::fabs(before + static_cast<Kel64f>(i)) * table.scale);
    return first;
}

template <class S, class T>
void resampleInPeriods(const FilterRows& rows, const FilterTable<T>& table, const ResampleTimes& times,
                       const Period& period, int count, const S* src, int len, S* dst, Kel32f gain) {
    alignas(64) Kel32f filter[kMostTaps + lanes<Kel32f>];
    const auto span = static_cast<std::ptrdiff_t>(
        roundUp(times.factor < 1 ? static_cast<std::size_t>(2 * times.reach) + 1 : rows.taps(), lanes<Kel32f>));
    constexpr int chunk = 8192;
    for (int done = 0; done < count; done += chunk) {
        const int n = std::min(chunk, count - done);
        for (int i = 0; i < std::min(n, period.outputs); ++i) {
            const Kel64f time = times.at(done + i), whole = std::floor(time);
            const std::ptrdiff_t first = static_cast<std::ptrdiff_t>(whole) +
                                         (times.factor < 1 ? filterDown(table, times, time - whole, filter, span)
                                                           : filterUp(rows, time - whole, filter));
            S* const y = dst + done + i;
            outputsOfOneFilter(filter, span, src + first, src + len, period.inputs, (n - i - 1) / period.outputs + 1,
                               [=](int k, Kel32f sum) {
                                   storeSample(y + static_cast<std::ptrdiff_t>(k) * period.outputs, sum, gain);
                               });
        }
    }
}

// Produces `count` outputs.
template <class S, class T>
void resample(const FilterRows& rows, const FilterTable<T>& table, const ResampleTimes& times, int count, const S* src,
              int len, S* dst, Kel32f gain) {
    if (count == 0) return;
    const bool down = times.factor < 1;
    const Period period = periodOf(times.step, down ? 8 : 256);
    if (period.outputs > 0 && (down ? 2 * times.reach + 1 : static_cast<Kel64f>(rows.taps())) <= kMostTaps)
        return resampleInPeriods(rows, table, times, period, count, src, len, dst, gain);
    const int chunk = down ? static_cast<int>(kMostOutputs) : 8192;
    const int chunks = (count - 1) / chunk + 1, each = (count - 1) / chunks + 1;
    for (int done = 0; done < count; done += each) {
        const auto n = static_cast<std::size_t>(std::min(each, count - done));
        const auto put = [=](std::size_t k, Kel32f sum) { storeSample(dst + done + k, sum, gain); };
        if (down)
            decimate(rows, times, done, n, src, len, put);
        else
            interpolate(rows, times, done, n, src, len, put);
    }
}

}  // namespace kels
