#include "kels/model.h"

#include <algorithm>

#include "core/check.h"
#include "core/memory.h"
#include "scoring/block_matrix.h"
#include "scoring/model_constants.h"

using namespace kels;

KelStatus kelsUpdateGConst_32f(const Kel32f* pIVar, int len, Kel32f* pDet) {
    if (anyNull(pIVar, pDet)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    return logDeterminant<VarianceForm::Inverse>(pIVar, toSize(len), pDet);
}

KelStatus kelsUpdateGConst_64f(const Kel64f* pIVar, int len, Kel64f* pDet) {
    if (anyNull(pIVar, pDet)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    return logDeterminant<VarianceForm::Inverse>(pIVar, toSize(len), pDet);
}

KelStatus kelsUpdateGConst_DirectVar_32f(const Kel32f* pVar, int len, Kel32f* pDet) {
    if (anyNull(pVar, pDet)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    return logDeterminant<VarianceForm::Direct>(pVar, toSize(len), pDet);
}

KelStatus kelsUpdateGConst_DirectVar_64f(const Kel64f* pVar, int len, Kel64f* pDet) {
    if (anyNull(pVar, pDet)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    return logDeterminant<VarianceForm::Direct>(pVar, toSize(len), pDet);
}

KelStatus kelsOutProbPreCalc_32f(const Kel32f* pLogWeight, const Kel32f* pDet, Kel32f* pGConst, int len) {
    if (anyNull(pLogWeight, pDet, pGConst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    gaussianConstants(pLogWeight, pDet, pGConst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsOutProbPreCalc_64f(const Kel64f* pLogWeight, const Kel64f* pDet, Kel64f* pGConst, int len) {
    if (anyNull(pLogWeight, pDet, pGConst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    gaussianConstants(pLogWeight, pDet, pGConst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsOutProbPreCalc_32s(const Kel32s* pLogWeight, const Kel32s* pDet, Kel32s* pGConst, int len) {
    if (anyNull(pLogWeight, pDet, pGConst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    gaussianConstants(pLogWeight, pDet, pGConst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsOutProbPreCalc_32f_I(const Kel32f* pLogWeight, Kel32f* pDetGConst, int len) {
    if (anyNull(pLogWeight, pDetGConst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    gaussianConstants(pLogWeight, pDetGConst, pDetGConst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsOutProbPreCalc_64f_I(const Kel64f* pLogWeight, Kel64f* pDetGConst, int len) {
    if (anyNull(pLogWeight, pDetGConst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    gaussianConstants(pLogWeight, pDetGConst, pDetGConst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsOutProbPreCalc_32s_I(const Kel32s* pLogWeight, Kel32s* pDetGConst, int len) {
    if (anyNull(pLogWeight, pDetGConst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    gaussianConstants(pLogWeight, pDetGConst, pDetGConst, toSize(len));
    return kelStatusOk;
}

namespace {

bool anySizeBelowOne(const int* sizes, int nBlocks) {
    return std::any_of(sizes, sizes + nBlocks, [](int n) { return n < 1; });
}

// Takes over a new matrix, if there is one, as what the caller knows it as.
template <class Opaque, class T>
KelStatus fillAndStore(BlockMatrix<T>* matrix, const T* const* rows, Opaque** ppMatrix) {
    if (matrix == nullptr) return kelStatusNoMemory;
    copyBlocks(rows, *matrix);
    *ppMatrix = reinterpret_cast<Opaque*>(matrix);
    return kelStatusOk;
}

}  // namespace

KelStatus kelsBlockDMatrixInitAlloc_16s(KelBlockDMatrix_16s** ppMatrix, const Kel16s** ppSrc, const int* pSizes,
                                        int nBlocks) {
    if (anyNull(ppMatrix, ppSrc, pSizes)) return kelStatusNullPtr;
    if (nBlocks < 1) return kelStatusSize;
    if (anySizeBelowOne(pSizes, nBlocks)) return kelStatusSize;
    return fillAndStore(allocMatrix_16s(pSizes, nBlocks), ppSrc, ppMatrix);
}

KelStatus kelsBlockDMatrixInitAlloc_32f(KelBlockDMatrix_32f** ppMatrix, const Kel32f** ppSrc, const int* pSizes,
                                        int nBlocks) {
    if (anyNull(ppMatrix, ppSrc, pSizes)) return kelStatusNullPtr;
    if (nBlocks < 1) return kelStatusSize;
    if (anySizeBelowOne(pSizes, nBlocks)) return kelStatusSize;
    return fillAndStore(allocMatrix_32f(pSizes, nBlocks), ppSrc, ppMatrix);
}

KelStatus kelsBlockDMatrixInitAlloc_64f(KelBlockDMatrix_64f** ppMatrix, const Kel64f** ppSrc, const int* pSizes,
                                        int nBlocks) {
    if (anyNull(ppMatrix, ppSrc, pSizes)) return kelStatusNullPtr;
    if (nBlocks < 1) return kelStatusSize;
    if (anySizeBelowOne(pSizes, nBlocks)) return kelStatusSize;
    return fillAndStore(allocMatrix_64f(pSizes, nBlocks), ppSrc, ppMatrix);
}

KelStatus kelsBlockDMatrixFree_16s(KelBlockDMatrix_16s* pMatrix) {
    if (anyNull(pMatrix)) return kelStatusNullPtr;
    kelsFree(blocksOf(pMatrix).rawBlock);
    return kelStatusOk;
}

KelStatus kelsBlockDMatrixFree_32f(KelBlockDMatrix_32f* pMatrix) {
    if (anyNull(pMatrix)) return kelStatusNullPtr;
    kelsFree(blocksOf(pMatrix).rawBlock);
    return kelStatusOk;
}

KelStatus kelsBlockDMatrixFree_64f(KelBlockDMatrix_64f* pMatrix) {
    if (anyNull(pMatrix)) return kelStatusNullPtr;
    kelsFree(blocksOf(pMatrix).rawBlock);
    return kelStatusOk;
}
