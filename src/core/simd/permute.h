// Lanes in another order: complex numbers taken apart, pairs repeated and summed, lanes cleared.
#pragma once

#include "core/simd/load_store.h"

namespace kels {

// The elements of even and of odd index of a followed by b: the real and the imaginary parts of complex numbers.
struct Halves {
    Vec<float> even, odd;
};
inline Halves deinterleave(const Vec<float>& a, const Vec<float>& b) {
#if defined(__AVX512F__)
    const __m512i even = _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
    const __m512i odd = _mm512_setr_epi32(1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
    return {Vec<float>(_mm512_permutex2var_ps(native(a), even, native(b))),
            Vec<float>(_mm512_permutex2var_ps(native(a), odd, native(b)))};
#elif defined(__AVX2__)
    const auto inOrder = [](__m256 v) {
        return Vec<float>(_mm256_castpd_ps(_mm256_permute4x64_pd(_mm256_castps_pd(v), 0xd8)));
    };
    return {inOrder(_mm256_shuffle_ps(native(a), native(b), 0x88)),
            inOrder(_mm256_shuffle_ps(native(a), native(b), 0xdd))};
#else
    return {Vec<float>(_mm_shuffle_ps(native(a), native(b), 0x88)),
            Vec<float>(_mm_shuffle_ps(native(a), native(b), 0xdd))};
#endif
}

// Its inverse: the elements of even and odd in turn.
struct Interleaved {
    Vec<float> first, second;
};
inline Interleaved interleave(const Vec<float>& even, const Vec<float>& odd) {
#if defined(__AVX512F__)
    const __m512i first = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
    const __m512i second = _mm512_setr_epi32(8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
    return {Vec<float>(_mm512_permutex2var_ps(native(even), first, native(odd))),
            Vec<float>(_mm512_permutex2var_ps(native(even), second, native(odd)))};
#elif defined(__AVX2__)
    const __m256 low = _mm256_unpacklo_ps(native(even), native(odd));
    const __m256 high = _mm256_unpackhi_ps(native(even), native(odd));
    return {Vec<float>(_mm256_permute2f128_ps(low, high, 0x20)), Vec<float>(_mm256_permute2f128_ps(low, high, 0x31))};
#else
    return {Vec<float>(_mm_unpacklo_ps(native(even), native(odd))),
            Vec<float>(_mm_unpackhi_ps(native(even), native(odd)))};
#endif
}

// p[0] and p[1] in turn.
inline Vec<float> repeatPair(const float* p) {
    double pair;
    std::memcpy(&pair, p, sizeof pair);
    return std::bit_cast<Vec<float>>(Vec<double>(pair));
}

// The sums of neighbouring lanes, those of a before those of b.
inline Vec<float> pairSums(const Vec<float>& a, const Vec<float>& b) {
#if defined(__AVX2__) && !defined(__AVX512F__)
    // One permutation, where those of even and of odd index would take two.
    const __m256 even = _mm256_shuffle_ps(native(a), native(b), 0x88);
    const __m256 sums = _mm256_add_ps(even, _mm256_shuffle_ps(native(a), native(b), 0xdd));
    return Vec<float>(_mm256_castpd_ps(_mm256_permute4x64_pd(_mm256_castps_pd(sums), 0xd8)));
#else
    const auto [even, odd] = deinterleave(a, b);
    return even + odd;
#endif
}

// The first, or the last, n lanes of v, zero in the others.
template <class T>
Vec<T> laneIndices() {
    return Vec<T>([](auto i) { return static_cast<T>(static_cast<std::size_t>(i)); });
}
template <class T>
Vec<T> firstElements(Vec<T> v, std::size_t n) {
    stdx::where(laneIndices<T>() >= static_cast<T>(n), v) = T();
    return v;
}
template <class T>
Vec<T> lastElements(Vec<T> v, std::size_t n) {
    stdx::where(laneIndices<T>() < static_cast<T>(lanes<T> - n), v) = T();
    return v;
}

}  // namespace kels
