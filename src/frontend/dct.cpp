// The cosine transform with its lifter: construction and release of the states, and their application.
#include "frontend/dct.h"

#include <cmath>
#include <limits>

#include "core/constants.h"
#include "core/layout.h"
#include "core/memory.h"
#include "core/row_table.h"

using namespace kels;
using namespace kels::dct;

namespace {

// ---- checks --------------------------------------------------------------------------------------------------------

bool badSizes(int lenDCT, int lenCeps) {
    return lenDCT < 1 || lenCeps < 1 || lenDCT < lenCeps;
}

KelStatus sineFault(int lenDCT, int lenCeps, int nLifter, const void* ppState) {
    if (anyNull(ppState)) return kelStatusNullPtr;
    if (badSizes(lenDCT, lenCeps) || nLifter < 1) return kelStatusSize;
    return kelStatusOk;
}

KelStatus suppliedFault(int lenDCT, int lenCeps, const void* pState, const void* pLifter) {
    if (anyNull(pState, pLifter)) return kelStatusNullPtr;
    if (badSizes(lenDCT, lenCeps)) return kelStatusSize;
    return kelStatusOk;
}

// ---- weights and table ---------------------------------------------------------------------------------------------

void sineLifter(Kel32f* lifter, int lenCeps, int nLifter, Kel32f val) {
    const Kel64f half = static_cast<Kel32f>(nLifter) / 2;
    for (int k = 0; k <= lenCeps; ++k) {
        lifter[k] = static_cast<Kel32f>((1 + half * std::sin(kPi * k / nLifter)) * static_cast<Kel64f>(val));
    }
}

// The weight of c0 is that of the last cepstrum: the caller's array has one weight for each of c1 .. cM and no more.
template <class T>
void suppliedLifter(Kel32f* lifter, int lenCeps, const T* pLifter, bool withC0) {
    lifter[0] = withC0 ? static_cast<Kel32f>(pLifter[lenCeps - 1]) : 0;
    for (int k = 1; k <= lenCeps; ++k) lifter[k] = static_cast<Kel32f>(pLifter[k - 1]);
}

template <class State>
void cosineTable(const State& state) {
    for (int k = 0; k <= state.lenCeps; ++k) {
        for (int j = 0; j < state.lenDCT; ++j) {
            const Kel64f place = static_cast<Kel32f>(j) + 0.5f;
            state.cosTab[k][j] = static_cast<Kel32f>(std::cos(place * k * kPi / state.lenDCT));
        }
    }
}

// ---- construction --------------------------------------------------------------------------------------------------

bool allocateWork(KelDCTLifterState_32f&, int) {
    return true;
}
bool allocateWork(KelDCTLifterState_16s& state, int count) {
    return (state.work = allocate<Kel32f>(count)) != nullptr;
}

// A state with its cosine table and room for its weights.  Where memory runs out *ppState holds what there was memory
// for, so that the function that releases a state takes it.
template <class State>
KelStatus allocateState(State** ppState, int lifterLen, int lenDCT, int lenCeps, bool withC0) {
    State* const state = *ppState = allocateCleared<State>(1);
    if (state == nullptr) return kelStatusNoMemory;
    state->lifterLen = lifterLen;
    state->lenDCT = lenDCT;
    state->lenCeps = lenCeps;
    state->withC0 = withC0;
    if (lenCeps == std::numeric_limits<int>::max()) return kelStatusNoMemory;
    if ((state->lifter = allocate<Kel32f>(lenCeps + 1)) == nullptr) return kelStatusNoMemory;
    if (!allocateWork(*state, lenCeps + (withC0 ? 1 : 0))) return kelStatusNoMemory;
    if ((state->cosTab = allocateRows<Kel32f>(lenCeps + 1, lenDCT)) == nullptr) return kelStatusNoMemory;
    cosineTable(*state);
    return kelStatusOk;
}

template <class State>
KelStatus buildWithSine(State** ppState, int lenDCT, int lenCeps, int nLifter, Kel32f val, bool withC0) {
    const NearestScope nearest;
    const KelStatus status = allocateState(ppState, nLifter, lenDCT, lenCeps, withC0);
    if (status == kelStatusOk) sineLifter((*ppState)->lifter, lenCeps, nLifter, val);
    return status;
}

template <class State>
KelStatus buildWithSineAndC0(State** ppState, int lenDCT, int lenCeps, int nLifter, Kel32f val, Kel32f val0) {
    const KelStatus status = buildWithSine(ppState, lenDCT, lenCeps, nLifter, val, true);
    if (status == kelStatusOk) (*ppState)->lifter[0] = val0;
    return status;
}

template <class State>
KelStatus buildWithSupplied(State** ppState, int lenDCT, const Kel32f* pLifter, int lenCeps, bool withC0) {
    constexpr int kNoSine = -1;
    const NearestScope nearest;
    const KelStatus status = allocateState(ppState, kNoSine, lenDCT, lenCeps, withC0);
    if (status == kelStatusOk) suppliedLifter((*ppState)->lifter, lenCeps, pLifter, withC0);
    return status;
}

// The state and all that it points to in the caller's buffer: the fields at its first byte, the arrays from aligned
// addresses behind them.  On either ABI and at the worst alignment of the buffer that takes
// 4 * (lenCeps + 1) * lenDCT + 44 * lenCeps + 167 bytes at most.
void buildInBuffer(Kel8u* buffer, int lenDCT, const Kel32s* pLifter, int lenCeps) {
    const int rows = lenCeps + 1;
    KelDCTLifterState_16s state{-1, lenDCT, lenCeps, 1, nullptr, nullptr, nullptr};
    Layout layout(buffer + sizeof state);
    state.lifter = layout.take<Kel32f>(rows);
    state.work = layout.take<Kel32f>(rows);
    state.cosTab = layout.take<Kel32f*>(rows);
    for (int k = 0; k < rows; ++k) state.cosTab[k] = layout.take<Kel32f>(lenDCT);
    const NearestScope nearest;
    suppliedLifter(state.lifter, lenCeps, pLifter, true);
    cosineTable(state);
    std::memcpy(buffer, &state, sizeof state);
}

// ---- release -------------------------------------------------------------------------------------------------------

template <class State>
void releaseParts(State& state) {
    kelsFree(state.cosTab);
    kelsFree(state.lifter);
    state.cosTab = nullptr;
    state.lifter = nullptr;
}

}  // namespace

