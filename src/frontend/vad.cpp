// Voice activity detection.  Both forms keep the same state: the 16-bit form reads its inputs as numbers.
#include "kels/vad.h"

#include "core/check.h"
#include "frontend/caller_state.h"
#include "frontend/vad_kernel.h"

using namespace kels;
using namespace kels::vad;

static_assert(sizeof(State) == 64);

KelStatus kelsVADGetBufSize_Aurora_32f(int* pSize) {
    if (anyNull(pSize)) return kelStatusNullPtr;
    *pSize = sizeof(State);
    return kelStatusOk;
}
KelStatus kelsVADGetBufSize_Aurora_16s(int* pSize) {
    if (anyNull(pSize)) return kelStatusNullPtr;
    *pSize = sizeof(State);
    return kelStatusOk;
}

KelStatus kelsVADInit_Aurora_32f(Kel8u* pState) {
    if (anyNull(pState)) return kelStatusNullPtr;
    writeState(initialState(), pState);
    return kelStatusOk;
}
KelStatus kelsVADInit_Aurora_16s(Kel8u* pState) {
    if (anyNull(pState)) return kelStatusNullPtr;
    writeState(initialState(), pState);
    return kelStatusOk;
}

KelStatus kelsVADDecision_Aurora_32f(const Kel32f* pMel, const Kel32f* pSpec, int extCount, int* pRes, Kel8u* pState) {
    if (anyNull(pMel, pSpec, pRes, pState)) return kelStatusNullPtr;
    CallerState<State> state(pState);
    *pRes = decide(*state, pMel, pSpec, extCount);
    return kelStatusOk;
}
KelStatus kelsVADDecision_Aurora_16s(const Kel16s* pMel, const Kel16s* pSpec, int extCount, int* pRes, Kel8u* pState) {
    if (anyNull(pMel, pSpec, pRes, pState)) return kelStatusNullPtr;
    CallerState<State> state(pState);
    *pRes = decide(*state, pMel, pSpec, extCount);
    return kelStatusOk;
}

KelStatus kelsVADFlush_Aurora_32f(int* pRes, Kel8u* pState) {
    if (anyNull(pRes, pState)) return kelStatusNullPtr;
    CallerState<State> state(pState);
    *pRes = flush(*state);
    return kelStatusOk;
}
KelStatus kelsVADFlush_Aurora_16s(int* pRes, Kel8u* pState) {
    if (anyNull(pRes, pState)) return kelStatusNullPtr;
    CallerState<State> state(pState);
    *pRes = flush(*state);
    return kelStatusOk;
}
