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
using L = long double;

// A block in both layouts: rows with a gap between them of what must not enter a sum, and row pointers, some of them to
// rows elsewhere that end at a guard page.
template <class T>
struct Block {
    Block(test::Random& random, int h, int w) : height(h), width(w), step(w + (w + h) % 3), d2((h - 1) * step + w) {
        const T poison = std::is_integral_v<T> ? T(31000) : std::numeric_limits<T>::quiet_NaN();
        for (int i = 0; i < (h - 1) * step + w; ++i) d2[i] = i % step < w ? random.value<T>(4) : poison;
        for (int i = 0; i < h; ++i) {
            if (i < 9) rows.push_back(std::make_unique<Array<T>>(std::vector<T>(&d2[i * step], &d2[i * step] + w)));
            pointers.push_back(i < 9 ? rows[i]->data() : &d2[i * step]);
        }
    }
    const T** d2l() { return pointers.data(); }
    T at(int i, int j) const { return d2[i * step + j]; }

    // The sums of column j and of its magnitudes, to far below a rounding of T.
    struct Moments {
        L first = 0, second = 0, magnitude = 0, magnitude2 = 0;
    };
    Moments moments(int j, const T* weights = nullptr) const {
        Moments m;
        for (int i = 0; i < height; ++i) {
            const L x = at(i, j), w = weights != nullptr ? weights[i] : 1;
            m = {m.first + w * x, m.second + w * x * x, m.magnitude + std::fabs(w * x),
                 m.magnitude2 + std::fabs(w) * x * x};
        }
        return m;
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

using test::near;

template <class T>
void same(KelStatus status, const Array<T>& got, const Array<T>& expected) {
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(test::sameBits(got, expected));
}

// Sums within a rounding of 2^-24 for each addition and each square; what is made of them, and other forms, to the bit.
TEST(ColumnStatistics, Float) {
    test::Random random(1);
    forShapes([&](int h, int w) {
        SCOPED_TRACE(testing::Message() << h << " x " << w);
        Block<Kel32f> x(random, h, w);
        using A = Array<Kel32f>;
        A s1(w), s2(w), i1(random.vector<Kel32f>(w)), i2(random.vector<Kel32f>(w)), mean(w), m(w), v(w), m2(w), v2(w);
        A given(random.vector<Kel32f>(w, 2)), var(given.vector());
        const auto old1 = i1.vector(), old2 = i2.vector();
        EXPECT_EQ(kelsSumMeanVar_32f(x.d2, x.step, h, s1, s2, w), 0);
        EXPECT_EQ(kelsSumMeanVar_32f_I(x.d2, x.step, h, i1, i2, w), 0);
        EXPECT_EQ(kelsMeanColumn_32f_D2(x.d2, h, x.step, mean, w), 0);
        EXPECT_EQ(kelsVarColumn_32f_D2(x.d2, h, x.step, var, var, w), h < 2 ? -6 : 0);
        const auto r = static_cast<Kel32f>(1.0L / h), r1 = static_cast<Kel32f>(1.0L / (h - 1));
        for (int j = 0; j < w; ++j) {
            const auto exact = x.moments(j);
            EXPECT_TRUE(near(s1[j], exact.first, h * 0x1p-24L * exact.magnitude)) << j;
            EXPECT_TRUE(near(s2[j], exact.second, (h + 1) * 0x1p-24L * exact.second)) << j;
            EXPECT_TRUE(i1[j] == old1[j] + s1[j] && i2[j] == old2[j] + s2[j] && mean[j] == s1[j] * r) << j;
            if (h < 2) continue;
            const L centre = h * L(given[j]) * given[j];
            EXPECT_TRUE(
                near(var[j], (exact.second - centre) * r1, (h + 4) * 0x1p-24L * (exact.second + 3 * centre) * r1));
        }
        for (const auto f : {kelsMeanColumn_32f_D2L, kelsMeanCol_32f_D2L}) same(f(x.d2l(), h, m2, w), m2, mean);
        same(kelsMeanCol_32f_D2(x.d2, h, x.step, m2, w), m2, mean);
        if (h < 2) return;
        for (const auto f : {kelsVarColumn_32f_D2L, kelsVarCol_32f_D2L}) same(f(x.d2l(), h, given, v2, w), v2, var);
        same(kelsVarCol_32f_D2(x.d2, h, x.step, given, v2, w), v2, var);
        const auto expect = [&](KelStatus status) {
            same(status, m, mean);
            for (int j = 0; j < w; ++j) EXPECT_EQ(v[j], (s2[j] - static_cast<Kel32f>(h) * m[j] * m[j]) * r1) << j;
        };
        for (const auto f : {kelsMeanVarColumn_32f_D2, kelsMeanVarCol_32f_D2}) expect(f(x.d2, h, x.step, m, v, w));
        for (const auto f : {kelsMeanVarColumn_32f_D2L, kelsMeanVarCol_32f_D2L}) expect(f(x.d2l(), h, m, v, w));
        for (int j = 0; j < w; j += 1 + w / 8) {  // a column does not depend on its neighbours
            EXPECT_EQ(kelsMeanVarColumn_32f_D2(x.d2 + j, h, x.step, m2, v2, 1), 0);
            EXPECT_TRUE(m2[0] == m[j] && v2[0] == v[j]) << j;
        }
    });
}

// A function by the element type T.
#define F(name, layout) \
    std::get<sizeof(T) / 8>(std::tuple(&kelsWeighted##name##_32f_##layout, &kelsWeighted##name##_64f_##layout))
template <class T>
class Weighted : public testing::Test {};
using FloatTypes = testing::Types<Kel32f, Kel64f>;
TYPED_TEST_SUITE(Weighted, FloatTypes);

TYPED_TEST(Weighted, Columns) {
    using T = TypeParam;
    test::Random random(2);
    forShapes([&](int h, int w) {
        SCOPED_TRACE(testing::Message() << h << " x " << w);
        Block<T> x(random, h, w);
        Array<T> weight(random.vector<T>(h)), given(random.vector<T>(w, 2)), mean(w), var(given.vector()), m(w), v(w),
            m2(w), v2(w);
        EXPECT_EQ(F(MeanColumn, D2)(x.d2, x.step, weight, h, mean, w), 0);
        EXPECT_EQ(F(VarColumn, D2)(x.d2, x.step, weight, h, var, var, w), 0);
        same(F(MeanVarColumn, D2)(x.d2, x.step, weight, h, m, v, w), m, mean);
        same(F(MeanColumn, D2L)(x.d2l(), weight, h, m2, w), m2, mean);
        same(F(VarColumn, D2L)(x.d2l(), weight, h, given, v2, w), v2, var);
        same(F(MeanVarColumn, D2L)(x.d2l(), weight, h, m2, v2, w), m2, mean);
        same(0, v2, v);
        for (int j = 0; j < w; ++j) {
            const auto exact = x.moments(j, weight);
            const L unit = (h + 4) * std::ldexp(1.0L, -std::numeric_limits<T>::digits);
            EXPECT_TRUE(near(mean[j], exact.first, unit * exact.magnitude)) << j;
            for (const auto& [got, c] : {std::pair(var[j], L(given[j])), {v[j], L(mean[j])}}) {
                EXPECT_TRUE(near(got, exact.second - c * c, unit * (exact.magnitude2 + c * c))) << j;
            }
        }
    });
}

// ---- 16 bits ---------------------------------------------------------------------------------------------------------

Kel64f product(int64_t sum, int n) {
    return static_cast<Kel64f>(sum) * static_cast<Kel32f>(1.0L / n);
}
template <class D>
D truncated(Kel64f v, int scaleFactor = 0) {
    const Kel64f scaled = std::trunc(std::ldexp(v, -scaleFactor));
    return static_cast<D>(std::clamp<Kel64f>(scaled, std::numeric_limits<D>::min(), std::numeric_limits<D>::max()));
}
Kel32s halfEven(int64_t v, int scaleFactor) {
    const L scaled = std::nearbyint(std::ldexp(static_cast<L>(v), -std::clamp(scaleFactor, -100, 100)));
    return static_cast<Kel32s>(std::clamp<L>(scaled, INT_MIN, INT_MAX));
}

struct Results {
    explicit Results(int w) : mean(w), m(w), var(w), v(w), halves(w), m32(w), v32(w), whole(w) {}
    std::vector<Kel16s> mean, m, var, v, halves;
    std::vector<Kel32s> m32, v32, whole;
    bool operator==(const Results&) const = default;
};

// The forms of the D2L layout, from the exact sums of each column.
Results expectFixed(const Kel16s** rows, int h, int w, const std::vector<int64_t>& s1, const std::vector<int64_t>& s2,
                    int sf) {
    SCOPED_TRACE(testing::Message() << h << " x " << w << " scale " << sf);
    Results got(w), expected(w);
    for (int j = 0; j < w; ++j) {
        const Kel16s half = got.halves[j] = got.var[j] = expected.halves[j] = truncated<Kel16s>(product(s1[j], h) / 2);
        const L squared = static_cast<L>(s1[j]) * s1[j] / h;  // exact to far below the truncation
        const Kel64f var = static_cast<Kel64f>(s2[j] - squared) * static_cast<Kel32f>(1.0L / (h - 1));
        expected.mean[j] = expected.m[j] = truncated<Kel16s>(product(s1[j], h));
        expected.m32[j] = expected.mean[j];
        expected.var[j] = truncated<Kel16s>(product(s2[j] - int64_t{h} * half * half, h - 1), sf);
        expected.v[j] = truncated<Kel16s>(var, sf);
        expected.v32[j] = truncated<Kel32s>(var, sf);
        expected.whole[j] = truncated<Kel32s>(product(s2[j] - static_cast<int64_t>(squared), h - 1));
    }
    EXPECT_EQ(kelsMeanColumn_16s_D2L(rows, h, got.mean.data(), w), 0);
    if (h < 2) return got;
    EXPECT_EQ(kelsVarColumn_16s_D2LSfs(rows, h, got.var.data(), got.var.data(), w, sf), 0);
    EXPECT_EQ(kelsMeanVarColumn_16s_D2LSfs(rows, h, got.m.data(), got.v.data(), w, sf), 0);
    EXPECT_EQ(kelsMeanVarColumn_16s32s_D2LSfs(rows, h, got.m32.data(), got.v32.data(), w, sf), 0);
    EXPECT_EQ(kelsMeanVarColumn_16s16s32s_D2L(rows, h, got.m.data(), got.whole.data(), w), 0);
    EXPECT_TRUE(got == expected);
    return got;
}

TEST(ColumnStatistics, Fixed) {
    test::Random random(4);
    int scale = -3;
    forShapes([&](int h, int w) {
        Block<Kel16s> x(random, h, w);
        std::vector<int64_t> s1(w), s2(w);
        for (int i = 0; i < h * w; ++i) {
            s1[i % w] += x.at(i / w, i % w);
            s2[i % w] += int64_t{x.at(i / w, i % w)} * x.at(i / w, i % w);
        }
        scale = scale == 18 ? -3 : scale + 3;
        const Results expected = expectFixed(x.d2l(), h, w, s1, s2, scale);
        Results got = expected;
        test::inEveryRoundingMode([&] {
            EXPECT_EQ(kelsMeanColumn_16s_D2(x.d2, h, x.step, got.mean.data(), w), 0);
            if (h < 2) return;
            auto *const m = got.m.data(), *const v = got.v.data();
            EXPECT_EQ(kelsVarColumn_16s_D2Sfs(x.d2, h, x.step, got.halves.data(), got.var.data(), w, scale), 0);
            EXPECT_EQ(kelsMeanVarColumn_16s_D2Sfs(x.d2, h, x.step, m, v, w, scale), 0);
            EXPECT_EQ(kelsMeanVarColumn_16s32s_D2Sfs(x.d2, h, x.step, got.m32.data(), got.v32.data(), w, scale), 0);
            EXPECT_EQ(kelsMeanVarColumn_16s16s32s_D2(x.d2, h, x.step, m, got.whole.data(), w), 0);
        });
        EXPECT_TRUE(got == expected);

        Array<Kel32f> a(w), b(w), aI(random.vector<Kel32f>(w, 20)), bI(random.vector<Kel32f>(w, 30));
        const auto oldA = aI.vector(), oldB = bI.vector();
        EXPECT_EQ(kelsSumMeanVar_16s32f(x.d2, x.step, h, a, b, w), 0);
        EXPECT_EQ(kelsSumMeanVar_16s32f_I(x.d2, x.step, h, aI, bI, w), 0);
        for (int j = 0; j < w; ++j) {
            EXPECT_TRUE(a[j] == static_cast<Kel32f>(s1[j]) && b[j] == static_cast<Kel32f>(s2[j])) << j;
            EXPECT_TRUE(aI[j] == oldA[j] + a[j] && bI[j] == oldB[j] + b[j]) << j;
        }
        for (const int sf : {INT_MIN, -20, -1, 0, 1, 4, 9, 31, 40, INT_MAX}) {
            Array<Kel32s> c(w), d(w), cI(random.vector<Kel32s>(w)), dI(random.vector<Kel32s>(w));
            const auto oldC = cI.vector(), oldD = dI.vector();
            EXPECT_EQ(kelsSumMeanVar_16s32s_Sfs(x.d2, x.step, h, c, d, w, sf), 0);
            EXPECT_EQ(kelsSumMeanVar_16s32s_ISfs(x.d2, x.step, h, cI, dI, w, sf), 0);
            for (int j = 0; j < w; ++j) {
                EXPECT_TRUE(c[j] == halfEven(s1[j], sf) && d[j] == halfEven(s2[j], sf)) << j << " scale " << sf;
                EXPECT_EQ(cI[j], std::clamp<int64_t>(int64_t{oldC[j]} + c[j], INT_MIN, INT_MAX));
                EXPECT_EQ(dI[j], std::clamp<int64_t>(int64_t{oldD[j]} + d[j], INT_MIN, INT_MAX));
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
    expectFixed(rows.data(), h, 3, s1, s2, -31);  // shows a unit in a sum of squares
}

TEST(Moments, VarianceFromSums) {
    test::Random random(5);
    for (int n = 1; n < 70; ++n) {
        Array<Kel32f> mean(random.vector<Kel32f>(n)), var(random.vector<Kel32f>(n)), dst(n);
        std::vector<Kel32f> expected(n);
        for (int k = 0; k < n; ++k) expected[k] = (var[k] - mean[k] * mean[k] * 0.3f) * 0.7f;
        EXPECT_EQ(kelsNewVar_32f(mean, var, dst, n, 0.3f, 0.7f), 0);
        EXPECT_EQ(kelsNewVar_32f_I(mean, var, n, 0.3f, 0.7f), 0);
        EXPECT_TRUE(test::sameBits(dst, expected) && test::sameBits(var, expected));
        for (const int sf : {INT_MIN, -2, 0, 3, 14, INT_MAX}) {
            Array<Kel32s> m(random.vector<Kel32s>(n)), v(random.vector<Kel32s>(n)), d(n);
            for (int k = 0; k < n; k += 2) m[k] >>= 16;
            if (n > 1) m[0] = v[0] = 0;  // stays 0 under any scale
            std::vector<Kel32s> truth(n);
            for (int k = 0; k < n; ++k) {
                const auto fm = static_cast<Kel32f>(m[k]), fv = static_cast<Kel32f>(v[k]);
                const Kel64f value = std::ldexp(Kel64f{(fv - fm * fm * 0.3f) * 0.7f}, -std::clamp(sf, -128, 150));
                truth[k] = std::fabs(value) < 0x1p31 ? static_cast<Kel32s>(value) : INT_MIN;  // above, too
            }
            test::inEveryRoundingMode([&] { EXPECT_EQ(kelsNewVar_32s_Sfs(m, v, d, n, 0.3f, 0.7f, sf), 0); },
                                      [&] { EXPECT_EQ(d.vector(), truth) << n << " scale " << sf; });
            EXPECT_EQ(kelsNewVar_32s_ISfs(m, v, n, 0.3f, 0.7f, sf), 0);
            EXPECT_EQ(v.vector(), truth);
        }
    }
    const Kel32s zero = 0, half = 1 << 30;
    for (const auto& [val, expected] :
         {std::pair(2.0f, INT_MIN), {1.9999f, 2147376256}, {NAN, INT_MIN}, {-2.0f, INT_MIN}}) {
        Kel32s result = 7;
        EXPECT_EQ(kelsNewVar_32s_Sfs(&zero, &half, &result, 1, 1, val, 0), 0);
        EXPECT_EQ(result, expected) << val;
    }
}

// ---- covariance ------------------------------------------------------------------------------------------------------

template <class T>
void expectCovariance(int h, int w) {
    test::Random random(6);
    Block<T> x(random, h, w);
    Array<T> m(random.vector<T>(w, 2));
    const int step = w + h % 2;
    const Kel64f val = 0.7;
    Array<Kel64f> matrix(random.vector<Kel64f>((w - 1) * step + w)), lists(matrix.vector());
    auto expected = matrix.vector();
    std::vector<Kel64f*> rows;
    for (int i = 0; i < w; ++i) rows.push_back(&lists[i * step]);
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
                const auto term = (__float128(x.at(row, i)) - m[j]) * (__float128(x.at(row, j)) - m[j]);
                sum += term;
                magnitude += term < 0 ? -term : term;
            }
            const Kel64f got = matrix[i * step + j];
            const auto exact = static_cast<L>(expected[i * step + j] + __float128(val) * sum);
            // Extended precision all the way, and one rounding to double.
            const L bound = (h + 4) * 0x1p-64L * static_cast<L>(magnitude) + std::fabs(exact) * (0x1p-53L + 0x1p-63L);
            EXPECT_TRUE(near(got, exact, bound)) << h << " x " << w << ": " << i << " " << j;
            expected[i * step + j] = expected[j * step + i] = got;  // and nothing between the rows
        }
    }
    EXPECT_EQ(matrix.vector(), expected);
    EXPECT_EQ(lists.vector(), expected);
}

TEST(Covariance, AboutTheMeanOfTheHigherColumn) {
    for (int w = 1; w < 14; ++w) {
        for (const int h : {1, 2, 5, 20}) expectCovariance<Kel32f>(h, w), expectCovariance<Kel16s>(h, w);
    }
    expectCovariance<Kel32f>(50, 39);
}

// ---- checks ----------------------------------------------------------------------------------------------------------

TEST(Statistics, ChecksInTheirOrder) {
    using test::expectChecks, test::Places;
    const std::vector<KelStatus> stepFirst{-37, -8, -6}, stepBetween{-8, -37, -6}, stepLast{-8, -6, -37};
    expectChecks<Places{2, 1, 4}>(stepFirst, 1, kelsMeanColumn_32f_D2, kelsMeanCol_32f_D2, kelsMeanColumn_16s_D2);
    expectChecks<Places{2, 1, 5}>(stepFirst, 2, kelsVarColumn_32f_D2, kelsVarCol_32f_D2);
    expectChecks<Places{2, 1, 5}>(stepLast, 2, kelsMeanVarColumn_32f_D2, kelsMeanVarCol_32f_D2, kelsVarColumn_16s_D2Sfs,
                                  kelsMeanVarColumn_16s_D2Sfs, kelsMeanVarColumn_16s32s_D2Sfs,
                                  kelsMeanVarColumn_16s16s32s_D2);
    expectChecks<Places{1, 2, 5}>(stepFirst, 1, kelsSumMeanVar_32f, kelsSumMeanVar_32f_I, kelsSumMeanVar_16s32f,
                                  kelsSumMeanVar_16s32f_I, kelsSumMeanVar_16s32s_Sfs, kelsSumMeanVar_16s32s_ISfs);
    expectChecks<Places{1, 3, 5}>(stepBetween, 1, kelsWeightedMeanColumn_32f_D2, kelsWeightedMeanColumn_64f_D2);
    expectChecks<Places{1, 3, 6}>(stepBetween, 1, kelsWeightedVarColumn_32f_D2, kelsWeightedVarColumn_64f_D2,
                                  kelsWeightedMeanVarColumn_32f_D2, kelsWeightedMeanVarColumn_64f_D2);
    expectChecks<Places{1, 2, 5}>(stepLast, 1, kelsAccCovarianceMatrix_32f64f_D2, kelsAccCovarianceMatrix_16s64f_D2);
    expectChecks<Places{6, 2, 5}>(stepLast, 1, kelsAccCovarianceMatrix_32f64f_D2, kelsAccCovarianceMatrix_16s64f_D2);
    const std::vector<KelStatus> nullFirst{-8, -6};
    expectChecks<Places{-1, 1, 3}>(nullFirst, 1, kelsMeanColumn_32f_D2L, kelsMeanCol_32f_D2L, kelsMeanColumn_16s_D2L);
    expectChecks<Places{-1, 1, 4}>(nullFirst, 2, kelsVarColumn_32f_D2L, kelsVarCol_32f_D2L, kelsMeanVarColumn_32f_D2L,
                                   kelsMeanVarCol_32f_D2L, kelsVarColumn_16s_D2LSfs, kelsMeanVarColumn_16s_D2LSfs,
                                   kelsMeanVarColumn_16s32s_D2LSfs, kelsMeanVarColumn_16s16s32s_D2L);
    expectChecks<Places{-1, 2, 4}>(nullFirst, 1, kelsWeightedMeanColumn_32f_D2L, kelsWeightedMeanColumn_64f_D2L);
    expectChecks<Places{-1, 2, 5}>(nullFirst, 1, kelsWeightedVarColumn_32f_D2L, kelsWeightedVarColumn_64f_D2L,
                                   kelsWeightedMeanVarColumn_32f_D2L, kelsWeightedMeanVarColumn_64f_D2L);
    expectChecks<Places{-1, 1, 4}>(nullFirst, 1, kelsAccCovarianceMatrix_32f64f_D2L,
                                   kelsAccCovarianceMatrix_16s64f_D2L);
    test::expectVectorChecks(nullFirst, kelsNewVar_32f, kelsNewVar_32f_I, kelsNewVar_32s_Sfs, kelsNewVar_32s_ISfs);
}

}  // namespace
