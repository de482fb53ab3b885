// ln(e^a + e^b) without a logarithm or an exponential: the larger operand plus ln(1 + e^d), where d <= 0 is the
// difference of the operands and the second term one of three polynomials in d less the piece's expansion point.
#pragma once

#include <algorithm>
#include <cstddef>

#include "core/simd/vec.h"
#include "kels/types.h"
#include "scoring/log/constants.h"
#include "scoring/log/pieces.h"

namespace kels::log {

// ---- one pair ------------------------------------------------------------------------------------------------------

// The larger operand m where the smaller one does not change it, with the floor of its precision.
inline Kel32f flooredLog(Kel32f m) {
    return m < kLogZero32 ? kLogZero32 : m;
}
inline Kel64f flooredLog(Kel64f m) {
    return m < kBelowIsLogZero64 ? kLogZero64 : m;
}

// The polynomial of the single-precision rule at t, term(0) its highest one, in double precision: a tree and not a
// chain of multiply-adds, because a sum of many logarithms waits for each of them in turn.
template <class W, class Term>
[[gnu::always_inline]] inline W polynomial32(const W& t, Term term) {
    const W t2 = t * t, t4 = t2 * t2, t8 = t4 * t4;
    const W low = mulAdd(mulAdd(term(7), t, term(8)), t2, mulAdd(term(9), t, term(10)));
    const W middle = mulAdd(mulAdd(term(3), t, term(4)), t2, mulAdd(term(5), t, term(6)));
    const W high = mulAdd(term(0), t2, mulAdd(term(1), t, term(2)));
    return mulAdd(high, t8, mulAdd(middle, t4, low));
}

// Evaluated in double precision and rounded once.
inline Kel32f logAdd(Kel32f a, Kel32f b) {
    const Kel32f larger = b > a ? b : a;
    const Kel64f m = larger;
    const Kel64f d = Kel64f{b > a ? a : b} - m;
    // The operands are equal and their difference is not a number when both are the same infinity.
    if (d < kLogAddCutOff32 || (a == b && d != d)) return flooredLog(larger);
    const auto sum = [m](Kel64f t, const Kel64f(&p)[kTerms32]) {
        return static_cast<Kel32f>(m + polynomial32(t, [&p](std::size_t i) { return p[i]; }));
    };
    if (d > kPoint2_F) return sum(d, P1_F);
    if (d > kPoint3_F) return sum(d - kPoint2_F, P2_F);
    return sum(d - kPoint3_F, P3_F);
}

// A pair in double precision on the way to its result.
class ExtendedPair {
    using W = long double;

  public:
    ExtendedPair(Kel64f a, Kel64f b) : m_(b > a ? b : a) {
        const Kel64f s = b > a ? a : b;
        const Kel64f d = s - m_;  // chooses the piece, but is not exact
        ignored_ = d < kLogAddCutOff64 || (a == b && d != d);
        terms_ = d > kPoint2 ? P1 : d > kPoint3 ? P2 : P3;
        t_ = static_cast<W>(s) - static_cast<W>(m_) - static_cast<W>(d > kPoint2 ? 0 : d > kPoint3 ? kPoint2 : kPoint3);
        q_ = static_cast<W>(terms_[0]);
    }
    bool ignored() const { return ignored_; }
    void step(std::size_t i) { q_ = q_ * t_ + static_cast<W>(terms_[i]); }
    Kel64f result() const { return ignored_ ? flooredLog(m_) : static_cast<Kel64f>(static_cast<W>(m_) + q_); }

