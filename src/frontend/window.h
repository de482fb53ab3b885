// Window functions.
#pragma once

#include <cstddef>

#include "kels/types.h"

namespace kels {

// Whether there is a window of this kind; `param` counts where the kind uses it.
bool isWindow(int kind, double param);

// Values first .. first + count of a window of `len` values; inside a NearestScope.
void windowValues(double* dst, std::size_t first, std::size_t count, std::size_t len, int kind, double param);

}  // namespace kels
