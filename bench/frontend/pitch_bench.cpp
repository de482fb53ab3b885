// Measures of similarity beside plain C++ whose loops the compiler vectorises, in single precision; and what a pitch
// tracker asks of them for a second of speech, beside aubio's detectors.
#include <benchmark/benchmark.h>
#include <kels.h>

#include <cmath>
#include <cstddef>
#include <random>
#include <vector>
#ifdef HAVE_AUBIO
#include <aubio/aubio.h>
#endif

namespace {

constexpr int kRate = 16000, kLen = 400, kMinLag = 20, kMaxLag = 200, kLags = kMaxLag - kMinLag + 1;
constexpr std::size_t kCount = kLags;

// A second of a buzz of 120 to 140 Hz in some noise.
template <class T>
std::vector<T> speech() {
    std::mt19937 engine(1);
    std::normal_distribution<double> normal(0, 300);
    std::vector<T> x(kRate + 2 * kMaxLag + kLen);
    double phase = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        phase += 6.283185307 * (120 + 20 * static_cast<double>(i) / kRate) / kRate;
        double sum = normal(engine);
        for (int h = 1; h < 12; ++h) sum += 3000 * std::cos(h * phase) / h;
        x[i] = static_cast<T>(sum);
    }
    return x;
}

// dst[k] = sum of x[i] y[i + k]: the loop over the lags inside is one that compilers vectorise.
void plainCorrelation(const float* x, const float* y, int len, float* dst, int lags) {
    for (int k = 0; k < lags; ++k) dst[k] = 0;
    for (int i = 0; i < len; ++i) {
        const float v = x[i];
        for (int k = 0; k < lags; ++k) dst[k] += v * y[i + k];
    }
}
void plainCoefficients(const float* x, const float* y, int len, float* dst, int minLag, int maxLag) {
    plainCorrelation(x, y + minLag, len, dst, maxLag - minLag + 1);
    float first = 0, window = 0;
    for (int i = 0; i < len; ++i) {
        first += x[i] * x[i];
        window += y[minLag + i] * y[minLag + i];
    }
    for (int k = minLag; k <= maxLag; ++k) {
        dst[k - minLag] /= std::sqrt(first * window);
        window += y[k + len] * y[k + len] - y[k] * y[k];
    }
}
void plainPeriodicity(const float* x, int len, const float* window, float* dst, int minLag, int maxLag) {
    float energy = 0;
    for (int i = 0; i < len; ++i) energy += x[i] * x[i];
    for (int k = minLag; k <= maxLag; ++k) {
        float sum = 0;
        for (int i = 0; i + k < len; ++i) sum += x[i] * x[i + k];
        dst[k - minLag] = sum / energy * (window[0] / window[k]);
    }
}
void plainLeastSquares(const float* x, int len, float* dst, int minLag, int maxLag) {
    std::vector<float> sums(static_cast<std::size_t>(maxLag)), squares(sums.size());
    for (int p = minLag; p <= maxLag; ++p) {
        for (int i = 0; i < p; ++i) sums[i] = squares[i] = 0;
        for (int start = 0; start < len; start += p) {
            const int n = len - start < p ? len - start : p;
            for (int i = 0; i < n; ++i) {
                sums[i] += x[start + i];
                squares[i] += x[start + i] * x[start + i];
            }
        }
        float above = 0, whole = 0;
        for (int i = 0; i < p; ++i) {
            const auto k = static_cast<float>((len - i + p - 1) / p);
            if (k < 2) continue;
            above += (sums[i] * sums[i] - squares[i]) / k;
            whole += squares[i] * (k - 1) / k;
        }
        dst[p - minLag] = whole == 0 ? 0 : above / whole;
    }
}

