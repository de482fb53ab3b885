// Searches of codebooks that hold given vectors.
#include <climits>
#include <limits>
#include <utility>

#include "support/numeric.h"
#include "training/vq_support.h"

namespace {

using test::Guarded;
using test::Owned;
using test::Random;
using test::Vq;

template <class T>
class VqSearch : public ::testing::Test {};
using ElementTypes = ::testing::Types<Kel32f, Kel16s>;
TYPED_TEST_SUITE(VqSearch, ElementTypes);

// Codebooks of vectors on a small lattice, where many distances are equal, and rows to look for: also from outside of
// what the codevectors span.  Calls body(codebook, vectors, weights, width, rows).
template <class T, class Body>
void forCodebooks(int height, Body body) {
    Random random(3);
    for (const int width : {1, 2, 3, 4, 5, 8, 9, 17, 39, 129}) {
        for (const int count : {1, 2, 10, 11, 65, 130}) {
            SCOPED_TRACE(::testing::Message() << width << " wide, " << count << " codevectors, " << height << " rows");
            const int range = width <= 2 ? 30 : 3;
            const bool weighted = (width + count + height) % 2 == 0;
            const auto vectors = test::smallIntegers<T>(random, count * width, -range, range);
            const auto weights = weighted ? test::smallIntegers<T>(random, width, 0, 3) : std::vector<T>();
            const Owned<T> codebook(vectors, weights, width, width, count, kelCdbkExhaustive);
            ASSERT_EQ(codebook.status, 0);
            const int places = (height - 1) * (width + 2) + width;
            const Guarded<T> rows(test::smallIntegers<T>(random, places, -2 * range, 2 * range));
            body(codebook, vectors, weights, width, rows);
        }
    }
}

template <class T>
typename Vq<T>::Distance rounded(double square) {
    return static_cast<typename Vq<T>::Distance>(std::is_integral_v<T> ? std::nearbyint(std::sqrt(square))
                                                                       : std::sqrt(square));
}

TYPED_TEST(VqSearch, FindsTheFirstOfTheNearest) {
    using T = TypeParam;
    int grids = 0;
    for (const int height : {1, 5, 67}) {
        forCodebooks<T>(height, [&](auto& codebook, auto& vectors, auto& weights, int width, auto& src) {
            if constexpr (std::is_same_v<T, Kel32f>) grids += codebook.get()->flags & kelCdbkHasGrid;
            const int step = width + 2;
            Guarded<Kel32s> indices(height), again(height);
            Guarded<typename Vq<T>::Distance> distances(height);
            ASSERT_EQ(Vq<T>::quantise(src.data(), step, again, height, codebook.get()), 0);
            ASSERT_EQ(Vq<T>::distances(src.data(), step, indices, distances, height, codebook.get(), 0), 0);
            EXPECT_EQ(again.vector(), indices.vector());
            for (int i = 0; i < height; ++i) {
                const auto exact = test::squaredDistances(src.data() + i * step, vectors, weights, width);
                ASSERT_EQ(indices[i], test::inOrder(exact)[0]) << "row " << i;
                ASSERT_EQ(distances[i], rounded<T>(exact[indices[i]]));
            }
            if (weights.empty()) test::quantised(src, step, height, codebook);
        });
    }
    EXPECT_GE(grids, (std::is_same_v<T, Kel32f> ? 4 : 0)) << "too few shapes had a grid";
}

// Rounding must not cost more than the tolerance and the sum's own error.
TEST(VqSearch32f, IsAsNearAsRoundingAllows) {
    Random random(5);
    for (const int width : {1, 2, 3, 8, 39, 200}) {
        for (const int height : {1, 50}) {
            const int count = 90;
            const auto vectors = random.vector<Kel32f>(count * width, 2);
            const auto rows = random.vector<Kel32f>(height * width, 2);
            const Owned<Kel32f> codebook(vectors, {}, width, width, count, kelCdbkExhaustive);
            Guarded<Kel32s> indices(height);
            Guarded<Kel32f> distances(height);
            ASSERT_EQ(kelsVQDist_32f(rows.data(), width, indices, distances, height, codebook.get()), 0);
            // Each term is rounded three times at most, and a sum of n terms n - 1 times.
            const double bound = (width + 3) * std::numeric_limits<Kel32f>::epsilon() / 2;
            for (int i = 0; i < height; ++i) {
                const auto exact = test::squaredDistances(rows.data() + i * width, vectors, {}, width);
                const double found = exact[indices[i]];
                EXPECT_LE(found, *std::min_element(exact.begin(), exact.end()) * (1 + 1e-6) * (1 + 2.1 * bound));
                EXPECT_NEAR(distances[i], std::sqrt(found), std::sqrt(found) * (bound / 2 + 6e-8));
            }
        }
    }
}

// The largest differences and weights: sums are exact where neither floats nor 32 bits hold them.
TEST(VqSearch16s, IsExactOverTheWholeRange) {
    Random random(7);
    for (const int width : {1, 2, 3, 39, 300}) {
        const auto some = [&](int n) { return random.vector<Kel16s>(n * width); };
        const auto vectors = some(30), rows = some(20);
        for (const auto& used : {std::vector<Kel16s>(), test::smallIntegers<Kel16s>(random, width, 32000, 32767)}) {
            const Owned<Kel16s> codebook(vectors, used, width, width, 30, kelCdbkExhaustive);
            for (const int scaleFactor : {0, 1, 5, 40, -1, -9, -40, INT_MAX, INT_MIN}) {
                Guarded<Kel32s> indices(20), distances(20);
                test::inEveryRoundingMode([&] {
                    kelsVQDist_16s32s_Sfs(rows.data(), width, indices, distances, 20, codebook.get(), scaleFactor);
                });
                for (int i = 0; i < 20; ++i) {
                    const auto exact = test::squaredDistances(rows.data() + i * width, vectors, used, width);
                    ASSERT_EQ(indices[i], test::inOrder(exact)[0]);
                    const long double root = std::sqrt(static_cast<long double>(exact[indices[i]]));
                    const long double scaled = std::ldexp(root, -std::clamp(scaleFactor, -200, 200));
                    EXPECT_EQ(distances[i], std::nearbyint(std::min(scaled, 2147483647.0L))) << scaleFactor;
                }
            }
        }
    }
}

// ---- order ---------------------------------------------------------------------------------------------------------

TYPED_TEST(VqSearch, ListsInOrder) {
    using T = TypeParam;
    forCodebooks<T>(1, [&](auto& codebook, auto& vectors, auto& weights, int width, auto& src) {
        const auto exact = test::squaredDistances(src.data(), vectors, weights, width);
        const auto order = test::inOrder(exact);
        const int count = codebook.size();
        // The first n, for a threshold those that are near enough, with and without distances.
        const auto expect = [&](int n, auto plainForm, auto distanceForm) {
            Guarded<Kel32s> plain(n), indices(n);
            Guarded<typename Vq<T>::Distance> distances(n);
            ASSERT_EQ(plainForm(plain), 0);
            ASSERT_EQ(distanceForm(indices, distances), 0);
            EXPECT_EQ(plain.vector(), std::vector(order.begin(), order.begin() + n));
            EXPECT_EQ(indices.vector(), plain.vector());
            for (int i = 0; i < n; ++i) ASSERT_EQ(distances[i], rounded<T>(exact[order[i]]));
        };
        auto* const c = codebook.get();
        for (const int n : {1, (count + 1) / 2, count}) {
            expect(
                n, [&](Kel32s* idx) { return Vq<T>::sort(src.data(), idx, c, n); },
                [&](Kel32s* idx, auto& dist) { return Vq<T>::sortDistances(src.data(), idx, dist, c, n, 0); });
        }
        for (const Kel32f factor : {1.0f, 1.25f, 3.0f, std::numeric_limits<Kel32f>::infinity()}) {
            const auto listed = std::count_if(exact.begin(), exact.end(), [&](double d) {
                const double least = exact[order[0]];
                return least == 0 ? d == 0 : d <= least * factor * factor * 1.000001;
            });
            Kel32s n = -1, m = -1;
            expect(
                static_cast<int>(listed), [&](Kel32s* idx) { return Vq<T>::thresh(src.data(), idx, c, factor, &n); },
                [&](Kel32s* idx, auto& dist) {
                    return Vq<T>::threshDistances(src.data(), idx, dist, c, factor, &m, 0);
                });
            EXPECT_TRUE(n == listed && m == listed);
        }
    });
}

// Distances a few parts in ten million apart, where the tolerance is not transitive.
TEST(VqSearch32f, FollowsTheToleranceFromPickToPick) {
    Random random(13);
    for (int round = 0; round < 200; ++round) {
        const int count = random.between(2, 60);
        std::vector<Kel32f> vectors;
        for (int i = 0; i < count; ++i) vectors.push_back(1.0f + 1.2e-7f * static_cast<Kel32f>(random.between(0, 40)));
        const Owned<Kel32f> codebook(vectors, {}, 1, 1, count, kelCdbkExhaustive);
        const Kel32f zero = 0;
        Guarded<Kel32s> order(count), nearest(1);
        ASSERT_EQ(kelsVQSingle_Sort_32f(&zero, order, codebook.get(), count), 0);
        ASSERT_EQ(kelsCdbk32VQFull_A6_1(&zero, 1, nearest, 1, codebook.get()), 0);

        std::vector<Kel32f> left;
        for (const Kel32f c : vectors) left.push_back(c * c);
        Kel32f p = 0;
        int j = -1;
        for (int pick = 0; pick < count; ++pick) {
            int next = -1;
            for (int i = j + 1; i < count && next < 0; ++i) {
                const Kel32f d = left[i];
                if (d > 0 && std::fabs(d - p) <= 1e-6f * std::max(d, p)) next = i;
            }
            for (int i = 0, equal = next; i < count && equal < 0; ++i) {
                const Kel32f d = left[i];
                if (d > 0 && (next < 0 || d * 1.000001f < left[next])) next = i;
            }
            ASSERT_EQ(order[pick], next) << "round " << round << ", pick " << pick;
            if (pick == 0) {
                ASSERT_EQ(nearest[0], next);
            }
            j = next;
            p = std::exchange(left[next], -1.0f);
        }
    }
}

// What compares with nothing is still listed, once.
TEST(VqSearch32f, ListsInfiniteAndUnorderedDistancesLast) {
    const Kel32f inf = std::numeric_limits<Kel32f>::infinity(), nan = std::numeric_limits<Kel32f>::quiet_NaN();
    const Owned<Kel32f> codebook({nan, inf, 5, nan, -inf, 1, 3e38f}, {}, 1, 1, 7, kelCdbkExhaustive);
    Guarded<Kel32s> indices(7);
    const Kel32f zero = 0;
    ASSERT_EQ(kelsVQSingle_Sort_32f(&zero, indices, codebook.get(), 7), 0);
    auto sorted = indices.vector();
    EXPECT_EQ((std::vector<Kel32s>(sorted.begin(), sorted.begin() + 2)), (std::vector<Kel32s>{5, 2}));
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(sorted, (std::vector<Kel32s>{0, 1, 2, 3, 4, 5, 6}));
    ASSERT_EQ(kelsVQSingle_Sort_32f(&nan, indices, codebook.get(), 7), 0);
    EXPECT_EQ(indices.vector(), (std::vector<Kel32s>{0, 1, 2, 3, 4, 5, 6}));
}

// ---- grids ---------------------------------------------------------------------------------------------------------

// Points on the borders of cells, far outside, and boxes that are narrow, distant or uneven.
TEST(VqGrid, LosesNoNearestCodevector) {
    Random random(17);
    int grids = 0;
    for (int round = 0; round < 60; ++round) {
        const int width = 1 + round % 2, count = random.between(11, 400);
        const double centre = round % 3 == 0 ? 1e4 : 0.1, spread = std::pow(10.0, random.between(-3, 3));
        std::vector<Kel32f> vectors, weights;
        for (int i = 0; i < count * width; ++i) {
            const double v = random.uniform(-1, 1);
            vectors.push_back(static_cast<Kel32f>(centre + spread * (round % 5 == 0 ? v * v * v : v)));
        }
        if (round % 4 == 0) weights = {0.25f, 9.0f};
        weights.resize(weights.empty() ? 0 : width);
        const Owned<Kel32f> codebook(vectors, weights, width, width, count, kelCdbkExhaustive);
        grids += codebook.get()->flags & kelCdbkHasGrid;
        std::vector<Kel32f> rows = vectors;
        for (int i = 0; i < 2000; ++i) {
            const double reach = i % 4 == 0 ? 3 * spread : spread;
            rows.push_back(static_cast<Kel32f>(centre + random.uniform(-reach, reach)));
        }
        for (int i = 0; i < 200; ++i) rows.push_back(vectors[0] * 1.1f);
        const int height = static_cast<int>(rows.size()) / width;
        Guarded<Kel32s> indices(height);
        ASSERT_EQ(kelsVQ_32f(rows.data(), width, indices, height, codebook.get()), 0);
        for (int i = 0; i < height; ++i) {
            // A difference is rounded once, and it is squared, weighted and added: five roundings in either distance.
            const auto d = test::squaredDistances(&rows[i * width], vectors, weights, width);
            const double least = *std::min_element(d.begin(), d.end());
            ASSERT_LE(d[indices[i]], least * (1 + 1e-6 + 10 * 6e-8)) << "round " << round << ", row " << i;
        }
    }
    EXPECT_GT(grids, 20);
}

// Squares that overflow bound nothing: no cell may lose all its codevectors.  Of infinite distances the first one wins.
TEST(VqGrid, HoldsCodevectorsOfInfiniteDistance) {
    Random random(29);
    for (const int width : {1, 2}) {
        std::vector<Kel32f> vectors;
        for (int i = 0; i < 300 * width; ++i) vectors.push_back(static_cast<Kel32f>(random.uniform(-2e25, 2e25)));
        const Owned<Kel32f> codebook(vectors, {}, width, width, 300, kelCdbkExhaustive);
        Guarded<Kel32s> indices(300), expected(300);
        ASSERT_EQ(kelsVQ_32f(vectors.data(), width, indices, 300, codebook.get()), 0);
        ASSERT_EQ(kelsCdbk32VQFull_A6(vectors.data(), width, expected, 300, codebook.get(), width), 0);
        EXPECT_EQ(indices.vector(), expected.vector());
        const std::vector<Kel32f> between(2, 1.5e25f);
        ASSERT_EQ(kelsVQ_32f(between.data(), width, indices, 1, codebook.get()), 0);
        EXPECT_EQ(indices[0], 0);
    }
}

}  // namespace
