// One vector under one Gaussian with a block-diagonal inverse covariance.
#include "kels/gauss.h"

#include "core/check.h"
#include "scoring/gauss/covariance.h"
#include "scoring/gauss/finish.h"

namespace {
using namespace kels;
using namespace kels::gauss;
using namespace kels::scoring;

template <class T, class Matrix, class R>
KelStatus blocksFault(int len, const T* pSrc, const T* pMean, const Matrix* pMatrix, const R* pResult) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMean, pMatrix, pResult)) return fault;
    return len != blocksOf(pMatrix).rowCount ? kelStatusSize : kelStatusOk;
}

}  // namespace

KelStatus kelsLogGaussSingle_BlockDVar_32f(const Kel32f* pSrc, const Kel32f* pMean, const KelBlockDMatrix_32f* pMatrix,
                                           int len, Kel32f* pResult, Kel32f gConst) {
    if (const KelStatus fault = blocksFault(len, pSrc, pMean, pMatrix, pResult)) return fault;
    return scoreWithBlocks<SingleBlocks>(pSrc, pMean, blocksOf(pMatrix), Half(SameConstant{gConst}), pResult);
}

KelStatus kelsLogGaussSingle_BlockDVar_64f(const Kel64f* pSrc, const Kel64f* pMean, const KelBlockDMatrix_64f* pMatrix,
                                           int len, Kel64f* pResult, Kel64f gConst) {
    if (const KelStatus fault = blocksFault(len, pSrc, pMean, pMatrix, pResult)) return fault;
    return scoreWithBlocks<ExtendedBlocks>(pSrc, pMean, blocksOf(pMatrix), Half(SameConstant{gConst}), pResult);
}

KelStatus kelsLogGaussSingle_BlockDVar_32f64f(const Kel32f* pSrc, const Kel32f* pMean,
                                              const KelBlockDMatrix_32f* pMatrix, int len, Kel64f* pResult,
                                              Kel64f gConst) {
    if (const KelStatus fault = blocksFault(len, pSrc, pMean, pMatrix, pResult)) return fault;
    return scoreWithBlocks<ExtendedBlocks>(pSrc, pMean, blocksOf(pMatrix), Half(SameConstant{gConst}), pResult);
}

KelStatus kelsLogGaussSingle_BlockDVar_16s32f(const Kel16s* pSrc, const Kel16s* pMean,
                                              const KelBlockDMatrix_16s* pMatrix, int len, Kel32f* pResult,
                                              Kel32f gConst) {
    return kelsLogGaussSingle_BlockDVarScaled_16s32f(pSrc, pMean, pMatrix, len, pResult, gConst, 0);
}

KelStatus kelsLogGaussSingle_BlockDVarScaled_16s32f(const Kel16s* pSrc, const Kel16s* pMean,
                                                    const KelBlockDMatrix_16s* pMatrix, int len, Kel32f* pResult,
                                                    Kel32f gConst, int scaleFactor) {
    if (const KelStatus fault = blocksFault(len, pSrc, pMean, pMatrix, pResult)) return fault;
    return scoreWithBlocks<ShortBlocks>(pSrc, pMean, blocksOf(pMatrix), HalfScaled(SameConstant{gConst}, scaleFactor),
                                        pResult);
}

KelStatus kelsLogGaussSingle_BlockDVar_16s32s_Sfs(const Kel16s* pSrc, const Kel16s* pMean,
                                                  const KelBlockDMatrix_16s* pMatrix, int len, Kel32s* pResult,
                                                  Kel32s gConst, int scaleFactor) {
    if (const KelStatus fault = blocksFault(len, pSrc, pMean, pMatrix, pResult)) return fault;
    return scoreWithBlocks<ExactShortBlocks>(pSrc, pMean, blocksOf(pMatrix),
                                             HalfShifted(Saturated(), SameConstant{gConst}, scaleFactor), pResult);
}
