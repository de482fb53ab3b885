// Rows of any length are loaded in two ways, which kernels take as a policy: whole vectors, and the part of a vector
// that is left at the end.
#pragma once

#include "core/simd/load_store.h"
#include "core/simd/widen.h"

namespace kels {

// Whole vectors...
struct WholeVector {
    Vec<float> load(const float* p) const { return kels::load(p); }
    Vec<int32_t> load(const int16_t* p) const { return loadInt(p); }
    template <class T>
    Vec<double> loadWide(const T* p) const {
        return kels::loadWide(p);
    }
};

// ... and its end: the first n < lanes<float> elements, or n < lanes<double> as doubles, and zeros.  What n demands is
// made ready once for many loads.  `before` elements in front of p may be read too.
class PartVector {
  public:
#if defined(__AVX512F__)
    explicit PartVector(std::size_t n, std::size_t = 0) : mask_(static_cast<__mmask16>((1u << n) - 1)) {}

    Vec<float> load(const float* p) const {
        return Vec<float>(_mm512_maskz_loadu_ps(mask_, p));
    }
    Vec<int32_t> load(const int16_t* p) const {
        return Vec<int32_t>(_mm512_cvtepi16_epi32(_mm256_maskz_loadu_epi16(mask_, p)));
    }
    Vec<double> loadWide(const double* p) const {
        return Vec<double>(_mm512_maskz_loadu_pd(static_cast<__mmask8>(mask_), p));
    }
    Vec<double> loadWide(const float* p) const {
        return Vec<double>(_mm512_cvtps_pd(_mm256_maskz_loadu_ps(static_cast<__mmask8>(mask_), p)));
    }

  private:
    __mmask16 mask_;
#elif defined(__AVX2__)
    explicit PartVector(std::size_t n, std::size_t before = 0)
        : n_(n), wholeLoad_(n + before >= 8), mask_(maskOfFirst(n, std::integral_constant<int, 4>())) {
        // Byte i comes from byte i + 16 - 2n; from 16 on the index turns negative, which makes zeros.
        const __m128i index = _mm_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
        down_ = _mm_add_epi8(index, _mm_set1_epi8(static_cast<char>(16 - 2 * n)));
        down_ = _mm_or_si128(down_, _mm_cmpgt_epi8(down_, _mm_set1_epi8(15)));
    }

    Vec<float> load(const float* p) const {
        return Vec<float>(_mm256_maskload_ps(p, mask_));
    }
    Vec<int32_t> load(const int16_t* p) const {
        if (!wholeLoad_) return Vec<int32_t>(_mm256_cvtepi16_epi32(few(p)));
        const __m128i last = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + n_) - 1);
        return Vec<int32_t>(_mm256_cvtepi16_epi32(_mm_shuffle_epi8(last, down_)));
    }
    Vec<double> loadWide(const double* p) const {
        return Vec<double>(_mm256_maskload_pd(p, _mm256_cvtepi32_epi64(_mm256_castsi256_si128(mask_))));
    }
    Vec<double> loadWide(const float* p) const {
        return Vec<double>(_mm256_cvtps_pd(_mm_maskload_ps(p, _mm256_castsi256_si128(mask_))));
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
    explicit PartVector(std::size_t n, std::size_t = 0) : n_(n) {}

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

}  // namespace kels
