// Windows by their formulas, exactly symmetric.
#include "frontend/window.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "core/check.h"
#include "core/constants.h"
#include "core/scaling.h"
#include "core/simd/elementary.h"
#include "kels/features.h"

namespace kels {
namespace {

constexpr double kLargestBeta = 700;

// I0(x) e^-x for x >= 0, where I0 is the modified Bessel function of order 0: the power series, whose terms are all
// positive, and the asymptotic one where that reaches the precision of a double.
double scaledBessel(double x) {
    constexpr double kSeriesEnd = 25, kNegligible = 0x1p-56;
    double term = 1, sum = 1;
    if (x < kSeriesEnd) {
        for (int k = 1; term > kNegligible * sum; ++k) {
            term *= (x / 2 / k) * (x / 2 / k);
            sum += term;
        }
        return sum * std::exp(-x);
    }
    for (int k = 1; term > kNegligible * sum; ++k) {
        term *= (2.0 * k - 1) * (2.0 * k - 1) / (8 * x * k);
        sum += term;
    }
    return sum / std::sqrt(2 * kPi * x);
}

class Kaiser {
  public:
    explicit Kaiser(double beta) : beta_(beta), top_(scaledBessel(beta)) {}
    // Place j from an end of a window whose ends are `span` apart.
    double operator()(double j, double span) const {
        const double x = beta_ * (2 * std::sqrt(j * (span - j)) / span);
        return scaledBessel(x) / top_ * std::exp(x - beta_);
    }

  private:
    double beta_, top_;
};

// The kinds that are polynomials of the squared sine of half the angle, as which they lose nothing next to their ends:
// the cosine of the angle is 1 - 2 s, that of twice the angle 1 - 8 s + 8 s^2.
Vec<double> ofSquaredSine(const Vec<double>& s, int shape) {
    switch (shape) {
        case kelWinHamming:
            return mulAdd(s, Vec<double>(0.92), Vec<double>(0.08));
        case kelWinBlackman:
            return mulAdd(s * s, Vec<double>(0.64), s * 0.36);
        default:
            return s;
    }
}

}  // namespace

bool isWindow(int kind, double param) {
    const int shape = kind & ~kelWinPeriodic;
    if (shape < kelWinRect || shape > kelWinKaiser) return false;
    return shape != kelWinKaiser || (param >= 0 && param <= kLargestBeta);
}

void windowValues(double* dst, std::size_t first, std::size_t count, std::size_t len, int kind, double param) {
    const int shape = kind & ~kelWinPeriodic;
    if (shape == kelWinRect || len == 1) {
        std::fill_n(dst, count, 1.0);
        return;
    }
    // Values depend on the distance from the nearer end alone, which makes them symmetric to the bit.
    const auto span = static_cast<double>((kind & kelWinPeriodic) != 0 ? len : len - 1);
    for (std::size_t i = 0; i < count; ++i) {
        const auto place = static_cast<double>(first + i);
        dst[i] = std::min(place, span - place);
    }
    if (shape == kelWinKaiser) {
        const Kaiser kaiser(param);
        for (std::size_t i = 0; i < count; ++i) dst[i] = kaiser(dst[i], span);
        return;
    }
    const auto value = [=](const Vec<double>& place) {
        const Vec<double> root = sine<double>(place * kPi / span);
        return ofSquaredSine(root * root, shape);
    };
    map(dst, count, value, 0.0, dst);
    if (shape == kelWinPovey) {
        for (std::size_t i = 0; i < count; ++i) dst[i] = std::pow(dst[i], 0.85);
    }
}

namespace {

// Calls take(values, first, count) with the values of a window, some at a time.
template <class Take>
void inPieces(int len, int kind, double param, Take take) {
    constexpr std::size_t kPiece = 256;
    const NearestScope nearest;
    double values[kPiece];
    for (std::size_t first = 0; first < toSize(len); first += kPiece) {
        const std::size_t count = std::min(kPiece, toSize(len) - first);
        windowValues(values, first, count, toSize(len), kind, param);
        take(values, first, count);
    }
}

}  // namespace
}  // namespace kels

using namespace kels;

KelStatus kelsWindow_32f(Kel32f* pDst, int len, int kind, Kel32f param) {
    if (const KelStatus fault = vectorFault(len, pDst)) return fault;
    if (!isWindow(kind, param)) return kelStatusBadArg;
    inPieces(len, kind, param, [=](const double* values, std::size_t first, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) pDst[first + i] = static_cast<Kel32f>(values[i]);
    });
    return kelStatusOk;
}
KelStatus kelsWindow_64f(Kel64f* pDst, int len, int kind, Kel64f param) {
    if (const KelStatus fault = vectorFault(len, pDst)) return fault;
    if (!isWindow(kind, param)) return kelStatusBadArg;
    inPieces(len, kind, param, [=](const double* values, std::size_t first, std::size_t count) {
        std::copy_n(values, count, pDst + first);
    });
    return kelStatusOk;
}
KelStatus kelsMulWindow_32f_I(Kel32f* pSrcDst, int len, int kind, Kel32f param) {
    if (const KelStatus fault = vectorFault(len, pSrcDst)) return fault;
    if (!isWindow(kind, param)) return kelStatusBadArg;
    inPieces(len, kind, param, [=](const double* values, std::size_t first, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) pSrcDst[first + i] *= static_cast<Kel32f>(values[i]);
    });
    return kelStatusOk;
}
