// The refinement of clusters beside one that compares every row with every centroid: the same to the bit.
#include "training/codebook/clustering/clustering.h"

#include "support/support.h"

namespace {

using namespace test;
using namespace kels;
using namespace kels::codebook;

// Rows whose own centroid has moved compare all centroids, the others those that have moved.
template <class T, class Weighting>
class CompareAll {
  public:
    CompareAll(Clusters<T, Weighting>& clusters, const TrainingRows<T>& rows) : clusters_(clusters), rows_(rows) {}
    void arrange(Layout&, int64_t) {}
    void start() {}
    void addBeside(std::size_t, std::size_t) {}
    void run() {
        std::vector<std::size_t> nearest;
        for (std::size_t row = 0; row < rows_.count(); ++row) nearest.push_back(nearestTo(row));
        for (std::size_t row = 0; row < rows_.count(); ++row) {
            const std::size_t from = clusters_.owner(row);
            if (nearest[row] == from) continue;
            if (clusters_.size(from) > 1) {
                clusters_.reassign(row, nearest[row]);
            } else {
                clusters_.distance(row) = clusters_.distance(rows_[row], from);
            }
        }
    }

  private:
    using Term = SinglePrecision<Weighting>;

    std::size_t nearestTo(std::size_t row) {
        const std::size_t own = clusters_.owner(row);
        const Kel32f* const x = rows_[row];
        Kel32f& best = clusters_.distance(row);
        if (clusters_.moved(own)) best = clusters_.distance(x, own);
        Kel32f second = HUGE_VALF;
        std::size_t at = own;
        for (std::size_t c = 0; c < clusters_.count(); ++c) {
            if (c == own || !(clusters_.moved(own) || clusters_.moved(c))) continue;
            const Kel32f d = distanceAmongFour(x, c);
            if (d < best) {
                second = std::exchange(best, d);
                at = c;
            } else {
                second = std::min(second, d);
            }
        }
        if (second > closeTo(best)) return at;
        const StepRows<const Kel32f> all(clusters_.centroid(0), static_cast<int>(rows_.width()));
        const Candidates<Kel32f> candidates = {x, all, clusters_.weights()};
        at = static_cast<std::size_t>(nearestOf<Weighting>(candidates, clusters_.count(), rows_.width()));
        best = clusters_.distance(x, at);
        return at;
    }

    // Rounded as the distances that are computed four at a time.
    Kel32f distanceAmongFour(const Kel32f* x, std::size_t cluster) const {
        const Item<Kel32f> item = {x, clusters_.centroid(cluster), clusters_.weights()};
        const PartVector rest(rows_.width() % Term::kStep, rows_.width() / Term::kStep * Term::kStep);
        return sumsOf4<Term>(std::array{item, item, item, item}, rows_.width(), rest)[0];
    }

    Clusters<T, Weighting>& clusters_;
    const TrainingRows<T>& rows_;
};

// What there is to know of clusters, bit for bit.
struct Outcome {
    KelStatus status;
    std::vector<Kel32s> owners, tree;
    std::vector<Kel32f> centroids, distances, spreads;
    bool operator==(const Outcome&) const = default;
};

template <class Weighting, template <class, class> class Refine, class T>
Outcome cluster(const std::vector<T>& rows, const std::vector<T>& weights, int wanted, int kind) {
    const int width = static_cast<int>(weights.size()), height = static_cast<int>(rows.size()) / width;
    Clustering<T, Weighting, Refine> clustering(StepRows(rows.data(), width), height, width, wanted);
    Outcome outcome = {clustering.run(weights.data(), toSize(wanted), kind), {}, {}, {}, {}, {}};
    auto clusters = clustering.clusters();
    for (std::size_t r = 0; r < toSize(height); ++r) {
        outcome.owners.push_back(static_cast<Kel32s>(clusters.owner(r)));
        outcome.distances.push_back(clusters.distance(r));
    }
    outcome.centroids.assign(clusters.centroid(0), clusters.centroid(clusters.count()));
    for (std::size_t i = 0; outcome.status >= 0 && i < 2 * clusters.count() - 1; ++i) {
        const SplitNode& node = clustering.splits().nodes()[i];
        outcome.tree.insert(outcome.tree.end(), {node.left, node.right, node.cluster, node.count, node.depth});
        outcome.spreads.push_back(node.spread);
    }
    return outcome;
}

template <class T>
void expectSame(const std::vector<T>& rows, const std::vector<T>& weights, int wanted) {
    const bool weighted = std::count(weights.begin(), weights.end(), T(1)) < static_cast<int>(weights.size());
    for (const int kind : {kelCdbkSplitWidest, kelCdbkSplitLargest}) {
        const auto same = withWeighting(weighted, [&](auto weighting) {
            using Weighting = decltype(weighting);
            return cluster<Weighting, Refinement>(rows, weights, wanted, kind) ==
                   cluster<Weighting, CompareAll>(rows, weights, wanted, kind);
        });
        EXPECT_TRUE(same) << weights.size() << " wide, kind " << kind;
    }
}

// Rows around a few centres, far apart or not, near the origin or not, at scales where squares lose bits or come near
// the largest float, and on a lattice where many distances are equal.
TEST(Clustering, IsTheSameAsByAllDistances) {
    Random random(61);
    for (const int width : {1, 2, 5, 16, 39}) {
        const auto weights = [&](bool weighted) {
            std::vector<Kel32f> w(width, 1);
            for (auto& x : w) x = weighted ? static_cast<Kel32f>(random.between(0, 3)) : 1;
            return w;
        };
        const auto clustered = [&](double centres, double noise, double offset, double scale) {
            const auto centre = random.vector<double>(9 * width, 2);
            std::vector<Kel32f> rows;
            for (int i = 0, c = 0; i < 500 * width; ++i) {
                if (i % width == 0) c = random.between(0, 8);
                const double x = offset + centres * centre[c * width + i % width] + noise * random.uniform(-3, 3);
                rows.push_back(static_cast<Kel32f>(scale * x));
            }
            return rows;
        };
        expectSame(clustered(1, 1, 0, 1), weights(false), 70);
        expectSame(clustered(4, 1, 0, 1), weights(true), 33);
        expectSame(clustered(1, 1, 1000, 1), weights(false), 40);
        expectSame(clustered(1, 1, 0, 1e15), weights(false), 40);
        expectSame(clustered(1, 1, 0, 1e-2), weights(true), 40);
        std::vector<Kel32f> lattice;
        for (int i = 0; i < 500 * width; ++i) lattice.push_back(static_cast<Kel32f>(random.between(0, 2)));
        expectSame(lattice, weights(false), 40);
        expectSame(lattice, weights(true), 40);
        std::vector<Kel16s> integers;
        for (const Kel32f x : clustered(1, 1, 0, 1000)) integers.push_back(saturated<Kel16s>(x));
        expectSame(integers, std::vector<Kel16s>(width, 1), 50);
        expectSame(std::vector<Kel16s>(lattice.begin(), lattice.end()), std::vector<Kel16s>(width, 2), 40);
    }
}

}  // namespace
