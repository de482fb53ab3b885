// A pass of the refinement: every row goes to the nearest centroid, as a comparison with all of them would tell.
//
// Few of those comparisons are made.  Where neither a row's centroid nor another one has moved, their order stands, and a
// bound for the nearest of the others tells whether it still does when the row's own one has moved.  By the triangle
// inequality a centroid cannot be nearer to a row than its own one is if the two centroids are twice as far apart as the
// row is from its own.  Where the best two come close, all centroids are compared after all.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

#include "core/layout.h"
#include "training/codebook/clustering/clusters.h"
#include "training/codebook/nearest.h"
#include "training/codebook/rules.h"

namespace kels::codebook {

template <class T, class Weighting>
class Refinement {
  public:
    Refinement(Clusters<T, Weighting>& clusters, const TrainingRows<T>& rows)
        : clusters_(clusters),
          rows_(rows),
          rest_(rows.width() % Term::kStep, rows.width() / Term::kStep * Term::kStep) {}

    void arrange(Layout& layout, int64_t mostClusters) {
        const auto height = static_cast<int64_t>(rows_.count());
        nearest_ = layout.take<Kel32s>(height);
        grouped_ = layout.take<Kel32s>(height);
        others_ = layout.take<Kel32f>(height);
        begins_ = layout.take<Kel32s>(mostClusters + 1);
        everyone_ = layout.take<Kel32s>(mostClusters);
        movers_ = layout.take<Kel32s>(mostClusters);
        radii_ = layout.take<Kel32f>(mostClusters);
        gaps_ = layout.take<Kel32f>(mostClusters);
        rivals_ = layout.take<Rival>(mostClusters);
        movedRivals_ = layout.take<Rival>(mostClusters);
    }

    void start() { std::fill(others_, others_ + rows_.count(), 0.0f); }

    void run() {
        groupRows();
        findNearest();
        assign();
    }

  private:
    using Term = typename Clusters<T, Weighting>::Term;

    struct Rival {
        Kel32f gap;  // between the centroids
        Kel32s cluster;
    };
    struct Rivals {
        const Rival* list;
        std::size_t count;
        Kel32f elsewhere;  // no member is nearer than that to a cluster that is not on the list
    };
    // A vector against the centroids of a list of clusters.
    struct ListedCentroids {
        const Clusters<T, Weighting>& clusters;
        const Kel32f* vector;
        const Kel32s* list;
        Item<Kel32f> operator[](std::size_t i) const {
            return {vector, clusters.centroid(static_cast<std::size_t>(list[i])), clusters.weights()};
        }
    };

    // Rows by cluster, ascending.
    void groupRows() {
        const std::size_t count = clusters_.count();
        begins_[0] = 0;
        for (std::size_t c = 0; c < count; ++c) begins_[c + 1] = begins_[c] + clusters_.size(c);
        for (std::size_t r = 0; r < rows_.count(); ++r)
            grouped_[begins_[clusters_.owner(r)]++] = static_cast<Kel32s>(r);
        for (std::size_t c = count; c > 0; --c) begins_[c] = begins_[c - 1];
        begins_[0] = 0;
    }

    // Sets nearest_ of all rows, and their distances to those from there.
    void findNearest() {
        std::copy(clusters_.owners(), clusters_.owners() + rows_.count(), nearest_);
        std::size_t movers = 0;
        for (std::size_t c = 0; c < clusters_.count(); ++c) {
            everyone_[c] = static_cast<Kel32s>(c);
            if (clusters_.moved(c)) movers_[movers++] = static_cast<Kel32s>(c);
        }
        for (std::size_t c = 0; c < clusters_.count(); ++c) {
            if (clusters_.moved(c)) measureRadius(c);
            const Rivals ofMoved = listRivals(c, movers_, movers, movedRivals_);
            Rivals ofAll = {nullptr, 0, 0};
            for (const Kel32s* r = grouped_ + begins_[c]; r < grouped_ + begins_[c + 1]; ++r) {
                const auto member = static_cast<std::size_t>(*r);
                if (!clusters_.moved(c) || closeTo(clusters_.distance(member)) < others_[member]) {
                    choose(member, c, ofMoved, others_[member]);
                } else {
                    if (ofAll.list == nullptr) ofAll = listRivals(c, everyone_, clusters_.count(), rivals_);
                    choose(member, c, ofAll, std::numeric_limits<Kel32f>::infinity());
                }
            }
        }
    }

    void measureRadius(std::size_t cluster) {
        radii_[cluster] = 0;
        for (const Kel32s* r = grouped_ + begins_[cluster]; r < grouped_ + begins_[cluster + 1]; ++r) {
            const auto member = static_cast<std::size_t>(*r);
            clusters_.distance(member) = clusters_.distance(rows_[member], cluster);
            radii_[cluster] = std::max(radii_[cluster], clusters_.distance(member));
        }
    }

