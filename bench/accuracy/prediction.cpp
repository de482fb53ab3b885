// Linear prediction: recursions in extended precision, on predictors and autocorrelations as speech has them.
#include "forms.h"
#include "frontend/lp/references.h"

namespace accuracy {
namespace {

using Values = std::vector<Real>;

Values valuesOf(const Row& row) {
    Values values;
    for (const Exact& x : row) values.push_back(x.value);
    return values;
}
void expect(Problem& p, const Values& values) {
    Row& d = p.exact("d")[0];
    for (std::size_t i = 0; i < std::min(d.size(), values.size()); ++i) d[i] = values[i];
}

// d from s, by a function of the values and their number.
auto by(Values (*f)(const Values&, int)) {
    return [f](Problem& p) { expect(p, f(valuesOf(p.row("s")), static_cast<int>(p.row("s").size()))); };
}
// The same row by row.
auto rowsBy(Values (*f)(const Values&, int)) {
    return [f](Problem& p) {
        Rows& d = p.exact("d");
        for (std::size_t r = 0; r < d.size(); ++r) {
            const Values s = valuesOf(p.all("s")[r]), one = f(s, static_cast<int>(s.size()));
            for (std::size_t i = 0; i < one.size(); ++i) d[r][i] = one[i];
        }
    };
}

// Noise through two resonances.
std::vector<double> resonant(Problem& p, std::size_t n) {
    std::vector<double> x(n + 4);
    const double first = draw({0.2, 1.2}, p.dice()), second = draw({1.3, 2.6}, p.dice());
    for (std::size_t i = 4; i < x.size(); ++i) {
        x[i] = draw({-1, 1}, p.dice()) + 0.6 * std::cos(first) * x[i - 1] - 0.4 * x[i - 2] +
               0.4 * std::cos(second) * x[i - 3] - 0.2 * x[i - 4];
    }
    x.erase(x.begin(), x.begin() + 4);
    return x;
}
void giveSamples(Problem& p) {
    const auto x = resonant(p, p.row("s").size());
    p.set("s", [&](std::size_t, std::size_t i) { return static_cast<double>(static_cast<float>(1000 * x[i])); });
}
void giveAutocorrelation(Problem& p) {
    const auto x = resonant(p, 240);
    p.set("s", [&](std::size_t, std::size_t lag) {
        double sum = 0;
        for (std::size_t t = lag; t < x.size(); ++t) sum += x[t] * x[t - lag];
        return sum;
    });
}

template <bool wantsReflections>
void recursion(Problem& p) {
    Values all = test::lp::levinson<wantsReflections>(valuesOf(p.row("s")), 0);
    p.exact("e")[0][0] = all.back();
    all.pop_back();
    expect(p, all);
}
void autocorrelation(Problem& p) {
    const Values x = valuesOf(p.row("s"));
    Values r(static_cast<std::size_t>(p.whole("p")) + 1);
    for (std::size_t lag = 0; lag < r.size(); ++lag) {
        for (std::size_t t = lag; t < x.size(); ++t) r[lag] += x[t] * x[t - lag];
    }
    Values a = test::lp::levinson<false>(r, 0);
    a.pop_back();
    for (Real& v : a) v *= p.isCalled("Neg") ? -1 : 1;
    expect(p, a);
}
void covariance(Problem& p) {
    expect(p, test::lp::covarianceOf(valuesOf(p.row("s")), p.whole("n"), p.whole("p")));
}

void spectrum(Problem& p) {
    Values a = valuesOf(p.row("s"));
    a.insert(a.begin(), 0);
    const auto bins = test::transform(a, std::size_t{1} << p.whole("o"));
    Row& d = p.exact("d")[0];
    const Real terms = sum(p.row("s")).magnitude + std::fabs(p.number("val"));
    for (std::size_t k = 0; k < d.size(); ++k) {
        const Real magnitude = std::abs(k == 0 ? bins[k] - p.number("val") : bins[k]);
        d[k] = Exact(1) / Exact(magnitude, terms);
    }
}

Exact logAreaRatio(const Exact& k) {
    return -2 * std::atanh(k.value);
}

}  // namespace

References predictionReferences() {
    const auto ratio = each([](const Exact& k) { return Exact(1 - k.value) / (1 + k.value); });
    const auto trueRatio = each([](const Exact& k) { return Exact(1 + k.value) / (1 - k.value); });
    const auto tilt = pairs([](const Exact& a, const Exact& b) { return (abs(a) - abs(b)) / (a + b); });
    const auto absTilt = pairs([](const Exact& a, const Exact& b) { return (abs(a) - abs(b)) / (abs(a) + abs(b)); });
    return {
        {"kelsDurbin", "n=1..20", Unit::Peak, recursion<false>, giveAutocorrelation},
        {"kelsSchur", "n=1..20", Unit::Peak, recursion<true>, giveAutocorrelation},
        {"kelsLinearPrediction_Auto kelsLinearPredictionNeg_Auto", "n=90 p=1..16", Unit::Peak, autocorrelation,
         giveSamples},
        {"kelsLPToCepstrum", "s=-0.2..0.2 n=1..24", Unit::Peak, by(test::lp::cepstral<false>)},
        {"kelsCepstrumToLP", "s=-0.2..0.2 n=1..24", Unit::Peak, by(test::lp::cepstral<true>)},
        {"kelsLPToSpectrum", "s=-0.2..0.2 n=1..4 val=1 o=3..7", Unit::Sum, spectrum},
        {"kelsLPToReflection", "s=-0.03..0.03 n=1..24", Unit::Peak, by(test::lp::reflections)},
        {"kelsReflectionToLP", "s=-0.9..0.9 n=1..24", Unit::Peak, by(test::lp::predictor)},
        {"kelsReflectionToAR", "s=-0.99..0.99", Unit::Ulp, ratio},
        {"kelsReflectionToTrueAR", "s=-0.99..0.99", Unit::Ulp, trueRatio},
        {"kelsReflectionToLAR", "s=0.01..0.9 t=0.95", Unit::Ulp, each(logAreaRatio)},
        {"kelsReflectionToTilt", "s=0.01..0.9 t=0.01..0.9", Unit::Sum, tilt},
        {"kelsReflectionToAbsTilt", "s=-0.9..0.9 t=-0.9..0.9", Unit::Sum, absTilt},
        {"kelsLPToLSP", "s=-0.04..0.04 n=1..20 w=1..20 h=1..3", Unit::Peak, rowsBy(test::lp::pairs), nullptr, 20},
        {"kelsLSPToLP", "n=1..20 w=1..20", Unit::Peak, rowsBy(test::lp::predictorOfPairs)},
        {"kelsLinearPrediction_Cov", "n=90 p=2..16", Unit::Peak, covariance, giveSamples},
    };
}

}  // namespace accuracy
