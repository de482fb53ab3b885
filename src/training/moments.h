// First and second moments of single vectors, and variances from them.
#pragma once

#include <cstddef>

#include "core/scaling.h"
#include "core/simd/integers.h"
#include "core/simd/vec.h"
#include "kels/types.h"

namespace kels::training {

// Adds the moments about `mean` of one more vector, which counts `val`.
template <class T>
void accumulateMoments(const T* src, const T* mean, T* meanAcc, T* varAcc, std::size_t len, T val) {
    mapPair(
        meanAcc, varAcc, len,
        [val](const Vec<T>& x, const Vec<T>& m, const Vec<T>& first, const Vec<T>& second) {
            const Vec<T> d = x - m;
            const Vec<T> weighted = val * d;
            return Pair{Vec<T>(first + weighted), Vec<T>(second + d * weighted)};
        },
        T(), src, mean, meanAcc, varAcc);
}

// (var - mean^2 * valMean) * valVar; dst may be var.
inline void varianceFromSums(const Kel32f* mean, const Kel32f* var, Kel32f* dst, std::size_t len, Kel32f valMean,
                             Kel32f valVar) {
    map(
        dst, len, [=](const auto& m, const auto& v) { return (v - m * m * valMean) * valVar; }, 0.0f, mean, var);
}

// The same of integers, times 2^-scaleFactor, truncated; outside the integers -2147483648.  Inside a NearestScope.
inline void varianceFromSums(const Kel32s* mean, const Kel32s* var, Kel32s* dst, std::size_t len, Kel32f valMean,
                             Kel32f valVar, int scaleFactor) {
    const SplitMultiplier unit(scaleFactor);
    map(
        dst, len,
        [=](const Vec<Kel32s>& mean32, const Vec<Kel32s>& var32) {
            const Vec<Kel32f> m = toFloat(mean32), v = toFloat(var32);
            return toInt((v - m * m * valMean) * valVar * unit.first * unit.second, TowardZero());
        },
        0, mean, var);
}

}  // namespace kels::training
