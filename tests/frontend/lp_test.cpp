#include "kels/lp.h"

#include <algorithm>
#include <complex>
#include <functional>
#include <numbers>

#include "support/allocation.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

using test::Guarded;
using test::Random;
using Exact = std::vector<long double>;
using Floats = std::vector<Kel32f>;

constexpr long double kUnit = 0x1p-24L;  // half a unit in the last place of 1.0f
constexpr long double kWideUnit = 0x1p-53L;

// ---- references

// m a = b by elimination with pivots.
Exact solve(std::vector<Exact> m, Exact b) {
    const std::size_t n = b.size();
    for (std::size_t i = 0; i < n; ++i) {
        std::size_t pivot = i;
        for (std::size_t j = i; j < n; ++j) pivot = std::fabs(m[j][i]) > std::fabs(m[pivot][i]) ? j : pivot;
        std::swap(m[i], m[pivot]);
        std::swap(b[i], b[pivot]);
        for (std::size_t j = i + 1; j < n; ++j) {
            const long double f = m[j][i] / m[i][i];
            for (std::size_t k = i; k < n; ++k) m[j][k] -= f * m[i][k];
            b[j] -= f * b[i];
        }
    }
    for (std::size_t i = n; i-- > 0;) {
        for (std::size_t k = i + 1; k < n; ++k) b[i] -= m[i][k] * b[k];
        b[i] /= m[i][i];
    }
    return b;
}

// The predictor of an autocorrelation from its normal equations.
template <class T>
Exact normalEquations(const T& r, std::size_t order) {
    std::vector<Exact> m(order, Exact(order));
    Exact b;
    for (std::size_t i = 0; i < order; ++i) {
        for (std::size_t j = 0; j < order; ++j) m[i][j] = r[i > j ? i - j : j - i];
        b.push_back(-static_cast<long double>(r[i + 1]));
    }
    return solve(m, b);
}

Exact stepUp(const Floats& k) {
    Exact a;
    for (const Kel32f last : k) {
        Exact next = a;
        for (std::size_t j = 0; j < a.size(); ++j) next[j] -= last * a[a.size() - 1 - j];
        next.push_back(-last);
        a = next;
    }
    return a;
}
bool isStable(Exact a) {
    while (!a.empty()) {
        const long double last = a.back();
        a.pop_back();
        if (!(std::fabs(last) < 1)) return false;
        Exact next = a;
        for (std::size_t j = 0; j < a.size(); ++j) next[j] = (a[j] - last * a[a.size() - 1 - j]) / (1 - last * last);
        a = next;
    }
    return true;
}

template <class To, class From>
std::vector<To> as(const std::vector<From>& v) {
    return std::vector<To>(v.begin(), v.end());
}

Floats reflections(Random& random, int order, double largest = 0.9) {
    Floats k;
    for (int i = 0; i < order; ++i) k.push_back(static_cast<Kel32f>(random.uniform(-largest, largest)));
    return k;
}

// Noise through a resonance.
template <class T>
std::vector<T> samples(Random& random, int len) {
    std::vector<T> x;
    double y1 = 0, y2 = 0;
    for (int n = 0; n < len; ++n) {
        const double y = 1.2 * y1 - 0.7 * y2 + random.uniform(-1000, 1000);
        y2 = y1;
        y1 = y;
        x.push_back(static_cast<T>(y));
    }
    return x;
}

// ---- analysis

class LpOrder : public ::testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(, LpOrder, ::testing::Values(1, 2, 3, 5, 12, 13, 24, 63, 64, 70));

TEST_P(LpOrder, AnalysisSolvesTheNormalEquations) {
    const int order = GetParam(), len = 4 * order + 40;
    const auto p = static_cast<std::size_t>(order);
    Random random(static_cast<unsigned>(order));
    const Guarded<Kel32f> x(samples<Kel32f>(random, len));
    Guarded<Kel32f> r(p + 1), a(p), k(p), automatic(p), negated(p), errors(2);
    for (std::size_t lag = 0; lag <= p; ++lag) {
        long double sum = 0;
        for (std::size_t n = lag; n < x.size(); ++n) sum += static_cast<long double>(x[n]) * x[n - lag];
        r[lag] = static_cast<Kel32f>(sum);
    }
    ASSERT_EQ(kelsDurbin_32f(r, a, order, errors), kelStatusOk);
    ASSERT_EQ(kelsSchur_32f(r, k, order, errors + 1), kelStatusOk);
    ASSERT_EQ(kelsLinearPrediction_Auto_32f(x.data(), len, automatic, order), kelStatusOk);
    ASSERT_EQ(kelsLinearPredictionNeg_Auto_32f(x.data(), len, negated, order), kelStatusOk);
    const Exact exact = normalEquations(r, p);
    long double error = r[0], amplified = order * kWideUnit;
    for (std::size_t i = 1; i <= p; ++i) {
        const long double ki = -normalEquations(r, i).back();
        amplified *= (1 + std::fabs(ki)) / (1 - std::fabs(ki));
        error *= 1 - ki * ki;
        EXPECT_NEAR(k[i - 1], ki, kUnit * std::fabs(ki) + amplified);
    }
    EXPECT_LT(amplified, kUnit);  // the bounds mean something
    for (std::size_t i = 0; i < p; ++i) {
        EXPECT_NEAR(a[i], exact[i], kUnit * std::fabs(exact[i]) + amplified);
        EXPECT_EQ(automatic[i], a[i]);
        EXPECT_EQ(negated[i], -a[i]);
    }
    for (const int i : {0, 1}) EXPECT_NEAR(errors[i], error, error * (kUnit + amplified));
}

