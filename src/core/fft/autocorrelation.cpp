#include <algorithm>

#include "core/check.h"
#include "core/memory.h"
#include "kels/core.h"
#include "kels/fft.h"

using namespace kels;

namespace {

// From this many lags on the transforms are worth their while.
constexpr int kFirstFftLags = 700;

void correlateDirectly(const Kel32f* src, int srcLen, Kel32f* dst, int lags) {
    for (int k = 0; k < lags; ++k) kelsDotProd_32f(src, src + k, srcLen - k, dst + k);
}

// The inverse transform of |X|^2, with as many zeros behind the source as keep the lags from wrapping around.
KelStatus correlateBySpectrum(const Kel32f* src, int srcLen, Kel32f* dst, int lags) {
    int order = 1;
    while ((int64_t{1} << order) < 2 * static_cast<int64_t>(srcLen)) ++order;
    KelFFTSpec_R_32f* spec = nullptr;
    KelStatus status = kelsFFTInitAlloc_R_32f(&spec, order, kelFftDivInvByN, kelHintNone);
    if (status != kelStatusOk) return status;
    const int n = 1 << order;
    Kel32f* const x = kelsMalloc_32f(n);
    if (x == nullptr) {
        status = kelStatusNoMemory;
    } else {
        kelsCopy_32f(src, x, srcLen);
        kelsZero_32f(x + srcLen, n - srcLen);
        status = kelsFFTFwd_RToPack_32f(x, x, spec, nullptr);
        if (status == kelStatusOk) status = kelsMulPackConj_32f_I(x, x, n);
        if (status == kelStatusOk) status = kelsFFTInv_PackToR_32f(x, x, spec, nullptr);
        if (status == kelStatusOk) kelsCopy_32f(x, dst, lags);
    }
    kelsFree(x);
    kelsFFTFree_R_32f(spec);
    return status;
}

}  // namespace

KelStatus kelsAutoCorr_32f(const Kel32f* pSrc, int srcLen, Kel32f* pDst, int dstLen) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (srcLen < 1 || dstLen < 1) return kelStatusSize;
    const int lags = std::min(srcLen, dstLen);
    if (lags < kFirstFftLags) {
        correlateDirectly(pSrc, srcLen, pDst, lags);
    } else {
        const KelStatus status = correlateBySpectrum(pSrc, srcLen, pDst, lags);
        if (status != kelStatusOk) return status;
    }
    if (lags < dstLen) kelsZero_32f(pDst + lags, dstLen - lags);
    return kelStatusOk;
}
