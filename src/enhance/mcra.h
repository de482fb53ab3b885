// Minima-controlled recursive averaging of the noise in a power spectrum.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <type_traits>

#include "core/check.h"
#include "core/layout.h"
#include "core/scaling.h"
#include "core/simd/vec.h"
#include "core/vector/fill_copy.h"
#include "kels/enhance.h"

struct KelMCRAState_32s {
    Kel32s sampleRate, fftLen, orderBits, reserved, hop, minWindow, frameCount, firstFrame;
    Kel32s alphaD, alphaP, alphaS, delta;
    Kel32s *presence, *smoothed, *minimum, *tempMinimum;
};
static_assert(sizeof(KelMCRAState_32s) == sizeof(KelMCRAState_32f));
#if defined(__i386__)
static_assert(sizeof(KelMCRAState_32f) == 64);
#endif

namespace kels::enhance {

// ---- the state -----------------------------------------------------------------------------------------------------

inline constexpr int kAlphaBits = 30, kDeltaBits = 28;

inline void storeCoefficient(Kel64f value, int, Kel32f& field) {
    field = static_cast<Kel32f>(value);
}
inline void storeCoefficient(Kel64f value, int fractionBits, Kel32s& field) {
    const NearestScope scope;
    field = roundSaturate<Kel32s>(value * exactPowerOfTwo(fractionBits));
}

// The four arrays of 4-byte elements behind the record.
template <class State>
void arrange(Layout& layout, int fftLen, State& state) {
    using T = std::remove_pointer_t<decltype(state.presence)>;
    layout.take<State>(1, alignof(State));
    for (T** const array : {&state.presence, &state.smoothed, &state.minimum, &state.tempMinimum})
        *array = layout.take<T>(fftLen / 2 + 1, alignof(T));
}

// In bytes: what is arranged, and a word to spare, for the published formula counts one.
inline int mcraSize(int fftLen) {
    KelMCRAState_32f unplaced;
    Layout layout;
    arrange(layout, fftLen, unplaced);
    return static_cast<int>(layout.bytes(alignof(KelMCRAState_32f))) + 4;
}

// All but minWindow, which the two ways to begin compute differently.
template <class State>
void beginMcra(State& state, int sampleRate, int fftLen, int hop) {
    const Kel64f r = 125.0 * hop / sampleRate;
    state.sampleRate = sampleRate;
    state.fftLen = fftLen;
    state.orderBits = static_cast<Kel32s>(std::bit_width(static_cast<unsigned>(fftLen / 2)));
    state.reserved = 0;
    state.hop = hop;
    state.frameCount = 0;
    state.firstFrame = 1;
    storeCoefficient(std::pow(0.7, r), kAlphaBits, state.alphaD);
    storeCoefficient(std::pow(0.2, r), kAlphaBits, state.alphaP);
    storeCoefficient(std::pow(0.8, r), kAlphaBits, state.alphaS);
    storeCoefficient(5.0, kDeltaBits, state.delta);
    Layout layout(&state);
    arrange(layout, fftLen, state);
}

template <class State>
void initMcra(State& state, int sampleRate, int fftLen) {
    beginMcra(state, sampleRate, fftLen, fftLen / 2);
    state.minWindow = static_cast<int>(125 * (sampleRate * 0.008 / (1 << (state.orderBits - 1))));
}

template <class State>
void initMcra(State& state, int sampleRate, int fftLen, int hop) {
    beginMcra(state, sampleRate, fftLen, hop);
    state.minWindow = static_cast<int>(sampleRate * 0.008 / hop * 125);
}

// ---- a frame -------------------------------------------------------------------------------------------------------

template <class State, class T>
void firstUpdate(const T* power, State& state, T* noise, std::size_t bins) {
    for (T* const dst : {noise, state.smoothed, state.minimum, state.tempMinimum}) copy(power, dst, bins);
    zero(state.presence, bins);
}

// keep * from + share * to, where keep + share is 1: `from` is moved toward `to`.  Moving by a share of the difference
// leaves equal values equal and rounds the least where they are close.  Where `to` is far below, little is left of that
// difference once it is taken from `from`, and the two shares are added instead.
inline Vec<Kel32f> moved(const Vec<Kel32f>& from, const Vec<Kel32f>& to, const Vec<Kel32f>& keep,
                         const Vec<Kel32f>& share) {
    Vec<Kel32f> result = mulAdd(share, to - from, from);
    stdx::where(to < from * 0.5f, result) = mulAdd(share, to, Vec<Kel32f>(keep * from));
    return result;
}

// kRenew: the search for the minimum begins anew.
template <bool kRenew>
void update(const Kel32f* power, const KelMCRAState_32f& state, Kel32f* noise, std::size_t bins) {
    using V = Vec<Kel32f>;
    const V keepS(state.alphaS), keepP(state.alphaP), keepD(state.alphaD), delta(state.delta);
    const V shareS = 1 - keepS, shareP = 1 - keepP, shareD = 1 - keepD;
    // Copied, for the compiler must take it that vectors may be stored over the state.
    Kel32f *const smoothed = state.smoothed, *const minimum = state.minimum, *const tempMinimum = state.tempMinimum;
    Kel32f* const presences = state.presence;
    const auto step = [=](std::size_t i, auto get, auto put) {
        const V p = get(power + i), n = get(noise + i);
        V s = get(smoothed + i), least = get(minimum + i), next = get(tempMinimum + i);
        V presence = get(presences + i);
        s = moved(s, p, keepS, shareS);
        least = lesserOf(s, kRenew ? next : least);
        next = kRenew ? s : lesserOf(s, next);
        V speech(0.0f);
        stdx::where(s > delta * least, speech) = 1.0f;
        presence = moved(presence, speech, keepP, shareP);
        put(smoothed + i, s);
        put(minimum + i, least);
        put(tempMinimum + i, next);
        put(presences + i, presence);
        put(noise + i, moved(n, p, mulAdd(shareD, presence, keepD), shareD * (1.0f - presence)));
    };
    constexpr std::size_t w = lanes<Kel32f>;
    std::size_t i = 0;
    const auto get = [](const Kel32f* p) { return load(p); };
    const auto put = [](Kel32f* p, const V& v) { store(p, v); };
    for (; i + w <= bins; i += w) step(i, get, put);
    const std::size_t rest = bins - i;
    if (rest == 0) return;
    const auto getRest = [=](const Kel32f* p) { return loadPart(p, rest); };
    const auto putRest = [=](Kel32f* p, const V& v) { storePart(p, v, rest); };
    step(i, getRest, putRest);
}

// from + share * (to - from), share in Q30.
inline Kel32s moved(Kel32s from, Kel32s to, Kel32s share) {
    return static_cast<Kel32s>(from + shiftHalfEvenInRange((int64_t{to} - from) * share, kAlphaBits));
}

template <bool kRenew>
void update(const Kel32s* power, const KelMCRAState_32s& state, Kel32s* noise, std::size_t bins) {
    constexpr Kel32s kOne = 1 << kAlphaBits;
    for (std::size_t i = 0; i < bins; ++i) {
        const Kel32s s = moved(state.smoothed[i], power[i], kOne - state.alphaS);
        const Kel32s least = std::min(s, kRenew ? state.tempMinimum[i] : state.minimum[i]);
        const bool speech = int64_t{s} << kDeltaBits > int64_t{state.delta} * least;
        const Kel32s presence = moved(state.presence[i], speech ? kOne : 0, kOne - state.alphaP);
        state.smoothed[i] = s;
        state.minimum[i] = least;
        state.tempMinimum[i] = kRenew ? s : std::min(s, state.tempMinimum[i]);
        state.presence[i] = presence;
        noise[i] = moved(noise[i], power[i], moved(0, kOne - state.alphaD, kOne - presence));
    }
}

template <class State, class T>
void updateNoise(const T* power, State& state, T* noise) {
    const std::size_t bins = toSize(state.fftLen / 2 + 1);
    if (state.firstFrame != 0) {
        firstUpdate(power, state, noise, bins);
    } else if (state.frameCount == state.minWindow) {
        update<true>(power, state, noise, bins);
        state.frameCount = 0;
    } else {
        update<false>(power, state, noise, bins);
    }
    ++state.frameCount;
    state.firstFrame = 0;
}

}  // namespace kels::enhance
