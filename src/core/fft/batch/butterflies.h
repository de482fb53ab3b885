// Discrete Fourier transforms of a few points, on vectors whose lanes belong to different signals.
#pragma once

#include <cstddef>

#include "core/simd/vec.h"

namespace kels::batch {

// One complex number of each signal.
template <class T>
struct Complex {
    Vec<T> re, im;

    friend Complex operator+(const Complex& a, const Complex& b) { return {a.re + b.re, a.im + b.im}; }
    friend Complex operator-(const Complex& a, const Complex& b) { return {a.re - b.re, a.im - b.im}; }
    Complex timesMinusI() const { return {im, -re}; }
};

template <class T>
inline Complex<T> multiply(const Complex<T>& a, const Vec<T>& re, const Vec<T>& im) {
    return {mulAdd(a.re, re, -(a.im * im)), mulAdd(a.re, im, a.im * re)};
}

// Each takes its points and leaves their transform, with the factor e^(-2 pi i j k / radix), in the same places.
template <int radix>
struct Butterfly;

template <>
struct Butterfly<2> {
    template <class T>
    static void apply(Complex<T> (&a)[2]) {
        const Complex<T> sum = a[0] + a[1];
        a[1] = a[0] - a[1];
        a[0] = sum;
    }
};

template <>
struct Butterfly<3> {
    template <class T>
    static void apply(Complex<T> (&a)[3]) {
        const Vec<T> half(T(0.5)), sine(T(0.86602540378443864676));
        const Complex<T> sum = a[1] + a[2], difference = a[1] - a[2];
        const Complex<T> middle = {a[0].re - half * sum.re, a[0].im - half * sum.im};
        const Complex<T> turned = Complex<T>{sine * difference.re, sine * difference.im}.timesMinusI();
        a[0] = a[0] + sum;
        a[1] = middle + turned;
        a[2] = middle - turned;
    }
};

template <>
struct Butterfly<4> {
    template <class T>
    static void apply(Complex<T> (&a)[4]) {
        const Complex<T> even = a[0] + a[2], evenLess = a[0] - a[2];
        const Complex<T> odd = a[1] + a[3], oddLess = (a[1] - a[3]).timesMinusI();
        a[0] = even + odd;
        a[1] = evenLess + oddLess;
        a[2] = even - odd;
        a[3] = evenLess - oddLess;
    }
};

template <>
struct Butterfly<5> {
    template <class T>
    static void apply(Complex<T> (&a)[5]) {
        // Cosines and sines of 72 and 144 degrees.
        const Vec<T> c1(T(0.30901699437494742410)), c2(T(-0.80901699437494742410));
        const Vec<T> s1(T(0.95105651629515357212)), s2(T(0.58778525229247312917));
        const Complex<T> sum1 = a[1] + a[4], sum2 = a[2] + a[3], less1 = a[1] - a[4], less2 = a[2] - a[3];
        const auto blend = [](const Vec<T>& p, const Vec<T>& x, const Vec<T>& q, const Vec<T>& y) {
            return mulAdd(p, x, q * y);
        };
        const Complex<T> middle1 = {a[0].re + blend(c1, sum1.re, c2, sum2.re),
                                    a[0].im + blend(c1, sum1.im, c2, sum2.im)};
        const Complex<T> middle2 = {a[0].re + blend(c2, sum1.re, c1, sum2.re),
                                    a[0].im + blend(c2, sum1.im, c1, sum2.im)};
        const Complex<T> turned1 = {blend(s1, less1.im, s2, less2.im), -blend(s1, less1.re, s2, less2.re)};
        const Complex<T> turned2 = {blend(s2, less1.im, -s1, less2.im), -blend(s2, less1.re, -s1, less2.re)};
        a[0] = a[0] + sum1 + sum2;
        a[1] = middle1 + turned1;
        a[4] = middle1 - turned1;
        a[2] = middle2 + turned2;
        a[3] = middle2 - turned2;
    }
};

template <>
struct Butterfly<8> {
    template <class T>
    static void apply(Complex<T> (&a)[8]) {
        const Vec<T> root(T(0.70710678118654752440));
        Complex<T> even[4] = {a[0], a[2], a[4], a[6]}, odd[4] = {a[1], a[3], a[5], a[7]};
        Butterfly<4>::apply(even);
        Butterfly<4>::apply(odd);
        odd[1] = {root * (odd[1].re + odd[1].im), root * (odd[1].im - odd[1].re)};
        odd[2] = odd[2].timesMinusI();
        odd[3] = {root * (odd[3].im - odd[3].re), -(root * (odd[3].re + odd[3].im))};
        for (int k = 0; k < 4; ++k) {
            a[k] = even[k] + odd[k];
            a[k + 4] = even[k] - odd[k];
        }
    }
};

}  // namespace kels::batch