template <class T>
void checkCovariance(int order, const std::function<KelStatus(const T*, int, T*, int)>& predict, double scale) {
    Random random(static_cast<unsigned>(order));
    const int len = 3 * order + 5;
    const Guarded<T> x(samples<T>(random, len));
    Guarded<T> a(static_cast<std::size_t>(order));
    ASSERT_EQ(predict(x.data(), len, a, order), kelStatusOk);
    std::vector<Exact> phi;
    for (int i = 0; i <= order; ++i) {
        phi.emplace_back();
        for (int j = 0; j <= order; ++j) {
            long double sum = 0;
            for (int n = order; n < len; ++n) sum += static_cast<long double>(x[n - i]) * x[n - j];
            phi.back().push_back(sum);
        }
    }
    Exact right;
    for (int i = 1; i <= order; ++i) {
        right.push_back(-phi[static_cast<std::size_t>(i)][0]);
        phi[static_cast<std::size_t>(i)].erase(phi[static_cast<std::size_t>(i)].begin());
    }
    phi.erase(phi.begin());
    const Exact exact = solve(phi, right);
    for (int i = 0; i < order; ++i) {
        const long double expected = exact[static_cast<std::size_t>(i)] * scale;
        EXPECT_NEAR(a[i], expected, scale == 1 ? 2 * kUnit * (1 + std::fabs(expected)) : 0.5001);
    }
    EXPECT_EQ(predict(x.data(), order, a, order), kelStatusLpcCalc);  // no sample has enough others before it
}
TEST_P(LpOrder, CovarianceMethodSolvesItsNormalEquations) {
    checkCovariance<Kel32f>(GetParam(), kelsLinearPrediction_Cov_32f, 1);
    const auto predict = [](const Kel16s* x, int len, Kel16s* a, int order) {
        return kelsLinearPrediction_Cov_16s_Sfs(x, len, a, order, -10);
    };
    checkCovariance<Kel16s>(GetParam(), predict, 1024);
}

TEST(LinearPrediction, CovarianceMethodPredictsSinusoids) {
    Guarded<Kel32f> x(60), a(4);
    for (int n = 0; n < 60; ++n) x[n] = static_cast<Kel32f>(std::cos(0.5 * n) + std::sin(1.7 * n));
    ASSERT_EQ(kelsLinearPrediction_Cov_32f(x, 60, a, 4), kelStatusOk);
    const double b = -2 * std::cos(0.5), c = -2 * std::cos(1.7);
    const double expected[] = {b + c, 2 + b * c, b + c, 1};
    for (int i = 0; i < 4; ++i) EXPECT_NEAR(a[i], expected[i], 2e-6);  // 2^-24 of noise at a condition below 30
    Guarded<Kel32f> more(6);
    EXPECT_EQ(kelsLinearPrediction_Cov_32f(x, 60, more, 6), kelStatusLpcCalc);
    EXPECT_EQ(more[0], 0);
}

TEST(LinearPrediction, StopsWhereTheErrorIsNotPositive) {
    const Kel32f nan = std::numeric_limits<Kel32f>::quiet_NaN();
    struct Case {
        Floats r;
        Floats predictor, reflection;  // what is stored before the recursion stops
    };
    for (const auto& [r, predictor, reflection] :
         {Case{{0, 1, 1, 1}, {}, {}},
          {{-1, 0, 0, 0}, {}, {}},
          {{nan, 0, 0, 0}, {}, {}},
          {{2, -2, 2, 2}, {1}, {-1}},
          {{1, 0.5f, 2, 0}, {-0.5f * (1 - 7 / 3.f), -7 / 3.f}, {0.5f, 7 / 3.f}}}) {
        const Guarded<Kel32f> source(r);
        Guarded<Kel32f> a{9, 9, 9}, k{9, 9, 9}, error{8};
        EXPECT_EQ(kelsDurbin_32f(source.data(), a, 3, error), kelStatusLpcCalc);
        EXPECT_EQ(kelsSchur_32f(source.data(), k, 3, error), kelStatusLpcCalc);
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_FLOAT_EQ(a[i], i < predictor.size() ? predictor[i] : 9);
            EXPECT_FLOAT_EQ(k[i], i < reflection.size() ? reflection[i] : 9);
        }
        EXPECT_EQ(error[0], 8);
    }
}

// ---- cepstrum and spectrum

TEST(LinearPrediction, CepstrumIsThatOfTheModel) {
    Random random(11);
    for (int order = 1; order <= 12; ++order) {
        Exact a = stepUp(reflections(random, order, 0.9));
        for (std::size_t i = 0; i < a.size(); ++i) a[i] *= std::pow(0.9L, i + 1);  // zeros within 0.9: c600 is nothing
        Floats padded = as<Kel32f>(a);
        padded.resize(600);
        Guarded<Kel32f> c(600), brief(static_cast<std::size_t>(order)), inPlace(padded);
        ASSERT_EQ(kelsLPToCepstrum_32f(padded.data(), c, 600), kelStatusOk);
        ASSERT_EQ(kelsLPToCepstrum_32f(inPlace, inPlace, 600), kelStatusOk);
        EXPECT_EQ(inPlace.vector(), c.vector());
        const Guarded<Kel32f> source(as<Kel32f>(a));
        ASSERT_EQ(kelsLPToCepstrum_32f(source.data(), brief, order), kelStatusOk);
        for (int n = 0; n < order; ++n) {
            long double terms = std::fabs(c[n]);
            for (int k = 1; k <= n; ++k)
                terms += std::fabs(static_cast<long double>(c[k - 1]) * padded[n - k]) * k / (n + 1);
            EXPECT_NEAR(brief[n], c[n], 3 * kUnit * terms);
        }
        for (long double w = 0.01L; w < 3.1L; w += 0.1L) {
            std::complex<long double> filter = 1;
            long double log = 0, rounding = 0;
            for (std::size_t n = 1; n <= 600; ++n) {
                filter += static_cast<long double>(padded[n - 1]) * std::polar(1.0L, -w * n);
                log += c[n - 1] * std::cos(w * n);
                rounding += kUnit * std::fabs(c[n - 1]);
            }
            EXPECT_NEAR(log, -std::log(std::abs(filter)), rounding + 1e-9);
        }
    }
}

