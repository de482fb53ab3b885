#include "kels/stats.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <memory>

#include "support/checks.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

template <class T>
using Array = test::Guarded<T>;

// A block in both layouts: rows with a gap of what must not enter a sum between them, and row pointers in no order, each
// row ending at a guard page.
template <class T>
struct Block {
    Block(test::Random& random, int h, int w, int binades = 4)
        : height(h), width(w), step(w + (w + h) % 3), d2(static_cast<std::size_t>((h - 1) * step + w)) {
        const T poison = std::is_integral_v<T> ? T(31000) : std::numeric_limits<T>::quiet_NaN();
        for (std::size_t i = 0; i < d2.size(); ++i) {
            d2[i] = i % step < static_cast<std::size_t>(w) ? random.value<T>(binades) : poison;
        }
        pointers.resize(h);
        for (int i = 0; i < h; ++i) {
            if (i < 9) {
                rows.push_back(
                    std::make_unique<Array<T>>(std::vector<T>(d2.data() + i * step, d2.data() + i * step + w)));
            }
            pointers[i] = i < 9 ? rows[i]->data() : d2.data() + i * step;
        }
    }
    const T** d2l() { return pointers.data(); }
    T at(int i, int j) const { return d2[i * step + j]; }

    // Sums of term(row) over a column, and of its magnitude.
    template <class Term>
    std::pair<long double, long double> sum(Term term) const {
        long double total = 0, magnitude = 0;
        for (int i = 0; i < height; ++i) {
            total += term(i);
            magnitude += std::fabs(static_cast<long double>(term(i)));
        }
        return {total, magnitude};
    }

    int height, width, step;
    Array<T> d2;
    std::vector<std::unique_ptr<Array<T>>> rows;
    std::vector<const T*> pointers;
};

template <class Body>
void forShapes(Body body) {
    for (int width = 1; width <= 41; ++width) body(1 + width * 7 % 12, width);
    for (const int width : {13, 26, 39, 63, 64, 65, 128, 129, 260, 530}) {
        for (const int height : {2, 3, 4, 9, 130}) body(height, width);
    }
    body(1000, 39);
}

template <class T>
testing::AssertionResult near(T got, long double exact, long double bound) {
    if (std::fabs(got - exact) <= bound) return testing::AssertionSuccess();
    return testing::AssertionFailure() << got << " instead of " << exact << ", bound " << bound;
}

