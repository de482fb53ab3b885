// Real transforms by a complex transform of half the length, and direct ones of up to eight points.
#pragma once

#include <cstddef>

#include "core/fft_lanes.h"

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

// Indices 1 .. M-1, both ends towards the middle; the last step meets M/2 from both sides.  `scale` multiplies what is
// read.  Source and sink may be the same array, index for index.  The tables begin with k = 1.
template <int W, Direction direction, class Source, class Sink>
inline void recombine(std::size_t m, const Kel32f* cosines, const Kel32f* sines, Kel32f scale, Source source,
                      Sink sink) {
    const Floats<W> factor(scale);
    for (std::size_t i = 0; i < m / 2; i += W) {
        const std::size_t low = i + 1;
        const std::size_t high = m - i - W;
        const Complex<W> z = source.load(low);
        const Complex<W> y = source.load(high);
        const Complex<W> a = {z.re * factor, z.im * factor};
        const Complex<W> b = {reversed(y.re) * factor, reversed(y.im) * factor};
        const Complex<W> sum = {a.re + b.re, a.im - b.im};
        const Complex<W> difference = {a.re - b.re, a.im + b.im};
        const Floats<W> sine = loadFloats<W>(sines + i);
        Floats<W> cosine = loadFloats<W>(cosines + i);
        if constexpr (direction == Direction::Inverse) cosine = -cosine;
        const Floats<W> turnedRe = mulSub(cosine, difference.im, sine * difference.re);
        const Floats<W> turnedIm = mulAdd(cosine, difference.re, sine * difference.im);  // of -T
        sink.store(low, {sum.re + turnedRe, sum.im - turnedIm});
        sink.store(high, {reversed(sum.re - turnedRe), reversed(-(sum.im + turnedIm))});
    }
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
