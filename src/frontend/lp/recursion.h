// Recursions of linear prediction, in double precision.  Coefficient i of an array stands at index i, so that a[1] ..
// a[order] are a predictor's coefficients; a[0] is free.
#pragma once

#include <cstddef>

#include "kels/types.h"

namespace kels {

// Sum of a[j] * b[n - j] for j = 1 .. n - 1.
inline Kel64f convolvedSum(const Kel64f* a, const Kel64f* b, std::size_t n) {
    Kel64f even = 0, odd = 0;  // two chains of additions instead of one
    std::size_t j = 1;
    for (; j + 1 < n; j += 2) {
        odd += a[j] * b[n - j];
        even += a[j + 1] * b[n - j - 1];
    }
    if (j < n) odd += a[j] * b[n - j];
    return odd + even;
}

// ---- predictors and reflection coefficients ------------------------------------------------------------------------

// The predictor of order i - 1 becomes that of order i whose last coefficient is a[i].
inline void stepUp(Kel64f* a, std::size_t i) {
    const Kel64f last = a[i];
    for (std::size_t j = 1, m = i - 1; j <= m; ++j, --m) {
        const Kel64f low = a[j], high = a[m];
        a[j] = low + last * high;
        a[m] = high + last * low;
    }
}

// The reverse; what it gives is of no use unless a[i]^2 differs from 1.
inline void stepDown(Kel64f* a, std::size_t i) {
    const Kel64f last = a[i];
    const Kel64f factor = 1 / ((1 - last) * (1 + last));
    for (std::size_t j = 1, m = i - 1; j <= m; ++j, --m) {
        const Kel64f low = a[j], high = a[m];
        a[j] = (low - last * high) * factor;
        a[m] = (high - last * low) * factor;
    }
}

// ---- autocorrelation -----------------------------------------------------------------------------------------------

// How far a recursion has come: all the way, or to the step whose prediction error is not positive.  coefficients[1] ..
// coefficients[done] are the results.
struct LpSteps {
    const Kel64f* coefficients;
    std::size_t done;
    Kel64f error;

    bool complete() const { return error > 0; }
};

// Schur's recursion in the form of Le Roux and Gueguen on r[0] .. r[order], which are replaced: from r[1] on by the
// reflection coefficients.  `work` has room for order + 1 values.  each(i, k) is called after every step.
template <class Each>
LpSteps schur(Kel64f* __restrict r, Kel64f* __restrict work, std::size_t order, Each each) {
    // Correlations with the signal: of the forward error in r, of the backward error one sample later in `work`.
    if (!(r[0] > 0)) return {r, 0, r[0]};
    for (std::size_t m = 0; m <= order; ++m) work[m] = r[m];
    for (std::size_t i = 1; i <= order; ++i) {
        const Kel64f k = r[i] / work[0];
        for (std::size_t m = 0; i + m <= order; ++m) {
            const Kel64f forward = r[i + m], backward = work[m];
            r[i + m] = forward - k * backward;
            work[m] = backward - k * forward;
        }
        r[i] = k;
        each(i, k);
        if (!(work[0] > 0)) return {r, i, work[0]};
    }
    return {r, order, work[0]};
}
inline LpSteps schur(Kel64f* r, Kel64f* work, std::size_t order) {
    return schur(r, work, order, [](std::size_t, Kel64f) {});
}

// The predictor of each order from that of the order before, as Levinson and Durbin have it.  The reflection coefficients
// come from Schur's recursion: unlike their inner products it does not wait for the predictors.  `work` has room for
// 2 (order + 1) values.
inline LpSteps durbin(Kel64f* r, Kel64f* work, std::size_t order) {
    Kel64f* const a = work + order + 1;
    const LpSteps steps = schur(r, work, order, [a](std::size_t i, Kel64f k) {
        a[i] = -k;
        stepUp(a, i);
    });
    return {a, steps.done, steps.error};
}

// ---- covariance ----------------------------------------------------------------------------------------------------

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

// Solves sum over j of phi(i, j) a[j] = -phi(i, 0), i = 1 .. order, by phi = L D L'; phi is used up.  False when a pivot
// shows that the matrix is singular, or nearer to it than rounding lets tell.
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

// ---- cepstrum ------------------------------------------------------------------------------------------------------

// Factors 1 / n of the cepstrum recursions over `len` coefficients: single precision below 22, as the short forms have
// always had them, so that a prefix of a longer result may differ from a shorter one in the last place.
inline Kel64f cepstrumFactor(std::size_t n, std::size_t len) {
    constexpr Kel32f kShort[] = {0,        1.f / 1,  1.f / 2,  1.f / 3,  1.f / 4,  1.f / 5,  1.f / 6,  1.f / 7,
                                 1.f / 8,  1.f / 9,  1.f / 10, 1.f / 11, 1.f / 12, 1.f / 13, 1.f / 14, 1.f / 15,
                                 1.f / 16, 1.f / 17, 1.f / 18, 1.f / 19, 1.f / 20, 1.f / 21};
    constexpr std::size_t kCount = sizeof(kShort) / sizeof(kShort[0]);
    return len < kCount ? Kel64f{kShort[n]} : 1 / static_cast<Kel64f>(n);
}

// n c[n] = -n a[n] - sum of k c[k] a[n - k]; here w[k] = k c[k].  Either is found from the other.
inline Kel64f cepstrumTerm(const Kel64f* w, const Kel64f* a, std::size_t n, std::size_t len) {
    return cepstrumFactor(n, len) * convolvedSum(w, a, n);
}

}  // namespace kels
