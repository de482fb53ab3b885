// Distances from vectors to codevectors.
#pragma once

#include <algorithm>
#include <cstddef>

#include "scoring/gauss/walk.h"
#include "training/codebook/codebook.h"

namespace kels::codebook {

using gauss::sumOf1, gauss::sumsOf, gauss::sumsOf4;

// Calls `use` with the weighting of a codebook: no weights where all are 1.
template <class Use>
auto withWeighting(bool weighted, Use use) {
    return weighted ? use(InverseVariance()) : use(UnitVariance());
}

// A vector against the rows of a matrix, as items of the scorers; `weights` may be null for UnitVariance.
template <class T>
struct Candidates {
    const T* vector;
    StepRows<const T> rows;
    const T* weights;
    Item<T> operator[](std::size_t g) const { return {vector, rows[static_cast<std::ptrdiff_t>(g)], weights}; }
};

// Their distances number first .. first + n - 1.
template <class Weighting, class T>
void distances(const Candidates<T>& candidates, std::size_t first, std::size_t n, std::size_t width, RealOf<T>* dst) {
    using Term = TermOf<Weighting, T>;
    if constexpr (std::is_same_v<typename Term::Sum, RealOf<T>>) {
        sumsOf<Term>(candidates, first, n, width, dst);
    } else {
        constexpr std::size_t kBlock = 64;
        typename Term::Sum sums[kBlock];
        for (std::size_t i = 0; i < n; i += kBlock) {
            const std::size_t some = std::min(kBlock, n - i);
            sumsOf<Term>(candidates, first + i, some, width, sums);
            for (std::size_t k = 0; k < some; ++k) dst[i + k] = static_cast<RealOf<T>>(sums[k]);
        }
    }
}

}  // namespace kels::codebook
