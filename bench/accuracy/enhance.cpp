// Gains, noise estimates, and the echo canceller.
#include "forms.h"

namespace accuracy {
namespace {

// e^-x I0(x) and e^-x I1(x)
struct Bessel {
    explicit Bessel(Real x) : zeroth(0), first(0) {
        Real term = std::exp(-x);
        for (int m = 0; m < 40 + 3 * static_cast<int>(x); ++m) {
            const Real step = x / 2 / static_cast<Real>(m + 1);
            zeroth += term;
            first += term * step;
            term *= step * step;
        }
    }
    Real zeroth, first;
};
Exact ephraimMalah(const Exact& x, const Exact& g) {
    const Real v = g.value * x.value / (1 + x.value);
    const Bessel half(v / 2);
    return std::sqrt(kPi * v) / (2 * g.value) * ((1 + v) * half.zeroth + v * half.first);
}
Exact wiener(const Exact& x) {
    return x.value / (1 + x.value);
}

// Minima-controlled averages over 300 frames of white noise with bursts, in frames of 16 ms with a hop of 8 ms.
std::vector<Output> noiseEstimates(const std::string&) {
    constexpr std::size_t kBins = 129;
    const Real alphaD = 0.7F, alphaS = 0.8F, alphaP = 0.2F;
    int bytes;
    kelsGetSizeMCRA_32f(256, &bytes);
    std::vector<Kel64f> memory(static_cast<std::size_t>(bytes) / sizeof(Kel64f) + 1);
    auto* const state = reinterpret_cast<KelMCRAState_32f*>(memory.data());
    kelsInitMCRA_32f(16000, 256, state);
    sweep::Dice dice(1);
    std::vector<Kel32f> power(kBins), got(kBins);
    std::vector<Real> presence(kBins), smoothed(kBins), least(kBins), fresh(kBins), noise(kBins);
    std::vector<Output> outputs;
    for (int frame = 0, count = 0; frame < 300; ++frame, ++count) {
        const double level = frame % 40 < 8 ? 900 : 1;
        for (Kel32f& p : power) p = static_cast<Kel32f>(level * -std::log(dice.uniform() + 1e-9));
        kelsUpdateNoisePSDMCRA_32f_I(power.data(), state, got.data());
        const bool restarts = count == 125;
        for (std::size_t k = 0; k < kBins; ++k) {
            const Real p = power[k];
            if (frame == 0) {
                smoothed[k] = least[k] = fresh[k] = noise[k] = p;
                continue;
            }
            smoothed[k] = alphaS * smoothed[k] + (1 - alphaS) * p;
            least[k] = std::min(restarts ? fresh[k] : least[k], smoothed[k]);
            fresh[k] = restarts ? smoothed[k] : std::min(fresh[k], smoothed[k]);
            presence[k] = alphaP * presence[k] + (smoothed[k] > 5 * least[k] ? 1 - alphaP : 0);
            const Real a = alphaD + (1 - alphaD) * presence[k];
            noise[k] = a * noise[k] + (1 - a) * p;
        }
        if (restarts) count = 0;
        outputs.push_back({0, 24, {Row(noise.begin(), noise.end())}, {Row(got.begin(), got.end())}});
    }
    return outputs;
}

// ---- echo -----------------------------------------------------------------------------------------------------------

struct Complex {
    Exact re, im;
};
Complex at(const Row& parts, std::size_t k) {
    return {parts[2 * k], parts[2 * k + 1]};
}
Complex operator*(const Complex& a, const Complex& b) {
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
Exact powerOf(const Complex& a) {
    return square(a.re) + square(a.im);
}

void echoFilter(Problem& p) {
    Row& y = p.exact("y")[0];
    const Rows &x = p.all("x"), &h = p.all("h");
    for (std::size_t k = 0; 2 * k < y.size(); ++k) {
        const auto product = [&](std::size_t q) { return at(x[q], k) * at(h[q], k); };
        y[2 * k] = sum(x.size(), [&](std::size_t q) { return product(q).re; });
        y[2 * k + 1] = sum(x.size(), [&](std::size_t q) { return product(q).im; });
    }
}
void stepSizes(Problem& p) {
    const Rows &x = p.all("x"), &h = p.all("h"), &variance = p.all("var");
    const Row& e = p.row("e");
    const Real factor = p.number("factor"), forget = p.number("forget"), smooth = p.number("smooth");
    Row& near = p.exact("near")[0];
    Rows &step = p.exact("step"), &next = p.exact("var");
    const std::size_t n = near.size();
    for (std::size_t k = 0; k < n; ++k) {
        const auto power = [&](std::size_t bin) { return powerOf(at(e, bin)); };
        const std::size_t below = n == 1 ? 0 : k == 0 ? 1 : k - 1, above = n == 1 ? 0 : k + 1 == n ? n - 2 : k + 1;
        const Exact e2 = power(k) * 0.5L + (power(below) + power(above)) * 0.25L;
        near[k] = p.row("near")[k] * smooth + e2 * (1 - smooth);
        const auto echo = [&](std::size_t q) { return variance[q][k] * powerOf(at(x[q], k)); };
        const Exact d = sum(x.size(), echo) * 0.5L + std::max(near[k], e2);
        for (std::size_t q = 0; q < x.size(); ++q) {
            const Exact s = variance[q][k] * factor / d;
            step[q][k] = s;
            next[q][k] = (Exact(1) - s * powerOf(at(x[q], k)) * 0.25L) * variance[q][k] * (1 - forget) +
                         powerOf(at(h[q], k)) * forget;
        }
    }
}
void coefficients(Problem& p) {
    const Rows &x = p.all("x"), &before = p.all("h");
    Rows& h = p.exact("h");
    for (std::size_t q = 0; q < h.size(); ++q) {
        for (std::size_t k = 0; 2 * k < h[q].size(); ++k) {
            const Complex reference = at(x[q], k), change = Complex{reference.re, -reference.im} * at(p.row("e"), k);
            h[q][2 * k] = before[q][2 * k] + change.re * p.all("s")[q][k];
            h[q][2 * k + 1] = before[q][2 * k + 1] + change.im * p.all("s")[q][k];
        }
    }
}
// What the controller gives in each of its states, which a flag tells.
void controller(Problem& p) {
    const auto flag = static_cast<int>(p.result("flag")[0][0].value);
    const Real blocks = 125 * p.property("st", "n") / 8000;  // of 8 ms
    p.exact("f")[0][0] = flag == kelAECDoubleTalk ? 0.5L : 1;
    p.exact("g")[0][0] = flag == kelAECSingleTalk ? -std::expm1(blocks * std::log(0.9998L)) : 0;
}

}  // namespace

References enhanceReferences() {
    return {
        {"kelsFilterUpdateWiener", "s=0..1e4", Unit::Ulp, each(wiener)},
        {"kelsFilterUpdateEMNS", "s=0..1e2 t=0..1e2", Unit::Ulp, pairs(ephraimMalah), nullptr, 40},
        {"kelsUpdateNoisePSDMCRA", "300 frames", Unit::Ulp, {}, {}, 1, noiseEstimates},
        {"kelsFilterAECNLMS", "n=1..90 p=1..16", Unit::Sum, echoFilter, nullptr, 40},
        {"kelsStepSizeUpdateAECNLMS", "near=0..900 var=0..900 n=1..90 p=1..16", Unit::Sum, stepSizes, nullptr, 40},
        {"kelsCoefUpdateAECNLMS", "s=0..1 n=1..90 p=1..16", Unit::Sum, coefficients, nullptr, 40},
        {"kelsControllerUpdateAEC", "", Unit::Ulp, controller, nullptr, 20},
    };
}

}  // namespace accuracy
