// A matrix times a vector, and a vector times a matrix.
#include "kels/matrix.h"

#include "core/rows.h"
#include "core/scaling.h"
#include "training/matrix/check.h"
#include "training/matrix/sums.h"

namespace {
using namespace kels;
using namespace kels::matrix;

template <class Rows, class T>
void matrixTimesVector(const Rows& rows, const T* x, int width, T* dst, int height) {
    const auto take = [=](std::ptrdiff_t i, Kel64f sum) { dst[i] = static_cast<T>(sum); };
    sumEachRow(rows, height, width, Factors<T>{x}, take);
}

template <class Rows>
void matrixTimesVector(const Rows& rows, const Kel16s* x, int width, Kel16s* dst, int height, int scaleFactor) {
    const auto take = [=](std::ptrdiff_t i, int64_t sum) { dst[i] = scaleHalfEven<Kel16s>(sum, scaleFactor); };
    sumEachRow(rows, height, width, Factors<Kel16s>{x}, take);
}

// The rows of a matrix, each times its element of a vector.
template <class Rows, class T>
struct WeightedRows {
    const T* row(std::ptrdiff_t i) const { return rows[i]; }
    Vec<Kel64f> factor(std::ptrdiff_t i) const { return Vec<Kel64f>(Kel64f{x[i]}); }

    const Rows& rows;
    const T* x;
};

template <class Rows, class T>
void vectorTimesMatrix(const T* x, int height, const Rows& rows, T* dst, int width) {
    const auto take = [=](std::size_t from, std::size_t n, const Kel64f* sums) {
        for (std::size_t j = 0; j < n; ++j) dst[from + j] = static_cast<T>(sums[j]);
    };
    sumDown(WeightedRows<Rows, T>{rows, x}, height, width, take);
}
}  // namespace

// ---- matrix times vector --------------------------------------------------------------------------------------------

KelStatus kelsMatVecMul_32f_D2(const Kel32f* pSrcMatr, int srcStep, const Kel32f* pSrcVec, int width, Kel32f* pDst,
                               int height) {
    if (const KelStatus fault = shapeFault({width, height}, {{srcStep, width}}, pSrcMatr, pSrcVec, pDst)) return fault;
    matrixTimesVector(StepRows(pSrcMatr, srcStep), pSrcVec, width, pDst, height);
    return kelStatusOk;
}
KelStatus kelsMatVecMul_32f_D2L(const Kel32f** ppSrcMatr, const Kel32f* pSrcVec, int width, Kel32f* pDst, int height) {
    if (const KelStatus fault = sizeFault({width, height}, ppSrcMatr, pSrcVec, pDst)) return fault;
    matrixTimesVector(PointerRows(ppSrcMatr), pSrcVec, width, pDst, height);
    return kelStatusOk;
}
KelStatus kelsMatVecMul_64f_D2(const Kel64f* pSrcMatr, int srcStep, const Kel64f* pSrcVec, int width, Kel64f* pDst,
                               int height) {
    if (const KelStatus fault = shapeFault({width, height}, {{srcStep, width}}, pSrcMatr, pSrcVec, pDst)) return fault;
    matrixTimesVector(StepRows(pSrcMatr, srcStep), pSrcVec, width, pDst, height);
    return kelStatusOk;
}
KelStatus kelsMatVecMul_64f_D2L(const Kel64f** ppSrcMatr, const Kel64f* pSrcVec, int width, Kel64f* pDst, int height) {
    if (const KelStatus fault = sizeFault({width, height}, ppSrcMatr, pSrcVec, pDst)) return fault;
    matrixTimesVector(PointerRows(ppSrcMatr), pSrcVec, width, pDst, height);
    return kelStatusOk;
}
KelStatus kelsMatVecMul_16s_D2Sfs(const Kel16s* pSrcMatr, int srcStep, const Kel16s* pSrcVec, int width, Kel16s* pDst,
                                  int height, int scaleFactor) {
    if (const KelStatus fault = shapeFault({width, height}, {{srcStep, width}}, pSrcMatr, pSrcVec, pDst)) return fault;
    matrixTimesVector(StepRows(pSrcMatr, srcStep), pSrcVec, width, pDst, height, scaleFactor);
    return kelStatusOk;
}
KelStatus kelsMatVecMul_16s_D2LSfs(const Kel16s** ppSrcMatr, const Kel16s* pSrcVec, int width, Kel16s* pDst, int height,
                                   int scaleFactor) {
    if (const KelStatus fault = sizeFault({width, height}, ppSrcMatr, pSrcVec, pDst)) return fault;
    matrixTimesVector(PointerRows(ppSrcMatr), pSrcVec, width, pDst, height, scaleFactor);
    return kelStatusOk;
}

// ---- vector times matrix --------------------------------------------------------------------------------------------

KelStatus kelsVecMatMul_32f_D2(const Kel32f* pSrcVec, int height, const Kel32f* pSrcMatr, int srcStep, Kel32f* pDst,
                               int width) {
    if (const KelStatus fault = shapeFault({width, height}, {{srcStep, width}}, pSrcVec, pSrcMatr, pDst)) return fault;
    vectorTimesMatrix(pSrcVec, height, StepRows(pSrcMatr, srcStep), pDst, width);
    return kelStatusOk;
}
KelStatus kelsVecMatMul_32f_D2L(const Kel32f* pSrcVec, int height, const Kel32f** ppSrcMatr, Kel32f* pDst, int width) {
    if (const KelStatus fault = sizeFault({width, height}, pSrcVec, ppSrcMatr, pDst)) return fault;
    vectorTimesMatrix(pSrcVec, height, PointerRows(ppSrcMatr), pDst, width);
    return kelStatusOk;
}
KelStatus kelsVecMatMul_64f_D2(const Kel64f* pSrcVec, int height, const Kel64f* pSrcMatr, int srcStep, Kel64f* pDst,
                               int width) {
    if (const KelStatus fault = shapeFault({width, height}, {{srcStep, width}}, pSrcVec, pSrcMatr, pDst)) return fault;
    vectorTimesMatrix(pSrcVec, height, StepRows(pSrcMatr, srcStep), pDst, width);
    return kelStatusOk;
}
KelStatus kelsVecMatMul_64f_D2L(const Kel64f* pSrcVec, int height, const Kel64f** ppSrcMatr, Kel64f* pDst, int width) {
    if (const KelStatus fault = sizeFault({width, height}, pSrcVec, ppSrcMatr, pDst)) return fault;
    vectorTimesMatrix(pSrcVec, height, PointerRows(ppSrcMatr), pDst, width);
    return kelStatusOk;
}
