// ln(e^a + e^b) without a logarithm or an exponential: the larger operand plus ln(1 + e^d), where d <= 0 is the
// difference of the operands and the second term one of three polynomials in d less the piece's expansion point.
#pragma once

#include <algorithm>
#include <cstddef>

#include "core/simd/vec.h"
#include "core/simd/pieces.h"
#include "kels/types.h"

namespace kels {

// ---- constants -----------------------------------------------------------------------------------------------------

// What stands for the logarithm of zero.
inline constexpr Kel32f kLogZero32 = -4500000.0f;
inline constexpr Kel64f kLogZero64 = -1e10;
inline constexpr Kel64f kBelowIsLogZero64 = -9e9;

// Below this difference the smaller operand is ignored: e^d < 2.3e-7 in single precision, 1e-10 in double.
inline constexpr Kel64f kLogAddCutOff32 = -15.3195879547406;
inline constexpr Kel64f kLogAddCutOff64 = -23.0258509299405;

// The polynomials, highest power first; the last value is the function at the expansion point.
inline constexpr std::size_t kTerms32 = 11, kTerms64 = 22;

// clang-format off
// The first piece is expanded about 0 and ends where the second one begins, which is its expansion point, and so on.
inline constexpr Kel64f kPoint2_F = -2.55, kPoint3_F = -6.8;
inline constexpr Kel64f P1_F[kTerms32] = {
    -6.780103715801104e-07, -8.27710395983359e-06, -3.1261214564328406e-05, 2.1955075181092877e-05,
    0.0004062108907165097, 6.910012478334781e-05, -0.005163737400850404, 1.5878560708463796e-05,
    0.125002818406354, 0.5000001923981635, 0.6931471827215062};
inline constexpr Kel64f P2_F[kTerms32] = {
    -7.083237702375219e-09, -1.8491608098957698e-07, -2.094649399521823e-06, -1.2793327302109763e-05,
    -3.4842057389070787e-05, 0.00010764583059022215, 0.0016847989052690858, 0.009582361774741538,
    0.033592464138937767, 0.07242669818681209, 0.07518323027822499};
inline constexpr Kel64f P3_F[kTerms32] = {
    6.536044962123068e-12, 3.4510675551141127e-10, 8.230386128280675e-09, 1.183290602139997e-07,
    1.157908356720776e-06, 8.25762745567427e-06, 4.458031414389642e-05, 0.00018342101716467817,
    0.0005549481290265323, 0.0011123966452324845, 0.0011131507706311817};

inline constexpr Kel64f kPoint2 = -3.5, kPoint3 = -9.0;
inline constexpr Kel64f P1[kTerms64] = {
    2.4223551556971103e-14, 1.2811707930131747e-12, 2.979508062290527e-11, 4.091290155130968e-10,
    3.717428002038248e-09, 2.3532270503994952e-08, 1.055613856863438e-07, 3.320992500314504e-07,
    7.091358966640867e-07, 1.0406444519836742e-06, 1.6353412792505214e-06, 3.844457955118119e-06,
    1.3867656181255913e-06, -2.5487163524155248e-05, 4.065812849423804e-07, 0.0003473626701744988,
    3.4289110129737e-08, -0.005208327741081266, 5.587714108476228e-10, 0.12500000002958675,
    0.5000000000006226, 0.6931471805599475};
inline constexpr Kel64f P2[kTerms64] = {
    1.3708407243051937e-19, 9.601624129865304e-18, 3.191870701452749e-16, 6.702281854356589e-15,
    9.973092519816427e-14, 1.1165229253200852e-12, 9.711578249998531e-12, 6.632489267913665e-11,
    3.487750749690926e-10, 1.277933984587361e-09, 1.6292813548790022e-09, -1.909513758655842e-08,
    -1.8820558187982419e-07, -9.461042535100208e-07, -2.209235331735495e-06, 9.625041106025868e-06,
    0.00014699683220535022, 0.0009831490265710303, 0.004464163447126563, 0.014226511939950807,
    0.0293122307513593, 0.02975041827262059};
inline constexpr Kel64f P3[kTerms64] = {
    1.7034225392923792e-27, 3.0781354635598557e-25, 2.6542272637469554e-23, 1.4576061250276504e-21,
    5.745038767733748e-20, 1.73794899924144e-18, 4.217783891653166e-17, 8.4810302862868775e-16,
    1.4486369363407485e-14, 2.1432698000428128e-13, 2.7867099954008822e-12, 3.2140356172044866e-11,
    3.300948845025808e-10, 3.0140517373824124e-09, 2.4295529030919333e-08, 1.7072955802867207e-07,
    1.0263887628748916e-06, 5.137002703123242e-06, 2.0558151089723745e-05, 6.168967511733263e-05,
    0.00012339457601536868, 0.00012340218972425103};
// clang-format on

// The tables for those who evaluate the pieces themselves.
inline void GetLogAddConst_F(const Kel64f** p1, const Kel64f** p2, const Kel64f** p3) {
    *p1 = P1_F;
    *p2 = P2_F;
    *p3 = P3_F;
}
inline void GetLogAddConst(const Kel64f** p1, const Kel64f** p2, const Kel64f** p3) {
    *p1 = P1;
    *p2 = P2;
    *p3 = P3;
}

// ---- one pair ------------------------------------------------------------------------------------------------------

// A single value that the smaller operand does not change, and one in double precision.
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
[[gnu::always_inline]] inline Vec<T> logAddLanes(const Vec<T>& a, const Vec<T>& b, Polynomial polynomial) {
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
    return logAddLanes<kRowsFast>(a, b, [](const Vec<Kel32f>& t, auto term) {
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
    return narrow(logAddLanes<kRows32>(aLow, bLow, polynomial), logAddLanes<kRows32>(aHigh, bHigh, polynomial));
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
        V held = m_;
        stdx::where(m_ < kBelowIsLogZero64, held) = kLogZero64;
        stdx::where(ignored_, sum) = held;
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

}  // namespace kels
