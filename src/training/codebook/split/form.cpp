// Vectors put together from indices into codebooks, or into plain tables.
#include <array>

#include "core/check.h"
#include "kels/vq.h"
#include "training/codebook/split/check.h"
#include "training/codebook/split/indices.h"
#include "training/codebook/split/split.h"

namespace {

using namespace kels;
using namespace kels::codebook;

// ---- from codebooks ----

template <class T, class Indices>
KelStatus form(typename Indices::Element* pSrc, int srcStep, T* pDst, int dstStep, int height, Codebook<T>** ppCdbks,
               int nStream) {
    const KelStatus fault = partsFault<Indices>(pDst, dstStep, pSrc, srcStep, height, ppCdbks, nStream);
    if (fault != kelStatusOk) return fault;
    const Indices stored = {pSrc, srcStep};
    if (!haveAllIndices(height, ppCdbks, nStream, stored)) return kelStatusSize;
    joinParts<T>(stored, height, ppCdbks, nStream, StepRows(pDst, dstStep));
    return kelStatusOk;
}

// ---- from plain tables ----

template <class P>
bool isNullTable(const P* table) {
    return table == nullptr;
}

// As many vectors, one behind the other, as there are index arrays.
template <class T, class I, std::size_t N>
KelStatus formPlain(const std::array<const I*, N>& indices, const T** ppTables, T* pDst, const int* pHeight,
                    const int* pWidth, const int* pStep, int nStream) {
    if (std::any_of(indices.begin(), indices.end(), isNullTable<I>)) return kelStatusNullPtr;
    if (anyNull(ppTables, pDst, pHeight, pWidth, pStep)) return kelStatusNullPtr;
    if (std::any_of(ppTables, ppTables + std::max(nStream, 0), isNullTable<T>)) return kelStatusNullPtr;
    if (nStream < 1) return kelStatusSize;
    for (int k = 0; k < nStream; ++k) {
        if (pWidth[k] < 1 || pStep[k] < 1) return kelStatusSize;
        for (const I* const index : indices) {
            if (index[k] < 0 || index[k] >= pHeight[k]) return kelStatusSize;
        }
    }
    for (const I* const index : indices) {
        for (int k = 0; k < nStream; ++k) {
            const T* const row = StepRows(ppTables[k], pStep[k])[index[k]];
            pDst = std::copy(row, row + pWidth[k], pDst);
        }
    }
    return kelStatusOk;
}

}  // namespace

KelStatus kelsFormVectorVQ_16s32f(const Kel16s* pSrc, int srcStep, Kel32f* pDst, int dstStep, int height,
                                  KelCdbk_32f** ppCdbks, int nStream) {
    return form<Kel32f, WholeIndices<const Kel16s>>(pSrc, srcStep, pDst, dstStep, height, ppCdbks, nStream);
}

KelStatus kelsFormVectorVQ_16s16s(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, int height,
                                  KelCdbk_16s** ppCdbks, int nStream) {
    return form<Kel16s, WholeIndices<const Kel16s>>(pSrc, srcStep, pDst, dstStep, height, ppCdbks, nStream);
}

KelStatus kelsFormVectorVQ_8u32f(const Kel8u* pSrc, int srcStep, Kel32f* pDst, int dstStep, int height,
                                 KelCdbk_32f** ppCdbks, int nStream) {
    return form<Kel32f, WholeIndices<const Kel8u>>(pSrc, srcStep, pDst, dstStep, height, ppCdbks, nStream);
}

KelStatus kelsFormVectorVQ_8u16s(const Kel8u* pSrc, int srcStep, Kel16s* pDst, int dstStep, int height,
                                 KelCdbk_16s** ppCdbks, int nStream) {
    return form<Kel16s, WholeIndices<const Kel8u>>(pSrc, srcStep, pDst, dstStep, height, ppCdbks, nStream);
}

KelStatus kelsFormVectorVQ_1u32f(const Kel8u* pSrc, int srcStep, Kel32f* pDst, int dstStep, int height,
                                 KelCdbk_32f** ppCdbks, int nStream) {
    return form<Kel32f, PackedIndices<const Kel8u>>(pSrc, srcStep, pDst, dstStep, height, ppCdbks, nStream);
}

KelStatus kelsFormVectorVQ_1u16s(const Kel8u* pSrc, int srcStep, Kel16s* pDst, int dstStep, int height,
                                 KelCdbk_16s** ppCdbks, int nStream) {
    return form<Kel16s, PackedIndices<const Kel8u>>(pSrc, srcStep, pDst, dstStep, height, ppCdbks, nStream);
}

