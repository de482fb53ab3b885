// All scorers of diagonal Gaussians: single vectors, frames, Gaussians, running maxima and sums, mixtures.
#include <kels.h>

#include <climits>
#include <cstring>
#include <functional>
#include <map>
#include <string>

#include "scoring/log/reference.h"
#include "support/allocation.h"
#include "support/block.h"
#include "support/elements.h"
#include "support/rounding.h"

namespace {

using test::Bounded;
using test::Guarded;
using test::kUnit;
using test::logAdd;
using test::Random;
using Quad = __float128;

// ---- calling any of the functions ----------------------------------------------------------------------------------

// Arguments by role, a letter each:  x vectors, m means, v inverse variances (capitals: arrays of row pointers), p
// step, w width, h height, d constants, g constant, r results, s sign row, o offset, f scale factor.
struct Arguments {
    std::map<char, void*> pointers;
    std::map<char, long double> values;
};

// What the name of a function says.
struct Entry {
    std::string name;
    std::function<KelStatus(const Arguments&, const std::string&)> function;
    bool single = has("Single"), dist = has("MahDist"), mixture = has("Mixture"), select = has("Select");
    bool multi = has("MultiMix") || has("Gauss2") || has("Dist2") || has("Add2");
    bool max = has("GaussMax"), add = has("GaussAdd") || mixture, rows = has("_D2L");
    bool unit = has("IdVar"), direct = has("DirectVar"), low = has("Low");
    bool integer = has("16s32s"), scaled = has("Scaled") || integer;

    template <class... A>
    Entry(const char* n, KelStatus (*f)(A...)) : name(n) {
        function = [f](const Arguments& a, const std::string& roles) {
            return [&]<std::size_t... I>(std::index_sequence<I...>) {
                return roles.size() == sizeof...(A) ? f(argument<A>(a, roles[I])...) : KelStatus{12345};
            }
            (std::index_sequence_for<A...>());
        };
    }
    template <class A>
    static A argument(const Arguments& arguments, char role) {
        if constexpr (std::is_pointer_v<A>) {
            return static_cast<A>(arguments.pointers.at(role));
        } else {
            return static_cast<A>(arguments.values.at(role));
        }
    }
    bool has(const char* part) const { return name.find(part) != std::string::npos; }
    bool blocks() const { return mixture || multi; }  // of means, not of vectors

