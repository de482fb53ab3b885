// Addition of logarithms beside the textbook formula m + log1p(exp(d)): as a loop over the C library's functions,
// and in Eigen's vectorised ones.
#include <benchmark/benchmark.h>
#include <kels.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#ifdef HAVE_EIGEN
#include <Eigen/Core>
#endif

namespace {

// Scores as a recogniser adds them: most differences are within the range where both operands matter.
template <class T>
struct Scores {
    explicit Scores(const benchmark::State& state) : len(static_cast<int>(state.range(0))), a(len), b(len), sum(len) {
        std::mt19937 engine(1);
        std::normal_distribution<double> score(-60, 6);
        for (int i = 0; i < len; ++i) {
            a[i] = static_cast<T>(score(engine));
            b[i] = static_cast<T>(score(engine));
        }
    }
    int len;
    std::vector<T> a, b, sum;
};

template <class T, class Call>
void run(benchmark::State& state, Call call) {
    Scores<T> s(state);
    for (auto _ : state) {
        call(s);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * s.len);
}

KelStatus logAdd(const float* a, float* b, int len, int hint) {
    return kelsLogAdd_32f(a, b, len, hint);
}
KelStatus logAdd(const double* a, double* b, int len, int hint) {
    return kelsLogAdd_64f(a, b, len, hint);
}

// In place, so the operand is copied first: the peers, which write elsewhere, are spared that.
template <class T>
void kels(benchmark::State& state, int hint) {
    run<T>(state, [=](Scores<T>& s) {
        std::copy(s.b.begin(), s.b.end(), s.sum.begin());
        logAdd(s.a.data(), s.sum.data(), s.len, hint);
    });
}
template <class T>
void libm(benchmark::State& state) {
    run<T>(state, [](Scores<T>& s) {
        for (int i = 0; i < s.len; ++i) {
            const T m = std::max(s.a[i], s.b[i]);
            s.sum[i] = m + std::log1p(std::exp(std::min(s.a[i], s.b[i]) - m));
        }
    });
}
#ifdef HAVE_EIGEN
template <class T>
void eigen(benchmark::State& state) {
    using Array = Eigen::Map<Eigen::Array<T, Eigen::Dynamic, 1>>;
    run<T>(state, [](Scores<T>& s) {
        const Array a(s.a.data(), s.len), b(s.b.data(), s.len);
        Array sum(s.sum.data(), s.len);
        sum = a.max(b) + (a.min(b) - a.max(b)).exp().log1p();
    });
}
#endif

void BM_LogAdd_32f_accurate(benchmark::State& state) {
    kels<float>(state, kelHintNone);
}
void BM_LogAdd_32f_kels(benchmark::State& state) {
    kels<float>(state, kelHintFast);
}
void BM_LogAdd_64f_kels(benchmark::State& state) {
    kels<double>(state, kelHintNone);
}
void BM_LogAdd_16s_kels(benchmark::State& state) {
    std::vector<int16_t> a(state.range(0)), b(a), sum(a);
    std::mt19937 engine(1);
    for (auto* v : {&a, &b}) {
        for (auto& x : *v) x = static_cast<int16_t>(std::uniform_int_distribution<int>(-8000, 0)(engine));
    }
    for (auto _ : state) {
        std::copy(b.begin(), b.end(), sum.begin());
        kelsLogAdd_16s_Sfs(a.data(), sum.data(), static_cast<int>(a.size()), 8, kelHintFast);
        benchmark::ClobberMemory();
    }
}
void BM_LogSum_32f_kels(benchmark::State& state) {
    run<float>(state, [](Scores<float>& s) { kelsLogSum_32f(s.a.data(), s.sum.data(), s.len); });
}
void BM_LogSub_32f_kels(benchmark::State& state) {
    run<float>(state, [](Scores<float>& s) {
        for (int i = 0; i < s.len; ++i) s.sum[i] = s.a[i] - 1;
        kelsLogSub_32f(s.a.data(), s.sum.data(), s.len);
    });
}

void lengths(benchmark::internal::Benchmark* bench) {
    for (const int n : {16, 39, 256, 4096, 65536, 1000000}) bench->Arg(n);
}
BENCHMARK(BM_LogAdd_32f_accurate)->Apply(lengths);
BENCHMARK(BM_LogAdd_32f_kels)->Apply(lengths);
BENCHMARK(libm<float>)->Name("BM_LogAdd_32f_libm")->Apply(lengths);
BENCHMARK(BM_LogAdd_64f_kels)->Apply(lengths);
BENCHMARK(libm<double>)->Name("BM_LogAdd_64f_libm")->Apply(lengths);
#ifdef HAVE_EIGEN
BENCHMARK(eigen<float>)->Name("BM_LogAdd_32f_eigen")->Apply(lengths);
BENCHMARK(eigen<double>)->Name("BM_LogAdd_64f_eigen")->Apply(lengths);
#endif
BENCHMARK(BM_LogAdd_16s_kels)->Apply(lengths);
BENCHMARK(BM_LogSum_32f_kels)->Arg(256)->Arg(4096);
BENCHMARK(BM_LogSub_32f_kels)->Arg(256)->Arg(4096);

}  // namespace
