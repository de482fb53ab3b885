#include "frontend/dct.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/check.h"
#include "core/memory.h"
#include "core/row_table.h"
#include "core/scaling.h"
#include "kels/core.h"

namespace kels {
namespace {

constexpr Kel64f kPi = 3.141592653589793;
constexpr std::size_t kAlignment = 32;

// ---- weights and table
// -----------------------------------------------------------------------------------------------

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

// ---- construction
// ----------------------------------------------------------------------------------------------------

bool allocateWork(KelDCTLifterState_32f&, int) {
    return true;
}
bool allocateWork(KelDCTLifterState_16s& state, int count) {
    return (state.work = allocate<Kel32f>(count)) != nullptr;
}

// A state with its cosine table and room for its weights; whatever there was memory for is in *ppState.
template <class State>
KelStatus allocateState(State** ppState, int lifterLen, int lenDCT, int lenCeps, bool withC0) {
    State* const state = *ppState = allocate<State>(1);
    if (state == nullptr) return kelStatusNoMemory;
    *state = State{};
    state->lifterLen = lifterLen;
    state->lenDCT = lenDCT;
    state->lenCeps = lenCeps;
    state->withC0 = withC0;
    if (lenCeps == std::numeric_limits<int>::max()) return kelStatusNoMemory;
    if ((state->lifter = allocate<Kel32f>(lenCeps + 1)) == nullptr) return kelStatusNoMemory;
    if (!allocateWork(*state, lenCeps + (withC0 ? 1 : 0))) return kelStatusNoMemory;
    if ((state->cosTab = Alloc2_32fd(lenCeps + 1, lenDCT)) == nullptr) return kelStatusNoMemory;
    cosineTable(*state);
    return kelStatusOk;
}

template <class State>
KelStatus initSine(State** ppState, int lenDCT, int lenCeps, int nLifter, Kel32f val, bool withC0) {
    if (anyNull(ppState)) return kelStatusNullPtr;
    if (lenDCT < 1 || lenCeps < 1 || nLifter < 1 || lenDCT < lenCeps) return kelStatusSize;
    const NearestScope nearest;
    const KelStatus status = allocateState(ppState, nLifter, lenDCT, lenCeps, withC0);
    if (status == kelStatusOk) sineLifter((*ppState)->lifter, lenCeps, nLifter, val);
    return status;
}

template <class State>
KelStatus initSineC0(State** ppState, int lenDCT, int lenCeps, int nLifter, Kel32f val, Kel32f val0) {
    const KelStatus status = initSine(ppState, lenDCT, lenCeps, nLifter, val, true);
    if (status == kelStatusOk) (*ppState)->lifter[0] = val0;
    return status;
}

template <class State>
KelStatus initSupplied(State** ppState, int lenDCT, const Kel32f* pLifter, int lenCeps, bool withC0) {
    if (anyNull(ppState, pLifter)) return kelStatusNullPtr;
    if (lenDCT < 1 || lenCeps < 1 || lenDCT < lenCeps) return kelStatusSize;
    const NearestScope nearest;
    const KelStatus status = allocateState(ppState, -1, lenDCT, lenCeps, withC0);
    if (status == kelStatusOk) suppliedLifter((*ppState)->lifter, lenCeps, pLifter, withC0);
    return status;
}

template <class State>
void releaseParts(State& state) {
    Free2d(state.cosTab);
    kelsFree(state.lifter);
    state.cosTab = nullptr;
    state.lifter = nullptr;
}

// The state in the caller's buffer: the fields, the weights, the work array, the row pointers, the rows; each array
// from the next aligned address.  On either ABI and at the worst alignment of the buffer that takes
// 4 * (lenCeps + 1) * lenDCT + 44 * lenCeps + 167 bytes at most.
class BufferLayout {
  public:
    explicit BufferLayout(Kel8u* buffer) : next_(reinterpret_cast<uintptr_t>(buffer) + sizeof(KelDCTLifterState_16s)) {}

    template <class T>
    T* array(int count) {
        const uintptr_t start = roundUp<uintptr_t>(next_, kAlignment);
        next_ = start + static_cast<std::size_t>(count) * sizeof(T);
        return reinterpret_cast<T*>(start);
    }

  private:
    uintptr_t next_;
};

// ---- application
// -----------------------------------------------------------------------------------------------------

inline void toFloat(const Kel16s* src, Kel32f* dst, int n) {
    kelsConvert_16s32f(src, dst, n);
}
inline void toFloat(const Kel32s* src, Kel32f* dst, int n) {
    kelsConvert_32s32f(src, dst, n);
}

// Integer frames of any length pass through a short float buffer.
template <class Src>
void applyToIntegers(const Src* pSrc, Kel16s* pDst, const KelDCTLifterState_16s* pState, int scaleFactor) {
    constexpr int kChunk = 256;
    KelDCTLifterState_16s state;  // a state in a caller's buffer may lie at an odd address
    std::memcpy(&state, static_cast<const void*>(pState), sizeof state);
    Kel32f chunk[kChunk];
    for (int j = 0; j < state.lenDCT; j += std::min(kChunk, state.lenDCT - j)) {
        const int n = std::min(kChunk, state.lenDCT - j);
        toFloat(pSrc + j, chunk, n);
        addFrame(state, chunk, static_cast<std::size_t>(n), static_cast<std::size_t>(j), state.work);
    }
    kelsConvert_32f16s_Sfs(state.work, pDst, state.lenCeps + state.withC0, 1, scaleFactor);
}

}  // namespace
}  // namespace kels

