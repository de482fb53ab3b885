// Searches of codebooks that hold given vectors.
#include "training/codebook/support.h"

namespace {

using namespace test;

template <class T>
Distance<T> rounded(double square, int scaleFactor) {
    const auto root = std::sqrt(static_cast<long double>(square));
    if constexpr (std::is_integral_v<T>) return halfEven<Kel32s>(root, scaleFactor);
    return static_cast<Kel32f>(root);
}

// The first n codevectors, or those within a factor, with and without distances.
template <class T>
void expectLists(const T* x, const Owned<T>& codebook, const std::vector<double>& exact, int scale) {
    const auto order = inOrder(exact);
    auto* const c = codebook.get();
    const auto expect = [&](int n, auto plainForm, auto distanceForm) {
        Guarded<Kel32s> plain(n), indices(n);
        Guarded<Distance<T>> distances(n);
        ASSERT_EQ(plainForm(plain.data()), kelStatusOk);
        ASSERT_EQ(distanceForm(indices.data(), distances.data()), kelStatusOk);
        EXPECT_EQ(plain.vector(), std::vector(order.begin(), order.begin() + n));
        EXPECT_EQ(indices.vector(), plain.vector());
        for (int i = 0; i < n; ++i) ASSERT_EQ(distances[i], rounded<T>(exact[order[i]], scale));
    };
    for (const int n : {1, (codebook.size() + 1) / 2, codebook.size()}) {
        expect(
            n, [&](auto* idx) { return sort(x, idx, c, n); },
            [&](auto* idx, auto* dist) { return sortWithDistances.scaled(scale, x, idx, dist, c, n); });
    }
    for (const Kel32f factor : {1.0f, 1.25f, 3.0f, HUGE_VALF}) {
        const double least = exact[order[0]], most = least == 0 ? 0 : least * factor * factor * 1.000001;
        const auto listed = std::count_if(exact.begin(), exact.end(), [=](double d) { return d <= most; });
        Kel32s n = -1, m = -1;
        expect(
            static_cast<int>(listed), [&](auto* idx) { return listNear(x, idx, c, factor, &n); },
            [&](auto* idx, auto* dist) { return listNearWithDistances.scaled(scale, x, idx, dist, c, factor, &m); });
        EXPECT_TRUE(n == listed && m == listed);
    }
}

// Vectors on a small lattice, where many distances are equal, or of the whole range; rows also from outside of what the
// codevectors span.  Rounding must not cost more than the tolerance and the sum's own error.
TYPED_TEST(Codebooks, FindsTheFirstOfTheNearestAndListsInOrder) {
    using T = TypeParam;
    Random random(3);
    for (int round = 0; round < 180; ++round) {
        const int width = std::array{1, 2, 3, 4, 5, 8, 9, 17, 39, 129}[round % 10], step = width + 2;
        const int count = std::array{1, 2, 10, 11, 65, 130}[round / 10 % 6], height = std::array{1, 5, 67}[round / 60];
        const bool whole = random.between(0, 1), weighted = random.between(0, 1);
        SCOPED_TRACE(testing::Message() << width << " wide, " << count << " codevectors, " << height << " rows");
        const int reach = width <= 2 ? 30 : 3, scale = std::is_integral_v<T> ? random.between(-40, 40) : 0;
        const auto some = [&](int n, int range) {
            return whole ? random.vector<T>(n) : smallIntegers<T>(random, n, -range, range);
        };
        // Each term is rounded four times at most, and a sum of n terms n - 1 times.
        const double slack = whole && !std::is_integral_v<T> ? 1e-6 + 2.1 * (width + 4) * 6e-8 : 0;
        const auto vectors = some(count * width, reach);
        const auto weights = weighted ? smallIntegers<T>(random, width, 0, 3) : std::vector<T>();
        const Owned<T> codebook(vectors, weights, width, width, count, kelCdbkExhaustive);
        ASSERT_EQ(codebook.status, kelStatusOk);
        const Guarded<T> src(some((height - 1) * step + width, 2 * reach));
        const auto indices = quantised(src, step, height, codebook);
        Guarded<Kel32s> again(height);
        Guarded<Distance<T>> distances(height);
        const auto call = [&] {
            const KelStatus status = quantiseWithDistances.scaled(scale, src.data(), step, again.data(),
                                                                  distances.data(), height, codebook.get());
            ASSERT_EQ(status, kelStatusOk);
        };
        const auto check = [&] {
            EXPECT_EQ(again.vector(), indices);
            for (int i = 0; i < height; ++i) {
                const auto exact = squaredDistances(src.data() + i * step, vectors, weights, width);
                const int nearest = inOrder(exact)[0], found = indices[i];
                ASSERT_TRUE(found == nearest || exact[found] < exact[nearest] * (1 + slack)) << "row " << i;
                const auto distance = rounded<T>(exact[found], scale);
                ASSERT_TRUE(near(distances[i], distance, slack * std::fabs(distance)));
                if (i == 0 && !whole) expectLists(src.data(), codebook, exact, scale);
            }
        };
        inRoundingModes(std::is_integral_v<T>, call, check);
    }
}

// Distances a few parts in ten million apart, where the tolerance is not transitive.
TEST(VqSearch, FollowsTheToleranceFromPickToPick) {
    Random random(13);
    for (int round = 0; round < 200; ++round) {
        const int count = random.between(2, 60);
        std::vector<Kel32f> vectors, left;
        for (int i = 0; i < count; ++i) {
            vectors.push_back(1.0f + 1.2e-7f * static_cast<Kel32f>(random.between(0, 40)));
            left.push_back(vectors[i] * vectors[i]);
        }
        const Owned<Kel32f> codebook(vectors, {}, 1, 1, count, kelCdbkExhaustive);
        const Guarded<Kel32f> zero(1);
        Guarded<Kel32s> order(count);
        ASSERT_EQ(sort(zero.data(), order.data(), codebook.get(), count), kelStatusOk);
        Kel32f p = 0;
        for (int pick = 0, j = -1; pick < count; ++pick) {
            int next = j + 1;
            while (next < count && !(left[next] > 0 && std::fabs(left[next] - p) <= 1e-6f * std::max(left[next], p)))
                ++next;
            if (next == count) {
                next = -1;
                for (int i = 0; i < count; ++i) {
                    if (left[i] > 0 && (next < 0 || left[i] * 1.000001f < left[next])) next = i;
                }
            }
            ASSERT_EQ(order[pick], next) << "round " << round << ", pick " << pick;
            EXPECT_TRUE(pick > 0 || quantised(zero, 1, 1, codebook)[0] == next);
            p = std::exchange(left[j = next], -1.0f);
        }
    }
}

// Squares that overflow bound nothing: no cell may lose all its codevectors.  Of infinite distances the first one wins.
TEST(VqGrid, HoldsCodevectorsOfInfiniteDistance) {
    Random random(29);
    for (const int width : {1, 2}) {
        std::vector<Kel32f> vectors;
        for (int i = 0; i < 300 * width; ++i) vectors.push_back(static_cast<Kel32f>(random.uniform(-2e25, 2e25)));
        const Owned<Kel32f> codebook(vectors, {}, width, width, 300, kelCdbkExhaustive);
        quantised(Guarded<Kel32f>(vectors), width, 300, codebook);  // as the search without a grid
        EXPECT_EQ(quantised(Guarded<Kel32f>{1.5e25f, 1.5e25f}, width, 1, codebook)[0], 0);
    }
}

}  // namespace
