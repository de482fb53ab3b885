// The discrete Fourier transform in extended precision.
#pragma once

#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

namespace test {

using Real = long double;  // what references compute in
using Complex = std::complex<long double>;

// sum of x[n] e^(-2 pi i k n / N), N a power of 2, by halves.
inline std::vector<Complex> transform(const std::vector<Complex>& x) {
    const std::size_t n = x.size();
    if (n == 1) return x;
    std::vector<Complex> even, odd, y(n);
    for (std::size_t i = 0; i < n; i += 2) {
        even.push_back(x[i]);
        odd.push_back(x[i + 1]);
    }
    even = transform(even);
    odd = transform(odd);
    for (std::size_t k = 0; k < n / 2; ++k) {
        const Complex t = odd[k] * std::polar(1.0L, -2 * std::numbers::pi_v<long double> * k / n);
        y[k] = even[k] + t;
        y[k + n / 2] = even[k] - t;
    }
    return y;
}
// Of n numbers, those behind the last one of x being 0.
template <class Values>
std::vector<Complex> transform(const Values& x, std::size_t n) {
    std::vector<Complex> padded(x.begin(), x.end());
    padded.resize(n);
    return transform(padded);
}

}  // namespace test
