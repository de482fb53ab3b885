// Deltas of blocks of any shape and mode, with history rows where the mode asks for them.
#include "bytes.h"
#include "kels/delta.h"

using fuzz::Bytes;
using fuzz::Guarded;

namespace {

// columns: 2 with deltas, 3 with accelerations too; history: the rows kept from one block to the next.
template <class T, class... Multipliers, class... Scale>
void block(Bytes& in, int columns, int history,
           KelStatus (*function)(const T*, int, T*, int, int, Multipliers..., int, Scale...),
           Multipliers... multipliers, Scale... scale) {
    constexpr int kMax = 20, kMaxStep = 3 * kMax + 5;
    const int width = in.count(kMax), step = in.count(kMaxStep), height = in.count(kMax), mode = in.scalar();
    // More than that cannot be provided.
    if (height > kMax || step > kMaxStep) return;

    const int rows = (mode & kelDeltaBlockFirst) != 0 ? height : history + height;
    const bool valid = width >= 1 && width <= kMax && height >= 0 && rows >= 1 && step / columns >= width;
    const auto source = in.array<T>(valid ? static_cast<size_t>(height * width) : 0);
    auto destination = in.array<T>(valid ? static_cast<size_t>((rows - 1) * step + columns * width) : 0);
    const auto before = destination.vector();
    const KelStatus status =
        function(source.data(), width, destination.data(), step, height, multipliers..., mode, scale...);
    fuzz::require(status >= 0 || fuzz::sameBits(before, destination.vector()), "nothing is written after an error");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Bytes in(data, size);
    const auto val = in.any<Kel32f>(), valDD = in.any<Kel32f>();
    const auto val16 = in.any<Kel16s>(), valDD16 = in.any<Kel16s>();
    const int scaleFactor = in.scalar();
    switch (in.any<uint8_t>() % 6) {
        case 0:
            block<Kel32f, Kel32f>(in, 2, 2, kelsDelta_Win1_32f_D2, val);
            break;
        case 1:
            block<Kel32f, Kel32f>(in, 2, 4, kelsDelta_Win2_32f_D2, val);
            break;
        case 2:
            block<Kel32f, Kel32f, Kel32f>(in, 3, 3, kelsDeltaDelta_Win1_32f_D2, val, valDD);
            break;
        case 3:
            block<Kel32f, Kel32f, Kel32f>(in, 3, 6, kelsDeltaDelta_Win2_32f_D2, val, valDD);
            break;
        case 4:
            block<Kel16s, Kel16s>(in, 2, 4, kelsDelta_Win2_16s_D2Sfs, val16, scaleFactor);
            break;
        default:
            block<Kel16s, Kel16s, Kel16s>(in, 3, 6, kelsDeltaDelta_Win2_16s_D2Sfs, val16, valDD16, scaleFactor);
    }
    return 0;
}
