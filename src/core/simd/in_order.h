// Maps whose arrays may overlap in any way: what is written before an element is reached is read there, as in a loop
// that takes one element after the other.  Vectors are used where no array reaches into another.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/simd/vec.h"

namespace kels {

// Whether two arrays of `len` elements share memory without being the same array.
template <class T>
bool shifted(const T* a, const T* b, std::size_t len) {
    const auto first = reinterpret_cast<std::uintptr_t>(a), second = reinterpret_cast<std::uintptr_t>(b);
    return first != second && (first < second ? second - first : first - second) < len * sizeof(T);
}
template <class T, class... S>
bool shiftedFromAny(std::size_t len, const T* array, const S*... others) {
    return (shifted(array, others, len) || ...);
}

// map() for such arrays.
template <class T, class Op, class... S>
void mapInOrder(T* dst, std::size_t len, const Op& op, T fill, const S*... src) {
    if (!shiftedFromAny(len, dst, src...)) return map(dst, len, op, fill, src...);
    for (std::size_t i = 0; i < len; ++i) map(dst + i, 1, op, fill, (src + i)...);
}

// mapPair() for such arrays; of an element, dst1 is written before dst2.
template <class T, class Op, class... S>
void mapPairInOrder(T* dst1, T* dst2, std::size_t len, const Op& op, T fill, const S*... src) {
    if (!shiftedFromAny(len, dst1, dst2, src...) && !shiftedFromAny(len, dst2, src...)) {
        return mapPair(dst1, dst2, len, op, fill, src...);
    }
    for (std::size_t i = 0; i < len; ++i) mapPair(dst1 + i, dst2 + i, 1, op, fill, (src + i)...);
}

}  // namespace kels
