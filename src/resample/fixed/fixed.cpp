// Entry points of the fixed form of resampling.
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
#include "resample/fixed/build.h"
#include "resample/fixed/folded.h"
#include "resample/fixed/outputs.h"
#include "resample/sample_conversion.h"

using namespace kels;
using namespace kels::resample;

struct KelResamplePolyphaseFixed_32f : fixed::State {};
struct KelResamplePolyphaseFixed_16s : fixed::State {};

namespace {

using fixed::Design;

constexpr Kel64f kFarthest = 2147483648.0;  // input samples that a time may lie from the start of its block

template <class State>
using SampleOf = std::conditional_t<std::is_same_v<State, KelResamplePolyphaseFixed_32f>, Kel32f, Kel16s>;

// The order of checks of everything that takes a design, and what the design takes.
KelStatus designFault(const void* result, const Design& design, fixed::State& head, int& bytes) {
    if (anyNull(result)) return kelStatusNullPtr;
    if (design.inRate < 1 || design.outRate < 1 || design.len < 1) return kelStatusSize;
    if (!(design.rollf > 0 && design.rollf <= 1)) return kelStatusBadArg;
    if (!(design.alpha >= 1 && design.alpha <= kMostAlpha)) return kelStatusBadArg;
    return fixed::measure(design, head, bytes) ? kelStatusOk : kelStatusAllocError;
}

template <class State>
KelStatus initAlloc(State** ppState, const Design& design) {
    fixed::State head;
    int bytes;
    if (const KelStatus fault = designFault(ppState, design, head, bytes)) return fault;
    auto* const state = reinterpret_cast<State*>(allocate<Kel8u>(bytes));
    if (state == nullptr) return kelStatusAllocError;
    const NearestScope nearest;
    fixed::build<SampleOf<State>>(state, head, design);
    *ppState = state;
    return kelStatusOk;
}

KelStatus getSize(const Design& design, int* pSize) {
    fixed::State head;
    int bytes;
    if (const KelStatus fault = designFault(pSize, design, head, bytes)) return fault;
    *pSize = bytes;
    return kelStatusOk;
}

template <class State>
KelStatus init(State* pState, const Design& design) {
    fixed::State head;
    int bytes;
    if (const KelStatus fault = designFault(pState, design, head, bytes)) return fault;
    const NearestScope nearest;
    fixed::build<SampleOf<State>>(pState, head, design);
    return kelStatusOk;
}

// `count` outputs from the one on whose time is place / phases.
template <class T>
void produce(const fixed::State& state, int64_t place, int count, const T* src, int len, T* dst, Kel32f gain) {
    const int64_t phase = place - divideFloor(place, state.phases) * state.phases;
    const int64_t q = phase * state.inverse % state.phases;
    const int64_t base = divideFloor(place - q * state.down, state.phases);
    if (state.folded != 0) {
        const auto position = static_cast<std::ptrdiff_t>(base),
                   oldest = position + static_cast<std::ptrdiff_t>(state.startOf(q));
        return fixed::FoldedOutputs<T>(state, src, oldest, len)
            .produce(static_cast<int>(q), position, count, dst, gain);
    }
    const auto withMembers = [&](auto members) {
        fixed::Outputs<members, T>(state, src, len, dst, gain).produce(static_cast<int>(q), base, count);
    };
    switch (state.members) {
        case 1:
            return withMembers(std::integral_constant<int, 1>());
        case 2:
            return withMembers(std::integral_constant<int, 2>());
        case 3:
            return withMembers(std::integral_constant<int, 3>());
        default:
            return withMembers(std::integral_constant<int, fixed::kMostMembers>());
    }
}

template <class State, class T>
KelStatus run(const State* pState, const T* pSrc, int len, T* pDst, Kel32f norm, Kel64f* pTime, int* pOutLen) {
    if (anyNull(pState, pSrc, pDst, pTime, pOutLen)) return kelStatusNullPtr;
    if (len < 1) return kelStatusBadArg;
    const NearestScope nearest;
    const fixed::State& state = *pState;
    *pOutLen = 0;
    if (!(std::abs(*pTime) <= kFarthest)) return kelStatusOk;

    // The time to the nearest phase: `place` is in units of 1 / phases.
    const Kel64f whole = std::floor(*pTime);
    const int64_t place = static_cast<int64_t>(whole) * state.phases +
                          static_cast<int64_t>(std::floor((*pTime - whole) * state.phases + 0.5));
    // The last one from which the filter does not reach behind the last sample.
    const int64_t latest = divideFloor((2 * static_cast<int64_t>(len - 1) - state.len) * state.phases, 2);
    if (place > latest) return kelStatusOk;
    const int64_t count = std::min<int64_t>((latest - place) / state.down + 1, std::numeric_limits<int>::max());

    produce(state, place, static_cast<int>(count), pSrc, len, pDst, norm);
    const int64_t next = place + count * state.down;
    const int64_t sample = divideFloor(next, state.phases);
    *pTime = static_cast<Kel64f>(sample) + static_cast<Kel64f>(next - sample * state.phases) / state.phases;
    *pOutLen = static_cast<int>(count);
    return kelStatusOk;
}

KelStatus filterFault(const void* state, const void* filters, int len, int height) {
    if (anyNull(state, filters)) return kelStatusNullPtr;
    return len < 1 || height < 1 ? kelStatusSize : kelStatusOk;
}

// Calls each(q, phase, taps) with every output whose filter both sides have, and how many of its taps both have.
template <class Each>
void forSharedFilters(const fixed::State& state, int len, int height, Each each) {
    const int taps = len > state.len ? state.len + 1 : len;
    fixed::forEachOutput(state, [&](int q, int phase) {
        if (phase < height) each(q, toSize(phase), taps);
    });
}

template <class T>
KelStatus setFilter(fixed::State* pState, const T* pSrc, int len, int height) {
    if (const KelStatus fault = filterFault(pState, pSrc, len, height)) return fault;
    forSharedFilters(*pState, len, height, [&](int q, std::size_t phase, int taps) {
        for (int k = 0; k < taps; ++k) pState->tap(q, k) = factorOf(pSrc[phase * toSize(len) + toSize(k)]);
    });
    fixed::fold(*pState);
    return kelStatusOk;
}

template <class T>
KelStatus getFilter(const fixed::State* pState, T* pDst, int len, int height) {
    if (const KelStatus fault = filterFault(pState, pDst, len, height)) return fault;
    const NearestScope nearest;
    forSharedFilters(*pState, len, height, [&](int q, std::size_t phase, int taps) {
        for (int k = 0; k < taps; ++k)
            pDst[phase * toSize(len) + toSize(k)] = storedTap<T>(static_cast<Kel64f>(pState->tap(q, k)));
    });
    return kelStatusOk;
}

KelStatus release(fixed::State* pState) {
    if (anyNull(pState)) return kelStatusNullPtr;
    kelsFree(pState);
    return kelStatusOk;
}

}  // namespace

