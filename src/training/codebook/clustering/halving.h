// A cluster cut into halves: which members leave, and what keeps the halves' centroids apart.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <span>

#include "core/layout.h"
#include "training/codebook/clustering/clusters.h"
#include "training/codebook/nearest.h"
#include "training/codebook/rules.h"

namespace kels::codebook {

// Moves the half of the members that is nearest to the centroid.
class Halving {
  public:
    void arrange(Layout& layout, int64_t height) {
        distances_ = layout.take<Kel32f>(height);
        leasts_ = layout.take<Kel32f>(height / static_cast<int64_t>(kBlock) + 1);
    }

    template <class T, class Weighting>
    void run(Clusters<T, Weighting>& clusters, std::size_t from, std::size_t to) {
        clusters.group();
        const std::span members = clusters.members(from);
        count_ = members.size();
        const auto distance = [&](Kel32s r) { return clusters.distance(static_cast<std::size_t>(r)); };
        std::transform(members.begin(), members.end(), distances_, distance);
        const std::size_t blocks = (count_ + kBlock - 1) / kBlock;
        for (std::size_t b = 0; b < blocks; ++b) leasts_[b] = leastIn(b);
        for (std::size_t pick = 0; pick < count_ / 2; ++pick) {
            const auto member = static_cast<std::size_t>(members[nearestLeft(blocks)]);
            // Infinitely far ones are picked again.
            if (clusters.owner(member) != to) clusters.reassign(member, to);
        }
    }

  private:
    static constexpr std::size_t kBlock = 512;

    std::size_t lengthOf(std::size_t block) const { return std::min(kBlock, count_ - block * kBlock); }
    Kel32f leastIn(std::size_t block) const { return leastOf(distances_ + block * kBlock, lengthOf(block)); }

    // The place of the nearest member that has not been picked; it is out of question from then on.
    std::size_t nearestLeft(std::size_t blocks) {
        Nearest<Kel32f> nearest;
        for (std::size_t b = 0; b < blocks; ++b) {
            if (nearest.index >= 0 && !isNearer(leasts_[b], nearest.distance)) continue;
            nearest.take(distances_ + b * kBlock, lengthOf(b), static_cast<Kel32s>(b * kBlock));
        }
        const auto picked = static_cast<std::size_t>(nearest.index);
        distances_[picked] = std::numeric_limits<Kel32f>::max();
        leasts_[picked / kBlock] = leastIn(picked / kBlock);
        return picked;
    }

    std::size_t count_ = 0;
    Kel32f* distances_ = nullptr;  // of the members
    Kel32f* leasts_ = nullptr;     // of each block of them
};

// Where the centroids of the halves coincide, moves the new one toward a member until the distances differ.  False when
// the halves cannot be told apart.
template <class T, class Weighting>
bool keepApart(Clusters<T, Weighting>& clusters, const TrainingRows<T>& rows, std::size_t from, std::size_t to) {
    if (!(clusters.distance(clusters.centroid(from), to) <= kCoincident)) return true;
    const auto isMember = [&](std::size_t r) { return clusters.owner(r) == from || clusters.owner(r) == to; };
    std::size_t target = 0;
    while (target < rows.count() && !(isMember(target) && clusters.distance(rows[target], to) >= kReachable)) ++target;
    if (target == rows.count()) return false;
    Kel32f* const centroid = clusters.centroid(to);
    for (int pull = 1; pull <= kMostPulls; ++pull) {
        const Kel32f* const x = rows[target];
        const Kel32f share = static_cast<Kel32f>(pull) / 100.0f;
        for (std::size_t k = 0; k < rows.width(); ++k) centroid[k] += share * (x[k] - centroid[k]) / 2;
        clusters.markMoved(to);
        Kel64f difference = 0;
        for (std::size_t r = 0; r < rows.count(); ++r) {
            if (!isMember(r)) continue;
            const Kel32f* const member = rows[r];
            const Kel64f d = clusters.distance(member, to), other = clusters.distance(member, from);
            difference += std::fabs(d == 0 ? d - other : (d - other) / d);
        }
        if (difference > clusters.size(from) * kApart) return true;
    }
    return false;
}

}  // namespace kels::codebook
