// Sums in double precision.
#pragma once

#include <cstddef>

#include "core/simd/vec.h"
#include "kels/types.h"

namespace kels::aurora {

// The sum of term(x[i]); term takes and gives vectors and is 0 at 0.
template <class T, class Term>
Kel64f wideSum(const T* x, std::size_t len, Term term) {
    using Wide = Vec<Kel64f>;
    constexpr std::size_t w = lanes<Kel64f>;
    Wide even(0.0), odd(0.0);
    std::size_t i = 0;
    for (; i + 2 * w <= len; i += 2 * w) {
        even += term(loadWide(x + i));
        odd += term(loadWide(x + i + w));
    }
    Kel64f sum = stdx::reduce(Wide(even + odd));
    for (; i < len; ++i) sum += term(Wide(static_cast<Kel64f>(x[i])))[0];
    return sum;
}

template <class T>
Kel64f sumOf(const T* x, std::size_t len) {
    return wideSum(x, len, [](const Vec<Kel64f>& v) { return v; });
}

template <class T>
Kel64f energyOf(const T* x, std::size_t len) {
    return wideSum(x, len, [](const Vec<Kel64f>& v) { return v * v; });
}

}  // namespace kels::aurora
