#include <algorithm>

#include "frontend/fbank/build.h"

namespace kels {
namespace {

bool validCentres(const Kel32s* centres, int nFilter, int fftLen2) {
    return centres[0] >= 0 && std::is_sorted(centres, centres + nFilter + 2) && centres[nFilter + 1] <= fftLen2 / 2;
}

template <class Bank>
KelStatus getCentres(const Bank& bank, int* pCenters) {
    if (!bank.ready) return kelStatusFBankState;
    if (!validCentres(bank.centres, bank.nFilter, bank.fftLen2)) return kelStatusFBankState;
    std::copy_n(bank.centres, bank.nFilter + 2, pCenters);
    return kelStatusOk;
}

template <class Bank>
KelStatus setCentres(Bank& bank, const int* pCenters) {
    if (!validCentres(pCenters, bank.nFilter, bank.fftLen2)) return kelStatusFBankState;
    std::copy_n(pCenters, bank.nFilter + 2, bank.centres);
    bank.ready = 1;
    return kelStatusOk;
}

// The spare filter nFilter + 1 has a rising side only: no centre follows its top.
template <class Bank>
KelStatus getCoeffs(const Bank& bank, int fIdx, Kel32f* pCoeffs) {
    if (!bank.ready) return kelStatusFBankState;
    if (fIdx < 1 || fIdx > bank.nFilter + 1) return kelStatusSize;
    const NearestScope nearest;
    const Kel32s* const c = bank.centres + fIdx - 1;
    const auto toFloat = Bank::Weights::toFloat;
    const auto* const rising = bank.rising[fIdx - 1];
    const auto* const falling = bank.falling[fIdx - 1];
    Kel32f* const next = std::transform(rising, rising + (c[1] - c[0] + 1), pCoeffs, toFloat);
    if (fIdx <= bank.nFilter) std::transform(falling, falling + (c[2] - c[1]), next, toFloat);
    return kelStatusOk;
}

template <class Bank>
KelStatus setCoeffs(Bank& bank, int fIdx, const Kel32f* pCoeffs) {
    if (!bank.ready) return kelStatusFBankState;
    if (fIdx < 1 || fIdx > bank.nFilter) return kelStatusSize;
    const NearestScope nearest;
    const Kel32s* const c = bank.centres + fIdx - 1;
    const int nRising = c[1] - c[0] + 1;
    const int nFalling = c[2] - c[1];
    std::transform(pCoeffs, pCoeffs + nRising, bank.rising[fIdx - 1], Bank::Weights::ofFloat);
    std::transform(pCoeffs + nRising, pCoeffs + nRising + nFalling, bank.falling[fIdx - 1], Bank::Weights::ofFloat);
    return kelStatusOk;
}

}  // namespace
}  // namespace kels

using namespace kels;

KelStatus kelsFBankGetCenters_32f(const KelFilterBank_32f* pFBank, int* pCenters) {
    if (anyNull(pFBank, pCenters) || incomplete(*pFBank)) return kelStatusNullPtr;
    return getCentres(*pFBank, pCenters);
}
KelStatus kelsFBankGetCenters_16s(const KelFilterBank_16s* pFBank, int* pCenters) {
    if (anyNull(pFBank, pCenters) || incomplete(*pFBank)) return kelStatusNullPtr;
    return getCentres(*pFBank, pCenters);
}

KelStatus kelsFBankSetCenters_32f(KelFilterBank_32f* pFBank, const int* pCenters) {
    if (anyNull(pFBank, pCenters) || incomplete(*pFBank)) return kelStatusNullPtr;
    return setCentres(*pFBank, pCenters);
}
KelStatus kelsFBankSetCenters_16s(KelFilterBank_16s* pFBank, const int* pCenters) {
    if (anyNull(pFBank, pCenters) || incomplete(*pFBank)) return kelStatusNullPtr;
    return setCentres(*pFBank, pCenters);
}

KelStatus kelsFBankGetCoeffs_32f(const KelFilterBank_32f* pFBank, int fIdx, Kel32f* pCoeffs) {
    if (anyNull(pFBank, pCoeffs) || incomplete(*pFBank)) return kelStatusNullPtr;
    return getCoeffs(*pFBank, fIdx, pCoeffs);
}
KelStatus kelsFBankGetCoeffs_16s(const KelFilterBank_16s* pFBank, int fIdx, Kel32f* pCoeffs) {
    if (anyNull(pFBank, pCoeffs) || incomplete(*pFBank)) return kelStatusNullPtr;
    return getCoeffs(*pFBank, fIdx, pCoeffs);
}

KelStatus kelsFBankSetCoeffs_32f(KelFilterBank_32f* pFBank, int fIdx, const Kel32f* pCoeffs) {
    if (anyNull(pFBank, pCoeffs) || incomplete(*pFBank)) return kelStatusNullPtr;
    return setCoeffs(*pFBank, fIdx, pCoeffs);
}
KelStatus kelsFBankSetCoeffs_16s(KelFilterBank_16s* pFBank, int fIdx, const Kel32f* pCoeffs) {
    if (anyNull(pFBank, pCoeffs) || incomplete(*pFBank)) return kelStatusNullPtr;
    return setCoeffs(*pFBank, fIdx, pCoeffs);
}

KelStatus kelsLinearToMel_32f(const Kel32f* pSrc, Kel32f* pDst, int len, Kel32f melMul, Kel32f melDiv) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    if (!(melMul > 0) || !(melDiv > 0)) return kelStatusSize;
    const Kel32f reciprocal = 1 / melDiv;
    for (int i = 0; i < len; ++i) pDst[i] = natLog(pSrc[i] * reciprocal + 1) * melMul;
    return kelStatusOk;
}

KelStatus kelsMelToLinear_32f(const Kel32f* pSrc, Kel32f* pDst, int len, Kel32f melMul, Kel32f melDiv) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    if (!(melMul > 0) || !(melDiv > 0)) return kelStatusSize;
    const Kel32f reciprocal = 1 / melMul;
    for (int i = 0; i < len; ++i) pDst[i] = (natExp(pSrc[i] * reciprocal) - 1) * melDiv;
    return kelStatusOk;
}
