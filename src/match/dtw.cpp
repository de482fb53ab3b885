// Entry points of dynamic time warping.
#include "kels/dtw.h"

#include "core/check.h"
#include "core/memory.h"
#include "core/row_table.h"
#include "core/rows.h"
#include "core/scaling.h"
#include "core/vector/convert.h"
#include "match/dtw_kernel.h"

using namespace kels;
using namespace kels::dtw;

namespace {

constexpr int64_t kStackCosts = 512;
constexpr int64_t kStackTurned = 4096;

// What the costs of a call may take: two rows of the shorter length, and two places for every row of the longer one.
constexpr int64_t costWorkspace(int64_t outerRows, int64_t innerRows) {
    return 8 * ((innerRows + 8 + 3) / 4 + (outerRows + 3 + 3) / 4);
}

// `outer` is at least as long as `inner`.
template <class Rows>
KelStatus warpOrdered(const Rows& outer, int outerRows, const Rows& inner, int innerRows, int width, int delta,
                      Kel32f beam, Kel32f* pDist) {
    constexpr int64_t overhang = 2 * (kCostLead + kCostTrail);
    Scratch<Kel32f, kStackCosts + overhang> costs(costWorkspace(outerRows, innerRows) + overhang);
    if (costs.failed()) return kelStatusNoMemory;
    Scratch<Kel32f, kStackTurned> turned(TransposedRows::size(innerRows, width));
    if (turned.failed()) return kelStatusNoMemory;

    const auto components = static_cast<std::size_t>(width);
    const TransposedRows columns = transpose(inner, static_cast<std::size_t>(innerRows), components, turned.data());
    *pDist = warp(outer, outerRows, columns, innerRows, components, delta, beam, costs.data());
    return kelStatusOk;
}

template <class Rows>
KelStatus warpRows(const Rows& rows1, int height1, const Rows& rows2, int height2, int width, int delta, Kel32f beam,
                   Kel32f* pDist) {
    if (height1 < height2) return warpOrdered(rows2, height2, rows1, height1, width, delta, beam, pDist);
    return warpOrdered(rows1, height1, rows2, height2, width, delta, beam, pDist);
}

// The order of checks of all forms; those with a step take a short one for a wrong size.
KelStatus sequencesFault(int height1, int height2, int width, const void* pSrc1, const void* pSrc2, const void* pDist) {
    if (anyNull(pSrc1, pSrc2, pDist)) return kelStatusNullPtr;
    return height1 < 1 || height2 < 1 || width < 1 ? kelStatusSize : kelStatusOk;
}
KelStatus sequencesFault(int height1, int height2, int width, int srcStep, const void* pSrc1, const void* pSrc2,
                         const void* pDist) {
    if (const KelStatus fault = sequencesFault(height1, height2, width, pSrc1, pSrc2, pDist)) return fault;
    return srcStep < width ? kelStatusSize : kelStatusOk;
}

// A copy of an integer sequence as floats; null when memory is out.
template <class Rows>
Kel32f** floatCopy(const Rows& rows, int height, int width) {
    Kel32f** const copy = allocateRows<Kel32f>(height, width);
    if (copy == nullptr) return nullptr;
    for (int i = 0; i < height; ++i) convertWidening(rows[i], copy[i], toSize(width));
    return copy;
}

template <class Rows>
KelStatus warpIntegers(const Rows& rows1, int height1, const Rows& rows2, int height2, int width, int delta,
                       Kel32s beam, int scaleFactor, Kel32s* pDist) {
    Kel32f** const copy1 = floatCopy(rows1, height1, width);
    if (copy1 == nullptr) return kelStatusNoMemory;
    Kel32f** const copy2 = floatCopy(rows2, height2, width);
    // What a failing call allocates and releases is part of the interface, and the first copy is not released.
    if (copy2 == nullptr) return kelStatusNoMemory;

    Kel32f dist;
    const KelStatus status = warpRows(PointerRows(copy1), height1, PointerRows(copy2), height2, width, delta,
                                      static_cast<Kel32f>(beam), &dist);
    kelsFree(copy1);
    kelsFree(copy2);
    if (status != kelStatusOk) return status;
    const NearestScope nearest;
    convertToInt(&dist, pDist, 1, scaleFactor, ToNearest());
    return kelStatusOk;
}

}  // namespace

KelStatus kelsDTW_L2_32f_D2L(const Kel32f** ppSrc1, int height1, const Kel32f** ppSrc2, int height2, int width,
                             Kel32f* pDist, int delta, Kel32f beam) {
    if (const KelStatus fault = sequencesFault(height1, height2, width, ppSrc1, ppSrc2, pDist)) return fault;
    return warpRows(PointerRows(ppSrc1), height1, PointerRows(ppSrc2), height2, width, delta, beam, pDist);
}

KelStatus kelsDTW_L2_32f_D2(const Kel32f* pSrc1, int height1, const Kel32f* pSrc2, int height2, int width, int srcStep,
                            Kel32f* pDist, int delta, Kel32f beam) {
    if (const KelStatus fault = sequencesFault(height1, height2, width, srcStep, pSrc1, pSrc2, pDist)) return fault;
    return warpRows(StepRows(pSrc1, srcStep), height1, StepRows(pSrc2, srcStep), height2, width, delta, beam, pDist);
}

KelStatus kelsDTW_L2_8u32s_D2Sfs(const Kel8u* pSrc1, int height1, const Kel8u* pSrc2, int height2, int width,
                                 int srcStep, Kel32s* pDist, int delta, Kel32s beam, int scaleFactor) {
    if (const KelStatus fault = sequencesFault(height1, height2, width, srcStep, pSrc1, pSrc2, pDist)) return fault;
    return warpIntegers(StepRows(pSrc1, srcStep), height1, StepRows(pSrc2, srcStep), height2, width, delta, beam,
                        scaleFactor, pDist);
}

KelStatus kelsDTW_L2_8u32s_D2LSfs(const Kel8u** ppSrc1, int height1, const Kel8u** ppSrc2, int height2, int width,
                                  Kel32s* pDist, int delta, Kel32s beam, int scaleFactor) {
    if (const KelStatus fault = sequencesFault(height1, height2, width, ppSrc1, ppSrc2, pDist)) return fault;
    return warpIntegers(PointerRows(ppSrc1), height1, PointerRows(ppSrc2), height2, width, delta, beam, scaleFactor,
                        pDist);
}

KelStatus kelsDTW_L2Low_16s32s_D2Sfs(const Kel16s* pSrc1, int height1, const Kel16s* pSrc2, int height2, int width,
                                     int srcStep, Kel32s* pDist, int delta, Kel32s beam, int scaleFactor) {
    if (const KelStatus fault = sequencesFault(height1, height2, width, srcStep, pSrc1, pSrc2, pDist)) return fault;
    return warpIntegers(StepRows(pSrc1, srcStep), height1, StepRows(pSrc2, srcStep), height2, width, delta, beam,
                        scaleFactor, pDist);
}

KelStatus kelsDTW_L2Low_16s32s_D2LSfs(const Kel16s** ppSrc1, int height1, const Kel16s** ppSrc2, int height2, int width,
                                      Kel32s* pDist, int delta, Kel32s beam, int scaleFactor) {
    if (const KelStatus fault = sequencesFault(height1, height2, width, ppSrc1, ppSrc2, pDist)) return fault;
    return warpIntegers(PointerRows(ppSrc1), height1, PointerRows(ppSrc2), height2, width, delta, beam, scaleFactor,
                        pDist);
}
