#include "frontend/fbank/state.h"

#include <bit>
#include <cstring>

#include "core/fft/spec.h"
#include "core/row_table.h"
#include "frontend/fbank/build.h"

namespace kels {
namespace {

constexpr int kLongestFFT = 1 << 30;

Kel32f** allocateRows(Kel32f**, int rows, int cols) {
    return Alloc2_32f(rows, cols);
}
Kel32s** allocateRows(Kel32s**, int rows, int cols) {
    return Alloc2_32s(rows, cols);
}

// Cleared rows, padding included.
template <class Weight>
Weight** allocateWeights(int rows, int cols) {
    Weight** const table = allocateRows(static_cast<Weight**>(nullptr), rows, cols);
    if (table == nullptr) return nullptr;
    const auto rowBytes = roundUp<std::size_t>(static_cast<std::size_t>(cols), 8) * sizeof(Weight);
    std::memset(table[0], 0, static_cast<std::size_t>(rows) * rowBytes);
    return table;
}

KelStatus makeSpec(KelFFTSpec_R_32f** ppSpec, int order) {
    return kelsFFTInitAlloc_R_32f(ppSpec, order, kelFftNoDiv, kelHintAccurate);
}
KelStatus makeSpec(KelFFTSpec_R_16s32s** ppSpec, int order) {
    return kelsFFTInitAlloc_R_16s32s(ppSpec, order, kelFftNoDiv, kelHintAccurate);
}
void freeSpec(KelFFTSpec_R_32f* pSpec) {
    if (pSpec != nullptr) kelsFFTFree_R_32f(pSpec);
}
void freeSpec(KelFFTSpec_R_16s32s* pSpec) {
    if (pSpec != nullptr) kelsFFTFree_R_16s32s(pSpec);
}

template <class Bank>
KelStatus allocateParts(Bank** ppFBank, int* pFFTOrder, int fftLen, int nFilter, int flag) {
    using Weight = typename Bank::Weight;
    *ppFBank = nullptr;
    if (fftLen > kLongestFFT || nFilter > std::numeric_limits<int>::max() - 2) return kelStatusNoMemory;
    const auto fftLen2 = static_cast<int>(std::bit_ceil(static_cast<unsigned>(std::max(fftLen, 2))));
    const int fftOrder = std::countr_zero(static_cast<unsigned>(fftLen2));
    *pFFTOrder = fftOrder;

    Bank* const bank = *ppFBank = allocateCleared<Bank>(1);
    if (bank == nullptr) return kelStatusNoMemory;
    bank->flag = flag;
    bank->fftLen2 = fftLen2;
    bank->fftOrder = fftOrder;
    bank->nFilter = nFilter;
    bank->nLinFilter = nFilter;
    bank->melDiv = 1;

    const int rows = nFilter + 2;
    if ((bank->centres = allocateCleared<Kel32s>(rows)) == nullptr) return kelStatusNoMemory;
    // A rising row holds up to fftLen2 / 2 + 1 weights.  The padding has the place: the row length with the headroom is
    // never a multiple of 8.
    if ((bank->rising = allocateWeights<Weight>(rows, fftLen2 / 2 + kHeadroom)) == nullptr) return kelStatusNoMemory;
    for (int m = 0; m < rows; ++m) bank->rising[m] += kHeadroom;
    if ((bank->falling = allocateWeights<Weight>(rows, fftLen2 / 2)) == nullptr) return kelStatusNoMemory;
    if ((flag & kelFBankOwnFFT) == 0) return kelStatusOk;
    if (makeSpec(&bank->fftSpec, fftOrder) != kelStatusOk) return kelStatusNoMemory;
    const int64_t workBytes = int64_t{bank->fftSpec->bufferSize} + 15;  // of any alignment
    const int64_t bufLen = int64_t{fftLen2} + 2 + (workBytes + 3) / 4;
    if ((bank->fftBuf = allocateCleared<Weight>(bufLen)) == nullptr) return kelStatusNoMemory;
    return kelStatusOk;
}

bool validFlag(int flag) {
    const int weights = flag & ~kelFBankOwnFFT;
    return weights == kelFBankWeightMel || weights == kelFBankWeightBin;
}

// The comparisons are written so that NaN fails them.
template <class Bank>
KelStatus initMel(Bank** ppFBank, int* pFFTOrder, int fftLen, Kel32f sampFreq, Kel32f lowFreq, Kel32f highFreq,
                  int nFilter, Kel32f melMul, Kel32f melDiv, int flag) {
    if (fftLen < 1 || nFilter < 1) return kelStatusSize;
    if (!(sampFreq > 0)) return kelStatusSize;
    if (!(lowFreq > 0)) return kelStatusSize;
    if (!(lowFreq <= highFreq)) return kelStatusFBankFreq;
    if (!(highFreq <= sampFreq / 2)) return kelStatusFBankFreq;
    if (!validFlag(flag)) return kelStatusFBankFlag;

    const KelStatus status = allocateBank(ppFBank, pFFTOrder, fftLen, nFilter, flag);
    if (status != kelStatusOk) return status;
    Bank& bank = **ppFBank;
    bank.melMul = melMul;
    bank.melDiv = melDiv;
    const NearestScope nearest;
    const Kel32f binScale = static_cast<Kel32f>(bank.fftLen2) / sampFreq;
    layTriangles(bank, Corners::mel({melMul, melDiv}, binScale, lowFreq, highFreq, nFilter), sampFreq);
    return kelStatusOk;
}

template <class Bank>
KelStatus initMelLin(Bank** ppFBank, int* pFFTOrder, int fftLen, Kel32f sampFreq, Kel32f lowFreq, Kel32f highFreq,
                     int nFilter, Kel32f highLinFreq, int nLinFilter, Kel32f melMul, Kel32f melDiv, int flag) {
    if (fftLen < 1 || nFilter < 1) return kelStatusSize;
    if (!(sampFreq > 0) || !(lowFreq > 0) || nLinFilter < 1 || nLinFilter > nFilter) return kelStatusSize;
    if (!(lowFreq <= highLinFreq)) return kelStatusFBankFreq;
    if (!(highLinFreq <= highFreq)) return kelStatusFBankFreq;
    if (!(highFreq <= sampFreq / 2)) return kelStatusFBankFreq;
    if (!validFlag(flag)) return kelStatusFBankFlag;

    const KelStatus status = allocateBank(ppFBank, pFFTOrder, fftLen, nFilter, flag);
    if (status != kelStatusOk) return status;
    Bank& bank = **ppFBank;
    bank.nLinFilter = nLinFilter;
    bank.melMul = melMul;
    bank.melDiv = melDiv;
    const NearestScope nearest;
    const Kel32f binScale = static_cast<Kel32f>(bank.fftLen2) / sampFreq;
    layTriangles(
        bank, Corners::linearThenMel({melMul, melDiv}, binScale, lowFreq, highLinFreq, highFreq, nFilter, nLinFilter),
        sampFreq);
    return kelStatusOk;
}

template <class Bank>
KelStatus initEmpty(Bank** ppFBank, int* pFFTOrder, int fftLen, int nFilter, int flag) {
    if (fftLen < 1 || nFilter < 1) return kelStatusSize;
    return allocateBank(ppFBank, pFFTOrder, fftLen, nFilter, kelFBankWeightMel | (flag & kelFBankOwnFFT));
}

template <class Bank>
void freeParts(Bank& bank) {
    kelsFree(bank.centres);
    Free2(bank.rising);
    Free2(bank.falling);
    kelsFree(bank.fftBuf);
    freeSpec(bank.fftSpec);
    bank.centres = nullptr;
    bank.rising = nullptr;
    bank.falling = nullptr;
    bank.ready = 0;
    bank.fftSpec = nullptr;
    bank.fftBuf = nullptr;
}

}  // namespace

KelStatus allocateBank(KelFilterBank_32f** ppFBank, int* pFFTOrder, int fftLen, int nFilter, int flag) {
    return allocateParts(ppFBank, pFFTOrder, fftLen, nFilter, flag);
}
KelStatus allocateBank(KelFilterBank_16s** ppFBank, int* pFFTOrder, int fftLen, int nFilter, int flag) {
    const KelStatus status = allocateParts(ppFBank, pFFTOrder, fftLen, nFilter, flag);
    if (*ppFBank != nullptr) (*ppFBank)->weightShift = KelFilterBank_16s::Weights::kFractionBits;
    return status;
}

}  // namespace kels

