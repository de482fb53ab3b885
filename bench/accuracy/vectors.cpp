// Vector kernels: elements, sums, extrema, logarithms of likelihoods, windows, kernel functions.
#include "forms.h"
#include "special.h"

namespace accuracy {
namespace {

Exact powerOf(const Row& parts, std::size_t i) {  // of a complex number
    return square(parts[2 * i]) + square(parts[2 * i + 1]);
}

// In Pack order, the source conjugated.
void mulPackConj(Problem& p) {
    const Row &s = p.row("s"), &t = p.row("d");
    Row& d = p.exact("d")[0];
    const std::size_t n = s.size();
    d[0] = s[0] * t[0];
    if (n % 2 == 0) d[n - 1] = s[n - 1] * t[n - 1];
    for (std::size_t k = 1; k + 1 < n; k += 2) {
        d[k] = t[k] * s[k] + t[k + 1] * s[k + 1];
        d[k + 1] = t[k + 1] * s[k] - t[k] * s[k + 1];
    }
}

// The square is rounded to the type of the result before its exponential is taken.
void expNegSqr(Problem& p) {
    const bool single = p.isSingle("d");
    each([single](const Exact& x) -> Exact {
        const auto v = static_cast<double>(x.value);
        return std::exp(-static_cast<Real>(single ? static_cast<float>(v * v) : v * v));
    })(p);
}

Exact sinc(const Exact& x) {
    return x.value == 0 ? 1 : std::sin(x.value) / x.value;
}

void window(Problem& p) {
    const int kind = p.whole("kind"), n = p.whole("n");
    Row& d = p.exact("d")[0];
    for (int i = 0; i < n; ++i) {
        const Exact w = windowAt(kind, i, n, p.number("param"));
        d[static_cast<std::size_t>(i)] = p.isCalled("Mul") ? w * p.row("d")[static_cast<std::size_t>(i)] : w;
    }
}

void preEmphasis(Problem& p) {
    const Row& s = p.source();
    Row& d = p.exact("d")[0];
    for (std::size_t i = 0; i < d.size(); ++i) {
        const Exact before = i > 0 ? s[i - 1] : p.has("mem") ? p.one("mem") : s[0];
        d[i] = s[i] - before * p.number("val");
    }
}

Exact larger(const Exact& a, const Exact& b) {
    return std::max(a, b);
}
Exact smaller(const Exact& a, const Exact& b) {
    return std::min(a, b);
}

void logAddAll(Problem& p) {
    const bool single = p.isSingle("d");
    pairs([single](const Exact& x, const Exact& y) { return logAdd(x, y, single); })(p);
}
void logSum(Problem& p) {
    const Row& s = p.row("s");
    Exact all = s[0];
    for (std::size_t i = 1; i < s.size(); ++i) all = logAdd(all, s[i], p.isSingle("r"));
    p.exact("r")[0][0] = all;
}

void determinant(Problem& p) {
    const Row& s = p.row("s");
    const bool direct = p.isCalled("DirectVar");
    p.exact("r")[0][0] = Exact(1.8378770664093L) * static_cast<Real>(s.size()) +
                         sum(s.size(), [&](std::size_t i) { return direct ? log(s[i]) : -log(s[i]); });
}

void dotProduct(Problem& p) {
    const Row &s = p.row("s"), &t = p.row("t");
    p.exact("r")[0][0] = sum(s.size(), [&](std::size_t i) { return s[i] * t[i]; });
}

void set(Problem& p) {
    for (Exact& d : p.exact("d")[0]) d = p.isCalled("Zero") ? 0 : p.number("val");
}

// A value within a range of the vector's span.
void normalise(Problem& p) {
    const Row& s = p.source();
    const bool given = p.has("mn");
    const Exact low = given ? p.number("mn") : *std::min_element(s.begin(), s.end());
    const Exact high = given ? p.number("mx") : *std::max_element(s.begin(), s.end());
    const Exact span = high - low, lo = p.number("lo"), hi = p.number("hi");
    if (span.value == 0) return;
    const Exact scale = Exact(p.number("range")) / ((hi - lo) * span), from = low + lo * span, to = low + hi * span;
    each([&](const Exact& x) {
        const Exact inside = smaller(x, to) - from;
        return inside.value <= 0 ? Exact(0, inside.magnitude * scale.magnitude) : inside * scale;
    })(p);
}

Exact unitCurve(const Exact& x) {
    return x.value <= 1 ? square(x) : Exact(2) - square(Exact(2) - x);
}

void scaleScores(Problem& p) {
    const Exact least = p.number("a"), factor = p.number("b"), offset = p.number("c");
    each([&](const Exact& x) { return larger(x, least) * factor + offset; })(p);
}

void nthLargest(Problem& p) {
    Row sorted = p.row("s");
    std::sort(sorted.begin(), sorted.end());
    p.exact("r")[0][0] = sorted[sorted.size() - 1 - static_cast<std::size_t>(p.whole("k"))];
}

void recSqrt(Problem& p) {
    const Exact threshold = p.number("t");
    each([&](const Exact& x) { return x < threshold ? threshold : Exact(1) / sqrt(x); })(p);
}

}  // namespace

References vectorReferences() {
    const auto same = each([](const Exact& x) { return x; });
    const auto scaled = [](Problem& p) {
        const Real factor = p.has("sf") ? std::exp2(-p.number("sf")) : 1;
        each([factor](const Exact& x) { return x * factor; })(p);
    };
    const auto minus = [](const Exact& x, const Exact& y) { return y - x; };
    const auto times = [](const Exact& x, const Exact& c) { return x * c; };
    const auto maximum = whole([](const Row& s) { return *std::max_element(s.begin(), s.end()); });
    const auto minimum = whole([](const Row& s) { return *std::min_element(s.begin(), s.end()); });
    const auto logarithm = [](const Exact& x) { return log(x); };
    const auto magnitude = [](auto finish) {
        return [finish](Problem& p) {
            Row& d = p.exact("d")[0];
            for (std::size_t i = 0; i < d.size(); ++i) d[i] = finish(powerOf(p.row("s"), i));
        };
    };
    const auto logSubtract = [](const Exact& x, const Exact& y) {
        return Exact(x.value + std::log1p(-std::exp(y.value - x.value)));
    };
    const auto half = [](const Exact& w, const Exact& s) { return w - s * 0.5L; };
    return {
        {"kelsSet kelsZero", "", Unit::Ulp, set},
        {"kelsCopy kelsMove", "", Unit::Ulp, same},
        {"kelsConvert", "sf=-8..20", Unit::Ulp, scaled},
        {"kelsAdd", "", Unit::Ulp, pairs([](const Exact& x, const Exact& y) { return x + y; })},
        {"kelsSub", "", Unit::Ulp, pairs(minus)},
        {"kelsMul", "", Unit::Ulp, pairs(times)},
        {"kelsDiv", "s=0..1e4 t=0..1e4", Unit::Ulp, pairs([](const Exact& x, const Exact& y) { return y / x; })},
        {"kelsAddC", "", Unit::Ulp, eachWith("c", [](const Exact& x, const Exact& c) { return x + c; })},
        {"kelsMulC", "", Unit::Ulp, eachWith("c", times)},
        {"kelsDivC", "c=0.1..9", Unit::Ulp, eachWith("c", [](const Exact& x, const Exact& c) { return x / c; })},
        {"kelsMaxEvery", "", Unit::Ulp, pairs(larger)},
        {"kelsMinEvery", "", Unit::Ulp, pairs(smaller)},
        {"kelsMaxEveryC", "", Unit::Ulp, eachWith("val", larger)},
        {"kelsMinEveryC", "", Unit::Ulp, eachWith("val", smaller)},
        {"kelsAbs", "", Unit::Ulp, each([](const Exact& x) { return abs(x); })},
        {"kelsSqrt", "d=0..1e4", Unit::Ulp, each([](const Exact& x) { return sqrt(x); })},
        {"kelsRecSqrt", "d=0..1e4 t=1e-5", Unit::Ulp, recSqrt},
        {"kelsMagnitude", "", Unit::Ulp, magnitude([](const Exact& power) { return sqrt(power); })},
        {"kelsMagnitudeSqr", "", Unit::Ulp, magnitude([](const Exact& power) { return power; })},
        {"kelsMulPackConj", "", Unit::Sum, mulPackConj},
        {"kelsDotProd", "", Unit::Sum, dotProduct},
        {"kelsSum", "mode=0..2", Unit::Sum, whole([](const Row& s) { return sum(s); })},
        {"kelsMax kelsMaxIndx", "", Unit::Ulp, maximum},
        {"kelsMin", "", Unit::Ulp, minimum},
        {"kelsNthMaxElement", "", Unit::Ulp, nthLargest},
        {"kelsLn", "s=0..1e9 d=0..1e9", Unit::Ulp, each(logarithm)},
        {"kelsLog10", "s=0..1e9 d=0..1e9", Unit::Ulp, each([](const Exact& x) { return std::log10(x.value); })},
        {"kelsExp", "s=-80..80 d=-80..80", Unit::Ulp, each([](const Exact& x) { return exp(x); })},
        {"kelsLogAdd", "s=-90..-20 d=-90..-20 hint=0", Unit::Ulp, logAddAll},
        {"kelsLogAddVec", "s=-90..-20 d=-90..-20 n=1..90", Unit::Ulp, logAddAll},
        {"kelsLogSub", "s=-9..-5 d=-20..-10", Unit::Ulp, pairs(logSubtract)},
        {"kelsLogSum", "s=-90..-20", Unit::Ulp, logSum},
        {"kelsUpdateGConst kelsUpdateGConst_DirectVar", "s=0.1..9", Unit::Sum, determinant},
        {"kelsOutProbPreCalc", "w=0..1e4 s=0..1e4 d=0..1e4", Unit::Ulp, pairs(half, "w", "s")},
        {"kelsSinC", "s=0..1e3 d=0..1e3", Unit::Ulp, each(sinc)},
        {"kelsExpNegSqr", "s=0..9 d=0..9", Unit::Ulp, expNegSqr},
        {"kelsWindow kelsMulWindow", "param=0..20", Unit::Peak, window},
        {"kelsPreEmphasis", "val=-1..1", Unit::Sum, preEmphasis},
        {"kelsScaleLM kelsLMThreshold", "", Unit::Sum, scaleScores},
        {"kelsNormalizeInRange kelsNormalizeInRangeMinMax", "range=1..300", Unit::Sum, normalise},
        {"kelsUnitCurve", "s=0.1..1.9 d=0.1..1.9", Unit::Ulp, each(unitCurve)},
    };
}

}  // namespace accuracy
