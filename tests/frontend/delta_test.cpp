#include "kels/delta.h"

#include <climits>

#include "support/checks.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

using test::Guarded;
using test::Random;

// One streaming function; scalar forms take their multipliers from v[0] and v[1].
template <class T>
struct Form {
    int half, orders;
    bool mul, aurora;
    KelStatus (*run)(const T* x, const T* v, int width, T* y, int step, int height, int mode, int sf);

    int history() const { return aurora ? 8 : (orders + 1) * half; }
    int inputs(int width) const { return aurora ? 14 : width; }
};

#define FORM(T, half, orders, mul, call)                                                                        \
    Form<T> {                                                                                                   \
        half, orders, mul, false,                                                                               \
            [](const T* x, [[maybe_unused]] const T* v, [[maybe_unused]] int width, T* y, int step, int height, \
               int mode, [[maybe_unused]] int sf) { return call; }                                              \
    }
#define AURORA(T, mul, call)                  \
    [] {                                      \
        auto form = FORM(T, 4, 2, mul, call); \
        form.aurora = true;                   \
        return form;                          \
    }()

// Both windows, by the parts of the name around the window's number.
#define FORMS(T, orders, mul, before, after, arguments) \
    FORM(T, 1, orders, mul, before##1##after arguments), FORM(T, 2, orders, mul, before##2##after arguments)

const Form<Kel32f> kFloatForms[] = {
    FORMS(Kel32f, 1, false, kelsDelta_Win, _32f_D2, (x, width, y, step, height, v[0], mode)),
    FORMS(Kel32f, 2, false, kelsDeltaDelta_Win, _32f_D2, (x, width, y, step, height, v[0], v[1], mode)),
    FORMS(Kel32f, 1, false, kelsDeltaW, _32f_D2, (x, width, y, step, height, v[0], mode)),
    FORMS(Kel32f, 2, false, kelsDeltaDeltaW, _32f_D2, (x, width, y, step, height, v[0], v[1], mode)),
    FORMS(Kel32f, 1, true, kelsDeltaMul_Win, _32f_D2, (x, v, width, y, step, height, mode)),
    FORMS(Kel32f, 2, true, kelsDeltaDeltaMul_Win, _32f_D2, (x, v, width, y, step, height, mode)),
    AURORA(Kel32f, false, kelsDeltaDelta_Aurora_32f_D2(x, y, step, height, mode)),
    AURORA(Kel32f, true, kelsDeltaDeltaMul_Aurora_32f_D2(x, v, y, step, height, mode)),
};
const Form<Kel16s> kFixedForms[] = {
    FORMS(Kel16s, 1, false, kelsDelta_Win, _16s_D2Sfs, (x, width, y, step, height, v[0], mode, sf)),
    FORMS(Kel16s, 2, false, kelsDeltaDelta_Win, _16s_D2Sfs, (x, width, y, step, height, v[0], v[1], mode, sf)),
    FORMS(Kel16s, 1, true, kelsDeltaMul_Win, _16s_D2Sfs, (x, v, width, y, step, height, mode, sf)),
    FORMS(Kel16s, 2, true, kelsDeltaDeltaMul_Win, _16s_D2Sfs, (x, v, width, y, step, height, mode, sf)),
    AURORA(Kel16s, false, kelsDeltaDelta_Aurora_16s_D2Sfs(x, y, step, height, mode, sf)),
    AURORA(Kel16s, true, kelsDeltaDeltaMul_Aurora_16s_D2Sfs(x, v, y, step, height, mode, sf)),
};

template <class T>
auto& forms() {
    if constexpr (std::is_same_v<T, Kel32f>) {
        return kFloatForms;
    } else {
        return kFixedForms;
    }
}

// What a product is stored as; exact integers come in long double.
Kel32f stored(Kel32f v, int) {
    return v;
}
Kel16s stored(long double v, int sf) {
    const long double scaled = std::floor(std::ldexp(v, -std::clamp(sf, -200, 200)));
    return static_cast<Kel16s>(std::clamp(scaled, -32768.0L, 32767.0L));
}
template <class T>
using Number = std::conditional_t<std::is_same_v<T, Kel32f>, Kel32f, long double>;

template <class T>
constexpr T kUnwritten = static_cast<T>(-7777);

// The rows of a stream cut into blocks of the given heights, history rows handed on as a caller does.  Every block lies
// against a guard page, and what lies between the rows must not change.
template <class T>
std::vector<T> stream(const Form<T>& form, const std::vector<T>& x, const std::vector<T>& v, int width, int step,
                      const std::vector<int>& heights, int sf) {
    const int used = (form.orders + 1) * width;
    const Guarded<T> values(v);
    std::vector<T> all;
    std::size_t taken = 0;
    for (std::size_t b = 0; b < heights.size(); ++b) {
        const int mode = (b == 0 ? kelDeltaBlockFirst : 0) | (b + 1 == heights.size() ? kelDeltaBlockLast : 0);
        const std::size_t history = b == 0 ? 0 : static_cast<std::size_t>(form.history());
        const std::size_t rows = history + static_cast<std::size_t>(heights[b]);
        const std::size_t count = static_cast<std::size_t>(heights[b] * form.inputs(width));
        Guarded<T> in(std::vector<T>(x.begin() + taken, x.begin() + taken + count));
        Guarded<T> out((rows - 1) * step + used, b % 2 == 0 ? test::Edge::End : test::Edge::Begin);
        std::fill_n(out.data(), out.size(), kUnwritten<T>);
        for (std::size_t t = 0; t < history; ++t) {
            std::copy_n(all.end() - (history - t) * used, used, out + t * step);
        }
        EXPECT_EQ(form.run(in, values.data(), width, out, step, heights[b], mode, sf), kelStatusOk);
        all.resize(all.size() - history * used);
        for (std::size_t t = 0; t < rows; ++t) {
            all.insert(all.end(), out + t * step, out + t * step + used);
            for (int i = used; i < step && t + 1 < rows; ++i) EXPECT_EQ(out[t * step + i], kUnwritten<T>);
        }
        taken += count;
    }
    return all;
}

// The whole stream by the formulas, over clamped rows.
template <class T>
std::vector<T> reference(const Form<T>& form, const std::vector<T>& x, const std::vector<T>& v, int width, int rows,
                         int sf) {
    const int used = (form.orders + 1) * width;
    std::vector<T> out(static_cast<std::size_t>(rows * used));
    const auto at = [&](int t, int i) -> T& { return out[std::clamp(t, 0, rows - 1) * used + i]; };
    for (int i = 0; i < width; ++i) {
        for (int t = 0; t < rows; ++t) {
            const T s = x[t * width + i];
            at(t, i) = form.mul ? stored(Number<T>(s) * v[i], sf) : s;
        }
        for (int order = 1; order <= form.orders; ++order) {
            const T multiplier = form.mul ? v[order * width + i] : v[order - 1];
            const int c = (order - 1) * width + i;
            for (int t = 0; t < rows; ++t) {
                Number<T> sum = Number<T>(at(t + 1, c)) - at(t - 1, c);
                if (form.half == 2) sum += 2 * (Number<T>(at(t + 2, c)) - at(t - 2, c));
                at(t, c + width) = stored(sum * multiplier, sf);
            }
        }
    }
    return out;
}

template <class T>
::testing::AssertionResult same(const std::vector<T>& got, const std::vector<T>& expected) {
    if (got.size() != expected.size()) return ::testing::AssertionFailure() << "sizes differ";
    return test::sameBits(std::vector<double>(got.begin(), got.end()),
                          std::vector<double>(expected.begin(), expected.end()));
}

// A first block of at least `least` rows, then blocks of any height; some streams end with an empty one.
std::vector<int> cut(Random& random, int rows, int least) {
    std::vector<int> heights;
    for (int left = rows; left > 0; left -= heights.back()) {
        const int most = random.between(0, 3) == 0 ? 50 : 5;
        heights.push_back(std::min(left, heights.empty() ? least + random.between(0, 3) : random.between(1, most)));
    }
    if (random.between(0, 1) == 0) heights.push_back(0);
    return heights;
}

int scaleFactorOf(const Form<Kel32f>&, Random&) {
    return 0;
}
int scaleFactorOf(const Form<Kel16s>& form, Random& random) {
    static const int extremes[] = {31, 32, 33, 40, 64, 65, -31, -40, -64, INT_MAX, INT_MIN};
    if (form.aurora || random.between(0, 3) != 0) return random.between(-3, 22);
    return extremes[random.between(0, 10)];
}

template <class T>
class Delta : public ::testing::Test {};
using Types = ::testing::Types<Kel32f, Kel16s>;
TYPED_TEST_SUITE(Delta, Types);

TYPED_TEST(Delta, StreamsInAnyBlocksAreTheFormulas) {
    using T = TypeParam;
    Random random(3);
    for (const Form<T>& form : forms<T>()) {
        if (form.aurora) continue;
        for (int width = 1; width <= 40; ++width) {
            const int rows = width % 4 == 0 ? form.history() : form.history() + random.between(0, 90);
            const auto x = random.vector<T>(static_cast<std::size_t>(rows * width));
            const auto v = random.vector<T>(static_cast<std::size_t>((form.orders + 1) * width + 2));
            const int step = (form.orders + 1) * width + random.between(0, 2);
            const int sf = scaleFactorOf(form, random);
            const auto expected = reference(form, x, v, width, rows, sf);
            EXPECT_TRUE(same(stream(form, x, v, width, step, {rows}, sf), expected)) << width << " sf " << sf;
            EXPECT_TRUE(same(stream(form, x, v, width, step, cut(random, rows, form.history()), sf), expected))
                << width;
        }
    }
}

// Floats within the roundings of the sums in any order, 16-bit values exactly.
void expectWeighted(Kel32f got, const long double (&w)[9], const Kel32f (&s)[9], int) {
    long double sum = 0, size = 0;
    for (int k = 0; k < 9; ++k) {
        sum += w[k] * s[k];
        size += std::fabs(w[k]) * (std::fabs(s[k]) + std::fabs(s[4]));
    }
    EXPECT_LE(std::fabs(got - sum), 8.1L * std::ldexp(size, -24));
}
void expectWeighted(Kel16s got, const long double (&w)[9], const Kel16s (&s)[9], int sf) {
    int64_t millionths = 0;
    for (int k = 0; k < 9; ++k) millionths += std::llround(w[k] * 1000000) * s[k];
    const int64_t n = millionths * (int64_t{1} << std::max(-sf, 0));
    const int64_t d = int64_t{1000000} << std::max(sf, 0);
    const int64_t floor = n / d - (n % d < 0);
    EXPECT_EQ(got, std::clamp<int64_t>(floor, -32768, 32767));
}
void expectEnergy(Kel32f got, long double exact, long double size) {
    EXPECT_LE(std::fabs(got - exact), 5.1L * std::ldexp(size, -24));
}
void expectEnergy(Kel16s got, long double exact, long double) {
    EXPECT_EQ(got, std::floor(exact + 1e-6L));  // fractions are multiples of 1 / 115
}

TYPED_TEST(Delta, AuroraFollowsItsWeights) {
    using T = TypeParam;
    const long double slope[9] = {-1, -0.75L, -0.5L, -0.25L, 0, 0.25L, 0.5L, 0.75L, 1};
    const long double curve[9] = {1, 0.25L, -0.285714L, -0.607143L, -0.714286L, -0.607143L, -0.285714L, 0.25L, 1};
    Random random(4);
    const auto& all = forms<T>();
    const Form<T> plain = *(std::end(all) - 2), mul = *(std::end(all) - 1);
    for (int rows = 8; rows < 80; rows += random.between(1, 9)) {
        const auto x = random.vector<T>(static_cast<std::size_t>(rows * 14), 3);
        const auto v = random.vector<T>(13, 2);
        const int sf = scaleFactorOf(plain, random), step = 39 + random.between(0, 1);
        const auto y = stream(plain, x, v, 13, step, {rows}, sf);
        EXPECT_TRUE(same(stream(plain, x, v, 13, step, cut(random, rows, 8), sf), y));
        const auto scaled = stream(mul, x, v, 13, step, {rows}, sf);
        EXPECT_TRUE(same(stream(mul, x, v, 13, step, cut(random, rows, 8), sf), scaled));
        for (int t = 0; t < rows; ++t) {
            const long double c0 = 0.6L * x[t * 14 + 12] / 23, energy = 0.4L * x[t * 14 + 13];
            expectEnergy(y[t * 39 + 12], c0 + energy, std::fabs(c0) + std::fabs(energy));
            for (int i = 0; i < 13; ++i) {
                if (i < 12) {
                    EXPECT_EQ(y[t * 39 + i], x[t * 14 + i]);
                }
                EXPECT_EQ(scaled[t * 39 + i], stored(Number<T>(y[t * 39 + i]) * v[i], sf));
                for (const auto& out : {y, scaled}) {
                    T s[9];
                    for (int k = 0; k < 9; ++k) s[k] = out[std::clamp(t + k - 4, 0, rows - 1) * 39 + i];
                    expectWeighted(out[t * 39 + 13 + i], slope, s, sf);
                    expectWeighted(out[t * 39 + 26 + i], curve, s, sf);
                }
            }
        }
    }
}

TYPED_TEST(Delta, ConstantStaticsHaveNoDerivatives) {
    using T = TypeParam;
    Random random(5);
    for (const Form<T>& form : forms<T>()) {
        const auto row = random.vector<T>(14);
        std::vector<T> x;
        for (int t = 0; t < 20; ++t) x.insert(x.end(), row.begin(), row.begin() + form.inputs(13));
        const auto y = stream(form, x, random.vector<T>(39), 13, 39, {9, 4, 7}, 0);
        for (std::size_t i = 0; i < y.size(); ++i) {
            if (i % ((form.orders + 1) * 13) >= 13) {
                EXPECT_EQ(y[i], T(0));
            }
        }
    }
}

TYPED_TEST(Delta, WholeArraysKeepTheirBorderRule) {
    using T = TypeParam;
    using N = Number<T>;
    Random random(6);
    for (int width = 1; width <= 40; ++width) {
        const int half = random.between(1, 6), rows = 2 * half + random.between(0, 60) * (width % 3);
        const int offset = random.between(0, 5), step = offset + 2 * width + random.between(0, 2);
        const int sf = scaleFactorOf(forms<T>()[0], random);
        const auto v = random.vector<T>(static_cast<std::size_t>(2 * width));
        const auto x = random.vector<T>(static_cast<std::size_t>((rows - 1) * step + offset + 2 * width));
        for (const bool mul : {false, true}) {
            auto expected = x;
            const auto at = [&](int t, int i) -> T& { return expected[t * step + offset + i]; };
            for (int i = 0; i < width; ++i) {
                for (int t = 0; mul && t < rows; ++t) at(t, i) = stored(N(at(t, i)) * v[i], sf);
                for (int t = 0; t < rows; ++t) {
                    N sum = 0;
                    for (int k = 1; k <= half; ++k) {
                        const T ahead = at(t >= rows - half ? rows - 1 : t + k, i), back = at(t < half ? 0 : t - k, i);
                        sum += N(k) * (N(ahead) - back);
                    }
                    at(t, width + i) = stored(sum * (mul ? v[width + i] : v[0]), sf);
                }
            }
            Guarded<T> y(x);
            const Guarded<T> m(v);
            KelStatus status;
            if constexpr (std::is_same_v<T, Kel32f>) {
                status = mul ? kelsEvalDeltaMul_32f_D2(y, m.data(), rows, step, width, offset, half)
                             : kelsEvalDelta_32f_D2(y, rows, step, width, offset, half, v[0]);
            } else {
                status = mul ? kelsEvalDeltaMul_16s_D2Sfs(y, m.data(), rows, step, width, offset, half, sf)
                             : kelsEvalDelta_16s_D2Sfs(y, rows, step, width, offset, half, v[0], sf);
            }
            EXPECT_EQ(status, kelStatusOk);
            EXPECT_TRUE(same(y.vector(), expected)) << "width " << width << " half " << half << " rows " << rows;
        }
    }
}

TEST(DeltaFixed, RoundingModesChangeNothing) {
    Random random(7);
    for (const auto& form : kFixedForms) {
        const auto x = random.vector<Kel16s>(14 * 20), v = random.vector<Kel16s>(39);
        for (const int sf : {1, 12, 22}) {
            const auto expected = stream(form, x, v, 13, 39, {20}, sf);
            std::vector<Kel16s> y(expected.size());
            const int step = (form.orders + 1) * 13;
            test::inEveryRoundingMode(
                [&] {
                    form.run(x.data(), v.data(), 13, y.data(), step, 20, kelDeltaBlockFirst | kelDeltaBlockLast, sf);
                },
                [&] { EXPECT_EQ(y, expected); });
        }
    }
}

// Faults in the order of the checks: each call has the fault of its line and that of the line below it.
TYPED_TEST(Delta, StatusesInOrder) {
    using T = TypeParam;
    for (const Form<T>& form : forms<T>()) {
        const int least = form.history(), parts = form.orders + 1, huge = form.aurora ? 13 : INT_MAX;
        const std::vector<T> x(14 * 8), v(39), untouched(39 * 8, kUnwritten<T>);
        auto y = untouched;
        const auto run = [&](const T* src, T* dst, int width, int step, int height, int mode) {
            return form.run(src, v.data(), width, dst, step, height, mode, 0);
        };
        EXPECT_EQ(run(nullptr, y.data(), 13, 39, -1, 1), kelStatusNullPtr);
        EXPECT_EQ(run(x.data(), nullptr, 13, 39, -1, 1), kelStatusNullPtr);
        if (form.mul) {
            EXPECT_EQ(form.run(x.data(), nullptr, 13, y.data(), 39, -1, 1, 0), kelStatusNullPtr);
        }
        EXPECT_EQ(run(x.data(), y.data(), 13, parts * 13 - 1, -1, 2), kelStatusSize);
        EXPECT_EQ(run(x.data(), y.data(), 13, parts * 13 - 1, 0, 1), kelStatusSize);
        if (!form.aurora) {
            EXPECT_EQ(run(x.data(), y.data(), 0, -1, 8, 3), kelStatusSize);
        }
        EXPECT_EQ(run(x.data(), y.data(), 13, parts * 13 - 1, least - 1, 1), kelStatusStep);
        EXPECT_EQ(run(x.data(), y.data(), huge, 38 / (form.aurora ? 1 : 2), 8, 3), kelStatusStep);
        EXPECT_EQ(run(x.data(), y.data(), 13, 39, least - 1, 1), kelStatusSize);
        EXPECT_EQ(run(x.data(), y.data(), 13, 39, 0, 3), kelStatusSize);
        EXPECT_EQ(y, untouched);
        EXPECT_EQ(run(x.data(), y.data(), 13, 39, least, 3), kelStatusOk);
    }
}

TEST(DeltaStatus, WholeArraysAndCopies) {
    const Kel32f v[4] = {};
    Kel32f y[12] = {};
    Kel16s z[12] = {};
    const auto eval = [&](Kel32f* p, int height, int step, int width, int offset, int half) {
        const Kel16s v16[4] = {};
        const KelStatus status = kelsEvalDelta_32f_D2(p, height, step, width, offset, half, 1);
        EXPECT_EQ(kelsEvalDeltaMul_32f_D2(p, v, height, step, width, offset, half), status);
        Kel16s* const q = p == nullptr ? nullptr : z;
        EXPECT_EQ(kelsEvalDelta_16s_D2Sfs(q, height, step, width, offset, half, 1, 0), status);
        EXPECT_EQ(kelsEvalDeltaMul_16s_D2Sfs(q, v16, height, step, width, offset, half, 0), status);
        return status;
    };
    EXPECT_EQ(eval(nullptr, 0, 0, 0, -1, 0), kelStatusNullPtr);
    EXPECT_EQ(kelsEvalDeltaMul_32f_D2(y, nullptr, 0, 0, 0, 0, 0), kelStatusNullPtr);
    EXPECT_EQ(kelsEvalDeltaMul_16s_D2Sfs(z, nullptr, 0, 0, 0, 0, 0, 0), kelStatusNullPtr);
    EXPECT_EQ(eval(y, 0, 2, 2, 0, 1), kelStatusSize);
    EXPECT_EQ(eval(y, 2, -1, 0, 0, 1), kelStatusSize);
    EXPECT_EQ(eval(y, 2, 2, 2, 0, 0), kelStatusSize);
    EXPECT_EQ(eval(y, 2, 2, 2, -1, 1), kelStatusSize);
    EXPECT_EQ(eval(y, 3, 2, 2, 0, 2), kelStatusSize);
    EXPECT_EQ(eval(y, 3, 2, 2, 0, INT_MAX), kelStatusSize);
    EXPECT_EQ(eval(y, 2, 5, 2, 2, 1), kelStatusStep);
    EXPECT_EQ(eval(y, 2, 5, INT_MAX, INT_MAX, 1), kelStatusStep);
    EXPECT_EQ(eval(y, 2, 6, 2, 2, 1), kelStatusOk);

    test::expectChecks<test::Places{3, 4, 1}>({-8, -6, -37}, 1, kelsCopyColumn_32f_D2, kelsCopyCol_32f_D2,
                                              kelsCopyColumn_16s_D2);
}

TYPED_TEST(Delta, CopyColumnTouchesItsColumnsOnly) {
    using T = TypeParam;
    Random random(8);
    for (int width = 1; width <= 300; width += width < 70 ? 1 : 53) {
        const int rows = random.between(1, 5), step = width + random.between(0, 3);
        const auto x = random.vector<T>(static_cast<std::size_t>(rows * width));
        std::vector<T> expected(static_cast<std::size_t>((rows - 1) * step + width), kUnwritten<T>);
        const Guarded<T> in(x);
        Guarded<T> out(expected), older(expected);
        for (int i = 0; i < rows * width; ++i) expected[i / width * step + i % width] = x[i];
        if constexpr (std::is_same_v<T, Kel32f>) {
            EXPECT_EQ(kelsCopyColumn_32f_D2(in.data(), width, out, step, rows), kelStatusOk);
            EXPECT_EQ(kelsCopyCol_32f_D2(in.data(), width, older, step, rows), kelStatusOk);
            EXPECT_TRUE(same(older.vector(), expected));
        } else {
            EXPECT_EQ(kelsCopyColumn_16s_D2(in.data(), width, out, step, rows), kelStatusOk);
        }
        EXPECT_TRUE(same(out.vector(), expected)) << width;
    }
}

}  // namespace
