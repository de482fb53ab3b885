#include "resample/fixed/groups.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <type_traits>
#include <utility>

#include "core/check.h"
#include "core/memory.h"
#include "core/scaling.h"
#include "kels/core.h"
#include "kels/resample.h"
#include "resample/filter_design.h"

struct KelResamplePolyphaseFixed_32f : kels::FixedState {};
struct KelResamplePolyphaseFixed_16s : kels::FixedState {};

namespace kels {

int64_t FixedState::startOf(int64_t q) const {
    return -divideFloor(static_cast<int64_t>(phases) * len - 2 * q * down, 2 * static_cast<int64_t>(phases));
}

namespace {

constexpr int kFilterAlignment = 64;
constexpr Kel64f kFarthest = 2147483648.0;  // input samples that a time may lie from the start of its block

template <class State>
struct SampleOf;
template <>
struct SampleOf<KelResamplePolyphaseFixed_32f> {
    using Type = Kel32f;
};
template <>
struct SampleOf<KelResamplePolyphaseFixed_16s> {
    using Type = Kel16s;
};

// x with a x = 1 modulo m, for a and m without common factors; 0 for m = 1.
int inverseModulo(int64_t a, int64_t m) {
    int64_t r = m, next = a % m, x = 0, nextX = 1;
    while (next != 0) {
        const int64_t quotient = r / next;
        r = std::exchange(next, r - quotient * next);
        x = std::exchange(nextX, x - quotient * nextX);
    }
    return static_cast<int>(m == 1 ? 0 : (x % m + m) % m);
}

// What a state of these rates takes; false where that is not fewer than 2^31 bytes.
bool layOut(int inRate, int outRate, int len, FixedState& state, int& bytes) {
    const int common = std::gcd(inRate, outRate);
    state.phases = outRate / common;
    state.down = inRate / common;
    state.len = len;
    state.inverse = inverseModulo(state.down, state.phases);
    // The largest group that leaves the fewest places of the last one unused.
    int64_t groups = 0;
    for (int members = kMostMembers; members > 0; --members) {
        const int64_t needed = (static_cast<int64_t>(state.phases) + members - 1) / members;
        if (groups != 0 && needed * members >= groups * state.members) continue;
        groups = needed;
        state.members = members;
    }
    const int64_t lastShift =
        ((state.members - 1) * static_cast<int64_t>(state.down) + state.phases - 1) / state.phases;
    constexpr auto w = static_cast<int64_t>(lanes<Kel32f>);
    const int64_t vectors = (int64_t{len} + 1 + lastShift + w - 1) / w;
    constexpr int64_t most = std::numeric_limits<int>::max();
    constexpr auto wordBytes = static_cast<int64_t>(sizeof(Kel32f));
    const int64_t filtersAt = static_cast<int64_t>(sizeof(FixedState)) + groups * wordBytes + kFilterAlignment;
    const int64_t groupBytes = vectors * w * state.members * wordBytes;
    if (filtersAt > most || groupBytes > most || groupBytes * groups > most - filtersAt) return false;
    state.groups = static_cast<int>(groups);
    state.vectors = static_cast<int>(vectors);
    const int64_t lobe = 4 * (int64_t{state.down} / state.phases + 1);
    state.tail = static_cast<int>(std::min(roundUp<int64_t>(len / 2 + lobe + lastShift, w), vectors * w));
    state.startsAt = sizeof(FixedState);
    state.filtersAt = static_cast<int>(filtersAt);
    bytes = static_cast<int>(filtersAt + groupBytes * groups);
    return true;
}

// Calls with every output of a period and its phase.
template <class Each>
void forEachOutput(const FixedState& state, Each each) {
    int64_t phase = 0;
    for (int q = 0; q < state.phases; ++q) {
        each(q, static_cast<int>(phase));
        phase = (phase + state.down) % state.phases;
    }
}

// The filters of the windowed sinc, each evaluated at its own phase, and with gain 1 at zero frequency on average.
template <class T>
KelStatus design(FixedState* at, const FixedState& shape, Kel32f rollf, Kel32f alpha) {
    FixedState& state = *at;
    state = shape;
    const auto start = reinterpret_cast<uintptr_t>(at);
    state.filtersAt = static_cast<Kel32s>(
        roundUp<uintptr_t>(start + static_cast<uintptr_t>(shape.filtersAt) - kFilterAlignment, kFilterAlignment) -
        start);
    for (int g = 0; g < state.groups; ++g)
        const_cast<Kel32s*>(state.starts())[g] =
            static_cast<Kel32s>(state.startOf(static_cast<int64_t>(g) * state.members));
    std::fill_n(const_cast<Kel32f*>(state.filters(0)), static_cast<std::size_t>(state.groups) * state.groupFloats(),
                0.0f);

    const Kel64f stretch = std::min(1.0, static_cast<Kel64f>(state.phases) / state.down);
    const WindowedSinc sinc(rollf, alpha, 0.5 * state.len * stretch);
    const auto weight = [&](int q, int k) {
        // The time of output q less that of the sample, times 2 phases: exact.
        const int64_t distance = 2 * (static_cast<int64_t>(q) * state.down - (state.startOf(q) + k) * state.phases);
        if (std::abs(distance) > static_cast<int64_t>(state.len) * state.phases) return 0.0;
        return sinc(static_cast<Kel64f>(distance) / (2.0 * state.phases) * stretch);
    };
    Kel64f sum = 0;
    for (int q = 0; q < state.phases; ++q)
        for (int k = 0; k <= state.len; ++k) sum += weight(q, k);
    forEachOutput(state, [&](int q, int) {
        for (int k = 0; k <= state.len; ++k)
            state.tap(q, k) = factorOf(storedTap<T>(weight(q, k) * state.phases / sum));
    });
    return kelStatusOk;
}

KelStatus checkDesign(int inRate, int outRate, int len, Kel32f rollf, Kel32f alpha, FixedState& shape, int& bytes) {
    if (inRate < 1 || outRate < 1 || len < 1) return kelStatusSize;
    if (!(rollf > 0 && rollf <= 1)) return kelStatusBadArg;
    if (!(alpha >= 1 && alpha <= kMostAlpha)) return kelStatusBadArg;
    return layOut(inRate, outRate, len, shape, bytes) ? kelStatusOk : kelStatusAllocError;
}

template <class State>
KelStatus initAlloc(State** ppState, int inRate, int outRate, int len, Kel32f rollf, Kel32f alpha) {
    if (anyNull(ppState)) return kelStatusNullPtr;
    const NearestScope nearest;
    FixedState shape;
    int bytes;
    const KelStatus status = checkDesign(inRate, outRate, len, rollf, alpha, shape, bytes);
    if (status != kelStatusOk) return status;
    auto* const state = reinterpret_cast<State*>(allocate<Kel8u>(bytes));
    if (state == nullptr) return kelStatusAllocError;
    *ppState = state;
    return design<typename SampleOf<State>::Type>(state, shape, rollf, alpha);
}

KelStatus getSize(int inRate, int outRate, int len, Kel32f rollf, Kel32f alpha, int* pSize) {
    if (anyNull(pSize)) return kelStatusNullPtr;
    FixedState shape;
    int bytes;
    const KelStatus status = checkDesign(inRate, outRate, len, rollf, alpha, shape, bytes);
    if (status == kelStatusOk) *pSize = bytes;
    return status;
}

template <class State>
KelStatus init(State* pState, int inRate, int outRate, int len, Kel32f rollf, Kel32f alpha) {
    if (anyNull(pState)) return kelStatusNullPtr;
    const NearestScope nearest;
    FixedState shape;
    int bytes;
    const KelStatus status = checkDesign(inRate, outRate, len, rollf, alpha, shape, bytes);
    if (status != kelStatusOk) return status;
    return design<typename SampleOf<State>::Type>(pState, shape, rollf, alpha);
}

template <class State, class T>
KelStatus run(const State* pState, const T* pSrc, int len, T* pDst, Kel32f norm, Kel64f* pTime, int* pOutLen) {
    if (anyNull(pState, pSrc, pDst, pTime, pOutLen)) return kelStatusNullPtr;
    if (len < 1) return kelStatusBadArg;
    const NearestScope nearest;
    const FixedState& state = *pState;
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

    const int64_t phase = place - divideFloor(place, state.phases) * state.phases;
    const int64_t q = phase * state.inverse % state.phases;
    const int64_t base = divideFloor(place - q * state.down, state.phases);
    const auto outputs = [&](auto members) {
        resampleFixed<members>(state, static_cast<int>(q), base, static_cast<int>(count), pSrc, len, pDst, norm);
    };
    switch (state.members) {
        case 1:
            outputs(std::integral_constant<int, 1>());
            break;
        case 2:
            outputs(std::integral_constant<int, 2>());
            break;
        case 3:
            outputs(std::integral_constant<int, 3>());
            break;
        default:
            outputs(std::integral_constant<int, kMostMembers>());
    }
    const int64_t next = place + count * state.down;
    const int64_t sample = divideFloor(next, state.phases);
    *pTime = static_cast<Kel64f>(sample) + static_cast<Kel64f>(next - sample * state.phases) / state.phases;
    *pOutLen = static_cast<int>(count);
    return kelStatusOk;
}

template <class T>
KelStatus setFilter(FixedState* pState, const T* pSrc, int len, int height) {
    if (anyNull(pState, pSrc)) return kelStatusNullPtr;
    if (len < 1 || height < 1) return kelStatusSize;
    const int taps = len > pState->len ? pState->len + 1 : len;
    forEachOutput(*pState, [&](int q, int phase) {
        if (phase >= height) return;
        const T* const filter = pSrc + static_cast<std::size_t>(phase) * toSize(len);
        for (int k = 0; k < taps; ++k) pState->tap(q, k) = factorOf(filter[k]);
    });
    return kelStatusOk;
}

template <class T>
KelStatus getFilter(const FixedState* pState, T* pDst, int len, int height) {
    if (anyNull(pState, pDst)) return kelStatusNullPtr;
    if (len < 1 || height < 1) return kelStatusSize;
    const NearestScope nearest;
    const int taps = len > pState->len ? pState->len + 1 : len;
    forEachOutput(*pState, [&](int q, int phase) {
        if (phase >= height) return;
        T* const filter = pDst + static_cast<std::size_t>(phase) * toSize(len);
        for (int k = 0; k < taps; ++k) filter[k] = storedTap<T>(static_cast<Kel64f>(pState->tap(q, k)));
    });
    return kelStatusOk;
}

KelStatus release(FixedState* pState) {
    if (anyNull(pState)) return kelStatusNullPtr;
    kelsFree(pState);
    return kelStatusOk;
}

}  // namespace
}  // namespace kels

