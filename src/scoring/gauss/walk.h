// The walk over many vectors or many Gaussians, and how a scorer is named.
//
// Every score of a diagonal Gaussian in this library is one call
//
//     score<Term>(items, count, width, finish, fold);
//
// that names four independent choices:
//
//   term     terms.h: SinglePrecision<InverseVariance>, Exact<UnitVariance>, Extended<InverseVariance>, ...
//   items    which rows item g = 0, 1, ... count - 1 is made of:
//              frames(rows, mean, ivar)       vector rows[g] against one Gaussian
//              frames(rows, mean)             the same with unit variances
//              gaussians(src, means, ivars)   one vector against the Gaussian of rows means[g] and ivars[g]
//              gaussians(src, means)          the same with unit variances
//            rows, means and ivars are StepRows or PointerRows.  Anything whose operator[](g) gives an Item<T> will do,
//            for example the Gaussians of a shortlist.
//   finish   finish.h: Half(SameConstant{gConst}), HalfScaled(ConstantOf{pDets}, scaleFactor),
//            HalfShifted(Saturated(), SameConstant{gConst}, scaleFactor), Distance<Kel32f>(), ...
//   fold     finish.h: StoreTo{pResult}, MaxWith{pSrcDst}, or a fold of the caller's own
//
// For example, the running maximum over frames of 16-bit vectors under one Gaussian:
//
//     score<SinglePrecision<InverseVariance>>(frames(StepRows(pSrc, step), pMean, pIvar), toSize(height),
//                                             toSize(width), HalfScaled(SameConstant{gConst}, scaleFactor),
//                                             MaxWith{pSrcDst});
//
// Items are taken four at a time: what the four have in common is loaded once, and their sums are folded together.  The
// sums of a block of items are all there before the first of them is finished, so finish and fold are loops of their
// own.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "core/check.h"
#include "core/rows.h"
#include "core/simd/part_vector.h"
#include "core/simd/row_sums.h"
#include "core/simd/vec.h"
#include "scoring/gauss/finish.h"
#include "scoring/gauss/terms.h"

