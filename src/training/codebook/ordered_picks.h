// Codevectors in the order of their distances.
#pragma once

#include <cstddef>

#include "core/simd/vec.h"
#include "training/codebook/distance.h"
#include "training/codebook/rules.h"

namespace kels::codebook {

// Picks from an array of distances, nearest first.  Those that are not to be picked, or have been, are negative.
template <class Real>
class OrderedPicks {
  public:
    OrderedPicks(Real* distances, std::size_t n) : distances_(distances), n_(n) {}

    // The index of the next one; there must be one left.
    Kel32s next() {
        Kel32s i = nextEqual();
        if (i < 0) i = nearestLeft();
        last_ = i;
        distance_ = distances_[i];
        distances_[i] = -1;
        return i;
    }
    Real distance() const { return distance_; }

  private:
    bool isNext(std::size_t i) const { return distances_[i] >= 0 && areEqual(distances_[i], distance_); }

    // The first one behind the last pick at an equal distance, or -1.
    Kel32s nextEqual() const {
        constexpr std::size_t w = lanes<Real>;
        auto i = static_cast<std::size_t>(last_ + 1);
        for (; i + w <= n_; i += w) {
            const Vec<Real> some = load(distances_ + i);
            if (stdx::any_of(some >= Real(0) && areEqual(some, Vec<Real>(distance_)))) break;
        }
        for (; i < n_; ++i) {
            if (isNext(i)) return static_cast<Kel32s>(i);
        }
        return -1;
    }

    Kel32s nearestLeft() const {
        Nearest<Real> nearest;
        const auto consider = [&](std::size_t i) {
            if (distances_[i] >= 0) nearest.take(distances_[i], static_cast<Kel32s>(i));
        };
        constexpr std::size_t w = lanes<Real>;
        std::size_t i = 0;
        for (; i + w <= n_; i += w) {
            const Vec<Real> some = load(distances_ + i);
            const auto left = some >= Real(0);
            if (nearest.index >= 0 && stdx::none_of(left && isNearer(some, Vec<Real>(nearest.distance)))) continue;
            for (std::size_t k = 0; k < w; ++k) consider(i + k);
        }
        for (; i < n_; ++i) consider(i);
        // What compares with nothing comes last.
        for (i = 0; nearest.index < 0; ++i) {
            if (!(distances_[i] < 0)) nearest.index = static_cast<Kel32s>(i);
        }
        return nearest.index;
    }

    Real* distances_;
    std::size_t n_;
    Real distance_ = 0;
    Kel32s last_ = -1;
};

}  // namespace kels::codebook
