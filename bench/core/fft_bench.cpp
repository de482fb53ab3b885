// Real FFTs beside FFTW (its measured plan) and KISS FFT: the argument is the order.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "kels.h"

#if defined(HAVE_FFTW)
#include <fftw3.h>
#endif
#if defined(HAVE_KISSFFT)
#include <kiss_fftr.h>
#endif

namespace {

constexpr int kFirstOrder = 4;
constexpr int kLastOrder = 20;

std::size_t points(const benchmark::State& state) {
    return std::size_t{1} << state.range(0);
}

// Samples of both signs that neither grow nor vanish.
void fill(float* x, std::size_t n) {
    unsigned seed = 1;
    for (std::size_t i = 0; i < n; ++i) {
        seed = seed * 1664525u + 1013904223u;
        x[i] = static_cast<float>(seed >> 8) / 8388608.0f - 1.0f;
    }
}

// The customary count: half of 5 N log2 N.
void setFlops(benchmark::State& state) {
    const auto n = static_cast<double>(points(state));
    state.counters["flops"] = benchmark::Counter(2.5 * n * static_cast<double>(state.range(0)),
                                                 benchmark::Counter::kIsIterationInvariantRate);
}

class Kels {
  public:
    explicit Kels(int order) : n_(std::size_t{1} << order) {
        int bytes = 0;
        kelsFFTInitAlloc_R_32f(&spec_, order, kelFftNoDiv, kelHintNone);
        kelsFFTGetBufSize_R_32f(spec_, &bytes);
        time_ = kelsMalloc_32f(static_cast<int>(n_));
        spectrum_ = kelsMalloc_32f(static_cast<int>(n_) + 2);
        work_ = kelsMalloc_8u(bytes + 15);
        fill(time_, n_);
        fill(spectrum_, n_ + 2);
    }
    ~Kels() {
        kelsFFTFree_R_32f(spec_);
        kelsFree(time_);
        kelsFree(spectrum_);
        kelsFree(work_);
    }
    void forward() { kelsFFTFwd_RToCCS_32f(time_, spectrum_, spec_, work_); }
    void inverse() { kelsFFTInv_PackToR_32f(spectrum_, time_, spec_, work_); }

  private:
    std::size_t n_;
    KelFFTSpec_R_32f* spec_ = nullptr;
    Kel32f* time_;
    Kel32f* spectrum_;
    Kel8u* work_;
};

void BM_FftForward_kels(benchmark::State& state) {
    Kels fft(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        fft.forward();
        benchmark::ClobberMemory();
    }
    setFlops(state);
}
BENCHMARK(BM_FftForward_kels)->DenseRange(kFirstOrder, kLastOrder);

void BM_FftInverse_kels(benchmark::State& state) {
    Kels fft(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        fft.inverse();
        benchmark::ClobberMemory();
    }
    setFlops(state);
}
BENCHMARK(BM_FftInverse_kels)->DenseRange(kFirstOrder, kLastOrder);

#if defined(HAVE_FFTW)
class Fftw {
  public:
    explicit Fftw(int order) : n_(1 << order), time_(fftwf_alloc_real(size())), spectrum_(fftwf_alloc_complex(size())) {
        forward_ = fftwf_plan_dft_r2c_1d(n_, time_, spectrum_, FFTW_MEASURE);
        inverse_ = fftwf_plan_dft_c2r_1d(n_, spectrum_, time_, FFTW_MEASURE);
        fill(time_, size());
        fill(reinterpret_cast<float*>(spectrum_), size() + 2);
    }
    ~Fftw() {
        fftwf_destroy_plan(forward_);
        fftwf_destroy_plan(inverse_);
        fftwf_free(time_);
        fftwf_free(spectrum_);
    }
    void forward() { fftwf_execute(forward_); }
    void inverse() { fftwf_execute(inverse_); }

  private:
    std::size_t size() const { return static_cast<std::size_t>(n_); }
    int n_;
    float* time_;
    fftwf_complex* spectrum_;
    fftwf_plan forward_;
    fftwf_plan inverse_;
};

void BM_FftForward_fftw(benchmark::State& state) {
    Fftw fft(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        fft.forward();
        benchmark::ClobberMemory();
    }
    setFlops(state);
}
BENCHMARK(BM_FftForward_fftw)->DenseRange(kFirstOrder, kLastOrder);

void BM_FftInverse_fftw(benchmark::State& state) {
    Fftw fft(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        fft.inverse();
        benchmark::ClobberMemory();
    }
    setFlops(state);
}
BENCHMARK(BM_FftInverse_fftw)->DenseRange(kFirstOrder, kLastOrder);
#endif

#if defined(HAVE_KISSFFT)
void BM_FftForward_kissfft(benchmark::State& state) {
    const std::size_t n = points(state);
    kiss_fftr_cfg config = kiss_fftr_alloc(static_cast<int>(n), 0, nullptr, nullptr);
    std::vector<float> time(n);
    std::vector<kiss_fft_cpx> spectrum(n / 2 + 1);
    fill(time.data(), n);
    for (auto _ : state) {
        kiss_fftr(config, time.data(), spectrum.data());
        benchmark::ClobberMemory();
    }
    kiss_fftr_free(config);
    setFlops(state);
}
BENCHMARK(BM_FftForward_kissfft)->DenseRange(kFirstOrder, kLastOrder);
#endif

}  // namespace
