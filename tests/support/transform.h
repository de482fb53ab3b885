// The discrete Fourier transform as it is defined.
#pragma once

#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

namespace test {

// Of n numbers, those behind the last one of x being 0.
template <class Values>
std::vector<std::complex<long double>> transform(const Values& x, std::size_t n) {
    std::vector<std::complex<long double>> bins(n);
    for (std::size_t k = 0; k < n; ++k) {
        for (std::size_t i = 0; i < x.size(); ++i) {
            const long double turn = static_cast<long double>(k * i % n) / static_cast<long double>(n);
            bins[k] += std::polar(1.0L, -2 * std::numbers::pi_v<long double> * turn) * static_cast<long double>(x[i]);
        }
    }
    return bins;
}

}  // namespace test
