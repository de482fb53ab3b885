// Autocorrelation of a windowed frame, freed of what the window does to it.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

#include "core/check.h"
#include "core/fft/autocorrelation.h"
#include "core/memory.h"
#include "core/simd/map.h"
#include "frontend/pitch/lag_sums.h"
#include "kels/types.h"

namespace kels::pitch {

// What is left of the autocorrelation r at lag k when that of the window is taken out.
class WindowRemoval {
  public:
    WindowRemoval(const Kel32f* window, Kel64f energy) : window_(window), energy_(energy) {}

    Kel32f operator()(Kel64f r, std::size_t k) {
        if (energy_ == 0) return 0;
        if (window_[k] == 0) {
            constexpr Kel32f kInfinity = std::numeric_limits<Kel32f>::infinity();
            warnings_.note(kelStatusDivByZero);
            const Kel64f sign = r * window_[0];
            return sign > 0 ? kInfinity : sign < 0 ? -kInfinity : std::numeric_limits<Kel32f>::quiet_NaN();
        }
        return static_cast<Kel32f>((r / energy_) * (Kel64f{window_[0]} / window_[k]));
    }
    KelStatus status() const { return warnings_.status(); }

  private:
    const Kel32f* window_;
    Kel64f energy_;
    FirstWarning warnings_;
};

inline KelStatus periodicityBySums(const Kel32f* src, std::size_t len, const Kel32f* window, Kel32f* dst,
                                   std::size_t minLag, std::size_t maxLag) {
    WindowRemoval removal(window, energy(src, len));
    std::array<Kel64f, kLags> r;
    for (std::size_t k = minLag; k <= maxLag;) {
        // The last lag of a group has the fewest products; the others have some more of their own.
        const std::size_t n = std::min(kLags, maxLag - k + 1), shared = len - (k + n - 1);
        correlate(src, src + k, shared, n, r.data());
        for (std::size_t j = 0; j < n; ++j, ++k) {
            for (std::size_t i = shared; i + k < len; ++i) r[j] += Kel64f{src[i]} * src[i + k];
            *dst++ = removal(r[j], k);
        }
    }
    return removal.status();
}

// The transform is of single precision, so the largest sample is brought to 1 .. 2, by a power of two.
inline KelStatus periodicityByTransform(const Kel32f* src, int len, const Kel32f* window, Kel32f* dst, int minLag,
                                        int maxLag) {
    const std::size_t n = toSize(len);
    Scratch<Kel32f, 1> frame(len), r(int64_t{maxLag} + 1);
    if (frame.failed() || r.failed()) return kelStatusNoMemory;
    Kel32f largest = 0;
    for (std::size_t i = 0; i < n; ++i) largest = std::max(largest, std::fabs(src[i]));
    const int exponent = std::isfinite(largest) && largest > 0 ? std::ilogb(largest) : 0;
    // Two factors, for the reciprocal of the smallest float is none.
    const Kel32f half = std::ldexp(1.0f, -exponent / 2), rest = std::ldexp(1.0f, -exponent + exponent / 2);
    const auto scaled = [=](const Vec<Kel32f>& x) { return x * half * rest; };
    map(frame.data(), n, scaled, 0.0f, src);
    if (autocorrelate(frame.data(), len, r.data(), maxLag + 1) != kelStatusOk) return kelStatusNoMemory;
    WindowRemoval removal(window, r[0]);
    for (std::size_t k = toSize(minLag); k <= toSize(maxLag); ++k) *dst++ = removal(r[k], k);
    return removal.status();
}

inline KelStatus periodicity(const Kel32f* src, int len, const Kel32f* window, Kel32f* dst, int minLag, int maxLag) {
    if (maxLag - minLag < kFirstFftLags) {
        return periodicityBySums(src, toSize(len), window, dst, toSize(minLag), toSize(maxLag));
    }
    return periodicityByTransform(src, len, window, dst, minLag, maxLag);
}

}  // namespace kels::pitch
