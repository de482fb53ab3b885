// Both element types behind one set of names, and what codebooks are compared with.
#pragma once

#include <memory>
#include <numeric>

#include "kels/vq.h"
#include "support/support.h"

namespace test {

// A function by the element type T: for names that end in it, for forms with distances, and for search kernels, whose
// names hold its bits.
#define VQ(name) std::get<sizeof(T) == 2>(std::tuple(&kels##name##_32f, &kels##name##_16s))
#define VQ_DIST(name) std::get<sizeof(T) == 2>(std::tuple(&kelsVQDist##name##_32f, &kelsVQDist##name##_16s32s_Sfs))
#define VQ_KERNEL(name) std::get<sizeof(T) == 2>(std::tuple(&kelsCdbk32VQ##name, &kelsCdbk16VQ##name))

template <class T>
class Codebooks : public testing::Test {};
using ElementTypes = testing::Types<Kel32f, Kel16s>;
TYPED_TEST_SUITE(Codebooks, ElementTypes);

template <class T>
using Codebook = std::conditional_t<sizeof(T) == 2, KelCdbk_16s, KelCdbk_32f>;
template <class T>
using Distance = std::conditional_t<sizeof(T) == 2, Kel32s, Kel32f>;

// Calls a form with distances: floats have no scale.
KelStatus callScaled(auto form, int scaleFactor, auto&&... arguments) {
    if constexpr (std::is_invocable_v<decltype(form), decltype(arguments)...>)
        return form(arguments...);
    else
        return form(arguments..., scaleFactor);
}

// A codebook with the five words that both types begin with.
template <class T>
struct Owned {
    std::unique_ptr<Codebook<T>, KelStatus (*)(Codebook<T>*)> record{nullptr, VQ(CdbkFree)};
    KelStatus status = -1;
    bool weighted;

    Owned(const std::vector<T>& rows, const std::vector<T>& weights, int width, int step, int size, int kind)
        : weighted(!weights.empty()) {
        Codebook<T>* made = nullptr;
        const int height = (static_cast<int>(rows.size()) - width) / step + 1;
        const Guarded<T> src(rows), wgt(weights);
        status = weighted ? VQ(CdbkInitAlloc_WgtL2)(&made, src.data(), wgt.data(), width, step, height, size, kind)
                          : VQ(CdbkInitAlloc_L2)(&made, src.data(), width, step, height, size, kind);
        EXPECT_EQ(made == nullptr, status < 0);
        record.reset(made);
    }
    auto* get() const { return record.get(); }
    Kel32s word(int i) const { return reinterpret_cast<const Kel32s*>(get())[i]; }
    int size() const { return word(1); }
    int width() const { return word(2); }
    std::vector<T> codevectors() const {
        Guarded<T> values(size() * width());
        EXPECT_EQ(VQ(GetCodebook)(get(), values.data(), width()), 0);
        return values.vector();
    }
};

// Of x to every codevector; exact for 16-bit integers and for floats that hold small ones.
template <class T, class C>
std::vector<double> squaredDistances(const T* x, const std::vector<C>& codevectors, const std::vector<T>& weights,
                                     int width) {
    std::vector<double> all(codevectors.size() / width);
    for (std::size_t i = 0; i < all.size() * width; ++i) {
        const double d = static_cast<double>(x[i % width]) - static_cast<double>(codevectors[i]);
        all[i / width] += d * d * (weights.empty() ? 1.0 : static_cast<double>(weights[i % width]));
    }
    return all;
}

// The indices by the function for any codebook; those for its kind without weights, for any width and for this one, must
// agree.
template <class T>
std::vector<Kel32s> quantised(const Guarded<T>& src, int step, int height, const Owned<T>& codebook) {
    const auto run = [&](auto form, KelStatus expected, auto... width) {
        Guarded<Kel32s> indices(std::vector<Kel32s>(height, -1));
        EXPECT_EQ(form(src.data(), step, indices, height, codebook.get(), width...), expected);
        return indices.vector();
    };
    const auto indices = run(VQ(VQ), 0);
    if (codebook.weighted) return indices;
    const bool full = codebook.word(4) == kelCdbkExhaustive;
    EXPECT_EQ(run(full ? VQ_KERNEL(Full_A6) : VQ_KERNEL(KMeans_A6), 0, codebook.width()), indices);
    const std::decay_t<decltype(VQ(VQ))> kernels[][2] = {{VQ_KERNEL(KMeans_A6_1), VQ_KERNEL(Full_A6_1)},
                                                         {VQ_KERNEL(KMeans_A6_2), VQ_KERNEL(Full_A6_2)},
                                                         {VQ_KERNEL(KMeans_A6_4), VQ_KERNEL(Full_A6_4)},
                                                         {VQ_KERNEL(KMeans_A6_8), VQ_KERNEL(Full_A6_8)}};
    for (int k = 0; k < 4; ++k) {
        const bool fits = codebook.width() == 1 << k;
        const auto again = run(kernels[k][full], fits ? kelStatusOk : kelStatusSize);
        EXPECT_EQ(again, fits ? indices : std::vector<Kel32s>(height, -1));
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