using namespace kels;

KelStatus kelsResamplePolyphaseFixedInitAlloc_32f(KelResamplePolyphaseFixed_32f** ppState, int inRate, int outRate,
                                                  int len, Kel32f rollf, Kel32f alpha, int) {
    return initAlloc(ppState, inRate, outRate, len, rollf, alpha);
}
KelStatus kelsResamplePolyphaseFixedInitAlloc_16s(KelResamplePolyphaseFixed_16s** ppState, int inRate, int outRate,
                                                  int len, Kel32f rollf, Kel32f alpha, int) {
    return initAlloc(ppState, inRate, outRate, len, rollf, alpha);
}

KelStatus kelsResamplePolyphaseFixedGetSize_32f(int inRate, int outRate, int len, Kel32f rollf, Kel32f alpha, int,
                                                int* pSize) {
    return getSize(inRate, outRate, len, rollf, alpha, pSize);
}
KelStatus kelsResamplePolyphaseFixedGetSize_16s(int inRate, int outRate, int len, Kel32f rollf, Kel32f alpha, int,
                                                int* pSize) {
    return getSize(inRate, outRate, len, rollf, alpha, pSize);
}

KelStatus kelsResamplePolyphaseFixedInit_32f(KelResamplePolyphaseFixed_32f* pState, int inRate, int outRate, int len,
                                             Kel32f rollf, Kel32f alpha, int) {
    return init(pState, inRate, outRate, len, rollf, alpha);
}
KelStatus kelsResamplePolyphaseFixedInit_16s(KelResamplePolyphaseFixed_16s* pState, int inRate, int outRate, int len,
                                             Kel32f rollf, Kel32f alpha, int) {
    return init(pState, inRate, outRate, len, rollf, alpha);
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
