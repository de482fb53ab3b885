// The specification of a front end: its configuration, checked, and every table that its frames need.
#pragma once

#include <cstddef>

#include "core/fft/batch/real.h"
#include "core/layout.h"
#include "frontend/features/config.h"
#include "frontend/features/frames/bank.h"
#include "frontend/features/frames/grid.h"
#include "kels/features.h"

namespace kels::features {

inline constexpr Kel32s kSpecIdentifier = 0x46656153, kStreamIdentifier = 0x46656174;

// What is computed in the precision of the transform.
template <class T>
struct Analysis {
    T* window;
    T* weights;
    batch::RealTransform<T> transform;
};

// The places of a row's statics: the energies before or behind the values.
struct RowPlaces {
    std::size_t values, c0, energy;
};

}  // namespace kels::features

struct KelFeatureSpec_32f {
    Kel32s identifier;
    bool fast;  // the transform is in single precision
    KelFeatureConfig config;
    kels::features::FrameGrid grid;
    kels::features::RowPlaces places;
    std::size_t valueCount;   // the bins or the filters
    std::size_t staticWidth;  // of a row without deltas
    std::size_t width;

    kels::features::Analysis<double> exact;
    kels::features::Analysis<float> single;
    kels::features::FilterBins* filters;
    double* cosines;       // c0 and on: rows of (numFilters + 1) / 2, scale and lifter included
    double* deltaWeights;  // of both orders, see deltas.h
};

namespace kels::features {

inline bool isSpec(const KelFeatureSpec_32f* spec) {
    return spec->identifier == kSpecIdentifier;
}

// The specification for a configuration that has passed its checks; null when memory is out.
KelFeatureSpec_32f* buildSpec(const KelFeatureConfig& config);

template <class T>
const Analysis<T>& analysisOf(const KelFeatureSpec_32f& spec) {
    if constexpr (sizeof(T) == sizeof(float)) {
        return spec.single;
    } else {
        return spec.exact;
    }
}

}  // namespace kels::features
