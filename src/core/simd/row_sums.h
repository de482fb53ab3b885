// Sums over the lanes of four vectors at a time: as they are, with what rounding loses, and exact ones of integers.
#pragma once

#include "core/simd/arithmetic.h"

namespace kels {

// The sums over the lanes of each of four vectors, at dst[0..3]: the vectors are folded together, so that four sums
// cost little more than one.
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

// Sums of doubles that keep what rounding loses: high + low.
struct DoubledValue {
    double high, low;

    explicit operator double() const { return high + low; }
    friend DoubledValue operator+(const DoubledValue& x, const DoubledValue& y) {
        const TwoSum<double> sum(x.high, y.high);
        return {sum.sum, sum.lost + (x.low + y.low)};
    }
};

#if defined(__AVX2__)
struct DoubledSum {
    Vec<double> high, low;

    // The totals over the lanes of each of four sums, at dst[0..3].
    static void totals(const DoubledSum& a, const DoubledSum& b, const DoubledSum& c, const DoubledSum& d,
                       DoubledValue* dst) {
        const DoubledSum ab = folded<EvenAndOdd>(a, b), cd = folded<EvenAndOdd>(c, d);
        const DoubledSum halves = folded<Quarters>(ab, cd);
#if defined(__AVX512F__)
        const DoubledSum abcd = folded<Quarters>(halves, halves);
        const __m256d high = _mm512_castpd512_pd256(native(abcd.high)), low = _mm512_castpd512_pd256(native(abcd.low));
#else
        const __m256d high = native(halves.high), low = native(halves.low);
#endif
        const __m256d ac = _mm256_unpacklo_pd(high, low), bd = _mm256_unpackhi_pd(high, low);
        _mm256_storeu_pd(&dst[0].high, _mm256_permute2f128_pd(ac, bd, 0x20));
        _mm256_storeu_pd(&dst[2].high, _mm256_permute2f128_pd(ac, bd, 0x31));
    }

  private:
    // The lanes of x and y that are to be added to those that the second one gives.
    struct EvenAndOdd {
#if defined(__AVX512F__)
        static __m512d one(__m512d x, __m512d y) {
            return _mm512_unpacklo_pd(x, y);
        }
        static __m512d other(__m512d x, __m512d y) {
            return _mm512_unpackhi_pd(x, y);
        }
#else
        static __m256d one(__m256d x, __m256d y) {
            return _mm256_unpacklo_pd(x, y);
        }
        static __m256d other(__m256d x, __m256d y) {
            return _mm256_unpackhi_pd(x, y);
        }
#endif
    };
    struct Quarters {
#if defined(__AVX512F__)
        static __m512d one(__m512d x, __m512d y) {
            return _mm512_shuffle_f64x2(x, y, 0x88);
        }
        static __m512d other(__m512d x, __m512d y) {
            return _mm512_shuffle_f64x2(x, y, 0xdd);
        }
#else
        static __m256d one(__m256d x, __m256d y) {
            return _mm256_permute2f128_pd(x, y, 0x20);
        }
        static __m256d other(__m256d x, __m256d y) {
            return _mm256_permute2f128_pd(x, y, 0x31);
        }
#endif
    };
    template <class Choice>
    static DoubledSum folded(const DoubledSum& x, const DoubledSum& y) {
        const auto one = [](const Vec<double>& v, const Vec<double>& w) {
            return Vec<double>(Choice::one(native(v), native(w)));
        };
        const auto other = [](const Vec<double>& v, const Vec<double>& w) {
            return Vec<double>(Choice::other(native(v), native(w)));
        };
        const TwoSum<Vec<double>> sum(one(x.high, y.high), other(x.high, y.high));
        return {sum.sum, sum.lost + (one(x.low, y.low) + other(x.low, y.low))};
    }
};
#endif

// Exact sums of products of 32-bit integers, lanes<int32_t> products at a time.
#if defined(__AVX2__)
// In lanes of 64 bits.
class IntegerSums {
  public:
    static constexpr std::size_t kMost = 1 << 20;  // additions that are surely exact

    void addProducts(const Vec<int32_t>& x, const Vec<int32_t>& y) {
        add(even(native(x), native(y)), even(odd(native(x)), odd(native(y))));
    }
    // d * d * v, where |d * v| < 2^31.
    void addWeightedSquares(const Vec<int32_t>& d, const Vec<int32_t>& v) { addProducts(d * v, d); }

    // As sumsOf4 for vectors.
    static void totals(const IntegerSums& a, const IntegerSums& b, const IntegerSums& c, const IntegerSums& d,
                       int64_t* dst) {
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
    void add(NativeInt x, NativeInt y) {
        sums_ = plus(plus(sums_, x), y);
    }
    // The products of the even places as 64-bit numbers; the odd places moved to the even ones.
#if defined(__AVX512F__)
    static NativeInt plus(NativeInt x, NativeInt y) {
        return _mm512_add_epi64(x, y);
    }
    static NativeInt even(NativeInt x, NativeInt y) {
        return _mm512_mul_epi32(x, y);
    }
    static NativeInt odd(NativeInt x) {
        return _mm512_srli_epi64(x, 32);
    }
#else
    static NativeInt plus(NativeInt x, NativeInt y) {
        return _mm256_add_epi64(x, y);
    }
    static NativeInt even(NativeInt x, NativeInt y) {
        return _mm256_mul_epi32(x, y);
    }
    static NativeInt odd(NativeInt x) {
        return _mm256_srli_epi64(x, 32);
    }
#endif
    NativeInt sums_ = {};
};
#else
// Without signed multiplication in vectors: in the 53 bits of doubles.  Exact for products below 2^47.
class IntegerSums {
  public:
    static constexpr std::size_t kMost = 16;

    void addProducts(const Vec<int32_t>& x, const Vec<int32_t>& y) {
        add(_mm_mul_pd(low(x), low(y)), _mm_mul_pd(high(x), high(y)));
    }
    void addWeightedSquares(const Vec<int32_t>& d, const Vec<int32_t>& v) {
        add(_mm_mul_pd(_mm_mul_pd(low(d), low(v)), low(d)), _mm_mul_pd(_mm_mul_pd(high(d), high(v)), high(d)));
    }

    static void totals(const IntegerSums& a, const IntegerSums& b, const IntegerSums& c, const IntegerSums& d,
                       int64_t* dst) {
        const auto sum = [](const IntegerSums& s) {
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

}  // namespace kels
