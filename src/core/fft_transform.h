// The real transforms: complex transform and recombination put together, for the layouts of spectra.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "core/fft_lanes.h"
#include "core/fft_real.h"
#include "core/fft_spec.h"

namespace kels {

// Pairs of the frequencies from 1 on, wherever the layout has the first of them.
template <int W>
struct PairsFromOne {
    Kel32f* first;
    void store(std::size_t k, const Complex<W>& v) const { storePairs(first + 2 * (k - 1), v.re, v.im); }
};
template <int W>
struct ConstPairsFromOne {
    const Kel32f* first;
    Complex<W> load(std::size_t k) const {
        Complex<W> v;
        loadPairs(first + 2 * (k - 1), v.re, v.im);
        return v;
    }
};

inline FourStepTables stepTables(const KelFFTSpec_R_32f& spec) {
    return {rowBits(spec.order), columnBits(spec.order), spec.laneTwiddles,
            spec.rowTwiddles,    spec.stepTwiddles,      spec.crossTwiddles};
}

// The recombination's width: all lanes from 32 values on.
template <class Call>
void withRotationLanes(int order, Call call) {
    if (order == 4) {
        call(std::integral_constant<int, 4>());
    } else {
        call(std::integral_constant<int, kWidestFloats>());
    }
}

// Real spectrum values of frequencies 0 and N/2 from Z[0], or Z[0] from them, which is the same.
inline SpectrumEnds combineEnds(Kel32f a, Kel32f b, Kel32f factor) {
    return {a * factor + b * factor, a * factor - b * factor};
}

// The spectrum of src: the ends are returned, the pairs of frequencies 1 .. N/2-1 stand from dst[firstPair] on.
inline SpectrumEnds forward(const KelFFTSpec_R_32f& spec, const Kel32f* src, Kel32f* dst, std::size_t firstPair,
                            Kel32f* scratch) {
    const int order = spec.order;
    const std::size_t n = std::size_t{1} << order;
    const std::size_t m = n / 2;
    const Kel32f factor = spec.forwardScaled != 0 ? spec.factor : 1.0f;
    if (order < kFirstTableOrder) {
        Kel32f packed[8];
        forwardDirect(order, src, packed, factor);
        for (std::size_t i = 1; i + 1 < n; ++i) dst[firstPair + i - 1] = packed[i];
        return {packed[0], packed[n - 1]};
    }
    const Kel32f* const cosines = spec.forwardRotation;
    const Kel32f* const sines = cosines + m / 2;
    if (order >= kFirstSteppedOrder) {
        constexpr int W = kWidestFloats;
        Kel32f* const a = scratch + n;
        Kel32f* const b = a + (std::size_t{2} * W << columnBits(order));
        const Pairs<W> inPlace{dst};
        transformInSteps<W>(stepTables(spec), scratch, a, b, ConstPairs<W>{src}, inPlace);
        const SpectrumEnds ends = combineEnds(dst[0], dst[1], factor);
        recombine<W, Direction::Forward>(m, cosines, sines, 0.5f * factor, inPlace, inPlace);
        if (firstPair != 2) std::memmove(dst + firstPair, dst + 2, (n - 2) * sizeof(Kel32f));
        return ends;
    }
    Kel32f* const a = scratch;
    Kel32f* const b = scratch + n;
    Kel32f* const z = withLanes(order, [&](auto width) {
        constexpr int W = width();
        Kel32f* const out = freeBuffer<W>(order - 1, a, b);
        transformInCache<W>(order - 1, spec.laneTwiddles, spec.crossTwiddles, a, b, ConstPairs<W>{src},
                            Split<W>{out, out + m});
        return out;
    });
    withRotationLanes(order, [&](auto width) {
        constexpr int W = width();
        recombine<W, Direction::Forward>(m, cosines, sines, 0.5f * factor, Split<W>{z, z + m},
                                         PairsFromOne<W>{dst + firstPair});
    });
    return combineEnds(z[0], z[m], factor);
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

// Scratch memory holds all of the source before anything is written to dst.
inline void inverseFromPack(const KelFFTSpec_R_32f& spec, const Kel32f* src, Kel32f* dst, Kel32f* scratch) {
    const int order = spec.order;
    const std::size_t n = std::size_t{1} << order;
    const std::size_t m = n / 2;
    const Kel32f factor = spec.inverseScaled != 0 ? spec.factor : 1.0f;
    if (order < kFirstTableOrder) {
        inverseDirect(order, src, dst, factor);
        return;
    }
    const Kel32f* const cosines = spec.inverseRotation;
    const Kel32f* const sines = cosines + m / 2;
    const SpectrumEnds zero = combineEnds(src[0], src[n - 1], factor);
    if (order >= kFirstSteppedOrder) {
        constexpr int W = kWidestFloats;
        Kel32f* const a = scratch + n;
        Kel32f* const b = a + (std::size_t{2} * W << columnBits(order));
        recombine<W, Direction::Inverse>(m, cosines, sines, factor, ConstPairsFromOne<W>{src + 1},
                                         SwappedPairs<W>{scratch});
        scratch[0] = zero.nyquist;
        scratch[1] = zero.dc;
        transformInSteps<W>(stepTables(spec), scratch, a, b, ConstPairs<W>{scratch}, SwappedPairs<W>{dst});
        return;
    }
    Kel32f* const a = scratch;
    Kel32f* const b = scratch + n;
    withRotationLanes(order, [&](auto width) {
        constexpr int W = width();
        recombine<W, Direction::Inverse>(m, cosines, sines, factor, ConstPairsFromOne<W>{src + 1}, Split<W>{b + m, b});
    });
    b[0] = zero.nyquist;
    b[m] = zero.dc;
    withLanes(order, [&](auto width) {
        constexpr int W = width();
        transformInCache<W>(order - 1, spec.laneTwiddles, spec.crossTwiddles, a, b, Split<W>{b, b + m},
                            SwappedPairs<W>{dst});
        return 0;
    });
}

}  // namespace kels
