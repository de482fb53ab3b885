// The distances of a vector from the centroids that a node of the tree leads on to.
//
// Inner nodes lead to their grandchildren, leaves to their neighbours.  Both are compared `kAtOnce` at a time.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <type_traits>

#include "core/simd/part_vector.h"
#include "core/simd/row_sums.h"
#include "core/simd/vec.h"
#include "training/codebook/codebook.h"
#include "training/codebook/tree/node.h"

namespace kels::codebook {

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

}  // namespace kels::codebook
