#include "kels/mixture.h"

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>
#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

// ---- calling any of the functions ----------------------------------------------------------------------------------

// Arguments by role, a letter each:  x vectors, m means, v inverse variances (capitals: arrays of row pointers), p
// step, w width, h height, d constants, g constant, r results, s sign row, o offset, f scale factor.
struct Arguments {
    std::map<char, void*> pointers;
    std::map<char, long double> values;
};

template <class A>
A argument(const Arguments& arguments, char role) {
    if constexpr (std::is_pointer_v<A>)
        return static_cast<A>(arguments.pointers.at(role));
    else
        return static_cast<A>(arguments.values.at(role));
}

template <class... A, std::size_t... I>
KelStatus callWith(KelStatus (*f)(A...), const Arguments& a, const std::string& roles, std::index_sequence<I...>) {
    return roles.size() == sizeof...(A) ? f(argument<A>(a, roles[I])...) : KelStatus{12345};
}

// What the name of a function says.
struct Entry {
    std::string name;
    std::function<KelStatus(const Arguments&, const std::string&)> function;
    bool mixture, multi, select, unit, low, add, rows, integer, scaled;

    template <class... A>
    Entry(const char* n, KelStatus (*f)(A...)) : name(n) {
        function = [f](const Arguments& a, const std::string& roles) {
            return callWith(f, a, roles, std::make_index_sequence<sizeof...(A)>());
        };
        mixture = has("Mixture");
        multi = has("MultiMix") || has("Add2");
        select = has("Select");
        unit = has("IdVar");
        low = has("Low");
        add = has("GaussAdd") || mixture;
        rows = has("_D2L");
        integer = has("16s32s");
        scaled = has("Scaled") || integer;
    }
    bool has(const char* part) const { return name.find(part) != std::string::npos; }

    std::string roles() const {
        std::string r = mixture ? "xmvhpwdr" : multi ? "mvpxwdrh" : "xpmvwrhg";
        const auto drop = [&](char c) { r.erase(r.find(c), 1); };
        if (unit) drop('v');
        if (rows) drop('p');
        for (char& c : r) {
            if (rows && (mixture || multi ? c == 'm' || c == 'v' : c == 'x')) c = static_cast<char>(c - 'a' + 'A');
        }
        return r + (select ? "so" : "") + (scaled ? "f" : "");
    }
    KelStatus operator()(const Arguments& a) const { return function(a, roles()); }
};
void PrintTo(const Entry& entry, std::ostream* out) {
    *out << entry.name;
}

