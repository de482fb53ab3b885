// Spectra, the noise in them, and the gains that take it off.
#include "core/check.h"
#include "frontend/aurora/activity.h"
#include "frontend/aurora/spectrum.h"
#include "frontend/aurora/wiener.h"
#include "frontend/caller_state.h"
#include "kels/aurora.h"
#include "kels/vad.h"

using namespace kels;

static_assert(sizeof(KelVADNestState_Aurora) == 20);
static_assert(sizeof(KelGainFactState_Aurora) == 24);

namespace {

constexpr KelGainFactState_Aurora kFirstFactor = {{0, 0, 0}, 0, 0.8f, 0};

}  // namespace

// ---- spectrum ------------------------------------------------------------------------------------------------------

KelStatus kelsPowerSpectrum_Aurora_32f(const Kel32f* pSrc, Kel32f* pDst, int len) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    aurora::powerSpectrum(pSrc, pDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsSmoothedPowerSpectrumAurora_32f(const Kel32f* pSrc, Kel32f* pSpec, Kel32f* pDst, int len) {
    if (anyNull(pSrc, pSpec, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    aurora::smoothedPowerSpectrum(pSrc, pSpec, pDst, toSize(len));
    return kelStatusOk;
}

// ---- energy detector -----------------------------------------------------------------------------------------------

KelStatus kelsVADNestGetBufSize_Aurora_32f(int* pSize) {
    if (anyNull(pSize)) return kelStatusNullPtr;
    *pSize = sizeof(KelVADNestState_Aurora);
    return kelStatusOk;
}
KelStatus kelsVADNestGetBufSize_Aurora_16s(int* pSize) {
    if (anyNull(pSize)) return kelStatusNullPtr;
    *pSize = sizeof(KelVADNestState_Aurora);
    return kelStatusOk;
}

KelStatus kelsVADNestInit_Aurora_32f(Kel8u* pState) {
    if (anyNull(pState)) return kelStatusNullPtr;
    writeState(KelVADNestState_Aurora{}, pState);
    return kelStatusOk;
}
KelStatus kelsVADNestInit_Aurora_16s(Kel8u* pState) {
    if (anyNull(pState)) return kelStatusNullPtr;
    writeState(KelVADNestState_Aurora{}, pState);
    return kelStatusOk;
}

KelStatus kelsVADNestDecision_Aurora_32f(const Kel32f* pSrc, int len, int* pRes, int* pCount, Kel8u* pState) {
    if (anyNull(pSrc, pRes, pCount, pState)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    CallerState<KelVADNestState_Aurora> state(pState);
    aurora::hearShift(*state, pSrc, toSize(len));
    *pRes = state->vadFlag != 0 ? kelVadSpeech : kelVadNoise;
    *pCount = state->speechCount;
    return kelStatusOk;
}
KelStatus kelsVADNestDecision_Aurora_16s(const Kel16s* pSrc, int len, int* pRes, int* pCount, Kel8u* pState) {
    if (anyNull(pSrc, pRes, pCount, pState)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    CallerState<KelVADNestState_Aurora> state(pState);
    aurora::hearShift(*state, pSrc, toSize(len));
    *pRes = state->vadFlag != 0 ? kelVadSpeech : kelVadNoise;
    *pCount = state->speechCount;
    return kelStatusOk;
}

// ---- noise and gains -----------------------------------------------------------------------------------------------

KelStatus kelsNoiseSpectrumUpdate_Aurora_32f(const Kel32f* pSrc, Kel32f* pNoise, int len, int frameNum, int vad) {
    if (anyNull(pSrc, pNoise)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    if (frameNum < 1) return kelStatusBadArg;
    if (vad != kelVadSpeech && vad != kelVadNoise && vad != kelVadPending) return kelStatusBadArg;
    if (vad == kelVadSpeech) return kelStatusOk;
    if (frameNum == 1) {
        aurora::firstNoise(pSrc, pNoise, toSize(len));
    } else if (vad == kelVadNoise) {
        aurora::averageNoise(pSrc, pNoise, toSize(len), frameNum);
    } else {
        aurora::trackNoise(pSrc, pNoise, toSize(len), frameNum);
    }
    return kelStatusOk;
}

KelStatus kelsWienerFilterDesign_Aurora_32f(const Kel32f* pSpec, const Kel32f* pMean, const Kel32f* pNoise,
                                            Kel32f* pDen, Kel32f* pDst, int len) {
    if (anyNull(pSpec, pMean, pNoise, pDen, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    aurora::designFilter(pSpec, pMean, pNoise, pDen, pDst, toSize(len));
    return kelStatusOk;
}

// ---- gain factorisation --------------------------------------------------------------------------------------------

KelStatus kelsGainFactorizationGetBufSize_Aurora_32f(int* pSize) {
    if (anyNull(pSize)) return kelStatusNullPtr;
    *pSize = sizeof(KelGainFactState_Aurora);
    return kelStatusOk;
}

KelStatus kelsGainFactorizationInit_Aurora_32f(Kel8u* pState) {
    if (anyNull(pState)) return kelStatusNullPtr;
    writeState(kFirstFactor, pState);
    return kelStatusOk;
}

KelStatus kelsGainFactorizationUpdate_Aurora_32f(const Kel32f* pDen, int len, Kel8u* pState) {
    if (anyNull(pDen, pState)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    CallerState<KelGainFactState_Aurora> state(pState);
    aurora::noteDenoised(*state, pDen, toSize(len));
    return kelStatusOk;
}

KelStatus kelsGainFactorization_Aurora_32f(const Kel32f* pNoise, int len, const Kel32f* pSrc, Kel32f* pDst, int nBand,
                                           Kel8u* pState) {
    if (anyNull(pNoise, pSrc, pDst, pState)) return kelStatusNullPtr;
    if (len < 1 || nBand < 1) return kelStatusSize;
    CallerState<KelGainFactState_Aurora> state(pState);
    const Kel32f alpha = aurora::factorOf(*state, aurora::sumOf(pNoise, toSize(len)));
    aurora::weakenGains(pSrc, pDst, toSize(nBand), alpha);
    return kelStatusOk;
}
