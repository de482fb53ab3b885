// Gaussian scores beside what a user would pick instead, beside plain loops at -O3 (also with the order of sums freed),
// and beside the core's multiply-add peak.  1024 rows; the benchmark's argument is the width.  items_per_second counts
// components; the multiplications of one component take two multiply-add slots.
#include <benchmark/benchmark.h>
#include <kels.h>

#include <cstdint>
#include <functional>
#include <random>
#include <type_traits>
#include <vector>

#ifdef HAVE_OPENBLAS
#include <cblas.h>
extern "C" void openblas_set_num_threads(int);
#endif
#ifdef HAVE_EIGEN
#include <Eigen/Core>
#endif

namespace {

constexpr int kRows = 1024;

// `rows` is the block, `weights` its inverse variances or those of one Gaussian, `one` a vector or a mean.
template <class T, class Score>
struct Problem {
    explicit Problem(int w) : width(w), rows(size(w) * kRows), weights(size(w) * kRows), one(size(w)), scores(kRows) {
        std::mt19937 engine(7);
        std::normal_distribution<double> values(0, std::is_integral_v<T> ? 1000 : 1);
        std::uniform_real_distribution<double> variances(0.5, std::is_integral_v<T> ? 100 : 2);
        for (auto& x : rows) x = static_cast<T>(values(engine));
        for (auto& x : one) x = static_cast<T>(values(engine));
        for (auto& x : weights) x = static_cast<T>(variances(engine));
        constants.assign(kRows, Score(-40));
    }
    static std::size_t size(int n) { return static_cast<std::size_t>(n); }

