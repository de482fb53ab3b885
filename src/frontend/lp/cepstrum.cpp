// Conversions between predictors and cepstra.
#include "frontend/lp/cepstrum.h"

#include "core/check.h"
#include "kels/lp.h"

using namespace kels;
using namespace kels::lp;

KelStatus kelsLPToCepstrum_32f(const Kel32f* pSrc, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    return cepstrumOf(plainSource(pSrc), floatResult(pDst), len);
}
KelStatus kelsLPToCepstrum_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    const NearestScope nearest;
    return cepstrumOf(plainSource(pSrc), scaledResult(pDst, scaleFactor), len);
}
KelStatus kelsCepstrumToLP_32f(const Kel32f* pSrc, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    return predictorOfCepstrum(plainSource(pSrc), floatResult(pDst), len);
}
KelStatus kelsCepstrumToLP_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    const NearestScope nearest;
    return predictorOfCepstrum(plainSource(pSrc), scaledResult(pDst, scaleFactor), len);
}
