// Pitch and periodicity.
#include "forms.h"

namespace accuracy {
namespace {

Exact product(const Row& x, std::size_t i, const Row& y, std::size_t j, std::size_t n) {
    return sum(n, [&](std::size_t k) { return x[i + k] * y[j + k]; });
}

void coefficients(Problem& p) {
    const Row &x = p.row("x"), &y = p.row("y");
    Row& d = p.exact("d")[0];
    const std::size_t n = x.size(), first = p.has("a") ? static_cast<std::size_t>(p.whole("a")) : 0;
    const Exact bias = p.has("bias") ? p.number("bias") : 0;
    for (std::size_t k = 0; k < d.size(); ++k) {
        const Exact energies = (product(x, 0, x, 0, n) + bias) * (product(y, first + k, y, first + k, n) + bias);
        d[k] = product(x, 0, y, first + k, n) / sqrt(energies);
    }
}
void betweenLags(Problem& p) {
    const Row &x = p.row("x"), &s = p.row("y");
    const std::size_t n = x.size(), lag = static_cast<std::size_t>(p.whole("lag"));
    const Exact xx = product(x, 0, x, 0, n), xy = product(x, 0, s, lag, n), xz = product(x, 0, s, lag + 1, n);
    const Exact yy = product(s, lag, s, lag, n), yz = product(s, lag, s, lag + 1, n);
    const Exact zz = product(s, lag + 1, s, lag + 1, n);
    const Exact a = yy - yz, b = zz - yz;
    const Exact f = (xz * a + yz * (xz - xy)) / (xz * a + xy * b), rest = Exact(1) - f;
    p.exact("f")[0][0] = f;
    p.exact("c")[0][0] = (rest * xy + f * xz) / sqrt(xx * (square(rest) * yy + f * rest * yz * 2 + square(f) * zz));
}
void periodicity(Problem& p) {
    const Row &s = p.row("s"), &w = p.row("w");
    Row& d = p.exact("d")[0];
    const Exact energy = product(s, 0, s, 0, s.size());
    for (std::size_t k = 0; k < d.size(); ++k) {
        const std::size_t lag = k + static_cast<std::size_t>(p.whole("a"));
        d[k] = product(s, 0, s, lag, s.size() - lag) / energy * (w[0] / w[lag]);
    }
}
void leastSquares(Problem& p) {
    const Row& s = p.row("s");
    Row& d = p.exact("d")[0];
    for (std::size_t k = 0; k < d.size(); ++k) {
        const std::size_t period = k + static_cast<std::size_t>(p.whole("a"));
        Exact above, below;
        for (std::size_t phase = 0; phase < period && phase + period < s.size(); ++phase) {
            Exact all, squares;
            Real count = 0;
            for (std::size_t i = phase; i < s.size(); i += period, ++count) {
                all += s[i];
                squares += square(s[i]);
            }
            above += (square(all) - squares) / count;
            below += squares * (count - 1) / count;
        }
        d[k] = below.value == 0 ? 0 : above / below;
    }
}
// Not where the frequency lies at an end of the range, to within roundings.
void marks(Problem& p) {
    const Row& at = p.row("marks");
    Row &f = p.exact("f")[0], &strength = p.exact("s")[0];
    for (std::size_t m = 1; m <= f.size(); ++m) {
        f[m - 1] = strength[m - 1] = 0;
        if (at.size() < m + 2) continue;
        const std::size_t j = at.size() - m;
        const auto interval = [&](std::size_t i) { return at[i + m].value - at[i].value; };
        Real mean = 0, squares = 0;
        for (std::size_t i = 0; i < j; ++i) mean += interval(i) / static_cast<Real>(j);
        for (std::size_t i = 0; i < j; ++i) squares += square(interval(i) - mean).value / static_cast<Real>(j - 1);
        const Real frequency = p.number("rate") / mean;
        if (frequency < p.number("low") || frequency > p.number("high")) continue;
        f[m - 1] = frequency;
        strength[m - 1] = {std::max<Real>(0, 1 - std::sqrt(static_cast<Real>(m) * squares) / mean), 1};
    }
}
void entropy(Problem& p) {
    const Row& s = p.row("s");
    const Real all = sum(s).value;
    p.exact("e")[0][0] = sum(s.size(), [&](std::size_t i) -> Exact {
        const Real part = s[i].value / all;
        return part == 0 ? 0 : -part * std::log(part);
    });
}

}  // namespace

References pitchReferences() {
    return {
        {"kelsCrossCorrCoeff kelsCrossCorrCoeffPartial", "x=-9..9 y=-9..9", Unit::Sum, coefficients, {}, 20},
        {"kelsCrossCorrCoeffInterpolation", "x=-9..9 y=-9..9 n=4..90", Unit::Sum, betweenLags, {}, 150},
        {"kelsPeriodicity", "w=0.1..9", Unit::Sum, periodicity, {}, 40},
        {"kelsPeriodicityLSPE", "s=-9..9 n=2..200", Unit::Sum, leastSquares, {}, 20},
        {"kelsPitchmarkToF0Cand", "", Unit::Sum, marks},
        {"kelsEntropy", "s=0..1e4", Unit::Ulp, entropy},
    };
}

}  // namespace accuracy
