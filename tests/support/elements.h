// Functions that make each element of a vector from the same elements of others, tried on arrays of many lengths.
#pragma once

#include <functional>
#include <tuple>

#include "support/support.h"

namespace test {

// What the scalar arguments but the length are (the next argument takes the next value, so that all take all of them in
// turn), whether the destination may be a source, which statuses may occur, what elements are if not anything, and
// whether floats, too, are the same in every rounding mode.
struct Options {
    std::vector<double> scalars = {1};
    bool inPlace = false;
    std::vector<KelStatus> statuses = {0};
    std::function<double(Random&, double lastScalar)> input = nullptr;
    bool everyMode = false;
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

template <class Op, class... A>
class ElementTest {
  public:
    ElementTest(const Op& op, const Options& options, KelStatus (*f)(A...)) : op_(op), options_(options), f_(f) {}
    void run() {
        ASSERT_FALSE(options_.scalars.empty());
        std::vector<std::size_t> lengths = {129, 300, 1000};
        for (std::size_t n = 1; n <= 70; ++n) lengths.push_back(n);
        for (std::size_t first = 0; first < options_.scalars.size(); ++first) {
            for (const std::size_t n : lengths) {
                [&]<std::size_t... I>(std::index_sequence<I...>) {
                    (tryWith<I>(n, first, std::index_sequence<I...>()), ...);
                }
                (std::index_sequence_for<A...>());
            }
        }
    }

  private:
    template <class P>
    using Element = std::remove_const_t<std::remove_pointer_t<P>>;
    static constexpr std::size_t kCount = sizeof...(A);
    static constexpr std::array<bool, kCount> kPointer = {std::is_pointer_v<A>...};
    static constexpr std::array<bool, kCount> kInt = {std::is_same_v<A, int>...};
    static constexpr std::array<bool, kCount> kOutput = {
        (std::is_pointer_v<A> && !std::is_const_v<std::remove_pointer_t<A>>)...};
    static constexpr bool kAnyIntegers = ((std::is_pointer_v<A> && std::is_integral_v<Element<A>>) || ...);

    // The output that `after` others follow; the length is the first int behind an array.
    static constexpr std::size_t output(std::size_t after) {
        std::size_t i = kCount - 1;
        while (!kOutput[i] || after-- > 0) --i;
        return i;
    }
    static constexpr std::size_t lengthPlace() {
        std::size_t i = 0;
        while (!kPointer[i]) ++i;
        while (!kInt[i]) ++i;
        return i;
    }

    template <class P>
    std::vector<Element<P>> values(std::size_t place, std::size_t n, std::size_t& scalar) {
        std::vector<Element<P>> v(1);
        if constexpr (std::is_pointer_v<P>) {
            v.resize(n);
            for (auto& x : v) x = anyElement<Element<P>>(random_);
            if constexpr (!std::is_class_v<Element<P>>) {
                for (auto& x : v) {
                    if (options_.input) x = as<Element<P>>(options_.input(random_, lastScalar_));
                }
            }
        } else {
            if (place != lengthPlace()) lastScalar_ = options_.scalars[scalar++ % options_.scalars.size()];
            v[0] = static_cast<P>(place == lengthPlace() ? static_cast<double>(n) : lastScalar_);
        }
        return v;
    }
    template <class T>
    static T as(double v) {
        if constexpr (std::is_integral_v<T>) return saturated<T>(v);
        return static_cast<T>(v);
    }
    template <class P>
    static P argument(void* p) {
        if constexpr (std::is_pointer_v<P>) {
            return static_cast<P>(p);
        } else {
            return *static_cast<P*>(p);
        }
    }

    // With the last output in the place of argument `place`.
    template <std::size_t place, std::size_t... I>
    void tryWith(std::size_t n, std::size_t scalar, std::index_sequence<I...>) {
        constexpr std::size_t last = output(0);
        using Elements = std::tuple<std::vector<Element<A>>...>;
        if constexpr (kPointer[place] &&
                      std::is_same_v<std::tuple_element_t<place, Elements>, std::tuple_element_t<last, Elements>>) {
            if (place != last && !options_.inPlace) return;
            lastScalar_ = options_.scalars[(scalar + kCount - lengthPlace() - 2) % options_.scalars.size()];
            Elements v{values<A>(I, n, scalar)...};
            std::get<last>(v) = std::get<place>(v);
            std::vector<decltype(std::tuple(op_(std::get<I>(v)[0]...)))> expected;
            for (std::size_t i = 0; i < n; ++i) {
                expected.push_back(std::tuple(op_(std::get<I>(v)[i % std::get<I>(v).size()]...)));
            }
            std::tuple<Guarded<Element<A>>...> arrays(v);
            void* p[] = {std::get<I>(arrays).data()...};
            p[place] = p[last];
            const auto call = [&] {
                (std::copy(std::get<I>(v).begin(), std::get<I>(v).end(), std::get<I>(arrays).data()), ...);
                const KelStatus status = f_(argument<A>(p[I])...);
                EXPECT_TRUE(std::count(options_.statuses.begin(), options_.statuses.end(), status)) << status;
            };
            const auto check = [&] {
                constexpr std::size_t results = std::tuple_size_v<typename decltype(expected)::value_type>;
                for (std::size_t i = 0; i < n; ++i) {
                    const bool good = [&]<std::size_t... R>(std::index_sequence<R...>) {
                        return (agrees(std::get<output(results - 1 - R)>(arrays)[i], std::get<R>(expected[i])) && ...);
                    }
                    (std::make_index_sequence<results>());
                    ASSERT_TRUE(good) << "element " << i << " of " << n << ", last scalar " << lastScalar_;
                }
            };
            inRoundingModes(kAnyIntegers || options_.everyMode, call, check);
        }
    }

    const Op& op_;
    const Options& options_;
    KelStatus (*f_)(A...);
    Random random_{11};
    double lastScalar_ = 0;
};

// Calls each function on guarded arrays and expects that its last output, or as many of them as op gives results, hold
// op(arguments) with one element in the place of each array.
template <class Op, class... F>
void expectElements(const Op& op, const Options& options, const F&... functions) {
    const auto one = [&]<class... A>(KelStatus (*f)(A...)) { ElementTest<Op, A...>(op, options, f).run(); };
    (forEachForm(functions, one), ...);
}

}  // namespace test
