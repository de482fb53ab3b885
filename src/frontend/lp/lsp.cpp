// Conversions between predictors and line spectral pairs.
#include "frontend/lp/lsp.h"

#include "core/check.h"
#include "kels/lp.h"

using namespace kels;
using namespace kels::lp;

namespace {

KelStatus rowsFault(int srcStep, int dstStep, int width, int height, const void* pSrc, const void* pDst) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (width < 1 || height < 1) return kelStatusSize;
    if (stepTooSmall(srcStep, width) || stepTooSmall(dstStep, width)) return kelStatusStep;
    return kelStatusOk;
}

}  // namespace

KelStatus kelsLPToLSP_32f(const Kel32f* pSrc, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    return pairsOf(plainSource(pSrc), 0, floatResult(pDst), 0, len, 1);
}
KelStatus kelsLPToLSP_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    const NearestScope nearest;
    return pairsOf(scaledSource(pSrc, scaleFactor), 0, scaledResult(pDst, scaleFactor), 0, len, 1);
}
KelStatus kelsLPToLSP_32f_D2(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, int width, int height) {
    if (const KelStatus fault = rowsFault(srcStep, dstStep, width, height, pSrc, pDst)) return fault;
    return pairsOf(plainSource(pSrc), srcStep, floatResult(pDst), dstStep, width, height);
}
KelStatus kelsLPToLSP_16s_D2Sfs(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, int width, int height,
                                int scaleFactor) {
    if (const KelStatus fault = rowsFault(srcStep, dstStep, width, height, pSrc, pDst)) return fault;
    const NearestScope nearest;
    return pairsOf(scaledSource(pSrc, scaleFactor), srcStep, scaledResult(pDst, scaleFactor), dstStep, width, height);
}
KelStatus kelsLSPToLP_32f(const Kel32f* pSrc, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    return predictorsOf(plainSource(pSrc), 0, floatResult(pDst), 0, len, 1);
}
KelStatus kelsLSPToLP_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    const NearestScope nearest;
    return predictorsOf(scaledSource(pSrc, scaleFactor), 0, scaledResult(pDst, scaleFactor), 0, len, 1);
}
KelStatus kelsLSPToLP_32f_D2(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, int width, int height) {
    if (const KelStatus fault = rowsFault(srcStep, dstStep, width, height, pSrc, pDst)) return fault;
    return predictorsOf(plainSource(pSrc), srcStep, floatResult(pDst), dstStep, width, height);
}
KelStatus kelsLSPToLP_16s_D2Sfs(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, int width, int height,
                                int scaleFactor) {
    if (const KelStatus fault = rowsFault(srcStep, dstStep, width, height, pSrc, pDst)) return fault;
    const NearestScope nearest;
    return predictorsOf(scaledSource(pSrc, scaleFactor), srcStep, scaledResult(pDst, scaleFactor), dstStep, width,
                        height);
}
