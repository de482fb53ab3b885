// Statistics of states and the likelihood of clusters of them.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "core/constants.h"
#include "core/simd/in_order.h"
#include "core/simd/vec.h"
#include "core/variance_form.h"
#include "core/vector/convert.h"
#include "kels/types.h"
#include "training/log_product.h"

namespace kels::training {

template <VarianceForm form, class T>
void stateStatistics(const T* mean, const T* var, T* dstSum, T* dstSqr, std::size_t len, T occ) {
    const auto moments = [occ](const Vec<T>& m, const Vec<T>& v) {
        const Vec<T> direct = form == VarianceForm::Inverse ? T(1) / v : v;
        return Pair{Vec<T>(m * occ), Vec<T>((m * m + direct) * occ)};
    };
    mapPairInOrder(dstSum, dstSqr, len, moments, T(1), mean, var);
}

// In double precision, where the products of floats are exact: the sign of a variance is never a matter of rounding.
template <class T>
KelStatus clusterLikelihood(const T* sum, const T* sqr, std::size_t len, Kel64f* dst, Kel64f occ) {
    constexpr Kel64f kOfNoData = -1e10;
    constexpr std::size_t kChunk = 64;
    if (occ == 0) {
        *dst = kOfNoData;
        return kelStatusZeroOcc;
    }
    LogProduct product;
    bool anyZero = false;
    Kel64f first[kChunk], second[kChunk], scaled[kChunk + lanes<Kel64f>];
    for (std::size_t from = 0; from < len; from += kChunk) {
        const std::size_t n = std::min(kChunk, len - from);
        convertWidening(sum + from, first, n);
        convertWidening(sqr + from, second, n);
        map(
            scaled, n, [occ](const auto& s, const auto& q) { return q * occ - s * s; }, 0.0, first, second);
        for (std::size_t at = 0; (at += product.multiply(scaled + at, n - at)) < n; ++at) {
            if (scaled[at] < 0) {
                *dst = std::numeric_limits<Kel64f>::quiet_NaN();
                return kelStatusLogNegative;
            }
            anyZero = true;
        }
    }
    if (anyZero) {
        *dst = -std::numeric_limits<Kel64f>::infinity();
        return kelStatusLogZero;
    }
    *dst = 0.5 * occ * (static_cast<Kel64f>(len) * (2 * std::log(occ) - (1 + kLn2Pi)) - product.logarithm());
    return kelStatusOk;
}

}  // namespace kels::training
