// Conversions between predictors and reflection coefficients.
#include "frontend/lp/reflection.h"

#include <limits>

#include "core/check.h"
#include "kels/lp.h"

using namespace kels;
using namespace kels::lp;

namespace {

constexpr Kel64f kNaN = std::numeric_limits<Kel64f>::quiet_NaN();

}  // namespace

KelStatus kelsLPToReflection_32f(const Kel32f* pSrc, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    return reflectionOf(plainSource(pSrc), floatResult(pDst), len, kNaN);
}
KelStatus kelsLPToReflection_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    const NearestScope nearest;
    return reflectionOf(scaledSource(pSrc, scaleFactor), q15Result(pDst), len, 0);
}
KelStatus kelsReflectionToLP_32f(const Kel32f* pSrc, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    return predictorOfReflection(plainSource(pSrc), floatResult(pDst), len);
}
KelStatus kelsReflectionToLP_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    const NearestScope nearest;
    return predictorOfReflection(q15Source(pSrc), scaledResult(pDst, scaleFactor), len);
}
