// Construction of codebooks by splitting, and the search through the tree.
#include <array>
#include <bit>
#include <climits>
#include <limits>
#include <numeric>
#include <utility>

#include "support/allocation.h"
#include "support/checks.h"
#include "training/vq_support.h"

namespace {

using test::Guarded;
using test::Owned;
using test::Random;
using test::Vq;

// ---- splitting by the book: every row is compared with every centroid in every pass --------------------------------

struct PlainSplitting {
    std::vector<double> rows, weights;
    int width, kind;
    std::vector<std::vector<double>> centroids{1};
    std::vector<int> owner = std::vector<int>(rows.size() / width);
    std::vector<double> kept = std::vector<double>(owner.size());

    double distance(int r, int c) const {
        return test::squaredDistance(&rows[r * width], centroids[c].data(), weights, width);
    }
    int count(int c) const { return static_cast<int>(std::count(owner.begin(), owner.end(), c)); }
    double spread(int c) const {
        double largest = 0;
        for (std::size_t r = 0; r < owner.size(); ++r) largest = owner[r] == c ? std::max(largest, kept[r]) : largest;
        return count(c) == 1 ? 0 : 2 * largest;
    }
    void moveToMean(int c) {
        const int members = count(c);
        centroids[c].assign(width, 0);
        for (std::size_t i = 0; i < rows.size(); ++i) {
            if (owner[i / width] == c) centroids[c][i % width] += rows[i] / members;
        }
    }

    void start() {
        moveToMean(0);
        for (std::size_t r = 0; r < owner.size(); ++r) kept[r] = distance(r, 0);
    }
    void split() {
        int from = 0;
        double most = 0;
        const int to = static_cast<int>(centroids.size()), height = static_cast<int>(owner.size());
        for (int c = 0; c < to; ++c) {
            const double value = kind == kelCdbkSplitWidest ? spread(c) : count(c);
            if (spread(c) > 0 && value > most * 1.000001) most = value, from = c;
        }
        centroids.emplace_back();
        for (int picks = count(from) / 2; picks > 0; --picks) {
            int nearest = -1;
            for (int r = 0; r < height; ++r) {
                if (owner[r] == from && (nearest < 0 || kept[r] * 1.000001 < kept[nearest])) nearest = r;
            }
            owner[nearest] = to;
        }
        double before = 0;
        for (int pass = 0; pass < 20; ++pass) {
            for (int c = 0; c <= to; ++c) moveToMean(c);
            for (int r = 0; r < height; ++r) {
                int nearest = 0;
                for (int c = 1; c <= to; ++c) {
                    if (distance(r, c) * 1.000001 < distance(r, nearest)) nearest = c;
                }
                if (count(owner[r]) > 1) owner[r] = nearest;
                kept[r] = distance(r, owner[r]);
            }
            const double total = std::accumulate(kept.begin(), kept.end(), 0.0);
            if (std::fabs(total - before) <= 1e-4 * total) break;
            before = total;
        }
    }
};

template <class T>
class VqTraining : public ::testing::Test {};
using ElementTypes = ::testing::Types<Kel32f, Kel16s>;
TYPED_TEST_SUITE(VqTraining, ElementTypes);

// Rows around a few centres; 16-bit ones over a large part of their range.
template <class T>
std::vector<T> clusteredRows(Random& random, int height, int width) {
    std::vector<double> centres;
    for (int i = 0; i < 7 * width; ++i) centres.push_back(random.uniform(-10, 10));
    std::vector<T> rows;
    for (int r = 0; r < height; ++r) {
        const int centre = random.between(0, 6);
        for (int k = 0; k < width; ++k) {
            const double v = centres[centre * width + k] + random.uniform(-3, 3);
            rows.push_back(static_cast<T>(std::is_integral_v<T> ? 2000 * v : v));
        }
    }
    return rows;
}

TYPED_TEST(VqTraining, SplitsByTheBook) {
    using T = TypeParam;
    Random random(19);
    for (int round = 0; round < 20; ++round) {
        constexpr int height = 260, size = 25;
        const int kind = round % 2 ? kelCdbkSplitWidest : kelCdbkSplitLargest,
                  width = std::array{1, 2, 3, 8, 21}[round / 4];
        const bool weighted = round % 4 < 2;
        SCOPED_TRACE(::testing::Message() << "kind " << kind << ", width " << width << ", weights " << weighted);
        const auto rows = clusteredRows<T>(random, height, width);
        const auto weights = weighted ? test::smallIntegers<T>(random, width, 1, 5) : std::vector<T>();
        PlainSplitting plain = {{rows.begin(), rows.end()}, {weights.begin(), weights.end()}, width, kind};
        plain.start();
        while (plain.centroids.size() < size) plain.split();

        const Owned<T> codebook(rows, weights, width, width, size, kind);
        ASSERT_EQ(codebook.status, 0);
        const auto codevectors = codebook.codevectors();
        ASSERT_EQ(codevectors.size(), std::size_t(size * width));
        for (int i = 0; i < size * width; ++i) {
            const double exact = plain.centroids[i / width][i % width];
            // Float: rounded once from a sum in double precision; the reference knows no rounding.
            const double bound = std::is_integral_v<T> ? 0.5 + 1e-2 : 1e-6 * std::max(1.0, std::fabs(exact));
            ASSERT_NEAR(codevectors[i], exact, bound) << i / width;
        }
        if constexpr (std::is_same_v<T, Kel32f>) {
            const auto* node = codebook.get()->treeRoot;
            while (!node->isLeaf) node = node->right;
            EXPECT_EQ(node->count, plain.count(node->index));
            EXPECT_NEAR(node->spread, plain.spread(node->index), 1e-4 * plain.spread(node->index));
        }
    }
}

// ---- the tree ------------------------------------------------------------------------------------------------------

bool hasFastForm(int width) {
    return width == 1 || width == 2 || width == 4 || width == 8;
}

struct TreeCheck {
    const KelCdbk_32f& codebook;
    const std::vector<Kel32f> codevectors;
    std::vector<const KelCdbkNode*> leaves = std::vector<const KelCdbkNode*>(codebook.cdbkSize);
    int deepest = 0;

