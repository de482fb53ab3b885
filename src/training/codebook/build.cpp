// Construction of codebooks, their release, and access to their codevectors.
#include "training/codebook/build.h"

#include "kels/vq.h"
#include "training/codebook/check.h"
#include "training/codebook/in_place.h"

namespace {

using namespace kels;
using namespace kels::codebook;

// Of the arguments that the initialisers with allocation share, once their pointers are known to be good.
template <class T>
KelStatus trainingFault(const T* pWgt, int width, int step, int height, int cdbkSize, int kind) {
    if (width < 1 || step < 1 || height < 1 || cdbkSize < 1 || step < width) return kelStatusSize;
    if (cdbkSize > kMostCodevectors || height < cdbkSize) return kelStatusSize;
    if (anyNegative(pWgt, width)) return kelStatusBadArg;
    if (!isKnown(kind)) return kelStatusModeNotSupported;
    return kelStatusOk;
}

template <class T>
KelStatus initWeighted(Codebook<T>** ppCdbk, const T* pSrc, const T* pWgt, int width, int step, int height,
                       int cdbkSize, int kind) {
    CodebookBuilder<T> builder(pWgt, width, step, kind);
    const KelStatus status = builder.build(StepRows<const T>(pSrc, step), height, cdbkSize);
    if (status >= 0) *ppCdbk = builder.handOver();
    return status;
}

// With weights of 1, whose place is taken before the pointers are looked at.
template <class T>
KelStatus initUnweighted(Codebook<T>** ppCdbk, const T* pSrc, int width, int step, int height, int cdbkSize, int kind) {
    if (width < 1) return kelStatusSize;
    Scratch<T, 64> weights(width);
    if (weights.failed()) return kelStatusNoMemory;
    if (anyNull(ppCdbk, pSrc)) return kelStatusNullPtr;
    if (step < width) return kelStatusSize;
    std::fill(weights.data(), weights.data() + width, T(1));
    if (const KelStatus fault = trainingFault(weights.data(), width, step, height, cdbkSize, kind)) return fault;
    return initWeighted(ppCdbk, pSrc, weights.data(), width, step, height, cdbkSize, kind);
}

// Of the initialisers in memory of the caller, and of what tells how much of it they take.
KelStatus inPlaceFault(bool null, int width, int step, int height, int cdbkSize, int kind) {
    if (kind != kelCdbkExhaustive) return kelStatusModeNotSupported;
    if (null) return kelStatusNullPtr;
    if (width < 1 || step < 1 || height < 1 || cdbkSize < 1 || width > step) return kelStatusSize;
    if (cdbkSize > kMostCodevectors || cdbkSize != height) return kelStatusSize;
    return kelStatusOk;
}

template <class Record, class T>
void copyCodebook(const Record& codebook, T* pDst, int step) {
    const auto codevectors = codevectorsOf(codebook);
    const StepRows<T> rows(pDst, step);
    for (Kel32s i = 0; i < codebook.cdbkSize; ++i) {
        std::copy(codevectors[i], codevectors[i] + codebook.width, rows[i]);
    }
}

}  // namespace

// ---- with allocation -----------------------------------------------------------------------------------------------

KelStatus kelsCdbkInitAlloc_L2_32f(KelCdbk_32f** ppCdbk, const Kel32f* pSrc, int width, int step, int height,
                                   int cdbkSize, int kind) {
    return initUnweighted(ppCdbk, pSrc, width, step, height, cdbkSize, kind);
}

KelStatus kelsCdbkInitAlloc_WgtL2_32f(KelCdbk_32f** ppCdbk, const Kel32f* pSrc, const Kel32f* pWgt, int width, int step,
                                      int height, int cdbkSize, int kind) {
    if (anyNull(ppCdbk, pSrc, pWgt)) return kelStatusNullPtr;
    if (const KelStatus fault = trainingFault(pWgt, width, step, height, cdbkSize, kind)) return fault;
    return initWeighted(ppCdbk, pSrc, pWgt, width, step, height, cdbkSize, kind);
}

KelStatus kelsCdbkInitAlloc_L2_16s(KelCdbk_16s** ppCdbk, const Kel16s* pSrc, int width, int step, int height,
                                   int cdbkSize, int kind) {
    return initUnweighted(ppCdbk, pSrc, width, step, height, cdbkSize, kind);
}

