#include "kels/lp.h"

#include <algorithm>
#include <complex>
#include <functional>
#include <numbers>

#include "support/allocation.h"
#include "support/checks.h"
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
constexpr Kel32f kNan = std::numeric_limits<Kel32f>::quiet_NaN();

// ---- references

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
Floats reflections(Random& random, int order, double largest) {
    Floats k;
    for (int i = 0; i < order; ++i) k.push_back(static_cast<Kel32f>(random.uniform(-largest, largest)));
    return k;
}

// ---- analysis

class LpOrder : public ::testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(, LpOrder, ::testing::Values(1, 2, 3, 5, 12, 13, 24, 63, 64, 70));

TEST_P(LpOrder, AnalysisSolvesTheNormalEquations) {
    const int order = GetParam(), len = 4 * order + 40;
    const auto p = static_cast<std::size_t>(order);
    Random random(static_cast<unsigned>(order));
    Guarded<Kel32f> x(static_cast<std::size_t>(len)), r(p + 1), a(p), k(p), automatic(p), negated(p), cov(p), errors(2);
    for (int n = 0; n < len; ++n) {  // noise through a resonance
        x[n] = static_cast<Kel32f>(random.uniform(-1, 1) + (n > 1 ? 1.2 * x[n - 1] - 0.7 * x[n - 2] : 0));
    }
    const auto sum = [&](int first, int i, int j) {
        long double total = 0;
        for (int n = first; n < len; ++n) total += static_cast<long double>(x[n - i]) * x[n - j];
        return total;
    };
    for (int lag = 0; lag <= order; ++lag) r[lag] = static_cast<Kel32f>(sum(lag, 0, lag));
    ASSERT_EQ(kelsDurbin_32f(r, a, order, errors), kelStatusOk);
    ASSERT_EQ(kelsSchur_32f(r, k, order, errors + 1), kelStatusOk);
    ASSERT_EQ(kelsLinearPrediction_Auto_32f(x, len, automatic, order), kelStatusOk);
    ASSERT_EQ(kelsLinearPredictionNeg_Auto_32f(x, len, negated, order), kelStatusOk);
    ASSERT_EQ(kelsLinearPrediction_Cov_32f(x, len, cov, order), kelStatusOk);
    // What is left of an equation is the rounding of the coefficients, and a little of the double-precision work.
    const auto rest = [&](const Guarded<Kel32f>& c, int i, auto phi) {
        long double left = phi(i, 0), rounding = 1e-12L * phi(0, 0);
        for (int j = 1; j <= order; ++j) {
            left += c[j - 1] * phi(i, j);
            rounding += kUnit * std::fabs(c[j - 1] * phi(i, j));
        }
        return std::pair(left, rounding);
    };
    const auto lags = [&](int i, int j) -> long double { return r[std::abs(i - j)]; };
    for (int i = 1; i <= order; ++i) {
        for (const auto& [left, rounding] :
             {rest(a, i, lags), rest(cov, i, [&](int u, int v) { return sum(order, u, v); })}) {
            EXPECT_LE(std::fabs(left), rounding);
        }
        EXPECT_EQ(automatic[i - 1], a[i - 1]);
        EXPECT_EQ(negated[i - 1], -a[i - 1]);
    }
    const auto [error, rounding] = rest(a, 0, lags);
    for (const int i : {0, 1}) EXPECT_NEAR(errors[i], error, 2 * rounding);
    const Exact fromSchur = stepUp(k.vector());
    long double product = order * kUnit;  // of the coefficients' rounding and 1 + |k|
    for (std::size_t i = 0; i < p; ++i) product *= 1 + std::fabs(k[i]);
    for (std::size_t i = 0; i < p; ++i) EXPECT_NEAR(a[i], fromSchur[i], product);
    cov[0] = 7;
    EXPECT_EQ(kelsLinearPrediction_Cov_32f(x, order, cov, order), kelStatusLpcCalc);  // a matrix of zeros
    for (int n = 0; n < len; ++n) x[n] = n % 2 ? -1.f : 1.f;
    EXPECT_EQ(kelsLinearPrediction_Cov_32f(x, len, cov, order), order == 1 ? kelStatusOk : kelStatusLpcCalc);
    EXPECT_EQ(cov[0], order == 1 ? 1 : 7);
}