TEST(LinearPrediction, SpectrumIsTheReciprocalTransform) {
    Random random(12);
    for (int fftOrder = 1; fftOrder <= 11; ++fftOrder) {
        const std::size_t n = std::size_t{1} << fftOrder;
        const int len = std::min(random.between(1, 30), static_cast<int>(n) - 1);
        const Guarded<Kel32f> a(random.vector<Kel32f>(static_cast<std::size_t>(len), 1));
        Guarded<Kel32f> got(n);
        ASSERT_EQ(kelsLPToSpectrum_32f(a.data(), len, got, fftOrder, -1.5f), kelStatusOk);
        long double energy = 0;
        for (const Kel32f v : a.vector()) energy += static_cast<long double>(v) * v;
        const long double noise = kUnit * std::sqrt(energy * (fftOrder + 2) * static_cast<long double>(n + 2));
        for (std::size_t k = 0; k < n; ++k) {
            std::complex<long double> s = k == 0 ? 1.5L : 0;
            for (std::size_t m = 0; m < a.size(); ++m) {
                s += static_cast<long double>(a[m]) *
                     std::polar(1.0L,
                                -2 * std::numbers::pi_v<long double> * static_cast<long double>((m + 1) * k % n) / n);
            }
            const long double level = 1 / std::abs(s);
            EXPECT_NEAR(got[k], level, level * (noise * level + 4 * kUnit) * 1.01L) << fftOrder << ' ' << k;
            EXPECT_EQ(got[k], got[(n - k) % n]);
        }
    }
    const Guarded<Kel32f> a{1, 2, 3};
    const Guarded<Kel16s> b{1, 2, 3};
    Guarded<Kel32f> got(4);
    Guarded<Kel16s> scaled(4);
    EXPECT_EQ(kelsLPToSpectrum_32f(a.data(), 3, got, 2, 6), kelStatusDivByZero);
    EXPECT_EQ(got.vector(), (Floats{HUGE_VALF, got[1], 0.5f, got[1]}));
    EXPECT_FLOAT_EQ(got[1], static_cast<Kel32f>(1 / std::sqrt(8.0)));
    EXPECT_EQ(kelsLPToSpectrum_16s_Sfs(b.data(), 3, scaled, 2, 6, -8), kelStatusDivByZero);
    EXPECT_EQ(scaled.vector(), (std::vector<Kel16s>{32767, 91, 128, 91}));
}

// ---- reflection coefficients and pairs

TEST_P(LpOrder, ReturnTripsKeepThePrecisionStated) {
    const int order = GetParam();
    const auto p = static_cast<std::size_t>(order);
    Random random(static_cast<unsigned>(order) + 100);
    for (int round = 0; round < 20; ++round) {
        const Guarded<Kel32f> k(reflections(random, order, order > 24 ? 0.2 : order > 13 ? 0.5 : 0.9));
        const Exact exact = stepUp(k.vector());
        Guarded<Kel32f> a(p), back(p), other(p);
        ASSERT_EQ(kelsReflectionToLP_32f(k.data(), a, order), kelStatusOk);
        long double product = 1;
        for (std::size_t i = 0; i < p; ++i) product *= 1 + std::fabs(k[i]);
        for (std::size_t i = 0; i < p; ++i) {
            EXPECT_NEAR(a[i], exact[i], kUnit * std::fabs(exact[i]) + order * kWideUnit * product);
        }
        ASSERT_EQ(kelsLPToReflection_32f(a, other, order), kelStatusOk);
        ASSERT_EQ(kelsReflectionToLP_32f(other, other, order), kelStatusOk);
        for (std::size_t i = 0; i < p; ++i) EXPECT_NEAR(other[i], a[i], kUnit * (order * product + std::fabs(a[i])));

        ASSERT_EQ(kelsLPToLSP_32f(a, other, order), kelStatusOk);
        ASSERT_EQ(kelsLSPToLP_32f(other, back, order), kelStatusOk);
        long double sides[2] = {1, 1};
        for (std::size_t i = 0; i < p; ++i) sides[i % 2] *= 2 + 2 * std::fabs(other[i]);
        for (std::size_t i = 0; i < p; ++i) {
            EXPECT_NEAR(back[i], a[i], kUnit * (0.5L * order * (sides[0] + sides[1]) + std::fabs(a[i])));
        }

        ASSERT_EQ(kelsLPToCepstrum_32f(a, other, order), kelStatusOk);
        ASSERT_EQ(kelsCepstrumToLP_32f(other, back, order), kelStatusOk);
        Exact bound;
        for (std::size_t n = 1; n <= p; ++n) {
            bound.push_back(kUnit * std::fabs(other[n - 1]));
            for (std::size_t m = 1; m < n; ++m) {
                const long double weight = std::fabs(other[m - 1]) * static_cast<long double>(m) / n;
                bound.back() += weight * (kUnit * std::fabs(a[n - m - 1]) + bound[n - m - 1]);
            }
            EXPECT_NEAR(back[n - 1], a[n - 1], 1.001L * bound.back() + kUnit * std::fabs(a[n - 1]));
        }
    }
}

