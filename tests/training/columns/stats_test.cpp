// Statistics of columns, moments and covariances beside sums in extended precision.
#include "kels/stats.h"

#include "support/block.h"
#include "support/elements.h"

namespace {

using namespace test;

// Calls a function of either layout, which may take weights.
template <class T, class F, class... A>
KelStatus call(F f, Block<T>& x, const T* weights, A&&... rest) {
    if constexpr (std::is_invocable_v<F, T*, int, const T*, int, A...>) {
        return f(x.d2, x.step, weights, x.height, rest...);
    } else if constexpr (std::is_invocable_v<F, const T**, const T*, int, A...>) {
        return f(x.pointers.data(), weights, x.height, rest...);
    } else if constexpr (std::is_invocable_v<F, T*, int, int, A...>) {
        return f(x.d2, x.height, x.step, rest...);
    } else {
        return f(x.pointers.data(), x.height, rest...);
    }
}

// The sums of a column and of its magnitudes, to far below a rounding of T; exact for integers.
struct Moments {
    Real first = 0, second = 0, magnitude = 0, magnitude2 = 0;

    template <class T>
    Moments(const Block<T>& block, int column, const T* weights = nullptr) {
        for (int i = 0; i < block.height; ++i) {
            const Real x = block.at(i, column), w = weights != nullptr ? weights[i] : 1;
            first += w * x;
            second += w * x * x;
            magnitude += std::fabs(w * x);
            magnitude2 += std::fabs(w) * x * x;
        }
    }
};

// Calls body with random blocks of many shapes.
template <class T, class Body>
void forBlocks(Body body) {
    Random random(1);
    std::vector<std::pair<int, int>> shapes = {{1000, 39}, {std::is_integral_v<T> ? 140001 : 50, 1}};
    for (int width = 1; width <= 41; ++width) shapes.emplace_back(1 + width * 7 % 12, width);
    for (const int width : {13, 26, 39, 63, 64, 65, 128, 129, 260, 530}) {
        for (const int height : {2, 3, 4, 9, 130}) shapes.emplace_back(height, width);
    }
    for (const auto& [h, w] : shapes) {
        SCOPED_TRACE(testing::Message() << h << " x " << w);
        // The square of a sum of many extremes exceeds 64 bits.
        const auto value = [&, tall = h > 1000] { return tall ? T(random.between(0, 9) - 32768) : random.value<T>(4); };
        Block<T> x(h, w, w + (w + h) % 3, value);
        body(x, random, h, w);
    }
}

// A rounding for each addition, each product and each square.
template <class T, bool weighted = false, class Mean, class Var, class Both>
void expectColumns(Mean meanColumn, Var varColumn, Both meanVarColumn) {
    forBlocks<T>([=](auto& x, Random& random, int h, int w) {
        if (h < 2) return;
        const auto weights = weighted ? random.vector<T>(h) : std::vector<T>(h, 1), given = random.vector<T>(w, 2);
        std::vector<T> mean(w), var(given), m(w), v(w);
        EXPECT_EQ(call(meanColumn, x, weights.data(), mean.data(), w), kelStatusOk);
        EXPECT_EQ(call(varColumn, x, weights.data(), var.data(), var.data(), w), kelStatusOk);
        EXPECT_EQ(call(meanVarColumn, x, weights.data(), m.data(), v.data(), w), kelStatusOk);
        EXPECT_TRUE(sameBits(m, mean));
        const Real r = weighted ? 1 : static_cast<Kel32f>(1.0L / h),
                   r1 = weighted ? 1 : static_cast<Kel32f>(1.0L / (h - 1));
        const Real rows = weighted ? 1 : h, unit = (h + 4) * std::ldexp(1.0L, -std::numeric_limits<T>::digits);
        for (int j = 0; j < w; ++j) {
            const auto exact = Moments(x, j, weights.data());
            EXPECT_TRUE(near(mean[j], exact.first * r, unit * exact.magnitude * r)) << j;
            for (const auto& [got, c] : {std::pair(var[j], Real(given[j])), {v[j], Real(mean[j])}}) {
                const Real bound = unit * (exact.magnitude2 + 3 * rows * c * c) * r1;
                EXPECT_TRUE(near(got, (exact.second - rows * c * c) * r1, bound)) << j;
            }
        }
    });
}

TEST(ColumnStatistics, Float) {
    expectColumns<Kel32f>(kelsMeanColumn_32f_D2, kelsVarColumn_32f_D2, kelsMeanVarColumn_32f_D2);
    expectColumns<Kel32f>(kelsMeanColumn_32f_D2L, kelsVarColumn_32f_D2L, kelsMeanVarColumn_32f_D2L);
    expectColumns<Kel32f>(kelsMeanCol_32f_D2, kelsVarCol_32f_D2, kelsMeanVarCol_32f_D2);
    expectColumns<Kel32f>(kelsMeanCol_32f_D2L, kelsVarCol_32f_D2L, kelsMeanVarCol_32f_D2L);
}

TEST(ColumnStatistics, Weighted) {
    expectColumns<Kel32f, true>(kelsWeightedMeanColumn_32f_D2, kelsWeightedVarColumn_32f_D2,
                                kelsWeightedMeanVarColumn_32f_D2);
    expectColumns<Kel32f, true>(kelsWeightedMeanColumn_32f_D2L, kelsWeightedVarColumn_32f_D2L,
                                kelsWeightedMeanVarColumn_32f_D2L);
    expectColumns<Kel64f, true>(kelsWeightedMeanColumn_64f_D2, kelsWeightedVarColumn_64f_D2,
                                kelsWeightedMeanVarColumn_64f_D2);
    expectColumns<Kel64f, true>(kelsWeightedMeanColumn_64f_D2L, kelsWeightedVarColumn_64f_D2L,
                                kelsWeightedMeanVarColumn_64f_D2L);
}

// Sums to `unit` for each addition, rounded once more; whatever the width and the neighbours.
template <class T, class D, class Round, class Sums, class AddSums, class... Scale>
void expectSums(Round round, Real unit, Sums sums, AddSums addSums, Scale... scaleFactor) {
    forBlocks<T>([=](auto& x, Random& random, int h, int w) {
        Guarded<D> a(w), b(w), aI(random.vector<D>(w, 20)), bI(random.vector<D>(w, 30)), one(1), two(1);
        const auto oldA = aI.vector(), oldB = bI.vector();
        const auto added = [](D p, D q) { return std::is_integral_v<D> ? saturated<D>(Real(p) + q) : p + q; };
        EXPECT_EQ(sums(x.d2, x.step, h, a, b, w, scaleFactor...), kelStatusOk);
        EXPECT_EQ(addSums(x.d2, x.step, h, aI, bI, w, scaleFactor...), kelStatusOk);
        EXPECT_EQ(sums(x.d2 + w / 2, x.step, h, one, two, 1, scaleFactor...), kelStatusOk);
        EXPECT_TRUE(one[0] == a[w / 2] && two[0] == b[w / 2]);
        for (int j = 0; j < w; ++j) {
            const auto exact = Moments(x, j);
            EXPECT_TRUE(near(a[j], round(exact.first), h * unit * exact.magnitude)) << j;
            EXPECT_TRUE(near(b[j], round(exact.second), (h + 1) * unit * exact.second)) << j;
            EXPECT_TRUE(aI[j] == added(oldA[j], a[j]) && bI[j] == added(oldB[j], b[j])) << j;
        }
    });
}

TEST(ColumnStatistics, Sums) {
    expectSums<Kel32f, Kel32f>([](Real v) { return v; }, 0x1p-24L, kelsSumMeanVar_32f, kelsSumMeanVar_32f_I);
    expectSums<Kel16s, Kel32f>(nearest<Kel32f>, 0, kelsSumMeanVar_16s32f, kelsSumMeanVar_16s32f_I);
    for (const int sf : {INT_MIN, -20, -1, 0, 1, 4, 9, 31, 40, INT_MAX}) {
        const auto scaled = [=](Real v) { return halfEven<Kel32s>(v, sf); };
        expectSums<Kel16s, Kel32s>(scaled, 0, kelsSumMeanVar_16s32s_Sfs, kelsSumMeanVar_16s32s_ISfs, sf);
    }
}

// ---- 16 bits --------------------------------------------------------------------------------------------------------

TEST(ColumnStatistics, Fixed) {
    int sf = -3;
    forBlocks<Kel16s>([&](auto& x, auto&, int h, int w) {
        sf = sf == 18 ? -3 : sf + 3;
        const auto product = [](Real v, int n) { return static_cast<Kel64f>(v) * static_cast<Kel32f>(1.0L / n); };
        std::vector<Kel16s> mean(w), half(w), var(w), own(w);
        std::vector<Kel32s> mean32(w), own32(w), whole(w);
        for (int j = 0; j < w; ++j) {
            const auto sum = Moments(x, j);
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
                const auto run = [&] { EXPECT_EQ(call<Kel16s>(f, x, nullptr, a, b, w, scaleFactor...), kelStatusOk); };
                inEveryRoundingMode(run, [&] { EXPECT_TRUE(a.vector() == first && b.vector() == second) << sf; });
            };
            expect(oneArray);
            expect(rowPointers);
        };
        const auto expectMean = [&](auto f) {
            Guarded<Kel16s> m(w);
            inEveryRoundingMode([&] { EXPECT_EQ(call<Kel16s>(f, x, nullptr, m, w), kelStatusOk); },
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
    const Options inputs = {.scalars = {0.3, 0.7, 3, 1e-9, 0.6, -2, 14, INT_MIN, 0.9, INT_MAX}, .inPlace = true};
    expectElements([=](auto m, auto v, auto, int, auto... c) { return variance(m, v, c...); }, inputs, kelsNewVar_32f);
    expectElements([=](auto m, auto v, int, auto... c) { return variance(m, v, c...); }, inputs, kelsNewVar_32f_I);
    expectElements([=](auto m, auto v, auto, int, auto... c) { return whole(m, v, c...); }, inputs, kelsNewVar_32s_Sfs);
    expectElements([=](auto m, auto v, int, auto... c) { return whole(m, v, c...); }, inputs, kelsNewVar_32s_ISfs);
}

// ---- covariance -----------------------------------------------------------------------------------------------------

// Extended precision all the way, and one rounding to double; nothing is written between the rows.
template <class T, class D2, class D2L>
void expectCovariance(D2 blocks, D2L lists) {
    Random random(6);
    for (const auto& [h, w] : {std::pair(50, 39), {1, 1}, {2, 2}, {5, 3}, {20, 4}, {1, 5}, {2, 7}, {5, 8}, {20, 13}}) {
        Block<T> x(h, w, w + (w + h) % 3, [&] { return random.value<T>(4); });
        Guarded<T> m(random.vector<T>(w, 2));
        const int step = w + h % 2;
        const Kel64f val = 0.7;
        Guarded<Kel64f> matrix(random.vector<Kel64f>((w - 1) * step + w)), again(matrix.vector());
        const auto before = matrix.vector();
        auto expected = before;
        std::vector<Kel64f*> rows;
        for (int i = 0; i < w; ++i) rows.push_back(&again[i * step]);
        EXPECT_EQ(blocks(x.d2, x.step, h, m, matrix, w, step, val), kelStatusOk);
        EXPECT_EQ(lists(x.pointers.data(), h, m, rows.data(), w, val), kelStatusOk);
        for (int i = 0; i < w * w; ++i) {
            const int row = std::min(i / w, i % w), column = std::max(i / w, i % w);
            __float128 sum = 0, magnitude = 0;
            for (int k = 0; k < h; ++k) {
                const auto term = (__float128(x.at(k, row)) - m[column]) * (__float128(x.at(k, column)) - m[column]);
                sum += term;
                magnitude += term < 0 ? -term : term;
            }
            const auto exact = static_cast<Real>(before[row * step + column] + __float128(val) * sum);
            const Real bound =
                (h + 4) * 0x1p-64L * static_cast<Real>(magnitude) + std::fabs(exact) * (0x1p-53L + 0x1p-63L);
            const Kel64f got = expected[i / w * step + i % w] = matrix[i / w * step + i % w];
            EXPECT_TRUE(near(got, exact, bound)) << h << " x " << w << ": " << i;
        }
        EXPECT_EQ(matrix.vector(), expected);
        EXPECT_EQ(again.vector(), expected);
    }
}

TEST(Covariance, AboutTheMeanOfTheHigherColumn) {
    expectCovariance<Kel32f>(kelsAccCovarianceMatrix_32f64f_D2, kelsAccCovarianceMatrix_32f64f_D2L);
    expectCovariance<Kel16s>(kelsAccCovarianceMatrix_16s64f_D2, kelsAccCovarianceMatrix_16s64f_D2L);
}

}  // namespace
