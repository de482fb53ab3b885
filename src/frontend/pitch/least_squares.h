// How much of a frame's energy the periodic signal of a period explains that is closest to the frame.
#pragma once

#include <algorithm>
#include <cstddef>

#include "core/memory.h"
#include "core/simd/permute.h"
#include "core/vector/convert.h"
#include "frontend/pitch/lag_sums.h"
#include "kels/types.h"

namespace kels::pitch {

// The value for one period, of a frame with kWide readable places behind it.  The samples of a phase stand a period
// apart; those of neighbouring phases side by side, so that a vector holds as many phases.
inline Kel32f leastSquares(const Kel64f* frame, std::size_t len, std::size_t period) {
    Kel64f explained = 0, whole = 0;
    // Of the phases from..to, which have `count` samples each.
    const auto addPhases = [&](std::size_t from, std::size_t to, std::size_t count) {
        if (count < 2) return;
        Wide above(0.0), energy(0.0);
        for (std::size_t i = from; i < to; i += kWide) {
            Wide sum(0.0), squares(0.0);
            for (std::size_t j = 0; j < count; ++j) {
                const Wide x = load(frame + i + j * period);
                sum += x;
                squares = mulAdd(x, x, squares);
            }
            Wide beyond = sum * sum - squares;
            if (to - i < kWide) {
                beyond = firstElements(beyond, to - i);
                squares = firstElements(squares, to - i);
            }
            above += beyond;
            energy += squares;
        }
        const auto k = static_cast<Kel64f>(count);
        explained += stdx::reduce(above) / k;
        whole += stdx::reduce(energy) * ((k - 1) / k);
    };
    const std::size_t count = len / period, longer = len % period;
    addPhases(0, longer, count + 1);
    addPhases(longer, period, count);
    if (whole == 0) return 0;
    return std::clamp(static_cast<Kel32f>(explained / whole), -1.0f, 1.0f);
}

template <class T>
KelStatus leastSquares(const T* src, std::size_t len, Kel32f* dst, std::size_t minLag, std::size_t maxLag) {
    constexpr std::size_t kStackSamples = 1024;
    Scratch<Kel64f, kStackSamples + kWide> frame(static_cast<int64_t>(len) + int64_t{kWide});
    if (frame.failed()) return kelStatusNoMemory;
    convertWidening(src, frame.data(), len);
    std::fill_n(frame.data() + len, kWide, 0.0);
    for (std::size_t period = minLag; period <= maxLag; ++period) *dst++ = leastSquares(frame.data(), len, period);
    return kelStatusOk;
}

}  // namespace kels::pitch
