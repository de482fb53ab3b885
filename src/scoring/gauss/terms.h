// How one dimension contributes to the sum of a Gaussian's exponent, and in what arithmetic.
//
// A term is an arithmetic with a weighting:
//
//   arithmetic           source             sum                   rounding
//   SinglePrecision<W>   Kel32f or Kel16s   Kel32f, in vectors    single precision, order free
//   Exact<W>             Kel16s             int64_t, in vectors   none
//   Scalar<A, W>         any                A, one at a time      that of A
//   Extended<W>          Kel64f or Kel32f   long double           that of long double, or better
//
//   weighting            what d = x - mean adds
//   InverseVariance      d * d * v
//   UnitVariance         d * d
//   UnitWrapped          d * d, of which 32 bits are kept as an integer with a sign (Exact only)
//   DirectVariance       d * d / v (Scalar only)
//
// A weighting without a variance never touches Item::variance.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "core/simd/row_sums.h"
#include "core/simd/vec.h"
#include "kels/types.h"

namespace kels::gauss {

// One vector and one Gaussian: rows of `width` elements.
template <class T>
struct Item {
    const T* vector;
    const T* mean;
    const T* variance = nullptr;
};
template <class T>
Item(const T*, const T*) -> Item<T>;
template <class T>
Item(const T*, const T*, const T*) -> Item<T>;

// ---- weightings ----------------------------------------------------------------------------------------------------

struct InverseVariance {
    static constexpr bool kVariance = true;
    template <class V>
    static V plus(const V& sum, const V& d, const V& v) {
        if constexpr (std::is_floating_point_v<V>)
            return sum + d * d * v;
        else
            return mulAdd(d * v, d, sum);
    }
    // 17 by 16 bits: |d * v| < 2^31.
    static void add(IntegerSums& sums, const Vec<int32_t>& d, const Vec<int32_t>& v) { sums.addWeightedSquares(d, v); }
};

struct UnitVariance {
    static constexpr bool kVariance = false;
    template <class V>
    static V plus(const V& sum, const V& d, const V&) {
        if constexpr (std::is_floating_point_v<V>)
            return sum + d * d;
        else
            return mulAdd(d, d, sum);
    }
    static void add(IntegerSums& sums, const Vec<int32_t>& d, const Vec<int32_t>&) { sums.addProducts(d, d); }
};

struct UnitWrapped {
    static constexpr bool kVariance = false;
    static void add(IntegerSums& sums, const Vec<int32_t>& d, const Vec<int32_t>&) {
        const auto bits = stdx::static_simd_cast<Vec<uint32_t>>(d);
        sums.addProducts(stdx::static_simd_cast<Vec<int32_t>>(bits * bits), Vec<int32_t>(1));
    }
};

struct DirectVariance {
    static constexpr bool kVariance = true;
    template <class A>
    static A plus(A sum, A d, A v) {
        return sum + d * d / v;
    }
};

// ---- arithmetics ---------------------------------------------------------------------------------------------------
// An arithmetic gives
//
//   Partial                   the type of running sums, which begin as zero()
//   add(sum, part, item, i)   a running sum with the terms of kStep elements from i on, or of as many as `part` loads
//   kRun                      the most elements that one running sum may take
//   totals(a, b, c, d)        what four running sums come to, each a value of type Sum
//   total(a, b, c, d)         the same for running sums that belong together
//
// One that cannot give every score tells by trusted(sum, score), and names the Fallback that can.

template <class Weighting>
struct SinglePrecision {
    using Partial = Vec<Kel32f>;
    using Sum = Kel32f;
    static constexpr std::size_t kStep = lanes<Kel32f>;
    static constexpr std::size_t kRun = 1 << 20;

    static Partial zero() { return Partial(0.0f); }

    template <class Load, class T>
    static Partial add(const Partial& sum, const Load& part, const Item<T>& item, std::size_t i) {
        const Partial d = single(part.load(item.vector + i) - part.load(item.mean + i));
        if constexpr (Weighting::kVariance)
            return Weighting::plus(sum, d, single(part.load(item.variance + i)));
        else
            return Weighting::plus(sum, d, d);
    }
    static std::array<Sum, 4> totals(const Partial& a, const Partial& b, const Partial& c, const Partial& d) {
        std::array<Sum, 4> sums;
        sumsOf4(a, b, c, d, sums.data());
        return sums;
    }
    static Sum total(const Partial& a, const Partial& b, const Partial& c, const Partial& d) {
        return stdx::reduce((a + b) + (c + d));
    }

