// Deltas and accelerations as the ETSI distributed-speech-recognition front-end takes them: both straight from the
// statics, over +-4 rows.
#pragma once

#include "frontend/delta/stream.h"

namespace kels::delta {

inline constexpr int kAuroraSource = 14;   // c1 .. c12, c0, log energy
inline constexpr int kAuroraCepstra = 12;  // copied
inline constexpr int kAuroraStatics = 13;
inline constexpr int kAuroraHalf = 4;
inline constexpr int kAuroraHistory = 2 * kAuroraHalf;

// Weights of the acceleration in millionths, for rows 1 .. 4 away.  That of the row itself is such that all nine sum to
// zero.
inline constexpr int kAuroraWeights[kAuroraHalf] = {-607143, -285714, 250000, 1000000};

// Sum of weight[k] * (row[t + k] + row[t - k]) over all k with the weights in units of `unit` millionths.  Taken of the
// differences from row t, which changes nothing but the rounding: rows without change give exactly zero.
template <class V>
V curvatureSum(const V (&row)[2 * kAuroraHalf + 1], typename V::value_type unit) {
    constexpr int c = kAuroraHalf;
    V sum = 0;
    for (int k = 1; k <= c; ++k) {
        const auto weight = static_cast<typename V::value_type>(kAuroraWeights[k - 1]) / unit;
        sum += V(weight) * ((row[c + k] - row[c]) + (row[c - k] - row[c]));
    }
    return sum;
}

// The fixed-point forms sum integers, exactly.  Their quotients by a million are at least 2^-38 of themselves away from
// any integer that they are not, so dividing in doubles moves none across one.
inline Vec<Kel32f> curvature(const FloatArithmetic& a, const Vec<Kel32f> (&row)[2 * kAuroraHalf + 1]) {
    return a.finish(curvatureSum(row, 1e6f));
}
inline Vec<Kel64f> curvature(const FixedArithmetic& a, const Vec<Kel64f> (&row)[2 * kAuroraHalf + 1]) {
    return a.finish(curvatureSum(row, 1.0) / Vec<Kel64f>(1e6));
}

template <class A>
struct AuroraAcceleration {
    template <class Block>
    auto forBlock(const Block&, std::ptrdiff_t) const {
        return [a = arithmetic](const auto& window) { return curvature(a, window); };
    }
    A arithmetic;
};

// Static 12: 0.6 / 23 of c0 and 0.4 of the log energy.
inline Kel32f auroraEnergy(Kel32f c0, Kel32f logEnergy) {
    return 0.6f * c0 / 23.0f + 0.4f * logEnergy;
}
inline Kel16s auroraEnergy(Kel16s c0, Kel16s logEnergy) {
    return static_cast<Kel16s>(divideFloor(3 * c0 + 46 * logEnergy, 115));
}

// `values` are the multipliers of the statics, or null.
template <class A, class T = typename A::Element>
void streamAurora(A arithmetic, const T* src, const T* values, T* dst, int step, int height, int mode) {
    const std::ptrdiff_t history = (mode & kelDeltaBlockFirst) != 0 ? 0 : kAuroraHistory;
    const auto statics = [&](std::ptrdiff_t from, std::ptrdiff_t to) {
        const T* x = src + (from - history) * kAuroraSource;
        T* const out = dst + from * step;
        copyRows(x, kAuroraSource, out, step, kAuroraCepstra, to - from);
        for (std::ptrdiff_t t = 0; t < to - from; ++t, x += kAuroraSource) {
            out[t * step + kAuroraCepstra] = auroraEnergy(x[kAuroraCepstra], x[kAuroraCepstra + 1]);
        }
        if (values == nullptr) return;
        multiplyStatics(arithmetic, out, to - from, step, kAuroraStatics, ColumnMultipliers<T>{values, kAuroraStatics});
    };
    // Weights k / 4.
    using Slope = Regression<kAuroraHalf, A, ScalarMultipliers<Kel32f>>;
    using Curvature = AuroraAcceleration<A>;
    const Derivative<kAuroraHalf, A, Slope> deltas(dst, dst + kAuroraStatics, step, kAuroraStatics, history,
                                                   kAuroraHalf, Slope{arithmetic, {0.25f, 0.0f}, 1});
    const Derivative<kAuroraHalf, A, Curvature> accelerations(dst, dst + 2 * kAuroraStatics, step, kAuroraStatics,
                                                              history, kAuroraHalf, Curvature{arithmetic});
    streamBlock(history, height, (mode & kelDeltaBlockLast) != 0, statics, deltas, accelerations);
}

}  // namespace kels::delta
