// Vectors of the width that the build's target gives, over the standard library's data-parallel types, and the few
// operations that those lack.  Kernels are written once on Vec<T>; every use of an intrinsic stands here and in
// simd_floats.h.
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
inline __m256i firstLanes(std::size_t n, std::integral_constant<int, 4>) {
    return _mm256_cmpgt_epi32(_mm256_set1_epi32(static_cast<int>(n)), _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7));
}
inline __m256i firstLanes(std::size_t n, std::integral_constant<int, 8>) {
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
        return Vec<T>(_mm256_maskload_ps(p, firstLanes(n, std::integral_constant<int, 4>())));
    } else if constexpr (std::is_same_v<T, double>) {
        return Vec<T>(_mm256_maskload_pd(p, firstLanes(n, std::integral_constant<int, 8>())));
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
        const __m256i mask = firstLanes(n, std::integral_constant<int, 4>());
        const __m256 v = _mm256_maskload_ps(p, mask);
        return Vec<T>(_mm256_blendv_ps(_mm256_set1_ps(fill), v, _mm256_castsi256_ps(mask)));
    } else if constexpr (std::is_same_v<T, double>) {
        const __m256i mask = firstLanes(n, std::integral_constant<int, 8>());
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
        _mm256_maskstore_ps(p, firstLanes(n, std::integral_constant<int, 4>()), native(v));
        return;
    } else if constexpr (std::is_same_v<T, double>) {
        _mm256_maskstore_pd(p, firstLanes(n, std::integral_constant<int, 8>()), native(v));
        return;
    } else if constexpr (std::is_same_v<T, int32_t>) {
        _mm256_maskstore_epi32(p, firstLanes(n, std::integral_constant<int, 4>()), native(v));
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

// The two ways in which a row is loaded: whole vectors...
struct AllLanes {
    Vec<float> load(const float* p) const { return kels::load(p); }
    Vec<int32_t> load(const int16_t* p) const { return loadInt(p); }
};

// ... and its end: the first n < lanes<float> elements and zeros.  What n demands is made ready once for many loads.
// `before` elements in front of p may be read too.
class FirstLanes {
  public:
#if defined(__AVX512F__)
    explicit FirstLanes(std::size_t n, std::size_t = 0) : mask_(static_cast<__mmask16>((1u << n) - 1)) {}

    Vec<float> load(const float* p) const {
        return Vec<float>(_mm512_maskz_loadu_ps(mask_, p));
    }
    Vec<int32_t> load(const int16_t* p) const {
        return Vec<int32_t>(_mm512_cvtepi16_epi32(_mm256_maskz_loadu_epi16(mask_, p)));
    }

  private:
    __mmask16 mask_;
#elif defined(__AVX2__)
    explicit FirstLanes(std::size_t n, std::size_t before = 0)
        : n_(n), wholeLoad_(n + before >= 8), mask_(firstLanes(n, std::integral_constant<int, 4>())) {
        // Byte i comes from byte i + 16 - 2n; from 16 on the index turns negative, which makes zeros.
        const __m128i index = _mm_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
        down_ = _mm_add_epi8(index, _mm_set1_epi8(static_cast<char>(16 - 2 * n)));
        down_ = _mm_or_si128(down_, _mm_cmpgt_epi8(down_, _mm_set1_epi8(15)));
    }

    Vec<float> load(const float* p) const { return Vec<float>(_mm256_maskload_ps(p, mask_)); }
    Vec<int32_t> load(const int16_t* p) const {
        if (!wholeLoad_) return Vec<int32_t>(_mm256_cvtepi16_epi32(few(p)));
        const __m128i last = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + n_) - 1);
        return Vec<int32_t>(_mm256_cvtepi16_epi32(_mm_shuffle_epi8(last, down_)));
    }

  private:
    __m128i few(const int16_t* p) const {
        if (n_ <= 4) return upTo4(p, n_);
        // The last four, shifted down over what they share with the first four.
        const __m128i low = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
        const __m128i high = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + n_ - 4));
        return _mm_unpacklo_epi64(low, _mm_srl_epi64(high, _mm_cvtsi32_si128(static_cast<int>(128 - 16 * n_))));
    }

    std::size_t n_;
    bool wholeLoad_;
    __m256i mask_;
    __m128i down_;