KelStatus kelsFormVector_8u16s(const Kel8u* pSrc, const Kel16s** ppTables, Kel16s* pDst, const int* pHeight,
                               const int* pWidth, const int* pStep, int nStream) {
    return formPlain(std::array{pSrc}, ppTables, pDst, pHeight, pWidth, pStep, nStream);
}

KelStatus kelsFormVector_8u32f(const Kel8u* pSrc, const Kel32f** ppTables, Kel32f* pDst, const int* pHeight,
                               const int* pWidth, const int* pStep, int nStream) {
    return formPlain(std::array{pSrc}, ppTables, pDst, pHeight, pWidth, pStep, nStream);
}

KelStatus kelsFormVector_16s16s(const Kel16s* pSrc, const Kel16s** ppTables, Kel16s* pDst, const int* pHeight,
                                const int* pWidth, const int* pStep, int nStream) {
    return formPlain(std::array{pSrc}, ppTables, pDst, pHeight, pWidth, pStep, nStream);
}

KelStatus kelsFormVector_16s32f(const Kel16s* pSrc, const Kel32f** ppTables, Kel32f* pDst, const int* pHeight,
                                const int* pWidth, const int* pStep, int nStream) {
    return formPlain(std::array{pSrc}, ppTables, pDst, pHeight, pWidth, pStep, nStream);
}

KelStatus kelsFormVector_2i_8u16s(const Kel8u* pSrc1, const Kel8u* pSrc2, const Kel16s** ppTables, Kel16s* pDst,
                                  const int* pHeight, const int* pWidth, const int* pStep, int nStream) {
    return formPlain(std::array{pSrc1, pSrc2}, ppTables, pDst, pHeight, pWidth, pStep, nStream);
}

KelStatus kelsFormVector_2i_8u32f(const Kel8u* pSrc1, const Kel8u* pSrc2, const Kel32f** ppTables, Kel32f* pDst,
                                  const int* pHeight, const int* pWidth, const int* pStep, int nStream) {
    return formPlain(std::array{pSrc1, pSrc2}, ppTables, pDst, pHeight, pWidth, pStep, nStream);
}

KelStatus kelsFormVector_2i_16s16s(const Kel16s* pSrc1, const Kel16s* pSrc2, const Kel16s** ppTables, Kel16s* pDst,
                                   const int* pHeight, const int* pWidth, const int* pStep, int nStream) {
    return formPlain(std::array{pSrc1, pSrc2}, ppTables, pDst, pHeight, pWidth, pStep, nStream);
}

KelStatus kelsFormVector_2i_16s32f(const Kel16s* pSrc1, const Kel16s* pSrc2, const Kel32f** ppTables, Kel32f* pDst,
                                   const int* pHeight, const int* pWidth, const int* pStep, int nStream) {
    return formPlain(std::array{pSrc1, pSrc2}, ppTables, pDst, pHeight, pWidth, pStep, nStream);
}

KelStatus kelsFormVector_4i_8u16s(const Kel8u* pSrc1, const Kel8u* pSrc2, const Kel8u* pSrc3, const Kel8u* pSrc4,
                                  const Kel16s** ppTables, Kel16s* pDst, const int* pHeight, const int* pWidth,
                                  const int* pStep, int nStream) {
    return formPlain(std::array{pSrc1, pSrc2, pSrc3, pSrc4}, ppTables, pDst, pHeight, pWidth, pStep, nStream);
}

KelStatus kelsFormVector_4i_8u32f(const Kel8u* pSrc1, const Kel8u* pSrc2, const Kel8u* pSrc3, const Kel8u* pSrc4,
                                  const Kel32f** ppTables, Kel32f* pDst, const int* pHeight, const int* pWidth,
                                  const int* pStep, int nStream) {
    return formPlain(std::array{pSrc1, pSrc2, pSrc3, pSrc4}, ppTables, pDst, pHeight, pWidth, pStep, nStream);
}

KelStatus kelsFormVector_4i_16s16s(const Kel16s* pSrc1, const Kel16s* pSrc2, const Kel16s* pSrc3, const Kel16s* pSrc4,
                                   const Kel16s** ppTables, Kel16s* pDst, const int* pHeight, const int* pWidth,
                                   const int* pStep, int nStream) {
    return formPlain(std::array{pSrc1, pSrc2, pSrc3, pSrc4}, ppTables, pDst, pHeight, pWidth, pStep, nStream);
}

KelStatus kelsFormVector_4i_16s32f(const Kel16s* pSrc1, const Kel16s* pSrc2, const Kel16s* pSrc3, const Kel16s* pSrc4,
                                   const Kel32f** ppTables, Kel32f* pDst, const int* pHeight, const int* pWidth,
                                   const int* pStep, int nStream) {
    return formPlain(std::array{pSrc1, pSrc2, pSrc3, pSrc4}, ppTables, pDst, pHeight, pWidth, pStep, nStream);
}
