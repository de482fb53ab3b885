// Clusters by repeated splitting in two, each split followed by k-means refinement of all clusters.
//
// Each pass of the refinement is to give every row the nearest centroid, as a comparison with all of them would.  Few
// of those comparisons are made.  Where neither a row's centroid nor another one has moved, their order stands, and a
// bound for the nearest of the others tells whether it still does when the row's own one has moved.  By the triangle
// inequality a centroid cannot be nearer to a row than its own one is if the two centroids are twice as far apart as the
// row is from its own.  Where the best two come close, all centroids are compared after all.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "core/vector/convert.h"
#include "core/memory.h"
#include "training/codebook/distance.h"
#include "training/codebook/rules.h"

namespace kels {

struct SplitNode {
    Kel32s left, right;  // -1 in a leaf
    Kel32s cluster, count, depth;
    Kel32f spread;
};

template <class T, class Weighting>
class Clustering {
  public:
    Clustering(const StepRows<const T>& rows, int height, int width, const T* weights, int most)
        : rows_(rows), height_(toSize(height)), width_(toSize(width)), rest_(width_ % kLanes, width_ / kLanes * kLanes) {
        Layout measured;
        layOut(measured, most);
        block_ = allocate<Kel8u>(measured.bytes());
        if (block_ == nullptr) return;
        Layout layout(block_);
        layOut(layout, most);
        std::copy(weights, weights + width, weights_);
    }
    ~Clustering() { kelsFree(block_); }
    Clustering(const Clustering&) = delete;
    Clustering& operator=(const Clustering&) = delete;

    bool failed() const { return block_ == nullptr; }

    // Splits until there are `wanted` clusters, or until none is left to split.
    KelStatus run(std::size_t wanted, int kind) {
        oneCluster();
        while (clusters_ < wanted) {
            const int chosen = toBeSplit(kind);
            if (chosen < 0) break;
            if (!split(static_cast<std::size_t>(chosen))) return kelStatusBadArg;
        }
        for (std::size_t c = 0; c < clusters_; ++c) {
            leafOf(c).count = counts_[c];
            leafOf(c).spread = spreads_[c];
        }
        return clusters_ < wanted ? kelStatusCdbkShrunk : kelStatusOk;
    }

    std::size_t clusters() const { return clusters_; }
    const Kel32f* centroid(std::size_t cluster) const { return centroids_ + cluster * width_; }
    // 2 * clusters() - 1 nodes; the root is the first, and children come behind their parents.
    const SplitNode* nodes() const { return nodes_; }

  private:
    using Term = SinglePrecision<Weighting>;
    static constexpr std::size_t kLanes = lanes<Kel32f>;
    static constexpr std::size_t kSeedBlock = 512;

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
        const Kel32f *vector, *centroids, *weights;
        const Kel32s* list;
        std::size_t width;
        Item<Kel32f> operator[](std::size_t i) const {
            return {vector, centroids + static_cast<std::size_t>(list[i]) * width, weights};
        }
    };

    void layOut(Layout& layout, int64_t most) {
        const auto height = static_cast<int64_t>(height_), width = static_cast<int64_t>(width_);
        assigned_ = layout.take<Kel32s>(height);
        nearest_ = layout.take<Kel32s>(height);
        order_ = layout.take<Kel32s>(height);
        kept_ = layout.take<Kel32f>(height);
        others_ = layout.take<Kel32f>(height);
        seeds_ = layout.take<Kel32f>(height);
        seedLeast_ = layout.take<Kel32f>(height / static_cast<int64_t>(kSeedBlock) + 1);
        centroids_ = layout.take<Kel32f>(most * width);
        sums_ = layout.take<Kel64f>(most * width);
        begins_ = layout.take<Kel32s>(most + 1);
        counts_ = layout.take<Kel32s>(most);
        leaves_ = layout.take<Kel32s>(most);
        everyone_ = layout.take<Kel32s>(most);
        movedList_ = layout.take<Kel32s>(most);
        spreads_ = layout.take<Kel32f>(most);
        radii_ = layout.take<Kel32f>(most);
        gaps_ = layout.take<Kel32f>(most);
        rivals_ = layout.take<Rival>(most);
        movedRivals_ = layout.take<Rival>(most);
        moved_ = layout.take<Kel8u>(most);
        stale_ = layout.take<Kel8u>(most);
        nodes_ = layout.take<SplitNode>(2 * most - 1);
        weights_ = layout.take<Kel32f>(width);
        row_ = layout.take<Kel32f>(width);
    }

