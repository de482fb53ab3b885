// The tree of splits: every cluster that there is or has been.
#pragma once

#include <cstddef>

#include "core/layout.h"
#include "kels/types.h"

namespace kels::codebook {

struct SplitNode {
    Kel32s left, right;  // -1 in a leaf
    Kel32s cluster;      // -1 in an inner node
    Kel32s count, depth;
    Kel32f spread;
};

class Splits {
  public:
    void arrange(Layout& layout, int64_t mostClusters) {
        nodes_ = layout.take<SplitNode>(2 * mostClusters - 1);
        leaves_ = layout.take<Kel32s>(mostClusters);
    }

    void startWithOne() {
        count_ = 1;
        nodes_[0] = {-1, -1, 0, 0, 1, 0};
        leaves_[0] = 0;
    }

    // Cluster `from` goes on as the left half; the right one is the new cluster `to`.
    void split(std::size_t from, std::size_t to) {
        const auto left = static_cast<Kel32s>(count_);
        SplitNode& parent = leaf(from);
        parent.left = left;
        parent.right = left + 1;
        parent.cluster = -1;
        leaves_[from] = left;
        leaves_[to] = left + 1;
        leaf(from) = {-1, -1, static_cast<Kel32s>(from), 0, parent.depth + 1, 0};
        leaf(to) = {-1, -1, static_cast<Kel32s>(to), 0, parent.depth + 1, 0};
        count_ += 2;
    }

    SplitNode& leaf(std::size_t cluster) { return nodes_[leaves_[cluster]]; }
    SplitNode& node(std::size_t i) { return nodes_[i]; }

    // One less than twice as many as there are clusters; the root is the first, and children come behind their parents.
    const SplitNode* nodes() const { return nodes_; }

  private:
    SplitNode* nodes_ = nullptr;
    Kel32s* leaves_ = nullptr;  // of each cluster, its node
    std::size_t count_ = 0;
};

}  // namespace kels::codebook
