// Predictors and the cepstra of their models: each coefficient follows from those before it, on both sides.
#pragma once

#include <cstddef>

#include "core/check.h"
#include "frontend/lp/values.h"

namespace kels::lp {

// Sum of a[j] * b[n - j] for j = 1 .. n - 1.
inline Kel64f convolvedSum(const Kel64f* a, const Kel64f* b, std::size_t n) {
    Kel64f even = 0, odd = 0;  // two chains of additions instead of one
    std::size_t j = 1;
    for (; j + 1 < n; j += 2) {
        odd += a[j] * b[n - j];
        even += a[j + 1] * b[n - j - 1];
    }
    if (j < n) odd += a[j] * b[n - j];
    return odd + even;
}

// Factors 1 / n of the recursions over `len` coefficients.  Those of fewer than 22 come from a table of single
// precision, so that a prefix of a longer result may differ from a shorter one in the last place.
inline Kel64f cepstrumFactor(std::size_t n, std::size_t len) {
    constexpr Kel32f kShort[] = {0,        1.f / 1,  1.f / 2,  1.f / 3,  1.f / 4,  1.f / 5,  1.f / 6,  1.f / 7,
                                 1.f / 8,  1.f / 9,  1.f / 10, 1.f / 11, 1.f / 12, 1.f / 13, 1.f / 14, 1.f / 15,
                                 1.f / 16, 1.f / 17, 1.f / 18, 1.f / 19, 1.f / 20, 1.f / 21};
    constexpr std::size_t kCount = sizeof(kShort) / sizeof(kShort[0]);
    return len < kCount ? Kel64f{kShort[n]} : 1 / static_cast<Kel64f>(n);
}

// n c[n] = -n a[n] - sum of k c[k] a[n - k]; here w[k] = k c[k].  Either is found from the other.
inline Kel64f cepstrumTerm(const Kel64f* w, const Kel64f* a, std::size_t n, std::size_t len) {
    return cepstrumFactor(n, len) * convolvedSum(w, a, n);
}

template <class T>
KelStatus cepstrumOf(const Source<T>& src, const Result<T>& dst, int len) {
    const std::size_t p = toSize(len);
    OrderScratch<2> work(2 * (int64_t{len} + 1));
    if (work.failed()) return kelStatusNoMemory;
    Kel64f* const a = work.data();
    Kel64f* const weighted = a + p + 1;
    for (std::size_t n = 1; n <= p; ++n) {
        a[n] = src[n - 1];
        const Kel64f c = -a[n] - cepstrumTerm(weighted, a, n, p);
        weighted[n] = static_cast<Kel64f>(n) * c;
        dst.set(n - 1, c);
    }
    return kelStatusOk;
}

template <class T>
KelStatus predictorOfCepstrum(const Source<T>& src, const Result<T>& dst, int len) {
    const std::size_t p = toSize(len);
    OrderScratch<2> work(2 * (int64_t{len} + 1));
    if (work.failed()) return kelStatusNoMemory;
    Kel64f* const a = work.data();
    Kel64f* const weighted = a + p + 1;
    for (std::size_t n = 1; n <= p; ++n) {
        weighted[n] = static_cast<Kel64f>(n) * src[n - 1];
        a[n] = -src[n - 1] - cepstrumTerm(weighted, a, n, p);
        dst.set(n - 1, a[n]);
    }
    return kelStatusOk;
}

}  // namespace kels::lp