#else
    explicit FirstLanes(std::size_t n, std::size_t = 0) : n_(n) {}

    Vec<float> load(const float* p) const {
        if (n_ == 1) return Vec<float>(_mm_load_ss(p));
        const __m128 two = _mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)));
        return Vec<float>(n_ == 2 ? two : _mm_movelh_ps(two, _mm_load_ss(p + 2)));
    }
    Vec<int32_t> load(const int16_t* p) const {
        const __m128i v = upTo4(p, n_);
        return Vec<int32_t>(_mm_srai_epi32(_mm_unpacklo_epi16(v, v), 16));
    }

  private:
    std::size_t n_;
#endif
#if !defined(__AVX512F__)
    static __m128i upTo4(const int16_t* p, std::size_t n) {
        if (n == 4) return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
        if (n == 1) return _mm_cvtsi32_si128(static_cast<uint16_t>(p[0]));
        int32_t two;
        __builtin_memcpy(&two, p, sizeof two);
        return n == 2 ? _mm_cvtsi32_si128(two) : _mm_insert_epi16(_mm_cvtsi32_si128(two), p[2], 2);
    }
#endif
};

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

// The last n lanes of v, zero in those before them.
template <class T>
Vec<T> lastLanes(Vec<T> v, std::size_t n) {
    const Vec<T> index([](auto i) { return static_cast<T>(static_cast<std::size_t>(i)); });
    stdx::where(index < static_cast<T>(lanes<T> - n), v) = T();
    return v;
}

// The sum of the lanes of each of four vectors.
inline void storeSums(float* dst, const Vec<float>& a, const Vec<float>& b, const Vec<float>& c, const Vec<float>& d) {
#if defined(__AVX2__)
#if defined(__AVX512F__)
    const auto half = [](const Vec<float>& v) {
        const __m256d high = _mm512_extractf64x4_pd(_mm512_castps_pd(native(v)), 1);
        return _mm256_add_ps(_mm512_castps512_ps256(native(v)), _mm256_castpd_ps(high));
    };
#else
    const auto half = [](const Vec<float>& v) { return native(v); };
#endif
    const __m256 pairs = _mm256_hadd_ps(_mm256_hadd_ps(half(a), half(b)), _mm256_hadd_ps(half(c), half(d)));
    _mm_storeu_ps(dst, _mm_add_ps(_mm256_castps256_ps128(pairs), _mm256_extractf128_ps(pairs, 1)));
#else
    __m128 r[] = {native(a), native(b), native(c), native(d)};
    _MM_TRANSPOSE4_PS(r[0], r[1], r[2], r[3]);
    _mm_storeu_ps(dst, _mm_add_ps(_mm_add_ps(r[0], r[1]), _mm_add_ps(r[2], r[3])));
#endif
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

// The sums over the lanes of each of four vectors, at dst[0..3]: the vectors are folded together, so that four sums cost
// little more than one.
inline void sumsOf4(const Vec<float>& a, const Vec<float>& b, const Vec<float>& c, const Vec<float>& d, float* dst) {
#if defined(__AVX512F__)
    const __m512 ab = _mm512_add_ps(_mm512_unpacklo_ps(native(a), native(b)), _mm512_unpackhi_ps(native(a), native(b)));
    const __m512 cd = _mm512_add_ps(_mm512_unpacklo_ps(native(c), native(d)), _mm512_unpackhi_ps(native(c), native(d)));
    const __m512 quarters = _mm512_add_ps(_mm512_shuffle_ps(ab, cd, 0x44), _mm512_shuffle_ps(ab, cd, 0xee));
    const __m256 halves = _mm256_add_ps(_mm512_castps512_ps256(quarters), _mm512_extractf32x8_ps(quarters, 1));
    _mm_storeu_ps(dst, _mm_add_ps(_mm256_castps256_ps128(halves), _mm256_extractf128_ps(halves, 1)));
#elif defined(__AVX2__)
    const __m256 ab = _mm256_add_ps(_mm256_unpacklo_ps(native(a), native(b)), _mm256_unpackhi_ps(native(a), native(b)));
    const __m256 cd = _mm256_add_ps(_mm256_unpacklo_ps(native(c), native(d)), _mm256_unpackhi_ps(native(c), native(d)));
    const __m256 halves = _mm256_add_ps(_mm256_shuffle_ps(ab, cd, 0x44), _mm256_shuffle_ps(ab, cd, 0xee));
    _mm_storeu_ps(dst, _mm_add_ps(_mm256_castps256_ps128(halves), _mm256_extractf128_ps(halves, 1)));
#else
    const __m128 ab = _mm_add_ps(_mm_unpacklo_ps(native(a), native(b)), _mm_unpackhi_ps(native(a), native(b)));
    const __m128 cd = _mm_add_ps(_mm_unpacklo_ps(native(c), native(d)), _mm_unpackhi_ps(native(c), native(d)));
    _mm_storeu_ps(dst, _mm_add_ps(_mm_movelh_ps(ab, cd), _mm_movehl_ps(cd, ab)));
#endif
}

// Exact sums of products of 32-bit integers, lanes<int32_t> products at a time.
#if defined(__AVX2__)
// In lanes of 64 bits.
class ExactSums {
  public:
    static constexpr std::size_t kMost = 1 << 20;  // additions that are surely exact

    void addProducts(const Vec<int32_t>& x, const Vec<int32_t>& y) {
        add(even(native(x), native(y)), even(odd(native(x)), odd(native(y))));
    }
    // d * d * v, where |d * v| < 2^31.
    void addWeightedSquares(const Vec<int32_t>& d, const Vec<int32_t>& v) { addProducts(d * v, d); }

    // As sumsOf4 for vectors.
    static void totals(const ExactSums& a, const ExactSums& b, const ExactSums& c, const ExactSums& d, int64_t* dst) {
        const __m256i v = a.half(), w = b.half(), x = c.half(), y = d.half();
        const __m256i ab = _mm256_add_epi64(_mm256_unpacklo_epi64(v, w), _mm256_unpackhi_epi64(v, w));
        const __m256i cd = _mm256_add_epi64(_mm256_unpacklo_epi64(x, y), _mm256_unpackhi_epi64(x, y));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst), _mm256_add_epi64(_mm256_permute2x128_si256(ab, cd, 0x20),
                                                                              _mm256_permute2x128_si256(ab, cd, 0x31)));
    }

  private:
#if defined(__AVX512F__)
    __m256i half() const {
        return _mm256_add_epi64(_mm512_castsi512_si256(sums_), _mm512_extracti64x4_epi64(sums_, 1));
    }
#else
    __m256i half() const {
        return sums_;
    }
#endif
    void add(NativeInt x, NativeInt y) { sums_ = plus(plus(sums_, x), y); }
    // The products of the even places as 64-bit numbers; the odd places moved to the even ones.
#if defined(__AVX512F__)
    static NativeInt plus(NativeInt x, NativeInt y) { return _mm512_add_epi64(x, y); }
    static NativeInt even(NativeInt x, NativeInt y) { return _mm512_mul_epi32(x, y); }
    static NativeInt odd(NativeInt x) { return _mm512_srli_epi64(x, 32); }
#else
    static NativeInt plus(NativeInt x, NativeInt y) { return _mm256_add_epi64(x, y); }
    static NativeInt even(NativeInt x, NativeInt y) { return _mm256_mul_epi32(x, y); }
    static NativeInt odd(NativeInt x) { return _mm256_srli_epi64(x, 32); }
#endif
    NativeInt sums_ = {};
};
#else
// Without signed multiplication in vectors: in the 53 bits of doubles.  Exact for products below 2^47.
class ExactSums {
  public:
    static constexpr std::size_t kMost = 16;

    void addProducts(const Vec<int32_t>& x, const Vec<int32_t>& y) {
        add(_mm_mul_pd(low(x), low(y)), _mm_mul_pd(high(x), high(y)));
    }
    void addWeightedSquares(const Vec<int32_t>& d, const Vec<int32_t>& v) {
        add(_mm_mul_pd(_mm_mul_pd(low(d), low(v)), low(d)), _mm_mul_pd(_mm_mul_pd(high(d), high(v)), high(d)));
    }

    static void totals(const ExactSums& a, const ExactSums& b, const ExactSums& c, const ExactSums& d, int64_t* dst) {
        const auto sum = [](const ExactSums& s) {
            return static_cast<int64_t>(_mm_cvtsd_f64(_mm_add_sd(s.sums_, _mm_unpackhi_pd(s.sums_, s.sums_))));
        };
        dst[0] = sum(a);
        dst[1] = sum(b);
        dst[2] = sum(c);
        dst[3] = sum(d);
    }

  private:
    void add(__m128d x, __m128d y) { sums_ = _mm_add_pd(sums_, _mm_add_pd(x, y)); }
    static __m128d low(const Vec<int32_t>& v) { return _mm_cvtepi32_pd(native(v)); }
    static __m128d high(const Vec<int32_t>& v) { return _mm_cvtepi32_pd(_mm_srli_si128(native(v), 8)); }

    __m128d sums_ = {};
};
#endif

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

// ---- float to integer ----------------------------------------------------------------------------------------------
// Lanes outside the integer's range and NaN give -2147483648, as the instructions do.

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
