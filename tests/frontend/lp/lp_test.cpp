#include "kels/lp.h"

#include "support/support.h"
#include "support/transform.h"

namespace {

using namespace test;

using Exact = std::vector<Real>;
using Floats = std::vector<Kel32f>;
using Shorts = std::vector<Kel16s>;

// ---- references: results for a source and the length that the call is given, fewer where the calculation stops

void stepUp(Exact& a, Real k) {
    const Exact before = a;
    for (std::size_t j = 0; j < a.size(); ++j) a[j] -= k * before[a.size() - 1 - j];
    a.push_back(-k);
}
Exact predictor(const Exact& k, int) {
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
Exact covariance(const Exact& x, int n) {
    const int p = n / 4 + 1;
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
Exact spectrum(const Exact& a, int n) {
    Exact levels;
    for (const auto& bin : transform(a, std::bit_ceil(n + 1u))) {
        levels.push_back(1 / std::abs(levels.empty() ? bin - 7.0L : bin));
    }
    return levels;
}

Exact reflections(const Exact& predictor, int) {
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

Exact times(const Exact& f, const Exact& g) {
    Exact product(f.size() + g.size() - 1);
    for (std::size_t i = 0; i < f.size(); ++i) {
        for (std::size_t j = 0; j < g.size(); ++j) product[i + j] += f[i] * g[j];
    }
    return product;
}
Exact predictorOfPairs(const Exact& x, int n) {
    Exact pq[2] = {n % 2 ? Exact{1} : Exact{1, 1}, n % 2 ? Exact{1, 0, -1} : Exact{1, -1}}, a;
    for (int i = 0; i < n; ++i) pq[i % 2] = times(pq[i % 2], {1, -2 * x[i], 1});
    for (int i = 1; i <= n; ++i) a.push_back((pq[0][i] + pq[1][i]) / 2);
    return a;
}

template <bool halves, Real (*value)(Real, Real)>
Exact elements(const Exact& x, int n) {
    Exact y;
    for (int i = halves ? n / 2 : 0; i < n; ++i) y.push_back(value(x[halves ? i - n / 2 : i], x[i]));
    return y;
}

// P and Q vanish by turns; each is the real or the imaginary part of the predictor turned by half its phase.
Exact pairs(const Exact& a, int n) {
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

// ---- both forms of all functions

enum Source { kUniform, kCorrelation, kPairs };

// A float form and its 16-bit form as functions of source, destination and length.
struct Form {
    const char* name;
    Source source;
    int range;                // of the source integers
    double srcUnit, dstUnit;  // what integer 1 is worth
    int roundings;            // to single precision
    Real noise;               // what the other arithmetic does, as a relative change of the source
    KelStatus (*floats)(const Kel32f*, Kel32f*, int);
    KelStatus (*integers)(const Kel16s*, Kel16s*, int);
    Exact (*reference)(const Exact&, int);
};
// clang-format off
// The arguments behind the reference, in the 16-bit form then the scale factor.
#define FORM(name, source, range, srcUnit, dstUnit, roundings, noise, scale, reference, ...) \
    {#name, source, range, srcUnit, dstUnit, roundings, noise, \
     [](const Kel32f* s, Kel32f* d, int n) { return kels##name##_32f(__VA_ARGS__); }, \
     [](const Kel16s* s, Kel16s* d, int n) { return kels##name##_16s_Sfs(__VA_ARGS__, scale); }, reference}
#define DOUBLE(name, source, range, srcUnit, dstUnit, scale, reference, ...) \
    FORM(name, source, range, srcUnit, dstUnit, 1, 0x1p-48L, scale, reference, __VA_ARGS__)
// Element by element: a value of k, or of k in the first half of the source and l in the second.
#define SINGLE(name, dstUnit, scale, value, ...) \
    FORM(name, kUniform, 32768, q15, dstUnit, 3, 0, scale, \
         (elements<false, [](Real k, Real) -> Real { return value; }>), __VA_ARGS__)
#define HALVES(name, value) \
    FORM(name, kUniform, 32768, q15, q12, 3, 0, -12, (elements<true, [](Real k, Real l) -> Real { return value; }>), \
         s, s + n / 2, d, n - n / 2)
constexpr double q15 = 1.0 / 32768, q14 = 1.0 / 16384, q12 = 1.0 / 4096;
const Form kForms[] = {
    DOUBLE(Durbin, kCorrelation, 3, 1, 1.0 / 32, -5, levinson<false>, s, d, n, n > 0 ? d + n : nullptr),
    DOUBLE(Schur, kCorrelation, 3, 1, q15, -15, levinson<true>, s, d, n, n > 0 ? d + n : nullptr),
    DOUBLE(LPToReflection, kUniform, 400, q12, q15, -12, reflections, s, d, n),
    FORM(LPToSpectrum, kUniform, 99, 1, q12, 4, 0x1p-21L, -12, spectrum, s, n, d, std::bit_width(n + 0u), 7),
    FORM(LPToLSP, kUniform, 200, q12, q12, 1, 0x1p-36L, -12, pairs, s, d, n),
    // The product of its quadratics is not backward stable.
    FORM(LSPToLP, kPairs, 16384, q14, q14, 1, 0x1p-44L, -14, predictorOfPairs, s, d, n),
    DOUBLE(LinearPrediction_Auto, kUniform, 32767, 1, q12, -12, autocorrelation<1>, s, n, d, n / 2 + 1),
    DOUBLE(LinearPredictionNeg_Auto, kUniform, 32767, 1, q12, -12, autocorrelation<-1>, s, n, d, n / 2 + 1),
    DOUBLE(LinearPrediction_Cov, kUniform, 99, 1, q12, -12, covariance, s, n, d, n / 4 + 1),
    DOUBLE(LPToCepstrum, kUniform, 2, 1, 1.0 / 64, -6, cepstral<false>, s, d, n),
    DOUBLE(CepstrumToLP, kUniform, 9, 1, 16, 4, cepstral<true>, s, d, n),
    DOUBLE(ReflectionToLP, kUniform, 20000, q15, q12, -12, predictor, s, d, n),
    SINGLE(ReflectionToAR, 0.5, -1, (1 - k) / (1 + k), s, d, n),
    SINGLE(ReflectionToTrueAR, 0.5, -1, (1 + k) / (1 - k), s, d, n),
    SINGLE(ReflectionToLAR, q12, -12, -2 * std::atanh(std::clamp(k, -0.875L, 0.875L)),
           s, d, n, sizeof(*d) > 2 ? 0.875f : 28672),
    HALVES(ReflectionToTilt, (std::fabs(k) - std::fabs(l)) / (k + l)),
    HALVES(ReflectionToAbsTilt, (std::fabs(k) - std::fabs(l)) / (std::fabs(k) + std::fabs(l))),
};
// clang-format on

Shorts sourceOf(const Form& form, int n, Random& random) {
    Shorts x;
    for (int i = 0; i < n; ++i) {
        const int uniform = random.between(-form.range, form.range);
        x.push_back(form.range < 32767 ? static_cast<Kel16s>(uniform) : random.value<Kel16s>());
        if (form.source == kPairs) {
            x[i] = static_cast<Kel16s>(form.range * std::cos(std::numbers::pi * (i + 1) / (n + 1)));
        }
    }
    x[0] |= 1;
    if (form.source != kCorrelation) return x;
    Shorts r(x.size() + 1);
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j <= i; ++j) r[i - j] += x[i] * x[j];
    }
    return r;
}

void check(const Form& form, const Shorts& source, int n) {
    SCOPED_TRACE(form.name + std::to_string(n));
    Random random(static_cast<unsigned>(n));
    Exact x, moved;
    for (const Kel16s v : source) {
        x.push_back(v * form.srcUnit);
        moved.push_back(x.back() * (1 + (random.between(0, 1) ? form.noise : -form.noise)));
    }
    const Exact exact = form.reference(x, n), beside = form.reference(moved, n);
    Real noise = 0;
    for (std::size_t i = 0; i < std::min(exact.size(), beside.size()); ++i) {
        noise = std::fmax(noise, std::fabs(exact[i] - beside[i]));
    }
    const bool complete = form.source == kCorrelation ? std::ssize(exact) > n : !exact.empty();
    const KelStatus fault = form.reference == pairs ? kelStatusNoRoot : kelStatusLpcCalc;
    KelStatus status = complete ? kelStatusOk : fault;
    for (const Real v : exact) status = std::isfinite(v) ? status : kelStatusDivByZero;

    const std::size_t room = complete ? exact.size() : source.size();
    const Guarded<Kel32f> src(Floats(x.begin(), x.end()));
    const Guarded<Kel16s> src16(source);
    Guarded<Kel32f> got(Floats(room, 7)), inPlace(src.vector());
    Guarded<Kel16s> got16(Shorts(room, 7));
    failEachAllocation([&](int failing, const AllocationWatch& watch) {
        const KelStatus reported = form.floats(src.data(), got, n);
        const bool failed = watch.calls() > failing;
        EXPECT_EQ(reported, failed ? kelStatusNoMemory : status);
        EXPECT_TRUE(!failed || (got.vector() == Floats(room, 7) && (n > 20 || form.reference == spectrum)));
        EXPECT_EQ(watch.unreleased(), 0);
    });
    inEveryRoundingMode([&] { EXPECT_EQ(form.integers(src16.data(), got16, n), status); });
    for (std::size_t i = 0; i < room; ++i) {
        const Real value = i < exact.size() ? exact[i] : 7, error = form.roundings * 0x1p-24L * std::fabs(value);
        const Real bound = 1.0001L * error + 2 * noise;
        Real integer = std::clamp(std::isnan(value) ? 0 : value / form.dstUnit, -32768.0L, 32767.0L);
        if (i >= exact.size()) integer = 7;
        if (std::isfinite(static_cast<Kel32f>(value))) {
            EXPECT_TRUE(near(got[i], value, bound)) << i;
            EXPECT_TRUE(near(got16[i], integer, 0.5L + bound / form.dstUnit)) << i;
        } else {
            EXPECT_TRUE(sameBits(got[i], static_cast<Kel32f>(value)) && got16[i] == integer) << i;
        }
    }
    if (form.source == kCorrelation || n < 3 || exact.size() != source.size()) return;
    EXPECT_EQ(form.floats(inPlace, inPlace, n), status);
    EXPECT_TRUE(sameBits(inPlace, got.vector()));
}

TEST(LinearPrediction, BothFormsFollowTheReferences) {
    Random random(1);
    for (const Form& form : kForms) {
        for (const int n : {1, 2, 3, 4, 5, 6, 7, 8, 9, 12, 13, 16, 17, 21, 22, 33, 63, 64, 150}) {
            if (form.source == kPairs && n > 22) continue;  // beyond the precision of the reference
            for (int round = 0; round < 4; ++round) check(form, sourceOf(form, n, random), n);
        }
    }
    for (const Form& form : {kForms[0], kForms[1]}) {  // the error is 0 at the beginning, 0 later, negative later
        for (const Shorts& r : {Shorts{0, 1, 1, 1}, {2, -2, 2, 2}, {2, 1, 4, 0}}) check(form, r, 3);
    }
    // A pole at 1, and none; a zero at 0; pairs that are close, and none; a singular matrix.
    check(kForms[2], {2048, -4096, 0}, 3);
    check(kForms[2], {-4096}, 1);
    check(kForms[3], {1, 2, 4}, 3);
    for (const Shorts& a : {Shorts{100, 4095}, {-7000, 4094}, {8190, 4095}, {0, 4097}}) check(kForms[4], a, 2);
    for (const Shorts& x : {Shorts{1, 1, 2, 3, 5, 8, 13, 21}, {7, 1, 8, 9, 17, 26, 43, 69}}) check(kForms[8], x, 8);
}

// ---- rows

// Three rows of three between others' elements; one that cannot be converted lets `written` rows before it come out.
template <class T, class... Scale>
void checkRows(KelStatus (*rows)(const T*, int, T*, int, int, int, Scale...),
               KelStatus (*one)(const T*, T*, int, Scale...), T unit, KelStatus fault, int written, Scale... scale) {
    expectChecks<Places{1, 5, 4}>({-8, -6, -37}, 1, rows);
    expectChecks<Places{3, 5, 4}>({-8, -6, -37}, 1, rows);
    Guarded<T> src(11);
    std::vector<T> expected(13, 7);
    const auto check = [&](KelStatus status) {
        Guarded<T> dst(std::vector<T>(13, 7));
        EXPECT_EQ(rows(src, 4, dst, 5, 3, 3, scale...), status);
        EXPECT_EQ(dst.vector(), expected);
    };
    for (int i = 0; i < 11; ++i) src[i] = static_cast<T>(unit * (4 - i % 4) / (5 + i / 4));
    for (int i = 0; i < 3; ++i) EXPECT_EQ(one(src + 4 * i, &expected[5 * i], 3, scale...), kelStatusOk);
    check(kelStatusOk);
    std::fill_n(src + 8, 3, static_cast<T>(2 * unit));
    std::fill(expected.begin() + 5 * written, expected.end(), T(7));
    check(fault);
}
TEST(LineSpectralPairs, RowsAndTheirFaults) {
    checkRows(kelsLPToLSP_32f_D2, kelsLPToLSP_32f, 1.0f, kelStatusNoRoot, 2);
    checkRows(kelsLPToLSP_16s_D2Sfs, kelsLPToLSP_16s_Sfs, Kel16s{4096}, kelStatusNoRoot, 2, -12);
    checkRows(kelsLSPToLP_32f_D2, kelsLSPToLP_32f, 1.0f, kelStatusBadLsp, 0);
    checkRows(kelsLSPToLP_16s_D2Sfs, kelsLSPToLP_16s_Sfs, Kel16s{4096}, kelStatusBadLsp, 0, -12);
    for (const Floats& bad :
         {Floats{0.5f, 0.5f, -0.5f}, {1.0001f, 0, -1}, {1, 0, -1.0001f}, {NAN, 0, -1}, {1, 0, NAN}}) {
        Guarded<Kel32f> a(3);
        EXPECT_EQ(kelsLSPToLP_32f(bad.data(), a, 3), kelStatusBadLsp);
        EXPECT_EQ(a.vector(), Floats(3));
    }
}

// ---- statuses

TEST(LpStatus, InOrderAndNothingWritten) {
    Kel32f x[4] = {}, y[4] = {};
    Kel16s s[4] = {}, t[4] = {};
    for (const Form& form : kForms) {
        for (const KelStatus status : {form.floats(nullptr, y, 0), form.floats(x, nullptr, 0),
                                       form.integers(nullptr, t, 0), form.integers(s, nullptr, 0)}) {
            EXPECT_EQ(status, kelStatusNullPtr) << form.name;
        }
        EXPECT_EQ(form.floats(x, y, 0), kelStatusSize) << form.name;
        EXPECT_EQ(form.integers(s, t, 0), kelStatusSize) << form.name;
    }
    expectNullChecks(kelsReflectionToTilt_32f, kelsReflectionToTilt_16s_Sfs, kelsReflectionToAbsTilt_32f,
                     kelsReflectionToAbsTilt_16s_Sfs);
    const auto checkOrders = [](auto... functions) { (expectSteps(functions, {0, 1}, {{3, 0, -6}, {3, 2, -6}}), ...); };
    checkOrders(kelsLinearPrediction_Auto_32f, kelsLinearPredictionNeg_Auto_32f, kelsLinearPrediction_Cov_32f,
                kelsLinearPrediction_Auto_16s_Sfs, kelsLinearPredictionNeg_Auto_16s_Sfs,
                kelsLinearPrediction_Cov_16s_Sfs);
    // The error's pointer is looked at after the order, with which the loop above has it null.
    for (const KelStatus status : {kelsDurbin_32f(x, y, 1, nullptr), kelsSchur_32f(x, y, 1, nullptr),
                                   kelsDurbin_16s_Sfs(s, t, 1, nullptr, 0), kelsSchur_16s_Sfs(s, t, 1, nullptr, 0)}) {
        EXPECT_EQ(status, kelStatusNullPtr);
    }
    // Arguments: source, 1 len, destination, 3 fftOrder.
    const std::vector<Step> steps{{3, -1, -6}, {1, 4, -15}, {3, 31, -15}, {3, 2, -6}, {3, 0, -6}};
    expectSteps(kelsLPToSpectrum_32f, {}, steps);
    expectSteps(kelsLPToSpectrum_16s_Sfs, {}, steps);
    expectSteps(kelsReflectionToLAR_32f, {0, 0, 1, 0}, {{3, 0, -7}, {3, 1, -7}, {3, NAN, -7}});
    expectSteps(kelsReflectionToLAR_16s_Sfs, {0, 0, 1, 0}, {{3, 0, -7}});
}

}  // namespace
