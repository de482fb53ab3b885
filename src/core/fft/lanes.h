// Complex FFT of power-of-two lengths on vectors that hold real and imaginary parts apart.
//
// The length M is split as L x W, W being the lanes of a vector: lane l takes the samples n = l (mod W), so that W
// consecutive samples are one vector and L-point transforms run on all lanes at once, with no shuffle and with twiddles
// that are the same in every lane.  Then W x W blocks are transposed, multiplied by w_M^(k l), and one W-point
// butterfly across the vectors gives the outputs k + L m for W consecutive k.  The factorisations are those of C. Van
// Loan, Computational Frameworks for the Fast Fourier Transform, SIAM 1992.
#pragma once

#include <cstddef>
#include <type_traits>

#include "core/fft/floats.h"
#include "kels/types.h"

namespace kels {

template <class V>
struct ComplexOf {
    V re, im;
};
template <class V>
inline ComplexOf<V> operator+(const ComplexOf<V>& a, const ComplexOf<V>& b) {
    return {a.re + b.re, a.im + b.im};
}
template <class V>
inline ComplexOf<V> operator-(const ComplexOf<V>& a, const ComplexOf<V>& b) {
    return {a.re - b.re, a.im - b.im};
}
template <class V>
inline ComplexOf<V> operator*(const ComplexOf<V>& a, const ComplexOf<V>& b) {
    return {mulSub(a.re, b.re, a.im * b.im), mulAdd(a.re, b.im, a.im * b.re)};
}
template <int W>
using Complex = ComplexOf<Floats<W>>;

// W complex numbers as they stand in scratch memory: W real parts, then W imaginary parts.
template <int W>
inline Complex<W> loadUnit(const Kel32f* p) {
    return {loadFloats<W>(p), loadFloats<W>(p + W)};
}
template <int W>
inline void storeUnit(Kel32f* p, const Complex<W>& v) {
    storeFloats(p, v.re);
    storeFloats(p + W, v.im);
}
template <int W>
inline Complex<W> broadcast(const Kel32fc& c) {
    return {Floats<W>(c.re), Floats<W>(c.im)};
}

// ---- where W consecutive complex numbers are read and written ------------------------------------------------------
// load(i) and store(i, v) are given the index of the first of them.

// Real and imaginary parts one after the other.
template <int W>
struct Pairs {
    Kel32f* data;
    Complex<W> load(std::size_t i) const {
        Complex<W> v;
        loadPairs(data + 2 * i, v.re, v.im);
        return v;
    }
    void store(std::size_t i, const Complex<W>& v) const { storePairs(data + 2 * i, v.re, v.im); }
};
template <int W>
struct ConstPairs {
    const Kel32f* data;
    Complex<W> load(std::size_t i) const {
        Complex<W> v;
        loadPairs(data + 2 * i, v.re, v.im);
        return v;
    }
};
// Imaginary parts first.  A transform whose input and output are both swapped is the inverse transform.
template <int W>
struct SwappedPairs {
    Kel32f* data;
    void store(std::size_t i, const Complex<W>& v) const { storePairs(data + 2 * i, v.im, v.re); }
};
// Units, which take the place of the pairs that they hold; i is a multiple of W.
template <int W>
struct Units {
    Kel32f* data;
    Complex<W> load(std::size_t i) const { return loadUnit<W>(data + 2 * i); }
    void store(std::size_t i, const Complex<W>& v) const { storeUnit<W>(data + 2 * i, v); }
};

// Units in rows of 2^rowBits numbers with a gap behind each, so that the units of a column do not compete for the same
// few places of a cache.
template <int W>
struct PaddedUnits {
    Kel32f* data;
    int rowBits;
    Kel32f* at(std::size_t i) const { return data + 2 * (i + (i >> rowBits) * W); }
    std::size_t pitch() const { return 2 * ((std::size_t{1} << rowBits) + W); }
    Complex<W> load(std::size_t i) const { return loadUnit<W>(at(i)); }
    void store(std::size_t i, const Complex<W>& v) const { storeUnit<W>(at(i), v); }
};

// ---- butterflies: DFT of R values, kernel e^(-2 pi i k n / R), in natural order ------------------------------------

template <class V>
inline void butterfly(ComplexOf<V> (&a)[4]) {
    const auto s02 = a[0] + a[2];
    const auto d02 = a[0] - a[2];
    const auto s13 = a[1] + a[3];
    const auto d13 = a[1] - a[3];
    a[0] = s02 + s13;
    a[1] = {d02.re + d13.im, d02.im - d13.re};
    a[2] = s02 - s13;
    a[3] = {d02.re - d13.im, d02.im + d13.re};
}

template <class V>
inline void butterfly(ComplexOf<V> (&a)[8]) {
    ComplexOf<V> e[4] = {a[0], a[2], a[4], a[6]};
    ComplexOf<V> o[4] = {a[1], a[3], a[5], a[7]};
    butterfly(e);
    butterfly(o);
    a[0] = e[0] + o[0];
    a[4] = e[0] - o[0];
    a[2] = {e[2].re + o[2].im, e[2].im - o[2].re};
    a[6] = {e[2].re - o[2].im, e[2].im + o[2].re};
    // The factors (1 - i) sqrt(1/2) and (-1 - i) sqrt(1/2) are sums whose last multiplication joins the addition.
    const V root(0.70710678118654752440f);
    const ComplexOf<V> t1 = {o[1].re + o[1].im, o[1].im - o[1].re};
    const ComplexOf<V> t3 = {o[3].im - o[3].re, o[3].re + o[3].im};
    a[1] = {mulAdd(root, t1.re, e[1].re), mulAdd(root, t1.im, e[1].im)};
    a[5] = {negMulAdd(root, t1.re, e[1].re), negMulAdd(root, t1.im, e[1].im)};
    a[3] = {mulAdd(root, t3.re, e[3].re), negMulAdd(root, t3.im, e[3].im)};
    a[7] = {negMulAdd(root, t3.re, e[3].re), mulAdd(root, t3.im, e[3].im)};
}

// ---- transforms along the lanes ------------------------------------------------------------------------------------
// L = 2^order points in every lane, order >= 2, in passes of radix r1, r2, ... (decimation in frequency).  Each pass
// leaves its results where its operands stood, so that output k = m1 + r1 (m2 + r2 (m3 + ...)) ends up at the position
// with the same digits in reverse, m1 L / r1 + m2 L / (r1 r2) + ...  A position is a unit, which is no less than a
// cache line of AVX vectors, so that reading them in this order later costs nothing.

// The radix of the first pass, as its logarithm: 8 where nothing smaller than 4 is left.
constexpr int radixBits(int order) {
    return order == 2 || order == 4 ? 2 : 3;
}
// Twiddles of all passes but the last, which needs none.
constexpr std::size_t laneTwiddleCount(int order) {
    std::size_t count = 0;
    for (int bits = radixBits(order); bits < order; order -= bits, bits = radixBits(order)) {
        count += (std::size_t{1} << (order - bits)) * ((std::size_t{1} << bits) - 1);
    }
    return count;
}

// Where output k stands.
inline std::size_t position(int order, std::size_t k) {
    std::size_t at = 0;
    while (order > 0) {
        const int bits = radixBits(order);
        order -= bits;
        at += (k & ((std::size_t{1} << bits) - 1)) << order;
        k >>= bits;
    }
    return at;
}
// The lowest output that butterfly b of the last pass, of radix 2^lastBits, computes.
inline std::size_t firstOutput(int order, int lastBits, std::size_t b) {
    std::size_t k = 0;
    int weight = 0;
    while (order > lastBits) {
        const int bits = radixBits(order);
        order -= bits;
        k += ((b >> (order - lastBits)) & ((std::size_t{1} << bits) - 1)) << weight;
        weight += bits;
    }
    return k;
}

// A pass but the last, on blocks of n of the `length` units at `units`; a first pass gets its operands from `load`.
template <int W, int R, class Load>
inline void pass(std::size_t n, std::size_t length, const Kel32fc* twiddles, Kel32f* units, Load load) {
    const std::size_t part = n / R;
    for (std::size_t p = 0; p < part; ++p) {
        for (std::size_t at = p; at < length; at += n) {
            Complex<W> a[R];
            for (std::size_t j = 0; j < R; ++j) a[j] = load(at + j * part);
            butterfly(a);
            storeUnit<W>(units + 2 * W * at, a[0]);
            for (std::size_t j = 1; j < R; ++j) {
                storeUnit<W>(units + 2 * W * (at + j * part), a[j] * broadcast<W>(twiddles[j - 1]));
            }
        }
        twiddles += R - 1;
    }
}

// The last pass; finish(b) gives what takes the outputs of butterfly b, as put(digit, value).
template <int W, int R, class Load, class Finish>
inline void lastPass(std::size_t length, Load load, Finish finish) {
    for (std::size_t b = 0; b < length / R; ++b) {
        Complex<W> a[R];
        for (std::size_t j = 0; j < R; ++j) a[j] = load(b * R + j);
        butterfly(a);
        const auto put = finish(b, std::integral_constant<int, R>());
        for (std::size_t j = 0; j < R; ++j) put(j, a[j]);
    }
}

// load(j) gives point j of all lanes and may read `units` at the same place.
template <int W, class Load, class Finish>
inline void transformLanes(int order, const Kel32fc* twiddles, Kel32f* units, Load load, Finish finish) {
    const std::size_t length = std::size_t{1} << order;
    const auto fromUnits = [units](std::size_t j) { return loadUnit<W>(units + 2 * W * j); };
    int bits = radixBits(order);
    if (bits == order) {
        bits == 2 ? lastPass<W, 4>(length, load, finish) : lastPass<W, 8>(length, load, finish);
        return;
    }
    bits == 2 ? pass<W, 4>(length, length, twiddles, units, load) : pass<W, 8>(length, length, twiddles, units, load);
    for (;;) {
        twiddles += (std::size_t{1} << order) - (std::size_t{1} << (order - bits));
        order -= bits;
        bits = radixBits(order);
        if (bits == order) break;
        const std::size_t n = std::size_t{1} << order;
        bits == 2 ? pass<W, 4>(n, length, twiddles, units, fromUnits)
                  : pass<W, 8>(n, length, twiddles, units, fromUnits);
    }
    bits == 2 ? lastPass<W, 4>(length, fromUnits, finish) : lastPass<W, 8>(length, fromUnits, finish);
}

// ---- the whole transform -------------------------------------------------------------------------------------------

// W x W complex numbers in units of W as their columns: rows `step` floats apart, the fifth `upper` floats from the
// first.
template <int W>
inline void loadColumns(const Kel32f* p, std::size_t step, std::size_t upper, Complex<W> (&columns)[W]) {
    Floats<W> re[W], im[W];
    loadTransposed(p, step, upper, re);
    loadTransposed(p + W, step, upper, im);
    for (int i = 0; i < W; ++i) columns[i] = {re[i], im[i]};
}

template <int W>
inline constexpr int kWidthBits = W == 8 ? 3 : 2;

// M = 2^order >= W^2 points with scratch memory of M complex numbers in the nearest caches; `source` may be this
// memory.
template <int W, class Source, class Sink>
inline void transformInCache(int order, const Kel32fc* laneTwiddles, const Kel32f* crossTwiddles, Kel32f* scratch,
                             Source source, Sink sink) {
    const int laneOrder = order - kWidthBits<W>;
    transformLanes<W>(
        laneOrder, laneTwiddles, scratch, [=](std::size_t j) { return source.load(W * j); },
        [=]<int R>(std::size_t b, std::integral_constant<int, R>) {
            return [=](std::size_t j, const Complex<W>& v) { storeUnit<W>(scratch + 2 * W * (R * b + j), v); };
        });
    const std::size_t length = std::size_t{1} << laneOrder;
    const std::size_t step = 2 * W * position(laneOrder, 1);
    const std::size_t upper = 2 * W * position(laneOrder, 4);
    for (std::size_t k = 0; k < length; k += W) {
        Complex<W> v[W];
        loadColumns<W>(scratch + 2 * W * position(laneOrder, k), step, upper, v);
        for (int l = 1; l < W; ++l) {
            v[l] = v[l] * loadUnit<W>(crossTwiddles);
            crossTwiddles += 2 * W;
        }
        butterfly(v);
        for (std::size_t m = 0; m < W; ++m) sink.store(k + length * m, v[m]);
    }
}

// Eight points: the same on two rows of a 4 x 4 block, which are there twice so that nothing undefined is computed on.
template <class Source, class Sink>
inline void transformEight(const Kel32f* crossTwiddles, Source source, Sink sink) {
    const Complex<4> low = source.load(0);
    const Complex<4> high = source.load(4);
    Kel32f rows[4 * 8];
    for (int i = 0; i < 2; ++i) {
        storeUnit<4>(rows + 16 * i, low + high);
        storeUnit<4>(rows + 16 * i + 8, low - high);
    }
    Complex<4> v[4];
    loadColumns<4>(rows, 8, 0, v);
    for (int l = 1; l < 4; ++l) v[l] = v[l] * loadUnit<4>(crossTwiddles + 8 * (l - 1));
    butterfly(v);
    for (std::size_t m = 0; m < 4; m += 2) {
        sink.store(2 * m, {lowerHalves(v[m].re, v[m + 1].re), lowerHalves(v[m].im, v[m + 1].im)});
    }
}

// What a transform in four steps needs: M = 2^rowBits rows of 2^columnBits points.
struct FourStepTables {
    int rowBits, columnBits;
    const Kel32fc* columnTwiddles;  // of the transforms down the columns, of 2^rowBits points
    const Kel32fc* rowTwiddles;     // of those along the rows, of 2^columnBits points
    const Kel32fc* stepTwiddles;    // w_M^(c k) for the first column c of each W, and all k
    const Kel32f* laneTwiddles;     // w_M^(i k) for i = 0 .. W - 1, in units, for all k
};

// M points in four steps, for sizes beyond the caches (D. H. Bailey, FFTs in external or hierarchical memory, J.
// Supercomputing 4, 1990): transforms down W columns at a time, twiddles, transforms along W rows at a time, whose
// outputs k + R m are again W neighbours.  `lines` holds W complex numbers for each point of the longer
// transforms.  `source` may be `matrix`.
template <int W, class Source, class Sink>
inline void transformInSteps(const FourStepTables& t, const PaddedUnits<W>& matrix, Kel32f* lines, Source source,
                             Sink sink) {
    const std::size_t rows = std::size_t{1} << t.rowBits;
    const std::size_t columns = std::size_t{1} << t.columnBits;
    const Kel32fc* stepTwiddles = t.stepTwiddles;
    for (std::size_t c = 0; c < columns; c += W) {
        transformLanes<W>(
            t.rowBits, t.columnTwiddles, lines, [=](std::size_t j) { return source.load(j * columns + c); },
            [=, &t]<int R>(std::size_t b, std::integral_constant<int, R>) {
                const std::size_t first = firstOutput(t.rowBits, R == 8 ? 3 : 2, b);
                return [=, &t](std::size_t j, const Complex<W>& v) {
                    const std::size_t k = first + j * (rows / R);
                    const auto twiddle = loadUnit<W>(t.laneTwiddles + 2 * W * k) * broadcast<W>(stepTwiddles[k]);
                    matrix.store(k * columns + c, v * twiddle);
                };
            });
        stepTwiddles += rows;
    }
    for (std::size_t k = 0; k < rows; k += W) {
        for (std::size_t c = 0; c < columns; c += W) {
            Complex<W> v[W];
            loadColumns<W>(matrix.at(k * columns + c), matrix.pitch(), 4 * matrix.pitch(), v);
            for (std::size_t i = 0; i < W; ++i) storeUnit<W>(lines + 2 * W * (c + i), v[i]);
        }
        transformLanes<W>(
            t.columnBits, t.rowTwiddles, lines, [=](std::size_t j) { return loadUnit<W>(lines + 2 * W * j); },
            [=]<int R>(std::size_t b, std::integral_constant<int, R>) {
                const std::size_t first = firstOutput(t.columnBits, R == 8 ? 3 : 2, b);
                return
                    [=](std::size_t j, const Complex<W>& v) { sink.store(k + rows * (first + j * (columns / R)), v); };
            });
    }
}

}  // namespace kels
