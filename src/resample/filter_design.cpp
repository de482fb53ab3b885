// The windowed sinc of all forms of resampling, and the Bessel function of its window.
#include "resample/filter_design.h"

#include <algorithm>
#include <cmath>

#include "core/constants.h"

namespace kels::resample {

Kel64f Bessel(Kel64f x) {
    const Kel64f quarterSquare = x * x / 4;
    Kel64f sum = 1, term = 1;
    for (Kel64f m = 1; term >= 1e-21 * sum; ++m) {
        term *= quarterSquare / (m * m);
        sum += term;
    }
    return sum;
}

Kel64f WindowedSinc::operator()(Kel64f x) const {
    if (x == 0) return rollf_;
    const Kel64f place = x / reach_;
    const Kel64f window = Bessel(alpha_ * std::sqrt(std::max(0.0, 1 - place * place))) / atAlpha_;
    return std::sin(kPi * rollf_ * x) / (kPi * x) * window;
}

void initResample_64f(Kel64f* h, int n, int nStep, Kel64f rollf, Kel64f alpha) {
    const WindowedSinc sinc(rollf, alpha, static_cast<Kel64f>(n - 1) / nStep);
    for (int k = 0; k < n; ++k) h[k] = sinc(static_cast<Kel64f>(k) / nStep);
    Kel64f sum = h[0];
    for (int64_t k = nStep; k < n; k += nStep) sum += 2 * h[k];
    for (int k = 0; k < n; ++k) h[k] *= 1 / sum;
}

}  // namespace kels::resample