TEST(LinearPrediction, StopsWhereTheErrorIsNotPositive) {
    struct Case {
        Floats r, predictor, reflection;  // what is stored before the recursion stops
    };
    const Case cases[] = {{{0, 1, 1, 1}, {}, {}},
                          {{kNan, 0, 0, 0}, {}, {}},
                          {{2, -2, 2, 2}, {1}, {-1}},
                          {{1, 0.5f, 2, 0}, {2 / 3.f, -7 / 3.f}, {0.5f, 7 / 3.f}}};
    for (const auto& [r, predictor, reflection] : cases) {
        Guarded<Kel32f> a{9, 9, 9}, k{9, 9, 9}, error{8};
        EXPECT_EQ(kelsDurbin_32f(r.data(), a, 3, error), kelStatusLpcCalc);
        EXPECT_EQ(kelsSchur_32f(r.data(), k, 3, error), kelStatusLpcCalc);
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
    for (std::size_t order = 1; order <= 12; ++order) {
        const Exact a = stepUp(reflections(random, static_cast<int>(order), 0.9));
        Floats padded(600);
        for (std::size_t i = 0; i < order; ++i) padded[i] = static_cast<Kel32f>(a[i] * std::pow(0.9L, i + 1));
        Guarded<Kel32f> c(600), inPlace(Floats(padded.data(), padded.data() + order));
        ASSERT_EQ(kelsLPToCepstrum_32f(padded.data(), c, 600), kelStatusOk);
        ASSERT_EQ(kelsLPToCepstrum_32f(inPlace, inPlace, static_cast<int>(order)), kelStatusOk);
        for (std::size_t n = 0; n < order; ++n) {  // the factors 1/n of short forms are single
            long double terms = std::fabs(c[n]);
            for (std::size_t k = 0; k < n; ++k) terms += std::fabs(c[k] * padded[n - k - 1]) * 1.0L * (k + 1) / (n + 1);
            EXPECT_NEAR(inPlace[n], c[n], 3 * kUnit * terms);
        }
        for (long double w = 0.01L; w < 3.1L; w += 0.1L) {  // the zeros of A lie within 0.9: c600 is nothing
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
            for (std::size_t m = 1; m <= a.size(); ++m) {
                s += std::polar<long double>(1, -2 * std::numbers::pi_v<long double> * (m * k % n) / n) *
                     (a[m - 1] + 0.0L);
            }
            const long double level = 1 / std::abs(s);
            EXPECT_NEAR(got[k], level, level * (noise * level + 4 * kUnit) * 1.01L) << fftOrder << ' ' << k;
            EXPECT_EQ(got[k], got[(n - k) % n]);
        }
    }
    Guarded<Kel32f> got(4);
    Guarded<Kel16s> scaled(4);
    EXPECT_EQ(kelsLPToSpectrum_32f(Guarded<Kel32f>{1, 2, 3}, 3, got, 2, 6), kelStatusDivByZero);
    EXPECT_EQ(got.vector(), (Floats{HUGE_VALF, got[1], 0.5f, got[1]}));
    EXPECT_EQ(kelsLPToSpectrum_16s_Sfs(Guarded<Kel16s>{1, 2, 3}, 3, scaled, 2, 6, -8), kelStatusDivByZero);
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
        Guarded<Kel32f> a(p), k2(p), lsp(p), fromLsp(p), c(p), fromC(p);
        EXPECT_EQ(kelsReflectionToLP_32f(k.data(), a, order), kelStatusOk);
        EXPECT_EQ(kelsLPToReflection_32f(a, k2, order), kelStatusOk);
        EXPECT_EQ(kelsReflectionToLP_32f(k2, k2, order), kelStatusOk);
        EXPECT_EQ(kelsLPToLSP_32f(a, lsp, order), kelStatusOk);
        EXPECT_EQ(kelsLSPToLP_32f(lsp, fromLsp, order), kelStatusOk);
        EXPECT_EQ(kelsLPToCepstrum_32f(a, c, order), kelStatusOk);
        EXPECT_EQ(kelsCepstrumToLP_32f(c, fromC, order), kelStatusOk);
        long double product = 1, sides[2] = {1, 1};
        for (std::size_t i = 0; i < p; ++i) {
            product *= 1 + std::fabs(k[i]);
            sides[i % 2] *= 2 + 2 * std::fabs(lsp[i]);
        }
        Exact e;  // of the coefficients that come from the cepstrum
        for (std::size_t i = 0; i < p; ++i) {
            e.push_back(kUnit * std::fabs(c[i]));
            for (std::size_t m = 0; m < i; ++m) {
                const long double weight = std::fabs(c[m]) * static_cast<long double>(m + 1) / (i + 1);
                e.back() += weight * (kUnit * std::fabs(a[i - m - 1]) + e[i - m - 1]);
            }
            const long double last = kUnit * std::fabs(a[i]);
            EXPECT_NEAR(a[i], exact[i], last + order * kWideUnit * product);
            EXPECT_NEAR(k2[i], a[i], last + kUnit * order * product);
            EXPECT_NEAR(fromLsp[i], a[i], last + kUnit * 0.5L * order * (sides[0] + sides[1]));
            EXPECT_NEAR(fromC[i], a[i], last + 1.001L * e.back());
        }
    }
}

