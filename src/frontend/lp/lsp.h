// Line spectral pairs: the zeros of P(z) = A(z) + z^-(p+1) A(1/z) and Q(z) = A(z) - z^-(p+1) A(1/z), by their cosines.
//
// For a stable predictor P and Q belong to sequences of polynomials with three-term recurrences whose coefficients are
// products of 1 +- k over the reflection coefficients (P. Delsarte, Y. Genin, "The split Levinson algorithm", IEEE
// Trans. ASSP 34(3), 1986).  These are Sturm sequences: their sign changes at x tell how many zeros lie above x.  So
// every zero is found by bisection, however close its neighbours are, and always in the same number of steps.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "core/check.h"
#include "core/simd/vec.h"
#include "frontend/lp/recursion.h"
#include "frontend/lp/values.h"

namespace kels::lp {

// One of the two sequences: g_0 = 1, g_1 = x - shift[0], g_(j+1) = (x - shift[j]) g_j - product[j] g_(j-1).
struct SturmSequence {
    Kel64f* shift;
    Kel64f* product;
    std::size_t length;  // the number of zeros

    // From the coefficients c_1 .. c_(degree-1) of f_(n+1) = 2t f_n - c_n f_(n-1), f_0 = 1, f_1 = 2t, by two of its
    // steps at a time; t is the cosine of half the frequency and x = 2t^2 - 1 that of the frequency.
    template <class Coefficient>
    void build(std::size_t degree, Coefficient c) {
        length = 0;
        for (std::size_t n = degree % 2; n < degree; n += 2, ++length) {
            const Kel64f before = n > 0 ? c(n) : 0;
            shift[length] = 0.5 * (before + c(n + 1)) - 1;
            product[length] = n > 1 ? 0.25 * before * c(n - 1) : 0;
        }
    }
};

// The values of a sequence at the points of a vector, and their sign changes so far.
class SturmWalk {
  public:
    using Wide = Vec<Kel64f>;

    explicit SturmWalk(const Wide& x) : x_(x) {}

    void step(Kel64f shift, Kel64f product) {
        const Wide next = mulAdd(Wide(x_ - shift), now_, Wide(before_ * -product));
        const Wide::mask_type negative = next < 0.0;
        stdx::where(negative ^ negative_, changes_) += 1.0;
        negative_ = negative;
        before_ = now_;
        now_ = next;
    }
    // Keeps the values of long sequences in range.
    void rescale() {
        const Wide size = 1.0 / (stdx::abs(now_) + stdx::abs(before_));
        now_ *= size;
        before_ *= size;
    }
    const Wide& changes() const { return changes_; }

