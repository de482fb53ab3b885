// Samples on their way into and out of the sums of the resamplers: floats as they are, 16-bit samples as floats.
#pragma once

#include <cstddef>
#include <type_traits>

#include "core/scaling.h"
#include "core/simd/part_vector.h"
#include "core/simd/vec.h"
#include "core/vector/convert.h"
#include "kels/types.h"

namespace kels::resample {

inline Vec<Kel32f> loadSamples(const Kel32f* p) {
    return load(p);
}
inline Vec<Kel32f> loadSamples(const Kel16s* p) {
    return toFloat(loadInt(p));
}

// The first 0 < n < lanes<Kel32f> samples and zeros.
inline Vec<Kel32f> loadSamples(const Kel32f* p, std::size_t n) {
    return loadPart(p, n);
}
inline Vec<Kel32f> loadSamples(const Kel16s* p, std::size_t n) {
    return toFloat(PartVector(n).load(p));
}

// A filter value as it is stored, and as a factor of samples: 16-bit filters are Q15.
template <class T>
T storedTap(Kel64f h) {
    if constexpr (std::is_same_v<T, Kel16s>)
        return roundSaturate<Kel16s>(h * 32768);
    else
        return static_cast<Kel32f>(h);
}
inline Kel32f factorOf(Kel32f tap) {
    return tap;
}
inline Kel32f factorOf(Kel16s tap) {
    return static_cast<Kel32f>(tap) / 32768;
}

// dst[i] = sums[i] * gain, 16-bit samples rounded to nearest and saturated; inside a NearestScope.
inline void storeSamples(Kel32f* dst, const Kel32f* sums, std::size_t n, Kel32f gain) {
    const auto times = [=](const Vec<Kel32f>& v) { return Vec<Kel32f>(v * gain); };
    map(dst, n, times, 0.0f, sums);
}
inline void storeSamples(Kel16s* dst, Kel32f* sums, std::size_t n, Kel32f gain) {
    storeSamples(sums, sums, n, gain);
    convertToInt(sums, dst, n, 0, ToNearest());
}
inline void storeSample(Kel32f* dst, Kel32f sum, Kel32f gain) {
    *dst = sum * gain;
}
inline void storeSample(Kel16s* dst, Kel32f sum, Kel32f gain) {
    *dst = roundSaturate<Kel16s>(sum * gain);
}

}  // namespace kels::resample
