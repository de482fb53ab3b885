// Uniform cells over a line or a plane, and what the points of a cell are at most and at least away from.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

#include "core/simd/vec.h"
#include "kels/types.h"

namespace kels::codebook {

// The distances of the nearest and the farthest points of something.
template <class V>
struct Reach {
    V least, most;
};

struct GridSpan {
    Kel32f low, high;

    template <class V>
    Reach<V> reachFrom(const V& position) const {
        const V below = V(low) - position, above = position - V(high);
        return {greaterOf(greaterOf(below, above), V(0.0f)), greaterOf(magnitude(below), magnitude(above))};
    }
    Kel32f middle() const { return low / 2 + high / 2; }
    GridSpan lowerHalf() const { return {low, middle()}; }
    GridSpan upperHalf() const { return {middle(), high}; }
};

using GridBox = std::array<GridSpan, 2>;

class GridAxis {
  public:
    GridAxis() = default;
    // Equal cells over 1.1 times the range of positions, counted from its least end or, downward, from its greatest.
    GridAxis(Kel32f least, Kel32f greatest, int cells, bool downward)
        : cells_(cells),
          sign_(downward ? -1.0f : 1.0f),
          extent_(std::fabs(greatest - least)),
          origin_(1.1f * (downward ? greatest : least)),
          size_(1.1f * extent_ / static_cast<Kel32f>(cells)),
          scale_(sign_ / size_) {}

    int cells() const { return cells_; }
    bool isUsable() const { return extent_ >= 1e-5f && std::isfinite(origin_) && std::isfinite(1.1f * extent_); }

    // -1 outside.
    int cellOf(Kel32f position) const {
        const Kel32f cell = (position - origin_) * scale_;
        return cell >= 0 && cell < static_cast<Kel32f>(cells_) ? static_cast<int>(cell) : -1;
    }

    // Whatever cellOf puts into a cell lies in its span, rounding included.
    GridSpan span(int cell) const {
        const Kel32f margin = 16 * std::numeric_limits<Kel32f>::epsilon() * (std::fabs(origin_) + 2 * extent_);
        const Kel32f begin = origin_ + sign_ * static_cast<Kel32f>(cell) * size_;
        const Kel32f end = origin_ + sign_ * static_cast<Kel32f>(cell + 1) * size_;
        return {std::min(begin, end) - margin, std::max(begin, end) + margin};
    }

  private:
    int cells_ = 1;
    Kel32f sign_ = 1, extent_ = 0, origin_ = 0, size_ = 0, scale_ = 0;
};

// Cells stand in rows along the first axis; with one axis there is one row.
struct GridCells {
    int axes;
    GridAxis axis[2];

    int count() const { return axis[0].cells() * axis[1].cells(); }

    // -1 outside.
    template <class T>
    [[gnu::always_inline]] int cellOf(const T* vector) const {
        const int column = axis[0].cellOf(static_cast<Kel32f>(vector[0]));
        if (axes == 1 || column < 0) return column;
        const int row = axis[1].cellOf(static_cast<Kel32f>(vector[1]));
        return row < 0 ? -1 : row * axis[0].cells() + column;
    }

    GridBox box(int cell) const { return {axis[0].span(cell % axis[0].cells()), axis[1].span(cell / axis[0].cells())}; }
    std::array<GridBox, 4> quarters(int cell) const {
        const auto [x, y] = box(cell);
        return {GridBox{x.lowerHalf(), y.lowerHalf()}, GridBox{x.upperHalf(), y.lowerHalf()},
                GridBox{x.lowerHalf(), y.upperHalf()}, GridBox{x.upperHalf(), y.upperHalf()}};
    }
};

}  // namespace kels::codebook
