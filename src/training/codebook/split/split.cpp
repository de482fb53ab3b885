// Vectors quantised in parts.
#include "training/codebook/split/split.h"

#include "kels/vq.h"
#include "training/codebook/split/check.h"
#include "training/codebook/split/indices.h"

namespace {

using namespace kels;
using namespace kels::codebook;

template <class T, class Indices>
KelStatus split(const T* pSrc, int srcStep, typename Indices::Element* pDst, int dstStep, int height,
                Codebook<T>** ppCdbks, int nStream) {
    const KelStatus fault = partsFault<Indices>(pSrc, srcStep, pDst, dstStep, height, ppCdbks, nStream);
    if (fault != kelStatusOk) return fault;
    if (!holdIndices<Indices>(ppCdbks, nStream)) return kelStatusSize;
    return quantiseParts<T>(StepRows(pSrc, srcStep), height, ppCdbks, nStream, Indices{pDst, dstStep});
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
