// Codebooks in bytes: what comes back is what was packed, and what was not packed is refused.
#include "kels/store.h"

#include <bit>
#include <charconv>
#include <cstring>
#include <string_view>
#include <tuple>

#include "training/codebook/support.h"

namespace {

using namespace test;

constexpr auto getPackedSize = forms(kelsCdbkGetPackedSize_32f, kelsCdbkGetPackedSize_16s);
constexpr auto pack = forms(kelsCdbkPack_32f, kelsCdbkPack_16s);
constexpr auto unpackAlloc = forms(kelsCdbkUnpackAlloc_32f, kelsCdbkUnpackAlloc_16s);

using Bytes = std::vector<Kel8u>;
template <class T>
using Book = std::unique_ptr<Codebook<T>, KelStatus (*)(Codebook<T>*)>;

template <class Record>
Bytes packed(const Record* codebook) {
    int size = 0;
    EXPECT_EQ(getPackedSize(codebook, &size), kelStatusOk);
    Guarded<Kel8u> block(size);
    EXPECT_EQ(pack(codebook, block.data(), size - 1), kelStatusSize);
    EXPECT_EQ(pack(codebook, block.data(), size), kelStatusOk);
    return block.vector();
}

// From an odd address, with a page behind the block that cannot be read.
template <class T>
Book<T> unpacked(const Bytes& bytes, KelStatus expected = kelStatusOk) {
    const Guarded<Kel8u> block(bytes);
    Codebook<T>* book = nullptr;
    EXPECT_EQ(unpackAlloc(&book, block.data(), static_cast<int>(bytes.size())), expected);
    EXPECT_EQ(book == nullptr, expected != kelStatusOk);
    return {book, release.of<Codebook<T>>()};
}

void expectSameNode(const KelCdbkNode& a, const KelCdbkNode& b, int width) {
    ASSERT_EQ(std::tie(a.index, a.count, a.isLeaf, a.depth, a.neighbourCount),
              std::tie(b.index, b.count, b.isLeaf, b.depth, b.neighbourCount));
    ASSERT_EQ(std::memcmp(&a.spread, &b.spread, sizeof a.spread), 0);
    ASSERT_EQ(std::memcmp(a.centroid, b.centroid, width * sizeof *a.centroid), 0);
    for (int i = 0; i < a.neighbourCount; ++i) ASSERT_EQ(a.neighbours[i]->index, b.neighbours[i]->index);
    if (a.isLeaf) return;
    expectSameNode(*a.left, *b.left, width);
    expectSameNode(*a.right, *b.right, width);
}

void expectSame(const KelCdbk_32f& a, const KelCdbk_32f& b) {
    EXPECT_EQ(std::tie(a.lastIndexOrDepth, a.cdbkSize, a.width, a.kind, a.flags),
              std::tie(b.lastIndexOrDepth, b.cdbkSize, b.width, b.kind, b.flags));
    EXPECT_EQ(b.indexBits, std::bit_width(a.cdbkSize - 1u));
    EXPECT_TRUE(std::equal(a.weights, a.weights + a.width, b.weights));
    ASSERT_EQ(a.treeRoot == nullptr, b.treeRoot == nullptr);
    if (a.treeRoot != nullptr) expectSameNode(*a.treeRoot, *b.treeRoot, a.width);
}

// Of all searches, for vectors around the codevectors.
template <class T>
void expectSameSearches(Codebook<T>* a, Codebook<T>* b, int width, Random& random) {
    const int height = 200;
    const Guarded<T> src(smallIntegers<T>(random, height * width, -2000, 2000));
    int size = 0;
    ASSERT_EQ(getCount(b, &size), kelStatusOk);
    const auto results = [&](Codebook<T>* book) {
        std::vector<Kel32s> indices(height + 3 * size);
        EXPECT_EQ(quantise(src.data(), width, indices.data(), height, book), kelStatusOk);
        for (int i = 0; i < 3; ++i) sort(src.data() + i * width, &indices[height + i * size], book, size);
        std::vector<T> codevectors(size * width);
        EXPECT_EQ(getCodevectors(book, codevectors.data(), width), kelStatusOk);
        return std::pair(indices, codevectors);
    };
    EXPECT_EQ(results(a), results(b));
}

template <class T>
void expectRoundTrip(Codebook<T>* codebook, int width, Random& random) {
    const Bytes bytes = packed(codebook);
    const Book<T> back = unpacked<T>(bytes);
    ASSERT_NE(back, nullptr);
    if constexpr (std::is_same_v<T, Kel32f>) expectSame(*codebook, *back);
    expectSameSearches<T>(codebook, back.get(), width, random);
    EXPECT_EQ(packed(back.get()), bytes);
    Bytes longer = bytes;
    longer.insert(longer.end(), 5, 0xff);
    EXPECT_EQ(packed(unpacked<T>(longer).get()), bytes);
}

TYPED_TEST(Codebooks, ComeBackFromBytes) {
    using T = TypeParam;
    Random random(71);
    for (const int width : {1, 2, 3, 4, 8, 13, 150}) {
        for (const int kind : {kelCdbkExhaustive, kelCdbkSplitWidest, kelCdbkSplitLargest}) {
            for (const int size : {1, 2, 3, 40, 300}) {
                if (width > 4 && size > 40) continue;
                const bool exhaustive = kind == kelCdbkExhaustive;
                const int step = width + 1, height = exhaustive ? size : 2 * size + 9;
                SCOPED_TRACE(testing::Message() << "width " << width << ", kind " << kind << ", size " << size);
                const auto rows = smallIntegers<T>(random, height * step, -2000, 2000);
                const auto weights = smallIntegers<T>(random, random.between(0, 1) ? width : 0, 1, 5);
                const Owned<T> owned(rows, weights, width, step, size, kind);
                ASSERT_GE(owned.status, 0);
                expectRoundTrip<T>(owned.get(), width, random);
                if (!exhaustive) continue;
                std::vector<std::max_align_t> memory(100000 / sizeof(std::max_align_t) + size * step);
                auto* const callers = reinterpret_cast<Codebook<T>*>(memory.data());
                ASSERT_EQ(buildInPlace(callers, rows.data(), width, step, size, size, kind), kelStatusOk);
                expectRoundTrip<T>(callers, width, random);
            }
        }
    }
}

// ---- blocks that are refused ---------------------------------------------------------------------------------------

template <class T>
Bytes smallTree() {
    Random random(73);
    return packed(Owned<T>(smallIntegers<T>(random, 80, -50, 50), {1, 3}, 2, 2, 7, kelCdbkSplitWidest).get());
}

TYPED_TEST(Codebooks, RefuseWhatIsDamagedCutOrForeign) {
    using T = TypeParam;
    const Bytes whole = smallTree<T>();
    for (std::size_t i = 0; i < whole.size(); ++i) {
        if (i > 0) unpacked<T>(Bytes(whole.begin(), whole.begin() + i), kelStatusBadArg);
        for (int bit = 0; bit < 8; ++bit) {
            Bytes damaged = whole;
            damaged[i] ^= 1 << bit;
            unpacked<T>(damaged, kelStatusBadArg);
            damaged[i] = static_cast<Kel8u>(bit * 36);
            if (damaged != whole) unpacked<T>(damaged, kelStatusBadArg);
        }
    }
    using Other = std::conditional_t<sizeof(T) == 2, Kel32f, Kel16s>;
    unpacked<Other>(whole, kelStatusBadArg);
    unpacked<T>(Bytes(1000, 0), kelStatusBadArg);
}

// The checksum of ECMA-182, bit by bit: of all bytes but the last eight, stored there.
void sign(Bytes& block) {
    uint64_t sum = ~uint64_t{0};
    for (std::size_t i = 0; i < block.size() - 8; ++i) {
        sum ^= block[i];
        for (int bit = 0; bit < 8; ++bit) sum = sum >> 1 ^ (sum & 1) * 0xc96c5795d7870f42u;
    }
    sum = ~sum;
    std::memcpy(&block[block.size() - 8], &sum, 8);
}

// A checksum keeps nobody from writing nonsense: whatever is accepted can be searched, packed and released.
TYPED_TEST(Codebooks, AreSafeWhoeverPackedThem) {
    using T = TypeParam;
    Random random(79);
    const Bytes whole = smallTree<T>();
    Bytes again = whole;
    sign(again);
    ASSERT_EQ(again, whole);
    const Guarded<T> src(smallIntegers<T>(random, 600, -50, 50));
    int accepted = 0;
    for (int round = 0; round < 6000; ++round) {
        Bytes forged = whole;
        for (int n = random.between(1, 3); n > 0; --n) {
            forged[random.between(8, static_cast<int>(whole.size()) - 9)] =
                static_cast<Kel8u>(random.between(0, 1) ? random.between(0, 8) : random.between(0, 255));
        }
        sign(forged);
        const Guarded<Kel8u> block(forged);
        Codebook<T>* book = nullptr;
        const KelStatus status = unpackAlloc(&book, block.data(), static_cast<int>(block.size()));
        ASSERT_TRUE(status == kelStatusOk || status == kelStatusBadArg) << status;
        ASSERT_EQ(book != nullptr, status == kelStatusOk);
        if (book == nullptr) continue;
        ++accepted;
        const Book<T> owned(book, release.of<Codebook<T>>());
        Kel32s indices[100];
        ASSERT_EQ(quantise(src.data(), 6, indices, 100, book), forged[20] <= 6 ? kelStatusOk : kelStatusSize);
        ASSERT_EQ(packed(book).size(), forged.size());
    }
    EXPECT_GT(accepted, 600);
}

// ---- blocks from elsewhere -----------------------------------------------------------------------------------------

// Four codevectors of the rows below.  All builds have to read these blocks and to write them again.
constexpr std::string_view kKeptFloats =
    "8b4b434233320d0a01000000aa00000003000000020000000400000000000000030000000000803f000040400000484300005743"
    "000000000000d0420000cc42000000000000803f0000000000000100020008000000206811480200000000001643060000003840"
    "0747020000000000c042040000000044ac4502000000000000410200000000000040010002000300030002000000030001000000"
    "02000100000073c46c05526b43aa";
constexpr std::string_view kKeptIntegers =
    "8b4b434231360d0a0100000096000000030000000200000004000000000000000300000001000300c800d7000000680066000000"
    "01000000000001000200080000002068114802000000000016430600000038400747020000000000c042040000000044ac450200"
    "0000000000410200000000000040010002000300030002000000030001000000020001000000533b94809fd6eb97";

TYPED_TEST(Codebooks, AreReadAndWrittenAlikeByAllBuilds) {
    using T = TypeParam;
    const std::vector<T> rows = {0, 0, 2, 0, 100, 0, 104, 0, 0, 100, 0, 108, 200, 210, 200, 220};
    const std::string_view kept = sizeof(T) == 2 ? kKeptIntegers : kKeptFloats;
    Bytes block(kept.size() / 2);
    for (std::size_t i = 0; i < block.size(); ++i) std::from_chars(&kept[2 * i], &kept[2 * i] + 2, block[i], 16);
    EXPECT_EQ(packed(Owned<T>(rows, {1, 3}, 2, 2, 4, kelCdbkSplitLargest).get()), block);
    const Book<T> book = unpacked<T>(block);
    const T vectors[] = {1, 1, 99, 3, -5, 101, 190, 230};
    Kel32s indices[4];
    ASSERT_EQ(quantise(vectors, 2, indices, 4, book.get()), kelStatusOk);
    const auto codevectors = std::vector<T>{1, 0, 102, 0, 0, 104, 200, 215};
    std::vector<T> found(8);
    ASSERT_EQ(getCodevectors(book.get(), found.data(), 2), kelStatusOk);
    for (int i = 0; i < 4; ++i) {
        EXPECT_TRUE(std::equal(&codevectors[2 * i], &codevectors[2 * i] + 2, &found[2 * indices[i]]));
    }
}

}  // namespace
