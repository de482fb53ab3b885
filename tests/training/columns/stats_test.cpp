// Statistics of columns of 16-bit integers: exact sums, and what is made of them.
#include "kels/stats.h"

#include "support/elements.h"
#include "support/matrix.h"

namespace {

using namespace test;

// Calls a function of either layout.
template <class F, class... A>
KelStatus call(F f, Matrix<Kel16s>& x, A&&... rest) {
    if constexpr (std::is_invocable_v<F, Kel16s*, int, int, A...>) return f(x.d2(), x.height, x.step, rest...);
    if constexpr (!std::is_invocable_v<F, Kel16s*, int, int, A...>) return f(x.constD2l(), x.height, rest...);
}

// The exact sums of a column and of its squares.
struct Moments {
    Real first = 0, second = 0;

    Moments(const Matrix<Kel16s>& block, int column) {
        for (int i = 0; i < block.height; ++i) {
            const Real x = block(i, column);
            first += x;
            second += x * x;
        }
    }
};

// Calls body with random blocks of many shapes.
template <class Body>
void forBlocks(Body body) {
    Random random(1);
    std::vector<std::pair<int, int>> shapes = {{1000, 39}, {140001, 1}};
    for (int width = 1; width <= 41; ++width) shapes.emplace_back(1 + width * 7 % 12, width);
    for (const int width : {13, 26, 39, 63, 64, 65, 128, 129, 260, 530}) {
        for (const int height : {2, 3, 4, 9, 130}) shapes.emplace_back(height, width);
    }
    for (const auto& [h, w] : shapes) {
        SCOPED_TRACE(testing::Message() << h << " x " << w);
        // The square of a sum of many extremes exceeds 64 bits.
        const auto value = [&, tall = h > 1000](int, int) {
            return tall ? Kel16s(random.between(0, 9) - 32768) : random.value<Kel16s>();
        };
        Matrix<Kel16s> x(h, w, (w + h) % 3, value);
        body(x, random, h, w);
    }
}

// The order of rows decides alone: a column by itself, among others and in either layout gives the same bits.
TEST(ColumnStatistics, FloatsDependOnTheirColumnAlone) {
    Random random(2);
    for (const int width : {1, 7, 16, 39, 130, 530}) {
        constexpr int kHeight = 37;
        Matrix<Kel32f> x(kHeight, width, 3, [&](int, int) { return random.value<Kel32f>(4); });
        std::vector<Kel32f> mean(width), var(width), meanL(width), varL(width);
        Kel32f oneMean, oneVar;
        const int place = width / 2;
        EXPECT_EQ(kelsMeanVarColumn_32f_D2(x.d2(), kHeight, x.step, mean.data(), var.data(), width), kelStatusOk);
        EXPECT_EQ(kelsMeanVarColumn_32f_D2L(x.constD2l(), kHeight, meanL.data(), varL.data(), width), kelStatusOk);
        EXPECT_EQ(kelsMeanVarColumn_32f_D2(x.d2() + place, kHeight, x.step, &oneMean, &oneVar, 1), kelStatusOk);
        EXPECT_TRUE(sameBits(mean, meanL) && sameBits(var, varL)) << width;
        EXPECT_TRUE(oneMean == mean[place] && oneVar == var[place]) << width;
    }
}

// Exact sums, rounded once; whatever the width and the neighbours.
template <class D, class Round, class Sums, class AddSums, class... Scale>
void expectSums(Round round, Sums sums, AddSums addSums, Scale... scaleFactor) {
    forBlocks([=](auto& x, Random& random, int h, int w) {
        const auto oldA = random.vector<D>(w, 20), oldB = random.vector<D>(w, 30);
        std::vector<D> a(w), b(w), aI = oldA, bI = oldB;
        const auto added = [](D p, D q) { return std::is_integral_v<D> ? saturated<D>(Real(p) + q) : p + q; };
        EXPECT_EQ(sums(x.d2(), x.step, h, a.data(), b.data(), w, scaleFactor...), kelStatusOk);
        EXPECT_EQ(addSums(x.d2(), x.step, h, aI.data(), bI.data(), w, scaleFactor...), kelStatusOk);
        for (int j = 0; j < w; ++j) {
            const Moments exact(x, j);
            EXPECT_TRUE(a[j] == round(exact.first) && b[j] == round(exact.second)) << j;
            EXPECT_TRUE(aI[j] == added(oldA[j], a[j]) && bI[j] == added(oldB[j], b[j])) << j;
        }
    });
}

TEST(ColumnStatistics, Sums) {
    expectSums<Kel32f>(nearest<Kel32f>, kelsSumMeanVar_16s32f, kelsSumMeanVar_16s32f_I);
    for (const int sf : {INT_MIN, -20, -1, 0, 1, 4, 9, 31, 40, INT_MAX}) {
        const auto scaled = [=](Real v) { return halfEven<Kel32s>(v, sf); };
        expectSums<Kel32s>(scaled, kelsSumMeanVar_16s32s_Sfs, kelsSumMeanVar_16s32s_ISfs, sf);
    }
}

// ---- 16 bits --------------------------------------------------------------------------------------------------------

TEST(ColumnStatistics, Fixed) {
    int sf = -3;
    forBlocks([&](auto& x, auto&, int h, int w) {
        sf = sf == 18 ? -3 : sf + 3;
        const auto product = [](Real v, int n) { return static_cast<Kel64f>(v) * static_cast<Kel32f>(1.0L / n); };
        std::vector<Kel16s> mean(w), half(w), var(w), own(w);
        std::vector<Kel32s> mean32(w), own32(w), whole(w);
        for (int j = 0; j < w; ++j) {
            const Moments sum(x, j);
            const Real squared = sum.first * sum.first / h;  // exact to far below the truncation
            mean32[j] = mean[j] = saturated<Kel16s>(std::trunc(product(sum.first, h)));
            half[j] = static_cast<Kel16s>(mean[j] / 2);
            const auto scaled = [&](Real v) { return std::trunc(test::scaled(product(v, h - 1), sf)); };
            var[j] = saturated<Kel16s>(scaled(sum.second - Real(h) * half[j] * half[j]));
            own[j] = saturated<Kel16s>(scaled(sum.second - squared));
            own32[j] = saturated<Kel32s>(scaled(sum.second - squared));
            whole[j] = saturated<Kel32s>(std::trunc(product(sum.second - std::trunc(squared), h - 1)));
        }
        // Both layouts give the first and the second result, or have the first one given.
        const auto expectBoth = [&](const auto& first, const auto& second, auto oneArray, auto rowPointers,
                                    auto... scaleFactor) {
            const auto expect = [&](auto f) {
                Guarded a(first), b(second);
                std::fill_n(b.data(), w, 7);
                const auto run = [&] { EXPECT_EQ(call(f, x, a, b, w, scaleFactor...), kelStatusOk); };
                inEveryRoundingMode(run, [&] { EXPECT_TRUE(a.vector() == first && b.vector() == second) << sf; });
            };
            expect(oneArray);
            expect(rowPointers);
        };
        const auto expectMean = [&](auto f) {
            Guarded<Kel16s> m(w);
            inEveryRoundingMode([&] { EXPECT_EQ(call(f, x, m, w), kelStatusOk); },
                                [&] { EXPECT_EQ(m.vector(), mean); });
        };
        expectMean(kelsMeanColumn_16s_D2);
        expectMean(kelsMeanColumn_16s_D2L);
        if (h < 2) return;
        expectBoth(half, var, kelsVarColumn_16s_D2Sfs, kelsVarColumn_16s_D2LSfs, sf);
        expectBoth(mean, own, kelsMeanVarColumn_16s_D2Sfs, kelsMeanVarColumn_16s_D2LSfs, sf);
        expectBoth(mean32, own32, kelsMeanVarColumn_16s32s_D2Sfs, kelsMeanVarColumn_16s32s_D2LSfs, sf);
        expectBoth(mean, whole, kelsMeanVarColumn_16s16s32s_D2, kelsMeanVarColumn_16s16s32s_D2L);
    });
}

TEST(Moments, VarianceFromSums) {
    const auto variance = [](auto m, auto v, Kel32f p, Kel32f q) {
        return (Kel32f(v) - Kel32f(m) * Kel32f(m) * p) * q;
    };
    const auto whole = [=](Kel32s mean, Kel32s var, Kel32f p, Kel32f q, int sf) {
        const Real value = scaled(variance(mean, var, p, q), std::clamp(sf, -128, 150));
        return std::fabs(value) < 0x1p31L ? static_cast<Kel32s>(value) : INT_MIN;  // above, too
    };
    const Options inputs = {.scalars = {0.3, 0.7, 3, 1e-9, 0.6, -2, 14, INT_MIN, 0.9, INT_MAX}};
    expectElements([=](auto m, auto v, auto, int, auto... c) { return variance(m, v, c...); }, inputs, kelsNewVar_32f);
    expectElements([=](auto m, auto v, int, auto... c) { return variance(m, v, c...); }, inputs, kelsNewVar_32f_I);
    expectElements([=](auto m, auto v, auto, int, auto... c) { return whole(m, v, c...); }, inputs, kelsNewVar_32s_Sfs);
    expectElements([=](auto m, auto v, int, auto... c) { return whole(m, v, c...); }, inputs, kelsNewVar_32s_ISfs);
}

}  // namespace
