// A block of the echo canceller at 16 kHz, with blocks of 256 samples and a tail of 256 ms: the chain of examples/echo
// beside the canceller of speexdsp.  A block of 16 ms of sound comes every 16 ms: "core" is the share that it takes.
#include <benchmark/benchmark.h>
#include <kels.h>

#include <algorithm>
#include <random>
#include <vector>

#include "common/echo_canceller.h"

#if defined(HAVE_SPEEXDSP)
#include <speex/speex_echo.h>
#endif

namespace {

using common::Canceller, common::Signal;

constexpr int kRate = 16000, kTail = 256, kBlock = 256, kBlocks = 250;

// Noise and its echo.
struct Call {
    Signal far, microphone;
    Call() : far(kBlocks * kBlock), microphone(far.size()) {
        std::mt19937 engine(1);
        std::normal_distribution<float> noise(0, 0.1F);
        for (float& x : far) x = noise(engine);
        for (std::size_t i = 100; i < far.size(); ++i)
            microphone[i] = 0.5F * far[i - 100] - 0.2F * far[i - 60] + 0.01F * noise(engine);
    }
};

void finish(benchmark::State& state) {
    using benchmark::Counter;
    const double perSecond = static_cast<double>(kRate) / kBlock;
    state.counters["core"] =
        Counter(static_cast<double>(state.iterations()) / perSecond, Counter::kIsRate | Counter::kInvert);
}

void BM_Echo_kels(benchmark::State& state) {
    const Call call;
    Canceller canceller(kRate, kTail);
    int i = 0;
    for (auto _ : state) {
        canceller.process(&call.far[i * kBlock], &call.microphone[i * kBlock]);
        i = (i + 1) % kBlocks;
    }
    finish(state);
}
BENCHMARK(BM_Echo_kels);

#if defined(HAVE_SPEEXDSP)
void BM_Echo_speexdsp(benchmark::State& state) {
    const Call call;
    std::vector<spx_int16_t> far, microphone, out(kBlock);
    for (const float x : call.far) far.push_back(static_cast<spx_int16_t>(32000 * std::clamp(x, -1.0F, 1.0F)));
    for (const float x : call.microphone)
        microphone.push_back(static_cast<spx_int16_t>(32000 * std::clamp(x, -1.0F, 1.0F)));
    SpeexEchoState* const echo = speex_echo_state_init(kBlock, kTail * kRate / 1000);
    int rate = kRate;
    speex_echo_ctl(echo, SPEEX_ECHO_SET_SAMPLING_RATE, &rate);
    int i = 0;
    for (auto _ : state) {
        speex_echo_cancellation(echo, &microphone[i * kBlock], &far[i * kBlock], out.data());
        i = (i + 1) % kBlocks;
    }
    speex_echo_state_destroy(echo);
    finish(state);
}
BENCHMARK(BM_Echo_speexdsp);
#endif

}  // namespace