// ---- states of the library -----------------------------------------------------------------------------------------

KelStatus kelsDCTLifterInitAlloc_32f(KelDCTLifterState_32f** ppState, int lenDCT, int lenCeps, int nLifter,
                                     Kel32f val) {
    if (const KelStatus fault = sineFault(lenDCT, lenCeps, nLifter, ppState)) return fault;
    return buildWithSine(ppState, lenDCT, lenCeps, nLifter, val, false);
}
KelStatus kelsDCTLifterInitAlloc_16s(KelDCTLifterState_16s** ppState, int lenDCT, int lenCeps, int nLifter,
                                     Kel32f val) {
    if (const KelStatus fault = sineFault(lenDCT, lenCeps, nLifter, ppState)) return fault;
    return buildWithSine(ppState, lenDCT, lenCeps, nLifter, val, false);
}

KelStatus kelsDCTLifterInitAlloc_C0_32f(KelDCTLifterState_32f** ppState, int lenDCT, int lenCeps, int nLifter,
                                        Kel32f val, Kel32f val0) {
    if (const KelStatus fault = sineFault(lenDCT, lenCeps, nLifter, ppState)) return fault;
    return buildWithSineAndC0(ppState, lenDCT, lenCeps, nLifter, val, val0);
}
KelStatus kelsDCTLifterInitAlloc_C0_16s(KelDCTLifterState_16s** ppState, int lenDCT, int lenCeps, int nLifter,
                                        Kel32f val, Kel32f val0) {
    if (const KelStatus fault = sineFault(lenDCT, lenCeps, nLifter, ppState)) return fault;
    return buildWithSineAndC0(ppState, lenDCT, lenCeps, nLifter, val, val0);
}

