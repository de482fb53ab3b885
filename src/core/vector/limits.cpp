// Vectors held above or below a constant, and squared magnitudes.
#include "core/check.h"
#include "core/simd/vec.h"
#include "kels/features.h"

namespace kels {
namespace {

// re^2 + im^2.  dst may begin where src does: no element is written before it has been read.
void squaredMagnitudes(const Kel32fc* src, Kel32f* dst, std::size_t len) {
    constexpr std::size_t w = lanes<Kel32f>;
    const auto* const in = reinterpret_cast<const Kel32f*>(src);
    const auto squared = [](const Vec<Kel32f>& a, const Vec<Kel32f>& b) {
        const auto [re, im] = deinterleave(a, b);
        return Vec<Kel32f>(mulAdd(re, re, im * im));
    };
    std::size_t i = 0;
    for (; i + w <= len; i += w) store(dst + i, squared(load(in + 2 * i), load(in + 2 * i + w)));
    if (i == len) return;
    const std::size_t n = 2 * (len - i);
    const Vec<Kel32f> low = n < w ? loadPart(in + 2 * i, n) : load(in + 2 * i);
    const Vec<Kel32f> high = n > w ? loadPart(in + 2 * i + w, n - w) : Vec<Kel32f>(0.0f);
    storePart(dst + i, squared(low, high), len - i);
}

}  // namespace
}  // namespace kels

using namespace kels;

// A comparison with NaN fails, so the source is the operand that such a lane takes.
KelStatus kelsMaxEveryC_32f_I(Kel32f val, Kel32f* pSrcDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrcDst)) return fault;
    const auto raised = [=](const Vec<Kel32f>& x) { return greaterOf(Vec<Kel32f>(val), x); };
    map(pSrcDst, toSize(len), raised, 0.0f, pSrcDst);
    return kelStatusOk;
}
KelStatus kelsMinEveryC_32f_I(Kel32f val, Kel32f* pSrcDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrcDst)) return fault;
    const auto lowered = [=](const Vec<Kel32f>& x) { return lesserOf(Vec<Kel32f>(val), x); };
    map(pSrcDst, toSize(len), lowered, 0.0f, pSrcDst);
    return kelStatusOk;
}

KelStatus kelsMagnitudeSqr_32fc(const Kel32fc* pSrc, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    squaredMagnitudes(pSrc, pDst, toSize(len));
    return kelStatusOk;
}
