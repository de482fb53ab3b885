// Every row of a block times a matrix.
#include "kels/matrix.h"

#include "core/rows.h"
#include "training/matrix/affine.h"
#include "training/matrix/check.h"

namespace {
using namespace kels;
using namespace kels::matrix;

// The faults of blocks in one array each.
template <class T>
KelStatus blocksFault(int srcStep, int matrStep, int dstStep, int srcWidth, int dstWidth, int height, const T* src,
                      const T* matrix, const T* dst) {
    return shapeFault({srcWidth, dstWidth, height}, {{srcStep, srcWidth}, {matrStep, srcWidth}, {dstStep, dstWidth}},
                      src, matrix, dst);
}
}  // namespace

KelStatus kelsMatVecMulRows_32f_D2(const Kel32f* pSrc, int srcStep, const Kel32f* pMatr, int matrStep,
                                   const Kel32f* pOffset, Kel32f* pDst, int dstStep, int srcWidth, int dstWidth,
                                   int height) {
    const KelStatus fault = blocksFault(srcStep, matrStep, dstStep, srcWidth, dstWidth, height, pSrc, pMatr, pDst);
    if (fault != kelStatusOk) return fault;
    transformRows(StepRows(pSrc, srcStep), StepRows(pMatr, matrStep), pOffset, StepRows(pDst, dstStep), srcWidth,
                  dstWidth, height);
    return kelStatusOk;
}
KelStatus kelsMatVecMulRows_32f_D2L(const Kel32f** ppSrc, const Kel32f** ppMatr, const Kel32f* pOffset, Kel32f** ppDst,
                                    int srcWidth, int dstWidth, int height) {
    if (const KelStatus fault = sizeFault({srcWidth, dstWidth, height}, ppSrc, ppMatr, ppDst)) return fault;
    transformRows(PointerRows(ppSrc), PointerRows(ppMatr), pOffset, PointerRows(ppDst), srcWidth, dstWidth, height);
    return kelStatusOk;
}
KelStatus kelsMatVecMulRows_64f_D2(const Kel64f* pSrc, int srcStep, const Kel64f* pMatr, int matrStep,
                                   const Kel64f* pOffset, Kel64f* pDst, int dstStep, int srcWidth, int dstWidth,
                                   int height) {
    const KelStatus fault = blocksFault(srcStep, matrStep, dstStep, srcWidth, dstWidth, height, pSrc, pMatr, pDst);
    if (fault != kelStatusOk) return fault;
    transformRows(StepRows(pSrc, srcStep), StepRows(pMatr, matrStep), pOffset, StepRows(pDst, dstStep), srcWidth,
                  dstWidth, height);
    return kelStatusOk;
}
KelStatus kelsMatVecMulRows_64f_D2L(const Kel64f** ppSrc, const Kel64f** ppMatr, const Kel64f* pOffset, Kel64f** ppDst,
                                    int srcWidth, int dstWidth, int height) {
    if (const KelStatus fault = sizeFault({srcWidth, dstWidth, height}, ppSrc, ppMatr, ppDst)) return fault;
    transformRows(PointerRows(ppSrc), PointerRows(ppMatr), pOffset, PointerRows(ppDst), srcWidth, dstWidth, height);
    return kelStatusOk;
}