KelStatus kelsDCTLifterInitAlloc_Mul_32f(KelDCTLifterState_32f** ppState, int lenDCT, const Kel32f* pLifter,
                                         int lenCeps) {
    if (const KelStatus fault = suppliedFault(lenDCT, lenCeps, ppState, pLifter)) return fault;
    return buildWithSupplied(ppState, lenDCT, pLifter, lenCeps, false);
}
KelStatus kelsDCTLifterInitAlloc_Mul_16s(KelDCTLifterState_16s** ppState, int lenDCT, const Kel32f* pLifter,
                                         int lenCeps) {
    if (const KelStatus fault = suppliedFault(lenDCT, lenCeps, ppState, pLifter)) return fault;
    return buildWithSupplied(ppState, lenDCT, pLifter, lenCeps, false);
}

KelStatus kelsDCTLifterInitAlloc_MulC0_32f(KelDCTLifterState_32f** ppState, int lenDCT, const Kel32f* pLifter,
                                           int lenCeps) {
    if (const KelStatus fault = suppliedFault(lenDCT, lenCeps, ppState, pLifter)) return fault;
    return buildWithSupplied(ppState, lenDCT, pLifter, lenCeps, true);
}
KelStatus kelsDCTLifterInitAlloc_MulC0_16s(KelDCTLifterState_16s** ppState, int lenDCT, const Kel32f* pLifter,
                                           int lenCeps) {
    if (const KelStatus fault = suppliedFault(lenDCT, lenCeps, ppState, pLifter)) return fault;
    return buildWithSupplied(ppState, lenDCT, pLifter, lenCeps, true);
}

KelStatus kelsDCTLifterFree_32f(KelDCTLifterState_32f* pState) {
    if (anyNull(pState)) return kelStatusNullPtr;
    releaseParts(*pState);
    return kelStatusOk;
}
KelStatus kelsDCTLifterFree_16s(KelDCTLifterState_16s* pState) {
    if (anyNull(pState)) return kelStatusNullPtr;
    kelsFree(pState->work);
    pState->work = nullptr;
    releaseParts(*pState);
    return kelStatusOk;
}

// ---- states in the caller's memory ---------------------------------------------------------------------------------

KelStatus kelsDCTLifterGetSize_MulC0_16s(int lenDCT, int lenCeps, int* pSize) {
    constexpr int kLongestDCT = 8192;
    if (anyNull(pSize)) return kelStatusNullPtr;
    if (badSizes(lenDCT, lenCeps) || lenDCT > kLongestDCT) return kelStatusSize;
    *pSize = (4 * lenCeps + 4) * lenDCT + 44 * lenCeps + 168;
    return kelStatusOk;
}

KelStatus kelsDCTLifterInit_MulC0_16s(Kel8u* pBuffer, int lenDCT, const Kel32s* pLifter, int lenCeps) {
    if (const KelStatus fault = suppliedFault(lenDCT, lenCeps, pBuffer, pLifter)) return fault;
    buildInBuffer(pBuffer, lenDCT, pLifter, lenCeps);
    return kelStatusOk;
}

// ---- application ---------------------------------------------------------------------------------------------------

KelStatus kelsDCTLifter_32f(const Kel32f* pSrc, Kel32f* pDst, const KelDCTLifterState_32f* pState) {
    if (anyNull(pSrc, pDst, pState)) return kelStatusNullPtr;
    transformFrame(*pState, pSrc, pDst);
    return kelStatusOk;
}
KelStatus kelsDCTLifter_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, const KelDCTLifterState_16s* pState,
                                int scaleFactor) {
    if (anyNull(pSrc, pDst, pState)) return kelStatusNullPtr;
    transformFrame(pState, pSrc, pDst, scaleFactor);
    return kelStatusOk;
}
KelStatus kelsDCTLifter_32s16s_Sfs(const Kel32s* pSrc, Kel16s* pDst, const KelDCTLifterState_16s* pState,
                                   int scaleFactor) {
    if (anyNull(pSrc, pDst, pState)) return kelStatusNullPtr;
    transformFrame(pState, pSrc, pDst, scaleFactor);
    return kelStatusOk;
}
