// The real transforms: complex transform and recombination put together, for the layouts of spectra.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "core/fft_lanes.h"
#include "core/fft_real.h"
#include "core/fft_spec.h"

namespace kels {

inline FourStepTables stepTables(const KelFFTSpec_R_32f& spec) {
    return {rowBits(spec.order), columnBits(spec.order), spec.laneTwiddles,
            spec.rowTwiddles,    spec.stepTwiddles,      spec.crossTwiddles};
}

// Calls `call` with the scratch memory as the complex transform wants it, and with the transform itself.
template <class Call>
auto withTransform(const KelFFTSpec_R_32f& spec, Kel32f* scratch, Call call) {
    if (spec.order >= kFirstSteppedOrder) {
        constexpr int W = kWidestFloats;
        const PaddedUnits<W> matrix{scratch, columnBits(spec.order)};
        Kel32f* const lines = matrix.at(std::size_t{1} << (spec.order - 1));
        return call(std::integral_constant<int, W>(), matrix, [&](auto source, auto sink) {
            transformInSteps<W>(stepTables(spec), matrix, lines, source, sink);
        });
    }
    return withLanes(spec.order, [&](auto width) {
        constexpr int W = width();
        return call(width, Units<W>{scratch}, [&](auto source, auto sink) {
            if constexpr (W == 4) {
                if (spec.order == kFirstTableOrder) return transformEight(spec.crossTwiddles, source, sink);
            }
            transformInCache<W>(spec.order - 1, spec.laneTwiddles, spec.crossTwiddles, scratch, source, sink);
        });
    });
}

// The spectrum of src: the ends are returned, the pairs of frequencies 1 .. N/2-1 stand from dst[firstPair] on.
inline SpectrumEnds forward(const KelFFTSpec_R_32f& spec, const Kel32f* src, Kel32f* dst, std::size_t firstPair,
                            Kel32f* scratch) {
    const std::size_t n = std::size_t{1} << spec.order;
    const Kel32f factor = spec.forwardScaled != 0 ? spec.factor : 1.0f;
    if (spec.order < kFirstTableOrder) {
        Kel32f packed[8];
        forwardDirect(spec.order, src, packed, factor);
        for (std::size_t i = 1; i + 1 < n; ++i) dst[firstPair + i - 1] = packed[i];
        return {packed[0], packed[n - 1]};
    }
    return withTransform(spec, scratch, [&](auto width, auto, auto transform) {
        constexpr int W = width();
        transform(ConstPairs<W>{src}, Units<W>{dst});
        return separate<W>(n / 2, {spec.forwardRotation, spec.forwardRotation + n / 4}, 0.5f * factor, dst, firstPair);
    });
}

inline void forwardToCcs(const KelFFTSpec_R_32f& spec, const Kel32f* src, Kel32f* dst, Kel32f* scratch) {
    const SpectrumEnds ends = forward(spec, src, dst, 2, scratch);
    const std::size_t n = std::size_t{1} << spec.order;
    dst[0] = ends.dc;
    dst[1] = 0;
    if (n > 1) {
        dst[n] = ends.nyquist;
        dst[n + 1] = 0;
    }
}

inline void forwardToPack(const KelFFTSpec_R_32f& spec, const Kel32f* src, Kel32f* dst, Kel32f* scratch) {
    const SpectrumEnds ends = forward(spec, src, dst, 1, scratch);
    const std::size_t n = std::size_t{1} << spec.order;
    dst[0] = ends.dc;
    if (n > 1) dst[n - 1] = ends.nyquist;
}

// All of src has been read before anything is written to dst.
inline void inverseFromPack(const KelFFTSpec_R_32f& spec, const Kel32f* src, Kel32f* dst, Kel32f* scratch) {
    const std::size_t n = std::size_t{1} << spec.order;
    const Kel32f factor = spec.inverseScaled != 0 ? spec.factor : 1.0f;
    if (spec.order < kFirstTableOrder) {
        inverseDirect(spec.order, src, dst, factor);
        return;
    }
    withTransform(spec, scratch, [&](auto width, auto units, auto transform) {
        constexpr int W = width();
        unite<W>(n / 2, {spec.inverseRotation, spec.inverseRotation + n / 4}, factor, src, units);
        transform(units, SwappedPairs<W>{dst});
    });
}

}  // namespace kels
