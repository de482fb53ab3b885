// Autocorrelation of a vector of floats.
#pragma once

#include "kels/types.h"

namespace kels {

// From this many lags on transforms are worth their while.
inline constexpr int kFirstFftLags = 700;

// dst[k] = sum of src[n] src[n + k] for the lags k below dstLen; lags of srcLen and more are 0.  kelStatusNoMemory
// where many lags need the memory of a transform and there is none.
KelStatus autocorrelate(const Kel32f* src, int srcLen, Kel32f* dst, int dstLen);

}  // namespace kels
