// Search grids: uniform cells over the codevectors of an exhaustive codebook of width 1 or 2.  Each cell lists, by
// ascending index, those that can be nearest to a point of it: mostly no more than a vector holds, so that a search has
// no branch that depends on where its point lies.  Beyond the border, where cells would reach to infinity, all
// codevectors are candidates.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

#include "core/memory.h"
#include "core/simd/vec.h"
#include "training/codebook/distance.h"

namespace kels {

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

// The codevectors, one array an axis.
struct GridPoints {
    int axes;
    std::size_t count;
    const Kel32f* positions[2];
    Kel32f weights[2];
    Kel32f least[2], greatest[2];

    GridAxis axis(int a, int cells) const { return GridAxis(least[a], greatest[a], cells, a == 1); }

    // The number of candidates of a cell that consists of some boxes; they are also listed where there is a list.  The
    // smaller the boxes, the fewer candidates are in vain.
    template <std::size_t N>
    Kel32s fillCell(const std::array<GridBox, N>& boxes, Kel32s* list) const {
        constexpr std::size_t w = lanes<Kel32f>;
        std::array<Kel32f, N> bounds;
        std::transform(boxes.begin(), boxes.end(), bounds.begin(), [&](const GridBox& box) { return boundOf(box); });
        Kel32s number = 0;
        for (std::size_t i = 0; i < count; i += w) {
            typename Vec<Kel32f>::mask_type possible(false);
            for (std::size_t b = 0; b < N; ++b) {
                possible = possible || canBeNearest(reachOf(boxes[b], i).least, Vec<Kel32f>(bounds[b]));
            }
            if (stdx::none_of(possible)) continue;
            for (std::size_t k = 0; k < w && i + k < count; ++k) {
                if (!possible[k]) continue;
                if (list != nullptr) list[number] = static_cast<Kel32s>(i + k);
                ++number;
            }
        }
        return number;
    }

  private:
    // Some codevector is at most that far away from every point of a box.
    Kel32f boundOf(const GridBox& box) const {
        Vec<Kel32f> mosts(std::numeric_limits<Kel32f>::infinity());
        for (std::size_t i = 0; i < count; i += lanes<Kel32f>) mosts = lesserOf(reachOf(box, i).most, mosts);
        return stdx::hmin(mosts);
    }

    // From codevectors i, i + 1, ... ; behind the last one they are infinitely far away.
    Reach<Vec<Kel32f>> reachOf(const GridBox& box, std::size_t i) const {
        constexpr std::size_t w = lanes<Kel32f>;
        Reach<Vec<Kel32f>> sum = {Vec<Kel32f>(0.0f), Vec<Kel32f>(0.0f)};
        for (int a = 0; a < axes; ++a) {
            const Kel32f* const p = positions[a] + i;
            const Vec<Kel32f> position =
                count - i < w ? loadPart(p, count - i, std::numeric_limits<Kel32f>::infinity()) : load(p);
            const Reach<Vec<Kel32f>> reach = box[toSize(a)].reachFrom(position);
            sum.least = sum.least + weights[a] * reach.least * reach.least;
            sum.most = sum.most + weights[a] * reach.most * reach.most;
        }
        return sum;
    }
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

// Cells under trial: what they cost is the mean length of their lists.
struct GridTrial {
    GridCells cells;
    Kel32f cost = std::numeric_limits<Kel32f>::max();

    GridTrial(const GridPoints& points, int columns, int rows) : cells{points.axes, {}} {
        cells.axis[0] = points.axis(0, columns);
        if (points.axes == 2) cells.axis[1] = points.axis(1, rows);
        if (!cells.axis[0].isUsable() || (points.axes == 2 && !cells.axis[1].isUsable())) return;
        int64_t total = 0;
        for (int cell = 0; cell < cells.count(); ++cell) {
            total += points.fillCell(std::array<GridBox, 1>{cells.box(cell)}, nullptr);
        }
        cost = static_cast<Kel32f>(total) / static_cast<Kel32f>(cells.count());
    }
};

inline GridTrial bestCells(const GridPoints& points) {
    GridTrial best(points, 4, points.axes == 2 ? 4 : 1);
    for (;;) {
        const int columns = best.cells.axis[0].cells(), rows = best.cells.axis[1].cells();
        GridTrial next(points, columns + 1, rows);
        if (points.axes == 2) {
            const GridTrial other(points, columns, rows + 1);
            if (isNearer(other.cost, next.cost)) next = other;
        }
        if (!isWorthMore(next.cost, best.cost)) return best;
        best = next;
    }
}

// The cells to be searched: those under trial cut into nine.  Whether a grid is worth it is settled by the trial alone.
inline GridCells finerCells(const GridPoints& points, const GridCells& tried) {
    GridCells cells = tried;
    for (int a = 0; a < points.axes; ++a) cells.axis[a] = points.axis(a, 3 * tried.axis[a].cells());
    return cells;
}

// The grid of a codebook.  A list is padded to whole vectors with codevectors that are infinitely far away; the positions
// of its codevectors stand together, axis by axis.
template <class T>
struct Grid {
    using Real = RealOf<T>;
    GridCells cells;
    Kel32s *begins, *candidates;  // where the lists of cells 0, 1, ... begin, and where the last one ends
    Real* positions;              // of the list that begins at i: from axes * i on

