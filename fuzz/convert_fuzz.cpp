// Scaled conversions under any length, scale factor, rounding mode and element.
#include "bytes.h"
#include "kels/core.h"

using fuzz::Bytes;
using fuzz::Guarded;

namespace {

template <class From, class To, class... Modes>
void convert(Bytes& in, KelStatus (*function)(const From*, To*, int, Modes..., int), Modes... modes) {
    constexpr int kMax = 40;
    const int len = in.count(kMax), scaleFactor = in.scalar();
    // More than kMax elements cannot be provided.
    if (len > kMax) return;
    const auto source = in.array<From>(fuzz::room(len, kMax));
    Guarded<To> destination(source.size());
    fuzz::requireUntouchedOnError(function(source.data(), destination.data(), len, modes..., scaleFactor), destination);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Bytes in(data, size);
    switch (in.any<uint8_t>() % 7) {
        case 0:
            convert<Kel32f, Kel16s, int>(in, kelsConvert_32f16s_Sfs, in.scalar());
            break;
        case 1:
            convert<Kel32f, Kel32s, int>(in, kelsConvert_32f32s_Sfs, in.scalar());
            break;
        case 2:
            convert<Kel64f, Kel32s, int>(in, kelsConvert_64f32s_Sfs, in.scalar());
            break;
        case 3:
            convert<Kel32s, Kel16s>(in, kelsConvert_32s16s_Sfs);
            break;
        case 4:
            convert<Kel16s, Kel32f>(in, kelsConvert_16s32f_Sfs);
            break;
        case 5:
            convert<Kel32s, Kel32f>(in, kelsConvert_32s32f_Sfs);
            break;
        default:
            convert<Kel16s, Kel64f>(in, kelsConvert_16s64f_Sfs);
    }
    return 0;
}
