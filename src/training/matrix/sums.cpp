// Sums of columns, of rows, and of chosen rows.
#include "kels/matrix.h"

#include "core/rows.h"
#include "core/scaling.h"
#include "training/matrix/check.h"
#include "training/matrix/sums.h"

namespace {
using namespace kels;
using namespace kels::matrix;

// Where sums go: rounded once to the type of the destination...
template <class T>
struct Rounded {
    T of(Kel64f sum) const { return static_cast<T>(sum); }
};
// ... or exact, scaled, rounded and saturated.
struct Scaled {
    Kel32s of(Kel64f sum) const { return of(static_cast<int64_t>(sum)); }
    Kel32s of(int64_t sum) const { return scaleHalfEven<Kel32s>(sum, scaleFactor); }

    int scaleFactor;
};

template <class Terms, class T, class Result>
void storeSumsDown(const Terms& terms, int count, T* dst, int width, Result result) {
    sumDown(terms, count, width, [=](std::size_t from, std::size_t n, const Kel64f* sums) {
        for (std::size_t j = 0; j < n; ++j) dst[from + j] = result.of(sums[j]);
    });
}

// The rows of a matrix as they are.  A sum of 2^31 of 16 bits is still exact as a double.
template <class Rows>
struct AllRows {
    auto row(std::ptrdiff_t i) const { return rows[i]; }
    One factor(std::ptrdiff_t) const { return {}; }

    const Rows& rows;
};
template <class Rows, class T, class Result>
void sumColumns(const Rows& rows, int height, T* dst, int width, Result result) {
    storeSumsDown(AllRows<Rows>{rows}, height, dst, width, result);
}

template <class Rows, class T, class Result>
void sumRowsTo(const Rows& rows, int width, T* dst, int height, Result result) {
    sumEachRow(rows, height, width, NoFactors(), [=](std::ptrdiff_t i, auto sum) { dst[i] = result.of(sum); });
}

// The rows that a table names, from a column on.
template <class Rows>
struct ChosenRows {
    auto row(std::ptrdiff_t k) const { return rows[index[k]] + offset; }
    One factor(std::ptrdiff_t) const { return {}; }

    const Rows& rows;
    const Kel32s* index;
    std::ptrdiff_t offset;
};
template <class Rows, class T>
KelStatus addChosenRows(const Rows& rows, int height, int offset, const Kel32s* index, int n, T* dst, int width) {
    for (std::ptrdiff_t k = 0; k < n; ++k) {
        if (index[k] < 0 || index[k] >= height) return kelStatusBadArg;
    }
    storeSumsDown(ChosenRows<Rows>{rows, index, offset}, n, dst, width, Rounded<T>());
    return kelStatusOk;
}
}  // namespace

// ---- sums of columns ------------------------------------------------------------------------------------------------

KelStatus kelsSumColumn_32f_D2(const Kel32f* pSrc, int srcStep, int height, Kel32f* pDst, int width) {
    if (const KelStatus fault = shapeFault({width, height}, {{srcStep, width}}, pSrc, pDst)) return fault;
    sumColumns(StepRows(pSrc, srcStep), height, pDst, width, Rounded<Kel32f>());
    return kelStatusOk;
}
KelStatus kelsSumColumn_32f_D2L(const Kel32f** ppSrc, int height, Kel32f* pDst, int width) {
    if (const KelStatus fault = sizeFault({width, height}, ppSrc, pDst)) return fault;
    sumColumns(PointerRows(ppSrc), height, pDst, width, Rounded<Kel32f>());
    return kelStatusOk;
}
KelStatus kelsSumColumn_64f_D2(const Kel64f* pSrc, int srcStep, int height, Kel64f* pDst, int width) {
    if (const KelStatus fault = shapeFault({width, height}, {{srcStep, width}}, pSrc, pDst)) return fault;
    sumColumns(StepRows(pSrc, srcStep), height, pDst, width, Rounded<Kel64f>());
    return kelStatusOk;
}
KelStatus kelsSumColumn_64f_D2L(const Kel64f** ppSrc, int height, Kel64f* pDst, int width) {
    if (const KelStatus fault = sizeFault({width, height}, ppSrc, pDst)) return fault;
    sumColumns(PointerRows(ppSrc), height, pDst, width, Rounded<Kel64f>());
    return kelStatusOk;
}
KelStatus kelsSumColumn_16s32s_D2Sfs(const Kel16s* pSrc, int srcStep, int height, Kel32s* pDst, int width,
                                     int scaleFactor) {
    if (const KelStatus fault = shapeFault({width, height}, {{srcStep, width}}, pSrc, pDst)) return fault;
    sumColumns(StepRows(pSrc, srcStep), height, pDst, width, Scaled{scaleFactor});
    return kelStatusOk;
}
KelStatus kelsSumColumn_16s32s_D2LSfs(const Kel16s** ppSrc, int height, Kel32s* pDst, int width, int scaleFactor) {
    if (const KelStatus fault = sizeFault({width, height}, ppSrc, pDst)) return fault;
    sumColumns(PointerRows(ppSrc), height, pDst, width, Scaled{scaleFactor});
    return kelStatusOk;
}

