// Column statistics, updates of Gaussians, their distances, the likelihoods of clusters.
#include "forms.h"

namespace accuracy {
namespace {

// The mean of a column, its spread about `mean`, with the weights k where there are any.
Exact columnMean(Problem& p, std::size_t j) {
    const Rows& s = p.all("s");
    const bool weighted = p.has("k");
    const Exact all = sum(s.size(), [&](std::size_t i) { return weighted ? s[i][j] * p.row("k")[i] : s[i][j]; });
    return weighted ? all : all / static_cast<Real>(s.size());
}
Exact columnVariance(Problem& p, std::size_t j, const Exact& mean) {
    const Rows& s = p.all("s");
    if (p.has("k")) {
        return sum(s.size(), [&](std::size_t i) { return square(s[i][j]) * p.row("k")[i]; }) - square(mean);
    }
    const auto h = static_cast<Real>(s.size());
    return (sum(s.size(), [&](std::size_t i) { return square(s[i][j]); }) - square(mean) * h) / (h - 1);
}
void means(Problem& p) {
    Row& d = p.exact("d")[0];
    for (std::size_t j = 0; j < d.size(); ++j) d[j] = columnMean(p, j);
}
void variances(Problem& p) {
    Row& d = p.exact("d")[0];
    for (std::size_t j = 0; j < d.size(); ++j) d[j] = columnVariance(p, j, p.row("m")[j]);
}
// The variance is that about the mean as it is stored or as it was before it was rounded: the errors cover both.
void meansAndVariances(Problem& p) {
    Row &m = p.exact("m")[0], &d = p.exact("d")[0];
    for (std::size_t j = 0; j < d.size(); ++j) {
        m[j] = columnMean(p, j);
        d[j] = columnVariance(p, j, m[j]);
    }
}

void sums(Problem& p) {
    const Rows& s = p.all("s");
    const bool adds = p.isCalled("_I");
    Row &d = p.exact("d")[0], &e = p.exact("e")[0];
    for (std::size_t j = 0; j < d.size(); ++j) {
        d[j] = sum(s.size(), [&](std::size_t i) { return s[i][j]; }) + (adds ? p.row("d")[j] : 0);
        e[j] = sum(s.size(), [&](std::size_t i) { return square(s[i][j]); }) + (adds ? p.row("e")[j] : 0);
    }
}

// For every element, what the lambda gives for it.
template <class F>
void fill(Problem& p, const char* array, F f) {
    Row& d = p.exact(array)[0];
    for (std::size_t i = 0; i < d.size(); ++i) d[i] = f(i);
}

void accumulate(Problem& p) {
    const Exact c = p.number("c");
    const auto away = [&](std::size_t i) { return p.row("s")[i] - p.row("m")[i]; };
    fill(p, "d", [&](std::size_t i) { return p.row("d")[i] + c * away(i); });
    fill(p, "e", [&](std::size_t i) { return p.row("e")[i] + away(i) * (c * away(i)); });
}
void newVariance(Problem& p) {
    const char* const before = p.has("v") ? "v" : "d";
    fill(p, "d",
         [&](std::size_t i) { return (p.row(before)[i] - square(p.row("m")[i]) * p.number("a")) * p.number("b"); });
}
// The mean of the higher column is taken from both factors.
void covariance(Problem& p) {
    const Rows &s = p.all("s"), &before = p.all("d");
    Rows& d = p.exact("d");
    for (std::size_t i = 0; i < d.size(); ++i) {
        for (std::size_t j = i; j < d.size(); ++j) {
            const Exact mean = p.row("m")[j];
            const auto one = [&](std::size_t r) { return (s[r][i] - mean) * (s[r][j] - mean); };
            d[i][j] = d[j][i] = before[i][j] + sum(s.size(), one) * p.number("c");
        }
    }
}

void updateMean(Problem& p) {
    fill(p, "m", [&](std::size_t i) { return p.row("m")[i] + p.row("a")[i] / p.number("occ"); });
}
void updateVariance(Problem& p) {
    fill(p, "d", [&](std::size_t i) {
        const Exact v = p.row("b")[i] / p.number("q") - square(p.row("a")[i] / p.number("p"));
        return p.row("f")[i] < v ? v : Exact(p.row("f")[i].value, v.magnitude);
    });
}
void updateWeight(Problem& p) {
    fill(p, "d", [&](std::size_t i) { return std::max(p.row("a")[i] / p.number("occ"), Exact(p.number("floor"))); });
    p.exact("r")[0][0] = sum(p.exact("d")[0]);
}
void split(Problem& p) {
    const auto shift = [&](std::size_t i) { return sqrt(p.row("v")[i]) * p.number("c"); };
    fill(p, "d", [&](std::size_t i) { return p.row("m")[i] - shift(i); });
    fill(p, "m", [&](std::size_t i) { return p.row("m")[i] + shift(i); });
    fill(p, "e", [&](std::size_t i) { return p.row("v")[i]; });
}

// Two Gaussians in one: m, v and o, u with the weights a and b, or a and c where determinants stand behind them.
struct Merged {
    Exact mean, variance;
};
Merged merge(Problem& p, std::size_t i) {
    const Exact a = p.number("a"), b = p.number(p.has("c") ? "c" : "b"), total = a + b;
    const Exact m1 = p.row("m")[i], m2 = p.row("o")[i];
    const Exact mean = (a * m1 + b * m2) / total;
    const Exact second = (a * (square(m1) + p.row("v")[i]) + b * (square(m2) + p.row("u")[i])) / total;
    return {mean, second - square(mean)};
}
Exact mergedDeterminant(Problem& p) {
    const std::size_t n = p.row("m").size();
    return Exact(1.8378770664093L) * static_cast<Real>(n) -
           sum(n, [&](std::size_t i) { return log(merge(p, i).variance); });
}
void gaussianMerge(Problem& p) {
    fill(p, "d", [&](std::size_t i) { return merge(p, i).mean; });
    fill(p, "e", [&](std::size_t i) { return merge(p, i).variance; });
    p.exact("r")[0][0] = mergedDeterminant(p);
}
void gaussianDistance(Problem& p) {
    const Exact a = p.number("a"), b = p.number("c");
    p.exact("r")[0][0] = a * p.number("b") + b * p.number("e") - (a + b) * mergedDeterminant(p);
}

void weightedSum(Problem& p) {
    const Exact a = p.number("a"), b = p.number("b"), r = Exact(1) / (a + b);
    const Exact first = p.isCalled("Half") ? r : a * r;
    fill(p, "d", [&](std::size_t i) { return p.row("s")[i] * first + p.row("t")[i] * (b * r); });
}
void bhattacharyya(Problem& p) {
    const Row &m = p.row("m"), &v = p.row("v"), &o = p.row("o"), &u = p.row("u");
    const bool given = p.has("a");  // the sums of the logarithms
    const auto apart = [&](std::size_t i) { return square(m[i] - o[i]) / (v[i] + u[i]); };
    const auto spread = [&](std::size_t i) {
        const Exact half = log((v[i] + u[i]) * 0.5L);
        return given ? half : half - (log(v[i]) + log(u[i])) * 0.5L;
    };
    const Exact all = sum(m.size(), apart) * 0.25L + sum(m.size(), spread) * 0.5L;
    p.exact("r")[0][0] = given ? all - (Exact(p.number("a")) + p.number("b")) * 0.25L : all;
}

void clusterStatistics(Problem& p) {
    const bool direct = p.isCalled("DirectVar");
    const Exact occ = p.number("occ");
    fill(p, "d", [&](std::size_t i) { return p.row("m")[i] * occ; });
    fill(p, "e", [&](std::size_t i) {
        const Exact v = p.row("v")[i];
        return (square(p.row("m")[i]) + (direct ? v : Exact(1) / v)) * occ;
    });
}
void clusterLikelihood(Problem& p) {
    const Row &m = p.row("m"), &v = p.row("v");
    const Exact occ = p.number("occ"), n = static_cast<Real>(m.size());
    const auto term = [&](std::size_t i) { return log(v[i] * occ - square(m[i])); };
    p.exact("r")[0][0] = (n * (log(occ) * 2 - 2.8378770664093453L) - sum(m.size(), term)) * occ * 0.5L;
}

}  // namespace

References trainingReferences() {
    const char* const gaussians = "v=0.1..9 u=0.1..9 a=0.1..9 b=0.1..9 c=0.1..9 e=0.1..9";
    return {
        {"kelsMeanColumn kelsMeanCol kelsWeightedMeanColumn", "k=0.1..1", Unit::Sum, means},
        {"kelsVarColumn kelsVarCol kelsWeightedVarColumn", "k=0.1..1", Unit::Sum, variances},
        {"kelsMeanVarColumn kelsMeanVarCol kelsWeightedMeanVarColumn", "k=0.1..1", Unit::Sum, meansAndVariances},
        {"kelsSumMeanVar", "", Unit::Sum, sums},
        {"kelsMeanVarAcc", "", Unit::Sum, accumulate},
        {"kelsNewVar", "", Unit::Sum, newVariance},
        {"kelsAccCovarianceMatrix", "", Unit::Sum, covariance},
        {"kelsUpdateMean", "", Unit::Sum, updateMean},
        {"kelsUpdateVar", "b=50..99 f=0.1..1", Unit::Sum, updateVariance},
        {"kelsUpdateWeight", "a=0..1 floor=1e-6..1e-3", Unit::Sum, updateWeight},
        {"kelsGaussianSplit", "v=0.1..9", Unit::Sum, split},
        {"kelsGaussianMerge", gaussians, Unit::Sum, gaussianMerge},
        {"kelsGaussianDist", gaussians, Unit::Sum, gaussianDistance},
        {"kelsWeightedSum kelsWeightedSumHalf", "a=0.1..9 b=0.1..9", Unit::Sum, weightedSum},
        {"kelsBhatDist kelsBhatDistSLog", "m=0.1..9 v=0.1..9 o=0.1..9 u=0.1..9", Unit::Sum, bhattacharyya},
        {"kelsDcsClustLAccumulate kelsDcsClustLAccumulate_DirectVar", "v=0.1..9", Unit::Sum, clusterStatistics},
        {"kelsDcsClustLCompute", "v=200..900 occ=1..9", Unit::Sum, clusterLikelihood},
    };
}

}  // namespace accuracy