  private:
    Kel64f m_;
    bool ignored_;
    const Kel64f* terms_;
    W t_, q_;
};

// Evaluated in extended precision and rounded once.
inline Kel64f logAdd(Kel64f a, Kel64f b) {
    ExtendedPair pair(a, b);
    if (pair.ignored()) return pair.result();
    for (std::size_t i = 1; i < kTerms64; ++i) pair.step(i);
    return pair.result();
}

// ---- vectors -------------------------------------------------------------------------------------------------------

// The three pieces side by side, as PieceChoice reads them.
template <class T, std::size_t n>
struct PieceRows {
    alignas(32) T term[n][4];
    alignas(32) T point[4];
};

template <class T, std::size_t n>
constexpr PieceRows<T, n> pieceRows(const Kel64f (&p1)[n], const Kel64f (&p2)[n], const Kel64f (&p3)[n], Kel64f x2,
                                    Kel64f x3) {
    PieceRows<T, n> rows{};
    for (std::size_t i = 0; i < n; ++i) {
        rows.term[i][0] = static_cast<T>(p1[i]);
        rows.term[i][1] = static_cast<T>(p2[i]);
        rows.term[i][2] = static_cast<T>(p3[i]);
    }
    rows.point[1] = static_cast<T>(x2);
    rows.point[2] = static_cast<T>(x3);
    return rows;
}

inline constexpr auto kRowsFast = pieceRows<Kel32f>(P1_F, P2_F, P3_F, kPoint2_F, kPoint3_F);
inline constexpr auto kRows32 = pieceRows<Kel64f>(P1_F, P2_F, P3_F, kPoint2_F, kPoint3_F);
inline constexpr auto kRows64 = pieceRows<Kel64f>(P1, P2, P3, kPoint2, kPoint3);

// The single-precision rule on vectors of T; polynomial(t, term) evaluates a piece.  The rows are a template argument
// because GCC 12 propagates them wrongly, with AVX-512, when they come as a function argument.
template <auto& rows, class T, class Polynomial>
[[gnu::always_inline]] inline Vec<T> logAddByPieces(const Vec<T>& a, const Vec<T>& b, Polynomial polynomial) {
    const Vec<T> m = greaterOf(b, a);
    const Vec<T> d = lesserOf(a, b) - m;
    const PieceChoice<T> choose(d, rows.point[1], rows.point[2]);
    const Vec<T> t = d - choose(rows.point);
    Vec<T> sum = m + polynomial(t, [&](std::size_t i) { return choose(rows.term[i]); });
    stdx::where(d < static_cast<T>(kLogAddCutOff32) || (a == b && d != d), sum) = greaterOf(Vec<T>(kLogZero32), m);
    return sum;
}

// All in single precision, by Horner's rule: it has the fewest operations.
inline Vec<Kel32f> logAddFast(const Vec<Kel32f>& a, const Vec<Kel32f>& b) {
    return logAddByPieces<kRowsFast>(a, b, [](const Vec<Kel32f>& t, auto term) {
        Vec<Kel32f> q = term(0);
        for (std::size_t i = 1; i < kTerms32; ++i) q = mulAdd(q, t, term(i));
        return q;
    });
}

// To the bit what logAdd(Kel32f, Kel32f) gives.
inline Vec<Kel32f> logAddAccurate(const Vec<Kel32f>& a, const Vec<Kel32f>& b) {
    const auto polynomial = [](const Vec<Kel64f>& t, auto term) { return polynomial32(t, term); };
    const auto [aLow, aHigh] = widen(a);
    const auto [bLow, bHigh] = widen(b);
    return narrow(logAddByPieces<kRows32>(aLow, bLow, polynomial), logAddByPieces<kRows32>(aHigh, bHigh, polynomial));
}

// The double-precision rule on blocks of pairs: as many chains of dependent operations at once as registers allow.
#if defined(__FMA__)
// Horner's rule is compensated: what its products and sums lose goes through the same rule into `lost`, and the result
// is as good as one in twice the working precision (Graillat, Langlois, Louvet, "Compensated Horner scheme", 2005).
class CompensatedPairs {
    using V = Vec<Kel64f>;

  public:
    CompensatedPairs(const V& a, const V& b)
        : m_(greaterOf(b, a)), d_(lesserOf(a, b), -m_), choose_(d_.sum, kPoint2, kPoint3) {
        ignored_ = d_.sum < kLogAddCutOff64 || (a == b && d_.sum != d_.sum);
        t_ = d_.sum - choose_(kRows64.point);  // exact: a point has few digits, and t is smaller than d
        q_ = choose_(kRows64.term[0]);
    }
    void step(std::size_t i) {
        const V product = q_ * t_;
        const V lostOfProduct = mulAdd(q_, d_.lost, mulAdd(q_, t_, -product));
        const TwoSum<V> next(product, choose_(kRows64.term[i]));
        lost_ = mulAdd(lost_, t_, next.lost + lostOfProduct);
        q_ = next.sum;
    }
    V result() const {
        const TwoSum<V> exact(m_, q_);
        V sum = exact.sum + (exact.lost + lost_);
        V larger = m_;
        stdx::where(m_ < kBelowIsLogZero64, larger) = kLogZero64;
        stdx::where(ignored_, sum) = larger;
        return sum;
    }

  private:
    V m_;
    TwoSum<V> d_;
    PieceChoice<Kel64f> choose_;
    V::mask_type ignored_;
    V t_, q_, lost_{0.0};
};

inline constexpr std::size_t kLogAddBlock = 2 * lanes<Kel64f>;

inline void logAddBlock(const Kel64f* src, Kel64f* srcDst) {
    constexpr std::size_t w = lanes<Kel64f>;
    CompensatedPairs first(load(src), load(srcDst)), second(load(src + w), load(srcDst + w));
    for (std::size_t i = 1; i < kTerms64; ++i) {
        first.step(i);
        second.step(i);
    }
    store(srcDst, first.result());
    store(srcDst + w, second.result());
}
#else
inline constexpr std::size_t kLogAddBlock = 4;

inline void logAddBlock(const Kel64f* src, Kel64f* srcDst) {
    ExtendedPair pair[] = {{src[0], srcDst[0]}, {src[1], srcDst[1]}, {src[2], srcDst[2]}, {src[3], srcDst[3]}};
    for (std::size_t i = 1; i < kTerms64; ++i) {
        for (auto& p : pair) p.step(i);
    }
    for (std::size_t k = 0; k < kLogAddBlock; ++k) srcDst[k] = pair[k].result();
}
#endif

}  // namespace kels::log
