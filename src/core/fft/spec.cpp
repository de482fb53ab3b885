// Specifications are built here: their factors, tables of twiddles, and sizes of scratch memory.
#include "core/fft/spec.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "core/constants.h"
#include "core/fft/lanes.h"
#include "core/layout.h"
#include "core/scaling.h"

namespace kels {
namespace {

constexpr std::size_t kLine = 64;  // bytes of a cache line
constexpr std::size_t kBoundary = 16;

// e^(-2 pi i k / n) for a power of two n >= 8 and any k, rounded once from double.  Angles are reduced to an eighth of
// the circle in integers, so that they lose nothing and symmetric twiddles agree to the bit.
Kel32fc unitRoot(std::size_t k, std::size_t n) {
    k &= n - 1;
    const std::size_t quarter = k / (n / 4);
    const std::size_t rest = k % (n / 4);
    const bool upper = rest > n / 8;
    const double angle = static_cast<double>(upper ? n / 4 - rest : rest) * (2 * kPi / static_cast<double>(n));
    double re = std::cos(angle);
    double im = std::sin(angle);
    if (upper) std::swap(re, im);
    for (std::size_t i = 0; i < quarter; ++i) re = -std::exchange(im, re);
    return {static_cast<Kel32f>(re), static_cast<Kel32f>(-im)};
}

void fillLaneTwiddles(int order, Kel32fc* out) {
    for (int bits = radixBits(order); bits < order; order -= bits, bits = radixBits(order)) {
        const std::size_t n = std::size_t{1} << order;
        for (std::size_t p = 0; p < n >> bits; ++p) {
            for (std::size_t j = 1; j < std::size_t{1} << bits; ++j) *out++ = unitRoot(p * j, n);
        }
    }
}

// A unit of w_n^(step * k) for W consecutive k.
void fillUnit(std::size_t width, std::size_t first, std::size_t step, std::size_t n, Kel32f* out) {
    for (std::size_t i = 0; i < width; ++i) {
        const Kel32fc root = unitRoot((first + i) * step, n);
        out[i] = root.re;
        out[width + i] = root.im;
    }
}

template <int W>
bool buildInCacheTables(KelFFTSpec_R_32f& spec) {
    const std::size_t m = std::size_t{1} << (spec.order - 1);
    const std::size_t length = m / W;
    const int laneOrder = spec.order - 1 - kWidthBits<W>;
    const auto arrange = [&](Layout& layout) {
        spec.laneTwiddles = layout.take<Kel32fc>(static_cast<int64_t>(laneTwiddleCount(laneOrder)), kLine);
        spec.crossTwiddles =
            layout.take<Kel32f>(2 * (W - 1) * static_cast<int64_t>(std::max<std::size_t>(length, W)), kLine);
        spec.forwardRotation = layout.take<Kel32f>(static_cast<int64_t>(m), kLine);
    };
    spec.tables = allocateArranged(arrange);
    if (spec.tables == nullptr) return false;
    fillLaneTwiddles(laneOrder, spec.laneTwiddles);
    Kel32f* cross = spec.crossTwiddles;
    for (std::size_t k = 0; k < length; k += W) {
        for (std::size_t l = 1; l < W; ++l, cross += 2 * W) fillUnit(W, k, l, m, cross);
    }
    return true;
}

bool buildSteppedTables(KelFFTSpec_R_32f& spec) {
    constexpr int W = kWidestFloats;
    const int64_t m = int64_t{1} << (spec.order - 1);
    const std::size_t rows = std::size_t{1} << rowBits(spec.order);
    const std::size_t columns = std::size_t{1} << columnBits(spec.order);
    const auto arrange = [&](Layout& layout) {
        spec.laneTwiddles = layout.take<Kel32fc>(static_cast<int64_t>(laneTwiddleCount(rowBits(spec.order))), kLine);
        spec.rowTwiddles = layout.take<Kel32fc>(static_cast<int64_t>(laneTwiddleCount(columnBits(spec.order))), kLine);
        spec.crossTwiddles = layout.take<Kel32f>(2 * W * static_cast<int64_t>(rows), kLine);
        spec.stepTwiddles = layout.take<Kel32fc>(m / W, kLine);
        spec.forwardRotation = layout.take<Kel32f>(m, kLine);
    };
    spec.tables = allocateArranged(arrange);
    if (spec.tables == nullptr) return false;
    fillLaneTwiddles(rowBits(spec.order), spec.laneTwiddles);
    fillLaneTwiddles(columnBits(spec.order), spec.rowTwiddles);
    const std::size_t n = rows * columns;
    for (std::size_t k = 0; k < rows; ++k) fillUnit(W, 0, k, n, spec.crossTwiddles + 2 * W * k);
    Kel32fc* step = spec.stepTwiddles;
    for (std::size_t c = 0; c < columns; c += W) {
        for (std::size_t k = 0; k < rows; ++k) *step++ = unitRoot(c * k, n);
    }
    return true;
}

// The tables that orders from kFirstTableOrder on need; false when memory is out or the tables cannot be counted.
bool buildTables(KelFFTSpec_R_32f& spec) {
    if (spec.order < kFirstTableOrder) return true;
    const NearestScope scope;
    const bool built = spec.order >= kFirstSteppedOrder ? buildSteppedTables(spec)
                       : spec.order >= kFirstWideOrder  ? buildInCacheTables<kWidestFloats>(spec)
                                                        : buildInCacheTables<4>(spec);
    if (!built) return false;
    const std::size_t n = std::size_t{1} << spec.order;
    for (std::size_t k = 0; k < n / 4; ++k) {
        const Kel32fc root = unitRoot(k, n);
        spec.forwardRotation[k] = root.re;
        spec.forwardRotation[n / 4 + k] = -root.im;
    }
    spec.inverseRotation = spec.forwardRotation;
    const int64_t bytes = scratchBytes(spec.order);
    spec.bufferSize = bytes > std::numeric_limits<Kel32s>::max() ? 0 : static_cast<Kel32s>(bytes);
    return true;
}

// False for a flag that is none of the four.
bool setScaling(KelFFTSpec_R_32f& spec, int flag) {
    const auto n = static_cast<long double>(int64_t{1} << spec.order);
    spec.factor = 1;
    switch (flag) {
        case kelFftDivFwdByN:
            spec.forwardScaled = 1;
            spec.factor = static_cast<Kel32f>(1 / n);
            return true;
        case kelFftDivInvByN:
            spec.inverseScaled = 1;
            spec.factor = static_cast<Kel32f>(1 / n);
            return true;
        case kelFftDivBySqrtN:
            spec.forwardScaled = 1;
            spec.inverseScaled = 1;
            spec.factor = static_cast<Kel32f>(1 / std::sqrt(n));
            return true;
        case kelFftNoDiv:
            return true;
        default:
            return false;
    }
}

}  // namespace

KelStatus buildSpec(KelFFTSpec_R_32f** ppSpec, int order, int flag, int hint) {
    auto* const spec = allocateCleared<KelFFTSpec_R_32f>(1);
    if (spec == nullptr) return kelStatusNoMemory;
    spec->identifier = kFloatSpec;
    spec->order = order;
    spec->hint = hint;
    const KelStatus status = !setScaling(*spec, flag) ? kelStatusFftFlag
                             : !buildTables(*spec)    ? kelStatusNoMemory
                                                      : kelStatusOk;
    if (status != kelStatusOk) {
        kelsFree(spec);
        return status;
    }
    *ppSpec = spec;
    return kelStatusOk;
}

KelStatus buildSpec(KelFFTSpec_R_16s32s** ppSpec, int order, int flag, int hint) {
    const int64_t bufferBytes = spectrumBytes(order) + scratchBytes(order);
    if (bufferBytes > std::numeric_limits<Kel32s>::max()) return kelStatusNoMemory;
    auto* const spec = allocateCleared<KelFFTSpec_R_16s32s>(1);
    if (spec == nullptr) return kelStatusNoMemory;
    const KelStatus status = buildSpec(&spec->inner, order, flag, hint);
    if (status != kelStatusOk) {
        kelsFree(spec);
        return status;
    }
    spec->identifier = kIntegerSpec;
    spec->order = order;
    spec->flag = flag;
    spec->hint = hint;
    spec->bufferSize = static_cast<Kel32s>(bufferBytes);
    *ppSpec = spec;
    return kelStatusOk;
}

void releaseSpec(KelFFTSpec_R_32f* spec) {
    if (spec == nullptr) return;
    kelsFree(spec->tables);
    kelsFree(spec);
}

void releaseSpec(KelFFTSpec_R_16s32s* spec) {
    if (spec == nullptr) return;
    releaseSpec(spec->inner);
    kelsFree(spec);
}

int64_t scratchBytes(int order) {
    if (order < kFirstTableOrder) return 0;
    const int64_t pairs = int64_t{1} << (order - 1);
    // In steps: a gap behind each row, and the lines.
    const int64_t more =
        order < kFirstSteppedOrder ? 0 : (int64_t{1} << rowBits(order)) + (int64_t{1} << columnBits(order));
    return static_cast<int64_t>(sizeof(Kel32fc)) * (pairs + kWidestFloats * more) +
           static_cast<int64_t>(kLine - kBoundary);
}

WorkBuffer::WorkBuffer(const KelFFTSpec_R_32f& spec, Kel8u* callers) {
    const int64_t bytes = scratchBytes(spec.order);
    if (bytes == 0) return;
    Kel8u* memory = callers;
    if (callers == nullptr || spec.bufferSize == 0) {
        memory = owned_ = allocate<Kel8u>(bytes);
        failed_ = memory == nullptr;
        if (failed_) return;
    }
    floats_ = reinterpret_cast<Kel32f*>(alignUp(alignUp(memory, kBoundary), kLine));
}

}  // namespace kels
