// The logarithm; sine and exponential are tested as the kernel functions that are made of them.
#include "core/simd/elementary.h"

#include <algorithm>
#include <cmath>

#include "core/scaling.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

using namespace kels;

TEST(VectorMath, LogarithmOverAllBinades) {
    test::Random random(5);
    std::vector<double> x;
    for (int e = -1074; e < 1024; ++e) {
        for (int i = 0; i < 64; ++i) x.push_back(std::ldexp(random.uniform(1, 2), e));
    }
    const double above = std::nextafter(1.0, 2.0), below = std::nextafter(1.0, 0.0);
    for (const double v : {1.0, above, below, 0.0, -0.0, -1.0, HUGE_VAL, std::nan("")}) x.insert(x.end(), 8, v);
    double worst = 0;
    for (std::size_t i = 0; i + lanes<double> <= x.size(); i += lanes<double>) {
        const Vec<double> y = logarithm(load(&x[i]));
        for (std::size_t k = 0; k < lanes<double>; ++k) {
            const double result = y[k];
            worst = std::max(worst, test::ulpError(result, std::log(static_cast<long double>(x[i + k]))));
        }
    }
    EXPECT_LE(worst, 1);
}

}  // namespace
