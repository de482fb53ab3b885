// Functions defined in three pieces, on vectors: each lane takes the constants of its own piece, without a branch.
#pragma once

#include "core/simd/vec.h"

namespace kels {

// Constants of a function defined in three pieces: in a row of four, 16- or 32-byte aligned, the first holds for
// x > upper, the second for lower < x <= upper and the third for all other x.  The fourth is not used.
template <class T>
class PieceChoice;

template <>
class PieceChoice<float> {
  public:
    PieceChoice(const Vec<float>& x, float upper, float lower) {
#if defined(__AVX512F__)
        const __mmask16 first = _mm512_cmp_ps_mask(native(x), _mm512_set1_ps(upper), _CMP_GT_OQ);
        const __mmask16 notThird = _mm512_cmp_ps_mask(native(x), _mm512_set1_ps(lower), _CMP_GT_OQ);
        const __m512i one = _mm512_set1_epi32(1), two = _mm512_set1_epi32(2);
        const __m512i fromLower = _mm512_mask_sub_epi32(two, notThird, two, one);
        piece_ = _mm512_mask_sub_epi32(fromLower, first, fromLower, one);
#elif defined(__AVX2__)
        const __m256 first = _mm256_cmp_ps(native(x), _mm256_set1_ps(upper), _CMP_GT_OQ);
        const __m256 notThird = _mm256_cmp_ps(native(x), _mm256_set1_ps(lower), _CMP_GT_OQ);
        const __m256i steps = _mm256_add_epi32(_mm256_castps_si256(first), _mm256_castps_si256(notThird));
        piece_ = _mm256_add_epi32(_mm256_set1_epi32(2), steps);  // a true lane is -1
#else
        first_ = _mm_castps_si128(_mm_cmpgt_ps(native(x), _mm_set1_ps(upper)));
        notThird_ = _mm_castps_si128(_mm_cmpgt_ps(native(x), _mm_set1_ps(lower)));
#endif
    }

    Vec<float> operator()(const float (&row)[4]) const {
#if defined(__AVX512F__)
        return Vec<float>(_mm512_permutevar_ps(_mm512_broadcast_f32x4(_mm_load_ps(row)), piece_));
#elif defined(__AVX2__)
        return Vec<float>(_mm256_permutevar_ps(_mm256_broadcast_ps(reinterpret_cast<const __m128*>(row)), piece_));
#else
        const auto all = [](float v) { return _mm_set1_epi32(std::bit_cast<int32_t>(v)); };
        return Vec<float>(_mm_castsi128_ps(chooseBits(all(row[0]), all(row[1]), all(row[2]), first_, notThird_)));
#endif
    }

  private:
#if defined(__AVX2__)
    NativeInt piece_;
#else
    friend class PieceChoice<double>;
    // Differences of constants are constants too: two operations a step.
    static __m128i chooseBits(__m128i a, __m128i b, __m128i c, __m128i first, __m128i notThird) {
        const __m128i bOrC = _mm_xor_si128(c, _mm_and_si128(notThird, _mm_xor_si128(b, c)));
        return _mm_xor_si128(bOrC, _mm_and_si128(first, _mm_xor_si128(a, b)));
    }
    __m128i first_, notThird_;
#endif
};

template <>
class PieceChoice<double> {
  public:
    PieceChoice(const Vec<double>& x, double upper, double lower) {
#if defined(__AVX512F__)
        const __mmask8 first = _mm512_cmp_pd_mask(native(x), _mm512_set1_pd(upper), _CMP_GT_OQ);
        const __mmask8 notThird = _mm512_cmp_pd_mask(native(x), _mm512_set1_pd(lower), _CMP_GT_OQ);
        const __m512i one = _mm512_set1_epi64(1), two = _mm512_set1_epi64(2);
        const __m512i fromLower = _mm512_mask_sub_epi64(two, notThird, two, one);
        piece_ = _mm512_mask_sub_epi64(fromLower, first, fromLower, one);
#elif defined(__AVX2__)
        const __m256d first = _mm256_cmp_pd(native(x), _mm256_set1_pd(upper), _CMP_GT_OQ);
        const __m256d notThird = _mm256_cmp_pd(native(x), _mm256_set1_pd(lower), _CMP_GT_OQ);
        // Places in a row of 32-bit halves; both halves of a true lane are -1.
        const __m256i steps = _mm256_add_epi32(_mm256_castpd_si256(first), _mm256_castpd_si256(notThird));
        piece_ = _mm256_add_epi32(_mm256_setr_epi32(4, 5, 4, 5, 4, 5, 4, 5), _mm256_add_epi32(steps, steps));
#else
        first_ = _mm_castpd_si128(_mm_cmpgt_pd(native(x), _mm_set1_pd(upper)));
        notThird_ = _mm_castpd_si128(_mm_cmpgt_pd(native(x), _mm_set1_pd(lower)));
#endif
    }

    Vec<double> operator()(const double (&row)[4]) const {
#if defined(__AVX512F__)
        return Vec<double>(_mm512_permutexvar_pd(piece_, _mm512_broadcast_f64x4(_mm256_load_pd(row))));
#elif defined(__AVX2__)
        const __m256i bits = _mm256_castpd_si256(_mm256_load_pd(row));
        return Vec<double>(_mm256_castsi256_pd(_mm256_permutevar8x32_epi32(bits, piece_)));
#else
        const auto all = [](double v) { return _mm_set1_epi64x(std::bit_cast<int64_t>(v)); };
        return Vec<double>(
            _mm_castsi128_pd(PieceChoice<float>::chooseBits(all(row[0]), all(row[1]), all(row[2]), first_, notThird_)));
#endif
    }

  private:
#if defined(__AVX2__)
    NativeInt piece_;
#else
    __m128i first_, notThird_;
#endif
};

}  // namespace kels