using namespace kels;

KelStatus kelsDCTLifterInitAlloc_32f(KelDCTLifterState_32f** ppState, int lenDCT, int lenCeps, int nLifter,
                                     Kel32f val) {
    return initSine(ppState, lenDCT, lenCeps, nLifter, val, false);
}
KelStatus kelsDCTLifterInitAlloc_16s(KelDCTLifterState_16s** ppState, int lenDCT, int lenCeps, int nLifter,
                                     Kel32f val) {
    return initSine(ppState, lenDCT, lenCeps, nLifter, val, false);
}

KelStatus kelsDCTLifterInitAlloc_C0_32f(KelDCTLifterState_32f** ppState, int lenDCT, int lenCeps, int nLifter,
                                        Kel32f val, Kel32f val0) {
    return initSineC0(ppState, lenDCT, lenCeps, nLifter, val, val0);
}
KelStatus kelsDCTLifterInitAlloc_C0_16s(KelDCTLifterState_16s** ppState, int lenDCT, int lenCeps, int nLifter,
                                        Kel32f val, Kel32f val0) {
    return initSineC0(ppState, lenDCT, lenCeps, nLifter, val, val0);
}

KelStatus kelsDCTLifterInitAlloc_Mul_32f(KelDCTLifterState_32f** ppState, int lenDCT, const Kel32f* pLifter,
                                         int lenCeps) {
    return initSupplied(ppState, lenDCT, pLifter, lenCeps, false);
}
KelStatus kelsDCTLifterInitAlloc_Mul_16s(KelDCTLifterState_16s** ppState, int lenDCT, const Kel32f* pLifter,
                                         int lenCeps) {
    return initSupplied(ppState, lenDCT, pLifter, lenCeps, false);
}

KelStatus kelsDCTLifterInitAlloc_MulC0_32f(KelDCTLifterState_32f** ppState, int lenDCT, const Kel32f* pLifter,
                                           int lenCeps) {
    return initSupplied(ppState, lenDCT, pLifter, lenCeps, true);
}
KelStatus kelsDCTLifterInitAlloc_MulC0_16s(KelDCTLifterState_16s** ppState, int lenDCT, const Kel32f* pLifter,
                                           int lenCeps) {
    return initSupplied(ppState, lenDCT, pLifter, lenCeps, true);
}

KelStatus kelsDCTLifterGetSize_MulC0_16s(int lenDCT, int lenCeps, int* pSize) {
    if (anyNull(pSize)) return kelStatusNullPtr;
    if (lenDCT < 1 || lenCeps < 1 || lenDCT < lenCeps || lenDCT > 8192) return kelStatusSize;
    *pSize = (4 * lenCeps + 4) * lenDCT + 44 * lenCeps + 168;
    return kelStatusOk;
}

KelStatus kelsDCTLifterInit_MulC0_16s(Kel8u* pBuffer, int lenDCT, const Kel32s* pLifter, int lenCeps) {
    if (anyNull(pBuffer, pLifter)) return kelStatusNullPtr;
    if (lenDCT < 1 || lenCeps < 1 || lenDCT < lenCeps) return kelStatusSize;
    const NearestScope nearest;
    const int rows = lenCeps + 1;
    BufferLayout layout(pBuffer);
    KelDCTLifterState_16s state{-1, lenDCT, lenCeps, 1, nullptr, nullptr, nullptr};
    state.lifter = layout.array<Kel32f>(rows);
    state.work = layout.array<Kel32f>(rows);
    state.cosTab = layout.array<Kel32f*>(rows);
    for (int k = 0; k < rows; ++k) state.cosTab[k] = layout.array<Kel32f>(lenDCT);
    suppliedLifter(state.lifter, lenCeps, pLifter, true);
    cosineTable(state);
    std::memcpy(pBuffer, &state, sizeof state);
    return kelStatusOk;
}

KelStatus kelsDCTLifter_32f(const Kel32f* pSrc, Kel32f* pDst, const KelDCTLifterState_32f* pState) {
    if (anyNull(pSrc, pDst, pState)) return kelStatusNullPtr;
    addFrame(*pState, pSrc, static_cast<std::size_t>(pState->lenDCT), 0, pDst);
    return kelStatusOk;
}

KelStatus kelsDCTLifter_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, const KelDCTLifterState_16s* pState,
                                int scaleFactor) {
    if (anyNull(pSrc, pDst, pState)) return kelStatusNullPtr;
    applyToIntegers(pSrc, pDst, pState, scaleFactor);
    return kelStatusOk;
}
KelStatus kelsDCTLifter_32s16s_Sfs(const Kel32s* pSrc, Kel16s* pDst, const KelDCTLifterState_16s* pState,
                                   int scaleFactor) {
    if (anyNull(pSrc, pDst, pState)) return kelStatusNullPtr;
    applyToIntegers(pSrc, pDst, pState, scaleFactor);
    return kelStatusOk;
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