#define ENTRY(name) Entry(#name, &kelsLog##name)
// clang-format off
const Entry kEntries[] = {
    ENTRY(GaussMax1_32f_D2), ENTRY(GaussMax_32f_D2), ENTRY(GaussMax_32f_D2L), ENTRY(GaussMax_64f_D2),
    ENTRY(GaussMax_64f_D2L), ENTRY(GaussMax_16s32s_D2Sfs), ENTRY(GaussMax_16s32s_D2LSfs),
    ENTRY(GaussMax_Scaled_16s32f_D2), ENTRY(GaussMax_Scaled_16s32f_D2L), ENTRY(GaussMax_IdVar_32f_D2),
    ENTRY(GaussMax_IdVar_32f_D2L), ENTRY(GaussMax_IdVar_64f_D2), ENTRY(GaussMax_IdVar_64f_D2L),
    ENTRY(GaussMax_IdVar_16s32s_D2Sfs), ENTRY(GaussMax_IdVar_16s32s_D2LSfs), ENTRY(GaussMax_IdVarScaled_16s32f_D2),
    ENTRY(GaussMax_IdVarScaled_16s32f_D2L), ENTRY(GaussMax_IdVar_16s32f_D2), ENTRY(GaussMax_IdVar_16s32f_D2L),
    ENTRY(GaussMax_16s32f_D2), ENTRY(GaussMax_16s32f_D2L), ENTRY(GaussMax_Low_16s32s_D2Sfs),
    ENTRY(GaussMax_Low_16s32s_D2LSfs), ENTRY(GaussMax_LowScaled_16s32f_D2), ENTRY(GaussMax_LowScaled_16s32f_D2L),
    ENTRY(GaussMax_IdVarLow_16s32s_D2Sfs), ENTRY(GaussMax_IdVarLow_16s32s_D2LSfs),
    ENTRY(GaussMax_IdVarLowScaled_16s32f_D2), ENTRY(GaussMax_IdVarLowScaled_16s32f_D2L), ENTRY(GaussAdd1_32f_D2),
    ENTRY(GaussAdd_32f_D2), ENTRY(GaussAdd_32f_D2L), ENTRY(GaussAdd_64f_D2), ENTRY(GaussAdd_64f_D2L),
    ENTRY(GaussAdd_Scaled_16s32f_D2), ENTRY(GaussAdd_Scaled_16s32f_D2L), ENTRY(GaussAdd_IdVar_32f_D2),
    ENTRY(GaussAdd_IdVar_32f_D2L), ENTRY(GaussAdd_IdVar_64f_D2), ENTRY(GaussAdd_IdVar_64f_D2L),
    ENTRY(GaussAdd_IdVarScaled_16s32f_D2), ENTRY(GaussAdd_IdVarScaled_16s32f_D2L), ENTRY(GaussAdd_LowScaled_16s32f_D2),
    ENTRY(GaussAdd_LowScaled_16s32f_D2L), ENTRY(GaussAdd_IdVarLowScaled_16s32f_D2),
    ENTRY(GaussAdd_IdVarLowScaled_16s32f_D2L), ENTRY(GaussAdd_IdVar_16s32f_D2), ENTRY(GaussAdd_IdVar_16s32f_D2L),
    ENTRY(GaussAdd_16s32f_D2), ENTRY(GaussAdd_16s32f_D2L), ENTRY(GaussMaxMultiMix_32f_D2),
    ENTRY(GaussMaxMultiMix_32f_D2L), ENTRY(GaussMaxMultiMix_64f_D2), ENTRY(GaussMaxMultiMix_64f_D2L),
    ENTRY(GaussMaxMultiMix_16s32f_D2), ENTRY(GaussMaxMultiMix_16s32f_D2L), ENTRY(GaussMaxMultiMix_Scaled_16s32f_D2),
    ENTRY(GaussMaxMultiMix_Scaled_16s32f_D2L), ENTRY(GaussMaxMultiMix_16s32s_D2Sfs),
    ENTRY(GaussMaxMultiMix_16s32s_D2LSfs), ENTRY(GaussMaxMultiMix_LowScaled_16s32f_D2),
    ENTRY(GaussMaxMultiMix_LowScaled_16s32f_D2L), ENTRY(GaussMaxMultiMix_Low_16s32s_D2Sfs),
    ENTRY(GaussMaxMultiMix_Low_16s32s_D2LSfs), ENTRY(GaussAdd2_32f_D2), ENTRY(GaussAddMultiMix_32f_D2),
    ENTRY(GaussAddMultiMix_32f_D2L), ENTRY(GaussAddMultiMix_64f_D2), ENTRY(GaussAddMultiMix_64f_D2L),
    ENTRY(GaussAddMultiMix_Scaled_16s32f_D2), ENTRY(GaussAddMultiMix_Scaled_16s32f_D2L),
    ENTRY(GaussAddMultiMix_LowScaled_16s32f_D2), ENTRY(GaussAddMultiMix_LowScaled_16s32f_D2L),
    ENTRY(GaussAddMultiMix_16s32f_D2), ENTRY(GaussAddMultiMix_16s32f_D2L), ENTRY(GaussMixture_32f_D2),
    ENTRY(GaussMixture_32f_D2L), ENTRY(GaussMixture_64f_D2), ENTRY(GaussMixture_64f_D2L),
    ENTRY(GaussMixture_IdVar_32f_D2), ENTRY(GaussMixture_IdVar_32f_D2L), ENTRY(GaussMixture_IdVar_64f_D2),
    ENTRY(GaussMixture_IdVar_64f_D2L), ENTRY(GaussMixture_Scaled_16s32f_D2), ENTRY(GaussMixture_Scaled_16s32f_D2L),
    ENTRY(GaussMixture_LowScaled_16s32f_D2), ENTRY(GaussMixture_LowScaled_16s32f_D2L),
    ENTRY(GaussMixture_IdVarScaled_16s32f_D2), ENTRY(GaussMixture_IdVarScaled_16s32f_D2L),
    ENTRY(GaussMixture_IdVarLowScaled_16s32f_D2), ENTRY(GaussMixture_IdVarLowScaled_16s32f_D2L),
    ENTRY(GaussMixture_Select_32f_D2), ENTRY(GaussMixture_Select_32f_D2L), ENTRY(GaussMixture_SelectIdVar_32f_D2),
    ENTRY(GaussMixture_SelectIdVar_32f_D2L), ENTRY(GaussMixture_SelectScaled_16s32f_D2),
    ENTRY(GaussMixture_SelectScaled_16s32f_D2L), ENTRY(GaussMixture_SelectIdVarScaled_16s32f_D2),
    ENTRY(GaussMixture_SelectIdVarScaled_16s32f_D2L),
};
// clang-format on
#undef ENTRY

