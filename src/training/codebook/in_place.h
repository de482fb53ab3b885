// Exhaustive codebooks in memory of the caller.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>

#include "core/layout.h"
#include "core/memory.h"
#include "training/codebook/codebook.h"

namespace kels::codebook {

// The record, then the three arrays, each from the next multiple of 32 bytes on.
template <class T>
struct InPlace {
    int64_t width, rowStep, cdbkSize;

    InPlace(int width_, int step, int cdbkSize_)
        : width(width_),
          rowStep(width == 1 || width == 2 || width == 4 ? width : roundUp<int64_t>(step, 8)),
          cdbkSize(cdbkSize_) {}

    // More than an int where it cannot be counted: of the factors one has 31 bits and the other 14.
    int64_t bytes() const {
        return int64_t{sizeof(Codebook<T>)} + 3 * int64_t{kBlockAlignment} +
               int64_t{sizeof(T)} * (width + cdbkSize * rowStep) + int64_t{sizeof(RealOf<T>)} * cdbkSize;
    }
    bool fits() const { return bytes() <= std::numeric_limits<int>::max(); }

    // Places the arrays behind the record.
    void arrange(Codebook<T>* codebook) const {
        Layout layout(codebook + 1);
        codebook->codevectors = layout.take<T>(cdbkSize * rowStep);
        codebook->weights = layout.take<T>(width);
        codebook->work = layout.take<RealOf<T>>(cdbkSize);
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
    place.arrange(codebook);
    std::fill(codebook->weights, codebook->weights + place.width, T(1));
    const StepRows<const T> rows(src, step);
    for (Kel32s i = 0; i < codebook->cdbkSize; ++i) {
        std::copy(rows[i], rows[i] + codebook->width, codebook->codevectors + int64_t{i} * codebook->rowStep);
    }
}

}  // namespace kels::codebook
