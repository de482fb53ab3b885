// From the spectrum of a frame, or its samples, to cepstra: 512-point FFT, 26 filters, 13 cepstra at 16 kHz.
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#include "kels.h"
#ifdef HAVE_EIGEN
#include <Eigen/Dense>
#include <Eigen/Sparse>
#endif
#ifdef HAVE_AUBIO
#include <aubio/aubio.h>
#endif

namespace {

constexpr int kFFT = 512, kBins = kFFT / 2 + 1, kFilters = 26, kCepstra = 13, kRate = 16000;

template <class T>
std::vector<T> noise(int n, double low, double high) {
    std::mt19937 engine(1);
    std::uniform_real_distribution<double> value(low, high);
    std::vector<T> v(static_cast<std::size_t>(n));
    for (auto& x : v) x = static_cast<T>(value(engine));
    return v;
}

KelFilterBank_32f* makeBank(int flag) {
    KelFilterBank_32f* bank = nullptr;
    int order = 0;
    kelsMelFBankInitAlloc_32f(&bank, &order, kFFT, kRate, 64, kRate / 2, kFilters, 1127, 700, flag);
    return bank;
}
KelFilterBank_16s* makeBank16(int flag) {
    KelFilterBank_16s* bank = nullptr;
    int order = 0;
    kelsMelFBankInitAlloc_16s(&bank, &order, kFFT, kRate, 64, kRate / 2, kFilters, 1127, 700, flag);
    return bank;
}
KelDCTLifterState_32f* makeLifter() {
    KelDCTLifterState_32f* state = nullptr;
    kelsDCTLifterInitAlloc_32f(&state, kFilters, kCepstra, 22, 1);
    return state;
}
template <class Bank, class Free>
void drop(Bank* bank, Free free) {
    free(bank);
    kelsFree(bank);
}

void BM_EvalFBank_kels(benchmark::State& state) {
    auto* const bank = makeBank(kelFBankWeightBin);
    const auto s = noise<Kel32f>(kBins, 0, 1000);
    std::vector<Kel32f> e(kFilters);
    for (auto _ : state) {
        kelsEvalFBank_32f(s.data(), e.data(), bank);
        benchmark::ClobberMemory();
    }
    drop(bank, kelsFBankFree_32f);
}
BENCHMARK(BM_EvalFBank_kels)->Name("BM_EvalFBank_kels/26x257");

void BM_EvalFBank16_kels(benchmark::State& state) {
    auto* const bank = makeBank16(kelFBankWeightBin);
    const auto s = noise<Kel16s>(kBins, 0, 10000);
    std::vector<Kel32s> e(kFilters);
    for (auto _ : state) {
        kelsEvalFBank_16s32s_Sfs(s.data(), e.data(), bank, 0);
        benchmark::ClobberMemory();
    }
    drop(bank, kelsFBankFree_16s);
}
BENCHMARK(BM_EvalFBank16_kels)->Name("BM_EvalFBank16s_kels/26x257");

void BM_DCTLifter_kels(benchmark::State& state) {
    auto* const lifter = makeLifter();
    const auto e = noise<Kel32f>(kFilters, -5, 15);
    std::vector<Kel32f> c(kCepstra);
    for (auto _ : state) {
        kelsDCTLifter_32f(e.data(), c.data(), lifter);
        benchmark::ClobberMemory();
    }
    drop(lifter, kelsDCTLifterFree_32f);
}
BENCHMARK(BM_DCTLifter_kels)->Name("BM_DCTLifter_kels/13x26");

// Bank, logarithm and cepstra of a given spectrum; with kelFBankOwnFFT of the samples.
void mfcc(benchmark::State& state, int flag) {
    auto* const bank = makeBank(flag);
    auto* const lifter = makeLifter();
    const auto s = noise<Kel32f>(kFFT, 0, 1000);
    std::vector<Kel32f> e(kFilters), c(kCepstra);
    for (auto _ : state) {
        kelsEvalFBank_32f(s.data(), e.data(), bank);
        for (Kel32f& v : e) v = std::log(v);
        kelsDCTLifter_32f(e.data(), c.data(), lifter);
        benchmark::ClobberMemory();
    }
    drop(bank, kelsFBankFree_32f);
    drop(lifter, kelsDCTLifterFree_32f);
}
void BM_MFCCOfSpectrum_kels(benchmark::State& state) {
    mfcc(state, kelFBankWeightBin);
}
BENCHMARK(BM_MFCCOfSpectrum_kels)->Name("BM_MFCCOfSpectrum_kels/512");
void BM_MFCC_kels(benchmark::State& state) {
    mfcc(state, kelFBankWeightBin | kelFBankOwnFFT);
}
BENCHMARK(BM_MFCC_kels)->Name("BM_MFCC_kels/512");

#ifdef HAVE_EIGEN
Eigen::MatrixXf weightMatrix() {
    auto* const bank = makeBank(kelFBankWeightBin);
    Eigen::MatrixXf w = Eigen::MatrixXf::Zero(kFilters, kBins);
    std::vector<int> centers(kFilters + 2);
    kelsFBankGetCenters_32f(bank, centers.data());
    std::vector<Kel32f> coeffs(kBins);
    for (int m = 0; m < kFilters; ++m) {
        kelsFBankGetCoeffs_32f(bank, m + 1, coeffs.data());
        const int lo = centers[static_cast<std::size_t>(m)];
        const int hi = centers[static_cast<std::size_t>(m) + 2];
        for (int i = lo; i <= hi; ++i) w(m, i) = coeffs[static_cast<std::size_t>(i - lo)];
    }
    drop(bank, kelsFBankFree_32f);
    return w;
}

template <class Matrix>
void multiply(benchmark::State& state, const Matrix& m) {
    const Eigen::VectorXf s = Eigen::VectorXf::Random(m.cols());
    Eigen::VectorXf e(m.rows());
    for (auto _ : state) {
        e.noalias() = m * s;
        benchmark::DoNotOptimize(e.data());
        benchmark::ClobberMemory();
    }
}
void BM_EvalFBank_eigenDense(benchmark::State& state) {
    multiply(state, weightMatrix());
}
BENCHMARK(BM_EvalFBank_eigenDense)->Name("BM_EvalFBank_eigen-dense/26x257");
void BM_EvalFBank_eigenSparse(benchmark::State& state) {
    multiply(state, Eigen::SparseMatrix<float, Eigen::RowMajor>(weightMatrix().sparseView()));
}
BENCHMARK(BM_EvalFBank_eigenSparse)->Name("BM_EvalFBank_eigen-sparse/26x257");
void BM_DCTLifter_eigen(benchmark::State& state) {
    multiply(state, Eigen::MatrixXf::Random(kCepstra, kFilters).eval());
}
BENCHMARK(BM_DCTLifter_eigen)->Name("BM_DCTLifter_eigen/13x26");
void BM_DCTLifter_eigenRows(benchmark::State& state) {
    using Rows = Eigen::Matrix<float, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
    multiply(state, Rows::Random(kCepstra, kFilters).eval());
}
BENCHMARK(BM_DCTLifter_eigenRows)->Name("BM_DCTLifter_eigen-rowmajor/13x26");
#endif

#ifdef HAVE_AUBIO
// aubio takes the spectrum as magnitude and phase; its own transform produces both.
struct Aubio {
    aubio_mfcc_t* mfcc = new_aubio_mfcc(kFFT, kFilters, kCepstra, kRate);
    aubio_fft_t* fft = new_aubio_fft(kFFT);
    fvec_t* samples = new_fvec(kFFT);
    cvec_t* spectrum = new_cvec(kFFT);
    fvec_t* cepstra = new_fvec(kCepstra);

