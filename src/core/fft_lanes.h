// Complex FFT of power-of-two lengths on vectors that hold real and imaginary parts apart.
//
// The length M is split as L x W, W being the lanes of a vector: lane l takes the samples n = l (mod W), so that W
// consecutive samples are one vector and L-point transforms run on all lanes at once, with no shuffle and with twiddles
// that are the same in every lane.  They are Stockham transforms: every pass sorts as it goes, and none of them needs a
// bit reversal.  Then W x W blocks are transposed, multiplied by w_M^(k l), and one W-point butterfly across the
// vectors gives the outputs k + L m for W consecutive k.  The method is described in C. Van Loan, Computational
// Frameworks for the Fast Fourier Transform, SIAM 1992, sections 1.7 and 3.3.
#pragma once

#include <cstddef>
#include <utility>

#include "core/simd.h"
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
template <class V>
inline ComplexOf<V> timesMinusI(const ComplexOf<V>& a) {
    return {a.im, -a.re};
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
// Two arrays.
template <int W>
struct Split {
    Kel32f* re;
    Kel32f* im;
    Complex<W> load(std::size_t i) const { return {loadFloats<W>(re + i), loadFloats<W>(im + i)}; }
    void store(std::size_t i, const Complex<W>& v) const {
        storeFloats(re + i, v.re);
        storeFloats(im + i, v.im);
    }
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

// The radix of the next pass of a transform of 2^order points, as its logarithm: 8 where nothing smaller than 4 is left.
constexpr int radixBits(int order) {
    return order == 2 || order == 4 ? 2 : 3;
}
constexpr int passCount(int order) {
    int passes = 0;
    for (; order > 0; order -= radixBits(order)) ++passes;
    return passes;
}
// Twiddles of all passes but the last, which needs none.
constexpr std::size_t laneTwiddleCount(int order) {
    std::size_t count = 0;
    for (int bits = radixBits(order); bits < order; order -= bits, bits = radixBits(order)) {
        count += (std::size_t{1} << (order - bits)) * ((std::size_t{1} << bits) - 1);
    }
    return count;
}

enum class Twiddled { No, Yes };

// One Stockham pass of radix R: `stride` interleaved transforms of `n` points become R * stride of n / R points.
template <int W, int R, Twiddled twiddled, class Load, class Store>
inline void pass(std::size_t n, std::size_t stride, const Kel32fc* twiddles, Load load, Store store) {
    const std::size_t part = n / R;
    for (std::size_t p = 0; p < part; ++p) {
        for (std::size_t q = 0; q < stride; ++q) {
            Complex<W> a[R];
            for (std::size_t j = 0; j < R; ++j) a[j] = load(q + stride * (p + j * part));
            butterfly(a);
            store(q + stride * R * p, a[0]);
            for (std::size_t j = 1; j < R; ++j) {
                if constexpr (twiddled == Twiddled::Yes) a[j] = a[j] * broadcast<W>(twiddles[j - 1]);
                store(q + stride * (R * p + j), a[j]);
            }
        }
        twiddles += R - 1;
    }
}

// The transform of 2^order points in every lane, order >= 2.  load(j) gives point j of all lanes, store(k, v) takes
// output k.  Passes write to a, b, a, ... in turn, the last one to `store`: load may read b, and store may write the
// one of the two that is not the last but one in the row (a after an odd number of passes, b after an even one).
template <int W, class Load, class Store>
inline void transformLanes(int order, const Kel32fc* twiddles, Kel32f* a, Kel32f* b, Load load, Store store) {
    std::size_t n = std::size_t{1} << order;
    int bits = radixBits(order);
    if (bits == order) {
        if (bits == 2) {
            pass<W, 4, Twiddled::No>(n, 1, twiddles, load, store);
        } else {
            pass<W, 8, Twiddled::No>(n, 1, twiddles, load, store);
        }
        return;
    }
    {
        const auto toA = [a](std::size_t k, const Complex<W>& v) { storeUnit<W>(a + 2 * W * k, v); };
        if (bits == 2) {
            pass<W, 4, Twiddled::Yes>(n, 1, twiddles, load, toA);
        } else {
            pass<W, 8, Twiddled::Yes>(n, 1, twiddles, load, toA);
        }
    }
    std::size_t stride = 1;
    for (;;) {
        const std::size_t part = n >> bits;
        twiddles += part * ((std::size_t{1} << bits) - 1);
        stride <<= bits;
        n = part;
        order -= bits;
        bits = radixBits(order);
        if (bits == order) break;
        const auto fromA = [a](std::size_t j) { return loadUnit<W>(a + 2 * W * j); };
        const auto toB = [b](std::size_t k, const Complex<W>& v) { storeUnit<W>(b + 2 * W * k, v); };
        if (bits == 2) {
            pass<W, 4, Twiddled::Yes>(n, stride, twiddles, fromA, toB);
        } else {
            pass<W, 8, Twiddled::Yes>(n, stride, twiddles, fromA, toB);
        }
        std::swap(a, b);
    }
    const auto fromA = [a](std::size_t j) { return loadUnit<W>(a + 2 * W * j); };
    if (bits == 2) {
        pass<W, 4, Twiddled::No>(n, stride, twiddles, fromA, store);
    } else {
        pass<W, 8, Twiddled::No>(n, stride, twiddles, fromA, store);
    }
}

// ---- the whole transform -------------------------------------------------------------------------------------------

// W x W complex numbers in units of W, `step` floats from row to row, as their columns.
template <int W>
inline void loadColumns(const Kel32f* p, std::size_t step, Complex<W> (&columns)[W]) {
    Floats<W> re[W], im[W];
    loadTransposed(p, step, re);
    loadTransposed(p + W, step, im);
    for (int i = 0; i < W; ++i) columns[i] = {re[i], im[i]};
}

template <int W>
inline constexpr int kWidthBits = W == 8   ? 3
                                  : W == 4 ? 2
                                           : 0;

// The one of the buffers of transformInCache that its outputs may go to.
template <int W>
Kel32f* freeBuffer(int order, Kel32f* a, Kel32f* b) {
    return W > 1 && passCount(order - kWidthBits<W>) % 2 != 0 ? b : a;
}

// M = 2^order points with both scratch buffers of M complex numbers in the nearest caches.  `source` may lie in b, and
// the outputs may go to the buffer that freeBuffer names.
template <int W, class Source, class Sink>
inline void transformInCache(int order, const Kel32fc* laneTwiddles, const Kel32f* crossTwiddles, Kel32f* a, Kel32f* b,
                             Source source, Sink sink) {
    if constexpr (W == 1) {
        transformLanes<1>(
            order, laneTwiddles, a, b, [=](std::size_t j) { return source.load(j); },
            [=](std::size_t k, const Complex<1>& v) { sink.store(k, v); });
    } else {
        const int laneOrder = order - kWidthBits<W>;
        Kel32f* const lanesAt = freeBuffer<W>(order, b, a);
        transformLanes<W>(
            laneOrder, laneTwiddles, a, b, [=](std::size_t j) { return source.load(W * j); },
            [=](std::size_t k, const Complex<W>& v) { storeUnit<W>(lanesAt + 2 * W * k, v); });
        const std::size_t length = std::size_t{1} << laneOrder;
        for (std::size_t k = 0; k < length; k += W) {
            Complex<W> v[W];
            loadColumns<W>(lanesAt + 2 * W * k, 2 * W, v);
            for (int l = 1; l < W; ++l) {
                v[l] = v[l] * loadUnit<W>(crossTwiddles);
                crossTwiddles += 2 * W;
            }
            butterfly(v);
            for (std::size_t m = 0; m < W; ++m) sink.store(k + length * m, v[m]);
        }
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
// outputs k + R m are again W neighbours.  `matrix` holds M complex numbers, a and b W of them for each point of the
// longer transforms.  `source` may lie in `matrix`.
template <int W, class Source, class Sink>
inline void transformInSteps(const FourStepTables& t, Kel32f* matrix, Kel32f* a, Kel32f* b, Source source, Sink sink) {
    const std::size_t rows = std::size_t{1} << t.rowBits;
    const std::size_t columns = std::size_t{1} << t.columnBits;
    const Kel32fc* stepTwiddles = t.stepTwiddles;
    for (std::size_t c = 0; c < columns; c += W) {
        transformLanes<W>(
            t.rowBits, t.columnTwiddles, a, b, [=](std::size_t j) { return source.load(j * columns + c); },
            [=, &t](std::size_t k, const Complex<W>& v) {
                const Complex<W> twiddle = loadUnit<W>(t.laneTwiddles + 2 * W * k) * broadcast<W>(stepTwiddles[k]);
                storeUnit<W>(matrix + 2 * (k * columns + c), v * twiddle);
            });
        stepTwiddles += rows;
    }
    for (std::size_t k = 0; k < rows; k += W) {
        for (std::size_t c = 0; c < columns; c += W) {
            Complex<W> v[W];
            loadColumns<W>(matrix + 2 * (k * columns + c), 2 * columns, v);
            for (std::size_t i = 0; i < W; ++i) storeUnit<W>(b + 2 * W * (c + i), v[i]);
        }
        transformLanes<W>(
            t.columnBits, t.rowTwiddles, a, b, [=](std::size_t j) { return loadUnit<W>(b + 2 * W * j); },
            [=](std::size_t m, const Complex<W>& v) { sink.store(k + rows * m, v); });
    }
}

}  // namespace kels
