// The nearest of all codevectors for each of many vectors.
//
// The vectors are turned over, so that a lane belongs to one vector from the first component to the last codevector: no
// sum over lanes, and the order of the codevectors is kept in each lane.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <utility>

#include "core/memory.h"
#include "core/simd/transpose.h"
#include "core/simd/vec.h"
#include "training/codebook/distance.h"
#include "training/codebook/nearest.h"
#include "training/codebook/rules.h"

namespace kels::codebook {

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

// The place for a block of vectors turned over.  It takes memory for widths above 128.
template <class T>
class TurnedVectors : public Scratch<RealOf<T>, 128 * kTurnedRows<RealOf<T>>> {
  public:
    explicit TurnedVectors(int width)
        : Scratch<RealOf<T>, 128 * kTurnedRows<RealOf<T>>>(width * static_cast<int64_t>(kTurnedRows<RealOf<T>>)) {}
};

// Finds the nearest codevector of each of many vectors.
template <class T, class Width>
class FullSearch {
  public:
    using Real = RealOf<T>;

    FullSearch(const Codebook<T>& codebook, Width width, TurnedVectors<T>& turned)
        : codevectors_(codevectorsOf(codebook)),
          count_(toSize(codebook.cdbkSize)),
          width_(width),
          weights_(codebook.weights),
          turned_(turned.data()) {}

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
        transpose(rows, n, width_, turned_, kTurnedRows<Real>);
        const std::size_t whole = roundUp(n, lanes<Real>);
        for (std::size_t k = 0; n < whole && k < width_; ++k) {
            std::fill(turned_ + k * kTurnedRows<Real> + n, turned_ + k * kTurnedRows<Real> + whole, Real(0));
        }
        const auto search = [&](auto vectors) {
            nearestOfTurned<Weighting>(turned_, width_, codevectors_, count_, weights_, found_, vectors);
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
                search(std::make_index_sequence<kTurnedVectors>());
        }
        for (std::size_t i = 0; i < n; ++i) indices[i] = static_cast<Kel32s>(found_[i]);
    }

    StepRows<const T> codevectors_;
    std::size_t count_;
    Width width_;
    const T* weights_;
    Real* turned_;
    Real found_[kTurnedRows<Real>];
};

}  // namespace kels::codebook