    Kel32s* list(int cell) const { return candidates + begins[cell]; }
    std::size_t length(int cell) const { return toSize(begins[cell + 1] - begins[cell]); }
    Real* positionsOn(int axis, int cell) const {
        return positions + static_cast<std::size_t>(cells.axes) * toSize(begins[cell]) + toSize(axis) * length(cell);
    }
};

// Gives an exhaustive codebook its grid if one is worth it; false when memory is out.
template <class T>
bool buildGrid(Codebook<T>& codebook) {
    const auto count = toSize(codebook.cdbkSize);
    if (codebook.width > 2 || count <= 10) return true;
    GridPoints points = {codebook.width, count, {}, {}, {}, {}};
    Scratch<Kel32f, 512> positions(2 * static_cast<int64_t>(count));
    if (positions.failed()) return false;
    for (int a = 0; a < points.axes; ++a) {
        Kel32f* const p = positions.data() + toSize(a) * count;
        for (std::size_t i = 0; i < count; ++i) {
            p[i] = static_cast<Kel32f>(codevectorsOf(codebook)[static_cast<std::ptrdiff_t>(i)][a]);
        }
        points.positions[a] = p;
        points.weights[a] = static_cast<Kel32f>(codebook.weights[a]);
        points.least[a] = *std::min_element(p, p + count);
        points.greatest[a] = *std::max_element(p, p + count);
    }
    const GridTrial best = bestCells(points);
    if (!isWorthKeeping(best.cost, static_cast<Kel32f>(count) / (points.axes == 2 ? 10.0f : 5.0f))) return true;

    const GridCells searched = finerCells(points, best.cells);
    const int cells = searched.count();
    const auto padded = [&](int cell, Kel32s* list) {
        return roundUp<int64_t>(points.fillCell(searched.quarters(cell), list), int64_t{lanes<RealOf<T>>});
    };
    int64_t total = 0;
    for (int cell = 0; cell < cells; ++cell) total += padded(cell, nullptr);
    if (total > std::numeric_limits<Kel32s>::max()) return true;  // more than can be counted
    Grid<T> grid = {searched, nullptr, nullptr, nullptr};
    const auto layOut = [&](Layout layout) {
        codebook.grid = layout.take<Grid<T>>(1);
        grid.begins = layout.take<Kel32s>(cells + 1);
        grid.candidates = layout.take<Kel32s>(total);
        grid.positions = layout.take<RealOf<T>>(points.axes * total, 64);
        return layout.bytes();
    };
    void* const block = allocate<Kel8u>(layOut(Layout()));
    if (block == nullptr) return false;
    layOut(Layout(block));
    std::fill(grid.candidates, grid.candidates + total, -1);
    grid.begins[0] = 0;
    for (int cell = 0; cell < cells; ++cell) {
        grid.begins[cell + 1] = grid.begins[cell] + static_cast<Kel32s>(padded(cell, grid.list(cell)));
        for (int a = 0; a < points.axes; ++a) {
            std::transform(grid.list(cell), grid.list(cell) + grid.length(cell), grid.positionsOn(a, cell),
                           [&](Kel32s i) {
                               return i < 0 ? std::numeric_limits<RealOf<T>>::infinity()
                                            : static_cast<RealOf<T>>(codevectorsOf(codebook)[i][a]);
                           });
        }
    }
    *static_cast<Grid<T>*>(codebook.grid) = grid;
    codebook.flags |= kelCdbkHasGrid;
    return true;
}

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

}  // namespace kels
