// Voice activity detection.
#include "kels/vad.h"

#include <cstring>

#include "core/check.h"
#include "frontend/vad_kernel.h"

using namespace kels;

static_assert(sizeof(KelVADState_Aurora) == 64);

namespace {

// The caller's bytes, of any alignment, as a state for the length of a call.
class VadState {
  public:
    explicit VadState(Kel8u* bytes) : bytes_(bytes) { std::memcpy(&state_, bytes, sizeof(state_)); }
    ~VadState() { std::memcpy(bytes_, &state_, sizeof(state_)); }
    VadState(const VadState&) = delete;
    VadState& operator=(const VadState&) = delete;

    KelVADState_Aurora& operator*() { return state_; }

  private:
    Kel8u* bytes_;
    KelVADState_Aurora state_;
};

KelStatus bufferSize(int* pSize) {
    if (anyNull(pSize)) return kelStatusNullPtr;
    *pSize = sizeof(KelVADState_Aurora);
    return kelStatusOk;
}

KelStatus initialise(Kel8u* pState) {
    if (anyNull(pState)) return kelStatusNullPtr;
    const KelVADState_Aurora state = initialVadState();
    std::memcpy(pState, &state, sizeof(state));
    return kelStatusOk;
}

template <class T>
KelStatus decide(const T* pMel, const T* pSpec, int extCount, int* pRes, Kel8u* pState) {
    if (anyNull(pMel, pSpec, pRes, pState)) return kelStatusNullPtr;
    VadState state(pState);
    *pRes = decideVad(*state, pMel, pSpec, extCount);
    return kelStatusOk;
}

KelStatus flush(int* pRes, Kel8u* pState) {
    if (anyNull(pRes, pState)) return kelStatusNullPtr;
    VadState state(pState);
    *pRes = flushVad(*state);
    return kelStatusOk;
}

}  // namespace

KelStatus kelsVADGetBufSize_Aurora_32f(int* pSize) {
    return bufferSize(pSize);
}
KelStatus kelsVADGetBufSize_Aurora_16s(int* pSize) {
    return bufferSize(pSize);
}

KelStatus kelsVADInit_Aurora_32f(Kel8u* pState) {
    return initialise(pState);
}
KelStatus kelsVADInit_Aurora_16s(Kel8u* pState) {
    return initialise(pState);
}

KelStatus kelsVADDecision_Aurora_32f(const Kel32f* pMel, const Kel32f* pSpec, int extCount, int* pRes, Kel8u* pState) {
    return decide(pMel, pSpec, extCount, pRes, pState);
}
KelStatus kelsVADDecision_Aurora_16s(const Kel16s* pMel, const Kel16s* pSpec, int extCount, int* pRes, Kel8u* pState) {
    return decide(pMel, pSpec, extCount, pRes, pState);
}

KelStatus kelsVADFlush_Aurora_32f(int* pRes, Kel8u* pState) {
    return flush(pRes, pState);
}
KelStatus kelsVADFlush_Aurora_16s(int* pRes, Kel8u* pState) {
    return flush(pRes, pState);
}
