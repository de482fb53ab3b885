// The Aurora front end: its blocks for one shift of 80 samples, and the whole chain beside plain mel cepstra.
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#include "common/aurora_chain.h"
#include "kels.h"

namespace {

constexpr int kBins = 65, kShift = 80, kFrame = 200;

std::vector<Kel32f> noise(std::size_t n, double low, double high) {
    std::mt19937 engine(1);
    std::uniform_real_distribution<double> value(low, high);
    std::vector<Kel32f> v(n);
    for (auto& x : v) x = static_cast<Kel32f>(value(engine));
    return v;
}

template <class Call>
void repeat(benchmark::State& state, Call call) {
    for (auto _ : state) {
        call();
        benchmark::ClobberMemory();
    }
}

void BM_AuroraSmoothedSpectrum_kels(benchmark::State& state) {
    const auto transform = noise(258, -1000, 1000);
    std::vector<Kel32f> before(kBins), mean(kBins);
    repeat(state, [&] { kelsSmoothedPowerSpectrumAurora_32f(transform.data(), before.data(), mean.data(), kBins); });
}
BENCHMARK(BM_AuroraSmoothedSpectrum_kels)->Name("BM_AuroraSmoothedSpectrum_kels/65");

void BM_AuroraVADNest_kels(benchmark::State& state) {
    const auto shift = noise(kShift, -100, 100);
    Kel8u nest[sizeof(KelVADNestState_Aurora)];
    kelsVADNestInit_Aurora_32f(nest);
    int result, count;
    repeat(state, [&] { kelsVADNestDecision_Aurora_32f(shift.data(), kShift, &result, &count, nest); });
}
BENCHMARK(BM_AuroraVADNest_kels)->Name("BM_AuroraVADNest_kels/80");

void noiseUpdate(benchmark::State& state, int vad) {
    const auto power = noise(kBins, 1, 1e6);
    auto estimate = noise(kBins, 1, 1000);
    repeat(state, [&] { kelsNoiseSpectrumUpdate_Aurora_32f(power.data(), estimate.data(), kBins, 200, vad); });
}
void BM_AuroraNoiseAverage_kels(benchmark::State& state) {
    noiseUpdate(state, kelVadNoise);
}
BENCHMARK(BM_AuroraNoiseAverage_kels)->Name("BM_AuroraNoiseAverage_kels/65");
void BM_AuroraNoiseTracking_kels(benchmark::State& state) {
    noiseUpdate(state, kelVadPending);
}
BENCHMARK(BM_AuroraNoiseTracking_kels)->Name("BM_AuroraNoiseTracking_kels/65");

void BM_AuroraWienerFilter_kels(benchmark::State& state) {
    const auto power = noise(kBins, 1, 1e6), estimate = noise(kBins, 1, 1000);
    std::vector<Kel32f> denoised(kBins), gains(kBins);
    repeat(state, [&] {
        kelsWienerFilterDesign_Aurora_32f(power.data(), power.data(), estimate.data(), denoised.data(), gains.data(),
                                          kBins);
    });
}
BENCHMARK(BM_AuroraWienerFilter_kels)->Name("BM_AuroraWienerFilter_kels/65");

void BM_AuroraTaps_kels(benchmark::State& state) {
    const auto gains = noise(25, 0.1, 1);
    Kel32f taps[17];
    repeat(state, [&] { kelsTabsCalculation_Aurora_32f(gains.data(), taps); });
}
BENCHMARK(BM_AuroraTaps_kels)->Name("BM_AuroraTaps_kels/25");

void BM_AuroraResidualFilter_kels(benchmark::State& state) {
    const auto samples = noise(kShift + 16, -1000, 1000), taps = noise(17, -1, 1);
    std::vector<Kel32f> filtered(kShift);
    repeat(state, [&] { kelsResidualFilter_Aurora_32f(samples.data(), taps.data(), filtered.data(), kShift); });
}
BENCHMARK(BM_AuroraResidualFilter_kels)->Name("BM_AuroraResidualFilter_kels/80");

void BM_AuroraWaveProcessing_kels(benchmark::State& state) {
    const auto frame = noise(kFrame, -1000, 1000);
    std::vector<Kel32f> weighted(kFrame);
    repeat(state, [&] { kelsWaveProcessing_Aurora_32f(frame.data(), weighted.data(), kFrame); });
}
BENCHMARK(BM_AuroraWaveProcessing_kels)->Name("BM_AuroraWaveProcessing_kels/200");

void BM_AuroraHalfBands_kels(benchmark::State& state) {
    const auto samples = noise(2 * kShift, -1000, 1000);
    std::vector<Kel32f> low(kShift), high(kShift);
    Kel8u split[sizeof(KelLowHighState_Aurora)];
    kelsLowHighFilterInit_Aurora_32f(split);
    repeat(state, [&] { kelsLowHighFilter_Aurora_32f(samples.data(), low.data(), high.data(), 2 * kShift, split); });
}
BENCHMARK(BM_AuroraHalfBands_kels)->Name("BM_AuroraHalfBands_kels/160");

// ---- the whole -----------------------------------------------------------------------------------------------------

// Speech-like loudness that comes and goes, 10 ms at a time; the counter is the multiple of real time.
void chain(benchmark::State& state, int rate) {
    common::AuroraChain front(rate);
    auto samples = noise(static_cast<std::size_t>(4 * rate), -100, 100);
    for (std::size_t n = 0; n < samples.size(); ++n) samples[n] *= n / 4000 % 3 == 2 ? 30 : 1;
    const auto length = static_cast<std::size_t>(front.blockLength());
    std::size_t from = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(front.take(&samples[from]).statics);
        from += length;
        if (from + length > samples.size()) from = 0;
    }
    state.counters["realtime"] =
        benchmark::Counter(0.01 * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
void BM_AuroraChain_kels(benchmark::State& state) {
    chain(state, static_cast<int>(state.range(0)));
}
BENCHMARK(BM_AuroraChain_kels)->Arg(8000)->Arg(16000);

// The cepstra alone: pre-emphasis, window, transform, powers, 23 bands, logarithms, 13 cepstra.
void BM_AuroraPlainCepstra_kels(benchmark::State& state) {
    KelFilterBank_32f* bank = nullptr;
    KelDCTLifterState_32f* dct = nullptr;
    KelFFTSpec_R_32f* fft = nullptr;
    int order = 0;
    kelsMelFBankInitAlloc_32f(&bank, &order, 256, 8000, 64, 4000, 23, 1127, 700, kelFBankWeightBin);
    kelsDCTLifterInitAlloc_C0_32f(&dct, 23, 12, 22, 1, 1);
    kelsFFTInitAlloc_R_32f(&fft, 8, kelFftNoDiv, kelHintNone);
    const auto samples = noise(kFrame + 1, -1000, 1000), window = noise(kFrame, 0, 1);
    Kel32f spectrum[258], power[129], bands[23], cepstra[13];
    repeat(state, [&] {
        for (std::size_t n = 0; n < kFrame; ++n) spectrum[n] = (samples[n + 1] - 0.9f * samples[n]) * window[n];
        for (std::size_t n = kFrame; n < 256; ++n) spectrum[n] = 0;
        kelsFFTFwd_RToCCS_32f(spectrum, spectrum, fft, nullptr);
        for (std::size_t b = 0; b < 129; ++b)
            power[b] = spectrum[2 * b] * spectrum[2 * b] + spectrum[2 * b + 1] * spectrum[2 * b + 1];
        kelsEvalFBank_32f(power, bands, bank);
        for (Kel32f& v : bands) v = std::log(v);
        kelsDCTLifter_32f(bands, cepstra, dct);
    });
    state.counters["realtime"] =
        benchmark::Counter(0.01 * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
    kelsFBankFree_32f(bank);
    kelsFree(bank);
    kelsDCTLifterFree_32f(dct);
    kelsFree(dct);
    kelsFFTFree_R_32f(fft);
}
BENCHMARK(BM_AuroraPlainCepstra_kels)->Name("BM_AuroraPlainCepstra_kels/200");

}  // namespace
