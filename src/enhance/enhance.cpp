#include "kels/enhance.h"
#include "core/check.h"
#include "enhance/gains.h"
#include "enhance/mcra.h"

using namespace kels;

namespace {

// What a gain function takes at a time.
constexpr bool validCount(int len) {
    return len >= 1 && len <= 65535;
}

}  // namespace

KelStatus kelsGetSizeMCRA_32f(int fftLen, int* pSize) {
    if (anyNull(pSize)) return kelStatusNullPtr;
    if (!validLength(fftLen)) return kelStatusSize;
    *pSize = mcraSize(fftLen);
    return kelStatusOk;
}

KelStatus kelsGetSizeMCRA_32s(int fftLen, int* pSize) {
    return kelsGetSizeMCRA_32f(fftLen, pSize);
}

KelStatus kelsInitMCRA_32f(int sampleRate, int fftLen, KelMCRAState_32f* pState) {
    if (anyNull(pState)) return kelStatusNullPtr;
    if (!validRate(sampleRate)) return kelStatusOutOfRange;
    if (!validLength(fftLen)) return kelStatusSize;
    initMcra(*pState, sampleRate, fftLen);
    return kelStatusOk;
}

KelStatus kelsInitMCRA_32s(int sampleRate, int fftLen, KelMCRAState_32s* pState) {
    if (anyNull(pState)) return kelStatusNullPtr;
    if (!validRate(sampleRate)) return kelStatusOutOfRange;
    if (!validLength(fftLen)) return kelStatusSize;
    initMcra(*pState, sampleRate, fftLen);
    return kelStatusOk;
}

KelStatus kelsAltInitMCRA_32f(int sampleRate, int fftLen, int hop, KelMCRAState_32f* pState) {
    if (anyNull(pState)) return kelStatusNullPtr;
    if (!validRate(sampleRate) || hop < 1 || hop > fftLen / 2) return kelStatusOutOfRange;
    if (!validLength(fftLen)) return kelStatusSize;
    initMcra(*pState, sampleRate, fftLen, hop);
    return kelStatusOk;
}

KelStatus kelsAltInitMCRA_32s(int sampleRate, int fftLen, int hop, KelMCRAState_32s* pState) {
    if (anyNull(pState)) return kelStatusNullPtr;
    if (!validRate(sampleRate) || hop < 1 || hop > fftLen / 2) return kelStatusOutOfRange;
    if (!validLength(fftLen)) return kelStatusSize;
    initMcra(*pState, sampleRate, fftLen, hop);
    return kelStatusOk;
}

KelStatus kelsUpdateNoisePSDMCRA_32f_I(const Kel32f* pSrcPower, KelMCRAState_32f* pState, Kel32f* pNoise) {
    if (anyNull(pSrcPower, pState, pNoise)) return kelStatusNullPtr;
    updateNoise(pSrcPower, *pState, pNoise);
    return kelStatusOk;
}

KelStatus kelsUpdateNoisePSDMCRA_32s_I(const Kel32s* pSrcPower, KelMCRAState_32s* pState, Kel32s* pNoise) {
    if (anyNull(pSrcPower, pState, pNoise)) return kelStatusNullPtr;
    updateNoise(pSrcPower, *pState, pNoise);
    return kelStatusOk;
}

KelStatus kelsFilterUpdateWiener_32f(const Kel32f* pSrcSnr, Kel32f* pDstGain, int len) {
    if (anyNull(pSrcSnr, pDstGain)) return kelStatusNullPtr;
    if (!validCount(len)) return kelStatusLengthRange;
    const bool negative = anyNegative(pSrcSnr, toSize(len));
    wienerGains(pSrcSnr, pDstGain, toSize(len));
    return negative ? kelStatusBadArg : kelStatusOk;
}

KelStatus kelsFilterUpdateWiener_32s(const Kel32s* pSrcSnr, Kel32s* pDstGain, int len) {
    if (anyNull(pSrcSnr, pDstGain)) return kelStatusNullPtr;
    if (!validCount(len)) return kelStatusLengthRange;
    const bool negative = anyNegative(pSrcSnr, toSize(len));
    wienerGains(pSrcSnr, pDstGain, toSize(len));
    return negative ? kelStatusBadArg : kelStatusOk;
}

KelStatus kelsFilterUpdateEMNS_32f(const Kel32f* pSrcPriorSnr, const Kel32f* pSrcPostSnr, Kel32f* pDstGain, int len) {
    if (anyNull(pSrcPriorSnr, pSrcPostSnr, pDstGain)) return kelStatusNullPtr;
    if (!validCount(len)) return kelStatusLengthRange;
    if (anyNegative(pSrcPriorSnr, toSize(len)) || anyNegative(pSrcPostSnr, toSize(len))) return kelStatusOutOfRange;
    ephraimMalahGains(pSrcPriorSnr, pSrcPostSnr, pDstGain, toSize(len));
    return kelStatusOk;
}

KelStatus kelsFilterUpdateEMNS_32s(const Kel32s* pSrcPriorSnr, const Kel32s* pSrcPostSnr, Kel32s* pDstGain, int len) {
    if (anyNull(pSrcPriorSnr, pSrcPostSnr, pDstGain)) return kelStatusNullPtr;
    if (!validCount(len)) return kelStatusLengthRange;
    if (anyNegative(pSrcPriorSnr, toSize(len)) || anyNegative(pSrcPostSnr, toSize(len))) return kelStatusOutOfRange;
    ephraimMalahGains(pSrcPriorSnr, pSrcPostSnr, pDstGain, toSize(len));
    return kelStatusOk;
}
