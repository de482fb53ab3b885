// The functions of the echo canceller beside their formulas in extended precision.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

#include "enhance/echo/echo_forms.h"
#include "kels.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

using test::Random;
using test::Real;

constexpr Real kEps = 0x1p-24L;

struct Z {
    Real re, im;
};
template <class C>
Z wide(const C& c, Real unit = 1) {
    return {c.re * unit, c.im * unit};
}
template <class C>
Real square(const C& c, Real unit = 1) {
    const Z z = wide(c, unit);
    return z.re * z.re + z.im * z.im;
}

// `bound` is that of single precision.  Integers are rounded and saturated, and computed in double precision.
template <class T>
::testing::AssertionResult expected(T got, Real exact, Real bound) {
    if constexpr (std::is_integral_v<T>) {
        exact = std::clamp<Real>(exact, INT32_MIN, INT32_MAX);
        bound = 0.5L + bound * 0x1p-26L;
    }
    return test::near(got, exact, bound);
}

template <class Form>
class EchoForms : public ::testing::Test {};
TYPED_TEST_SUITE(EchoForms, BothForms);

// Random arrays of a filter.
template <class Form>
struct Filter {
    using T = typename Form::Real;
    using C = typename Form::Complex;
    int len, parts;
    Random random;
    Rows<C> x, h;
    Rows<T> var, step;
    std::vector<C> e, y;
    std::vector<T> near;

    Filter(int itsLen, int itsParts, unsigned seed)
        : len(itsLen),
          parts(itsParts),
          random(seed),
          x(parts, len),
          h(parts, len),
          var(parts, len),
          step(parts, len),
          e(len),
          y(len),
          near(len) {
        const bool loud = seed % 4 == 3;  // integers beyond what is used, to saturate
        for (int p = 0; p < parts; ++p) {
            fill(x[p], loud ? 2e9 : 3e6);
            fill(h[p], Form::kOne * (loud ? 15 : 0.6));
            for (T& v : var[p]) v = static_cast<T>(std::fabs(draw(Form::kOne * (loud ? 15 : 0.3))));
            for (T& v : step[p])
                v = std::is_integral_v<T> ? static_cast<T>(random.uniform(0, 2e9)) : static_cast<T>(draw(1e-12));
        }
        fill(e, loud ? 2e9 : 1e5);
        for (T& v : near) v = static_cast<T>(std::is_integral_v<T> ? random.uniform(0, 1e5) : random.uniform(0, 1e10));
    }
    double draw(double level) { return random.uniform(-level, level) * std::exp2(-random.between(0, 12)); }
    void fill(std::vector<C>& v, double level) {
        using P = decltype(C::re);
        for (C& c : v) c = {static_cast<P>(draw(level)), static_cast<P>(draw(level))};
    }
};

template <class Form, class Check>
void forFilters(Check check) {
    unsigned seed = 0;
    for (const int len : {1, 2, 3, 4, 9, 17, 18, 33, 34, 65, 4097}) {
        for (const int parts : {1, 2, 7}) check(Filter<Form>(len, parts, ++seed));
    }
}

TYPED_TEST(EchoForms, FilterSumsProducts) {
    using Form = TypeParam;
    forFilters<Form>([](Filter<Form> f) {
        ASSERT_EQ(Form::filter(f.x.read(), f.h.read(), f.y.data(), f.len, f.parts), 0);
        for (int k = 0; k < f.len; ++k) {
            Z sum{}, size{};
            for (int p = 0; p < f.parts; ++p) {
                const Z x = wide(f.x[p][k]), h = wide(f.h[p][k], 1 / Form::kOne);
                sum.re += x.re * h.re - x.im * h.im;
                sum.im += x.re * h.im + x.im * h.re;
                size.re += std::fabs(x.re * h.re) + std::fabs(x.im * h.im);
                size.im += std::fabs(x.re * h.im) + std::fabs(x.im * h.re);
            }
            const Real bound = (2 * f.parts + 2) * kEps;
            ASSERT_TRUE(expected(f.y[k].re, sum.re, bound * size.re)) << "bin " << k << " of " << f.len;
            ASSERT_TRUE(expected(f.y[k].im, sum.im, bound * size.im)) << "bin " << k << " of " << f.len;
        }
    });
}