// Whether P (even) or Q (odd element) of the predictor changes its sign within 2^-24 of x.
bool hasZero(const Floats& a, std::size_t element, long double x) {
    const auto sign = [&](long double at) {
        const long double w = std::acos(std::clamp(at, -1 + 0x1p-50L, 1 - 0x1p-50L));
        const auto p = static_cast<long double>(a.size());
        std::complex<long double> b = std::polar(1.0L, w * (p + 1) / 2);
        for (std::size_t n = 1; n <= a.size(); ++n)
            b += static_cast<long double>(a[n - 1]) * std::polar(1.0L, w * ((p + 1) / 2 - n));
        return (element % 2 == 0 ? b.real() : b.imag()) > 0;
    };
    return sign(x - kUnit) != sign(x + kUnit);
}

TEST(LineSpectralPairs, AllAreFoundHoweverClose) {
    Random random(21);
    int stable = 0, close = 0;
    for (int round = 0; round < 600; ++round) {
        const int order = round % 40 + 1;
        const auto p = static_cast<std::size_t>(order);
        // Frequencies at even distances, some neighbours 0.001 apart.
        Exact w;
        for (int i = 0; i < order; ++i)
            w.push_back((i + 1 + random.uniform(-0.3, 0.3)) * std::numbers::pi / (order + 1));
        for (std::size_t i = 1; i < p; i += 2) {
            if (random.between(0, 3) == 0) w[i] = w[i - 1] + 0.001L;
        }
        Exact sums[2] = {{1}, {1}};
        const auto times = [](Exact& poly, const Exact& factor) {
            Exact product(poly.size() + factor.size() - 1);
            for (std::size_t i = 0; i < poly.size(); ++i) {
                for (std::size_t j = 0; j < factor.size(); ++j) product[i + j] += poly[i] * factor[j];
            }
            poly = product;
        };
        for (std::size_t i = 0; i < p; ++i) times(sums[i % 2], {1, -2 * std::cos(w[i]), 1});
        if (order % 2 == 0) times(sums[0], {1, 1});
        times(sums[1], order % 2 == 0 ? Exact{1, -1} : Exact{1, 0, -1});
        Floats a;
        for (std::size_t i = 1; i <= p; ++i) a.push_back(static_cast<Kel32f>((sums[0][i] + sums[1][i]) / 2));

        const Guarded<Kel32f> source(a);
        Guarded<Kel32f> lsp(Floats(p, 7)), inPlace(a);
        const KelStatus status = kelsLPToLSP_32f(source.data(), lsp, order);
        ASSERT_EQ(status, isStable(as<long double>(a)) ? kelStatusOk : kelStatusNoRoot) << order;
        EXPECT_EQ(kelsLPToLSP_32f(inPlace, inPlace, order), status);
        if (status != kelStatusOk) {
            EXPECT_EQ(lsp.vector(), Floats(p, 7));
            continue;
        }
        ++stable;
        EXPECT_EQ(inPlace.vector(), lsp.vector());
        for (std::size_t i = 0; i < p; ++i) {
            EXPECT_TRUE(hasZero(a, i, lsp[i])) << order << ": " << i;
            if (i == 0) continue;
            EXPECT_LT(lsp[i], lsp[i - 1]);
            close += std::acos(lsp[i]) - std::acos(lsp[i - 1]) < 0.0011;
        }
    }
    EXPECT_GT(stable, 400);
    EXPECT_GT(close, 500);
}

TEST(LineSpectralPairs, RowsAndTheirFaults) {
    // Rows of three with a gap: stable, stable, not stable.
    const Guarded<Kel32f> lp{0, 0, 0, 99, -0.5f, 0.25f, 0.125f, 99, 0, 0, -1};
    const Guarded<Kel16s> lpQ12{0, 0, 0, 99, -2048, 1024, 512, 99, 0, 0, -4096};
    Guarded<Kel32f> lsp(Floats(13, 7)), back(Floats(12, 7)), single(3);
    Guarded<Kel16s> lspQ15(std::vector<Kel16s>(13, 7)), backQ12(std::vector<Kel16s>(12, 7));
    EXPECT_EQ(kelsLPToLSP_32f_D2(lp.data(), 4, lsp, 5, 3, 3), kelStatusNoRoot);
    EXPECT_EQ(kelsLPToLSP_16s_D2Sfs(lpQ12.data(), 4, lspQ15, 5, 3, 3, -12), kelStatusNoRoot);
    EXPECT_EQ(kelsLPToLSP_32f(lp.data() + 4, single, 3), kelStatusOk);
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(lsp[i], std::cos((i + 1) * std::numbers::pi / 4), kUnit);
    EXPECT_EQ((Floats{lsp[5], lsp[6], lsp[7]}), single.vector());
    for (const int i : {3, 4, 8, 9, 10, 11, 12}) EXPECT_TRUE(lsp[i] == 7 && lspQ15[i] == 7);
    for (const int i : {0, 1, 2, 5, 6, 7}) EXPECT_EQ(lspQ15[i], std::lrint(lsp[i] * 32768));

    EXPECT_EQ(kelsLSPToLP_32f_D2(lsp, 5, back, 6, 3, 2), kelStatusOk);
    EXPECT_EQ(kelsLSPToLP_16s_D2Sfs(lspQ15, 5, backQ12, 6, 3, 2, -12), kelStatusOk);
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(back[6 + i], lp[4 + i], 4e-7);
        EXPECT_NEAR(backQ12[6 + i], lpQ12[4 + i], 1);
        EXPECT_TRUE(back[3 + i] == 7 && backQ12[3 + i] == 7);
    }
    const Kel32f nan = std::numeric_limits<Kel32f>::quiet_NaN();
    for (const Floats& bad : {Floats{0.5f, 0.5f, -0.5f},
                              {0.5f, 0, 0.25f},
                              {1.0001f, 0, -1},
                              {1, 0, -1.0001f},
                              {nan, 0, -1},
                              {1, nan, -1},
                              {1, 0, nan}}) {
        Floats rows{1, 0, -1};
        rows.insert(rows.end(), bad.begin(), bad.end());
        EXPECT_EQ(kelsLSPToLP_32f_D2(rows.data(), 3, back, 3, 3, 1), kelStatusOk);
        back[0] = 5;
        EXPECT_EQ(kelsLSPToLP_32f_D2(rows.data(), 3, back, 3, 3, 2), kelStatusBadLsp);
        EXPECT_EQ(kelsLSPToLP_32f(bad.data(), back, 3), kelStatusBadLsp);
        EXPECT_EQ(back[0], 5);
    }
}

