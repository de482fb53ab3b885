// Repeatable random inputs whose rounding matters.
#pragma once

#include <cmath>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

namespace test {

class Random {
  public:
    explicit Random(unsigned seed = 1) : engine_(seed) {}

    int between(int low, int high) { return std::uniform_int_distribution<int>(low, high)(engine_); }
    double uniform(double low, double high) { return std::uniform_real_distribution<double>(low, high)(engine_); }

    // Floats: full random mantissas over 2^-binades .. 2^binades, both signs.  Integers: the whole range, its ends
    // often.
    template <class T>
    T value(int binades = 8) {
        if constexpr (std::is_floating_point_v<T>) {
            const T mantissa = static_cast<T>(uniform(1.0, 2.0));
            return std::ldexp(between(0, 1) ? mantissa : -mantissa, between(-binades, binades));
        } else {
            using Limits = std::numeric_limits<T>;
            const int kind = between(0, 15);
            if (kind < 2) return kind == 0 ? Limits::max() : Limits::min();
            if (kind == 2) return static_cast<T>(between(-1, 1));
            return static_cast<T>(std::uniform_int_distribution<long long>(Limits::min(), Limits::max())(engine_));
        }
    }
    template <class T>
    std::vector<T> vector(std::size_t n, int binades = 8) {
        std::vector<T> v(n);
        for (auto& x : v) x = value<T>(binades);
        return v;
    }

  private:
    std::mt19937 engine_;
};

}  // namespace test
