// Vectors of floats to integers: conversions, and stores that narrow.  Lanes outside the integer's range and NaN give
// -2147483648, as the instructions do.
#pragma once

#include <cstring>

#include "core/simd/vec.h"

namespace kels {

struct TowardZero {};
struct ToNearest {};  // in the rounding mode that is set: used inside a NearestScope

inline Vec<int32_t> toInt(const Vec<float>& v, TowardZero) {
#if defined(__AVX512F__)
    return Vec<int32_t>(_mm512_cvttps_epi32(native(v)));
#elif defined(__AVX2__)
    return Vec<int32_t>(_mm256_cvttps_epi32(native(v)));
#else
    return Vec<int32_t>(_mm_cvttps_epi32(native(v)));
#endif
}
inline Vec<int32_t> toInt(const Vec<float>& v, ToNearest) {
#if defined(__AVX512F__)
    return Vec<int32_t>(_mm512_cvtps_epi32(native(v)));
#elif defined(__AVX2__)
    return Vec<int32_t>(_mm256_cvtps_epi32(native(v)));
#else
    return Vec<int32_t>(_mm_cvtps_epi32(native(v)));
#endif
}

// The same, but lanes of 2^31 and more give 2147483647.
template <class Rounding>
Vec<int32_t> toIntSaturated(const Vec<float>& v, Rounding rounding) {
    // All ones turn -2147483648, which such lanes come out as, into 2147483647.
    const NativeFloat limit = native(Vec<float>(2147483648.0f));
    const NativeInt converted = native(toInt(v, rounding));
#if defined(__AVX512F__)
    const __mmask16 above = _mm512_cmp_ps_mask(native(v), limit, _CMP_GE_OQ);
    return Vec<int32_t>(_mm512_mask_xor_epi32(converted, above, converted, _mm512_set1_epi32(-1)));
#elif defined(__AVX2__)
    const __m256 above = _mm256_cmp_ps(native(v), limit, _CMP_GE_OQ);
    return Vec<int32_t>(_mm256_xor_si256(converted, _mm256_castps_si256(above)));
#else
    const __m128 above = _mm_cmpge_ps(native(v), limit);
    return Vec<int32_t>(_mm_xor_si128(converted, _mm_castps_si128(above)));
#endif
}

// lanes<double> doubles to as many integers at p.
inline void storeInt(int32_t* p, const Vec<double>& v, TowardZero) {
#if defined(__AVX512F__)
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm512_cvttpd_epi32(native(v)));
#elif defined(__AVX2__)
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_cvttpd_epi32(native(v)));
#else
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_cvttpd_epi32(native(v)));
#endif
}
inline void storeInt(int32_t* p, const Vec<double>& v, ToNearest) {
#if defined(__AVX512F__)
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm512_cvtpd_epi32(native(v)));
#elif defined(__AVX2__)
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_cvtpd_epi32(native(v)));
#else
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_cvtpd_epi32(native(v)));
#endif
}

// lanes<int32_t> integers, saturated, to as many 16-bit integers at p.
inline void storeInt16(int16_t* p, const Vec<int32_t>& v) {
#if defined(__AVX512F__)
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm512_cvtsepi32_epi16(native(v)));
#elif defined(__AVX2__)
    const __m256i packed = _mm256_packs_epi32(native(v), native(v));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(_mm256_permute4x64_epi64(packed, 0x08)));
#else
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packs_epi32(native(v), native(v)));
#endif
}

// The same for two vectors; packed together they take half the permutations and stores.
inline void storeInt16(int16_t* p, const Vec<int32_t>& a, const Vec<int32_t>& b) {
#if defined(__AVX2__) && !defined(__AVX512F__)
    const __m256i packed = _mm256_packs_epi32(native(a), native(b));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm256_permute4x64_epi64(packed, 0xd8));
#else
    storeInt16(p, a);
    storeInt16(p + lanes<int32_t>, b);
#endif
}

// The same for the first n < lanes<double> or lanes<int32_t> lanes only.
template <class Rounding>
void storeIntPart(int32_t* p, const Vec<double>& v, Rounding rounding, std::size_t n) {
    int32_t buffer[lanes<double>];
    storeInt(buffer, v, rounding);
    for (std::size_t i = 0; i < n; ++i) p[i] = buffer[i];
}
inline void storeInt16Part(int16_t* p, const Vec<int32_t>& v, std::size_t n) {
#if defined(__AVX512F__)
    _mm512_mask_cvtsepi32_storeu_epi16(p, static_cast<__mmask16>((1u << n) - 1), native(v));
#else
    int16_t buffer[lanes<int32_t>];
    storeInt16(buffer, v);
    for (std::size_t i = 0; i < n; ++i) p[i] = buffer[i];
#endif
}

// lanes<double> whole numbers within the 32-bit range, or anything below it, saturated to as many 16-bit integers at p.
inline void storeInt16(int16_t* p, const Vec<double>& v) {
#if defined(__AVX512F__)
    const __m256i whole = _mm512_cvttpd_epi32(native(v));
    const __m256i packed = _mm256_permute4x64_epi64(_mm256_packs_epi32(whole, whole), 0x08);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(packed));
#elif defined(__AVX2__)
    const __m128i whole = _mm256_cvttpd_epi32(native(v));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packs_epi32(whole, whole));
#else
    const __m128i whole = _mm_cvttpd_epi32(native(v));
    const int pair = _mm_cvtsi128_si32(_mm_packs_epi32(whole, whole));
    std::memcpy(p, &pair, sizeof(pair));
#endif
}

// The largest whole number not above each lane, for lanes within the 32-bit range; below it, something below it.
inline Vec<double> floorOf(const Vec<double>& v) {
#if defined(__AVX512F__)
    return Vec<double>(_mm512_roundscale_pd(native(v), _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC));
#elif defined(__AVX2__)
    return Vec<double>(_mm256_round_pd(native(v), _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC));
#else
    const __m128d whole = _mm_cvtepi32_pd(_mm_cvttpd_epi32(native(v)));
    const __m128d above = _mm_and_pd(_mm_cmpgt_pd(whole, native(v)), _mm_set1_pd(1.0));
    return Vec<double>(_mm_sub_pd(whole, above));
#endif
}

// One value, rounded in the mode that is set.
inline int32_t toIntScalar(float v) {
    return _mm_cvtss_si32(_mm_set_ss(v));
}
inline int32_t toIntScalar(double v) {
    return _mm_cvtsd_si32(_mm_set_sd(v));
}

}  // namespace kels
