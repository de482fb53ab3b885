// The search that a codebook's kind, grid and weights call for.
#pragma once

#include <cmath>
#include <cstddef>
#include <type_traits>

#include "core/scaling.h"
#include "training/codebook/codebook.h"
#include "training/codebook/distance.h"
#include "training/codebook/full_search.h"
#include "training/codebook/grid/search.h"
#include "training/codebook/tree/search.h"

namespace kels::codebook {

// Calls `use` with the width, as a constant where the width has kernels of its own.
template <class Use>
auto withWidth(int width, Use use) {
    switch (width) {
        case 1:
            return use(std::integral_constant<std::size_t, 1>());
        case 2:
            return use(std::integral_constant<std::size_t, 2>());
        case 4:
            return use(std::integral_constant<std::size_t, 4>());
        case 8:
            return use(std::integral_constant<std::size_t, 8>());
        default:
            return use(static_cast<std::size_t>(width));
    }
}

template <class Weighting, class T, class Width>
void searchFull(const Codebook<T>& codebook, const StepRows<const T>& rows, std::size_t height, Kel32s* indices,
                Width width, TurnedVectors<T>& turned) {
    FullSearch<T, Width>(codebook, width, turned).template run<Weighting>(rows, height, indices);
}

template <class Weighting, class T, class Width>
void searchTree(const Codebook<T>& codebook, const StepRows<const T>& rows, std::size_t height, Kel32s* indices,
                Width width) {
    TreeSearch<Weighting, T, Width>(codebook, width).run(rows, height, indices);
}

template <class Weighting, std::size_t Width, class T>
void searchGrid(const Codebook<T>& codebook, const StepRows<const T>& rows, std::size_t height, Kel32s* indices) {
    const GridSearch<Weighting, Width, T> search(codebook);
    for (std::size_t i = 0; i < height; ++i) indices[i] = search.nearest(rows[static_cast<std::ptrdiff_t>(i)]);
}

// The width of vectors that a search has to turn over; 0 for a codebook whose grid or tree does without.
template <class T>
int turnedWidth(const Codebook<T>& codebook) {
    return codebook.grid == nullptr && codebook.treeRoot == nullptr ? codebook.width : 0;
}

// The index of each row.  `turned` is for vectors of turnedWidth().
template <class T>
void quantise(const Codebook<T>& codebook, const StepRows<const T>& rows, std::size_t height, Kel32s* indices,
              TurnedVectors<T>& turned) {
    withWeighting(isWeighted(codebook), [&](auto weighting) {
        using Weighting = decltype(weighting);
        if (codebook.grid != nullptr) {
            return codebook.width == 1 ? searchGrid<Weighting, 1, T>(codebook, rows, height, indices)
                                       : searchGrid<Weighting, 2, T>(codebook, rows, height, indices);
        }
        withWidth(codebook.width, [&](auto width) {
            return codebook.treeRoot == nullptr
                       ? searchFull<Weighting, T>(codebook, rows, height, indices, width, turned)
                       : searchTree<Weighting, T>(codebook, rows, height, indices, width);
        });
    });
}

// All searches are instantiated once, in search.cpp.
extern template void quantise<Kel32f>(const KelCdbk_32f&, const StepRows<const Kel32f>&, std::size_t, Kel32s*,
                                      TurnedVectors<Kel32f>&);
extern template void quantise<Kel16s>(const KelCdbk_16s&, const StepRows<const Kel16s>&, std::size_t, Kel32s*,
                                      TurnedVectors<Kel16s>&);

template <class T>
KelStatus quantise(const Codebook<T>& codebook, const StepRows<const T>& rows, std::size_t height, Kel32s* indices) {
    TurnedVectors<T> turned(turnedWidth<T>(codebook));
    if (turned.failed()) return kelStatusNoMemory;
    quantise<T>(codebook, rows, height, indices, turned);
    return kelStatusOk;
}

// ---- reported distances --------------------------------------------------------------------------------------------

// The sum behind the distance of a vector and a codevector.
template <class T>
auto squaredDistance(const Codebook<T>& codebook, const T* vector, Kel32s index) {
    const Item<T> item = {vector, codevectorsOf(codebook)[index], codebook.weights};
    return withWeighting(isWeighted(codebook), [&](auto weighting) {
        return sumOf1<TermOf<decltype(weighting), T>>(item, toSize(codebook.width));
    });
}

// What is reported: the root, for integers scaled and rounded.
struct RootOf {
    Kel32f operator()(Kel32f squared) const { return std::sqrt(squared); }
};
struct ScaledRootOf {
    int scaleFactor;
    Kel32s operator()(int64_t squared) const { return scaledRoot(static_cast<uint64_t>(squared), scaleFactor); }
};
// No distances are reported.
struct NoRoot {
    template <class Squared>
    Kel32s operator()(Squared) const {
        return 0;
    }
};

template <class T, class D, class Root>
KelStatus quantiseWithDistances(const Codebook<T>& codebook, const StepRows<const T>& rows, int height, Kel32s* indices,
                                D* dst, const Root& root) {
    if (const KelStatus fault = quantise<T>(codebook, rows, toSize(height), indices)) return fault;
    for (int i = 0; i < height; ++i) dst[i] = root(squaredDistance(codebook, rows[i], indices[i]));
    return kelStatusOk;
}

}  // namespace kels::codebook
