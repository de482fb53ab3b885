// Clusters by repeated splitting in two, each split followed by a refinement of all clusters.
#pragma once

#include <cstddef>

#include "core/layout.h"
#include "core/memory.h"
#include "training/codebook/clustering/clusters.h"
#include "training/codebook/clustering/halving.h"
#include "training/codebook/clustering/refinement.h"
#include "training/codebook/clustering/splits.h"
#include "training/codebook/clustering/training_rows.h"
#include "training/codebook/rules.h"

namespace kels::codebook {

template <class T, class Weighting, template <class, class> class Refine = Refinement>
class Clustering {
  public:
    Clustering(const StepRows<const T>& rows, int height, int width, int most)
        : rows_(rows, toSize(height), toSize(width)), clusters_(rows_), refinement_(clusters_, rows_) {
        block_ = allocateArranged([&](Layout& layout) {
            rows_.arrange(layout);
            splits_.arrange(layout, most);
            clusters_.arrange(layout, most);
            halving_.arrange(layout, height);
            refinement_.arrange(layout, most);
            spreads_ = layout.take<Kel32f>(most);
        });
    }
    ~Clustering() { kelsFree(block_); }
    Clustering(const Clustering&) = delete;
    Clustering& operator=(const Clustering&) = delete;

    bool failed() const { return block_ == nullptr; }

    // Splits until there are `wanted` clusters, or until none is left to split.
    KelStatus run(const T* weights, std::size_t wanted, int kind) {
        splits_.startWithOne();
        clusters_.startWithOne(weights);
        refinement_.start();
        clusters_.measureSpreads(spreads_);
        while (clusters_.count() < wanted) {
            const int chosen = toBeSplit(kind);
            if (chosen < 0) break;
            if (!split(toSize(chosen))) return kelStatusBadArg;
        }
        for (std::size_t c = 0; c < clusters_.count(); ++c) describe(c);
        return clusters_.count() < wanted ? kelStatusCdbkShrunk : kelStatusOk;
    }

    const Clusters<T, Weighting>& clusters() const { return clusters_; }
    const Splits& splits() const { return splits_; }

  private:
    // The first split is tried whatever the spread; -1 where no cluster is left.
    int toBeSplit(int kind) const {
        if (clusters_.count() == 1) return 0;
        int chosen = -1;
        Kel64f largest = 0;
        for (std::size_t c = 0; c < clusters_.count(); ++c) {
            if (!(spreads_[c] > 0)) continue;
            const Kel64f value = kind == kelCdbkSplitWidest ? static_cast<Kel64f>(spreads_[c]) : clusters_.size(c);
            if (!isLarger(value, largest)) continue;
            largest = value;
            chosen = static_cast<int>(c);
        }
        return chosen;
    }

    // False when the halves cannot be told apart.
    bool split(std::size_t from) {
        describe(from);
        const std::size_t to = clusters_.add();
        splits_.split(from, to);
        refinement_.addBeside(from, to);
        halving_.run(clusters_, from, to);
        Kel64f before = 0;
        for (int pass = 0; pass < kMostPasses; ++pass) {
            clusters_.moveCentroids();
            if (!keepApart(clusters_, rows_, from, to)) return false;
            refinement_.run();
            const Kel64f distortion = clusters_.distortion();
            if (hasSettled(distortion, before)) break;
            before = distortion;
        }
        clusters_.measureSpreads(spreads_);
        return true;
    }

    // Notes in the tree what a cluster is like.
    void describe(std::size_t cluster) {
        splits_.leaf(cluster).count = clusters_.size(cluster);
        splits_.leaf(cluster).spread = spreads_[cluster];
    }

    void* block_ = nullptr;
    TrainingRows<T> rows_;
    Splits splits_;
    Clusters<T, Weighting> clusters_;
    Halving halving_;
    Refine<T, Weighting> refinement_;
    Kel32f* spreads_ = nullptr;  // of each cluster
};

}  // namespace kels::codebook
