#include "core/vector_math.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/scaling.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

using namespace kels;

// The largest error of `function` over x, in units in the last place of T.
template <class T, class Function, class Reference>
double worstError(const std::vector<T>& x, Function function, Reference reference) {
    double worst = 0;
    for (std::size_t i = 0; i + lanes<T> <= x.size(); i += lanes<T>) {
        const Vec<T> y = function(load(&x[i]));
        for (std::size_t k = 0; k < lanes<T>; ++k) {
            worst = std::max(worst, test::ulpError<T>(y[k], reference(static_cast<long double>(x[i + k]))));
        }
    }
    return worst;
}

// Random values in every binade from 2^low to 2^high.
template <class T>
std::vector<T> everyBinade(int low, int high, int each, T sign) {
    test::Random random(5);
    std::vector<T> v;
    for (int e = low; e <= high; ++e) {
        for (int i = 0; i < each; ++i) v.push_back(sign * static_cast<T>(std::ldexp(random.uniform(1, 2), e)));
    }
    return v;
}

TEST(VectorMath, SineOverAllBinadesAndNextToItsZeros) {
    std::vector<double> x;
    const long double pi = std::acos(-1.0L);
    for (int k = 1; k < 5000; ++k) {
        const auto zero = static_cast<double>(k * pi);
        for (const double v : {zero, std::nextafter(zero, 0.0), std::nextafter(zero, 1e9), zero / 2}) x.push_back(-v);
    }
    for (const double sign : {1.0, -1.0}) {
        const auto more = everyBinade<double>(-1074, 1023, 64, sign);
        x.insert(x.end(), more.begin(), more.end());
    }
    const auto reference = [](long double v) { return std::sin(v); };
    EXPECT_LE(worstError(
                  x, [](const Vec<double>& v) { return sine<double>(v); }, reference),
              2);
}

template <class T>
void exponentials(double allowed) {
    auto x = everyBinade<T>(std::numeric_limits<T>::min_exponent, 12, 64, T(-1));
    test::Random random(6);
    const double zero = std::log(std::numeric_limits<T>::denorm_min());
    for (int i = 0; i < 4096; ++i) x.push_back(static_cast<T>(random.uniform(zero * 1.01, 0)));
    x.insert(x.end(), 16, T(0));
    x.insert(x.end(), 16, -std::numeric_limits<T>::infinity());
    x.insert(x.end(), 16, std::numeric_limits<T>::quiet_NaN());
    const auto reference = [](long double v) { return std::exp(v); };
    EXPECT_LE(worstError(
                  x, [](const Vec<T>& v) { return exponentialNotAbove1(v); }, reference),
              allowed);
}
TEST(VectorMath, ExponentialOverAllBinades) {
    exponentials<float>(1.1);
    exponentials<double>(1.1);
}

TEST(VectorMath, LogarithmOverAllBinades) {
    auto x = everyBinade<double>(-1074, 1023, 64, 1);
    const double next = std::nextafter(1.0, 2.0), inf = HUGE_VAL, nan = std::nan("");
    for (const double v : {1.0, next, std::nextafter(1.0, 0.0), 0.0, -0.0, -1.0, inf, nan}) x.insert(x.end(), 8, v);
    EXPECT_LE(worstError(
                  x, [](const Vec<double>& v) { return logarithm(v); }, [](long double v) { return std::log(v); }),
              1);
}

}  // namespace
