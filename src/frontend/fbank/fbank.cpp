// Construction and release of the allocated filter banks.
#include "kels/fbank.h"

#include "core/check.h"
#include "frontend/fbank/build.h"

using namespace kels;
using namespace kels::fbank;

namespace {

// The filters below highFreq that are equally spaced in frequency.
struct LinearPart {
    Kel32f highFreq;
    int nFilter;
};

// ---- checks: the comparisons are written so that NaN fails them ----------------------------------------------------

bool badFlag(int flag) {
    const int weights = flag & ~kelFBankOwnFFT;
    return weights != kelFBankWeightMel && weights != kelFBankWeightBin;
}

KelStatus melFault(int fftLen, Kel32f sampFreq, Kel32f lowFreq, Kel32f highFreq, int nFilter, int flag) {
    if (fftLen < 1 || nFilter < 1) return kelStatusSize;
    if (!(sampFreq > 0) || !(lowFreq > 0)) return kelStatusSize;
    if (!(lowFreq <= highFreq)) return kelStatusFBankFreq;
    if (!(highFreq <= sampFreq / 2)) return kelStatusFBankFreq;
    if (badFlag(flag)) return kelStatusFBankFlag;
    return kelStatusOk;
}

KelStatus melLinFault(int fftLen, Kel32f sampFreq, Kel32f lowFreq, Kel32f highFreq, int nFilter,
                      const LinearPart& linear, int flag) {
    if (fftLen < 1 || nFilter < 1) return kelStatusSize;
    if (!(sampFreq > 0) || !(lowFreq > 0)) return kelStatusSize;
    if (linear.nFilter < 1 || linear.nFilter > nFilter) return kelStatusSize;
    if (!(lowFreq <= linear.highFreq)) return kelStatusFBankFreq;
    if (!(linear.highFreq <= highFreq)) return kelStatusFBankFreq;
    if (!(highFreq <= sampFreq / 2)) return kelStatusFBankFreq;
    if (badFlag(flag)) return kelStatusFBankFlag;
    return kelStatusOk;
}

// ---- construction --------------------------------------------------------------------------------------------------

template <class Bank>
Kel32f binsPerHertz(const Bank& bank, Kel32f sampFreq) {
    return static_cast<Kel32f>(bank.fftLen2) / sampFreq;
}

template <class Bank>
KelStatus buildMel(Bank** ppFBank, int* pFFTOrder, int fftLen, Kel32f sampFreq, Kel32f lowFreq, Kel32f highFreq,
                   int nFilter, MelScale scale, int flag) {
    const KelStatus status = allocateBank(ppFBank, pFFTOrder, fftLen, nFilter, flag);
    if (status != kelStatusOk) return status;
    Bank& bank = **ppFBank;
    const NearestScope nearest;
    const auto corners = Corners::mel(scale, binsPerHertz(bank, sampFreq), lowFreq, highFreq, nFilter);
    layTriangles(bank, corners, scale, sampFreq);
    return kelStatusOk;
}

template <class Bank>
KelStatus buildMelLin(Bank** ppFBank, int* pFFTOrder, int fftLen, Kel32f sampFreq, Kel32f lowFreq, Kel32f highFreq,
                      int nFilter, const LinearPart& linear, MelScale scale, int flag) {
    const KelStatus status = allocateBank(ppFBank, pFFTOrder, fftLen, nFilter, flag);
    if (status != kelStatusOk) return status;
    Bank& bank = **ppFBank;
    bank.nLinFilter = linear.nFilter;
    const NearestScope nearest;
    const auto corners = Corners::linearThenMel(scale, binsPerHertz(bank, sampFreq), lowFreq, linear.highFreq, highFreq,
                                                nFilter, linear.nFilter);
    layTriangles(bank, corners, scale, sampFreq);
    return kelStatusOk;
}

}  // namespace

