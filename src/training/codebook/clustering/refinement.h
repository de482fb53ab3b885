// A pass of the refinement: every row goes to the nearest centroid, as a comparison with all of them would tell.
//
// Few of those comparisons are made.  Where neither a row's centroid nor another one has moved, their order stands,
// and a bound for the nearest of the others tells whether it still does when the row's own one has moved.  By the
// triangle inequality a centroid cannot be nearer to a row than its own one is if the two centroids are twice as far
// apart as the row is from its own.  Of the others, a screen tells most rows that none of them comes close.  Where the
// best two come close, all centroids are compared after all.  (Bounds of this kind: C. Elkan, "Using the triangle
// inequality to accelerate k-means", ICML 2003; G. Hamerly, "Making k-means even faster", SDM 2010.)
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <utility>

#include "core/layout.h"
#include "training/codebook/clustering/clusters.h"
#include "training/codebook/clustering/screen.h"
#include "training/codebook/nearest.h"
#include "training/codebook/rules.h"

namespace kels::codebook {

template <class T, class Weighting>
class Refinement {
  public:
    Refinement(Clusters<T, Weighting>& clusters, const TrainingRows<T>& rows)
        : clusters_(clusters),
          rows_(rows),
          rest_(rows.width() % Term::kStep, rows.width() / Term::kStep * Term::kStep),
          moved_(rows.width()),
          all_(rows.width()) {}

    void arrange(Layout& layout, int64_t mostClusters) {
        const auto height = static_cast<int64_t>(rows_.count());
        others_ = layout.take<Kel32f>(height);
        changes_ = layout.take<Change>(height);
        radii_ = layout.take<Kel32f>(mostClusters);
        movers_ = layout.take<Kel32s>(mostClusters);
        everyone_ = layout.take<Kel32s>(mostClusters);
        gaps_ = layout.take<Kel32f>(mostClusters);
        moved_.arrange(layout, mostClusters);
        all_.arrange(layout, mostClusters);
    }

    void start() {
        std::fill(others_, others_ + rows_.count(), 0.0f);
        radii_[0] = 0;
    }

    // Cluster `to` is split off from another one: its members are as far away at most.
    void addBeside(std::size_t from, std::size_t to) { radii_[to] = radii_[from]; }

    void run() {
        changeCount_ = moverCount_ = 0;
        for (std::size_t c = 0; c < clusters_.count(); ++c) {
            everyone_[c] = static_cast<Kel32s>(c);
            if (clusters_.moved(c)) movers_[moverCount_++] = static_cast<Kel32s>(c);
        }
        for (std::size_t c = 0; c < clusters_.count(); ++c) refine(c);
        applyChanges();
    }

  private:
    using Term = typename Clusters<T, Weighting>::Term;
    static constexpr Kel32f kInfinity = std::numeric_limits<Kel32f>::infinity();

    struct Change {
        Kel32s row, to;
    };
    struct Rival {
        Kel32f gap;  // between the centroids, squared
        Kel32s cluster;
    };
    // The clusters that members of a cluster may be nearer to, nearest first, and the rows that wait to be screened.
    struct Rivals {
        explicit Rivals(std::size_t width) : screen(width) {}
        void arrange(Layout& layout, int64_t mostClusters) {
            list = layout.take<Rival>(mostClusters);
            screen.arrange(layout, mostClusters);
        }
        // How many of them are nearer to the cluster than a limit.
        std::size_t within(Kel32f limit) const {
            const auto isWithin = [limit](const Rival& rival) { return rival.gap < limit; };
            return static_cast<std::size_t>(std::partition_point(list, list + count, isWithin) - list);
        }

        Rival* list = nullptr;
        std::size_t count = 0;
        bool known = false;  // the list is that of the cluster at hand

        Screen screen;
        bool canScreen = false;
        std::size_t waiting = 0;
        std::size_t rows[Screen::kRows];
        Kel32f bounds[Screen::kRows];  // of their squared distances to all centroids that are not on the list
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

