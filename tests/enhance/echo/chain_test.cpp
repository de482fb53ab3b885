// The functions chained as their header tells, in both forms, on the echo of white noise.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include "enhance/echo/echo_forms.h"
#include "support/random.h"

namespace {

constexpr int kBlock = 128, kBins = kBlock + 1, kParts = 4;

struct FreeFft {
    void operator()(KelFFTSpec_R_32f* spec) const { kelsFFTFree_R_32f(spec); }
    void operator()(KelFFTSpec_R_16s32s* spec) const { kelsFFTFree_R_16s32s(spec); }
};

// The transforms of a form: forward ones of 16-bit samples in both.
template <class Form>
class Transforms {
  public:
    Transforms() {
        KelFFTSpec_R_32f* floats;
        KelFFTSpec_R_16s32s* integers;
        EXPECT_EQ(kelsFFTInitAlloc_R_32f(&floats, 8, kelFftDivInvByN, kelHintNone), 0);
        EXPECT_EQ(kelsFFTInitAlloc_R_16s32s(&integers, 8, kelFftDivInvByN, kelHintNone), 0);
        floats_.reset(floats), integers_.reset(integers);
    }
    void forward(const std::vector<Kel16s>& samples, Kel32sc* spectrum) const {
        kelsFFTFwd_RToCCS_16s32s_Sfs(samples.data(), &spectrum->re, integers_.get(), 0, nullptr);
    }
    void forward(const std::vector<Kel16s>& samples, Kel32fc* spectrum) const {
        const std::vector<Kel32f> x(samples.begin(), samples.end());
        kelsFFTFwd_RToCCS_32f(x.data(), &spectrum->re, floats_.get(), nullptr);
    }
    void inverse(const Kel32fc* spectrum, Kel32f* samples) const {
        std::vector<Kel32fc> z(spectrum, spectrum + kBins);
        z[0].im = z[0].re;
        kelsFFTInv_PackToR_32f(&z[0].im, samples, floats_.get(), nullptr);
    }
    void inverse(const Kel32sc* spectrum, Kel32f* samples) const {
        std::vector<Kel32fc> z(kBins);
        kelsConvert_32s32f(&spectrum->re, &z[0].re, 2 * kBins);
        inverse(z.data(), samples);
    }
    void constrain(Kel32fc* h) const {
        Kel32f samples[2 * kBlock];
        inverse(h, samples);
        kelsZero_32f(samples + kBlock, kBlock);
        kelsFFTFwd_RToCCS_32f(samples, &h->re, floats_.get(), nullptr);
    }
    void constrain(Kel32sc* h) const {
        std::vector<Kel32fc> z(kBins);
        kelsConvert_32s32f(&h->re, &z[0].re, 2 * kBins);
        constrain(z.data());
        kelsConvert_32f32s_Sfs(&z[0].re, &h->re, 2 * kBins, 1, 0);
    }

  private:
    std::unique_ptr<KelFFTSpec_R_32f, FreeFft> floats_;
    std::unique_ptr<KelFFTSpec_R_16s32s, FreeFft> integers_;
};

// How far the echo is down in each second, in dB; the path changes its sign after the third.
template <class Form>
std::vector<double> echoLoss(int seconds) {
    using T = typename Form::Real;
    using C = typename Form::Complex;
    const Transforms<Form> fft;
    test::Random random(9);
    std::vector<double> path(3 * kBlock);
    for (std::size_t i = 20; i < path.size(); ++i) path[i] = random.uniform(-0.4, 0.4) * std::exp(-0.02 * (i - 20.0));
    Rows<C> x(kParts, kBins), h(kParts, kBins);
    Rows<T> var(kParts, kBins), step(kParts, kBins);
    std::vector<C> y(kBins), e(kBins);
    std::vector<T> near(kBins), blocks[3];
    std::vector<int64_t> state(1000);
    auto* const controller = reinterpret_cast<typename Form::State*>(state.data());
    EXPECT_EQ(Form::init(8000, kBlock, controller), 0);
    const auto priors = [&] {
        double sum = 0;
        for (int p = 0; p < kParts; ++p) sum += std::exp(-40.0 * p * kBlock / 8000);
        for (int p = 0; p < kParts; ++p)
            var[p].assign(kBins, static_cast<T>(std::exp(-40.0 * p * kBlock / 8000) / sum * Form::kOne));
    };
    priors();
    std::vector<Kel16s> reference(path.size() + kBlock), pair(2 * kBlock), error(2 * kBlock);
    std::vector<double> loss;
    double heard = 0, left = 0;
    for (int block = 0; block < seconds * 8000 / kBlock; ++block) {
        std::move(reference.begin() + kBlock, reference.end(), reference.begin());
        std::vector<double> echo(kBlock);
        for (int i = 0; i < kBlock; ++i) reference[path.size() + i] = static_cast<Kel16s>(random.uniform(-9000, 9000));
        for (int i = 0; i < kBlock; ++i) {
            for (std::size_t j = 0; j < path.size(); ++j) echo[i] += path[j] * reference[path.size() + i - j];
            if (block * kBlock >= 3 * 8000) echo[i] = -echo[i];
        }
        std::copy(reference.end() - 2 * kBlock, reference.end(), pair.begin());
        std::rotate(x.values.begin(), x.values.end() - 1, x.values.end());
        fft.forward(pair, x[0].data());
        Kel32f predicted[2 * kBlock];
        EXPECT_EQ(Form::filter(x.read(), h.read(), y.data(), kBins, kParts), 0);
        fft.inverse(y.data(), predicted);
        for (auto& b : blocks) b.clear();
        for (int i = 0; i < kBlock; ++i) {
            const double microphone = std::round(echo[i] + random.uniform(-30, 30));
            error[kBlock + i] =
                static_cast<Kel16s>(std::lrint(microphone - static_cast<double>(predicted[kBlock + i])));
            blocks[0].push_back(static_cast<T>(reference[path.size() + i]));
            blocks[1].push_back(static_cast<T>(microphone));
            blocks[2].push_back(static_cast<T>(error[kBlock + i]));
            const double rest = echo[i] - static_cast<double>(predicted[kBlock + i]);
            heard += echo[i] * echo[i], left += rest * rest;
        }
        fft.forward(error, e.data());
        Kel32f factor, forget;
        int flag;
        EXPECT_EQ(
            Form::control(blocks[0].data(), blocks[1].data(), blocks[2].data(), controller, &factor, &forget, &flag),
            0);
        if (flag == kelAECPathChange) priors();
        EXPECT_EQ(Form::stepSize(x.read(), h.read(), e.data(), near.data(), var.write(), step.write(), kBins, kParts,
                                 factor, forget, 0.76F),
                  0);
        EXPECT_EQ(Form::move(x.read(), e.data(), step.read(), h.write(), kBins, kParts), 0);
        for (int p = 0; p < kParts; ++p) fft.constrain(h[p].data());
        if ((block + 1) * kBlock / 8000 == block * kBlock / 8000) continue;
        loss.push_back(10 * std::log10(heard / left));
        heard = left = 0;
    }
    return loss;
}

TEST(EchoChain, CancelsAndRecoversInBothForms) {
    const auto floats = echoLoss<Floats>(6), integers = echoLoss<Integers>(6);
    ASSERT_EQ(floats.size(), integers.size());
    for (const std::size_t second : {1, 2, 5}) {
        EXPECT_GT(floats[second], 35) << "second " << second;
        EXPECT_NEAR(integers[second], floats[second], 3) << "second " << second;
    }
}

}  // namespace
