// The real transforms: complex transform and recombination put together, for the layouts of spectra.
#include "core/fft/transform.h"

#include <cstddef>

#include "core/check.h"
#include "core/fft/lanes.h"
#include "core/fft/real.h"
#include "core/vector/convert.h"

namespace kels {
namespace {

inline FourStepTables stepTables(const KelFFTSpec_R_32f& spec) {
    return {rowBits(spec.order), columnBits(spec.order), spec.laneTwiddles,
            spec.rowTwiddles,    spec.stepTwiddles,      spec.crossTwiddles};
}

inline PaddedUnits<kWidestFloats> steppedMatrix(const KelFFTSpec_R_32f& spec, Kel32f* scratch) {
    return {scratch, columnBits(spec.order)};
}

// The complex transform of N/2 points, for orders that have tables.
template <int W, class Source, class Sink>
inline void transformInCache(const KelFFTSpec_R_32f& spec, Kel32f* scratch, Source source, Sink sink) {
    if constexpr (W == 4) {
        if (spec.order == kFirstTableOrder) return transformEight(spec.crossTwiddles, source, sink);
    }
    transformInCache<W>(spec.order - 1, spec.laneTwiddles, spec.crossTwiddles, scratch, source, sink);
}
template <class Source, class Sink>
inline void transformInSteps(const KelFFTSpec_R_32f& spec, Kel32f* scratch, Source source, Sink sink) {
    const auto matrix = steppedMatrix(spec, scratch);
    Kel32f* const lines = matrix.at(std::size_t{1} << (spec.order - 1));
    transformInSteps(stepTables(spec), matrix, lines, source, sink);
}

// Through tables, W lanes at a time; see below for what they give.
template <int W>
inline SpectrumEnds forwardByTables(const KelFFTSpec_R_32f& spec, const Kel32f* src, Kel32f* dst, std::size_t firstPair,
                                    Kel32f factor, Kel32f* scratch) {
    const std::size_t m = std::size_t{1} << (spec.order - 1);
    if (spec.order < kFirstSteppedOrder) {
        transformInCache<W>(spec, scratch, ConstPairs<W>{src}, Units<W>{dst});
    } else if constexpr (W == kWidestFloats) {
        transformInSteps(spec, scratch, ConstPairs<W>{src}, Units<W>{dst});
    }
    return separate<W>(m, {spec.forwardRotation, spec.forwardRotation + m / 2}, 0.5f * factor, dst, firstPair);
}
template <int W>
inline void inverseByTables(const KelFFTSpec_R_32f& spec, const Kel32f* src, Kel32f* dst, Kel32f factor,
                            Kel32f* scratch) {
    const std::size_t m = std::size_t{1} << (spec.order - 1);
    const Rotation rotation = {spec.inverseRotation, spec.inverseRotation + m / 2};
    if (spec.order < kFirstSteppedOrder) {
        const Units<W> units{scratch};
        unite<W>(m, rotation, factor, src, units);
        transformInCache<W>(spec, scratch, units, SwappedPairs<W>{dst});
    } else if constexpr (W == kWidestFloats) {
        const auto matrix = steppedMatrix(spec, scratch);
        unite<W>(m, rotation, factor, src, matrix);
        transformInSteps(spec, scratch, matrix, SwappedPairs<W>{dst});
    }
}

// The spectrum of src: the ends are returned, the pairs of frequencies 1 .. N/2-1 stand from dst[firstPair] on.
inline SpectrumEnds forward(const KelFFTSpec_R_32f& spec, const Kel32f* src, Kel32f* dst, std::size_t firstPair,
                            Kel32f* scratch) {
    const Kel32f factor = spec.forwardScaled != 0 ? spec.factor : 1.0f;
    if (spec.order >= kFirstWideOrder)
        return forwardByTables<kWidestFloats>(spec, src, dst, firstPair, factor, scratch);
    if (spec.order >= kFirstTableOrder) return forwardByTables<4>(spec, src, dst, firstPair, factor, scratch);
    const std::size_t n = std::size_t{1} << spec.order;
    Kel32f packed[8];
    forwardDirect(spec.order, src, packed, factor);
    for (std::size_t i = 1; i + 1 < n; ++i) dst[firstPair + i - 1] = packed[i];
    return {packed[0], packed[n - 1]};
}

}  // namespace

void forwardToCcs(const KelFFTSpec_R_32f& spec, const Kel32f* src, Kel32f* dst, Kel32f* scratch) {
    const SpectrumEnds ends = forward(spec, src, dst, 2, scratch);
    const std::size_t n = std::size_t{1} << spec.order;
    dst[0] = ends.dc;
    dst[1] = 0;
    if (n > 1) {
        dst[n] = ends.nyquist;
        dst[n + 1] = 0;
    }
}

void forwardToPack(const KelFFTSpec_R_32f& spec, const Kel32f* src, Kel32f* dst, Kel32f* scratch) {
    const SpectrumEnds ends = forward(spec, src, dst, 1, scratch);
    const std::size_t n = std::size_t{1} << spec.order;
    dst[0] = ends.dc;
    if (n > 1) dst[n - 1] = ends.nyquist;
}

void inverseFromPack(const KelFFTSpec_R_32f& spec, const Kel32f* src, Kel32f* dst, Kel32f* scratch) {
    const Kel32f factor = spec.inverseScaled != 0 ? spec.factor : 1.0f;
    if (spec.order >= kFirstWideOrder) return inverseByTables<kWidestFloats>(spec, src, dst, factor, scratch);
    if (spec.order >= kFirstTableOrder) return inverseByTables<4>(spec, src, dst, factor, scratch);
    inverseDirect(spec.order, src, dst, factor);
}

KelStatus forwardToCcs(const KelFFTSpec_R_32f& spec, const Kel32f* src, Kel32f* dst, Kel8u* buffer) {
    const WorkBuffer work(spec, buffer);
    if (work.failed()) return kelStatusNoMemory;
    forwardToCcs(spec, src, dst, work.floats());
    return kelStatusOk;
}

KelStatus forwardToCcs(const KelFFTSpec_R_16s32s& spec, const Kel16s* src, Kel32s* dst, int scaleFactor,
                       Kel8u* buffer) {
    Kel8u* const owned = buffer == nullptr ? allocate<Kel8u>(spec.bufferSize) : nullptr;
    if (buffer == nullptr && owned == nullptr) return kelStatusNoMemory;
    Kel8u* const values = alignUp(buffer == nullptr ? owned : buffer, 16);
    auto* const spectrum = reinterpret_cast<Kel32f*>(values);
    const std::size_t n = std::size_t{1} << spec.order;
    const WorkBuffer work(*spec.inner, values + spectrumBytes(spec.order));
    convertWidening(src, spectrum, n);
    forwardToCcs(*spec.inner, spectrum, spectrum, work.floats());
    constexpr int kToNearest = 1;
    convertToIntByMode(spectrum, dst, n + (n > 1 ? 2 : 1), kToNearest, scaleFactor);
    kelsFree(owned);
    return kelStatusOk;
}

}  // namespace kels