    std::string roles() const {
        std::string r = single ? "xmvwrg" : mixture ? "xmvhpwdr" : multi ? "mvpxwdrh" : "xpmvwrhg";
        const std::string missing =
            std::string(dist ? "gd" : "") + (unit ? "v" : "") + (rows ? "p" : "") + (multi && !max && !add ? "d" : "");
        std::erase_if(r, [&](char c) { return missing.find(c) != std::string::npos; });
        for (char& c : r) {
            if (rows && (blocks() ? c == 'm' || c == 'v' : c == 'x')) c = static_cast<char>(c - 'a' + 'A');
        }
        return r + (select ? "so" : "") + (scaled ? "f" : "");
    }
    KelStatus operator()(const Arguments& a) const { return function(a, roles()); }
};

#define E(name) Entry(#name, &kels##name)
#define SINGLE(name) E(name##_64f), E(name##_32f), E(name##_32f64f), E(name##_16s32f), E(name##_16s32s_Sfs)
#define BOTH(name) E(name##_D2), E(name##_D2L)
#define FLOATS(name) BOTH(name##_32f), BOTH(name##_64f)
#define INTEGER(name) E(name##_16s32s_D2Sfs), E(name##_16s32s_D2LSfs)
#define SHORT(name) BOTH(name##_16s32f)
#define SCALED(name) BOTH(name##Scaled_16s32f)
// clang-format off
const Entry kEntries[] = {
    SINGLE(LogGaussSingle), SINGLE(LogGaussSingle_IdVar), SINGLE(LogGaussSingle_DirectVar), SINGLE(MahDistSingle),
    E(LogGaussSingle_Scaled_16s32f), E(LogGaussSingle_IdVarScaled_16s32f), E(LogGaussSingle_DirectVarScaled_16s32f),
    E(LogGaussSingle_LowScaled_16s32f), E(LogGaussSingle_IdVarLowScaled_16s32f), E(LogGaussSingle_Low_16s32f),
    E(LogGaussSingle_IdVarLow_16s32f), E(LogGaussSingle_Low_16s32s_Sfs), E(LogGaussSingle_IdVarLow_16s32s_Sfs),
    FLOATS(LogGauss), FLOATS(LogGauss1), FLOATS(LogGauss_IdVar), FLOATS(MahDist), FLOATS(MahDist1),
    FLOATS(LogGaussMultiMix), FLOATS(LogGauss2), FLOATS(MahDistMultiMix), FLOATS(MahDist2), FLOATS(LogGaussMax),
    FLOATS(LogGaussMax_IdVar), FLOATS(LogGaussAdd), FLOATS(LogGaussAdd_IdVar), FLOATS(LogGaussMaxMultiMix),
    FLOATS(LogGaussAddMultiMix), FLOATS(LogGaussMixture), FLOATS(LogGaussMixture_IdVar), E(LogGaussMax1_32f_D2),
    E(LogGaussAdd1_32f_D2), E(LogGaussAdd2_32f_D2), BOTH(LogGaussMixture_Select_32f),
    BOTH(LogGaussMixture_SelectIdVar_32f), INTEGER(LogGauss), INTEGER(LogGauss_Low), INTEGER(LogGauss_IdVar),
    INTEGER(LogGauss_IdVarLow), INTEGER(LogGaussMultiMix), INTEGER(LogGaussMultiMix_Low), INTEGER(LogGaussMax),
    INTEGER(LogGaussMax_Low), INTEGER(LogGaussMax_IdVar), INTEGER(LogGaussMax_IdVarLow), INTEGER(LogGaussMaxMultiMix),
    INTEGER(LogGaussMaxMultiMix_Low), SHORT(LogGauss), SHORT(LogGauss_Low), SHORT(LogGauss_IdVar),
    SHORT(LogGauss_IdVarLow), SHORT(LogGaussMultiMix), SHORT(LogGaussMax), SHORT(LogGaussMax_IdVar), SHORT(LogGaussAdd),
    SHORT(LogGaussAdd_IdVar), SHORT(LogGaussMaxMultiMix), SHORT(LogGaussAddMultiMix), SCALED(LogGauss_),
    SCALED(LogGauss_Low), SCALED(LogGauss_IdVar), SCALED(LogGauss_IdVarLow), SCALED(LogGaussMultiMix_),
    SCALED(LogGaussMax_), SCALED(LogGaussMax_Low), SCALED(LogGaussMax_IdVar), SCALED(LogGaussMax_IdVarLow),
    SCALED(LogGaussAdd_), SCALED(LogGaussAdd_Low), SCALED(LogGaussAdd_IdVar), SCALED(LogGaussAdd_IdVarLow),
    SCALED(LogGaussMaxMultiMix_), SCALED(LogGaussMaxMultiMix_Low), SCALED(LogGaussAddMultiMix_),
    SCALED(LogGaussAddMultiMix_Low), SCALED(LogGaussMixture_), SCALED(LogGaussMixture_Low),
    SCALED(LogGaussMixture_IdVar), SCALED(LogGaussMixture_IdVarLow), SCALED(LogGaussMixture_Select),
    SCALED(LogGaussMixture_SelectIdVar),
};
// clang-format on

// Calls body with each entry and the types of its sources and results.
template <class Body>
void forEachEntry(const Body& body) {
    for (const Entry& entry : kEntries) {
        SCOPED_TRACE(entry.name);
        if (entry.integer) {
            body.template operator()<Kel16s, Kel32s>(entry);
        } else if (entry.has("16s32f")) {
            body.template operator()<Kel16s, Kel32f>(entry);
        } else if (entry.has("32f64f")) {
            body.template operator()<Kel32f, Kel64f>(entry);
        } else if (entry.has("64f")) {
            body.template operator()<Kel64f, Kel64f>(entry);
        } else {
            body.template operator()<Kel32f, Kel32f>(entry);
        }
        ASSERT_FALSE(testing::Test::HasFailure());
    }
}

// ---- a problem and its reference -----------------------------------------------------------------------------------

// Random arrays for a call with sources of type S and results of type R.
template <class S, class R>
struct Problem {
    const Entry& entry;
    int height, width, step, offset, scaleFactor;
    test::Block<S> x, m, v;
    Guarded<R> dets, results;
    Guarded<Kel8u> sign;
    R gConst;
    std::vector<R> before;
    Arguments arguments;

