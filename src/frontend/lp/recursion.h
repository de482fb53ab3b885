// Recursions between autocorrelations, predictors and reflection coefficients, in double precision.  Coefficient i of
// an array stands at index i, so that a[1] .. a[order] are a predictor's coefficients; a[0] is free.
#pragma once

#include <cstddef>

#include "kels/types.h"

namespace kels::lp {

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
struct Steps {
    const Kel64f* coefficients;
    std::size_t done;
    Kel64f error;

    bool complete() const { return error > 0; }
};

// Schur's recursion in the form of Le Roux and Gueguen on r[0] .. r[order], which are replaced: from r[1] on by the
// reflection coefficients.  `work` has room for order + 1 values.  each(i, k) is called after every step.
template <class Each>
Steps schur(Kel64f* __restrict r, Kel64f* __restrict work, std::size_t order, Each each) {
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
inline Steps schur(Kel64f* r, Kel64f* work, std::size_t order) {
    return schur(r, work, order, [](std::size_t, Kel64f) {});
}

// The predictor of each order from that of the order before, as Levinson and Durbin have it.  The reflection
// coefficients come from Schur's recursion: unlike their inner products it does not wait for the predictors.  `work`
// has room for 2 (order + 1) values.
inline Steps durbin(Kel64f* r, Kel64f* work, std::size_t order) {
    Kel64f* const a = work + order + 1;
    const Steps steps = schur(r, work, order, [a](std::size_t i, Kel64f k) {
        a[i] = -k;
        stepUp(a, i);
    });
    return {a, steps.done, steps.error};
}

}  // namespace kels::lp
