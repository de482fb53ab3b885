// Column statistics beside Eigen's column-wise operations, plain loops at -O3 and the speed at which the block can be
// read at all; accumulation and distances of Gaussians beside plain loops.  The argument is the width; blocks have
// 10000 rows.
#include <benchmark/benchmark.h>
#include <kels.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#ifdef HAVE_EIGEN
#include <Eigen/Core>
#endif

namespace {

constexpr int kRows = 10000;

template <class T>
struct Problem {
    explicit Problem(int w) : width(w), rows(std::size_t(w) * kRows), a(w), b(w), c(w), d(w) {
        std::mt19937 engine(7);
        std::normal_distribution<double> values(0, std::is_integral_v<T> ? 1000 : 1);
        std::uniform_real_distribution<double> positive(0.5, 2);
        for (auto& x : rows) x = static_cast<T>(values(engine));
        for (auto* v : {&a, &b, &c, &d}) {
            for (auto& x : *v) x = static_cast<T>(positive(engine));
        }
    }
    int width;
    std::vector<T> rows, a, b, c, d;
};

template <class T, class Call>
void add(const char* name, Call call) {
    auto* const b = benchmark::RegisterBenchmark(name, [=](benchmark::State& state) mutable {
        Problem<T> p(static_cast<int>(state.range(0)));
        for (auto _ : state) {
            call(p);
            benchmark::ClobberMemory();
        }
    });
    for (const int width : {13, 26, 39}) b->Arg(width);
}

// ---- plain loops ---------------------------------------------------------------------------------------------------

template <class T, class S>
[[gnu::noinline]] void plainMeanVar(const T* x, int height, int width, T* mean, T* var, S* s1, S* s2) {
    for (int j = 0; j < width; ++j) s1[j] = s2[j] = 0;
    for (int i = 0; i < height; ++i, x += width) {
        for (int j = 0; j < width; ++j) {
            s1[j] += x[j];
            s2[j] += S(x[j]) * x[j];
        }
    }
    for (int j = 0; j < width; ++j) {
        mean[j] = static_cast<T>(s1[j] / S(height));
        var[j] = static_cast<T>((s2[j] - s1[j] * s1[j] / S(height)) / S(height - 1));
    }
}

template <class T>
[[gnu::noinline]] void plainAccumulate(const T* x, const T* mean, T* meanAcc, T* varAcc, int len, T val) {
    for (int k = 0; k < len; ++k) {
        const T d = x[k] - mean[k];
        meanAcc[k] += val * d;
        varAcc[k] += d * (val * d);
    }
}

[[gnu::noinline]] float plainMergeCost(const float* m1, const float* v1, const float* m2, const float* v2, int len,
                                       float w1, float w2) {
    double logs = 0;
    for (int k = 0; k < len; ++k) {
        const float m = (w1 * m1[k] + w2 * m2[k]) / (w1 + w2);
        const float v = (w1 * (m1[k] * m1[k] + v1[k]) + w2 * (m2[k] * m2[k] + v2[k])) / (w1 + w2) - m * m;
        logs += std::log(double{v});
    }
    return static_cast<float>((w1 + w2) * (logs - len * 1.8378770664093));
}

[[gnu::noinline]] double plainBhattacharyya(const float* m1, const float* v1, const float* m2, const float* v2,
                                            int len) {
    double a = 0, b = 0;
    for (int k = 0; k < len; ++k) {
        const double d = double{m1[k]} - m2[k], both = double{v1[k]} + v2[k];
        a += d * d / both;
        b += std::log(both * 0.5) - 0.5 * (std::log(double{v1[k]}) + std::log(double{v2[k]}));
    }
    return 0.5 * b + 0.25 * a;
}

[[gnu::noinline]] void plainCovariance(const float* x, int height, const float* mean, double* dst, int width,
                                       double val) {
    for (int i = 0; i < width; ++i) {
        for (int j = i; j < width; ++j) {
            long double sum = 0;
            for (int r = 0; r < height; ++r) {
                sum += (static_cast<long double>(x[r * width + i]) - mean[j]) *
                       (static_cast<long double>(x[r * width + j]) - mean[j]);
            }
            dst[i * width + j] = static_cast<double>(dst[i * width + j] + val * sum);
            dst[j * width + i] = dst[i * width + j];
        }
    }
}

// One vector after the other goes to the accumulators of one Gaussian after the other.
template <class T, class Accumulate>
void addAccumulation(const char* name, Accumulate accumulate) {
    add<T>(name, [accumulate, next = 0](Problem<T>& p) mutable {
        constexpr int kGaussians = 32;
        next = (next + 1) % kGaussians;
        T* const gaussian = p.rows.data() + next * 4 * p.width;
        accumulate(gaussian + 3 * p.width, gaussian, gaussian + p.width, gaussian + 2 * p.width, p.width, T(1e-3));
    });
}

// Reads every byte and does as little else as possible.
template <class T>
uint64_t readAll(const std::vector<T>& v) {
    typedef uint64_t Words __attribute__((vector_size(32), aligned(1)));
    const auto* p = reinterpret_cast<const char*>(v.data());
    const std::size_t bytes = v.size() * sizeof(T);
    Words a{}, b{}, c{}, d{};
    for (std::size_t i = 0; i + 128 <= bytes; i += 128) {
        a |= *reinterpret_cast<const Words*>(p + i);
        b |= *reinterpret_cast<const Words*>(p + i + 32);
        c |= *reinterpret_cast<const Words*>(p + i + 64);
        d |= *reinterpret_cast<const Words*>(p + i + 96);
    }
    const Words all = (a | b) | (c | d);
    return all[0] | all[1] | all[2] | all[3];
}

[[maybe_unused]] const bool registered = [] {
    using F = Problem<float>;
    using D = Problem<double>;
    using I = Problem<Kel16s>;
    add<float>("BM_ColumnMean_kels",
               [](F& p) { kelsMeanColumn_32f_D2(p.rows.data(), kRows, p.width, p.a.data(), p.width); });
    add<float>("BM_ColumnMeanVar_kels",
               [](F& p) { kelsMeanVarColumn_32f_D2(p.rows.data(), kRows, p.width, p.a.data(), p.b.data(), p.width); });
    add<float>("BM_ColumnMeanVar_plain", [](F& p) {
        float s1[64], s2[64];
        plainMeanVar(p.rows.data(), kRows, p.width, p.a.data(), p.b.data(), s1, s2);
    });
#ifdef HAVE_EIGEN
    using Block = Eigen::Map<const Eigen::Array<float, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>>;
    using Row = Eigen::Map<Eigen::Array<float, 1, Eigen::Dynamic>>;
    add<float>("BM_ColumnMean_Eigen",
               [](F& p) { Row(p.a.data(), p.width) = Block(p.rows.data(), kRows, p.width).colwise().mean(); });
    add<float>("BM_ColumnMeanVar_Eigen", [](F& p) {
        const Block x(p.rows.data(), kRows, p.width);
        Row mean(p.a.data(), p.width), var(p.b.data(), p.width);
        mean = x.colwise().mean();
        var = (x.square().colwise().sum() - float(kRows) * mean.square()) / float(kRows - 1);
    });
#endif
    add<float>("BM_ColumnMean_read", [](F& p) { benchmark::DoNotOptimize(readAll(p.rows)); });
    add<float>("BM_ColumnMeanVar_read", [](F& p) { benchmark::DoNotOptimize(readAll(p.rows)); });
    add<double>("BM_WeightedMeanVar64_kels", [](D& p) {
        static const std::vector<double> weights(kRows, 1.0 / kRows);
        kelsWeightedMeanVarColumn_64f_D2(p.rows.data(), p.width, weights.data(), kRows, p.a.data(), p.b.data(),
                                         p.width);
    });
    add<double>("BM_WeightedMeanVar64_read", [](D& p) { benchmark::DoNotOptimize(readAll(p.rows)); });
    add<Kel16s>("BM_ColumnMeanVar16s_kels", [](I& p) {
        kelsMeanVarColumn_16s_D2Sfs(p.rows.data(), kRows, p.width, p.a.data(), p.b.data(), p.width, 8);
    });
    add<Kel16s>("BM_ColumnMeanVar16s_plain", [](I& p) {
        int64_t s1[64], s2[64];
        plainMeanVar(p.rows.data(), kRows, p.width, p.a.data(), p.b.data(), s1, s2);
    });
    add<Kel16s>("BM_ColumnMeanVar16s_read", [](I& p) { benchmark::DoNotOptimize(readAll(p.rows)); });

    addAccumulation<float>("BM_MeanVarAcc32_kels", kelsMeanVarAcc_32f);
    addAccumulation<float>("BM_MeanVarAcc32_plain", plainAccumulate<float>);
    addAccumulation<double>("BM_MeanVarAcc64_kels", kelsMeanVarAcc_64f);
    addAccumulation<double>("BM_MeanVarAcc64_plain", plainAccumulate<double>);
    add<float>("BM_UpdateVar_kels",
               [](F& p) { kelsUpdateVar_32f(p.a.data(), p.b.data(), p.c.data(), p.d.data(), p.width, 3, 3); });
    add<float>("BM_MergeCost_kels", [](F& p) {
        float cost;
        kelsGaussianDist_32f(p.a.data(), p.b.data(), p.c.data(), p.d.data(), p.width, &cost, 0.3f, 1, 0.7f, 2);
        benchmark::DoNotOptimize(cost);
    });
    add<float>("BM_MergeCost_plain", [](F& p) {
        benchmark::DoNotOptimize(plainMergeCost(p.a.data(), p.b.data(), p.c.data(), p.d.data(), p.width, 0.3f, 0.7f));
    });
    add<float>("BM_Bhattacharyya_kels", [](F& p) {
        double distance;
        kelsBhatDist_32f64f(p.a.data(), p.b.data(), p.c.data(), p.d.data(), p.width, &distance);
        benchmark::DoNotOptimize(distance);
    });
    add<float>("BM_Bhattacharyya_plain", [](F& p) {
        benchmark::DoNotOptimize(plainBhattacharyya(p.a.data(), p.b.data(), p.c.data(), p.d.data(), p.width));
    });
    add<float>("BM_Covariance_kels", [](F& p) {
        static std::vector<double> matrix(39 * 39);
        kelsAccCovarianceMatrix_32f64f_D2(p.rows.data(), p.width, 1000, p.a.data(), matrix.data(), p.width, p.width,
                                          1e-3);
    });
    add<float>("BM_Covariance_plain", [](F& p) {
        static std::vector<double> matrix(39 * 39);
        plainCovariance(p.rows.data(), 1000, p.a.data(), matrix.data(), p.width, 1e-3);
    });
    return true;
}();

}  // namespace
