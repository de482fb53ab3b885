// Construction of codebooks by splitting, and the search through the tree.
#include <climits>
#include <limits>
#include <numeric>

#include "support/allocation.h"
#include "training/vq_support.h"

namespace {

using test::Guarded;
using test::Owned;
using test::Random;
using test::Vq;

// ---- splitting by the book: every row is compared with every centroid in every pass --------------------------------

class PlainSplitting {
  public:
    std::vector<std::vector<double>> centroids;
    std::vector<double> kept;
    std::vector<std::size_t> assigned;

    PlainSplitting(const std::vector<std::vector<double>>& rows, const std::vector<double>& weights, int kind)
        : centroids(1), kept(rows.size()), assigned(rows.size()), rows_(rows), weights_(weights), kind_(kind) {
        centroids[0] = mean(0);
        for (std::size_t r = 0; r < rows.size(); ++r) kept[r] = distance(r, 0);
    }
    double distance(std::size_t r, std::size_t c) const {
        double sum = 0;
        for (std::size_t k = 0; k < weights_.size(); ++k) {
            sum += weights_[k] * (rows_[r][k] - centroids[c][k]) * (rows_[r][k] - centroids[c][k]);
        }
        return sum;
    }
    std::size_t count(std::size_t c) const {
        return static_cast<std::size_t>(std::count(assigned.begin(), assigned.end(), c));
    }
    double spread(std::size_t c) const {
        double largest = 0;
        for (std::size_t r = 0; r < rows_.size(); ++r)
            largest = assigned[r] == c ? std::max(largest, kept[r]) : largest;
        return count(c) == 1 ? 0 : 2 * largest;
    }

    void split() {
        std::size_t from = 0;
        double most = 0;
        for (std::size_t c = 0; c < centroids.size(); ++c) {
            const double value = kind_ == kelCdbkSplitWidest ? spread(c) : static_cast<double>(count(c));
            if (spread(c) > 0 && value > most * 1.000001) most = value, from = c;
        }
        const std::size_t to = centroids.size();
        centroids.emplace_back();
        for (std::size_t picks = count(from) / 2; picks > 0; --picks) {
            std::size_t nearest = SIZE_MAX;
            for (std::size_t r = 0; r < rows_.size(); ++r) {
                if (assigned[r] != from) continue;
                if (nearest == SIZE_MAX || kept[r] * 1.000001 < kept[nearest]) nearest = r;
            }
            assigned[nearest] = to;
        }
        double before = 0;
        for (int pass = 0; pass < 20; ++pass) {
            for (std::size_t c = 0; c <= to; ++c) centroids[c] = mean(c);
            for (std::size_t r = 0; r < rows_.size(); ++r) {
                std::size_t nearest = 0;
                for (std::size_t c = 1; c <= to; ++c) {
                    if (distance(r, c) * 1.000001 < distance(r, nearest)) nearest = c;
                }
                if (count(assigned[r]) > 1) assigned[r] = nearest;
                kept[r] = distance(r, assigned[r]);
            }
            const double total = std::accumulate(kept.begin(), kept.end(), 0.0);
            if (std::fabs(total - before) <= 1e-4 * total) break;
            before = total;
        }
    }

