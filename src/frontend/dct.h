// The cosine transform with its lifter: the states, and how they are applied to a frame.
#pragma once

#include <algorithm>
#include <cstring>

#include "core/check.h"
#include "core/scaling.h"
#include "core/simd/row_sums.h"
#include "core/simd/vec.h"
#include "core/vector/convert.h"
#include "kels/dct.h"

// Row k of cosTab holds cos(pi * k * (j + 0.5) / lenDCT); there are lenCeps + 1 rows and as many weights.
struct KelDCTLifterState_32f {
    Kel32s lifterLen;  // of the sine lifter; -1 where the caller supplied the weights
    Kel32s lenDCT;
    Kel32s lenCeps;
    Kel32s withC0;
    Kel32f* lifter;
    Kel32f** cosTab;
};

struct KelDCTLifterState_16s {
    Kel32s lifterLen;
    Kel32s lenDCT;
    Kel32s lenCeps;
    Kel32s withC0;
    Kel32f* lifter;
    Kel32f* work;  // one frame of results, before they become 16-bit
    Kel32f** cosTab;
};

#if defined(__i386__)
static_assert(sizeof(KelDCTLifterState_32f) == 24 && sizeof(KelDCTLifterState_16s) == 28);
#endif

namespace kels::dct {

// sum[r] = the lanes of rows[r][0 .. n) . src, for R rows at once: each load of the source serves them all.  What is
// left at the end is taken from the last full vector of either side, of the source only the lanes not yet used.
template <int R>
inline void dotRows(const Kel32f* src, std::size_t n, const Kel32f* const (&row)[R], Vec<Kel32f> (&sum)[R]) {
    constexpr std::size_t w = lanes<Kel32f>;
    for (auto& s : sum) s = 0.0f;
    if (n < w) {
        const Vec<Kel32f> x = loadPart(src, n);
        for (int r = 0; r < R; ++r) sum[r] = loadPart(row[r], n) * x;
        return;
    }
    std::size_t j = 0;
    for (; j + w <= n; j += w) {
        const Vec<Kel32f> x = load(src + j);
        for (int r = 0; r < R; ++r) sum[r] = mulAdd(load(row[r] + j), x, sum[r]);
    }
    if (j < n) {
        const Vec<Kel32f> x = lastElements(load(src + n - w), n - j);
        for (int r = 0; r < R; ++r) sum[r] = mulAdd(load(row[r] + n - w), x, sum[r]);
    }
}

// Adds elements offset .. offset + n - 1 of the frame to the sums c1 .. cM and, behind them, c0.  The first elements
// begin the sums, and the last ones bring in the weights.
template <class State>
inline void addFrame(const State& state, const Kel32f* src, std::size_t n, std::size_t offset, Kel32f* dst) {
    const bool first = offset == 0;
    const bool last = offset + n == toSize(state.lenDCT);
    const auto put = [&](int place, int k, Kel32f sum) {
        if (!first) sum += dst[place];
        dst[place] = last ? sum * state.lifter[k] : sum;
    };
    const auto putOne = [&](int place, int k) {
        const Kel32f* const row[] = {state.cosTab[k] + offset};
        Vec<Kel32f> sum[1];
        dotRows(src, n, row, sum);
        put(place, k, stdx::reduce(sum[0]));
    };
    int k = 1;
    for (; k + 3 <= state.lenCeps; k += 4) {
        const Kel32f* const row[] = {state.cosTab[k] + offset, state.cosTab[k + 1] + offset,
                                     state.cosTab[k + 2] + offset, state.cosTab[k + 3] + offset};
        Vec<Kel32f> sum[4];
        Kel32f total[4];
        dotRows(src, n, row, sum);
        sumsOf4(sum[0], sum[1], sum[2], sum[3], total);
        for (int r = 0; r < 4; ++r) put(k - 1 + r, k + r, total[r]);
    }
    for (; k <= state.lenCeps; ++k) putOne(k - 1, k);
    if (state.withC0 != 0) putOne(state.lenCeps, 0);
}

// A frame of floats at once.
inline void transformFrame(const KelDCTLifterState_32f& state, const Kel32f* src, Kel32f* dst) {
    addFrame(state, src, toSize(state.lenDCT), 0, dst);
}

inline void toFloats(const Kel16s* src, Kel32f* dst, std::size_t n) {
    convertWidening(src, dst, n);
}
// Not every 32-bit integer is a float: those between two go to the nearest in every rounding mode.
inline void toFloats(const Kel32s* src, Kel32f* dst, std::size_t n) {
    const NearestScope nearest;
    convertWidening(src, dst, n);
}

// A frame of integers of any length, which passes through a short float buffer.
template <class Src>
void transformFrame(const KelDCTLifterState_16s* pState, const Src* src, Kel16s* dst, int scaleFactor) {
    constexpr std::size_t kPart = 256;
    KelDCTLifterState_16s state;  // a state in a caller's buffer may lie at an odd address
    std::memcpy(&state, static_cast<const void*>(pState), sizeof state);
    Kel32f part[kPart];
    const std::size_t len = toSize(state.lenDCT);
    for (std::size_t j = 0; j < len; j += kPart) {
        const std::size_t n = std::min(kPart, len - j);
        toFloats(src + j, part, n);
        addFrame(state, part, n, j, state.work);
    }
    const NearestScope nearest;
    convertToInt(state.work, dst, toSize(state.lenCeps + state.withC0), scaleFactor, ToNearest());
}

}  // namespace kels::dct
