// The search through a codebook's tree.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>
#include <type_traits>

#include "core/simd/vec.h"
#include "training/codebook/codebook.h"
#include "training/codebook/rules.h"
#include "training/codebook/tree/centroids.h"
#include "training/codebook/tree/node.h"

namespace kels::codebook {

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

}  // namespace kels::codebook
