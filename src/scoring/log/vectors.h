// Addition, subtraction and summation of vectors of logarithms.
#pragma once

#include <algorithm>
#include <cstddef>

#include "core/scaling.h"
#include "core/simd/elementary.h"
#include "core/vector/convert.h"
#include "scoring/log/add.h"

namespace kels::log {

// ---- addition ------------------------------------------------------------------------------------------------------

inline void logAddVectorFast(const Kel32f* src, Kel32f* srcDst, std::size_t len) {
    const auto add = [](const auto& a, const auto& b) { return logAddFast(a, b); };
    map(srcDst, len, add, 0.0f, src, srcDst);
}
inline void logAddVector(const Kel32f* src, Kel32f* srcDst, std::size_t len) {
    const auto add = [](const auto& a, const auto& b) { return logAddAccurate(a, b); };
    map(srcDst, len, add, 0.0f, src, srcDst);
}
inline void logAddVector(const Kel64f* src, Kel64f* srcDst, std::size_t len) {
    std::size_t i = 0;
    for (; i + kLogAddBlock <= len; i += kLogAddBlock) logAddBlock(src + i, srcDst + i);
    if (i == len) return;
    Kel64f lastSrc[kLogAddBlock] = {}, last[kLogAddBlock] = {};
    std::copy(src + i, src + len, lastSrc);
    std::copy(srcDst + i, srcDst + len, last);
    logAddBlock(lastSrc, last);
    std::copy(last, last + (len - i), srcDst + i);
}

// Hints other than the three of the interface compute nothing.
inline void logAddByHint(const Kel32f* src, Kel32f* srcDst, std::size_t len, int hint) {
    if (hint == kelHintFast) logAddVectorFast(src, srcDst, len);
    if (hint == kelHintNone || hint == kelHintAccurate) logAddVector(src, srcDst, len);
}
inline void logAddByHint(const Kel64f* src, Kel64f* srcDst, std::size_t len, int hint) {
    if (hint == kelHintNone || hint == kelHintFast || hint == kelHintAccurate) logAddVector(src, srcDst, len);
}

// ---- integers ------------------------------------------------------------------------------------------------------

// dst[i] = src[i] * 2^-scaleFactor, rounded to single precision.
template <class T>
void toLogs(const T* src, Kel32f* dst, std::size_t len, const SplitMultiplier& m) {
    convertWidening(src, dst, len);
    const auto scale = [&](const Vec<Kel32f>& x) { return x * m.first * m.second; };
    map(dst, len, scale, 0.0f, dst);
}

// An integer n stands for n * 2^-scaleFactor.  With every hint, srcDst becomes floats and then integers again.
template <class T>
void logAddScaled(const T* src, T* srcDst, std::size_t len, int scaleFactor, int hint) {
    constexpr std::size_t kChunk = 128;
    alignas(64) Kel32f a[kChunk], b[kChunk];
    const int places = std::clamp(scaleFactor, -256, 256);  // as good as any beyond, and its negative exists
    const SplitMultiplier multiplier(places);
    const NearestScope scope;
    for (std::size_t i = 0; i < len; i += kChunk) {
        const std::size_t n = std::min(kChunk, len - i);
        toLogs(src + i, a, n, multiplier);
        toLogs(srcDst + i, b, n, multiplier);
        logAddByHint(a, b, n, hint);
        convertToInt(b, srcDst + i, n, -places, TowardZero());
    }
}

// ---- subtraction ---------------------------------------------------------------------------------------------------

// True when an element of b is not smaller than that of a: there is no logarithm of the difference.
template <class T>
bool anyNotSmaller(const T* b, const T* a, std::size_t len) {
    // Looking whether to stop after every block only lets the comparisons run in vectors.
    constexpr std::size_t kBlock = 256;
    for (std::size_t i = 0; i < len; i += kBlock) {
        const std::size_t end = std::min(i + kBlock, len);
        int found = 0;
        for (std::size_t k = i; k < end; ++k) found |= b[k] >= a[k];
        if (found != 0) return true;
    }
    return false;
}

// What differs between the precisions of a logarithm kept as T.  Below `lowest` there is only the logarithm of zero.
template <class T>
struct LogSubtraction;
template <>
struct LogSubtraction<Kel32f> {
    static constexpr Kel64f cutOff = kLogAddCutOff32, tiny = 1.0057e-37, logZero = kLogZero32, lowest = kLogZero32;
};
template <>
struct LogSubtraction<Kel64f> {
    static constexpr Kel64f cutOff = kLogAddCutOff64, tiny = 2.45e-308, logZero = kLogZero64,
                            lowest = kBelowIsLogZero64;
};

// ln(e^a - e^b), b < a, by the rule for logarithms kept as T, in double precision; inside a NearestScope.
template <class T>
Vec<Kel64f> logSubtract(const Vec<Kel64f>& a, const Vec<Kel64f>& b) {
    using V = Vec<Kel64f>;
    using Rule = LogSubtraction<T>;
    const V d = b - a;
    const V rest = 1.0 - exponentialNotAbove1(d);
    V result = a + logarithm(greaterOf(V(Rule::tiny), rest));
    stdx::where(rest <= Rule::tiny, result) = Rule::logZero;
    V larger = a;
    stdx::where(a < Rule::lowest, larger) = Rule::logZero;
    stdx::where(d < Rule::cutOff, result) = larger;
    return result;
}

inline void logSubtractVector(const Kel64f* src, Kel64f* srcDst, std::size_t len) {
    using V = Vec<Kel64f>;
    const NearestScope scope;
    const auto subtract = [](const V& a, const V& b) { return logSubtract<Kel64f>(a, b); };
    map(srcDst, len, subtract, 0.0, src, srcDst);
}
inline void logSubtractVector(const Kel32f* src, Kel32f* srcDst, std::size_t len) {
    using V = Vec<Kel32f>;
    const NearestScope scope;
    const auto subtract = [](const V& a, const V& b) {
        const auto [aLow, aHigh] = widen(a);
        const auto [bLow, bHigh] = widen(b);
        return narrow(logSubtract<Kel32f>(aLow, bLow), logSubtract<Kel32f>(aHigh, bHigh));
    };
    map(srcDst, len, subtract, 0.0f, src, srcDst);
}

template <class T>
void logSubtractScaled(const T* src, T* srcDst, std::size_t len, int scaleFactor) {
    using V = Vec<Kel64f>;
    constexpr std::size_t kChunk = 128;
    alignas(64) Kel64f a[kChunk], b[kChunk];
    const Kel64f multiplier = scaleMultiplier(scaleFactor);
    const Kel64f back = 1.0 / multiplier;
    const auto subtract = [](const V& x, const V& y) { return logSubtract<Kel32f>(x, y); };
    const NearestScope scope;
    for (std::size_t i = 0; i < len; i += kChunk) {
        const std::size_t n = std::min(kChunk, len - i);
        convertScaledUp(src + i, a, n, multiplier);
        convertScaledUp(srcDst + i, b, n, multiplier);
        map(b, n, subtract, 0.0, a, b);
        for (std::size_t k = 0; k < n; ++k) srcDst[i + k] = truncateSaturate<T>(b[k] * back);
    }
}

// ---- summation -----------------------------------------------------------------------------------------------------

// *pSum may be an element of src that is still to come: in single precision every intermediate sum is stored.
inline void logSum(const Kel32f* src, Kel32f* pSum, std::size_t len) {
    Kel32f sum = src[0];
    *pSum = sum;
    for (std::size_t i = 1; i < len; ++i) {
        sum = logAdd(sum, src[i]);
        *pSum = sum;
    }
}
inline void logSum(const Kel64f* src, Kel64f* pSum, std::size_t len) {
    Kel64f sum = src[0];
    *pSum = sum;
    for (std::size_t i = 1; i < len; ++i) sum = logAdd(sum, src[i]);
    *pSum = sum;
}

// A single element is copied as it is.
template <class T>
void logSumScaled(const T* src, T* pSum, std::size_t len, int scaleFactor) {
    const T first = src[0];
    *pSum = first;
    if (len == 1) return;
    const Kel64f multiplier = scaleMultiplier(scaleFactor);
    const auto asLog = [=](T v) { return static_cast<Kel32f>(static_cast<Kel32f>(v) * multiplier); };
    const NearestScope scope;
    Kel32f sum = asLog(first);
    for (std::size_t i = 1; i < len; ++i) sum = logAdd(sum, asLog(src[i]));
    *pSum = truncateSaturate<T>(sum / multiplier);
}

}  // namespace kels::log
