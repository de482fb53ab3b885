// Rows assigned to clusters: who belongs where, the clusters' centroids, and the rows' distances from them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <span>

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
        grouped_ = layout.take<Kel32s>(height);
        begins_ = layout.take<Kel32s>(mostClusters + 1);
        sizes_ = layout.take<Kel32s>(mostClusters);
        centroids_ = layout.take<Kel32f>(mostClusters * width);
        moved_ = layout.take<Kel8u>(mostClusters);
        stale_ = layout.take<Kel8u>(mostClusters);
        weights_ = layout.take<Kel32f>(width);
        sums_ = layout.take<Kel64f>(width);
    }

    // All rows in one cluster about their mean.
    void startWithOne(const T* weights) {
        std::copy(weights, weights + rows_.width(), weights_);
        std::fill(owners_, owners_ + rows_.count(), 0);
        sizes_[add()] = static_cast<Kel32s>(rows_.count());
        stale_[0] = true;
        moveCentroids();
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

    void reassign(std::size_t row, std::size_t to) {
        const std::size_t from = owner(row);
        owners_[row] = static_cast<Kel32s>(to);
        --sizes_[from];
        ++sizes_[to];
        stale_[from] = stale_[to] = true;
    }

    // The rows of a cluster, ascending, as they were when group() was called.
    std::span<const Kel32s> members(std::size_t cluster) const {
        return {grouped_ + begins_[cluster], grouped_ + begins_[cluster + 1]};
    }
    // use(row) for each of them, with the rows behind it on their way from memory.
    template <class Use>
    void forEachMember(std::size_t cluster, Use use) const {
        constexpr std::size_t kAhead = 8;
        const std::span<const Kel32s> rows = members(cluster);
        for (std::size_t i = 0; i < rows.size(); ++i) {
            if (i + kAhead < rows.size()) rows_.prefetch(static_cast<std::size_t>(rows[i + kAhead]));
            use(static_cast<std::size_t>(rows[i]));
        }
    }
    void group() {
        begins_[0] = 0;
        for (std::size_t c = 0; c < count_; ++c) begins_[c + 1] = begins_[c] + sizes_[c];
        for (std::size_t r = 0; r < rows_.count(); ++r) grouped_[begins_[owner(r)]++] = static_cast<Kel32s>(r);
        for (std::size_t c = count_; c > 0; --c) begins_[c] = begins_[c - 1];
        begins_[0] = 0;
    }

    Kel32f* centroid(std::size_t cluster) { return centroids_ + cluster * rows_.width(); }
    const Kel32f* centroid(std::size_t cluster) const { return centroids_ + cluster * rows_.width(); }
    const Kel32f* weights() const { return weights_; }

    // Whether the centroid has moved in this pass.
    bool moved(std::size_t cluster) const { return moved_[cluster] != 0; }

    // A centroid has been set by hand.  The next pass puts it back to the mean of its members.
    void markMoved(std::size_t cluster) { moved_[cluster] = stale_[cluster] = true; }

    // Moves the centroids of the clusters whose members have changed to their means.
    void moveCentroids() {
        group();
        std::copy(stale_, stale_ + count_, moved_);
        std::fill(stale_, stale_ + count_, Kel8u(false));
        for (std::size_t c = 0; c < count_; ++c) {
            if (moved(c)) moveToMean(c);
        }
    }

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
    void moveToMean(std::size_t cluster) {
        const std::size_t width = rows_.width();
        Kel32f* const mean = centroid(cluster);
        std::fill(sums_, sums_ + width, 0.0);
        forEachMember(cluster, [&](std::size_t row) { rows_.addTo(sums_, row); });
        for (std::size_t k = 0; k < width; ++k) mean[k] = static_cast<Kel32f>(sums_[k] / sizes_[cluster]);
    }

    const TrainingRows<T>& rows_;
    std::size_t count_ = 0;
    // By row: its cluster, its distance from the centroid there; the rows of cluster 0, of cluster 1, and so on.
    Kel32s* owners_ = nullptr;
    Kel32f* distances_ = nullptr;
    Kel32s* grouped_ = nullptr;
    // By cluster.  Stale: not the mean of the members any more.
    Kel32s *begins_ = nullptr, *sizes_ = nullptr;
    Kel32f* centroids_ = nullptr;
    Kel8u *moved_ = nullptr, *stale_ = nullptr;
    // By component.
    Kel32f* weights_ = nullptr;
    Kel64f* sums_ = nullptr;
};

}  // namespace kels::codebook