    Problem(const Entry& e, Random& random, int h, int w)
        : entry(e),
          height(e.single ? 1 : h),
          width(w),
          step(w + random.between(0, 3)),
          offset(random.between(0, 13)),
          scaleFactor(scaleFactorOf(e, random)),
          x(e.blocks() ? 1 : height, w, step, [&] { return element(e, random, -1); }),
          m(e.blocks() ? height : 1, w, step, [&] { return element(e, random, -1); }),
          v(e.blocks() ? height : 1, w, step, [&] { return element(e, random, 0); }),
          dets(height),
          results(e.mixture ? 1 : height),
          sign((offset + height + 7) / 8) {
        const auto constant = [&] { return e.add ? static_cast<R>(random.uniform(-20, 5)) : random.value<R>(6); };
        for (int i = 0; i < height; ++i) dets[i] = constant();
        gConst = constant();
        before.resize(results.size());
        for (auto& result : before) result = random.between(0, 3) ? constant() : R(-4500000);
        const int density = random.between(0, 9);
        for (int i = 0; i < offset + height; ++i) sign[i / 8] |= (random.between(0, 8) < density) << i % 8;
        arguments.pointers = {{'x', x.d2.data()},       {'m', m.d2.data()},       {'v', v.d2.data()},
                              {'X', x.pointers.data()}, {'M', m.pointers.data()}, {'V', v.pointers.data()},
                              {'d', dets.data()},       {'r', results.data()},    {'s', sign.data()}};
        arguments.values = {{'p', step}, {'w', width}, {'h', height}, {'o', offset}, {'f', scaleFactor}, {'g', gConst}};
    }
    KelStatus run() {
        std::copy(before.begin(), before.end(), results.data());
        return entry(arguments);
    }

    // Sums need scores near each other; all else takes any values.
    static S element(const Entry& e, Random& random, int least) {
        const double spread = std::is_floating_point_v<S> ? 2 : e.scaled ? 2000 : 2;
        if (e.add) return static_cast<S>(random.uniform(least * spread, least == 0 && e.scaled ? 12 * spread : spread));
        const S value = random.value<S>(3);
        return e.direct && value == 0 ? S(1) : value;
    }
    static int scaleFactorOf(const Entry& e, Random& random) {
        if (!e.scaled) return 0;
        if (e.add) return random.between(0, 3) + (e.unit ? 20 : 33);
        constexpr int kEnds[] = {INT_MIN, -33, -1, 64, INT_MAX};
        if (e.integer && random.between(0, 3) == 0) return kEnds[random.between(0, 4)];
        return random.between(-2, 40);
    }
    R constantOf(int g) const { return !entry.blocks() ? gConst : entry.max || entry.add ? dets[g] : before[g]; }