  private:
    std::vector<double> mean(std::size_t c) const {
        std::vector<double> sum(weights_.size());
        for (std::size_t r = 0; r < rows_.size(); ++r) {
            for (std::size_t k = 0; assigned[r] == c && k < sum.size(); ++k) sum[k] += rows_[r][k];
        }
        for (double& s : sum) s /= static_cast<double>(count(c));
        return sum;
    }
    const std::vector<std::vector<double>>& rows_;
    const std::vector<double>& weights_;
    int kind_;
};

template <class T>
class VqTraining : public ::testing::Test {};
using ElementTypes = ::testing::Types<Kel32f, Kel16s>;
TYPED_TEST_SUITE(VqTraining, ElementTypes);

// Rows around a few centres; 16-bit ones over a large part of their range.
template <class T>
std::vector<T> clusteredRows(Random& random, int height, int width) {
    std::vector<double> centres(static_cast<std::size_t>(7 * width));
    for (double& c : centres) c = random.uniform(-10, 10);
    std::vector<T> rows;
    for (int r = 0; r < height; ++r) {
        const int centre = random.between(0, 6);
        for (int k = 0; k < width; ++k) {
            const double v = centres[static_cast<std::size_t>(centre * width + k)] + random.uniform(-3, 3);
            rows.push_back(static_cast<T>(std::is_integral_v<T> ? 2000 * v : v));
        }
    }
    return rows;
}

TYPED_TEST(VqTraining, SplitsByTheBook) {
    using T = TypeParam;
    Random random(19);
    for (const int kind : {kelCdbkSplitWidest, kelCdbkSplitLargest}) {
        for (const int width : {1, 2, 3, 8, 21}) {
            for (const bool weighted : {false, true}) {
                SCOPED_TRACE(::testing::Message()
                             << "kind " << kind << ", width " << width << ", weights " << weighted);
                constexpr int height = 260, size = 25;
                const auto values = clusteredRows<T>(random, height, width);
                const auto weights = weighted ? test::smallIntegers<T>(random, width, 1, 5) : std::vector<T>();
                std::vector<std::vector<double>> rows;
                for (int r = 0; r < height; ++r) rows.emplace_back(&values[r * width], &values[r * width] + width);
                std::vector<double> w(static_cast<std::size_t>(width), 1.0);
                if (weighted) w.assign(weights.begin(), weights.end());
                PlainSplitting plain(rows, w, kind);
                while (plain.centroids.size() < size) plain.split();

                const Owned<T> codebook(values, weights, width, width, size, kind);
                ASSERT_EQ(codebook.status, 0);
                ASSERT_EQ(codebook.size(), size);
                const auto codevectors = codebook.codevectors();
                for (int c = 0; c < size; ++c) {
                    for (int k = 0; k < width; ++k) {
                        const double exact = plain.centroids[static_cast<std::size_t>(c)][static_cast<std::size_t>(k)];
                        // Float: rounded once from a sum in double precision; the reference knows no rounding.
                        const double bound =
                            std::is_integral_v<T> ? 0.5 + 1e-2 : 1e-6 * std::max(1.0, std::fabs(exact));
                        ASSERT_NEAR(codevectors[static_cast<std::size_t>(c * width + k)], exact, bound) << c;
                    }
                }
                if constexpr (std::is_same_v<T, Kel32f>) {
                    const auto* node = codebook.get()->treeRoot;
                    while (!node->isLeaf) node = node->right;
                    const auto c = static_cast<std::size_t>(node->index);
                    EXPECT_EQ(static_cast<std::size_t>(node->count), plain.count(c));
                    EXPECT_NEAR(node->spread, plain.spread(c), 1e-4 * plain.spread(c));
                }
            }
        }
    }
}

// ---- the tree ------------------------------------------------------------------------------------------------------

struct TreeCheck {
    const KelCdbk_32f& codebook;
    std::vector<Kel32f> codevectors;
    std::vector<const KelCdbkNode*> leaves;
    int deepest = 0;