    SplitNode& leafOf(std::size_t cluster) { return nodes_[leaves_[cluster]]; }
    std::size_t clusterOf(std::size_t row) const { return static_cast<std::size_t>(assigned_[row]); }

    // Row r as floats, until the next call.
    const Kel32f* row(std::size_t r) {
        const T* const source = rows_[static_cast<std::ptrdiff_t>(r)];
        if constexpr (std::is_same_v<T, Kel32f>) {
            return source;
        } else {
            convertWidening(source, row_, width_);
            return row_;
        }
    }
    Kel32f distance(const Kel32f* vector, std::size_t cluster) const {
        return sumOf1<Term>(Item<Kel32f>{vector, centroid(cluster), weights_}, width_);
    }

    // ---- splitting ----

    void oneCluster() {
        clusters_ = 1;
        nodeCount_ = 1;
        nodes_[0] = {-1, -1, 0, 0, 1, 0};
        leaves_[0] = 0;
        everyone_[0] = 0;
        counts_[0] = static_cast<Kel32s>(height_);
        moved_[0] = 0;
        stale_[0] = 1;
        std::fill(assigned_, assigned_ + height_, 0);
        std::fill(others_, others_ + height_, 0.0f);
        updateCentroids();
        for (std::size_t r = 0; r < height_; ++r) kept_[r] = distance(row(r), 0);
        updateSpreads();
    }

    // The first split is tried whatever the spread; -1 where no cluster is left.
    int toBeSplit(int kind) const {
        if (clusters_ == 1) return 0;
        int chosen = -1;
        Kel64f largest = 0;
        for (std::size_t c = 0; c < clusters_; ++c) {
            if (!(spreads_[c] > 0)) continue;
            const Kel64f value = kind == kelCdbkSplitWidest ? static_cast<Kel64f>(spreads_[c]) : counts_[c];
            if (!isLarger(value, largest)) continue;
            largest = value;
            chosen = static_cast<int>(c);
        }
        return chosen;
    }

    // False when the halves cannot be told apart.
    bool split(std::size_t from) {
        const std::size_t to = clusters_++;
        const SplitNode parent = leafOf(from);
        const auto left = static_cast<Kel32s>(nodeCount_);
        nodeCount_ += 2;
        nodes_[left] = {-1, -1, static_cast<Kel32s>(from), 0, parent.depth + 1, 0};
        nodes_[left + 1] = {-1, -1, static_cast<Kel32s>(to), 0, parent.depth + 1, 0};
        leafOf(from) = {left, left + 1, -1, counts_[from], parent.depth, spreads_[from]};
        leaves_[from] = left;
        leaves_[to] = left + 1;
        everyone_[to] = static_cast<Kel32s>(to);
        moved_[to] = 0;
        seed(from, to);

        Kel64f before = 0;
        for (int pass = 0; pass < kMostPasses; ++pass) {
            updateCentroids();
            if (!keepApart(from, to)) return false;
            findNearest();
            assign();
            Kel64f distortion = 0;
            for (std::size_t r = 0; r < height_; ++r) distortion += kept_[r];
            if (hasSettled(distortion, before)) break;
            before = distortion;
        }
        updateSpreads();
        return true;
    }

    // Moves half of the members, those nearest to the centroid, to the new cluster.
    void seed(std::size_t from, std::size_t to) {
        std::size_t n = 0;
        for (std::size_t r = 0; r < height_; ++r) {
            if (clusterOf(r) != from) continue;
            order_[n] = static_cast<Kel32s>(r);
            seeds_[n++] = kept_[r];
        }
        const auto least = [&](std::size_t block) {
            const std::size_t begin = block * kSeedBlock;
            return leastOf(seeds_ + begin, std::min(kSeedBlock, n - begin));
        };
        const std::size_t blocks = (n + kSeedBlock - 1) / kSeedBlock;
        for (std::size_t b = 0; b < blocks; ++b) seedLeast_[b] = least(b);
        counts_[to] = 0;
        for (std::size_t pick = 0; pick < n / 2; ++pick) {
            Nearest<Kel32f> nearest;
            for (std::size_t b = 0; b < blocks; ++b) {
                if (nearest.index >= 0 && !isNearer(seedLeast_[b], nearest.distance)) continue;
                const std::size_t begin = b * kSeedBlock;
                nearest.take(seeds_ + begin, std::min(kSeedBlock, n - begin), static_cast<Kel32s>(begin));
            }
            const auto picked = static_cast<std::size_t>(nearest.index);
            seeds_[picked] = std::numeric_limits<Kel32f>::max();
            seedLeast_[picked / kSeedBlock] = least(picked / kSeedBlock);
            Kel32s& cluster = assigned_[order_[picked]];
            if (static_cast<std::size_t>(cluster) == to) continue;  // infinitely far ones are picked again
            cluster = static_cast<Kel32s>(to);
            others_[order_[picked]] = 0;
            ++counts_[to];
            --counts_[from];
        }
        stale_[from] = stale_[to] = 1;
    }