// ---- sums of rows ---------------------------------------------------------------------------------------------------

KelStatus kelsSumRow_32f_D2(const Kel32f* pSrc, int srcStep, int width, Kel32f* pDst, int height) {
    if (const KelStatus fault = shapeFault({width, height}, {{srcStep, width}}, pSrc, pDst)) return fault;
    sumRowsTo(StepRows(pSrc, srcStep), width, pDst, height, Rounded<Kel32f>());
    return kelStatusOk;
}
KelStatus kelsSumRow_32f_D2L(const Kel32f** ppSrc, int width, Kel32f* pDst, int height) {
    if (const KelStatus fault = sizeFault({width, height}, ppSrc, pDst)) return fault;
    sumRowsTo(PointerRows(ppSrc), width, pDst, height, Rounded<Kel32f>());
    return kelStatusOk;
}
KelStatus kelsSumRow_64f_D2(const Kel64f* pSrc, int srcStep, int width, Kel64f* pDst, int height) {
    if (const KelStatus fault = shapeFault({width, height}, {{srcStep, width}}, pSrc, pDst)) return fault;
    sumRowsTo(StepRows(pSrc, srcStep), width, pDst, height, Rounded<Kel64f>());
    return kelStatusOk;
}
KelStatus kelsSumRow_64f_D2L(const Kel64f** ppSrc, int width, Kel64f* pDst, int height) {
    if (const KelStatus fault = sizeFault({width, height}, ppSrc, pDst)) return fault;
    sumRowsTo(PointerRows(ppSrc), width, pDst, height, Rounded<Kel64f>());
    return kelStatusOk;
}
KelStatus kelsSumRow_16s32s_D2Sfs(const Kel16s* pSrc, int srcStep, int width, Kel32s* pDst, int height,
                                  int scaleFactor) {
    if (const KelStatus fault = shapeFault({width, height}, {{srcStep, width}}, pSrc, pDst)) return fault;
    sumRowsTo(StepRows(pSrc, srcStep), width, pDst, height, Scaled{scaleFactor});
    return kelStatusOk;
}
KelStatus kelsSumRow_16s32s_D2LSfs(const Kel16s** ppSrc, int width, Kel32s* pDst, int height, int scaleFactor) {
    if (const KelStatus fault = sizeFault({width, height}, ppSrc, pDst)) return fault;
    sumRowsTo(PointerRows(ppSrc), width, pDst, height, Scaled{scaleFactor});
    return kelStatusOk;
}

// ---- sums of chosen rows --------------------------------------------------------------------------------------------

KelStatus kelsAddNRows_32f_D2(const Kel32f* pSrc, int srcStep, int height, int offset, const Kel32s* pIndx, int n,
                              Kel32f* pDst, int width) {
    const int64_t needed = int64_t{offset} + width;
    if (const KelStatus fault =
            shapeFault({height, n, width, int64_t{offset} + 1}, {{srcStep, needed}}, pSrc, pIndx, pDst))
        return fault;
    return addChosenRows(StepRows(pSrc, srcStep), height, offset, pIndx, n, pDst, width);
}
KelStatus kelsAddNRows_32f_D2L(const Kel32f** ppSrc, int height, int offset, const Kel32s* pIndx, int n, Kel32f* pDst,
                               int width) {
    if (const KelStatus fault = sizeFault({height, n, width, int64_t{offset} + 1}, ppSrc, pIndx, pDst)) return fault;
    return addChosenRows(PointerRows(ppSrc), height, offset, pIndx, n, pDst, width);
}
KelStatus kelsAddNRows_64f_D2(const Kel64f* pSrc, int srcStep, int height, int offset, const Kel32s* pIndx, int n,
                              Kel64f* pDst, int width) {
    const int64_t needed = int64_t{offset} + width;
    if (const KelStatus fault =
            shapeFault({height, n, width, int64_t{offset} + 1}, {{srcStep, needed}}, pSrc, pIndx, pDst))
        return fault;
    return addChosenRows(StepRows(pSrc, srcStep), height, offset, pIndx, n, pDst, width);
}
KelStatus kelsAddNRows_64f_D2L(const Kel64f** ppSrc, int height, int offset, const Kel32s* pIndx, int n, Kel64f* pDst,
                               int width) {
    if (const KelStatus fault = sizeFault({height, n, width, int64_t{offset} + 1}, ppSrc, pIndx, pDst)) return fault;
    return addChosenRows(PointerRows(ppSrc), height, offset, pIndx, n, pDst, width);
}
