// Outputs whose times repeat their fractions after a few of them, as those of 44100 to 48000 Hz do after 160: for each
// fraction a filter of its own, made once for many outputs.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "core/memory.h"
#include "core/simd/row_sums.h"
#include "core/simd/vec.h"
#include "resample/general/filter_rows.h"
#include "resample/general/filter_sum.h"
#include "resample/general/filter_table.h"
#include "resample/general/output_times.h"
#include "resample/sample_conversion.h"

namespace kels::resample::general {

// The least number of outputs after which fractions repeat, and the inputs that they take; 0 where there are too many.
struct Period {
    int outputs, inputs;
};
inline Period periodOf(Kel64f step, int mostOutputs) {
    constexpr Kel64f mostInputs = 1 << 20;
    // The convergents of the continued fraction of the step, which is their quotient but for rounding.
    Kel64f rest = step, inputs = 1, outputs = 0, inputsBefore = 0, outputsBefore = 1;
    for (;;) {
        const Kel64f whole = std::floor(rest);
        inputsBefore = std::exchange(inputs, whole * inputs + inputsBefore);
        outputsBefore = std::exchange(outputs, whole * outputs + outputsBefore);
        if (!(outputs <= mostOutputs && inputs <= mostInputs)) return {0, 0};
        if (std::fabs(outputs * step - inputs) <= inputs * 0x1p-51)
            return {static_cast<int>(outputs), static_cast<int>(inputs)};
        rest = 1 / (rest - whole);
    }
}

inline constexpr std::size_t kMostTaps = 4096;  // of a fraction's filter

// The filter of a fraction; returns the sample that it begins with, where sample 0 is the one at or before the output.
// For factors from 1 on: between two rows.
inline std::ptrdiff_t makeFilter(const FilterRows& rows, Kel64f fraction, Kel32f* taps) {
    const auto place = rows.at(fraction);
    for (std::size_t i = 0; i < rows.span(); i += lanes<Kel32f>) {
        const auto low = load(place.low + i), high = load(place.high + i);
        store(taps + i, mulAdd(Vec<Kel32f>(place.weight), Vec<Kel32f>(high - low), low));
    }
    return -rows.half();
}
// For factors below 1, which stretch it: from the table.
template <class T>
std::ptrdiff_t makeFilter(const FilterTable<T>& table, Kel64f reach, Kel64f fraction, Kel32f* taps, std::size_t span) {
    const Kel64f first = std::ceil(fraction - reach);
    for (std::size_t i = 0; i < span; ++i) taps[i] = table.weight(first - fraction + static_cast<Kel64f>(i));
    return static_cast<std::ptrdiff_t>(first);
}

// The outputs whose samples begin at a, b, c and d.
template <class S>
struct FourOutputs {
    const S *xa, *xb, *xc, *xd;
    Vec<Kel32f> a{0}, b{0}, c{0}, d{0};

    [[gnu::always_inline]] void add(std::size_t i, const Vec<Kel32f>& tap) {
        a = mulAdd(tap, loadSamples(xa + i), a);
        b = mulAdd(tap, loadSamples(xb + i), b);
        c = mulAdd(tap, loadSamples(xc + i), c);
        d = mulAdd(tap, loadSamples(xd + i), d);
    }
    void total(Kel32f* sums) const { sumsOf4(a, b, c, d, sums); }
};

// put(n, sum) for the outputs of one filter, whose samples begin at x + n * distance, n < count; nothing is read from
// `end` on.
template <class S, class Put>
void applyFilter(const Kel32f* taps, std::size_t span, std::size_t tail, const S* x, const S* end,
                 std::ptrdiff_t distance, int count, Put put) {
    const auto samples = [=](int n) { return x + n * distance; };
    const auto four = [=](int a, int b, int c, int d) {
        return FourOutputs<S>{samples(a), samples(b), samples(c), samples(d)};
    };
    const auto run = [=](auto&... outputs) __attribute__((always_inline)) {
        const auto part = [&](std::size_t from, std::size_t to) __attribute__((always_inline)) {
            for (std::size_t i = from; i < to; i += lanes<Kel32f>) {
                const auto tap = inRegister(load(taps + i));
                (outputs.add(i, tap), ...);
            }
        };
        part(tail, span);
        part(0, tail);
    };
    const std::ptrdiff_t room = end - x - static_cast<std::ptrdiff_t>(span);  // behind the padded filter
    const int inside = room < 0 ? 0 : static_cast<int>(std::min<std::ptrdiff_t>(count, room / distance + 1));
    Kel32f sums[8];
    int n = 0;
    if constexpr (sizeof(void*) == 8) {  // and twice the registers
        for (; n + 8 <= inside; n += 8) {
            auto first = four(n, n + 1, n + 2, n + 3), second = four(n + 4, n + 5, n + 6, n + 7);
            run(first, second);
            first.total(sums);
            second.total(sums + 4);
            for (int k = 0; k < 8; ++k) put(n + k, sums[k]);
        }
    }
    for (; n < inside; n += 4) {
        const int last = inside - 1;
        auto some = four(n, std::min(n + 1, last), std::min(n + 2, last), std::min(n + 3, last));
        run(some);
        some.total(sums);
        for (int k = 0; k <= std::min(3, last - n); ++k) put(n + k, sums[k]);
    }
    for (n = inside; n < count; ++n) {
        Vec<Kel32f> sum(0);
        addTailsFirst(samples(n), std::min(span, static_cast<std::size_t>(end - samples(n))), tail,
                      [&](std::size_t i, const Vec<Kel32f>& v) { sum = mulAdd(load(taps + i), v, sum); });
        put(n, totalOf(sum));
    }
}

// Taps that the filters of this factor take.
inline Kel64f tapsOf(const FilterRows& rows, const OutputTimes& times) {
    return times.factor < 1 ? std::floor(2 * times.reach) + 1 : static_cast<Kel64f>(rows.span());
}

// put(n, sum) for n < count.
template <class S, class T, class Put>
void outputsOfPeriodicFilters(const FilterRows& rows, const FilterTable<T>& table, const OutputTimes& times,
                              Period period, int64_t first, int count, const S* src, int len, Put put) {
    alignas(64) Kel32f taps[kMostTaps];
    const bool down = times.factor < 1;
    const auto span = roundUp(static_cast<std::size_t>(tapsOf(rows, times)), lanes<Kel32f>);
    const Kel64f lobe = down ? times.reach + 4 / times.factor : static_cast<Kel64f>(rows.half() + 4);
    const std::size_t tail = tailFrom(static_cast<std::ptrdiff_t>(lobe), span);
    for (int i = 0; i < std::min(count, period.outputs); ++i) {
        const Kel64f time = times.at(first + i), whole = std::floor(time);
        const std::ptrdiff_t begin =
            static_cast<std::ptrdiff_t>(whole) +
            (down ? makeFilter(table, times.reach, time - whole, taps, span) : makeFilter(rows, time - whole, taps));
        applyFilter(taps, span, tail, src + begin, src + len, period.inputs, (count - i - 1) / period.outputs + 1,
                    [=](int n, Kel32f sum) { put(i + n * period.outputs, sum); });
    }
}

}  // namespace kels::resample::general
