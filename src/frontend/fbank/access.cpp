// Centres and weights of a bank, read and set.
#include <algorithm>

#include "core/check.h"
#include "frontend/fbank/state.h"

using namespace kels;
using namespace kels::fbank;

namespace {

// ---- checks --------------------------------------------------------------------------------------------------------

template <class Bank>
KelStatus bankFault(const Bank* bank, const void* array) {
    if (anyNull(bank, array) || incomplete(*bank)) return kelStatusNullPtr;
    return kelStatusOk;
}

// Of weights: filters are counted from 1, and `spare` more than the bank has can be asked for.
template <class Bank>
KelStatus coeffsFault(const Bank* bank, int fIdx, int spare, const void* array) {
    if (const KelStatus fault = bankFault(bank, array)) return fault;
    if (!bank->ready) return kelStatusFBankState;
    if (fIdx < 1 || fIdx > bank->nFilter + spare) return kelStatusSize;
    return kelStatusOk;
}

bool validCentres(const Kel32s* centres, int nFilter, int fftLen2) {
    return centres[0] >= 0 && std::is_sorted(centres, centres + nFilter + 2) && centres[nFilter + 1] <= fftLen2 / 2;
}

template <class Bank>
KelStatus centresFault(const Bank& bank, const Kel32s* centres) {
    return validCentres(centres, bank.nFilter, bank.fftLen2) ? kelStatusOk : kelStatusFBankState;
}

constexpr int kSpareFilters = 1;  // for reading alone

// ---- kernels -------------------------------------------------------------------------------------------------------

template <class Bank>
void getCentres(const Bank& bank, int* pCenters) {
    std::copy_n(bank.centres, bank.nFilter + 2, pCenters);
}

template <class Bank>
void setCentres(Bank& bank, const int* pCenters) {
    std::copy_n(pCenters, bank.nFilter + 2, bank.centres);
    bank.ready = 1;
}

// The spare filter nFilter + 1 has a rising side only: no centre follows its top.
template <class Bank>
void getCoeffs(const Bank& bank, int fIdx, Kel32f* pCoeffs) {
    const NearestScope nearest;
    const Kel32s* const c = bank.centres + fIdx - 1;
    const auto toFloat = Bank::Weights::toFloat;
    const auto* const rising = bank.rising[fIdx - 1];
    const auto* const falling = bank.falling[fIdx - 1];
    Kel32f* const next = std::transform(rising, rising + (c[1] - c[0] + 1), pCoeffs, toFloat);
    if (fIdx <= bank.nFilter) std::transform(falling, falling + (c[2] - c[1]), next, toFloat);
}

template <class Bank>
void setCoeffs(Bank& bank, int fIdx, const Kel32f* pCoeffs) {
    const NearestScope nearest;
    const Kel32s* const c = bank.centres + fIdx - 1;
    const auto ofFloat = Bank::Weights::ofFloat;
    const Kel32f* const falling = pCoeffs + (c[1] - c[0] + 1);
    std::transform(pCoeffs, falling, bank.rising[fIdx - 1], ofFloat);
    std::transform(falling, falling + (c[2] - c[1]), bank.falling[fIdx - 1], ofFloat);
}

}  // namespace

KelStatus kelsFBankGetCenters_32f(const KelFilterBank_32f* pFBank, int* pCenters) {
    if (const KelStatus fault = bankFault(pFBank, pCenters)) return fault;
    if (!pFBank->ready) return kelStatusFBankState;
    if (const KelStatus fault = centresFault(*pFBank, pFBank->centres)) return fault;
    getCentres(*pFBank, pCenters);
    return kelStatusOk;
}
KelStatus kelsFBankGetCenters_16s(const KelFilterBank_16s* pFBank, int* pCenters) {
    if (const KelStatus fault = bankFault(pFBank, pCenters)) return fault;
    if (!pFBank->ready) return kelStatusFBankState;
    if (const KelStatus fault = centresFault(*pFBank, pFBank->centres)) return fault;
    getCentres(*pFBank, pCenters);
    return kelStatusOk;
}

KelStatus kelsFBankSetCenters_32f(KelFilterBank_32f* pFBank, const int* pCenters) {
    if (const KelStatus fault = bankFault(pFBank, pCenters)) return fault;
    if (const KelStatus fault = centresFault(*pFBank, pCenters)) return fault;
    setCentres(*pFBank, pCenters);
    return kelStatusOk;
}
KelStatus kelsFBankSetCenters_16s(KelFilterBank_16s* pFBank, const int* pCenters) {
    if (const KelStatus fault = bankFault(pFBank, pCenters)) return fault;
    if (const KelStatus fault = centresFault(*pFBank, pCenters)) return fault;
    setCentres(*pFBank, pCenters);
    return kelStatusOk;
}

KelStatus kelsFBankGetCoeffs_32f(const KelFilterBank_32f* pFBank, int fIdx, Kel32f* pCoeffs) {
    if (const KelStatus fault = coeffsFault(pFBank, fIdx, kSpareFilters, pCoeffs)) return fault;
    getCoeffs(*pFBank, fIdx, pCoeffs);
    return kelStatusOk;
}
KelStatus kelsFBankGetCoeffs_16s(const KelFilterBank_16s* pFBank, int fIdx, Kel32f* pCoeffs) {
    if (const KelStatus fault = coeffsFault(pFBank, fIdx, kSpareFilters, pCoeffs)) return fault;
    getCoeffs(*pFBank, fIdx, pCoeffs);
    return kelStatusOk;
}

KelStatus kelsFBankSetCoeffs_32f(KelFilterBank_32f* pFBank, int fIdx, const Kel32f* pCoeffs) {
    if (const KelStatus fault = coeffsFault(pFBank, fIdx, 0, pCoeffs)) return fault;
    setCoeffs(*pFBank, fIdx, pCoeffs);
    return kelStatusOk;
}
KelStatus kelsFBankSetCoeffs_16s(KelFilterBank_16s* pFBank, int fIdx, const Kel32f* pCoeffs) {
    if (const KelStatus fault = coeffsFault(pFBank, fIdx, 0, pCoeffs)) return fault;
    setCoeffs(*pFBank, fIdx, pCoeffs);
    return kelStatusOk;
}
