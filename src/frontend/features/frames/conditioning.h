// Frames made ready for the transform, lanes<T> of them at once: lane j of every vector belongs to frame j.
//
// In single precision, sums are still taken in double, those of squares a few at a time, and the mean is subtracted in
// two parts, so that what remains of a frame beside a large mean keeps all its digits.
#pragma once

#include <cstddef>

#include "core/simd/transpose.h"
#include "core/simd/vec.h"
#include "kels/types.h"

namespace kels::features {

// One double for each lane of T.
template <class T>
struct WideLanes {
    static constexpr std::size_t kParts = lanes<T> / lanes<double>;
    Vec<double> part[kParts];
};

inline WideLanes<double> wideLanes(const Vec<double>& v) {
    return {{v}};
}
inline WideLanes<float> wideLanes(const Vec<float>& v) {
    const auto [low, high] = widen(v);
    return {{low, high}};
}
inline Vec<double> narrowLanes(const WideLanes<double>& v) {
    return v.part[0];
}
inline Vec<float> narrowLanes(const WideLanes<float>& v) {
    return narrow(v.part[0], v.part[1]);
}

inline Vec<double> loadAs(const Kel32f* p, double) {
    return loadWide(p);
}
inline Vec<float> loadAs(const Kel32f* p, float) {
    return load(p);
}

// Sample i of each frame in dst[i].
template <class T>
inline void loadFrames(const Kel32f* const* frames, std::size_t length, Vec<T>* dst) {
    constexpr std::size_t w = lanes<T>;
    if (length < w) {
        for (std::size_t i = 0; i < length; ++i) {
            dst[i] = Vec<T>([=](auto j) { return static_cast<T>(frames[static_cast<std::size_t>(j)][i]); });
        }
        return;
    }
    const auto square = [=](std::size_t i) {
        Vec<T> block[w];
        for (std::size_t j = 0; j < w; ++j) block[j] = loadAs(frames[j] + i, T());
        transposeSquare<T>(block);
        for (std::size_t j = 0; j < w; ++j) dst[i + j] = block[j];
    };
    for (std::size_t i = 0; i + w < length; i += w) square(i);
    square(length - w);
}

// The sums of value(x[i]) over n vectors, in double, in four chains.
template <class T, class Value>
inline WideLanes<T> sumOf(const Vec<T>* x, std::size_t n, Value value) {
    constexpr std::size_t kChains = 4, kParts = WideLanes<T>::kParts;
    Vec<double> sums[kChains][kParts];
    for (auto& chain : sums) {
        for (auto& sum : chain) sum = 0.0;
    }
    const auto add = [&](std::size_t i, std::size_t chain) {
        const WideLanes<T> v = wideLanes(Vec<T>(value(x[i])));
        for (std::size_t p = 0; p < kParts; ++p) sums[chain][p] += v.part[p];
    };
    std::size_t i = 0;
    for (; i + kChains <= n; i += kChains) {
        for (std::size_t c = 0; c < kChains; ++c) add(i + c, c);
    }
    for (; i < n; ++i) add(i, 0);
    WideLanes<T> total;
    for (std::size_t p = 0; p < kParts; ++p) {
        total.part[p] = (sums[0][p] + sums[1][p]) + (sums[2][p] + sums[3][p]);
    }
    return total;
}

template <class T>
inline WideLanes<T> energyOf(const Vec<T>* x, std::size_t n) {
    return sumOf(x, n, [](const Vec<T>& v) { return v * v; });
}

// The mean of a frame in two parts, or none.
template <class T>
struct FrameMean {
    Vec<T> high, low;

    FrameMean() : high(T(0)), low(T(0)) {}
    FrameMean(const Vec<T>* x, std::size_t n) : FrameMean() {
        WideLanes<T> mean = sumOf(x, n, [](const Vec<T>& v) { return v; });
        for (auto& part : mean.part) part /= static_cast<double>(n);
        high = narrowLanes(mean);
        if constexpr (sizeof(T) == sizeof(double)) return;
        const WideLanes<T> rounded = wideLanes(high);
        for (std::size_t p = 0; p < WideLanes<T>::kParts; ++p) mean.part[p] -= rounded.part[p];
        low = narrowLanes(mean);
    }
    Vec<T> takenFrom(const Vec<T>& v) const {
        if constexpr (sizeof(T) == sizeof(double)) return v - high;
        return (v - high) - low;
    }
};

// A frame less its mean, with pre-emphasis, times the window, in one pass; the energy before pre-emphasis is returned.
// x[i] - k x[i - 1], the first sample standing before itself, is written as a difference and what is left of the sample
// before: where neighbours are nearly equal, that loses nothing.
template <bool withEnergy, bool emphasised, class T>
inline WideLanes<T> conditionFrames(Vec<T>* x, std::size_t n, const FrameMean<T>& mean, double preEmphasis,
                                    const T* window) {
    constexpr std::size_t kBlock = 4, kParts = WideLanes<T>::kParts;
    const Vec<T> left(static_cast<T>(1 - preEmphasis));
    WideLanes<T> energy;
    for (auto& part : energy.part) part = 0.0;
    Vec<T> before = mean.takenFrom(x[0]);
    // Squares of a few samples are added up in T, these sums in double.
    const auto conditionBlock = [&](std::size_t begin, std::size_t count) {
        Vec<T> squares(T(0));
        for (std::size_t i = begin; i < begin + count; ++i) {
            const Vec<T> now = mean.takenFrom(x[i]);
            if constexpr (withEnergy) squares = mulAdd(now, now, squares);
            x[i] = (emphasised ? mulAdd(before, left, Vec<T>(now - before)) : now) * window[i];
            before = now;
        }
        if constexpr (withEnergy) {
            const WideLanes<T> wide = wideLanes(squares);
            for (std::size_t p = 0; p < kParts; ++p) energy.part[p] += wide.part[p];
        }
    };
    std::size_t i = 0;
    for (; i + kBlock <= n; i += kBlock) conditionBlock(i, kBlock);
    conditionBlock(i, n - i);
    return energy;
}

}  // namespace kels::features
