// Products, sums and columns beside sums in extended precision, in both layouts.
#include "kels/matrix.h"

#include <cstring>

#include "support/forms.h"
#include "training/matrix/matrix.h"

namespace {

using namespace test;

constexpr auto matVec = forms(kelsMatVecMul_32f_D2, kelsMatVecMul_64f_D2);
constexpr auto matVecRows = forms(kelsMatVecMul_32f_D2L, kelsMatVecMul_64f_D2L);
constexpr auto vecMat = forms(kelsVecMatMul_32f_D2, kelsVecMatMul_64f_D2);
constexpr auto vecMatRows = forms(kelsVecMatMul_32f_D2L, kelsVecMatMul_64f_D2L);
constexpr auto affine = forms(kelsMatVecMulRows_32f_D2, kelsMatVecMulRows_64f_D2);
constexpr auto affineRows = forms(kelsMatVecMulRows_32f_D2L, kelsMatVecMulRows_64f_D2L);
constexpr auto sumColumn = forms(kelsSumColumn_32f_D2, kelsSumColumn_64f_D2);
constexpr auto sumColumnRows = forms(kelsSumColumn_32f_D2L, kelsSumColumn_64f_D2L);
constexpr auto sumRow = forms(kelsSumRow_32f_D2, kelsSumRow_64f_D2);
constexpr auto sumRowRows = forms(kelsSumRow_32f_D2L, kelsSumRow_64f_D2L);
constexpr auto addRows = forms(kelsAddNRows_32f_D2, kelsAddNRows_64f_D2);
constexpr auto addRowsRows = forms(kelsAddNRows_32f_D2L, kelsAddNRows_64f_D2L);
constexpr auto normalise = forms(kelsNormalizeColumn_32f_D2, kelsNormalizeColumn_64f_D2);
constexpr auto normaliseRows = forms(kelsNormalizeColumn_32f_D2L, kelsNormalizeColumn_64f_D2L);
constexpr auto normaliseInPlace = forms(kelsNormalizeColumn_32f_D2_I, kelsNormalizeColumn_64f_D2_I);
constexpr auto normaliseRowsInPlace = forms(kelsNormalizeColumn_32f_D2L_I, kelsNormalizeColumn_64f_D2L_I);

constexpr std::pair<int, int> kShapes[] = {{1, 1},  {2, 3},   {3, 2},   {4, 7},    {5, 15},   {7, 16},  {8, 17},
                                           {9, 31}, {13, 33}, {39, 39}, {117, 39}, {39, 117}, {6, 511}, {3, 1100}};

using Statuses = std::pair<KelStatus, KelStatus>;

// A sum in extended precision with the sum of its magnitudes.
template <class T>
struct Sum {
    Real value = 0, magnitude = 0;
    int terms = 0;
    void add(Real term) {
        value += term;
        magnitude += std::fabs(term);
        ++terms;
    }
    // Summed in double precision and rounded once.
    Real bound() const {
        const Real rounding = std::is_same_v<T, Kel32f> ? 0x1p-24L * std::fabs(value) : 0;
        return rounding + (terms + 2) * 0x1p-53L * magnitude;
    }
};

template <class T>
class Products : public testing::Test {
  protected:
    T any() { return random.template value<T>(6); }
    std::vector<T> vector(int n) { return random.template vector<T>(static_cast<std::size_t>(n), 6); }
    Matrix<T> matrix(int h, int w, int gap = 2) {
        return {h, w, gap, [this](int, int) { return any(); }};
    }
    // Results of a call in each layout: the same bits, and within the bounds of the sums.
    template <class Call, class Reference>
    void expectSums(int n, Call call, Reference reference) {
        Guarded<T> y(n), z(n);
        EXPECT_EQ(call(y.data(), z.data()), Statuses(kelStatusOk, kelStatusOk));
        EXPECT_TRUE(sameBits(y.vector(), z.vector()));
        for (int i = 0; i < n; ++i) {
            Sum<T> sum;
            reference(i, sum);
            EXPECT_TRUE(near(y[i], sum.value, sum.bound())) << i;
        }
    }
    Random random{5};
};
using FloatTypes = testing::Types<Kel32f, Kel64f>;
TYPED_TEST_SUITE(Products, FloatTypes);

TYPED_TEST(Products, OfVectorsAndSumsAreRoundedOnce) {
    using T = TypeParam;
    for (const auto& [h, w] : kShapes) {
        SCOPED_TRACE(testing::Message() << h << " x " << w);
        Matrix<T> a = this->matrix(h, w);
        const Guarded<T> x(this->vector(w)), left(this->vector(h));
        const auto product = [&](T* y, T* z) {
            return Statuses(matVec(a.d2(), a.step, x.data(), w, y, h), matVecRows(a.constD2l(), x.data(), w, z, h));
        };
        this->expectSums(h, product, [&](int i, auto& sum) {
            for (int j = 0; j < w; ++j) sum.add(Real{a(i, j)} * x[j]);
        });
        const auto fromLeft = [&](T* y, T* z) {
            return Statuses(vecMat(left.data(), h, a.d2(), a.step, y, w),
                            vecMatRows(left.data(), h, a.constD2l(), z, w));
        };
        this->expectSums(w, fromLeft, [&](int j, auto& sum) {
            for (int i = 0; i < h; ++i) sum.add(Real{a(i, j)} * left[i]);
        });
        const auto columns = [&](T* y, T* z) {
            return Statuses(sumColumn(a.d2(), a.step, h, y, w), sumColumnRows(a.constD2l(), h, z, w));
        };
        this->expectSums(w, columns, [&](int j, auto& sum) {
            for (int i = 0; i < h; ++i) sum.add(a(i, j));
        });
        const auto rows = [&](T* y, T* z) {
            return Statuses(sumRow(a.d2(), a.step, w, y, h), sumRowRows(a.constD2l(), w, z, h));
        };
        this->expectSums(h, rows, [&](int i, auto& sum) {
            for (int j = 0; j < w; ++j) sum.add(a(i, j));
        });
        std::vector<Kel32s> index(static_cast<std::size_t>(2 * h));
        for (auto& k : index) k = this->random.between(0, h - 1);
        const int offset = this->random.between(0, w - 1), n = 2 * h;
        const auto chosen = [&](T* y, T* z) {
            return Statuses(addRows(a.d2(), a.step, h, offset, index.data(), n, y, w - offset),
                            addRowsRows(a.constD2l(), h, offset, index.data(), n, z, w - offset));
        };
        this->expectSums(w - offset, chosen, [&](int j, auto& sum) {
            for (const int k : index) sum.add(a(k, offset + j));
        });
    }
}

// Bounds, edges of tiles, a NaN that stays in its row; and bits that depend on neither height, layout nor steps.
TYPED_TEST(Products, OfBlocksGiveEachRowTheSameBits) {
    using T = TypeParam;
    const Real u = std::is_same_v<T, Kel32f> ? 0x1p-24L : 0x1p-53L;
    for (const int inputs : {1, 2, 3, 5, 39, 128, 129, 351}) {
        for (const int outputs : {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 24, 31, 32, 33, 39, 48, 49, 65}) {
            const int height = this->random.between(1, 19), nan = this->random.between(0, height - 1);
            const bool offset = outputs % 2 != 0;
            Matrix<T> a = this->matrix(outputs, inputs, 1), b = this->matrix(height, inputs, 3), y(height, outputs, 2);
            const Guarded<T> given(this->vector(outputs));
            const T* const added = offset ? given.data() : nullptr;
            b(nan, inputs / 2) = b.d2l()[nan][inputs / 2] = std::numeric_limits<T>::quiet_NaN();
            SCOPED_TRACE(testing::Message() << inputs << " to " << outputs << ", " << height << " rows");
            ASSERT_EQ(affine(b.d2(), b.step, a.d2(), a.step, added, y.d2(), y.step, inputs, outputs, height),
                      kelStatusOk);
            ASSERT_EQ(affineRows(b.constD2l(), a.constD2l(), added, y.d2l(), inputs, outputs, height), kelStatusOk);
            EXPECT_TRUE(y.isWhole());
            for (int t = 0; t < height; ++t) {
                std::vector<T> alone(static_cast<std::size_t>(outputs));
                const T* const row = b.d2l()[t];
                affine(row, inputs, a.d2(), a.step, added, alone.data(), outputs, inputs, outputs, 1);
                for (int i = 0; i < outputs; ++i) {
                    ASSERT_TRUE(sameBits(y(t, i), alone[static_cast<std::size_t>(i)])) << t << ", " << i;
                    Sum<T> sum;
                    for (int k = 0; k < inputs; ++k) sum.add(Real{a(i, k)} * b(t, k));
                    if (offset) sum.add(given[i]);
                    ASSERT_TRUE(t == nan ? std::isnan(y(t, i))
                                         : near(y(t, i), sum.value, (inputs + 1) * u * sum.magnitude))
                        << t << ", " << i;
                }
            }
        }
    }
}

TYPED_TEST(Products, ColumnsAreNormalisedByTwoRoundedOperations) {
    using T = TypeParam;
    for (const auto& [h, w] : kShapes) {
        Matrix<T> a = this->matrix(h, w), y(h, w);
        const Guarded<T> mean(this->vector(w)), scale(this->vector(w));
        ASSERT_EQ(normalise(a.d2(), a.step, mean.data(), scale.data(), y.d2(), y.step, w, h), kelStatusOk);
        ASSERT_EQ(normaliseRows(a.constD2l(), mean.data(), scale.data(), y.d2l(), w, h), kelStatusOk);
        EXPECT_TRUE(y.isWhole());
        for (int i = 0; i < h; ++i) {
            for (int j = 0; j < w; ++j) {
                const T difference = opaque<T>(a(i, j) - mean[j]);
                ASSERT_TRUE(sameBits(y(i, j), opaque<T>(difference * scale[j]))) << i << ", " << j;
            }
        }
        ASSERT_EQ(normaliseInPlace(mean.data(), scale.data(), a.d2(), a.step, w, h), kelStatusOk);
        ASSERT_EQ(normaliseRowsInPlace(mean.data(), scale.data(), a.d2l(), w, h), kelStatusOk);
        EXPECT_TRUE(a.isWhole());
        EXPECT_TRUE(sameBits(std::vector<T>(a.d2l()[0], a.d2l()[0] + w), std::vector<T>(y.d2l()[0], y.d2l()[0] + w)));
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
            Guarded<Kel16s> y(h), z(h);
            Guarded<Kel32s> down(w), downRows(w), along(h), alongRows(h);
            const auto call = [&] {
                EXPECT_EQ(kelsMatVecMul_16s_D2Sfs(a.d2(), a.step, x.data(), w, y, h, sf), kelStatusOk);
                EXPECT_EQ(kelsMatVecMul_16s_D2LSfs(a.constD2l(), x.data(), w, z, h, sf), kelStatusOk);
                EXPECT_EQ(kelsSumColumn_16s32s_D2Sfs(a.d2(), a.step, h, down, w, sf), kelStatusOk);
                EXPECT_EQ(kelsSumColumn_16s32s_D2LSfs(a.constD2l(), h, downRows, w, sf), kelStatusOk);
                EXPECT_EQ(kelsSumRow_16s32s_D2Sfs(a.d2(), a.step, w, along, h, sf), kelStatusOk);
                EXPECT_EQ(kelsSumRow_16s32s_D2LSfs(a.constD2l(), w, alongRows, h, sf), kelStatusOk);
            };
            const auto check = [&] {
                for (int i = 0; i < h; ++i) {
                    Real product = 0, sum = 0;
                    for (int j = 0; j < w; ++j) {
                        product += Real(a(i, j)) * x[static_cast<std::size_t>(j)];
                        sum += a(i, j);
                    }
                    EXPECT_TRUE(y[i] == halfEven<Kel16s>(product, sf) && z[i] == y[i]) << i << ", scale " << sf;
                    EXPECT_TRUE(along[i] == halfEven<Kel32s>(sum, sf) && alongRows[i] == along[i]) << i;
                }
                for (int j = 0; j < w; ++j) {
                    Real sum = 0;
                    for (int i = 0; i < h; ++i) sum += a(i, j);
                    EXPECT_TRUE(down[j] == halfEven<Kel32s>(sum, sf) && downRows[j] == down[j]) << j;
                }
            };
            inEveryRoundingMode(call, check);
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
