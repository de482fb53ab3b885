// Functions that make each element of a vector from the same elements of others, tried on arrays of many lengths.
#pragma once

#include <functional>
#include <tuple>

#include "support/support.h"

namespace test {

// What the scalar arguments but the length are (the next argument takes the next value, so that all take all of them in
// turn), which statuses may occur, and what elements are if not anything.
struct Options {
    std::vector<double> scalars = {1};
    std::vector<KelStatus> statuses = {0};
    std::function<double(Random&, double lastScalar)> input = nullptr;
};

// Results that are known to a bound: absolute, or in units of the last place.
struct Near {
    long double exact, bound;
};
struct Ulps {
    long double exact;
    double bound;
};
template <class T>
bool agrees(T got, const Near& expected) {
    return static_cast<long double>(got) == expected.exact || std::fabs(got - expected.exact) <= expected.bound;
}
template <class T>
bool agrees(T got, const Ulps& expected) {
    return ulpError(got, expected.exact) <= expected.bound;
}
template <class T, class E>
bool agrees(T got, const E& expected) {
    if constexpr (std::is_floating_point_v<T>) return sameBits(got, static_cast<T>(expected));
    return got == static_cast<T>(expected);
}

// Floats: random ones, and what compares, adds or divides peculiarly.  Integers: also those beside a half of a power of
// two, which round differently under some scale.
template <class T>
T anyElement(Random& random) {
    using Limits = std::numeric_limits<T>;
    if constexpr (std::is_class_v<T>) {
        const auto re = anyElement<decltype(T::re)>(random), im = anyElement<decltype(T::im)>(random);
        return {re, im};
    } else if constexpr (std::is_floating_point_v<T>) {
        constexpr T inf = Limits::infinity(), nan = Limits::quiet_NaN();
        constexpr T special[] = {0, T(-0.0), 1, inf, -inf, nan, Limits::denorm_min(), Limits::max()};
        return random.between(0, 5) == 0 ? special[random.between(0, 7)] : random.value<T>();
    } else {
        if (random.between(0, 2) > 0) return random.value<T>();
        const int64_t power = int64_t{random.between(0, 1) ? 1 : 3} << random.between(0, Limits::digits - 1);
        return static_cast<T>((random.between(0, 1) ? power : -power) + random.between(-1, 1));
    }
}

// Arguments of one function.
template <class... A>
class ElementArguments {
  public:
    template <class P>
    using Element = std::remove_const_t<std::remove_pointer_t<P>>;
    using Values = std::tuple<std::vector<Element<A>>...>;

    // n elements for each pointer; the scalars from number `first` on.
    ElementArguments(const Options& options, Random& random, std::size_t n, std::size_t first)
        : options_(options), random_(random), n_(n), scalar_(first) {
        lastScalar = options.scalars[(first + kCount - kLength - 2) % options.scalars.size()];
        [&]<std::size_t... I>(std::index_sequence<I...>) {
            values = Values{next<A>(I)...};
        }
        (std::index_sequence_for<A...>());
    }
    KelStatus call(KelStatus (*f)(A...)) {
        return std::apply([&](auto&... v) { return f(given<A>(v)...); }, values);
    }
    // op of the elements i, as a tuple.
    template <class Op>
    auto apply(const Op& op, std::size_t i) const {
        return std::apply([&](const auto&... v) { return std::tuple(op(v[i % v.size()]...)); }, values);
    }
    // The output that `after` others follow.
    static constexpr std::size_t output(std::size_t after) {
        std::size_t i = kCount - 1;
        while (!kOutput[i] || after-- > 0) --i;
        return i;
    }

    Values values;
    double lastScalar;

  private:
    static constexpr std::size_t kCount = sizeof...(A);
    static constexpr std::array<bool, kCount> kOutput = {
        (std::is_pointer_v<A> && !std::is_const_v<std::remove_pointer_t<A>>)...};
    // The first int behind an array.
    static constexpr std::size_t kLength = [] {
        constexpr std::array<bool, kCount> pointer = {std::is_pointer_v<A>...}, whole = {std::is_same_v<A, int>...};
        std::size_t i = 0;
        while (!pointer[i]) ++i;
        while (!whole[i]) ++i;
        return i;
    }();

    template <class P>
    std::vector<Element<P>> next(std::size_t place) {
        if constexpr (std::is_pointer_v<P>) {
            std::vector<Element<P>> v(n_);
            for (auto& x : v) x = anyElement<Element<P>>(random_);
            if constexpr (!std::is_class_v<Element<P>>) {
                for (auto& x : v) {
                    if (options_.input) x = nearest<Element<P>>(options_.input(random_, lastScalar));
                }
            }
            return v;
        } else {
            if (place == kLength) return {static_cast<P>(n_)};
            return {static_cast<P>(options_.scalars[scalar_++ % options_.scalars.size()])};
        }
    }
    template <class P>
    static P given(std::vector<Element<P>>& v) {
        if constexpr (std::is_pointer_v<P>) return v.data();
        if constexpr (!std::is_pointer_v<P>) return v[0];
    }

    const Options& options_;
    Random& random_;
    std::size_t n_, scalar_;
};

// Calls each function and expects that its last output, or as many of them as op gives results, hold op(arguments) with
// one element in the place of each array.
template <class Op, class... F>
void expectElements(const Op& op, const Options& options, const F&... functions) {
    const auto one = [&]<class... A>(KelStatus (*f)(A...)) {
        Random random(11);
        for (std::size_t n = 1; n <= 1000; n = n < 70 ? n + 1 : 2 * n + 3) {
            for (std::size_t first = 0; first < options.scalars.size(); ++first) {
                ElementArguments<A...> arguments(options, random, n, first);
                const auto before = arguments;
                const KelStatus status = arguments.call(f);
                EXPECT_TRUE(std::count(options.statuses.begin(), options.statuses.end(), status)) << status;
                for (std::size_t i = 0; i < n; ++i) {
                    const auto expected = before.apply(op, i);
                    constexpr std::size_t results = std::tuple_size_v<decltype(before.apply(op, 0))>;
                    const bool good = [&]<std::size_t... R>(std::index_sequence<R...>) {
                        return (agrees(std::get<ElementArguments<A...>::output(results - 1 - R)>(arguments.values)[i],
                                       std::get<R>(expected)) &&
                                ...);
                    }
                    (std::make_index_sequence<results>());
                    ASSERT_TRUE(good) << "element " << i << " of " << n << ", last scalar " << arguments.lastScalar;
                }
            }
        }
    };
    (forEachForm(functions, one), ...);
}

}  // namespace test
