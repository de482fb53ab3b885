// What codebooks of both element types are made of, and their memory.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "core/rows.h"
#include "kels/vq.h"
#include "scoring/gauss/terms.h"

// As KelCdbkNode and KelCdbk_32f.
struct KelCdbkNode_16s {
    Kel32f spread;
    Kel16s* centroid;
    Kel32s index, count, isLeaf, depth;
    KelCdbkNode_16s *left, *right;
    Kel32s neighbourCount;
    KelCdbkNode_16s** neighbours;
    void* fastBlock;
};
struct KelCdbk_16s {
    Kel32s lastIndexOrDepth, cdbkSize, width, rowStep, kind;
    Kel16s* codevectors;
    KelCdbkNode_16s* treeRoot;
    Kel32s flags;
    Kel16s* weights;
    void* grid;
    Kel32s indexBits;
    Kel64f* work;
};
#if defined(__i386__)
static_assert(sizeof(KelCdbk_32f) == 48);
#endif

namespace kels::codebook {

using gauss::Exact, gauss::InverseVariance, gauss::Item, gauss::SinglePrecision, gauss::UnitVariance;

// Real is the type of distances, Term how they are summed: in single precision, or exactly.
template <class T>
struct CodebookOf;
template <>
struct CodebookOf<Kel32f> {
    using Record = KelCdbk_32f;
    using Node = KelCdbkNode;
    using Real = Kel32f;
    template <class Weighting>
    using Term = SinglePrecision<Weighting>;
};
template <>
struct CodebookOf<Kel16s> {
    using Record = KelCdbk_16s;
    using Node = KelCdbkNode_16s;
    using Real = Kel64f;
    template <class Weighting>
    using Term = Exact<Weighting>;
};
template <class T>
using Codebook = typename CodebookOf<T>::Record;
template <class T>
using NodeOf = typename CodebookOf<T>::Node;
template <class T>
using RealOf = typename CodebookOf<T>::Real;
template <class Weighting, class T>
using TermOf = typename CodebookOf<T>::template Term<Weighting>;

template <class Record>
auto codevectorsOf(const Record& codebook) {
    return StepRows<const std::remove_pointer_t<decltype(codebook.codevectors)>>(codebook.codevectors,
                                                                                 codebook.rowStep);
}

template <class Record>
bool isWeighted(const Record& codebook) {
    return (codebook.flags & kelCdbkWeighted) != 0;
}

// The widths with kernels, and fast blocks in the tree, of their own.
constexpr bool isFastWidth(int width) {
    return width == 1 || width == 2 || width == 4 || width == 8;
}

template <class T>
bool allOnes(const T* weights, int width) {
    return std::all_of(weights, weights + width, [](T weight) { return weight == T(1); });
}

inline constexpr int kMostCodevectors = 16383;

// The bits of the largest index.
inline Kel32s indexBitsOf(Kel32s cdbkSize) {
    return static_cast<Kel32s>(std::bit_width(static_cast<uint32_t>(cdbkSize - 1)));
}

}  // namespace kels::codebook