TEST(LinearPrediction, NoPredictorBelowAReflectionOfOne) {
    const Guarded<Kel32f> a{0.5f, 0.25f, -1, 0};
    const Guarded<Kel16s> q12{2048, 1024, -4096, 0};
    Guarded<Kel32f> k(4);
    Guarded<Kel16s> q15{9, 9, 9, 9};
    EXPECT_EQ(kelsLPToReflection_32f(a.data(), k, 4), kelStatusDivByZero);
    EXPECT_TRUE(std::isnan(k[0]) && std::isnan(k[1]) && k[2] == 1 && k[3] == 0);
    EXPECT_EQ(kelsLPToReflection_16s_Sfs(q12.data(), q15, 4, -12), kelStatusDivByZero);
    EXPECT_EQ(q15.vector(), (std::vector<Kel16s>{0, 0, 32767, 0}));
    EXPECT_EQ(kelsLPToReflection_32f(a.data() + 2, k, 1), kelStatusOk);  // nothing below the first
}

// ---- area ratios, tilts, 16-bit forms

TEST(ReflectionAreas, FollowTheirFormulas) {
    Random random(31);
    for (int len = 1; len < 70; ++len) {
        const auto n = static_cast<std::size_t>(len);
        const Guarded<Kel32f> a(reflections(random, len, 1)), b(reflections(random, len, 1));
        Guarded<Kel32f> ar(n), trueAr(n), lar(n), tilt(n), absTilt(a.vector());
        EXPECT_EQ(kelsReflectionToAR_32f(a.data(), ar, len), kelStatusOk);
        EXPECT_EQ(kelsReflectionToTrueAR_32f(a.data(), trueAr, len), kelStatusOk);
        EXPECT_EQ(kelsReflectionToLAR_32f(a.data(), lar, len, 0.75f), kelStatusOk);
        EXPECT_EQ(kelsReflectionToTilt_32f(a.data(), b.data(), tilt, len), kelStatusOk);
        EXPECT_EQ(kelsReflectionToAbsTilt_32f(absTilt, b.data(), absTilt, len), kelStatusOk);
        for (std::size_t i = 0; i < n; ++i) {
            const long double x = a[i], y = b[i], held = std::clamp(x, -0.75L, 0.75L);
            const long double difference = std::fabs(x) - std::fabs(y);
            const auto near = [](Kel32f got, long double exact) {  // of three roundings
                EXPECT_LE(std::fabs(got - exact), 3.0001L * kUnit * std::fabs(exact));
            };
            near(ar[i], (1 - x) / (1 + x));
            near(trueAr[i], (1 + x) / (1 - x));
            near(tilt[i], difference / (x + y));
            near(absTilt[i], difference / (std::fabs(x) + std::fabs(y)));
            EXPECT_LE(test::ulpError(lar[i], std::log1p(-held) - std::log1p(held)), 0.5001);
        }
    }
}

TEST(ReflectionAreas, Poles) {
    const Guarded<Kel32f> a{0.5f, -1, 1, 0, 0.25f}, b{0.5f, 1, -0.5f, 0, -0.25f};
    const Guarded<Kel16s> c{16384, -32768, 32767, 0, 8192}, d{16384, 32767, -16384, 0, -8192};
    Guarded<Kel32f> got(5);
    Guarded<Kel16s> scaled(5);
    const Kel32f inf = HUGE_VALF;
    test::inEveryRoundingMode([&] {
        EXPECT_EQ(kelsReflectionToAR_32f(a.data(), got, 5), kelStatusDivByZero);
        EXPECT_TRUE(got[1] == inf && got[2] == 0 && got[3] == 1);
        EXPECT_EQ(kelsReflectionToTrueAR_32f(a.data(), got, 5), kelStatusDivByZero);
        EXPECT_TRUE(got[1] == 0 && got[2] == inf && got[3] == 1);
        EXPECT_EQ(kelsReflectionToTilt_32f(a.data(), b.data(), got, 5), kelStatusDivByZero);
        EXPECT_TRUE(got[0] == 0 && std::isnan(got[1]) && got[2] == 1 && std::isnan(got[3]) && std::isnan(got[4]));
        EXPECT_EQ(kelsReflectionToAbsTilt_32f(a.data(), b.data(), got, 5), kelStatusDivByZero);
        EXPECT_TRUE(got[0] == 0 && got[1] == 0 && std::isnan(got[3]) && got[4] == 0);
        EXPECT_EQ(kelsReflectionToAR_16s_Sfs(c.data(), scaled, 5, 40), kelStatusDivByZero);
        EXPECT_EQ(scaled.vector(), (std::vector<Kel16s>{0, 32767, 0, 0, 0}));
        EXPECT_EQ(kelsReflectionToTrueAR_16s_Sfs(c.data(), scaled, 5, 1), kelStatusOk);
        EXPECT_EQ(scaled.vector(), (std::vector<Kel16s>{2, 0, 32767, 0, 1}));
        EXPECT_EQ(kelsReflectionToTilt_16s_Sfs(c.data(), d.data(), scaled, 5, 0), kelStatusDivByZero);
        EXPECT_EQ(scaled.vector(), (std::vector<Kel16s>{0, -1, 1, 0, 0}));
        EXPECT_EQ(kelsReflectionToAbsTilt_16s_Sfs(c.data(), d.data(), scaled, 5, -20), kelStatusDivByZero);
        EXPECT_EQ(scaled.vector(), (std::vector<Kel16s>{0, 16, 32767, 0, 0}));
    });
    const Guarded<Kel32f> edge{-0.5f, -0.4999999f, 0.5f, 2, -2};
    EXPECT_EQ(kelsReflectionToLAR_32f(edge.data(), got, 5, 0.5f), kelStatusOk);
    EXPECT_EQ(got.vector(), (Floats{std::log(3.f), got[1], -std::log(3.f), -std::log(3.f), std::log(3.f)}));
    EXPECT_LT(got[1], got[0]);
}

