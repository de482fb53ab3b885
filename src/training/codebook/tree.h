// The tree of splits as a codebook keeps it, and the search through it.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>
#include <type_traits>

#include "core/scaling.h"
#include "training/codebook/clustering.h"
#include "training/codebook/codebook.h"
#include "training/codebook/distance.h"
#include "training/codebook/ordered.h"

namespace kels {

// ---- construction --------------------------------------------------------------------------------------------------

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

template <class T>
class TreeBuilder {
  public:
    // The codebook has its codevectors, in the order of the clusters.
    TreeBuilder(Codebook<T>& codebook, const SplitNode* splits)
        : codebook_(codebook),
          splits_(splits),
          leaves_(codebook.cdbkSize),
          neighbours_(neighbourCount(leaves_)),
          width_(toSize(codebook.width)) {}

    // False when memory is out.  The tree is one block that begins with the root.
    bool build() {
        Layout measured;
        layOut(measured);
        void* const block = allocate<Kel8u>(measured.bytes());
        if (block == nullptr) return false;
        Layout layout(block);
        layOut(layout);
        codebook_.treeRoot = &nodes_[0].node;
        codebook_.lastIndexOrDepth = 0;
        for (Kel32s i = nodeCount() - 1; i >= 0; --i) fillNode(i);
        for (Kel32s i = 0; i < nodeCount(); ++i) {
            if (nodes_[i].node.isLeaf) listNeighbours(nodes_[i].node);
            if (!nodes_[i].node.isLeaf) gatherGrandchildren(nodes_[i]);
        }
        return true;
    }

  private:
    using Node = NodeOf<T>;

    Kel32s nodeCount() const { return 2 * leaves_ - 1; }

