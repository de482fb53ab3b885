// The complex transform of any length that has small factors, of lanes<T> signals at once: lane j of every vector
// belongs to signal j, so that no pass moves values between lanes and the length is free.
//
// Stockham's form, one pass a factor: each pass reads one array and writes the other in the order that the next one
// wants, and the last leaves the frequencies in their places.  An array holds real and imaginary parts in turn.
#pragma once

#include <cstddef>

#include "core/fft/batch/butterflies.h"
#include "core/simd/vec.h"

namespace kels::batch {

// The largest factor that has a pass of its own.
inline constexpr int kLargestFactor = 47;
inline constexpr int kMostFactors = 16;

// One pass: groups * radix is the length of the transforms that it splits, `stride` the number of them.
template <class T>
struct Pass {
    int radix;
    std::size_t groups, stride;
    const T* twiddles;  // for each group from the second on, e^(-2 pi i group j / length) for j = 1 .. radix - 1
    const T* circle;    // of a radix without a butterfly: cosines, then sines, of 2 pi j / radix
};

template <class T>
inline Complex<T> complexAt(const Vec<T>* x, std::size_t i) {
    return {x[2 * i], x[2 * i + 1]};
}
template <class T>
inline void setComplex(Vec<T>* y, std::size_t i, const Complex<T>& v) {
    y[2 * i] = v.re;
    y[2 * i + 1] = v.im;
}

template <int radix, class T>
inline void runPass(const Pass<T>& pass, const Vec<T>* x, Vec<T>* y) {
    const std::size_t groups = pass.groups, stride = pass.stride;
    Complex<T> a[radix];
    const auto transformed = [&](std::size_t first) {
        for (std::size_t k = 0; k < radix; ++k) a[k] = complexAt(x, first + stride * groups * k);
        Butterfly<radix>::apply(a);
    };
    for (std::size_t q = 0; q < stride; ++q) {
        transformed(q);
        for (std::size_t j = 0; j < radix; ++j) setComplex(y, q + stride * j, a[j]);
    }
    const T* w = pass.twiddles;
    for (std::size_t p = 1; p < groups; ++p, w += 2 * (radix - 1)) {
        Complex<T> twiddle[radix];
        for (std::size_t j = 1; j < radix; ++j) twiddle[j] = {Vec<T>(w[2 * j - 2]), Vec<T>(w[2 * j - 1])};
        for (std::size_t q = 0; q < stride; ++q) {
            transformed(q + stride * p);
            const std::size_t out = q + stride * radix * p;
            setComplex(y, out, a[0]);
            for (std::size_t j = 1; j < radix; ++j) {
                setComplex(y, out + stride * j, multiply(a[j], twiddle[j].re, twiddle[j].im));
            }
        }
    }
}

// A prime radix without a butterfly, from the definition: points k and radix - k share their products.
template <class T>
inline void runPrimePass(const Pass<T>& pass, const Vec<T>* x, Vec<T>* y) {
    const auto radix = static_cast<std::size_t>(pass.radix);
    const std::size_t groups = pass.groups, stride = pass.stride, half = radix / 2;
    const T* const cosines = pass.circle;
    const T* const sines = pass.circle + radix;
    Complex<T> sums[kLargestFactor / 2 + 1], differences[kLargestFactor / 2 + 1];
    const T* w = pass.twiddles;
    for (std::size_t p = 0; p < groups; ++p) {
        for (std::size_t q = 0; q < stride; ++q) {
            const auto point = [&](std::size_t k) { return complexAt(x, q + stride * (p + groups * k)); };
            const Complex<T> zero = point(0);
            Complex<T> total = zero;
            for (std::size_t k = 1; k <= half; ++k) {
                const Complex<T> low = point(k), high = point(radix - k);
                sums[k] = low + high;
                differences[k] = (low - high).timesMinusI();
                total = total + sums[k];
            }
            const auto put = [&](std::size_t j, const Complex<T>& v) {
                const std::size_t out = q + stride * (radix * p + j);
                if (p == 0 || j == 0) return setComplex(y, out, v);
                setComplex(y, out, multiply(v, Vec<T>(w[2 * j - 2]), Vec<T>(w[2 * j - 1])));
            };
            put(0, total);
            for (std::size_t j = 1; j <= half; ++j) {
                Complex<T> middle = zero, turned = {Vec<T>(T(0)), Vec<T>(T(0))};
                for (std::size_t k = 1, angle = j; k <= half; ++k, angle = (angle + j) % radix) {
                    const Vec<T> c(cosines[angle]), s(sines[angle]);
                    middle = {mulAdd(c, sums[k].re, middle.re), mulAdd(c, sums[k].im, middle.im)};
                    turned = {mulAdd(s, differences[k].re, turned.re), mulAdd(s, differences[k].im, turned.im)};
                }
                put(j, middle + turned);
                put(radix - j, middle - turned);
            }
        }
        if (p > 0) w += 2 * (radix - 1);
    }
}

template <class T>
inline void runPassOfAnyRadix(const Pass<T>& pass, const Vec<T>* x, Vec<T>* y) {
    switch (pass.radix) {
        case 2:
            return runPass<2>(pass, x, y);
        case 3:
            return runPass<3>(pass, x, y);
        case 4:
            return runPass<4>(pass, x, y);
        case 5:
            return runPass<5>(pass, x, y);
        case 8:
            return runPass<8>(pass, x, y);
        default:
            return runPrimePass(pass, x, y);
    }
}

}  // namespace kels::batch
