// Features of a recording of ten minutes at 16 kHz by every preset, beside peers with the same frames, transforms,
// filters and cepstra.  What peers do besides differs: aubio gives no energy and knows no pre-emphasis.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "kels.h"
#ifdef HAVE_AUBIO
#include <aubio/aubio.h>
#endif
#ifdef HAVE_SPTK
extern "C" {
#include <SPTK.h>
}
#endif

namespace {

constexpr int kRate = 16000, kSamples = 600 * kRate;

// Syllables of a buzz in a little noise, in the range of 16-bit integers.
const std::vector<float>& recording() {
    static const std::vector<float> samples = [] {
        std::mt19937 engine(1);
        std::normal_distribution<float> noise(0, 20);
        std::vector<float> x(kSamples);
        for (int i = 0; i < kSamples; ++i) {
            const float t = static_cast<float>(i % (3 * kRate)) / kRate, syllable = std::sin(12 * t);
            const float buzz = static_cast<float>(i % (100 + i / kRate % 60)) / 100 - 0.7f;
            x[static_cast<std::size_t>(i)] = std::round(noise(engine) + 4000 * std::max(0.0f, syllable) * buzz);
        }
        return x;
    }();
    return samples;
}

struct Front {
    const char* name;
    int preset;
    int frame, shift, fft, filters, cepstra;  // 0 cepstra: energies of the filters
};
constexpr Front kFronts[] = {{"htk-mfcc", kelFeatHtkMfcc, 400, 160, 512, 26, 13},
                             {"kaldi-mfcc", kelFeatKaldiMfcc, 400, 160, 512, 23, 13},
                             {"kaldi-fbank", kelFeatKaldiFbank, 400, 160, 512, 80, 0},
                             {"librosa-mfcc", kelFeatLibrosaMfcc, 2048, 512, 2048, 128, 20},
                             {"whisper-mel", kelFeatWhisperMel, 400, 160, 400, 80, 0}};

void features(benchmark::State& state, const Front& front, int hint) {
    KelFeatureConfig config;
    kelsFeaturePreset(&config, kRate, front.preset);
    config.hint = hint;
    KelFeatureSpec_32f* spec = nullptr;
    kelsFeatureInitAlloc_32f(&spec, &config);
    const std::vector<float>& x = recording();
    int height = 0, width = 0;
    kelsFeatureGetSize_32f(spec, kSamples, &height, &width);
    std::vector<float> rows(static_cast<std::size_t>(height) * static_cast<std::size_t>(width));
    for (auto _ : state) {
        kelsFeature_32f_D2(x.data(), kSamples, rows.data(), width, spec, nullptr);
        benchmark::ClobberMemory();
    }
    kelsFeatureFree_32f(spec);
}

#ifdef HAVE_AUBIO
// Its phase vocoder cuts frames, applies a Hann window and transforms; only powers of two, so Whisper's 400 become 512.
void aubio(benchmark::State& state, const Front& front) {
    const auto fft = static_cast<uint_t>(front.fft == 400 ? 512 : front.fft), shift = static_cast<uint_t>(front.shift);
    const auto filters = static_cast<uint_t>(front.filters), cepstra = static_cast<uint_t>(front.cepstra);
    aubio_pvoc_t* const vocoder = new_aubio_pvoc(fft, shift);
    aubio_mfcc_t* const mfcc = cepstra > 0 ? new_aubio_mfcc(fft, filters, cepstra, kRate) : nullptr;
    aubio_filterbank_t* const bank = new_aubio_filterbank(filters, fft);
    aubio_filterbank_set_mel_coeffs_htk(bank, kRate, 20, kRate / 2);
    if (mfcc != nullptr) aubio_mfcc_set_mel_coeffs_htk(mfcc, 20, kRate / 2);
    cvec_t* const spectrum = new_cvec(fft);
    fvec_t* const row = new_fvec(cepstra > 0 ? cepstra : filters);
    const std::vector<float>& x = recording();
    for (auto _ : state) {
        for (uint_t begin = 0; begin + shift <= kSamples; begin += shift) {
            fvec_t samples = {shift, const_cast<float*>(x.data()) + begin};
            aubio_pvoc_do(vocoder, &samples, spectrum);
            if (mfcc != nullptr) {
                aubio_mfcc_do(mfcc, spectrum, row);
            } else {
                aubio_filterbank_do(bank, spectrum, row);
                fvec_log10(row);
            }
            benchmark::ClobberMemory();
        }
    }
    del_fvec(row);
    del_cvec(spectrum);
    del_aubio_filterbank(bank);
    if (mfcc != nullptr) del_aubio_mfcc(mfcc);
    del_aubio_pvoc(vocoder);
}
#endif

#ifdef HAVE_SPTK
// Its mfcc does all from the samples of a frame to cepstra and energy, in double precision.
void sptk(benchmark::State& state, const Front& front) {
    const std::vector<double> x(recording().begin(), recording().end());
    std::vector<double> frame(static_cast<std::size_t>(front.fft)), row(static_cast<std::size_t>(front.cepstra) + 2);
    for (auto _ : state) {
        for (int begin = 0; begin + front.frame <= kSamples; begin += front.shift) {
            std::copy_n(x.data() + begin, front.frame, frame.data());
            mfcc(frame.data(), row.data(), kRate, 0.97, 1, front.frame, front.fft, front.cepstra, front.filters, 22, FA,
                 TR);
            benchmark::ClobberMemory();
        }
    }
}
#endif

[[maybe_unused]] const bool registered = [] {
    for (const Front& front : kFronts) {
        const auto add = [&](const char* who, auto run) {
            benchmark::RegisterBenchmark((std::string("BM_Features_") + who + "/" + front.name).c_str(), run)
                ->Unit(benchmark::kMillisecond);
        };
        add("kels", [&front](benchmark::State& state) { features(state, front, kelHintNone); });
        add("kels-fast", [&front](benchmark::State& state) { features(state, front, kelHintFast); });
#ifdef HAVE_AUBIO
        add("aubio", [&front](benchmark::State& state) { aubio(state, front); });
#endif
#ifdef HAVE_SPTK
        if (front.cepstra > 0) add("sptk", [&front](benchmark::State& state) { sptk(state, front); });
#endif
    }
    return true;
}();

}  // namespace