#define FORMS(name, suffix)              \
    static constexpr auto name##suffix = \
        std::get<sizeof(T) / 8>(std::tuple(&kels##name##_32f_##suffix, &kels##name##_64f_##suffix));
template <class T>
struct Weighted {
    FORMS(WeightedMeanColumn, D2)
    FORMS(WeightedMeanColumn, D2L)
    FORMS(WeightedVarColumn, D2)
    FORMS(WeightedVarColumn, D2L)
    FORMS(WeightedMeanVarColumn, D2)
    FORMS(WeightedMeanVarColumn, D2L)
};

TEST(ColumnStatistics, Float) {
    test::Random random(1);
    forShapes([&](int h, int w) {
        SCOPED_TRACE(testing::Message() << h << " x " << w);
        Block<Kel32f> x(random, h, w);
        Array<Kel32f> given(random.vector<Kel32f>(w, 2)), mean(w), var(given.vector()), m(w), v(w), m2(w), v2(w);
        const KelStatus one = h < 2 ? -6 : 0;
        EXPECT_EQ(kelsMeanColumn_32f_D2(x.d2, h, x.step, mean, w), 0);
        EXPECT_EQ(kelsMeanColumn_32f_D2L(x.d2l(), h, m2, w), 0);
        EXPECT_TRUE(test::sameBits(m2, mean));
        EXPECT_EQ(kelsVarColumn_32f_D2(x.d2, h, x.step, var, var, w), one);
        EXPECT_EQ(kelsVarColumn_32f_D2L(x.d2l(), h, given, v2, w), one);
        if (one == 0) {
            EXPECT_TRUE(test::sameBits(v2, var));
        }
        EXPECT_EQ(kelsMeanVarColumn_32f_D2(x.d2, h, x.step, m, v, w), one);
        EXPECT_EQ(kelsMeanVarColumn_32f_D2L(x.d2l(), h, m2, v2, w), one);
        if (one == 0) {
            EXPECT_TRUE(test::sameBits(m2, m));
            EXPECT_TRUE(test::sameBits(v2, v));
            EXPECT_TRUE(test::sameBits(m, mean));
        }
        const auto r = static_cast<Kel32f>(1.0L / h), r1 = static_cast<Kel32f>(1.0L / (h - 1));
        for (int j = 0; j < w; ++j) {
            const auto [first, magnitude] = x.sum([&](int i) { return x.at(i, j); });
            const auto second = x.sum([&](int i) { return static_cast<long double>(x.at(i, j)) * x.at(i, j); }).first;
            // Each of height additions, of the squares, and of four closing steps is wrong by 2^-24 of what is summed.
            const long double unit = (h + 4) * 0x1p-24L;
            EXPECT_TRUE(near(mean[j], first * r, unit * magnitude * r)) << j;
            if (h < 2) continue;
            const auto variance = [&](long double c) { return (second - h * c * c) * r1; };
            const auto bound = [&](long double c) { return unit * (second + 3 * h * c * c) * r1; };
            EXPECT_TRUE(near(var[j], variance(given[j]), bound(given[j]))) << j;
            EXPECT_TRUE(near(v[j], variance(m[j]), bound(m[j]))) << j;
            Kel32f alone[2];  // and a column does not depend on its neighbours
            EXPECT_EQ(kelsMeanVarColumn_32f_D2(x.d2 + j, h, x.step, alone, alone + 1, 1), 0);
            EXPECT_TRUE(test::sameBits(alone[0], m[j]) && test::sameBits(alone[1], v[j])) << j;
        }
    });
}

template <class T>
class WeightedColumns : public testing::Test {};
using FloatTypes = testing::Types<Kel32f, Kel64f>;
TYPED_TEST_SUITE(WeightedColumns, FloatTypes);

TYPED_TEST(WeightedColumns, Sums) {
    using T = TypeParam;
    using F = Weighted<T>;
    test::Random random(2);
    forShapes([&](int h, int w) {
        SCOPED_TRACE(testing::Message() << h << " x " << w);
        Block<T> x(random, h, w);
        Array<T> weight(random.vector<T>(h)), given(random.vector<T>(w, 2)), mean(w), var(given.vector()), m(w), v(w),
            other(w), other2(w);
        EXPECT_EQ(F::WeightedMeanColumnD2(x.d2, x.step, weight, h, mean, w), 0);
        EXPECT_EQ(F::WeightedMeanColumnD2L(x.d2l(), weight, h, other, w), 0);
        EXPECT_TRUE(test::sameBits(other, mean));
        EXPECT_EQ(F::WeightedVarColumnD2(x.d2, x.step, weight, h, var, var, w), 0);
        EXPECT_EQ(F::WeightedVarColumnD2L(x.d2l(), weight, h, given, other, w), 0);
        EXPECT_TRUE(test::sameBits(other, var));
        EXPECT_EQ(F::WeightedMeanVarColumnD2(x.d2, x.step, weight, h, m, v, w), 0);
        EXPECT_EQ(F::WeightedMeanVarColumnD2L(x.d2l(), weight, h, other, other2, w), 0);
        EXPECT_TRUE(test::sameBits(other, m));
        EXPECT_TRUE(test::sameBits(other2, v));
        EXPECT_TRUE(test::sameBits(m, mean));
        for (int j = 0; j < w; ++j) {
            using L = long double;
            const auto [first, magnitude] = x.sum([&](int i) { return L(weight[i]) * x.at(i, j); });
            const auto [second, magnitude2] = x.sum([&](int i) { return L(weight[i]) * x.at(i, j) * x.at(i, j); });
            const L unit = (h + 4) * std::ldexp(1.0L, -std::numeric_limits<T>::digits);
            EXPECT_TRUE(near(mean[j], first, unit * magnitude)) << j;
            const auto bound = [&](L c) { return unit * (magnitude2 + c * c); };
            EXPECT_TRUE(near(var[j], second - L(given[j]) * given[j], bound(given[j]))) << j;
            EXPECT_TRUE(near(v[j], second - L(m[j]) * m[j], bound(m[j]))) << j;
        }
    });
}

TEST(ColumnStatistics, SumsOfFloats) {
    test::Random random(3);
    forShapes([&](int h, int w) {
        Block<Kel32f> x(random, h, w);
        Array<Kel32f> sum(w), squares(w), sumI(random.vector<Kel32f>(w)), squaresI(random.vector<Kel32f>(w));
        const auto oldSum = sumI.vector(), oldSquares = squaresI.vector();
        EXPECT_EQ(kelsSumMeanVar_32f(x.d2, x.step, h, sum, squares, w), 0);
        EXPECT_EQ(kelsSumMeanVar_32f_I(x.d2, x.step, h, sumI, squaresI, w), 0);
        for (int j = 0; j < w; ++j) {
            const auto [first, magnitude] = x.sum([&](int i) { return x.at(i, j); });
            const auto second = x.sum([&](int i) { return static_cast<long double>(x.at(i, j)) * x.at(i, j); }).first;
            EXPECT_TRUE(near(sum[j], first, h * 0x1p-24L * magnitude)) << h << " x " << w << " " << j;
            EXPECT_TRUE(near(squares[j], second, (h + 1) * 0x1p-24L * second)) << h << " x " << w << " " << j;
            EXPECT_EQ(sumI[j], oldSum[j] + sum[j]);
            EXPECT_EQ(squaresI[j], oldSquares[j] + squares[j]);
        }
    });
}

// What the integer forms make of exact sums.
Kel64f product(int64_t sum, int n) {
    return static_cast<Kel64f>(sum) * static_cast<Kel32f>(1.0L / n);
}
template <class D>
D truncated(Kel64f v, int scaleFactor = 0) {
    const Kel64f scaled = std::trunc(std::ldexp(v, -scaleFactor));
    return static_cast<D>(std::clamp<Kel64f>(scaled, std::numeric_limits<D>::min(), std::numeric_limits<D>::max()));
}
Kel32s halfEven(int64_t v, int scaleFactor) {
    return static_cast<Kel32s>(std::clamp<long double>(
        std::nearbyint(std::ldexp(static_cast<long double>(v), -scaleFactor)), INT_MIN, INT_MAX));
}

void expectFixed(const Kel16s* d2, int step, const Kel16s** d2l, int h, int w, const std::vector<int64_t>& s1,
                 const std::vector<int64_t>& s2, int sf) {
    SCOPED_TRACE(testing::Message() << h << " x " << w << " scale " << sf);
    Array<Kel16s> mean(w), m16(w), v16(w), given(w);
    Array<Kel32s> m32(w), v32(w), whole(w);
    for (int j = 0; j < w; ++j) given[j] = truncated<Kel16s>(product(s1[j], h) / 2);
    for (const bool layout : {false, true}) {
        if (layout) {
            EXPECT_EQ(kelsMeanColumn_16s_D2L(d2l, h, mean, w), 0);
        } else if (d2 != nullptr) {
            test::inEveryRoundingMode([&] { EXPECT_EQ(kelsMeanColumn_16s_D2(d2, h, step, mean, w), 0); });
        } else {
            continue;
        }
        for (int j = 0; j < w; ++j) EXPECT_EQ(mean[j], truncated<Kel16s>(product(s1[j], h)));
        if (h < 2) continue;
        Array<Kel16s> var(given.vector());
        if (layout) {
            EXPECT_EQ(kelsVarColumn_16s_D2LSfs(d2l, h, var, var, w, sf), 0);
            EXPECT_EQ(kelsMeanVarColumn_16s_D2LSfs(d2l, h, m16, v16, w, sf), 0);
            EXPECT_EQ(kelsMeanVarColumn_16s32s_D2LSfs(d2l, h, m32, v32, w, sf), 0);
        } else {
            EXPECT_EQ(kelsVarColumn_16s_D2Sfs(d2, h, step, var, var, w, sf), 0);
            test::inEveryRoundingMode([&] { EXPECT_EQ(kelsMeanVarColumn_16s_D2Sfs(d2, h, step, m16, v16, w, sf), 0); });
            EXPECT_EQ(kelsMeanVarColumn_16s32s_D2Sfs(d2, h, step, m32, v32, w, sf), 0);
        }
        const auto expect = [&](int j, Kel32s mean32) {
            const auto squared = static_cast<long double>(s1[j]) * s1[j] / h;  // exact to far below the truncation
            const Kel64f centred = static_cast<Kel64f>(s2[j] - squared) * static_cast<Kel32f>(1.0L / (h - 1));
            EXPECT_EQ(mean32, truncated<Kel32s>(product(s1[j], h)));
            return centred;
        };
        for (int j = 0; j < w; ++j) {
            const int64_t centred = s2[j] - int64_t{h} * given[j] * given[j];
            EXPECT_EQ(var[j], truncated<Kel16s>(product(centred, h - 1), sf));
            EXPECT_EQ(v16[j], truncated<Kel16s>(expect(j, m16[j]), sf));
            EXPECT_EQ(v32[j], truncated<Kel32s>(expect(j, m32[j]), sf));
        }
        EXPECT_EQ(layout ? kelsMeanVarColumn_16s16s32s_D2L(d2l, h, m16, whole, w)
                         : kelsMeanVarColumn_16s16s32s_D2(d2, h, step, m16, whole, w),
                  0);
        for (int j = 0; j < w; ++j) {
            const auto squared = static_cast<int64_t>(static_cast<long double>(s1[j]) * s1[j] / h);
            EXPECT_EQ(m16[j], truncated<Kel16s>(product(s1[j], h)));
            EXPECT_EQ(whole[j], truncated<Kel32s>(product(s2[j] - squared, h - 1)));
        }
    }
}

TEST(ColumnStatistics, Fixed) {
    test::Random random(4);
    int scaleFactor = -3;
    forShapes([&](int h, int w) {
        Block<Kel16s> x(random, h, w);
        std::vector<int64_t> s1(w), s2(w);
        for (int j = 0; j < w; ++j) {
            for (int i = 0; i < h; ++i) s1[j] += x.at(i, j), s2[j] += int64_t{x.at(i, j)} * x.at(i, j);
        }
        scaleFactor = scaleFactor == 18 ? -3 : scaleFactor + 3;
        expectFixed(x.d2, x.step, x.d2l(), h, w, s1, s2, scaleFactor);
        Array<Kel32f> sum(w), squares(w), sumI(random.vector<Kel32f>(w, 20)), squaresI(random.vector<Kel32f>(w, 30));
        const auto oldSum = sumI.vector(), oldSquares = squaresI.vector();
        EXPECT_EQ(kelsSumMeanVar_16s32f(x.d2, x.step, h, sum, squares, w), 0);
        EXPECT_EQ(kelsSumMeanVar_16s32f_I(x.d2, x.step, h, sumI, squaresI, w), 0);
        for (int j = 0; j < w; ++j) {
            EXPECT_EQ(sum[j], static_cast<Kel32f>(s1[j]));
            EXPECT_EQ(squares[j], static_cast<Kel32f>(s2[j]));
            EXPECT_EQ(sumI[j], oldSum[j] + sum[j]);
            EXPECT_EQ(squaresI[j], oldSquares[j] + squares[j]);
        }
        for (const int sf : {INT_MIN, -20, -1, 0, 1, 4, 9, 31, 40, INT_MAX}) {
            Array<Kel32s> a(w), b(w), aI(random.vector<Kel32s>(w)), bI(random.vector<Kel32s>(w));
            const auto oldA = aI.vector(), oldB = bI.vector();
            EXPECT_EQ(kelsSumMeanVar_16s32s_Sfs(x.d2, x.step, h, a, b, w, sf), 0);
            EXPECT_EQ(kelsSumMeanVar_16s32s_ISfs(x.d2, x.step, h, aI, bI, w, sf), 0);
            for (int j = 0; j < w; ++j) {
                const int exponent = std::clamp(sf, -100, 100);
                EXPECT_EQ(a[j], halfEven(s1[j], exponent)) << h << " x " << w << " scale " << sf;
                EXPECT_EQ(b[j], halfEven(s2[j], exponent)) << h << " x " << w << " scale " << sf;
                EXPECT_EQ(aI[j], std::clamp<int64_t>(int64_t{oldA[j]} + a[j], INT_MIN, INT_MAX));
                EXPECT_EQ(bI[j], std::clamp<int64_t>(int64_t{oldB[j]} + b[j], INT_MIN, INT_MAX));
            }
        }
    });
}

TEST(ColumnStatistics, FixedSumsAreExactInTallBlocks) {
    const int h = (1 << 23) + 4097;  // odd sums of squares above 2^53
    const Kel16s low[] = {-32768, -32768, 32767}, high[] = {-32767, 32767, 32767};
    std::vector<const Kel16s*> rows(h, low);
    rows[h / 2] = rows[h - 1] = rows[0] = high;
    std::vector<int64_t> s1(3), s2(3);
    for (int j = 0; j < 3; ++j) {
        s1[j] = int64_t{h - 3} * low[j] + 3 * high[j];
        s2[j] = int64_t{h - 3} * low[j] * low[j] + 3 * int64_t{high[j]} * high[j];
    }
    expectFixed(nullptr, 0, rows.data(), h, 3, s1, s2, -12);
}

TEST(Moments, VarianceFromSums) {
    test::Random random(5);
    for (int n = 1; n < 70; ++n) {
        Array<Kel32f> mean(random.vector<Kel32f>(n)), var(random.vector<Kel32f>(n)), dst(n);
        std::vector<Kel32f> expected(n);
        for (int k = 0; k < n; ++k) expected[k] = (var[k] - mean[k] * mean[k] * 0.3f) * 0.7f;
        EXPECT_EQ(kelsNewVar_32f(mean, var, dst, n, 0.3f, 0.7f), 0);
        EXPECT_EQ(kelsNewVar_32f_I(mean, var, n, 0.3f, 0.7f), 0);
        EXPECT_TRUE(test::sameBits(dst, expected));
        EXPECT_TRUE(test::sameBits(var, expected));
        for (const int sf : {INT_MIN, -2, 0, 3, 14, INT_MAX}) {
            Array<Kel32s> m(random.vector<Kel32s>(n)), v(random.vector<Kel32s>(n)), d(n);
            for (int k = 0; k < n; k += 2) m[k] >>= 16;
            std::vector<Kel32s> truth(n);
            for (int k = 0; k < n; ++k) {
                const auto fm = static_cast<Kel32f>(m[k]), fv = static_cast<Kel32f>(v[k]);
                const Kel64f value = std::ldexp(Kel64f{(fv - fm * fm * 0.3f) * 0.7f}, -std::clamp(sf, -128, 150));
                truth[k] = std::fabs(value) < 0x1p31 ? static_cast<Kel32s>(value) : INT_MIN;
            }
            test::inEveryRoundingMode([&] { EXPECT_EQ(kelsNewVar_32s_Sfs(m, v, d, n, 0.3f, 0.7f, sf), 0); },
                                      [&] { EXPECT_EQ(d.vector(), truth) << n << " scale " << sf; });
            EXPECT_EQ(kelsNewVar_32s_ISfs(m, v, n, 0.3f, 0.7f, sf), 0);
            EXPECT_EQ(v.vector(), truth);
        }
    }
    const Kel32s zero = 0, one = 1, half = 1 << 30;
    Kel32s result = 7;
    EXPECT_EQ(kelsNewVar_32s_Sfs(&zero, &half, &result, 1, 1, 2, 0), 0);
    EXPECT_EQ(result, INT_MIN);  // 2^31
    EXPECT_EQ(kelsNewVar_32s_Sfs(&zero, &zero, &result, 1, 1, 1, INT_MIN), 0);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(kelsNewVar_32s_Sfs(&zero, &one, &result, 1, 1, NAN, 0), 0);
    EXPECT_EQ(result, INT_MIN);
}

template <class T>
void expectCovariance(int h, int w) {
    test::Random random(6);
    Block<T> x(random, h, w);
    const auto mean = random.vector<T>(w, 2);
    const int step = w + h % 2;
    const Kel64f val = 0.7, gap = 5;
    Array<Kel64f> matrix(std::vector<Kel64f>((w - 1) * step + w, gap)), lists(matrix.vector());
    const auto old = random.vector<Kel64f>(w * w);
    std::vector<Kel64f*> rows;
    for (int i = 0; i < w; ++i) {
        std::copy_n(&old[i * w], w, &matrix[i * step]);
        std::copy_n(&old[i * w], w, &lists[(w - 1 - i) * step]);
        rows.push_back(&lists[(w - 1 - i) * step]);
    }
    Array<T> m(mean);
    if constexpr (std::is_integral_v<T>) {
        EXPECT_EQ(kelsAccCovarianceMatrix_16s64f_D2(x.d2, x.step, h, m, matrix, w, step, val), 0);
        EXPECT_EQ(kelsAccCovarianceMatrix_16s64f_D2L(x.d2l(), h, m, rows.data(), w, val), 0);
    } else {
        EXPECT_EQ(kelsAccCovarianceMatrix_32f64f_D2(x.d2, x.step, h, m, matrix, w, step, val), 0);
        EXPECT_EQ(kelsAccCovarianceMatrix_32f64f_D2L(x.d2l(), h, m, rows.data(), w, val), 0);
    }
    for (int i = 0; i < w; ++i) {
        for (int j = i; j < w; ++j) {
            __float128 sum = 0, magnitude = 0;
            for (int row = 0; row < h; ++row) {
                const auto term = (__float128(x.at(row, i)) - mean[j]) * (__float128(x.at(row, j)) - mean[j]);
                sum += term;
                magnitude += term < 0 ? -term : term;
            }
            const auto exact = static_cast<long double>(old[i * w + j] + __float128(val) * sum);
            // Extended precision all the way, and one rounding to double.
            const long double bound =
                (h + 4) * 0x1p-64L * static_cast<long double>(magnitude) + std::fabs(exact) * (0x1p-53L + 0x1p-63L);
            EXPECT_TRUE(near(matrix[i * step + j], exact, bound)) << h << " x " << w << ": " << i << " " << j;
            EXPECT_EQ(matrix[j * step + i], matrix[i * step + j]);
            EXPECT_EQ(rows[i][j], matrix[i * step + j]);
            EXPECT_EQ(rows[j][i], matrix[i * step + j]);
        }
        if (i + 1 < w && step > w) {
            EXPECT_EQ(matrix[i * step + w], gap);
        }
    }
}

TEST(Covariance, AboutTheMeanOfTheHigherColumn) {
    for (int w = 1; w < 14; ++w) {
        for (const int h : {1, 2, 5, 20}) {
            expectCovariance<Kel32f>(h, w);
            expectCovariance<Kel16s>(h, w);
        }
    }
    expectCovariance<Kel32f>(50, 39);
}

TEST(Statistics, ChecksInTheirOrder) {
    const std::vector<KelStatus> stepFirst{-37, -8, -6}, sizeBeforeStep{-8, -6, -37}, stepBeforeSize{-8, -37, -6};
    Kel32f f[2] = {7, 7};
    Kel64f d[2] = {7, 7};
    Kel16s s[2] = {7, 7};
    Kel32s l[2] = {7, 7};
    const Kel32f* fRows[2] = {f, f};
    const Kel64f* dRows[2] = {d, d};
    const Kel16s* sRows[2] = {s, s};
    Kel64f* matrix[2] = {d, d};
    for (const auto form : {kelsMeanColumn_32f_D2, kelsMeanCol_32f_D2}) {
        test::expectBlockChecks<2, 1, 4>(form, {f, 2, 1, f, 1}, stepFirst);
    }
    for (const auto form : {kelsVarColumn_32f_D2, kelsVarCol_32f_D2}) {
        test::expectBlockChecks<2, 1, 5>(form, {f, 2, 1, f, f, 1}, stepFirst, 2);
    }
    for (const auto form : {kelsMeanVarColumn_32f_D2, kelsMeanVarCol_32f_D2}) {
        test::expectBlockChecks<2, 1, 5>(form, {f, 2, 1, f, f, 1}, sizeBeforeStep, 2);
    }
    for (const auto form : {kelsMeanColumn_32f_D2L, kelsMeanCol_32f_D2L}) {
        test::expectBlockChecks<-1, 1, 3>(form, {fRows, 2, f, 1}, stepFirst);
    }
    for (const auto form : {kelsVarColumn_32f_D2L, kelsVarCol_32f_D2L}) {
        test::expectBlockChecks<-1, 1, 4>(form, {fRows, 2, f, f, 1}, stepFirst, 2);
    }
    for (const auto form : {kelsMeanVarColumn_32f_D2L, kelsMeanVarCol_32f_D2L}) {
        test::expectBlockChecks<-1, 1, 4>(form, {fRows, 2, f, f, 1}, stepFirst, 2);
    }
    test::expectBlockChecks<1, 3, 5>(kelsWeightedMeanColumn_32f_D2, {f, 1, f, 2, f, 1}, stepBeforeSize);
    test::expectBlockChecks<1, 3, 5>(kelsWeightedMeanColumn_64f_D2, {d, 1, d, 2, d, 1}, stepBeforeSize);
    test::expectBlockChecks<1, 3, 6>(kelsWeightedVarColumn_32f_D2, {f, 1, f, 2, f, f, 1}, stepBeforeSize);
    test::expectBlockChecks<1, 3, 6>(kelsWeightedVarColumn_64f_D2, {d, 1, d, 2, d, d, 1}, stepBeforeSize);
    test::expectBlockChecks<1, 3, 6>(kelsWeightedMeanVarColumn_32f_D2, {f, 1, f, 2, f, f, 1}, stepBeforeSize);
    test::expectBlockChecks<1, 3, 6>(kelsWeightedMeanVarColumn_64f_D2, {d, 1, d, 2, d, d, 1}, stepBeforeSize);
    test::expectBlockChecks<-1, 2, 4>(kelsWeightedMeanColumn_32f_D2L, {fRows, f, 2, f, 1}, stepBeforeSize);
    test::expectBlockChecks<-1, 2, 4>(kelsWeightedMeanColumn_64f_D2L, {dRows, d, 2, d, 1}, stepBeforeSize);
    test::expectBlockChecks<-1, 2, 5>(kelsWeightedVarColumn_32f_D2L, {fRows, f, 2, f, f, 1}, stepBeforeSize);
    test::expectBlockChecks<-1, 2, 5>(kelsWeightedVarColumn_64f_D2L, {dRows, d, 2, d, d, 1}, stepBeforeSize);
    test::expectBlockChecks<-1, 2, 5>(kelsWeightedMeanVarColumn_32f_D2L, {fRows, f, 2, f, f, 1}, stepBeforeSize);
    test::expectBlockChecks<-1, 2, 5>(kelsWeightedMeanVarColumn_64f_D2L, {dRows, d, 2, d, d, 1}, stepBeforeSize);
    for (const auto form : {kelsSumMeanVar_32f, kelsSumMeanVar_32f_I}) {
        test::expectBlockChecks<1, 2, 5>(form, {f, 1, 2, f, f, 1}, stepFirst);
    }
    for (const auto form : {kelsSumMeanVar_16s32f, kelsSumMeanVar_16s32f_I}) {
        test::expectBlockChecks<1, 2, 5>(form, {s, 1, 2, f, f, 1}, stepFirst);
    }
    for (const auto form : {kelsSumMeanVar_16s32s_Sfs, kelsSumMeanVar_16s32s_ISfs}) {
        test::expectBlockChecks<1, 2, 5>(form, {s, 1, 2, l, l, 1, 0}, stepFirst);
    }
    test::expectBlockChecks<2, 1, 4>(kelsMeanColumn_16s_D2, {s, 2, 1, s, 1}, stepFirst);
    test::expectBlockChecks<-1, 1, 3>(kelsMeanColumn_16s_D2L, {sRows, 2, s, 1}, stepFirst);
    test::expectBlockChecks<2, 1, 5>(kelsVarColumn_16s_D2Sfs, {s, 2, 1, s, s, 1, 0}, sizeBeforeStep, 2);
    test::expectBlockChecks<-1, 1, 4>(kelsVarColumn_16s_D2LSfs, {sRows, 2, s, s, 1, 0}, sizeBeforeStep, 2);
    test::expectBlockChecks<2, 1, 5>(kelsMeanVarColumn_16s_D2Sfs, {s, 2, 1, s, s, 1, 0}, sizeBeforeStep, 2);
    test::expectBlockChecks<-1, 1, 4>(kelsMeanVarColumn_16s_D2LSfs, {sRows, 2, s, s, 1, 0}, sizeBeforeStep, 2);
    test::expectBlockChecks<2, 1, 5>(kelsMeanVarColumn_16s32s_D2Sfs, {s, 2, 1, l, l, 1, 0}, sizeBeforeStep, 2);
    test::expectBlockChecks<-1, 1, 4>(kelsMeanVarColumn_16s32s_D2LSfs, {sRows, 2, l, l, 1, 0}, sizeBeforeStep, 2);
    test::expectBlockChecks<2, 1, 5>(kelsMeanVarColumn_16s16s32s_D2, {s, 2, 1, s, l, 1}, sizeBeforeStep, 2);
    test::expectBlockChecks<-1, 1, 4>(kelsMeanVarColumn_16s16s32s_D2L, {sRows, 2, s, l, 1}, sizeBeforeStep, 2);
    test::expectBlockChecks<1, 2, 5>(kelsAccCovarianceMatrix_32f64f_D2, {f, 1, 2, f, d, 1, 1, 1}, sizeBeforeStep);
    test::expectBlockChecks<6, 2, 5>(kelsAccCovarianceMatrix_16s64f_D2, {s, 1, 2, s, d, 1, 1, 1}, sizeBeforeStep);
    test::expectBlockChecks<1, 2, 5>(kelsAccCovarianceMatrix_16s64f_D2, {s, 1, 2, s, d, 1, 1, 1}, sizeBeforeStep);
    test::expectBlockChecks<6, 2, 5>(kelsAccCovarianceMatrix_32f64f_D2, {f, 1, 2, f, d, 1, 1, 1}, sizeBeforeStep);
    test::expectBlockChecks<-1, 1, 4>(kelsAccCovarianceMatrix_32f64f_D2L, {fRows, 2, f, matrix, 1, 1}, sizeBeforeStep);
    test::expectBlockChecks<-1, 1, 4>(kelsAccCovarianceMatrix_16s64f_D2L, {sRows, 2, s, matrix, 1, 1}, sizeBeforeStep);
    for (const int n : {0, 1}) {
        test::expectForEachNull(kelsNewVar_32f, {f, f, f, n, 1, 1}, -8);
        test::expectForEachNull(kelsNewVar_32f_I, {f, f, n, 1, 1}, -8);
        test::expectForEachNull(kelsNewVar_32s_Sfs, {l, l, l, n, 1, 1, 0}, -8);
        test::expectForEachNull(kelsNewVar_32s_ISfs, {l, l, n, 1, 1, 0}, -8);
    }
    EXPECT_EQ(kelsNewVar_32f(f, f, f, 0, 1, 1), -6);
    EXPECT_EQ(kelsNewVar_32f_I(f, f, 0, 1, 1), -6);
    EXPECT_EQ(kelsNewVar_32s_Sfs(l, l, l, 0, 1, 1, 0), -6);
    EXPECT_EQ(kelsNewVar_32s_ISfs(l, l, 0, 1, 1, 0), -6);
    EXPECT_TRUE(f[0] == 7 && d[0] == 7 && s[0] == 7 && l[0] == 7);  // nothing has been written
}

// The older names compute the same.
TEST(Statistics, OlderNames) {
    Kel32f x[] = {1, 5, 2, 9}, mean[2], var[2], given[] = {1, 2};
    const Kel32f* rows[] = {x, x + 2};
    const auto expect = [&](KelStatus status, Kel32f a, Kel32f b, const Kel32f* v) {
        EXPECT_EQ(status, 0);
        EXPECT_TRUE(v[0] == a && v[1] == b) << v[0] << " " << v[1];
    };
    expect(kelsMeanCol_32f_D2(x, 2, 2, mean, 2), 1.5, 7, mean);
    expect(kelsMeanCol_32f_D2L(rows, 2, mean, 2), 1.5, 7, mean);
    expect(kelsVarCol_32f_D2(x, 2, 2, given, var, 2), 3, 98, var);
    expect(kelsVarCol_32f_D2L(rows, 2, given, var, 2), 3, 98, var);
    expect(kelsMeanVarCol_32f_D2(x, 2, 2, mean, var, 2), 0.5, 8, var);
    expect(kelsMeanVarCol_32f_D2L(rows, 2, mean, var, 2), 0.5, 8, var);
    expect(0, 1.5, 7, mean);
}

}  // namespace
