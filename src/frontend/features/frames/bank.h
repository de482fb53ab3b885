// The filter bank of a front end: triangles between corners that are equally spaced on a mel scale, held as the weights
// of those bins that are not 0.
#pragma once

#include <algorithm>
#include <cstddef>

#include "core/simd/vec.h"
#include "frontend/features/config.h"

namespace kels::features {

// The bins of a filter: `count` from `first` on; their weights from place `weights` on.
struct FilterBins {
    Kel32s first, count;
    Kel32s weights;
};

// Finds the bins of every filter; the number of all weights.
Kel32s layOutFilters(const KelFeatureConfig& config, FilterBins* filters);

// All weights, in double; inside a NearestScope.
void fillWeights(const KelFeatureConfig& config, const FilterBins* filters, double* weights);

// What each filter lets through of the spectra of lanes<T> frames.
template <class T>
inline void applyBank(const FilterBins* filters, std::size_t count, const T* weights, const Vec<T>* spectrum,
                      Vec<T>* dst) {
    // Long filters in blocks, so that sums in single precision stay short.
    constexpr std::size_t kBlock = 64;
    for (std::size_t m = 0; m < count; ++m) {
        const T* const w = weights + filters[m].weights;
        const Vec<T>* const s = spectrum + filters[m].first;
        const auto bins = static_cast<std::size_t>(filters[m].count);
        Vec<T> total(T(0));
        for (std::size_t begin = 0; begin < bins; begin += kBlock) {
            const std::size_t end = std::min(begin + kBlock, bins);
            Vec<T> even(T(0)), odd(T(0));
            std::size_t i = begin;
            for (; i + 2 <= end; i += 2) {
                even = mulAdd(Vec<T>(w[i]), s[i], even);
                odd = mulAdd(Vec<T>(w[i + 1]), s[i + 1], odd);
            }
            if (i < end) even = mulAdd(Vec<T>(w[i]), s[i], even);
            total += even + odd;
        }
        dst[m] = total;
    }
}

}  // namespace kels::features
