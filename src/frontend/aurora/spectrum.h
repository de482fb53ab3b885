// Power spectra of transforms, halved in resolution.
#pragma once

#include <cstddef>

#include "core/simd/vec.h"
#include "kels/types.h"

namespace kels::aurora {

// each(b, P) for vectors of P[b] = (|X[2b]|^2 + |X[2b+1]|^2) / 2, in ascending order of b, and one bin at a time at the
// end.  What it stores up to P[b] may lie where X begins.
template <class Each>
void forEachPower(const Kel32f* src, std::size_t len, Each each) {
    using V = Vec<Kel32f>;
    constexpr std::size_t w = lanes<Kel32f>;
    const auto bins = [](const Kel32f* p) {
        const V a = load(p), b = load(p + w);
        return pairSums(V(a * a), V(b * b));
    };
    std::size_t b = 0;
    for (; b + w < len; b += w) {
        const Kel32f* const p = src + 4 * b;
        each(b, V(0.5f * pairSums(bins(p), bins(p + 2 * w))));
    }
    for (; b + 1 < len; ++b) {
        const Kel32f* const p = src + 4 * b;
        each(b, 0.5f * ((p[0] * p[0] + p[1] * p[1]) + (p[2] * p[2] + p[3] * p[3])));
    }
    const Kel32f* const p = src + 4 * b;
    each(b, p[0] * p[0] + p[1] * p[1]);
}

// Loads and stores of whole vectors and of single bins alike.
inline Vec<Kel32f> loadLike(const Vec<Kel32f>&, const Kel32f* p) {
    return load(p);
}
inline Kel32f loadLike(Kel32f, const Kel32f* p) {
    return *p;
}
inline void storeAny(Kel32f* p, Kel32f v) {
    *p = v;
}
inline void storeAny(Kel32f* p, const Vec<Kel32f>& v) {
    store(p, v);
}

inline void powerSpectrum(const Kel32f* src, Kel32f* dst, std::size_t len) {
    forEachPower(src, len, [dst](std::size_t b, const auto& power) { storeAny(dst + b, power); });
}

// The mean with the spectrum of the frame before, which this one then replaces.
inline void smoothedPowerSpectrum(const Kel32f* src, Kel32f* before, Kel32f* dst, std::size_t len) {
    forEachPower(src, len, [before, dst](std::size_t b, const auto& power) {
        const auto mean = 0.5f * (loadLike(power, before + b) + power);
        storeAny(before + b, power);
        storeAny(dst + b, decltype(+power)(mean));
    });
}

}  // namespace kels::aurora