    void layOut(Layout& layout) {
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

    void listNeighbours(Node& leaf) {
        const Candidates<T> others = {leaf.centroid, codevectorsOf(codebook_), codebook_.weights};
        RealOf<T>* const work = codebook_.work;
        withWeighting(isWeighted(codebook_),
                      [&](auto weighting) { distances<decltype(weighting)>(others, 0, toSize(leaves_), width_, work); });
        work[leaf.index] = -1;
        OrderedPicks<RealOf<T>> picks(work, toSize(leaves_));
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

// ---- search --------------------------------------------------------------------------------------------------------
// Both kinds of nodes give some centroids to compare with, `kAtOnce` of them at a time.

// The distances of a vector and centroids anywhere in memory.
template <class Weighting, class T, class Width>
class AnyCentroids {
  public:
    static constexpr std::size_t kAtOnce = 4;

    AnyCentroids(const T* weights, Width width)
        : weights_(weights), width_(width), rest_(width % Term::kStep, width / Term::kStep * Term::kStep) {}

    [[gnu::always_inline]] std::array<RealOf<T>, kAtOnce> grandchildren(const NodeOf<T>* node, const T* vector) const {
        return distances(vector, [&](std::size_t i) -> const T* {
            return kFixedWidth ? static_cast<const T*>(node->fastBlock) + i * width_
                               : TreeNode<T>::of(node).grandchildren[i];
        });
    }
    // From neighbour `first` on; behind the last one it is repeated.
    [[gnu::always_inline]] std::array<RealOf<T>, kAtOnce> neighbours(const NodeOf<T>* leaf, std::size_t first,
                                                                     const T* vector) const {
        const std::size_t last = toSize(leaf->neighbourCount) - 1;
        return distances(vector, [&](std::size_t i) -> const T* {
            const std::size_t neighbour = std::min(first + i, last);
            return kFixedWidth ? static_cast<const T*>(leaf->fastBlock) + neighbour * width_
                               : leaf->neighbours[neighbour]->centroid;
        });
    }
    RealOf<T> distance(const T* vector, const T* centroid) const {
        return static_cast<RealOf<T>>(sumOf1<Term>(Item<T>{vector, centroid, weights_}, width_));
    }

  private:
    using Term = TermOf<Weighting, T>;
    static constexpr bool kFixedWidth = !std::is_same_v<Width, std::size_t>;

    template <class Centroid>
    [[gnu::always_inline]] std::array<RealOf<T>, kAtOnce> distances(const T* vector, const Centroid& centroid) const {
        const auto item = [&](std::size_t i) { return Item<T>{vector, centroid(i), weights_}; };
        const auto sums = sumsOf4<Term>(std::array{item(0), item(1), item(2), item(3)}, width_, rest_);
        return {static_cast<RealOf<T>>(sums[0]), static_cast<RealOf<T>>(sums[1]), static_cast<RealOf<T>>(sums[2]),
                static_cast<RealOf<T>>(sums[3])};
    }

    const T* weights_;
    Width width_;
    PartVector rest_;
};

// The same for two components, of the centroids that fast blocks keep side by side: a vector takes as many as it has
// lanes.  Sums as the other one does.
template <class Weighting>
class CentroidPairs {
  public:
    static constexpr std::size_t kAtOnce = lanes<Kel32f>;

    template <class Width>
    CentroidPairs(const Kel32f* weights, Width)
        : weights_(Weighting::kVariance ? repeatPair(weights) : Vec<Kel32f>(1.0f)) {}

    [[gnu::always_inline]] Vec<Kel32f> grandchildren(const KelCdbkNode* node, const Kel32f* vector) const {
        return distances(repeatPair(vector), static_cast<const Kel32f*>(node->fastBlock), 4);
    }
    // Behind the last one they are infinite.
    [[gnu::always_inline]] Vec<Kel32f> neighbours(const KelCdbkNode* leaf, std::size_t first,
                                                  const Kel32f* vector) const {
        return distances(repeatPair(vector), static_cast<const Kel32f*>(leaf->fastBlock) + 2 * first,
                         std::min(toSize(leaf->neighbourCount) - first, kAtOnce));
    }
    Kel32f distance(const Kel32f* vector, const Kel32f* centroid) const {
        return distances(repeatPair(vector), centroid, 1)[0];
    }

  private:
    [[gnu::always_inline]] Vec<Kel32f> distances(const Vec<Kel32f>& vector, const Kel32f* centroids,
                                                 std::size_t n) const {
        constexpr std::size_t w = lanes<Kel32f>;
        const auto terms = [&](std::size_t first) {
            if (2 * n <= first) return Vec<Kel32f>(kInfinity);
            const std::size_t components = 2 * n - first;
            const Kel32f* const p = centroids + first;
            const Vec<Kel32f> d = vector - (components < w ? loadPart(p, components, kInfinity) : load(p));
            return Weighting::plus(Vec<Kel32f>(0.0f), d, weights_);
        };
        return pairSums(terms(0), terms(w));
    }

    static constexpr Kel32f kInfinity = std::numeric_limits<Kel32f>::infinity();
    const Vec<Kel32f> weights_;
};

// The first of some distances that is nearer than `here`; their number where none is.
template <class Real, std::size_t N>
std::size_t firstNearer(const std::array<Real, N>& distances, Real here) {
    std::size_t i = 0;
    while (i < N && !isNearer(distances[i], here)) ++i;
    return i;
}
inline std::size_t firstNearer(const Vec<Kel32f>& distances, Kel32f here) {
    const auto nearer = isNearer(distances, Vec<Kel32f>(here));
    return stdx::any_of(nearer) ? static_cast<std::size_t>(stdx::find_first_set(nearer)) : lanes<Kel32f>;
}

template <class Weighting, class T, class Width>
class TreeSearch {
  public:
    TreeSearch(const Codebook<T>& codebook, Width width)
        : root_(codebook.treeRoot), centroids_(codebook.weights, width) {}

    void run(const StepRows<const T>& rows, std::size_t height, Kel32s* indices) const {
        for (std::size_t first = 0; first < height; first += kTogether) {
            const std::size_t n = std::min(kTogether, height - first);
            const auto vector = [&](std::size_t i) { return rows[static_cast<std::ptrdiff_t>(first + i)]; };
            const Node* at[kTogether];
            Real here[kTogether];
            std::fill(at, at + n, root_);
            stepByStep(root_->isLeaf ? 0 : n, [&](std::size_t i) {
                at[i] = below(at[i], vector(i));
                return !at[i]->isLeaf;
            });
            for (std::size_t i = 0; i < n; ++i) here[i] = centroids_.distance(vector(i), at[i]->centroid);
            stepByStep(n, [&](std::size_t i) {
                const Node* const next = nearerNeighbour(at[i], vector(i), here[i]);
                at[i] = next != nullptr ? next : at[i];
                return next != nullptr;
            });
            for (std::size_t i = 0; i < n; ++i) indices[first + i] = at[i]->index;
        }
    }

  private:
    using Node = NodeOf<T>;
    using Real = RealOf<T>;
    using Centroids =
        std::conditional_t<std::is_same_v<T, Kel32f> && std::is_same_v<Width, std::integral_constant<std::size_t, 2>>,
                           CentroidPairs<Weighting>, AnyCentroids<Weighting, T, Width>>;
    static constexpr std::size_t kTogether = 256;

    // Takes vectors 0 .. n - 1 on their ways, a step of each after the other until none goes on, so that the steps of
    // one fill the time that another's wait for its sums.
    template <class Step>
    [[gnu::always_inline]] static void stepByStep(std::size_t n, const Step& step) {
        std::size_t underway[kTogether];
        std::iota(underway, underway + n, std::size_t{0});
        while (n > 0) {
            std::size_t left = 0;
            for (std::size_t k = 0; k < n; ++k) {
                const std::size_t i = underway[k];
                underway[left] = i;
                left += step(i);
            }
            n = left;
        }
    }

    [[gnu::always_inline]] const Node* below(const Node* node, const T* vector) const {
        const auto d = centroids_.grandchildren(node, vector);
        const bool left = goesLeft<Real>(std::min<Real>(d[0], d[1]), std::min<Real>(d[2], d[3]));
        return TreeNode<T>::of(node).children[left ? 0 : 1];  // no branch: it would be predicted wrongly too often
    }

    // The first neighbour that is nearer than `here`, which becomes its distance; or null.
    [[gnu::always_inline]] const Node* nearerNeighbour(const Node* leaf, const T* vector, Real& here) const {
        const std::size_t count = toSize(leaf->neighbourCount);
        for (std::size_t first = 0; first < count; first += Centroids::kAtOnce) {
            const auto d = centroids_.neighbours(leaf, first, vector);
            const std::size_t i = firstNearer(d, here);
            if (i == Centroids::kAtOnce) continue;
            here = d[i];
            return leaf->neighbours[std::min(first + i, count - 1)];
        }
        return nullptr;
    }

    const Node* root_;
    Centroids centroids_;
};

}  // namespace kels
