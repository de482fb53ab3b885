// Singular values, QR and triangular systems: what defines them, in extended precision, for matrices of every kind.
#include <functional>

#include "kels/matrix.h"

#include "support/matrix.h"

namespace {

using namespace test;
using Square = Matrix<Kel64f>;

constexpr Real u = 0x1p-53L;

Real norm(const Square& a) {
    Real sum = 0;
    for (int i = 0; i < a.height; ++i) {
        for (int j = 0; j < a.width; ++j) sum += Real{a(i, j)} * a(i, j);
    }
    return std::sqrt(sum);
}

// |A'A - I| over the first k columns.
Real orthonormalityError(const Square& a, int k) {
    Real sum = 0;
    for (int c = 0; c < k; ++c) {
        for (int d = 0; d < k; ++d) {
            Real dot = c == d ? -1 : 0;
            for (int i = 0; i < a.height; ++i) dot += Real{a(i, c)} * a(i, d);
            sum += dot * dot;
        }
    }
    return std::sqrt(sum);
}

// |A - sum of term(i, j, c) over c < k|.
template <class Term>
Real residual(const Square& a, int k, Term term) {
    Real sum = 0;
    for (int i = 0; i < a.height; ++i) {
        for (int j = 0; j < a.width; ++j) {
            Real rest = a(i, j);
            for (int c = 0; c < k; ++c) rest -= term(i, j, c);
            sum += rest * rest;
        }
    }
    return std::sqrt(sum);
}

// ---- matrices of every kind -----------------------------------------------------------------------------------------

Random randomness(9);
using Element = std::function<double(int i, int j)>;
const std::pair<const char*, Element> kKinds[] = {
    {"random", [](int, int) { return randomness.value<Kel64f>(3); }},
    {"zero", [](int, int) { return 0.0; }},
    {"of rank 1", [](int i, int j) { return (1 + i) * (0.3 - j); }},
    {"of rank 3", [](int i, int j) { return std::sin(i + 1) * j + std::cos(3 * i) * (j % 5) + 0.1 * ((i * j) % 2); }},
    {"with zero columns", [](int, int j) { return j % 3 == 1 ? 0 : randomness.value<Kel64f>(1); }},
    {"with equal columns", [](int i, int j) { return std::sin(i * 7.0 + j / 3); }},
    {"with equal magnitudes", [](int i, int j) { return (i * j + i / 2 + j / 3) % 2 == 0 ? 1.0 : -1.0; }},
    {"ill conditioned", [](int i, int j) { return 1.0 / (i + j + 1); }},
    {"graded upwards", [](int, int j) { return std::ldexp(randomness.value<Kel64f>(1), 9 * j - 200); }},
    {"graded downwards", [](int i, int j) { return std::ldexp(randomness.value<Kel64f>(1), -11 * j - 7 * i); }},
    {"bidiagonal with a zero", [](int i, int j) { return i == j       ? (i == 2 ? 0.0 : 1.0)
                                                         : j == i + 1 ? 2.0
                                                                      : 0.0; }},
    {"an identity", [](int i, int j) { return i == j ? 1.0 : 0.0; }},
    {"triangular", [](int i, int j) { return i > j    ? 0.0
                                             : i == j ? 1.0
                                                      : -1.0; }},
    {"large", [](int, int) { return std::ldexp(randomness.value<Kel64f>(0), 1008); }},
    {"small", [](int, int) { return std::ldexp(randomness.value<Kel64f>(0), -1010); }},
};
constexpr std::pair<int, int> kShapes[] = {{1, 1},   {1, 6},   {6, 1},   {2, 2},   {3, 5},   {8, 8},
                                           {17, 12}, {12, 17}, {39, 39}, {64, 20}, {70, 65}, {20, 131}};

// body(A) with every kind in every shape.
template <class Body>
void forMatrices(bool tall, Body body) {
    for (const auto& [name, element] : kKinds) {
        for (const auto& [h, w] : kShapes) {
            if (tall && h < w) continue;
            SCOPED_TRACE(testing::Message() << name << ", " << h << " x " << w);
            const Square a(h, w, 2, element);
            body(a);
        }
    }
}

// ---- singular values ------------------------------------------------------------------------------------------------

struct Svd {
    explicit Svd(const Square& a)
        : k(std::min(a.height, a.width)), u(a.height, k), v(a.width, k, 3), s(static_cast<std::size_t>(k)) {
        Square in = a;
        std::vector<Kel64f> again(s.size());
        EXPECT_EQ(kelsSVD_64f_D2(in.d2(), in.step, u.d2(), u.step, s.data(), v.d2(), v.step, a.width, a.height), 0);
        EXPECT_EQ(kelsSVD_64f_D2L(in.constD2l(), u.d2l(), again.data(), v.d2l(), a.width, a.height), 0);
        EXPECT_TRUE(u.isWhole() && v.isWhole() && sameBits(again, s));
    }
    int k;
    Square u, v;
    std::vector<Kel64f> s;
};

TEST(SingularValues, DecomposeEveryMatrix) {
    forMatrices(false, [](const Square& a) {
        const Svd svd(a);
        const Real size = 16 * (a.height + a.width) * u;
        const auto term = [&](int i, int j, int c) {
            return Real{svd.s[static_cast<std::size_t>(c)]} * svd.u(i, c) * svd.v(j, c);
        };
        EXPECT_LE(residual(a, svd.k, term), size * norm(a) + (a.height + a.width) * 0x1p-1074L);
        EXPECT_LE(orthonormalityError(svd.u, svd.k), size);
        EXPECT_LE(orthonormalityError(svd.v, svd.k), size);
        EXPECT_TRUE(std::is_sorted(svd.s.rbegin(), svd.s.rend()) && svd.s.back() >= 0);
        for (int c = 0; c < svd.k; ++c) {
            int first = 0;
            for (int j = 1; j < a.width; ++j) {
                if (std::fabs(svd.v(j, c)) > std::fabs(svd.v(first, c))) first = j;
            }
            EXPECT_GT(svd.v(first, c), 0) << c;
        }
        // In place: the same bits, and zeros behind them.
        Square b = a, v(a.width, svd.k, 1);
        std::vector<Kel64f> s(svd.s.size());
        EXPECT_EQ(kelsSVD_64f_D2_I(b.d2(), b.step, s.data(), v.d2(), v.step, a.width, a.height), 0);
        EXPECT_EQ(kelsSVD_64f_D2L_I(b.d2l(), s.data(), v.d2l(), a.width, a.height), 0);
        EXPECT_TRUE(b.isWhole() && v.isWhole() && sameBits(s, svd.s));
        for (int i = 0; i < a.height; ++i) {
            for (int j = 0; j < a.width; ++j) EXPECT_TRUE(sameBits(b(i, j), j < svd.k ? svd.u(i, j) : 0.0));
        }
    });
}

// Values that do not fit become infinite and leave U and V alone; what is not finite is refused and nothing written.
TEST(SingularValues, OfTheLargestNumbersAndOfNone) {
    const Kel64f most = std::numeric_limits<Kel64f>::max();
    const Square huge(3, 3, 0, [=](int i, int j) { return i == j ? most : i + j == 2 ? most / 2 : -most / 4; });
    const Square same(3, 3, 0, [&](int i, int j) { return huge(i, j) * 0x1p-900; });
    const Svd far(huge), near(same);
    EXPECT_TRUE(std::isinf(far.s[0]) && std::isfinite(near.s[0]));
    for (int i = 0; i < 9; ++i) EXPECT_TRUE(far.u(i / 3, i % 3) == near.u(i / 3, i % 3));
    for (const Kel64f bad : {HUGE_VAL, -HUGE_VAL, std::nan("")}) {
        for (int place = 0; place < 9; ++place) {
            Square a = huge, v(3, 3);
            a(place / 3, place % 3) = a.d2l()[place / 3][place % 3] = bad;
            const Square before = a;
            Kel64f s[3] = {7, 7, 7};
            EXPECT_EQ(kelsSVD_64f_D2_I(a.d2(), a.step, s, v.d2(), v.step, 3, 3), kelStatusNoConverge);
            EXPECT_EQ(kelsSVD_64f_D2L_I(a.d2l(), s, v.d2l(), 3, 3), kelStatusNoConverge);
            EXPECT_TRUE(v.isWhole() && v(0, 0) == Square::kMark && s[0] == 7 && sameBits(a(0, 0), before(0, 0)));
        }
    }
}

// ---- QR -------------------------------------------------------------------------------------------------------------

struct Qr {
    explicit Qr(const Square& a) : q(a), r(a.width, a.width, 1) {
        EXPECT_EQ(kelsQRTransColumn_64f_D2(q.d2(), q.step, r.d2(), r.step, a.width, a.height), kelStatusOk);
        EXPECT_EQ(kelsQRTransColumn_64f_D2L(q.d2l(), r.d2l(), a.width, a.height), kelStatusOk);
        EXPECT_TRUE(q.isWhole() && r.isWhole());
    }
    Square q, r;
};

TEST(QR, DecomposesEveryMatrixOfFullHeight) {
    forMatrices(true, [](const Square& a) {
        const Qr qr(a);
        const Real size = 16 * (a.height + a.width) * u;
        const auto term = [&](int i, int j, int c) { return Real{qr.q(i, c)} * qr.r(c, j); };
        EXPECT_LE(residual(a, a.width, term), size * norm(a) + (a.height + a.width) * 0x1p-1074L);
        EXPECT_LE(orthonormalityError(qr.q, a.width), size);
        for (int i = 0; i < a.width; ++i) {
            EXPECT_GE(qr.r(i, i), 0);
            for (int j = 0; j < i; ++j) EXPECT_TRUE(sameBits(qr.r(i, j), 0.0));
        }
    });
}

TEST(QR, ScalesWithItsColumns) {
    Random random(4);
    const Square a(30, 11, 0, [&](int, int) { return random.value<Kel64f>(2); });
    const auto power = [](int j) { return j % 2 == 0 ? 80 * j : -85 * j; };
    const Qr plain(a), scaled(Square(30, 11, 0, [&](int i, int j) { return std::ldexp(a(i, j), power(j)); }));
    for (int i = 0; i < 30; ++i) {
        for (int j = 0; j < 11; ++j) {
            EXPECT_EQ(scaled.q(i, j), plain.q(i, j));
            EXPECT_EQ(scaled.r(i % 11, j), std::ldexp(plain.r(i % 11, j), power(j)));
        }
    }
}

// ---- triangular systems ---------------------------------------------------------------------------------------------

TEST(Triangle, DividesByZeroByTheSignOfTheNumerator) {
    for (const Kel64f zero : {0.0, -0.0}) {
        const Kel64f r[] = {2, 1, 1, NAN, zero, 0, NAN, NAN, zero};
        const Kel64f b[][3] = {{1, 1, -3}, {1, 0, 3}, {1, -1, 0}};
        const Kel64f expected[][3] = {{NAN, NAN, -HUGE_VAL}, {NAN, NAN, HUGE_VAL}, {NAN, NAN, NAN}};
        for (int k = 0; k < 3; ++k) {
            Kel64f x[3];
            EXPECT_EQ(kelsSolveUpper_64f_D2(r, 3, b[k], x, 3), kelStatusDivByZero);
            for (int i = 0; i < 3; ++i) EXPECT_TRUE(sameBits(x[i], expected[k][i])) << k << ", " << i;
        }
    }
    const Kel64f r[] = {2, 1, 0, -0.0}, b[] = {1, 3};
    Kel64f x[2];
    EXPECT_EQ(kelsSolveUpper_64f_D2(r, 2, b, x, 2), kelStatusDivByZero);
    EXPECT_TRUE(x[1] == HUGE_VAL && x[0] == -HUGE_VAL);
}

}  // namespace