KelStatus kelsResamplePolyphaseFixedInitAlloc_32f(KelResamplePolyphaseFixed_32f** ppState, int inRate, int outRate,
                                                  int len, Kel32f rollf, Kel32f alpha, int) {
    return initAlloc(ppState, {inRate, outRate, len, rollf, alpha});
}
KelStatus kelsResamplePolyphaseFixedInitAlloc_16s(KelResamplePolyphaseFixed_16s** ppState, int inRate, int outRate,
                                                  int len, Kel32f rollf, Kel32f alpha, int) {
    return initAlloc(ppState, {inRate, outRate, len, rollf, alpha});
}

KelStatus kelsResamplePolyphaseFixedGetSize_32f(int inRate, int outRate, int len, Kel32f rollf, Kel32f alpha, int,
                                                int* pSize) {
    return getSize({inRate, outRate, len, rollf, alpha}, pSize);
}
KelStatus kelsResamplePolyphaseFixedGetSize_16s(int inRate, int outRate, int len, Kel32f rollf, Kel32f alpha, int,
                                                int* pSize) {
    return getSize({inRate, outRate, len, rollf, alpha}, pSize);
}

KelStatus kelsResamplePolyphaseFixedInit_32f(KelResamplePolyphaseFixed_32f* pState, int inRate, int outRate, int len,
                                             Kel32f rollf, Kel32f alpha, int) {
    return init(pState, {inRate, outRate, len, rollf, alpha});
}
KelStatus kelsResamplePolyphaseFixedInit_16s(KelResamplePolyphaseFixed_16s* pState, int inRate, int outRate, int len,
                                             Kel32f rollf, Kel32f alpha, int) {
    return init(pState, {inRate, outRate, len, rollf, alpha});
}

KelStatus kelsResamplePolyphaseFixed_32f(const KelResamplePolyphaseFixed_32f* pState, const Kel32f* pSrc, int len,
                                         Kel32f* pDst, Kel32f norm, Kel64f* pTime, int* pOutLen) {
    return run(pState, pSrc, len, pDst, norm, pTime, pOutLen);
}
KelStatus kelsResamplePolyphaseFixed_16s(const KelResamplePolyphaseFixed_16s* pState, const Kel16s* pSrc, int len,
                                         Kel16s* pDst, Kel32f norm, Kel64f* pTime, int* pOutLen) {
    return run(pState, pSrc, len, pDst, norm, pTime, pOutLen);
}

KelStatus kelsResamplePolyphaseSetFixedFilter_32f(KelResamplePolyphaseFixed_32f* pState, const Kel32f* pSrc, int len,
                                                  int height) {
    return setFilter(pState, pSrc, len, height);
}
KelStatus kelsResamplePolyphaseSetFixedFilter_16s(KelResamplePolyphaseFixed_16s* pState, const Kel16s* pSrc, int len,
                                                  int height) {
    return setFilter(pState, pSrc, len, height);
}

KelStatus kelsResamplePolyphaseGetFixedFilter_32f(const KelResamplePolyphaseFixed_32f* pState, Kel32f* pDst, int len,
                                                  int height) {
    return getFilter(pState, pDst, len, height);
}
KelStatus kelsResamplePolyphaseGetFixedFilter_16s(const KelResamplePolyphaseFixed_16s* pState, Kel16s* pDst, int len,
                                                  int height) {
    return getFilter(pState, pDst, len, height);
}

KelStatus kelsResamplePolyphaseFixedFree_32f(KelResamplePolyphaseFixed_32f* pState) {
    return release(pState);
}
KelStatus kelsResamplePolyphaseFixedFree_16s(KelResamplePolyphaseFixed_16s* pState) {
    return release(pState);
}