// Whether P (even) or Q (odd element) of the predictor changes its sign within 2^-24 of x.
bool hasZero(const Floats& a, std::size_t element, long double x) {
    const auto sign = [&](long double at) {
        const long double w = std::acos(std::clamp(at, -1 + 0x1p-50L, 1 - 0x1p-50L));
        const auto p = static_cast<long double>(a.size());
        std::complex<long double> b = std::polar(1.0L, w * (p + 1) / 2);
        for (std::size_t n = 1; n <= a.size(); ++n) b += (a[n - 1] + 0.0L) * std::polar(1.0L, w * ((p + 1) / 2 - n));
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
        std::vector<double> w;
        Floats cosines, a(p), k(p);
        for (int i = 0; i < order; ++i) {
            const bool near = i % 2 == 1 && random.between(0, 3) == 0;
            w.push_back(near ? w.back() + 0.001 : (i + 1 + random.uniform(-0.3, 0.3)) * std::numbers::pi / (order + 1));
            cosines.push_back(static_cast<Kel32f>(std::cos(w.back())));
        }
        ASSERT_EQ(kelsLSPToLP_32f(cosines.data(), a.data(), order), kelStatusOk);
        kelsLPToReflection_32f(a.data(), k.data(), order);
        const bool isStable = std::all_of(k.begin(), k.end(), [](Kel32f v) { return std::fabs(v) < 1; });

        Guarded<Kel32f> lsp(Floats(p, 7)), inPlace(a);
        const KelStatus status = kelsLPToLSP_32f(inPlace, lsp, order);
        ASSERT_EQ(status, isStable ? kelStatusOk : kelStatusNoRoot) << order;
        EXPECT_EQ(kelsLPToLSP_32f(inPlace, inPlace, order), status);
        EXPECT_EQ(inPlace.vector(), status == kelStatusOk ? lsp.vector() : a);
        if (status != kelStatusOk) continue;
        ++stable;
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
    // Rows of three: stable, stable, not stable.
    const Guarded<Kel32f> lp{0, 0, 0, 99, -0.5f, 0.25f, 0.125f, 99, 0, 0, -1};
    Guarded<Kel32f> lsp(Floats(13, 7)), back(Floats(12, 7));
    EXPECT_EQ(kelsLPToLSP_32f_D2(lp.data(), 4, lsp, 5, 3, 3), kelStatusNoRoot);
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(lsp[i], std::cos((i + 1) * std::numbers::pi / 4), kUnit);
    for (const int i : {3, 4, 8, 9, 10, 11, 12}) EXPECT_EQ(lsp[i], 7);
    EXPECT_EQ(kelsLSPToLP_32f_D2(lsp, 5, back, 6, 3, 2), kelStatusOk);
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(back[6 + i], lp[4 + i], 4e-7);  // of the bound for order 3
        EXPECT_EQ(back[3 + i], 7);
    }
    for (Floats bad : {Floats{0.5f, 0.5f, -0.5f},
                       {0.5f, 0, 0.25f},
                       {1.0001f, 0, -1},
                       {1, 0, -1.0001f},
                       {kNan, 0, -1},
                       {1, kNan, -1},
                       {1, 0, kNan}}) {
        bad.insert(bad.begin(), {1, 0, -1});
        EXPECT_EQ(kelsLSPToLP_32f_D2(bad.data(), 3, back, 3, 3, 1), kelStatusOk);
        back[0] = 5;
        EXPECT_EQ(kelsLSPToLP_32f_D2(bad.data(), 3, back, 3, 3, 2), kelStatusBadLsp);
        EXPECT_EQ(back[0], 5);
    }
}

