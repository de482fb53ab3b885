// The nearest of several codevectors to one vector.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>

#include "core/simd/vec.h"
#include "training/codebook/distance.h"
#include "training/codebook/rules.h"

namespace kels::codebook {

// The least of some values that are not NaN; infinity where there is none.
template <class Real>
Real leastOf(const Real* values, std::size_t n) {
    constexpr std::size_t w = lanes<Real>;
    Vec<Real> least(std::numeric_limits<Real>::infinity());
    std::size_t i = 0;
    for (; i + w <= n; i += w) least = lesserOf(load(values + i), least);
    Real result = stdx::hmin(least);
    for (; i < n; ++i) result = values[i] < result ? values[i] : result;
    return result;
}

// The nearest of candidates that come by ascending index.
template <class Real>
struct Nearest {
    Real distance = 0;
    Kel32s index = -1;

    void take(Real candidate, Kel32s i) {
        if (index >= 0 && !isNearer(candidate, distance)) return;
        distance = candidate;
        index = i;
    }
    // The candidates first .. first + n - 1.  They are gone through one by one only where several come close.
    void take(const Real* candidates, std::size_t n, Kel32s first) {
        const Real least = leastOf(candidates, n);
        if (index >= 0 && !isNearer(least, distance)) return;
        if (index < 0 || distance > closeTo(least)) {
            const std::size_t winner = onlyOneUpTo(closeTo(least), candidates, n);
            if (winner < n) {
                distance = candidates[winner];
                index = first + static_cast<Kel32s>(winner);
                return;
            }
        }
        for (std::size_t i = 0; i < n; ++i) take(candidates[i], first + static_cast<Kel32s>(i));
    }

  private:
    // The place of the only value up to a limit; n where there is another one, or none.
    static std::size_t onlyOneUpTo(Real limit, const Real* values, std::size_t n) {
        constexpr std::size_t w = lanes<Real>;
        std::size_t found = n, i = 0;
        for (; i + w <= n; i += w) {
            const auto up = load(values + i) <= limit;
            if (stdx::none_of(up)) continue;
            if (found < n || stdx::popcount(up) > 1) return n;
            found = i + static_cast<std::size_t>(stdx::find_first_set(up));
        }
        for (; i < n; ++i) {
            if (!(values[i] <= limit)) continue;
            if (found < n) return n;
            found = i;
        }
        return found;
    }
};

// The nearest of all codevectors: its number.
template <class Weighting, class T>
Kel32s nearestOf(const Candidates<T>& candidates, std::size_t count, std::size_t width) {
    constexpr std::size_t kBlock = 64;
    RealOf<T> some[kBlock];
    Nearest<RealOf<T>> nearest;
    for (std::size_t i = 0; i < count; i += kBlock) {
        const std::size_t n = std::min(kBlock, count - i);
        distances<Weighting>(candidates, i, n, width, some);
        nearest.take(some, n, static_cast<Kel32s>(i));
    }
    return nearest.index;
}

}  // namespace kels::codebook
