// Construction of codebooks by splitting, and the search through the tree.
#include <bit>

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

TYPED_TEST(Codebooks, NegativeWeightsAndUnknownKinds) {
    using T = TypeParam;
    const T rows[] = {1, 2, 3, 4, 5, 6}, negative[] = {1, -1};
    Codebook<T>* made = nullptr;
    EXPECT_EQ(buildWeighted(&made, rows, negative, 2, 2, 3, 3, 4), kelStatusBadArg) << "before the kind";
    Owned<T> owned({1, 2, 3, 4, 5, 6}, {}, 2, 2, 3, kelCdbkExhaustive);
    Kel32s& kind = reinterpret_cast<Kel32s*>(owned.get())[4];
    EXPECT_EQ(std::exchange(kind, 4), kelCdbkExhaustive);
    EXPECT_EQ(release(owned.get()), kelStatusUnknownKind);
    kind = kelCdbkExhaustive;
}

// Its arguments do not tell the type.
template <class T>
constexpr auto getSize = std::is_same_v<T, Kel32f> ? kelsCdbkGetSize_32f : kelsCdbkGetSize_16s;

TYPED_TEST(Codebooks, BuildsInCallerMemory) {
    using T = TypeParam;
    Random random(37);
    for (int width = 1; width < 20; ++width) {
        const int step = width + 3, height = 21;
        const auto src = smallIntegers<T>(random, (height - 1) * step + width, -9, 9);
        int bytes = 0;
        ASSERT_EQ(getSize<T>(width, step, height, height, kelCdbkExhaustive, &bytes), kelStatusOk);
        std::vector<void*> memory((bytes + sizeof(void*) - 1) / sizeof(void*));
        auto* const codebook = reinterpret_cast<Codebook<T>*>(memory.data());
        ASSERT_EQ(buildInPlace(codebook, src.data(), width, step, height, height, kelCdbkExhaustive), kelStatusOk);
        Kel32s index = -1;
        for (int i = 0; i < height; ++i) {
            ASSERT_EQ(quantise(&src[i * step], step, &index, 1, codebook), kelStatusOk);
            ASSERT_TRUE(std::equal(&src[i * step], &src[i * step] + width, &src[index * step]));
        }
    }
}

}  // namespace
