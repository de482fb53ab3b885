#include "narrow_band.h"

#include <kels.h>

#include <algorithm>
#include <cmath>

namespace pitch {
namespace {

constexpr double kLeastHertz = 50, kMostHertz = 2000;  // harmonics enough, and half of white noise stays outside
constexpr int kHalfLength = 120;

// The difference of two low-pass filters under a Hann window.
std::vector<float> bandPass() {
    const double pi = std::acos(-1.0);
    std::vector<float> taps;
    for (int i = -kHalfLength; i <= kHalfLength; ++i) {
        const auto lowPass = [&](double limit) {
            const double x = 2 * pi * limit / kRate;
            return i == 0 ? x / pi : std::sin(x * i) / (pi * i);
        };
        const double window = 0.5 + 0.5 * std::cos(pi * i / (kHalfLength + 1));
        taps.push_back(static_cast<float>(window * (lowPass(kMostHertz) - lowPass(kLeastHertz))));
    }
    return taps;
}

}  // namespace

NarrowBand::NarrowBand(int rate) : rate_(static_cast<std::size_t>(rate)), taps_(bandPass()), kept_(kHalfLength) {
    if (rate == kRate) return;
    resampler_ = std::make_unique<Resampler>(rate, kRate, kQualities[0]);
    channel_ = std::make_unique<Channel>(*resampler_);
}

void NarrowBand::feed(const float* samples, std::size_t count) {
    taken_ += count;
    if (!channel_) return filter(samples, count);
    resampled_.clear();
    channel_->feed(samples, static_cast<int>(count), resampled_);
    filter(resampled_.data(), resampled_.size());
}

void NarrowBand::filter(const float* samples, std::size_t count) {
    kept_.insert(kept_.end(), samples, samples + count);
    const auto length = static_cast<int>(taps_.size());
    std::size_t done = 0;
    for (; done + taps_.size() <= kept_.size(); ++done) {
        float sum;
        kelsDotProd_32f(&kept_[done], taps_.data(), length, &sum);
        samples_.push_back(sum);
    }
    given_ += done;
    kept_.erase(kept_.begin(), kept_.begin() + static_cast<std::ptrdiff_t>(done));
}

// Silence follows the end until all that came in is out.
void NarrowBand::finish() {
    const std::size_t whole = taken_ * kRate / rate_;
    const std::vector<float> silence(1024);
    while (given_ < whole) {
        const std::size_t before = taken_;
        feed(silence.data(), silence.size());
        taken_ = before;
    }
    samples_.resize(samples_.size() - (given_ - whole));
}

}  // namespace pitch
