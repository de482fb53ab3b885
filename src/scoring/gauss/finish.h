// From the sum of a Gaussian's exponent to its score, and what becomes of the score.
//
// A finish turns the sum S of item g into its score.  Its constants are one value for all items (SameConstant) or an
// array of them (ConstantOf).  An item's constant is read before its result is written, so that the array may be the
// array of results.
//
//   finish                  score
//   Distance<T>             S, in the type of the result
//   Half                    constant - S / 2
//   HalfScaled              constant - S * 2^-(scaleFactor + 1), in floating point
//   HalfShifted<Saturated>  constant - (S shifted by scaleFactor + 1), saturated to 32 bits
//   HalfShifted<Wrapped>    the same, the low 32 bits
//   ShiftedDistance         S shifted by scaleFactor, saturated to 32 bits
//
//   fold                    what becomes of the scores
//   StoreTo                 stored
//   MaxWith                 stored where no less than what was there
//
// A fold takes the scores in blocks: fold(first, scores, n) gets those of items first .. first + n - 1, in order.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "core/scaling.h"
#include "core/simd/row_sums.h"
#include "kels/types.h"

namespace kels::gauss {

// ---- constants -----------------------------------------------------------------------------------------------------
// Here and below, the deduction guides of aggregates are for compilers that do not deduce without one.

template <class T>
struct SameConstant {
    using Value = T;
    T value;
    T operator[](std::size_t) const { return value; }
};
template <class T>
SameConstant(T) -> SameConstant<T>;

template <class T>
struct ConstantOf {
    using Value = T;
    const T* values;
    T operator[](std::size_t item) const { return values[item]; }
};
template <class T>
ConstantOf(const T*) -> ConstantOf<T>;

// ---- finishes ------------------------------------------------------------------------------------------------------

template <class T>
struct Distance {
    using Score = T;
    template <class Sum>
    T operator()(std::size_t, Sum sum) const {
        return static_cast<T>(sum);
    }
};

template <class Constants>
struct Half {
    using Score = typename Constants::Value;
    Constants constants;

    explicit Half(Constants c) : constants(c) {}
    template <class Sum>
    Score operator()(std::size_t item, Sum sum) const {
        return static_cast<Score>(static_cast<Sum>(constants[item]) - static_cast<Sum>(0.5) * sum);
    }
    Score operator()(std::size_t item, const DoubledValue& sum) const {
        return static_cast<Score>(DoubledValue{constants[item], 0} + DoubledValue{-0.5 * sum.high, -0.5 * sum.low});
    }
};

// The multiplier and the difference are formed in double precision: no scaleFactor makes a zero sum anything but zero.
template <class Constants>
struct HalfScaled {
    using Score = typename Constants::Value;
    Constants constants;
    Kel64f multiplier;

    HalfScaled(Constants c, int scaleFactor) : constants(c), multiplier(0.5 * scaleMultiplier(scaleFactor)) {}
    template <class Sum>
    Score operator()(std::size_t item, Sum sum) const {
        return static_cast<Score>(static_cast<Kel64f>(constants[item]) - static_cast<Kel64f>(sum) * multiplier);
    }
};

struct Saturated {
    static int64_t shiftLeft(int64_t v, int shift) { return shiftLeftHeld(v, shift); }
    // |v| is at most 2^62.
    static Kel32s difference(Kel32s constant, int64_t v) { return saturate<Kel32s>(constant - v); }
};
struct Wrapped {
    static int64_t shiftLeft(int64_t v, int shift) { return shiftLeftWrapped(v, shift); }
    static Kel32s difference(Kel32s constant, int64_t v) {
        return static_cast<Kel32s>(static_cast<uint32_t>(constant) - static_cast<uint32_t>(v));
    }
};

// The half is one place more to shift.
template <class Overflow, class Constants>
struct HalfShifted {
    using Score = Kel32s;
    Constants constants;
    int right, left;

    HalfShifted(Overflow, Constants c, int scaleFactor)
        : constants(c),
          right(static_cast<int>(std::clamp<int64_t>(int64_t{scaleFactor} + 1, 0, 63))),
          left(static_cast<int>(std::clamp<int64_t>(-1 - int64_t{scaleFactor}, 0, 64))) {}
    Kel32s operator()(std::size_t item, int64_t sum) const {
        const int64_t shifted = right > 0 ? shiftFloor(sum, right) : Overflow::shiftLeft(sum, left);
        return Overflow::difference(constants[item], shifted);
    }
};

struct ShiftedDistance {
    using Score = Kel32s;
    int scaleFactor;
    Kel32s operator()(std::size_t, int64_t sum) const { return scaleFloor<Kel32s>(sum, scaleFactor); }
};

// ---- folds ---------------------------------------------------------------------------------------------------------

template <class T>
struct StoreTo {
    T* results;
    void operator()(std::size_t first, const T* scores, std::size_t n) const {
        std::copy(scores, scores + n, results + first);
    }
};
template <class T>
StoreTo(T*) -> StoreTo<T>;

// Equal scores are stored; a score, or a result, that is not a number leaves the result as it is.
template <class T>
struct MaxWith {
    T* results;
    void operator()(std::size_t first, const T* scores, std::size_t n) const {
        for (std::size_t i = 0; i < n; ++i) {
            T& result = results[first + i];
            result = result <= scores[i] ? scores[i] : result;
        }
    }
};
template <class T>
MaxWith(T*) -> MaxWith<T>;

}  // namespace kels::gauss
