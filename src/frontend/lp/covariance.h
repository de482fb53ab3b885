// The normal equations of the covariance method.
#pragma once

#include <cstddef>

#include "kels/types.h"

namespace kels::lp {

// phi(i, j) = sum over n = order .. len - 1 of x[n - i] x[n - j], for 0 <= j <= i <= order, in rows of order + 1.  The
// first column is given; every other element follows from its upper left neighbour by the products at the two ends.
template <class T>
void fillCovariance(const T* x, std::size_t len, Kel64f* phi, std::size_t order) {
    const std::size_t step = order + 1;
    for (std::size_t i = 1; i <= order; ++i) {
        for (std::size_t j = 1; j <= i; ++j) {
            const Kel64f entering = static_cast<Kel64f>(x[order - i]) * static_cast<Kel64f>(x[order - j]);
            const Kel64f leaving = static_cast<Kel64f>(x[len - i]) * static_cast<Kel64f>(x[len - j]);
            phi[i * step + j] = phi[(i - 1) * step + j - 1] + (entering - leaving);
        }
    }
}

// Solves sum over j of phi(i, j) a[j] = -phi(i, 0), i = 1 .. order, by phi = L D L'; phi is used up.  False when a
// pivot shows that the matrix is singular, or nearer to it than rounding lets tell.
inline bool solveCovariance(Kel64f* phi, Kel64f* a, std::size_t order) {
    constexpr Kel64f kLeastPivot = 0x1p-40;  // of the diagonal element that it is left of
    const std::size_t step = order + 1;
    const auto row = [=](std::size_t i) { return phi + i * step; };
    for (std::size_t i = 1; i <= order; ++i) {
        Kel64f* const l = row(i);
        Kel64f right = -l[0], pivot = l[i];
        // l[j] holds L(i, j) D(j) until D(i) is known.
        for (std::size_t j = 1; j < i; ++j) {
            const Kel64f* const above = row(j);
            for (std::size_t m = 1; m < j; ++m) l[j] -= l[m] * above[m];
        }
        for (std::size_t j = 1; j < i; ++j) {
            const Kel64f factor = l[j] / row(j)[j];
            pivot -= factor * l[j];
            right -= factor * a[j];
            l[j] = factor;
        }
        if (!(pivot > kLeastPivot * l[i])) return false;
        l[i] = pivot;
        a[i] = right;
    }
    for (std::size_t i = order; i >= 1; --i) {
        Kel64f sum = a[i] / row(i)[i];
        for (std::size_t j = i + 1; j <= order; ++j) sum -= row(j)[i] * a[j];
        a[i] = sum;
    }
    return true;
}

}  // namespace kels::lp
