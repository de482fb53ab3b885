// Floats of an explicit width, for kernels whose data fix it: Floats<1> (a plain float), Floats<4>, and Floats<8> where
// the target has AVX2.  The operations below exist for each of them, those on the order of lanes from four lanes on.
#pragma once

#include "core/simd/vec.h"

namespace kels {

template <int W>
struct FloatsOf {
    using Type = stdx::simd<float, stdx::simd_abi::deduce_t<float, W>>;
};
template <>
struct FloatsOf<1> {
    using Type = float;
};
template <int W>
using Floats = typename FloatsOf<W>::Type;

// The widest of them on this target.
#if defined(__AVX2__)
inline constexpr int kWidestFloats = 8;
#else
inline constexpr int kWidestFloats = 4;
#endif

inline __m128 native4(Floats<4> v) {
    return static_cast<__m128>(v);
}

// W consecutive values, at any alignment.
template <int W>
Floats<W> loadFloats(const float* p) {
    if constexpr (W == 1) {
        return *p;
    } else {
        return Floats<W>(p, stdx::element_aligned);
    }
}
inline void storeFloats(float* p, float v) {
    *p = v;
}
template <class Abi>
void storeFloats(float* p, const stdx::simd<float, Abi>& v) {
    v.copy_to(p, stdx::element_aligned);
}

// a * b + c, a * b - c and c - a * b, fused where the target can.
#if defined(__FMA__)
inline float mulAdd(float a, float b, float c) {
    return __builtin_fmaf(a, b, c);
}
inline float mulSub(float a, float b, float c) {
    return __builtin_fmaf(a, b, -c);
}
inline float negMulAdd(float a, float b, float c) {
    return __builtin_fmaf(-a, b, c);
}
inline Floats<4> mulAdd(Floats<4> a, Floats<4> b, Floats<4> c) {
    return Floats<4>(_mm_fmadd_ps(native4(a), native4(b), native4(c)));
}
inline Floats<4> mulSub(Floats<4> a, Floats<4> b, Floats<4> c) {
    return Floats<4>(_mm_fmsub_ps(native4(a), native4(b), native4(c)));
}
inline Floats<4> negMulAdd(Floats<4> a, Floats<4> b, Floats<4> c) {
    return Floats<4>(_mm_fnmadd_ps(native4(a), native4(b), native4(c)));
}
#else
inline float mulAdd(float a, float b, float c) {
    return a * b + c;
}
inline float mulSub(float a, float b, float c) {
    return a * b - c;
}
inline float negMulAdd(float a, float b, float c) {
    return c - a * b;
}
inline Floats<4> mulAdd(Floats<4> a, Floats<4> b, Floats<4> c) {
    return a * b + c;
}
inline Floats<4> mulSub(Floats<4> a, Floats<4> b, Floats<4> c) {
    return a * b - c;
}
inline Floats<4> negMulAdd(Floats<4> a, Floats<4> b, Floats<4> c) {
    return c - a * b;
}
#endif

// Pairs (even[i], odd[i]) that stand one after the other at p.
inline void loadPairs(const float* p, float& even, float& odd) {
    even = p[0];
    odd = p[1];
}
inline void storePairs(float* p, float even, float odd) {
    p[0] = even;
    p[1] = odd;
}
inline void loadPairs(const float* p, Floats<4>& even, Floats<4>& odd) {
    const __m128 a = _mm_loadu_ps(p);
    const __m128 b = _mm_loadu_ps(p + 4);
    even = Floats<4>(_mm_shuffle_ps(a, b, 0x88));
    odd = Floats<4>(_mm_shuffle_ps(a, b, 0xdd));
}
inline void storePairs(float* p, Floats<4> even, Floats<4> odd) {
    _mm_storeu_ps(p, _mm_unpacklo_ps(native4(even), native4(odd)));
    _mm_storeu_ps(p + 4, _mm_unpackhi_ps(native4(even), native4(odd)));
}

// The lanes in reverse order.
inline float reversed(float v) {
    return v;
}
inline Floats<4> reversed(Floats<4> v) {
    return Floats<4>(_mm_shuffle_ps(native4(v), native4(v), 0x1b));
}

// Lane i + 1 takes lane i; lane 0 keeps its value.
inline Floats<4> shiftedUp(Floats<4> v) {
    return Floats<4>(_mm_shuffle_ps(native4(v), native4(v), 0x90));
}
// Lane 0, then the others in reverse order.
inline Floats<4> reversedAfterFirst(Floats<4> v) {
    return Floats<4>(_mm_shuffle_ps(native4(v), native4(v), 0x6c));
}
// Lane 0 of `first`, the others of `rest`.
inline Floats<4> withFirst(Floats<4> first, Floats<4> rest) {
    return Floats<4>(_mm_move_ss(native4(rest), native4(first)));
}

// The lower halves of a and b.
inline Floats<4> lowerHalves(Floats<4> a, Floats<4> b) {
    return Floats<4>(_mm_movelh_ps(native4(a), native4(b)));
}

// columns[j][i] = row(i)[j] of a W x W block, with row(i) = p + i * step; from the fifth on p + upper + (i - 4) * step.
inline void loadTransposed(const float* p, std::size_t step, std::size_t, Floats<4> (&columns)[4]) {
    __m128 r0 = _mm_loadu_ps(p);
    __m128 r1 = _mm_loadu_ps(p + step);
    __m128 r2 = _mm_loadu_ps(p + 2 * step);
    __m128 r3 = _mm_loadu_ps(p + 3 * step);
    _MM_TRANSPOSE4_PS(r0, r1, r2, r3);
    columns[0] = Floats<4>(r0);
    columns[1] = Floats<4>(r1);
    columns[2] = Floats<4>(r2);
    columns[3] = Floats<4>(r3);
}

#if defined(__AVX2__)
inline __m256 native8(Floats<8> v) {
    return static_cast<__m256>(v);
}
inline Floats<8> mulAdd(Floats<8> a, Floats<8> b, Floats<8> c) {
    return Floats<8>(_mm256_fmadd_ps(native8(a), native8(b), native8(c)));
}
inline Floats<8> mulSub(Floats<8> a, Floats<8> b, Floats<8> c) {
    return Floats<8>(_mm256_fmsub_ps(native8(a), native8(b), native8(c)));
}
inline Floats<8> negMulAdd(Floats<8> a, Floats<8> b, Floats<8> c) {
    return Floats<8>(_mm256_fnmadd_ps(native8(a), native8(b), native8(c)));
}

// Four values at `low` and four at `high`: a load with insertion, which spares the shuffle that crosses the halves.
inline __m256 loadHalves(const float* low, const float* high) {
    return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(low)), _mm_loadu_ps(high), 1);
}
inline void loadPairs(const float* p, Floats<8>& even, Floats<8>& odd) {
    const __m256 a = loadHalves(p, p + 8);
    const __m256 b = loadHalves(p + 4, p + 12);
    even = Floats<8>(_mm256_shuffle_ps(a, b, 0x88));
    odd = Floats<8>(_mm256_shuffle_ps(a, b, 0xdd));
}
inline void storePairs(float* p, Floats<8> even, Floats<8> odd) {
    const __m256 low = _mm256_unpacklo_ps(native8(even), native8(odd));
    const __m256 high = _mm256_unpackhi_ps(native8(even), native8(odd));
    _mm256_storeu_ps(p, _mm256_permute2f128_ps(low, high, 0x20));
    _mm256_storeu_ps(p + 8, _mm256_permute2f128_ps(low, high, 0x31));
}
inline Floats<8> reversed(Floats<8> v) {
    return Floats<8>(_mm256_permutevar8x32_ps(native8(v), _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0)));
}
inline Floats<8> shiftedUp(Floats<8> v) {
    return Floats<8>(_mm256_permutevar8x32_ps(native8(v), _mm256_setr_epi32(0, 0, 1, 2, 3, 4, 5, 6)));
}
inline Floats<8> reversedAfterFirst(Floats<8> v) {
    return Floats<8>(_mm256_permutevar8x32_ps(native8(v), _mm256_setr_epi32(0, 7, 6, 5, 4, 3, 2, 1)));
}
inline Floats<8> withFirst(Floats<8> first, Floats<8> rest) {
    return Floats<8>(_mm256_blend_ps(native8(rest), native8(first), 1));
}
inline void loadTransposed(const float* p, std::size_t step, std::size_t upper, Floats<8> (&columns)[8]) {
    for (int half = 0; half < 2; ++half) {
        const float* const q = p + 4 * half;
        const float* const u = q + upper;
        const __m256 r0 = loadHalves(q, u);
        const __m256 r1 = loadHalves(q + step, u + step);
        const __m256 r2 = loadHalves(q + 2 * step, u + 2 * step);
        const __m256 r3 = loadHalves(q + 3 * step, u + 3 * step);
        const __m256 low01 = _mm256_unpacklo_ps(r0, r1);
        const __m256 low23 = _mm256_unpacklo_ps(r2, r3);
        const __m256 high01 = _mm256_unpackhi_ps(r0, r1);
        const __m256 high23 = _mm256_unpackhi_ps(r2, r3);
        columns[4 * half] = Floats<8>(_mm256_shuffle_ps(low01, low23, 0x44));
        columns[4 * half + 1] = Floats<8>(_mm256_shuffle_ps(low01, low23, 0xee));
        columns[4 * half + 2] = Floats<8>(_mm256_shuffle_ps(high01, high23, 0x44));
        columns[4 * half + 3] = Floats<8>(_mm256_shuffle_ps(high01, high23, 0xee));
    }
}
#endif

}  // namespace kels