    void visit(const KelCdbkNode* node, int depth) {
        const int width = codebook.width;
        const bool fast = hasFastForm(width);
        ASSERT_EQ(node->depth, depth);
        ASSERT_EQ(node->fastBlock != nullptr, fast && (!node->isLeaf || codebook.cdbkSize > 2 || node->fastBlock));
        if (node->isLeaf) {
            deepest = std::max(deepest, depth);
            ASSERT_EQ(std::exchange(leaves[node->index], node), nullptr);
            for (int k = 0; k < width; ++k) ASSERT_EQ(node->centroid[k], codevectors[node->index * width + k]);
            return;
        }
        const double left = node->left->count, right = node->right->count;
        for (int k = 0; k < width; ++k) {
            const double mean = (left * node->left->centroid[k] + right * node->right->centroid[k]) / (left + right);
            ASSERT_FLOAT_EQ(node->centroid[k], static_cast<float>(mean));
        }
        const auto* block = static_cast<const Kel32f*>(node->fastBlock);
        for (const KelCdbkNode* child : {node->left, node->right}) {
            for (const KelCdbkNode* next : {child->left, child->right}) {
                const Kel32f* const centroid = (child->isLeaf ? child : next)->centroid;
                for (int k = 0; fast && k < width; ++k) ASSERT_EQ(*block++, centroid[k]);
            }
            visit(child, depth + 1);
        }
    }
};

// The search on the public structure, in double precision.
int searchTree(const KelCdbk_32f& codebook, const Kel32f* x) {
    const auto d = [&](const KelCdbkNode* node) {
        return test::squaredDistance<Kel32f>(x, node->centroid, {}, codebook.width);
    };
    const auto least = [&](const KelCdbkNode* node) {
        return node->isLeaf ? d(node) : std::min(d(node->left), d(node->right));
    };
    const KelCdbkNode* node = codebook.treeRoot;
    while (!node->isLeaf) node = least(node->left) < 1.000001 * least(node->right) ? node->left : node->right;
    for (int i = 0; i < node->neighbourCount; ++i) {
        if (d(node->neighbours[i]) * 1.000001 < d(node)) node = node->neighbours[i], i = -1;
    }
    return node->index;
}

TEST(VqTree, IsWhatItsFieldsSay) {
    Random random(23);
    for (const int width : {1, 2, 3, 4, 8, 13}) {
        for (const int size : {1, 2, 3, 5, 16, 17, 70}) {
            SCOPED_TRACE(::testing::Message() << "width " << width << ", size " << size);
            const int step = width + 1;
            auto rows = clusteredRows<Kel32f>(random, 600, step);
            rows.pop_back();
            const Owned<Kel32f> owned(rows, {}, width, step, size, size % 2 ? kelCdbkSplitWidest : kelCdbkSplitLargest);
            ASSERT_EQ(owned.status, 0);
            const KelCdbk_32f& codebook = *owned.get();
            const bool fast = hasFastForm(width);
            EXPECT_EQ(codebook.rowStep, fast ? width : (step + 3) / 4 * 4);
            EXPECT_EQ(codebook.flags, 0);
            EXPECT_EQ(codebook.indexBits, std::bit_width(size - 1u));
            TreeCheck check = {codebook, owned.codevectors()};
            check.visit(codebook.treeRoot, 1);
            EXPECT_EQ(codebook.lastIndexOrDepth, check.deepest);
            EXPECT_EQ(codebook.treeRoot->count, 600);

            const int neighbours = size < 3 ? 0 : std::min(size - 1, size > 64 ? 7 : size == 17 ? 5 : 4);
            int members = 0;
            for (const KelCdbkNode* leaf : check.leaves) {
                members += leaf->count;
                ASSERT_EQ(leaf->neighbourCount, neighbours);
                auto d = test::squaredDistances<Kel32f>(leaf->centroid, check.codevectors, {}, width);
                d[leaf->index] = HUGE_VAL;
                const auto order = test::inOrder(d);
                const auto* copy = static_cast<const Kel32f*>(leaf->fastBlock);
                for (int i = 0; i < neighbours; ++i) {
                    ASSERT_EQ(leaf->neighbours[i]->index, order[i]);
                    for (int k = 0; fast && k < width; ++k) ASSERT_EQ(*copy++, leaf->neighbours[i]->centroid[k]);
                }
            }
            EXPECT_EQ(members, 600);

            const Guarded<Kel32f> src(clusteredRows<Kel32f>(random, 100, width));
            const auto indices = test::quantised(src, width, 100, owned);
            for (int i = 0; i < 100; ++i) ASSERT_EQ(indices[i], searchTree(codebook, src.data() + i * width)) << i;
        }
    }
}

// Blobs far apart: each row goes to its own one, in any form.
TYPED_TEST(VqTraining, FindsItsWayToSeparateClusters) {
    using T = TypeParam;
    Random random(29);
    for (const int width : {1, 2, 4, 8, 11, 150}) {
        constexpr int size = 12, height = 20 * size;
        Guarded<T> rows(height * width);
        for (int i = 0; i < height * width; ++i) {
            const int blob = i / width % size, k = i % width;
            rows[i] = static_cast<T>((k == 0 ? 2000 * blob : 300 * (blob * (k + 3) % 7)) + random.between(-20, 20));
        }
        for (const auto& weights : {std::vector<T>(), std::vector<T>(width, T(3))}) {
            const Owned<T> codebook(rows.vector(), weights, width, width, size, kelCdbkSplitWidest);
            ASSERT_EQ(codebook.status, 0);
            const auto codevectors = codebook.codevectors();
            const auto indices = test::quantised(rows, width, height, codebook);
            for (int r = 0; r < height; ++r) {
                const auto d = test::squaredDistances<T>(rows.data() + r * width, codevectors, weights, width);
                ASSERT_EQ(indices[r], test::inOrder(d)[0]) << "width " << width << ", row " << r;
            }
        }
    }
}

// ---- limits --------------------------------------------------------------------------------------------------------

TYPED_TEST(VqTraining, EndsWhereRowsCannotBeToldApart) {
    using T = TypeParam;
    std::vector<T> three;
    for (int r = 0; r < 30; ++r) three.push_back(static_cast<T>(100 * (r % 3)));
    const struct {
        std::vector<T> rows;
        int size;
        KelStatus status;
        std::vector<T> codevectors;
    } cases[] = {
        {std::vector<T>(40, T(5)), 2, kelStatusBadArg, {}},
        {std::vector<T>(40, T(5)), 1, kelStatusOk, {5}},
        {three, 8, kelStatusCdbkShrunk, {0, 100, 200}},
        {{100, -100, 100, -100, 100, -100, 100, -100}, 2, kelStatusOk, {-100, 100}},  // at first with the same mean
    };
    for (const auto& c : cases) {
        for (const int kind : {kelCdbkSplitWidest, kelCdbkSplitLargest}) {
            const Owned<T> made(c.rows, {}, 1, 1, c.size, kind);
            EXPECT_EQ(made.status, c.status);
            if (made.status < 0) continue;
            auto codevectors = made.codevectors();
            std::sort(codevectors.begin(), codevectors.end());
            EXPECT_EQ(codevectors, c.codevectors);
        }
    }
}

TYPED_TEST(VqTraining, TakesUpTo16383Codevectors) {
    using T = TypeParam;
    std::vector<T> rows(16384);
    std::iota(rows.begin(), rows.end(), T(0));
    EXPECT_EQ(Owned<T>(rows, {}, 1, 1, 16384, kelCdbkExhaustive).status, kelStatusSize);
    EXPECT_EQ(Owned<T>({rows.begin(), rows.end() - 1}, {}, 1, 1, 16383, kelCdbkExhaustive).status, 0);
    const Owned<T> more(rows, {}, 1, 1, 16383, kelCdbkExhaustive);
    EXPECT_EQ(more.status, kelStatusCdbkShrunk);
    EXPECT_EQ(more.size(), 16384);
    EXPECT_EQ(more.depth(), 16383);
}

// Also of rows that cannot be split, which is found late.
TYPED_TEST(VqTraining, ReleasesEverythingWhateverAllocationFails) {
    using T = TypeParam;
    Random random(31);
    for (int round = 0; round < 24; ++round) {
        const int width = round % 2 ? 2 : 5, kind = 1 + round / 2 % 3;
        const bool alike = round >= 18 && kind != 1;
        const auto rows = alike ? std::vector<T>(300 * width, T(1)) : clusteredRows<T>(random, 300, width);
        const std::vector<T> weights(width, T(2));
        test::failEachAllocation([&](int n, const test::AllocationWatch& watch) {
            auto* const untouched = reinterpret_cast<typename Vq<T>::Codebook*>(8);
            auto* codebook = untouched;
            const KelStatus status =
                test::makeCodebook<T>(&codebook, rows.data(), round % 12 < 6 ? weights.data() : nullptr, width, width,
                                      300, kind == 1 ? 300 : 9, kind);
            EXPECT_EQ(status, watch.calls() > n ? kelStatusNoMemory : alike ? kelStatusBadArg : kelStatusOk);
            if (status != 0) {
                EXPECT_EQ(codebook, untouched);
            } else {
                EXPECT_EQ(Vq<T>::release(codebook), 0);
            }
            EXPECT_EQ(watch.unreleased(), 0) << "allocation " << n << ", kind " << kind;
        });
    }
}

// Besides the result, splitting takes less than twice what the rows do.
TYPED_TEST(VqTraining, TakesLittleMemory) {
    using T = TypeParam;
    Random random(41);
    const auto rows = clusteredRows<T>(random, 3000, 39);
    const test::AllocationWatch watch;
    typename Vq<T>::Codebook* codebook = nullptr;
    ASSERT_EQ(Vq<T>::init(&codebook, rows.data(), 39, 39, 3000, 30, kelCdbkSplitLargest), 0);
    EXPECT_LT(watch.peakBytes() - watch.bytes(), 2 * rows.size() * sizeof(T));
    EXPECT_EQ(Vq<T>::release(codebook), 0);
}

// In place: the size is enough at any offset, nothing behind it is touched, and searches work.
TYPED_TEST(VqTraining, BuildsInCallerMemory) {
    using T = TypeParam;
    Random random(37);
    for (const int width : {1, 2, 4, 8, 9}) {
        const int step = width + 3, height = 21;
        const Guarded<T> src(test::smallIntegers<T>(random, (height - 1) * step + width, -9, 9));
        int bytes = 0;
        ASSERT_EQ(Vq<T>::getSize(width, step, height, height, 1, &bytes), 0);
        const int rowStep = width == 1 || width == 2 || width == 4 ? width : (step + 7) / 8 * 8;
        if (std::is_same_v<T, Kel32f>) {
            EXPECT_EQ(bytes, 4 * (width + height) + 4 * height * rowStep + static_cast<int>(sizeof(KelCdbk_32f)) + 96);
        }
        for (int offset = 0; offset < 32; offset += sizeof(void*)) {
            const int size = (bytes + 32 + 31) / 32 * 32;  // so that offset 0 is aligned
            Guarded<Kel8u> memory(std::vector<Kel8u>(size, 0x5a));
            auto* const codebook = reinterpret_cast<typename Vq<T>::Codebook*>(memory.data() + offset);
            ASSERT_EQ(Vq<T>::initInPlace(codebook, src.data(), width, step, height, height, 1), 0);
            Guarded<Kel32s> indices(height);
            ASSERT_EQ(Vq<T>::sort(src.data(), indices, codebook, height), 0);
            ASSERT_EQ(Vq<T>::quantise(src.data(), step, indices, height, codebook), 0);
            Guarded<T> copy(src.size());
            ASSERT_EQ(Vq<T>::codevectors(codebook, copy, step), 0);
            for (int i = 0; i < height; ++i) {
                ASSERT_TRUE(std::equal(&copy[i * step], &copy[i * step] + width, &src[i * step]));
                ASSERT_LE(indices[i], i);
            }
            for (int i = offset + bytes; i < size; ++i) ASSERT_EQ(memory[i], 0x5a);
            if constexpr (std::is_same_v<T, Kel32f>) {
                EXPECT_EQ(codebook->rowStep, rowStep);
                EXPECT_EQ(codebook->indexBits, 0x5a5a5a5a) << "is the caller's";
                EXPECT_EQ(reinterpret_cast<uintptr_t>(codebook->work) % 32, 0u);
            }
        }
    }
}

// ---- statuses ------------------------------------------------------------------------------------------------------

TYPED_TEST(VqTraining, ConstructorsCheckInOrder) {
    using T = TypeParam;
    const T rows[] = {1, 2, 3, 4, 5, 6}, weights[] = {1, 1}, negative[] = {1, -1};
    typename Vq<T>::Codebook* made = nullptr;
    const auto weighted = [&](const T* src, const T* w, int width, int kind) {
        return Vq<T>::initWeighted(&made, src, w, width, 2, 3, 2, kind);
    };
    int bytes = -7;
    EXPECT_EQ(Vq<T>::initWeighted(nullptr, rows, weights, 0, 2, 3, 2, 1), kelStatusNullPtr);
    EXPECT_EQ(weighted(nullptr, weights, 0, 1), kelStatusNullPtr);
    EXPECT_EQ(weighted(rows, nullptr, 0, 1), kelStatusNullPtr);
    EXPECT_EQ(weighted(rows, negative, 2, 4), kelStatusBadArg);
    EXPECT_EQ(Vq<T>::init(nullptr, nullptr, 0, 2, 3, 2, 1), kelStatusSize);
    EXPECT_EQ(Vq<T>::init(nullptr, rows, 2, 2, 3, 2, 1), kelStatusNullPtr);
    EXPECT_EQ(Vq<T>::init(&made, nullptr, 2, 1, 3, 2, 1), kelStatusNullPtr);
    EXPECT_EQ(Vq<T>::getSize(0, 2, 3, 3, 1, nullptr), kelStatusNullPtr);
    EXPECT_EQ(Vq<T>::initInPlace(nullptr, rows, 0, 2, 3, 3, 1), kelStatusNullPtr);
    using Sizes = std::array<int, 4>;  // width, step, height, size
    for (const auto& [width, step, height, size] :
         {Sizes{0, 2, 3, 2}, {2, 1, 3, 2}, {2, 2, 0, 2}, {2, 2, 3, 0}, {2, 2, 3, 4}, {1, 1, 16384, 16384}}) {
        EXPECT_EQ(Vq<T>::initWeighted(&made, rows, negative, width, step, height, size, 4), kelStatusSize);
        EXPECT_EQ(Vq<T>::init(&made, rows, width, step, height, size, 4), kelStatusSize);
        EXPECT_EQ(Vq<T>::getSize(width, step, height, size, 1, &bytes), kelStatusSize);
    }
    EXPECT_EQ(Vq<T>::getSize(2, 2, 3, 2, 1, &bytes), kelStatusSize) << "fewer codevectors than rows";
    EXPECT_EQ(Vq<T>::init(&made, rows, 3, INT_MAX, 1, 1, 1), kelStatusNoMemory) << "the row step";
    EXPECT_EQ(Vq<T>::getSize(3, INT_MAX, 16383, 16383, 1, &bytes), kelStatusNoMemory);
    for (const int kind : {0, 2, 3, 4}) {
        if (kind % 4 == 0) {
            EXPECT_EQ(weighted(rows, weights, 2, kind), kelStatusModeNotSupported);
        }
        EXPECT_EQ(Vq<T>::getSize(2, 2, 3, 3, kind, nullptr), kelStatusModeNotSupported);
        EXPECT_EQ(Vq<T>::initInPlace(nullptr, rows, 2, 2, 3, 3, kind), kelStatusModeNotSupported);
    }
    EXPECT_EQ(made, nullptr);
    EXPECT_EQ(bytes, -7);
}

TYPED_TEST(VqTraining, UsersOfCodebooksCheckInOrder) {
    using T = TypeParam;
    using test::expectChecks, test::Places;
    const std::vector<KelStatus> order{-8, -6};
    test::expectNullChecks(Vq<T>::count, Vq<T>::release, Vq<T>::thresh, Vq<T>::threshDistances);
    expectChecks<Places{-1, -1, 2}>(order, 1, Vq<T>::codevectors);
    expectChecks<Places{-1, 3, 1}>(order, 1, Vq<T>::quantise, Vq<T>::full, Vq<T>::fixedFull[0]);
    expectChecks<Places{-1, 4, 1}>(order, 1, Vq<T>::distances);
    expectChecks<Places{-1, -1, 3}>(order, 1, Vq<T>::sort);
    expectChecks<Places{-1, -1, 4}>(order, 1, Vq<T>::sortDistances);

    const T rows[] = {1, 2, 3, 4, 5, 6};
    const Owned<T> owned({1, 2, 3, 4, 5, 6}, {}, 2, 2, 3, 1);
    auto* const codebook = owned.get();
    Kel32s indices[3] = {-7, -7, -7}, count = -7;
    typename Vq<T>::Distance distances[3] = {};
    T copy[6];
    EXPECT_EQ(Vq<T>::codevectors(codebook, copy, 1), kelStatusSize);
    EXPECT_EQ(Vq<T>::quantise(rows, 1, indices, 3, codebook), kelStatusSize);
    EXPECT_EQ(Vq<T>::distances(rows, 1, indices, distances, 3, codebook, 0), kelStatusSize);
    EXPECT_EQ(Vq<T>::full(rows, 1, indices, 3, codebook, 2), kelStatusSize);
    EXPECT_EQ(Vq<T>::full(rows, 3, indices, 3, codebook, 3), kelStatusSize);
    EXPECT_EQ(Vq<T>::tree(rows, 2, indices, 3, codebook, 2), kelStatusModeNotSupported);
    EXPECT_EQ(Vq<T>::sort(rows, indices, codebook, 4), kelStatusSize);
    EXPECT_EQ(Vq<T>::sortDistances(rows, indices, distances, codebook, 4, 0), kelStatusSize);
    for (const Kel32f factor : {0.999f, std::numeric_limits<Kel32f>::quiet_NaN()}) {
        EXPECT_EQ(Vq<T>::thresh(rows, indices, codebook, factor, &count), kelStatusBadArg);
        EXPECT_EQ(Vq<T>::threshDistances(rows, indices, distances, codebook, factor, &count, 0), kelStatusBadArg);
    }
    EXPECT_EQ(indices[0] + indices[1] + indices[2] + count, -28);

    Kel32s& kind = reinterpret_cast<Kel32s*>(codebook)[4];
    kind = 4;
    EXPECT_EQ(Vq<T>::release(codebook), kelStatusUnknownKind);
    kind = 1;
}

}  // namespace
