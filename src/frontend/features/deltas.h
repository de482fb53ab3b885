// Deltas, accelerations and normalisation: sums over rows, a column in each lane.
//
// Rows are given by a function of their number, so that the array of a whole signal and the last rows of a stream go
// through the same sums and agree to the bit.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "core/simd/vec.h"
#include "frontend/features/config.h"
#include "kels/types.h"

namespace kels::features {

// The weights of both orders, whole numbers: k for rows +-k of the deltas; and, where accelerations are made of statics
// alone, those of rows -2 W .. 2 W: the deltas' weights convolved with themselves.
inline int64_t deltaWeightCount(const KelFeatureConfig& c) {
    return c.deltaOrder == 0 ? 0 : 4 * int64_t{c.deltaWin} + 1;
}
inline void fillDeltaWeights(const KelFeatureConfig& c, double* weights) {
    const int reach = c.deltaOrder == 0 ? -1 : 2 * c.deltaWin;
    for (int m = -reach; m <= reach; ++m) {
        double sum = 0;
        for (int k = -c.deltaWin; k <= c.deltaWin; ++k) {
            if (std::abs(m - k) <= c.deltaWin) sum += k * (m - k);
        }
        *weights++ = sum;
    }
}
inline double deltaDivisor(const KelFeatureConfig& c) {
    const double w = c.deltaWin;
    return w * (w + 1) * (2 * w + 1) / 3;
}

// `count` columns of a row, up to a vector of them.
inline Vec<double> loadColumns(const Kel32f* p, std::size_t count) {
    if (count == lanes<double>) return loadWide(p);
    Vec<double> v(0.0);
    for (std::size_t i = 0; i < count; ++i) v[i] = double{p[i]};
    return v;
}
inline void storeColumns(Kel32f* p, const Vec<double>& v, std::size_t count) {
    if (count == lanes<double>) return v.copy_to(p, stdx::element_aligned);
    for (std::size_t i = 0; i < count; ++i) p[i] = static_cast<Kel32f>(double(v[i]));
}

// dst[j] = sum over the terms of weight * (row at later - row at earlier) / divisor, for n columns; terms(add) calls
// add(weight, later, earlier), where the row at earlier may be null.
template <class Terms>
inline void weightedRows(std::size_t n, Kel32f* dst, double divisor, Terms terms) {
    constexpr std::size_t w = lanes<double>;
    const auto columns = [&](std::size_t j, std::size_t count) {
        Vec<double> sum(0.0);
        terms([&](double weight, const Kel32f* later, const Kel32f* earlier) {
            const Vec<double> x = loadColumns(later + j, count);
            sum += earlier == nullptr ? x * weight : (x - loadColumns(earlier + j, count)) * weight;
        });
        storeColumns(dst + j, sum / divisor, count);
    };
    if (n < w) return columns(0, n);
    for (std::size_t j = 0; j + w < n; j += w) columns(j, w);
    columns(n - w, w);  // over the end of the one before it
}

// The deltas of row t, from the n values that begin `from` elements into the rows; row(i) is row i of 0 .. last.
template <class Row>
inline void deltaRow(const KelFeatureConfig& c, Row row, int64_t t, int64_t last, std::size_t n, std::size_t from,
                     Kel32f* dst) {
    weightedRows(n, dst, deltaDivisor(c), [&](auto add) {
        for (int k = 1; k <= c.deltaWin; ++k) {
            add(k, row(std::min(t + k, last)) + from, row(std::max<int64_t>(t - k, 0)) + from);
        }
    });
}

// The accelerations of row t from its statics; `weights` from fillDeltaWeights.
template <class Row>
inline void accelerationRow(const KelFeatureConfig& c, const double* weights, Row row, int64_t t, int64_t last,
                            std::size_t n, Kel32f* dst) {
    const int reach = 2 * c.deltaWin;
    const double divisor = deltaDivisor(c);
    weightedRows(n, dst, divisor * divisor, [&](auto add) {
        for (int m = -reach; m <= reach; ++m) {
            // A row without weight has no part, not even if it holds NaN.
            const double weight = weights[m + reach];
            if (weight != 0) add(weight, row(std::clamp<int64_t>(t + m, 0, last)), nullptr);
        }
    });
}

// The second order of row t, behind the first one, where that has been computed as far as it is needed.
template <class Row>
inline void secondOrderRow(const KelFeatureConfig& c, const double* weights, Row row, int64_t t, int64_t last,
                           std::size_t n, Kel32f* dst) {
    if (c.deltaEdge == kelFeatDeltaOfDelta) {
        deltaRow(c, row, t, last, n, n, dst);
    } else {
        accelerationRow(c, weights, row, t, last, n, dst);
    }
}

// Columns 0 .. n - 1 of `height` rows less their means, and divided by their deviations where `variance`.
inline void normaliseColumns(Kel32f* rows, std::ptrdiff_t step, int64_t height, std::size_t n, bool variance) {
    const Vec<double> leastVariance(1e-20);
    const auto rowCount = static_cast<double>(height);
    const auto end = static_cast<std::ptrdiff_t>(height);
    for (std::size_t j = 0; j < n; j += lanes<double>) {
        const std::size_t count = std::min(n - j, lanes<double>);
        const auto at = [=](std::ptrdiff_t t) { return rows + t * step + j; };
        Vec<double> mean(0.0), squares(0.0);
        for (std::ptrdiff_t t = 0; t < end; ++t) mean += loadColumns(at(t), count);
        mean /= rowCount;
        for (std::ptrdiff_t t = 0; variance && t < end; ++t) {
            const Vec<double> x = loadColumns(at(t), count) - mean;
            squares += x * x;
        }
        Vec<double> deviation(1.0);
        if (variance) deviation = stdx::sqrt(greaterOf(leastVariance, Vec<double>(squares / rowCount)));
        for (std::ptrdiff_t t = 0; t < end; ++t) {
            storeColumns(at(t), (loadColumns(at(t), count) - mean) / deviation, count);
        }
    }
}

}  // namespace kels::features
