// Products, sums and columns of matrices in both layouts: bits of floats, exact integers, tables of rows.
#include "kels/matrix.h"

#include <cstring>

#include "support/forms.h"
#include "support/matrix.h"

namespace {

using namespace test;

constexpr auto affine = forms(kelsMatVecMulRows_32f_D2, kelsMatVecMulRows_64f_D2);
constexpr auto affineRows = forms(kelsMatVecMulRows_32f_D2L, kelsMatVecMulRows_64f_D2L);

constexpr std::pair<int, int> kShapes[] = {{1, 1},  {2, 3},   {3, 2},   {4, 7},    {5, 15},   {7, 16},  {8, 17},
                                           {9, 31}, {13, 33}, {39, 39}, {117, 39}, {39, 117}, {6, 511}, {3, 1100}};

template <class T>
class Products : public testing::Test {};
using FloatTypes = testing::Types<Kel32f, Kel64f>;
TYPED_TEST_SUITE(Products, FloatTypes);

// Edges of tiles, a NaN that stays in its row; and bits that depend on neither height, layout nor steps.
TYPED_TEST(Products, OfBlocksGiveEachRowTheSameBits) {
    using T = TypeParam;
    Random random(5);
    const auto any = [&](int, int) { return random.value<T>(6); };
    for (const int inputs : {1, 2, 3, 5, 39, 128, 129, 351}) {
        for (const int outputs : {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 24, 31, 32, 33, 39, 48, 49, 65}) {
            const int height = random.between(1, 19), nan = random.between(0, height - 1);
            Matrix<T> a(outputs, inputs, 1, any), b(height, inputs, 3, any), y(height, outputs, 2);
            const auto given = random.vector<T>(static_cast<std::size_t>(outputs), 6);
            const T* const added = outputs % 2 != 0 ? given.data() : nullptr;
            b(nan, inputs / 2) = b.d2l()[nan][inputs / 2] = std::numeric_limits<T>::quiet_NaN();
            SCOPED_TRACE(testing::Message() << inputs << " to " << outputs << ", " << height << " rows");
            ASSERT_EQ(affine(b.d2(), b.step, a.d2(), a.step, added, y.d2(), y.step, inputs, outputs, height),
                      kelStatusOk);
            ASSERT_EQ(affineRows(b.constD2l(), a.constD2l(), added, y.d2l(), inputs, outputs, height), kelStatusOk);
            EXPECT_TRUE(y.isWhole());
            for (int t = 0; t < height; ++t) {
                std::vector<T> alone(static_cast<std::size_t>(outputs));
                affine(b.d2l()[t], inputs, a.d2(), a.step, added, alone.data(), outputs, inputs, outputs, 1);
                for (int i = 0; i < outputs; ++i) {
                    ASSERT_TRUE(sameBits(y(t, i), alone[static_cast<std::size_t>(i)])) << t << ", " << i;
                    ASSERT_EQ(std::isnan(y(t, i)), t == nan) << t << ", " << i;
                }
            }
        }
    }
}

TEST(Sums, KeepWhatFloatsWouldLose) {
    const Kel32f column[] = {1e8f, 1, -1e8f};
    Kel32f down = 0, along = 0;
    EXPECT_EQ(kelsSumColumn_32f_D2(column, 1, 3, &down, 1), kelStatusOk);
    EXPECT_EQ(kelsSumRow_32f_D2(column, 3, 3, &along, 1), kelStatusOk);
    EXPECT_TRUE(down == 1 && along == 1);
}

// ---- 16 bits --------------------------------------------------------------------------------------------------------

TEST(Integers, AreSummedExactlyAndRoundedOnce) {
    Random random(3);
    for (const auto& [h, w] : kShapes) {
        SCOPED_TRACE(testing::Message() << h << " x " << w);
        Matrix<Kel16s> a(h, w, 3, [&](int, int) { return random.value<Kel16s>(); });
        const auto x = random.vector<Kel16s>(static_cast<std::size_t>(w));
        for (const int sf : {0, 1, 3, 14, 20, 31, 64, -2, -40, INT_MIN, INT_MAX}) {
            std::vector<Kel16s> y(h), z(h);
            std::vector<Kel32s> down(w), downRows(w), along(h), alongRows(h);
            EXPECT_EQ(kelsMatVecMul_16s_D2Sfs(a.d2(), a.step, x.data(), w, y.data(), h, sf), kelStatusOk);
            EXPECT_EQ(kelsMatVecMul_16s_D2LSfs(a.constD2l(), x.data(), w, z.data(), h, sf), kelStatusOk);
            EXPECT_EQ(kelsSumColumn_16s32s_D2Sfs(a.d2(), a.step, h, down.data(), w, sf), kelStatusOk);
            EXPECT_EQ(kelsSumColumn_16s32s_D2LSfs(a.constD2l(), h, downRows.data(), w, sf), kelStatusOk);
            EXPECT_EQ(kelsSumRow_16s32s_D2Sfs(a.d2(), a.step, w, along.data(), h, sf), kelStatusOk);
            EXPECT_EQ(kelsSumRow_16s32s_D2LSfs(a.constD2l(), w, alongRows.data(), h, sf), kelStatusOk);
            EXPECT_TRUE(z == y && downRows == down && alongRows == along);
            for (int i = 0; i < h; ++i) {
                Real product = 0, sum = 0;
                for (int j = 0; j < w; ++j) {
                    product += Real(a(i, j)) * x[static_cast<std::size_t>(j)];
                    sum += a(i, j);
                }
                EXPECT_EQ(y[i], halfEven<Kel16s>(product, sf)) << i << ", scale " << sf;
                EXPECT_EQ(along[i], halfEven<Kel32s>(sum, sf)) << i << ", scale " << sf;
            }
            for (int j = 0; j < w; ++j) {
                Real sum = 0;
                for (int i = 0; i < h; ++i) sum += a(i, j);
                EXPECT_EQ(down[j], halfEven<Kel32s>(sum, sf)) << j << ", scale " << sf;
            }
        }
    }
}

// More products of the largest magnitude than a double holds exactly, and a last bit among them.
TEST(Integers, StayExactInVeryLongRows) {
    constexpr int kLen = 33 << 20;
    const std::vector<Kel16s> ones(kLen, -32768);
    std::vector<Kel16s> odd = ones;
    odd[kLen - 2] = odd[1] = 1;
    Kel16s y = 0;
    // (33 * 2^20 - 2) * 2^30 - 2 * 2^15, whose quotient by 2^46 is just below the half between two integers.
    const Real exact = std::ldexp(Real(kLen - 2), 30) - std::ldexp(1.0L, 16);
    for (const int sf : {16, 17, 40, 46, 49, 50}) {
        EXPECT_EQ(kelsMatVecMul_16s_D2Sfs(ones.data(), kLen, odd.data(), kLen, &y, 1, sf), kelStatusOk);
        EXPECT_EQ(y, halfEven<Kel16s>(exact, sf)) << sf;
    }
}

// ---- tables of rows and columns -------------------------------------------------------------------------------------

template <class T>
class Tables : public testing::Test {};
using ColumnTypes = testing::Types<Kel16s, Kel32f, Kel64f>;
TYPED_TEST_SUITE(Tables, ColumnTypes);

TYPED_TEST(Tables, CopyBitsOfColumns) {
    using T = TypeParam;
    constexpr auto copy =
        forms(kelsCopyColumn_Indirect_16s_D2, kelsCopyColumn_Indirect_32f_D2, kelsCopyColumn_Indirect_64f_D2);
    constexpr auto copyRows =
        forms(kelsCopyColumn_Indirect_16s_D2L, kelsCopyColumn_Indirect_32f_D2L, kelsCopyColumn_Indirect_64f_D2L);
    using Limits = std::numeric_limits<T>;
    const auto special = [](int i, int j) { return j == 1 ? Limits::signaling_NaN() : static_cast<T>(10 * i + j); };
    Matrix<T> src(3, 5, 1, special), dst(3, 4);
    // A signalling NaN has its own bits only where it was never converted.
    for (int i = 0; i < 3; ++i) src(i, 1) = src.d2l()[i][1] = Limits::signaling_NaN();
    const Kel32s index[] = {4, 0, 1, 4};
    ASSERT_EQ(copy(src.d2(), src.step, index, dst.d2(), dst.step, 4, 3), kelStatusOk);
    ASSERT_EQ(copyRows(src.constD2l(), index, dst.d2l(), 4, 3), kelStatusOk);
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 4; ++j) {
            EXPECT_EQ(std::memcmp(dst.d2() + i * dst.step + j, src.d2() + i * src.step + index[j], sizeof(T)), 0);
            EXPECT_EQ(std::memcmp(dst.d2l()[i] + j, src.d2() + i * src.step + index[j], sizeof(T)), 0);
        }
    }
    // Too short a row comes before a negative index, and nothing is written.
    Matrix<T> untouched(3, 4);
    const Kel32s tooFar[] = {0, 6, -1, 0}, negative[] = {0, 5, -1, 0};
    EXPECT_EQ(copy(src.d2(), src.step, tooFar, untouched.d2(), untouched.step, 4, 3), kelStatusStep);
    EXPECT_EQ(copy(src.d2(), src.step, negative, untouched.d2(), untouched.step, 4, 3), kelStatusBadArg);
    EXPECT_EQ(copyRows(src.constD2l(), negative, untouched.d2l(), 4, 3), kelStatusBadArg);
    EXPECT_TRUE(untouched.isWhole() && untouched(2, 3) == Matrix<T>::kMark);
}

TEST(RowTables, NameRowsThatThereAre) {
    const Kel32f a[] = {1, 2, 3, 4};
    Kel32f y[] = {7, 7};
    for (const Kel32s bad : {-1, 2, INT_MAX, INT_MIN}) {
        const Kel32s index[] = {0, 1, bad};
        EXPECT_EQ(kelsAddNRows_32f_D2(a, 2, 2, 0, index, 3, y, 2), kelStatusBadArg);
    }
    const Kel32s index[] = {0};
    EXPECT_EQ(kelsAddNRows_32f_D2(a, INT_MAX, 1, INT_MAX, index, 1, y, 2), kelStatusStep);
    EXPECT_TRUE(y[0] == 7 && y[1] == 7);
}

}  // namespace
