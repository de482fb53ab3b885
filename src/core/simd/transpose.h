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

// The lanes of a and b in turn: those of the lower halves, and those of the upper halves.
template <class T>
struct Zipped {
    Vec<T> low, high;

    Zipped(const Vec<T>& a, const Vec<T>& b) : Zipped(a, b, std::make_integer_sequence<int, kLanes>()) {}

  private:
    static constexpr int kLanes = static_cast<int>(lanes<T>);
    template <int... i>
    Zipped(const Vec<T>& a, const Vec<T>& b, std::integer_sequence<int, i...>)
        : low(__builtin_shufflevector(native(a), native(b), (i / 2 + i % 2 * kLanes)...)),
          high(__builtin_shufflevector(native(a), native(b), (kLanes / 2 + i / 2 + i % 2 * kLanes)...)) {}
};

// A square of lanes turned over: lane j of v[i] changes places with lane i of v[j].
template <class T>
inline void transposeSquare(Vec<T> (&v)[lanes<T>]) {
    constexpr std::size_t w = lanes<T>;
    for (std::size_t step = 1; step < w; step *= 2) {
        Vec<T> turned[w];
        for (std::size_t i = 0; i < w / 2; ++i) {
            const Zipped<T> pair(v[i], v[i + w / 2]);
            turned[2 * i] = pair.low;
            turned[2 * i + 1] = pair.high;
        }
        for (std::size_t i = 0; i < w; ++i) v[i] = turned[i];
    }
}

}  // namespace kels
