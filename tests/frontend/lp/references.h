// Linear prediction in extended precision: what each function gives for a source and the length that the call is given;
// fewer results where the calculation stops.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

#include "kels/types.h"
#include "support/transform.h"

namespace test::lp {

using Exact = std::vector<Real>;

inline void stepUp(Exact& a, Real k) {
    const Exact before = a;
    for (std::size_t j = 0; j < a.size(); ++j) a[j] -= k * before[a.size() - 1 - j];
    a.push_back(-k);
}
inline Exact predictor(const Exact& k, int) {
    Exact a;
    for (const Real last : k) stepUp(a, last);
    return a;
}

// Levinson's recursion; behind the coefficients the error, if it stays above 0.
template <bool wantsReflections>
Exact levinson(const Exact& r, int) {
    Exact a, k;
    Real error = r[0];
    for (std::size_t i = 1; i < r.size() && error > 0; ++i) {
        Real last = r[i];
        for (std::size_t j = 1; j < i; ++j) last += a[j - 1] * r[i - j];
        k.push_back(last / error);
        stepUp(a, k.back());
        error *= 1 - k.back() * k.back();
    }
    Exact& result = wantsReflections ? k : a;
    if (error > 0) result.push_back(error);
    return result;
}
template <int sign>
Exact autocorrelation(const Exact& x, int n) {
    Exact r(n / 2 + 2);
    for (int lag = 0; lag <= n / 2 + 1; ++lag) {
        for (int t = lag; t < n; ++t) r[lag] += x[t] * x[t - lag];
        r[lag] = static_cast<Kel32f>(r[lag]);
    }
    Exact a = levinson<false>(r, 0);
    a.pop_back();
    for (Real& v : a) v *= sign;
    return a;
}
inline Exact covarianceOf(const Exact& x, int n, int p) {
    std::vector<Exact> phi(p + 1, Exact(p + 1));
    for (int t = p; t < n; ++t) {
        for (int i = 0; i <= p; ++i) {
            for (int j = 0; j <= p; ++j) phi[i][j] += x[t - i] * x[t - j];
        }
    }
    Exact a;
    for (int i = 1; i <= p; ++i) {
        if (!(phi[i][i] > 1e-9L)) return {};
        for (int row = 1; row <= p; ++row) {
            const Real factor = row == i ? 0 : phi[row][i] / phi[i][i];
            for (int j = 0; j <= p; ++j) phi[row][j] -= factor * phi[i][j];
        }
    }
    for (int i = 1; i <= p; ++i) a.push_back(-phi[i][0] / phi[i][i]);
    return a;
}

inline Exact covariance(const Exact& x, int n) {
    return covarianceOf(x, n, n / 4 + 1);
}

// n a(n) + n c(n) + sum of k c(k) a(n-k) = 0; the factor 1 / n of short ones is single.
template <bool isCepstrum>
Exact cepstral(const Exact& x, int) {
    Exact y;
    for (std::size_t n = 1; n <= x.size(); ++n) {
        Real sum = 0;
        for (std::size_t k = 1; k < n; ++k) sum += k * (isCepstrum ? x[k - 1] * y[n - k - 1] : y[k - 1] * x[n - k - 1]);
        y.push_back(-x[n - 1] - sum * (x.size() < 22 ? 1.0f / static_cast<Kel32f>(n) : 1.0L / n));
    }
    return y;
}

// Of as few points as take the predictor, with val 7; its delay by one changes no magnitude.
inline Exact spectrum(const Exact& a, int n) {
    Exact levels;
    for (const auto& bin : transform(a, std::bit_ceil(n + 1u))) {
        levels.push_back(1 / std::abs(levels.empty() ? bin - 7.0L : bin));
    }
    return levels;
}

inline Exact reflections(const Exact& predictor, int) {
    Exact a = predictor, k(a.size());
    for (std::size_t i = a.size(); i >= 1; --i) {
        const Real last = k[i - 1] = -a[i - 1];
        const Exact before = a;
        for (std::size_t j = 0; j + 1 < i; ++j) {
            a[j] = last * last == 1 ? NAN : (before[j] + last * before[i - 2 - j]) / (1 - last * last);
        }
    }
    return k;
}

inline Exact times(const Exact& f, const Exact& g) {
    Exact product(f.size() + g.size() - 1);
    for (std::size_t i = 0; i < f.size(); ++i) {
        for (std::size_t j = 0; j < g.size(); ++j) product[i + j] += f[i] * g[j];
    }
    return product;
}
inline Exact predictorOfPairs(const Exact& x, int n) {
    Exact pq[2] = {n % 2 ? Exact{1} : Exact{1, 1}, n % 2 ? Exact{1, 0, -1} : Exact{1, -1}}, a;
    for (int i = 0; i < n; ++i) pq[i % 2] = times(pq[i % 2], {1, -2 * x[i], 1});
    for (int i = 1; i <= n; ++i) a.push_back((pq[0][i] + pq[1][i]) / 2);
    return a;
}

// Element by element: of k alone, or of k in the first half of the source and l in the second.
template <Real (*value)(Real)>
Exact elementwise(const Exact& x, int) {
    Exact y;
    for (const Real k : x) y.push_back(value(k));
    return y;
}
template <Real (*value)(Real, Real)>
Exact ofHalves(const Exact& x, int n) {
    Exact y;
    for (int i = n / 2; i < n; ++i) y.push_back(value(x[i - n / 2], x[i]));
    return y;
}
inline Real areaRatioOf(Real k) {
    return (1 - k) / (1 + k);
}
inline Real trueAreaRatioOf(Real k) {
    return (1 + k) / (1 - k);
}
inline Real logAreaRatioOf(Real k) {
    return -2 * std::atanh(std::clamp(k, -0.875L, 0.875L));
}
inline Real tiltOf(Real k, Real l) {
    return (std::fabs(k) - std::fabs(l)) / (k + l);
}
inline Real absTiltOf(Real k, Real l) {
    return (std::fabs(k) - std::fabs(l)) / (std::fabs(k) + std::fabs(l));
}

// P and Q vanish by turns; each is the real or the imaginary part of the predictor turned by half its phase.
inline Exact pairs(const Exact& a, int n) {
    Exact x;
    const auto positive = [&](Real w) {
        const auto back = std::polar(1.0L, -w);
        std::complex<Real> b = 0;
        for (int i = n; i > 0; --i) b = (b + a[i - 1]) * back;
        b = (b + 1.0L) * std::polar(1.0L, w * (n + 1) / 2);
        return (x.size() % 2 == 0 ? b.real() : b.imag()) > 0;
    };
    const Real end = std::numbers::pi_v<Real> - 0x1p-30L;
    for (Real low = 0, high; low < end && x.size() < a.size(); low = high) {
        high = std::min(low + end / (8 * n), end);
        if (positive(low) == positive(high)) continue;
        for (Real half = (high - low) / 2; half > 0x1p-40L; half /= 2) {
            if (positive(low) == positive(low + half)) low += half;
        }
        x.push_back(std::cos(low));
        high = low;
    }
    if (x.size() < a.size()) x.clear();
    return x;
}

}  // namespace test::lp
