// From accumulated statistics to parameters, and arithmetic on pairs of parameter vectors.
#pragma once

#include <cstddef>
#include <limits>

#include "core/scaling.h"
#include "core/simd/in_order.h"
#include "core/simd/integers.h"
#include "core/simd/part_vector.h"
#include "core/simd/vec.h"
#include "core/vector/fill_copy.h"
#include "kels/types.h"

namespace kels::training {

// ---- re-estimation -------------------------------------------------------------------------------------------------

template <class T>
void updateMean(const T* meanAcc, T* mean, std::size_t len, T occ) {
    const auto updated = [occ](const Vec<T>& m, const Vec<T>& acc) { return m + acc / occ; };
    mapInOrder(mean, len, updated, T(), mean, meanAcc);
}

// x > floor ? x : floor, lane by lane; the status tells whether every lane was raised to its floor.
template <class T>
class Floored {
  public:
    Vec<T> operator()(const Vec<T>& x, const Vec<T>& floor) {
        kept_ = kept_ || x > floor;
        return greaterOf(x, floor);
    }
    KelStatus status() const { return stdx::any_of(kept_) ? kelStatusOk : kelStatusAllFloored; }

  private:
    typename Vec<T>::mask_type kept_{false};
};

template <class T>
KelStatus updateVariance(const T* meanAcc, const T* varAcc, const T* varFloor, T* var, std::size_t len, T meanOcc,
                         T varOcc) {
    Floored<T> floored;
    map(
        var, len,
        [&](const Vec<T>& second, const Vec<T>& first, const Vec<T>& floor) {
            const Vec<T> shift = first / meanOcc;
            return floored(second / varOcc - shift * shift, floor);
        },
        T(), varAcc, meanAcc, varFloor);
    return floored.status();
}

template <class T>
KelStatus updateWeight(const T* wgtAcc, T* wgt, std::size_t len, T* wgtSum, T occ, T wgtFloor) {
    Floored<T> floored;
    // Behind the end stands what is below every floor.
    map(
        wgt, len, [&](const Vec<T>& acc) { return floored(acc / occ, wgtFloor); }, -std::numeric_limits<T>::infinity(),
        wgtAcc);
    T sum = 0;
    for (std::size_t i = 0; i < len; ++i) sum += wgt[i];
    *wgtSum = sum;
    return floored.status();
}

// ---- splitting -----------------------------------------------------------------------------------------------------

template <class T>
void splitGaussian(T* mean1, const T* var1, T* mean2, T* var2, std::size_t len, T val) {
    const auto apart = [val](const Vec<T>& m, const Vec<T>& v) {
        const Vec<T> s = val * stdx::sqrt(v);
        return Pair{Vec<T>(m - s), Vec<T>(m + s)};
    };
    const bool overlap = shiftedFromAny(len, mean1, mean2, var1, var2) || shiftedFromAny(len, mean2, var1, var2) ||
                         shifted<T>(var1, var2, len);
    const std::size_t step = overlap ? 1 : len;  // arrays that reach into one another go element by element
    for (std::size_t i = 0; i < len; i += step) {
        mapPair(mean2 + i, mean1 + i, step, apart, T(), mean1 + i, var1 + i);
        copy(var1 + i, var2 + i, step);
    }
}

// ---- weighted averages ---------------------------------------------------------------------------------------------

enum class FirstSource { Plain, Weighted };

// The two factors of a weighted average.
struct Factors {
    template <class T>
    struct Of {
        T first, second;
    };
    template <class T>
    static Of<T> of(T weight1, T weight2, FirstSource source) {
        const T r = 1 / (weight1 + weight2);
        return {source == FirstSource::Weighted ? r : weight1 * r, weight2 * r};
    }
};

template <class T>
KelStatus weightedAverage(const T* src1, const T* src2, T* dst, std::size_t len, T weight1, T weight2,
                          FirstSource source) {
    if (weight1 + weight2 == 0) {
        // Infinite with the sign of the numerator; NaN for a numerator of 0.
        map(
            dst, len,
            [=](const Vec<T>& x, const Vec<T>& y) {
                return (x * weight1 + y * weight2) * std::numeric_limits<T>::infinity();
            },
            T(), src1, src2);
        return kelStatusDivByZero;
    }
    const auto factor = Factors::of(weight1, weight2, source);
    map(
        dst, len, [=](const Vec<T>& x, const Vec<T>& y) { return x * factor.first + y * factor.second; }, T(), src1,
        src2);
    return kelStatusOk;
}

inline KelStatus weightedAverage(const Kel16s* src1, const Kel16s* src2, Kel16s* dst, std::size_t len, Kel32f weight1,
                                 Kel32f weight2, FirstSource source) {
    constexpr std::size_t w = lanes<Kel32s>;
    const NearestScope nearest;
    if (weight1 + weight2 == 0) {
        for (std::size_t i = 0; i < len; ++i) {
            const Kel32f n = src1[i] * weight1 + src2[i] * weight2;
            dst[i] = static_cast<Kel16s>(n > 0 ? 32767 : n < 0 ? -32768 : 0);
        }
        return kelStatusDivByZero;
    }
    const auto factor = Factors::of(weight1, weight2, source);
    const auto average = [=](const auto& rows, std::size_t i) {
        const Vec<Kel32f> x = toFloat(rows.load(src1 + i)), y = toFloat(rows.load(src2 + i));
        const Vec<Kel32f> sum = x * factor.first + y * factor.second;
        // The store saturates; only what exceeds 32 bits would come out with the wrong sign.
        return toInt(lesserOf(Vec<Kel32f>(32767.0f), sum), TowardZero());
    };
    std::size_t i = 0;
    for (; i + w <= len; i += w) storeInt16(dst + i, average(WholeVector(), i));
    if (i < len) storeInt16Part(dst + i, average(PartVector(len - i, i), i), len - i);
    return kelStatusOk;
}

}  // namespace kels::training