// A 16-bit form against the float form on the numbers that its integers stand for.
struct ScaledForm {
    const char* name;
    double srcUnit, dstUnit;  // what integer 1 is worth
    int range;                // of the source integers
    std::function<KelStatus(const Kel32f*, Kel32f*, int)> floats;
    std::function<KelStatus(const Kel16s*, Kel16s*, int)> integers;
};

TEST(LinearPrediction, SixteenBitFormsRoundTheFloatForms) {
    const double q15 = 1.0 / 32768, q12 = 1.0 / 4096;
    const auto with = [](auto f, int scaleFactor) {
        return [=](const Kel16s* src, Kel16s* dst, int len) { return f(src, dst, len, scaleFactor); };
    };
    Kel32f error = 0;
    Kel16s error16 = 0;
    const ScaledForm forms[] = {
        {"Durbin", 1, q12, 900, [&](auto s, auto d, int n) { return kelsDurbin_32f(s, d, n - 1, &error); },
         [&](auto s, auto d, int n) { return kelsDurbin_16s_Sfs(s, d, n - 1, &error16, -12); }},
        {"Schur", 1, q15, 900, [&](auto s, auto d, int n) { return kelsSchur_32f(s, d, n - 1, &error); },
         [&](auto s, auto d, int n) { return kelsSchur_16s_Sfs(s, d, n - 1, &error16, 3); }},
        {"Auto", 1, q12, 32767, [](auto s, auto d, int n) { return kelsLinearPrediction_Auto_32f(s, n, d, n / 2 + 1); },
         [](auto s, auto d, int n) { return kelsLinearPrediction_Auto_16s_Sfs(s, n, d, n / 2 + 1, -12); }},
        {"Neg", 1, q12, 32767, [](auto s, auto d, int n) { return kelsLinearPredictionNeg_Auto_32f(s, n, d, n); },
         [](auto s, auto d, int n) { return kelsLinearPredictionNeg_Auto_16s_Sfs(s, n, d, n, -12); }},
        {"LPToCepstrum", 1, 1.0 / 64, 2, kelsLPToCepstrum_32f, with(kelsLPToCepstrum_16s_Sfs, -6)},
        {"CepstrumToLP", 1, 16, 9, kelsCepstrumToLP_32f, with(kelsCepstrumToLP_16s_Sfs, 4)},
        {"LPToSpectrum", 1, q12, 99, [](auto s, auto d, int n) { return kelsLPToSpectrum_32f(s, n / 2, d, 6, 7); },
         [](auto s, auto d, int n) { return kelsLPToSpectrum_16s_Sfs(s, n / 2, d, 6, 7, -12); }},
        {"LPToReflection", q12, q15, 400, kelsLPToReflection_32f, with(kelsLPToReflection_16s_Sfs, -12)},
        {"LPToLSP", q12, q15, 200, kelsLPToLSP_32f, with(kelsLPToLSP_16s_Sfs, -12)},
        {"ReflectionToLP", q15, q12, 20000, kelsReflectionToLP_32f, with(kelsReflectionToLP_16s_Sfs, -12)},
        {"AR", q15, 0.5, 32767, kelsReflectionToAR_32f, with(kelsReflectionToAR_16s_Sfs, -1)},
        {"TrueAR", q15, 0.5, 32767, kelsReflectionToTrueAR_32f, with(kelsReflectionToTrueAR_16s_Sfs, -1)},
        {"LAR", q15, q12, 32767, [](auto s, auto d, int n) { return kelsReflectionToLAR_32f(s, d, n, 0.875f); },
         [](auto s, auto d, int n) { return kelsReflectionToLAR_16s_Sfs(s, d, n, 28672, -12); }},
    };
    Random random(41);
    for (const auto& form : forms) {
        int compared = 0;
        for (int len = 2; len < 150; ++len) {
            const auto n = static_cast<std::size_t>(len), room = std::max<std::size_t>(n, 64);
            std::vector<Kel16s> integers(n);
            for (auto& v : integers) v = static_cast<Kel16s>(random.between(-form.range, form.range));
            if (form.range == 900) integers[0] = 32000;  // an autocorrelation
            Floats values;
            for (const Kel16s v : integers) values.push_back(static_cast<Kel32f>(v * form.srcUnit));
            Guarded<Kel32f> expected(room);
            Guarded<Kel16s> got(room);
            const KelStatus status = form.floats(values.data(), expected, len);
            test::inEveryRoundingMode(
                [&] { EXPECT_EQ(form.integers(Guarded<Kel16s>(integers).data(), got, len), status) << form.name; });
            if (status != kelStatusOk) continue;
            ++compared;
            for (std::size_t i = 0; i < room; ++i) {
                const double exact = std::clamp<double>(expected[i] / form.dstUnit, -32768, 32767);
                ASSERT_NEAR(got[i], exact, 0.5 + std::fabs(exact) * 0x1p-23) << form.name << ' ' << len << ' ' << i;
            }
            if (form.range != 900) continue;
            const double scaled = form.dstUnit == q12 ? error * 4096.0 : error / 8.0;
            EXPECT_EQ(error16, std::lrint(std::min(32767.0, scaled)));
        }
        EXPECT_GT(compared, 70) << form.name;
    }
}

