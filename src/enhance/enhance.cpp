// Entry points of the noise estimate and of the suppression gains.
#include "kels/enhance.h"

#include "core/check.h"
#include "enhance/gains.h"
#include "enhance/mcra.h"

using namespace kels;
using namespace kels::enhance;

namespace {

constexpr bool validLength(int fftLen) {
    return fftLen >= 8 && fftLen <= 8192;
}
constexpr bool validRate(int sampleRate) {
    return sampleRate >= 8000 && sampleRate <= 48000;
}

KelStatus sizeFault(int fftLen, const int* pSize) {
    if (anyNull(pSize)) return kelStatusNullPtr;
    return validLength(fftLen) ? kelStatusOk : kelStatusSize;
}

template <class State>
KelStatus initFault(int sampleRate, int fftLen, const State* pState) {
    if (anyNull(pState)) return kelStatusNullPtr;
    if (!validRate(sampleRate)) return kelStatusOutOfRange;
    return validLength(fftLen) ? kelStatusOk : kelStatusSize;
}

template <class State>
KelStatus altInitFault(int sampleRate, int fftLen, int hop, const State* pState) {
    if (anyNull(pState)) return kelStatusNullPtr;
    if (!validRate(sampleRate) || hop < 1 || hop > fftLen / 2) return kelStatusOutOfRange;
    return validLength(fftLen) ? kelStatusOk : kelStatusSize;
}

template <class... T>
KelStatus gainsFault(int len, const T*... pointers) {
    if (anyNull(pointers...)) return kelStatusNullPtr;
    return len < 1 || len > 65535 ? kelStatusLengthRange : kelStatusOk;
}

template <class T>
KelStatus ephraimMalahFault(int len, const T* pSrcPriorSnr, const T* pSrcPostSnr, const T* pDstGain) {
    if (const KelStatus fault = gainsFault(len, pSrcPriorSnr, pSrcPostSnr, pDstGain)) return fault;
    const bool negative = anyNegative(pSrcPriorSnr, toSize(len)) || anyNegative(pSrcPostSnr, toSize(len));
    return negative ? kelStatusOutOfRange : kelStatusOk;
}

}  // namespace

KelStatus kelsGetSizeMCRA_32f(int fftLen, int* pSize) {
    if (const KelStatus fault = sizeFault(fftLen, pSize)) return fault;
    *pSize = mcraSize(fftLen);
    return kelStatusOk;
}

KelStatus kelsGetSizeMCRA_32s(int fftLen, int* pSize) {
    if (const KelStatus fault = sizeFault(fftLen, pSize)) return fault;
    *pSize = mcraSize(fftLen);
    return kelStatusOk;
}

KelStatus kelsInitMCRA_32f(int sampleRate, int fftLen, KelMCRAState_32f* pState) {
    if (const KelStatus fault = initFault(sampleRate, fftLen, pState)) return fault;
    initMcra(*pState, sampleRate, fftLen);
    return kelStatusOk;
}

KelStatus kelsInitMCRA_32s(int sampleRate, int fftLen, KelMCRAState_32s* pState) {
    if (const KelStatus fault = initFault(sampleRate, fftLen, pState)) return fault;
    initMcra(*pState, sampleRate, fftLen);
    return kelStatusOk;
}

KelStatus kelsAltInitMCRA_32f(int sampleRate, int fftLen, int hop, KelMCRAState_32f* pState) {
    if (const KelStatus fault = altInitFault(sampleRate, fftLen, hop, pState)) return fault;
    initMcra(*pState, sampleRate, fftLen, hop);
    return kelStatusOk;
}

KelStatus kelsAltInitMCRA_32s(int sampleRate, int fftLen, int hop, KelMCRAState_32s* pState) {
    if (const KelStatus fault = altInitFault(sampleRate, fftLen, hop, pState)) return fault;
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
    if (const KelStatus fault = gainsFault(len, pSrcSnr, pDstGain)) return fault;
    const bool negative = anyNegative(pSrcSnr, toSize(len));
    wienerGains(pSrcSnr, pDstGain, toSize(len));
    return negative ? kelStatusBadArg : kelStatusOk;
}

KelStatus kelsFilterUpdateWiener_32s(const Kel32s* pSrcSnr, Kel32s* pDstGain, int len) {
    if (const KelStatus fault = gainsFault(len, pSrcSnr, pDstGain)) return fault;
    const bool negative = anyNegative(pSrcSnr, toSize(len));
    wienerGains(pSrcSnr, pDstGain, toSize(len));
    return negative ? kelStatusBadArg : kelStatusOk;
}

KelStatus kelsFilterUpdateEMNS_32f(const Kel32f* pSrcPriorSnr, const Kel32f* pSrcPostSnr, Kel32f* pDstGain, int len) {
    if (const KelStatus fault = ephraimMalahFault(len, pSrcPriorSnr, pSrcPostSnr, pDstGain)) return fault;
    ephraimMalahGains(pSrcPriorSnr, pSrcPostSnr, pDstGain, toSize(len));
    return kelStatusOk;
}

KelStatus kelsFilterUpdateEMNS_32s(const Kel32s* pSrcPriorSnr, const Kel32s* pSrcPostSnr, Kel32s* pDstGain, int len) {
    if (const KelStatus fault = ephraimMalahFault(len, pSrcPriorSnr, pSrcPostSnr, pDstGain)) return fault;
    ephraimMalahGains(pSrcPriorSnr, pSrcPostSnr, pDstGain, toSize(len));
    return kelStatusOk;
}
