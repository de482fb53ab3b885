// Real transforms by a complex transform of half the length, and direct ones of up to eight points.
#pragma once

#include <cstddef>
#include <cstring>

#include "core/fft/lanes.h"

namespace kels {

enum class Direction { Forward, Inverse };

// The first and the last value of a spectrum, which are real.
struct SpectrumEnds {
    Kel32f dc, nyquist;
};

// ---- recombination -------------------------------------------------------------------------------------------------
// With z[n] = x[2n] + i x[2n+1] and Z its transform of M = N/2 points, for 0 < k < M
//   forward  X[k] = E + T,  X[M-k] = conj(E - T),  E = (Z[k] + conj Z[M-k]) / 2,  T = -i w^k (Z[k] - conj Z[M-k]) / 2
//   inverse  Z[k] = E + T,  Z[M-k] = conj(E - T),  E = X[k] + conj X[M-k],        T = i w^-k (X[k] - conj X[M-k])
// with w = e^(-2 pi i / N): only the sign of the cosine tells the two apart.

// A vector of k from i on meets one of M - k, in reverse: the block of units that begins at M - i - W, whose first lane
// belongs to the next step, and the first lane of the block at M - i.  Taking it so keeps all accesses to units aligned
// with those of the transform, whose fresh stores a straddling load would have to wait for.

template <Direction direction, class V>
struct Rotated {
    ComplexOf<V> low, high;
    Rotated(const ComplexOf<V>& a, const ComplexOf<V>& b, V cosine, const V& sine, const V& scale) {
        if constexpr (direction == Direction::Inverse) cosine = -cosine;
        const ComplexOf<V> y = {a.re * scale, a.im * scale};
        const ComplexOf<V> z = {b.re * scale, b.im * scale};
        const ComplexOf<V> sum = {y.re + z.re, y.im - z.im};
        const ComplexOf<V> difference = {y.re - z.re, y.im + z.im};
        const V re = mulSub(cosine, difference.im, sine * difference.re);
        const V im = mulAdd(cosine, difference.re, sine * difference.im);  // of -T
        low = {sum.re + re, sum.im - im};
        high = {sum.re - re, -(sum.im + im)};
    }
};

// Cosines and sines of 2 pi k / N for k = 0 .. M/2 - 1.
struct Rotation {
    const Kel32f* cosines;
    const Kel32f* sines;
};

template <int W>
inline Complex<W> reversedAfterFirst(const Complex<W>& v) {
    return {reversedAfterFirst(v.re), reversedAfterFirst(v.im)};
}
template <int W>
inline Complex<W> withFirst(const Complex<W>& first, const Complex<W>& rest) {
    return {withFirst(first.re, rest.re), withFirst(first.im, rest.im)};
}

// Units of Z[0 .. M-1] at dst become the pairs of X[1 .. M-1], X[1] at dst[firstPair], 1 or 2.  All is times 2 scale.
template <int W>
inline SpectrumEnds separate(std::size_t m, const Rotation& rotation, Kel32f scale, Kel32f* dst,
                             std::size_t firstPair) {
    const auto pairAt = [=](std::size_t k) { return dst + (2 * k + firstPair - 2); };
    const Floats<W> factor(scale);
    SpectrumEnds ends;
    Complex<W> previous = reversedAfterFirst<W>(loadUnit<W>(dst));
    for (std::size_t i = 0; i < m / 2; i += W) {
        const Complex<W> z = loadUnit<W>(dst + 2 * i);
        const Complex<W> block = reversedAfterFirst<W>(loadUnit<W>(dst + 2 * (m - i - W)));
        const Rotated<Direction::Forward, Floats<W>> x(z, withFirst<W>(previous, block),
                                                       loadFloats<W>(rotation.cosines + i),
                                                       loadFloats<W>(rotation.sines + i), factor);
        previous = block;
        if (i == 0) {
            Kel32f low[2 * W], high[2 * W];
            storePairs(low, x.low.re, x.low.im);
            storePairs(high, reversed(x.high.re), reversed(x.high.im));
            std::memcpy(pairAt(1), low + 2, (2 * W - 2) * sizeof(Kel32f));
            std::memcpy(pairAt(m - W + 1), high, (2 * W - 2) * sizeof(Kel32f));
            ends = {low[0], high[2 * W - 2]};
        } else {
            storePairs(pairAt(i), x.low.re, x.low.im);
            storePairs(pairAt(m - i - W + 1), reversed(x.high.re), reversed(x.high.im));
        }
    }
    pairAt(m / 2)[0] = 2 * scale * Kel32f(previous.re[0]);
    pairAt(m / 2)[1] = -2 * scale * Kel32f(previous.im[0]);
    return ends;
}

// The way back from Pack order to units of Z, imaginary parts first; all is times scale.
template <int W, class Sink>
inline void unite(std::size_t m, const Rotation& rotation, Kel32f scale, const Kel32f* src, Sink sink) {
    const Floats<W> factor(scale);
    const auto storeSwapped = [=](std::size_t i, const Complex<W>& v) { sink.store(i, {v.im, v.re}); };
    Complex<W> previous = {Floats<W>(0.0f), Floats<W>(0.0f)};
    for (std::size_t i = 0; i < m / 2; i += W) {
        Complex<W> x, y;
        if (i == 0) {  // the real ends, each where a pair would begin
            Floats<W> even, odd;
            loadPairs(src, even, odd);
            x = {withFirst(even, shiftedUp(odd)), withFirst(Floats<W>(0.0f), even)};
            loadPairs(src + 2 * (m - W), even, odd);
            y = {reversed(odd), withFirst(Floats<W>(0.0f), shiftedUp(reversed(even)))};
        } else {
            Complex<W> forwards;
            loadPairs(src + 2 * i - 1, x.re, x.im);
            loadPairs(src + 2 * (m - i - W) + 1, forwards.re, forwards.im);
            y = {reversed(forwards.re), reversed(forwards.im)};
        }
        const Rotated<Direction::Inverse, Floats<W>> z(x, y, loadFloats<W>(rotation.cosines + i),
                                                       loadFloats<W>(rotation.sines + i), factor);
        storeSwapped(i, z.low);
        const Complex<W> block = reversedAfterFirst<W>(z.high);
        if (i > 0) storeSwapped(m - i, withFirst<W>(block, previous));
        previous = block;
    }
    const Complex<W> middle = {Floats<W>(2 * scale * src[m - 1]), Floats<W>(-2 * scale * src[m])};
    storeSwapped(m / 2, withFirst<W>(middle, previous));
}

// ---- up to eight points --------------------------------------------------------------------------------------------
// In Pack order: the real value of frequency 0, pairs, the real value of the highest frequency.  In place too.

inline constexpr Kel32f kRootHalf = 0.70710678118654752440f;
inline constexpr Kel32f kRootTwo = 1.41421356237309504880f;

inline void forwardDirect(int order, const Kel32f* x, Kel32f* out, Kel32f factor) {
    switch (order) {
        case 0:
            out[0] = x[0] * factor;
            return;
        case 1: {
            const Kel32f a = x[0] * factor, b = x[1] * factor;
            out[0] = a + b;
            out[1] = a - b;
            return;
        }
        case 2: {
            const Kel32f a = x[0] * factor, b = x[1] * factor, c = x[2] * factor, d = x[3] * factor;
            out[0] = (a + c) + (b + d);
            out[1] = a - c;
            out[2] = d - b;
            out[3] = (a + c) - (b + d);
            return;
        }
        default: {
            Kel32f v[8];
            for (int i = 0; i < 8; ++i) v[i] = x[i] * factor;
            const Kel32f s04 = v[0] + v[4], d04 = v[0] - v[4], s26 = v[2] + v[6], d26 = v[2] - v[6];
            const Kel32f s15 = v[1] + v[5], d15 = v[1] - v[5], s37 = v[3] + v[7], d37 = v[3] - v[7];
            const Kel32f re = kRootHalf * (d15 - d37), im = kRootHalf * (d15 + d37);
            out[0] = (s04 + s26) + (s15 + s37);
            out[1] = d04 + re;
            out[2] = -(d26 + im);
            out[3] = s04 - s26;
            out[4] = s37 - s15;
            out[5] = d04 - re;
            out[6] = d26 - im;
            out[7] = (s04 + s26) - (s15 + s37);
            return;
        }
    }
}

inline void inverseDirect(int order, const Kel32f* x, Kel32f* out, Kel32f factor) {
    switch (order) {
        case 0:
        case 1:
            forwardDirect(order, x, out, factor);  // their own inverses
            return;
        case 2: {
            const Kel32f dc = x[0] * factor, re = 2 * (x[1] * factor), im = 2 * (x[2] * factor), top = x[3] * factor;
            out[0] = (dc + top) + re;
            out[1] = (dc - top) - im;
            out[2] = (dc + top) - re;
            out[3] = (dc - top) + im;
            return;
        }
        default: {
            Kel32f v[8];
            for (int i = 0; i < 8; ++i) v[i] = x[i] * factor;
            const Kel32f even = v[0] + v[7], odd = v[0] - v[7], re2 = 2 * v[3], im2 = 2 * v[4];
            const Kel32f t0 = 2 * (v[1] + v[5]), t2 = 2 * (v[6] - v[2]);
            const Kel32f t1 = kRootTwo * ((v[1] - v[2]) - (v[5] + v[6]));
            const Kel32f t3 = kRootTwo * ((v[5] - v[6]) - (v[1] + v[2]));
            out[0] = (even + re2) + t0;
            out[4] = (even + re2) - t0;
            out[2] = (even - re2) + t2;
            out[6] = (even - re2) - t2;
            out[1] = (odd - im2) + t1;
            out[5] = (odd - im2) - t1;
            out[3] = (odd + im2) + t3;
            out[7] = (odd + im2) - t3;
            return;
        }
    }
}

}  // namespace kels
