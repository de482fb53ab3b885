// First and second moments of single vectors, and variances from them.
#pragma once

#include <cstddef>

#include "core/simd.h"
#include "kels/types.h"

namespace kels {

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

}  // namespace kels
