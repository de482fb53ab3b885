// Autocorrelation: dot products for few lags, transforms for many.
#include "core/fft/autocorrelation.h"

#include <algorithm>

#include "core/check.h"
#include "core/memory.h"
#include "core/simd/accurate_sum.h"
#include "core/vector/fill_copy.h"
#include "kels/core.h"
#include "kels/fft.h"

using namespace kels;

namespace {

// From this many lags on the transforms are worth their while.
constexpr int kFirstFftLags = 700;

void correlateDirectly(const Kel32f* src, int srcLen, Kel32f* dst, int lags) {
    for (int k = 0; k < lags; ++k) dst[k] = roundedSum(FloatProducts{src, src + k}, toSize(srcLen - k));
}

// The inverse transform of |X|^2, with as many zeros behind the source as keep the lags from wrapping around.
KelStatus correlateBySpectrum(const Kel32f* src, int srcLen, Kel32f* dst, int lags) {
    int order = 1;
    while ((int64_t{1} << order) < 2 * static_cast<int64_t>(srcLen)) ++order;
    KelFFTSpec_R_32f* spec = nullptr;
    KelStatus status = kelsFFTInitAlloc_R_32f(&spec, order, kelFftDivInvByN, kelHintNone);
    if (status != kelStatusOk) return status;
    const int n = 1 << order;
    Kel32f* const x = allocate<Kel32f>(n);
    if (x == nullptr) {
        status = kelStatusNoMemory;
    } else {
        copy(src, x, toSize(srcLen));
        zero(x + srcLen, toSize(n - srcLen));
        status = kelsFFTFwd_RToPack_32f(x, x, spec, nullptr);
        if (status == kelStatusOk) status = kelsMulPackConj_32f_I(x, x, n);
        if (status == kelStatusOk) status = kelsFFTInv_PackToR_32f(x, x, spec, nullptr);
        if (status == kelStatusOk) copy(x, dst, toSize(lags));
    }
    kelsFree(x);
    kelsFFTFree_R_32f(spec);
    return status;
}

}  // namespace

namespace kels {

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

KelStatus kelsAutoCorr_32f(const Kel32f* pSrc, int srcLen, Kel32f* pDst, int dstLen) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (srcLen < 1 || dstLen < 1) return kelStatusSize;
    return autocorrelate(pSrc, srcLen, pDst, dstLen);
}
