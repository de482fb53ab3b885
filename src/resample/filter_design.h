// The filter that all resampling uses: half of a Kaiser-windowed sinc.
#pragma once

#include <cstddef>

#include "kels/types.h"

namespace kels::resample {

// The largest alpha whose window can be computed: beyond 713 I0(alpha) exceeds the doubles.
inline constexpr Kel32f kMostAlpha = 700;

// The modified Bessel function of the first kind of order 0, by its power series; 0 <= x <= kMostAlpha.
Kel64f Bessel(Kel64f x);

// The Kaiser-windowed sinc of cutoff r = rollf: sin(pi r x) / (pi x) times the window that spans |x| <= reach.
class WindowedSinc {
  public:
    WindowedSinc(Kel64f rollf, Kel64f alpha, Kel64f reach)
        : rollf_(rollf), alpha_(alpha), reach_(reach), atAlpha_(Bessel(alpha)) {}
    Kel64f operator()(Kel64f x) const;

  private:
    Kel64f rollf_, alpha_, reach_, atAlpha_;
};

// h[k], 0 <= k < n: the windowed sinc at k / nStep input samples, reaching to k = n - 1, with gain 1 at zero frequency
// where it meets every sample (k = 0, nStep, 2 nStep ...).
void initResample_64f(Kel64f* h, int n, int nStep, Kel64f rollf, Kel64f alpha);

}  // namespace kels::resample
