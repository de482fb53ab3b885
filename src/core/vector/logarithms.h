// Natural logarithms of integers, as scaled integers.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <limits>

#include "core/scaling.h"
#include "core/simd/elementary.h"
#include "core/simd/vec.h"
#include "core/vector/convert.h"
#include "kels/types.h"

namespace kels {

// round(ln(x)) of x > 0.
inline Kel32s roundedLogarithm(Kel32s x) {
    // The largest x for each result: e^(k + 1/2) rounded down.
    constexpr Kel32s kLargest[] = {1,         4,
                                   12,        33,
                                   90,        244,
                                   665,       1808,
                                   4914,      13359,
                                   36315,     98715,
                                   268337,    729416,
                                   1982759,   5389698,
                                   14650719,  39824784,
                                   108254987, 294267566,
                                   799902177, std::numeric_limits<Kel32s>::max()};
    // x >= 2^b and 177/256 < ln 2, so this begins at or below the result, and at most three steps below it.
    Kel32s k = (std::bit_width(static_cast<uint32_t>(x)) - 1) * 177 / 256;
    while (x > kLargest[k]) ++k;
    return k;
}

// ln(src) * 2^-scaleFactor, to the nearest, for scaleFactor < 0.
inline void scaledLogarithm(const Kel32s* src, Kel32s* dst, std::size_t len, int scaleFactor) {
    constexpr std::size_t kChunk = 128;
    constexpr Kel64f kNaN = std::numeric_limits<Kel64f>::quiet_NaN();  // becomes the smallest integer
    alignas(64) Kel64f logs[kChunk];
    const auto logarithmOf = [](const Vec<Kel64f>& x) { return logarithm(x); };
    const NearestScope scope;
    for (std::size_t i = 0; i < len; i += kChunk) {
        const std::size_t n = std::min(kChunk, len - i);
        for (std::size_t k = 0; k < n; ++k) logs[k] = src[i + k] > 0 ? src[i + k] : kNaN;
        map(logs, n, logarithmOf, 1.0, logs);
        convertToInt(logs, dst + i, n, scaleFactor, ToNearest());
    }
}

// The natural logarithm times 2^-scaleFactor; the smallest integer for what has none.  dst may be src.
inline KelStatus integerLogarithm(const Kel32s* src, Kel32s* dst, std::size_t len, int scaleFactor) {
    const Kel32s* const firstFault = std::find_if(src, src + len, [](Kel32s x) { return x <= 0; });
    const bool none = firstFault == src + len;
    const KelStatus status = none ? kelStatusOk : *firstFault == 0 ? kelStatusLogZero : kelStatusLogNegative;
    if (scaleFactor < 0) {
        scaledLogarithm(src, dst, len, scaleFactor);
        return status;
    }
    const int shift = std::min(scaleFactor, 31);
    for (std::size_t i = 0; i < len; ++i) {
        dst[i] = src[i] > 0 ? roundedLogarithm(src[i]) >> shift : std::numeric_limits<Kel32s>::min();
    }
    return status;
}

}  // namespace kels
