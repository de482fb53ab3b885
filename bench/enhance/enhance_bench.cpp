// Noise estimate and gains of one frame beside plain loops.
#include <benchmark/benchmark.h>
#include <kels.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace {

constexpr float kPi = 3.14159265f;

std::vector<float> ratios(std::int64_t len, unsigned seed) {
    std::vector<float> v(len);
    std::mt19937 engine(seed);
    std::uniform_real_distribution<float> decibels(-20, 20);
    for (float& x : v) x = std::pow(10.0f, decibels(engine) / 10);
    return v;
}

void BM_MCRA_kels(benchmark::State& state) {
    const int fftLen = 2 * static_cast<int>(state.range(0));
    int size = 0;
    kelsGetSizeMCRA_32f(fftLen, &size);
    std::vector<double> memory(size / sizeof(double) + 1);
    auto* const mcra = reinterpret_cast<KelMCRAState_32f*>(memory.data());
    kelsInitMCRA_32f(16000, fftLen, mcra);
    const auto power = ratios(fftLen / 2 + 1, 1);
    std::vector<float> noise(power.size());
    for (auto _ : state) kelsUpdateNoisePSDMCRA_32f_I(power.data(), mcra, noise.data());
}
void BM_MCRA_plain(benchmark::State& state) {
    const std::size_t bins = static_cast<std::size_t>(state.range(0)) + 1;
    const auto power = ratios(static_cast<std::int64_t>(bins), 1);
    auto s = power, least = power, next = power, noise = power;
    std::vector<float> p(bins);
    const float d = 0.7f, aS = 0.8f, aP = 0.2f;
    for (auto _ : state) {
        for (std::size_t k = 0; k < bins; ++k) {
            s[k] = aS * s[k] + (1 - aS) * power[k];
            least[k] = std::min(least[k], s[k]);
            next[k] = std::min(next[k], s[k]);
            p[k] = aP * p[k] + (s[k] > 5 * least[k] ? 1 - aP : 0);
            const float a = d + (1 - d) * p[k];
            noise[k] = a * noise[k] + (1 - a) * power[k];
        }
        benchmark::ClobberMemory();
    }
}

template <class Gains>
void gains(benchmark::State& state, Gains of) {
    const auto prior = ratios(state.range(0), 1), post = ratios(state.range(0), 2);
    std::vector<float> gain(prior.size());
    for (auto _ : state) {
        of(prior.data(), post.data(), gain.data(), static_cast<int>(gain.size()));
        benchmark::ClobberMemory();
    }
}
void BM_EphraimMalah_kels(benchmark::State& state) {
    gains(state, kelsFilterUpdateEMNS_32f);
}
// The Bessel functions by the polynomials of Abramowitz and Stegun, 9.8.1 to 9.8.4, which contain the exponential for
// large arguments.
float scaledI(int n, float x) {
    const float t = x / 3.75f, u = 1 / t;
    if (t < 1) {
        const float q = t * t;
        const float i =
            n == 0
                ? 1 + q * (3.5156229f +
                           q * (3.0899424f + q * (1.2067492f + q * (0.2659732f + q * (0.0360768f + q * 0.0045813f)))))
                : x * (0.5f + q * (0.87890594f +
                                   q * (0.51498869f +
                                        q * (0.15084934f + q * (0.02658733f + q * (0.00301532f + q * 0.00032411f))))));
        return std::exp(-x) * i;
    }
    const float i =
        n == 0
            ? 0.39894228f +
                  u * (0.01328592f +
                       u * (0.00225319f +
                            u * (-0.00157565f +
                                 u * (0.00916281f +
                                      u * (-0.02057706f + u * (0.02635537f + u * (-0.01647633f + u * 0.00392377f)))))))
            : 0.39894228f +
                  u * (-0.03988024f +
                       u * (-0.00362018f +
                            u * (0.00163801f +
                                 u * (-0.01031555f +
                                      u * (0.02282967f + u * (-0.02895312f + u * (0.01787654f - u * 0.00420059f)))))));
    return i / std::sqrt(x);
}
void BM_EphraimMalah_plain(benchmark::State& state) {
    gains(state, [](const float* prior, const float* post, float* gain, int len) {
        for (int i = 0; i < len; ++i) {
            const float v = prior[i] / (1 + prior[i]) * post[i];
            gain[i] = std::sqrt(kPi * v) / 2 / post[i] * ((1 + v) * scaledI(0, v / 2) + v * scaledI(1, v / 2));
        }
    });
}

BENCHMARK(BM_MCRA_kels)->Arg(128)->Arg(512);
BENCHMARK(BM_MCRA_plain)->Arg(128)->Arg(512);
BENCHMARK(BM_EphraimMalah_kels)->Arg(129)->Arg(513);
BENCHMARK(BM_EphraimMalah_plain)->Arg(129)->Arg(513);

}  // namespace
