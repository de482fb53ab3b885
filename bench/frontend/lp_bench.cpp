// Linear prediction beside plain C++; the search for line spectral pairs on predictors of several kinds.
#include <benchmark/benchmark.h>
#include <kels.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <random>
#include <vector>

namespace {

using Floats = std::vector<Kel32f>;

std::size_t count(int n) {
    return static_cast<std::size_t>(n);
}

Floats noise(int len) {
    std::mt19937 engine(1);
    std::uniform_real_distribution<Kel32f> uniform(-1, 1);
    Floats x(count(len));
    Kel32f y1 = 0, y2 = 0;
    for (auto& v : x) {
        v = uniform(engine) + 1.2f * y1 - 0.7f * y2;
        y2 = y1;
        y1 = v;
    }
    return x;
}
Floats autocorrelation(int order) {
    const Floats x = noise(400);
    Floats r(count(order) + 1);
    kelsAutoCorr_32f(x.data(), 400, r.data(), order + 1);
    return r;
}
Floats predictor(int order) {
    Floats a(count(order));
    Kel32f error;
    kelsDurbin_32f(autocorrelation(order).data(), a.data(), order, &error);
    return a;
}

void plainDurbin(const Kel32f* r, Kel32f* a, int order, Kel32f* error) {
    Floats before(count(order));
    Kel32f e = r[0];
    for (int i = 0; i < order; ++i) {
        Kel32f sum = r[i + 1];
        for (int j = 0; j < i; ++j) sum += a[j] * r[i - j];
        const Kel32f k = sum / e;
        for (int j = 0; j < i; ++j) before[count(j)] = a[j];
        for (int j = 0; j < i; ++j) a[j] -= k * before[count(i - 1 - j)];
        a[i] = -k;
        e *= 1 - k * k;
    }
    *error = e;
}

void BM_Durbin_kels(benchmark::State& state) {
    const int order = static_cast<int>(state.range(0));
    const Floats r = autocorrelation(order);
    Floats a(count(order));
    Kel32f error;
    for (auto _ : state) {
        kelsDurbin_32f(r.data(), a.data(), order, &error);
        benchmark::DoNotOptimize(a.data());
    }
}
void BM_Durbin_plain(benchmark::State& state) {
    const int order = static_cast<int>(state.range(0));
    const Floats r = autocorrelation(order);
    Floats a(count(order));
    Kel32f error;
    for (auto _ : state) {
        plainDurbin(r.data(), a.data(), order, &error);
        benchmark::DoNotOptimize(a.data());
    }
}
BENCHMARK(BM_Durbin_kels)->Arg(10)->Arg(16)->Arg(40)->Arg(100);
BENCHMARK(BM_Durbin_plain)->Arg(10)->Arg(16)->Arg(40)->Arg(100);

void BM_Schur_kels(benchmark::State& state) {
    const int order = static_cast<int>(state.range(0));
    const Floats r = autocorrelation(order);
    Floats k(count(order));
    Kel32f error;
    for (auto _ : state) {
        kelsSchur_32f(r.data(), k.data(), order, &error);
        benchmark::DoNotOptimize(k.data());
    }
}
BENCHMARK(BM_Schur_kels)->Arg(10)->Arg(16)->Arg(40);

// A frame of 400 samples.
void BM_LinearPrediction_kels(benchmark::State& state) {
    const int order = static_cast<int>(state.range(0));
    const Floats x = noise(400);
    Floats a(count(order));
    for (auto _ : state) {
        kelsLinearPrediction_Auto_32f(x.data(), 400, a.data(), order);
        benchmark::DoNotOptimize(a.data());
    }
}
void BM_LinearPrediction_plain(benchmark::State& state) {
    const int order = static_cast<int>(state.range(0));
    const Floats x = noise(400);
    Floats a(count(order)), r(count(order) + 1);
    Kel32f error;
    for (auto _ : state) {
        for (int k = 0; k <= order; ++k) {
            Kel64f sum = 0;
            for (int n = k; n < 400; ++n) sum += Kel64f{x[count(n)]} * x[count(n - k)];
            r[count(k)] = static_cast<Kel32f>(sum);
        }
        plainDurbin(r.data(), a.data(), order, &error);
        benchmark::DoNotOptimize(a.data());
    }
}
void BM_LinearPredictionCov_kels(benchmark::State& state) {
    const int order = static_cast<int>(state.range(0));
    const Floats x = noise(400);
    Floats a(count(order));
    for (auto _ : state) {
        kelsLinearPrediction_Cov_32f(x.data(), 400, a.data(), order);
        benchmark::DoNotOptimize(a.data());
    }
}
BENCHMARK(BM_LinearPrediction_kels)->Arg(10)->Arg(16);
BENCHMARK(BM_LinearPrediction_plain)->Arg(10)->Arg(16);
BENCHMARK(BM_LinearPredictionCov_kels)->Arg(10)->Arg(16);

void BM_LPToCepstrum_kels(benchmark::State& state) {
    const int order = static_cast<int>(state.range(0));
    const Floats a = predictor(order);
    Floats c(a.size());
    for (auto _ : state) {
        kelsLPToCepstrum_32f(a.data(), c.data(), order);
        benchmark::DoNotOptimize(c.data());
    }
}
void BM_LPToCepstrum_plain(benchmark::State& state) {
    const int order = static_cast<int>(state.range(0));
    const Floats a = predictor(order);
    Floats c(a.size());
    for (auto _ : state) {
        for (int n = 1; n <= order; ++n) {
            Kel32f sum = 0;
            for (int k = 1; k < n; ++k) sum += static_cast<Kel32f>(k) * c[count(k - 1)] * a[count(n - k - 1)];
            c[count(n - 1)] = -a[count(n - 1)] - sum / static_cast<Kel32f>(n);
        }
        benchmark::DoNotOptimize(c.data());
    }
}
BENCHMARK(BM_LPToCepstrum_kels)->Arg(10)->Arg(16)->Arg(40);
BENCHMARK(BM_LPToCepstrum_plain)->Arg(10)->Arg(16)->Arg(40);

// Order 16; the peer evaluates the polynomial at each frequency.
void BM_LPToSpectrum_kels(benchmark::State& state) {
    const int fftOrder = static_cast<int>(state.range(0));
    const Floats a = predictor(16);
    Floats spectrum(std::size_t{1} << fftOrder);
    for (auto _ : state) {
        kelsLPToSpectrum_32f(a.data(), 16, spectrum.data(), fftOrder, -1);
        benchmark::DoNotOptimize(spectrum.data());
    }
}
void BM_LPToSpectrum_plain(benchmark::State& state) {
    const std::size_t n = std::size_t{1} << state.range(0);
    const Floats a = predictor(16);
    Floats spectrum(n);
    for (auto _ : state) {
        for (std::size_t k = 0; k <= n / 2; ++k) {
            const auto turn = std::polar(
                1.0f, static_cast<Kel32f>(-2 * std::numbers::pi * static_cast<double>(k) / static_cast<double>(n)));
            Kel32f re = 0, im = 0;
            for (std::size_t m = a.size(); m-- > 0;) {
                const Kel32f x = re + a[m];
                re = x * turn.real() - im * turn.imag();
                im = x * turn.imag() + im * turn.real();
            }
            spectrum[k] = spectrum[(n - k) % n] = 1 / std::sqrt(re * re + im * im);
        }
        benchmark::DoNotOptimize(spectrum.data());
    }
}
BENCHMARK(BM_LPToSpectrum_kels)->Arg(6)->Arg(8)->Arg(9)->Arg(10);
BENCHMARK(BM_LPToSpectrum_plain)->Arg(6)->Arg(8)->Arg(9)->Arg(10);

// ---- line spectral pairs on different predictors: the time is to depend on the order alone

// Of kind 0 noise, 1 evenly spread pairs, 2 pairs 0.001 apart, 3 nothing but zeros.
Floats predictorOfKind(int order, int64_t kind) {
    if (kind == 0) return predictor(order);
    Floats lsp(count(order)), a(lsp.size());
    for (int i = 0; i < order; ++i) {
        const int place = kind == 2 ? i / 2 * 2 : i;
        const double distance = std::numbers::pi / (order + 1);
        const double w = (place + 1) * distance + (kind == 2 ? i % 2 * 0.001 : 0.01);
        lsp[count(i)] = static_cast<Kel32f>(std::cos(w));
    }
    if (kind < 3) kelsLSPToLP_32f(lsp.data(), a.data(), order);
    return a;
}
void BM_LPToLSP_kels(benchmark::State& state) {
    const Floats a = predictorOfKind(static_cast<int>(state.range(0)), state.range(1));
    Floats lsp(a.size());
    for (auto _ : state) {
        if (kelsLPToLSP_32f(a.data(), lsp.data(), static_cast<int>(a.size())) != kelStatusOk) {
            state.SkipWithError("not stable");
        }
        benchmark::DoNotOptimize(lsp.data());
    }
}
BENCHMARK(BM_LPToLSP_kels)->ArgsProduct({{10, 16, 40}, {0, 1, 2, 3}});

// The usual grid: each polynomial in turn at 100 points from 1 down to -1, then bisection of the change of sign.
// Orders are even.
Kel32f chebyshev(const Floats& c, Kel32f x) {
    Kel32f b1 = 0, b2 = 0;
    for (std::size_t i = c.size() - 1; i > 0; --i) {
        const Kel32f b = 2 * x * b1 - b2 + c[i];
        b2 = b1;
        b1 = b;
    }
    return x * b1 - b2 + 0.5f * c[0];
}
std::size_t gridSearch(const Floats& a, Floats& lsp) {
    const std::size_t half = a.size() / 2;
    Floats poly[2] = {Floats(half + 1, 1), Floats(half + 1, 1)};
    for (std::size_t i = 0; i < half; ++i) {
        const Kel32f sum = a[i] + a[a.size() - 1 - i], difference = a[i] - a[a.size() - 1 - i];
        poly[0][half - 1 - i] = sum - poly[0][half - i];
        poly[1][half - 1 - i] = difference + poly[1][half - i];
    }
    std::size_t found = 0;
    Kel32f high = 1, atHigh = chebyshev(poly[0], 1);
    for (int i = 1; i <= 100 && found < a.size();) {
        const auto& p = poly[found % 2];
        auto low = static_cast<Kel32f>(std::cos(std::numbers::pi * i / 100));
        const Kel32f atLow = chebyshev(p, low);
        if (atLow * atHigh > 0) {
            high = low;
            atHigh = atLow;
            ++i;
            continue;
        }
        for (int k = 0; k < 20; ++k) {
            const Kel32f middle = 0.5f * (low + high);
            (chebyshev(p, middle) * atLow <= 0 ? high : low) = middle;
        }
        lsp[found++] = high;
        atHigh = chebyshev(poly[found % 2], high);
    }
    return found;
}
void BM_LPToLSP_grid(benchmark::State& state) {
    const Floats a = predictorOfKind(static_cast<int>(state.range(0)), state.range(1));
    Floats lsp(a.size());
    std::size_t found = 0;
    for (auto _ : state) {
        found = gridSearch(a, lsp);
        benchmark::DoNotOptimize(lsp.data());
    }
    state.counters["found"] = static_cast<double>(found);
}
BENCHMARK(BM_LPToLSP_grid)->ArgsProduct({{10, 16, 40}, {0, 1, 2, 3}});

void BM_LSPToLP_kels(benchmark::State& state) {
    const int order = static_cast<int>(state.range(0));
    Floats lsp(count(order)), a(lsp.size());
    for (int i = 0; i < order; ++i)
        lsp[count(i)] = static_cast<Kel32f>(std::cos((i + 1) * std::numbers::pi / (order + 1)));
    for (auto _ : state) {
        kelsLSPToLP_32f(lsp.data(), a.data(), order);
        benchmark::DoNotOptimize(a.data());
    }
}
BENCHMARK(BM_LSPToLP_kels)->Arg(10)->Arg(16)->Arg(40);

}  // namespace
