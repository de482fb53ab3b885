#include "frontend/fbank/eval.h"

#include "kels/core.h"

namespace kels {
namespace {

// Magnitudes of the transformed samples, in the bank's own buffer.
KelStatus ownSpectrum(const Kel32f* pSrc, const KelFilterBank_32f& bank) {
    const KelStatus status = kelsFFTFwd_RToCCS_32f(pSrc, bank.fftBuf, bank.fftSpec, fftWork(bank));
    if (status != kelStatusOk) return status;
    return kelsMagnitude_32fc(reinterpret_cast<const Kel32fc*>(bank.fftBuf), bank.fftBuf, bank.fftLen2 / 2 + 1);
}

// The transform and the magnitude each keep three more fraction bits.
constexpr int kSpectrumFractionBits = 3 + 3;
KelStatus ownSpectrum(const Kel16s* pSrc, const KelFilterBank_16s& bank) {
    const KelStatus status = kelsFFTFwd_RToCCS_16s32s_Sfs(pSrc, bank.fftBuf, bank.fftSpec, -3, fftWork(bank));
    if (status != kelStatusOk) return status;
    return kelsMagnitude_32sc_Sfs(reinterpret_cast<const Kel32sc*>(bank.fftBuf), bank.fftBuf, bank.fftLen2 / 2 + 1, -3);
}

template <class Sample, class Dst>
void sumFilters(const KelFilterBank_16s& bank, const Sample* spectrum, Dst* pDst, int shift) {
    const auto product = [](int64_t weight, int64_t x) { return weight * x; };
    const auto view = triangles(bank);
    for (int m = 0; m < bank.nFilter; ++m) pDst[m] = scaleFloor<Dst>(sumFilter(view, m, spectrum, product), shift);
}

template <class Dst>
KelStatus evaluate(const Kel16s* pSrc, Dst* pDst, const KelFilterBank_16s& bank, int scaleFactor) {
    // Shifts by 64 and more have one result, so the clamp changes nothing but keeps the sum within an int.
    const int shift = std::clamp(scaleFactor, -1000, 1000) + bank.weightShift;
    if ((bank.flag & kelFBankOwnFFT) == 0) {
        sumFilters(bank, pSrc, pDst, shift);
        return kelStatusOk;
    }
    const KelStatus status = ownSpectrum(pSrc, bank);
    if (status != kelStatusOk) return status;
    sumFilters(bank, bank.fftBuf, pDst, shift + kSpectrumFractionBits);
    return kelStatusOk;
}

}  // namespace
}  // namespace kels

using namespace kels;

KelStatus kelsEvalFBank_32f(const Kel32f* pSrc, Kel32f* pDst, KelFilterBank_32f* pFBank) {
    if (anyNull(pSrc, pDst, pFBank) || incomplete(*pFBank)) return kelStatusNullPtr;
    if (!pFBank->ready) return kelStatusFBankState;
    const Kel32f* spectrum = pSrc;
    if ((pFBank->flag & kelFBankOwnFFT) != 0) {
        const KelStatus status = ownSpectrum(pSrc, *pFBank);
        if (status != kelStatusOk) return status;
        spectrum = pFBank->fftBuf;
    }
    sumFilters(triangles(*pFBank), spectrum, pDst);
    return kelStatusOk;
}

KelStatus kelsEvalFBank_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, KelFilterBank_16s* pFBank, int scaleFactor) {
    if (anyNull(pSrc, pDst, pFBank) || incomplete(*pFBank)) return kelStatusNullPtr;
    if (!pFBank->ready) return kelStatusFBankState;
    return evaluate(pSrc, pDst, *pFBank, scaleFactor);
}
KelStatus kelsEvalFBank_16s32s_Sfs(const Kel16s* pSrc, Kel32s* pDst, KelFilterBank_16s* pFBank, int scaleFactor) {
    if (anyNull(pSrc, pDst, pFBank) || incomplete(*pFBank)) return kelStatusNullPtr;
    if (!pFBank->ready) return kelStatusFBankState;
    return evaluate(pSrc, pDst, *pFBank, scaleFactor);
}