// ---- area ratios, tilts

TEST(ReflectionAreas, FollowTheirFormulasToThePoles) {
    Random random(31);
    for (int len = 1; len < 70; ++len) {
        const auto n = static_cast<std::size_t>(len);
        Floats x = reflections(random, len, 1), y = reflections(random, len, 1);
        for (auto* const v : {&x, &y}) {
            for (Kel32f& k : *v) k = random.between(0, 3) == 0 ? static_cast<Kel32f>(random.between(-1, 1)) : k;
        }
        const Guarded<Kel32f> a(x), b(y);
        Guarded<Kel32f> ar(n), trueAr(n), lar(n), tilt(n), absTilt(n);
        KelStatus statuses[5];
        long double factor = 1;  // of the bounds: a directed rounding errs by up to a whole unit
        const auto call = [&] {
            factor = std::fegetround() == FE_TONEAREST ? 1 : 2;
            std::copy(x.begin(), x.end(), absTilt.data());
            statuses[0] = kelsReflectionToAR_32f(a.data(), ar, len);
            statuses[1] = kelsReflectionToTrueAR_32f(a.data(), trueAr, len);
            statuses[2] = kelsReflectionToTilt_32f(a.data(), b.data(), tilt, len);
            statuses[3] = kelsReflectionToAbsTilt_32f(absTilt, b.data(), absTilt, len);
            statuses[4] = kelsReflectionToLAR_32f(a.data(), lar, len, 0.75f);
        };
        test::inEveryRoundingMode(call, [&] {
            KelStatus expected[5] = {};
            for (std::size_t i = 0; i < n; ++i) {
                const long double k = x[i], l = y[i], held = std::clamp(k, -0.75L, 0.75L);
                const auto quotient = [&](int form, Kel32f got, long double numerator, long double denominator) {
                    if (denominator == 0) expected[form] = kelStatusDivByZero;
                    const long double exact = denominator == 0 && numerator == 0 ? kNan : numerator / denominator;
                    if (std::isnan(exact) || std::isinf(exact)) {
                        EXPECT_TRUE(test::sameBits(got, static_cast<Kel32f>(exact))) << form << ' ' << k << ' ' << l;
                    } else {  // three roundings
                        EXPECT_LE(std::fabs(got - exact), 3.0001L * kUnit * factor * std::fabs(exact)) << form;
                    }
                };
                quotient(0, ar[i], 1 - k, 1 + k);
                quotient(1, trueAr[i], 1 + k, 1 - k);
                quotient(2, tilt[i], std::fabs(k) - std::fabs(l), k + l);
                quotient(3, absTilt[i], std::fabs(k) - std::fabs(l), std::fabs(k) + std::fabs(l));
                EXPECT_LE(test::ulpError(lar[i], std::log1p(-held) - std::log1p(held)), 0.5001L * factor);
            }
            EXPECT_TRUE(std::equal(expected, expected + 5, statuses));
        });
    }
}

TEST(ReflectionToLp, PoleAtOne) {  // there is no predictor below a reflection coefficient of 1
    Guarded<Kel32f> got(3);
    Guarded<Kel16s> scaled(3);
    EXPECT_EQ(kelsLPToReflection_32f(Guarded<Kel32f>{0.5f, -1, 0}, got, 3), kelStatusDivByZero);
    EXPECT_TRUE(std::isnan(got[0]) && got[1] == 1 && got[2] == 0);
    EXPECT_EQ(kelsLPToReflection_16s_Sfs(Guarded<Kel16s>{2048, -4096, 0}, scaled, 3, -12), kelStatusDivByZero);
    EXPECT_EQ(scaled.vector(), (std::vector<Kel16s>{0, 32767, 0}));
    EXPECT_EQ(kelsLPToReflection_32f(Guarded<Kel32f>{-1}, got, 1), kelStatusOk);
}

// ---- what all functions have in common

