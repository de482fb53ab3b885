// All scorers of diagonal Gaussians as objects of one kind: what a scorer scores and how, its arguments by name, random
// arguments with the scores that must come of them.
#pragma once

#include <kels.h>

#include <climits>
#include <functional>
#include <string>

#include "scoring/log/reference.h"
#include "support/block.h"
#include "support/elements.h"
#include "support/rounding.h"

namespace test {

using Quad = __float128;

// ---- scorers -------------------------------------------------------------------------------------------------------

enum class Items { Vector, Frames, Gaussians, Mixture, Selected };
enum class Variances { Inverse, Unit, Direct };
enum class Fold { Store, Max, Add };

struct Kind {
    Items items;
    Variances variances = Variances::Inverse;
    Fold fold = Fold::Store;
    bool distance = false;  // S itself
    bool low = false;       // integer scores keep their low 32 bits

    constexpr bool mixture() const { return items == Items::Mixture || items == Items::Selected; }
    constexpr bool manyGaussians() const { return items == Items::Gaussians || mixture(); }
    constexpr bool adds() const { return fold == Fold::Add || mixture(); }
    constexpr bool unit() const { return variances == Variances::Unit; }
    constexpr bool ownConstants() const { return mixture() || (manyGaussians() && fold != Fold::Store); }
};

// The arguments of a scorer with sources of type S and results of type R.
template <class S, class R>
struct Arguments {
    const S *x, *mean, *ivar;
    const S **xRows, **meanRows, **ivarRows;
    int step, width, height, offset, scaleFactor;
    const R* constants;
    R gConst;
    R* results;
    const Kel8u* sign;
};

template <class S, class R>
struct Scorer {
    std::string name;
    Kind kind;
    bool rowPointers, scaled;
    std::function<KelStatus(const Arguments<S, R>&)> run;
};

// The arguments in their order but for the scale factor.
template <Kind kind, bool rowPointers, class S, class R>
auto inOrder(const Arguments<S, R>& a) {
    const auto when = []<bool condition>(std::bool_constant<condition>, auto... values) {
        if constexpr (condition) return std::tuple(values...);
        if constexpr (!condition) return std::tuple();
    };
    const auto rowsOf = [](auto* base, auto** rows) {
        if constexpr (rowPointers) return rows;
        if constexpr (!rowPointers) return base;
    };
    constexpr std::bool_constant<!kind.unit()> weighted;
    constexpr std::bool_constant<!rowPointers> stepped;
    constexpr std::bool_constant<!kind.distance> scored;
    constexpr std::bool_constant<kind.ownConstants()> constants;
    constexpr std::bool_constant<kind.items == Items::Selected> selected;
    if constexpr (kind.items == Items::Vector) {
        return std::tuple_cat(std::tuple(a.x, a.mean), when(weighted, a.ivar), std::tuple(a.width, a.results),
                              when(scored, a.gConst));
    } else if constexpr (kind.items == Items::Frames) {
        return std::tuple_cat(std::tuple(rowsOf(a.x, a.xRows)), when(stepped, a.step), std::tuple(a.mean),
                              when(weighted, a.ivar), std::tuple(a.width, a.results, a.height), when(scored, a.gConst));
    } else if constexpr (kind.items == Items::Gaussians) {
        return std::tuple_cat(std::tuple(rowsOf(a.mean, a.meanRows), rowsOf(a.ivar, a.ivarRows)), when(stepped, a.step),
                              std::tuple(a.x, a.width), when(constants, a.constants), std::tuple(a.results, a.height));
    } else {
        return std::tuple_cat(std::tuple(a.x, rowsOf(a.mean, a.meanRows)), when(weighted, rowsOf(a.ivar, a.ivarRows)),
                              std::tuple(a.height), when(stepped, a.step), std::tuple(a.width, a.constants, a.results),
                              when(selected, a.sign, a.offset));
    }
}

// Calls action(scorer) for a function of this kind.  Its types, its layout and whether it has a scale factor are read
// off its parameters.
template <Kind kind, class Action, class... A>
void withScorer(const std::string& name, KelStatus (*f)(A...), const Action& action) {
    using Pointed = std::remove_pointer_t<std::tuple_element_t<0, std::tuple<A...>>>;
    using S = std::remove_const_t<std::remove_pointer_t<Pointed>>;
    constexpr bool wide = (std::is_same_v<A, Kel64f*> || ...), integer = (std::is_same_v<A, Kel32s*> || ...);
    using R = std::conditional_t<wide, Kel64f, std::conditional_t<integer, Kel32s, Kel32f>>;
    constexpr bool rowPointers = (std::is_same_v<A, const S**> || ...);
    using Plain = decltype(inOrder<kind, rowPointers>(std::declval<Arguments<S, R>>()));
    constexpr bool scaled = sizeof...(A) == std::tuple_size_v<Plain> + 1;
    const auto run = [f](const Arguments<S, R>& a) {
        auto arguments = inOrder<kind, rowPointers>(a);
        if constexpr (scaled) return std::apply(f, std::tuple_cat(arguments, std::tuple(a.scaleFactor)));
        if constexpr (!scaled) return std::apply(f, arguments);
    };
    const int form[] = {static_cast<int>(8 * sizeof(S)), static_cast<int>(8 * sizeof(R))};
    SCOPED_TRACE(name + ": " + std::to_string(form[0]) + " to " + std::to_string(form[1]) +
                 (rowPointers ? " bits, row pointers" : " bits") + (scaled ? ", scaled" : ""));
    action(Scorer<S, R>{name, kind, rowPointers, scaled, run});
}

// The same for some functions of one kind, until one has failed.
template <Kind kind, class Action, class... F>
void withScorers(const Action& action, const char* name, F*... functions) {
    const auto next = [&](auto* f) {
        if (!testing::Test::HasFailure()) withScorer<kind>(name, f, action);
    };
    (next(functions), ...);
}

// ---- a problem and its reference -----------------------------------------------------------------------------------

// Random arguments.
template <class S, class R>
struct Problem {
    static constexpr bool kInteger = std::is_integral_v<R>;

