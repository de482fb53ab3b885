// Numbers of the references: a value in extended precision, and what it would be if nothing had cancelled on the way.
#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <vector>

namespace accuracy {

using Real = long double;

// `magnitude` is the sum of the magnitudes of all terms that a value is made of: its relative errors, of one rounding
// each, add up to no more than a few units of it.  Quotients, roots and functions carry the amplification on.
struct Exact {
    Real value = 0, magnitude = 0;
    Exact() = default;
    Exact(Real v) : value(v), magnitude(std::fabs(v)) {}
    Exact(Real v, Real m) : value(v), magnitude(m) {}
    Real amplification() const { return value == 0 ? 1 : magnitude / std::fabs(value); }
};

inline Exact operator-(const Exact& a) {
    return {-a.value, a.magnitude};
}
inline Exact operator+(const Exact& a, const Exact& b) {
    return {a.value + b.value, a.magnitude + b.magnitude};
}
inline Exact operator-(const Exact& a, const Exact& b) {
    return a + -b;
}
inline Exact operator*(const Exact& a, const Exact& b) {
    return {a.value * b.value, a.magnitude * b.magnitude};
}
inline Exact operator/(const Exact& a, const Exact& b) {
    return {a.value / b.value, a.magnitude / std::fabs(b.value) * b.amplification()};
}
inline Exact& operator+=(Exact& a, const Exact& b) {
    return a = a + b;
}
inline Exact& operator-=(Exact& a, const Exact& b) {
    return a = a - b;
}
inline Exact& operator*=(Exact& a, const Exact& b) {
    return a = a * b;
}
inline bool operator<(const Exact& a, const Exact& b) {
    return a.value < b.value;
}
inline Exact sqrt(const Exact& a) {
    return {std::sqrt(a.value), std::sqrt(a.value) * a.amplification()};
}
inline Exact log(const Exact& a) {
    return {std::log(a.value), std::fabs(std::log(a.value)) + a.amplification() - 1};
}
inline Exact exp(const Exact& a) {
    return {std::exp(a.value), std::exp(a.value) * std::max<Real>(1, a.magnitude)};
}
inline Exact abs(const Exact& a) {
    return {std::fabs(a.value), a.magnitude};
}
inline Exact square(const Exact& a) {
    return a * a;
}
// ln(e^a + e^b) as the library defines it: a smaller operand below the cut-off is left out, and nothing is below ln 0.
inline Exact logAdd(const Exact& a, const Exact& b, bool single) {
    const Exact &larger = std::max(a, b), &smaller = std::min(a, b);
    const Real d = smaller.value - larger.value, cutOff = single ? -15.3195879547406L : -23.0258509299405L;
    if (d < cutOff) return {std::max(larger.value, single ? -4500000.0L : -1e10L), larger.magnitude};
    return {larger.value + std::log1p(std::exp(d)), std::max(a.magnitude, b.magnitude)};
}

using Row = std::vector<Exact>;
using Rows = std::vector<Row>;

// The sum of one(i) for i in 0 .. n-1.
template <class One>
Exact sum(std::size_t n, One one) {
    Exact all;
    for (std::size_t i = 0; i < n; ++i) all += one(i);
    return all;
}
inline Exact sum(const Row& x) {
    return sum(x.size(), [&](std::size_t i) { return x[i]; });
}

constexpr Real kPi = 3.14159265358979323846264338327950288L;

}  // namespace accuracy