using namespace kels;

KelStatus kelsMelFBankInitAlloc_32f(KelFilterBank_32f** ppFBank, int* pFFTOrder, int fftLen, Kel32f sampFreq,
                                    Kel32f lowFreq, Kel32f highFreq, int nFilter, Kel32f melMul, Kel32f melDiv,
                                    int flag) {
    return initMel(ppFBank, pFFTOrder, fftLen, sampFreq, lowFreq, highFreq, nFilter, melMul, melDiv, flag);
}
KelStatus kelsMelFBankInitAlloc_16s(KelFilterBank_16s** ppFBank, int* pFFTOrder, int fftLen, Kel32f sampFreq,
                                    Kel32f lowFreq, Kel32f highFreq, int nFilter, Kel32f melMul, Kel32f melDiv,
                                    int flag) {
    return initMel(ppFBank, pFFTOrder, fftLen, sampFreq, lowFreq, highFreq, nFilter, melMul, melDiv, flag);
}

KelStatus kelsMelLinFBankInitAlloc_32f(KelFilterBank_32f** ppFBank, int* pFFTOrder, int fftLen, Kel32f sampFreq,
                                       Kel32f lowFreq, Kel32f highFreq, int nFilter, Kel32f highLinFreq, int nLinFilter,
                                       Kel32f melMul, Kel32f melDiv, int flag) {
    return initMelLin(ppFBank, pFFTOrder, fftLen, sampFreq, lowFreq, highFreq, nFilter, highLinFreq, nLinFilter, melMul,
                      melDiv, flag);
}
KelStatus kelsMelLinFBankInitAlloc_16s(KelFilterBank_16s** ppFBank, int* pFFTOrder, int fftLen, Kel32f sampFreq,
                                       Kel32f lowFreq, Kel32f highFreq, int nFilter, Kel32f highLinFreq, int nLinFilter,
                                       Kel32f melMul, Kel32f melDiv, int flag) {
    return initMelLin(ppFBank, pFFTOrder, fftLen, sampFreq, lowFreq, highFreq, nFilter, highLinFreq, nLinFilter, melMul,
                      melDiv, flag);
}

KelStatus kelsEmptyFBankInitAlloc_32f(KelFilterBank_32f** ppFBank, int* pFFTOrder, int fftLen, int nFilter, int flag) {
    return initEmpty(ppFBank, pFFTOrder, fftLen, nFilter, flag);
}
KelStatus kelsEmptyFBankInitAlloc_16s(KelFilterBank_16s** ppFBank, int* pFFTOrder, int fftLen, int nFilter, int flag) {
    return initEmpty(ppFBank, pFFTOrder, fftLen, nFilter, flag);
}

KelStatus kelsFBankFree_32f(KelFilterBank_32f* pFBank) {
    if (anyNull(pFBank)) return kelStatusNullPtr;
    freeParts(*pFBank);
    return kelStatusOk;
}
KelStatus kelsFBankFree_16s(KelFilterBank_16s* pFBank) {
    if (anyNull(pFBank)) return kelStatusNullPtr;
    freeParts(*pFBank);
    return kelStatusOk;
}