namespace kels::gauss {

// ---- items ---------------------------------------------------------------------------------------------------------

template <class Rows, class T>
struct Frames {
    Rows rows;
    const T *mean, *variance;
    Item<T> operator[](std::size_t g) const { return {rows[static_cast<std::ptrdiff_t>(g)], mean, variance}; }
};
template <class Rows, class T>
Frames<Rows, T> frames(const Rows& rows, const T* mean, const T* variance = nullptr) {
    return {rows, mean, variance};
}

template <class Rows, class T>
struct Gaussians {
    const T* vector;
    Rows means, variances;
    Item<T> operator[](std::size_t g) const {
        return {vector, means[static_cast<std::ptrdiff_t>(g)], variances[static_cast<std::ptrdiff_t>(g)]};
    }
};
template <class Rows, class T>
Gaussians<Rows, T> gaussians(const T* vector, const Rows& means, const Rows& variances) {
    return {vector, means, variances};
}

template <class Rows, class T>
struct UnitGaussians {
    const T* vector;
    Rows means;
    Item<T> operator[](std::size_t g) const { return {vector, means[static_cast<std::ptrdiff_t>(g)], nullptr}; }
};
template <class Rows, class T>
UnitGaussians<Rows, T> gaussians(const T* vector, const Rows& means) {
    return {vector, means};
}

// ---- sums ----------------------------------------------------------------------------------------------------------

// The sums of four items over elements i .. end - 1, at most Term::kRun of them; `rest` loads the last ones, which fill
// no step.  The four running sums are written as a pack, so that the compiler keeps them in registers.
template <class Term, class T, std::size_t... I>
[[gnu::always_inline]] inline std::array<typename Term::Sum, 4> runOf4(const std::array<Item<T>, 4>& items,
                                                                       std::size_t i, std::size_t end,
                                                                       const PartVector& rest,
                                                                       std::index_sequence<I...>) {
    typename Term::Partial sums[] = {(void(I), Term::zero())...};
    for (; i + Term::kStep <= end; i += Term::kStep) ((sums[I] = Term::add(sums[I], WholeVector(), items[I], i)), ...);
    if (i < end) ((sums[I] = Term::add(sums[I], rest, items[I], i)), ...);
    return Term::totals(sums[I]...);
}

// The same for one item, in four running sums.
template <class Term, class T, std::size_t... I>
[[gnu::always_inline]] inline typename Term::Sum runOf1(const Item<T>& item, std::size_t i, std::size_t end,
                                                        std::index_sequence<I...>) {
    constexpr std::size_t w = Term::kStep;
    typename Term::Partial sums[] = {(void(I), Term::zero())...};
    for (; i + 4 * w <= end; i += 4 * w) ((sums[I] = Term::add(sums[I], WholeVector(), item, i + I * w)), ...);
    for (; i + w <= end; i += w) sums[0] = Term::add(sums[0], WholeVector(), item, i);
    if (i < end) sums[1] = Term::add(sums[1], PartVector(end - i, i), item, i);
    return Term::total(sums[I]...);
}

// Integers wrap around, which takes sums over far more than 60000 elements.
inline int64_t sumOf(int64_t a, int64_t b) {
    return static_cast<int64_t>(static_cast<uint64_t>(a) + static_cast<uint64_t>(b));
}
template <class Sum>
Sum sumOf(Sum a, Sum b) {
    return a + b;
}

template <class Term, class T>
[[gnu::always_inline]] inline std::array<typename Term::Sum, 4> sumsOf4(const std::array<Item<T>, 4>& items,
                                                                        std::size_t width, const PartVector& rest) {
    constexpr std::make_index_sequence<4> four;
    auto sums = runOf4<Term>(items, 0, std::min(width, Term::kRun), rest, four);
    for (std::size_t i = Term::kRun; i < width; i += Term::kRun) {
        const auto more = runOf4<Term>(items, i, std::min(width, i + Term::kRun), rest, four);
        for (std::size_t k = 0; k < 4; ++k) sums[k] = sumOf(sums[k], more[k]);
    }
    return sums;
}

template <class Term, class T>
typename Term::Sum sumOf1(const Item<T>& item, std::size_t width) {
    constexpr std::make_index_sequence<4> four;
    auto sum = runOf1<Term>(item, 0, std::min(width, Term::kRun), four);
    for (std::size_t i = Term::kRun; i < width; i += Term::kRun) {
        sum = sumOf(sum, runOf1<Term>(item, i, std::min(width, i + Term::kRun), four));
    }
    return sum;
}

// The sums of n items from `first` on.  One copy for all finishes and folds; the items are passed by value, so that
// the compiler sees what four of them share.
template <class Term, class Items>
[[gnu::noinline]] void sumsOf(const Items items, std::size_t first, std::size_t n, std::size_t width,
                              typename Term::Sum* sums) {
    const PartVector rest(width % Term::kStep, width / Term::kStep * Term::kStep);
    std::size_t g = 0;
    for (; g + 4 <= n; g += 4) {
        const std::size_t at = first + g;
        const std::array four = {items[at], items[at + 1], items[at + 2], items[at + 3]};
        const auto totals = sumsOf4<Term>(four, width, rest);
        std::copy(totals.begin(), totals.end(), sums + g);
    }
    for (; g < n; ++g) sums[g] = sumOf1<Term>(items[first + g], width);
}

// ---- scores --------------------------------------------------------------------------------------------------------

// The score of item g from its sum, or from its sum by the Fallback where Term cannot give it.
template <class Term, class T, class Finish>
typename Finish::Score scoreFrom(const typename Term::Sum& sum, const Item<T>& item, std::size_t g, std::size_t width,
                                 const Finish& finish) {
    const auto score = finish(g, sum);
    if constexpr (requires { typename Term::Fallback; }) {
        if (!Term::trusted(sum, score)) return finish(g, sumOf1<typename Term::Fallback>(item, width));
    }
    return score;
}

// Scores `count` items of `width` elements each.
template <class Term, class Items, class Finish, class Fold>
void score(const Items& items, std::size_t count, std::size_t width, const Finish& finish, const Fold& fold) {
    constexpr std::size_t kBlock = 64;
    typename Term::Sum sums[kBlock];
    typename Finish::Score scores[kBlock];
    for (std::size_t first = 0; first < count; first += kBlock) {
        const std::size_t n = std::min(kBlock, count - first);
        sumsOf<Term>(items, first, n, width, sums);
        for (std::size_t i = 0; i < n; ++i) {
            scores[i] = scoreFrom<Term>(sums[i], items[first + i], first + i, width, finish);
        }
        fold(first, scores, n);
    }
}

// One vector and one Gaussian.
template <class Term, class T, class Finish>
typename Finish::Score scoreOf(const Item<T>& item, std::size_t width, const Finish& finish) {
    return scoreFrom<Term>(sumOf1<Term>(item, width), item, 0, width, finish);
}

}  // namespace kels::gauss
