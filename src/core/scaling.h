// Scale factors, rounding, saturation and float-to-integer conversion of single values, and the rounding mode that they
// are used in.  core/simd/integers.h has the same for vectors.
#pragma once

#include <immintrin.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "core/simd/integers.h"
#include "core/simd/vec.h"
#include "kels/types.h"

namespace kels {

// ---- powers of two -------------------------------------------------------------------------------------------------

// 2^exponent, exact, for exponents of normal numbers.
constexpr Kel64f exactPowerOfTwo(int exponent) {
    return std::bit_cast<Kel64f>(static_cast<uint64_t>(1023 + exponent) << 52);
}

// 2^-scaleFactor with scaleFactor held to [lowest, highest].  By default the multipliers run from twice the largest
// binade of floats to half the smallest subnormal one: beyond, every product saturates or rounds to zero.
constexpr Kel64f scaleMultiplier(int scaleFactor, int lowest = -128, int highest = 150) {
    return exactPowerOfTwo(-std::clamp(scaleFactor, lowest, highest));
}

// ---- integers ------------------------------------------------------------------------------------------------------

template <class T>
constexpr T saturate(int64_t v) {
    return static_cast<T>(std::clamp<int64_t>(v, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
}

// The same where it is seldom needed and the next value waits for this one: a predicted branch is off its path.
template <class T>
constexpr T saturateSeldom(int64_t v) {
    if (static_cast<T>(v) == v) [[likely]]
        return static_cast<T>(v);
    return v < 0 ? std::numeric_limits<T>::min() : std::numeric_limits<T>::max();
}

// a + b held to 64 bits.
constexpr int64_t addSaturate(int64_t a, int64_t b) {
    int64_t sum = 0;
    if (!__builtin_add_overflow(a, b, &sum)) return sum;
    return b < 0 ? std::numeric_limits<int64_t>::min() : std::numeric_limits<int64_t>::max();
}

// v * 2^-shift, 1 <= shift < bits of I, to the nearest integer, ties to even.
template <class I>
constexpr I shiftHalfEvenInRange(I v, int shift) {
    using U = std::make_unsigned_t<I>;
    const I quotient = v >> shift;
    const U rest = static_cast<U>(v) & ((U{1} << shift) - 1);
    const U half = U{1} << (shift - 1);
    return quotient + (rest + static_cast<U>(quotient & 1) > half ? 1 : 0);
}

// The same for every shift >= 0; beyond 63 bits every value is at most the half and goes to the even 0.
constexpr int64_t shiftHalfEven(int64_t v, int shift) {
    if (shift <= 0) return v;
    return shift > 63 ? 0 : shiftHalfEvenInRange(v, shift);
}

// v * 2^-shift for shift >= 0, to the nearest integer, ties upward.
constexpr int64_t shiftHalfUp(int64_t v, int shift) {
    if (shift <= 0) return v;
    if (shift > 63) return 0;  // v is at least -2^63, and a half goes up
    return (v >> shift) + ((v >> (shift - 1)) & 1);
}

// v * 2^-shift for shift >= 0, toward minus infinity (an arithmetic shift).
constexpr int64_t shiftFloor(int64_t v, int shift) {
    return v >> std::min(shift, 63);
}

// v * 2^-shift for shift >= 0, toward zero.
constexpr int64_t shiftTowardZero(int64_t v, int shift) {
    if (shift > 63) return 0;
    const int64_t quotient = v >> shift;
    return quotient + (v < 0 && static_cast<int64_t>(static_cast<uint64_t>(quotient) << shift) != v ? 1 : 0);
}

// v * 2^-shift for 0 < shift < 31, to the nearest integer, halves away from zero; |v| + 2^(shift - 1) fits an int.
constexpr int32_t shiftHalfAway(int32_t v, int shift) {
    return (v + (int32_t{1} << (shift - 1)) + (v >> 31)) >> shift;
}

// n / d for d > 0: toward minus infinity, and to the nearest with halves away from zero.
constexpr int64_t divideFloor(int64_t n, int64_t d) {
    return n / d - (n % d < 0 ? 1 : 0);
}
constexpr int64_t divideHalfAway(int64_t n, int64_t d) {
    return (2 * n + (n < 0 ? -d : d)) / (2 * d);
}

// v * 2^shift for shift >= 0, saturated to T.
template <class T>
constexpr T shiftLeftSaturate(int64_t v, int shift) {
    if constexpr (sizeof(T) <= 4) {
        constexpr int64_t beyond = int64_t{1} << 32;  // saturates, and leaves room for 31 more bits
        if (v != 0 && shift > 30) v = v > 0 ? beyond : -beyond;
        return saturate<T>(std::clamp(v, -beyond, beyond) * (int64_t{1} << std::min(shift, 30)));
    } else {
        using Limits = std::numeric_limits<T>;
        if (v == 0) return 0;
        if (shift > 63 || v > Limits::max() >> shift || v < Limits::min() >> shift) {
            return v > 0 ? Limits::max() : Limits::min();
        }
        return static_cast<T>(static_cast<uint64_t>(v) << shift);
    }
}

// v * 2^shift for shift >= 0, held to +-2^62: beyond every sum of 32-bit values that it may enter.
constexpr int64_t shiftLeftHeld(int64_t v, int shift) {
    constexpr int64_t beyond = int64_t{1} << 62;
    const int64_t limit = beyond >> std::min(shift, 62);
    if (v > limit || v < -limit) return v > 0 ? beyond : -beyond;
    return static_cast<int64_t>(static_cast<uint64_t>(v) << std::min(shift, 62));
}

// v * 2^shift for shift >= 0 without its bits above the lowest 64.
constexpr int64_t shiftLeftWrapped(int64_t v, int shift) {
    return shift > 63 ? 0 : static_cast<int64_t>(static_cast<uint64_t>(v) << shift);
}

// v * 2^-scaleFactor saturated to T, with the rounding that `right` gives a right shift.
template <class T, class Right>
constexpr T scaleWith(Right right, int64_t v, int scaleFactor) {
    if (scaleFactor >= 0) return saturate<T>(right(v, scaleFactor));
    return shiftLeftSaturate<T>(v, scaleFactor < -64 ? 64 : -scaleFactor);
}
template <class T>
constexpr T scaleHalfEven(int64_t v, int scaleFactor) {
    return scaleWith<T>(shiftHalfEven, v, scaleFactor);
}
template <class T>
constexpr T scaleFloor(int64_t v, int scaleFactor) {
    return scaleWith<T>(shiftFloor, v, scaleFactor);
}
template <class T>
constexpr T scaleTowardZero(int64_t v, int scaleFactor) {
    return scaleWith<T>(shiftTowardZero, v, scaleFactor);
}

// sqrt(v) * 2^-scaleFactor, to the nearest integer, ties to even, saturated; exact in every rounding mode.
inline Kel32s scaledRoot(uint64_t v, int scaleFactor) {
    // Of 4^extra * v, so that at least two bits of the root lie behind the point; what does not fit saturates.
    const int extra = scaleFactor > 1 ? 0 : scaleFactor < -40 ? 41 : 1 - scaleFactor;
    if (v == 0) return 0;
    if (extra > 31 || v > std::numeric_limits<uint64_t>::max() >> (2 * extra))
        return std::numeric_limits<Kel32s>::max();
    v <<= 2 * extra;
    constexpr uint64_t most = 0xffffffff;
    const double estimate = std::sqrt(static_cast<double>(v));  // off by one at most
    uint64_t root = estimate < static_cast<double>(most) ? static_cast<uint64_t>(estimate) : most;
    if (root * root > v) --root;
    if (root < most && (root + 1) * (root + 1) <= v) ++root;
    const auto twice =
        static_cast<int64_t>(2 * root + (root * root < v ? 1 : 0));  // the last bit: there is more behind
    return saturate<Kel32s>(shiftHalfEven(twice, std::min(scaleFactor, 100) + extra + 1));
}

// ---- rounding mode -------------------------------------------------------------------------------------------------

// Round-to-nearest-even for the life of the object, whatever mode the caller has set.
class NearestScope {
  public:
    NearestScope() : simd_(_mm_getcsr()) {
        if ((simd_ & kSimdRounding) != 0) _mm_setcsr(simd_ & ~kSimdRounding);
#if defined(__i386__)
        asm volatile("fnstcw %0" : "=m"(x87_));
        if ((x87_ & kX87Rounding) != 0) setX87(static_cast<uint16_t>(x87_ & ~kX87Rounding));
#endif
        asm volatile("" ::: "memory");  // what follows stays behind the switch
    }
    ~NearestScope() {
        asm volatile("" ::: "memory");
        // Exceptions raised meanwhile stay flagged.
        if ((simd_ & kSimdRounding) != 0) _mm_setcsr(simd_ | (_mm_getcsr() & kSimdFlags));
#if defined(__i386__)
        if ((x87_ & kX87Rounding) != 0) setX87(x87_);
#endif
    }
    NearestScope(const NearestScope&) = delete;
    NearestScope& operator=(const NearestScope&) = delete;

  private:
    static constexpr unsigned kSimdRounding = 0x6000, kSimdFlags = 0x003f;
    unsigned simd_;
#if defined(__i386__)
    // There the x87 unit converts 64-bit integers and takes the results of the mathematical functions.
    static void setX87(uint16_t word) {
        asm volatile("fldcw %0" ::"m"(word));
    }
    static constexpr uint16_t kX87Rounding = 0x0c00;
    uint16_t x87_;
#endif
};

// ---- float to integer ----------------------------------------------------------------------------------------------

// Saturated and truncated toward zero; NaN gives the smallest T.
template <class T, class F>
T truncateSaturate(F v) {
    if (!(v > static_cast<F>(std::numeric_limits<T>::min()))) return std::numeric_limits<T>::min();
    if (v >= static_cast<F>(std::numeric_limits<T>::max())) return std::numeric_limits<T>::max();
    return static_cast<T>(v);
}

// Saturated and rounded to the nearest, ties to even; inside a NearestScope.
template <class T, class F>
T roundSaturate(F v) {
    if (!(v > static_cast<F>(std::numeric_limits<T>::min()))) return std::numeric_limits<T>::min();
    if (v >= static_cast<F>(std::numeric_limits<T>::max())) return std::numeric_limits<T>::max();
    return static_cast<T>(toIntScalar(v));
}

// 2^-scaleFactor for a vector of floats, as two factors: beyond the normal floats one factor would be zero or infinite.
// Their product with a float is exact, or lies beyond every integer, or below a half.
struct SplitMultiplier {
    Kel32f first, second;

    explicit SplitMultiplier(int scaleFactor) {
        const int exponent = -std::clamp(scaleFactor, -128, 150);
        first = static_cast<Kel32f>(exactPowerOfTwo(exponent / 2));
        second = static_cast<Kel32f>(exactPowerOfTwo(exponent - exponent / 2));
    }
};

}  // namespace kels
