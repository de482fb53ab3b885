// The sums of a filter bank over one spectrum.
#pragma once

#include "core/check.h"
#include "core/scaling.h"
#include "core/simd/vec.h"
#include "frontend/fbank/state.h"

namespace kels::fbank {

// The faults of every evaluation.
template <class Bank>
KelStatus evalFault(const void* pSrc, const void* pDst, const Bank* bank) {
    if (anyNull(pSrc, pDst, bank) || incomplete(*bank)) return kelStatusNullPtr;
    if (!bank->ready) return kelStatusFBankState;
    return kelStatusOk;
}

// The bank on one spectrum, or on the samples of one frame where it has a transform of its own.
KelStatus evaluate(const Kel32f* src, Kel32f* dst, const KelFilterBank_32f& bank);

// The falling side of a filter and the rising side of the next one cover the same bins, so one pass over the bins
// between two centres serves both.  The rising sum stays in a vector until the next pass has added the falling side:
// one addition across lanes a filter.  The outermost passes take a spare row for the side that does not exist.
template <class Rows>
void sumFilters(const Triangles<Rows>& bank, const Kel32f* spectrum, Kel32f* dst) {
    constexpr std::size_t w = lanes<Kel32f>;
    Vec<Kel32f> rise(0.0f);
    Kel32f first = 0;  // the lowest bin of the rising side, which no falling side shares
    for (int m = 0; m <= bank.nFilter; ++m) {
        const int lo = bank.centres[m];
        const auto n = static_cast<std::size_t>(bank.centres[m + 1] - lo);
        const Kel32f* const s = spectrum + lo + 1;
        const Kel32f* const rising = bank.rising[m] + 1;
        const Kel32f* const falling = bank.falling[m > 0 ? m - 1 : bank.nFilter];

        Vec<Kel32f> fall = rise;  // of filter m - 1, whose rising side it continues
        rise = 0.0f;
        std::size_t i = 0;
        for (; i + w <= n; i += w) {
            const Vec<Kel32f> x = load(s + i);
            fall = mulAdd(load(falling + i), x, fall);
            rise = mulAdd(load(rising + i), x, rise);
        }
        if (i < n) {
            const Vec<Kel32f> x = loadPart(s + i, n - i);
            fall = mulAdd(loadPart(falling + i, n - i), x, fall);
            rise = mulAdd(loadPart(rising + i, n - i), x, rise);
        }
        if (m > 0) dst[m - 1] = first + stdx::reduce(fall);
        first = rising[-1] * spectrum[lo];
    }
}

// Filter m in integers: term(weight, bin) is 64 bits wide; a sum beyond 64 bits is saturated.
template <class Rows, class Centre, class Sample, class Term>
int64_t sumFilter(const Triangles<Rows, Centre>& bank, int m, const Sample* spectrum, Term term) {
    const Kel32s* const c = bank.centres + m;
    const Kel32s* const rising = bank.rising[m];
    const Kel32s* const falling = bank.falling[m];
    int64_t sum = 0;
    for (int i = c[0]; i <= c[1]; ++i) sum = addSaturate(sum, term(rising[i - c[0]], spectrum[i]));
    for (int i = c[1] + 1; i <= c[2]; ++i) sum = addSaturate(sum, term(falling[i - c[1] - 1], spectrum[i]));
    return sum;
}

}  // namespace kels::fbank
