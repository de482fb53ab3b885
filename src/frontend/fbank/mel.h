// The mel scale, in single precision.
#pragma once

#include <cmath>
#include <cstddef>

#include "kels/types.h"

namespace kels::fbank {

// Single-precision logarithm and exponential through the double ones: rounded alike by every libm.
inline Kel32f natLog(Kel32f v) {
    return static_cast<Kel32f>(std::log(static_cast<Kel64f>(v)));
}
inline Kel32f natExp(Kel32f v) {
    return static_cast<Kel32f>(std::exp(static_cast<Kel64f>(v)));
}

struct MelScale {
    Kel32f melMul, melDiv;

    Kel32f ofHertz(Kel32f f) const { return melMul * natLog(1 + f / melDiv); }
    Kel32f ratio(Kel32f mel) const { return natExp(mel / melMul) - 1; }  // frequency / melDiv
};

// Frequencies to mel and back; dst may be src.
inline void linearToMel(const Kel32f* src, Kel32f* dst, std::size_t len, Kel32f melMul, Kel32f melDiv) {
    const Kel32f reciprocal = 1 / melDiv;
    for (std::size_t i = 0; i < len; ++i) dst[i] = natLog(src[i] * reciprocal + 1) * melMul;
}
inline void melToLinear(const Kel32f* src, Kel32f* dst, std::size_t len, Kel32f melMul, Kel32f melDiv) {
    const Kel32f reciprocal = 1 / melMul;
    for (std::size_t i = 0; i < len; ++i) dst[i] = (natExp(src[i] * reciprocal) - 1) * melDiv;
}

}  // namespace kels::fbank
