// Builds a specification: window, bank, cosines and transform in one block.
#include "frontend/features/spec.h"

#include <cfloat>
#include <cmath>

#include "core/constants.h"
#include "core/memory.h"
#include "core/scaling.h"
#include "frontend/features/deltas.h"
#include "frontend/window.h"

namespace kels::features {
namespace {

// Single precision is kept where it holds what the fast form promises: not in transforms with long sums or by
// convolution, and not where the logarithm's floor lies outside its range.
bool isFast(const KelFeatureConfig& c) {
    constexpr std::size_t kLargestSingleFactor = 31;
    if (c.hint != kelHintFast) return false;
    if (hasLogarithm(c) && !(c.logFloor >= FLT_MIN && c.logFloor <= FLT_MAX)) return false;
    return batch::largestFactor(static_cast<std::size_t>(c.fftLen / 2)) <= kLargestSingleFactor;
}

void setShape(KelFeatureSpec_32f& spec) {
    const KelFeatureConfig& c = spec.config;
    const std::size_t energies = ((c.energy & kelFeatC0) != 0 ? 1 : 0) + ((c.energy & kelFeatEnergy) != 0 ? 1 : 0);
    spec.valueCount = static_cast<std::size_t>(hasBank(c) ? c.numFilters : c.fftLen / 2 + 1);
    const std::size_t inRow = c.output == kelFeatCepstra ? static_cast<std::size_t>(c.numCeps) : spec.valueCount;
    spec.staticWidth = inRow + energies;
    spec.width = spec.staticWidth * static_cast<std::size_t>(c.deltaOrder + 1);
    const bool first = c.energyPlace == kelFeatFirst;
    spec.places.values = energies != 0 && first ? energies : 0;
    spec.places.c0 = energies != 0 && first ? 0 : inRow;
    spec.places.energy = spec.places.c0 + ((c.energy & kelFeatC0) != 0 ? 1 : 0);
}

void fillCosines(const KelFeatureConfig& c, double* cosines) {
    const int filters = c.numFilters, folded = (filters + 1) / 2;
    const double plain = std::sqrt(2.0 / filters);
    for (int k = 0; k <= c.numCeps; ++k) {
        const double scale = k == 0 && c.dctScale == kelFeatDctOrtho ? std::sqrt(1.0 / filters) : plain;
        const double lifter = k == 0 || c.lifter == 0 ? 1 : 1 + c.lifter / 2.0 * std::sin(kPi * k / c.lifter);
        for (int j = 0; j < folded; ++j) {
            // The angle in units of pi / (2 filters), taken off whole turns while it is an integer.
            const int angle = static_cast<int>(int64_t{k} * (2 * j + 1) % (4 * int64_t{filters}));
            *cosines++ = scale * lifter * std::cos(kPi * angle / (2.0 * filters));
        }
    }
}

template <class T>
bool fillAnalysis(const KelFeatureSpec_32f& spec, const Analysis<T>& analysis, double* window, double* weights) {
    const KelFeatureConfig& c = spec.config;
    const auto length = static_cast<std::size_t>(c.frameLen);
    windowValues(window, 0, length, length, c.window, c.windowParam);
    if (hasBank(c)) fillWeights(c, spec.filters, weights);
    return analysis.transform.fill();
}

}  // namespace

KelFeatureSpec_32f* buildSpec(const KelFeatureConfig& config) {
    const NearestScope nearest;
    KelFeatureSpec_32f made = {};
    made.identifier = kSpecIdentifier;
    made.config = config;
    made.fast = isFast(config);
    made.grid = FrameGrid(config);
    setShape(made);
    const auto fftLength = static_cast<std::size_t>(config.fftLen);
    if (made.fast) {
        made.single.transform.setLength(fftLength);
    } else {
        made.exact.transform.setLength(fftLength);
    }

    const int filters = hasBank(config) ? config.numFilters : 0;
    FilterBins bins[1024];
    const Kel32s weightCount = filters > 0 ? layOutFilters(config, bins) : 0;
    const int64_t cosineCount =
        config.output == kelFeatCepstra ? int64_t{config.numCeps + 1} * ((config.numFilters + 1) / 2) : 0;
    KelFeatureSpec_32f* spec = nullptr;
    const auto arrange = [&](Layout& layout) {
        spec = layout.take<KelFeatureSpec_32f>(1);
        made.filters = layout.take<FilterBins>(filters);
        made.cosines = layout.take<double>(cosineCount);
        made.deltaWeights = layout.take<double>(deltaWeightCount(config));
        // In single precision these are where the values are computed, too.
        made.exact.window = layout.take<double>(config.frameLen);
        made.exact.weights = layout.take<double>(weightCount);
        if (made.fast) {
            made.single.window = layout.take<float>(config.frameLen);
            made.single.weights = layout.take<float>(weightCount);
            made.single.transform.arrange(layout);
        } else {
            made.exact.transform.arrange(layout);
        }
    };
    void* const block = allocateArranged(arrange);
    if (block == nullptr) return nullptr;

    for (int m = 0; m < filters; ++m) made.filters[m] = bins[m];
    if (cosineCount > 0) fillCosines(config, made.cosines);
    fillDeltaWeights(config, made.deltaWeights);
    const bool filled = made.fast ? fillAnalysis(made, made.single, made.exact.window, made.exact.weights)
                                  : fillAnalysis(made, made.exact, made.exact.window, made.exact.weights);
    if (!filled) {
        kelsFree(block);
        return nullptr;
    }
    if (made.fast) {
        for (int i = 0; i < config.frameLen; ++i) made.single.window[i] = static_cast<float>(made.exact.window[i]);
        for (int i = 0; i < weightCount; ++i) made.single.weights[i] = static_cast<float>(made.exact.weights[i]);
    }
    *spec = made;
    return spec;
}

}  // namespace kels::features