  private:
    Wide x_, now_{1.0}, before_{0.0}, changes_{0.0};
    Wide::mask_type negative_{false};
};

// The zeros of both sequences, the largest first and one of each in turn: dst[0] from p, dst[1] from q ...  q has as
// many as p or one less.
template <class T>
void bisectZeros(const SturmSequence& p, const SturmSequence& q, const Result<T>& dst) {
    using Wide = SturmWalk::Wide;
    constexpr std::size_t w = lanes<Kel64f>;
    constexpr int kHalvings = 36;  // 2^-36 is far below the last place of single precision
    constexpr std::size_t kRescaled = 16;
    for (std::size_t first = 0; first < p.length; first += w) {
        const Wide index([=](auto lane) { return static_cast<Kel64f>(first + std::size_t{lane}); });
        Wide pLow(-1.0), qLow(-1.0);
        Wide half(1.0);
        for (int i = 0; i < kHalvings; ++i, half *= 0.5) {
            const Wide pMiddle = pLow + half, qMiddle = qLow + half;
            SturmWalk pWalk(pMiddle), qWalk(qMiddle);
            for (std::size_t j = 0; j < p.length; ++j) {
                pWalk.step(p.shift[j], p.product[j]);
                qWalk.step(q.shift[j], q.product[j]);
                if (j % kRescaled == kRescaled - 1) {
                    pWalk.rescale();
                    qWalk.rescale();
                }
            }
            stdx::where(pWalk.changes() > index, pLow) = pMiddle;
            stdx::where(qWalk.changes() > index, qLow) = qMiddle;
        }
        for (std::size_t lane = 0; lane < w && first + lane < p.length; ++lane) {
            const std::size_t i = first + lane;
            dst.set(2 * i, pLow[lane] + half[lane]);
            if (i < q.length) dst.set(2 * i + 1, qLow[lane] + half[lane]);
        }
    }
}

// Scratch memory of the two directions.
constexpr int64_t lpToLspScratch(int64_t order) {
    return 3 * order + 6;
}
constexpr int64_t lspToLpScratch(int64_t order) {
    return 2 * order + 8;
}

// False when the predictor is not stable, so that it has fewer pairs than its order; nothing is written then.
template <class T>
bool lpToLsp(const Source<T>& src, const Result<T>& dst, std::size_t order, Kel64f* scratch) {
    Kel64f* const a = scratch;
    for (std::size_t i = 1; i <= order; ++i) a[i] = src[i - 1];
    for (std::size_t i = order; i >= 1; --i) {
        if (!(std::fabs(a[i]) < 1)) return false;
        stepDown(a, i);
    }
    a[0] = 1;  // now a[i] is minus the reflection coefficient of step i
    const std::size_t zeros = order / 2 + 1;
    SturmSequence p{a + order + 1, a + order + 1 + zeros, 0};
    SturmSequence q{p.product + zeros, p.product + 2 * zeros, 0};
    p.build(order + 1, [=](std::size_t n) { return (1 - a[n]) * (1 + a[n - 1]); });
    q.build(order, [=](std::size_t n) { return (1 + a[n + 1]) * (1 - a[n]); });
    if (q.length < p.length) {
        // One step more that leaves the sign as it is.
        q.shift[q.length] = -3;
        q.product[q.length] = 0;
    }
    bisectZeros(p, q, dst);
    return true;
}

// ---- from the pairs to the predictor -------------------------------------------------------------------------------

template <class T>
bool isLspDescending(const Source<T>& lsp, std::size_t order) {
    if (!(lsp[0] <= 1 && lsp[order - 1] >= -1)) return false;
    for (std::size_t i = 1; i < order; ++i) {
        if (!(lsp[i] < lsp[i - 1])) return false;
    }
    return true;
}

// poly, of degree `degree`, times 1 + b z^-1 + c z^-2.
inline void multiplyByQuadratic(Kel64f* poly, std::size_t degree, Kel64f b, Kel64f c) {
    poly[degree + 1] = 0;
    poly[degree + 2] = 0;
    for (std::size_t i = degree + 2; i >= 2; --i) poly[i] += b * poly[i - 1] + c * poly[i - 2];
    poly[1] += b * poly[0];
}

template <class T>
void lspToLp(const Source<T>& src, const Result<T>& dst, std::size_t order, Kel64f* scratch) {
    Kel64f* const p = scratch;
    Kel64f* const q = scratch + order + 4;
    // The zeros at z = 1 and z = -1: of an even order one in each, of an odd order both in Q.
    const bool odd = order % 2 != 0;
    p[0] = q[0] = 1;
    p[1] = odd ? 0 : 1;
    q[1] = odd ? 0 : -1;
    q[2] = -1;
    std::size_t pDegree = odd ? 0 : 1, qDegree = odd ? 2 : 1;
    for (std::size_t i = 0; i < order; i += 2, pDegree += 2) multiplyByQuadratic(p, pDegree, -2 * src[i], 1);
    for (std::size_t i = 1; i < order; i += 2, qDegree += 2) multiplyByQuadratic(q, qDegree, -2 * src[i], 1);
    for (std::size_t i = 1; i <= order; ++i) dst.set(i - 1, 0.5 * (p[i] + q[i]));
}

// ---- rows ----------------------------------------------------------------------------------------------------------

// Pairs of the predictor in each of `height` rows, up to the first row that has none.
template <class T>
KelStatus pairsOf(const Source<T>& src, int srcStep, const Result<T>& dst, int dstStep, int width, int height) {
    OrderScratch<4> work(lpToLspScratch(width));
    if (work.failed()) return kelStatusNoMemory;
    for (std::ptrdiff_t i = 0; i < height; ++i) {
        if (!lpToLsp(src.from(i * srcStep), dst.from(i * dstStep), toSize(width), work.data())) return kelStatusNoRoot;
    }
    return kelStatusOk;
}

// Predictors of the pairs in each row, once those of all rows are known to descend.
template <class T>
KelStatus predictorsOf(const Source<T>& src, int srcStep, const Result<T>& dst, int dstStep, int width, int height) {
    for (std::ptrdiff_t i = 0; i < height; ++i) {
        if (!isLspDescending(src.from(i * srcStep), toSize(width))) return kelStatusBadLsp;
    }
    OrderScratch<4> work(lspToLpScratch(width));
    if (work.failed()) return kelStatusNoMemory;
    for (std::ptrdiff_t i = 0; i < height; ++i) {
        lspToLp(src.from(i * srcStep), dst.from(i * dstStep), toSize(width), work.data());
    }
    return kelStatusOk;
}

}  // namespace kels::lp
