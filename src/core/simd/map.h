// Element-wise functions of whole arrays, from functions of vectors.
//
//     const auto product = [=](const Vec<T>& x) { return x * c; };
//     map(dst, len, product, T(), src);
#pragma once

#include "core/simd/load_store.h"

namespace kels {

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
