// Entry points: logarithms of integers.
#include "core/vector/logarithms.h"

#include "core/check.h"
#include "kels/core.h"

using namespace kels;

KelStatus kelsLn_32s_Sfs(const Kel32s* pSrc, Kel32s* pDst, int len, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    return integerLogarithm(pSrc, pDst, toSize(len), scaleFactor);
}

KelStatus kelsLn_32s_ISfs(Kel32s* pSrcDst, int len, int scaleFactor) {
    return kelsLn_32s_Sfs(pSrcDst, pSrcDst, len, scaleFactor);
}
