// Split quantisation, its inverse, and vectors from plain tables.
#include <array>
#include <bit>
#include <climits>
#include <numeric>
#include <string>
#include <tuple>

#include "training/vq_support.h"

namespace {

using test::Guarded;
using test::Owned;
using test::Random;
using test::Vq;

template <class T>
class VqSplit : public ::testing::Test {};
using ElementTypes = ::testing::Types<Kel32f, Kel16s>;
TYPED_TEST_SUITE(VqSplit, ElementTypes);

// Codebooks of several widths, sizes and kinds, and rows to be cut.
template <class T>
struct Parts {
    std::vector<Owned<T>> owned;
    std::vector<typename Vq<T>::Codebook*> codebooks;
    int width = 0, bits = 0;

    Parts(Random& random, const std::vector<std::array<int, 3>>& shapes) {
        for (const auto& [part, size, kind] : shapes) {
            const auto rows = test::smallIntegers<T>(random, (kind == 1 ? size : 3 * size + 10) * part, -900, 900);
            owned.emplace_back(rows, std::vector<T>(), part, part, size, kind);
            codebooks.push_back(owned.back().get());
            width += part;
            bits += static_cast<int>(std::bit_width(static_cast<unsigned>(size - 1)));
        }
    }
    int streams() const { return static_cast<int>(codebooks.size()); }
};

TYPED_TEST(VqSplit, StoresIndicesAndBringsTheirVectorsBack) {
    using T = TypeParam;
    Random random(43);
    const std::vector<std::vector<std::array<int, 3>>> cuts = {{{3, 5, 1}},
                                                               {{1, 1, 1}},
                                                               {{2, 40, 1}, {3, 1, 1}, {4, 256, 3}},
                                                               {{1, 2, 2}, {8, 129, 2}, {5, 33, 1}, {2, 3, 3}}};
    for (const auto& cut : cuts) {
        Parts<T> parts(random, cut);
        const int n = parts.streams();
        for (const int height : {1, 3, 300}) {
            for (const int spare : {0, 1, 11}) {
                SCOPED_TRACE(::testing::Message()
                             << n << " streams, " << height << " rows, " << spare << " spare places");
                const int step = parts.width + 3, wholeStep = n + spare, bitStep = std::max(1, parts.bits + spare);
                const Guarded<T> src(test::smallIntegers<T>(random, (height - 1) * step + parts.width, -900, 900));
                Guarded<Kel16s> words(static_cast<std::size_t>((height - 1) * wholeStep + n));
                Guarded<Kel8u> bytes(words.size()), packed(static_cast<std::size_t>((height * bitStep + 7) / 8));
                for (std::size_t i = 0; i < words.size(); ++i) words[i] = bytes[i] = 77;
                for (std::size_t i = 0; i < packed.size(); ++i) packed[i] = 0xff;
                auto** const codebooks = parts.codebooks.data();
                ASSERT_EQ(Vq<T>::split16s(src.data(), step, words, wholeStep, height, codebooks, n), 0);
                ASSERT_EQ(Vq<T>::split8u(src.data(), step, bytes, wholeStep, height, codebooks, n), 0);
                ASSERT_EQ(Vq<T>::split1u(src.data(), step, packed, bitStep, height, codebooks, n), 0);

                const Guarded<T> untouched(
                    std::vector<T>(static_cast<std::size_t>((height - 1) * step + parts.width), T(99)));
                std::vector<T> expected = untouched.vector();
                std::string bitString;
                for (int r = 0; r < height; ++r) {
                    int column = r * step;
                    for (int k = 0; k < n; ++k) {
                        const Owned<T>& codebook = parts.owned[static_cast<std::size_t>(k)];
                        Kel32s index = -1;
                        ASSERT_EQ(Vq<T>::quantise(src.data() + column, codebook.width(), &index, 1, codebook.get()), 0);
                        ASSERT_EQ(words[r * wholeStep + k], index);
                        ASSERT_EQ(bytes[r * wholeStep + k], index);
                        const auto vectors = codebook.codevectors();
                        std::copy_n(vectors.begin() + index * codebook.width(), codebook.width(),
                                    expected.begin() + column);
                        column += codebook.width();
                        for (int bit = std::bit_width(static_cast<unsigned>(codebook.size() - 1)) - 1; bit >= 0;
                             --bit) {
                            bitString += (index >> bit & 1) != 0 ? '1' : '0';
                        }
                    }
                    for (int i = 0; r + 1 < height && i < spare; ++i) ASSERT_EQ(words[r * wholeStep + n + i], 77);
                    bitString.resize(static_cast<std::size_t>((r + 1) * bitStep), '0');
                }
                bitString.resize(8 * packed.size(), '0');
                for (std::size_t i = 0; i < bitString.size(); ++i) {
                    ASSERT_EQ(packed[i / 8] >> (7 - i % 8) & 1, bitString[i] - '0') << "bit " << i;
                }

                Guarded<T> dst(untouched.vector());
                ASSERT_EQ(Vq<T>::form16s(words, wholeStep, dst, step, height, codebooks, n), 0);
                ASSERT_EQ(dst.vector(), expected);
                Guarded<T> dst8(untouched.vector()), dst1(untouched.vector());
                ASSERT_EQ(Vq<T>::form8u(bytes, wholeStep, dst8, step, height, codebooks, n), 0);
                ASSERT_EQ(dst8.vector(), expected);
                ASSERT_EQ(Vq<T>::form1u(packed, bitStep, dst1, step, height, codebooks, n), 0);
                ASSERT_EQ(dst1.vector(), expected);
            }
        }
    }
}

TYPED_TEST(VqSplit, ChecksInOrder) {
    using T = TypeParam;
    Random random(47);
    Parts<T> parts(random, {{2, 5, 1}, {1, 300, 1}});
    auto** const codebooks = parts.codebooks.data();
    typename Vq<T>::Codebook* holed[] = {codebooks[0], nullptr};
    const T src[8] = {};
    Kel16s words[8];
    Kel8u bytes[8];
    T dst[8];
    std::fill(words, words + 8, Kel16s(-7));
    std::fill(bytes, bytes + 8, Kel8u(7));
    const auto split = [&](const T* s, int step, Kel16s* d, int dstStep, int height, auto** c, int n) {
        return Vq<T>::split16s(s, step, d, dstStep, height, c, n);
    };
    EXPECT_EQ(split(src, 0, words, 2, 1, static_cast<typename Vq<T>::Codebook**>(nullptr), 2), kelStatusNullPtr);
    EXPECT_EQ(split(nullptr, 0, words, 2, 1, codebooks, 2), kelStatusNullPtr);
    EXPECT_EQ(split(src, 0, nullptr, 2, 1, codebooks, 2), kelStatusNullPtr);
    EXPECT_EQ(split(src, 0, words, 2, 1, holed, 2), kelStatusNullPtr);
    EXPECT_EQ(split(src, 3, words, 2, 1, holed, 0), kelStatusSize);
    EXPECT_EQ(split(src, 3, words, 0, 1, codebooks, 2), kelStatusSize);
    EXPECT_EQ(split(src, 3, words, 2, 0, codebooks, 2), kelStatusSize);
    EXPECT_EQ(split(src, 2, words, 2, 1, codebooks, 2), kelStatusSize);
    EXPECT_EQ(split(src, 3, words, 1, 1, codebooks, 2), kelStatusSize);
    EXPECT_EQ(Vq<T>::split8u(src, 3, bytes, 2, 1, codebooks, 2), kelStatusSize) << "300 codevectors in bytes";
    EXPECT_EQ(Vq<T>::split1u(src, 3, bytes, 11, 1, codebooks, 2), kelStatusSize) << "12 bits";
    EXPECT_EQ(words[0], -7);
    EXPECT_EQ(bytes[0], 7);
    EXPECT_EQ(Vq<T>::split1u(src, 3, bytes, 12, 1, codebooks, 2), 0);

    // One index too large, in the last row: nothing is written.
    std::fill(dst, dst + 8, T(9));
    const auto form = [&](const Kel16s* s, int step, T* d, int dstStep, int height, auto** c, int n) {
        return Vq<T>::form16s(const_cast<Kel16s*>(s), step, d, dstStep, height, c, n);
    };
    for (const Kel16s beyond : {300, -1}) {
        const Kel16s indices[] = {4, 299, 4, beyond};
        EXPECT_EQ(form(indices, 2, dst, 3, 2, codebooks, 2), kelStatusSize);
        EXPECT_EQ(std::count(dst, dst + 8, T(9)), 8);
    }
    EXPECT_EQ(form(nullptr, 0, dst, 3, 1, codebooks, 2), kelStatusNullPtr);
    EXPECT_EQ(form(words, 0, nullptr, 3, 1, codebooks, 2), kelStatusNullPtr);
    EXPECT_EQ(form(words, 0, dst, 3, 1, holed, 2), kelStatusNullPtr);
    EXPECT_EQ(form(words, 2, dst, 3, 1, holed, 0), kelStatusSize);
    EXPECT_EQ(form(words, 2, dst, 3, 0, codebooks, 2), kelStatusSize);
    EXPECT_EQ(form(words, 2, dst, 2, 1, codebooks, 2), kelStatusSize);
    EXPECT_EQ(form(words, 1, dst, 3, 1, codebooks, 2), kelStatusSize);
    EXPECT_EQ(Vq<T>::form1u(bytes, 11, dst, 3, 1, codebooks, 2), kelStatusSize);
    const Kel8u beyond[] = {0xff, 0xff};  // index 7 of 5
    EXPECT_EQ(Vq<T>::form1u(const_cast<Kel8u*>(beyond), 12, dst, 3, 1, codebooks, 2), kelStatusSize);
}

// ---- plain tables --------------------------------------------------------------------------------------------------

// A form that takes N index arrays.
template <class I, class T, std::size_t N, class Form>
void checkPlain(Form form) {
    Random random(53);
    const int heights[] = {3, 100, 1}, widths[] = {2, 5, 1}, steps[] = {2, 7, 4}, zero[] = {2, 0, 1};
    const Guarded<T> first(random.vector<T>(6)), second(random.vector<T>(99 * 7 + 5)), third(random.vector<T>(1));
    const T *tables[] = {first.data(), second.data(), third.data()}, *holed[] = {tables[0], nullptr, tables[2]};
    I indices[N][3];
    std::array<const I*, N> arrays;
    std::vector<T> expected;
    for (std::size_t v = 0; v < N; ++v) {
        arrays[v] = indices[v];
        for (int k = 0; k < 3; ++k) {
            indices[v][k] = static_cast<I>(random.between(0, heights[k] - 1));
            const T* const row = tables[k] + indices[v][k] * steps[k];
            expected.insert(expected.end(), row, row + widths[k]);
        }
    }
    Guarded<T> dst(expected.size());
    const auto run = [&](const T** from, T* to, const int* height, const int* width, const int* step, int n) {
        return std::apply([&](auto... index) { return form(index..., from, to, height, width, step, n); }, arrays);
    };
    ASSERT_EQ(run(tables, dst, heights, widths, steps, 3), 0);
    ASSERT_EQ(dst.vector(), expected);

    for (std::size_t i = 0; i < dst.size(); ++i) dst[i] = T(1);
    for (const int beyond : {1, -1}) {
        indices[N - 1][2] = static_cast<I>(beyond);
        EXPECT_EQ(run(tables, dst, heights, widths, steps, 3), kelStatusSize);
    }
    indices[N - 1][2] = 0;
    EXPECT_EQ(run(tables, dst, heights, zero, steps, 3), kelStatusSize);
    EXPECT_EQ(run(tables, dst, heights, widths, zero, 3), kelStatusSize);
    EXPECT_EQ(run(tables, dst, heights, widths, steps, 0), kelStatusSize);
    EXPECT_EQ(run(holed, dst, heights, widths, zero, 3), kelStatusNullPtr);
    EXPECT_EQ(run(nullptr, dst, heights, widths, steps, 0), kelStatusNullPtr);
    EXPECT_EQ(run(tables, nullptr, heights, widths, steps, 0), kelStatusNullPtr);
    EXPECT_EQ(run(tables, dst, nullptr, widths, steps, 0), kelStatusNullPtr);
    arrays[N - 1] = nullptr;
    EXPECT_EQ(run(tables, dst, heights, widths, steps, 0), kelStatusNullPtr);
    EXPECT_EQ(dst.vector(), std::vector<T>(expected.size(), T(1)));
}

TEST(VqForm, TakesRowsOfPlainTables) {
    checkPlain<Kel8u, Kel16s, 1>(kelsFormVector_8u16s);
    checkPlain<Kel16s, Kel16s, 1>(kelsFormVector_16s16s);
    checkPlain<Kel8u, Kel32f, 1>(kelsFormVector_8u32f);
    checkPlain<Kel16s, Kel32f, 1>(kelsFormVector_16s32f);
    checkPlain<Kel8u, Kel16s, 2>(kelsFormVector_2i_8u16s);
    checkPlain<Kel16s, Kel16s, 2>(kelsFormVector_2i_16s16s);
    checkPlain<Kel8u, Kel32f, 2>(kelsFormVector_2i_8u32f);
    checkPlain<Kel16s, Kel32f, 2>(kelsFormVector_2i_16s32f);
    checkPlain<Kel8u, Kel16s, 4>(kelsFormVector_4i_8u16s);
    checkPlain<Kel16s, Kel16s, 4>(kelsFormVector_4i_16s16s);
    checkPlain<Kel8u, Kel32f, 4>(kelsFormVector_4i_8u32f);
    checkPlain<Kel16s, Kel32f, 4>(kelsFormVector_4i_16s32f);
}

}  // namespace
