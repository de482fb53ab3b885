// Entropy of a distribution that need not be normalised.
#pragma once

#include <cmath>
#include <cstddef>
#include <limits>

#include "core/scaling.h"
#include "core/simd/elementary.h"
#include "core/simd/vec.h"
#include "kels/types.h"

namespace kels::pitch {

// function(vector) for all elements in order; the last vector is filled up with zeros.
template <class Function>
void forWideVectors(const Kel32f* src, std::size_t len, Function function) {
    constexpr std::size_t w = lanes<Kel64f>;
    std::size_t i = 0;
    for (; i + w <= len; i += w) function(loadWide(src + i));
    if (i == len) return;
    Kel64f rest[w] = {};
    for (std::size_t j = 0; i < len; ++i, ++j) rest[j] = src[i];
    function(load(rest));
}

// Inside a NearestScope.
inline KelStatus entropy(const Kel32f* src, std::size_t len, Kel32f& result) {
    using Wide = Vec<Kel64f>;
    using Limits = std::numeric_limits<Kel32f>;
    Wide sums(0.0);
    bool negative = false;
    forWideVectors(src, len, [&](const Wide& x) {
        sums += x;
        negative |= stdx::any_of(x < 0.0);
    });
    const Kel64f sum = stdx::reduce(sums);
    if (negative) {
        result = Limits::quiet_NaN();
        return kelStatusLogNegative;
    }
    if (sum == 0) {
        result = -Limits::infinity();
        return kelStatusLogZero;
    }
    if (!std::isfinite(sum)) {
        result = Limits::quiet_NaN();
        return kelStatusOk;
    }
    Wide total(0.0);
    forWideVectors(src, len, [&](const Wide& x) {
        Wide p = x / sum;
        stdx::where(p == 0.0, p) = 1.0;  // which adds nothing, as zeros do
        total -= p * logarithm(p);
    });
    const Kel64f all = stdx::reduce(total);
    result = all > 0 ? static_cast<Kel32f>(all) : 0.0f;
    return kelStatusOk;
}

}  // namespace kels::pitch