  private:
    static Partial single(const Partial& v) { return v; }
    static Partial single(const Vec<int32_t>& v) { return toFloat(v); }
};

template <class Weighting>
struct Exact {
    using Partial = IntegerSums;
    using Sum = int64_t;
    static constexpr std::size_t kStep = lanes<int32_t>;
    static constexpr std::size_t kRun = IntegerSums::kMost * kStep;

    static Partial zero() { return {}; }

    template <class Load>
    static Partial add(Partial sum, const Load& part, const Item<Kel16s>& item, std::size_t i) {
        const Vec<int32_t> d = part.load(item.vector + i) - part.load(item.mean + i);
        if constexpr (Weighting::kVariance)
            Weighting::add(sum, d, part.load(item.variance + i));
        else
            Weighting::add(sum, d, d);
        return sum;
    }
    static std::array<Sum, 4> totals(const Partial& a, const Partial& b, const Partial& c, const Partial& d) {
        std::array<Sum, 4> sums;
        Partial::totals(a, b, c, d, sums.data());
        return sums;
    }
    static Sum total(const Partial& a, const Partial& b, const Partial& c, const Partial& d) {
        const auto sums = totals(a, b, c, d);
        return (sums[0] + sums[1]) + (sums[2] + sums[3]);
    }
};

template <class A, class Weighting>
struct Scalar {
    using Partial = A;
    using Sum = A;
    static constexpr std::size_t kStep = 1;
    static constexpr std::size_t kRun = 1 << 30;

    static Partial zero() { return 0; }

    template <class Load, class T>
    static Partial add(Partial sum, const Load&, const Item<T>& item, std::size_t i) {
        const A d = static_cast<A>(item.vector[i]) - static_cast<A>(item.mean[i]);
        if constexpr (Weighting::kVariance)
            return Weighting::plus(sum, d, static_cast<A>(item.variance[i]));
        else
            return Weighting::plus(sum, d, d);
    }
    static std::array<Sum, 4> totals(Partial a, Partial b, Partial c, Partial d) { return {a, b, c, d}; }
    static Sum total(Partial a, Partial b, Partial c, Partial d) { return (a + b) + (c + d); }
};

// Extended precision: as good as sums in long double, and faster where there are fused multiply-adds.
#if defined(__FMA__)
// Every value is the exact sum of two doubles, or near enough (Dekker, "A floating-point technique for extending the
// available precision", 1971).  Sums that come near the ends of the range of double are left to long double, which has
// the wider one.
template <class Weighting>
struct DoubleDouble {
    using Partial = DoubledSum;
    using Sum = DoubledValue;
    using Fallback = Scalar<long double, Weighting>;
    static constexpr std::size_t kStep = lanes<Kel64f>;
    static constexpr std::size_t kRun = std::size_t{1} << 31;  // all

    static Partial zero() { return {Vec<Kel64f>(0.0), Vec<Kel64f>(0.0)}; }

    // The weight is multiplied first: then no product of finite values, but for those that trusted() tells, loses by
    // underflow.
    template <class Load, class T>
    static Partial add(const Partial& sum, const Load& part, const Item<T>& item, std::size_t i) {
        using V = Vec<Kel64f>;
        const TwoSum<V> d(part.loadWide(item.vector + i), -part.loadWide(item.mean + i));
        V high = d.sum, low = d.lost;
        if constexpr (Weighting::kVariance) {
            const V v = part.loadWide(item.variance + i);
            high = d.sum * v;
            low = mulAdd(d.lost, v, mulAdd(d.sum, v, -high));
        }
        const V product = high * d.sum;
        const V lost = mulAdd(low, d.sum, mulAdd(high, d.lost, mulAdd(high, d.sum, -product)));
        const TwoSum<V> next(sum.high, product);
        return {next.sum, sum.low + (next.lost + lost)};
    }
    static std::array<Sum, 4> totals(const Partial& a, const Partial& b, const Partial& c, const Partial& d) {
        std::array<Sum, 4> sums;
        Partial::totals(a, b, c, d, sums.data());
        return sums;
    }
    static Sum total(const Partial& a, const Partial& b, const Partial& c, const Partial& d) {
        const auto sums = totals(a, b, c, d);
        return (sums[0] + sums[1]) + (sums[2] + sums[3]);
    }
    static bool trusted(const Sum& sum, Kel64f score) {
        return sum.high > 0x1p-400 && sum.high < 0x1p1000 && std::isfinite(score);
    }
};
template <class Weighting>
using Extended = DoubleDouble<Weighting>;
#else
template <class Weighting>
using Extended = Scalar<long double, Weighting>;
#endif

}  // namespace kels::gauss
