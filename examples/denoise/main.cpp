// denoise: takes steady noise out of a recording, a frame at a time, as it would from a microphone.
//
// usage: denoise IN OUT        any format that libsndfile reads, 8 to 48 kHz; OUT becomes a WAV file when all is done
//
// Each frame of 32 ms is windowed and transformed.  The power spectrum of the noise is estimated by minima-controlled
// recursive averaging, the signal-to-noise ratio of each bin by the decision-directed rule, and the Ephraim-Malah gain
// for that ratio multiplies the spectrum.  Frames come every 8 ms and are added up again.
#include <kels.h>
#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "common/check.h"
#include "common/sound_input.h"

namespace {

using common::check;

constexpr const char* kUsage = R"(usage: denoise IN OUT

Takes steady noise out of the sound file IN, of 8 to 48 kHz and any number of channels, and writes the WAV file OUT.

Exit status: 0 if all is well, 1 if something failed (OUT is then left as it was), 2 if the command line is wrong.
)";

constexpr double kPi = 3.14159265358979323846;
constexpr float kMemory = 0.98F;      // of the decision-directed rule: what the last frame counts
constexpr float kLeastRatio = 3e-3F;  // -25 dB: residual noise stays noise and does not turn into tones
constexpr float kLeastGain = 0.1F;    // -20 dB: a little of the room remains
constexpr float kLeastNoise = 1e-9F;  // of samples within -1..1: below what 16 bits can say

using Signal = std::vector<float>;

class Denoiser {
  public:
    explicit Denoiser(int rate) {
        int order = 8;
        while ((1 << order) * 1000 < rate * 32) ++order;
        length_ = 1 << order;
        bins_ = length_ / 2 + 1;

        KelFFTSpec_R_32f* fft = nullptr;
        check(kelsFFTInitAlloc_R_32f(&fft, order, kelFftDivInvByN, kelHintNone));
        fft_.reset(fft);

        int bytes = 0;
        check(kelsGetSizeMCRA_32f(length_, &bytes));
        memory_.reset(kelsMalloc_8u(bytes));
        if (!memory_) throw std::bad_alloc();
        check(kelsAltInitMCRA_32f(rate, length_, hop(), mcra()));

        // The square root of a Hann window, before and after: four overlapping squares of it add up to 2.
        window_.resize(length_);
        for (int i = 0; i < length_; ++i)
            window_[i] = static_cast<float>(std::sin(kPi * (i + 0.5) / length_) / std::sqrt(2));
        for (Signal* v : {&input_, &frame_, &output_}) v->resize(length_);
        spectrum_.resize(length_ + 2);
        for (Signal* v : {&power_, &noise_, &post_, &prior_, &clean_}) v->resize(bins_);
        gain_.assign(bins_, 1);
    }

    int hop() const { return length_ / 4; }
    int delay() const { return length_ - hop(); }

    // Takes hop() samples and gives hop() samples, those from delay() samples before.
    void process(const float* in, float* out) {
        const int kept = length_ - hop();
        check(kelsMove_32f(&input_[hop()], &input_[0], kept));
        check(kelsCopy_32f(in, &input_[kept], hop()));

        check(kelsMul_32f(input_.data(), window_.data(), frame_.data(), length_));
        check(kelsFFTFwd_RToCCS_32f(frame_.data(), spectrum_.data(), fft_.get(), nullptr));
        // The first frames begin before the recording does: they would be taken for its noise, and pass instead.
        taken_ = std::min(taken_ + hop(), length_);
        if (taken_ == length_) updateGain();
        for (int k = 0; k < bins_; ++k) {
            spectrum_[2 * k] *= gain_[k];
            spectrum_[2 * k + 1] *= gain_[k];
        }
        // From the second value on, with the first one repeated there, a CCS spectrum is a Pack spectrum.
        spectrum_[1] = spectrum_[0];
        check(kelsFFTInv_PackToR_32f(&spectrum_[1], frame_.data(), fft_.get(), nullptr));
        check(kelsMul_32f(frame_.data(), window_.data(), frame_.data(), length_));

        check(kelsAdd_32f_I(frame_.data(), output_.data(), length_));
        check(kelsCopy_32f(output_.data(), out, hop()));
        check(kelsMove_32f(&output_[hop()], &output_[0], kept));
        check(kelsZero_32f(&output_[kept], hop()));
    }

