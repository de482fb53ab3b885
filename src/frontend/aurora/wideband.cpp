// The extension to 16 kHz: two half bands, and the bands of the upper one.
#include "core/check.h"
#include "frontend/aurora/half_bands.h"
#include "frontend/aurora/high_bands.h"
#include "frontend/caller_state.h"
#include "kels/aurora.h"

using namespace kels;

static_assert(sizeof(KelLowHighState_Aurora) == 472);
static_assert(sizeof(KelHighBandState_Aurora) == 32);

// ---- half bands ----------------------------------------------------------------------------------------------------

KelStatus kelsLowHighFilterGetBufSize_Aurora_32f(int* pSize) {
    if (anyNull(pSize)) return kelStatusNullPtr;
    *pSize = sizeof(KelLowHighState_Aurora);
    return kelStatusOk;
}

KelStatus kelsLowHighFilterInit_Aurora_32f(Kel8u* pState) {
    if (anyNull(pState)) return kelStatusNullPtr;
    writeState(KelLowHighState_Aurora{}, pState);
    return kelStatusOk;
}

KelStatus kelsLowHighFilter_Aurora_32f(const Kel32f* pSrc, Kel32f* pDstLow, Kel32f* pDstHigh, int len, Kel8u* pState) {
    if (anyNull(pSrc, pDstLow, pDstHigh, pState)) return kelStatusNullPtr;
    if (len < 1 || len % 2 != 0) return kelStatusSize;
    CallerState<KelLowHighState_Aurora> state(pState);
    aurora::splitBands(*state, pSrc, pDstLow, pDstHigh, toSize(len) / 2);
    return kelStatusOk;
}
KelStatus kelsLowHighFilter_Aurora_16s32f(const Kel16s* pSrc, Kel32f* pDstLow, Kel32f* pDstHigh, int len,
                                          Kel8u* pState) {
    if (anyNull(pSrc, pDstLow, pDstHigh, pState)) return kelStatusNullPtr;
    if (len < 1 || len % 2 != 0) return kelStatusSize;
    CallerState<KelLowHighState_Aurora> state(pState);
    aurora::splitBands(*state, pSrc, pDstLow, pDstHigh, toSize(len) / 2);
    return kelStatusOk;
}

// ---- high bands ----------------------------------------------------------------------------------------------------

KelStatus kelsHighBandCodingRef_Aurora_32f(const Kel32f* pSrc, Kel32f* pDst) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    aurora::referenceLogs(pSrc, aurora::kCodingBins, 1, pDst);
    return kelStatusOk;
}
KelStatus kelsHighBandDecodingRef_Aurora_32f(const Kel32f* pSrc, Kel32f* pDst) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    aurora::referenceLogs(pSrc, aurora::kDecodingBins, 0.5, pDst);
    return kelStatusOk;
}

KelStatus kelsHighBandCoding_Aurora_32f(const Kel32f* pRef, const Kel32f* pSrc, Kel32f* pDst) {
    if (anyNull(pRef, pSrc, pDst)) return kelStatusNullPtr;
    aurora::codeBands(pRef, pSrc, pDst);
    return kelStatusOk;
}
KelStatus kelsHighBandDecoding_Aurora_32f(const Kel32f* pRef, const Kel32f* pSrc, Kel32f* pDst) {
    if (anyNull(pRef, pSrc, pDst)) return kelStatusNullPtr;
    aurora::decodeBands(pRef, pSrc, pDst);
    return kelStatusOk;
}

KelStatus kelsHighBandGetBufSize_Aurora_32f(int* pSize) {
    if (anyNull(pSize)) return kelStatusNullPtr;
    *pSize = sizeof(KelHighBandState_Aurora);
    return kelStatusOk;
}

KelStatus kelsHighBandInit_Aurora_32f(Kel8u* pState) {
    if (anyNull(pState)) return kelStatusNullPtr;
    writeState(KelHighBandState_Aurora{}, pState);
    return kelStatusOk;
}

KelStatus kelsHighBandSpectralSubtraction_Aurora_32f(const Kel32f* pSrc, Kel32f* pDst, Kel8u* pState) {
    if (anyNull(pSrc, pDst, pState)) return kelStatusNullPtr;
    CallerState<KelHighBandState_Aurora> state(pState);
    aurora::subtractNoise(*state, pSrc, pDst);
    return kelStatusOk;
}

KelStatus kelsHighBandMerge_Aurora_32f(const Kel32f* pCoded, const Kel32f* pHigh, Kel32f* pLog, Kel32f* pEnergy) {
    if (anyNull(pCoded, pHigh, pLog, pEnergy)) return kelStatusNullPtr;
    *pEnergy = aurora::mergeBands(pCoded, pHigh, pLog);
    return kelStatusOk;
}