template <class T, class Call>
void run(benchmark::State& state, Call call) {
    const std::vector<T> x = speech<T>();
    std::vector<float> dst(kCount);
    for (auto _ : state) {
        call(x.data(), dst.data());
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
}

void BM_Coefficients_kels(benchmark::State& state) {
    run<float>(state, [](auto x, auto d) { kelsCrossCorrCoeffPartial_32f(x, x, kLen, d, kMinLag, kMaxLag, 0); });
}
void BM_Coefficients_plain(benchmark::State& state) {
    run<float>(state, [](auto x, auto d) { plainCoefficients(x, x, kLen, d, kMinLag, kMaxLag); });
}
void BM_Coefficients16_kels(benchmark::State& state) {
    run<Kel16s>(state, [](auto x, auto d) { kelsCrossCorrCoeffPartial_16s32f(x, x, kLen, d, kMinLag, kMaxLag, 0); });
}
void BM_Periodicity_kels(benchmark::State& state) {
    const std::vector<float> window(kLen, 1);
    run<float>(state, [&](auto x, auto d) { kelsPeriodicity_32f(x, kLen, window.data(), d, kMinLag, kMaxLag); });
}
void BM_Periodicity_plain(benchmark::State& state) {
    const std::vector<float> window(kLen, 1);
    run<float>(state, [&](auto x, auto d) { plainPeriodicity(x, kLen, window.data(), d, kMinLag, kMaxLag); });
}
void BM_LeastSquares_kels(benchmark::State& state) {
    run<float>(state, [](auto x, auto d) { kelsPeriodicityLSPE_32f(x, kLen, d, kMinLag, kMaxLag); });
}
void BM_LeastSquares_plain(benchmark::State& state) {
    run<float>(state, [](auto x, auto d) { plainLeastSquares(x, kLen, d, kMinLag, kMaxLag); });
}
void BM_LeastSquares16_kels(benchmark::State& state) {
    run<Kel16s>(state, [](auto x, auto d) { kelsPeriodicityLSPE_16s32f(x, kLen, d, kMinLag, kMaxLag); });
}
BENCHMARK(BM_Coefficients_kels);
BENCHMARK(BM_Coefficients_plain);
BENCHMARK(BM_Coefficients16_kels);
BENCHMARK(BM_Periodicity_kels);
BENCHMARK(BM_Periodicity_plain);
BENCHMARK(BM_LeastSquares_kels);
BENCHMARK(BM_LeastSquares_plain);
BENCHMARK(BM_LeastSquares16_kels);

// What a tracker asks for every 10 ms of a second: coefficients, their peaks, and the points between lags.
void BM_PitchOfASecond_kels(benchmark::State& state) {
    const std::vector<Kel16s> x = speech<Kel16s>();
    std::vector<float> c(kCount);
    std::vector<Kel8u> peaks(kCount);
    for (auto _ : state) {
        for (int start = 0; start < kRate; start += kRate / 100) {
            const Kel16s* const frame = x.data() + start;
            float highest, place, coefficient;
            kelsCrossCorrCoeffPartial_16s32f(frame, frame, kLen / 2, c.data(), kMinLag, kMaxLag, 0);
            kelsMax_32f(c.data(), kLags, &highest);
            kelsFindPeaks_32f8u(c.data(), peaks.data(), kLags, 0.3f * highest, 1);
            for (int k = 1; k < kLags - 1; ++k) {
                if (peaks[static_cast<std::size_t>(k)] == 0) continue;
                kelsCrossCorrCoeffInterpolation_16s32f(frame, frame, kLen / 2, kMinLag + k, &place, &coefficient);
                benchmark::DoNotOptimize(place);
            }
        }
    }
}
BENCHMARK(BM_PitchOfASecond_kels);

#ifdef HAVE_AUBIO
template <int method>
void BM_PitchOfASecond_aubio(benchmark::State& state) {
    constexpr const char* kMethods[] = {"yin", "yinfast", "yinfft", "schmitt"};
    const std::vector<float> x = speech<float>();
    aubio_pitch_t* const pitch = new_aubio_pitch(kMethods[method], 1024, kRate / 100, kRate);
    fvec_t *const in = new_fvec(kRate / 100), *const out = new_fvec(1);
    for (auto _ : state) {
        for (int start = 0; start < kRate; start += kRate / 100) {
            for (int i = 0; i < kRate / 100; ++i) in->data[i] = x[static_cast<std::size_t>(start + i)] / 32768;
            aubio_pitch_do(pitch, in, out);
        }
        benchmark::DoNotOptimize(out->data[0]);
    }
    state.SetLabel(kMethods[method]);
    del_fvec(in);
    del_fvec(out);
    del_aubio_pitch(pitch);
}
BENCHMARK(BM_PitchOfASecond_aubio<0>);
BENCHMARK(BM_PitchOfASecond_aubio<1>);
BENCHMARK(BM_PitchOfASecond_aubio<2>);
BENCHMARK(BM_PitchOfASecond_aubio<3>);
#endif

}  // namespace