// ---- a problem and its reference -----------------------------------------------------------------------------------

template <class T>
constexpr long double kUnit = std::numeric_limits<T>::epsilon() / 2.0L;

struct Bounded {
    long double value, error;
};

// ln(e^a + e^b) with the cut-off and the floors of results kept as R.  What the polynomials may add is that of their
// coefficients; within the error of the difference from the cut-off the smaller operand may also be left out.
template <class R>
Bounded logAdd(const Bounded& a, const Bounded& b) {
    constexpr bool wide = sizeof(R) == 8;
    const long double cutOff = wide ? -23.0258509299405L : -15.3195879547406L;
    const long double m = std::max(a.value, b.value), d = std::min(a.value, b.value) - m;
    long double error = std::max(a.error, b.error);
    if (std::fabs(d - cutOff) <= a.error + b.error + 1e-12L) error += wide ? 1.01e-10L : 2.23e-7L;
    if (d < cutOff) {
        if (wide) return {m < -9e9L ? -1e10L : m, error};
        return {std::max(m, -4500000.0L), error};
    }
    const long double sum = m + std::log1p(std::exp(d));
    return {sum, error + (wide ? 3.2e-15L : 4.7e-9L) + 1.01L * kUnit<R> * std::fabs(sum)};
}

// Random arrays for a call with sources of type S and results of type R; all end where memory ends.
template <class S, class R>
struct Problem {
    const Entry& entry;
    int height, width, step, offset, scaleFactor;
    test::Guarded<S> x, m, v;
    test::Guarded<R> dets, results;
    test::Guarded<Kel8u> sign;
    std::vector<const S*> xRows, mRows, vRows;
    R gConst;
    std::vector<R> before;
    Arguments arguments;