    Aubio() {
        aubio_mfcc_set_mel_coeffs_htk(mfcc, 64, kRate / 2);
        const auto s = noise<float>(kFFT, 0, 1000);
        for (std::size_t i = 0; i < s.size(); ++i) samples->data[i] = s[i];
        aubio_fft_do(fft, samples, spectrum);
    }
    ~Aubio() {
        del_aubio_mfcc(mfcc);
        del_aubio_fft(fft);
        del_fvec(samples);
        del_cvec(spectrum);
        del_fvec(cepstra);
    }
};
void BM_MFCCOfSpectrum_aubio(benchmark::State& state) {
    Aubio a;
    for (auto _ : state) {
        aubio_mfcc_do(a.mfcc, a.spectrum, a.cepstra);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_MFCCOfSpectrum_aubio)->Name("BM_MFCCOfSpectrum_aubio/512");
void BM_MFCC_aubio(benchmark::State& state) {
    Aubio a;
    for (auto _ : state) {
        aubio_fft_do(a.fft, a.samples, a.spectrum);
        aubio_mfcc_do(a.mfcc, a.spectrum, a.cepstra);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_MFCC_aubio)->Name("BM_MFCC_aubio/512");
#endif

void BM_VAD_kels(benchmark::State& state) {
    const auto mel = noise<float>(25, 0, 1000), spec = noise<float>(64, 0, 1000);
    Kel8u detector[64];
    kelsVADInit_Aurora_32f(detector);
    int decision = 0;
    for (auto _ : state) {
        kelsVADDecision_Aurora_32f(mel.data(), spec.data(), 0, &decision, detector);
        benchmark::DoNotOptimize(decision);
    }
}
BENCHMARK(BM_VAD_kels)->Name("BM_VAD_kels/1");

}  // namespace