    // Where the centroids of the halves coincide, moves the new one toward a member until the distances differ.
    bool keepApart(std::size_t from, std::size_t to) {
        if (!(distance(centroid(from), to) <= kCoincident)) return true;
        const auto isMember = [&](std::size_t r) { return clusterOf(r) == from || clusterOf(r) == to; };
        std::size_t target = 0;
        while (target < height_ && !(isMember(target) && distance(row(target), to) >= kReachable)) ++target;
        if (target == height_) return false;
        Kel32f* const c = centroids_ + to * width_;
        for (int pull = 1; pull <= kMostPulls; ++pull) {
            const Kel32f* const x = row(target);
            const Kel32f share = static_cast<Kel32f>(pull) / 100.0f;
            for (std::size_t k = 0; k < width_; ++k) c[k] += share * (x[k] - c[k]) / 2;
            moved_[to] = stale_[to] = 1;  // stale: the next pass puts it back to its members' mean
            Kel64f difference = 0;
            for (std::size_t r = 0; r < height_; ++r) {
                if (!isMember(r)) continue;
                const Kel32f* const member = row(r);
                const Kel64f d = distance(member, to), other = distance(member, from);
                difference += std::fabs(d == 0 ? d - other : (d - other) / d);
            }
            if (difference > counts_[from] * kApart) return true;
        }
        return false;
    }

    // ---- refinement ----

    // The means of the clusters whose members have changed.
    void updateCentroids() {
        std::copy(stale_, stale_ + clusters_, moved_);
        std::fill(stale_, stale_ + clusters_, Kel8u(0));
        for (std::size_t c = 0; c < clusters_; ++c) {
            if (moved_[c]) std::fill(sums_ + c * width_, sums_ + (c + 1) * width_, 0.0);
        }
        for (std::size_t r = 0; r < height_; ++r) {
            const std::size_t c = clusterOf(r);
            if (!moved_[c]) continue;
            const T* const source = rows_[static_cast<std::ptrdiff_t>(r)];
            Kel64f* const sum = sums_ + c * width_;
            for (std::size_t k = 0; k < width_; ++k) sum[k] += source[k];
        }
        for (std::size_t c = 0; c < clusters_; ++c) {
            if (!moved_[c]) continue;
            for (std::size_t k = 0; k < width_; ++k) {
                centroids_[c * width_ + k] = static_cast<Kel32f>(sums_[c * width_ + k] / counts_[c]);
            }
        }
    }

    // Rows by cluster, ascending.
    void groupRows() {
        begins_[0] = 0;
        for (std::size_t c = 0; c < clusters_; ++c) begins_[c + 1] = begins_[c] + counts_[c];
        for (std::size_t r = 0; r < height_; ++r) order_[begins_[clusterOf(r)]++] = static_cast<Kel32s>(r);
        for (std::size_t c = clusters_; c > 0; --c) begins_[c] = begins_[c - 1];
        begins_[0] = 0;
    }

    // Sets nearest_ of all rows, and kept_ to the distance from there.
    void findNearest() {
        groupRows();
        std::copy(assigned_, assigned_ + height_, nearest_);
        std::size_t moved = 0;
        for (std::size_t c = 0; c < clusters_; ++c) {
            if (moved_[c]) movedList_[moved++] = static_cast<Kel32s>(c);
        }
        for (std::size_t c = 0; c < clusters_; ++c) {
            const Kel32s *const begin = order_ + begins_[c], *const end = order_ + begins_[c + 1];
            if (moved_[c]) {
                radii_[c] = 0;
                for (const Kel32s* r = begin; r < end; ++r) {
                    const auto member = static_cast<std::size_t>(*r);
                    kept_[member] = distance(row(member), c);
                    radii_[c] = std::max(radii_[c], kept_[member]);
                }
            }
            const Rivals ofMoved = listRivals(c, movedList_, moved, movedRivals_);
            Rivals ofAll = {nullptr, 0, 0};
            for (const Kel32s* r = begin; r < end; ++r) {
                const auto member = static_cast<std::size_t>(*r);
                if (!moved_[c] || closeTo(kept_[member]) < others_[member]) {
                    choose(member, c, ofMoved, others_[member]);
                } else {
                    if (ofAll.list == nullptr) ofAll = listRivals(c, everyone_, clusters_, rivals_);
                    choose(member, c, ofAll, std::numeric_limits<Kel32f>::infinity());
                }
            }
        }
    }

