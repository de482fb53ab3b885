// Measures the largest error of float functions against references in long double, and prints a row a function.
// usage: accuracy            the rows
//        accuracy --check F  compares them with those of the file F and fails where one has grown
//        accuracy --update F writes them to F where they are larger than what it says, or new
// Errors are in units of the last place of the exact result (ulp), or, of sums, in units of 2^-24 or 2^-53 of the sum
// of the magnitudes of their terms (u).
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <limits>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "kels.h"

namespace {

using Real = long double;
std::mt19937 engine;
std::map<std::string, std::string> rows;
std::map<std::string, double> errors;

struct Range {
    double low, high;
};

// Full random mantissas: of every binade in a range that begins at 0, otherwise evenly spread.
template <class T>
T value(Range range) {
    const double u = std::uniform_real_distribution<double>(0, 1)(engine);
    if (range.low != 0 || range.high == 0) return static_cast<T>(range.low + u * (range.high - range.low));
    return static_cast<T>(std::ldexp(range.high * (0.5 + u / 2), -static_cast<int>(engine() % 30)));
}
template <class T>
std::vector<T> values(Range range, int n) {
    std::vector<T> v(static_cast<std::size_t>(n));
    for (T& x : v) x = value<T>(range);
    return v;
}

template <class T>
Real ulpOf(Real exact) {
    int exponent = std::numeric_limits<T>::min_exponent;
    if (exact != 0) std::frexp(exact, &exponent);
    return std::ldexp(1.0L, std::max(exponent, std::numeric_limits<T>::min_exponent) - std::numeric_limits<T>::digits);
}

void row(const char* name, const char* unit, Range range, Real error) {
    char text[120];
    std::snprintf(text, sizeof text, "| `%s` | %.9g..%.9g | %.3Lg | %s |", name, range.low, range.high, error, unit);
    rows[name] = text;
    errors[name] = static_cast<double>(error);
}

constexpr int kLength = 61, kTimes = 3000;

// call(x, y, dst): element by element; exact(x, y).
template <class S, class D, class Call, class Exact>
void elements(const char* name, Range range, Call call, Exact exact) {
    Real worst = 0;
    for (int t = 0; t < kTimes; ++t) {
        const auto x = values<S>(range, kLength), y = values<S>(range, kLength);
        std::vector<D> d(y.begin(), y.end());
        call(x.data(), y.data(), d.data());
        for (std::size_t i = 0; i < d.size(); ++i) {
            const Real e = exact(static_cast<Real>(x[i]), static_cast<Real>(y[i]));
            worst = std::max(worst, std::fabs(static_cast<Real>(d[i]) - e) / ulpOf<D>(e));
        }
    }
    row(name, "ulp", range, worst);
}

// call(x, m, v, n, &result): one number from vectors; terms(x, m, v) is what is added up to scale * sum + offset.
template <class S, class D, class Call, class Terms>
void sums(const char* name, Range range, Call call, Terms term, Real scale = 1, Real offset = 0) {
    Real worst = 0;
    for (int t = 0; t < kTimes; ++t) {
        const int n = 1 + static_cast<int>(engine() % 80);
        const auto x = values<S>(range, n), m = values<S>(range, n), v = values<S>({0.1, 9}, n);
        D got{};
        call(x.data(), m.data(), v.data(), n, &got);
        Real sum = offset, magnitudes = std::fabs(offset);
        for (std::size_t i = 0; i < x.size(); ++i) {
            const Real one = scale * term(static_cast<Real>(x[i]), static_cast<Real>(m[i]), static_cast<Real>(v[i]));
            sum += one;
            magnitudes += std::fabs(one);
        }
        const Real u = std::ldexp(1.0L, -std::numeric_limits<D>::digits);
        worst = std::max(worst, std::fabs(static_cast<Real>(got) - sum) / (u * magnitudes));
    }
    row(name, "u", range, worst);
}

#define PLAIN(f) [](auto x, auto, auto d) { f(x, d, kLength); }
#define INPLACE(f) [](auto, auto, auto d) { f(d, kLength); }
#define BINARY(f) [](auto x, auto y, auto d) { f(x, y, d, kLength); }

void elementwise() {
    constexpr Range both = {-9, 9}, positive = {0, 1e4};
    const auto first = [](Real x, Real) { return x; };
    elements<float, float>("kelsAdd_32f_I", both, PLAIN(kelsAdd_32f_I), [](Real x, Real y) { return x + y; });
    elements<double, double>("kelsAdd_64f_I", both, PLAIN(kelsAdd_64f_I), [](Real x, Real y) { return x + y; });
    elements<float, float>("kelsSub_32f", both, BINARY(kelsSub_32f), [](Real x, Real y) { return y - x; });
    elements<double, double>("kelsSub_64f", both, BINARY(kelsSub_64f), [](Real x, Real y) { return y - x; });
    elements<float, float>("kelsSub_32f_I", both, PLAIN(kelsSub_32f_I), [](Real x, Real y) { return y - x; });
    elements<double, double>("kelsSub_64f_I", both, PLAIN(kelsSub_64f_I), [](Real x, Real y) { return y - x; });
    elements<float, float>("kelsMul_32f", both, BINARY(kelsMul_32f), [](Real x, Real y) { return x * y; });
    elements<float, float>("kelsDiv_32f", positive, BINARY(kelsDiv_32f), [](Real x, Real y) { return y / x; });
    elements<double, double>("kelsDiv_64f", positive, BINARY(kelsDiv_64f), [](Real x, Real y) { return y / x; });
    elements<float, float>(
        "kelsAddC_32f", both, [](auto x, auto, auto d) { kelsAddC_32f(x, 0.75F, d, kLength); },
        [](Real x, Real) { return x + 0.75L; });
    elements<float, float>(
        "kelsMulC_32f", both, [](auto x, auto, auto d) { kelsMulC_32f(x, 1.1F, d, kLength); },
        [](Real x, Real) { return x * 1.1F; });
    elements<double, double>(
        "kelsMulC_64f", both, [](auto x, auto, auto d) { kelsMulC_64f(x, 1.1, d, kLength); },
        [](Real x, Real) { return x * 1.1; });
    elements<float, float>(
        "kelsDivC_32f", both, [](auto x, auto, auto d) { kelsDivC_32f(x, 3, d, kLength); },
        [](Real x, Real) { return x / 3; });
    elements<double, double>(
        "kelsDivC_64f", both, [](auto x, auto, auto d) { kelsDivC_64f(x, 3, d, kLength); },
        [](Real x, Real) { return x / 3; });
    elements<double, float>("kelsConvert_64f32f", both, PLAIN(kelsConvert_64f32f), first);
    elements<double, double>("kelsAbs_64f", both, PLAIN(kelsAbs_64f), [](Real x, Real) { return std::fabs(x); });
    elements<double, double>("kelsSqrt_64f_I", positive, INPLACE(kelsSqrt_64f_I),
                             [](Real, Real y) { return std::sqrt(y); });
    elements<float, float>(
        "kelsRecSqrt_32f", positive, [](auto, auto, auto d) { kelsRecSqrt_32f(d, kLength, 1e-30F); },
        [](Real, Real y) { return 1 / std::sqrt(y); });
    const auto sinc = [](Real x, Real) { return x == 0 ? 1 : std::sin(x) / x; };
    elements<float, float>("kelsSinC_32f", {0, 1e3}, PLAIN(kelsSinC_32f), sinc);
    elements<double, double>("kelsSinC_64f", {0, 1e3}, PLAIN(kelsSinC_64f), sinc);
    elements<float, double>("kelsSinC_32f64f", {0, 1e3}, PLAIN(kelsSinC_32f64f), sinc);
    const auto gauss = [](Real x, Real) {
        const double square = static_cast<double>(x) * static_cast<double>(x);  // rounded, as the functions say
        return std::exp(-static_cast<Real>(square));
    };
    elements<float, float>("kelsExpNegSqr_32f", {0, 9}, PLAIN(kelsExpNegSqr_32f),
                           [](Real x, Real) { return std::exp(-static_cast<Real>(static_cast<float>(x * x))); });
    elements<double, double>("kelsExpNegSqr_64f", {0, 9}, PLAIN(kelsExpNegSqr_64f), gauss);
    elements<float, double>("kelsExpNegSqr_32f64f", {0, 9}, PLAIN(kelsExpNegSqr_32f64f), gauss);
    const auto mel = [](Real x, Real) { return std::log(x / 700 + 1) * 1127; };
    elements<float, float>(
        "kelsLinearToMel_32f", {1, 8000}, [](auto x, auto, auto d) { kelsLinearToMel_32f(x, d, kLength, 1127, 700); },
        mel);
    elements<float, float>(
        "kelsMelToLinear_32f", {1, 2800}, [](auto x, auto, auto d) { kelsMelToLinear_32f(x, d, kLength, 1127, 700); },
        [](Real x, Real) { return (std::exp(x / 1127) - 1) * 700; });
    const auto logAdd = [](Real x, Real y) { return std::max(x, y) + std::log1p(std::exp(-std::fabs(x - y))); };
    elements<float, float>(
        "kelsLogAdd_32f", {-90, -20}, [](auto x, auto, auto d) { kelsLogAdd_32f(x, d, kLength, kelHintNone); }, logAdd);
    elements<double, double>(
        "kelsLogAdd_64f", {-40, -20}, [](auto x, auto, auto d) { kelsLogAdd_64f(x, d, kLength, kelHintNone); }, logAdd);
    elements<float, float>("kelsFilterUpdateWiener_32f", positive, PLAIN(kelsFilterUpdateWiener_32f),
                           [](Real x, Real) { return x / (1 + x); });
    elements<float, float>("kelsReflectionToAR_32f", {-0.99, 0.99}, PLAIN(kelsReflectionToAR_32f),
                           [](Real x, Real) { return (1 - x) / (1 + x); });
    elements<float, float>("kelsReflectionToTrueAR_32f", {-0.99, 0.99}, PLAIN(kelsReflectionToTrueAR_32f),
                           [](Real x, Real) { return (1 + x) / (1 - x); });
    elements<float, float>(
        "kelsReflectionToLAR_32f", {0.01, 0.9},
        [](auto x, auto, auto d) { kelsReflectionToLAR_32f(x, d, kLength, 0.95F); },
        [](Real x, Real) { return std::log((1 - x) / (1 + x)); });
    elements<float, float>("kelsOutProbPreCalc_32f", positive, BINARY(kelsOutProbPreCalc_32f),
                           [](Real x, Real y) { return x - y / 2; });
    elements<double, double>("kelsOutProbPreCalc_64f", positive, BINARY(kelsOutProbPreCalc_64f),
                             [](Real x, Real y) { return x - y / 2; });
    elements<float, float>("kelsUnitCurve_32f", {0.1, 1.9}, PLAIN(kelsUnitCurve_32f),
                           [](Real x, Real) { return x <= 1 ? x * x : 2 - (2 - x) * (2 - x); });
}

template <class S, class D, class F>
void score(const char* name, F f, Real scale = -0.5L, Real g = -7) {
    sums<S, D>(
        name, {-9, 9}, [=](auto x, auto m, auto v, int n, D* r) { f(x, m, v, n, r, static_cast<D>(g)); },
        [](Real x, Real m, Real v) { return (x - m) * (x - m) * v; }, scale, g);
}
template <class S, class D, class F>
void unitScore(const char* name, F f) {
    sums<S, D>(
        name, {-9, 9}, [=](auto x, auto m, auto, int n, D* r) { f(x, m, n, r, -7); },
        [](Real x, Real m, Real) { return (x - m) * (x - m); }, -0.5L, -7);
}
template <class S, class D, class F>
void distance(const char* name, F f) {
    sums<S, D>(name, {-9, 9}, f, [](Real x, Real m, Real v) { return (x - m) * (x - m) * v; });
}

void reductions() {
    constexpr Range both = {-9, 9};
    const auto product = [](Real x, Real m, Real) { return x * m; };
    sums<float, float>(
        "kelsDotProd_32f", both, [](auto x, auto m, auto, int n, auto r) { kelsDotProd_32f(x, m, n, r); }, product);
    sums<double, double>(
        "kelsDotProd_64f", both, [](auto x, auto m, auto, int n, auto r) { kelsDotProd_64f(x, m, n, r); }, product);
    sums<float, double>(
        "kelsDotProd_32f64f", both, [](auto x, auto m, auto, int n, auto r) { kelsDotProd_32f64f(x, m, n, r); },
        product);
    sums<float, float>(
        "kelsSum_32f", both, [](auto x, auto, auto, int n, auto r) { kelsSum_32f(x, n, r, 0); },
        [](Real x, Real, Real) { return x; });
    score<float, float>("kelsLogGaussSingle_32f", kelsLogGaussSingle_32f);
    score<double, double>("kelsLogGaussSingle_64f", kelsLogGaussSingle_64f);
    score<float, double>("kelsLogGaussSingle_32f64f", kelsLogGaussSingle_32f64f);
    unitScore<float, float>("kelsLogGaussSingle_IdVar_32f", kelsLogGaussSingle_IdVar_32f);
    unitScore<double, double>("kelsLogGaussSingle_IdVar_64f", kelsLogGaussSingle_IdVar_64f);
    unitScore<float, double>("kelsLogGaussSingle_IdVar_32f64f", kelsLogGaussSingle_IdVar_32f64f);
    distance<float, float>("kelsMahDistSingle_32f", kelsMahDistSingle_32f);
    distance<double, double>("kelsMahDistSingle_64f", kelsMahDistSingle_64f);
    distance<float, double>("kelsMahDistSingle_32f64f", kelsMahDistSingle_32f64f);
    distance<float, float>("kelsMahDist_32f_D2",
                           [](auto x, auto m, auto v, int n, auto r) { kelsMahDist_32f_D2(x, n, m, v, n, r, 1); });
    distance<double, double>("kelsMahDist_64f_D2",
                             [](auto x, auto m, auto v, int n, auto r) { kelsMahDist_64f_D2(x, n, m, v, n, r, 1); });
    distance<float, float>("kelsMahDistMultiMix_32f_D2", [](auto x, auto m, auto v, int n, auto r) {
        kelsMahDistMultiMix_32f_D2(m, v, n, x, n, r, 1);
    });
    distance<double, double>("kelsMahDistMultiMix_64f_D2", [](auto x, auto m, auto v, int n, auto r) {
        kelsMahDistMultiMix_64f_D2(m, v, n, x, n, r, 1);
    });
    const auto frames = [](auto f) {
        return [f](auto x, auto m, auto v, int n, auto r, auto g) { f(x, n, m, v, n, r, 1, g); };
    };
    score<float, float>("kelsLogGauss_32f_D2", frames(kelsLogGauss_32f_D2));
    score<double, double>("kelsLogGauss_64f_D2", frames(kelsLogGauss_64f_D2));
    const auto many = [](auto f) {
        return [f](auto x, auto m, auto v, int n, auto r, auto g) { *r = g, f(m, v, n, x, n, r, 1); };
    };
    score<float, float>("kelsLogGaussMultiMix_32f_D2", many(kelsLogGaussMultiMix_32f_D2));
    score<double, double>("kelsLogGaussMultiMix_64f_D2", many(kelsLogGaussMultiMix_64f_D2));
    const auto mixture = [](auto f) {
        return [f](auto x, auto m, auto v, int n, auto r, auto g) { f(x, m, v, 1, n, n, &g, r); };
    };
    score<float, float>("kelsLogGaussMixture_32f_D2", mixture(kelsLogGaussMixture_32f_D2));
    score<double, double>("kelsLogGaussMixture_64f_D2", mixture(kelsLogGaussMixture_64f_D2));
}

// call(x, n, r): one number from n samples with something periodic in them; exact(x, n).
template <class S, class Call, class Exact>
void measure(const char* name, Range range, Call call, Exact exact) {
    Real worst = 0;
    for (int t = 0; t < kTimes; ++t) {
        const int n = 30 + static_cast<int>(engine() % 80);
        auto x = values<S>(range, n);
        for (std::size_t i = 20; i < x.size(); ++i) x[i] = static_cast<S>(x[i] / 4 + x[i - 20] / 2);
        float got;
        call(x.data(), n, &got);
        const Real e = exact(x, static_cast<std::size_t>(n));
        worst = std::max(worst, std::fabs(static_cast<Real>(got) - e) / ulpOf<float>(e));
    }
    row(name, "ulp", range, worst);
}

// Similarity at the lag 20, where it is high, and entropy.
void pitch() {
    constexpr Range samples = {-30000, 30000};
    constexpr std::size_t kLag = 20;
    const auto product = [](const auto& x, std::size_t i, std::size_t lag) {
        return static_cast<Real>(x[i]) * static_cast<Real>(x[i + lag]);
    };
    const auto coefficient = [=](const auto& x, std::size_t n) {
        Real xy = 0, xx = 0, yy = 0;
        for (std::size_t i = 0; i < n - kLag; ++i) {
            xy += product(x, i, kLag);
            xx += product(x, i, 0);
            yy += product(x, i + kLag, 0);
        }
        return xy / std::sqrt(xx * yy);
    };
    measure<float>(
        "kelsCrossCorrCoeff_32f", samples,
        [](auto x, int n, auto r) { kelsCrossCorrCoeff_32f(x, x + 20, n - 20, r, 1); }, coefficient);
    measure<int16_t>(
        "kelsCrossCorrCoeff_16s32f", samples,
        [](auto x, int n, auto r) { kelsCrossCorrCoeff_16s32f(x, x + 20, n - 20, r, 1); }, coefficient);
    const std::vector<float> flat(200, 1);
    measure<float>(
        "kelsPeriodicity_32f", samples,
        [&](auto x, int n, auto r) { kelsPeriodicity_32f(x, n, flat.data(), r, 20, 20); },
        [=](const auto& x, std::size_t n) {
            Real r = 0, energy = 0;
            for (std::size_t i = 0; i < n; ++i) energy += product(x, i, 0);
            for (std::size_t i = 0; i + kLag < n; ++i) r += product(x, i, kLag);
            return r / energy;
        });
    const auto leastSquares = [=](const auto& x, std::size_t n) {
        Real above = 0, whole = 0;
        for (std::size_t phase = 0; phase < kLag; ++phase) {
            Real k = 0, sum = 0, squares = 0;
            for (std::size_t i = phase; i < n; i += kLag, k += 1) {
                sum += static_cast<Real>(x[i]);
                squares += product(x, i, 0);
            }
            if (k < 2) continue;
            above += (sum * sum - squares) / k;
            whole += squares * (k - 1) / k;
        }
        return above / whole;
    };
    measure<float>(
        "kelsPeriodicityLSPE_32f", samples, [](auto x, int n, auto r) { kelsPeriodicityLSPE_32f(x, n, r, 20, 20); },
        leastSquares);
    measure<int16_t>(
        "kelsPeriodicityLSPE_16s32f", samples,
        [](auto x, int n, auto r) { kelsPeriodicityLSPE_16s32f(x, n, r, 20, 20); }, leastSquares);
    measure<float>(
        "kelsEntropy_32f", {0, 1e4}, [](auto x, int n, auto r) { kelsEntropy_32f(x, n, r); },
        [](const auto& x, std::size_t) {
            Real sum = 0, entropy = 0;
            for (const float v : x) sum += v;
            for (const float v : x) entropy -= v == 0 ? 0 : v / sum * std::log(v / sum);
            return entropy;
        });
}

// The error that a line of the table tells of a function, and its name; empty for any other line.
std::string recorded(const std::string& line, double* error) {
    if (line.rfind("| `kels", 0) != 0) return "";
    const std::string name = line.substr(3, line.find('`', 3) - 3);
    const bool ours = line.find("| u |") != std::string::npos || line.find("| ulp |") != std::string::npos;
    if (!ours || errors.count(name) == 0) return "";
    const std::size_t range = line.find('|', 2);
    *error = std::strtod(line.c_str() + line.find('|', range + 1) + 1, nullptr);
    return name;
}

// The order in which sums are taken is the library's choice: their errors vary more.
bool grown(const std::string& name, double before) {
    const bool sum = rows[name].find("| u |") != std::string::npos;
    return errors[name] > before * (sum ? 1.3 : 1.05) + 1e-3;
}

int check(std::istream& in) {
    std::size_t known = 0;
    int bad = 0;
    double before;
    for (std::string line; std::getline(in, line);) {
        const std::string name = recorded(line, &before);
        known += !name.empty();
        if (name.empty() || !grown(name, before)) continue;
        std::printf("%s: %.4g instead of %.4g\n", name.c_str(), errors[name], before);
        ++bad;
    }
    if (known != rows.size()) std::printf("%zu of %zu rows are recorded\n", known, rows.size());
    return bad > 0 || known != rows.size();
}

// Each row of this program's table becomes the larger of what it was and what was measured.
void update(const char* path) {
    std::ifstream in(path);
    std::string text, table;
    double before;
    for (std::string line; std::getline(in, line);) {
        const std::string name = recorded(line, &before);
        if (!name.empty() && before >= errors[name]) rows[name] = line;
        if (name.empty()) text += line + "\n";
    }
    for (const auto& [name, line] : rows) table += line + "\n";
    const std::string head = "| function | arguments | largest error | unit |\n|---|---|---:|---|\n";
    const std::size_t at = text.find(head);
    if (at == std::string::npos) return;
    std::ofstream(path) << text.substr(0, at + head.size()) << table << text.substr(at + head.size());
}

}  // namespace

int main(int argc, char** argv) {
    elementwise();
    reductions();
    pitch();
    if (argc == 3 && std::strcmp(argv[1], "--check") == 0) {
        std::ifstream in(argv[2]);
        return check(in);
    }
    if (argc == 3 && std::strcmp(argv[1], "--update") == 0) return update(argv[2]), 0;
    for (const auto& [name, text] : rows) std::printf("%s\n", text.c_str());
    return 0;
}