TYPED_TEST(EchoForms, StepSizesFollowTheVariances) {
    using Form = TypeParam;
    using T = typename Form::Real;
    forFilters<Form>([](Filter<Form> f) {
        const Kel32f factor = f.len % 2 ? 1 : 0.5F, forget = 0.0123F, smooth = 0.87F;
        if (f.len > 4) f.e[0] = f.e[1] = f.e[2] = {}, f.near[1] = 0;  // no error in bin 1
        const auto var = f.var.values;
        const auto near = f.near;
        ASSERT_EQ(Form::stepSize(f.x.read(), f.h.read(), f.e.data(), f.near.data(), f.var.write(), f.step.write(),
                                 f.len, f.parts, factor, forget, smooth),
                  0);
        const Real unit = 1 / Form::kOne, bound = (2 * f.parts + 24) * kEps;
        for (int k = 0; k < f.len; ++k) {
            const int last = f.len - 1, below = k > 0 ? k - 1 : std::min(1, last),
                      above = k < last ? k + 1 : std::max(last - 1, 0);
            const Real e2 = square(f.e[k]) / 2 + (square(f.e[below]) + square(f.e[above])) / 4;
            const Real z = smooth * Form::power(near[k]) + (1 - Real{smooth}) * e2;
            ASSERT_TRUE(expected(f.near[k], Form::storedNear(z), bound * Form::storedNear(z)))
                << "bin " << k << " of " << f.len;
            Real residual = 0, total = 0;
            for (int p = 0; p < f.parts; ++p) {
                residual += var[p][k] * unit * square(f.x[p][k]) / 2;
                total += square(f.x[p][k]);
            }
            for (int p = 0; p < f.parts; ++p) {
                const Real d = residual + std::max(z, e2), v = var[p][k] * unit, x2 = square(f.x[p][k]);
                const Real step = d < 0x1p-126L ? 0 : factor * v / d, stored = Form::storedStep(step, total);
                const Real kept = (1 - Real{forget}) * (1 - step * x2 / 4) * v,
                           gained = forget * square(f.h[p][k], unit);
                ASSERT_TRUE(expected(f.step[p][k], stored, bound * stored)) << "bin " << k << " of " << f.len;
                const Real next = (kept + gained) / unit;
                ASSERT_TRUE(expected(f.var[p][k], next, bound * next)) << "bin " << k << " of " << f.len;
            }
        }
        // Neither moves nor forgets; steps are 0.
        const auto kept = f.var.values;
        ASSERT_EQ(Form::stepSize(f.x.read(), f.h.read(), f.e.data(), f.near.data(), f.var.write(), f.step.write(),
                                 f.len, f.parts, 0, 0, 1),
                  0);
        EXPECT_TRUE(f.var.values == kept && f.step.values == Rows<T>(f.parts, f.len).values);
    });
}

TYPED_TEST(EchoForms, CoefficientsMove) {
    using Form = TypeParam;
    forFilters<Form>([](Filter<Form> f) {
        for (auto& row : f.x.values) row[f.len / 2] = {};  // a bin without reference
        const auto before = f.h.values;
        ASSERT_EQ(Form::move(f.x.read(), f.e.data(), f.step.read(), f.h.write(), f.len, f.parts), 0);
        for (int k = 0; k < f.len; ++k) {
            Real total = 0;
            for (int p = 0; p < f.parts; ++p) total += square(f.x[p][k]);
            for (int p = 0; p < f.parts; ++p) {
                const Z x = wide(f.x[p][k]), e = wide(f.e[k]);
                const Real step = Form::usedStep(f.step[p][k], total);
                const auto moved = [&](auto got, Real h, Real a, Real b) {
                    const Real size = std::fabs(h) + std::fabs(step * a) + std::fabs(step * b);
                    return expected(got, h + step * (a + b), 6 * kEps * size);
                };
                const auto h = before[p][k], now = f.h[p][k];
                ASSERT_TRUE(moved(now.re, h.re, x.re * e.re, x.im * e.im)) << "bin " << k << " of " << f.len;
                ASSERT_TRUE(moved(now.im, h.im, x.re * e.im, -x.im * e.re)) << "bin " << k << " of " << f.len;
            }
        }
    });
}

// Numbers worked out by hand.
TEST(Echo, IntegersOfOneBin) {
    Rows<Kel32sc> x(1, 1), h(1, 1);
    Rows<Kel32s> var(1, 1), step(1, 1);
    x[0][0] = {1000, -2000};
    h[0][0] = {67108864, 0};
    var[0][0] = 33554432;
    const Kel32sc e = {300, 400};
    Kel32sc y;
    Kel32s near = 200;
    ASSERT_EQ(kelsFilterAECNLMS_32sc(x.read(), h.read(), &y, 1, 1), 0);
    ASSERT_EQ(
        kelsStepSizeUpdateAECNLMS_32s(x.read(), h.read(), &e, &near, var.write(), step.write(), 1, 1, 1, 0.125F, 0.75F),
        0);
    ASSERT_EQ(kelsCoefUpdateAECNLMS_32sc_I(x.read(), &e, step.read(), h.write(), 1, 1), 0);
    EXPECT_TRUE(y.re == 500 && y.im == -1000 && near == 304);
    EXPECT_TRUE(step[0][0] == 95869806 && var[0][0] == 23068672);
    EXPECT_TRUE(h[0][0].re == 47934903 && h[0][0].im == 38347922);
}

}  // namespace
