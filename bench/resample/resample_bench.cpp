// Resampling in blocks of 4096 samples, beside each peer at the settings that measure like it (docs/accuracy.md).
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "kels/resample.h"
#include "settings.h"
#if defined(HAVE_SOXR)
#include <soxr.h>
#endif
#if defined(HAVE_SPEEXDSP)
#include <speex/speex_resampler.h>
#endif
#if defined(HAVE_SAMPLERATE)
#include <samplerate.h>
#endif

namespace {

constexpr int kBlock = 4096;

struct Rates {
    double in, out;
    double factor() const { return out / in; }
    bool whole() const { return in == std::floor(in) && out == std::floor(out); }
    std::string name() const { return std::to_string(std::lround(in)) + "to" + std::to_string(std::lround(out)); }
};

using Setting = ResampleSetting;

template <class T>
std::vector<T> noise(std::size_t n) {
    std::mt19937 engine(1);
    std::uniform_int_distribution<int> value(-12000, 12000);
    std::vector<T> x(n);
    for (auto& v : x)
        v = std::is_same_v<T, float> ? static_cast<T>(value(engine) / 32768.0) : static_cast<T>(value(engine));
    return x;
}

template <class T>
std::vector<T> room(Rates rates) {
    return std::vector<T>(static_cast<std::size_t>(kBlock * rates.factor()) + 100);
}

KelStatus call(const KelResamplePolyphase_32f* s, const Kel32f* x, Kel32f* y, double factor, double* time, int* n) {
    return kelsResamplePolyphase_32f(s, x, kBlock, y, factor, 1, time, n);
}
KelStatus call(const KelResamplePolyphase_16s* s, const Kel16s* x, Kel16s* y, double factor, double* time, int* n) {
    return kelsResamplePolyphase_16s(s, x, kBlock, y, factor, 1, time, n);
}
KelStatus call(const KelResamplePolyphaseFixed_32f* s, const Kel32f* x, Kel32f* y, double, double* time, int* n) {
    return kelsResamplePolyphaseFixed_32f(s, x, kBlock, y, 1, time, n);
}
KelStatus call(const KelResamplePolyphaseFixed_16s* s, const Kel16s* x, Kel16s* y, double, double* time, int* n) {
    return kelsResamplePolyphaseFixed_16s(s, x, kBlock, y, 1, time, n);
}

// As many samples before the block as the filter reaches back; the running time is kept within the first sample.
template <class T, class State>
void run(benchmark::State& bench, const State* state, Rates rates, double reach) {
    const auto history = static_cast<std::size_t>(reach) + 2;
    const auto x = noise<T>(history + kBlock);
    auto y = room<T>(rates);
    double time = reach - std::floor(reach);
    int n = 0;
    for (auto _ : bench) {
        call(state, x.data() + history, y.data(), rates.factor(), &time, &n);
        time -= std::floor(time) + std::floor(reach);
        benchmark::ClobberMemory();
    }
    bench.SetItemsProcessed(bench.iterations() * n);
}

void general32(benchmark::State& bench, Rates rates, Setting s) {
    KelResamplePolyphase_32f* state = nullptr;
    kelsResamplePolyphaseInitAlloc_32f(&state, s.window, s.nStep, s.rollf, s.alpha, 0);
    run<Kel32f>(bench, state, rates, s.window / 2 / std::min(1.0, rates.factor()));
    kelsResamplePolyphaseFree_32f(state);
}
void general16(benchmark::State& bench, Rates rates, Setting s) {
    KelResamplePolyphase_16s* state = nullptr;
    kelsResamplePolyphaseInitAlloc_16s(&state, s.window, s.nStep, s.rollf, s.alpha, 0);
    run<Kel16s>(bench, state, rates, s.window / 2 / std::min(1.0, rates.factor()));
    kelsResamplePolyphaseFree_16s(state);
}
int lengthOf(Rates rates, Setting s) {
    return static_cast<int>(s.window * std::max(1.0, 1 / rates.factor()));
}
void fixed32(benchmark::State& bench, Rates rates, Setting s) {
    KelResamplePolyphaseFixed_32f* state = nullptr;
    kelsResamplePolyphaseFixedInitAlloc_32f(&state, static_cast<int>(rates.in), static_cast<int>(rates.out),
                                            lengthOf(rates, s), s.rollf, s.alpha, 0);
    run<Kel32f>(bench, state, rates, lengthOf(rates, s) / 2.0);
    kelsResamplePolyphaseFixedFree_32f(state);
}
void fixed16(benchmark::State& bench, Rates rates, Setting s) {
    KelResamplePolyphaseFixed_16s* state = nullptr;
    kelsResamplePolyphaseFixedInitAlloc_16s(&state, static_cast<int>(rates.in), static_cast<int>(rates.out),
                                            lengthOf(rates, s), s.rollf, s.alpha, 0);
    run<Kel16s>(bench, state, rates, lengthOf(rates, s) / 2.0);
    kelsResamplePolyphaseFixedFree_16s(state);
}

#if defined(HAVE_SOXR)
void soxr(benchmark::State& bench, Rates rates) {
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
    soxr_t const state = soxr_create(rates.in, rates.out, 1, nullptr, nullptr, &quality, nullptr);
    const auto x = noise<float>(kBlock);
    auto y = room<float>(rates);
    y.resize(4 * y.size() + 10000);
    std::size_t read, written, total = 0;
    for (auto _ : bench) {
        soxr_process(state, x.data(), kBlock, &read, y.data(), y.size(), &written);
        total += written;
        benchmark::ClobberMemory();
    }
    bench.SetItemsProcessed(static_cast<int64_t>(total));
    soxr_delete(state);
}
#endif
#if defined(HAVE_SPEEXDSP)
void speex(benchmark::State& bench, Rates rates) {
    int error;
    SpeexResamplerState* const state =
        speex_resampler_init(1, static_cast<spx_uint32_t>(rates.in), static_cast<spx_uint32_t>(rates.out), 10, &error);
    const auto x = noise<float>(kBlock);
    auto y = room<float>(rates);
    for (auto _ : bench) {
        spx_uint32_t read = kBlock, written = static_cast<spx_uint32_t>(y.size());
        speex_resampler_process_float(state, 0, x.data(), &read, y.data(), &written);
        benchmark::ClobberMemory();
    }
    speex_resampler_destroy(state);
}
#endif
#if defined(HAVE_SAMPLERATE)
void src(benchmark::State& bench, Rates rates) {
    int error;
    SRC_STATE* const state = src_new(SRC_SINC_BEST_QUALITY, 1, &error);
    const auto x = noise<float>(kBlock);
    auto y = room<float>(rates);
    for (auto _ : bench) {
        SRC_DATA data{x.data(), y.data(), kBlock, static_cast<long>(y.size()), 0, 0, 0, rates.factor()};
        src_process(state, &data);
        benchmark::ClobberMemory();
    }
    src_delete(state);
}
#endif

[[maybe_unused]] const bool registered = [] {
    const auto add = [](const std::string& operation, const char* who, Rates rates, auto function, auto... setting) {
        const std::string name = "BM_" + operation + "_" + who + "/" + rates.name();
        benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& s) { function(s, rates, setting...); });
    };
    // The fixed form and the general form at the quality of each peer, beside it.
    for (const Rates rates : {Rates{48000, 16000}, Rates{44100, 48000}, Rates{8000, 16000},
                              Rates{44100, 44100 * std::sqrt(1.2)}, Rates{44100, 44100 / std::sqrt(1.2)}}) {
        for (const Setting setting : {kLikeSoxr, kLikeSpeex, kLikeSrc}) {
            for (const bool fixed : {true, false}) {
                if (fixed && !rates.whole()) continue;
                const std::string operation = std::string(fixed ? "ResampleFixed" : "Resample") + setting.name;
                if (fixed)
                    add(operation, "kels", rates, fixed32, setting);
                else
                    add(operation, "kels", rates, general32, setting);
                if (fixed)
                    add(operation, "kels16", rates, fixed16, setting);
                else
                    add(operation, "kels16", rates, general16, setting);
#if defined(HAVE_SOXR)
                if (setting.name == kLikeSoxr.name) add(operation, "soxr", rates, soxr);
#endif
#if defined(HAVE_SPEEXDSP)
                if (setting.name == kLikeSpeex.name && rates.whole()) add(operation, "speexdsp", rates, speex);
#endif
#if defined(HAVE_SAMPLERATE)
                if (setting.name == kLikeSrc.name) add(operation, "libsamplerate", rates, src);
#endif
            }
        }
    }
    return true;
}();

}  // namespace