    const Scorer<S, R>& scorer;
    const Kind kind = scorer.kind;
    int height, width, step, offset;
    Block<S> x, mean, ivar;
    Guarded<R> constants, results;
    Guarded<Kel8u> sign;
    std::vector<R> before;  // the results on entry
    Arguments<S, R> arguments;

    Problem(const Scorer<S, R>& s, Random& random, int h, int w)
        : scorer(s),
          height(kind.items == Items::Vector ? 1 : h),
          width(w),
          step(w + random.between(0, 3)),
          offset(random.between(0, 13)),
          x(kind.manyGaussians() ? 1 : height, w, step, [&] { return element(random, -1); }),
          mean(kind.manyGaussians() ? height : 1, w, step, [&] { return element(random, -1); }),
          ivar(kind.manyGaussians() ? height : 1, w, step, [&] { return element(random, 0); }),
          constants(height),
          results(kind.mixture() ? 1 : height),
          sign((offset + height + 7) / 8),
          before(results.size()) {
        const auto constant = [&] { return kind.adds() ? static_cast<R>(random.uniform(-20, 5)) : random.value<R>(6); };
        for (int i = 0; i < height; ++i) constants[i] = constant();
        for (R& result : before) result = random.between(0, 3) ? constant() : R(-4500000);
        const int density = random.between(0, 9);
        for (int i = 0; i < offset + height; ++i) sign[i / 8] |= (random.between(0, 8) < density) << i % 8;
        arguments = {.x = x.d2.data(),
                     .mean = mean.d2.data(),
                     .ivar = ivar.d2.data(),
                     .xRows = x.pointers.data(),
                     .meanRows = mean.pointers.data(),
                     .ivarRows = ivar.pointers.data(),
                     .step = step,
                     .width = width,
                     .height = height,
                     .offset = offset,
                     .scaleFactor = anyScaleFactor(random),
                     .constants = constants.data(),
                     .gConst = constant(),
                     .results = results.data(),
                     .sign = sign.data()};
    }
    KelStatus run() {
        std::copy(before.begin(), before.end(), results.data());
        return scorer.run(arguments);
    }

