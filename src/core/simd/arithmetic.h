// Arithmetic of vectors that their operators lack: multiply-add, sums that keep what rounding loses, the greater and
// the lesser of two, comparisons as integers, and the few 16-bit instructions in use.
#pragma once

#include "core/simd/load_store.h"

namespace kels {

// Whether mulAdd rounds once.
#if defined(__FMA__)
inline constexpr bool kFusedMulAdd = true;
#else
inline constexpr bool kFusedMulAdd = false;
#endif

// a * b + c, fused where the target can.  Only for sums whose rounding is free.
template <class T>
Vec<T> mulAdd(const Vec<T>& a, const Vec<T>& b, const Vec<T>& c) {
#if defined(__AVX512F__)
    if constexpr (std::is_same_v<T, float>) return Vec<T>(_mm512_fmadd_ps(native(a), native(b), native(c)));
    if constexpr (std::is_same_v<T, double>) return Vec<T>(_mm512_fmadd_pd(native(a), native(b), native(c)));
#elif defined(__FMA__)
    if constexpr (std::is_same_v<T, float>) return Vec<T>(_mm256_fmadd_ps(native(a), native(b), native(c)));
    if constexpr (std::is_same_v<T, double>) return Vec<T>(_mm256_fmadd_pd(native(a), native(b), native(c)));
#endif
    return a * b + c;
}

inline double mulAdd(double a, double b, double c) {
#if defined(__FMA__)
    return __builtin_fma(a, b, c);
#else
    return a * b + c;
#endif
}

// A sum and what it lost by rounding: together the exact sum (Knuth's two-sum).
template <class V>
struct TwoSum {
    V sum, lost;

    TwoSum(const V& x, const V& y) : sum(x + y) {
        const V added = sum - x;
        lost = (x - (sum - added)) + (y - added);
    }
};

// v, kept in a register: the compiler would rather load a value again for each of its uses, which costs where loads are
// the limit.
template <class T>
Vec<T> inRegister(const Vec<T>& v) {
    auto r = native(v);
#if defined(__AVX512F__)
    asm("" : "+v"(r));
#else
    asm("" : "+x"(r));
#endif
    return Vec<T>(r);
}

// Lane by lane x > y ? x : y; where a lane is not a number, y.
inline Vec<float> greaterOf(const Vec<float>& x, const Vec<float>& y) {
#if defined(__AVX512F__)
    return Vec<float>(_mm512_max_ps(native(x), native(y)));
#elif defined(__AVX2__)
    return Vec<float>(_mm256_max_ps(native(x), native(y)));
#else
    return Vec<float>(_mm_max_ps(native(x), native(y)));
#endif
}
inline Vec<double> greaterOf(const Vec<double>& x, const Vec<double>& y) {
#if defined(__AVX512F__)
    return Vec<double>(_mm512_max_pd(native(x), native(y)));
#elif defined(__AVX2__)
    return Vec<double>(_mm256_max_pd(native(x), native(y)));
#else
    return Vec<double>(_mm_max_pd(native(x), native(y)));
#endif
}

// Lane by lane x < y ? x : y; where a lane is not a number, y.
inline Vec<float> lesserOf(const Vec<float>& x, const Vec<float>& y) {
#if defined(__AVX512F__)
    return Vec<float>(_mm512_min_ps(native(x), native(y)));
#elif defined(__AVX2__)
    return Vec<float>(_mm256_min_ps(native(x), native(y)));
#else
    return Vec<float>(_mm_min_ps(native(x), native(y)));
#endif
}
inline Vec<double> lesserOf(const Vec<double>& x, const Vec<double>& y) {
#if defined(__AVX512F__)
    return Vec<double>(_mm512_min_pd(native(x), native(y)));
#elif defined(__AVX2__)
    return Vec<double>(_mm256_min_pd(native(x), native(y)));
#else
    return Vec<double>(_mm_min_pd(native(x), native(y)));
#endif
}

// Lane by lane x - y, saturated.
inline Vec<int16_t> subSaturated(const Vec<int16_t>& x, const Vec<int16_t>& y) {
    const auto a = std::bit_cast<NativeInt>(x), b = std::bit_cast<NativeInt>(y);
#if defined(__AVX512BW__)
    return std::bit_cast<Vec<int16_t>>(_mm512_subs_epi16(a, b));
#elif defined(__AVX2__)
    return std::bit_cast<Vec<int16_t>>(_mm256_subs_epi16(a, b));
#else
    return std::bit_cast<Vec<int16_t>>(_mm_subs_epi16(a, b));
#endif
}

// The upper halves of the 32-bit products of the lanes.
inline Vec<int16_t> mulHigh(const Vec<int16_t>& x, const Vec<int16_t>& y) {
    const auto a = std::bit_cast<NativeInt>(x), b = std::bit_cast<NativeInt>(y);
#if defined(__AVX512BW__)
    return std::bit_cast<Vec<int16_t>>(_mm512_mulhi_epi16(a, b));
#elif defined(__AVX2__)
    return std::bit_cast<Vec<int16_t>>(_mm256_mulhi_epi16(a, b));
#else
    return std::bit_cast<Vec<int16_t>>(_mm_mulhi_epi16(a, b));
#endif
}

// |v| lane by lane.
template <class T>
Vec<T> magnitude(const Vec<T>& v) {
    return stdx::abs(v);
}

// Comparisons as integers of the lanes' size: -1 where they hold, 0 elsewhere.
inline Vec<int32_t> whereLess(const Vec<float>& x, const Vec<float>& y) {
#if defined(__AVX512DQ__)
    return Vec<int32_t>(_mm512_movm_epi32(_mm512_cmp_ps_mask(native(x), native(y), _CMP_LT_OQ)));
#elif defined(__AVX2__)
    return Vec<int32_t>(_mm256_castps_si256(_mm256_cmp_ps(native(x), native(y), _CMP_LT_OQ)));
#else
    return Vec<int32_t>(_mm_castps_si128(_mm_cmplt_ps(native(x), native(y))));
#endif
}
inline Vec<int32_t> whereLessOrEqual(const Vec<float>& x, const Vec<float>& y) {
#if defined(__AVX512DQ__)
    return Vec<int32_t>(_mm512_movm_epi32(_mm512_cmp_ps_mask(native(x), native(y), _CMP_LE_OQ)));
#elif defined(__AVX2__)
    return Vec<int32_t>(_mm256_castps_si256(_mm256_cmp_ps(native(x), native(y), _CMP_LE_OQ)));
#else
    return Vec<int32_t>(_mm_castps_si128(_mm_cmple_ps(native(x), native(y))));
#endif
}
inline Vec<int16_t> whereLess(const Vec<int16_t>& x, const Vec<int16_t>& y) {
    const auto a = std::bit_cast<NativeInt>(x), b = std::bit_cast<NativeInt>(y);
#if defined(__AVX512BW__)
    return std::bit_cast<Vec<int16_t>>(_mm512_movm_epi16(_mm512_cmplt_epi16_mask(a, b)));
#elif defined(__AVX2__)
    return std::bit_cast<Vec<int16_t>>(_mm256_cmpgt_epi16(b, a));
#else
    return std::bit_cast<Vec<int16_t>>(_mm_cmpgt_epi16(b, a));
#endif
}

// The sign bits of the lanes: -1 where it is set, 0 elsewhere.
inline Vec<int32_t> signBits(const Vec<float>& v) {
    return std::bit_cast<Vec<int32_t>>(v) >> 31;
}

}  // namespace kels
