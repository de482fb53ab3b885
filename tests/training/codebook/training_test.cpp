// Construction of codebooks by splitting, and the search through the tree.
#include <bit>
#include <functional>

#include "training/codebook/support.h"

namespace {

using namespace test;

// ---- splitting by the book: every row is compared with every centroid in every pass --------------------------------

struct PlainSplitting {
    std::vector<double> rows, weights;
    int width, step, kind;
    std::vector<int> owner = std::vector<int>((rows.size() + step - width) / step);
    std::vector<double> kept = std::vector<double>(owner.size()), centroids = std::vector<double>(width);
    double total = pass();

    int clusters() const { return static_cast<int>(centroids.size()) / width; }
    int count(int c) const { return static_cast<int>(std::count(owner.begin(), owner.end(), c)); }
    double spread(int c) const {
        double largest = 0;
        for (std::size_t r = 0; r < owner.size(); ++r) largest = owner[r] == c ? std::max(largest, kept[r]) : largest;
        return count(c) == 1 ? 0 : 2 * largest;
    }
    // Means of the clusters, and then the nearest of them for every row but the last of a cluster.
    double pass() {
        for (std::size_t i = 0; i < centroids.size(); ++i) {
            const int c = static_cast<int>(i) / width, members = count(c);
            centroids[i] = 0;
            for (std::size_t r = 0; r < owner.size(); ++r) {
                if (owner[r] == c) centroids[i] += rows[r * step + i % width] / members;
            }
        }
        for (std::size_t r = 0; r < owner.size(); ++r) {
            const auto d = squaredDistances(&rows[r * step], centroids, weights, width);
            int nearest = 0;
            for (int c = 1; c < clusters(); ++c) nearest = d[c] * 1.000001 < d[nearest] ? c : nearest;
            if (count(owner[r]) > 1) owner[r] = nearest;
            kept[r] = d[owner[r]];
        }
        return std::accumulate(kept.begin(), kept.end(), 0.0);
    }
    void split() {
        int from = 0;
        double most = 0;
        for (int c = 0; c < clusters(); ++c) {
            const double value = kind == kelCdbkSplitWidest ? spread(c) : count(c);
            if (spread(c) > 0 && value > most * 1.000001) most = value, from = c;
        }
        for (int picks = count(from) / 2; picks > 0; --picks) {
            std::size_t nearest = owner.size();
            for (std::size_t r = 0; r < owner.size(); ++r) {
                if (owner[r] == from && (nearest == owner.size() || kept[r] * 1.000001 < kept[nearest])) nearest = r;
            }
            owner[nearest] = clusters();
        }
        centroids.resize(centroids.size() + width);
        double before = 0;
        for (int passes = 0; passes < 20; ++passes) {
            total = pass();
            if (std::fabs(total - std::exchange(before, total)) <= 1e-4 * total) break;
        }
    }
};

// Rows around a few centres; 16-bit ones over a large part of their range.
template <class T>
std::vector<T> clusteredRows(Random& random, int height, int width) {
    const auto centres = random.vector<double>(7 * width, 2);
    std::vector<T> rows;
    for (int i = 0, centre = 0; i < height * width; ++i) {
        if (i % width == 0) centre = random.between(0, 6);
        const double v = centres[centre * width + i % width] + random.uniform(-3, 3);
        rows.push_back(static_cast<T>(std::is_integral_v<T> ? 2000 * v : v));
    }
    return rows;
}

// The leaf that the search leads to by the public structure, in double precision; what stands in the nodes on the way.
const KelCdbkNode* leafOf(const KelCdbk_32f& codebook, const Kel32f* x, const std::vector<Kel32f>& weights) {
    const auto d = [&](const KelCdbkNode* node) {
        const std::vector<Kel32f> centroid(node->centroid, node->centroid + codebook.width);
        return squaredDistances(x, centroid, weights, codebook.width)[0];
    };
    const auto least = [&](const KelCdbkNode* node) {
        return node->isLeaf ? d(node) : std::min(d(node->left), d(node->right));
    };
    const KelCdbkNode* node = codebook.treeRoot;
    for (int depth = 1; !node->isLeaf; ++depth) {
        const double left = node->left->count, right = node->right->count;
        const double mean = (left * node->left->centroid[0] + right * node->right->centroid[0]) / (left + right);
        EXPECT_TRUE(node->depth == depth && near(node->centroid[0], mean, 1e-6 * (1 + std::fabs(mean))));
        node = least(node->left) < 1.000001 * least(node->right) ? node->left : node->right;
    }
    for (int i = 0; i < node->neighbourCount; ++i) {
        if (d(node->neighbours[i]) * 1.000001 < d(node)) node = node->neighbours[i], i = -1;
    }
    return node;
}

TYPED_TEST(Codebooks, SplitsByTheBookAndSearchesByTheTree) {
    using T = TypeParam;
    Random random(19);
    for (const auto& [size, neighbours] : {std::pair(1, 0), {2, 0}, {3, 2}, {5, 4}, {16, 4}, {17, 5}, {70, 7}}) {
        for (const int width : {1, 2, 3, 4, 8, 13, 21}) {
            SCOPED_TRACE(testing::Message() << "width " << width << ", size " << size);
            const int kind = random.between(kelCdbkSplitWidest, kelCdbkSplitLargest), step = width + 1;
            auto rows = clusteredRows<T>(random, 260, step);
            rows.pop_back();
            const auto weights = smallIntegers<T>(random, random.between(0, 2) ? 0 : width, 2, 5);
            PlainSplitting plain = {{rows.begin(), rows.end()}, {weights.begin(), weights.end()}, width, step, kind};
            while (plain.clusters() < size) plain.split();
            const Owned<T> codebook(rows, weights, width, step, size, kind);
            ASSERT_EQ(codebook.status, kelStatusOk);
            const auto codevectors = codebook.codevectors();
            ASSERT_EQ(codevectors.size(), plain.centroids.size());
            const int compared = size < 70 ? size * width : 0;  // rounding decides between many small clusters
            for (int i = 0; i < compared; ++i) {
                const double exact = plain.centroids[i];
                // Float: rounded once from a sum in double precision; the reference knows no rounding.
                const double bound = std::is_integral_v<T> ? 0.5 + 1e-2 : 1e-6 * std::max(1.0, std::fabs(exact));
                ASSERT_NEAR(codevectors[i], exact, bound) << i / width;
            }
            Guarded<T> src(std::vector<T>(rows.begin(), rows.begin() + 100 * step - 1));
            for (int k = 0; k < width && size == 2; ++k) src[k] = std::midpoint(codevectors[k], codevectors[width + k]);
            const auto indices = quantised(src, step, 100, codebook);
            int nearest = 0;  // which a search through a tree finds in most cases
            for (int i = 0; i < 100; ++i) {
                nearest += indices[i] == inOrder(squaredDistances(&src[i * step], codevectors, weights, width))[0];
            }
            EXPECT_GT(nearest, 50);
            if constexpr (std::is_same_v<T, Kel32f>) {
                const KelCdbk_32f& book = *codebook.get();
                EXPECT_EQ(book.rowStep, width % 8 == 0 || 4 % width == 0 ? width : (step + 3) / 4 * 4);
                EXPECT_EQ(book.flags, weights.empty() ? 0 : kelCdbkWeighted);
                EXPECT_EQ(book.indexBits, std::bit_width(size - 1u));
                for (int i = 0; i < 100; ++i) {
                    const KelCdbkNode* const leaf = leafOf(book, src.data() + i * step, weights);
                    ASSERT_TRUE(indices[i] == leaf->index && leaf->neighbourCount == neighbours);
                    auto d = squaredDistances(leaf->centroid, codevectors, weights, width);
                    d[leaf->index] = HUGE_VAL;
                    for (int k = 0; k < neighbours; ++k) ASSERT_EQ(leaf->neighbours[k]->index, inOrder(d)[k]);
                }
            }
        }
    }
}

// ---- limits --------------------------------------------------------------------------------------------------------

TYPED_TEST(Codebooks, EndsWhereRowsCannotBeToldApart) {
    using T = TypeParam;
    const auto expect = [](const std::vector<T>& rows, int size, KelStatus status, const std::vector<T>& codevectors) {
        for (const int kind : {kelCdbkSplitWidest, kelCdbkSplitLargest}) {
            const Owned<T> made(rows, {}, 1, 1, size, kind);
            EXPECT_EQ(made.status, status);
            auto found = status < 0 ? codevectors : made.codevectors();
            std::sort(found.begin(), found.end());
            EXPECT_EQ(found, codevectors);
        }
    };
    expect(std::vector<T>(40, T(5)), 2, kelStatusBadArg, {});
    expect(std::vector<T>(40, T(5)), 1, kelStatusOk, {5});
    expect({0, 100, 200, 0, 100, 200, 0, 100, 200, 0, 100, 200}, 8, kelStatusCdbkShrunk, {0, 100, 200});
    expect({100, -100, 100, -100, 100, -100, 100, -100}, 2, kelStatusOk, {-100, 100});  // at first with the same mean
    const Owned<T> more(std::vector<T>(16384), {}, 1, 1, 16383, kelCdbkExhaustive);
    EXPECT_TRUE(more.status == kelStatusCdbkShrunk && more.size() == 16384 && more.word(0) == 16383);
}

// Also of rows that cannot be split, which is found late.
TYPED_TEST(Codebooks, ReleasesEverythingWhateverAllocationFails) {
    using T = TypeParam;
    Random random(31);
    for (int round = 0; round < 24; ++round) {
        const int width = round % 2 ? 2 : 5, kind = 1 + round / 2 % 3, size = kind == 1 ? 300 : 9;
        const bool alike = round >= 18 && kind != 1;
        const auto rows = alike ? std::vector<T>(300 * width, T(1)) : clusteredRows<T>(random, 300, width);
        const std::vector<T> weights(round % 12 < 6 ? width : 0, T(2));
        failEachAllocation([&](int n, const AllocationWatch& watch) {
            const KelStatus status = Owned<T>(rows, weights, width, width, size, kind).status;
            EXPECT_EQ(status, watch.calls() > n ? kelStatusNoMemory : alike ? kelStatusBadArg : kelStatusOk);
            EXPECT_EQ(watch.unreleased(), 0) << "allocation " << n << ", kind " << kind;
        });
    }
}

// Its arguments do not tell the type.
template <class T>
constexpr auto getSize = std::is_same_v<T, Kel32f> ? kelsCdbkGetSize_32f : kelsCdbkGetSize_16s;

// In place: the size is enough wherever a pointer may stand, and searches work.
TYPED_TEST(Codebooks, BuildsInCallerMemory) {
    using T = TypeParam;
    Random random(37);
    for (int width = 1; width < 20; ++width) {
        const int step = width + 3, height = 21;
        const Guarded<T> src(smallIntegers<T>(random, (height - 1) * step + width, -9, 9));
        int bytes = 0;
        ASSERT_EQ(getSize<T>(width, step, height, height, kelCdbkExhaustive, &bytes), kelStatusOk);
        Guarded<void*> memory((bytes + sizeof(void*) - 1) / sizeof(void*));
        auto* const codebook = reinterpret_cast<Codebook<T>*>(memory.data());
        ASSERT_EQ(buildInPlace(codebook, src.data(), width, step, height, height, kelCdbkExhaustive), kelStatusOk);
        Guarded<Kel32s> order(height), indices(height);
        ASSERT_EQ(sort(src.data(), order.data(), codebook, height), kelStatusOk);
        ASSERT_EQ(quantise(src.data(), step, indices.data(), height, codebook), kelStatusOk);
        EXPECT_EQ(order[0], indices[0]);
        for (int i = 0; i < height; ++i) {
            ASSERT_TRUE(std::equal(&src[i * step], &src[i * step] + width, &src[indices[i] * step]));
        }
    }
}

// ---- statuses ------------------------------------------------------------------------------------------------------

TYPED_TEST(Codebooks, ConstructorsCheckInOrder) {
    using T = TypeParam;
    constexpr KelStatus null = kelStatusNullPtr, size = kelStatusSize, kindless = kelStatusModeNotSupported;
    constexpr int kUnknownKind = 4;
    struct Arguments {
        int width = 2, step = 2, height = 2, count = 2, kind = kUnknownKind;
    };
    const T rows[4] = {1, 2, 3, 4}, negative[2] = {1, -1}, weights[2] = {1, 1};
    Codebook<T>* made = nullptr;
    const auto plain = [&](Arguments a) { return build(&made, rows, a.width, a.step, a.height, a.count, a.kind); };
    const auto weighted = [&](Arguments a) {
        return buildWeighted(&made, rows, weights, a.width, a.step, a.height, a.count, a.kind);
    };
    for (const auto& call : {std::function(plain), std::function(weighted)}) {
        for (const Arguments& a : {Arguments{.width = 0},
                                   {.step = 1},
                                   {.height = 0},
                                   {.height = 1},
                                   {.count = 0},
                                   {.height = 16384, .count = 16384}}) {
            EXPECT_EQ(call(a), size);
        }
        EXPECT_EQ(call({.height = 16384, .count = 16383}), kindless);
        EXPECT_EQ(call({.kind = 0}), kindless);
    }
    EXPECT_EQ(plain({.width = 3, .step = INT_MAX, .height = 1, .count = 1, .kind = 1}), kelStatusNoMemory);
    expectChecks<Places{.width = 2}>({size, null}, 1, build);
    EXPECT_EQ(build(&made, static_cast<const T*>(nullptr), 2, 1, 3, 2, 1), null);
    expectChecks<Places{.height = 5, .width = 3}>({null, size}, 1, buildWeighted);
    EXPECT_EQ(buildWeighted(&made, rows, negative, 2, 1, 1, 1, kUnknownKind), size);
    EXPECT_EQ(buildWeighted(&made, rows, negative, 2, 2, 1, 1, kUnknownKind), kelStatusBadArg);
    EXPECT_EQ(made, nullptr);

    int bytes = -7;
    const auto measure = [&](Arguments a) { return getSize<T>(a.width, a.step, a.height, a.count, a.kind, &bytes); };
    EXPECT_EQ(measure({.width = 0}), kindless);
    EXPECT_EQ(measure({.step = 1, .kind = 1}), size);
    EXPECT_EQ(measure({.count = 3, .kind = 1}), size);
    EXPECT_EQ(measure({.height = 16384, .count = 16384, .kind = 1}), size);
    EXPECT_EQ(measure({.width = 3, .step = INT_MAX, .height = 16383, .count = 16383, .kind = 1}), kelStatusNoMemory);
    EXPECT_EQ(bytes, -7);
    expectChecks<Places{.height = 2, .width = 0}>({null, size}, 1, getSize<T>);
    expectChecks<Places{.height = 4, .width = 2}>({null, size}, 1, buildInPlace);
    EXPECT_EQ(buildInPlace(static_cast<Codebook<T>*>(nullptr), rows, 2, 2, 3, 3, 3), kindless);
}

TYPED_TEST(Codebooks, UsersOfCodebooksCheckInOrder) {
    using T = TypeParam;
    const std::vector<KelStatus> order = {kelStatusNullPtr, kelStatusSize};
    expectNullChecks(getCount, release, listNear, listNearWithDistances);
    expectChecks<Places{.width = 2}>(order, 1, getCodevectors);
    expectChecks<Places{.height = 3, .width = 1}>(order, 1, quantise, searchAll, kFixedWidths[0].searchAll);
    expectChecks<Places{.height = 4, .width = 1}>(order, 1, quantiseWithDistances);
    expectChecks<Places{.width = 3}>(order, 1, sort);
    expectChecks<Places{.width = 4}>(order, 1, sortWithDistances);

    Owned<T> owned({1, 2, 3, 4, 5, 6}, {}, 2, 2, 3, kelCdbkExhaustive);
    auto* const codebook = owned.get();
    T x[6] = {-7};
    Kel32s index[3] = {-7}, count = -7;
    Distance<T> distance[3] = {};
    constexpr int tooSmallStep = 1, otherWidth = 3, tooMany = 4, scale = 0;
    for (const KelStatus status :
         {getCodevectors(codebook, x, tooSmallStep), quantise(x, tooSmallStep, index, 3, codebook),
          quantiseWithDistances.scaled(scale, x, tooSmallStep, index, distance, 3, codebook),
          searchAll(x, tooSmallStep, index, 3, codebook, 2), searchAll(x, 3, index, 3, codebook, otherWidth),
          sort(x, index, codebook, tooMany), sortWithDistances.scaled(scale, x, index, distance, codebook, tooMany)}) {
        EXPECT_EQ(status, kelStatusSize);
    }
    EXPECT_EQ(searchTree(x, 2, index, 3, codebook, 2), kelStatusModeNotSupported);
    for (const Kel32f factor : {0.999f, NAN}) {
        EXPECT_EQ(listNear(x, index, codebook, factor, &count), kelStatusBadArg);
        EXPECT_EQ(listNearWithDistances.scaled(scale, x, index, distance, codebook, factor, &count), kelStatusBadArg);
    }
    EXPECT_TRUE(x[0] == -7 && index[0] == -7 && count == -7);
    EXPECT_EQ(getCount(codebook, &count), kelStatusOk);
    EXPECT_EQ(count, 3);
    Kel32s& kind = reinterpret_cast<Kel32s*>(codebook)[4];
    EXPECT_EQ(std::exchange(kind, 4), kelCdbkExhaustive);
    EXPECT_EQ(release(codebook), kelStatusUnknownKind);
    kind = kelCdbkExhaustive;
    EXPECT_EQ(release(owned.record.release()), kelStatusOk);
}

}  // namespace