KelStatus kelsMelFBankInitAlloc_32f(KelFilterBank_32f** ppFBank, int* pFFTOrder, int fftLen, Kel32f sampFreq,
                                    Kel32f lowFreq, Kel32f highFreq, int nFilter, Kel32f melMul, Kel32f melDiv,
                                    int flag) {
    if (const KelStatus fault = melFault(fftLen, sampFreq, lowFreq, highFreq, nFilter, flag)) return fault;
    return buildMel(ppFBank, pFFTOrder, fftLen, sampFreq, lowFreq, highFreq, nFilter, {melMul, melDiv}, flag);
}
KelStatus kelsMelFBankInitAlloc_16s(KelFilterBank_16s** ppFBank, int* pFFTOrder, int fftLen, Kel32f sampFreq,
                                    Kel32f lowFreq, Kel32f highFreq, int nFilter, Kel32f melMul, Kel32f melDiv,
                                    int flag) {
    if (const KelStatus fault = melFault(fftLen, sampFreq, lowFreq, highFreq, nFilter, flag)) return fault;
    return buildMel(ppFBank, pFFTOrder, fftLen, sampFreq, lowFreq, highFreq, nFilter, {melMul, melDiv}, flag);
}

KelStatus kelsMelLinFBankInitAlloc_32f(KelFilterBank_32f** ppFBank, int* pFFTOrder, int fftLen, Kel32f sampFreq,
                                       Kel32f lowFreq, Kel32f highFreq, int nFilter, Kel32f highLinFreq, int nLinFilter,
                                       Kel32f melMul, Kel32f melDiv, int flag) {
    const LinearPart linear{highLinFreq, nLinFilter};
    if (const KelStatus fault = melLinFault(fftLen, sampFreq, lowFreq, highFreq, nFilter, linear, flag)) return fault;
    return buildMelLin(ppFBank, pFFTOrder, fftLen, sampFreq, lowFreq, highFreq, nFilter, linear, {melMul, melDiv},
                       flag);
}
KelStatus kelsMelLinFBankInitAlloc_16s(KelFilterBank_16s** ppFBank, int* pFFTOrder, int fftLen, Kel32f sampFreq,
                                       Kel32f lowFreq, Kel32f highFreq, int nFilter, Kel32f highLinFreq, int nLinFilter,
                                       Kel32f melMul, Kel32f melDiv, int flag) {
    const LinearPart linear{highLinFreq, nLinFilter};
    if (const KelStatus fault = melLinFault(fftLen, sampFreq, lowFreq, highFreq, nFilter, linear, flag)) return fault;
    return buildMelLin(ppFBank, pFFTOrder, fftLen, sampFreq, lowFreq, highFreq, nFilter, linear, {melMul, melDiv},
                       flag);
}

KelStatus kelsEmptyFBankInitAlloc_32f(KelFilterBank_32f** ppFBank, int* pFFTOrder, int fftLen, int nFilter, int flag) {
    if (fftLen < 1 || nFilter < 1) return kelStatusSize;
    return allocateBank(ppFBank, pFFTOrder, fftLen, nFilter, kelFBankWeightMel | (flag & kelFBankOwnFFT));
}
KelStatus kelsEmptyFBankInitAlloc_16s(KelFilterBank_16s** ppFBank, int* pFFTOrder, int fftLen, int nFilter, int flag) {
    if (fftLen < 1 || nFilter < 1) return kelStatusSize;
    return allocateBank(ppFBank, pFFTOrder, fftLen, nFilter, kelFBankWeightMel | (flag & kelFBankOwnFFT));
}

KelStatus kelsFBankFree_32f(KelFilterBank_32f* pFBank) {
    if (anyNull(pFBank)) return kelStatusNullPtr;
    releaseParts(*pFBank);
    return kelStatusOk;
}
KelStatus kelsFBankFree_16s(KelFilterBank_16s* pFBank) {
    if (anyNull(pFBank)) return kelStatusNullPtr;
    releaseParts(*pFBank);
    return kelStatusOk;
}