    // Finds the nearest centroid of every member.
    void refine(std::size_t cluster) {
        // A member was at least that far away from what was out of its reach.
        const Kel32f elsewhere = radii_[cluster];
        const bool moved = clusters_.moved(cluster);
        if (moved) measureMembers(cluster);
        listRivals(cluster, movers_, moverCount_, moved_);
        if (!moved && moved_.count == 0) return;
        all_.known = false;
        clusters_.forEachMember(cluster, [&](std::size_t row) {
            const Kel32f bound = moved ? std::min(others_[row], elsewhere) : others_[row];
            if (!moved || closeTo(clusters_.distance(row)) < bound) {
                consider(row, cluster, moved_, bound);
            } else {
                if (!all_.known) listRivals(cluster, everyone_, clusters_.count(), all_);
                consider(row, cluster, all_, kInfinity);
            }
        });
        screen(cluster, moved_);
        if (all_.known) screen(cluster, all_);
    }

    void measureMembers(std::size_t cluster) {
        radii_[cluster] = 0;
        clusters_.forEachMember(cluster, [&](std::size_t row) {
            clusters_.distance(row) = clusters_.distance(rows_[row], cluster);
            radii_[cluster] = std::max(radii_[cluster], clusters_.distance(row));
        });
    }

    // A centroid that far from a row's own one, for a row at the given distance, is out of question by a clear margin.
    Kel32f outOfReach(Kel32f distance) const {
        return 4.01f * (1 + 4 * std::numeric_limits<Kel32f>::epsilon() * static_cast<Kel32f>(rows_.width())) * distance;
    }

    // Those of some clusters that a member of the cluster may be nearer to.
    void listRivals(std::size_t cluster, const Kel32s* some, std::size_t n, Rivals& rivals) {
        const ListedCentroids listed = {clusters_, clusters_.centroid(cluster), some};
        sumsOf<Term>(listed, 0, n, rows_.width(), gaps_);
        const Kel32f limit = outOfReach(radii_[cluster]);
        rivals.count = rivals.waiting = 0;
        rivals.known = true;
        rivals.canScreen = Screen::bears(limit);
        for (std::size_t i = 0; i < n; ++i) {
            if (gaps_[i] >= limit || static_cast<std::size_t>(some[i]) == cluster) continue;
            if (!(gaps_[i] >= 0)) rivals.canScreen = false;  // NaN, which could not be put in order either
            rivals.list[rivals.count++] = {gaps_[i] > 0 ? gaps_[i] : 0, some[i]};
        }
        std::sort(rivals.list, rivals.list + rivals.count,
                  [](const Rival& a, const Rival& b) { return a.gap < b.gap; });
        rivals.screen.clear();
        for (std::size_t i = 0; rivals.canScreen && i < rivals.count; ++i) {
            const Kel32f* const centroid = clusters_.centroid(static_cast<std::size_t>(rivals.list[i].cluster));
            rivals.screen.template add<Weighting>(centroid, clusters_.centroid(cluster), clusters_.weights(),
                                                  rivals.list[i].gap);
        }
    }

    // Lets a row wait for the next screening where some rival is in its reach.
    void consider(std::size_t row, std::size_t own, Rivals& rivals, Kel32f bound) {
        const Kel32f distance = clusters_.distance(row);
        others_[row] = bound;
        if (rivals.count == 0) return;
        if (rivals.list[0].gap >= outOfReach(distance)) {
            others_[row] = std::min(bound, beyond(rivals.list[0].gap, distance));
            return;
        }
        if (!rivals.canScreen) return choose(row, own, rivals, bound);
        rivals.screen.setRow(rivals.waiting, rows_[row], clusters_.centroid(own));
        rivals.rows[rivals.waiting] = row;
        rivals.bounds[rivals.waiting] = bound;
        if (++rivals.waiting == Screen::kRows) screen(own, rivals);
    }

