// Real transforms of any even length, a frame in each lane: factors, tables, and the passes put together.
#include "core/fft/batch/real.h"

#include <bit>
#include <cmath>
#include <numbers>

#include "core/memory.h"

namespace kels::batch {
namespace {

// e^(-2 pi i k / n) times `scale`, rounded once, as real and imaginary part.
template <class T>
void putRoot(T* out, std::size_t k, std::size_t n, long double scale = 1) {
    const long double turn = static_cast<long double>(k % n) / static_cast<long double>(n);
    const long double angle = 2 * std::numbers::pi_v<long double> * turn;
    out[0] = static_cast<T>(scale * std::cos(angle));
    out[1] = static_cast<T>(scale * -std::sin(angle));
}

// The next pass for what is left of a length: eights and fours first, then the smallest prime factor.
std::size_t nextRadix(std::size_t n) {
    if (n % 8 == 0 && n != 16) return 8;
    if (n % 4 == 0) return 4;
    std::size_t factor = 2;
    while (n % factor != 0) ++factor;
    return factor;
}

bool hasButterfly(int radix) {
    return radix <= 5 || radix == 8;
}

}  // namespace

std::size_t largestFactor(std::size_t n) {
    std::size_t largest = 1;
    for (std::size_t factor = 2; n > 1; ++factor) {
        for (; n % factor == 0; n /= factor) largest = factor;
    }
    return largest;
}

// ---- passes --------------------------------------------------------------------------------------------------------

template <class T>
void Passes<T>::setLength(std::size_t length) {
    count_ = 0;
    for (std::size_t stride = 1; length > 1; ++count_) {
        const std::size_t radix = nextRadix(length);
        length /= radix;
        passes_[count_] = {static_cast<int>(radix), length, stride, nullptr, nullptr};
        stride *= radix;
    }
}

template <class T>
void Passes<T>::arrange(Layout& layout) {
    for (int i = 0; i < count_; ++i) {
        Pass<T>& pass = passes_[i];
        const int64_t radix = pass.radix;
        tables_[i].twiddles = layout.take<T>(2 * (radix - 1) * (static_cast<int64_t>(pass.groups) - 1));
        tables_[i].circle = layout.take<T>(hasButterfly(pass.radix) ? 0 : 2 * radix);
        pass.twiddles = tables_[i].twiddles;
        pass.circle = tables_[i].circle;
    }
}

template <class T>
void Passes<T>::fill() const {
    for (int i = 0; i < count_; ++i) {
        const Pass<T>& pass = passes_[i];
        const auto radix = static_cast<std::size_t>(pass.radix);
        T* twiddle = tables_[i].twiddles;
        for (std::size_t p = 1; p < pass.groups; ++p) {
            for (std::size_t j = 1; j < radix; ++j, twiddle += 2) putRoot(twiddle, p * j, radix * pass.groups);
        }
        if (hasButterfly(pass.radix)) continue;
        for (std::size_t j = 0; j < radix; ++j) {
            T root[2];
            putRoot(root, j, radix);
            tables_[i].circle[j] = root[0];
            tables_[i].circle[radix + j] = -root[1];
        }
    }
}

template <class T>
Vec<T>* Passes<T>::run(Vec<T>* a, Vec<T>* b) const {
    for (int i = 0; i < count_; ++i) {
        runPassOfAnyRadix(passes_[i], a, b);
        std::swap(a, b);
    }
    return a;
}

// ---- the real transform --------------------------------------------------------------------------------------------

template <class T>
void RealTransform<T>::setLength(std::size_t length) {
    half_ = length / 2;
    points_ = largestFactor(half_) > kLargestFactor ? std::bit_ceil(2 * half_ - 1) : 0;
    passes_.setLength(convolved() ? points_ : half_);
}

template <class T>
void RealTransform<T>::arrange(Layout& layout) {
    passes_.arrange(layout);
    rotation_ = layout.take<T>(2 * static_cast<int64_t>(half_ / 2 + 1));
    chirp_ = layout.take<T>(convolved() ? 2 * static_cast<int64_t>(half_) : 0);
    response_ = layout.take<T>(2 * static_cast<int64_t>(points_));
}

template <class T>
bool RealTransform<T>::fill() const {
    passes_.fill();
    for (std::size_t k = 0; k <= half_ / 2; ++k) putRoot(rotation_ + 2 * k, k, 2 * half_, 0.5L);
    if (!convolved()) return true;

    const std::size_t vectors = 2 * points_;
    Vec<T>*a = nullptr, *b = nullptr;
    const auto arrangeWork = [&](Layout& layout) {
        a = layout.take<Vec<T>>(static_cast<int64_t>(vectors), alignof(Vec<T>));
        b = layout.take<Vec<T>>(static_cast<int64_t>(vectors), alignof(Vec<T>));
    };
    void* const work = allocateArranged(arrangeWork);
    if (work == nullptr) return false;
    for (std::size_t i = 0; i < vectors; ++i) a[i] = T(0);
    for (std::size_t k = 0; k < half_; ++k) {
        putRoot(chirp_ + 2 * k, static_cast<std::size_t>(uint64_t{k} * k % (2 * half_)), 2 * half_);
        const Complex<T> conjugate = {Vec<T>(chirp_[2 * k]), Vec<T>(-chirp_[2 * k + 1])};
        setComplex(a, k, conjugate);
        setComplex(a, k == 0 ? 0 : points_ - k, conjugate);
    }
    const Vec<T>* const transformed = passes_.run(a, b);
    const auto scale = 1 / static_cast<T>(points_);
    for (std::size_t i = 0; i < vectors; ++i) response_[i] = T(transformed[i][0]) * scale;
    kelsFree(work);
    return true;
}

template <class T>
Vec<T>* RealTransform<T>::convolve(Vec<T>* a, Vec<T>* b) const {
    const auto factor = [](const T* table, std::size_t k) {
        return Complex<T>{Vec<T>(table[2 * k]), Vec<T>(table[2 * k + 1])};
    };
    for (std::size_t k = 0; k < half_; ++k) {
        const Complex<T> c = factor(chirp_, k);
        setComplex(a, k, multiply(complexAt(a, k), c.re, c.im));
    }
    for (std::size_t i = 2 * half_; i < 2 * points_; ++i) a[i] = T(0);
    Vec<T>* const forward = passes_.run(a, b);
    // With real and imaginary parts exchanged before and after, the forward transform is the inverse one.
    for (std::size_t k = 0; k < points_; ++k) {
        const Complex<T> r = factor(response_, k);
        const Complex<T> product = multiply(complexAt(forward, k), r.re, r.im);
        setComplex(forward, k, {product.im, product.re});
    }
    Vec<T>* const back = passes_.run(forward, forward == a ? b : a);
    for (std::size_t k = 0; k < half_; ++k) {
        const Complex<T> swapped = complexAt(back, k), c = factor(chirp_, k);
        setComplex(back, k, multiply(Complex<T>{swapped.im, swapped.re}, c.re, c.im));
    }
    return back;
}

template class Passes<float>;
template class Passes<double>;
template class RealTransform<float>;
template class RealTransform<double>;

}  // namespace kels::batch
