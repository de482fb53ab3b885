// Exact sums of integers.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kels/types.h"

namespace kels {

inline int64_t integerDot(const Kel16s* a, const Kel16s* b, std::size_t len) {
    int64_t sum = 0;
    for (std::size_t i = 0; i < len; ++i) sum += Kel32s{a[i]} * b[i];
    return sum;
}

template <class T>
int64_t integerSum(const T* src, std::size_t len) {
    int64_t sum = 0;
    for (std::size_t i = 0; i < len; ++i) sum += src[i];
    return sum;
}

}  // namespace kels
