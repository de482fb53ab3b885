// Both element types behind one set of names, and what codebooks are compared with.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <numeric>
#include <type_traits>
#include <vector>

#include "kels/vq.h"
#include "support/guarded.h"
#include "support/random.h"

namespace test {

// The functions of an element type; `bits` is what the names of its search kernels hold.
#define KELS_VQ_FUNCTIONS(type, bits)                                                                                  \
    using Codebook = KelCdbk_##type;                                                                                   \
    static constexpr auto init = kelsCdbkInitAlloc_L2_##type;                                                          \
    static constexpr auto initWeighted = kelsCdbkInitAlloc_WgtL2_##type;                                               \
    static constexpr auto getSize = kelsCdbkGetSize_##type;                                                            \
    static constexpr auto initInPlace = kelsCdbkInit_L2_##type;                                                        \
    static constexpr auto count = kelsGetCdbkSize_##type;                                                              \
    static constexpr auto codevectors = kelsGetCodebook_##type;                                                        \
    static constexpr auto release = kelsCdbkFree_##type;                                                               \
    static constexpr auto quantise = kelsVQ_##type;                                                                    \
    static constexpr auto sort = kelsVQSingle_Sort_##type;                                                             \
    static constexpr auto thresh = kelsVQSingle_Thresh_##type;                                                         \
    static constexpr auto full = kelsCdbk##bits##VQFull_A6;                                                            \
    static constexpr auto tree = kelsCdbk##bits##VQKMeans_A6;                                                          \
    static constexpr decltype(&kelsVQ_##type) fixedFull[] = {kelsCdbk##bits##VQFull_A6_1, kelsCdbk##bits##VQFull_A6_2, \
                                                             kelsCdbk##bits##VQFull_A6_4,                              \
                                                             kelsCdbk##bits##VQFull_A6_8};                             \
    static constexpr decltype(&kelsVQ_##type) fixedTree[] = {                                                          \
        kelsCdbk##bits##VQKMeans_A6_1, kelsCdbk##bits##VQKMeans_A6_2, kelsCdbk##bits##VQKMeans_A6_4,                   \
        kelsCdbk##bits##VQKMeans_A6_8};                                                                                \
    static constexpr auto split16s = kelsSplitVQ_##type##16s;                                                          \
    static constexpr auto split8u = kelsSplitVQ_##type##8u;                                                            \
    static constexpr auto split1u = kelsSplitVQ_##type##1u;                                                            \
    static constexpr auto form16s = kelsFormVectorVQ_16s##type;                                                        \
    static constexpr auto form8u = kelsFormVectorVQ_8u##type;                                                          \
    static constexpr auto form1u = kelsFormVectorVQ_1u##type

template <class T>
struct Vq;
template <>
struct Vq<Kel32f> {
    KELS_VQ_FUNCTIONS(32f, 32);
    using Distance = Kel32f;
    static KelStatus distances(const Kel32f* src, int step, Kel32s* idx, Kel32f* dist, int height, Codebook* c, int) {
        return kelsVQDist_32f(src, step, idx, dist, height, c);
    }
    static KelStatus sortDistances(const Kel32f* src, Kel32s* idx, Kel32f* dist, Codebook* c, int n, int) {
        return kelsVQDistSingle_Sort_32f(src, idx, dist, c, n);
    }
    static KelStatus threshDistances(const Kel32f* src, Kel32s* idx, Kel32f* dist, Codebook* c, Kel32f factor,
                                     Kel32s* n, int) {
        return kelsVQDistSingle_Thresh_32f(src, idx, dist, c, factor, n);
    }
};
template <>
struct Vq<Kel16s> {
    KELS_VQ_FUNCTIONS(16s, 16);
    using Distance = Kel32s;
    static constexpr auto distances = kelsVQDist_16s32s_Sfs;
    static constexpr auto sortDistances = kelsVQDistSingle_Sort_16s32s_Sfs;
    static constexpr auto threshDistances = kelsVQDistSingle_Thresh_16s32s_Sfs;
};

// The plain constructor, or that with weights if there are some.
template <class T>
KelStatus makeCodebook(typename Vq<T>::Codebook** made, const T* rows, const T* weights, int width, int step,
                       int height, int size, int kind) {
    return weights == nullptr ? Vq<T>::init(made, rows, width, step, height, size, kind)
                              : Vq<T>::initWeighted(made, rows, weights, width, step, height, size, kind);
}

// A codebook with the five words that both types begin with.
template <class T>
struct Owned {
    struct Release {
        void operator()(typename Vq<T>::Codebook* codebook) const { EXPECT_EQ(Vq<T>::release(codebook), 0); }
    };
    std::unique_ptr<typename Vq<T>::Codebook, Release> record;
    KelStatus status = -1;

    Owned() = default;
    Owned(const std::vector<T>& rows, const std::vector<T>& weights, int width, int step, int size, int kind) {
        typename Vq<T>::Codebook* made = nullptr;
        const int height = (static_cast<int>(rows.size()) - width) / step + 1;
        const Guarded<T> guardedRows(rows), guardedWeights(weights);
        status = makeCodebook<T>(&made, guardedRows.data(), weights.empty() ? nullptr : guardedWeights.data(), width,
                                 step, height, size, kind);
        record.reset(made);
    }
    auto* get() const { return record.get(); }
    Kel32s word(int i) const { return reinterpret_cast<const Kel32s*>(get())[i]; }
    Kel32s depth() const { return word(0); }
    int size() const { return word(1); }
    int width() const { return word(2); }
    std::vector<T> codevectors() const {
        Guarded<T> values(size() * width());
        EXPECT_EQ(Vq<T>::codevectors(get(), values.data(), width()), 0);
        return values.vector();
    }
};

// Exact for 16-bit integers and for floats that hold small ones.
template <class T>
double squaredDistance(const T* x, const T* c, const std::vector<T>& weights, int width) {
    double sum = 0;
    for (int k = 0; k < width; ++k) {
        const double d = static_cast<double>(x[k]) - static_cast<double>(c[k]);
        sum += d * d * (weights.empty() ? 1.0 : static_cast<double>(weights[k]));
    }
    return sum;
}
template <class T>
std::vector<double> squaredDistances(const T* x, const std::vector<T>& codevectors, const std::vector<T>& weights,
                                     int width) {
    std::vector<double> all;
    for (std::size_t at = 0; at < codevectors.size(); at += static_cast<std::size_t>(width)) {
        all.push_back(squaredDistance(x, codevectors.data() + at, weights, width));
    }
    return all;
}

// The indices by the function for any codebook; those for its kind, for any width and for this one, must agree.
template <class T>
std::vector<Kel32s> quantised(const Guarded<T>& src, int step, int height, const Owned<T>& codebook) {
    const auto run = [&](auto form, KelStatus expected, auto... width) {
        Guarded<Kel32s> indices(std::vector<Kel32s>(height, -1));
        EXPECT_EQ(form(src.data(), step, indices, height, codebook.get(), width...), expected);
        return indices.vector();
    };
    const auto indices = run(Vq<T>::quantise, 0);
    const bool exhaustive = codebook.word(4) == kelCdbkExhaustive;
    EXPECT_EQ(run(exhaustive ? Vq<T>::full : Vq<T>::tree, 0, codebook.width()), indices);
    for (int k = 0; k < 4; ++k) {
        const KelStatus status = codebook.width() == 1 << k ? kelStatusOk : kelStatusSize;
        const auto again = run((exhaustive ? Vq<T>::fixedFull : Vq<T>::fixedTree)[k], status);
        EXPECT_EQ(again, status == 0 ? indices : std::vector<Kel32s>(height, -1));
    }
    return indices;
}

// The indices in the order of distances that are equal or far apart.
inline std::vector<int> inOrder(const std::vector<double>& distances) {
    std::vector<int> order(distances.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return distances[a] < distances[b]; });
    return order;
}

// Small integers, so that many distances are equal, and every one is exact in single precision too.
template <class T>
std::vector<T> smallIntegers(Random& random, int n, int low, int high) {
    std::vector<T> v;
    for (int i = 0; i < n; ++i) v.push_back(static_cast<T>(random.between(low, high)));
    return v;
}

}  // namespace test
