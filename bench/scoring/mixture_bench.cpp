// One vector under a mixture of `components` Gaussians of 39 dimensions: the log likelihood of the mixture, beside
// Eigen (scores and log-sum-exp in its vectorised functions), OpenBLAS (the expanded form as one product, then the same
// log-sum-exp), and plain loops at -O3 with the C library's functions.  64 vectors a round, the mixture stays in cache.
#include <benchmark/benchmark.h>
#include <kels.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#ifdef HAVE_OPENBLAS
#include <cblas.h>
extern "C" void openblas_set_num_threads(int);
#endif
#ifdef HAVE_EIGEN
#include <Eigen/Core>
#endif

namespace {

constexpr int kWidth = 39, kVectors = 64;

// Components close enough that several of them matter for a vector.
struct Mixture {
    explicit Mixture(const benchmark::State& state)
        : components(static_cast<int>(state.range(0))),
          means(size(components)),
          ivars(size(components)),
          constants(static_cast<std::size_t>(components)),
          vectors(size(kVectors)),
          scores(kVectors) {
        std::mt19937 engine(11);
        std::normal_distribution<float> mean(0, 0.3f), value(0, 1);
        std::uniform_real_distribution<float> variance(0.8f, 1.2f);
        for (float& x : means) x = mean(engine);
        for (float& x : ivars) x = variance(engine);
        for (float& x : vectors) x = value(engine);
        for (float& x : constants) x = -40 + value(engine);
    }
    static std::size_t size(int rows) { return static_cast<std::size_t>(rows) * kWidth; }
    const float* vector(int f) const { return &vectors[size(f)]; }

    int components;
    std::vector<float> means, ivars, constants, vectors, scores;
};

template <class Score>
void run(benchmark::State& state, Score score) {
    Mixture m(state);
    for (auto _ : state) {
        for (int f = 0; f < kVectors; ++f) m.scores[static_cast<std::size_t>(f)] = score(m, m.vector(f));
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kVectors * m.components * kWidth);
}

void BM_Mixture_kels(benchmark::State& state) {
    run(state, [](Mixture& m, const float* vector) {
        float score;
        kelsLogGaussMixture_32f_D2(vector, m.means.data(), m.ivars.data(), m.components, kWidth, kWidth,
                                   m.constants.data(), &score);
        return score;
    });
}
// The best component instead of all of them.
void BM_MixtureMax_kels(benchmark::State& state) {
    std::vector<float> scores(static_cast<std::size_t>(state.range(0)));
    run(state, [&](Mixture& m, const float* vector) {
        float score;
        std::copy(m.constants.begin(), m.constants.end(), scores.begin());
        kelsLogGaussMultiMix_32f_D2(m.means.data(), m.ivars.data(), kWidth, vector, kWidth, scores.data(),
                                    m.components);
        kelsMax_32f(scores.data(), m.components, &score);
        return score;
    });
}

void BM_Mixture_plain(benchmark::State& state) {
    run(state, [](Mixture& m, const float* vector) {
        float total = 0;
        for (int g = 0; g < m.components; ++g) {
            const float *mean = &m.means[Mixture::size(g)], *ivar = &m.ivars[Mixture::size(g)];
            float sum = 0;
            for (int i = 0; i < kWidth; ++i) sum += (vector[i] - mean[i]) * (vector[i] - mean[i]) * ivar[i];
            const float score = m.constants[static_cast<std::size_t>(g)] - 0.5f * sum;
            const float larger = std::max(total, score);
            total = g == 0 ? score : larger + std::log1p(std::exp(std::min(total, score) - larger));
        }
        return total;
    });
}

#ifdef HAVE_EIGEN
using Array = Eigen::Map<Eigen::Array<float, 1, Eigen::Dynamic>>;
float logSumExp(const Eigen::Ref<const Eigen::Array<float, 1, Eigen::Dynamic>>& scores) {
    const float largest = scores.maxCoeff();
    return largest + std::log((scores - largest).exp().sum());
}

void BM_Mixture_eigen(benchmark::State& state) {
    using Block = Eigen::Map<const Eigen::Array<float, kWidth, Eigen::Dynamic>>;
    using Vector = Eigen::Map<const Eigen::Array<float, kWidth, 1>>;
    std::vector<float> buffer(static_cast<std::size_t>(state.range(0)));
    run(state, [&](Mixture& m, const float* vector) {
        const Block means(m.means.data(), kWidth, m.components), ivars(m.ivars.data(), kWidth, m.components);
        Array scores(buffer.data(), m.components);
        scores = Array(m.constants.data(), m.components) -
                 0.5f * ((means.colwise() - Vector(vector)).square() * ivars).colwise().sum();
        return logSumExp(scores);
    });
}
#endif

#if defined(HAVE_OPENBLAS) && defined(HAVE_EIGEN)
// (x - m)^2 v = x^2 v - 2 x m v + m^2 v: rows of v and of -2 m v side by side, m^2 v in the constants.
void BM_Mixture_openblas(benchmark::State& state) {
    openblas_set_num_threads(1);
    std::vector<float> model, constants, scores(static_cast<std::size_t>(state.range(0)));
    run(state, [&](Mixture& m, const float* vector) {
        if (model.empty()) {
            constants = m.constants;
            for (int g = 0; g < m.components; ++g) {
                const float *mean = &m.means[Mixture::size(g)], *ivar = &m.ivars[Mixture::size(g)];
                model.insert(model.end(), ivar, ivar + kWidth);
                for (int i = 0; i < kWidth; ++i) {
                    model.push_back(-2 * mean[i] * ivar[i]);
                    constants[static_cast<std::size_t>(g)] -= 0.5f * mean[i] * mean[i] * ivar[i];
                }
            }
        }
        float features[2 * kWidth];
        for (int i = 0; i < kWidth; ++i) features[i] = vector[i] * vector[i], features[kWidth + i] = vector[i];
        std::copy(constants.begin(), constants.end(), scores.begin());
        cblas_sgemv(CblasRowMajor, CblasNoTrans, m.components, 2 * kWidth, -0.5f, model.data(), 2 * kWidth, features, 1,
                    1, scores.data(), 1);
        return logSumExp(Array(scores.data(), m.components));
    });
}
#endif

#define MIXTURES(name) BENCHMARK(name)->Arg(8)->Arg(16)->Arg(64)->Arg(1024)
MIXTURES(BM_Mixture_kels);
MIXTURES(BM_MixtureMax_kels);
MIXTURES(BM_Mixture_plain);
#ifdef HAVE_EIGEN
MIXTURES(BM_Mixture_eigen);
#endif
#if defined(HAVE_OPENBLAS) && defined(HAVE_EIGEN)
MIXTURES(BM_Mixture_openblas);
#endif

}  // namespace
