// Vectors of the width that the build's target gives, over the standard library's data-parallel types, and how they are
// loaded and stored: whole, in part, or past the caches.
#pragma once

#include <immintrin.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <experimental/simd>
#include <type_traits>

namespace kels {

namespace stdx = std::experimental;

template <class T>
using Vec = stdx::native_simd<T>;

template <class T>
inline constexpr std::size_t lanes = Vec<T>::size();

#if defined(__AVX512F__)
using NativeFloat = __m512;
using NativeDouble = __m512d;
using NativeInt = __m512i;
#elif defined(__AVX2__)
using NativeFloat = __m256;
using NativeDouble = __m256d;
using NativeInt = __m256i;
#else
using NativeFloat = __m128;
using NativeDouble = __m128d;
using NativeInt = __m128i;
#endif

inline NativeFloat native(Vec<float> v) {
    return static_cast<NativeFloat>(v);
}
inline NativeDouble native(Vec<double> v) {
    return static_cast<NativeDouble>(v);
}
inline NativeInt native(Vec<int32_t> v) {
    return static_cast<NativeInt>(v);
}

template <class T>
Vec<T> load(const T* p) {
    return Vec<T>(p, stdx::element_aligned);
}

template <class T>
void store(T* p, const Vec<T>& v) {
    v.copy_to(p, stdx::element_aligned);
}

#if defined(__AVX2__) && !defined(__AVX512F__)
// All ones in the first n of the lanes of 4 or 8 bytes.
inline __m256i maskOfFirst(std::size_t n, std::integral_constant<int, 4>) {
    return _mm256_cmpgt_epi32(_mm256_set1_epi32(static_cast<int>(n)), _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7));
}
inline __m256i maskOfFirst(std::size_t n, std::integral_constant<int, 8>) {
    return _mm256_cmpgt_epi64(_mm256_set1_epi64x(static_cast<int64_t>(n)), _mm256_setr_epi64x(0, 1, 2, 3));
}
#endif

// The first n < lanes<T> elements of p and zero in the other lanes; nothing after p[n - 1] is read.
template <class T>
Vec<T> loadPart(const T* p, std::size_t n) {
#if defined(__AVX512F__)
    if constexpr (std::is_same_v<T, float>) {
        return Vec<T>(_mm512_maskz_loadu_ps(static_cast<__mmask16>((1u << n) - 1), p));
    } else if constexpr (std::is_same_v<T, double>) {
        return Vec<T>(_mm512_maskz_loadu_pd(static_cast<__mmask8>((1u << n) - 1), p));
    }
#elif defined(__AVX2__)
    if constexpr (std::is_same_v<T, float>) {
        return Vec<T>(_mm256_maskload_ps(p, maskOfFirst(n, std::integral_constant<int, 4>())));
    } else if constexpr (std::is_same_v<T, double>) {
        return Vec<T>(_mm256_maskload_pd(p, maskOfFirst(n, std::integral_constant<int, 8>())));
    }
#else
    if constexpr (std::is_same_v<T, float>) {
        if (n < 2) return n == 0 ? Vec<T>(0) : Vec<T>(_mm_load_ss(p));
        double pair;  // copied, for it need not be aligned
        __builtin_memcpy(&pair, p, sizeof pair);
        const __m128 two = _mm_castpd_ps(_mm_set_sd(pair));
        return Vec<T>(n == 2 ? two : _mm_movelh_ps(two, _mm_load_ss(p + 2)));
    }
#endif
    T buffer[lanes<T>];
    for (std::size_t i = 0; i < lanes<T>; ++i) buffer[i] = i < n ? p[i] : T();
    return load(buffer);
}

// The same with `fill` in the other lanes.
template <class T>
Vec<T> loadPart(const T* p, std::size_t n, T fill) {
#if defined(__AVX512F__)
    if constexpr (std::is_same_v<T, float>) {
        const auto mask = static_cast<__mmask16>((1u << n) - 1);
        return Vec<T>(_mm512_mask_loadu_ps(_mm512_set1_ps(fill), mask, p));
    } else if constexpr (std::is_same_v<T, double>) {
        const auto mask = static_cast<__mmask8>((1u << n) - 1);
        return Vec<T>(_mm512_mask_loadu_pd(_mm512_set1_pd(fill), mask, p));
    }
#elif defined(__AVX2__)
    if constexpr (std::is_same_v<T, float>) {
        const __m256i mask = maskOfFirst(n, std::integral_constant<int, 4>());
        const __m256 v = _mm256_maskload_ps(p, mask);
        return Vec<T>(_mm256_blendv_ps(_mm256_set1_ps(fill), v, _mm256_castsi256_ps(mask)));
    } else if constexpr (std::is_same_v<T, double>) {
        const __m256i mask = maskOfFirst(n, std::integral_constant<int, 8>());
        const __m256d v = _mm256_maskload_pd(p, mask);
        return Vec<T>(_mm256_blendv_pd(_mm256_set1_pd(fill), v, _mm256_castsi256_pd(mask)));
    }
#endif
    T buffer[lanes<T>];
    for (std::size_t i = 0; i < lanes<T>; ++i) buffer[i] = i < n ? p[i] : fill;
    return load(buffer);
}

// Stores the first n < lanes<T> lanes.
template <class T>
void storePart(T* p, const Vec<T>& v, std::size_t n) {
#if defined(__AVX512F__)
    if constexpr (std::is_same_v<T, int32_t>) {
        _mm512_mask_storeu_epi32(p, static_cast<__mmask16>((1u << n) - 1), native(v));
        return;
    }
    if constexpr (std::is_same_v<T, float>) {
        _mm512_mask_storeu_ps(p, static_cast<__mmask16>((1u << n) - 1), native(v));
        return;
    } else if constexpr (std::is_same_v<T, double>) {
        _mm512_mask_storeu_pd(p, static_cast<__mmask8>((1u << n) - 1), native(v));
        return;
    }
#elif defined(__AVX2__)
    if constexpr (std::is_same_v<T, float>) {
        _mm256_maskstore_ps(p, maskOfFirst(n, std::integral_constant<int, 4>()), native(v));
        return;
    } else if constexpr (std::is_same_v<T, double>) {
        _mm256_maskstore_pd(p, maskOfFirst(n, std::integral_constant<int, 8>()), native(v));
        return;
    } else if constexpr (std::is_same_v<T, int32_t>) {
        _mm256_maskstore_epi32(p, maskOfFirst(n, std::integral_constant<int, 4>()), native(v));
        return;
    }
#endif
    T buffer[lanes<T>];
    store(buffer, v);
    for (std::size_t i = 0; i < n; ++i) p[i] = buffer[i];
}

// Stores past the caches, for fills larger than they are; p is aligned to the vector.
template <class T>
void storeStreaming(T* p, const Vec<T>& v) {
    const auto bits = std::bit_cast<NativeInt>(v);
#if defined(__AVX512F__)
    _mm512_stream_si512(reinterpret_cast<NativeInt*>(p), bits);
#elif defined(__AVX2__)
    _mm256_stream_si256(reinterpret_cast<NativeInt*>(p), bits);
#else
    _mm_stream_si128(reinterpret_cast<NativeInt*>(p), bits);
#endif
}
inline void fenceStreaming() {
    _mm_sfence();
}

}  // namespace kels
