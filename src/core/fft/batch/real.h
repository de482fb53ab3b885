// The real transform of any even length, of lanes<T> signals at once.
//
// The samples of a signal, taken in pairs as complex numbers, are transformed in passes and then separated.  Where half
// the length has a prime factor too large for a pass, the transform becomes a convolution with a chirp (Bluestein, IEEE
// Trans. Audio and Electroacoustics 18(4), 1970), whose own transforms have a power of two of points.
#pragma once

#include <cstddef>

#include "core/fft/batch/passes.h"
#include "core/layout.h"
#include "core/simd/vec.h"
#include "kels/types.h"

namespace kels::batch {

// The passes of a complex transform, and their tables.
template <class T>
class Passes {
  public:
    void setLength(std::size_t length);
    void arrange(Layout& layout);
    void fill() const;
    // Transforms a; the result stands in a or in b, whichever is returned.
    Vec<T>* run(Vec<T>* a, Vec<T>* b) const;

  private:
    struct Tables {
        T *twiddles, *circle;
    };
    int count_ = 0;
    Pass<T> passes_[kMostFactors];
    Tables tables_[kMostFactors];
};

// The largest prime factor of n.
std::size_t largestFactor(std::size_t n);

template <class T>
class RealTransform {
  public:
    // First the length, even and at least 2; then the tables arranged in memory; then filled, which may run out of
    // memory (false).
    void setLength(std::size_t length);
    void arrange(Layout& layout);
    bool fill() const;

    // Vectors in each of the two arrays of a call.
    std::size_t workVectors() const { return 2 * (convolved() ? points_ : half_); }

    // X[b] = sum over i of x[i] e^(-2 pi j b i / length) as measure(re, im), b = 0 .. length / 2, of the samples in a.
    // The result stands in a or in b, whichever is returned.
    template <class Measure>
    Vec<T>* spectrum(Vec<T>* a, Vec<T>* b, Measure measure) const {
        Vec<T>* const z = convolved() ? convolve(a, b) : passes_.run(a, b);
        Vec<T>* const out = z == a ? b : a;
        separate(z, out, measure);
        return out;
    }

  private:
    bool convolved() const { return points_ != 0; }
    Vec<T>* convolve(Vec<T>* a, Vec<T>* b) const;

    // From the transform Z of the pairs, with E and O the transforms of the even and the odd samples,
    //   X[k] = E[k] + w^k O[k],  X[half - k] = conj(E[k] - w^k O[k]),
    //   2 E[k] = Z[k] + conj Z[half - k],  2 i O[k] = Z[k] - conj Z[half - k].
    template <class Measure>
    void separate(const Vec<T>* z, Vec<T>* out, Measure measure) const {
        const Complex<T> first = complexAt(z, 0);
        const Vec<T> none(T(0)), half(T(0.5));
        out[0] = measure(Vec<T>(first.re + first.im), none);
        out[half_] = measure(Vec<T>(first.re - first.im), none);
        for (std::size_t k = 1; 2 * k <= half_; ++k) {
            const Complex<T> low = complexAt(z, k), high = complexAt(z, half_ - k);
            const Vec<T> evenRe = (low.re + high.re) * half, evenIm = (low.im - high.im) * half;
            const Vec<T> oddRe = low.im + high.im, oddIm = high.re - low.re;    // twice O
            const Vec<T> cosine(rotation_[2 * k]), sine(rotation_[2 * k + 1]);  // half of w^k
            const Vec<T> re = mulAdd(cosine, oddRe, -(sine * oddIm)), im = mulAdd(cosine, oddIm, sine * oddRe);
            out[k] = measure(Vec<T>(evenRe + re), Vec<T>(evenIm + im));
            out[half_ - k] = measure(Vec<T>(evenRe - re), Vec<T>(im - evenIm));
        }
    }

    std::size_t half_ = 0;    // of the length: the complex points
    std::size_t points_ = 0;  // of the convolution, 0 where there is none
    Passes<T> passes_;        // of half_ or points_
    T* rotation_ = nullptr;   // w^k / 2 for k = 0 .. half_ / 2
    T* chirp_ = nullptr;      // e^(-pi i k^2 / half_) for k = 0 .. half_ - 1
    T* response_ = nullptr;   // the transform of the conjugate chirp to both sides of 0, divided by points_
};

}  // namespace kels::batch
