// Fill and copy kernels.
#pragma once

#include <cstddef>
#include <cstring>

#include "core/simd/vec.h"

namespace kels {

// Source and destination may overlap.
template <class T>
void copy(const T* src, T* dst, std::size_t len) {
    std::memmove(dst, src, len * sizeof(T));
}

template <class T>
void zero(T* dst, std::size_t len) {
    std::memset(dst, 0, len * sizeof(T));
}

template <class T>
void fill(T* dst, std::size_t len, T value) {
    if constexpr (sizeof(T) == 1) {
        std::memset(dst, value, len);
    } else {
        // Above this size the array does not stay in the caches, and stores that fetch no lines take half the traffic.
        constexpr std::size_t kStreamingBytes = std::size_t{4} << 20;
        std::size_t i = 0;
        if (len * sizeof(T) >= kStreamingBytes) {
            constexpr std::size_t vectorBytes = sizeof(Vec<T>);
            while (reinterpret_cast<std::uintptr_t>(dst + i) % vectorBytes != 0) dst[i++] = value;
            const Vec<T> v(value);
            for (; i + lanes<T> <= len; i += lanes<T>) storeStreaming(dst + i, v);
            fenceStreaming();
        }
        for (; i < len; ++i) dst[i] = value;
    }
}

}  // namespace kels