// ---- statuses and memory

TEST(LpStatus, InOrderAndNothingWritten) {
    Kel32f x[4] = {4, 1, 1, 1}, y[4] = {5, 5, 5, 5}, e = 6;
    Kel16s s[4] = {4, 1, 1, 1}, t[4] = {5, 5, 5, 5}, f = 6;
    using F = const Kel32f*;
    using S = const Kel16s*;
    // Every form as a function of (source, destination, length).
    const std::function<KelStatus(F, Kel32f*, int)> floats[] = {
        [&](F a, auto d, int n) { return kelsDurbin_32f(a, d, n, &e); },
        [&](F a, auto d, int n) { return kelsSchur_32f(a, d, n, &e); },
        [](F a, auto d, int n) { return kelsLinearPrediction_Auto_32f(a, 2, d, n); },
        [](F a, auto d, int n) { return kelsLinearPrediction_Auto_32f(a, n, d, n < 1 ? 1 : n + 1); },
        [](F a, auto d, int n) { return kelsLinearPredictionNeg_Auto_32f(a, n, d, n < 1 ? 1 : n + 1); },
        [](F a, auto d, int n) { return kelsLinearPrediction_Cov_32f(a, n, d, n < 1 ? 1 : n + 1); },
        kelsLPToCepstrum_32f,
        kelsCepstrumToLP_32f,
        kelsLPToReflection_32f,
        kelsReflectionToLP_32f,
        kelsLPToLSP_32f,
        kelsLSPToLP_32f,
        kelsReflectionToAR_32f,
        kelsReflectionToTrueAR_32f,
        [](F a, auto d, int n) { return kelsLPToSpectrum_32f(a, n, d, n < 1 ? -1 : 1, 0); },
        [](F a, auto d, int n) { return kelsReflectionToLAR_32f(a, d, n, 0); },
        [](F a, auto d, int n) { return kelsReflectionToTilt_32f(a, a == nullptr ? d : a, d, n); },
        [](F a, auto d, int n) { return kelsReflectionToAbsTilt_32f(a == nullptr ? d : a, a, d, n); },
        [](F a, auto d, int n) { return kelsLPToLSP_32f_D2(a, 0, d, 0, n, 1); },
        [](F a, auto d, int n) { return kelsLSPToLP_32f_D2(a, 0, d, 0, 1, n); },
    };
    const std::function<KelStatus(S, Kel16s*, int)> integers[] = {
        [&](S a, auto d, int n) { return kelsDurbin_16s_Sfs(a, d, n, &f, 0); },
        [&](S a, auto d, int n) { return kelsSchur_16s_Sfs(a, d, n, &f, 0); },
        [](S a, auto d, int n) { return kelsLinearPrediction_Auto_16s_Sfs(a, n, d, n < 1 ? 1 : n + 1, 0); },
        [](S a, auto d, int n) { return kelsLinearPredictionNeg_Auto_16s_Sfs(a, n, d, n < 1 ? 1 : n + 1, 0); },
        [](S a, auto d, int n) { return kelsLinearPrediction_Cov_16s_Sfs(a, n, d, n < 1 ? 1 : n + 1, 0); },
        [](S a, auto d, int n) { return kelsLPToCepstrum_16s_Sfs(a, d, n, 0); },
        [](S a, auto d, int n) { return kelsCepstrumToLP_16s_Sfs(a, d, n, 0); },
        [](S a, auto d, int n) { return kelsLPToReflection_16s_Sfs(a, d, n, 0); },
        [](S a, auto d, int n) { return kelsReflectionToLP_16s_Sfs(a, d, n, 0); },
        [](S a, auto d, int n) { return kelsLPToLSP_16s_Sfs(a, d, n, 0); },
        [](S a, auto d, int n) { return kelsLSPToLP_16s_Sfs(a, d, n, 0); },
        [](S a, auto d, int n) { return kelsReflectionToAR_16s_Sfs(a, d, n, 0); },
        [](S a, auto d, int n) { return kelsReflectionToTrueAR_16s_Sfs(a, d, n, 0); },
        [](S a, auto d, int n) { return kelsLPToSpectrum_16s_Sfs(a, n, d, n < 1 ? -1 : 1, 0, 0); },
        [](S a, auto d, int n) { return kelsReflectionToLAR_16s_Sfs(a, d, n, 0, 0); },
        [](S a, auto d, int n) { return kelsReflectionToTilt_16s_Sfs(a, a == nullptr ? d : a, d, n, 0); },
        [](S a, auto d, int n) { return kelsReflectionToAbsTilt_16s_Sfs(a == nullptr ? d : a, a, d, n, 0); },
        [](S a, auto d, int n) { return kelsLPToLSP_16s_D2Sfs(a, 0, d, 0, n, 1, 0); },
        [](S a, auto d, int n) { return kelsLSPToLP_16s_D2Sfs(a, 0, d, 0, 1, n, 0); },
    };
    const auto check = [](const auto& form, const auto* src, auto* dst) {
        EXPECT_EQ(form(nullptr, dst, 0), kelStatusNullPtr);
        EXPECT_EQ(form(src, nullptr, 0), kelStatusNullPtr);
        EXPECT_EQ(form(src, dst, 0), kelStatusSize);
    };
    for (const auto& form : floats) check(form, x, y);
    for (const auto& form : integers) check(form, s, t);
    for (const int order : {2, 5}) {  // above the length
        EXPECT_EQ(kelsLinearPrediction_Auto_32f(x, 1, y, order), kelStatusSize);
        EXPECT_EQ(kelsLinearPredictionNeg_Auto_16s_Sfs(s, 1, t, order, 0), kelStatusSize);
        EXPECT_EQ(kelsLinearPrediction_Cov_32f(x, 1, y, order), kelStatusSize);
    }
    EXPECT_EQ(kelsDurbin_32f(x, y, 0, nullptr), kelStatusSize);
    EXPECT_EQ(kelsDurbin_32f(x, y, 1, nullptr), kelStatusNullPtr);
    EXPECT_EQ(kelsSchur_16s_Sfs(s, t, 0, nullptr, 0), kelStatusSize);
    EXPECT_EQ(kelsSchur_16s_Sfs(s, t, 1, nullptr, 0), kelStatusNullPtr);
    for (const int order : {-1, 31}) EXPECT_EQ(kelsLPToSpectrum_32f(x, 4, y, order, 0), kelStatusFftOrder);
    EXPECT_EQ(kelsLPToSpectrum_32f(x, 4, y, 2, 0), kelStatusSize);
    EXPECT_EQ(kelsLPToSpectrum_16s_Sfs(s, 1, t, 0, 0, 0), kelStatusSize);
    for (const Kel32f threshold : {0.f, 1.f, -0.5f, std::numeric_limits<Kel32f>::quiet_NaN()}) {
        EXPECT_EQ(kelsReflectionToLAR_32f(x, y, 1, threshold), kelStatusOutOfRange);
    }
    EXPECT_EQ(kelsReflectionToLAR_16s_Sfs(s, t, 1, 0, 0), kelStatusOutOfRange);
    for (const auto& [srcStep, dstStep] : {std::pair(1, 2), {2, 1}}) {
        EXPECT_EQ(kelsLPToLSP_32f_D2(x, srcStep, y, dstStep, 2, 1), kelStatusStep);
        EXPECT_EQ(kelsLSPToLP_32f_D2(x, srcStep, y, dstStep, 2, 1), kelStatusStep);
        EXPECT_EQ(kelsLPToLSP_16s_D2Sfs(s, srcStep, t, dstStep, 2, 1, 0), kelStatusStep);
        EXPECT_EQ(kelsLSPToLP_16s_D2Sfs(s, srcStep, t, dstStep, 2, 1, 0), kelStatusStep);
    }
    EXPECT_TRUE(y[0] == 5 && t[0] == 5 && e == 6 && f == 6);
}