    Bounded score(int g) const {
        Quad sum = 0, magnitude = 0;
        for (int i = 0; i < width; ++i) {
            const auto in = [=](const auto& block) { return Quad(block.at(block.height == 1 ? 0 : g, i)); };
            const Quad d = in(x)-in(m), weight = in(v);
            Quad term = d * d;
            if (entry.unit && entry.low && entry.integer && term >= 0x1p31) term -= 0x1p32;
            if (!entry.unit) term = entry.direct ? term / weight : term * weight;
            sum += term;
            magnitude += term < 0 ? -term : term;
        }
        const int64_t shift = int64_t{scaleFactor} + (entry.dist ? 0 : 1);
        if (entry.integer) return {integerScore(static_cast<long double>(sum), shift, constantOf(g)), 0};
        const Quad factor = entry.dist ? 1 : std::ldexp(0.5L, -scaleFactor);
        const auto s = static_cast<long double>(entry.dist ? sum : constantOf(g) - sum * factor);
        // The roundings of a term and of the additions that it passes through; then that of the result.
        const long double relative = (width / 4 + 10) * (sizeof(R) == 8 ? 0x1p-64L : 0x1p-24L);
        return {s, relative * static_cast<long double>(magnitude * factor) + kUnit<R> * (1 + 0x1p-9L) * std::fabs(s)};
    }
    // The exact sum shifted, toward minus infinity.
    long double integerScore(long double sum, int64_t shift, R constant) const {
        const long double shifted =
            std::floor(test::scaled(sum, static_cast<int>(std::clamp<int64_t>(shift, -999, 999))));
        if (entry.dist) return test::saturated<R>(shifted);
        if (!entry.low) return test::saturated<R>(constant - shifted);
        const auto lowBits = static_cast<uint32_t>(static_cast<int64_t>(std::fmod(shifted, 0x1p32L)));
        return static_cast<R>(static_cast<uint32_t>(constant) - lowBits);
    }
    bool selected(int g) const { return !entry.select || (sign[(offset + g) / 8] & (0x80 >> ((offset + g) % 8))) != 0; }

