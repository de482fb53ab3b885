// Columns chosen by a table, and columns shifted and scaled.
#include "kels/matrix.h"

#include <algorithm>

#include "core/rows.h"
#include "core/simd/map.h"
#include "training/matrix/check.h"

namespace {
using namespace kels;
using namespace kels::matrix;

// The faults that a table of columns may have; rows hold `step` elements.
KelStatus indexFault(const Kel32s* index, int width, int64_t step) {
    const auto [least, greatest] = std::minmax_element(index, index + width);
    if (*greatest >= step) return kelStatusStep;
    return *least < 0 ? kelStatusBadArg : kelStatusOk;
}
constexpr int64_t kAnyColumn = int64_t{1} << 32;

template <class Src, class Dst>
void copyColumns(const Src& src, const Kel32s* index, const Dst& dst, int width, int height) {
    for (std::ptrdiff_t i = 0; i < height; ++i) {
        const auto* const from = src[i];
        auto* const to = dst[i];
        for (std::ptrdiff_t j = 0; j < width; ++j) to[j] = from[index[j]];
    }
}

// dst may be src.
template <class Src, class T, class Dst>
void normaliseColumns(const Src& src, const T* mean, const T* scale, const Dst& dst, int width, int height) {
    const auto normalised = [](const Vec<T>& x, const Vec<T>& m, const Vec<T>& s) { return (x - m) * s; };
    for (std::ptrdiff_t i = 0; i < height; ++i) map(dst[i], toSize(width), normalised, T(), src[i], mean, scale);
}
}  // namespace

// ---- choice ---------------------------------------------------------------------------------------------------------

KelStatus kelsCopyColumn_Indirect_16s_D2(const Kel16s* pSrc, int srcStep, const Kel32s* pIndx, Kel16s* pDst,
                                         int dstStep, int width, int height) {
    if (const KelStatus fault = shapeFault({width, height}, {{dstStep, width}}, pSrc, pIndx, pDst)) return fault;
    if (const KelStatus fault = indexFault(pIndx, width, srcStep)) return fault;
    copyColumns(StepRows(pSrc, srcStep), pIndx, StepRows(pDst, dstStep), width, height);
    return kelStatusOk;
}
KelStatus kelsCopyColumn_Indirect_16s_D2L(const Kel16s** ppSrc, const Kel32s* pIndx, Kel16s** ppDst, int width,
                                          int height) {
    if (const KelStatus fault = sizeFault({width, height}, ppSrc, pIndx, ppDst)) return fault;
    if (const KelStatus fault = indexFault(pIndx, width, kAnyColumn)) return fault;
    copyColumns(PointerRows(ppSrc), pIndx, PointerRows(ppDst), width, height);
    return kelStatusOk;
}
KelStatus kelsCopyColumn_Indirect_32f_D2(const Kel32f* pSrc, int srcStep, const Kel32s* pIndx, Kel32f* pDst,
                                         int dstStep, int width, int height) {
    if (const KelStatus fault = shapeFault({width, height}, {{dstStep, width}}, pSrc, pIndx, pDst)) return fault;
    if (const KelStatus fault = indexFault(pIndx, width, srcStep)) return fault;
    copyColumns(StepRows(pSrc, srcStep), pIndx, StepRows(pDst, dstStep), width, height);
    return kelStatusOk;
}
KelStatus kelsCopyColumn_Indirect_32f_D2L(const Kel32f** ppSrc, const Kel32s* pIndx, Kel32f** ppDst, int width,
                                          int height) {
    if (const KelStatus fault = sizeFault({width, height}, ppSrc, pIndx, ppDst)) return fault;
    if (const KelStatus fault = indexFault(pIndx, width, kAnyColumn)) return fault;
    copyColumns(PointerRows(ppSrc), pIndx, PointerRows(ppDst), width, height);
    return kelStatusOk;
}
KelStatus kelsCopyColumn_Indirect_64f_D2(const Kel64f* pSrc, int srcStep, const Kel32s* pIndx, Kel64f* pDst,
                                         int dstStep, int width, int height) {
    if (const KelStatus fault = shapeFault({width, height}, {{dstStep, width}}, pSrc, pIndx, pDst)) return fault;
    if (const KelStatus fault = indexFault(pIndx, width, srcStep)) return fault;
    copyColumns(StepRows(pSrc, srcStep), pIndx, StepRows(pDst, dstStep), width, height);
    return kelStatusOk;
}
KelStatus kelsCopyColumn_Indirect_64f_D2L(const Kel64f** ppSrc, const Kel32s* pIndx, Kel64f** ppDst, int width,
                                          int height) {
    if (const KelStatus fault = sizeFault({width, height}, ppSrc, pIndx, ppDst)) return fault;
    if (const KelStatus fault = indexFault(pIndx, width, kAnyColumn)) return fault;
    copyColumns(PointerRows(ppSrc), pIndx, PointerRows(ppDst), width, height);
    return kelStatusOk;
}

