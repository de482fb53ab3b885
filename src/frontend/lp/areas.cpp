// Area ratios and tilts of reflection coefficients.
#include "frontend/lp/areas.h"

#include "core/check.h"
#include "kels/lp.h"

using namespace kels;
using namespace kels::lp;

namespace {

constexpr Kel32f kUndefined = std::numeric_limits<Kel32f>::quiet_NaN();

}  // namespace

KelStatus kelsReflectionToAR_32f(const Kel32f* pSrc, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    return areaRatios(pSrc, pDst, toSize(len), 1);
}
KelStatus kelsReflectionToAR_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    const auto ratios = [](const Kel32f* k, Kel32f* dst, std::size_t n) { return areaRatios(k, dst, n, 1); };
    return throughFloats(pDst, toSize(len), scaleFactor, ratios, pSrc);
}
KelStatus kelsReflectionToTrueAR_32f(const Kel32f* pSrc, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    return areaRatios(pSrc, pDst, toSize(len), -1);
}
KelStatus kelsReflectionToTrueAR_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    const auto ratios = [](const Kel32f* k, Kel32f* dst, std::size_t n) { return areaRatios(k, dst, n, -1); };
    return throughFloats(pDst, toSize(len), scaleFactor, ratios, pSrc);
}

KelStatus kelsReflectionToLAR_32f(const Kel32f* pSrc, Kel32f* pDst, int len, Kel32f threshold) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    if (!(threshold > 0 && threshold < 1)) return kelStatusOutOfRange;
    return logAreaRatios(pSrc, pDst, toSize(len), threshold);
}
KelStatus kelsReflectionToLAR_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, Kel16s threshold, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    if (threshold <= 0) return kelStatusOutOfRange;
    const auto ratios = [=](const Kel32f* k, Kel32f* dst, std::size_t n) {
        return logAreaRatios(k, dst, n, static_cast<Kel32f>(threshold) / 32768);
    };
    return throughFloats(pDst, toSize(len), scaleFactor, ratios, pSrc);
}

KelStatus kelsReflectionToTilt_32f(const Kel32f* pSrc1, const Kel32f* pSrc2, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc1, pSrc2, pDst)) return fault;
    return tilts(pSrc1, pSrc2, pDst, toSize(len), kUndefined, TiltSum());
}
KelStatus kelsReflectionToTilt_16s_Sfs(const Kel16s* pSrc1, const Kel16s* pSrc2, Kel16s* pDst, int len,
                                       int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc1, pSrc2, pDst)) return fault;
    const auto tilt = [](const Kel32f* a, const Kel32f* b, Kel32f* dst, std::size_t n) {
        return tilts(a, b, dst, n, 0, TiltSum());
    };
    return throughFloats(pDst, toSize(len), scaleFactor, tilt, pSrc1, pSrc2);
}
KelStatus kelsReflectionToAbsTilt_32f(const Kel32f* pSrc1, const Kel32f* pSrc2, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc1, pSrc2, pDst)) return fault;
    return tilts(pSrc1, pSrc2, pDst, toSize(len), kUndefined, AbsTiltSum());
}
KelStatus kelsReflectionToAbsTilt_16s_Sfs(const Kel16s* pSrc1, const Kel16s* pSrc2, Kel16s* pDst, int len,
                                          int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc1, pSrc2, pDst)) return fault;
    const auto tilt = [](const Kel32f* a, const Kel32f* b, Kel32f* dst, std::size_t n) {
        return tilts(a, b, dst, n, 0, AbsTiltSum());
    };
    return throughFloats(pDst, toSize(len), scaleFactor, tilt, pSrc1, pSrc2);
}
