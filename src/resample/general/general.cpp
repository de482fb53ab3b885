// Entry points of the general form of resampling.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "core/check.h"
#include "core/layout.h"
#include "core/memory.h"
#include "core/scaling.h"
#include "kels/core.h"
#include "kels/resample.h"
#include "resample/filter_design.h"
#include "resample/general/choose_method.h"

using namespace kels;
using namespace kels::resample;

#if defined(__i386__)
static_assert(sizeof(KelResamplePolyphase_32f) == 32 && sizeof(KelResamplePolyphase_16s) == 32);
#endif

namespace {

using general::FilterRows;
using general::FilterTable;
using general::OutputTimes;

template <class State>
using TapOf = std::remove_pointer_t<decltype(State::pTable)>;

// Table points beyond the last one at which a sample still counts, and by which an output may lack input at the end.
constexpr Kel64f kTolerance = 1e-5;

// The rows of a state stand own[0] times 32 bytes behind its start.
constexpr std::size_t kRowAlignment = 64;
template <class State>
Kel32f* rowsOf(const State* state) {
    const auto at = reinterpret_cast<uintptr_t>(state) + static_cast<uintptr_t>(state->own[0]) * kBlockAlignment;
    return reinterpret_cast<Kel32f*>(at);
}

// What a filter is asked to be; `last` is the last point of its table.
struct Design {
    int last, nStep;
    Kel32f rollf, alpha;
};

// A state with its table directly behind it, and the rows; null when memory is out.
template <class State>
State* build(const Design& design, int hint) {
    using T = TapOf<State>;
    const int last = design.last, nStep = design.nStep;
    Kel64f* const exact = allocate<Kel64f>(static_cast<int64_t>(last) + 1);
    if (exact == nullptr) return nullptr;
    State* state;
    T* table;
    Kel32f* rows;
    const auto arrange = [&](Layout& layout) {
        state = layout.take<State>(1);
        table = layout.take<T>(static_cast<int64_t>(last) + 2, alignof(T));
        rows = layout.take<Kel32f>(FilterRows::floats(last, nStep), kRowAlignment);
    };
    if (allocateArranged(arrange) != nullptr) {
        const auto rowBlocks =
            (reinterpret_cast<uintptr_t>(rows) - reinterpret_cast<uintptr_t>(state)) / kBlockAlignment;
        *state = State{{static_cast<Kel32s>(rowBlocks), 0},
                       1 / static_cast<Kel32f>(nStep),
                       nStep,
                       last + 1,
                       1,
                       hint == kelHintAccurate ? 1 : 2,
                       table};
        initResample_64f(exact, last + 1, nStep, design.rollf, design.alpha);
        for (int k = 0; k <= last; ++k) table[k] = storedTap<T>(exact[k]);
        table[last + 1] = table[last];
        FilterRows(rows, last, nStep).fill(table, last);
    }
    kelsFree(exact);
    return state;
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
    State* const state = build<State>({static_cast<int>(last), nStep, rollf, alpha}, hint);
    if (state == nullptr) return kelStatusAllocError;
    *ppState = state;
    return kelStatusOk;
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
    const OutputTimes times{*pTime, 1 / factor, (last + tolerance) / scale, factor};
    const int count = times.count(len, (last - tolerance) / scale);
    const Kel64f gain = factor < 1 ? factor * pState->gain : 1;
    general::produce(FilterRows(rowsOf(pState), last, pState->nStep, tolerance),
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
