// Vectors of the width that the build's target gives, over the standard library's data-parallel types, and the few
// operations that those lack.  Kernels are written once on Vec<T>; every use of an intrinsic stands here and in
// the headers beside it.
#pragma once

#include <immintrin.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <experimental/simd>

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

// ---- load and store ------------------------------------------------------------------------------------------------

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

// ---- widening ------------------------------------------------------------------------------------------------------

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

// ---- arithmetic ----------------------------------------------------------------------------------------------------

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

// The last n lanes of v, zero in those before them.
template <class T>
Vec<T> lastElements(Vec<T> v, std::size_t n) {
    const Vec<T> index([](auto i) { return static_cast<T>(static_cast<std::size_t>(i)); });
    stdx::where(index < static_cast<T>(lanes<T> - n), v) = T();
    return v;
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

// ---- permutation ---------------------------------------------------------------------------------------------------

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

// Four values of each of four rows turned over: dst[k * stride + j] = rows[j][k].
inline void transpose4(const float* const rows[4], float* dst, std::size_t stride) {
    __m128 a = _mm_loadu_ps(rows[0]);
    __m128 b = _mm_loadu_ps(rows[1]);
    __m128 c = _mm_loadu_ps(rows[2]);
    __m128 d = _mm_loadu_ps(rows[3]);
    _MM_TRANSPOSE4_PS(a, b, c, d);
    _mm_storeu_ps(dst, a);
    _mm_storeu_ps(dst + stride, b);
    _mm_storeu_ps(dst + 2 * stride, c);
    _mm_storeu_ps(dst + 3 * stride, d);
}

// ---- maps ----------------------------------------------------------------------------------------------------------

// dst[i] = op(src[i]...) over `len` elements of one type; op takes and gives vectors.  dst may be one of the sources.
// The end is one more whole vector, which overlaps the one before it and is computed before anything is stored: stores
// under a mask cost more.  Of arrays shorter than a vector, the lanes behind the end are computed on `fill`.
template <class T, class Op, class... S>
inline void map(T* dst, std::size_t len, Op op, T fill, const S*... src) {
    constexpr std::size_t w = lanes<T>;
    if (len < w) return storePart(dst, Vec<T>(op(loadPart(src, len, fill)...)), len);
    const Vec<T> last = op(load(src + len - w)...);
    std::size_t i = 0;
    // Four independent vectors a round hide the latency of divisions and roots and halve the loop's own share.
    for (; i + 4 * w < len; i += 4 * w) {
        const Vec<T> a = op(load(src + i)...);
        const Vec<T> b = op(load(src + i + w)...);
        const Vec<T> c = op(load(src + i + 2 * w)...);
        const Vec<T> d = op(load(src + i + 3 * w)...);
        store(dst + i, a);
        store(dst + i + w, b);
        store(dst + i + 2 * w, c);
        store(dst + i + 3 * w, d);
    }
    for (; i + w < len; i += w) store(dst + i, Vec<T>(op(load(src + i)...)));
    store(dst + len - w, last);
}

// The same with two destinations; op gives a Pair.
template <class V>
struct Pair {
    V first, second;
};
template <class V>
Pair(V, V) -> Pair<V>;

template <class T, class Op, class... S>
inline void mapPair(T* dst1, T* dst2, std::size_t len, Op op, T fill, const S*... src) {
    constexpr std::size_t w = lanes<T>;
    if (len < w) {
        const Pair<Vec<T>> only = op(loadPart(src, len, fill)...);
        storePart(dst1, only.first, len);
        storePart(dst2, only.second, len);
        return;
    }
    const Pair<Vec<T>> last = op(load(src + len - w)...);
    for (std::size_t i = 0; i + w < len; i += w) {
        const Pair<Vec<T>> v = op(load(src + i)...);
        store(dst1 + i, v.first);
        store(dst2 + i, v.second);
    }
    store(dst1 + len - w, last.first);
    store(dst2 + len - w, last.second);
}

}  // namespace kels