    Problem(const Entry& e, test::Random& random, int h, int w)
        : entry(e),
          height(h),
          width(w),
          step(w + random.between(0, 3)),
          offset(random.between(0, 13)),
          scaleFactor(scaleFactorOf(e, random)),
          x(elements(!e.mixture && !e.multi)),
          m(elements(e.mixture || e.multi)),
          v(elements(e.mixture || e.multi)),
          dets(static_cast<std::size_t>(h)),
          results(e.mixture ? 1 : static_cast<std::size_t>(h)),
          sign(static_cast<std::size_t>((offset + h + 7) / 8)) {
        const double spread = std::is_floating_point_v<S> ? 2 : e.scaled ? 2000 : 2;
        for (auto* block : {&x, &m, &v}) {
            const double low = block == &v ? 0 : -spread, high = block == &v && e.scaled ? 12 * spread : spread;
            for (std::size_t i = 0; i < block->size(); ++i) {
                (*block)[i] =
                    e.integer ? static_cast<S>(random.value<Kel16s>()) : static_cast<S>(random.uniform(low, high));
            }
        }
        const auto constant = [&] {
            return e.integer ? static_cast<R>(random.value<Kel32s>()) : static_cast<R>(random.uniform(-20, 5));
        };
        for (std::size_t i = 0; i < dets.size(); ++i) dets[i] = constant();
        gConst = constant();
        for (std::size_t i = 0; i < results.size(); ++i) {
            results[i] =
                random.between(0, 3) || e.integer ? static_cast<R>(constant() * (e.integer ? 1 : 4)) : R(-4500000);
        }
        before = results.vector();
        const int density = random.between(0, 9);
        for (std::size_t i = 0; i < sign.size(); ++i) {
            for (int b = 0; b < 8; ++b) sign[i] |= static_cast<Kel8u>((random.between(0, 8) < density) << b);
        }
        point(x, xRows);
        point(m, mRows);
        point(v, vRows);
        arguments.pointers = {{'x', x.data()},     {'m', m.data()},       {'v', v.data()},
                              {'X', xRows.data()}, {'M', mRows.data()},   {'V', vRows.data()},
                              {'d', dets.data()},  {'r', results.data()}, {'s', sign.data()}};
        arguments.values = {{'p', step}, {'w', width}, {'h', height}, {'o', offset}, {'f', scaleFactor}, {'g', gConst}};
    }

    static int scaleFactorOf(const Entry& e, test::Random& random) {
        if (!e.scaled) return 0;
        if (!e.integer) return random.between(0, 3) + (e.unit ? 20 : 33);
        constexpr int kEnds[] = {INT_MIN, -33, -1, 64, INT_MAX};
        return random.between(0, 3) ? random.between(-2, 40) : kEnds[random.between(0, 4)];
    }
    std::size_t elements(bool block) const {
        return static_cast<std::size_t>(block ? (height - 1) * step + width : width);
    }
    // Rows in descending order, so that a step cannot stand in for them.
    void point(test::Guarded<S>& block, std::vector<const S*>& rows) {
        for (int i = height; i-- > 0;) {
            const bool one = block.size() == static_cast<std::size_t>(width);
            rows.push_back(block.data() + (one ? 0 : i * step));
        }
    }

    const S* row(const test::Guarded<S>& block, const std::vector<const S*>& rows, int g) const {
        if (block.size() == static_cast<std::size_t>(width)) return block.data();
        return entry.rows ? rows[static_cast<std::size_t>(g)] : block.data() + g * step;
    }
    R constantOf(int g) const { return entry.mixture || entry.multi ? dets[g] : gConst; }

    // The exact sum of the integers, shifted down, or up as far as 32 bits can tell.
    R integerScore(int g) const {
        int64_t sum = 0;
        for (int i = 0; i < width; ++i) {
            const int64_t d = static_cast<int64_t>(row(x, xRows, g)[i]) - static_cast<int64_t>(row(m, mRows, g)[i]);
            const int64_t square = entry.unit && entry.low ? static_cast<int32_t>(static_cast<uint64_t>(d * d)) : d * d;
            sum += square * (entry.unit ? 1 : static_cast<int64_t>(row(v, vRows, g)[i]));
        }
        const int64_t shift = int64_t{scaleFactor} + 1;
        if (entry.low) {
            const uint64_t up = shift > -64 ? static_cast<uint64_t>(sum) << (shift < 0 ? -shift : 0) : 0;
            const auto shifted = shift < 0 ? up : static_cast<uint64_t>(sum >> std::min<int64_t>(shift, 63));
            return static_cast<R>(static_cast<uint32_t>(static_cast<uint64_t>(constantOf(g)) - shifted));
        }
        const auto down = static_cast<int>(std::clamp<int64_t>(shift, -200, 200));
        const long double score = constantOf(g) - std::floor(std::ldexp(static_cast<long double>(sum), -down));
        return static_cast<R>(std::clamp<long double>(score, INT_MIN, INT_MAX));
    }

