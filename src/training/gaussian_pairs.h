// Pairs of diagonal Gaussians: their merge, what a merge costs, and the Bhattacharyya distance.  Components go through
// local arrays in chunks, so that arithmetic and logarithms each run over whole vectors.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "core/constants.h"
#include "core/simd/vec.h"
#include "core/vector/convert.h"
#include "core/vector/fill_copy.h"
#include "kels/types.h"
#include "training/log_product.h"

namespace kels::training {

inline constexpr std::size_t kPairChunk = 64;

template <class T>
struct Gaussian {
    const T *mean, *var;
};
template <class T>
Gaussian(const T*, const T*) -> Gaussian<T>;

// ---- merging -------------------------------------------------------------------------------------------------------

// *det = len * ln(2 pi) less the logarithms of the merged variances.  keep(from, n, mean, var) is handed the merged
// parameters up to the first component that has no logarithm and decides the status.
template <class T, class Keep>
KelStatus mergedDeterminant(Gaussian<T> a, Gaussian<T> b, std::size_t len, T wgt1, T wgt2, Kel64f* det, Keep keep) {
    const T total = wgt1 + wgt2;
    const auto merge = [=](const Vec<T>& m1, const Vec<T>& v1, const Vec<T>& m2, const Vec<T>& v2) {
        const Vec<T> m = (wgt1 * m1 + wgt2 * m2) / total;
        return Pair{m, Vec<T>((wgt1 * (m1 * m1 + v1) + wgt2 * (m2 * m2 + v2)) / total - m * m)};
    };
    LogProduct product;
    T mean[kPairChunk], var[kPairChunk + lanes<T>];
    for (std::size_t from = 0; from < len; from += kPairChunk) {
        const std::size_t n = std::min(kPairChunk, len - from);
        mapPair(mean, var, n, merge, T(1), a.mean + from, a.var + from, b.mean + from, b.var + from);
        const std::size_t fault = product.multiply(var, n);
        keep(from, std::min(fault + 1, n), mean, var);
        if (fault < n) {
            const bool zero = var[fault] == 0;
            *det = zero ? std::numeric_limits<Kel64f>::infinity() : std::numeric_limits<Kel64f>::quiet_NaN();
            return zero ? kelStatusLogZero : kelStatusLogNegative;
        }
    }
    *det = static_cast<Kel64f>(len) * kLn2PiOfModels - product.logarithm();
    return kelStatusOk;
}

template <class T>
KelStatus mergeGaussians(Gaussian<T> a, Gaussian<T> b, T* dstMean, T* dstVar, std::size_t len, T* dstDet, T wgt1,
                         T wgt2) {
    Kel64f det;
    const auto keep = [=](std::size_t from, std::size_t n, const T* mean, const T* var) {
        copy(mean, dstMean + from, n);
        copy(var, dstVar + from, n);
    };
    const KelStatus status = mergedDeterminant(a, b, len, wgt1, wgt2, &det, keep);
    *dstDet = static_cast<T>(det);
    return status;
}

template <class T>
KelStatus mergeCost(Gaussian<T> a, Gaussian<T> b, std::size_t len, T* dst, T wgt1, T det1, T wgt2, T det2) {
    Kel64f det;
    const auto drop = [](std::size_t, std::size_t, const T*, const T*) {};
    const KelStatus status = mergedDeterminant(a, b, len, wgt1, wgt2, &det, drop);
    if (status == kelStatusOk) det = Kel64f{wgt1} * det1 + Kel64f{wgt2} * det2 - Kel64f{wgt1 + wgt2} * det;
    *dst = static_cast<T>(det);
    return status;
}

// ---- Bhattacharyya distance ----------------------------------------------------------------------------------------

inline constexpr Kel64f kSmallestParameter = 1e-6;

// The status of the first component that the distance is not defined for.
inline KelStatus checkComponents(Gaussian<Kel32f> a, Gaussian<Kel32f> b, std::size_t from, std::size_t n) {
    for (std::size_t k = from; k < from + n; ++k) {
        const Kel32f values[] = {a.mean[k], b.mean[k], a.var[k], b.var[k]};
        if (std::any_of(values, values + 4, [](Kel32f x) { return x < 0; })) return kelStatusLogNegative;
        if (std::any_of(values, values + 4, [](Kel32f x) { return x < kSmallestParameter; })) return kelStatusLogZero;
    }
    return kelStatusOk;
}

enum class LogVariances { Computed, Given };

// Sum (m1 - m2)^2 / (v1 + v2), and the sum of the logarithms of the squared ratio of the arithmetic to the geometric
// mean of the variances, or of the arithmetic mean alone where the others' logarithms are given.
template <LogVariances kind>
KelStatus bhattacharyyaSums(Gaussian<Kel32f> a, Gaussian<Kel32f> b, std::size_t len, Kel64f* distance,
                            Kel64f* logarithms) {
    using V = Vec<Kel64f>;
    constexpr std::size_t w = lanes<Kel64f>;
    LogProduct product;
    V sum(0.0);
    Kel64f m1[kPairChunk], v1[kPairChunk], m2[kPairChunk], v2[kPairChunk];
    Kel64f terms[kPairChunk + w], factors[kPairChunk + w];
    for (std::size_t from = 0; from < len; from += kPairChunk) {
        const std::size_t n = std::min(kPairChunk, len - from);
        if (const KelStatus status = checkComponents(a, b, from, n)) return status;
        convertWidening(a.mean + from, m1, n);
        convertWidening(a.var + from, v1, n);
        convertWidening(b.mean + from, m2, n);
        convertWidening(b.var + from, v2, n);
        mapPair(
            terms, factors, n,
            [](const V& x1, const V& y1, const V& x2, const V& y2) {
                const V d = x1 - x2, both = y1 + y2, average = 0.5 * both;
                const V term = d * d / both;
                if constexpr (kind == LogVariances::Given) return Pair{term, average};
                return Pair{term, V(average * average / (y1 * y2))};
            },
            1.0, m1, v1, m2, v2);
        store(terms + n, V(0.0));
        for (std::size_t k = 0; k < n; k += w) sum += load(terms + k);
        product.multiply(factors, n);
    }
    *distance = stdx::reduce(sum);
    *logarithms = product.logarithm();
    return kelStatusOk;
}

// What a distance that is not defined is replaced by.
template <class D>
D undefinedDistance(KelStatus status) {
    return status == kelStatusLogZero ? std::numeric_limits<D>::infinity() : std::numeric_limits<D>::quiet_NaN();
}

template <class D>
KelStatus bhattacharyya(Gaussian<Kel32f> a, Gaussian<Kel32f> b, std::size_t len, D* dst) {
    Kel64f distance, logarithms;
    const KelStatus status = bhattacharyyaSums<LogVariances::Computed>(a, b, len, &distance, &logarithms);
    *dst = status == kelStatusOk ? static_cast<D>(0.25 * distance + 0.25 * logarithms) : undefinedDistance<D>(status);
    return status;
}

template <class D>
KelStatus bhattacharyya(Gaussian<Kel32f> a, Gaussian<Kel32f> b, std::size_t len, D* dst, Kel32f sumLogVar1,
                        Kel32f sumLogVar2) {
    Kel64f distance, logarithms;
    const KelStatus status = bhattacharyyaSums<LogVariances::Given>(a, b, len, &distance, &logarithms);
    const Kel64f given = Kel64f{sumLogVar1} + sumLogVar2;
    *dst = status == kelStatusOk ? static_cast<D>(0.25 * distance + 0.5 * logarithms - 0.25 * given)
                                 : undefinedDistance<D>(status);
    return status;
}

}  // namespace kels::training
