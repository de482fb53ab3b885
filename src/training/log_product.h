// Sums of many logarithms as the logarithm of a product, which costs a multiplication for each and loses less.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <limits>

#include "core/constants.h"
#include "core/simd/vec.h"
#include "kels/types.h"

namespace kels::training {

class LogProduct {
  public:
    // Multiplies by v[0], v[1] and so on up to the first that is zero or negative, and returns its place, or n if there
    // is none.  A vector's worth of elements behind v[n - 1] is overwritten.
    template <class T>
    std::size_t multiply(T* v, std::size_t n) {
        constexpr std::size_t w = lanes<T>;
        store(v + n, Vec<T>(T(1)));
        for (std::size_t i = 0; i < n; i += w) {
            if (multiplyVector(load(v + i))) continue;
            for (std::size_t k = i; k < std::min(i + w, n); ++k) {
                if (v[k] <= 0) return k;
                apart_ += std::log(Kel64f{v[k]});
            }
        }
        return n;
    }

    Kel64f logarithm() const {
        const auto exponent = static_cast<int64_t>(stdx::reduce(exponents_)) - kBias * factors_;
        const Kel64f product = stdx::reduce(product_, std::multiplies<>());
        return static_cast<Kel64f>(exponent) * kLn2 + std::log(product) + apart_;
    }

  private:
    using Wide = Vec<Kel64f>;
    using Bits = Vec<uint64_t>;
    static constexpr int64_t kBias = 1023;

    // Takes all lanes or, where one is not positive or an extreme that the product would not bear, none.
    bool multiplyVector(const Vec<Kel32f>& v) {
        const auto [low, high] = widen(v);
        const bool whole = stdx::all_of(v > 0.0f && v <= std::numeric_limits<Kel32f>::max());
        return whole && multiplyVector(low) && multiplyVector(high);
    }
    bool multiplyVector(const Wide& v) {
        const Wide next = product_ * v;
        using Limits = std::numeric_limits<Kel64f>;
        if (!stdx::all_of(next >= Limits::min() && next <= Limits::max())) return false;
        // The product keeps its mantissa; its exponent moves to the sum of exponents.
        const auto bits = std::bit_cast<Bits>(next);
        exponents_ += bits >> 52;
        product_ = std::bit_cast<Wide>((bits & uint64_t{0x000f'ffff'ffff'ffff}) | uint64_t{0x3ff0'0000'0000'0000});
        factors_ += static_cast<int64_t>(kWideLanes);
        return true;
    }
    static constexpr std::size_t kWideLanes = Wide::size();

    Wide product_{1.0};    // lanes in [1, 2)
    Bits exponents_{0};    // with their bias
    int64_t factors_ = 0;  // in all lanes
    Kel64f apart_ = 0;     // logarithms taken one by one
};

}  // namespace kels::training
