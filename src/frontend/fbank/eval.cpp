// Evaluation of the allocated filter banks, on spectra or on samples.
#include "frontend/fbank/eval.h"

#include "core/check.h"
#include "core/fft/transform.h"
#include "core/vector/roots.h"

using namespace kels;
using namespace kels::fbank;

namespace {

template <class Bank>
std::size_t binCount(const Bank& bank) {
    return toSize(bank.fftLen2 / 2 + 1);
}

// Magnitudes of the transformed samples, in the bank's own buffer.
KelStatus ownSpectrum(const Kel32f* pSrc, const KelFilterBank_32f& bank) {
    const KelStatus status = forwardToCcs(*bank.fftSpec, pSrc, bank.fftBuf, fftWork(bank));
    if (status != kelStatusOk) return status;
    magnitudes(reinterpret_cast<const Kel32fc*>(bank.fftBuf), bank.fftBuf, binCount(bank));
    return kelStatusOk;
}

// The transform and the magnitude each keep three more fraction bits.
constexpr int kTransformBits = 3, kMagnitudeBits = 3;
KelStatus ownSpectrum(const Kel16s* pSrc, const KelFilterBank_16s& bank) {
    const KelStatus status = forwardToCcs(*bank.fftSpec, pSrc, bank.fftBuf, -kTransformBits, fftWork(bank));
    if (status != kelStatusOk) return status;
    magnitudesScaled(reinterpret_cast<const Kel32sc*>(bank.fftBuf), bank.fftBuf, binCount(bank), -kMagnitudeBits);
    return kelStatusOk;
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
    sumFilters(bank, bank.fftBuf, pDst, shift + kTransformBits + kMagnitudeBits);
    return kelStatusOk;
}

}  // namespace

KelStatus kels::fbank::evaluate(const Kel32f* src, Kel32f* dst, const KelFilterBank_32f& bank) {
    const Kel32f* spectrum = src;
    if ((bank.flag & kelFBankOwnFFT) != 0) {
        const KelStatus status = ownSpectrum(src, bank);
        if (status != kelStatusOk) return status;
        spectrum = bank.fftBuf;
    }
    sumFilters(triangles(bank), spectrum, dst);
    return kelStatusOk;
}

KelStatus kelsEvalFBank_32f(const Kel32f* pSrc, Kel32f* pDst, KelFilterBank_32f* pFBank) {
    if (const KelStatus fault = evalFault(pSrc, pDst, pFBank)) return fault;
    return evaluate(pSrc, pDst, *pFBank);
}

KelStatus kelsEvalFBank_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, KelFilterBank_16s* pFBank, int scaleFactor) {
    if (const KelStatus fault = evalFault(pSrc, pDst, pFBank)) return fault;
    return evaluate(pSrc, pDst, *pFBank, scaleFactor);
}
KelStatus kelsEvalFBank_16s32s_Sfs(const Kel16s* pSrc, Kel32s* pDst, KelFilterBank_16s* pFBank, int scaleFactor) {
    if (const KelStatus fault = evalFault(pSrc, pDst, pFBank)) return fault;
    return evaluate(pSrc, pDst, *pFBank, scaleFactor);
}
