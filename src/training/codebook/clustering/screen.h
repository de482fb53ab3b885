// Rows of a cluster against other centroids, many at a time: how close a row may be to any of them.
//
// With a row and another centroid both seen from the cluster's own centroid, as x and c, their squared distance is
// |x|^2 + |c|^2 - 2 x c.  The first two are known, so that a product is enough, which needs fewer operations than a
// distance and no sum over lanes: a lane belongs to one centroid.  Products are rounded otherwise than the distances
// that decide; margins make up for it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <utility>

#include "core/layout.h"
#include "core/memory.h"
#include "core/simd/vec.h"
#include "kels/types.h"

namespace kels::codebook {

class Screen {
  public:
    static constexpr std::size_t kRows = 4;  // screened at a time

    explicit Screen(std::size_t width)
        : width_(width), error_(std::numeric_limits<Kel32f>::epsilon() * static_cast<Kel32f>(width + 8)) {}

    void arrange(Layout& layout, int64_t mostCentroids) {
        const int64_t most = roundUp(mostCentroids, static_cast<int64_t>(kPanel));
        products_ = layout.take<Kel32f>(most * static_cast<int64_t>(width_));
        halves_ = layout.take<Kel32f>(most);
        rows_ = layout.take<Kel32f>(static_cast<int64_t>(kRows * width_));
    }

    // Squared distances that products can stand for without overflow.
    static bool bears(Kel32f squared) { return squared < 1e30f; }

    void clear() { count_ = 0; }

    // A further centroid, at a squared distance of `gap` from the cluster's own one.
    template <class Weighting>
    void add(const Kel32f* centroid, const Kel32f* own, const Kel32f* weights, Kel32f gap) {
        const std::size_t lane = count_ % kPanel;
        Kel32f* const panel = products_ + (count_ - lane) * width_;
        if (lane == 0) {
            std::fill(panel, panel + kPanel * width_, 0.0f);
            std::fill(halves_ + count_, halves_ + count_ + kPanel, std::numeric_limits<Kel32f>::infinity());
        }
        for (std::size_t k = 0; k < width_; ++k) {
            const Kel32f d = centroid[k] - own[k];
            panel[k * kPanel + lane] = Weighting::kVariance ? d * weights[k] : d;
        }
        halves_[count_++] = gap / 2 * (1 - 4 * error_);
    }

    // The place of one of the rows that are screened next.
    void setRow(std::size_t i, const Kel32f* row, const Kel32f* own) {
        Kel32f* const x = rows_ + i * width_;
        for (std::size_t k = 0; k < width_; ++k) x[k] = row[k] - own[k];
    }

    // For each row the largest x c - |c|^2 / 2 among the first `count` centroids, and perhaps a few more.
    void run(std::size_t count, Kel32f (&most)[kRows]) const { run(count, most, std::make_index_sequence<kRows>()); }

    // Whether a row at a squared distance from its own centroid is certainly not close to any of the centroids.
    bool isClear(Kel32f most, Kel32f distance) const {
        return most < -(distance * (1e-4f + 2 * error_) + kUnderflow * static_cast<Kel32f>(width_));
    }
    // Then it is at least that far away from all of them, squared.
    Kel32f atLeast(Kel32f most, Kel32f distance) const {
        return (distance * (1 - 2 * error_) - 2 * most) * (1 - 2 * error_);
    }

  private:
    using V = Vec<Kel32f>;
    static constexpr std::size_t kVectors = lanes<Kel32f> > 8 ? 1 : 2;
    static constexpr std::size_t kPanel = kVectors * lanes<Kel32f>;
    static constexpr Kel32f kUnderflow = 1e-36f;  // more than what a product can lose there

    template <std::size_t... R>
    void run(std::size_t count, Kel32f (&most)[kRows], std::index_sequence<R...>) const {
        constexpr std::size_t w = lanes<Kel32f>, last = kPanel - w;
        V mosts[] = {V((void(R), -std::numeric_limits<Kel32f>::infinity()))...};
        for (std::size_t first = 0; first < count; first += kPanel) {
            const Kel32f* const panel = products_ + first * width_;
            V a[] = {V((void(R), 0.0f))...}, b[] = {V((void(R), 0.0f))...};
            for (std::size_t k = 0; k < width_; ++k) {
                const V c = load(panel + k * kPanel), d = load(panel + k * kPanel + last);
                ((a[R] = mulAdd(V(rows_[R * width_ + k]), c, a[R])), ...);
                if constexpr (kVectors > 1) ((b[R] = mulAdd(V(rows_[R * width_ + k]), d, b[R])), ...);
            }
            const V half = load(halves_ + first), otherHalf = load(halves_ + first + last);
            ((mosts[R] = greaterOf(V(a[R] - half), mosts[R])), ...);
            if constexpr (kVectors > 1) ((mosts[R] = greaterOf(V(b[R] - otherHalf), mosts[R])), ...);
        }
        ((most[R] = stdx::hmax(mosts[R])), ...);
    }

    std::size_t width_;
    Kel32f error_;  // relative, of a sum of as many terms
    std::size_t count_ = 0;
    Kel32f* products_ = nullptr;  // panels: of some centroids side by side, one component after the other
    Kel32f* halves_ = nullptr;    // of the squared distances from the own one
    Kel32f* rows_ = nullptr;
};

}  // namespace kels::codebook
