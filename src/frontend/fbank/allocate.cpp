// Memory of the allocated filter banks.
#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

#include "core/fft/spec.h"
#include "core/memory.h"
#include "core/row_table.h"
#include "frontend/fbank/state.h"

namespace kels::fbank {
namespace {

constexpr int kLongestFFT = 1 << 30;

// Cleared rows, padding included.
template <class Weight>
Weight** allocateWeights(int rows, int cols) {
    Weight** const table = allocateRows<Weight>(rows, cols);
    if (table == nullptr) return nullptr;
    const auto rowBytes = roundUp<std::size_t>(toSize(cols), 8) * sizeof(Weight);
    std::memset(table[0], 0, toSize(rows) * rowBytes);
    return table;
}

// The centres and the two tables of weights.
template <class Bank>
bool allocateTriangles(Bank& bank) {
    using Weight = typename Bank::Weight;
    const int rows = bank.nFilter + 2;
    if ((bank.centres = allocateCleared<Kel32s>(rows)) == nullptr) return false;
    // A rising row holds up to fftLen2 / 2 + 1 weights.  The padding has the place: the row length with the headroom is
    // never a multiple of 8.
    if ((bank.rising = allocateWeights<Weight>(rows, bank.fftLen2 / 2 + kHeadroom)) == nullptr) return false;
    for (int m = 0; m < rows; ++m) bank.rising[m] += kHeadroom;
    return (bank.falling = allocateWeights<Weight>(rows, bank.fftLen2 / 2)) != nullptr;
}

// The bank's own transform and the buffer that it runs in.
template <class Bank>
bool allocateTransform(Bank& bank) {
    if (buildSpec(&bank.fftSpec, bank.fftOrder, kelFftNoDiv, kelHintAccurate) != kelStatusOk) return false;
    const int64_t workBytes = int64_t{bank.fftSpec->bufferSize} + 15;  // of any alignment
    const int64_t bufLen = int64_t{bank.fftLen2} + 2 + (workBytes + 3) / 4;
    return (bank.fftBuf = allocateCleared<typename Bank::Weight>(bufLen)) != nullptr;
}

template <class Bank>
KelStatus allocateParts(Bank** ppFBank, int* pFFTOrder, int fftLen, int nFilter, int flag) {
    *ppFBank = nullptr;
    if (fftLen > kLongestFFT || nFilter > std::numeric_limits<int>::max() - 2) return kelStatusNoMemory;
    const auto fftLen2 = std::bit_ceil(static_cast<unsigned>(std::max(fftLen, 2)));
    *pFFTOrder = std::countr_zero(fftLen2);

    Bank* const bank = *ppFBank = allocateCleared<Bank>(1);
    if (bank == nullptr) return kelStatusNoMemory;
    bank->flag = flag;
    bank->fftLen2 = static_cast<int>(fftLen2);
    bank->fftOrder = *pFFTOrder;
    bank->nFilter = nFilter;
    bank->nLinFilter = nFilter;
    bank->melDiv = 1;
    if (!allocateTriangles(*bank)) return kelStatusNoMemory;
    if ((flag & kelFBankOwnFFT) != 0 && !allocateTransform(*bank)) return kelStatusNoMemory;
    return kelStatusOk;
}

template <class Bank>
void release(Bank& bank) {
    kelsFree(bank.centres);
    kelsFree(bank.rising);
    kelsFree(bank.falling);
    kelsFree(bank.fftBuf);
    releaseSpec(bank.fftSpec);
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

void releaseParts(KelFilterBank_32f& bank) {
    release(bank);
}
void releaseParts(KelFilterBank_16s& bank) {
    release(bank);
}

}  // namespace kels::fbank
