// The real transforms of a specification, without checks.
#pragma once

#include "core/fft/spec.h"

namespace kels {

// src and dst may be the same array.  All of src has been read before an inverse transform writes to dst.
void forwardToCcs(const KelFFTSpec_R_32f& spec, const Kel32f* src, Kel32f* dst, Kel32f* scratch);
void forwardToPack(const KelFFTSpec_R_32f& spec, const Kel32f* src, Kel32f* dst, Kel32f* scratch);
void inverseFromPack(const KelFFTSpec_R_32f& spec, const Kel32f* src, Kel32f* dst, Kel32f* scratch);

// The same in the caller's buffer; kelStatusNoMemory where none is given and there is none.
KelStatus forwardToCcs(const KelFFTSpec_R_32f& spec, const Kel32f* src, Kel32f* dst, Kel8u* buffer);

// To integers times 2^-scaleFactor.  kelStatusNoMemory where no buffer is given and there is none.
KelStatus forwardToCcs(const KelFFTSpec_R_16s32s& spec, const Kel16s* src, Kel32s* dst, int scaleFactor, Kel8u* buffer);

}  // namespace kels
