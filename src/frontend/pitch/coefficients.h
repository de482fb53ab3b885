// Cross-correlation coefficients: how alike two windows are, whatever their loudness.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "frontend/pitch/lag_sums.h"
#include "kels/types.h"

namespace kels::pitch {

// Silence is like nothing.  Doubles hold the product of any two energies of floats.
inline Kel32f coefficient(Kel64f product, Kel64f energy1, Kel64f energy2) {
    const Kel64f root = std::sqrt(energy1 * energy2);
    if (root == 0) return 0;
    return std::clamp(static_cast<Kel32f>(product / root), -1.0f, 1.0f);
}

// dst[k] = the coefficient of x and the window that begins at y[k], with `bias` added to both energies.
template <class T>
void coefficients(const T* x, const T* y, std::size_t len, Kel32f* dst, std::size_t lags, Kel64f bias) {
    std::array<Sum<T>, kLags> products, energies;
    const Kel64f reference = static_cast<Kel64f>(energy(x, len)) + bias;
    for (std::size_t k = 0; k < lags;) {
        const std::size_t n = std::min({kLags, len, lags - k});
        correlate(x, y + k, len, n, products.data());
        windowEnergies(y + k, len, n, energies.data());
        for (std::size_t j = 0; j < n; ++j, ++k) {
            const Kel64f window = static_cast<Kel64f>(energies[j]) + bias;
            dst[k] = coefficient(static_cast<Kel64f>(products[j]), reference, window);
        }
    }
}

}  // namespace kels::pitch