TEST(LpMemory, FailedAllocationsLeaveNothingBehind) {
    constexpr int kLongest = 300;
    const Floats x = [] {
        Floats v(kLongest + 1);
        for (int i = 0; i <= kLongest; ++i) v[static_cast<std::size_t>(i)] = static_cast<Kel32f>(std::pow(-0.5, i));
        return v;
    }();
    Floats pairs;
    for (int i = 1; i <= kLongest; ++i)
        pairs.push_back(static_cast<Kel32f>(std::cos(i * std::numbers::pi / (kLongest + 1))));
    Floats y(1024);
    Kel32f error;
    const std::function<KelStatus(int)> calls[] = {
        [&](int n) { return kelsDurbin_32f(x.data(), y.data(), n, &error); },
        [&](int n) { return kelsLinearPrediction_Auto_32f(x.data(), n + 1, y.data(), n); },
        [&](int n) { return kelsLPToCepstrum_32f(x.data() + 1, y.data(), n); },
        [&](int n) { return kelsCepstrumToLP_32f(x.data() + 1, y.data(), n); },
        [&](int n) { return kelsLPToReflection_32f(x.data() + 1, y.data(), n); },
        [&](int n) { return kelsReflectionToLP_32f(x.data() + 1, y.data(), n); },
        [&](int n) { return kelsLPToLSP_32f(x.data() + 1, y.data(), n); },
        [&](int n) { return kelsLSPToLP_32f(pairs.data(), y.data(), n); },
        [&](int n) { return n < 64 ? kelStatusOk : kelsLPToSpectrum_32f(x.data(), n, y.data(), 10, 0); },
        [&](int n) { return n < 64 ? kelStatusOk : kelsLinearPrediction_Cov_32f(x.data(), 3 * n / 2, y.data(), 24); },
    };
    for (const auto& call : calls) {
        for (const int order : {63, 150}) {
            test::failEachAllocation([&](int n, const test::AllocationWatch& watch) {
                y[0] = 7;
                const KelStatus status = call(order);
                EXPECT_EQ(watch.unreleased(), 0);
                EXPECT_TRUE(order > 63 || watch.calls() == 0);
                if (watch.calls() > n) {
                    EXPECT_EQ(status, kelStatusNoMemory);
                    EXPECT_EQ(y[0], 7);
                }
            });
        }
    }
}

}  // namespace
