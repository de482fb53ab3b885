// Products of spectra in Pack order.
#pragma once

#include <cstddef>

#include "core/fft/lanes.h"

namespace kels {

// srcDst * conj(src): a real first value, pairs, and for an even length a real last value.
inline void multiplyPackedConj(const Kel32f* src, Kel32f* srcDst, std::size_t len) {
    constexpr int W = kWidestFloats;
    const std::size_t pairs = (len - 1) / 2;
    srcDst[0] *= src[0];
    if (len % 2 == 0) srcDst[len - 1] *= src[len - 1];
    const Kel32f* const factors = src + 1;
    Kel32f* const values = srcDst + 1;
    const auto multiply = [=]<int width>(std::integral_constant<int, width>, std::size_t i) {
        const Complex<width> b = ConstPairs<width>{factors}.load(i);
        const Pairs<width> at{values};
        at.store(i, at.load(i) * Complex<width>{b.re, -b.im});
    };
    std::size_t i = 0;
    for (; i + W <= pairs; i += W) multiply(std::integral_constant<int, W>(), i);
    for (; i < pairs; ++i) multiply(std::integral_constant<int, 1>(), i);
}

}  // namespace kels
