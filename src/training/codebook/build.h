// Construction and release of codebooks.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <utility>

#include "core/check.h"
#include "core/memory.h"
#include "core/scaling.h"
#include "training/codebook/clustering.h"
#include "training/codebook/codebook.h"
#include "training/codebook/grid.h"
#include "training/codebook/tree.h"

namespace kels {

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
    CodebookBuilder(const T* weights, int width, int step, int kind) : codebook_(allocate<Codebook<T>>(1)) {
        if (codebook_ == nullptr) return;
        *codebook_ = {};
        codebook_->width = width;
        codebook_->kind = kind;
        const int64_t rowStep = isFastWidth(width) ? width : roundUp<int64_t>(step, 4);
        if (rowStep > std::numeric_limits<Kel32s>::max()) return;
        codebook_->rowStep = static_cast<Kel32s>(rowStep);
        codebook_->weights = allocate<T>(width);
        if (codebook_->weights == nullptr) return;
        std::copy(weights, weights + width, codebook_->weights);
        if (std::any_of(weights, weights + width, [](T w) { return w != T(1); })) codebook_->flags |= kelCdbkWeighted;
    }
    ~CodebookBuilder() {
        if (codebook_ != nullptr) release<T>(codebook_);
    }
    CodebookBuilder(const CodebookBuilder&) = delete;
    CodebookBuilder& operator=(const CodebookBuilder&) = delete;

    KelStatus build(const StepRows<const T>& rows, int height, int wanted) {
        if (codebook_ == nullptr || codebook_->weights == nullptr) return kelStatusNoMemory;
        if (codebook_->kind == kelCdbkExhaustive) return copyRows(rows, height, wanted);
        return withWeighting(isWeighted(*codebook_),
                             [&](auto weighting) { return splitRows<decltype(weighting)>(rows, height, wanted); });
    }
    Codebook<T>* handOver() { return std::exchange(codebook_, nullptr); }

  private:
    bool allocateVectors(int number) {
        codebook_->cdbkSize = number;
        codebook_->indexBits = indexBitsOf(number);
        codebook_->codevectors = allocate<T>(int64_t{number} * codebook_->rowStep);
        codebook_->work = allocate<RealOf<T>>(number);
        return codebook_->codevectors != nullptr && codebook_->work != nullptr;
    }
    T* codevector(std::size_t i) { return codebook_->codevectors + i * toSize(codebook_->rowStep); }

    KelStatus copyRows(const StepRows<const T>& rows, int height, int wanted) {
        if (!allocateVectors(height)) return kelStatusNoMemory;
        for (int i = 0; i < height; ++i) std::copy(rows[i], rows[i] + codebook_->width, codevector(toSize(i)));
        codebook_->lastIndexOrDepth = height - 1;
        if (!buildGrid<T>(*codebook_)) return kelStatusNoMemory;
        return height == wanted ? kelStatusOk : kelStatusCdbkShrunk;
    }

    template <class Weighting>
    KelStatus splitRows(const StepRows<const T>& rows, int height, int wanted) {
        Clustering<T, Weighting> clustering(rows, height, codebook_->width, codebook_->weights, wanted);
        if (clustering.failed()) return kelStatusNoMemory;
        const KelStatus status = clustering.run(toSize(wanted), codebook_->kind);
        if (status < 0) return status;
        if (!allocateVectors(static_cast<int>(clustering.clusters()))) return kelStatusNoMemory;
        const NearestScope scope;
        for (std::size_t c = 0; c < clustering.clusters(); ++c) {
            const Kel32f* const centroid = clustering.centroid(c);
            std::transform(centroid, centroid + codebook_->width, codevector(c), componentOf<T>);
        }
        return TreeBuilder<T>(*codebook_, clustering.nodes()).build() ? status : kelStatusNoMemory;
    }

    Codebook<T>* codebook_;
};

// ---- in caller memory ----------------------------------------------------------------------------------------------

// The record, then the three arrays, each at the next multiple of 32 bytes.
template <class T>
struct InPlace {
    static constexpr int64_t kAlignment = 32;
    int64_t width, rowStep, cdbkSize;

    InPlace(int width_, int step, int cdbkSize_)
        : width(width_),
          rowStep(width == 1 || width == 2 || width == 4 ? width : roundUp<int64_t>(step, 8)),
          cdbkSize(cdbkSize_) {}

    // More than an int where it cannot be counted: of the factors one has 31 bits and the other 14.
    int64_t bytes() const {
        return int64_t{sizeof(Codebook<T>)} + 3 * kAlignment + int64_t{sizeof(T)} * (width + cdbkSize * rowStep) +
               int64_t{sizeof(RealOf<T>)} * cdbkSize;
    }
    bool fits() const { return bytes() <= std::numeric_limits<int>::max(); }

    // Places the arrays behind the record.
    void layOut(Codebook<T>* codebook) const {
        auto next = reinterpret_cast<uintptr_t>(codebook + 1);
        const auto take = [&](int64_t size) {
            next = roundUp<uintptr_t>(next, kAlignment);
            return reinterpret_cast<void*>(std::exchange(next, next + static_cast<uintptr_t>(size)));
        };
        codebook->codevectors = static_cast<T*>(take(int64_t{sizeof(T)} * cdbkSize * rowStep));
        codebook->weights = static_cast<T*>(take(int64_t{sizeof(T)} * width));
        codebook->work = static_cast<RealOf<T>*>(take(int64_t{sizeof(RealOf<T>)} * cdbkSize));
    }
};

template <class T>
void buildInPlace(const InPlace<T>& place, const T* src, int step, Codebook<T>* codebook) {
    codebook->lastIndexOrDepth = static_cast<Kel32s>(place.cdbkSize - 1);
    codebook->cdbkSize = static_cast<Kel32s>(place.cdbkSize);
    codebook->width = static_cast<Kel32s>(place.width);
    codebook->rowStep = static_cast<Kel32s>(place.rowStep);
    codebook->kind = kelCdbkExhaustive;
    codebook->treeRoot = nullptr;
    codebook->flags = 0;
    codebook->grid = nullptr;
    place.layOut(codebook);
    std::fill(codebook->weights, codebook->weights + place.width, T(1));
    const StepRows<const T> rows(src, step);
    for (Kel32s i = 0; i < codebook->cdbkSize; ++i) {
        std::copy(rows[i], rows[i] + codebook->width, codebook->codevectors + int64_t{i} * codebook->rowStep);
    }
}

}  // namespace kels
