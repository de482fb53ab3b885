// Pre-emphasis: each sample less a share of the one before it.
#include <cmath>

#include "core/check.h"
#include "core/scaling.h"
#include "core/simd/vec.h"
#include "kels/features.h"

namespace kels {
namespace {

// Products of singles, or of a single and 16 bits, are exact in double precision, so the difference is rounded there
// and then to single.  From the last sample to the first, so that dst may be src.
template <class T>
void preEmphasise(const T* src, Kel32f* dst, std::size_t len, Kel32f val, T* memory) {
    constexpr std::size_t w = lanes<Kel32f>, half = lanes<Kel64f>;
    const NearestScope nearest;
    const double factor = val;
    const T before = memory != nullptr ? *memory : src[0];
    const T last = src[len - 1];
    std::size_t i = len;
    const auto emphasised = [=](std::size_t at) {
        return Vec<Kel64f>(loadWide(src + at) - loadWide(src + at - 1) * factor);
    };
    for (; i > w; i -= w) store(dst + i - w, narrow(emphasised(i - w), emphasised(i - w + half)));
    while (--i > 0) dst[i] = static_cast<Kel32f>(src[i] - factor * src[i - 1]);
    dst[0] = static_cast<Kel32f>(src[0] - factor * before);
    if (memory != nullptr) *memory = last;
}

}  // namespace
}  // namespace kels

using namespace kels;

KelStatus kelsPreEmphasis_32f(const Kel32f* pSrc, Kel32f* pDst, int len, Kel32f val, Kel32f* pMem) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    if (!std::isfinite(val)) return kelStatusBadArg;
    preEmphasise(pSrc, pDst, toSize(len), val, pMem);
    return kelStatusOk;
}
KelStatus kelsPreEmphasis_32f_I(Kel32f* pSrcDst, int len, Kel32f val, Kel32f* pMem) {
    if (const KelStatus fault = vectorFault(len, pSrcDst)) return fault;
    if (!std::isfinite(val)) return kelStatusBadArg;
    preEmphasise(pSrcDst, pSrcDst, toSize(len), val, pMem);
    return kelStatusOk;
}
KelStatus kelsPreEmphasis_16s32f(const Kel16s* pSrc, Kel32f* pDst, int len, Kel32f val, Kel16s* pMem) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    if (!std::isfinite(val)) return kelStatusBadArg;
    preEmphasise(pSrc, pDst, toSize(len), val, pMem);
    return kelStatusOk;
}
