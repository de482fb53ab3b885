// Time warping of sequences of any shape and content, under any band and beam.
#include "bytes.h"
#include "kels/dtw.h"

using fuzz::Bytes;
using fuzz::Guarded;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr int kMax = 30, kMaxStep = kMax + 5;
    Bytes in(data, size);
    const bool integer = in.any<uint8_t>() % 2 != 0;
    const int height1 = in.count(kMax), height2 = in.count(kMax), width = in.count(kMax), step = in.count(kMaxStep);
    const int delta = in.scalar(), scaleFactor = in.scalar();
    // More than that cannot be provided.
    if (height1 > kMax || height2 > kMax || step > kMaxStep) return 0;

    // The last row ends with its last element, not with its step.
    const auto elements = [&](int height) -> size_t {
        const bool valid = height >= 1 && width >= 1 && step >= width;
        return valid ? static_cast<size_t>(height - 1) * static_cast<size_t>(step) + static_cast<size_t>(width) : 0;
    };
    if (integer) {
        const auto a = in.array<Kel16s>(elements(height1)), b = in.array<Kel16s>(elements(height2));
        Guarded<Kel32s> distance(1);
        const KelStatus status = kelsDTW_L2Low_16s32s_D2Sfs(a.data(), height1, b.data(), height2, width, step,
                                                            distance.data(), delta, in.any<Kel32s>(), scaleFactor);
        fuzz::requireUntouchedOnError(status, distance);
    } else {
        const auto a = in.array<Kel32f>(elements(height1)), b = in.array<Kel32f>(elements(height2));
        Guarded<Kel32f> distance(1);
        const KelStatus status =
            kelsDTW_L2_32f_D2(a.data(), height1, b.data(), height2, width, step, distance.data(), delta, in.number());
        fuzz::requireUntouchedOnError(status, distance);
        fuzz::require(!(distance[0] < 0), "a distance is not negative");
    }
    return 0;
}
