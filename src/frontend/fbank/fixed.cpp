// The filter bank in integers throughout, laid out in the caller's buffer without a pointer in it: one size for every
// ABI, and the same weights on every machine.
#include <bit>
#include <cstring>

#include "frontend/fbank/fixed_log.h"
#include "frontend/fbank/build.h"
#include "frontend/fbank/eval.h"

namespace kels {
namespace {

constexpr std::size_t kAlignment = 32;
constexpr int kFractionBits = 22;  // of frequencies and logarithms
using Q30 = FixedWeights<30>;

// At the first aligned address of the buffer; the centres and the two matrices of nFilter + 2 rows follow.
struct alignas(kAlignment) FixedBank {
    Kel32s nFilter;
    Kel32s flag;
    Kel32s nBins;

    Kel32s* centres() { return reinterpret_cast<Kel32s*>(this + 1); }
    int rows() const { return nFilter + 2; }
    // A rising side can hold every bin; a whole number of vectors keeps the rows aligned.
    int risingStep() const { return roundUp(nBins, 8); }
    int fallingStep() const { return nBins - 1; }
    StepRows<Kel32s> rising() { return {centres() + roundUp(rows(), 8), risingStep()}; }
    StepRows<Kel32s> falling() { return {rising()[rows()], fallingStep()}; }
    Triangles<StepRows<Kel32s>> triangles() { return {centres(), rising(), falling(), nFilter}; }

    static FixedBank* in(void* buffer) {
        return reinterpret_cast<FixedBank*>((reinterpret_cast<uintptr_t>(buffer) + kAlignment - 1) & -kAlignment);
    }
};

// What has always been asked for; the layout above needs 4 * (n + 2) * (fftLen2 + 8) + 4 * (n + 2) + 91 at most.
constexpr int bufferSize(int n, int fftLen2) {
    const int r = 2 * n + 4;
    return 4 * n + 96 + 18 * r + 2 * r * (fftLen2 / 2 + 9) + 2 * r * (fftLen2 / 2) + 64;
}

constexpr int lengthRounded(int fftLen) {
    return static_cast<int>(std::bit_ceil(static_cast<unsigned>(fftLen)));
}

int64_t logarithm(int64_t v) {
    int64_t result = 0;
    ownNatLog(v, &result, kFractionBits);
    return result;
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
        const int64_t ratio =
            ownExpFix(mel * (1 << 15) / melMul_, kFractionBits, -kFractionBits) - (1 << kFractionBits);
        const int64_t hertz = shiftHalfEven(ratio * melDiv_, kFractionBits);
        return shiftHalfEven(hertz * fftLen2_ / sampFreq_, kFractionBits);
    }

  private:
    int64_t melOf(int f) const {
        const int64_t hertz = static_cast<int64_t>(f) << kFractionBits;
        return ((logarithm(melDiv_ + hertz) - logarithm(melDiv_)) * melMul_) >> 15;
    }

    int64_t melMul_;  // Q15
    int64_t melDiv_;  // Q22, as all that follow are
    int fftLen2_, sampFreq_, parts_;
    int64_t melLow_, melSpan_;
};

}  // namespace
}  // namespace kels

using namespace kels;

KelStatus kelsMelFBankGetSize_32s(int fftLen, int nFilter, int flag, int* pSize) {
    if (anyNull(pSize)) return kelStatusNullPtr;
    if (nFilter < 1 || fftLen < 32 || fftLen > 8192) return kelStatusSize;
    if (flag != kelFBankWeightBin) return kelStatusFBankFlag;
    if (nFilter > lengthRounded(fftLen) / 2) return kelStatusSize;
    *pSize = bufferSize(nFilter, lengthRounded(fftLen));
    return kelStatusOk;
}

KelStatus kelsMelFBankInit_32s(Kel8u* pBuffer, int* pFFTOrder, int fftLen, int sampFreq, int lowFreq, int highFreq,
                               int nFilter, int melMul, int melDiv, int flag) {
    if (anyNull(pBuffer, pFFTOrder)) return kelStatusNullPtr;
    if (nFilter < 1 || highFreq < 1 || fftLen < 32 || fftLen > 8192) return kelStatusSize;
    if (flag != kelFBankWeightBin) return kelStatusFBankFlag;
    if (sampFreq < 1 || sampFreq > 48000) return kelStatusSize;
    if (lowFreq < 0) return kelStatusSize;
    if (highFreq <= lowFreq || highFreq > 24000) return kelStatusFBankFreq;
    if (melDiv < 0x80001 || melDiv > 0x0FFFFFFF) return kelStatusBadArg;
    if (melMul < 0x80001 || melMul > 0x3FFFFFFF) return kelStatusBadArg;
    const int fftLen2 = lengthRounded(fftLen);
    if (nFilter > fftLen2 / 2 + 1) return kelStatusSize;

    *pFFTOrder = std::countr_zero(static_cast<unsigned>(fftLen2));
    FixedBank& bank = *FixedBank::in(pBuffer);
    bank.nFilter = nFilter;
    bank.flag = flag;
    bank.nBins = fftLen2 / 2 + 1;
    Kel32s* const centres = bank.centres();
    const auto rising = bank.rising();
    const auto falling = bank.falling();
    std::memset(rising[0], 0, static_cast<std::size_t>(falling[bank.rows()] - rising[0]) * sizeof(Kel32s));

    const FixedCorners corners(fftLen2, sampFreq, lowFreq, highFreq, nFilter, melMul, melDiv);
    for (int k = 0; k < nFilter + 2; ++k) centres[k] = nextCentre(centres, k, corners.bin(k), fftLen2 / 2);
    for (int m = 0; m < nFilter; ++m) {
        weighByBin<Q30>(rising[m], falling[m], centres[m], centres[m + 1], centres[m + 2]);
    }
    return kelStatusOk;
}

KelStatus kelsEvalFBank_32s_Sfs(const Kel32s* pSrc, Kel32s* pDst, KelFilterBank_32s* pFBank, int scaleFactor) {
    if (anyNull(pSrc, pDst, pFBank)) return kelStatusNullPtr;
    if (scaleFactor < -31 || scaleFactor > 31) return kelStatusBadArg;
    const auto view = FixedBank::in(pFBank)->triangles();
    const auto product = [](int64_t weight, int64_t x) { return (weight * x) >> 8; };
    for (int m = 0; m < view.nFilter; ++m) {
        const int64_t scaled = scaleFloor<int64_t>(sumFilter(view, m, pSrc, product), scaleFactor);
        pDst[m] = saturate<Kel32s>(shiftHalfUp(scaled, 30 - 8));
    }
    return kelStatusOk;
}
