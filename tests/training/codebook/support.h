// Both element types behind one set of names, and what codebooks are compared with.
#pragma once

#include <memory>
#include <numeric>

#include "kels/vq.h"
#include "support/forms.h"
#include "support/support.h"

namespace test {

// ---- the interface, one name for both element types ----------------------------------------------------------------

inline constexpr auto build = forms(kelsCdbkInitAlloc_L2_32f, kelsCdbkInitAlloc_L2_16s);
inline constexpr auto buildWeighted = forms(kelsCdbkInitAlloc_WgtL2_32f, kelsCdbkInitAlloc_WgtL2_16s);
inline constexpr auto buildInPlace = forms(kelsCdbkInit_L2_32f, kelsCdbkInit_L2_16s);
inline constexpr auto release = forms(kelsCdbkFree_32f, kelsCdbkFree_16s);
inline constexpr auto getCount = forms(kelsGetCdbkSize_32f, kelsGetCdbkSize_16s);
inline constexpr auto getCodevectors = forms(kelsGetCodebook_32f, kelsGetCodebook_16s);
inline constexpr auto quantise = forms(kelsVQ_32f, kelsVQ_16s);
inline constexpr auto quantiseWithDistances = forms(kelsVQDist_32f, kelsVQDist_16s32s_Sfs);
inline constexpr auto sort = forms(kelsVQSingle_Sort_32f, kelsVQSingle_Sort_16s);
inline constexpr auto sortWithDistances = forms(kelsVQDistSingle_Sort_32f, kelsVQDistSingle_Sort_16s32s_Sfs);
inline constexpr auto listNear = forms(kelsVQSingle_Thresh_32f, kelsVQSingle_Thresh_16s);
inline constexpr auto listNearWithDistances = forms(kelsVQDistSingle_Thresh_32f, kelsVQDistSingle_Thresh_16s32s_Sfs);
inline constexpr auto searchAll = forms(kelsCdbk32VQFull_A6, kelsCdbk16VQFull_A6);
inline constexpr auto searchTree = forms(kelsCdbk32VQKMeans_A6, kelsCdbk16VQKMeans_A6);

// The searches for one width each: of all codevectors, or through the tree.
struct FixedWidth {
    int width;
    Forms<decltype(kelsCdbk32VQFull_A6_1), decltype(kelsCdbk16VQFull_A6_1)> searchAll, searchTree;
};
inline constexpr FixedWidth kFixedWidths[] = {
    {1, forms(kelsCdbk32VQFull_A6_1, kelsCdbk16VQFull_A6_1), forms(kelsCdbk32VQKMeans_A6_1, kelsCdbk16VQKMeans_A6_1)},
    {2, forms(kelsCdbk32VQFull_A6_2, kelsCdbk16VQFull_A6_2), forms(kelsCdbk32VQKMeans_A6_2, kelsCdbk16VQKMeans_A6_2)},
    {4, forms(kelsCdbk32VQFull_A6_4, kelsCdbk16VQFull_A6_4), forms(kelsCdbk32VQKMeans_A6_4, kelsCdbk16VQKMeans_A6_4)},
    {8, forms(kelsCdbk32VQFull_A6_8, kelsCdbk16VQFull_A6_8), forms(kelsCdbk32VQKMeans_A6_8, kelsCdbk16VQKMeans_A6_8)},
};

// ---- codebooks -----------------------------------------------------------------------------------------------------

template <class T>
class Codebooks : public testing::Test {};
using ElementTypes = testing::Types<Kel32f, Kel16s>;
TYPED_TEST_SUITE(Codebooks, ElementTypes);

template <class T>
using Codebook = std::conditional_t<sizeof(T) == 2, KelCdbk_16s, KelCdbk_32f>;
template <class T>
using Distance = std::conditional_t<sizeof(T) == 2, Kel32s, Kel32f>;

// A codebook with the five words that both types begin with.
template <class T>
struct Owned {
    std::unique_ptr<Codebook<T>, KelStatus (*)(Codebook<T>*)> record{nullptr, release.of<Codebook<T>>()};
    KelStatus status = -1;
    bool weighted;

    Owned(const std::vector<T>& rows, const std::vector<T>& weights, int width, int step, int size, int kind)
        : weighted(!weights.empty()) {
        Codebook<T>* made = nullptr;
        const int height = (static_cast<int>(rows.size()) - width) / step + 1;
        const Guarded<T> src(rows), wgt(weights);
        status = weighted ? buildWeighted(&made, src.data(), wgt.data(), width, step, height, size, kind)
                          : build(&made, src.data(), width, step, height, size, kind);
        EXPECT_EQ(made == nullptr, status < 0);
        record.reset(made);
    }
    auto* get() const { return record.get(); }
    Kel32s word(int i) const { return reinterpret_cast<const Kel32s*>(get())[i]; }
    int size() const { return word(1); }
    int width() const { return word(2); }
    int kind() const { return word(4); }
    std::vector<T> codevectors() const {
        Guarded<T> values(size() * width());
        EXPECT_EQ(getCodevectors(get(), values.data(), width()), kelStatusOk);
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

// The indices by the function for any codebook; those for its kind without weights, for any width and for this one,
// must agree.
template <class T>
std::vector<Kel32s> quantised(const Guarded<T>& src, int step, int height, const Owned<T>& codebook) {
    const auto run = [&](const auto& search, KelStatus expected, auto... width) {
        Guarded<Kel32s> indices(std::vector<Kel32s>(height, -1));
        EXPECT_EQ(search(src.data(), step, indices.data(), height, codebook.get(), width...), expected);
        return indices.vector();
    };
    const auto indices = run(quantise, kelStatusOk);
    if (codebook.weighted) return indices;
    const bool full = codebook.kind() == kelCdbkExhaustive;
    EXPECT_EQ(run(full ? searchAll : searchTree, kelStatusOk, codebook.width()), indices);
    for (const FixedWidth& fixed : kFixedWidths) {
        const bool fits = codebook.width() == fixed.width;
        const auto again = run(full ? fixed.searchAll : fixed.searchTree, fits ? kelStatusOk : kelStatusSize);
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
