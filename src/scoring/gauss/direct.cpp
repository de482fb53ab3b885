#include <algorithm>
#include <cmath>
#include <limits>

#include "core/simd/accurate_sum.h"
#include "core/check.h"
#include "core/memory.h"
#include "core/scaling.h"
#include "kels/core.h"
#include "kels/gauss.h"
#include "scoring/gauss/walk.h"

using namespace kels;

namespace {

// What the vector division reports as 6: a divisor of zero or not a number.
template <class T>
bool anyFaulty(const T* variance, int len) {
    return std::any_of(variance, variance + len, [](T v) { return !(v > 0 || v < 0); });
}

// Memory of a call's own, whatever its length.
template <class T>
using HeapScratch = Scratch<T, 1>;

// sum * 2^-(scaleFactor + 1), rounded toward minus infinity and held to +-2^62.
int64_t floorOfHalf(Kel64f sum, int scaleFactor) {
    const Kel64f scaled = std::floor(sum * 0.5 * scaleMultiplier(scaleFactor, -1000, 1000));
    return static_cast<int64_t>(std::clamp(scaled, -0x1p62, 0x1p62));
}

}  // namespace

KelStatus kelsLogGaussSingle_DirectVar_64f(const Kel64f* pSrc, const Kel64f* pMean, const Kel64f* pVar, int len,
                                           Kel64f* pResult, Kel64f gConst) {
    if (anyNull(pSrc, pMean, pVar, pResult)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    if (anyFaulty(pVar, len)) return kelStatusDivByZero;
    *pResult =
        scoreOf<Scalar<long double, DirectVariance>>(Item{pSrc, pMean, pVar}, toSize(len), Half(SameConstant{gConst}));
    return kelStatusOk;
}

KelStatus kelsLogGaussSingle_DirectVar_32f(const Kel32f* pSrc, const Kel32f* pMean, const Kel32f* pVar, int len,
                                           Kel32f* pResult, Kel32f gConst) {
    if (anyNull(pSrc, pMean, pVar, pResult)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    HeapScratch<Kel32f> inverse(int64_t{len} + 32);
    if (inverse.failed()) return kelStatusAllocError;
    kelsSet_32f(1, inverse.data(), len);
    const KelStatus status = kelsDiv_32f(pVar, inverse.data(), inverse.data(), len);
    kelsLogGaussSingle_32f(pSrc, pMean, inverse.data(), len, pResult, gConst);
    return status;
}

KelStatus kelsLogGaussSingle_DirectVar_32f64f(const Kel32f* pSrc, const Kel32f* pMean, const Kel32f* pVar, int len,
                                              Kel64f* pResult, Kel64f gConst) {
    if (anyNull(pSrc, pMean, pVar, pResult)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    if (anyFaulty(pVar, len)) return kelStatusDivByZero;
    *pResult =
        scoreOf<Scalar<long double, DirectVariance>>(Item{pSrc, pMean, pVar}, toSize(len), Half(SameConstant{gConst}));
    return kelStatusOk;
}

KelStatus kelsLogGaussSingle_DirectVar_16s32f(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pVar, int len,
                                              Kel32f* pResult, Kel32f gConst) {
    return kelsLogGaussSingle_DirectVarScaled_16s32f(pSrc, pMean, pVar, len, pResult, gConst, 0);
}

KelStatus kelsLogGaussSingle_DirectVarScaled_16s32f(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pVar,
                                                    int len, Kel32f* pResult, Kel32f gConst, int scaleFactor) {
    if (anyNull(pSrc, pMean, pVar, pResult)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    if (anyFaulty(pVar, len)) return kelStatusDivByZero;
    *pResult = scoreOf<Scalar<Kel32f, DirectVariance>>(Item{pSrc, pMean, pVar}, toSize(len),
                                                       HalfScaled(SameConstant{gConst}, scaleFactor));
    return kelStatusOk;
}

KelStatus kelsLogGaussSingle_DirectVar_16s32s_Sfs(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pVar, int len,
                                                  Kel32s* pResult, Kel32s gConst, int scaleFactor) {
    if (anyNull(pSrc, pMean, pVar, pResult)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    HeapScratch<Kel64f> scratch(2 * int64_t{len});
    if (scratch.failed()) return kelStatusAllocError;
    Kel64f* const quotients = scratch.data();
    Kel64f* const variances = quotients + len;
    for (int i = 0; i < len; ++i) {
        const Kel64f difference = pSrc[i] - pMean[i];
        quotients[i] = difference * difference;
        variances[i] = pVar[i];
    }
    const KelStatus status = kelsDiv_64f(variances, quotients, quotients, len);
    const auto sum = static_cast<Kel64f>(extendedSum(Elements<Kel64f>{quotients}, toSize(len)));
    *pResult = status == kelStatusOk ? Saturated::difference(gConst, floorOfHalf(sum, scaleFactor))
                                     : std::numeric_limits<Kel32s>::min();
    return status;
}
