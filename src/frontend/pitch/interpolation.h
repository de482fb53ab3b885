// The coefficient between two neighbouring lags.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

#include "frontend/pitch/lag_sums.h"
#include "kels/types.h"

namespace kels::pitch {

// The sums over three windows x, y, z that the interpolation needs.  Differences of y and z are taken sample by sample,
// where they do not cancel.
struct WindowSums {
    Kel64f xx, xy, xz, yy, yz, zz;
    Kel64f yDown, zUp, xUp;  // sums of y (y - z), z (z - y), x (z - y)
};

template <class T>
WindowSums windowSums(const T* x, const T* y, const T* z, std::size_t len) {
    constexpr std::size_t kBlock = std::size_t{1} << 20;  // in which sums of 16-bit samples are exact
    std::array<Sum<T>, 9> sums{};
    const auto addTerms = [](auto& sum, const auto& a, const auto& b, const auto& c) {
        const auto up = c - b;
        const std::array terms = {a * a, a * b, a * c, b * b, b * c, c * c, b * -up, c * up, a * up};
        for (std::size_t s = 0; s < 9; ++s) sum[s] += terms[s];
    };
    const auto wideOne = [](T v) { return static_cast<Kel64f>(v); };
    for (std::size_t i = 0; i < len;) {
        const std::size_t end = std::min(len, i + kBlock);
        std::array<Wide, 9> wide{};
        std::array<Kel64f, 9> rest{};
        for (; i + kWide <= end; i += kWide) addTerms(wide, loadWide(x + i), loadWide(y + i), loadWide(z + i));
        for (; i < end; ++i) addTerms(rest, wideOne(x[i]), wideOne(y[i]), wideOne(z[i]));
        for (std::size_t s = 0; s < 9; ++s) sums[s] += static_cast<Sum<T>>(stdx::reduce(wide[s]) + rest[s]);
    }
    const auto sum = [&](std::size_t s) { return static_cast<Kel64f>(sums[s]); };
    return {sum(0), sum(1), sum(2), sum(3), sum(4), sum(5), sum(6), sum(7), sum(8)};
}

// Where between y, at 0, and z, at 1, the window (1 - f) y + f z is most like x or least, and how like it is.
struct Point {
    Kel32f place, coefficient;
    KelStatus status;
};

inline Point stationaryPoint(const WindowSums& s) {
    const Kel64f n = s.xz * s.yDown + s.yz * s.xUp;
    const Kel64f d = s.xz * s.yDown + s.xy * s.zUp;
    if (d == 0) {
        constexpr Kel32f kInfinity = std::numeric_limits<Kel32f>::infinity();
        const Kel32f none = n > 0 ? kInfinity : n < 0 ? -kInfinity : std::numeric_limits<Kel32f>::quiet_NaN();
        return {none, none, kelStatusDivByZero};
    }
    // The two weights over a common positive factor, which the coefficient does not depend on: however far away the
    // point is, nothing overflows.
    const Kel64f unit = std::copysign(std::max(std::fabs(n), std::fabs(d)), d);
    const Kel64f v = (d - n) / unit, w = n / unit;
    const Kel64f energy = v * v * s.yy + 2 * v * w * s.yz + w * w * s.zz;
    const Kel64f product = v * s.xy + w * s.xz;
    // Rounding may leave nothing of a window that nearly vanishes, or less.
    const bool vanishes = energy * s.xx <= 0;
    const auto like = vanishes ? 0.0f : static_cast<Kel32f>(product / std::sqrt(s.xx * energy));
    return {static_cast<Kel32f>(n / d), std::clamp(like, -1.0f, 1.0f), kelStatusOk};
}

}  // namespace kels::pitch
