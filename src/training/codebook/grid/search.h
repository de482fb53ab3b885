// The search in a codebook's grid.
#pragma once

#include <cstddef>
#include <limits>

#include "core/simd/vec.h"
#include "training/codebook/distance.h"
#include "training/codebook/grid/build.h"
#include "training/codebook/nearest.h"
#include "training/codebook/rules.h"

namespace kels::codebook {

// Finds nearest codevectors, for the width of the grid's axes.
template <class Weighting, std::size_t Width, class T>
class GridSearch {
  public:
    explicit GridSearch(const Codebook<T>& codebook)
        : grid_(*static_cast<const Grid<T>*>(codebook.grid)),
          codevectors_(codevectorsOf(codebook)),
          count_(toSize(codebook.cdbkSize)),
          weights_(codebook.weights) {}

    [[gnu::always_inline]] Kel32s nearest(const T* vector) const {
        const int cell = grid_.cells.cellOf(vector);
        if (cell < 0) return nearestOf<Weighting>(Candidates<T>{vector, codevectors_, weights_}, count_, Width);
        const std::size_t length = grid_.length(cell);
        if (length > kMostPlaces) return nearestInOrder(vector, cell);
        // By lane: the least distance, where it stands, and the least of the others.
        Vec<Real> least(kInfinity), at(Real(0)), others(kInfinity);
        for (std::size_t i = 0; i < length; i += w) {
            const Vec<Real> distance = distances(vector, cell, i);
            others = lesserOf(greaterOf(distance, least), others);
            stdx::where(distance < least, at) = Vec<Real>(static_cast<Real>(i));
            least = lesserOf(distance, least);
        }
        const Vec<Real> limit(closeTo(stdx::hmin(least)));
        const auto close = least <= limit;
        if (stdx::popcount(close) != 1 || stdx::any_of(others <= limit)) return nearestInOrder(vector, cell);
        const auto lane = static_cast<std::size_t>(stdx::find_first_set(close));
        return grid_.list(cell)[static_cast<std::size_t>(Real(at[lane])) + lane];
    }

  private:
    using Real = RealOf<T>;
    static constexpr std::size_t w = lanes<Real>;
    static constexpr Real kInfinity = std::numeric_limits<Real>::infinity();
    static constexpr std::size_t kMostPlaces = std::size_t{1} << 24;  // in a list, that single precision tells apart

    // From candidates i, i + 1, ... of a cell.
    [[gnu::always_inline]] Vec<Real> distances(const T* vector, int cell, std::size_t i) const {
        Vec<Real> sum(Real(0));
        for (std::size_t k = 0; k < Width; ++k) {
            const Vec<Real> position = load(grid_.positionsOn(static_cast<int>(k), cell) + i);
            const Vec<Real> weight(Weighting::kVariance ? static_cast<Real>(weights_[k]) : Real(1));
            sum = Weighting::plus(sum, Vec<Real>(Vec<Real>(static_cast<Real>(vector[k])) - position), weight);
        }
        return sum;
    }

    // Where several come close, the order decides.
    [[gnu::noinline]] Kel32s nearestInOrder(const T* vector, int cell) const {
        Nearest<Real> nearest;
        for (std::size_t i = 0; i < grid_.length(cell); i += w) {
            const Vec<Real> some = distances(vector, cell, i);
            for (std::size_t k = 0; k < w; ++k) nearest.take(some[k], static_cast<Kel32s>(i + k));
        }
        return grid_.list(cell)[nearest.index];
    }

    const Grid<T> grid_;
    StepRows<const T> codevectors_;
    std::size_t count_;
    const T* weights_;
};

}  // namespace kels::codebook
