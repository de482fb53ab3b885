#include "training/codebook/search.h"

using namespace kels;

namespace {

template <class T, class Width>
KelStatus full(const T* pSrc, int step, Kel32s* pIdx, int height, const Codebook<T>& codebook, Width width) {
    return searchFull<UnitVariance, T>(codebook, StepRows(pSrc, step), toSize(height), pIdx, width);
}

template <class T, class Width>
KelStatus tree(const T* pSrc, int step, Kel32s* pIdx, int height, const Codebook<T>& codebook, Width width) {
    if (codebook.treeRoot == nullptr) return kelStatusModeNotSupported;
    return searchTree<UnitVariance, T>(codebook, StepRows(pSrc, step), toSize(height), pIdx, width);
}

template <std::size_t N>
using Fixed = std::integral_constant<std::size_t, N>;

// Null pointers, then sizes.
template <class T, class Record>
KelStatus checkSearch(const T* pSrc, int step, const Kel32s* pIdx, int height, const Record* pCdbk, int width) {
    if (isNull(pCdbk) || anyNull(pSrc, pIdx)) return kelStatusNullPtr;
    if (step < 1 || height < 1 || width != pCdbk->width || step < width) return kelStatusSize;
    return kelStatusOk;
}

}  // namespace

// ---- Kel32f, all codevectors ----

KelStatus kelsCdbk32VQFull_A6(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk, int width) {
    const KelStatus status = checkSearch(pSrc, step, pIdx, height, pCdbk, width);
    if (status != kelStatusOk) return status;
    return full(pSrc, step, pIdx, height, *pCdbk, toSize(width));
}

KelStatus kelsCdbk32VQFull_A6_1(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk) {
    const KelStatus status = checkSearch(pSrc, step, pIdx, height, pCdbk, 1);
    if (status != kelStatusOk) return status;
    return full(pSrc, step, pIdx, height, *pCdbk, Fixed<1>());
}

KelStatus kelsCdbk32VQFull_A6_2(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk) {
    const KelStatus status = checkSearch(pSrc, step, pIdx, height, pCdbk, 2);
    if (status != kelStatusOk) return status;
    return full(pSrc, step, pIdx, height, *pCdbk, Fixed<2>());
}

KelStatus kelsCdbk32VQFull_A6_4(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk) {
    const KelStatus status = checkSearch(pSrc, step, pIdx, height, pCdbk, 4);
    if (status != kelStatusOk) return status;
    return full(pSrc, step, pIdx, height, *pCdbk, Fixed<4>());
}

KelStatus kelsCdbk32VQFull_A6_8(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk) {
    const KelStatus status = checkSearch(pSrc, step, pIdx, height, pCdbk, 8);
    if (status != kelStatusOk) return status;
    return full(pSrc, step, pIdx, height, *pCdbk, Fixed<8>());
}

// ---- Kel32f, the tree ----

KelStatus kelsCdbk32VQKMeans_A6(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk, int width) {
    const KelStatus status = checkSearch(pSrc, step, pIdx, height, pCdbk, width);
    if (status != kelStatusOk) return status;
    return tree(pSrc, step, pIdx, height, *pCdbk, toSize(width));
}

KelStatus kelsCdbk32VQKMeans_A6_1(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk) {
    const KelStatus status = checkSearch(pSrc, step, pIdx, height, pCdbk, 1);
    if (status != kelStatusOk) return status;
    return tree(pSrc, step, pIdx, height, *pCdbk, Fixed<1>());
}

KelStatus kelsCdbk32VQKMeans_A6_2(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk) {
    const KelStatus status = checkSearch(pSrc, step, pIdx, height, pCdbk, 2);
    if (status != kelStatusOk) return status;
    return tree(pSrc, step, pIdx, height, *pCdbk, Fixed<2>());
}

KelStatus kelsCdbk32VQKMeans_A6_4(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk) {
    const KelStatus status = checkSearch(pSrc, step, pIdx, height, pCdbk, 4);
    if (status != kelStatusOk) return status;
    return tree(pSrc, step, pIdx, height, *pCdbk, Fixed<4>());
}

KelStatus kelsCdbk32VQKMeans_A6_8(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk) {
    const KelStatus status = checkSearch(pSrc, step, pIdx, height, pCdbk, 8);
    if (status != kelStatusOk) return status;
    return tree(pSrc, step, pIdx, height, *pCdbk, Fixed<8>());
}

// ---- Kel16s, all codevectors ----

KelStatus kelsCdbk16VQFull_A6(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk, int width) {
    const KelStatus status = checkSearch(pSrc, step, pIdx, height, pCdbk, width);
    if (status != kelStatusOk) return status;
    return full(pSrc, step, pIdx, height, *pCdbk, toSize(width));
}

KelStatus kelsCdbk16VQFull_A6_1(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk) {
    const KelStatus status = checkSearch(pSrc, step, pIdx, height, pCdbk, 1);
    if (status != kelStatusOk) return status;
    return full(pSrc, step, pIdx, height, *pCdbk, Fixed<1>());
}

KelStatus kelsCdbk16VQFull_A6_2(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk) {
    const KelStatus status = checkSearch(pSrc, step, pIdx, height, pCdbk, 2);
    if (status != kelStatusOk) return status;
    return full(pSrc, step, pIdx, height, *pCdbk, Fixed<2>());
}

KelStatus kelsCdbk16VQFull_A6_4(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk) {
    const KelStatus status = checkSearch(pSrc, step, pIdx, height, pCdbk, 4);
    if (status != kelStatusOk) return status;
    return full(pSrc, step, pIdx, height, *pCdbk, Fixed<4>());
}

KelStatus kelsCdbk16VQFull_A6_8(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk) {
    const KelStatus status = checkSearch(pSrc, step, pIdx, height, pCdbk, 8);
    if (status != kelStatusOk) return status;
    return full(pSrc, step, pIdx, height, *pCdbk, Fixed<8>());
}

// ---- Kel16s, the tree ----

KelStatus kelsCdbk16VQKMeans_A6(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk, int width) {
    const KelStatus status = checkSearch(pSrc, step, pIdx, height, pCdbk, width);
    if (status != kelStatusOk) return status;
    return tree(pSrc, step, pIdx, height, *pCdbk, toSize(width));
}

KelStatus kelsCdbk16VQKMeans_A6_1(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk) {
    const KelStatus status = checkSearch(pSrc, step, pIdx, height, pCdbk, 1);
    if (status != kelStatusOk) return status;
    return tree(pSrc, step, pIdx, height, *pCdbk, Fixed<1>());
}

KelStatus kelsCdbk16VQKMeans_A6_2(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk) {
    const KelStatus status = checkSearch(pSrc, step, pIdx, height, pCdbk, 2);
    if (status != kelStatusOk) return status;
    return tree(pSrc, step, pIdx, height, *pCdbk, Fixed<2>());
}

KelStatus kelsCdbk16VQKMeans_A6_4(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk) {
    const KelStatus status = checkSearch(pSrc, step, pIdx, height, pCdbk, 4);
    if (status != kelStatusOk) return status;
    return tree(pSrc, step, pIdx, height, *pCdbk, Fixed<4>());
}

KelStatus kelsCdbk16VQKMeans_A6_8(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk) {
    const KelStatus status = checkSearch(pSrc, step, pIdx, height, pCdbk, 8);
    if (status != kelStatusOk) return status;
    return tree(pSrc, step, pIdx, height, *pCdbk, Fixed<8>());
}
