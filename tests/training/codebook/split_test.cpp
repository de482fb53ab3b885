// Split quantisation, its inverse, and vectors from plain tables.
#include <bit>

#include "training/codebook/support.h"

namespace {

using namespace test;

// By the element type T and the type or width of indices.
#define SPLIT(bits) std::get<sizeof(T) == 2>(std::tuple(&kelsSplitVQ_32f##bits, &kelsSplitVQ_16s##bits))
#define FORM(bits) std::get<sizeof(T) == 2>(std::tuple(&kelsFormVectorVQ_##bits##32f, &kelsFormVectorVQ_##bits##16s))

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

// Rows go through indices in every form; each row begins `spare` places or bits behind the one before.  What is expected
// comes from each codebook for itself.
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
            ASSERT_EQ(VQ(VQ)(src.data() + column, codebook.width(), &index, 1, codebook.get()), 0);
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
        ASSERT_EQ(split(src.data(), step, packed, rowStep, height, parts.codebooks.data(), n), 0);
        ASSERT_EQ(packed.vector(), expected);
        Guarded<T> dst(std::vector<T>(places, T(99)));
        ASSERT_EQ(form(packed, rowStep, dst, step, height, parts.codebooks.data(), n), 0);
        ASSERT_EQ(dst.vector(), vectors) << n << " streams, " << height << " rows, " << spare << " spare places";
    };
    expect(SPLIT(16s), FORM(16s), wholeStep, indices, 77);
    expect(SPLIT(8u), FORM(8u), wholeStep, std::vector<Kel8u>(indices.begin(), indices.end()), 77);
    expect(SPLIT(1u), FORM(1u), bitStep, bits, 0xff);
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

// The second part is so wide that its search takes memory.
TYPED_TEST(Codebooks, WritesNothingWhenMemoryIsOut) {
    using T = TypeParam;
    Random random(59);
    Parts<T> parts(random, {{2, 5, 1}, {200, 3, 1}});
    const int height = 300, n = 2;
    const Guarded<T> src(smallIntegers<T>(random, height * parts.width, -900, 900));
    const auto expect = [&]<class I>(auto split, int indexStep, I before) {
        failEachAllocation([&](int failing, const AllocationWatch& watch) {
            Guarded<I> dst(std::vector<I>(height * indexStep, before));
            const KelStatus status = split(src.data(), parts.width, dst, indexStep, height, parts.codebooks.data(), n);
            EXPECT_EQ(status, watch.calls() > failing ? kelStatusNoMemory : kelStatusOk);
            const auto touched = std::count_if(dst.data(), dst.data() + dst.size(), [=](I x) { return x != before; });
            EXPECT_EQ(status == kelStatusNoMemory, touched == 0) << "allocation " << failing;
            EXPECT_EQ(watch.unreleased(), 0);
        });
    };
    expect(SPLIT(16s), 2, Kel16s{77});
    expect(SPLIT(8u), 2, Kel8u{77});
    expect(SPLIT(1u), 5, Kel8u{0xff});
}

TYPED_TEST(Codebooks, ChecksInOrder) {
    using T = TypeParam;
    expectChecks<Places{-1, -1, 6}>({-8, -6}, 1, SPLIT(16s), SPLIT(8u), SPLIT(1u), FORM(16s), FORM(8u), FORM(1u));
    Random random(47);
    Parts<T> parts(random, {{2, 5, 1}, {1, 300, 1}});
    auto** const c = parts.codebooks.data();
    Codebook<T>* holed[] = {c[0], nullptr};
    const T src[8] = {};
    Kel16s words[8] = {4, 299, 4, 300, 4, -1};  // indices outside in the last rows
    Kel8u bits[] = {0xff, 0xff};                // index 7 of 5
    T dst[8] = {9};
    EXPECT_EQ(SPLIT(16s)(src, 0, words, 2, 1, holed, 2), kelStatusNullPtr);
    EXPECT_EQ(FORM(16s)(words, 0, dst, 2, 1, holed, 2), kelStatusNullPtr);
    // Steps and heights; indices outside; 300 codevectors in bytes, 12 bits in 11.
    for (const KelStatus status : {SPLIT(16s)(src, 3, words, 0, 1, c, 2), SPLIT(16s)(src, 3, words, 2, 0, c, 2),
                                   SPLIT(16s)(src, 2, words, 2, 1, c, 2), SPLIT(16s)(src, 3, words, 1, 1, c, 2),
                                   FORM(16s)(words, 0, dst, 3, 1, c, 2), FORM(16s)(words, 2, dst, 3, 0, c, 2),
                                   FORM(16s)(words, 2, dst, 2, 1, c, 2), FORM(16s)(words, 1, dst, 3, 1, c, 2),
                                   FORM(16s)(words, 2, dst, 3, 2, c, 2), FORM(16s)(words + 4, 2, dst, 3, 1, c, 2),
                                   SPLIT(8u)(src, 3, bits, 2, 1, c, 2), SPLIT(1u)(src, 3, bits, 11, 1, c, 2),
                                   FORM(1u)(bits, 11, dst, 3, 1, c, 2), FORM(1u)(bits, 12, dst, 3, 1, c, 2)}) {
        EXPECT_EQ(status, kelStatusSize);
    }
    EXPECT_TRUE(dst[0] == 9 && bits[0] == 0xff && words[0] == 4);
}

// ---- plain tables --------------------------------------------------------------------------------------------------

// A form that takes as many index arrays as v counts; calls with an index outside, a width or step of 0, a null table.
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
    ASSERT_EQ(run(tables, widths, steps, 0), 0);
    for (const int beyond : {1, -1}) EXPECT_EQ(run(tables, widths, steps, beyond), kelStatusSize);
    EXPECT_EQ(run(tables, zero, steps, 0), kelStatusSize);
    EXPECT_EQ(run(tables, widths, zero, 0), kelStatusSize);
    EXPECT_EQ(run(holed, widths, zero, 0), kelStatusNullPtr);
    EXPECT_EQ(dst.vector(), expected);
    expectChecks<Places{-1, -1, 5 + sizeof...(v)}>({-8, -6}, 1, form);
}

#define CHECK_PLAIN(I, T)                                                                \
    checkPlain<Kel##T, Kel##I>(kelsFormVector_##I##T, std::make_index_sequence<1>());    \
    checkPlain<Kel##T, Kel##I>(kelsFormVector_2i_##I##T, std::make_index_sequence<2>()); \
    checkPlain<Kel##T, Kel##I>(kelsFormVector_4i_##I##T, std::make_index_sequence<4>())
TEST(VqForm, TakesRowsOfPlainTables) {
    CHECK_PLAIN(8u, 16s);
    CHECK_PLAIN(16s, 16s);
    CHECK_PLAIN(8u, 32f);
    CHECK_PLAIN(16s, 32f);
}

}  // namespace
