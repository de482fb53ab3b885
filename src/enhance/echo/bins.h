// The bins of a spectrum as the kernels of the canceller see them: several floats at a time, one float, or one integer
// as a double.  A kernel is written once for all three.
#pragma once

#include <cmath>
#include <cstddef>
#include <limits>

#include "core/scaling.h"
#include "core/simd/vec.h"
#include "kels/types.h"

namespace kels::echo {

template <class V>
struct Complex {
    V re, im;
};

template <class V>
V power(const Complex<V>& z) {
    return z.re * z.re + z.im * z.im;
}

// conj(x) * y
template <class V>
Complex<V> correlation(const Complex<V>& x, const Complex<V>& y) {
    return {x.re * y.re + x.im * y.im, x.re * y.im - x.im * y.re};
}

inline constexpr Kel32f kLeastDivisor = std::numeric_limits<Kel32f>::min();

// A vector of float bins.
struct FloatBins {
    using Value = Vec<Kel32f>;
    static constexpr std::size_t kCount = lanes<Kel32f>;

    static Complex<Value> get(const Kel32fc* p) {
        const Kel32f* const parts = &p->re;
        const auto [re, im] = deinterleave(load(parts), load(parts + kCount));
        return {re, im};
    }
    static void put(Kel32fc* p, const Complex<Value>& z) {
        Kel32f* const parts = &p->re;
        const auto [first, second] = interleave(z.re, z.im);
        store(parts, first);
        store(parts + kCount, second);
    }
    static Value get(const Kel32f* p) { return load(p); }
    static void put(Kel32f* p, const Value& v) { store(p, v); }

    static Value greater(const Value& a, const Value& b) { return greaterOf(a, b); }
    static Value quotientOrZero(const Value& a, const Value& b) {
        Value q = a / b;
        stdx::where(b < kLeastDivisor, q) = 0.0f;
        return q;
    }
};

// One float bin.
struct FloatBin {
    using Value = Kel32f;
    static constexpr std::size_t kCount = 1;

    static Complex<Value> get(const Kel32fc* p) { return {p->re, p->im}; }
    static void put(Kel32fc* p, const Complex<Value>& z) { *p = {z.re, z.im}; }
    static Value get(const Kel32f* p) { return *p; }
    static void put(Kel32f* p, Value v) { *p = v; }

    static Value greater(Value a, Value b) { return a > b ? a : b; }
    static Value quotientOrZero(Value a, Value b) { return b < kLeastDivisor ? 0 : a / b; }
};

// One integer bin, inside a NearestScope.
struct IntegerBin {
    using Value = Kel64f;
    static constexpr std::size_t kCount = 1;

    static Complex<Value> get(const Kel32sc* p) { return {Value(p->re), Value(p->im)}; }
    static void put(Kel32sc* p, const Complex<Value>& z) {
        *p = {roundSaturate<Kel32s>(z.re), roundSaturate<Kel32s>(z.im)};
    }
    static Value get(const Kel32s* p) { return *p; }
    static void put(Kel32s* p, Value v) { *p = roundSaturate<Kel32s>(v); }

    static Value greater(Value a, Value b) { return a > b ? a : b; }
    static Value quotientOrZero(Value a, Value b) { return b == 0 ? 0 : a / b; }
};

// What the numbers of an array stand for.
struct FloatForm {
    using Bins = FloatBins;
    using Bin = FloatBin;
    using Real = Kel32f;
    using Spectrum = Kel32fc;
    static constexpr Kel32f kUnit = 1;  // of coefficients and variances

    // The smoothed power of the error as it is stored.
    template <class V>
    static V nearPower(const V& stored) {
        return stored;
    }
    template <class V>
    static V storedNear(const V& power) {
        return power;
    }
    // A step size as it is stored, where `total` is the reference's power in all partitions.
    template <class V>
    static V storedStep(const V& step, const V&) {
        return step;
    }
};

struct IntegerForm {
    using Bins = IntegerBin;
    using Bin = IntegerBin;
    using Real = Kel32s;
    using Spectrum = Kel32sc;
    static constexpr Kel64f kUnit = exactPowerOfTwo(-27), kStepUnit = exactPowerOfTwo(-26);

    static Kel64f nearPower(Kel64f stored) { return stored * stored; }
    static Kel64f storedNear(Kel64f power) { return std::sqrt(power); }
    static Kel64f storedStep(Kel64f step, Kel64f total) { return step * total / kStepUnit; }
};

// Calls op.template operator()<Bins>(k) for the bins from..to - 1, as many of them at a time as the form takes.
template <class Form, class Op>
void forBins(std::size_t from, std::size_t to, Op op) {
    using Bins = typename Form::Bins;
    std::size_t k = from;
    for (; k + Bins::kCount <= to; k += Bins::kCount) op.template operator()<Bins>(k);
    for (; k < to; ++k) op.template operator()<typename Form::Bin>(k);
}

}  // namespace kels::echo
