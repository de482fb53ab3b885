#include "resample/general/choose_method.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "core/check.h"
#include "core/memory.h"
#include "core/scaling.h"
#include "kels/core.h"
#include "kels/resample.h"
#include "resample/filter_design.h"

namespace kels {
namespace {

#if defined(__i386__)
static_assert(sizeof(KelResamplePolyphase_32f) == 32 && sizeof(KelResamplePolyphase_16s) == 32);
#endif

template <class State>
using TapOf = std::remove_pointer_t<decltype(State::pTable)>;

// Table points beyond the last one at which a sample still counts, and by which an output may lack input at the end.
constexpr Kel64f kTolerance = 1e-5;

constexpr int kAlignment = 32;     // of a state
constexpr int kRowAlignment = 64;  // of the rows behind it

// The rows of a state stand own[0] times 32 bytes behind its start.
template <class State>
Kel32f* rowsOf(const State* state) {
    const auto at = reinterpret_cast<uintptr_t>(state) + static_cast<uintptr_t>(state->own[0]) * kAlignment;
    return reinterpret_cast<Kel32f*>(at);
}

template <class State>
KelStatus build(State** ppState, int last, int nStep, Kel32f rollf, Kel32f alpha, int hint) {
    using T = TapOf<State>;
    const auto bytesOf = [](int64_t count, std::size_t elementSize) {
        return count * static_cast<int64_t>(elementSize);
    };
    const int64_t tableEnd = bytesOf(1, sizeof(State)) + bytesOf(static_cast<int64_t>(last) + 2, sizeof(T));
    const int64_t bytes = tableEnd + kRowAlignment + bytesOf(FilterRows::floats(last, nStep), sizeof(Kel32f));
    if (bytes > std::numeric_limits<int>::max()) return kelStatusAllocError;
    Kel64f* const design = allocate<Kel64f>(static_cast<int64_t>(last) + 1);
    if (design == nullptr) return kelStatusAllocError;
    auto* const state = reinterpret_cast<State*>(allocate<Kel8u>(bytes));
    if (state == nullptr) {
        kelsFree(design);
        return kelStatusAllocError;
    }
    const auto start = reinterpret_cast<uintptr_t>(state);
    const uintptr_t rows = roundUp<uintptr_t>(start + static_cast<uintptr_t>(tableEnd), kRowAlignment);
    *state = State{{static_cast<Kel32s>((rows - start) / kAlignment), 0},
                   1 / static_cast<Kel32f>(nStep),
                   nStep,
                   last + 1,
                   1,
                   hint == kelHintAccurate ? 1 : 2,
                   reinterpret_cast<T*>(state + 1)};
    initResample_64f(design, last + 1, nStep, rollf, alpha);
    for (int k = 0; k <= last; ++k) state->pTable[k] = storedTap<T>(design[k]);
    state->pTable[last + 1] = state->pTable[last];
    FilterRows(rowsOf(state), last, nStep).fill(state->pTable, last);
    kelsFree(design);
    *ppState = state;
    return kelStatusOk;
}

template <class State>
KelStatus initAlloc(State** ppState, Kel32f window, int nStep, Kel32f rollf, Kel32f alpha, int hint) {
    if (anyNull(ppState)) return kelStatusNullPtr;
    if (nStep < 1) return kelStatusSize;
    if (!(window >= 2 / static_cast<Kel32f>(nStep))) return kelStatusBadArg;
    if (!(rollf > 0 && rollf <= 1)) return kelStatusBadArg;
    if (!(alpha >= 1 && alpha <= kMostAlpha)) return kelStatusBadArg;
    const NearestScope nearest;
    // The product of 2 / nStep and nStep may be rounded to just below 2.
    const Kel64f last = std::max(1.0, static_cast<Kel64f>(window) * 0.5 * nStep);
    if (last > std::numeric_limits<int>::max() - 2) return kelStatusAllocError;
    return build(ppState, static_cast<int>(last), nStep, rollf, alpha, hint);
}

template <class State>
KelStatus run(const State* pState, const TapOf<State>* pSrc, int len, TapOf<State>* pDst, Kel64f factor, Kel32f norm,
              Kel64f* pTime, int* pOutLen) {
    if (anyNull(pState, pSrc, pDst, pTime, pOutLen)) return kelStatusNullPtr;
    if (!(factor > 0 && factor < HUGE_VAL) || len < 1) return kelStatusBadArg;
    const NearestScope nearest;
    const Kel64f stretch = std::min(factor, 1.0);
    const Kel64f scale = stretch * pState->nStep;  // table points per input sample
    const int last = pState->tableLen - 1;
    const Kel64f tolerance = kTolerance * std::min(1.0, scale);
    const ResampleTimes times{*pTime, 1 / factor, (last + tolerance) / scale, factor};
    const int count = times.count(len, (last - tolerance) / scale);
    const Kel64f gain = factor < 1 ? factor * pState->gain : 1;
    resample(FilterRows(rowsOf(pState), last, pState->nStep, tolerance),
             FilterTable<TapOf<State>>{pState->pTable, last, tolerance, scale}, times, count, pSrc, len, pDst,
             static_cast<Kel32f>(norm * gain));
    if (count > 0) *pTime = times.at(count);
    *pOutLen = count;
    return kelStatusOk;
}

template <class State>
KelStatus release(State* pState) {
    if (anyNull(pState)) return kelStatusNullPtr;
    kelsFree(pState);
    return kelStatusOk;
}

}  // namespace
}  // namespace kels

using namespace kels;

KelStatus kelsResamplePolyphaseInitAlloc_32f(KelResamplePolyphase_32f** ppState, Kel32f window, int nStep, Kel32f rollf,
                                             Kel32f alpha, int hint) {
    return initAlloc(ppState, window, nStep, rollf, alpha, hint);
}
KelStatus kelsResamplePolyphaseInitAlloc_16s(KelResamplePolyphase_16s** ppState, Kel32f window, int nStep, Kel32f rollf,
                                             Kel32f alpha, int hint) {
    return initAlloc(ppState, window, nStep, rollf, alpha, hint);
}

KelStatus kelsResamplePolyphase_32f(const KelResamplePolyphase_32f* pState, const Kel32f* pSrc, int len, Kel32f* pDst,
                                    Kel64f factor, Kel32f norm, Kel64f* pTime, int* pOutLen) {
    return run(pState, pSrc, len, pDst, factor, norm, pTime, pOutLen);
}
KelStatus kelsResamplePolyphase_16s(const KelResamplePolyphase_16s* pState, const Kel16s* pSrc, int len, Kel16s* pDst,
                                    Kel64f factor, Kel32f norm, Kel64f* pTime, int* pOutLen) {
    return run(pState, pSrc, len, pDst, factor, norm, pTime, pOutLen);
}

KelStatus kelsResamplePolyphaseFree_32f(KelResamplePolyphase_32f* pState) {
    return release(pState);
}
KelStatus kelsResamplePolyphaseFree_16s(KelResamplePolyphase_16s* pState) {
    return release(pState);
}
