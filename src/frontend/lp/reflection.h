// Predictors and their reflection coefficients.
#pragma once

#include <cmath>
#include <cstddef>

#include "core/check.h"
#include "frontend/lp/recursion.h"
#include "frontend/lp/values.h"

namespace kels::lp {

// Where a reflection coefficient is 1 or -1 no predictor of a lower order exists: those before it become `undefined`.
template <class T>
KelStatus reflectionOf(const Source<T>& src, const Result<T>& dst, int len, Kel64f undefined) {
    const std::size_t p = toSize(len);
    OrderScratch<1> work(int64_t{len} + 1);
    if (work.failed()) return kelStatusNoMemory;
    Kel64f* const a = work.data();
    for (std::size_t i = 1; i <= p; ++i) a[i] = src[i - 1];
    for (std::size_t i = p; i >= 1; --i) {
        dst.set(i - 1, -a[i]);
        if (std::fabs(a[i]) == 1 && i > 1) {
            for (std::size_t j = 1; j < i; ++j) dst.set(j - 1, undefined);
            return kelStatusDivByZero;
        }
        stepDown(a, i);
    }
    return kelStatusOk;
}

template <class T>
KelStatus predictorOfReflection(const Source<T>& src, const Result<T>& dst, int len) {
    const std::size_t p = toSize(len);
    OrderScratch<1> work(int64_t{len} + 1);
    if (work.failed()) return kelStatusNoMemory;
    Kel64f* const a = work.data();
    for (std::size_t i = 1; i <= p; ++i) {
        a[i] = -src[i - 1];
        stepUp(a, i);
    }
    for (std::size_t i = 1; i <= p; ++i) dst.set(i - 1, a[i]);
    return kelStatusOk;
}

}  // namespace kels::lp
