// Frame conditioning: the offset filter, the mean, energies against their maximum, counts over neighbouring samples,
// and the copy into a longer frame.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <type_traits>

#include "core/check.h"
#include "core/scaling.h"
#include "core/simd/integers.h"
#include "core/simd/vec.h"
#include "core/vector/fill_copy.h"
#include "kels/types.h"

namespace kels::frame {

// ---- offset compensation -------------------------------------------------------------------------------------------

// y[n] = next(y[n - 1], x[n], x[n - 1]), the first output by `first`.  The last input goes to *srcLast before anything
// is written, so dst may be src.
template <class T, class First, class Next>
void filterOffset(const T* src, T* dst, int len, T* srcLast, T dstLast, First first, Next next) {
    T x = src[0];
    T y = first(dstLast, x, *srcLast);
    *srcLast = src[len - 1];
    dst[0] = y;
    for (int n = 1; n < len; ++n) {
        const T before = x;
        x = src[n];
        y = next(y, x, before);
        dst[n] = y;
    }
}

inline void compensateOffset(const Kel32f* src, Kel32f* dst, int len, Kel32f* srcLast, Kel32f dstLast, Kel32f val) {
    filterOffset(
        src, dst, len, srcLast, dstLast, [val](Kel32f y, Kel32f x, Kel32f before) { return val * y + x - before; },
        [val](Kel32f y, Kel32f x, Kel32f before) { return val * y + (x - before); });
}

// The first 16-bit output, in single precision and truncated.
struct FirstOffset16s {
    Kel16s operator()(Kel16s y, Kel16s x, Kel16s before) const {
        const Kel32f sum = val * static_cast<Kel32f>(y) + static_cast<Kel32f>(x) - static_cast<Kel32f>(before);
        return truncateSaturate<Kel16s>(sum);
    }
    Kel32f val;
};

// The later ones in single precision, halves away from zero; inside a NearestScope.
inline void compensateOffset(const Kel16s* src, Kel16s* dst, int len, Kel16s* srcLast, Kel16s dstLast, Kel32f val) {
    const auto next = [val](Kel16s y, Kel16s x, Kel16s before) {
        const Kel32f sum = val * static_cast<Kel32f>(y) + static_cast<Kel32f>(x - before);
        return truncateSaturate<Kel16s>(sum + std::copysign(0.5f, sum));
    };
    filterOffset(src, dst, len, srcLast, dstLast, FirstOffset16s{val}, next);
}

// The later ones by a coefficient in Q12 of at most 1: the exact sum, halves away from zero; inside a NearestScope.
inline void compensateOffsetQ12(const Kel16s* src, Kel16s* dst, int len, Kel16s* srcLast, Kel16s dstLast, Kel32f val) {
    const Kel32s coefficient = toIntScalar(val * 4096.0f);
    const auto next = [coefficient](Kel16s y, Kel16s x, Kel16s before) {
        return saturateSeldom<Kel16s>(shiftHalfAway(coefficient * y + (x - before) * 4096, 12));
    };
    filterOffset(src, dst, len, srcLast, dstLast, FirstOffset16s{val}, next);
}

inline void compensateOffsetQ15(const Kel16s* src, Kel16s* dst, int len, Kel16s* srcLast, Kel16s dstLast,
                                Kel16s valQ15) {
    const auto next = [valQ15](Kel16s y, Kel16s x, Kel16s before) {
        return saturateSeldom<Kel16s>(shiftTowardZero(int64_t{x - before} * 32768 + y * valQ15, 15));
    };
    filterOffset(src, dst, len, srcLast, dstLast, next, next);
}

// ---- zero mean -----------------------------------------------------------------------------------------------------

inline int64_t sumOf(const Kel16s* x, int len) {
    constexpr int kPart = 1 << 16;  // the sum of so many fits 32 bits
    int64_t sum = 0;
    for (int from = 0; from < len;) {
        const int to = from + std::min(kPart, len - from);
        Kel32s part = 0;
        for (; from < to; ++from) part += x[from];
        sum += part;
    }
    return sum;
}

inline void zeroMean(Kel16s* srcDst, int len) {
    const auto mean = static_cast<Kel16s>(divideHalfAway(sumOf(srcDst, len), len));
    const auto lessMean = [m = Vec<Kel16s>(mean)](const Vec<Kel16s>& x) { return subSaturated(x, m); };
    map(srcDst, toSize(len), lessMean, Kel16s{0}, srcDst);
}

// ---- energy normalisation ------------------------------------------------------------------------------------------

template <class T>
T largestEnergy(const T* column, std::ptrdiff_t step, int height) {
    T largest = std::numeric_limits<T>::lowest();
    for (int k = 0; k < height; ++k) largest = std::max(largest, column[k * step]);
    return largest;
}

// Each energy e becomes peak - (largest - max(e, floor)) * scale, the floor `silFloor` decibels below the largest.
template <class T>
void normaliseEnergy(T* column, std::ptrdiff_t step, int height, Kel32f silFloor, Kel32f largest, Kel32f peak,
                     Kel32f scale) {
    constexpr Kel32f kNaturalPerDecibel = 0.230259f;
    const Kel32f floor = largest - kNaturalPerDecibel * silFloor;
    for (int k = 0; k < height; ++k) {
        const Kel32f e = std::max(static_cast<Kel32f>(column[k * step]), floor);
        const Kel32f normalised = peak - (largest - e) * scale;
        if constexpr (std::is_same_v<T, Kel32f>) {
            column[k * step] = normalised;
        } else {
            column[k * step] = truncateSaturate<T>(normalised);
        }
    }
}

// ---- sign changes --------------------------------------------------------------------------------------------------

// Minus the sum of changes(x[n], x[n + 1]) over the len - 1 pairs of neighbours.  `changes` takes vectors and gives
// integers of -2 to 0, as comparisons do; 0 for a pair of zeros.
template <class T, class Changes>
int64_t countChanges(const T* x, int len, Changes changes) {
    using Count = decltype(changes(Vec<T>(), Vec<T>()));
    constexpr std::size_t w = lanes<T>;
    constexpr std::size_t kPart = 16383 / w * w - w;  // so many and a vector more, times -2, fit 16 bits
    const auto pairs = toSize(len) - 1;
    if (pairs < w) return -int64_t{stdx::reduce(changes(loadPart(x, pairs), loadPart(x + 1, pairs)))};
    const std::size_t rest = pairs % w;
    int64_t count = 0;
    for (std::size_t n = 0; n + w <= pairs;) {
        const std::size_t end = n + std::min(kPart, pairs - rest - n);
        Count part(0);
        for (; n < end; n += w) part += changes(load(x + n), load(x + n + 1));
        if (end + rest == pairs) {  // the last full vector, less the lanes that are counted already
            Count last = changes(load(x + pairs - w), load(x + pairs - w + 1));
            const Count lane([](auto i) { return static_cast<typename Count::value_type>(i); });
            stdx::where(lane < static_cast<typename Count::value_type>(w - rest), last) = 0;
            part += last;
        }
        count -= stdx::reduce(part);
    }
    return count;
}

// The pairs whose product is negative.
inline int64_t countNegativeProducts(const Kel16s* x, int len) {
    return countChanges(x, len, [](const auto& a, const auto& b) { return mulHigh(a, b) >> 15; });
}
// The pairs whose product is negative or not a number.
inline int64_t countNegativeProducts(const Kel32f* x, int len) {
    return countChanges(x, len, [](const auto& a, const auto& b) { return ~whereLessOrEqual(Vec<Kel32f>(0), b * a); });
}

// Sum of |sgn(b) - sgn(a)|: becoming or ceasing to be positive is one step, so is the same of negative.
template <class T>
int64_t countSignSteps(const T* x, int len) {
    return countChanges(x, len, [](const Vec<T>& a, const Vec<T>& b) {
        const Vec<T> zero(0);
        return (whereLess(zero, a) ^ whereLess(zero, b)) + (whereLess(a, zero) ^ whereLess(b, zero));
    });
}

// The pairs whose sign bits differ.
inline int64_t countSignBitChanges(const Kel32f* x, int len) {
    return countChanges(x, len, [](const auto& a, const auto& b) { return signBits(a) ^ signBits(b); });
}

// ---- copy with padding ---------------------------------------------------------------------------------------------

template <class T>
void copyWithPadding(const T* src, std::size_t lenSrc, T* dst, std::size_t lenDst) {
    copy(src, dst, lenSrc);
    zero(dst + lenSrc, lenDst - lenSrc);
}

}  // namespace kels::frame
