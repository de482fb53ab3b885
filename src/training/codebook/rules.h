// The order of distances: every comparison that decides what a codebook holds or what a search finds stands here.
//
// Distances are compared with a relative tolerance, so that differences of rounding do not decide, and of distances
// that are equal within it the one met first wins.  The rules hold for single values and for vectors, lane by lane.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

#include "core/simd/vec.h"
#include "kels/types.h"

namespace kels::codebook {

template <class V>
struct ScalarOf {
    using Type = V;
};
template <class T, class Abi>
struct ScalarOf<stdx::simd<T, Abi>> {
    using Type = T;
};

// Whether a later candidate replaces the best so far; also a step of a climb from the leaf of distance `best`.
template <class V>
auto isNearer(const V& distance, const V& best) {
    return distance * V(static_cast<typename ScalarOf<V>::Type>(1.000001)) < best;
}

// The largest distance close to the least one: where a second candidate is no farther, the order decides.  Generously
// beyond the tolerance, for a chain of candidates each a little nearer than the next can lead from one to another.
template <class Real>
Real closeTo(Real least) {
    return least * static_cast<Real>(1.0001);
}

// Whether a descent goes left, from the least distances on both sides.
template <class Real>
bool goesLeft(Real left, Real right) {
    return left < static_cast<Real>(1.000001) * right;
}

// Whether a cluster's spread or size displaces the largest so far as the next to be split.
inline bool isLarger(Kel64f value, Kel64f largest) {
    return value > largest * 1.000001;
}

// Whether two distances count as equal.  Infinite ones never do.
template <class Real>
bool areEqual(Real a, Real b) {
    const Real greater = std::max(a, b);
    return std::fabs(a - b) <= static_cast<Real>(1e-6) * greater && greater < std::numeric_limits<Real>::infinity();
}
template <class T, class Abi>
auto areEqual(const stdx::simd<T, Abi>& a, const stdx::simd<T, Abi>& b) {
    const Vec<T> greater = greaterOf(a, b);
    return magnitude(Vec<T>(a - b)) <= static_cast<T>(1e-6) * greater && greater < std::numeric_limits<T>::infinity();
}

// Whether a codevector whose distances from the points of a cell are at least `least` can be nearest somewhere in it,
// when another one is at most `bound` away everywhere.
template <class V>
auto canBeNearest(const V& least, const V& bound) {
    using Real = typename ScalarOf<V>::Type;
    const V greater = greaterOf(least, bound);
    return least * V(static_cast<Real>(1.000001)) < bound ||
           magnitude(V(least - bound)) <= V(static_cast<Real>(1e-4)) * greater ||
           bound >= V(std::numeric_limits<Real>::infinity());  // no bound at all
}

// The largest distance that is listed with the nearest one under a factor of 1 or more.
inline Kel64f listedUpTo(Kel64f nearest, Kel64f factor) {
    return nearest == 0 ? 0 : factor * factor * nearest * 1.000001;
}

// ---- training ------------------------------------------------------------------------------------------------------

inline constexpr Kel32f kCoincident = 1e-6f;  // halves whose centroids are no farther apart are pulled apart...
inline constexpr Kel32f kReachable = 1e-5f;   // ... toward a member at least that far away ...
inline constexpr Kel64f kApart = 1e-6;        // ... until the members' distances differ by that on average
inline constexpr int kMostPulls = 1000;
inline constexpr int kMostPasses = 20;
inline bool hasSettled(Kel64f distortion, Kel64f before) {
    return std::fabs(distortion - before) <= 1e-4 * distortion;
}

// Whether a grid with one more column or row is worth it, and whether a grid as a whole is.
inline bool isWorthMore(Kel32f cost, Kel32f before) {
    return cost < before * 0.95f;
}
inline bool isWorthKeeping(Kel32f cost, Kel32f limit) {
    return cost < limit || std::fabs(cost - limit) <= 1e-4f * std::max(cost, limit);
}

}  // namespace kels::codebook
