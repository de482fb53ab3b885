// The table of the general form point by point, for filters that rows of vectors do not serve.
#pragma once

#include <algorithm>
#include <cmath>

#include "resample/sample_conversion.h"

namespace kels::resample::general {

template <class T>
struct FilterTable {
    const T* h;  // h[last + 1] = h[last]
    int last;
    Kel64f tolerance;
    Kel64f scale;  // points per input sample

    // The weight of a sample that lies `distance` samples from the output.
    Kel32f weight(Kel64f distance) const {
        const Kel64f place = std::fabs(distance) * scale;
        if (place > last + tolerance) return 0;
        const int k = std::min(static_cast<int>(place), last);
        const auto a = static_cast<Kel32f>(place - k);
        const Kel32f low = factorOf(h[k]);
        return low + a * (factorOf(h[k + 1]) - low);
    }
};

}  // namespace kels::resample::general