    Bounded score(int g) const {
        if (entry.integer) return {static_cast<long double>(integerScore(g)), 0};
        long double sum = 0;
        for (int i = 0; i < width; ++i) {
            const long double d = static_cast<long double>(row(x, xRows, g)[i]) - row(m, mRows, g)[i];
            sum += d * d * (entry.unit ? 1 : static_cast<long double>(row(v, vRows, g)[i]));
        }
        const long double half = std::ldexp(sum, -scaleFactor - 1);
        const long double s = static_cast<long double>(constantOf(g)) - half;
        // Single precision: as the contract of the sums says; double: 80 bits, rounded once.
        const long double relative = sizeof(R) == 4 ? (width / 8 + 12) * kUnit<R> : (width + 4) * 0x1p-63L;
        return {s, relative * half + 1.01L * kUnit<R> * (std::fabs(s) + half)};
    }
    bool selected(int g) const { return !entry.select || (sign[(offset + g) / 8] & (0x80 >> ((offset + g) % 8))) != 0; }

    std::vector<Bounded> expected() const {
        std::vector<Bounded> all;
        if (!entry.mixture) {
            for (int g = 0; g < height; ++g) {
                const Bounded s = score(g), old = {static_cast<long double>(before[static_cast<std::size_t>(g)]), 0};
                all.push_back(entry.add
                                  ? logAdd<R>(old, s)
                                  : Bounded{std::max(old.value, s.value), old.value > s.value + s.error ? 0 : s.error});
            }
            return all;
        }
        for (int g = 0; g < height; ++g) {
            if (selected(g)) all = {all.empty() ? score(g) : logAdd<R>(all[0], score(g))};
        }
        if (all.empty()) all = {{-4500000, 0}};
        return all;
    }
};

// Calls `what` with the types of an entry's sources and results.
template <class What>
void withFloats(const Entry& entry, const What& what) {
    if (entry.has("16s32f")) return what.template operator()<Kel16s, Kel32f>();
    if (entry.has("64f")) return what.template operator()<Kel64f, Kel64f>();
    return what.template operator()<Kel32f, Kel32f>();
}
template <class What>
void withTypes(const Entry& entry, const What& what) {
    if (entry.integer) return what.template operator()<Kel16s, Kel32s>();
    withFloats(entry, what);
}

class Mixture : public ::testing::TestWithParam<Entry> {};
INSTANTIATE_TEST_SUITE_P(Functions, Mixture, ::testing::ValuesIn(kEntries),
                         [](const auto& info) { return info.param.name; });

// ---- the tests -----------------------------------------------------------------------------------------------------

TEST_P(Mixture, CombinesTheScoresOfAllItems) {
    const Entry& entry = GetParam();
    test::Random random(11);
    withTypes(entry, [&]<class S, class R>() {
        const int widths[] = {1, 2, 3, 4, 5, 7, 8, 9, 12, 15, 16, 17, 24, 31, 33, 39, 41};
        std::vector<std::pair<int, int>> sizes = {{64, 3}, {65, 5}, {131, 2}};  // beyond a block of scores
        for (int height = 1; height <= 9; ++height) {
            for (const int width : widths) sizes.emplace_back(height, width);
        }
        for (const auto& [height, width] : sizes) {
            Problem<S, R> p(entry, random, height, width);
            const auto expected = p.expected();
            ASSERT_EQ(entry(p.arguments), 0);
            for (std::size_t i = 0; i < expected.size(); ++i) {
                ASSERT_LE(std::fabs(static_cast<long double>(p.results[i]) - expected[i].value), expected[i].error)
                    << height << 'x' << width << " at " << i << ": " << p.results[i] << " from " << p.before[i];
            }
        }
    });
}