    int width;
    std::vector<T> rows, weights, one;
    std::vector<Score> scores, constants;
};

template <class T, class Score, class Call>
void add(const char* name, Call call) {
    auto* const b = benchmark::RegisterBenchmark(name, [=](benchmark::State& state) {
        Problem<T, Score> p(static_cast<int>(state.range(0)));
        for (auto _ : state) {
            call(p);
            benchmark::ClobberMemory();
        }
        state.SetItemsProcessed(state.iterations() * kRows * state.range(0));
    });
    for (const int width : {13, 26, 39, 40}) b->Arg(width);
}

#define FREE_ORDER __attribute__((noinline, optimize("O3", "associative-math", "no-signed-zeros", "no-trapping-math")))

// scores[g] = constant - S / 2, with rows of the mean or of the vector; kStride 0 has one row of inverse variances.
template <int kStride, class Sum, class T, class Score>
inline void loops(Problem<T, Score>& p) {
    for (int g = 0; g < kRows; ++g) {
        const T* const row = &p.rows[static_cast<std::size_t>(g * p.width)];
        const T* const weight = &p.weights[static_cast<std::size_t>(g * p.width * kStride)];
        Sum sum = 0;
        for (int i = 0; i < p.width; ++i) {
            if constexpr (std::is_integral_v<Sum>) {
                const int d = p.one[static_cast<std::size_t>(i)] - row[i];
                sum += Sum{d} * d * weight[i];
            } else {
                const Sum d = static_cast<Sum>(p.one[static_cast<std::size_t>(i)]) - static_cast<Sum>(row[i]);
                sum += d * d * static_cast<Sum>(weight[i]);
            }
        }
        const auto at = static_cast<std::size_t>(g);
        if constexpr (std::is_integral_v<Sum>) {
            const Sum score = p.constants[at] - (sum >> 1);
            p.scores[at] = static_cast<Score>(score > INT32_MAX ? INT32_MAX : score < INT32_MIN ? INT32_MIN : score);
        } else {
            p.scores[at] = static_cast<Score>(p.constants[at] - Sum(0.5) * sum);
        }
    }
}
template <int kStride, class Sum, class T, class Score>
__attribute__((noinline)) void plain(Problem<T, Score>& p) {
    loops<kStride, Sum>(p);
}
// The order of sums left to the compiler, which makes vectors of them.
template <int kStride>
FREE_ORDER void freeOrder(Problem<float, float>& p) {
    for (int g = 0; g < kRows; ++g) {
        const float* const row = &p.rows[static_cast<std::size_t>(g * p.width)];
        const float* const weight = &p.weights[static_cast<std::size_t>(g * p.width * kStride)];
        const float* const one = p.one.data();
        float sum = 0;
        for (int i = 0; i < p.width; ++i) sum += (one[i] - row[i]) * (one[i] - row[i]) * weight[i];
        p.scores[static_cast<std::size_t>(g)] = p.constants[static_cast<std::size_t>(g)] - 0.5f * sum;
    }
}

using F = Problem<float, float>;
using D = Problem<double, double>;
using I = Problem<int16_t, int32_t>;
using S = Problem<int16_t, float>;

// Twelve independent chains of fused multiply-adds.
void peak(benchmark::State& state) {
    using V = float __attribute__((vector_size(32)));
    constexpr int kRounds = 1000;
    V a = {1, 2, 3, 4, 5, 6, 7, 8}, x0 = a, x1 = a, x2 = a, x3 = a, x4 = a, x5 = a, x6 = a, x7 = a, x8 = a, x9 = a;
    const V m = a - a + 0.999f;
    for (auto _ : state) {
        for (int i = 0; i < kRounds; ++i) {
            const auto step = [&](V& x) { asm("vfmadd213ps %2, %1, %0" : "+x"(x) : "x"(m), "x"(a)); };
            step(x0), step(x1), step(x2), step(x3), step(x4), step(x5), step(x6), step(x7), step(x8), step(x9);
        }
        benchmark::DoNotOptimize(x0 + x1 + x2 + x3 + x4 + x5 + x6 + x7 + x8 + x9);
    }
    state.SetItemsProcessed(state.iterations() * kRounds * 10 * 8 / 2);
}

// What reading the block and its inverse variances takes, and nothing else.
void readBoth(F& p) {
    using V = unsigned __attribute__((vector_size(32), aligned(4), may_alias));
    const auto* const rows = reinterpret_cast<const V*>(p.rows.data());
    const auto* const weights = reinterpret_cast<const V*>(p.weights.data());
    V a{}, b{}, c{}, d{};
    for (std::size_t i = 0; i + 2 <= p.rows.size() / 8; i += 2) {
        a |= rows[i], b |= weights[i], c |= rows[i + 1], d |= weights[i + 1];
    }
    benchmark::DoNotOptimize(a | b | c | d);
}

const bool kRegistered = [] {
#ifdef __FMA__
    benchmark::RegisterBenchmark("BM_GaussPeak_core", peak);
#endif
    add<float, float>("BM_Gaussians_kels", [](F& p) {
        p.scores = p.constants;
        kelsLogGaussMultiMix_32f_D2(p.rows.data(), p.weights.data(), p.width, p.one.data(), p.width, p.scores.data(),
                                    kRows);
    });
    add<float, float>("BM_Frames_kels", [](F& p) {
        kelsLogGauss_32f_D2(p.rows.data(), p.width, p.one.data(), p.weights.data(), p.width, p.scores.data(), kRows,
                            -40);
    });
    add<float, float>("BM_Single_kels", [](F& p) {
        for (std::size_t g = 0; g < kRows; ++g) {
            const std::size_t at = g * static_cast<std::size_t>(p.width);
            kelsLogGaussSingle_32f(p.one.data(), &p.rows[at], &p.weights[at], p.width, &p.scores[g], -40);
        }
    });
    add<double, double>("BM_Gaussians64_kels", [](D& p) {
        p.scores = p.constants;
        kelsLogGaussMultiMix_64f_D2(p.rows.data(), p.weights.data(), p.width, p.one.data(), p.width, p.scores.data(),
                                    kRows);
    });
    add<int16_t, int32_t>("BM_Gaussians16s32s_kels", [](I& p) {
        p.scores = p.constants;
        kelsLogGaussMultiMix_16s32s_D2Sfs(p.rows.data(), p.weights.data(), p.width, p.one.data(), p.width,
                                          p.scores.data(), kRows, 0);
    });
    add<int16_t, int32_t>("BM_Frames16s32s_kels", [](I& p) {
        kelsLogGauss_16s32s_D2Sfs(p.rows.data(), p.width, p.one.data(), p.weights.data(), p.width, p.scores.data(),
                                  kRows, -40, 0);
    });
    add<int16_t, float>("BM_Gaussians16s32f_kels", [](S& p) {
        p.scores = p.constants;
        kelsLogGaussMultiMix_16s32f_D2(p.rows.data(), p.weights.data(), p.width, p.one.data(), p.width, p.scores.data(),
                                       kRows);
    });

    add<float, float>("BM_Gaussians_plain", plain<1, float, float, float>);
    add<float, float>("BM_Gaussians_freeorder", freeOrder<1>);
    add<float, float>("BM_Gaussians_readonly", readBoth);
    add<float, float>("BM_Frames_plain", plain<0, float, float, float>);
    add<float, float>("BM_Frames_freeorder", freeOrder<0>);
    add<double, double>("BM_Gaussians64_plain", plain<1, double, double, double>);
    add<double, double>("BM_Gaussians64_plainextended", plain<1, long double, double, double>);
    add<int16_t, int32_t>("BM_Gaussians16s32s_plain", plain<1, int64_t, int16_t, int32_t>);
    add<int16_t, int32_t>("BM_Frames16s32s_plain", plain<0, int64_t, int16_t, int32_t>);
    add<int16_t, float>("BM_Gaussians16s32f_plain", plain<1, float, int16_t, float>);

#ifdef HAVE_EIGEN
    using Block = Eigen::Map<Eigen::Array<float, Eigen::Dynamic, Eigen::Dynamic>>;
    using Column = Eigen::Map<Eigen::ArrayXf>;
    using Row = Eigen::Map<Eigen::Array<float, 1, Eigen::Dynamic>>;
    add<float, float>("BM_Gaussians_eigen", [](F& p) {
        const Block means(p.rows.data(), p.width, kRows), ivars(p.weights.data(), p.width, kRows);
        Row(p.scores.data(), kRows) =
            Row(p.constants.data(), kRows) -
            0.5f * ((means.colwise() - Column(p.one.data(), p.width)).square() * ivars).colwise().sum();
    });
    add<float, float>("BM_Frames_eigen", [](F& p) {
        const Block frames(p.rows.data(), p.width, kRows);
        Row(p.scores.data(), kRows) = Row(p.constants.data(), kRows) -
                                      0.5f * ((frames.colwise() - Column(p.one.data(), p.width)).square().colwise() *
                                              Column(p.weights.data(), p.width))
                                                 .colwise()
                                                 .sum();
    });
#endif
#ifdef HAVE_OPENBLAS
    // (x - m)^2 v = x^2 v - 2 x m v + m^2 v: the model is expanded beforehand, rounding errors are left alone.
    openblas_set_num_threads(1);
    add<float, float>("BM_Gaussians_openblas", [](F& p) {
        static std::vector<float> model;
        const auto w = static_cast<std::size_t>(p.width);
        if (model.size() != 2 * w * kRows) {
            model.resize(2 * w * kRows);
            for (std::size_t g = 0; g < kRows; ++g) {
                for (std::size_t i = 0; i < w; ++i) {
                    model[2 * w * g + i] = p.weights[g * w + i];
                    model[2 * w * g + w + i] = -2 * p.weights[g * w + i] * p.rows[g * w + i];
                }
            }
        }
        float features[80];
        for (std::size_t i = 0; i < w; ++i) features[i] = p.one[i] * p.one[i], features[w + i] = p.one[i];
        p.scores = p.constants;
        cblas_sgemv(CblasRowMajor, CblasNoTrans, kRows, 2 * p.width, -0.5f, model.data(), 2 * p.width, features, 1, 1,
                    p.scores.data(), 1);
    });
    add<float, float>("BM_Frames_openblas", [](F& p) {
        static std::vector<float> squares(40 * kRows);
        for (std::size_t i = 0; i < p.rows.size(); ++i) squares[i] = p.rows[i] * p.rows[i];
        float linear[40];
        for (std::size_t i = 0; i < p.one.size(); ++i) linear[i] = -2 * p.one[i] * p.weights[i];
        p.scores = p.constants;
        cblas_sgemv(CblasRowMajor, CblasNoTrans, kRows, p.width, -0.5f, squares.data(), p.width, p.weights.data(), 1, 1,
                    p.scores.data(), 1);
        cblas_sgemv(CblasRowMajor, CblasNoTrans, kRows, p.width, -0.5f, p.rows.data(), p.width, linear, 1, 1,
                    p.scores.data(), 1);
    });
#endif
    return true;
}();

}  // namespace
