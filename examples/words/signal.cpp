#include "signal.h"

#include <cmath>
#include <numbers>

namespace words {
namespace {

constexpr float kOffsetPole = 0.999F;
constexpr float kFullScale = 32768;

}  // namespace

Vector hammingWindow(int length) {
    Vector window(length);
    for (int i = 0; i < length; ++i) {
        const double phase = 2 * std::numbers::pi * i / std::max(1, length - 1);
        window[i] = static_cast<float>(0.54 - 0.46 * std::cos(phase));
    }
    return window;
}

Vector withoutOffset(const Vector& samples) {
    const int length = samples.size();
    Vector signal(length);
    check(kelsMulC_32f(samples.data(), kFullScale, signal.data(), length), "kelsMulC_32f");
    Kel32f last = signal[0];
    check(kelsCompensateOffset_32f_I(signal.data(), length, &last, 0, kOffsetPole), "kelsCompensateOffset_32f_I");
    return signal;
}

void preEmphasise(Vector& signal, float factor) {
    const int length = signal.size();
    if (length < 2) return;
    Vector previous(length - 1);
    check(kelsMulC_32f(signal.data(), factor, previous.data(), length - 1), "kelsMulC_32f");
    check(kelsSub_32f_I(previous.data(), signal.data() + 1, length - 1), "kelsSub_32f_I");
}

}  // namespace words
