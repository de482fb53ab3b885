// Grids of exhaustive codebooks of width 1 or 2.
//
// Each cell lists, by ascending index, the codevectors that can be nearest to a point of it: mostly no more than a
// vector holds, so that a search has no branch that depends on where its point lies.  Beyond the border, where cells
// would reach to infinity, all codevectors are candidates.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>

#include "core/layout.h"
#include "core/memory.h"
#include "core/simd/vec.h"
#include "training/codebook/codebook.h"
#include "training/codebook/grid/cells.h"
#include "training/codebook/grid/trial.h"
#include "training/codebook/rules.h"

namespace kels::codebook {

// The grid of a codebook.  A list is padded to whole vectors with codevectors that are infinitely far away; the
// positions of its codevectors stand together, axis by axis.
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

// The codevectors of a codebook, whose positions go to an array for each axis.
template <class T>
GridPoints pointsOf(const Codebook<T>& codebook, Kel32f* positions) {
    const auto codevectors = codevectorsOf(codebook);
    const auto count = toSize(codebook.cdbkSize);
    GridPoints points = {codebook.width, count, {}, {}, {}, {}};
    for (int a = 0; a < points.axes; ++a) {
        Kel32f* const p = positions + toSize(a) * count;
        for (Kel32s i = 0; i < codebook.cdbkSize; ++i) p[i] = static_cast<Kel32f>(codevectors[i][a]);
        points.positions[a] = p;
        points.weights[a] = static_cast<Kel32f>(codebook.weights[a]);
        points.least[a] = *std::min_element(p, p + count);
        points.greatest[a] = *std::max_element(p, p + count);
    }
    return points;
}

// The number of a cell's candidates and of those that pad their list; the candidates are also listed where there is
// one.
template <class T>
int64_t fillList(const GridPoints& points, const GridCells& cells, int cell, Kel32s* list) {
    return roundUp<int64_t>(points.fillCell(cells.quarters(cell), list), int64_t{lanes<RealOf<T>>});
}

// Fills the lists of all cells, and the positions of what they name.
template <class T>
void fillGrid(const GridPoints& points, const Codebook<T>& codebook, const Grid<T>& grid) {
    const auto codevectors = codevectorsOf(codebook);
    grid.begins[0] = 0;
    for (int cell = 0; cell < grid.cells.count(); ++cell) {
        Kel32s* const list = grid.candidates + grid.begins[cell];
        grid.begins[cell + 1] = grid.begins[cell] + static_cast<Kel32s>(fillList<T>(points, grid.cells, cell, list));
        for (int a = 0; a < points.axes; ++a) {
            const auto position = [&](Kel32s i) {
                return i < 0 ? std::numeric_limits<RealOf<T>>::infinity() : static_cast<RealOf<T>>(codevectors[i][a]);
            };
            std::transform(list, list + grid.length(cell), grid.positionsOn(a, cell), position);
        }
    }
}

// Gives a codebook the grid of some cells; false when memory is out.
template <class T>
bool buildCells(const GridPoints& points, const GridCells& cells, Codebook<T>& codebook) {
    int64_t total = 0;
    for (int cell = 0; cell < cells.count(); ++cell) total += fillList<T>(points, cells, cell, nullptr);
    if (total > std::numeric_limits<Kel32s>::max()) return true;  // more than can be counted: without a grid
    Grid<T>* place = nullptr;
    Grid<T> grid = {cells, nullptr, nullptr, nullptr};
    const auto arrange = [&](Layout& layout) {
        place = layout.take<Grid<T>>(1);
        grid.begins = layout.take<Kel32s>(cells.count() + 1);
        grid.candidates = layout.take<Kel32s>(total);
        grid.positions = layout.take<RealOf<T>>(points.axes * total, 64);
    };
    if (allocateArranged(arrange) == nullptr) return false;
    std::fill(grid.candidates, grid.candidates + total, -1);
    fillGrid(points, codebook, grid);
    *place = grid;
    codebook.grid = place;
    codebook.flags |= kelCdbkHasGrid;
    return true;
}

// Gives an exhaustive codebook its grid if one is worth it; false when memory is out.
template <class T>
bool buildGrid(Codebook<T>& codebook) {
    const auto count = toSize(codebook.cdbkSize);
    if (codebook.width > 2 || count <= 10) return true;
    Scratch<Kel32f, 512> positions(2 * static_cast<int64_t>(count));
    if (positions.failed()) return false;
    const GridPoints points = pointsOf<T>(codebook, positions.data());
    const GridTrial best = bestCells(points);
    if (!isWorthKeeping(best.cost, static_cast<Kel32f>(count) / (points.axes == 2 ? 10.0f : 5.0f))) return true;
    return buildCells<T>(points, finerCells(points, best.cells), codebook);
}

}  // namespace kels::codebook