    std::vector<Bounded> expected() const {
        std::vector<Bounded> all;
        for (int g = 0; g < height; ++g) {
            const Bounded s = score(g);
            const auto old = static_cast<long double>(entry.mixture ? 0 : before[g]);
            if (entry.mixture) {
                if (selected(g)) all = {all.empty() ? s : logAdd<R>(all[0], s)};
            } else if (entry.max) {
                all.push_back({std::max(old, s.value), old > s.value + s.error ? 0 : s.error});
            } else {
                all.push_back(entry.add ? logAdd<R>({old, 0}, s) : s);
            }
        }
        if (all.empty()) all = {{-4500000, 0}};
        return all;
    }
};

// ---- the tests -----------------------------------------------------------------------------------------------------

TEST(Scores, FollowTheirFormulasInEveryShape) {
    std::vector<std::pair<int, int>> sizes = {{64, 3}, {65, 5}, {131, 2}, {70, 39}, {5, 65}, {1, 100}, {2, 1000}};
    for (int width = 1; width <= 41; ++width) sizes.insert(sizes.end(), {{1, width}, {1 + width * 5 % 9, width}});
    for (int height = 2; height <= 9; ++height) sizes.insert(sizes.end(), {{height, 4}, {height, 17}, {height, 39}});
    forEachEntry([&]<class S, class R>(const Entry& entry) {
        Random random(11);
        for (const auto& [height, width] : sizes) {
            Problem<S, R> p(entry, random, height, width);
            const auto expected = p.expected();
            const auto call = [&] { EXPECT_EQ(p.run(), 0); };
            const auto check = [&] {
                for (std::size_t i = 0; i < expected.size(); ++i) {
                    ASSERT_TRUE(test::near(p.results[i], expected[i].value, expected[i].error))
                        << p.height << 'x' << width << " at " << i << ", scale " << p.scaleFactor;
                }
            };
            test::inRoundingModes(entry.integer, call, check);
        }
    });
}

// Two values a and b meet: the running result and the score, or the scores of two components, of vectors at the mean.
TEST(Scores, FloorsTiesAndNaNOfVectorsAtTheMean) {
    forEachEntry([&]<class S, class R>(const Entry& entry) {
        if (entry.integer) return;
        constexpr bool wide = sizeof(R) == 8;
        constexpr auto zero = static_cast<R>(wide ? -1e10 : -4500000.0), below = static_cast<R>(3 * zero);
        constexpr auto equal = static_cast<R>(wide ? 0.6931471805599475 : 0.6931471827215062);
        constexpr R nan = std::numeric_limits<R>::quiet_NaN();
        const struct {
            R a, b, sum;
        } cases[] = {{zero, R(-7.25), R(-7.25)},
                     {R(-7.25), zero, R(-7.25)},
                     {below, 2 * zero, zero},
                     {R(0.95L * zero), below, wide ? zero : R(0.95L * zero)},
                     {0, 0, equal},
                     {below, below, below + equal},
                     {zero, zero, zero + equal},
                     {R(0.0), R(-0.0), equal},
                     {R(-0.0), R(0.0), equal},
                     {nan, R(-7.25), nan},
                     {R(-7.25), nan, nan}};
        for (const auto& [a, b, sum] : cases) {
            Random random(2);
            Problem<S, R> p(entry, random, 2, 5);
            for (auto* block : {&p.x, &p.m, &p.v}) block->fill(S(1));
            std::fill_n(p.sign.data(), p.sign.size(), Kel8u{0xff});
            std::fill(p.before.begin(), p.before.end(), a);
            std::fill_n(p.dets.data(), p.dets.size(), b);
            if (entry.mixture) p.dets[0] = a;
            p.arguments.values['g'] = b;
            p.arguments.values['f'] = a < b ? INT_MIN : INT_MAX;
            ASSERT_EQ(p.run(), 0);
            // Of equal values, zeros of both signs among them, the maximum is the score.
            const R score = entry.dist ? 0 : entry.multi ? a : b, most = a <= b ? b : a;
            EXPECT_TRUE(test::agrees(p.results[0], entry.add ? sum : entry.max ? most : score)) << a << ' ' << b;
        }
    });
}

// Faults in the order in which they must be found; of two, the first wins and nothing is written.
TEST(Scores, TheFirstFaultIsReported) {
    forEachEntry([]<class S, class R>(const Entry& entry) {
        std::vector<std::pair<KelStatus, char>> faults;
        const std::string roles = entry.roles();
        for (const char role : roles) {
            if (std::strchr("xmvXMVdrs", role)) faults.emplace_back(kelStatusNullPtr, role);
        }
        if (roles.find('p') != roles.npos) {
            faults.insert(entry.mixture ? faults.end() : faults.begin(), {kelStatusStep, 'p'});
        }
        for (const char role : roles) {
            if (std::strchr("who", role)) faults.emplace_back(kelStatusSize, role);
        }
        for (std::size_t i = 0; i < faults.size(); ++i) {
            for (std::size_t j = i; j < faults.size(); ++j) {
                Random random(4);
                Problem<S, R> p(entry, random, 1, 6);
                for (const char role : {faults[j].second, faults[i].second}) {
                    if (p.arguments.values.count(role)) {
                        const int width = static_cast<int>(p.arguments.values['w']);
                        p.arguments.values[role] = role == 'p' ? width - 1 : role == 'o' ? -1 : 0;
                    } else {
                        p.arguments.pointers[role] = nullptr;
                    }
                }
                EXPECT_EQ(p.run(), faults[i].first) << faults[i].second << faults[j].second;
                EXPECT_EQ(p.results.vector(), p.before);
            }
        }
    });
}

// Differences, weights and their products beyond what a double holds, in sums and scores that it does hold.
TEST(Scores, DoublesHoldWhereProductsLeaveTheRange) {
    const struct {
        Kel64f difference, weight, constant;
    } cases[] = {{1e200, 1e-300, -3},   {1e-200, 1e300, -1e-101}, {0x1p-537, 0x1p1000, 0},
                 {0x1.9p511, 2, 1e308}, {HUGE_VAL, 1, 0},         {1e308, 2, 0},
                 {1, 1, -HUGE_VAL}};
    for (const auto& c : cases) {
        for (const int place : {0, 3, 8}) {
            Kel64f x[9] = {}, mean[9] = {}, ivar[9] = {}, score = 77;
            x[place] = c.difference;
            ivar[place] = c.weight;
            ASSERT_EQ(kelsLogGaussSingle_64f(x, mean, ivar, 9, &score, c.constant), 0);
            const long double sum = static_cast<long double>(c.difference) * c.difference * c.weight;
            EXPECT_TRUE(test::sameBits(score, static_cast<Kel64f>(c.constant - 0.5L * sum))) << score;
        }
    }
}

// More terms of one sign at the ends of the range than 53 bits hold.
TEST(Scores, IntegerSumsStayExactOverLongRowsOfExtremes) {
    constexpr int kLength = 30001;
    const std::vector<Kel16s> low(kLength, -32768), high(kLength, 32767);
    Kel32s score = 0;
    const int64_t sum = int64_t{kLength} * 65535 * 65535 * -32768;
    ASSERT_EQ(kelsLogGaussSingle_Low_16s32s_Sfs(high.data(), low.data(), low.data(), kLength, &score, 9, -1), 0);
    EXPECT_EQ(score, static_cast<Kel32s>(static_cast<uint32_t>(9 - sum)));
    ASSERT_EQ(kelsLogGaussSingle_16s32s_Sfs(high.data(), low.data(), low.data(), kLength, &score, 9, 33), 0);
    EXPECT_EQ(score, 9 - (sum >> 34));
}

// ---- variances -----------------------------------------------------------------------------------------------------

TEST(DirectVariances, AFaultyOneIsAWarningThatTheFormsAnswerDifferently) {
    for (const Kel32f faulty : {0.0f, -0.0f, NAN}) {
        const auto expect = [=]<class S, class R>(auto f, S, R expected, auto... scale) {
            const S x[] = {3, 1, 2}, m[] = {1, 1, 1}, v[] = {1, 1, std::is_integral_v<S> ? S(0) : S(faulty)};
            R result = 77;
            EXPECT_EQ(f(x, m, v, 3, &result, 5, scale...), kelStatusDivByZero);
            EXPECT_EQ(result, expected);
        };
        expect(kelsLogGaussSingle_DirectVar_32f, Kel32f(), -INFINITY);
        expect(kelsLogGaussSingle_DirectVar_64f, Kel64f(), Kel64f(77));
        expect(kelsLogGaussSingle_DirectVar_32f64f, Kel32f(), Kel64f(77));
        expect(kelsLogGaussSingle_DirectVar_16s32f, Kel16s(), Kel32f(77));
        expect(kelsLogGaussSingle_DirectVarScaled_16s32f, Kel16s(), Kel32f(77), 0);
        expect(kelsLogGaussSingle_DirectVar_16s32s_Sfs, Kel16s(), INT_MIN, 0);
    }
}

TEST(DirectVariances, ScratchThatCannotBeHadIsReported) {
    const Kel32f x[] = {1, 2};
    const Kel16s s[] = {1, 2};
    test::failEachAllocation([&](int failing, const test::AllocationWatch& watch) {
        Kel32f single = 77;
        Kel32s integer = 77;
        EXPECT_EQ(kelsLogGaussSingle_DirectVar_32f(x, x, x, 2, &single, 5), failing == 0 ? kelStatusAllocError : 0);
        EXPECT_EQ(kelsLogGaussSingle_DirectVar_16s32s_Sfs(s, s, s, 2, &integer, 5, 0),
                  failing == 1 ? kelStatusAllocError : 0);
        EXPECT_EQ(single, failing == 0 ? 77 : 5);
        EXPECT_EQ(integer, failing == 1 ? 77 : 5);
        EXPECT_EQ(watch.unreleased(), 0);
    });
}

}  // namespace
