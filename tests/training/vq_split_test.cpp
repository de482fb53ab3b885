// Split quantisation, its inverse, and vectors from plain tables.
#include <array>
#include <bit>
#include <tuple>

#include "support/checks.h"
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

int bitsOf(int size) {
    return static_cast<int>(std::bit_width(size - 1u));
}

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
            bits += bitsOf(size);
        }
    }
};

// Rows go through indices in every form; each row begins `spare` places or bits behind the one before.
template <class T>
void expectRoundTrip(Parts<T>& parts, Random& random, int height, int spare) {
    const int n = static_cast<int>(parts.owned.size()), step = parts.width + 3, wholeStep = n + spare;
    const int bitStep = std::max(1, parts.bits + spare), places = (height - 1) * step + parts.width;
    SCOPED_TRACE(::testing::Message() << n << " streams, " << height << " rows, " << spare << " spare places");
    auto** const codebooks = parts.codebooks.data();

    // What is expected, by each codebook for itself.
    const Guarded<T> src(test::smallIntegers<T>(random, places, -900, 900));
    std::vector<Kel16s> indices((height - 1) * wholeStep + n, 77);
    std::vector<T> vectors(places, T(99));
    std::vector<Kel8u> bits((height * bitStep + 7) / 8);
    for (int r = 0; r < height; ++r) {
        int column = r * step, bit = r * bitStep;
        for (int k = 0; k < n; ++k) {
            const Owned<T>& codebook = parts.owned[k];
            Kel32s index = -1;
            ASSERT_EQ(Vq<T>::quantise(src.data() + column, codebook.width(), &index, 1, codebook.get()), 0);
            indices[r * wholeStep + k] = static_cast<Kel16s>(index);
            const auto all = codebook.codevectors();
            std::copy_n(&all[index * codebook.width()], codebook.width(), &vectors[column]);
            column += codebook.width();
            for (int left = bitsOf(codebook.size()) - 1; left >= 0; --left, ++bit) {
                bits[bit / 8] |= (index >> left & 1) << (7 - bit % 8);
            }
        }
    }

    const auto expect = [&](auto split, auto form, int packedStep, auto& packed, const auto& expected) {
        ASSERT_EQ(split(src.data(), step, packed, packedStep, height, codebooks, n), 0);
        ASSERT_EQ(packed.vector(), expected);
        Guarded<T> dst(std::vector<T>(places, T(99)));
        ASSERT_EQ(form(packed, packedStep, dst, step, height, codebooks, n), 0);
        ASSERT_EQ(dst.vector(), vectors);
    };
    const std::vector<Kel8u> bytes(indices.begin(), indices.end());
    Guarded<Kel16s> words(std::vector<Kel16s>(indices.size(), 77));
    Guarded<Kel8u> narrow(std::vector<Kel8u>(indices.size(), 77)), packed(std::vector<Kel8u>(bits.size(), 0xff));
    expect(Vq<T>::split16s, Vq<T>::form16s, wholeStep, words, indices);
    expect(Vq<T>::split8u, Vq<T>::form8u, wholeStep, narrow, bytes);
    expect(Vq<T>::split1u, Vq<T>::form1u, bitStep, packed, bits);
}

TYPED_TEST(VqSplit, StoresIndicesAndBringsTheirVectorsBack) {
    using T = TypeParam;
    Random random(43);
    const std::vector<std::vector<std::array<int, 3>>> cuts = {{{3, 5, 1}},
                                                               {{1, 1, 1}},
                                                               {{2, 40, 1}, {3, 1, 1}, {4, 256, 3}},
                                                               {{1, 2, 2}, {8, 129, 2}, {5, 33, 1}, {2, 3, 3}}};
    for (const auto& cut : cuts) {
        Parts<T> parts(random, cut);
        for (const int height : {1, 3, 300}) {
            for (const int spare : {0, 1, 11}) expectRoundTrip(parts, random, height, spare);
        }
    }
}

TYPED_TEST(VqSplit, ChecksInOrder) {
    using T = TypeParam;
    using test::Places;
    test::expectChecks<Places{-1, -1, 6}>({-8, -6}, 1, Vq<T>::split16s, Vq<T>::split8u, Vq<T>::split1u, Vq<T>::form16s,
                                          Vq<T>::form8u, Vq<T>::form1u);
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
    const auto split = [&](int step, int dstStep, int height, auto** c, int n) {
        return Vq<T>::split16s(src, step, words, dstStep, height, c, n);
    };
    EXPECT_EQ(split(0, 2, 1, holed, 2), kelStatusNullPtr);
    for (const auto& [step, dstStep, height] : {std::array{3, 0, 1}, {3, 2, 0}, {2, 2, 1}, {3, 1, 1}}) {
        EXPECT_EQ(split(step, dstStep, height, codebooks, 2), kelStatusSize);
    }
    EXPECT_EQ(Vq<T>::split8u(src, 3, bytes, 2, 1, codebooks, 2), kelStatusSize) << "300 codevectors in bytes";
    EXPECT_EQ(Vq<T>::split1u(src, 3, bytes, 11, 1, codebooks, 2), kelStatusSize) << "12 bits";
    EXPECT_EQ(words[0], -7);
    EXPECT_EQ(bytes[0], 7);
    EXPECT_EQ(Vq<T>::split1u(src, 3, bytes, 12, 1, codebooks, 2), 0);

    // One index too large, in the last row: nothing is written.
    std::fill(dst, dst + 8, T(9));
    const auto form = [&](Kel16s* indices, int step, int dstStep, int height, auto** c, int n) {
        return Vq<T>::form16s(indices, step, dst, dstStep, height, c, n);
    };
    for (const Kel16s beyond : {300, -1}) {
        Kel16s indices[] = {4, 299, 4, beyond};
        EXPECT_EQ(form(indices, 2, 3, 2, codebooks, 2), kelStatusSize);
        EXPECT_EQ(std::count(dst, dst + 8, T(9)), 8);
    }
    EXPECT_EQ(form(words, 0, 3, 1, holed, 2), kelStatusNullPtr);
    for (const auto& [step, dstStep, height] : {std::array{0, 3, 1}, {2, 3, 0}, {2, 2, 1}, {1, 3, 1}}) {
        EXPECT_EQ(form(words, step, dstStep, height, codebooks, 2), kelStatusSize);
    }
    EXPECT_EQ(Vq<T>::form1u(bytes, 11, dst, 3, 1, codebooks, 2), kelStatusSize);
    Kel8u beyond[] = {0xff, 0xff};  // index 7 of 5
    EXPECT_EQ(Vq<T>::form1u(beyond, 12, dst, 3, 1, codebooks, 2), kelStatusSize);
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
    EXPECT_EQ(run(holed, dst, heights, widths, zero, 3), kelStatusNullPtr);
    EXPECT_EQ(dst.vector(), std::vector<T>(expected.size(), T(1)));
    test::expectChecks<test::Places{-1, -1, 5 + N}>({-8, -6}, 1, form);
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
