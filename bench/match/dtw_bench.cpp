// Time warping beside the loops that one would write first.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <vector>

#include "kels.h"

namespace {

constexpr float kFar = std::numeric_limits<float>::max();

float plainWarp(const float* a, int n, const float* b, int m, int width, int delta, float beam) {
    std::vector<float> before(static_cast<std::size_t>(m) + 2, 0.0f), now(before);
    const int d = std::min(delta, m - 1);
    int lo = 0, hi = d;
    float least = kFar;
    for (int i = 0; i < n; ++i) {
        least = kFar;
        for (int j = lo; j <= hi; ++j) {
            float sum = 0;
            for (int k = 0; k < width; ++k) {
                const float difference = a[i * width + k] - b[j * width + k];
                sum += difference * difference;
            }
            now[j + 2] = std::sqrt(sum) + std::min({before[j + 2], before[j + 1], before[j]});
            least = std::min(least, now[j + 2]);
        }
        const float bound = least + std::numeric_limits<float>::epsilon() + beam;
        while (now[hi + 2] > bound) --hi;
        while (now[lo + 2] > bound) ++lo;
        for (int j = 0; j < lo + 2; ++j) now[j] = kFar;
        for (int j = hi + 3; j < m + 2; ++j) now[j] = kFar;
        hi = std::min({hi + 2, d + 2 * (i + 1), m - 1});
        lo = std::max(lo, 2 * (i + 1) - (d + 2 * n - m + 1));
        std::swap(before, now);
    }
    return least;
}

// Two slow random walks, so that a beam has something to prune.
struct Sequences {
    std::vector<float> a, b;

    Sequences(int n, int m, int width) : a(walk(n, width, 1)), b(walk(m, width, 2)) {}

    static std::vector<float> walk(int rows, int width, unsigned seed) {
        std::mt19937 engine(seed);
        std::normal_distribution<float> noise;
        std::vector<float> v(static_cast<std::size_t>(rows * width));
        for (int i = 0; i < rows; ++i) {
            for (int k = 0; k < width; ++k) {
                const float centre = std::sin(0.1f * static_cast<float>(k) + 6.0f * static_cast<float>(i) / rows);
                v[i * width + k] = 3 * centre + 0.5f * noise(engine);
            }
        }
        return v;
    }
};

// Arguments: longer length, shorter length, width, delta, beam.
void BM_DTW_kels(benchmark::State& state) {
    const int n = state.range(0), m = state.range(1), width = state.range(2);
    const Sequences s(n, m, width);
    for (auto _ : state) {
        float dist = 0;
        kelsDTW_L2_32f_D2(s.a.data(), n, s.b.data(), m, width, width, &dist, state.range(3), state.range(4));
        benchmark::DoNotOptimize(dist);
    }
}
void BM_DTW_plain(benchmark::State& state) {
    const int n = state.range(0), m = state.range(1), width = state.range(2);
    const Sequences s(n, m, width);
    float reference = 0;
    kelsDTW_L2_32f_D2(s.a.data(), n, s.b.data(), m, width, width, &reference, state.range(3), state.range(4));
    for (auto _ : state) {
        const float dist = plainWarp(s.a.data(), n, s.b.data(), m, width, state.range(3), state.range(4));
        if (std::fabs(dist - reference) > 1e-4f * reference) state.SkipWithError("the two disagree");
        benchmark::DoNotOptimize(dist);
    }
}

void sizes(benchmark::internal::Benchmark* bench) {
    bench->ArgNames({"N", "M", "width", "delta", "beam"});
    for (const auto& [n, m] : {std::pair(60, 60), {100, 80}, {300, 250}}) {
        for (const int width : {13, 26, 39}) {
            bench->Args({n, m, width, m, 1000000000});
            bench->Args({n, m, width, 5, 1000000000});
            bench->Args({n, m, width, 5, 20});
        }
    }
}
BENCHMARK(BM_DTW_kels)->Apply(sizes);
BENCHMARK(BM_DTW_plain)->Apply(sizes);

}  // namespace
