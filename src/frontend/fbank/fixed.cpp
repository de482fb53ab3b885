// The filter bank in integers and in the caller's buffer: its size, its construction, its evaluation.
#include "core/check.h"
#include "frontend/fbank/fixed_bank.h"

using namespace kels;
using namespace kels::fbank;

namespace {

constexpr int kShortestFFT = 32, kLongestFFT = 8192;
constexpr int kHighestRate = 48000, kHighestFreq = 24000;
constexpr int kLowestMel = 0x80001, kHighestMelDiv = 0x0FFFFFFF, kHighestMelMul = 0x3FFFFFFF;

bool outside(int value, int lowest, int highest) {
    return value < lowest || value > highest;
}

KelStatus initFault(int fftLen, int sampFreq, int lowFreq, int highFreq, int nFilter, int melMul, int melDiv,
                    int flag) {
    if (nFilter < 1 || highFreq < 1 || outside(fftLen, kShortestFFT, kLongestFFT)) return kelStatusSize;
    if (flag != kelFBankWeightBin) return kelStatusFBankFlag;
    if (outside(sampFreq, 1, kHighestRate)) return kelStatusSize;
    if (lowFreq < 0) return kelStatusSize;
    if (highFreq <= lowFreq || highFreq > kHighestFreq) return kelStatusFBankFreq;
    if (outside(melDiv, kLowestMel, kHighestMelDiv)) return kelStatusBadArg;
    if (outside(melMul, kLowestMel, kHighestMelMul)) return kelStatusBadArg;
    if (nFilter > lengthRounded(fftLen) / 2 + 1) return kelStatusSize;
    return kelStatusOk;
}

}  // namespace

KelStatus kelsMelFBankGetSize_32s(int fftLen, int nFilter, int flag, int* pSize) {
    if (anyNull(pSize)) return kelStatusNullPtr;
    if (nFilter < 1 || outside(fftLen, kShortestFFT, kLongestFFT)) return kelStatusSize;
    if (flag != kelFBankWeightBin) return kelStatusFBankFlag;
    if (nFilter > lengthRounded(fftLen) / 2) return kelStatusSize;
    *pSize = fixedBankBytes(nFilter, lengthRounded(fftLen));
    return kelStatusOk;
}

KelStatus kelsMelFBankInit_32s(Kel8u* pBuffer, int* pFFTOrder, int fftLen, int sampFreq, int lowFreq, int highFreq,
                               int nFilter, int melMul, int melDiv, int flag) {
    if (anyNull(pBuffer, pFFTOrder)) return kelStatusNullPtr;
    const KelStatus fault = initFault(fftLen, sampFreq, lowFreq, highFreq, nFilter, melMul, melDiv, flag);
    if (fault != kelStatusOk) return fault;
    const int fftLen2 = lengthRounded(fftLen);
    *pFFTOrder = std::countr_zero(static_cast<unsigned>(fftLen2));
    const FixedCorners corners(fftLen2, sampFreq, lowFreq, highFreq, nFilter, melMul, melDiv);
    buildFixedBank(*FixedBank::in(pBuffer), corners, fftLen2, nFilter, flag);
    return kelStatusOk;
}

KelStatus kelsEvalFBank_32s_Sfs(const Kel32s* pSrc, Kel32s* pDst, KelFilterBank_32s* pFBank, int scaleFactor) {
    if (anyNull(pSrc, pDst, pFBank)) return kelStatusNullPtr;
    if (outside(scaleFactor, -31, 31)) return kelStatusBadArg;
    evaluateFixedBank(*FixedBank::in(pFBank), pSrc, pDst, scaleFactor);
    return kelStatusOk;
}
