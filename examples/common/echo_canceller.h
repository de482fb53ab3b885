// The functions of kels/echo.h chained into an echo canceller.
#ifndef COMMON_ECHO_CANCELLER_H
#define COMMON_ECHO_CANCELLER_H

#include <kels.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <vector>

#include "common/check.h"

namespace common {

using Signal = std::vector<float>;
using Spectrum = std::vector<Kel32fc>;
struct FreeFft {
    void operator()(KelFFTSpec_R_32f* fft) const { kelsFFTFree_R_32f(fft); }
};

class Canceller {
  public:
    const int n;  // samples of a block: 10 to 20 ms
    Canceller(int rate, int tailMs) : n(blockOf(rate)), bins_(n + 1), parts_((tailMs * rate / 1000 + n - 1) / n) {
        KelFFTSpec_R_32f* fft = nullptr;
        check(kelsFFTInitAlloc_R_32f(&fft, static_cast<int>(std::lround(std::log2(2 * n))), kelFftDivInvByN, 0));
        fft_.reset(fft);
        int bytes = 0;
        check(kelsFFTGetBufSize_R_32f(fft, &bytes));
        buffer_.resize(static_cast<std::size_t>(bytes) + 15);
        check(kelsControllerGetSizeAEC_32f(n, &bytes));
        controller_.resize(static_cast<std::size_t>(bytes) / sizeof(double));
        check(kelsControllerInitAEC_32f(rate, n, controller()));
        smooth_ = std::pow(0.87F, 125.0F * static_cast<float>(n) / static_cast<float>(rate));
        for (Signal* v : {&reference, &echo, &error, &frame_}) v->resize(2 * n);
        for (Spectrum* v : {&y_, &e_}) v->resize(bins_);
        near_.resize(bins_);
        // Their sum is the expected echo gain: 5 dB.  They fall slowly, for the delay may be 100 ms.
        constexpr float kGain = 3, kFall = 20;
        double sum = 0;
        for (int p = 0; p < parts_; ++p) {
            priors_.push_back(std::exp(-kFall * static_cast<float>(p * n) / static_cast<float>(rate)));
            sum += priors_.back();
        }
        for (float& prior : priors_) prior *= kGain / static_cast<float>(sum);
        spectra_.resize(2 * parts_ * bins_);
        reals_.resize(2 * parts_ * bins_);
        for (int p = 0; p < parts_; ++p) {
            x_.push_back(&spectra_[2 * p * bins_]), h_.push_back(x_[p] + bins_);
            var_.push_back(&reals_[2 * p * bins_]), step_.push_back(var_[p] + bins_);
        }
        startVariances();
    }
    // Of the last two blocks, the new one from n on: reference, predicted echo, what is left of the microphone.
    Signal reference, echo, error;

    // Takes n samples of both and gives the flag.  A microphone that is switched off teaches nothing.
    int process(const float* far, const float* microphone) {
        for (Signal* v : {&reference, &echo, &error}) check(kelsMove_32f(&(*v)[n], v->data(), n));
        check(kelsCopy_32f(far, &reference[n], n));
        std::rotate(x_.begin(), x_.end() - 1, x_.end());
        transform(reference, x_[0]);
        const bool muted = std::all_of(microphone, microphone + n, [](float v) { return v == 0; });
        check(kelsFilterAECNLMS_32fc(sources(x_), sources(h_), y_.data(), bins_, parts_));
        inverse(y_.data());
        for (int i = 0; i < n; ++i) {
            echo[n + i] = muted ? 0 : frame_[n + i];
            error[n + i] = microphone[i] - echo[n + i];
        }
        if (muted) return kelAECNoReference;
        check(kelsZero_32f(frame_.data(), n));
        check(kelsCopy_32f(&error[n], &frame_[n], n));
        transform(frame_, e_.data());
        float factor, forget;
        int flag;
        check(kelsControllerUpdateAEC_32f(far, microphone, &error[n], controller(), &factor, &forget, &flag));
        if (flag == kelAECPathChange) startVariances();
        check(kelsStepSizeUpdateAECNLMS_32f(sources(x_), sources(h_), e_.data(), near_.data(), var_.data(),
                                            step_.data(), bins_, parts_, factor, forget, smooth_));
        check(kelsCoefUpdateAECNLMS_32fc_I(sources(x_), e_.data(), sources(step_), h_.data(), bins_, parts_));
        for (Kel32fc* h : h_) {  // n samples of the room's response and n zeros
            inverse(h);
            check(kelsZero_32f(&frame_[n], n));
            transform(frame_, h);
        }
        return flag;
    }
    const KelFFTSpec_R_32f* fft() const { return fft_.get(); }

  private:
    static int blockOf(int rate) {
        int length = 32;
        while (length * 100 < rate) length *= 2;
        return length;
    }
    template <class T>
    static const T** sources(std::vector<T*>& rows) {
        return const_cast<const T**>(rows.data());
    }
    KelAECState_32f* controller() { return reinterpret_cast<KelAECState_32f*>(controller_.data()); }
    void startVariances() {
        for (int p = 0; p < parts_; ++p) check(kelsSet_32f(priors_[p], var_[p], bins_));
    }
    void transform(const Signal& blocks, Kel32fc* spectrum) {
        check(kelsFFTFwd_RToCCS_32f(blocks.data(), &spectrum->re, fft_.get(), buffer_.data()));
    }
    // Into frame_.  From its second value on, with the first one repeated there, a CCS spectrum is a Pack spectrum.
    void inverse(Kel32fc* spectrum) {
        spectrum[0].im = spectrum[0].re;
        check(kelsFFTInv_PackToR_32f(&spectrum[0].im, frame_.data(), fft_.get(), buffer_.data()));
    }
    const int bins_, parts_;
    std::unique_ptr<KelFFTSpec_R_32f, FreeFft> fft_;
    std::vector<Kel8u> buffer_;  // of the transform
    std::vector<double> controller_;
    float smooth_;
    Signal frame_, near_, priors_, reals_;
    Spectrum y_, e_, spectra_;
    std::vector<Kel32fc*> x_, h_;
    std::vector<float*> var_, step_;
};

}  // namespace common

#endif
