// Conversion of the sampling rate on one channel, by the library's resampling.
#include "common/stream.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <stdexcept>
#include <string>

#include "common/check.h"

using common::check;

namespace {

constexpr double kMostTaps = 1 << 19;  // of all phases together: 2 MB, a quarter of a second to compute

}  // namespace

Resampler::Resampler(int inRate, int outRate, const Quality& quality) : factor_(static_cast<double>(outRate) / inRate) {
    const double width = quality.window * std::max(1.0, 1 / factor_);
    if (width > 1e8) throw std::runtime_error("the rates are too far apart");
    const int len = static_cast<int>(std::ceil(width));
    if (static_cast<double>(outRate / std::gcd(inRate, outRate)) * len <= kMostTaps) {
        KelResamplePolyphaseFixed_32f* state = nullptr;
        check(kelsResamplePolyphaseFixedInitAlloc_32f(&state, inRate, outRate, len, quality.rollf, quality.alpha, 0),
              "kelsResamplePolyphaseFixedInitAlloc_32f");
        fixed_.reset(state);
        reach_ = len / 2.0;
    } else {
        KelResamplePolyphase_32f* state = nullptr;
        check(
            kelsResamplePolyphaseInitAlloc_32f(&state, quality.window, quality.nStep, quality.rollf, quality.alpha, 0),
            "kelsResamplePolyphaseInitAlloc_32f");
        general_.reset(state);
        reach_ = width / 2;
    }
}

void Resampler::run(const float* src, int len, double* time, std::vector<float>& out) const {
    const std::size_t before = out.size();
    const double most = (len - 1 - reach_ - *time) * factor_ + 2;
    if (!(most > 0)) return;
    out.resize(before + static_cast<std::size_t>(most));
    int n = 0;
    check(fixed_ ? kelsResamplePolyphaseFixed_32f(fixed_.get(), src, len, out.data() + before, 1, time, &n)
                 : kelsResamplePolyphase_32f(general_.get(), src, len, out.data() + before, factor_, 1, time, &n),
          "resampling");
    out.resize(before + static_cast<std::size_t>(n));
}

Channel::Channel(const Resampler& resampler)
    : resampler_(&resampler),
      kept_(static_cast<std::size_t>(std::ceil(resampler.reach()))),
      time_(std::ceil(resampler.reach())) {}

void Channel::feed(const float* samples, int n, std::vector<float>& out) {
    kept_.insert(kept_.end(), samples, samples + n);
    if (kept_.empty()) return;
    resampler_->run(kept_.data(), static_cast<int>(kept_.size()), &time_, out);
    // What lies before the reach of the next output is over; that output may also lie beyond all there is.
    const auto over = std::clamp<std::ptrdiff_t>(static_cast<std::ptrdiff_t>(std::floor(time_ - resampler_->reach())),
                                                 0, static_cast<std::ptrdiff_t>(kept_.size()));
    kept_.erase(kept_.begin(), kept_.begin() + over);
    time_ -= static_cast<double>(over);
}
