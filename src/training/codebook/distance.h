// Distances from vectors to codevectors, and the nearest of all codevectors.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <utility>

#include "core/simd/vec.h"
#include "core/simd/transpose.h"
#include "scoring/gauss/walk.h"
#include "training/codebook/codebook.h"
#include "training/codebook/rules.h"

namespace kels {

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

// ---- many vectors --------------------------------------------------------------------------------------------------
// The vectors are turned over, so that a lane belongs to one vector from the first component to the last codevector:
// no sum over lanes, and the order of the codevectors is kept in each lane.

inline constexpr std::size_t kTurnedVectors = 4;
template <class Real>
inline constexpr std::size_t kTurnedRows = kTurnedVectors* lanes<Real>;

// The vectors of lanes number V... of a block; indices come as whole numbers in Reals.
template <class Weighting, class T, std::size_t... V>
void nearestOfTurned(const RealOf<T>* turned, std::size_t width, const StepRows<const T>& codevectors,
                     std::size_t count, const T* weights, RealOf<T>* indices, std::index_sequence<V...>) {
    using Real = RealOf<T>;
    using Lane = Vec<Real>;
    constexpr std::size_t w = lanes<Real>;
    Lane best[] = {Lane((void(V), std::numeric_limits<Real>::infinity()))...};
    Lane index[] = {Lane((void(V), Real(0)))...};
    const auto add = [&](auto& sums, const T* c, std::size_t k) {
        const Lane component(static_cast<Real>(c[k]));
        const Lane weight = Weighting::kVariance ? Lane(static_cast<Real>(weights[k])) : Lane();
        const Real* const column = turned + k * kTurnedRows<Real>;
        ((sums[V] = Weighting::plus(sums[V], Lane(load(column + V * w) - component), weight)), ...);
    };
    const auto finish = [&](const auto& sums, std::size_t j) {
        const auto choose = [&](const Lane& distance, Lane& least, Lane& at) {
            const auto nearer = isNearer(distance, least);
            stdx::where(nearer, least) = distance;
            stdx::where(nearer, at) = Lane(static_cast<Real>(j));
        };
        (choose(sums[V], best[V], index[V]), ...);
    };
    // Two codevectors at a time share the loads of the vectors' components.
    std::size_t j = 0;
    for (; j + 2 <= count; j += 2) {
        Lane one[] = {Lane((void(V), Real(0)))...};
        Lane two[] = {Lane((void(V), Real(0)))...};
        const T* const c = codevectors[static_cast<std::ptrdiff_t>(j)];
        const T* const d = codevectors[static_cast<std::ptrdiff_t>(j + 1)];
        for (std::size_t k = 0; k < width; ++k) {
            add(one, c, k);
            add(two, d, k);
        }
        finish(one, j);
        finish(two, j + 1);
    }
    if (j < count) {
        Lane one[] = {Lane((void(V), Real(0)))...};
        for (std::size_t k = 0; k < width; ++k) add(one, codevectors[static_cast<std::ptrdiff_t>(j)], k);
        finish(one, j);
    }
    (store(indices + V * w, index[V]), ...);
}

// Finds the nearest codevector of each of many vectors.  Needs memory for widths above 128.
template <class T, class Width>
class FullSearch {
  public:
    using Real = RealOf<T>;

    FullSearch(const Codebook<T>& codebook, Width width)
        : codevectors_(codevectorsOf(codebook)),
          count_(toSize(codebook.cdbkSize)),
          width_(width),
          weights_(codebook.weights),
          turned_(static_cast<int64_t>(std::size_t{width}) * static_cast<int64_t>(kTurnedRows<Real>)) {}

    bool failed() const { return turned_.failed(); }

    template <class Weighting>
    void run(const StepRows<const T>& rows, std::size_t height, Kel32s* indices) {
        std::size_t i = 0;
        if (fitsLanes<Weighting>()) {
            for (; height - i > lanes<Real> / 4; i += std::min(height - i, kTurnedRows<Real>)) {
                const StepRows<const T> some = rows.from(static_cast<std::ptrdiff_t>(i));
                block<Weighting>(some, std::min(height - i, kTurnedRows<Real>), indices + i);
            }
        }
        for (; i < height; ++i) {
            const Candidates<T> all = {rows[static_cast<std::ptrdiff_t>(i)], codevectors_, weights_};
            indices[i] = nearestOf<Weighting>(all, count_, width_);
        }
    }

  private:
    // Lanes of floats count to 2^24; lanes of doubles add integers up to 2^53 exactly.
    template <class Weighting>
    bool fitsLanes() const {
        if constexpr (std::is_same_v<T, Kel32f>) return count_ <= std::size_t{1} << 24;
        int64_t total = static_cast<int64_t>(std::size_t{width_});
        if (Weighting::kVariance) {
            total = 0;
            for (std::size_t k = 0; k < width_; ++k) total += static_cast<int64_t>(weights_[k]);
        }
        return total <= int64_t{1} << 21;
    }

    template <class Weighting>
    void block(const StepRows<const T>& rows, std::size_t n, Kel32s* indices) {
        transpose(rows, n, width_, turned_.data(), kTurnedRows<Real>);
        const std::size_t whole = roundUp(n, lanes<Real>);
        for (std::size_t k = 0; n < whole && k < width_; ++k) {
            std::fill(turned_.data() + k * kTurnedRows<Real> + n, turned_.data() + k * kTurnedRows<Real> + whole,
                      Real(0));
        }
        const auto search = [&](auto vectors) {
            nearestOfTurned<Weighting>(turned_.data(), width_, codevectors_, count_, weights_, found_, vectors);
        };
        switch ((n - 1) / lanes<Real>) {
            case 0:
                search(std::make_index_sequence<1>());
                break;
            case 1:
                search(std::make_index_sequence<2>());
                break;
            case 2:
                search(std::make_index_sequence<3>());
                break;
            default:
                search(std::make_index_sequence<4>());
        }
        for (std::size_t i = 0; i < n; ++i) indices[i] = static_cast<Kel32s>(found_[i]);
    }

    static constexpr std::size_t kStackWidth = 128;
    StepRows<const T> codevectors_;
    std::size_t count_;
    Width width_;
    const T* weights_;
    Real found_[kTurnedRows<Real>];
    Scratch<Real, kStackWidth * kTurnedRows<Real>> turned_;
};

}  // namespace kels
