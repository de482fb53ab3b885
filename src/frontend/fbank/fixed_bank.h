// The filter bank in integers throughout, laid out in the caller's buffer without a pointer in it: one size for every
// ABI, and the same weights on every machine.
#pragma once

#include <bit>
#include <cstring>

#include "core/layout.h"
#include "frontend/fbank/build.h"
#include "frontend/fbank/eval.h"
#include "frontend/fbank/fixed_log.h"

namespace kels::fbank {

// At the first aligned address of the buffer; its arrays follow.
struct alignas(kBlockAlignment) FixedBank {
    Kel32s nFilter;
    Kel32s flag;
    Kel32s nBins;

    // The centres and the two tables of weights.  A rising side can hold every bin; a whole number of vectors keeps its
    // rows aligned.
    Triangles<StepRows<Kel32s>, Kel32s> triangles() {
        const int rows = nFilter + 2, risingStep = roundUp(nBins, 8), fallingStep = nBins - 1;
        Layout layout(this + 1);
        Kel32s* const centres = layout.take<Kel32s>(rows);
        Kel32s* const rising = layout.take<Kel32s>(int64_t{rows} * risingStep);
        Kel32s* const falling = layout.take<Kel32s>(int64_t{rows} * fallingStep);
        return {centres, {rising, risingStep}, {falling, fallingStep}, nFilter};
    }

    static FixedBank* in(void* buffer) { return Layout(buffer).take<FixedBank>(1); }
};

constexpr int lengthRounded(int fftLen) {
    return static_cast<int>(std::bit_ceil(static_cast<unsigned>(fftLen)));
}

// The size that the interface states.  The layout needs 4 (n + 2) (fftLen2 + 8) + 4 (n + 2) + 91 bytes of it at most.
constexpr int fixedBankBytes(int n, int fftLen2) {
    const int r = 2 * n + 4;
    return 4 * n + 96 + 18 * r + 2 * r * (fftLen2 / 2 + 9) + 2 * r * (fftLen2 / 2) + 64;
}

// Corner k of nFilter + 2 that are equally spaced in mel, in whole bins.
class FixedCorners {
  public:
    FixedCorners(int fftLen2, int sampFreq, int lowFreq, int highFreq, int nFilter, int melMul, int melDiv)
        : melMul_(melMul),
          melDiv_(static_cast<int64_t>(melDiv) << (kFractionBits - 15)),
          fftLen2_(fftLen2),
          sampFreq_(sampFreq),
          parts_(nFilter + 1),
          melLow_(melOf(lowFreq)),
          melSpan_(melOf(highFreq) - melLow_) {}

    int64_t bin(int k) const {
        const int64_t mel = k * melSpan_ / parts_ + melLow_;
        const int64_t argument = mel * (1 << 15) / melMul_;
        const int64_t ratio = fixedExponential(argument, kFractionBits, -kFractionBits) - (1 << kFractionBits);
        const int64_t hertz = shiftHalfEven(ratio * melDiv_, kFractionBits);
        return shiftHalfEven(hertz * fftLen2_ / sampFreq_, kFractionBits);
    }

  private:
    static constexpr int kFractionBits = 22;  // of frequencies and logarithms

    int64_t melOf(int f) const {
        const int64_t hertz = static_cast<int64_t>(f) << kFractionBits;
        const int64_t above = fixedLogarithm(melDiv_ + hertz, kFractionBits);
        return ((above - fixedLogarithm(melDiv_, kFractionBits)) * melMul_) >> 15;
    }

    int64_t melMul_;  // Q15
    int64_t melDiv_;  // Q22, as all that follow are
    int fftLen2_, sampFreq_, parts_;
    int64_t melLow_, melSpan_;
};

inline void buildFixedBank(FixedBank& bank, const FixedCorners& corners, int fftLen2, int nFilter, int flag) {
    bank.nFilter = nFilter;
    bank.flag = flag;
    bank.nBins = fftLen2 / 2 + 1;
    const auto [centres, rising, falling, n] = bank.triangles();
    std::memset(rising[0], 0, static_cast<std::size_t>(falling[n + 2] - rising[0]) * sizeof(Kel32s));
    for (int k = 0; k < n + 2; ++k) centres[k] = nextCentre(centres, k, corners.bin(k), fftLen2 / 2);
    for (int m = 0; m < n; ++m) {
        weighByBin<FixedWeights<30>>(rising[m], falling[m], centres[m], centres[m + 1], centres[m + 2]);
    }
}

inline void evaluateFixedBank(FixedBank& bank, const Kel32s* spectrum, Kel32s* dst, int scaleFactor) {
    const auto view = bank.triangles();
    const auto product = [](int64_t weight, int64_t x) { return (weight * x) >> 8; };
    for (int m = 0; m < view.nFilter; ++m) {
        const int64_t scaled = scaleFloor<int64_t>(sumFilter(view, m, spectrum, product), scaleFactor);
        dst[m] = saturate<Kel32s>(shiftHalfUp(scaled, 30 - 8));
    }
}

}  // namespace kels::fbank
