#include "scoring/gauss/covariance.h"

#include "core/check.h"
#include "kels/gauss.h"
#include "scoring/gauss/finish.h"

using namespace kels;

KelStatus kelsLogGaussSingle_BlockDVar_32f(const Kel32f* pSrc, const Kel32f* pMean, const KelBlockDMatrix_32f* pMatrix,
                                           int len, Kel32f* pResult, Kel32f gConst) {
    if (anyNull(pSrc, pMean, pMatrix, pResult)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    if (len != blocksOf(pMatrix).rowCount) return kelStatusSize;
    Differences<Kel32f> scratch(len);
    if (scratch.failed()) return kelStatusNoMemory;
    *pResult = Half(SameConstant{gConst})(0, blockSum<SingleBlocks>(pSrc, pMean, blocksOf(pMatrix), scratch.data()));
    return kelStatusOk;
}

KelStatus kelsLogGaussSingle_BlockDVar_64f(const Kel64f* pSrc, const Kel64f* pMean, const KelBlockDMatrix_64f* pMatrix,
                                           int len, Kel64f* pResult, Kel64f gConst) {
    if (anyNull(pSrc, pMean, pMatrix, pResult)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    if (len != blocksOf(pMatrix).rowCount) return kelStatusSize;
    Differences<long double> scratch(len);
    if (scratch.failed()) return kelStatusNoMemory;
    *pResult = Half(SameConstant{gConst})(0, blockSum<ExtendedBlocks>(pSrc, pMean, blocksOf(pMatrix), scratch.data()));
    return kelStatusOk;
}

KelStatus kelsLogGaussSingle_BlockDVar_32f64f(const Kel32f* pSrc, const Kel32f* pMean,
                                              const KelBlockDMatrix_32f* pMatrix, int len, Kel64f* pResult,
                                              Kel64f gConst) {
    if (anyNull(pSrc, pMean, pMatrix, pResult)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    if (len != blocksOf(pMatrix).rowCount) return kelStatusSize;
    Differences<long double> scratch(len);
    if (scratch.failed()) return kelStatusNoMemory;
    *pResult = Half(SameConstant{gConst})(0, blockSum<ExtendedBlocks>(pSrc, pMean, blocksOf(pMatrix), scratch.data()));
    return kelStatusOk;
}

KelStatus kelsLogGaussSingle_BlockDVar_16s32f(const Kel16s* pSrc, const Kel16s* pMean,
                                              const KelBlockDMatrix_16s* pMatrix, int len, Kel32f* pResult,
                                              Kel32f gConst) {
    return kelsLogGaussSingle_BlockDVarScaled_16s32f(pSrc, pMean, pMatrix, len, pResult, gConst, 0);
}

KelStatus kelsLogGaussSingle_BlockDVarScaled_16s32f(const Kel16s* pSrc, const Kel16s* pMean,
                                                    const KelBlockDMatrix_16s* pMatrix, int len, Kel32f* pResult,
                                                    Kel32f gConst, int scaleFactor) {
    if (anyNull(pSrc, pMean, pMatrix, pResult)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    if (len != blocksOf(pMatrix).rowCount) return kelStatusSize;
    Differences<Kel16s> scratch(len);
    if (scratch.failed()) return kelStatusNoMemory;
    *pResult = HalfScaled(SameConstant{gConst}, scaleFactor)(
        0, blockSum<ShortBlocks>(pSrc, pMean, blocksOf(pMatrix), scratch.data()));
    return kelStatusOk;
}

KelStatus kelsLogGaussSingle_BlockDVar_16s32s_Sfs(const Kel16s* pSrc, const Kel16s* pMean,
                                                  const KelBlockDMatrix_16s* pMatrix, int len, Kel32s* pResult,
                                                  Kel32s gConst, int scaleFactor) {
    if (anyNull(pSrc, pMean, pMatrix, pResult)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    if (len != blocksOf(pMatrix).rowCount) return kelStatusSize;
    Differences<Kel16s> scratch(len);
    if (scratch.failed()) return kelStatusNoMemory;
    *pResult = HalfShifted(Saturated(), SameConstant{gConst}, scaleFactor)(
        0, blockSum<ExactShortBlocks>(pSrc, pMean, blocksOf(pMatrix), scratch.data()));
    return kelStatusOk;
}