// A float form and its 16-bit form as functions of source, destination and length.
struct Forms {
    const char* name;
    double srcUnit, dstUnit;  // what integer 1 is worth
    int range;                // of the source integers; 0 takes pairs, 900 an autocorrelation
    std::function<KelStatus(const Kel32f*, Kel32f*, int)> floats;
    std::function<KelStatus(const Kel16s*, Kel16s*, int)> integers;
};
template <class F>
auto with(F f, int scaleFactor) {
    return [=](const Kel16s* src, Kel16s* dst, int len) { return f(src, dst, len, scaleFactor); };
}
Kel32f lastError;
Kel16s lastError16;
constexpr double q15 = 1.0 / 32768, q14 = 1.0 / 16384, q12 = 1.0 / 4096;

#define FLOATS(call) [](const Kel32f* s, Kel32f* d, int n) { return call; }
#define INTEGERS(call) [](const Kel16s* s, Kel16s* d, int n) { return call; }
// clang-format off
const Forms kForms[] = {
    {"Durbin", 1, q12, 900, FLOATS(kelsDurbin_32f(s, d, n, &lastError)),
     INTEGERS(kelsDurbin_16s_Sfs(s, d, n, &lastError16, -12))},
    {"Schur", 1, q15, 900, FLOATS(kelsSchur_32f(s, d, n, &lastError)),
     INTEGERS(kelsSchur_16s_Sfs(s, d, n, &lastError16, 3))},
    {"Auto", 1, q12, 32767, FLOATS(kelsLinearPrediction_Auto_32f(s, n, d, n / 2 + 1)),
     INTEGERS(kelsLinearPrediction_Auto_16s_Sfs(s, n, d, n / 2 + 1, -12))},
    {"Neg", 1, q12, 32767, FLOATS(kelsLinearPredictionNeg_Auto_32f(s, n, d, n)),
     INTEGERS(kelsLinearPredictionNeg_Auto_16s_Sfs(s, n, d, n, -12))},
    {"Cov", 1, q12, 99, FLOATS(kelsLinearPrediction_Cov_32f(s, n, d, n / 3 + 1)),
     INTEGERS(kelsLinearPrediction_Cov_16s_Sfs(s, n, d, n / 3 + 1, -12))},
    {"LPToCepstrum", 1, 1.0 / 64, 2, kelsLPToCepstrum_32f, with(kelsLPToCepstrum_16s_Sfs, -6)},
    {"CepstrumToLP", 1, 16, 9, kelsCepstrumToLP_32f, with(kelsCepstrumToLP_16s_Sfs, 4)},
    {"LPToSpectrum", 1, q12, 99, FLOATS(kelsLPToSpectrum_32f(s, n, d, 8, 7)),
     INTEGERS(kelsLPToSpectrum_16s_Sfs(s, n, d, 8, 7, -12))},
    {"LPToReflection", q12, q15, 400, kelsLPToReflection_32f, with(kelsLPToReflection_16s_Sfs, -12)},
    {"ReflectionToLP", q15, q12, 20000, kelsReflectionToLP_32f, with(kelsReflectionToLP_16s_Sfs, -12)},
    {"LPToLSP", q12, q12, 200, kelsLPToLSP_32f, with(kelsLPToLSP_16s_Sfs, -12)},
    {"LSPToLP", q14, q14, 0, kelsLSPToLP_32f, with(kelsLSPToLP_16s_Sfs, -14)},
    {"LPToLSP rows", q12, q12, 200, FLOATS(kelsLPToLSP_32f_D2(s, 5, d, 4, 3, (n + 2) / 5)),
     INTEGERS(kelsLPToLSP_16s_D2Sfs(s, 5, d, 4, 3, (n + 2) / 5, -12))},
    {"LSPToLP rows", q14, q14, 16384, FLOATS(kelsLSPToLP_32f_D2(s, 2, d, 3, 1, (n + 2) / 3)),
     INTEGERS(kelsLSPToLP_16s_D2Sfs(s, 2, d, 3, 1, (n + 2) / 3, -14))},
    {"AR", q15, 0.5, 32767, kelsReflectionToAR_32f, with(kelsReflectionToAR_16s_Sfs, -1)},
    {"TrueAR", q15, 0.5, 32767, kelsReflectionToTrueAR_32f, with(kelsReflectionToTrueAR_16s_Sfs, -1)},
    {"LAR", q15, q12, 32767, FLOATS(kelsReflectionToLAR_32f(s, d, n, 0.875f)),
     INTEGERS(kelsReflectionToLAR_16s_Sfs(s, d, n, 28672, -12))},
    {"Tilt", q15, q12, 32767, FLOATS(kelsReflectionToTilt_32f(s, s + n / 2, d, n - n / 2)),
     INTEGERS(kelsReflectionToTilt_16s_Sfs(s, s + n / 2, d, n - n / 2, -12))},
    {"AbsTilt", q15, q12, 32767, FLOATS(kelsReflectionToAbsTilt_32f(s, s + n / 2, d, n - n / 2)),
     INTEGERS(kelsReflectionToAbsTilt_16s_Sfs(s, s + n / 2, d, n - n / 2, -12))},
};
// clang-format on