    // Sums need scores near each other; all else takes any values.
    S element(Random& random, int least) const {
        const double spread = std::is_integral_v<S> && scorer.scaled ? 2000 : 2;
        const double most = least == 0 && scorer.scaled ? 12 * spread : spread;
        if (kind.adds()) return static_cast<S>(random.uniform(least * spread, most));
        const S value = random.value<S>(3);
        return kind.variances == Variances::Direct && value == 0 ? S(1) : value;
    }
    int anyScaleFactor(Random& random) const {
        if (!scorer.scaled) return 0;
        if (kind.adds()) return random.between(0, 3) + (kind.unit() ? 20 : 33);
        constexpr int kEnds[] = {INT_MIN, -33, -1, 64, INT_MAX};
        if (kInteger && random.between(0, 3) == 0) return kEnds[random.between(0, 4)];
        return random.between(-2, 40);
    }
    R constantOf(int g) const {
        if (!kind.manyGaussians()) return arguments.gConst;
        return kind.ownConstants() ? constants[g] : before[g];
    }

    Bounded score(int g) const {
        Quad sum = 0, magnitude = 0;
        for (int i = 0; i < width; ++i) {
            const auto in = [=](const auto& block) { return Quad(block.at(block.height == 1 ? 0 : g, i)); };
            const Quad d = in(x)-in(mean), weight = in(ivar);
            Quad term = d * d;
            if (kind.unit() && kind.low && kInteger && term >= 0x1p31) term -= 0x1p32;
            if (kind.variances == Variances::Inverse) term *= weight;
            if (kind.variances == Variances::Direct) term /= weight;
            sum += term;
            magnitude += term < 0 ? -term : term;
        }
        if (kInteger) return {integerScore(static_cast<long double>(sum), constantOf(g)), 0};
        const Quad factor = kind.distance ? 1 : std::ldexp(0.5L, -arguments.scaleFactor);
        const auto s = static_cast<long double>(kind.distance ? sum : constantOf(g) - sum * factor);
        // The roundings of a term and of the additions that it passes through; then that of the result.
        const long double relative = (width / 4 + 10) * (sizeof(R) == 8 ? 0x1p-64L : 0x1p-24L);
        return {s, relative * static_cast<long double>(magnitude * factor) + kUnit<R> * (1 + 0x1p-9L) * std::fabs(s)};
    }
    // The exact sum shifted, toward minus infinity.
    long double integerScore(long double sum, R constant) const {
        const int64_t shift = int64_t{arguments.scaleFactor} + (kind.distance ? 0 : 1);
        const long double shifted = std::floor(scaled(sum, static_cast<int>(std::clamp<int64_t>(shift, -999, 999))));
        if (kind.distance) return saturated<R>(shifted);
        if (!kind.low) return saturated<R>(constant - shifted);
        const auto lowBits = static_cast<uint32_t>(static_cast<int64_t>(std::fmod(shifted, 0x1p32L)));
        return static_cast<R>(static_cast<uint32_t>(constant) - lowBits);
    }

    std::vector<Bounded> expected() const { return kind.mixture() ? std::vector{ofMixture()} : ofEach(); }

  private:
    Bounded ofMixture() const {
        const auto selected = [&](int bit) { return (sign[bit / 8] & (0x80 >> (bit % 8))) != 0; };
        Bounded sum = {-4500000, 0};
        bool empty = true;
        for (int g = 0; g < height; ++g) {
            if (kind.items == Items::Selected && !selected(offset + g)) continue;
            sum = empty ? score(g) : logAdd<R>(sum, score(g));
            empty = false;
        }
        return sum;
    }
    std::vector<Bounded> ofEach() const {
        std::vector<Bounded> all;
        for (int g = 0; g < height; ++g) {
            const Bounded s = score(g);
            const auto old = static_cast<long double>(before[g]);
            const Bounded most = {std::max(old, s.value), old > s.value + s.error ? 0 : s.error};
            all.push_back(kind.fold == Fold::Max ? most : kind.fold == Fold::Add ? logAdd<R>({old, 0}, s) : s);
        }
        return all;
    }
};

}  // namespace test
