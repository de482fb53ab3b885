#include "core/vector/roots.h"

#include "core/check.h"
#include "kels/core.h"

using namespace kels;

KelStatus kelsAbs_64f(const Kel64f* pSrc, Kel64f* pDst, int len) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    map(
        pDst, toSize(len), [](const Vec<Kel64f>& x) { return magnitude(x); }, 0.0, pSrc);
    return kelStatusOk;
}

KelStatus kelsSqrt_64f_I(Kel64f* pSrcDst, int len) {
    if (anyNull(pSrcDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    return squareRoot(pSrcDst, toSize(len));
}

KelStatus kelsLn_32s_Sfs(const Kel32s* pSrc, Kel32s* pDst, int len, int scaleFactor) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    return integerLogarithm(pSrc, pDst, toSize(len), scaleFactor);
}

KelStatus kelsLn_32s_ISfs(Kel32s* pSrcDst, int len, int scaleFactor) {
    return kelsLn_32s_Sfs(pSrcDst, pSrcDst, len, scaleFactor);
}

KelStatus kelsMagnitude_32fc(const Kel32fc* pSrc, Kel32f* pDst, int len) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    magnitudes(pSrc, pDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsMagnitude_32sc_Sfs(const Kel32sc* pSrc, Kel32s* pDst, int len, int scaleFactor) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    magnitudesScaled(pSrc, pDst, toSize(len), scaleFactor);
    return kelStatusOk;
}

KelStatus kelsRecSqrt_32f(Kel32f* pSrcDst, int len, Kel32f threshold) {
    if (anyNull(pSrcDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    if (!(threshold > 0)) return kelStatusBadArg;
    return reciprocalRoot(pSrcDst, toSize(len), threshold);
}

KelStatus kelsRecSqrt_32s_Sfs(Kel32s* pSrcDst, int len, Kel32s threshold, int scaleFactor) {
    if (anyNull(pSrcDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    if (threshold < 1) return kelStatusBadArg;
    return reciprocalRootScaled(pSrcDst, pSrcDst, toSize(len), threshold, scaleFactor);
}

KelStatus kelsRecSqrt_32s16s_Sfs(const Kel32s* pSrc, Kel16s* pDst, int len, Kel32s threshold, int scaleFactor) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    if (threshold < 1) return kelStatusBadArg;
    return reciprocalRootScaled(pSrc, pDst, toSize(len), threshold, scaleFactor);
}
