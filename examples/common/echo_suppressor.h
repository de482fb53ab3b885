// Residual echo, turned down by the library's noise gains.
#ifndef COMMON_ECHO_SUPPRESSOR_H
#define COMMON_ECHO_SUPPRESSOR_H

#include "common/echo_canceller.h"

namespace common {

// What is left of the echo, bin by bin, is taken for a share of the predicted echo and turned down as noise would be.
// Comes a block late.
class Suppressor {
  public:
    explicit Suppressor(const Canceller& filter) : filter_(filter), n_(filter.n), frame_(2 * n_), out_(2 * n_) {
        for (int i = 0; i < 2 * n_; ++i)
            window_.push_back(std::sin(3.14159265F * (static_cast<float>(i) + 0.5F) / static_cast<float>(2 * n_)));
        for (Signal* v : {&left_, &heard_, &prior_, &post_, &echo_, &power_}) v->resize(n_ + 1);
        gain_.assign(n_ + 1, 1);
        spectrum_.resize(n_ + 1);
    }
    const float* process(int flag) {
        constexpr float kKept = 0.95F, kMemory = 0.9F, kLeastPower = 1e-12F, kLeastGain = 0.1F;
        transform(filter_.echo, echo_);
        transform(filter_.error, power_);
        for (int k = 0; k <= n_; ++k) {
            if (flag == kelAECSingleTalk) {
                left_[k] = kKept * left_[k] + (1 - kKept) * power_[k];
                heard_[k] = kKept * heard_[k] + (1 - kKept) * echo_[k];
            }
            const float noise = echo_[k] * std::min(1.0F, left_[k] / (heard_[k] + kLeastPower)) + kLeastPower;
            const float before = gain_[k] * gain_[k] * post_[k];
            post_[k] = power_[k] / noise;
            prior_[k] = kMemory * before + (1 - kMemory) * std::max(post_[k] - 1, 0.0F);
        }
        check(kelsFilterUpdateEMNS_32f(prior_.data(), post_.data(), gain_.data(), n_ + 1));
        for (int k = 0; k <= n_; ++k) {
            gain_[k] = std::clamp(gain_[k], kLeastGain, 1.0F);
            spectrum_[k] = {spectrum_[k].re * gain_[k], spectrum_[k].im * gain_[k]};
        }
        spectrum_[0].im = spectrum_[0].re;
        check(kelsFFTInv_PackToR_32f(&spectrum_[0].im, frame_.data(), filter_.fft(), nullptr));
        check(kelsMove_32f(&out_[n_], out_.data(), n_));
        check(kelsZero_32f(&out_[n_], n_));
        for (int i = 0; i < 2 * n_; ++i) out_[i] += window_[i] * frame_[i];
        return out_.data();
    }

  private:
    void transform(const Signal& blocks, Signal& power) {
        check(kelsMul_32f(blocks.data(), window_.data(), frame_.data(), 2 * n_));
        check(kelsFFTFwd_RToCCS_32f(frame_.data(), &spectrum_[0].re, filter_.fft(), nullptr));
        for (int k = 0; k <= n_; ++k) power[k] = spectrum_[k].re * spectrum_[k].re + spectrum_[k].im * spectrum_[k].im;
    }
    const Canceller& filter_;
    const int n_;
    Signal window_, frame_, out_, left_, heard_, prior_, post_, gain_, echo_, power_;
    Spectrum spectrum_;
};

}  // namespace common

#endif
