// Reflection coefficients, element by element: area ratios of a tube model and tilts.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

#include "core/check.h"
#include "core/simd/vec.h"
#include "core/vector/convert.h"

namespace kels::lp {

// (1 - s k) / (1 + s k), s = 1 or -1; the pole gives infinity and a warning.
inline KelStatus areaRatios(const Kel32f* src, Kel32f* dst, std::size_t len, Kel32f sign) {
    using V = Vec<Kel32f>;
    V::mask_type pole(false);
    const auto ratioOf = [&](const V& k) {
        const V signedK = k * sign;
        V ratio = (1.0f - signedK) / (1.0f + signedK);
        stdx::where(signedK == -1.0f, ratio) = std::numeric_limits<Kel32f>::infinity();
        pole = pole || signedK == -1.0f;
        return ratio;
    };
    map(dst, len, ratioOf, 0.0f, src);
    return stdx::any_of(pole) ? kelStatusDivByZero : kelStatusOk;
}

// ln((1 - k) / (1 + k)) = -2 artanh(k) with k limited to +-threshold.
inline KelStatus logAreaRatios(const Kel32f* src, Kel32f* dst, std::size_t len, Kel32f threshold) {
    for (std::size_t i = 0; i < len; ++i) {
        dst[i] = static_cast<Kel32f>(-2 * std::atanh(Kel64f{std::clamp(src[i], -threshold, threshold)}));
    }
    return kelStatusOk;
}

// (|a| - |b|) / denominator(a, b); where that is 0 the result is `undefined`, with a warning.
template <class Denominator>
KelStatus tilts(const Kel32f* src1, const Kel32f* src2, Kel32f* dst, std::size_t len, Kel32f undefined,
                Denominator denominator) {
    using V = Vec<Kel32f>;
    V::mask_type divided(false);
    const auto tiltOf = [&](const V& a, const V& b) {
        const V d = denominator(a, b);
        V tilt = (magnitude(a) - magnitude(b)) / d;
        stdx::where(d == 0.0f, tilt) = undefined;
        divided = divided || d == 0.0f;
        return tilt;
    };
    map(dst, len, tiltOf, 1.0f, src1, src2);
    return stdx::any_of(divided) ? kelStatusDivByZero : kelStatusOk;
}
struct TiltSum {
    Vec<Kel32f> operator()(const Vec<Kel32f>& a, const Vec<Kel32f>& b) const { return a + b; }
};
struct AbsTiltSum {
    Vec<Kel32f> operator()(const Vec<Kel32f>& a, const Vec<Kel32f>& b) const { return magnitude(a) + magnitude(b); }
};

// Q15 arrays through kernel(floats..., result, count), a part at a time; the results times 2^-scaleFactor, rounded to
// the nearest.  dst may be one of the sources.
template <class Kernel, class... Source>
KelStatus throughFloats(Kel16s* dst, std::size_t len, int scaleFactor, Kernel kernel, const Source*... src) {
    constexpr std::size_t kPart = 128;
    const NearestScope nearest;
    FirstWarning warning;
    Kel32f values[sizeof...(Source)][kPart], results[kPart];
    for (std::size_t from = 0; from < len; from += kPart) {
        const std::size_t n = std::min(kPart, len - from);
        std::size_t row = 0;
        (convertScaledUp(src + from, values[row++], n, 1.0f / 32768), ...);
        row = 0;
        const KelStatus status = [&]<std::size_t... I>(std::index_sequence<I...>) {
            return kernel(values[I]..., results, n);
        }
        (std::index_sequence_for<Source...>());
        if (status != kelStatusOk) warning.note(status);
        convertToInt(results, dst + from, n, scaleFactor, ToNearest());
    }
    return warning.status();
}

}  // namespace kels::lp