TEST(LinearPrediction, SixteenBitFormsRoundTheFloatForms) {
    Random random(41);
    for (const Forms& form : kForms) {
        int compared = 0;
        for (int len = 1; len < 150; ++len) {
            const bool isAutocorrelation = form.range == 900;
            const auto n = static_cast<std::size_t>(len);
            std::vector<Kel16s> integers;
            for (std::size_t i = 0; i < n + isAutocorrelation; ++i) {
                const int uniform = random.between(-form.range, form.range);
                integers.push_back(form.range == 32767 ? random.value<Kel16s>() : static_cast<Kel16s>(uniform));
                if (form.range == 0)
                    integers[i] = static_cast<Kel16s>(std::cos(std::numbers::pi * (i + 1) / (n + 1)) / form.srcUnit);
            }
            if (isAutocorrelation) integers[0] = 32000;
            const Guarded<Kel16s> source(integers);
            Floats values;
            for (const Kel16s v : integers) values.push_back(static_cast<Kel32f>(v * form.srcUnit));
            const std::size_t room = form.name == std::string("LPToSpectrum") ? 256 : n;
            Guarded<Kel32f> expected(room);
            Guarded<Kel16s> got(room);
            const KelStatus status = form.floats(values.data(), expected, len);
            test::inEveryRoundingMode([&] { EXPECT_EQ(form.integers(source.data(), got, len), status) << form.name; });
            if (status < kelStatusOk) continue;
            ++compared;
            for (std::size_t i = 0; i < room; ++i) {
                const double value = std::isnan(expected[i]) ? 0 : expected[i] / form.dstUnit;
                const double exact = std::clamp<double>(value, -32768, 32767);
                ASSERT_NEAR(got[i], exact, 0.5 + std::fabs(exact) * 0x1p-23) << form.name << ' ' << len << ' ' << i;
            }
            if (!isAutocorrelation) continue;
            const double error = form.dstUnit == q12 ? lastError * 4096.0 : lastError / 8.0;
            EXPECT_EQ(lastError16, std::lrint(std::min(32767.0, error)));
        }
        EXPECT_GT(compared, 40) << form.name;
    }
}

