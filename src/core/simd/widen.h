// Vectors of wider elements from narrower ones, and back.
#pragma once

#include "core/simd/load_store.h"

namespace kels {

// lanes<double> consecutive values as doubles.
inline Vec<double> loadWide(const double* p) {
    return load(p);
}
inline Vec<double> loadWide(const float* p) {
#if defined(__AVX512F__)
    return Vec<double>(_mm512_cvtps_pd(_mm256_loadu_ps(p)));
#elif defined(__AVX2__)
    return Vec<double>(_mm256_cvtps_pd(_mm_loadu_ps(p)));
#else
    return Vec<double>(_mm_cvtps_pd(_mm_setr_ps(p[0], p[1], 0.0f, 0.0f)));
#endif
}

// lanes<int32_t> consecutive 16-bit integers.
inline Vec<int32_t> loadInt(const int16_t* p) {
#if defined(__AVX512F__)
    return Vec<int32_t>(_mm512_cvtepi16_epi32(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p))));
#elif defined(__AVX2__)
    return Vec<int32_t>(_mm256_cvtepi16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))));
#else
    const __m128i v = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
    return Vec<int32_t>(_mm_srai_epi32(_mm_unpacklo_epi16(v, v), 16));
#endif
}

inline Vec<float> toFloat(const Vec<int32_t>& v) {
    return stdx::static_simd_cast<Vec<float>>(v);
}

// lanes<double> consecutive 16-bit integers as doubles.
inline Vec<double> loadWide(const int16_t* p) {
#if defined(__AVX512F__)
    return Vec<double>(_mm512_cvtepi32_pd(_mm256_cvtepi16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)))));
#elif defined(__AVX2__)
    return Vec<double>(_mm256_cvtepi32_pd(_mm_cvtepi16_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)))));
#else
    int pair;
    std::memcpy(&pair, p, sizeof(pair));
    const __m128i both = _mm_cvtsi32_si128(pair);
    return Vec<double>(_mm_cvtepi32_pd(_mm_srai_epi32(_mm_unpacklo_epi16(both, both), 16)));
#endif
}

// lanes<double> consecutive 32-bit integers as doubles.
inline Vec<double> loadWide(const int32_t* p) {
#if defined(__AVX512F__)
    return Vec<double>(_mm512_cvtepi32_pd(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p))));
#elif defined(__AVX2__)
    return Vec<double>(_mm256_cvtepi32_pd(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))));
#else
    return Vec<double>(_mm_cvtepi32_pd(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))));
#endif
}

// A vector of floats as two of doubles, and back with rounding.
struct WideHalves {
    Vec<double> low, high;
};
inline WideHalves widen(const Vec<float>& v) {
#if defined(__AVX512F__)
    const __m256d high = _mm512_extractf64x4_pd(_mm512_castps_pd(native(v)), 1);
    return {Vec<double>(_mm512_cvtps_pd(_mm512_castps512_ps256(native(v)))),
            Vec<double>(_mm512_cvtps_pd(_mm256_castpd_ps(high)))};
#elif defined(__AVX2__)
    return {Vec<double>(_mm256_cvtps_pd(_mm256_castps256_ps128(native(v)))),
            Vec<double>(_mm256_cvtps_pd(_mm256_extractf128_ps(native(v), 1)))};
#else
    return {Vec<double>(_mm_cvtps_pd(native(v))), Vec<double>(_mm_cvtps_pd(_mm_movehl_ps(native(v), native(v))))};
#endif
}
inline Vec<float> narrow(const Vec<double>& low, const Vec<double>& high) {
#if defined(__AVX512F__)
    const __m512d lower = _mm512_castps_pd(_mm512_castps256_ps512(_mm512_cvtpd_ps(native(low))));
    const __m256d upper = _mm256_castps_pd(_mm512_cvtpd_ps(native(high)));
    return Vec<float>(_mm512_castpd_ps(_mm512_insertf64x4(lower, upper, 1)));
#elif defined(__AVX2__)
    return Vec<float>(_mm256_set_m128(_mm256_cvtpd_ps(native(high)), _mm256_cvtpd_ps(native(low))));
#else
    return Vec<float>(_mm_movelh_ps(_mm_cvtpd_ps(native(low)), _mm_cvtpd_ps(native(high))));
#endif
}

}  // namespace kels
