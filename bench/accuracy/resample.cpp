// Resampling: sums over the filter that a state holds, and that filter.
#include <numeric>

#include "forms.h"
#include "special.h"

namespace accuracy {
namespace {

// A first time behind the reach of the filter, anywhere between two samples.
void giveTime(Problem& p) {
    const bool stretched = p.has("factor") && p.number("factor") < 1;
    const Real reach = p.property("st", "reach") / (stretched ? p.number("factor") : 1);
    p.set("time", [&](std::size_t, std::size_t) { return static_cast<double>(reach) + draw({0.001, 9}, p.dice()); });
}
// Where the output times end up, in input samples.
void endTime(Problem& p, Real first, Real interval) {
    p.exact("time")[0][0] = Exact(first) + Exact(interval) * p.result("count")[0][0];
}
std::size_t outputs(Problem& p) {
    return p.isSingle("d") ? static_cast<std::size_t>(p.result("count")[0][0].value) : 0;
}

// The table of the state, interpolated; times are computed in double precision.
void general(Problem& p) {
    const Real factor = p.number("factor");
    endTime(p, p.one("time").value, 1 / factor);
    if (outputs(p) == 0) return;
    const auto& state = *p.object<KelResamplePolyphase_32f>("st");
    const Row& s = p.row("s");
    Row& d = p.exact("d")[0];
    const Real scale = state.nStep * std::min<Real>(1, factor), gain = factor < 1 ? factor * state.gain : 1;
    for (std::size_t i = 0; i < outputs(p); ++i) {
        const Real t = p.one("time").value + static_cast<Real>(i) / factor;
        d[i] = sum(s.size(),
                   [&](std::size_t j) -> Exact {
                       const Real place = std::fabs(t - static_cast<Real>(j)) * scale;
                       const auto k = static_cast<int>(place);
                       if (place > state.tableLen - 1) return {};
                       const Real next = state.pTable[std::min(k + 1, state.tableLen - 1)];
                       return s[j] * (state.pTable[k] + (next - state.pTable[k]) * (place - k));
                   }) *
               (p.number("norm") * gain);
    }
}

struct Fixed {
    explicit Fixed(Problem& p)
        : in(part(p, "in")), out(part(p, "out")), len(part(p, "len")), phases(out / std::gcd(in, out)) {}
    static int part(Problem& p, const char* name) { return static_cast<int>(p.property("st", name)); }
    int in, out, len, phases;
};
std::vector<Kel32f> filtersOf(Problem& p, const Fixed& fixed) {
    std::vector<Kel32f> taps(static_cast<std::size_t>(fixed.phases * (fixed.len + 1)));
    kelsResamplePolyphaseGetFixedFilter_32f(p.object<KelResamplePolyphaseFixed_32f>("st"), taps.data(), fixed.len + 1,
                                            fixed.phases);
    return taps;
}
void fixed(Problem& p) {
    const Fixed fixed(p);
    // Times count as those of the nearest phase.
    const Real start = p.result("count")[0][0].value == 0
                           ? p.one("time").value
                           : std::floor(p.one("time").value * fixed.phases + 0.5L) / fixed.phases;
    endTime(p, start, static_cast<Real>(fixed.in) / fixed.out);
    if (outputs(p) == 0) return;
    const auto taps = filtersOf(p, fixed);
    const Row& s = p.row("s");
    Row& d = p.exact("d")[0];
    for (std::size_t i = 0; i < outputs(p); ++i) {
        const Real wanted = start + static_cast<Real>(i) * fixed.in / fixed.out;
        const auto place = static_cast<int64_t>(std::floor(wanted * fixed.phases + 0.5L));
        const auto phase = static_cast<std::size_t>((place % fixed.phases + fixed.phases) % fixed.phases);
        const Real t = static_cast<Real>(place) / fixed.phases;
        const auto first = static_cast<std::ptrdiff_t>(std::ceil(t - fixed.len / 2.0L));
        d[i] =
            sum(static_cast<std::size_t>(fixed.len) + 1,
                [&](std::size_t k) -> Exact {
                    const std::ptrdiff_t j = first + static_cast<std::ptrdiff_t>(k);
                    if (j < 0 || j >= static_cast<std::ptrdiff_t>(s.size())) return {};
                    return s[static_cast<std::size_t>(j)] * taps[phase * static_cast<std::size_t>(fixed.len + 1) + k];
                }) *
            p.number("norm");
    }
}

// Kaiser's window over a sinc, of the roll-off 0.9 and alpha 9 of the states of the sweep; on average of gain 1.
void filters(Problem& p) {
    const Fixed fixed(p);
    const Real cutOff = static_cast<Real>(0.9F) * std::min<Real>(1, static_cast<Real>(fixed.out) / fixed.in);
    const Real reach = fixed.len / 2.0L;
    std::vector<Row> all(static_cast<std::size_t>(fixed.phases), Row(static_cast<std::size_t>(fixed.len) + 1));
    Exact gain;
    for (std::size_t phase = 0; phase < all.size(); ++phase) {
        const Real t = static_cast<Real>(phase) / fixed.phases, first = std::ceil(t - reach);
        for (std::size_t k = 0; k < all[phase].size(); ++k) {
            const Real away = std::fabs(first + static_cast<Real>(k) - t), x = kPi * away;
            if (away > reach) continue;
            const Real sinc = away == 0 ? cutOff : std::sin(cutOff * x) / x;
            const Real inside = std::sqrt(std::max<Real>(0, 1 - square(away / reach).value));
            all[phase][k] = sinc * besselI0(9 * inside) / besselI0(9);
            gain += all[phase][k];
        }
    }
    Row& d = p.exact("d")[0];
    const auto n = static_cast<std::size_t>(p.whole("n"));
    for (std::size_t phase = 0; phase < std::min(all.size(), static_cast<std::size_t>(p.whole("h"))); ++phase) {
        for (std::size_t k = 0; k < std::min(n, all[phase].size()); ++k) {
            d[phase * n + k] = all[phase][k] / (gain.value / static_cast<Real>(fixed.phases));
        }
    }
}

}  // namespace

References resampleReferences() {
    return {
        {"kelsResamplePolyphase", "factor=0.1..4", Unit::Sum, general, giveTime, 40},
        {"kelsResamplePolyphaseFixed", "", Unit::Sum, fixed, giveTime, 40},
        {"kelsResamplePolyphaseGetFixedFilter", "", Unit::Peak, filters, nullptr, 40},
    };
}

}  // namespace accuracy
