// Constants of diagonal Gaussians, and block-diagonal matrices.
#include "kels/model.h"

#include <algorithm>

#include "core/check.h"
#include "core/memory.h"
#include "scoring/block_matrix.h"
#include "scoring/model_constants.h"

namespace {
using namespace kels;
using namespace kels::scoring;

template <class Matrix, class T>
KelStatus newMatrixFault(Matrix* const* ppMatrix, const T* const* ppSrc, const int* pSizes, int nBlocks) {
    if (anyNull(ppMatrix, ppSrc, pSizes)) return kelStatusNullPtr;
    if (nBlocks < 1) return kelStatusSize;
    return std::any_of(pSizes, pSizes + nBlocks, [](int n) { return n < 1; }) ? kelStatusSize : kelStatusOk;
}

// Makes a matrix, fills it, and stores it as what the caller knows it as.
template <class Opaque, class T>
KelStatus makeMatrix(const int* sizes, int nBlocks, const T* const* rows, Opaque** ppMatrix) {
    BlockMatrix<T>* const matrix = allocateBlockMatrix<T>(sizes, nBlocks);
    if (matrix == nullptr) return kelStatusNoMemory;
    copyBlocks(rows, *matrix);
    *ppMatrix = reinterpret_cast<Opaque*>(matrix);
    return kelStatusOk;
}

}  // namespace

// ---- constants -----------------------------------------------------------------------------------------------------

KelStatus kelsUpdateGConst_32f(const Kel32f* pIVar, int len, Kel32f* pDet) {
    if (const KelStatus fault = vectorFault(len, pIVar, pDet)) return fault;
    return logDeterminant<VarianceForm::Inverse>(pIVar, toSize(len), pDet);
}

KelStatus kelsUpdateGConst_64f(const Kel64f* pIVar, int len, Kel64f* pDet) {
    if (const KelStatus fault = vectorFault(len, pIVar, pDet)) return fault;
    return logDeterminant<VarianceForm::Inverse>(pIVar, toSize(len), pDet);
}

KelStatus kelsUpdateGConst_DirectVar_32f(const Kel32f* pVar, int len, Kel32f* pDet) {
    if (const KelStatus fault = vectorFault(len, pVar, pDet)) return fault;
    return logDeterminant<VarianceForm::Direct>(pVar, toSize(len), pDet);
}

KelStatus kelsUpdateGConst_DirectVar_64f(const Kel64f* pVar, int len, Kel64f* pDet) {
    if (const KelStatus fault = vectorFault(len, pVar, pDet)) return fault;
    return logDeterminant<VarianceForm::Direct>(pVar, toSize(len), pDet);
}

KelStatus kelsOutProbPreCalc_32f(const Kel32f* pLogWeight, const Kel32f* pDet, Kel32f* pGConst, int len) {
    if (const KelStatus fault = vectorFault(len, pLogWeight, pDet, pGConst)) return fault;
    gaussianConstants(pLogWeight, pDet, pGConst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsOutProbPreCalc_64f(const Kel64f* pLogWeight, const Kel64f* pDet, Kel64f* pGConst, int len) {
    if (const KelStatus fault = vectorFault(len, pLogWeight, pDet, pGConst)) return fault;
    gaussianConstants(pLogWeight, pDet, pGConst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsOutProbPreCalc_32s(const Kel32s* pLogWeight, const Kel32s* pDet, Kel32s* pGConst, int len) {
    if (const KelStatus fault = vectorFault(len, pLogWeight, pDet, pGConst)) return fault;
    gaussianConstants(pLogWeight, pDet, pGConst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsOutProbPreCalc_32f_I(const Kel32f* pLogWeight, Kel32f* pDetGConst, int len) {
    if (const KelStatus fault = vectorFault(len, pLogWeight, pDetGConst)) return fault;
    gaussianConstants(pLogWeight, pDetGConst, pDetGConst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsOutProbPreCalc_64f_I(const Kel64f* pLogWeight, Kel64f* pDetGConst, int len) {
    if (const KelStatus fault = vectorFault(len, pLogWeight, pDetGConst)) return fault;
    gaussianConstants(pLogWeight, pDetGConst, pDetGConst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsOutProbPreCalc_32s_I(const Kel32s* pLogWeight, Kel32s* pDetGConst, int len) {
    if (const KelStatus fault = vectorFault(len, pLogWeight, pDetGConst)) return fault;
    gaussianConstants(pLogWeight, pDetGConst, pDetGConst, toSize(len));
    return kelStatusOk;
}

// ---- block-diagonal matrices ---------------------------------------------------------------------------------------

KelStatus kelsBlockDMatrixInitAlloc_16s(KelBlockDMatrix_16s** ppMatrix, const Kel16s** ppSrc, const int* pSizes,
                                        int nBlocks) {
    if (const KelStatus fault = newMatrixFault(ppMatrix, ppSrc, pSizes, nBlocks)) return fault;
    return makeMatrix(pSizes, nBlocks, ppSrc, ppMatrix);
}

KelStatus kelsBlockDMatrixInitAlloc_32f(KelBlockDMatrix_32f** ppMatrix, const Kel32f** ppSrc, const int* pSizes,
                                        int nBlocks) {
    if (const KelStatus fault = newMatrixFault(ppMatrix, ppSrc, pSizes, nBlocks)) return fault;
    return makeMatrix(pSizes, nBlocks, ppSrc, ppMatrix);
}

KelStatus kelsBlockDMatrixInitAlloc_64f(KelBlockDMatrix_64f** ppMatrix, const Kel64f** ppSrc, const int* pSizes,
                                        int nBlocks) {
    if (const KelStatus fault = newMatrixFault(ppMatrix, ppSrc, pSizes, nBlocks)) return fault;
    return makeMatrix(pSizes, nBlocks, ppSrc, ppMatrix);
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
