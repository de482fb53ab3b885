#include "training/codebook/split/split.h"

using namespace kels;

namespace {

// The checks, in order, and the kernel.
template <class T, class Layout>
KelStatus split(const T* pSrc, int srcStep, typename Layout::Element* pDst, int dstStep, int height,
                Codebook<T>** ppCdbks, int nStream) {
    if (anyNull(ppCdbks, pSrc) || anyNull(pDst) || anyNullOf(ppCdbks, nStream)) return kelStatusNullPtr;
    if (srcStep < 1 || dstStep < 1 || height < 1 || nStream < 1) return kelStatusSize;
    if (widthOf(ppCdbks, nStream) > srcStep) return kelStatusSize;
    if (!havePlaces<Layout>(ppCdbks, nStream, dstStep) || !holdIndices<Layout>(ppCdbks, nStream)) return kelStatusSize;
    return quantiseParts<T>(StepRows(pSrc, srcStep), height, ppCdbks, nStream, Layout{pDst, dstStep});
}

}  // namespace

KelStatus kelsSplitVQ_32f16s(const Kel32f* pSrc, int srcStep, Kel16s* pDst, int dstStep, int height,
                             KelCdbk_32f** ppCdbks, int nStream) {
    return split<Kel32f, WholeIndices<Kel16s>>(pSrc, srcStep, pDst, dstStep, height, ppCdbks, nStream);
}

KelStatus kelsSplitVQ_32f8u(const Kel32f* pSrc, int srcStep, Kel8u* pDst, int dstStep, int height,
                            KelCdbk_32f** ppCdbks, int nStream) {
    return split<Kel32f, WholeIndices<Kel8u>>(pSrc, srcStep, pDst, dstStep, height, ppCdbks, nStream);
}

KelStatus kelsSplitVQ_32f1u(const Kel32f* pSrc, int srcStep, Kel8u* pDst, int dstStep, int height,
                            KelCdbk_32f** ppCdbks, int nStream) {
    return split<Kel32f, PackedIndices<Kel8u>>(pSrc, srcStep, pDst, dstStep, height, ppCdbks, nStream);
}

KelStatus kelsSplitVQ_16s16s(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, int height,
                             KelCdbk_16s** ppCdbks, int nStream) {
    return split<Kel16s, WholeIndices<Kel16s>>(pSrc, srcStep, pDst, dstStep, height, ppCdbks, nStream);
}

KelStatus kelsSplitVQ_16s8u(const Kel16s* pSrc, int srcStep, Kel8u* pDst, int dstStep, int height,
                            KelCdbk_16s** ppCdbks, int nStream) {
    return split<Kel16s, WholeIndices<Kel8u>>(pSrc, srcStep, pDst, dstStep, height, ppCdbks, nStream);
}

KelStatus kelsSplitVQ_16s1u(const Kel16s* pSrc, int srcStep, Kel8u* pDst, int dstStep, int height,
                            KelCdbk_16s** ppCdbks, int nStream) {
    return split<Kel16s, PackedIndices<Kel8u>>(pSrc, srcStep, pDst, dstStep, height, ppCdbks, nStream);
}
