// The times of the outputs of one call.  They are computed from the first one and not summed up: each is rounded once.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

#include "kels/types.h"

namespace kels::resample::general {

struct OutputTimes {
    Kel64f start, step;  // of outputs, in input samples
    Kel64f reach;        // of the filter, in input samples, with the tolerance
    Kel64f factor;

    Kel64f at(int64_t n) const { return start + static_cast<Kel64f>(n) * step; }

    // How many outputs there are whose filter ends inside len inputs.
    int count(int len, Kel64f exactReach) const {
        const Kel64f latest = static_cast<Kel64f>(len) - 1 - exactReach;
        if (!(start <= latest) || !(latest - start < HUGE_VAL)) return 0;
        constexpr Kel64f most = std::numeric_limits<int>::max();
        auto n = static_cast<int64_t>(std::min((latest - start) / step, most - 1)) + 1;
        // The quotient may be rounded across an integer.
        while (n > 0 && at(n - 1) > latest) --n;
        while (n < std::numeric_limits<int>::max() && at(n) <= latest) ++n;
        return static_cast<int>(n);
    }
};

}  // namespace kels::resample::general
