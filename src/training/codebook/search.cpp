// Searches of codebooks: the nearest codevector of every row of a block, and the nearest ones of a single vector.
#include "training/codebook/search.h"

#include "kels/vq.h"
#include "training/codebook/check.h"
#include "training/codebook/ordered_picks.h"

namespace kels::codebook {
template void quantise<Kel32f>(const KelCdbk_32f&, const StepRows<const Kel32f>&, std::size_t, Kel32s*,
                               TurnedVectors<Kel32f>&);
template void quantise<Kel16s>(const KelCdbk_16s&, const StepRows<const Kel16s>&, std::size_t, Kel32s*,
                               TurnedVectors<Kel16s>&);
}  // namespace kels::codebook

namespace {

using namespace kels;
using namespace kels::codebook;

// The distances of a vector from all codevectors, in the codebook's scratch.
template <class T>
OrderedPicks<RealOf<T>> inOrder(const T* pSrc, Codebook<T>& codebook) {
    const Candidates<T> all = {pSrc, codevectorsOf(codebook), codebook.weights};
    const std::size_t count = toSize(codebook.cdbkSize);
    withWeighting(isWeighted(codebook), [&](auto weighting) {
        distances<decltype(weighting)>(all, 0, count, toSize(codebook.width), codebook.work);
    });
    return OrderedPicks<RealOf<T>>(codebook.work, count);
}

// Stores number i of the codevectors found, and its distance if those are wanted.
template <class T, class D, class Root>
void storePick(const Codebook<T>& codebook, const T* pSrc, Kel32s index, int i, Kel32s* pIdx, D* pDist,
               const Root& root) {
    pIdx[i] = index;
    if (pDist != nullptr) pDist[i] = root(squaredDistance(codebook, pSrc, index));
}

template <class T, class D, class Root>
void nearestInOrder(const T* pSrc, Kel32s* pIdx, D* pDist, Codebook<T>& codebook, int n, const Root& root) {
    auto picks = inOrder<T>(pSrc, codebook);
    for (int i = 0; i < n; ++i) storePick<T>(codebook, pSrc, picks.next(), i, pIdx, pDist, root);
}

template <class T, class D, class Root>
void withinFactor(const T* pSrc, Kel32s* pIdx, D* pDist, Codebook<T>& codebook, Kel32f factor, Kel32s* pCount,
                  const Root& root) {
    auto picks = inOrder<T>(pSrc, codebook);
    Kel64f limit = 0;
    Kel32s n = 0;
    for (; n < codebook.cdbkSize; ++n) {
        const Kel32s index = picks.next();
        const auto distance = static_cast<Kel64f>(picks.distance());
        if (n == 0) limit = listedUpTo(distance, factor);
        if (n > 0 && !(distance <= limit)) break;
        storePick<T>(codebook, pSrc, index, n, pIdx, pDist, root);
    }
    *pCount = n;
}

constexpr Kel32s* kNoDistances = nullptr;

}  // namespace

// ---- rows ----------------------------------------------------------------------------------------------------------

KelStatus kelsVQ_32f(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk) {
    if (const KelStatus fault = searchFault(pCdbk, step, height, pSrc, pIdx)) return fault;
    return quantise<Kel32f>(*pCdbk, StepRows(pSrc, step), toSize(height), pIdx);
}

KelStatus kelsVQ_16s(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk) {
    if (const KelStatus fault = searchFault(pCdbk, step, height, pSrc, pIdx)) return fault;
    return quantise<Kel16s>(*pCdbk, StepRows(pSrc, step), toSize(height), pIdx);
}

KelStatus kelsVQDist_32f(const Kel32f* pSrc, int step, Kel32s* pIdx, Kel32f* pDist, int height, KelCdbk_32f* pCdbk) {
    if (const KelStatus fault = searchFault(pCdbk, step, height, pSrc, pIdx, pDist)) return fault;
    return quantiseWithDistances<Kel32f>(*pCdbk, StepRows(pSrc, step), height, pIdx, pDist, RootOf());
}

