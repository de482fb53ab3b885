// Rows turned over, so that one component of many rows stands side by side.
#pragma once

#include <algorithm>
#include <cstddef>
#include <type_traits>
#include <utility>

#include "core/simd/vec.h"
#include "kels/types.h"

namespace kels {

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

// Component k of row j goes to data[k * stride + j]; stride >= height.
template <class Rows, class T>
void transpose(const Rows& rows, std::size_t height, std::size_t width, T* data, std::size_t stride) {
    const auto row = [&](std::size_t j) { return rows[static_cast<std::ptrdiff_t>(j)]; };
    if constexpr (std::is_same_v<decltype(row(0)), const Kel32f*> && std::is_same_v<T, Kel32f>) {
        if (height >= 4 && width >= 4) {
            // Blocks of 4 x 4; the last one of a line lies over its neighbour where four do not divide the line.
            for (std::size_t block = 0; block < height; block += 4) {
                const std::size_t j = std::min(block, height - 4);
                const Kel32f* const four[4] = {row(j), row(j + 1), row(j + 2), row(j + 3)};
                for (std::size_t part = 0; part < width; part += 4) {
                    const std::size_t k = std::min(part, width - 4);
                    const Kel32f* const at[4] = {four[0] + k, four[1] + k, four[2] + k, four[3] + k};
                    transpose4(at, data + k * stride + j, stride);
                }
            }
            return;
        }
    }
    for (std::size_t j = 0; j < height; ++j) {
        for (std::size_t k = 0; k < width; ++k) data[k * stride + j] = static_cast<T>(row(j)[k]);
    }
}

// Two vectors made of the lanes of two others, each by one instruction of most targets.  Single values stay in their 16
// bytes of a vector.
template <class T>
struct Shuffled {
    Vec<T> first, second;

    // Of each 16 bytes the lanes of a and b in turn: those of the lower halves, and those of the upper ones.
    static Shuffled zip(const Vec<T>& a, const Vec<T>& b) { return zip(a, b, Lanes()); }

    // Runs of `step` lanes: every second run of b in the place of the run of a behind it, and the other way round.
    template <int step>
    static Shuffled exchange(const Vec<T>& a, const Vec<T>& b) {
        return exchange<step>(a, b, Lanes());
    }

  private:
    static constexpr int kLanes = static_cast<int>(lanes<T>), kPart = 16 / sizeof(T);
    using Lanes = std::make_integer_sequence<int, kLanes>;

    template <int... i>
    static Shuffled zip(const Vec<T>& a, const Vec<T>& b, std::integer_sequence<int, i...>) {
        return {pick<(i - i % kPart + i % kPart / 2 + i % 2 * kLanes)...>(a, b),
                pick<(i - i % kPart + (kPart + i % kPart) / 2 + i % 2 * kLanes)...>(a, b)};
    }
    template <int step, int... i>
    static Shuffled exchange(const Vec<T>& a, const Vec<T>& b, std::integer_sequence<int, i...>) {
        return {pick<((i & step) == 0 ? i : i - step + kLanes)...>(a, b),
                pick<((i & step) == 0 ? i + step : i + kLanes)...>(a, b)};
    }
    template <int... from>
    static Vec<T> pick(const Vec<T>& a, const Vec<T>& b) {
        return Vec<T>(__builtin_shufflevector(native(a), native(b), from...));
    }
};

// A square of lanes turned over: lane j of v[i] changes places with lane i of v[j].  First the squares of 16 bytes,
// then these as wholes.
template <class T>
inline void transposeSquare(Vec<T> (&v)[lanes<T>]) {
    constexpr std::size_t w = lanes<T>, part = 16 / sizeof(T);
    for (std::size_t step = 1; step < part; step *= 2) {
        Vec<T> turned[w];
        for (std::size_t i = 0; i < w / 2; ++i) {
            const std::size_t row = i / (part / 2) * part + i % (part / 2);
            const auto zipped = Shuffled<T>::zip(v[row], v[row + part / 2]);
            turned[2 * i] = zipped.first;
            turned[2 * i + 1] = zipped.second;
        }
        for (std::size_t i = 0; i < w; ++i) v[i] = turned[i];
    }
    const auto exchange = [&]<std::size_t step>(std::integral_constant<std::size_t, step>) {
        for (std::size_t i = 0; i < w; ++i) {
            if ((i & step) != 0) continue;
            const auto exchanged = Shuffled<T>::template exchange<static_cast<int>(step)>(v[i], v[i + step]);
            v[i] = exchanged.first;
            v[i + step] = exchanged.second;
        }
    };
    if constexpr (part < w) exchange(std::integral_constant<std::size_t, part>());
    if constexpr (2 * part < w) exchange(std::integral_constant<std::size_t, 2 * part>());
}

}  // namespace kels
