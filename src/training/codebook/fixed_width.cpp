// The searches as functions of their own: through the tree or over all codevectors, with weights taken as 1, for any
// width and for the widths that have kernels of their own.
#include "kels/vq.h"
#include "training/codebook/check.h"
#include "training/codebook/search.h"

namespace {

using namespace kels;
using namespace kels::codebook;

template <class T, class Width>
KelStatus full(const T* pSrc, int step, Kel32s* pIdx, int height, const Codebook<T>& codebook, Width width) {
    TurnedVectors<T> turned(codebook.width);
    if (turned.failed()) return kelStatusNoMemory;
    searchFull<UnitVariance, T>(codebook, StepRows(pSrc, step), toSize(height), pIdx, width, turned);
    return kelStatusOk;
}

template <class T, class Width>
KelStatus tree(const T* pSrc, int step, Kel32s* pIdx, int height, const Codebook<T>& codebook, Width width) {
    if (codebook.treeRoot == nullptr) return kelStatusModeNotSupported;
    searchTree<UnitVariance, T>(codebook, StepRows(pSrc, step), toSize(height), pIdx, width);
    return kelStatusOk;
}

template <std::size_t N>
using Fixed = std::integral_constant<std::size_t, N>;

}  // namespace

// ---- Kel32f, all codevectors ----

KelStatus kelsCdbk32VQFull_A6(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk, int width) {
    if (const KelStatus fault = searchFault(pCdbk, width, step, height, pSrc, pIdx)) return fault;
    return full(pSrc, step, pIdx, height, *pCdbk, toSize(width));
}

KelStatus kelsCdbk32VQFull_A6_1(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk) {
    if (const KelStatus fault = searchFault(pCdbk, 1, step, height, pSrc, pIdx)) return fault;
    return full(pSrc, step, pIdx, height, *pCdbk, Fixed<1>());
}

KelStatus kelsCdbk32VQFull_A6_2(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk) {
    if (const KelStatus fault = searchFault(pCdbk, 2, step, height, pSrc, pIdx)) return fault;
    return full(pSrc, step, pIdx, height, *pCdbk, Fixed<2>());
}

KelStatus kelsCdbk32VQFull_A6_4(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk) {
    if (const KelStatus fault = searchFault(pCdbk, 4, step, height, pSrc, pIdx)) return fault;
    return full(pSrc, step, pIdx, height, *pCdbk, Fixed<4>());
}

KelStatus kelsCdbk32VQFull_A6_8(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk) {
    if (const KelStatus fault = searchFault(pCdbk, 8, step, height, pSrc, pIdx)) return fault;
    return full(pSrc, step, pIdx, height, *pCdbk, Fixed<8>());
}

// ---- Kel32f, the tree ----

KelStatus kelsCdbk32VQKMeans_A6(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk, int width) {
    if (const KelStatus fault = searchFault(pCdbk, width, step, height, pSrc, pIdx)) return fault;
    return tree(pSrc, step, pIdx, height, *pCdbk, toSize(width));
}

KelStatus kelsCdbk32VQKMeans_A6_1(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk) {
    if (const KelStatus fault = searchFault(pCdbk, 1, step, height, pSrc, pIdx)) return fault;
    return tree(pSrc, step, pIdx, height, *pCdbk, Fixed<1>());
}

KelStatus kelsCdbk32VQKMeans_A6_2(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk) {
    if (const KelStatus fault = searchFault(pCdbk, 2, step, height, pSrc, pIdx)) return fault;
    return tree(pSrc, step, pIdx, height, *pCdbk, Fixed<2>());
}

KelStatus kelsCdbk32VQKMeans_A6_4(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk) {
    if (const KelStatus fault = searchFault(pCdbk, 4, step, height, pSrc, pIdx)) return fault;
    return tree(pSrc, step, pIdx, height, *pCdbk, Fixed<4>());
}

KelStatus kelsCdbk32VQKMeans_A6_8(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk) {
    if (const KelStatus fault = searchFault(pCdbk, 8, step, height, pSrc, pIdx)) return fault;
    return tree(pSrc, step, pIdx, height, *pCdbk, Fixed<8>());
}

// ---- Kel16s, all codevectors ----

KelStatus kelsCdbk16VQFull_A6(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk, int width) {
    if (const KelStatus fault = searchFault(pCdbk, width, step, height, pSrc, pIdx)) return fault;
    return full(pSrc, step, pIdx, height, *pCdbk, toSize(width));
}

KelStatus kelsCdbk16VQFull_A6_1(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk) {
    if (const KelStatus fault = searchFault(pCdbk, 1, step, height, pSrc, pIdx)) return fault;
    return full(pSrc, step, pIdx, height, *pCdbk, Fixed<1>());
}

KelStatus kelsCdbk16VQFull_A6_2(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk) {
    if (const KelStatus fault = searchFault(pCdbk, 2, step, height, pSrc, pIdx)) return fault;
    return full(pSrc, step, pIdx, height, *pCdbk, Fixed<2>());
}

KelStatus kelsCdbk16VQFull_A6_4(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk) {
    if (const KelStatus fault = searchFault(pCdbk, 4, step, height, pSrc, pIdx)) return fault;
    return full(pSrc, step, pIdx, height, *pCdbk, Fixed<4>());
}

KelStatus kelsCdbk16VQFull_A6_8(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk) {
    if (const KelStatus fault = searchFault(pCdbk, 8, step, height, pSrc, pIdx)) return fault;
    return full(pSrc, step, pIdx, height, *pCdbk, Fixed<8>());
}

// ---- Kel16s, the tree ----

KelStatus kelsCdbk16VQKMeans_A6(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk, int width) {
    if (const KelStatus fault = searchFault(pCdbk, width, step, height, pSrc, pIdx)) return fault;
    return tree(pSrc, step, pIdx, height, *pCdbk, toSize(width));
}

KelStatus kelsCdbk16VQKMeans_A6_1(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk) {
    if (const KelStatus fault = searchFault(pCdbk, 1, step, height, pSrc, pIdx)) return fault;
    return tree(pSrc, step, pIdx, height, *pCdbk, Fixed<1>());
}

KelStatus kelsCdbk16VQKMeans_A6_2(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk) {
    if (const KelStatus fault = searchFault(pCdbk, 2, step, height, pSrc, pIdx)) return fault;
    return tree(pSrc, step, pIdx, height, *pCdbk, Fixed<2>());
}

KelStatus kelsCdbk16VQKMeans_A6_4(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk) {
    if (const KelStatus fault = searchFault(pCdbk, 4, step, height, pSrc, pIdx)) return fault;
    return tree(pSrc, step, pIdx, height, *pCdbk, Fixed<4>());
}

KelStatus kelsCdbk16VQKMeans_A6_8(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk) {
    if (const KelStatus fault = searchFault(pCdbk, 8, step, height, pSrc, pIdx)) return fault;
    return tree(pSrc, step, pIdx, height, *pCdbk, Fixed<8>());
}
