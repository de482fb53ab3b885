// Split quantisation, its inverse, and vectors from plain tables.
#include <bit>
#include <functional>

#include "training/codebook/support.h"

namespace {

using namespace test;

// Indices in words, in bytes, and packed bit by bit.
constexpr auto splitToWords = forms(kelsSplitVQ_32f16s, kelsSplitVQ_16s16s);
constexpr auto splitToBytes = forms(kelsSplitVQ_32f8u, kelsSplitVQ_16s8u);
constexpr auto splitToBits = forms(kelsSplitVQ_32f1u, kelsSplitVQ_16s1u);
constexpr auto formFromWords = forms(kelsFormVectorVQ_16s32f, kelsFormVectorVQ_16s16s);
constexpr auto formFromBytes = forms(kelsFormVectorVQ_8u32f, kelsFormVectorVQ_8u16s);
constexpr auto formFromBits = forms(kelsFormVectorVQ_1u32f, kelsFormVectorVQ_1u16s);

// Codebooks of several widths, sizes and kinds, and rows to be cut.
template <class T>
struct Parts {
    std::vector<Owned<T>> owned;
    std::vector<Codebook<T>*> codebooks;
    int width = 0, bits = 0;

    Parts(Random& random, const std::vector<std::array<int, 3>>& shapes) {
        for (const auto& [part, size, kind] : shapes) {
            const auto rows = smallIntegers<T>(random, (kind == 1 ? size : 3 * size + 10) * part, -900, 900);
            owned.emplace_back(rows, std::vector<T>(), part, part, size, kind);
            codebooks.push_back(owned.back().get());
            width += part;
            bits += std::bit_width(size - 1u);
        }
    }
};

// Rows go through indices in every form; each row begins `spare` places or bits behind the one before.  What is
// expected comes from each codebook for itself.
template <class T>
void expectRoundTrip(Parts<T>& parts, Random& random, int height, int spare) {
    const int n = static_cast<int>(parts.owned.size()), step = parts.width + 3, wholeStep = n + spare;
    const int bitStep = std::max(1, parts.bits + spare), places = (height - 1) * step + parts.width;
    const Guarded<T> src(smallIntegers<T>(random, places, -900, 900));
    std::vector<Kel16s> indices((height - 1) * wholeStep + n, 77);
    std::vector<T> vectors(places, T(99));
    std::vector<Kel8u> bits((height * bitStep + 7) / 8);
    for (int r = 0; r < height; ++r) {
        int column = r * step, bit = r * bitStep;
        for (int k = 0; k < n; ++k) {
            const Owned<T>& codebook = parts.owned[k];
            Kel32s index = -1;
            ASSERT_EQ(quantise(src.data() + column, codebook.width(), &index, 1, codebook.get()), kelStatusOk);
            indices[r * wholeStep + k] = static_cast<Kel16s>(index);
            std::copy_n(&codebook.codevectors()[index * codebook.width()], codebook.width(), &vectors[column]);
            column += codebook.width();
            for (int left = std::bit_width(codebook.size() - 1u); left-- > 0; ++bit) {
                bits[bit / 8] |= (index >> left & 1) << (7 - bit % 8);
            }
        }
    }
    const auto expect = [&]<class I>(auto split, auto form, int rowStep, const std::vector<I>& expected, int before) {
        Guarded<I> packed(std::vector<I>(expected.size(), static_cast<I>(before)));
        ASSERT_EQ(split(src.data(), step, packed.data(), rowStep, height, parts.codebooks.data(), n), kelStatusOk);
        ASSERT_EQ(packed.vector(), expected);
        Guarded<T> dst(std::vector<T>(places, T(99)));
        ASSERT_EQ(form(packed.data(), rowStep, dst.data(), step, height, parts.codebooks.data(), n), kelStatusOk);
        ASSERT_EQ(dst.vector(), vectors) << n << " streams, " << height << " rows, " << spare << " spare places";
    };
    expect(splitToWords, formFromWords, wholeStep, indices, 77);
    expect(splitToBytes, formFromBytes, wholeStep, std::vector<Kel8u>(indices.begin(), indices.end()), 77);
    expect(splitToBits, formFromBits, bitStep, bits, 0xff);
}

TYPED_TEST(Codebooks, StoresIndicesAndBringsTheirVectorsBack) {
    Random random(43);
    Parts<TypeParam> all[] = {{random, {{3, 5, 1}}},
                              {random, {{1, 1, 1}}},
                              {random, {{2, 40, 1}, {3, 1, 1}, {4, 256, 3}}},
                              {random, {{1, 2, 2}, {8, 129, 2}, {5, 33, 1}, {2, 3, 3}}}};
    for (auto& parts : all) {
        for (const int height : {1, 3, 300}) {
            for (const int spare : {0, 1, 11}) expectRoundTrip(parts, random, height, spare);
        }
    }
}

TYPED_TEST(Codebooks, IndicesOutsideAreRefused) {
    using T = TypeParam;
    Random random(47);
    Parts<T> parts(random, {{2, 5, 1}, {1, 300, 1}});
    auto** const both = parts.codebooks.data();
    const T vectors[3] = {};
    T formed[6] = {9};
    for (const Kel16s bad : {300, -1}) {
        const Kel16s words[] = {4, 299, 4, bad};  // in the second row
        EXPECT_EQ(formFromWords(words, 2, formed, 3, 2, both, 2), kelStatusSize);
    }
    Kel8u bytes[2] = {0xff, 0xff};
    EXPECT_EQ(splitToBytes(vectors, 3, bytes, 2, 1, both, 2), kelStatusSize) << "300 codevectors in bytes";
    EXPECT_EQ(formFromBits(bytes, 12, formed, 3, 1, both, 2), kelStatusSize) << "index 7 of 5";
    EXPECT_TRUE(formed[0] == 9 && bytes[0] == 0xff);
}

// ---- plain tables --------------------------------------------------------------------------------------------------

// A form that takes as many index arrays as v counts; calls with an index outside, a width of 0, a null table.
template <class T, class I, class Form, std::size_t... v>
void checkPlain(Form form, std::index_sequence<v...>) {
    Random random(53);
    const int heights[] = {3, 100, 1}, widths[] = {2, 5, 1}, steps[] = {2, 7, 4}, zero[] = {2, 0, 1};
    const Guarded<T> first(random.vector<T>(6)), second(random.vector<T>(99 * 7 + 5)), third(random.vector<T>(1));
    const T *tables[] = {first.data(), second.data(), third.data()}, *holed[] = {tables[0], nullptr, tables[2]};
    I indices[sizeof...(v)][3];
    std::vector<T> expected;
    for (auto& row : indices) {
        for (int k = 0; k < 3; ++k) {
            row[k] = static_cast<I>(random.between(0, heights[k] - 1));
            const T* const from = tables[k] + row[k] * steps[k];
            expected.insert(expected.end(), from, from + widths[k]);
        }
    }
    Guarded<T> dst(expected.size());
    const auto run = [&](const T** from, const int* width, const int* step, int last) {
        indices[sizeof...(v) - 1][2] = static_cast<I>(last);
        return form(indices[v]..., from, dst, heights, width, step, 3);
    };
    ASSERT_EQ(run(tables, widths, steps, 0), kelStatusOk);
    for (const int beyond : {1, -1}) EXPECT_EQ(run(tables, widths, steps, beyond), kelStatusSize);
    EXPECT_EQ(run(tables, zero, steps, 0), kelStatusSize);
    EXPECT_EQ(run(holed, widths, zero, 0), kelStatusNullPtr);
    EXPECT_EQ(dst.vector(), expected);
}

// The forms for one, two and four arrays of indices.
template <class T, class I, class One, class Two, class Four>
void checkPlain(One one, Two two, Four four) {
    checkPlain<T, I>(one, std::make_index_sequence<1>());
    checkPlain<T, I>(two, std::make_index_sequence<2>());
    checkPlain<T, I>(four, std::make_index_sequence<4>());
}

TEST(VqForm, TakesRowsOfPlainTables) {
    checkPlain<Kel16s, Kel8u>(kelsFormVector_8u16s, kelsFormVector_2i_8u16s, kelsFormVector_4i_8u16s);
    checkPlain<Kel16s, Kel16s>(kelsFormVector_16s16s, kelsFormVector_2i_16s16s, kelsFormVector_4i_16s16s);
    checkPlain<Kel32f, Kel8u>(kelsFormVector_8u32f, kelsFormVector_2i_8u32f, kelsFormVector_4i_8u32f);
    checkPlain<Kel32f, Kel16s>(kelsFormVector_16s32f, kelsFormVector_2i_16s32f, kelsFormVector_4i_16s32f);
}

}  // namespace
