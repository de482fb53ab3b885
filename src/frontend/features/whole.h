// The features of a whole signal.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frontend/features/frames/samples.h"
#include "frontend/features/spec.h"

namespace kels::features {

// Bytes of scratch for a signal of len samples, from any address on.
int64_t scratchBytes(const KelFeatureSpec_32f& spec, int64_t len);

// Writes all rows; `scratch` holds as many bytes.
void wholeSignal(const KelFeatureSpec_32f& spec, const NewSamples& signal, Kel32f* dst, std::ptrdiff_t step,
                 void* scratch);

}  // namespace kels::features
