// Codebooks beside FAISS (exact index and k-means, one thread) and beside a search of all codevectors.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <map>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include "kels.h"

#ifdef HAVE_FAISS
#include <faiss/Clustering.h>
#include <faiss/IndexFlat.h>
#include <omp.h>
#endif

namespace {

// Vectors of correlated components around many centres, as speech features are.
std::vector<float> features(int rows, int width, unsigned seed) {
    std::mt19937 centres(1), engine(seed);
    std::normal_distribution<float> normal;
    constexpr int kCentres = 200;
    std::vector<float> centre(static_cast<std::size_t>(kCentres * width));
    for (float& c : centre) c = 2 * normal(centres);
    std::vector<float> v;
    v.reserve(static_cast<std::size_t>(rows) * static_cast<std::size_t>(width));
    for (int i = 0; i < rows; ++i) {
        const auto which = engine() % kCentres;
        float noise = 0;
        for (int k = 0; k < width; ++k) {
            noise = 0.7f * noise + normal(engine);
            v.push_back(centre[which * static_cast<unsigned>(width) + static_cast<unsigned>(k)] + noise);
        }
    }
    return v;
}

struct Release {
    void operator()(KelCdbk_32f* codebook) const { kelsCdbkFree_32f(codebook); }
};
using Codebook = std::unique_ptr<KelCdbk_32f, Release>;

Codebook build(const std::vector<float>& rows, int width, int codevectors, int kind) {
    KelCdbk_32f* codebook = nullptr;
    const auto height = static_cast<int>(rows.size()) / width;
    if (kelsCdbkInitAlloc_L2_32f(&codebook, rows.data(), width, width, height, codevectors, kind) < 0) std::abort();
    return Codebook(codebook);
}

constexpr int kRows = 1000;

// ---- all codevectors: width, codevectors ----

void BM_VqFull_kels(benchmark::State& state) {
    const auto width = static_cast<int>(state.range(0)), codevectors = static_cast<int>(state.range(1));
    const auto rows = features(kRows, width, 2), vectors = features(codevectors, width, 3);
    const Codebook codebook = build(vectors, width, codevectors, kelCdbkExhaustive);
    std::vector<Kel32s> indices(kRows);
    for (auto _ : state) {
        kelsCdbk32VQFull_A6(rows.data(), width, indices.data(), kRows, codebook.get(), width);
        benchmark::DoNotOptimize(indices.data());
    }
}

void fullArguments(benchmark::internal::Benchmark* b) {
    for (const int width : {2, 8, 16, 39}) b->Args({width, 256});
}
BENCHMARK(BM_VqFull_kels)->Apply(fullArguments);

#ifdef HAVE_FAISS
void BM_VqFull_FAISS(benchmark::State& state) {
    omp_set_num_threads(1);
    const auto width = static_cast<int>(state.range(0)), codevectors = static_cast<int>(state.range(1));
    const auto rows = features(kRows, width, 2), vectors = features(codevectors, width, 3);
    faiss::IndexFlatL2 index(width);
    index.add(codevectors, vectors.data());
    std::vector<float> distances(kRows);
    std::vector<faiss::Index::idx_t> indices(kRows);
    for (auto _ : state) {
        index.search(kRows, rows.data(), 1, distances.data(), indices.data());
        benchmark::DoNotOptimize(indices.data());
    }
}
BENCHMARK(BM_VqFull_FAISS)->Apply(fullArguments);
#endif

// ---- 16 bits ----

void BM_VqFull16_kels(benchmark::State& state) {
    const auto width = static_cast<int>(state.range(0)), codevectors = static_cast<int>(state.range(1));
    const auto integers = [&](int rows, unsigned seed) {
        std::vector<Kel16s> v;
        for (const float x : features(rows, width, seed)) v.push_back(static_cast<Kel16s>(1000 * x));
        return v;
    };
    const auto rows = integers(kRows, 2), vectors = integers(codevectors, 3);
    KelCdbk_16s* codebook = nullptr;
    kelsCdbkInitAlloc_L2_16s(&codebook, vectors.data(), width, width, codevectors, codevectors, kelCdbkExhaustive);
    std::vector<Kel32s> indices(kRows);
    for (auto _ : state) {
        kelsCdbk16VQFull_A6(rows.data(), width, indices.data(), kRows, codebook, width);
        benchmark::DoNotOptimize(indices.data());
    }
    kelsCdbkFree_16s(codebook);
}
BENCHMARK(BM_VqFull16_kels)->Apply(fullArguments);

// ---- tree and grid beside all codevectors of the same codebook: width, codevectors ----
// What they do next depends on the vector; the same few again and again would be learned by the branch predictor.

constexpr int kManyRows = 20000;

const Codebook& treeOf(int width, int codevectors) {
    static std::map<std::pair<int, int>, Codebook> built;
    Codebook& codebook = built[{width, codevectors}];
    if (!codebook) codebook = build(features(20 * codevectors, width, 3), width, codevectors, kelCdbkSplitWidest);
    return codebook;
}

void BM_VqTree_kels(benchmark::State& state) {
    const auto width = static_cast<int>(state.range(0)), codevectors = static_cast<int>(state.range(1));
    const Codebook& codebook = treeOf(width, codevectors);
    const auto rows = features(kManyRows, width, 2);
    std::vector<Kel32s> indices(kManyRows), nearest(kManyRows);
    for (auto _ : state) {
        kelsVQ_32f(rows.data(), width, indices.data(), kManyRows, codebook.get());
        benchmark::DoNotOptimize(indices.data());
    }
    kelsCdbk32VQFull_A6(rows.data(), width, nearest.data(), kManyRows, codebook.get(), width);
    int found = 0;
    for (int i = 0; i < kManyRows; ++i)
        found += indices[static_cast<std::size_t>(i)] == nearest[static_cast<std::size_t>(i)];
    state.counters["found"] = static_cast<double>(found) / kManyRows;
    state.counters["depth"] = codebook->lastIndexOrDepth;
}
void BM_VqTree_exhaustive(benchmark::State& state) {
    const auto width = static_cast<int>(state.range(0)), codevectors = static_cast<int>(state.range(1));
    const Codebook& codebook = treeOf(width, codevectors);
    const auto rows = features(kManyRows, width, 2);
    std::vector<Kel32s> indices(kManyRows);
    for (auto _ : state) {
        kelsCdbk32VQFull_A6(rows.data(), width, indices.data(), kManyRows, codebook.get(), width);
        benchmark::DoNotOptimize(indices.data());
    }
}
void treeArguments(benchmark::internal::Benchmark* b) {
    for (const int width : {2, 8, 16, 39}) b->Args({width, 1024});
}
BENCHMARK(BM_VqTree_kels)->Apply(treeArguments);
BENCHMARK(BM_VqTree_exhaustive)->Apply(treeArguments);

void searchGrid(benchmark::State& state, bool useGrid) {
    const auto width = static_cast<int>(state.range(0)), codevectors = static_cast<int>(state.range(1));
    const Codebook codebook = build(features(codevectors, width, 3), width, codevectors, kelCdbkExhaustive);
    const auto rows = features(kManyRows, width, 2);
    std::vector<Kel32s> indices(kManyRows);
    for (auto _ : state) {
        if (useGrid) {
            kelsVQ_32f(rows.data(), width, indices.data(), kManyRows, codebook.get());
        } else {
            kelsCdbk32VQFull_A6(rows.data(), width, indices.data(), kManyRows, codebook.get(), width);
        }
        benchmark::DoNotOptimize(indices.data());
    }
    state.counters["grid"] = codebook->grid != nullptr;
}
void BM_VqGrid_kels(benchmark::State& state) {
    searchGrid(state, true);
}
void BM_VqGrid_exhaustive(benchmark::State& state) {
    searchGrid(state, false);
}
void gridArguments(benchmark::internal::Benchmark* b) {
    for (const int codevectors : {256, 1024, 4096}) b->Args({2, codevectors});
}
BENCHMARK(BM_VqGrid_kels)->Apply(gridArguments);
BENCHMARK(BM_VqGrid_exhaustive)->Apply(gridArguments);

// ---- construction: rows, width, codevectors, kind; the counter is the mean squared distance of the training rows ----

double meanDistortion(const std::vector<float>& rows, int width, const std::vector<float>& codevectors) {
    const Codebook codebook =
        build(codevectors, width, static_cast<int>(codevectors.size()) / width, kelCdbkExhaustive);
    const auto height = static_cast<int>(rows.size()) / width;
    std::vector<Kel32s> indices(static_cast<std::size_t>(height));
    std::vector<float> distances(static_cast<std::size_t>(height));
    kelsVQDist_32f(rows.data(), width, indices.data(), distances.data(), height, codebook.get());
    double sum = 0;
    for (const float d : distances) sum += static_cast<double>(d) * d;
    return sum / height;
}

void BM_VqTrain_kels(benchmark::State& state) {
    const auto width = static_cast<int>(state.range(1)), codevectors = static_cast<int>(state.range(2));
    const auto rows = features(static_cast<int>(state.range(0)), width, 3);
    Codebook codebook;
    for (auto _ : state) codebook = build(rows, width, codevectors, static_cast<int>(state.range(3)));
    std::vector<float> centroids(static_cast<std::size_t>(codevectors * width));
    kelsGetCodebook_32f(codebook.get(), centroids.data(), width);
    state.counters["distortion"] = meanDistortion(rows, width, centroids);
}
void trainArguments(benchmark::internal::Benchmark* b) {
    for (const int kind : {kelCdbkSplitWidest, kelCdbkSplitLargest}) {
        b->Args({20000, 39, 256, kind})->Args({100000, 39, 1024, kind});
    }
    b->Unit(benchmark::kMillisecond)->Iterations(1);
}
BENCHMARK(BM_VqTrain_kels)->Apply(trainArguments);

#ifdef HAVE_FAISS
void BM_VqTrain_FAISS(benchmark::State& state) {
    omp_set_num_threads(1);
    const auto width = static_cast<int>(state.range(1)), codevectors = static_cast<int>(state.range(2));
    const auto rows = features(static_cast<int>(state.range(0)), width, 3);
    std::vector<float> centroids;
    for (auto _ : state) {
        faiss::ClusteringParameters parameters;
        parameters.max_points_per_centroid = 1 << 20;
        faiss::Clustering clustering(width, codevectors, parameters);
        faiss::IndexFlatL2 index(width);
        clustering.train(state.range(0), rows.data(), index);
        centroids = clustering.centroids;
    }
    state.counters["distortion"] = meanDistortion(rows, width, centroids);
}
BENCHMARK(BM_VqTrain_FAISS)->Apply(trainArguments);
#endif

}  // namespace
