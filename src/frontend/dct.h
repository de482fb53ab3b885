// The cosine transform with its lifter: the states, and the kernel that all of them are applied with.
#pragma once

#include <cstring>

#include "core/simd.h"
#include "kels/dct.h"
#include "kels/types.h"

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

namespace kels {

// dst[r] = (add ? dst[r] : 0) + rows[r][0 .. n) . src for R consecutive rows: each load of the source serves them all.
template <int R>
inline void dotRows(const Kel32f* src, std::size_t n, const Kel32f* const* rows, std::size_t offset, Kel32f* dst,
                    bool add) {
    constexpr std::size_t w = lanes<Kel32f>;
    const Kel32f* row[R];
    Vec<Kel32f> sum[R];
    for (int r = 0; r < R; ++r) {
        row[r] = rows[r] + offset;
        sum[r] = 0.0f;
    }
    std::size_t j = 0;
    for (; j + w <= n; j += w) {
        const Vec<Kel32f> x = load(src + j);
        for (int r = 0; r < R; ++r) sum[r] = mulAdd(load(row[r] + j), x, sum[r]);
    }
    if (j < n) {
        const Vec<Kel32f> x = loadPart(src + j, n - j);
        for (int r = 0; r < R; ++r) sum[r] = mulAdd(loadPart(row[r] + j, n - j), x, sum[r]);
    }
    for (int r = 0; r < R; ++r) dst[r] = (add ? dst[r] : 0) + stdx::reduce(sum[r]);
}

// Elements offset .. offset + n of the frame into the sums c1 .. cM and, behind them, c0.
template <class State>
inline void dotAll(const State& state, const Kel32f* src, std::size_t n, std::size_t offset, Kel32f* dst) {
    const bool add = offset > 0;
    int k = 1;
    for (; k + 4 <= state.lenCeps + 1; k += 4) dotRows<4>(src, n, state.cosTab + k, offset, dst + k - 1, add);
    for (; k <= state.lenCeps; ++k) dotRows<1>(src, n, state.cosTab + k, offset, dst + k - 1, add);
    if (state.withC0 != 0) dotRows<1>(src, n, state.cosTab, offset, dst + state.lenCeps, add);
}

// The weights onto the sums.
template <class State>
inline void liftAll(const State& state, Kel32f* dst) {
    map(
        dst, static_cast<std::size_t>(state.lenCeps), [](auto x, auto weight) { return x * weight; }, 0.0f, dst,
        state.lifter + 1);
    if (state.withC0 != 0) dst[state.lenCeps] *= state.lifter[0];
}

}  // namespace kels
