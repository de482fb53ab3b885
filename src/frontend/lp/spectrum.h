// The sampled spectrum of a predictor.
#pragma once

#include <cstddef>
#include <limits>

#include "core/fft/spec.h"
#include "core/fft/transform.h"
#include "core/memory.h"
#include "core/vector/fill_copy.h"
#include "core/vector/roots.h"
#include "frontend/lp/values.h"

namespace kels::lp {

inline constexpr int kMaxSpectrumOrder = 30;

// dst[k] = 1 / |S[k]| for k < N = 2^fftOrder, where S is the transform of 0, src[0] .. src[len-1], 0 .. 0 less val at
// k = 0; upper frequencies mirror the lower ones.  An S of 0 gives infinity and a warning.
template <class T>
KelStatus sampledSpectrum(const Source<T>& src, std::size_t len, const Result<T>& dst, int fftOrder, Kel32f val) {
    const std::size_t n = std::size_t{1} << fftOrder;
    KelFFTSpec_R_32f* spec = nullptr;
    KelStatus status = buildSpec(&spec, fftOrder, kelFftNoDiv, kelHintNone);
    if (status != kelStatusOk) return status;
    Scratch<Kel32f, 64 + 2> bins((int64_t{1} << fftOrder) + 2);
    if (bins.failed()) {
        status = kelStatusNoMemory;
    } else {
        bins[0] = 0;
        for (std::size_t i = 0; i < len; ++i) bins[i + 1] = static_cast<Kel32f>(src[i]);
        zero(bins.data() + len + 1, n - len - 1);
        status = forwardToCcs(*spec, bins.data(), bins.data(), static_cast<Kel8u*>(nullptr));
    }
    releaseSpec(spec);
    if (status != kelStatusOk) return status;

    bins[0] -= val;
    magnitudes(reinterpret_cast<const Kel32fc*>(bins.data()), bins.data(), n / 2 + 1);
    for (std::size_t k = 0; k <= n / 2; ++k) {
        const Kel32f size = bins[k];
        if (size == 0) status = kelStatusDivByZero;
        const Kel32f level = size == 0 ? std::numeric_limits<Kel32f>::infinity() : 1 / size;
        dst.set(k, level);
        if (k > 0 && k < n / 2) dst.set(n - k, level);
    }
    return status;
}

}  // namespace kels::lp
