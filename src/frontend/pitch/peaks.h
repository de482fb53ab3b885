// The peaks of a curve.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/memory.h"
#include "core/vector/fill_copy.h"
#include "kels/types.h"

namespace kels::pitch {

// Flags the middle of each run of equal values that lies above both its neighbours and is not below the threshold,
// unless one nearer than minDist is higher, or as high and earlier.
//
// The peaks that have none higher behind them so far stand on a stack, which therefore descends.  A new one ends the
// wait of those below it; whether it is the higher one that a peak is dropped for depends on the nearest one alone.
inline KelStatus findPeaks(const Kel32f* src, Kel8u* dst, std::size_t len, Kel32f threshold, std::size_t minDist) {
    constexpr std::size_t kStackPeaks = 1024;
    Scratch<uint16_t, kStackPeaks> waiting(static_cast<int64_t>(len / 2 + 1));
    if (waiting.failed()) return kelStatusNoMemory;
    std::size_t count = 0;
    zero(dst, len);
    for (std::size_t first = 1; first + 1 < len;) {
        std::size_t behind = first + 1;
        while (behind < len && src[behind] == src[first]) ++behind;
        const Kel32f value = src[first];
        if (behind < len && src[first - 1] < value && src[behind] < value && value >= threshold) {
            const std::size_t place = first + (behind - 1 - first) / 2;
            for (; count > 0 && src[waiting[count - 1]] < value; --count) {
                if (place - waiting[count - 1] < minDist) dst[waiting[count - 1]] = 0;
            }
            dst[place] = count == 0 || place - waiting[count - 1] >= minDist ? 1 : 0;
            waiting[count++] = static_cast<uint16_t>(place);
        }
        first = behind;
    }
    return kelStatusOk;
}

}  // namespace kels::pitch
