// Codebooks in memory of their own: construction and release.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <utility>

#include "core/memory.h"
#include "core/scaling.h"
#include "training/codebook/clustering/clustering.h"
#include "training/codebook/codebook.h"
#include "training/codebook/grid/build.h"
#include "training/codebook/tree/build.h"

namespace kels::codebook {

// Everything that the initialisers with allocation obtain.  Parts that are missing are null.
template <class T>
void release(Codebook<T>* codebook) {
    kelsFree(codebook->grid);
    kelsFree(codebook->treeRoot);
    kelsFree(codebook->codevectors);
    kelsFree(codebook->weights);
    kelsFree(codebook->work);
    kelsFree(codebook);
}

// A codebook under construction, released unless it is handed over.
template <class T>
class CodebookBuilder {
  public:
    // Weights at any address.
    CodebookBuilder(const void* weights, int width, int step, int kind) : codebook_(allocate<Codebook<T>>(1)) {
        if (codebook_ == nullptr) return;
        *codebook_ = {};
        codebook_->width = width;
        codebook_->kind = kind;
        const int64_t rowStep = isFastWidth(width) ? width : roundUp<int64_t>(step, 4);
        if (rowStep > std::numeric_limits<Kel32s>::max()) return;
        codebook_->rowStep = static_cast<Kel32s>(rowStep);
        codebook_->weights = allocate<T>(width);
        if (codebook_->weights == nullptr) return;
        std::memcpy(codebook_->weights, weights, toSize(width) * sizeof(T));
        if (!allOnes(codebook_->weights, width)) codebook_->flags |= kelCdbkWeighted;
    }
    ~CodebookBuilder() {
        if (codebook_ != nullptr) release<T>(codebook_);
    }
    CodebookBuilder(const CodebookBuilder&) = delete;
    CodebookBuilder& operator=(const CodebookBuilder&) = delete;

    KelStatus build(const StepRows<const T>& rows, int height, int wanted) {
        if (failed()) return kelStatusNoMemory;
        if (codebook_->kind == kelCdbkExhaustive) return copyRows(rows, height, wanted);
        return withWeighting(isWeighted(*codebook_),
                             [&](auto weighting) { return splitRows<decltype(weighting)>(rows, height, wanted); });
    }
    Codebook<T>* handOver() { return std::exchange(codebook_, nullptr); }

    // The same step by step; whatever is false says that memory is out.
    bool failed() const { return codebook_ == nullptr || codebook_->weights == nullptr; }
    bool allocateVectors(int number) {
        codebook_->cdbkSize = number;
        codebook_->indexBits = indexBitsOf(number);
        codebook_->codevectors = allocate<T>(int64_t{number} * codebook_->rowStep);
        codebook_->work = allocate<RealOf<T>>(number);
        return codebook_->codevectors != nullptr && codebook_->work != nullptr;
    }
    T* codevector(std::size_t i) { return codebook_->codevectors + i * toSize(codebook_->rowStep); }
    bool finishExhaustive(bool withGrid) {
        codebook_->lastIndexOrDepth = codebook_->cdbkSize - 1;
        return !withGrid || buildGrid<T>(*codebook_);
    }
    template <class Others>
    bool finishTree(const SplitNode* splits, Kel32s neighbours, const Others& othersOf) {
        return TreeBuilder<T>(*codebook_, splits, neighbours).build(othersOf);
    }

  private:
    KelStatus copyRows(const StepRows<const T>& rows, int height, int wanted) {
        if (!allocateVectors(height)) return kelStatusNoMemory;
        for (int i = 0; i < height; ++i) std::copy(rows[i], rows[i] + codebook_->width, codevector(toSize(i)));
        if (!finishExhaustive(true)) return kelStatusNoMemory;
        return height == wanted ? kelStatusOk : kelStatusCdbkShrunk;
    }

    template <class Weighting>
    KelStatus splitRows(const StepRows<const T>& rows, int height, int wanted) {
        Clustering<T, Weighting> clustering(rows, height, codebook_->width, wanted);
        if (clustering.failed()) return kelStatusNoMemory;
        const KelStatus status = clustering.run(codebook_->weights, toSize(wanted), codebook_->kind);
        if (status < 0) return status;
        const auto& clusters = clustering.clusters();
        if (!allocateVectors(static_cast<int>(clusters.count()))) return kelStatusNoMemory;
        const NearestScope nearest;
        for (std::size_t c = 0; c < clusters.count(); ++c) {
            const Kel32f* const centroid = clusters.centroid(c);
            std::transform(centroid, centroid + codebook_->width, codevector(c), componentOf<T>);
        }
        const LeavesByDistance<T> others = {*codebook_};
        const bool done = finishTree(clustering.splits().nodes(), neighbourCount(codebook_->cdbkSize), others);
        return done ? status : kelStatusNoMemory;
    }

    Codebook<T>* codebook_;
};

}  // namespace kels::codebook
