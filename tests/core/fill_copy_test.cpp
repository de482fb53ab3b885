#include <algorithm>
#include <numeric>

#include "kels.h"
#include "support/guarded.h"
#include "support/numeric.h"

namespace {

using test::Edge;
using test::Guarded;

// Lengths around every width, and around the size from which the caches are passed by.
template <class T>
std::vector<std::size_t> lengths() {
    std::vector<std::size_t> v(70);
    std::iota(v.begin(), v.end(), std::size_t{1});
    const std::size_t streaming = (std::size_t{4} << 20) / sizeof(T);
    v.insert(v.end(), {2047, 4096, streaming - 1, streaming, streaming + 77});
    return v;
}

template <class T, class Set>
void checkFill(Set set, T value) {
    for (const std::size_t n : lengths<T>()) {
        for (const Edge edge : {Edge::End, Edge::Begin}) {
            Guarded<T> dst(n, edge);
            EXPECT_EQ(set(dst.data(), static_cast<int>(n)), kelStatusOk);
            EXPECT_EQ(std::count(dst.data(), dst.data() + n, value), static_cast<std::ptrdiff_t>(n)) << n;
        }
    }
}

template <class T>
void checkSet(KelStatus (*set)(T, T*, int), T value) {
    checkFill<T>([=](T* dst, int len) { return set(value, dst, len); }, value);
    EXPECT_EQ(set(value, nullptr, 0), kelStatusNullPtr);
    T one{};
    EXPECT_EQ(set(value, &one, 0), kelStatusSize);
    EXPECT_EQ(one, T());
}

template <class T>
void checkZero(KelStatus (*zero)(T*, int)) {
    checkFill<T>(
        [=](T* dst, int len) {
            std::fill(dst, dst + len, T(1));
            return zero(dst, len);
        },
        T(0));
    EXPECT_EQ(zero(nullptr, 0), kelStatusNullPtr);
    T one(1);
    EXPECT_EQ(zero(&one, -1), kelStatusSize);
}

template <class T>
void checkCopy(KelStatus (*copy)(const T*, T*, int)) {
    for (const std::size_t n : lengths<T>()) {
        std::vector<T> v(n);
        for (std::size_t i = 0; i < n; ++i) v[i] = static_cast<T>(i * 7 + 3);
        const Guarded<T> src(v, n % 2 ? Edge::End : Edge::Begin);
        Guarded<T> dst(n);
        EXPECT_EQ(copy(src.data(), dst, static_cast<int>(n)), kelStatusOk);
        EXPECT_EQ(dst.vector(), v);
    }
    T one{};
    EXPECT_EQ(copy(nullptr, &one, 0), kelStatusNullPtr);
    EXPECT_EQ(copy(&one, nullptr, 0), kelStatusNullPtr);
    EXPECT_EQ(copy(&one, &one, 0), kelStatusSize);
}

TEST(FillCopy, SetAndZeroFillTheArrayAndNothingElse) {
    checkSet<Kel8u>(kelsSet_8u, 200);
    checkSet<Kel16s>(kelsSet_16s, -12345);
    checkSet<Kel32s>(kelsSet_32s, -123456789);
    checkSet<Kel32f>(kelsSet_32f, 0.1f);
    checkSet<Kel64f>(kelsSet_64f, -0.1);
    checkZero<Kel8u>(kelsZero_8u);
    checkZero<Kel16s>(kelsZero_16s);
    checkZero<Kel32f>(kelsZero_32f);
    checkZero<Kel64f>(kelsZero_64f);
}

TEST(FillCopy, CopiesAreExact) {
    checkCopy<Kel8u>(kelsCopy_8u);
    checkCopy<Kel16s>(kelsCopy_16s);
    checkCopy<Kel32f>(kelsCopy_32f);
    checkCopy<Kel64f>(kelsCopy_64f);
    checkCopy<Kel32f>(kelsMove_32f);
}

TEST(FillCopy, MoveTakesOverlappingArrays) {
    for (const int shift : {-5, -1, 1, 5}) {
        std::vector<Kel32f> v(100);
        std::iota(v.begin(), v.end(), 0.0f);
        Kel32f* const middle = v.data() + 10;
        EXPECT_EQ(kelsMove_32f(middle, middle + shift, 80), kelStatusOk);
        for (int i = 0; i < 80; ++i) EXPECT_EQ(middle[shift + i], static_cast<Kel32f>(10 + i));
    }
}

}  // namespace
