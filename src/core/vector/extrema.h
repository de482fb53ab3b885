// Largest and smallest elements and their places.  An element replaces the running extremum only when it compares
// strictly beyond it: the first of equals wins, and NaN never does unless it comes first.
#pragma once

#include <algorithm>
#include <cstddef>

#include "core/simd/vec.h"

namespace kels {

struct Greatest {
    template <class T>
    static bool beyond(T x, T than) {
        return x > than;
    }
    template <class T>
    static Vec<T> of(const Vec<T>& x, const Vec<T>& than) {
        return greaterOf(x, than);
    }
};

struct Least {
    template <class T>
    static bool beyond(T x, T than) {
        return x < than;
    }
    template <class T>
    static Vec<T> of(const Vec<T>& x, const Vec<T>& than) {
        return lesserOf(x, than);
    }
};

// The place of the first element equal to `value`, or len.
template <class T>
std::size_t firstEqual(const T* src, std::size_t len, T value) {
    const Vec<T> wanted(value);
    std::size_t i = 0;
    for (; i + lanes<T> <= len; i += lanes<T>) {
        const auto equal = load(src + i) == wanted;
        if (stdx::any_of(equal)) return i + static_cast<std::size_t>(stdx::find_first_set(equal));
    }
    while (i < len && src[i] != value) ++i;
    return i;
}

// The extremum of `start` and the elements; a zero may have either sign.
template <class Order, class T>
T extremumOf(const T* src, std::size_t len, T start) {
    constexpr std::size_t w = lanes<T>;
    std::size_t i = 0;
    if (len >= w) {
        // Eight chains: a comparison's latency is several times its issue interval.
        Vec<T> best[8];
        for (auto& b : best) b = Vec<T>(start);
        for (; i + 8 * w <= len; i += 8 * w) {
            for (std::size_t k = 0; k < 8; ++k) best[k] = Order::of(load(src + i + k * w), best[k]);
        }
        for (; i + w <= len; i += w) best[0] = Order::of(load(src + i), best[0]);
        for (std::size_t k = 1; k < 8; ++k) best[0] = Order::of(best[k], best[0]);
        for (std::size_t k = 0; k < w; ++k) {
            const T x = best[0][k];
            if (Order::beyond(x, start)) start = x;
        }
    }
    for (; i < len; ++i) {
        if (Order::beyond(src[i], start)) start = src[i];
    }
    return start;
}

template <class Order, class T>
T extremum(const T* src, std::size_t len) {
    const T best = extremumOf<Order>(src, len, src[0]);
    return best == 0 ? src[firstEqual(src, len, best)] : best;  // the first zero's sign
}

template <class T>
struct Place {
    T value;
    std::size_t index;
};

// Chunk by chunk, so that the search for the place finds the chunk in the nearest cache.
template <class Order, class T>
Place<T> extremumPlace(const T* src, std::size_t len) {
    constexpr std::size_t kChunk = 2048;
    Place<T> best{src[0], 0};
    for (std::size_t i = 0; i < len; i += kChunk) {
        const std::size_t n = std::min(kChunk, len - i);
        const T candidate = extremumOf<Order>(src + i, n, best.value);
        if (!Order::beyond(candidate, best.value)) continue;
        best.index = i + firstEqual(src + i, n, candidate);
        best.value = src[best.index];
    }
    return best;
}

}  // namespace kels