// ---- shift and scale ------------------------------------------------------------------------------------------------

KelStatus kelsNormalizeColumn_32f_D2(const Kel32f* pSrc, int srcStep, const Kel32f* pMean, const Kel32f* pScale,
                                     Kel32f* pDst, int dstStep, int width, int height) {
    if (const KelStatus fault =
            shapeFault({width, height}, {{srcStep, width}, {dstStep, width}}, pSrc, pMean, pScale, pDst))
        return fault;
    normaliseColumns(StepRows(pSrc, srcStep), pMean, pScale, StepRows(pDst, dstStep), width, height);
    return kelStatusOk;
}
KelStatus kelsNormalizeColumn_32f_D2L(const Kel32f** ppSrc, const Kel32f* pMean, const Kel32f* pScale, Kel32f** ppDst,
                                      int width, int height) {
    if (const KelStatus fault = sizeFault({width, height}, ppSrc, pMean, pScale, ppDst)) return fault;
    normaliseColumns(PointerRows(ppSrc), pMean, pScale, PointerRows(ppDst), width, height);
    return kelStatusOk;
}
KelStatus kelsNormalizeColumn_64f_D2(const Kel64f* pSrc, int srcStep, const Kel64f* pMean, const Kel64f* pScale,
                                     Kel64f* pDst, int dstStep, int width, int height) {
    if (const KelStatus fault =
            shapeFault({width, height}, {{srcStep, width}, {dstStep, width}}, pSrc, pMean, pScale, pDst))
        return fault;
    normaliseColumns(StepRows(pSrc, srcStep), pMean, pScale, StepRows(pDst, dstStep), width, height);
    return kelStatusOk;
}
KelStatus kelsNormalizeColumn_64f_D2L(const Kel64f** ppSrc, const Kel64f* pMean, const Kel64f* pScale, Kel64f** ppDst,
                                      int width, int height) {
    if (const KelStatus fault = sizeFault({width, height}, ppSrc, pMean, pScale, ppDst)) return fault;
    normaliseColumns(PointerRows(ppSrc), pMean, pScale, PointerRows(ppDst), width, height);
    return kelStatusOk;
}
KelStatus kelsNormalizeColumn_32f_D2_I(const Kel32f* pMean, const Kel32f* pScale, Kel32f* pSrcDst, int srcDstStep,
                                       int width, int height) {
    if (const KelStatus fault = shapeFault({width, height}, {{srcDstStep, width}}, pMean, pScale, pSrcDst))
        return fault;
    const StepRows rows(pSrcDst, srcDstStep);
    normaliseColumns(rows, pMean, pScale, rows, width, height);
    return kelStatusOk;
}
KelStatus kelsNormalizeColumn_32f_D2L_I(const Kel32f* pMean, const Kel32f* pScale, Kel32f** ppSrcDst, int width,
                                        int height) {
    if (const KelStatus fault = sizeFault({width, height}, pMean, pScale, ppSrcDst)) return fault;
    const PointerRows rows(ppSrcDst);
    normaliseColumns(rows, pMean, pScale, rows, width, height);
    return kelStatusOk;
}
KelStatus kelsNormalizeColumn_64f_D2_I(const Kel64f* pMean, const Kel64f* pScale, Kel64f* pSrcDst, int srcDstStep,
                                       int width, int height) {
    if (const KelStatus fault = shapeFault({width, height}, {{srcDstStep, width}}, pMean, pScale, pSrcDst))
        return fault;
    const StepRows rows(pSrcDst, srcDstStep);
    normaliseColumns(rows, pMean, pScale, rows, width, height);
    return kelStatusOk;
}
KelStatus kelsNormalizeColumn_64f_D2L_I(const Kel64f* pMean, const Kel64f* pScale, Kel64f** ppSrcDst, int width,
                                        int height) {
    if (const KelStatus fault = sizeFault({width, height}, pMean, pScale, ppSrcDst)) return fault;
    const PointerRows rows(ppSrcDst);
    normaliseColumns(rows, pMean, pScale, rows, width, height);
    return kelStatusOk;
}