    void visit(const KelCdbkNode* node, int depth) {
        const int width = codebook.width;
        ASSERT_EQ(node->depth, depth);
        const bool fast = width == 1 || width == 2 || width == 4 || width == 8;
        ASSERT_EQ(node->fastBlock != nullptr, fast && (!node->isLeaf || codebook.cdbkSize > 2 || node->fastBlock));
        if (node->isLeaf) {
            deepest = std::max(deepest, depth);
            ASSERT_EQ(leaves[static_cast<std::size_t>(node->index)], nullptr);
            leaves[static_cast<std::size_t>(node->index)] = node;
            for (int k = 0; k < width; ++k) {
                ASSERT_EQ(node->centroid[k], codevectors[static_cast<std::size_t>(node->index * width + k)]);
            }
            return;
        }
        const double left = node->left->count, right = node->right->count;
        for (int k = 0; k < width; ++k) {
            const double mean = (left * node->left->centroid[k] + right * node->right->centroid[k]) / (left + right);
            ASSERT_FLOAT_EQ(node->centroid[k], static_cast<float>(mean));
        }
        const auto* block = static_cast<const Kel32f*>(node->fastBlock);
        for (const KelCdbkNode* child : {node->left, node->right}) {
            for (const KelCdbkNode* grandchild :
                 {child->isLeaf ? child : child->left, child->isLeaf ? child : child->right}) {
                for (int k = 0; fast && k < width; ++k) ASSERT_EQ(*block++, grandchild->centroid[k]);
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
    for (bool moved = true; moved;) {
        moved = false;
        for (int i = 0; i < node->neighbourCount && !moved; ++i) {
            if (!(d(node->neighbours[i]) * 1.000001 < d(node))) continue;
            node = node->neighbours[i];
            moved = true;
        }
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
            const bool fast = width == 1 || width == 2 || width == 4 || width == 8;
            EXPECT_EQ(codebook.rowStep, fast ? width : (step + 3) / 4 * 4);
            EXPECT_EQ(codebook.flags, 0);
            EXPECT_EQ(1 << codebook.indexBits >= size, true);
            EXPECT_EQ(codebook.indexBits == 0 || 1 << (codebook.indexBits - 1) < size, true);
            TreeCheck check = {codebook, owned.codevectors(),
                               std::vector<const KelCdbkNode*>(static_cast<std::size_t>(size))};
            check.visit(codebook.treeRoot, 1);
            EXPECT_EQ(codebook.lastIndexOrDepth, check.deepest);
            EXPECT_EQ(codebook.treeRoot->count, 600);

            const int neighbours = size < 3 ? 0 : std::min(size - 1, size > 64 ? 7 : size == 17 ? 5 : 4);
            int members = 0;
            for (const KelCdbkNode* leaf : check.leaves) {
                members += leaf->count;
                ASSERT_EQ(leaf->neighbourCount, neighbours);
                auto d = test::squaredDistances<Kel32f>(leaf->centroid, check.codevectors, {}, width);
                d[static_cast<std::size_t>(leaf->index)] = HUGE_VAL;
                const auto order = test::inOrder(d);
                const auto* copy = static_cast<const Kel32f*>(leaf->fastBlock);
                for (int i = 0; i < neighbours; ++i) {
                    ASSERT_EQ(leaf->neighbours[i]->index, order[static_cast<std::size_t>(i)]);
                    for (int k = 0; fast && k < width; ++k) ASSERT_EQ(*copy++, leaf->neighbours[i]->centroid[k]);
                }
            }
            EXPECT_EQ(members, 600);

            const auto vectors = clusteredRows<Kel32f>(random, 100, width);
            const Guarded<Kel32f> src(vectors);
            Guarded<Kel32s> indices(100), again(100);
            ASSERT_EQ(kelsVQ_32f(src.data(), width, indices, 100, owned.get()), 0);
            for (int i = 0; i < 100; ++i) ASSERT_EQ(indices[i], searchTree(codebook, src.data() + i * width)) << i;
            ASSERT_EQ(kelsCdbk32VQKMeans_A6(src.data(), width, again, 100, owned.get(), width), 0);
            EXPECT_EQ(again.vector(), indices.vector());
            for (int k = 0; k < 4; ++k) {
                const KelStatus status = Vq<Kel32f>::fixedTree[k](src.data(), width, again, 100, owned.get());
                EXPECT_EQ(status, width == 1 << k ? 0 : kelStatusSize);
                EXPECT_EQ(again.vector(), indices.vector());
            }
        }
    }
}

// Blobs far apart: each row goes to its own one, in any form.
TYPED_TEST(VqTraining, FindsItsWayToSeparateClusters) {
    using T = TypeParam;
    Random random(29);
    for (const int width : {1, 2, 4, 8, 11, 150}) {
        for (const bool weighted : {false, true}) {
            constexpr int size = 12, height = 20 * size;
            std::vector<T> rows;
            for (int r = 0; r < height; ++r) {
                for (int k = 0; k < width; ++k) {
                    const int centre = k == 0 ? 2000 * (r % size) : 300 * ((r % size * (k + 3)) % 7);
                    rows.push_back(static_cast<T>(centre + random.between(-20, 20)));
                }
            }
            const auto weights = weighted ? std::vector<T>(static_cast<std::size_t>(width), T(3)) : std::vector<T>();
            const Owned<T> codebook(rows, weights, width, width, size, kelCdbkSplitWidest);
            ASSERT_EQ(codebook.status, 0);
            const auto codevectors = codebook.codevectors();
            const Guarded<T> src(rows);
            Guarded<Kel32s> indices(height), again(height);
            ASSERT_EQ(Vq<T>::quantise(src.data(), width, indices, height, codebook.get()), 0);
            for (int r = 0; r < height; ++r) {
                const auto d = test::squaredDistances<T>(src.data() + r * width, codevectors, weights, width);
                ASSERT_EQ(indices[r], test::inOrder(d)[0]) << "width " << width << ", row " << r;
            }
            ASSERT_EQ(Vq<T>::tree(src.data(), width, again, height, codebook.get(), width), 0);
            EXPECT_EQ(again.vector(), indices.vector());
            for (int k = 0; k < 4; ++k) {
                const KelStatus status = Vq<T>::fixedTree[k](src.data(), width, again, height, codebook.get());
                EXPECT_EQ(status, width == 1 << k ? 0 : kelStatusSize);
            }
            EXPECT_EQ(again.vector(), indices.vector());
        }
    }
}

// ---- limits --------------------------------------------------------------------------------------------------------

TYPED_TEST(VqTraining, EndsWhereRowsCannotBeToldApart) {
    using T = TypeParam;
    const std::vector<T> same(40, T(5));
    for (const int kind : {kelCdbkSplitWidest, kelCdbkSplitLargest}) {
        EXPECT_EQ(Owned<T>(same, {}, 2, 2, 2, kind).status, kelStatusBadArg);
        EXPECT_EQ(Owned<T>(same, {}, 2, 2, 1, kind).codevectors(), (std::vector<T>{5, 5}));
        std::vector<T> three;
        for (int r = 0; r < 30; ++r) three.push_back(static_cast<T>(100 * (r % 3)));
        const Owned<T> fewer(three, {}, 1, 1, 8, kind);
        EXPECT_EQ(fewer.status, kelStatusCdbkShrunk);
        auto codevectors = fewer.codevectors();
        std::sort(codevectors.begin(), codevectors.end());
        EXPECT_EQ(codevectors, (std::vector<T>{0, 100, 200}));
    }
    // Symmetrical rows, of which both halves have the same mean at first.
    const Owned<T> symmetrical({100, -100, 100, -100, 100, -100, 100, -100}, {}, 1, 1, 2, kelCdbkSplitWidest);
    EXPECT_EQ(symmetrical.status, 0);
    auto codevectors = symmetrical.codevectors();
    std::sort(codevectors.begin(), codevectors.end());
    EXPECT_EQ(codevectors, (std::vector<T>{-100, 100}));
}

TYPED_TEST(VqTraining, TakesUpTo16383Codevectors) {
    using T = TypeParam;
    std::vector<T> rows(16384);
    for (std::size_t i = 0; i < rows.size(); ++i) rows[i] = static_cast<T>(i);
    typename Vq<T>::Codebook* none = nullptr;
    EXPECT_EQ(Vq<T>::init(&none, rows.data(), 1, 1, 16384, 16384, kelCdbkExhaustive), kelStatusSize);
    EXPECT_EQ(Owned<T>({rows.begin(), rows.end() - 1}, {}, 1, 1, 16383, kelCdbkExhaustive).status, 0);
    const Owned<T> more(rows, {}, 1, 1, 16383, kelCdbkExhaustive);
    EXPECT_EQ(more.status, kelStatusCdbkShrunk);
    EXPECT_EQ(more.size(), 16384);
    EXPECT_EQ(more.depth(), 16383);
}

TYPED_TEST(VqTraining, ReleasesEverythingWhateverAllocationFails) {
    using T = TypeParam;
    Random random(31);
    for (const int width : {2, 5}) {
        const auto rows = clusteredRows<T>(random, 300, width);
        const std::vector<T> weights(static_cast<std::size_t>(width), T(2));
        for (const int kind : {1, 2, 3}) {
            for (const bool weighted : {false, true}) {
                test::failEachAllocation([&](int n, const test::AllocationWatch& watch) {
                    auto* const untouched = reinterpret_cast<typename Vq<T>::Codebook*>(8);
                    auto* codebook = untouched;
                    const KelStatus status =
                        weighted ? Vq<T>::initWeighted(&codebook, rows.data(), weights.data(), width, width, 300,
                                                       kind == 1 ? 300 : 9, kind)
                                 : Vq<T>::init(&codebook, rows.data(), width, width, 300, kind == 1 ? 300 : 9, kind);
                    if (watch.calls() > n) {
                        EXPECT_EQ(status, kelStatusNoMemory);
                        EXPECT_EQ(codebook, untouched);
                    } else {
                        EXPECT_EQ(status, 0);
                        EXPECT_EQ(Vq<T>::release(codebook), 0);
                    }
                    EXPECT_EQ(watch.unreleased(), 0) << "allocation " << n << ", kind " << kind;
                });
            }
        }
        const std::vector<T> same(60, T(1));
        const test::AllocationWatch watch;
        typename Vq<T>::Codebook* codebook = nullptr;
        EXPECT_EQ(Vq<T>::init(&codebook, same.data(), width, width, 12, 3, 2), kelStatusBadArg);
        EXPECT_GT(watch.calls(), 2);
        EXPECT_EQ(watch.unreleased(), 0);
    }
}

// Besides the result, splitting takes less than twice what the rows do.
TYPED_TEST(VqTraining, TakesLittleMemory) {
    using T = TypeParam;
    Random random(41);
    constexpr int height = 3000, width = 39, size = 30;
    const auto rows = clusteredRows<T>(random, height, width);
    const test::AllocationWatch watch;
    typename Vq<T>::Codebook* codebook = nullptr;
    ASSERT_EQ(Vq<T>::init(&codebook, rows.data(), width, width, height, size, kelCdbkSplitLargest), 0);
    EXPECT_LT(watch.peakBytes() - watch.bytes(), 2 * height * width * sizeof(T));
    EXPECT_EQ(Vq<T>::release(codebook), 0);
}

// In place: the size is enough at any offset, nothing behind it is touched, and searches work.
TYPED_TEST(VqTraining, BuildsInCallerMemory) {
    using T = TypeParam;
    Random random(37);
    for (const int width : {1, 2, 4, 8, 9}) {
        const int step = width + 3, height = 21;
        const auto rows = test::smallIntegers<T>(random, (height - 1) * step + width, -9, 9);
        const Guarded<T> src(rows);
        int bytes = 0;
        ASSERT_EQ(Vq<T>::getSize(width, step, height, height, 1, &bytes), 0);
        const int rowStep = width == 1 || width == 2 || width == 4 ? width : (step + 7) / 8 * 8;
        if (std::is_same_v<T, Kel32f>) {
            EXPECT_EQ(bytes, 4 * (width + height) + 4 * height * rowStep + static_cast<int>(sizeof(KelCdbk_32f)) + 96);
        }
        for (int offset = 0; offset < 32; offset += sizeof(void*)) {
            const int size = (bytes + 32 + 31) / 32 * 32;  // so that offset 0 is aligned
            Guarded<Kel8u> memory(static_cast<std::size_t>(size));
            auto* const codebook = reinterpret_cast<typename Vq<T>::Codebook*>(memory.data() + offset);
            for (int i = 0; i < size; ++i) memory[i] = 0x5a;
            ASSERT_EQ(Vq<T>::initInPlace(codebook, src.data(), width, step, height, height, 1), 0);
            for (int i = offset + bytes; i < size; ++i) ASSERT_EQ(memory[i], 0x5a);
            Guarded<Kel32s> indices(static_cast<std::size_t>(height));
            ASSERT_EQ(Vq<T>::sort(src.data(), indices, codebook, height), 0);
            ASSERT_EQ(Vq<T>::quantise(src.data(), step, indices, height, codebook), 0);
            Guarded<T> copy(static_cast<std::size_t>((height - 1) * step + width));
            ASSERT_EQ(Vq<T>::codevectors(codebook, copy, step), 0);
            for (int i = 0; i < height; ++i) {
                ASSERT_TRUE(
                    std::equal(&copy[i * step], &copy[i * step] + width, &rows[static_cast<std::size_t>(i * step)]));
                ASSERT_LE(indices[i], i);
            }
            if constexpr (std::is_same_v<T, Kel32f>) {
                EXPECT_EQ(codebook->rowStep, rowStep);
                EXPECT_EQ(codebook->indexBits, 0x5a5a5a5a) << "is the caller's";
                EXPECT_EQ(reinterpret_cast<uintptr_t>(codebook->work) % 32, 0u);
            }
        }
    }
}

// ---- statuses ------------------------------------------------------------------------------------------------------

TYPED_TEST(VqTraining, ChecksInOrder) {
    using T = TypeParam;
    const T rows[] = {1, 2, 3, 4, 5, 6}, weights[] = {1, 1}, negative[] = {1, -1};
    typename Vq<T>::Codebook* made = nullptr;
    const auto weighted = [&](const T* src, const T* w, int width, int step, int height, int size, int kind) {
        return Vq<T>::initWeighted(&made, src, w, width, step, height, size, kind);
    };
    EXPECT_EQ(Vq<T>::initWeighted(nullptr, rows, weights, 2, 2, 3, 2, 1), kelStatusNullPtr);
    EXPECT_EQ(weighted(nullptr, weights, 0, 2, 3, 2, 1), kelStatusNullPtr);
    EXPECT_EQ(weighted(rows, nullptr, 2, 2, 3, 2, 1), kelStatusNullPtr);
    EXPECT_EQ(weighted(rows, negative, 0, 2, 3, 2, 1), kelStatusSize);
    EXPECT_EQ(weighted(rows, negative, 2, 1, 3, 2, 1), kelStatusSize);
    EXPECT_EQ(weighted(rows, negative, 2, 2, 0, 2, 1), kelStatusSize);
    EXPECT_EQ(weighted(rows, negative, 2, 2, 3, 0, 1), kelStatusSize);
    EXPECT_EQ(weighted(rows, negative, 2, 2, 3, 4, 1), kelStatusSize);
    EXPECT_EQ(weighted(rows, negative, 2, 2, 3, 2, 4), kelStatusBadArg);
    EXPECT_EQ(weighted(rows, weights, 2, 2, 3, 2, 4), kelStatusModeNotSupported);
    EXPECT_EQ(weighted(rows, weights, 2, 2, 3, 2, 0), kelStatusModeNotSupported);
    EXPECT_EQ(Vq<T>::init(nullptr, nullptr, 0, 2, 3, 2, 1), kelStatusSize);
    EXPECT_EQ(Vq<T>::init(nullptr, rows, 2, 2, 3, 2, 1), kelStatusNullPtr);
    EXPECT_EQ(Vq<T>::init(&made, nullptr, 2, 1, 3, 2, 1), kelStatusNullPtr);
    EXPECT_EQ(Vq<T>::init(&made, rows, 2, 1, 3, 2, 4), kelStatusSize);
    EXPECT_EQ(Vq<T>::init(&made, rows, 3, INT_MAX, 1, 1, 1), kelStatusNoMemory) << "the row step";
    EXPECT_EQ(made, nullptr);

    int size = -7;
    for (const int kind : {2, 3, 0, 4}) {
        EXPECT_EQ(Vq<T>::getSize(2, 2, 3, 3, kind, nullptr), kelStatusModeNotSupported);
        EXPECT_EQ(Vq<T>::initInPlace(nullptr, rows, 2, 2, 3, 3, kind), kelStatusModeNotSupported);
    }
    EXPECT_EQ(Vq<T>::getSize(0, 2, 3, 3, 1, nullptr), kelStatusNullPtr);
    EXPECT_EQ(Vq<T>::initInPlace(nullptr, rows, 0, 2, 3, 3, 1), kelStatusNullPtr);
    EXPECT_EQ(Vq<T>::getSize(3, 2, 3, 3, 1, &size), kelStatusSize);
    EXPECT_EQ(Vq<T>::getSize(2, 2, 3, 2, 1, &size), kelStatusSize);
    EXPECT_EQ(Vq<T>::getSize(1, 1, 16384, 16384, 1, &size), kelStatusSize);
    EXPECT_EQ(Vq<T>::getSize(3, INT_MAX, 16383, 16383, 1, &size), kelStatusNoMemory);
    EXPECT_EQ(size, -7);

    const Owned<T> owned({1, 2, 3, 4, 5, 6}, {}, 2, 2, 3, 1);
    auto* const codebook = owned.get();
    Kel32s indices[3] = {-7, -7, -7}, count = -7;
    typename Vq<T>::Distance distances[3] = {};
    T copy[6];
    EXPECT_EQ(Vq<T>::count(nullptr, &size), kelStatusNullPtr);
    EXPECT_EQ(Vq<T>::count(codebook, nullptr), kelStatusNullPtr);
    EXPECT_EQ(Vq<T>::codevectors(nullptr, copy, 2), kelStatusNullPtr);
    EXPECT_EQ(Vq<T>::codevectors(codebook, nullptr, 0), kelStatusNullPtr);
    EXPECT_EQ(Vq<T>::codevectors(codebook, copy, 1), kelStatusSize);
    const auto eachSearch = [&](const T* src, int step, Kel32s* idx, int height, auto* c, KelStatus expected) {
        EXPECT_EQ(Vq<T>::quantise(src, step, idx, height, c), expected);
        EXPECT_EQ(Vq<T>::distances(src, step, idx, distances, height, c, 0), expected);
        EXPECT_EQ(Vq<T>::full(src, step, idx, height, c, 2), expected);
    };
    eachSearch(rows, 0, indices, 3, static_cast<decltype(codebook)>(nullptr), kelStatusNullPtr);
    eachSearch(nullptr, 0, indices, 3, codebook, kelStatusNullPtr);
    eachSearch(rows, 2, nullptr, 0, codebook, kelStatusNullPtr);
    eachSearch(rows, 1, indices, 3, codebook, kelStatusSize);
    eachSearch(rows, 2, indices, 0, codebook, kelStatusSize);
    EXPECT_EQ(Vq<T>::distances(rows, 2, indices, nullptr, 3, codebook, 0), kelStatusNullPtr);
    EXPECT_EQ(Vq<T>::tree(rows, 2, indices, 3, codebook, 2), kelStatusModeNotSupported);
    EXPECT_EQ(Vq<T>::full(rows, 3, indices, 3, codebook, 3), kelStatusSize);
    EXPECT_EQ(Vq<T>::sort(rows, nullptr, codebook, 0), kelStatusNullPtr);
    EXPECT_EQ(Vq<T>::sort(rows, indices, codebook, 0), kelStatusSize);
    EXPECT_EQ(Vq<T>::sort(rows, indices, codebook, 4), kelStatusSize);
    EXPECT_EQ(Vq<T>::sortDistances(rows, indices, nullptr, codebook, 1, 0), kelStatusNullPtr);
    EXPECT_EQ(Vq<T>::sortDistances(rows, indices, distances, codebook, 4, 0), kelStatusSize);
    EXPECT_EQ(Vq<T>::thresh(rows, indices, codebook, 0.5f, nullptr), kelStatusNullPtr);
    EXPECT_EQ(Vq<T>::thresh(rows, indices, codebook, 0.999f, &count), kelStatusBadArg);
    EXPECT_EQ(Vq<T>::thresh(rows, indices, codebook, std::numeric_limits<Kel32f>::quiet_NaN(), &count),
              kelStatusBadArg);
    EXPECT_EQ(Vq<T>::threshDistances(rows, indices, nullptr, codebook, 1, &count, 0), kelStatusNullPtr);
    EXPECT_EQ(indices[0] + indices[1] + indices[2] + count, -28);

    EXPECT_EQ(Vq<T>::release(nullptr), kelStatusNullPtr);
    Kel32s& kind = reinterpret_cast<Kel32s*>(codebook)[4];
    kind = 4;
    EXPECT_EQ(Vq<T>::release(codebook), kelStatusUnknownKind);
    kind = 1;
}

}  // namespace