    // A centroid that far from a row's own one, for a row at the given distance, is out of question by a clear margin.
    Kel32f outOfReach(Kel32f distance) const {
        return 4.01f * (1 + 4 * std::numeric_limits<Kel32f>::epsilon() * static_cast<Kel32f>(width_)) * distance;
    }

    // Those of the clusters that a member of the cluster may be nearer to, nearest first.
    Rivals listRivals(std::size_t cluster, const Kel32s* clusters, std::size_t n, Rival* list) {
        sumsOf<Term>(ListedCentroids{centroid(cluster), centroids_, weights_, clusters, width_}, 0, n, width_, gaps_);
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
        const Kel32f limit = outOfReach(kept_[r]);
        const Kel32f* const vector = row(r);
        Kel32f best = kept_[r], second = std::numeric_limits<Kel32f>::infinity();
        Kel32s at = static_cast<Kel32s>(own);
        std::size_t i = 0;
        for (; i < rivals.count && !(rivals.list[i].gap >= limit); i += 4) {
            const auto item = [&](std::size_t k) {
                const Rival& rival = rivals.list[std::min(i + k, rivals.count - 1)];
                return Item<Kel32f>{vector, centroid(static_cast<std::size_t>(rival.cluster)), weights_};
            };
            const auto sums = sumsOf4<Term>(std::array{item(0), item(1), item(2), item(3)}, width_, rest_);
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
            const Kel32f beyond = std::sqrt(rivals.list[i].gap) - std::sqrt(kept_[r]);
            others = std::min(others, 0.999f * beyond * beyond);
        }
        others_[r] = std::min(others, second);
        if (i == 0) return;
        if (!(second > closeTo(best))) {  // the order of the centroids counts
            const StepRows<const Kel32f> all(centroids_, static_cast<int>(width_));
            at = nearestOf<Weighting>(Candidates<Kel32f>{vector, all, weights_}, clusters_, width_);
            best = distance(vector, static_cast<std::size_t>(at));
            others_[r] = 0;
        }
        nearest_[r] = at;
        kept_[r] = best;
    }

    // Moves rows to their nearest clusters, in order; the last member of a cluster stays.
    void assign() {
        for (std::size_t r = 0; r < height_; ++r) {
            const std::size_t from = clusterOf(r), to = static_cast<std::size_t>(nearest_[r]);
            if (from == to) continue;
            if (counts_[from] < 2) {
                kept_[r] = distance(row(r), from);
                others_[r] = 0;
                continue;
            }
            assigned_[r] = nearest_[r];
            --counts_[from];
            ++counts_[to];
            stale_[from] = stale_[to] = 1;
            radii_[to] = std::max(radii_[to], kept_[r]);
        }
    }

    void updateSpreads() {
        std::fill(spreads_, spreads_ + clusters_, 0.0f);
        for (std::size_t r = 0; r < height_; ++r) {
            Kel32f& spread = spreads_[clusterOf(r)];
            spread = std::max(spread, 2 * kept_[r]);
        }
        for (std::size_t c = 0; c < clusters_; ++c) {
            if (counts_[c] == 1) spreads_[c] = 0;
        }
    }

    StepRows<const T> rows_;
    std::size_t height_, width_;
    PartVector rest_;
    Kel8u* block_ = nullptr;
    std::size_t clusters_ = 0, nodeCount_ = 0;

    // By row: its cluster, the one it is found nearest to, rows by cluster, the distance to the centroid, a lower bound
    // of those to all others but such as have moved since.
    Kel32s *assigned_, *nearest_, *order_;
    Kel32f *kept_, *others_, *seeds_, *seedLeast_;
    // By cluster.  An upper bound of the members' distances; whether the centroid has moved in this pass; whether it is
    // not the mean of the members any more.
    Kel32f* centroids_;
    Kel64f* sums_;
    Kel32s *begins_, *counts_, *leaves_, *everyone_, *movedList_;
    Kel32f *spreads_, *radii_, *gaps_;
    Rival *rivals_, *movedRivals_;
    Kel8u *moved_, *stale_;
    SplitNode* nodes_;
    Kel32f *weights_, *row_;
};

}  // namespace kels