    // Screens the rows that wait, and compares those that may come close to a rival.
    void screen(std::size_t own, Rivals& rivals) {
        if (rivals.waiting == 0) return;
        Kel32f farthest = 0;
        for (std::size_t i = 0; i < rivals.waiting; ++i) {
            farthest = std::max(farthest, clusters_.distance(rivals.rows[i]));
        }
        const std::size_t inReach = rivals.within(outOfReach(farthest));
        Kel32f most[Screen::kRows];
        rivals.screen.run(inReach, most);
        for (std::size_t i = 0; i < rivals.waiting; ++i) {
            const std::size_t row = rivals.rows[i];
            const Kel32f distance = clusters_.distance(row);
            if (rivals.screen.isClear(most[i], distance)) {
                Kel32f bound = std::min(rivals.bounds[i], rivals.screen.atLeast(most[i], distance));
                if (inReach < rivals.count) bound = std::min(bound, beyond(rivals.list[inReach].gap, distance));
                others_[row] = bound;
            } else {
                choose(row, own, rivals, rivals.bounds[i]);
            }
        }
        rivals.waiting = 0;
    }

    // At a squared distance from one centroid, a row is at least that far away from another one across a gap, squared.
    // That is (sqrt(gap) - sqrt(distance))^2 or, without roots, not much less where the gap is about four times as
    // large.
    static Kel32f beyond(Kel32f gap, Kel32f distance) { return 0.999f * (gap / 2 - distance); }

    // Sets a row's nearest centroid among its own one and some rivals.  `bound`: no centroid besides those is nearer.
    void choose(std::size_t row, std::size_t own, const Rivals& rivals, Kel32f bound) {
        const Kel32f distance = clusters_.distance(row), limit = outOfReach(distance);
        const Kel32f* const vector = rows_[row];
        Kel32f best = distance, second = kInfinity;
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
                    second = std::exchange(best, sums[k]);
                    at = rivals.list[i + k].cluster;
                } else if (sums[k] < second) {
                    second = sums[k];
                }
            }
        }
        if (i < rivals.count) bound = std::min(bound, beyond(rivals.list[i].gap, distance));
        others_[row] = std::min(bound, second);
        if (i == 0) return;
        if (!(second > closeTo(best))) {  // the order of the centroids counts
            const StepRows<const Kel32f> centroids(clusters_.centroid(0), static_cast<int>(rows_.width()));
            const Candidates<Kel32f> candidates = {vector, centroids, clusters_.weights()};
            at = nearestOf<Weighting>(candidates, clusters_.count(), rows_.width());
            best = clusters_.distance(vector, static_cast<std::size_t>(at));
            others_[row] = 0;
        }
        clusters_.distance(row) = best;
        if (static_cast<std::size_t>(at) != own) changes_[changeCount_++] = {static_cast<Kel32s>(row), at};
    }

    // Moves rows to their nearest clusters, in their order; the last member of a cluster stays.
    void applyChanges() {
        std::sort(changes_, changes_ + changeCount_, [](const Change& a, const Change& b) { return a.row < b.row; });
        for (std::size_t i = 0; i < changeCount_; ++i) {
            const auto row = static_cast<std::size_t>(changes_[i].row), from = clusters_.owner(row);
            if (clusters_.size(from) > 1) {
                clusters_.reassign(row, static_cast<std::size_t>(changes_[i].to));
            } else {
                clusters_.distance(row) = clusters_.distance(rows_[row], from);
                others_[row] = 0;
            }
        }
    }

    Clusters<T, Weighting>& clusters_;
    const TrainingRows<T>& rows_;
    PartVector rest_;
    Kel32f* others_ = nullptr;  // of each row, a lower bound of its distances to all centroids but its own, squared
    Change* changes_ = nullptr;
    std::size_t changeCount_ = 0;
    Kel32f* radii_ = nullptr;  // of each cluster, the largest distance of a member
    // Lists of clusters: those that have moved, and all.
    Kel32s *movers_ = nullptr, *everyone_ = nullptr;
    std::size_t moverCount_ = 0;
    Kel32f* gaps_ = nullptr;
    Rivals moved_, all_;
};

}  // namespace kels::codebook
