// Means, variances and sums of the columns of a block.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "core/scaling.h"
#include "core/simd/vec.h"
#include "core/vector/fill_copy.h"
#include "kels/types.h"
#include "training/columns/sums.h"

namespace kels::columns {

inline Kel32f reciprocal(int n) {
    return static_cast<Kel32f>(1.0 / n);
}

// ---- float ---------------------------------------------------------------------------------------------------------

template <class Rows>
void columnMeans(const Rows& rows, int height, int width, Kel32f* mean) {
    const Kel32f r = reciprocal(height);
    floatColumnSums(rows, height, width, Unweighted(), FromZero(),
                    [=](std::size_t from, std::size_t n, const Kel32f* first, const Kel32f*) {
                        map(
                            mean + from, n, [r](const auto& sum) { return sum * r; }, 0.0f, first);
                    });
}

// About given means.  The sum begins with what the means take from it.
template <class Rows>
void columnVariances(const Rows& rows, int height, int width, const Kel32f* mean, Kel32f* var) {
    const Kel32f r = reciprocal(height - 1), rowCount = static_cast<Kel32f>(height);
    floatColumnSums(
        rows, height, width, Unweighted(),
        [=](std::size_t from, std::size_t n, Kel32f*, Kel32f* second) {
            map(
                second, n, [rowCount](const auto& m) { return -rowCount * m * m; }, 0.0f, mean + from);
        },
        [=](std::size_t from, std::size_t n, const Kel32f*, const Kel32f* second) {
            map(
                var + from, n, [r](const auto& sum) { return sum * r; }, 0.0f, second);
        });
}

template <class Rows>
void columnMeansAndVariances(const Rows& rows, int height, int width, Kel32f* mean, Kel32f* var) {
    using V = Vec<Kel32f>;
    const Kel32f r = reciprocal(height), r1 = reciprocal(height - 1), rowCount = static_cast<Kel32f>(height);
    floatColumnSums(rows, height, width, Unweighted(), FromZero(),
                    [=](std::size_t from, std::size_t n, const Kel32f* first, const Kel32f* second) {
                        mapPair(
                            mean + from, var + from, n,
                            [=](const V& sum, const V& squares) {
                                const V m = sum * r;
                                return Pair{m, V((squares - rowCount * m * m) * r1)};
                            },
                            0.0f, first, second);
                    });
}

// ---- weighted ------------------------------------------------------------------------------------------------------

template <class Rows, class T>
void weightedMeans(const Rows& rows, const T* weights, int height, int width, T* mean) {
    floatColumnSums(rows, height, width, RowWeights{weights}, FromZero(),
                    [=](std::size_t from, std::size_t n, const T* first, const T*) { copy(first, mean + from, n); });
}

template <class Rows, class T>
void weightedVariances(const Rows& rows, const T* weights, int height, int width, const T* mean, T* var) {
    floatColumnSums(rows, height, width, RowWeights{weights}, FromZero(),
                    [=](std::size_t from, std::size_t n, const T*, const T* second) {
                        map(
                            var + from, n, [](const auto& squares, const auto& m) { return squares - m * m; }, T(),
                            second, mean + from);
                    });
}

template <class Rows, class T>
void weightedMeansAndVariances(const Rows& rows, const T* weights, int height, int width, T* mean, T* var) {
    floatColumnSums(rows, height, width, RowWeights{weights}, FromZero(),
                    [=](std::size_t from, std::size_t n, const T* first, const T* second) {
                        mapPair(
                            mean + from, var + from, n,
                            [](const Vec<T>& m, const Vec<T>& squares) {
                                return Pair{m, Vec<T>(squares - m * m)};
                            },
                            T(), first, second);
                    });
}

// ---- sums ----------------------------------------------------------------------------------------------------------

// How sums meet what is in the destination.
struct Replace {
    static Kel32f combine(Kel32f, Kel32f sum) { return sum; }
    static Kel32s combine(Kel32s, Kel32s sum) { return sum; }
};
struct Accumulate {
    static Kel32f combine(Kel32f old, Kel32f sum) { return old + sum; }
    static Kel32s combine(Kel32s old, Kel32s sum) { return saturate<Kel32s>(int64_t{old} + sum); }
};

template <class How, class Rows>
void sumsAndSquares(const Rows& rows, int height, int width, Kel32f* dstSum, Kel32f* dstSumSq) {
    const auto finish = [=](std::size_t from, std::size_t n, const auto* first, const auto* second) {
        for (std::size_t j = 0; j < n; ++j) {
            dstSum[from + j] = How::combine(dstSum[from + j], static_cast<Kel32f>(first[j]));
            dstSumSq[from + j] = How::combine(dstSumSq[from + j], static_cast<Kel32f>(second[j]));
        }
    };
    if constexpr (std::is_same_v<decltype(rows[0]), const Kel16s*>) {
        exactColumnSums(rows, height, width, finish);
    } else {
        floatColumnSums(rows, height, width, Unweighted(), FromZero(), finish);
    }
}

template <class How, class Rows>
void sumsAndSquaresScaled(const Rows& rows, int height, int width, Kel32s* dstSum, Kel32s* dstSumSq, int scaleFactor) {
    exactColumnSums(
        rows, height, width, [=](std::size_t from, std::size_t n, const int64_t* first, const int64_t* second) {
            for (std::size_t j = 0; j < n; ++j) {
                dstSum[from + j] = How::combine(dstSum[from + j], scaleHalfEven<Kel32s>(first[j], scaleFactor));
                dstSumSq[from + j] = How::combine(dstSumSq[from + j], scaleHalfEven<Kel32s>(second[j], scaleFactor));
            }
        });
}

// ---- 16 bits -------------------------------------------------------------------------------------------------------
// Exact sums; reciprocals rounded to Kel32f, products with them in double precision and truncated.  Inside a
// NearestScope.

template <class D, class Rows>
void fixedColumnMeans(const Rows& rows, int height, int width, D* mean) {
    const Kel64f r = reciprocal(height);
    exactColumnSums(rows, height, width, [=](std::size_t from, std::size_t n, const int64_t* first, const int64_t*) {
        for (std::size_t j = 0; j < n; ++j) {
            mean[from + j] = truncateSaturate<D>(static_cast<Kel64f>(first[j]) * r);
        }
    });
}

template <class Rows>
void fixedColumnVariances(const Rows& rows, int height, int width, const Kel16s* mean, Kel16s* var, int scaleFactor) {
    const Kel64f unit = reciprocal(height - 1) * scaleMultiplier(scaleFactor);
    exactColumnSums(rows, height, width, [=](std::size_t from, std::size_t n, const int64_t*, const int64_t* second) {
        for (std::size_t j = 0; j < n; ++j) {
            const int64_t centred = second[j] - int64_t{height} * mean[from + j] * mean[from + j];
            var[from + j] = truncateSaturate<Kel16s>(static_cast<Kel64f>(centred) * unit);
        }
    });
}

// sum^2 / n as a whole number and the fraction left.
struct Quotient {
    int64_t whole;
    Kel64f fraction;
};
inline Quotient squareOver(int64_t sum, int64_t n) {
    // (q n + r)^2 / n, in which no term exceeds 63 bits: |q| <= 2^15, |r| < n <= 2^31.
    const int64_t q = sum / n, r = sum % n;
    return {q * q * n + 2 * q * r + r * r / n, static_cast<Kel64f>(r * r % n) / static_cast<Kel64f>(n)};
}

// Whether squares about the mean keep the fraction of sum^2 / n, or take it as a whole number.
enum class Centring { Exact, Whole };

template <Centring centring, class M, class D, class Rows>
void fixedColumnMeansAndVariances(const Rows& rows, int height, int width, M* mean, D* var, int scaleFactor) {
    const Kel64f r = reciprocal(height), unit = reciprocal(height - 1) * scaleMultiplier(scaleFactor);
    exactColumnSums(rows, height, width,
                    [=](std::size_t from, std::size_t n, const int64_t* first, const int64_t* second) {
                        for (std::size_t j = 0; j < n; ++j) {
                            const Quotient centre = squareOver(first[j], height);
                            Kel64f centred = static_cast<Kel64f>(second[j] - centre.whole);
                            if constexpr (centring == Centring::Exact) centred -= centre.fraction;
                            mean[from + j] = truncateSaturate<M>(static_cast<Kel64f>(first[j]) * r);
                            var[from + j] = truncateSaturate<D>(centred * unit);
                        }
                    });
}

}  // namespace kels::columns
