// Functions that several families need.
#pragma once

#include "exact.h"

namespace accuracy {

// The modified Bessel function of order 0.
inline Real besselI0(Real x) {
    Real sum = 1, term = 1;
    for (int m = 1; term > 1e-22L * sum; ++m) sum += term *= square(x / 2 / static_cast<Real>(m)).value;
    return sum;
}

// Value i of a window of n values, of a kind of kels/features.h.
inline Real windowAt(int kind, int i, int n, Real beta) {
    const bool periodic = kind >= 16;
    if (n == 1) return 1;
    const Real d = n - !periodic, a = 2 * kPi * static_cast<Real>(i) / d;
    const Real hann = i == 0 || i == n - !periodic ? 0 : square(std::sin(a / 2)).value;
    switch (kind % 16) {
        case 1:
            return hann;
        case 2:
            return 0.54L - 0.46L * std::cos(a);
        case 3:
            return std::pow(hann, 0.85L);
        case 4:  // 0.42 - 0.5 cos a + 0.08 cos 2a without its cancellation
            return hann * (1 - 0.64L * square(std::cos(a / 2)).value);
        case 5:
            return besselI0(beta * std::sqrt(std::max<Real>(0, 1 - square(2 * static_cast<Real>(i) / d - 1).value))) /
                   besselI0(beta);
    }
    return 1;
}

}  // namespace accuracy
