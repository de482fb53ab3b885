// How similar a signal is to itself, or to another one, at a range of lags.
#include "core/check.h"
#include "frontend/pitch/coefficients.h"
#include "frontend/pitch/interpolation.h"
#include "frontend/pitch/least_squares.h"
#include "frontend/pitch/periodicity.h"
#include "kels/pitch.h"

using namespace kels;
using namespace kels::pitch;

namespace {

KelStatus lagsFault(const void* pSrc1, const void* pSrc2, int len, const void* pDst, int minLag, int maxLag,
                    Kel32f bias) {
    if (anyNull(pSrc1, pSrc2, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    if (maxLag < minLag) return kelStatusBadArg;
    return bias >= 0 ? kelStatusOk : kelStatusOutOfRange;
}

KelStatus frameFault(const void* pSrc, int len, const void* pDst, int minLag, int maxLag, int leastLag) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    return minLag < leastLag || maxLag < minLag || maxLag >= len ? kelStatusBadArg : kelStatusOk;
}

// The number of lags exceeds an int where the range is nearly all of them.
std::size_t lagCount(int minLag, int maxLag) {
    return static_cast<std::size_t>(int64_t{maxLag} - minLag + 1);
}

template <class T>
KelStatus interpolate(const T* x, const T* y, int len, Kel32f* place, Kel32f* coefficient) {
    const Point point = stationaryPoint(windowSums(x, y, y + 1, toSize(len)));
    *place = point.place;
    *coefficient = point.coefficient;
    return point.status;
}

}  // namespace

// ---- cross-correlation coefficients --------------------------------------------------------------------------------

KelStatus kelsCrossCorrCoeff_32f(const Kel32f* pSrc1, const Kel32f* pSrc2, int len, Kel32f* pDst, int dstLen) {
    if (anyNull(pSrc1, pSrc2, pDst)) return kelStatusNullPtr;
    if (len < 1 || dstLen < 1) return kelStatusSize;
    coefficients(pSrc1, pSrc2, toSize(len), pDst, toSize(dstLen), 0);
    return kelStatusOk;
}
KelStatus kelsCrossCorrCoeff_16s32f(const Kel16s* pSrc1, const Kel16s* pSrc2, int len, Kel32f* pDst, int dstLen) {
    if (anyNull(pSrc1, pSrc2, pDst)) return kelStatusNullPtr;
    if (len < 1 || dstLen < 1) return kelStatusSize;
    coefficients(pSrc1, pSrc2, toSize(len), pDst, toSize(dstLen), 0);
    return kelStatusOk;
}
KelStatus kelsCrossCorrCoeffPartial_32f(const Kel32f* pSrc1, const Kel32f* pSrc2, int len, Kel32f* pDst, int minLag,
                                        int maxLag, Kel32f bias) {
    if (const KelStatus fault = lagsFault(pSrc1, pSrc2, len, pDst, minLag, maxLag, bias)) return fault;
    coefficients(pSrc1, pSrc2 + minLag, toSize(len), pDst, lagCount(minLag, maxLag), bias);
    return kelStatusOk;
}
KelStatus kelsCrossCorrCoeffPartial_16s32f(const Kel16s* pSrc1, const Kel16s* pSrc2, int len, Kel32f* pDst, int minLag,
                                           int maxLag, Kel32f bias) {
    if (const KelStatus fault = lagsFault(pSrc1, pSrc2, len, pDst, minLag, maxLag, bias)) return fault;
    coefficients(pSrc1, pSrc2 + minLag, toSize(len), pDst, lagCount(minLag, maxLag), bias);
    return kelStatusOk;
}

KelStatus kelsCrossCorrCoeffInterpolation_32f(const Kel32f* pSrc1, const Kel32f* pSrc2, int len, int lag, Kel32f* pFrac,
                                              Kel32f* pCoeff) {
    if (const KelStatus fault = vectorFault(len, pSrc1, pSrc2, pFrac, pCoeff)) return fault;
    return interpolate(pSrc1, pSrc2 + lag, len, pFrac, pCoeff);
}
KelStatus kelsCrossCorrCoeffInterpolation_16s32f(const Kel16s* pSrc1, const Kel16s* pSrc2, int len, int lag,
                                                 Kel32f* pFrac, Kel32f* pCoeff) {
    if (const KelStatus fault = vectorFault(len, pSrc1, pSrc2, pFrac, pCoeff)) return fault;
    return interpolate(pSrc1, pSrc2 + lag, len, pFrac, pCoeff);
}

// ---- periodicity of a frame ----------------------------------------------------------------------------------------

KelStatus kelsPeriodicity_32f(const Kel32f* pSrc, int len, const Kel32f* pWinCorr, Kel32f* pDst, int minLag,
                              int maxLag) {
    if (anyNull(pWinCorr)) return kelStatusNullPtr;
    if (const KelStatus fault = frameFault(pSrc, len, pDst, minLag, maxLag, 0)) return fault;
    return periodicity(pSrc, len, pWinCorr, pDst, minLag, maxLag);
}
KelStatus kelsPeriodicityLSPE_32f(const Kel32f* pSrc, int len, Kel32f* pDst, int minLag, int maxLag) {
    if (const KelStatus fault = frameFault(pSrc, len, pDst, minLag, maxLag, 1)) return fault;
    return leastSquares(pSrc, toSize(len), pDst, toSize(minLag), toSize(maxLag));
}
KelStatus kelsPeriodicityLSPE_16s32f(const Kel16s* pSrc, int len, Kel32f* pDst, int minLag, int maxLag) {
    if (const KelStatus fault = frameFault(pSrc, len, pDst, minLag, maxLag, 1)) return fault;
    return leastSquares(pSrc, toSize(len), pDst, toSize(minLag), toSize(maxLag));
}
