// How many cells the grid of a codebook has: as many as shorten the lists of candidates.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>

#include "core/check.h"
#include "core/simd/vec.h"
#include "training/codebook/grid/cells.h"
#include "training/codebook/rules.h"

namespace kels::codebook {

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

}  // namespace kels::codebook
