#include "signal.h"

namespace words {
namespace {

constexpr float kOffsetPole = 0.999F;
constexpr float kFullScale = 32768;

}  // namespace

Vector hammingWindow(int length) {
    Vector window(length);
    check(kelsWindow_32f(window.data(), length, kelWinHamming, 0), "kelsWindow_32f");
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

}  // namespace words