// Two values a and b meet: the running result and the score, or the scores of two components, of vectors at the mean.
TEST_P(Mixture, KeepsFloorsAndTies) {
    const Entry& entry = GetParam();
    if (entry.integer) return;
    withFloats(entry, [&]<class S, class R>() {
        constexpr bool wide = sizeof(R) == 8;
        constexpr auto zero = static_cast<R>(wide ? -1e10 : -4500000.0), below = static_cast<R>(3 * zero);
        constexpr auto equal = static_cast<R>(wide ? 0.6931471805599475 : 0.6931471827215062);
        const struct {
            R a, b, sum;
        } cases[] = {{zero, R(-7.25), R(-7.25)},
                     {R(-7.25), zero, R(-7.25)},
                     {below, 2 * zero, zero},
                     {2 * zero, below, zero},
                     {R(0.95L * zero), below, wide ? zero : R(0.95L * zero)},
                     {0, 0, equal},
                     {below, below, below + equal},
                     {zero, zero, zero + equal},
                     {R(0.0), R(-0.0), equal},
                     {R(-0.0), R(0.0), equal}};
        for (const auto& [a, b, sum] : cases) {
            test::Random random(2);
            Problem<S, R> p(entry, random, 2, 5);
            for (auto* block : {&p.x, &p.m}) std::fill_n(block->data(), block->size(), S(1));
            std::fill_n(p.sign.data(), p.sign.size(), Kel8u{0xff});
            std::fill_n(p.results.data(), p.results.size(), a);
            p.dets[0] = entry.mixture ? a : b;
            p.dets[1] = b;
            p.arguments.values['g'] = b;
            ASSERT_EQ(entry(p.arguments), 0);
            // Of equal values, zeros of both signs among them, the maximum is the score.
            EXPECT_TRUE(test::sameBits(p.results[0], entry.add ? sum : a <= b ? b : a)) << a << ' ' << b;
        }
    });
}

// Faults in the order in which they must be found; of two, the first wins and nothing is written.
TEST_P(Mixture, ReportsTheFirstFault) {
    const Entry& entry = GetParam();
    withTypes(entry, [&]<class S, class R>() {
        std::vector<std::pair<KelStatus, char>> faults;
        for (const char role : entry.roles()) {
            if (std::strchr("xmvXMVdrs", role)) faults.emplace_back(kelStatusNullPtr, role);
        }
        const std::pair<KelStatus, char> step = {kelStatusStep, 'p'};
        if (!entry.rows) faults.insert(entry.mixture ? faults.end() : faults.begin(), step);
        faults.emplace_back(kelStatusSize, 'w');
        faults.emplace_back(kelStatusSize, 'h');
        if (entry.select) faults.emplace_back(kelStatusSize, 'o');
        for (std::size_t i = 0; i < faults.size(); ++i) {
            for (std::size_t j = i; j < faults.size(); ++j) {
                test::Random random(4);
                Problem<S, R> p(entry, random, 5, 6);
                for (const char role : {faults[i].second, faults[j].second}) {
                    if (role == 'p')
                        p.arguments.values['p'] = -1;
                    else if (p.arguments.values.count(role))
                        p.arguments.values[role] = role == 'o' ? -1 : 0;
                    else
                        p.arguments.pointers[role] = nullptr;
                }
                EXPECT_EQ(entry(p.arguments), faults[i].first) << faults[i].second << faults[j].second;
                EXPECT_EQ(p.results.vector(), p.before);
            }
        }
        if (entry.rows) return;
        test::Random random(4);
        Problem<S, R> p(entry, random, 1, 6);  // a single row is as long as it has to be
        p.arguments.values['p'] = 5;
        EXPECT_EQ(entry(p.arguments), kelStatusStep);
        p.arguments.values['p'] = 6;
        EXPECT_EQ(entry(p.arguments), kelStatusOk);
    });
}

}  // namespace