    // A centroid that far from a row's own one, for a row at the given distance, is out of question by a clear margin.
    Kel32f outOfReach(Kel32f distance) const {
        return 4.01f * (1 + 4 * std::numeric_limits<Kel32f>::epsilon() * static_cast<Kel32f>(rows_.width())) * distance;
    }

    // Those of the clusters that a member of the cluster may be nearer to, nearest first.
    Rivals listRivals(std::size_t cluster, const Kel32s* clusters, std::size_t n, Rival* list) {
        const ListedCentroids listed = {clusters_, clusters_.centroid(cluster), clusters};
        sumsOf<Term>(listed, 0, n, rows_.width(), gaps_);
        const Kel32f limit = outOfReach(radii_[cluster]);
        std::size_t count = 0;
        for (std::size_t i = 0; i < n; ++i) {
            if (gaps_[i] >= limit || static_cast<std::size_t>(clusters[i]) == cluster) continue;
            list[count++] = {gaps_[i] > 0 ? gaps_[i] : 0, clusters[i]};  // NaN would put the sorting out of order
        }
        std::sort(list, list + count, [](const Rival& a, const Rival& b) { return a.gap < b.gap; });
        return {list, count, radii_[cluster]};  // the triangle inequality, for a member at the radius
    }

    // Sets a row's nearest centroid among its own one and some rivals.  `others`: no centroid besides those is nearer.
    void choose(std::size_t r, std::size_t own, const Rivals& rivals, Kel32f others) {
        others = std::min(others, rivals.elsewhere);
        others_[r] = others;
        if (rivals.count == 0) return;
        Kel32f& distance = clusters_.distance(r);
        const Kel32f limit = outOfReach(distance);
        const Kel32f* const vector = rows_[r];
        Kel32f best = distance, second = std::numeric_limits<Kel32f>::infinity();
        Kel32s at = static_cast<Kel32s>(own);
        std::size_t i = 0;
        for (; i < rivals.count && !(rivals.list[i].gap >= limit); i += 4) {
            const auto item = [&](std::size_t k) {
                const Rival& rival = rivals.list[std::min(i + k, rivals.count - 1)];
                const Kel32f* const centroid = clusters_.centroid(static_cast<std::size_t>(rival.cluster));
                return Item<Kel32f>{vector, centroid, clusters_.weights()};
            };
            const auto sums = sumsOf4<Term>(std::array{item(0), item(1), item(2), item(3)}, rows_.width(), rest_);
            for (std::size_t k = 0; k < std::min<std::size_t>(4, rivals.count - i); ++k) {
                if (sums[k] < best) {
                    second = best;
                    best = sums[k];
                    at = rivals.list[i + k].cluster;
                } else if (sums[k] < second) {
                    second = sums[k];
                }
            }
        }
        if (i < rivals.count) {
            const Kel32f beyond = std::sqrt(rivals.list[i].gap) - std::sqrt(distance);
            others = std::min(others, 0.999f * beyond * beyond);
        }
        others_[r] = std::min(others, second);
        if (i == 0) return;
        if (!(second > closeTo(best))) {  // the order of the centroids counts
            const StepRows<const Kel32f> all(clusters_.centroid(0), static_cast<int>(rows_.width()));
            at = nearestOf<Weighting>(Candidates<Kel32f>{vector, all, clusters_.weights()}, clusters_.count(),
                                      rows_.width());
            best = clusters_.distance(vector, static_cast<std::size_t>(at));
            others_[r] = 0;
        }
        nearest_[r] = at;
        distance = best;
    }

    // Moves rows to their nearest clusters, in order; the last member of a cluster stays.
    void assign() {
        for (std::size_t r = 0; r < rows_.count(); ++r) {
            const std::size_t from = clusters_.owner(r), to = static_cast<std::size_t>(nearest_[r]);
            if (from == to) continue;
            if (clusters_.size(from) < 2) {
                clusters_.distance(r) = clusters_.distance(rows_[r], from);
                others_[r] = 0;
                continue;
            }
            clusters_.reassign(r, to);
            radii_[to] = std::max(radii_[to], clusters_.distance(r));
        }
    }

    Clusters<T, Weighting>& clusters_;
    const TrainingRows<T>& rows_;
    PartVector rest_;
    // By row: the cluster it is found nearest to, rows by cluster, a lower bound of the distances to all other clusters
    // but such as have moved since.
    Kel32s *nearest_ = nullptr, *grouped_ = nullptr;
    Kel32f* others_ = nullptr;
    // By cluster: where its rows begin, and an upper bound of their distances.
    Kel32s* begins_ = nullptr;
    Kel32f* radii_ = nullptr;
    // Lists of clusters.
    Kel32s *everyone_ = nullptr, *movers_ = nullptr;
    Kel32f* gaps_ = nullptr;
    Rival *rivals_ = nullptr, *movedRivals_ = nullptr;
};

}  // namespace kels::codebook
