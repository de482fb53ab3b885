// Rows assigned to clusters: who belongs where, the clusters' centroids, and the rows' distances from them.
#pragma once

#include <algorithm>
#include <cstddef>

#include "core/layout.h"
#include "training/codebook/clustering/training_rows.h"
#include "training/codebook/distance.h"

namespace kels::codebook {

template <class T, class Weighting>
class Clusters {
  public:
    using Term = SinglePrecision<Weighting>;

    explicit Clusters(const TrainingRows<T>& rows) : rows_(rows) {}

    void arrange(Layout& layout, int64_t mostClusters) {
        const auto height = static_cast<int64_t>(rows_.count()), width = static_cast<int64_t>(rows_.width());
        owners_ = layout.take<Kel32s>(height);
        distances_ = layout.take<Kel32f>(height);
        centroids_ = layout.take<Kel32f>(mostClusters * width);
        sums_ = layout.take<Kel64f>(mostClusters * width);
        sizes_ = layout.take<Kel32s>(mostClusters);
        moved_ = layout.take<Kel8u>(mostClusters);
        stale_ = layout.take<Kel8u>(mostClusters);
        weights_ = layout.take<Kel32f>(width);
    }

    // All rows in one cluster about their mean.
    void startWithOne(const T* weights) {
        std::copy(weights, weights + rows_.width(), weights_);
        std::fill(owners_, owners_ + rows_.count(), 0);
        add();
        sizes_[0] = static_cast<Kel32s>(rows_.count());
        stale_[0] = true;
        updateCentroids();
        for (std::size_t r = 0; r < rows_.count(); ++r) distances_[r] = distance(rows_[r], 0);
    }

    // A further cluster, without members.  Returns its number.
    std::size_t add() {
        sizes_[count_] = 0;
        moved_[count_] = stale_[count_] = false;
        return count_++;
    }

    std::size_t count() const { return count_; }
    Kel32s size(std::size_t cluster) const { return sizes_[cluster]; }
    std::size_t owner(std::size_t row) const { return static_cast<std::size_t>(owners_[row]); }
    const Kel32s* owners() const { return owners_; }

    Kel32f* centroid(std::size_t cluster) { return centroids_ + cluster * rows_.width(); }
    const Kel32f* centroid(std::size_t cluster) const { return centroids_ + cluster * rows_.width(); }
    const Kel32f* weights() const { return weights_; }

    // Whether the centroid has moved in this pass.
    bool moved(std::size_t cluster) const { return moved_[cluster] != 0; }
    // After a centroid has been set by hand; the next pass puts it back to the mean of its members.
    void markMoved(std::size_t cluster) { moved_[cluster] = stale_[cluster] = true; }

    // The distance of a row from the centroid of its cluster, as it was found last.
    Kel32f& distance(std::size_t row) { return distances_[row]; }
    Kel32f distance(const Kel32f* vector, std::size_t cluster) const {
        return sumOf1<Term>(Item<Kel32f>{vector, centroid(cluster), weights_}, rows_.width());
    }
    Kel64f distortion() const {
        Kel64f sum = 0;
        for (std::size_t r = 0; r < rows_.count(); ++r) sum += distances_[r];
        return sum;
    }

    void reassign(std::size_t row, std::size_t to) {
        const std::size_t from = owner(row);
        owners_[row] = static_cast<Kel32s>(to);
        --sizes_[from];
        ++sizes_[to];
        stale_[from] = stale_[to] = true;
    }

    // Moves the centroids of the clusters whose members have changed to their means.
    void updateCentroids() {
        const std::size_t width = rows_.width();
        std::copy(stale_, stale_ + count_, moved_);
        std::fill(stale_, stale_ + count_, Kel8u(false));
        for (std::size_t c = 0; c < count_; ++c) {
            if (moved(c)) std::fill(sums_ + c * width, sums_ + (c + 1) * width, 0.0);
        }
        for (std::size_t r = 0; r < rows_.count(); ++r) {
            if (moved(owner(r))) rows_.addTo(sums_ + owner(r) * width, r);
        }
        for (std::size_t c = 0; c < count_; ++c) {
            if (!moved(c)) continue;
            for (std::size_t k = 0; k < width; ++k) {
                centroid(c)[k] = static_cast<Kel32f>(sums_[c * width + k] / sizes_[c]);
            }
        }
    }

    // Twice the largest distance of a member, for each cluster; zero for those that cannot be split.
    void measureSpreads(Kel32f* spreads) const {
        std::fill(spreads, spreads + count_, 0.0f);
        for (std::size_t r = 0; r < rows_.count(); ++r) {
            spreads[owner(r)] = std::max(spreads[owner(r)], 2 * distances_[r]);
        }
        for (std::size_t c = 0; c < count_; ++c) {
            if (sizes_[c] == 1) spreads[c] = 0;
        }
    }

  private:
    const TrainingRows<T>& rows_;
    std::size_t count_ = 0;
    // By row.
    Kel32s* owners_ = nullptr;
    Kel32f* distances_ = nullptr;
    // By cluster.  Stale: not the mean of the members any more.
    Kel32f* centroids_ = nullptr;
    Kel64f* sums_ = nullptr;
    Kel32s* sizes_ = nullptr;
    Kel8u *moved_ = nullptr, *stale_ = nullptr;
    Kel32f* weights_ = nullptr;
};

}  // namespace kels::codebook
