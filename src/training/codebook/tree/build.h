// The tree of a codebook made from splits: centroids of all nodes, neighbours of the leaves.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <type_traits>

#include "core/layout.h"
#include "core/scaling.h"
#include "training/codebook/clustering/splits.h"
#include "training/codebook/codebook.h"
#include "training/codebook/distance.h"
#include "training/codebook/ordered_picks.h"
#include "training/codebook/tree/node.h"

namespace kels::codebook {

// How many neighbours a leaf lists.
inline Kel32s neighbourCount(Kel32s leaves) {
    if (leaves < 3) return 0;
    int exponent = static_cast<int>(std::lround(std::log2(static_cast<Kel64f>(leaves))));
    int number = exponent < 5 ? 4 : exponent;
    if ((int64_t{1} << number) < leaves) ++number;
    return std::min(number, leaves - 1);
}

// A component of a codevector: the centroid's, or the integer next to it.  Inside a NearestScope.
template <class T>
T componentOf(Kel64f value) {
    if constexpr (std::is_same_v<T, Kel32f>) {
        return static_cast<Kel32f>(value);
    } else {
        return roundSaturate<T>(value);
    }
}

// The leaves in the order of their distances from one of them, which is not among them.
template <class T>
struct LeavesByDistance {
    const Codebook<T>& codebook;

    OrderedPicks<RealOf<T>> operator()(Kel32s leaf) const {
        const auto codevectors = codevectorsOf(codebook);
        const Candidates<T> others = {codevectors[leaf], codevectors, codebook.weights};
        const std::size_t leaves = toSize(codebook.cdbkSize);
        RealOf<T>* const work = codebook.work;
        withWeighting(isWeighted(codebook), [&](auto weighting) {
            distances<decltype(weighting)>(others, 0, leaves, toSize(codebook.width), work);
        });
        work[leaf] = -1;
        return OrderedPicks<RealOf<T>>(work, leaves);
    }
};

template <class T>
class TreeBuilder {
  public:
    // The codebook has its codevectors, in the order of the clusters.
    TreeBuilder(Codebook<T>& codebook, const SplitNode* splits, Kel32s neighbours)
        : codebook_(codebook),
          splits_(splits),
          leaves_(codebook.cdbkSize),
          neighbours_(neighbours),
          width_(toSize(codebook.width)) {}

    // False when memory is out.  othersOf(leaf).next() tells the neighbours of a leaf, one after the other.  The tree
    // is one block that begins with its nodes, in the order of the splits.
    template <class Others>
    bool build(const Others& othersOf) {
        if (allocateArranged([&](Layout& layout) { arrange(layout); }) == nullptr) return false;
        codebook_.treeRoot = &nodes_[0].node;
        codebook_.lastIndexOrDepth = 0;
        for (Kel32s i = nodeCount() - 1; i >= 0; --i) fillNode(i);
        for (Kel32s i = 0; i < nodeCount(); ++i) {
            if (nodes_[i].node.isLeaf) listNeighbours(nodes_[i].node, othersOf(nodes_[i].node.index));
            if (!nodes_[i].node.isLeaf) gatherGrandchildren(nodes_[i]);
        }
        return true;
    }

  private:
    using Node = NodeOf<T>;

    Kel32s nodeCount() const { return 2 * leaves_ - 1; }

    void arrange(Layout& layout) {
        const int64_t width = codebook_.width, nodes = nodeCount();
        nodes_ = layout.take<TreeNode<T>>(nodes);
        leafNodes_ = layout.take<Node*>(leaves_);
        centroids_ = layout.take<T>(nodes * width);
        lists_ = layout.take<Node*>(int64_t{leaves_} * neighbours_);
        if (!isFastWidth(codebook_.width)) return;
        innerBlocks_ = layout.take<T>(nodes * 4 * width);
        leafBlockBytes_ = roundUp<int64_t>(neighbours_ * width * int64_t{sizeof(T)}, sizeof(Node*)) +
                          neighbours_ * int64_t{sizeof(Node*)};
        leafBlocks_ = layout.take<Kel8u>(leaves_ * leafBlockBytes_);
    }

    // Children come before their parents here.
    void fillNode(Kel32s i) {
        const SplitNode& split = splits_[i];
        Node& node = nodes_[i].node;
        const bool isLeaf = split.left < 0;
        T* const centroid = centroids_ + static_cast<std::size_t>(i) * width_;
        node = Node{};
        node.spread = split.spread;
        node.centroid = centroid;
        node.index = split.cluster;
        node.count = split.count;
        node.isLeaf = isLeaf;
        node.depth = split.depth;
        if (isLeaf) {
            const T* const codevector = codevectorsOf(codebook_)[split.cluster];
            std::copy(codevector, codevector + width_, centroid);
            leafNodes_[split.cluster] = &node;
            codebook_.lastIndexOrDepth = std::max(codebook_.lastIndexOrDepth, split.depth);
            return;
        }
        node.left = &nodes_[split.left].node;
        node.right = &nodes_[split.right].node;
        nodes_[i].children[0] = node.left;
        nodes_[i].children[1] = node.right;
        const Kel64f left = node.left->count, right = node.right->count;
        for (std::size_t k = 0; k < width_; ++k) {
            const Kel64f sum = left * node.left->centroid[k] + right * node.right->centroid[k];
            centroid[k] = componentOf<T>(sum / (left + right));
        }
    }

    template <class Picks>
    void listNeighbours(Node& leaf, Picks picks) {
        leaf.neighbourCount = neighbours_;
        leaf.neighbours = lists_ + static_cast<std::size_t>(leaf.index) * toSize(neighbours_);
        for (Kel32s i = 0; i < neighbours_; ++i) leaf.neighbours[i] = leafNodes_[picks.next()];
        if (!isFastWidth(codebook_.width)) return;
        Kel8u* const block = leafBlocks_ + leaf.index * leafBlockBytes_;
        leaf.fastBlock = block;
        T* centroid = reinterpret_cast<T*>(block);
        for (Kel32s i = 0; i < neighbours_; ++i, centroid += width_) {
            std::copy(leaf.neighbours[i]->centroid, leaf.neighbours[i]->centroid + width_, centroid);
        }
        std::copy(leaf.neighbours, leaf.neighbours + neighbours_,
                  reinterpret_cast<Node**>(block + leafBlockBytes_) - neighbours_);
    }

    void gatherGrandchildren(TreeNode<T>& inner) {
        const T** grandchild = inner.grandchildren;
        for (const Node* child : {inner.node.left, inner.node.right}) {
            *grandchild++ = (child->isLeaf ? child : child->left)->centroid;
            *grandchild++ = (child->isLeaf ? child : child->right)->centroid;
        }
        if (!isFastWidth(codebook_.width)) return;
        T* const block = innerBlocks_ + static_cast<std::size_t>(&inner - nodes_) * 4 * width_;
        inner.node.fastBlock = block;
        for (std::size_t g = 0; g < 4; ++g) {
            std::copy(inner.grandchildren[g], inner.grandchildren[g] + width_, block + g * width_);
        }
    }

    Codebook<T>& codebook_;
    const SplitNode* splits_;
    Kel32s leaves_, neighbours_;
    std::size_t width_;
    TreeNode<T>* nodes_ = nullptr;
    Node **leafNodes_ = nullptr, **lists_ = nullptr;
    T *centroids_ = nullptr, *innerBlocks_ = nullptr;
    Kel8u* leafBlocks_ = nullptr;
    int64_t leafBlockBytes_ = 0;
};

}  // namespace kels::codebook