KelStatus kelsCdbkInitAlloc_WgtL2_16s(KelCdbk_16s** ppCdbk, const Kel16s* pSrc, const Kel16s* pWgt, int width, int step,
                                      int height, int cdbkSize, int kind) {
    if (anyNull(ppCdbk, pSrc, pWgt)) return kelStatusNullPtr;
    if (const KelStatus fault = trainingFault(pWgt, width, step, height, cdbkSize, kind)) return fault;
    return initWeighted(ppCdbk, pSrc, pWgt, width, step, height, cdbkSize, kind);
}

KelStatus kelsCdbkFree_32f(KelCdbk_32f* pCdbk) {
    if (isNull(pCdbk)) return kelStatusNullPtr;
    if (!isKnown(pCdbk->kind)) return kelStatusUnknownKind;
    release<Kel32f>(pCdbk);
    return kelStatusOk;
}

KelStatus kelsCdbkFree_16s(KelCdbk_16s* pCdbk) {
    if (isNull(pCdbk)) return kelStatusNullPtr;
    if (!isKnown(pCdbk->kind)) return kelStatusUnknownKind;
    release<Kel16s>(pCdbk);
    return kelStatusOk;
}

// ---- in caller memory ----------------------------------------------------------------------------------------------

KelStatus kelsCdbkGetSize_32f(int width, int step, int height, int cdbkSize, int kind, int* pSize) {
    if (const KelStatus fault = inPlaceFault(anyNull(pSize), width, step, height, cdbkSize, kind)) return fault;
    const InPlace<Kel32f> place(width, step, cdbkSize);
    if (!place.fits()) return kelStatusNoMemory;
    *pSize = static_cast<int>(place.bytes());
    return kelStatusOk;
}

KelStatus kelsCdbkGetSize_16s(int width, int step, int height, int cdbkSize, int kind, int* pSize) {
    if (const KelStatus fault = inPlaceFault(anyNull(pSize), width, step, height, cdbkSize, kind)) return fault;
    const InPlace<Kel16s> place(width, step, cdbkSize);
    if (!place.fits()) return kelStatusNoMemory;
    *pSize = static_cast<int>(place.bytes());
    return kelStatusOk;
}

KelStatus kelsCdbkInit_L2_32f(KelCdbk_32f* pCdbk, const Kel32f* pSrc, int width, int step, int height, int cdbkSize,
                              int kind) {
    if (const KelStatus fault = inPlaceFault(anyNull(pCdbk, pSrc), width, step, height, cdbkSize, kind)) return fault;
    const InPlace<Kel32f> place(width, step, cdbkSize);
    if (!place.fits()) return kelStatusNoMemory;
    buildInPlace(place, pSrc, step, pCdbk);
    return kelStatusOk;
}

KelStatus kelsCdbkInit_L2_16s(KelCdbk_16s* pCdbk, const Kel16s* pSrc, int width, int step, int height, int cdbkSize,
                              int kind) {
    if (const KelStatus fault = inPlaceFault(anyNull(pCdbk, pSrc), width, step, height, cdbkSize, kind)) return fault;
    const InPlace<Kel16s> place(width, step, cdbkSize);
    if (!place.fits()) return kelStatusNoMemory;
    buildInPlace(place, pSrc, step, pCdbk);
    // The record is opaque, so that no caller could set them.
    pCdbk->indexBits = indexBitsOf(cdbkSize);
    return kelStatusOk;
}

// ---- access --------------------------------------------------------------------------------------------------------

KelStatus kelsGetCdbkSize_32f(const KelCdbk_32f* pCdbk, int* pSize) {
    if (isNull(pCdbk) || anyNull(pSize)) return kelStatusNullPtr;
    *pSize = pCdbk->cdbkSize;
    return kelStatusOk;
}

KelStatus kelsGetCdbkSize_16s(const KelCdbk_16s* pCdbk, int* pSize) {
    if (isNull(pCdbk) || anyNull(pSize)) return kelStatusNullPtr;
    *pSize = pCdbk->cdbkSize;
    return kelStatusOk;
}

KelStatus kelsGetCodebook_32f(const KelCdbk_32f* pCdbk, Kel32f* pDst, int step) {
    if (isNull(pCdbk) || anyNull(pDst)) return kelStatusNullPtr;
    if (step < 1 || step < pCdbk->width) return kelStatusSize;
    copyCodebook(*pCdbk, pDst, step);
    return kelStatusOk;
}

KelStatus kelsGetCodebook_16s(const KelCdbk_16s* pCdbk, Kel16s* pDst, int step) {
    if (isNull(pCdbk) || anyNull(pDst)) return kelStatusNullPtr;
    if (step < 1 || step < pCdbk->width) return kelStatusSize;
    copyCodebook(*pCdbk, pDst, step);
    return kelStatusOk;
}