KelStatus kelsVQDist_16s32s_Sfs(const Kel16s* pSrc, int step, Kel32s* pIdx, Kel32s* pDist, int height,
                                KelCdbk_16s* pCdbk, int scaleFactor) {
    if (const KelStatus fault = searchFault(pCdbk, step, height, pSrc, pIdx, pDist)) return fault;
    return quantiseWithDistances<Kel16s>(*pCdbk, StepRows(pSrc, step), height, pIdx, pDist, ScaledRootOf{scaleFactor});
}

// ---- single vectors, in order --------------------------------------------------------------------------------------

KelStatus kelsVQSingle_Sort_32f(const Kel32f* pSrc, Kel32s* pIdx, KelCdbk_32f* pCdbk, int n) {
    if (const KelStatus fault = nearestFault(pCdbk, n, pSrc, pIdx)) return fault;
    nearestInOrder(pSrc, pIdx, kNoDistances, *pCdbk, n, NoRoot());
    return kelStatusOk;
}

KelStatus kelsVQSingle_Sort_16s(const Kel16s* pSrc, Kel32s* pIdx, KelCdbk_16s* pCdbk, int n) {
    if (const KelStatus fault = nearestFault(pCdbk, n, pSrc, pIdx)) return fault;
    nearestInOrder(pSrc, pIdx, kNoDistances, *pCdbk, n, NoRoot());
    return kelStatusOk;
}

KelStatus kelsVQDistSingle_Sort_32f(const Kel32f* pSrc, Kel32s* pIdx, Kel32f* pDist, KelCdbk_32f* pCdbk, int n) {
    if (const KelStatus fault = nearestFault(pCdbk, n, pSrc, pIdx, pDist)) return fault;
    nearestInOrder(pSrc, pIdx, pDist, *pCdbk, n, RootOf());
    return kelStatusOk;
}

KelStatus kelsVQDistSingle_Sort_16s32s_Sfs(const Kel16s* pSrc, Kel32s* pIdx, Kel32s* pDist, KelCdbk_16s* pCdbk, int n,
                                           int scaleFactor) {
    if (const KelStatus fault = nearestFault(pCdbk, n, pSrc, pIdx, pDist)) return fault;
    nearestInOrder(pSrc, pIdx, pDist, *pCdbk, n, ScaledRootOf{scaleFactor});
    return kelStatusOk;
}

// ---- single vectors, all near ones ---------------------------------------------------------------------------------

KelStatus kelsVQSingle_Thresh_32f(const Kel32f* pSrc, Kel32s* pIdx, KelCdbk_32f* pCdbk, Kel32f factor, Kel32s* pCount) {
    if (const KelStatus fault = factorFault(pCdbk, factor, pSrc, pIdx, pCount)) return fault;
    withinFactor(pSrc, pIdx, kNoDistances, *pCdbk, factor, pCount, NoRoot());
    return kelStatusOk;
}

KelStatus kelsVQSingle_Thresh_16s(const Kel16s* pSrc, Kel32s* pIdx, KelCdbk_16s* pCdbk, Kel32f factor, Kel32s* pCount) {
    if (const KelStatus fault = factorFault(pCdbk, factor, pSrc, pIdx, pCount)) return fault;
    withinFactor(pSrc, pIdx, kNoDistances, *pCdbk, factor, pCount, NoRoot());
    return kelStatusOk;
}

KelStatus kelsVQDistSingle_Thresh_32f(const Kel32f* pSrc, Kel32s* pIdx, Kel32f* pDist, KelCdbk_32f* pCdbk,
                                      Kel32f factor, Kel32s* pCount) {
    if (const KelStatus fault = factorFault(pCdbk, factor, pSrc, pIdx, pDist, pCount)) return fault;
    withinFactor(pSrc, pIdx, pDist, *pCdbk, factor, pCount, RootOf());
    return kelStatusOk;
}

KelStatus kelsVQDistSingle_Thresh_16s32s_Sfs(const Kel16s* pSrc, Kel32s* pIdx, Kel32s* pDist, KelCdbk_16s* pCdbk,
                                             Kel32f factor, Kel32s* pCount, int scaleFactor) {
    if (const KelStatus fault = factorFault(pCdbk, factor, pSrc, pIdx, pDist, pCount)) return fault;
    withinFactor(pSrc, pIdx, pDist, *pCdbk, factor, pCount, ScaledRootOf{scaleFactor});
    return kelStatusOk;
}
