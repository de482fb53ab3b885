// How the kernels of linear prediction see their arrays: floats as they are, 16-bit integers as numbers in some unit.
#pragma once

#include <algorithm>
#include <cstddef>
#include <type_traits>

#include "core/memory.h"
#include "core/scaling.h"
#include "kels/types.h"

namespace kels::lp {

// Element i is worth data[i] * unit.
template <class T>
struct Source {
    const T* data;
    Kel64f unit;

    Kel64f operator[](std::size_t i) const { return unit * static_cast<Kel64f>(data[i]); }
    Source from(std::ptrdiff_t offset) const { return {data + offset, unit}; }
};

// Values are stored times `multiplier`, which for floats is 1 or -1; integers are rounded to the nearest inside a
// NearestScope.
template <class T>
struct Result {
    T* data;
    Kel64f multiplier;

    void set(std::size_t i, Kel64f value) const {
        if constexpr (std::is_same_v<T, Kel32f>) {
            data[i] = static_cast<Kel32f>(multiplier) * static_cast<Kel32f>(value);
        } else {
            data[i] = roundSaturate<T>(value * multiplier);
        }
    }
    Result from(std::ptrdiff_t offset) const { return {data + offset, multiplier}; }
};

inline constexpr Kel64f kQ15 = 32768;

template <class T>
Source<T> plainSource(const T* data) {
    return {data, 1};
}
// Integers in units of 2^scaleFactor; the unit is held where a 16-bit number in it is next to nothing or beyond all
// use.
inline Source<Kel16s> scaledSource(const Kel16s* data, int scaleFactor) {
    return {data, exactPowerOfTwo(std::clamp(scaleFactor, -200, 200))};
}
inline Source<Kel16s> q15Source(const Kel16s* data) {
    return {data, 1 / kQ15};
}

inline Result<Kel32f> floatResult(Kel32f* data) {
    return {data, 1};
}
inline Result<Kel16s> scaledResult(Kel16s* data, int scaleFactor) {
    return {data, scaleMultiplier(scaleFactor, -1023, 1022)};
}
inline Result<Kel16s> q15Result(Kel16s* data) {
    return {data, kQ15};
}
// The same results with the opposite sign.
template <class T>
Result<T> negated(const Result<T>& result) {
    return {result.data, -result.multiplier};
}

// Scratch memory of so many arrays of about an order's length: on the stack for orders below 64.
inline constexpr int kStackOrder = 64;

template <int arrays>
using OrderScratch = Scratch<Kel64f, arrays * kStackOrder>;

}  // namespace kels::lp
