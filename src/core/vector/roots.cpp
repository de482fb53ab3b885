// Entry points: absolute values, roots, magnitudes.
#include "core/vector/roots.h"

#include "core/check.h"
#include "kels/core.h"

using namespace kels;

KelStatus kelsAbs_64f(const Kel64f* pSrc, Kel64f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    const auto absolute = [](const Vec<Kel64f>& x) { return magnitude(x); };
    map(pDst, toSize(len), absolute, 0.0, pSrc);
    return kelStatusOk;
}

KelStatus kelsSqrt_64f_I(Kel64f* pSrcDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrcDst)) return fault;
    return squareRoot(pSrcDst, toSize(len));
}

KelStatus kelsMagnitude_32fc(const Kel32fc* pSrc, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    magnitudes(pSrc, pDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsMagnitude_32sc_Sfs(const Kel32sc* pSrc, Kel32s* pDst, int len, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    magnitudesScaled(pSrc, pDst, toSize(len), scaleFactor);
    return kelStatusOk;
}

KelStatus kelsRecSqrt_32f(Kel32f* pSrcDst, int len, Kel32f threshold) {
    if (const KelStatus fault = vectorFault(len, pSrcDst)) return fault;
    if (!(threshold > 0)) return kelStatusBadArg;
    return reciprocalRoot(pSrcDst, toSize(len), threshold);
}

KelStatus kelsRecSqrt_32s_Sfs(Kel32s* pSrcDst, int len, Kel32s threshold, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrcDst)) return fault;
    if (threshold < 1) return kelStatusBadArg;
    return reciprocalRootScaled(pSrcDst, pSrcDst, toSize(len), threshold, scaleFactor);
}

KelStatus kelsRecSqrt_32s16s_Sfs(const Kel32s* pSrc, Kel16s* pDst, int len, Kel32s threshold, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    if (threshold < 1) return kelStatusBadArg;
    return reciprocalRootScaled(pSrc, pDst, toSize(len), threshold, scaleFactor);
}
