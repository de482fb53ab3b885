// The specifications of the real FFT, their tables, and the work buffer of a call.
#pragma once

#include <cstdint>

#include "core/memory.h"
#include "core/simd/vec.h"
#include "kels/fft.h"

struct KelFFTSpec_R_32f {
    Kel32s identifier;  // kFloatSpec
    Kel32s order;
    Kel32s forwardScaled;
    Kel32s inverseScaled;
    Kel32f factor;
    Kel32s hint;
    Kel32s bufferSize;      // of the caller's work buffer, in bytes
    Kel32s* bitReversal;    // null: positions are computed
    Kel32fc* laneTwiddles;  // of the transforms along the lanes
    Kel32f* crossTwiddles;  // in cache: between lanes and butterflies across them; in steps: w_M^(i k) for the lanes i
    Kel32fc* stepTwiddles;  // in steps: w_M^(c k) for the first column c of each group
    Kel32f* forwardRotation;  // cosines, then sines, of 2 pi k / N for k = 0 .. N/4 - 1
    Kel32f* inverseRotation;  // the same table
    Kel32fc* rowTwiddles;     // in steps: of the transforms along the rows
    void* tables;             // the block of all of them
    void* unused[4];
};

struct KelFFTSpec_R_16s32s {
    Kel32s identifier;  // kIntegerSpec
    Kel32s order;
    Kel32s flag;
    Kel32s hint;
    Kel32s bufferSize;
    KelFFTSpec_R_32f* inner;
};

#if defined(__i386__)
static_assert(sizeof(KelFFTSpec_R_32f) == 76);
static_assert(sizeof(KelFFTSpec_R_16s32s) == 24);
#endif

namespace kels {

inline constexpr Kel32s kFloatSpec = 6;
inline constexpr Kel32s kIntegerSpec = 0x4c4d5364;

inline constexpr int kMaxFftOrder = 30;
// Below, a direct routine for each order; from there on a complex transform of half the length.
inline constexpr int kFirstTableOrder = 4;
// Below, vectors of four; from there on the length of the complex transform is at least the square of any width.
inline constexpr int kFirstWideOrder = 7;
// From there on the four-step transform: its data leave the second-level cache.
inline constexpr int kFirstSteppedOrder = 16;

// The four-step transform's rows and points in a row, as logarithms.
constexpr int rowBits(int order) {
    return (order - 1) / 2;
}
constexpr int columnBits(int order) {
    return order - 1 - rowBits(order);
}

// A specification for an order from 0 to kMaxFftOrder.  On a fault nothing stays allocated and *ppSpec is as it was.
KelStatus buildSpec(KelFFTSpec_R_32f** ppSpec, int order, int flag, int hint);
KelStatus buildSpec(KelFFTSpec_R_16s32s** ppSpec, int order, int flag, int hint);
void releaseSpec(KelFFTSpec_R_32f* spec);  // null is allowed
void releaseSpec(KelFFTSpec_R_16s32s* spec);

// Bytes of scratch memory that a transform needs, alignment included.
int64_t scratchBytes(int order);

// Bytes of the N + 2 spectrum values of the integer form, up to the next boundary of its work buffer.
constexpr int64_t spectrumBytes(int order) {
    return (int64_t{sizeof(Kel32f)} << order) + 16;
}

// The scratch memory of one call: the caller's buffer from its first 16-byte boundary, or an allocation that lives as
// long as this object.  Sizes that an int cannot hold are always allocated.
class WorkBuffer {
  public:
    WorkBuffer(const KelFFTSpec_R_32f& spec, Kel8u* callers);
    ~WorkBuffer() { kelsFree(owned_); }
    WorkBuffer(const WorkBuffer&) = delete;
    WorkBuffer& operator=(const WorkBuffer&) = delete;

    bool failed() const { return failed_; }
    Kel32f* floats() const { return floats_; }

  private:
    Kel8u* owned_ = nullptr;
    Kel32f* floats_ = nullptr;
    bool failed_ = false;
};

inline Kel8u* alignUp(Kel8u* p, std::size_t boundary) {
    return p + (boundary - reinterpret_cast<uintptr_t>(p) % boundary) % boundary;
}

}  // namespace kels