TEST(LpStatus, InOrderAndNothingWritten) {
    test::expectVectorChecks({-8, -6}, kelsLPToCepstrum_32f, kelsLPToCepstrum_16s_Sfs, kelsCepstrumToLP_32f,
                             kelsCepstrumToLP_16s_Sfs, kelsLPToSpectrum_32f, kelsLPToSpectrum_16s_Sfs,
                             kelsLPToReflection_32f, kelsLPToReflection_16s_Sfs, kelsReflectionToLP_32f,
                             kelsReflectionToLP_16s_Sfs, kelsReflectionToAR_32f, kelsReflectionToAR_16s_Sfs,
                             kelsReflectionToTrueAR_32f, kelsReflectionToTrueAR_16s_Sfs, kelsReflectionToLAR_32f,
                             kelsReflectionToLAR_16s_Sfs, kelsReflectionToTilt_32f, kelsReflectionToTilt_16s_Sfs,
                             kelsReflectionToAbsTilt_32f, kelsReflectionToAbsTilt_16s_Sfs, kelsLPToLSP_32f,
                             kelsLPToLSP_16s_Sfs, kelsLSPToLP_32f, kelsLSPToLP_16s_Sfs);
    test::expectChecks<test::Places{-1, 3, 1}>(
        {-8, -6}, 1, kelsLinearPrediction_Auto_32f, kelsLinearPrediction_Auto_16s_Sfs, kelsLinearPredictionNeg_Auto_32f,
        kelsLinearPredictionNeg_Auto_16s_Sfs, kelsLinearPrediction_Cov_32f, kelsLinearPrediction_Cov_16s_Sfs);
    const auto checkRows = [](auto... functions) {  // either step may be too small
        test::expectChecks<test::Places{1, 5, 4}>({-8, -6, -37}, 1, functions...);
        test::expectChecks<test::Places{3, 5, 4}>({-8, -6, -37}, 1, functions...);
    };
    checkRows(kelsLPToLSP_32f_D2, kelsLPToLSP_16s_D2Sfs, kelsLSPToLP_32f_D2, kelsLSPToLP_16s_D2Sfs);

    Kel32f x[4] = {4, 1, 1, 1}, y[4] = {5, 5, 5, 5};
    Kel16s s[4] = {4, 1, 1, 1}, t[4] = {5, 5, 5, 5};
    for (const auto& f :
         {kelsLinearPrediction_Auto_32f, kelsLinearPredictionNeg_Auto_32f, kelsLinearPrediction_Cov_32f}) {
        EXPECT_EQ(f(x, 1, y, 2), kelStatusSize);
    }
    for (const auto& f :
         {kelsLinearPrediction_Auto_16s_Sfs, kelsLinearPredictionNeg_Auto_16s_Sfs, kelsLinearPrediction_Cov_16s_Sfs}) {
        EXPECT_EQ(f(s, 1, t, 2, 0), kelStatusSize);
    }
    // The error's pointer is looked at after the order.
    test::expectVectorChecks(
        {-8, -6}, +[](const Kel32f* r, Kel32f* d, int n) { return kelsDurbin_32f(r, d, n, nullptr); },
        +[](const Kel32f* r, Kel32f* d, int n) { return kelsSchur_32f(r, d, n, nullptr); },
        +[](const Kel16s* r, Kel16s* d, int n) { return kelsDurbin_16s_Sfs(r, d, n, nullptr, 0); },
        +[](const Kel16s* r, Kel16s* d, int n) { return kelsSchur_16s_Sfs(r, d, n, nullptr, 0); });
    for (const KelStatus status : {kelsDurbin_32f(x, y, 1, nullptr), kelsSchur_32f(x, y, 1, nullptr),
                                   kelsDurbin_16s_Sfs(s, t, 1, nullptr, 0), kelsSchur_16s_Sfs(s, t, 1, nullptr, 0)}) {
        EXPECT_EQ(status, kelStatusNullPtr);
    }
    for (const auto& [len, order, status] : {std::tuple(0, -1, kelStatusSize),
                                             {1, -1, kelStatusFftOrder},
                                             {4, 31, kelStatusFftOrder},
                                             {4, 2, kelStatusSize},
                                             {1, 0, kelStatusSize}}) {
        EXPECT_EQ(kelsLPToSpectrum_32f(x, len, y, order, 0), status);
        EXPECT_EQ(kelsLPToSpectrum_16s_Sfs(s, len, t, order, 0, 0), status);
    }
    for (const Kel32f threshold : {0.f, 1.f, -0.5f, kNan}) {
        EXPECT_EQ(kelsReflectionToLAR_32f(x, y, 1, threshold), kelStatusOutOfRange);
    }
    EXPECT_EQ(kelsReflectionToLAR_16s_Sfs(s, t, 1, 0, 0), kelStatusOutOfRange);
    EXPECT_TRUE(y[0] == 5 && t[0] == 5);
}

TEST(LpMemory, FailedAllocationsLeaveNothingBehind) {
    Floats decay, pairs, y(256);
    for (int i = 0; i < 256; ++i) {
        decay.push_back(static_cast<Kel32f>(std::pow(-0.5, i)));
        pairs.push_back(static_cast<Kel32f>(std::cos((i + 1) * std::numbers::pi / 256)));
    }
    for (const Forms& form : kForms) {
        for (const int order : {20, 150}) {
            test::failEachAllocation([&](int n, const test::AllocationWatch& watch) {
                y[0] = 7;
                const KelStatus status =
                    form.floats(form.range == 0 ? pairs.data() : &decay[form.range != 900], y.data(), order);
                EXPECT_EQ(watch.unreleased(), 0);
                EXPECT_TRUE(order > 63 || watch.calls() == 0 || form.name == std::string("LPToSpectrum")) << form.name;
                if (watch.calls() <= n) return;
                EXPECT_EQ(status, kelStatusNoMemory);
                EXPECT_EQ(y[0], 7);
            });
        }
    }
}

}  // namespace
