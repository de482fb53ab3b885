// Linear prediction: every 16-bit form beside its float form, where calculations stop, and rows.
#include "kels/lp.h"

#include <bit>
#include <numbers>
#include <string>

#include "support/forms.h"
#include "support/support.h"

namespace {

using namespace test;

using Floats = std::vector<Kel32f>;
using Shorts = std::vector<Kel16s>;

// ---- both forms of all functions -----------------------------------------------------------------------------------

constexpr auto durbin = forms(kelsDurbin_32f, kelsDurbin_16s_Sfs);
constexpr auto schur = forms(kelsSchur_32f, kelsSchur_16s_Sfs);
constexpr auto toReflection = forms(kelsLPToReflection_32f, kelsLPToReflection_16s_Sfs);
constexpr auto toSpectrum = forms(kelsLPToSpectrum_32f, kelsLPToSpectrum_16s_Sfs);
constexpr auto toPairs = forms(kelsLPToLSP_32f, kelsLPToLSP_16s_Sfs);
constexpr auto ofPairs = forms(kelsLSPToLP_32f, kelsLSPToLP_16s_Sfs);
constexpr auto predictAuto = forms(kelsLinearPrediction_Auto_32f, kelsLinearPrediction_Auto_16s_Sfs);
constexpr auto predictNegAuto = forms(kelsLinearPredictionNeg_Auto_32f, kelsLinearPredictionNeg_Auto_16s_Sfs);
constexpr auto predictCov = forms(kelsLinearPrediction_Cov_32f, kelsLinearPrediction_Cov_16s_Sfs);
constexpr auto toCepstrum = forms(kelsLPToCepstrum_32f, kelsLPToCepstrum_16s_Sfs);
constexpr auto ofCepstrum = forms(kelsCepstrumToLP_32f, kelsCepstrumToLP_16s_Sfs);
constexpr auto ofReflection = forms(kelsReflectionToLP_32f, kelsReflectionToLP_16s_Sfs);
constexpr auto areaRatio = forms(kelsReflectionToAR_32f, kelsReflectionToAR_16s_Sfs);
constexpr auto trueAreaRatio = forms(kelsReflectionToTrueAR_32f, kelsReflectionToTrueAR_16s_Sfs);
constexpr auto logAreaRatio = forms(kelsReflectionToLAR_32f, kelsReflectionToLAR_16s_Sfs);
constexpr auto tilt = forms(kelsReflectionToTilt_32f, kelsReflectionToTilt_16s_Sfs);
constexpr auto absTilt = forms(kelsReflectionToAbsTilt_32f, kelsReflectionToAbsTilt_16s_Sfs);

enum Source { kUniform, kCorrelation, kPairs };

// A float form and its 16-bit form as functions of source, destination and length.
struct Form {
    const char* name;
    Source source = kUniform;
    int range;           // of the source integers
    double srcUnit = 1;  // what integer 1 is worth
    double dstUnit;
    KelStatus (*floats)(const Kel32f*, Kel32f*, int) = nullptr;
    KelStatus (*integers)(const Kel16s*, Kel16s*, int) = nullptr;
};

// The form that calls its functions by one lambda for both types.
template <class Run>
Form form(Form described, Run) {
    described.floats = [](const Kel32f* s, Kel32f* d, int n) -> KelStatus { return Run()(s, d, n); };
    described.integers = [](const Kel16s* s, Kel16s* d, int n) -> KelStatus { return Run()(s, d, n); };
    return described;
}

constexpr double kQ15 = 0x1p-15, kQ14 = 0x1p-14, kQ12 = 0x1p-12;

const Form kForms[] = {
    form({.name = "Durbin", .source = kCorrelation, .range = 3, .dstUnit = 0x1p-5},
         [](auto* s, auto* d, int n) { return durbin.scaled(-5, s, d, n, d + n); }),
    form({.name = "Schur", .source = kCorrelation, .range = 3, .dstUnit = kQ15},
         [](auto* s, auto* d, int n) { return schur.scaled(-15, s, d, n, d + n); }),
    form({.name = "LPToReflection", .range = 400, .srcUnit = kQ12, .dstUnit = kQ15},
         [](auto* s, auto* d, int n) { return toReflection.scaled(-12, s, d, n); }),
    form({.name = "LPToSpectrum", .range = 99, .dstUnit = kQ12},
         [](auto* s, auto* d, int n) { return toSpectrum.scaled(-12, s, n, d, std::bit_width(n + 0u), 7); }),
    form({.name = "LPToLSP", .range = 200, .srcUnit = kQ12, .dstUnit = kQ12},
         [](auto* s, auto* d, int n) { return toPairs.scaled(-12, s, d, n); }),
    form({.name = "LSPToLP", .source = kPairs, .range = 16384, .srcUnit = kQ14, .dstUnit = kQ14},
         [](auto* s, auto* d, int n) { return ofPairs.scaled(-14, s, d, n); }),
    form({.name = "LinearPrediction_Auto", .range = 32767, .dstUnit = kQ12},
         [](auto* s, auto* d, int n) { return predictAuto.scaled(-12, s, n, d, n / 2 + 1); }),
    form({.name = "LinearPredictionNeg_Auto", .range = 32767, .dstUnit = kQ12},
         [](auto* s, auto* d, int n) { return predictNegAuto.scaled(-12, s, n, d, n / 2 + 1); }),
    form({.name = "LinearPrediction_Cov", .range = 99, .dstUnit = kQ12},
         [](auto* s, auto* d, int n) { return predictCov.scaled(-12, s, n, d, n / 4 + 1); }),
    form({.name = "LPToCepstrum", .range = 2, .dstUnit = 0x1p-6},
         [](auto* s, auto* d, int n) { return toCepstrum.scaled(-6, s, d, n); }),
    form({.name = "CepstrumToLP", .range = 9, .dstUnit = 16},
         [](auto* s, auto* d, int n) { return ofCepstrum.scaled(4, s, d, n); }),
    form({.name = "ReflectionToLP", .range = 20000, .srcUnit = kQ15, .dstUnit = kQ12},
         [](auto* s, auto* d, int n) { return ofReflection.scaled(-12, s, d, n); }),
    form({.name = "ReflectionToAR", .range = 32768, .srcUnit = kQ15, .dstUnit = 0.5},
         [](auto* s, auto* d, int n) { return areaRatio.scaled(-1, s, d, n); }),
    form({.name = "ReflectionToTrueAR", .range = 32768, .srcUnit = kQ15, .dstUnit = 0.5},
         [](auto* s, auto* d, int n) { return trueAreaRatio.scaled(-1, s, d, n); }),
    form({.name = "ReflectionToLAR", .range = 32768, .srcUnit = kQ15, .dstUnit = kQ12},
         [](auto* s, auto* d, int n) { return logAreaRatio.scaled(-12, s, d, n, sizeof(*d) > 2 ? 0.875f : 28672); }),
    form({.name = "ReflectionToTilt", .range = 32768, .srcUnit = kQ15, .dstUnit = kQ12},
         [](auto* s, auto* d, int n) { return tilt.scaled(-12, s, s + n / 2, d, n - n / 2); }),
    form({.name = "ReflectionToAbsTilt", .range = 32768, .srcUnit = kQ15, .dstUnit = kQ12},
         [](auto* s, auto* d, int n) { return absTilt.scaled(-12, s, s + n / 2, d, n - n / 2); }),
};

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

// The integers are the floats of the same source, rounded once more; both stop at the same place.
KelStatus check(const Form& form, const Shorts& source, int n) {
    SCOPED_TRACE(form.name + std::to_string(n));
    Floats src(source.begin(), source.end()), got(4 * source.size() + 2, 7);
    Shorts got16(got.size(), 7);
    for (Kel32f& x : src) x *= static_cast<Kel32f>(form.srcUnit);
    const KelStatus status = form.floats(src.data(), got.data(), n);
    inEveryRoundingMode([&] { EXPECT_EQ(form.integers(source.data(), got16.data(), n), status); });
    for (std::size_t i = 0; i < got.size(); ++i) {
        if (got[i] == 7 && got16[i] == 7) continue;  // not written
        const Real value = std::isnan(got[i]) ? 0 : got[i] / form.dstUnit;
        EXPECT_TRUE(near(got16[i], std::clamp(value, -32768.0L, 32767.0L), 0.501L + std::fabs(value) * 0x1p-22L)) << i;
    }
    return status;
}

TEST(LinearPrediction, IntegersAreTheFloatsRounded) {
    Random random(1);
    for (const Form& form : kForms) {
        for (const int n : {1, 2, 3, 4, 5, 6, 7, 8, 9, 12, 13, 16, 17, 21, 22, 33, 63, 64, 150}) {
            for (int round = 0; round < 4; ++round) check(form, sourceOf(form, n, random), n);
        }
    }
    const auto statusOf = [](const std::string& name, const Shorts& source, int n) -> KelStatus {
        for (const Form& form : kForms) {
            if (form.name == name) return check(form, source, n);
        }
        return kelStatusErr;
    };
    // The error is 0 at the beginning, 0 later, negative later.
    for (const Shorts& r : {Shorts{0, 1, 1, 1}, {2, -2, 2, 2}, {2, 1, 4, 0}}) {
        EXPECT_EQ(statusOf("Durbin", r, 3), kelStatusLpcCalc);
        EXPECT_EQ(statusOf("Schur", r, 3), kelStatusLpcCalc);
    }
    EXPECT_EQ(statusOf("LPToReflection", {2048, -4096, 0}, 3), kelStatusDivByZero);  // a pole at 1
    EXPECT_EQ(statusOf("LPToReflection", {-4096}, 1), kelStatusOk);
    EXPECT_EQ(statusOf("LPToSpectrum", {1, 2, 4}, 3), kelStatusDivByZero);  // a zero at 0
    // Pairs that are close, and none; a singular matrix.
    for (const Shorts& a : {Shorts{100, 4095}, {-7000, 4094}, {8190, 4095}}) {
        EXPECT_EQ(statusOf("LPToLSP", a, 2), kelStatusOk);
    }
    EXPECT_EQ(statusOf("LPToLSP", {0, 4097}, 2), kelStatusNoRoot);
    for (const Shorts& x : {Shorts{1, 1, 2, 3, 5, 8, 13, 21}, {7, 1, 8, 9, 17, 26, 43, 69}}) {
        EXPECT_EQ(statusOf("LinearPrediction_Cov", x, 8), kelStatusLpcCalc);
    }
}

// ---- rows ----------------------------------------------------------------------------------------------------------

// Three rows of three between others' elements; one that cannot be converted lets `written` rows before it come out.
template <class T, class... Scale>
void checkRows(KelStatus (*rows)(const T*, int, T*, int, int, int, Scale...),
               KelStatus (*one)(const T*, T*, int, Scale...), T unit, KelStatus fault, int written, Scale... scale) {
    std::vector<T> src(11), expected(13, 7);
    const auto check = [&](KelStatus status) {
        std::vector<T> dst(13, 7);
        EXPECT_EQ(rows(src.data(), 4, dst.data(), 5, 3, 3, scale...), status);
        EXPECT_EQ(dst, expected);
    };
    for (int i = 0; i < 11; ++i) src[i] = static_cast<T>(unit * (4 - i % 4) / (5 + i / 4));
    for (int i = 0; i < 3; ++i) EXPECT_EQ(one(&src[4 * i], &expected[5 * i], 3, scale...), kelStatusOk);
    check(kelStatusOk);
    std::fill_n(&src[8], 3, static_cast<T>(2 * unit));
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
        Kel32f a[3];
        EXPECT_EQ(kelsLSPToLP_32f(bad.data(), a, 3), kelStatusBadLsp);
    }
}

}  // namespace
