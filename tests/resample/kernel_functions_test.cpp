// The sinc and the Gaussian that filters are made of, beside extended precision.
#include "kels.h"
#include "support/elements.h"
#include "support/overlap.h"

namespace {

using namespace test;

// Of all binades, where the functions bend, next to zeros of the sine, and what has no ordinary value.
double anyArgument(Random& random, double) {
    const double special[] = {0, -0.0, NAN, HUGE_VAL, -HUGE_VAL, 1e6, -1e6, 3.4e38, 1e-45};
    const double choices[] = {std::ldexp(random.uniform(-2, 2), random.between(-1074, 1023)),
                              std::ldexp(random.uniform(-2, 2), random.between(-149, 127)),
                              random.uniform(-30, 30),
                              random.between(-5000, 5000) * std::acos(-1.0),
                              static_cast<Kel32f>(random.between(-1100000, 1100000) * std::acos(-1.0)),
                              special[random.between(0, 8)]};
    return choices[random.between(0, 5)];
}

// `exact` is what the function stands for at x, whose square was rounded to q.
template <class... F>
void expectAccurate(Real (*exact)(Real x, Real q), double ulp32, double ulp64, F*... forms) {
    const Options options = {.scalars = std::vector<double>(30), .input = anyArgument};
    const auto op = [=]<class D>(auto x, D, int) {
        return Ulps{exact(x, opaque(D{x} * D{x})), std::is_same_v<D, Kel32f> ? ulp32 : ulp64};
    };
    expectElements(op, options, forms...);
}

TEST(KernelFunctions, SinC) {
    expectAccurate([](Real x, Real) { return x == 0 || std::isnan(x) ? 1 : std::sin(x) / x; }, 1.5, 2.5, kelsSinC_32f,
                   kelsSinC_64f, kelsSinC_32f64f, apart<kelsSinC_32f_I>, apart<kelsSinC_64f_I>);
}

TEST(KernelFunctions, ExpNegSqr) {
    expectAccurate([](Real, Real q) { return std::exp(-q); }, 1.1, 1.1, kelsExpNegSqr_32f, kelsExpNegSqr_64f,
                   kelsExpNegSqr_32f64f, apart<kelsExpNegSqr_32f_I>, apart<kelsExpNegSqr_64f_I>);
}

TEST(KernelFunctions, ElementsFollowOneAnotherWhereArraysOverlap) {
    const auto of = [](auto f) { return [=](const auto& p, int len) { f(p[0], p[1], len); }; };
    expectLoopWhereArraysOverlap<Kel32f, 2>(of(kelsSinC_32f));
    expectLoopWhereArraysOverlap<Kel64f, 2>(of(kelsSinC_64f));
    expectLoopWhereArraysOverlap<Kel32f, 2>(of(kelsExpNegSqr_32f));
    expectLoopWhereArraysOverlap<Kel64f, 2>(of(kelsExpNegSqr_64f));
}

}  // namespace
