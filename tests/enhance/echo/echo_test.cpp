// The integer functions of the echo canceller beside their formulas in extended precision.
#include <cstdint>

#include "enhance/echo/echo_forms.h"
#include "kels.h"
#include "support/support.h"

namespace {

using namespace test;

constexpr Real kOne = 0x1p27L;  // of coefficients and variances

struct Z {
    Real re, im;
};
Z wide(const Kel32sc& c, Real unit = 1) {
    return {c.re * unit, c.im * unit};
}
Real square(const Kel32sc& c, Real unit = 1) {
    const Z z = wide(c, unit);
    return z.re * z.re + z.im * z.im;
}

// Computed in double precision, rounded and saturated; `size` is that of the terms.
::testing::AssertionResult expected(Kel32s got, Real exact, Real size) {
    return near(got, std::clamp<Real>(exact, INT32_MIN, INT32_MAX), 0.5L + 0x1p-44L * size);
}

// Random arrays of a filter.
struct Filter {
    int len, parts;
    Random random;
    Rows<Kel32sc> x, h;
    Rows<Kel32s> var, step;
    std::vector<Kel32sc> e, y;
    std::vector<Kel32s> near;

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
        const bool loud = seed % 4 == 3;  // beyond what is used, to saturate
        for (int p = 0; p < parts; ++p) {
            fill(x[p], loud ? 2e9 : 3e6);
            fill(h[p], kOne * (loud ? 15 : 0.6));
            for (Kel32s& v : var[p]) v = static_cast<Kel32s>(std::fabs(draw(kOne * (loud ? 15 : 0.3))));
            for (Kel32s& v : step[p]) v = static_cast<Kel32s>(random.uniform(0, 2e9));
        }
        fill(e, loud ? 2e9 : 1e5);
        for (Kel32s& v : near) v = static_cast<Kel32s>(random.uniform(0, 1e5));
    }
    double draw(double level) { return random.uniform(-level, level) * std::exp2(-random.between(0, 12)); }
    void fill(std::vector<Kel32sc>& v, double level) {
        for (Kel32sc& c : v) c = {static_cast<Kel32s>(draw(level)), static_cast<Kel32s>(draw(level))};
    }
};

template <class Check>
void forFilters(Check check) {
    unsigned seed = 0;
    for (const int len : {1, 2, 3, 4, 9, 17, 18, 33, 34, 65, 4097}) {
        for (const int parts : {1, 2, 7}) check(Filter(len, parts, ++seed));
    }
}

TEST(EchoIntegers, FilterSumsProducts) {
    forFilters([](Filter f) {
        ASSERT_EQ(kelsFilterAECNLMS_32sc(f.x.read(), f.h.read(), f.y.data(), f.len, f.parts), 0);
        for (int k = 0; k < f.len; ++k) {
            Z sum{}, size{};
            for (int p = 0; p < f.parts; ++p) {
                const Z x = wide(f.x[p][k]), h = wide(f.h[p][k], 1 / kOne);
                sum.re += x.re * h.re - x.im * h.im;
                sum.im += x.re * h.im + x.im * h.re;
                size.re += std::fabs(x.re * h.re) + std::fabs(x.im * h.im);
                size.im += std::fabs(x.re * h.im) + std::fabs(x.im * h.re);
            }
            ASSERT_TRUE(expected(f.y[k].re, sum.re, size.re)) << "bin " << k << " of " << f.len;
            ASSERT_TRUE(expected(f.y[k].im, sum.im, size.im)) << "bin " << k << " of " << f.len;
        }
    });
}

TEST(EchoIntegers, StepSizesFollowTheVariances) {
    const auto stepSize = kelsStepSizeUpdateAECNLMS_32s;
    forFilters([=](Filter f) {
        const Kel32f factor = f.len % 2 ? 1 : 0.5F, forget = 0.0123F, smooth = 0.87F;
        if (f.len > 4) f.e[0] = f.e[1] = f.e[2] = {}, f.near[1] = 0;  // no error in bin 1
        const auto var = f.var.values;
        const auto near = f.near;
        ASSERT_EQ(stepSize(f.x.read(), f.h.read(), f.e.data(), f.near.data(), f.var.write(), f.step.write(), f.len,
                           f.parts, factor, forget, smooth),
                  0);
        for (int k = 0; k < f.len; ++k) {
            SCOPED_TRACE(testing::Message() << "bin " << k << " of " << f.len);
            const int last = f.len - 1, below = k > 0 ? k - 1 : std::min(1, last),
                      above = k < last ? k + 1 : std::max(last - 1, 0);
            const Real e2 = square(f.e[k]) / 2 + (square(f.e[below]) + square(f.e[above])) / 4;
            const Real z = smooth * Real(near[k]) * near[k] + (1 - Real{smooth}) * e2;
            ASSERT_TRUE(expected(f.near[k], std::sqrt(z), std::sqrt(z)));
            Real residual = 0, total = 0;
            for (int p = 0; p < f.parts; ++p) {
                residual += var[p][k] / kOne * square(f.x[p][k]) / 2;
                total += square(f.x[p][k]);
            }
            for (int p = 0; p < f.parts; ++p) {
                const Real d = residual + std::max(z, e2), v = var[p][k] / kOne, x2 = square(f.x[p][k]);
                const Real step = d < 0x1p-126L ? 0 : factor * v / d, stored = step * total * 0x1p26L;
                ASSERT_TRUE(expected(f.step[p][k], stored, stored));
                const Real kept = (1 - Real{forget}) * (1 - step * x2 / 4) * v;
                const Real next = (kept + forget * square(f.h[p][k], 1 / kOne)) * kOne;
                ASSERT_TRUE(expected(f.var[p][k], next, next));
            }
        }
        // Neither moves nor forgets; steps are 0.
        const auto kept = f.var.values;
        ASSERT_EQ(stepSize(f.x.read(), f.h.read(), f.e.data(), f.near.data(), f.var.write(), f.step.write(), f.len,
                           f.parts, 0, 0, 1),
                  0);
        EXPECT_TRUE(f.var.values == kept && f.step.values == Rows<Kel32s>(f.parts, f.len).values);
    });
}

TEST(EchoIntegers, CoefficientsMove) {
    forFilters([](Filter f) {
        for (auto& row : f.x.values) row[f.len / 2] = {};  // a bin without reference
        const auto before = f.h.values;
        ASSERT_EQ(kelsCoefUpdateAECNLMS_32sc_I(f.x.read(), f.e.data(), f.step.read(), f.h.write(), f.len, f.parts), 0);
        for (int k = 0; k < f.len; ++k) {
            Real total = 0;
            for (int p = 0; p < f.parts; ++p) total += square(f.x[p][k]);
            for (int p = 0; p < f.parts; ++p) {
                const Z x = wide(f.x[p][k]), e = wide(f.e[k]);
                const Real step = total > 0 ? f.step[p][k] * 2.0L / total : 0;
                const auto moved = [&](Kel32s got, Real h, Real a, Real b) {
                    const Real size = std::fabs(h) + std::fabs(step * a) + std::fabs(step * b);
                    return expected(got, h + step * (a + b), size);
                };
                const auto h = before[p][k], now = f.h[p][k];
                ASSERT_TRUE(moved(now.re, h.re, x.re * e.re, x.im * e.im)) << "bin " << k << " of " << f.len;
                ASSERT_TRUE(moved(now.im, h.im, x.re * e.im, -x.im * e.re)) << "bin " << k << " of " << f.len;
            }
        }
    });
}

}  // namespace
