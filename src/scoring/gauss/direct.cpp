// One vector under one Gaussian whose variances are given as they are, not inverted.
#include "kels/gauss.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

#include "core/check.h"
#include "core/memory.h"
#include "core/scaling.h"
#include "core/simd/accurate_sum.h"
#include "core/vector/arithmetic.h"
#include "core/vector/fill_copy.h"
#include "scoring/gauss/walk.h"

namespace {
using namespace kels;
using namespace kels::gauss;

// What a vector division reports as kelStatusDivByZero: a divisor of zero or not a number.
template <class T>
bool anyFaulty(const T* variance, int len) {
    return std::any_of(variance, variance + len, [](T v) { return !(v > 0 || v < 0); });
}

// Memory from the allocator for a vector of any length.
struct Release {
    void operator()(void* block) const { kelsFree(block); }
};
template <class T>
using Owned = std::unique_ptr<T[], Release>;

// 1 / variance, whatever the status.
KelStatus invert(const Kel32f* variance, Kel32f* inverse, std::size_t len) {
    fill(inverse, len, 1.0f);
    return divide(variance, inverse, inverse, len);
}

// (vector - mean)^2 / variance, whatever the status; `quotients` has place for 2 * len values.
KelStatus quotientsOf(const Item<Kel16s>& item, Kel64f* quotients, std::size_t len) {
    Kel64f* const variances = quotients + len;
    for (std::size_t i = 0; i < len; ++i) {
        const Kel64f difference = item.vector[i] - item.mean[i];
        quotients[i] = difference * difference;
        variances[i] = item.variance[i];
    }
    return divide(variances, quotients, quotients, len);
}

// sum * 2^-(scaleFactor + 1), rounded toward minus infinity and limited to +-2^62.
int64_t floorOfHalf(Kel64f sum, int scaleFactor) {
    const Kel64f scaled = std::floor(sum * 0.5 * scaleMultiplier(scaleFactor, -1000, 1000));
    return static_cast<int64_t>(std::clamp(scaled, -0x1p62, 0x1p62));
}

}  // namespace

KelStatus kelsLogGaussSingle_DirectVar_64f(const Kel64f* pSrc, const Kel64f* pMean, const Kel64f* pVar, int len,
                                           Kel64f* pResult, Kel64f gConst) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMean, pVar, pResult)) return fault;
    if (anyFaulty(pVar, len)) return kelStatusDivByZero;
    const Item item{pSrc, pMean, pVar};
    *pResult = scoreOf<Scalar<long double, DirectVariance>>(item, toSize(len), Half(SameConstant{gConst}));
    return kelStatusOk;
}

KelStatus kelsLogGaussSingle_DirectVar_32f(const Kel32f* pSrc, const Kel32f* pMean, const Kel32f* pVar, int len,
                                           Kel32f* pResult, Kel32f gConst) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMean, pVar, pResult)) return fault;
    const Owned<Kel32f> inverse(allocate<Kel32f>(len));
    if (!inverse) return kelStatusAllocError;
    const KelStatus status = invert(pVar, inverse.get(), toSize(len));
    const Item item{pSrc, pMean, static_cast<const Kel32f*>(inverse.get())};
    *pResult = scoreOf<SinglePrecision<InverseVariance>>(item, toSize(len), Half(SameConstant{gConst}));
    return status;
}

KelStatus kelsLogGaussSingle_DirectVar_32f64f(const Kel32f* pSrc, const Kel32f* pMean, const Kel32f* pVar, int len,
                                              Kel64f* pResult, Kel64f gConst) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMean, pVar, pResult)) return fault;
    if (anyFaulty(pVar, len)) return kelStatusDivByZero;
    const Item item{pSrc, pMean, pVar};
    *pResult = scoreOf<Scalar<long double, DirectVariance>>(item, toSize(len), Half(SameConstant{gConst}));
    return kelStatusOk;
}

KelStatus kelsLogGaussSingle_DirectVar_16s32f(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pVar, int len,
                                              Kel32f* pResult, Kel32f gConst) {
    return kelsLogGaussSingle_DirectVarScaled_16s32f(pSrc, pMean, pVar, len, pResult, gConst, 0);
}

KelStatus kelsLogGaussSingle_DirectVarScaled_16s32f(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pVar,
                                                    int len, Kel32f* pResult, Kel32f gConst, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMean, pVar, pResult)) return fault;
    if (anyFaulty(pVar, len)) return kelStatusDivByZero;
    const HalfScaled finish(SameConstant{gConst}, scaleFactor);
    *pResult = scoreOf<Scalar<Kel32f, DirectVariance>>(Item{pSrc, pMean, pVar}, toSize(len), finish);
    return kelStatusOk;
}

KelStatus kelsLogGaussSingle_DirectVar_16s32s_Sfs(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pVar, int len,
                                                  Kel32s* pResult, Kel32s gConst, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMean, pVar, pResult)) return fault;
    const Owned<Kel64f> quotients(allocate<Kel64f>(2 * int64_t{len}));
    if (!quotients) return kelStatusAllocError;
    if (quotientsOf(Item{pSrc, pMean, pVar}, quotients.get(), toSize(len)) != kelStatusOk) {
        *pResult = std::numeric_limits<Kel32s>::min();
        return kelStatusDivByZero;
    }
    const auto sum = static_cast<Kel64f>(extendedSum(Elements<Kel64f>{quotients.get()}, toSize(len)));
    *pResult = Saturated::difference(gConst, floorOfHalf(sum, scaleFactor));
    return kelStatusOk;
}
