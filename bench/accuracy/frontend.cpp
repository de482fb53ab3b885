// The front end: transforms, filter banks, cepstra, deltas, frames.
#include <map>

#include "forms.h"

namespace accuracy {
namespace {

// ---- transforms -----------------------------------------------------------------------------------------------------

const std::vector<Real>& cosines(std::size_t n) {  // of a whole turn in n steps
    static std::map<std::size_t, std::vector<Real>> all;
    auto& turn = all[n];
    for (std::size_t i = turn.size(); i < n; ++i) {
        turn.push_back(std::cos(2 * kPi * static_cast<Real>(i) / static_cast<Real>(n)));
    }
    return turn;
}

// Real numbers to the bins 0 .. n/2, in turn their real and imaginary parts.
Row spectrumOf(const Row& x) {
    const std::size_t n = x.size();
    const auto& turn = cosines(4 * n);
    Row bins;
    for (std::size_t k = 0; k <= n / 2; ++k) {
        const auto part = [&](std::size_t phase) {
            return sum(n, [&](std::size_t i) { return x[i] * turn[(4 * (k * i % n) + phase) % (4 * n)]; });
        };
        bins.push_back(part(0));
        bins.push_back(k == 0 || 2 * k == n ? Exact() : part(n));
    }
    return bins;
}

Real factorOf(Problem& p, bool forward) {
    const auto flag = static_cast<int>(p.property("spec", "flag"));
    const Real n = p.property("spec", "n");
    return flag == 4 ? 1 / std::sqrt(n) : flag == (forward ? 1 : 2) ? 1 / n : 1;
}
void forward(Problem& p) {
    Rows& d = p.exact("d");
    const bool packed = p.isCalled("Pack");
    for (std::size_t r = 0; r < d.size(); ++r) {
        Row bins = spectrumOf(p.all("s")[r]);
        if (packed) bins.erase(bins.begin() + 1);
        for (std::size_t i = 0; i < d[r].size(); ++i) d[r][i] = bins[i] * factorOf(p, true);
    }
}
void inverse(Problem& p) {
    const Row& s = p.row("s");
    Row& d = p.exact("d")[0];
    const std::size_t n = s.size();
    const auto& turn = cosines(4 * n);
    for (std::size_t i = 0; i < n; ++i) {
        d[i] = s[0];
        if (n > 1) d[i] += s[n - 1] * (i % 2 ? -1 : 1);
        for (std::size_t k = 1; 2 * k < n; ++k) {
            const std::size_t at = 4 * (k * i % n);
            d[i] += (s[2 * k - 1] * turn[at] - s[2 * k] * turn[(at + 3 * n) % (4 * n)]) * 2;
        }
        d[i] *= factorOf(p, false);
    }
}
void autoCorrelation(Problem& p) {
    const Row& s = p.row("s");
    Row& d = p.exact("d")[0];
    for (std::size_t k = 0; k < d.size(); ++k) {
        d[k] = k < s.size() ? sum(s.size() - k, [&](std::size_t i) { return s[i] * s[i + k]; }) : Exact();
    }
}

// ---- filter banks and cepstra ---------------------------------------------------------------------------------------

// The weight of a bin in filter m, from the formulas; the centres, whole numbers, are the bank's own.
struct Bank {
    explicit Bank(Problem& p) : half(p.property("b", "half")), flag(static_cast<int>(p.property("b", "weights"))) {
        count = static_cast<std::size_t>(p.property("b", "n"));
        centres.resize(count + 2);
        kelsFBankGetCenters_32f(p.object<KelFilterBank_32f>("b"), centres.data());
    }
    static Real mel(Real hertz) { return 1127 * std::log1p(hertz / 700); }
    Real corner(std::size_t k) const {
        return mel(60) + static_cast<Real>(k) * (mel(3900) - mel(60)) / static_cast<Real>(count + 1);
    }
    Real weight(std::size_t m, int bin) const {
        const int low = centres[m], top = centres[m + 1], high = centres[m + 2];
        if (bin < low || bin > high) return 0;
        const bool rises = bin <= top;
        if (flag == kelFBankWeightBin) {
            return rises ? static_cast<Real>(bin - low + 1) / (top - low + 1)
                         : static_cast<Real>(high + 1 - bin) / (high - top + 1);
        }
        const Real at = mel(static_cast<Real>(bin) * 4000 / half);
        if (rises) return bin == low ? 0 : (at - corner(m)) / (corner(m + 1) - corner(m));
        return (corner(m + 2) - at) / (corner(m + 2) - corner(m + 1));
    }
    Real half;
    int flag;
    std::size_t count;
    std::vector<int> centres;
};
void evalBank(Problem& p) {
    const Bank bank(p);
    Rows& d = p.exact("d");
    for (std::size_t r = 0; r < d.size(); ++r) {
        Row spectrum = p.all("s")[r];
        if (p.property("b", "samples") != 0) {
            const Row bins = spectrumOf(p.all("s")[r]);
            spectrum.clear();
            for (std::size_t k = 0; k < bins.size(); k += 2) {
                spectrum.push_back(sqrt(square(bins[k]) + square(bins[k + 1])));
            }
        }
        for (std::size_t m = 0; m < d[r].size(); ++m) {
            d[r][m] =
                sum(spectrum.size(), [&](std::size_t i) { return spectrum[i] * bank.weight(m, static_cast<int>(i)); });
        }
    }
}
void noWeights(Problem& p) {  // of a bank that has none set
    for (Exact& d : p.exact("d")[0]) d = 0;
}

Exact toMel(const Exact& x) {
    return 1127 * std::log1p(x.value / 700);
}
Exact toLinear(const Exact& x) {
    return 700 * std::expm1(x.value / 1127);
}

// The states of the sweep have a lifter of 22, and twice its weight for c0, which comes last.
void cepstra(Problem& p) {
    Rows& d = p.exact("d");
    for (std::size_t r = 0; r < d.size(); ++r) {
        const Row& s = p.all("s")[r];
        const auto n = static_cast<Real>(s.size());
        for (std::size_t i = 0; i < d[r].size(); ++i) {
            const bool zeroth = i + 1 == d[r].size() && p.property("st", "c0") != 0;
            const Real k = zeroth ? 0 : static_cast<Real>(i + 1);
            const Real weight = zeroth ? 2 : 1 + 11 * std::sin(kPi * k / 22);
            d[r][i] = sum(s.size(), [&](std::size_t j) {
                // A cosine of single precision is wrong by as much where it is 0.
                return s[j] * Exact(std::cos(kPi * k * (static_cast<Real>(j) + 0.5L) / n), 1) * weight;
            });
        }
    }
}

// ---- deltas, of a stream in one block -------------------------------------------------------------------------------

// sum over k of weights[k] * x[t + k - reach], rows before the first and behind the last repeated.
Exact filtered(const Rows& x, std::size_t column, std::size_t t, const std::vector<Real>& weights) {
    const auto reach = static_cast<std::ptrdiff_t>(weights.size() / 2);
    const auto last = static_cast<std::ptrdiff_t>(x.size()) - 1;
    return sum(weights.size(), [&](std::size_t k) {
        const auto row = std::clamp(static_cast<std::ptrdiff_t>(t + k) - reach, std::ptrdiff_t{0}, last);
        return x[static_cast<std::size_t>(row)][column] * weights[k];
    });
}

// The statics of a source without gaps, each column multiplied in Mul forms.
Rows staticsOf(Problem& p, std::size_t width) {
    const Row& s = p.row("s");
    Rows rows(s.size() / width, Row(width));
    for (std::size_t i = 0; i < s.size(); ++i) {
        rows[i / width][i % width] = p.has("k") ? s[i] * p.row("k")[i % width] : s[i];
    }
    return rows;
}
Exact multiplier(Problem& p, std::size_t order, std::size_t width, std::size_t column) {
    return p.has("k") ? p.row("k")[order * width + column] : Exact(p.number(order == 1 ? "a" : "c"));
}
void deltas(Problem& p) {
    const std::vector<Real> near = {-1, 0, 1}, far = {-2, -1, 0, 1, 2};
    const auto& weights = p.isCalled("W2") || p.isCalled("Win2") ? far : near;
    const auto width = static_cast<std::size_t>(p.whole("w"));
    Rows& d = p.exact("d");
    Rows rows = staticsOf(p, width);
    const std::size_t orders = p.isCalled("DeltaDelta") ? 3 : 2;
    for (std::size_t order = 0; order < orders; ++order) {
        const Rows before = rows;
        for (std::size_t t = 0; t < rows.size(); ++t) {
            for (std::size_t j = 0; j < width; ++j) {
                if (order > 0) rows[t][j] = filtered(before, j, t, weights) * multiplier(p, order, width, j);
                d[t][order * width + j] = rows[t][j];
            }
        }
    }
}
void distributedDeltas(Problem& p) {
    const std::vector<Real> slope = {-1, -0.75L, -0.5L, -0.25L, 0, 0.25L, 0.5L, 0.75L, 1};
    const std::vector<Real> curve = {1, 0.25L, -0.285714L, -0.607143L, -0.714286L, -0.607143L, -0.285714L, 0.25L, 1};
    const Row& s = p.row("s");
    Rows& d = p.exact("d");
    Rows rows(s.size() / 14, Row(13));
    for (std::size_t t = 0; t < rows.size(); ++t) {
        for (std::size_t j = 0; j < 13; ++j) {
            const Exact energy = s[14 * t + 12] * 0.6L / 23 + s[14 * t + 13] * 0.4L;
            rows[t][j] = (j < 12 ? s[14 * t + j] : energy) * (p.has("k") ? p.row("k")[j] : 1);
        }
    }
    for (std::size_t t = 0; t < rows.size(); ++t) {
        for (std::size_t j = 0; j < 13; ++j) {
            d[t][j] = rows[t][j];
            d[t][13 + j] = filtered(rows, j, t, slope);
            d[t][26 + j] = filtered(rows, j, t, curve);
        }
    }
}
// Near the ends the first row, or the last, stands for all on that side.
void wholeDeltas(Problem& p) {
    const Rows& x = p.all("d");
    const auto width = static_cast<std::size_t>(p.whole("w")), at = static_cast<std::size_t>(p.whole("off"));
    const auto reach = static_cast<std::size_t>(p.whole("win"));
    const bool scaled = p.has("k");
    Rows& d = p.exact("d");
    for (std::size_t t = 0; t < d.size(); ++t) {
        for (std::size_t j = 0; j < width; ++j) {
            const Exact factor = scaled ? p.row("k")[j] : 1;
            Exact slope;
            for (std::size_t k = 1; k <= reach; ++k) {
                const Exact ahead = x[t + reach < d.size() ? t + k : d.size() - 1][at + j];
                const Exact behind = x[t < reach ? 0 : t - k][at + j];
                slope += (ahead - behind) * factor * static_cast<Real>(k);
            }
            d[t][at + j] = x[t][at + j] * factor;
            d[t][at + width + j] = slope * (scaled ? p.row("k")[width + j] : Exact(p.number("a")));
        }
    }
}
void copyRows(Problem& p) {
    Rows& d = p.exact("d");
    for (std::size_t i = 0; i < p.row("s").size(); ++i) d[i / d[0].size()][i % d[0].size()] = p.row("s")[i];
}

// ---- frames ---------------------------------------------------------------------------------------------------------

void offset(Problem& p) {
    const Row& s = p.source();
    Row& d = p.exact("d")[0];
    Exact out = p.number("y"), before = p.one("last");
    for (std::size_t i = 0; i < d.size(); ++i) {
        d[i] = out = out * p.number("c") + (s[i] - before);
        before = s[i];
    }
}
void energies(Problem& p) {
    Rows& d = p.exact("d");
    const Rows& x = p.all("d");
    const bool given = p.isCalled("_RT");
    Exact most = given ? Exact(p.number("b")) : x[0][0], scale = p.number(given ? "c" : "b");
    for (std::size_t r = 0; r < x.size() && !given; ++r) most = std::max(most, x[r][0]);
    const Exact floor = most - Exact(0.230259L) * p.number("a");
    for (std::size_t r = 0; r < d.size(); ++r) d[r][0] = Exact(1) - (most - std::max(x[r][0], floor)) * scale;
}
void signChanges(Problem& p) {
    const Row& s = p.row("s");
    Real count = 0;
    for (std::size_t i = 0; i + 1 < s.size(); ++i) count += s[i].value * s[i + 1].value < 0;
    p.exact("r")[0][0] = count;
}
void padded(Problem& p) {
    Row& d = p.exact("d")[0];
    for (std::size_t i = 0; i < d.size(); ++i) d[i] = i < p.row("s").size() ? p.row("s")[i] : Exact();
}

}  // namespace

References frontendReferences() {
    return {
        {"kelsFFTFwd_RToCCS kelsFFTFwd_RToPack", "h=1..3", Unit::Peak, forward, nullptr, 24},
        {"kelsFFTInv_PackToR", "", Unit::Peak, inverse, nullptr, 24},
        {"kelsAutoCorr", "", Unit::Sum, autoCorrelation, nullptr, 40},
        {"kelsEvalFBank", "s=0..9 h=1..3", Unit::Sum, evalBank, nullptr, 40},
        {"kelsFBankGetCoeffs", "", Unit::Ulp, noWeights},
        {"kelsLinearToMel", "s=1..8000", Unit::Ulp, each(toMel)},
        {"kelsMelToLinear", "s=1..2800", Unit::Ulp, each(toLinear)},
        {"kelsDCTLifter", "h=1..9", Unit::Sum, cepstra, nullptr, 60},
        {"kelsDelta_Win1 kelsDelta_Win2 kelsDeltaW1 kelsDeltaW2 kelsDeltaDelta_Win1 kelsDeltaDelta_Win2 "
         "kelsDeltaDeltaW1 kelsDeltaDeltaW2 kelsDeltaMul_Win1 kelsDeltaMul_Win2 kelsDeltaDeltaMul_Win1 "
         "kelsDeltaDeltaMul_Win2",
         "mode=3", Unit::Sum, deltas, nullptr, 40},
        {"kelsDeltaDelta_Aurora kelsDeltaDeltaMul_Aurora", "mode=3", Unit::Sum, distributedDeltas, nullptr, 40},
        {"kelsEvalDelta kelsEvalDeltaMul", "", Unit::Sum, wholeDeltas, nullptr, 40},
        {"kelsCopyColumn kelsCopyCol", "", Unit::Ulp, copyRows},
        {"kelsCompensateOffset", "c=0.9..0.999", Unit::Sum, offset},
        {"kelsNormEnergy kelsNormEnergy_RT", "d=-9..20 a=10..50 b=0.1..9 c=0.1..9", Unit::Sum, energies},
        {"kelsSignChangeRate kelsSignChangeRate_Count0", "", Unit::Ulp, signChanges},
        {"kelsCopyWithPadding", "", Unit::Ulp, padded},
    };
}

}  // namespace accuracy
