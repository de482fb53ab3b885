// Autocorrelation: dot products for few lags, transforms for many.
#include "core/fft/autocorrelation.h"

#include <algorithm>

#include "core/check.h"
#include "core/fft/pack.h"
#include "core/fft/transform.h"
#include "core/memory.h"
#include "core/simd/accurate_sum.h"
#include "core/vector/fill_copy.h"
#include "kels/core.h"
#include "kels/fft.h"

namespace kels {
namespace {

void correlateDirectly(const Kel32f* src, int srcLen, Kel32f* dst, int lags) {
    for (int k = 0; k < lags; ++k) dst[k] = roundedSum(FloatProducts{src, src + k}, toSize(srcLen - k));
}

// The inverse transform of |X|^2, with as many zeros behind the source as keep the lags from wrapping around.
KelStatus correlateBySpectrum(const Kel32f* src, int srcLen, Kel32f* dst, int lags) {
    int order = 1;
    while ((int64_t{1} << order) < 2 * int64_t{srcLen}) ++order;
    if (order > kMaxFftOrder) return kelStatusFftOrder;
    KelFFTSpec_R_32f* spec = nullptr;
    const KelStatus fault = buildSpec(&spec, order, kelFftDivInvByN, kelHintNone);
    if (fault != kelStatusOk) return fault;
    const std::size_t n = std::size_t{1} << order;
    const std::size_t used = toSize(srcLen);
    Kel32f* const x = allocate<Kel32f>(static_cast<int64_t>(n));
    const WorkBuffer work(*spec, nullptr);
    const bool failed = x == nullptr || work.failed();
    if (!failed) {
        copy(src, x, used);
        zero(x + used, n - used);
        forwardToPack(*spec, x, x, work.floats());
        multiplyPackedConj(x, x, n);
        inverseFromPack(*spec, x, x, work.floats());
        copy(x, dst, toSize(lags));
    }
    kelsFree(x);
    releaseSpec(spec);
    return failed ? kelStatusNoMemory : kelStatusOk;
}

}  // namespace

KelStatus autocorrelate(const Kel32f* src, int srcLen, Kel32f* dst, int dstLen) {
    const int lags = std::min(srcLen, dstLen);
    if (lags < kFirstFftLags) {
        correlateDirectly(src, srcLen, dst, lags);
    } else {
        const KelStatus status = correlateBySpectrum(src, srcLen, dst, lags);
        if (status != kelStatusOk) return status;
    }
    zero(dst + lags, toSize(dstLen - lags));
    return kelStatusOk;
}

}  // namespace kels

using namespace kels;

KelStatus kelsAutoCorr_32f(const Kel32f* pSrc, int srcLen, Kel32f* pDst, int dstLen) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (srcLen < 1 || dstLen < 1) return kelStatusSize;
    return autocorrelate(pSrc, srcLen, pDst, dstLen);
}