  private:
    template <auto free>
    struct Free {
        template <class T>
        void operator()(T* p) const {
            free(p);
        }
    };

    KelMCRAState_32f* mcra() { return reinterpret_cast<KelMCRAState_32f*>(memory_.get()); }

    void updateGain() {
        check(kelsMagnitudeSqr_32fc(reinterpret_cast<const Kel32fc*>(spectrum_.data()), power_.data(), bins_));
        check(kelsUpdateNoisePSDMCRA_32f_I(power_.data(), mcra(), noise_.data()));
        // A posteriori: the frame's power by the noise's.  A priori: what the last frame kept, and a little of this
        // one.
        check(kelsScaleLM_32f(noise_.data(), gain_.data(), bins_, kLeastNoise, 1, 0));
        check(kelsDiv_32f(gain_.data(), power_.data(), post_.data(), bins_));
        check(kelsDiv_32f(gain_.data(), clean_.data(), prior_.data(), bins_));
        check(kelsMulC_32f_I(kMemory, prior_.data(), bins_));
        check(kelsScaleLM_32f(post_.data(), gain_.data(), bins_, 1, 1 - kMemory, kMemory - 1));
        check(kelsAdd_32f_I(gain_.data(), prior_.data(), bins_));
        check(kelsMaxEveryC_32f_I(kLeastRatio, prior_.data(), bins_));

        check(kelsFilterUpdateEMNS_32f(prior_.data(), post_.data(), gain_.data(), bins_));
        check(kelsMinEveryC_32f_I(1, gain_.data(), bins_));
        check(kelsMaxEveryC_32f_I(kLeastGain, gain_.data(), bins_));
        check(kelsMul_32f(gain_.data(), gain_.data(), clean_.data(), bins_));
        check(kelsMul_32f(power_.data(), clean_.data(), clean_.data(), bins_));
    }

    int length_, bins_, taken_ = 0;
    std::unique_ptr<KelFFTSpec_R_32f, Free<kelsFFTFree_R_32f>> fft_;
    std::unique_ptr<Kel8u, Free<kelsFree>> memory_;  // of the noise estimate
    Signal window_, input_, frame_, output_, spectrum_;
    Signal power_, noise_, post_, prior_, gain_, clean_;
};

void denoise(const char* from, const char* to) {
    common::SoundInput in(from);
    const SF_INFO info = in.info();
    common::refuseToOverwrite(from, to);
    if (info.samplerate < 8000 || info.samplerate > 48000) in.fail("is not sampled at 8 to 48 kHz");
    std::vector<Denoiser> channels;
    for (int c = 0; c < info.channels; ++c) channels.emplace_back(info.samplerate);

    SF_INFO outInfo = info;
    outInfo.format = SF_FORMAT_WAV | (info.format & SF_FORMAT_SUBMASK);
    if (!sf_format_check(&outInfo)) outInfo.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    common::SoundOutput out(to, outInfo);

    const int hop = channels[0].hop();
    Signal block(static_cast<std::size_t>(hop) * info.channels), one(hop);
    sf_count_t wanted = 0, skip = channels[0].delay();
    for (bool ended = false; !ended || wanted > 0;) {
        const sf_count_t got = ended ? 0 : in.read(block.data(), hop);
        ended = got < hop;
        wanted += got;
        std::fill(block.begin() + got * info.channels, block.end(), 0.0F);  // after the end, until all is out
        for (int c = 0; c < info.channels; ++c) {
            for (int i = 0; i < hop; ++i) one[i] = block[i * info.channels + c];
            channels[c].process(one.data(), one.data());
            for (int i = 0; i < hop; ++i) block[i * info.channels + c] = one[i];
        }
        if (skip >= hop) {
            skip -= hop;
            continue;
        }
        const sf_count_t count = std::min<sf_count_t>(hop, wanted);
        out.write(block.data(), count);
        wanted -= count;
    }
    out.finish();
}

}  // namespace

int main(int argc, char** argv) {
    const bool help = argc == 2 && std::string_view(argv[1]) == "--help";
    if (argc != 3) {
        const bool told = std::fputs(kUsage, help ? stdout : stderr) >= 0 && std::fflush(stdout) == 0;
        return help ? !told : 2;
    }
    try {
        denoise(argv[1], argv[2]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "denoise: %s\n", error.what());
        return 1;
    }
}
