// The score of one vector under a mixture, or under those of its components that a row of bits selects:
//
//     *pResult = mixtureScore<Term>(gaussians(pSrc, means, ivars), height, width, Half(ConstantOf{pDets}));
//
// names term, items and finish as score() in scoring/gauss/walk.h does.  The components are added up in their order,
// and every intermediate sum is rounded to the type of the score.
#pragma once

#include <cstddef>

#include "scoring/bit_table.h"
#include "scoring/gauss/walk.h"
#include "scoring/log/add.h"

namespace kels::mixture {

using scoring::SetBits;

// What stands for the logarithm of zero.
template <class T>
inline constexpr T kLogZero = log::kLogZero32;
template <>
inline constexpr Kel64f kLogZero<Kel64f> = log::kLogZero64;

// The first score is taken as it is; the sum of none is the logarithm of zero.
template <class T>
class LogSum {
  public:
    void add(const T* scores, std::size_t n) {
        T sum = empty_ ? scores[0] : log::logAdd(sum_, scores[0]);
        for (std::size_t i = 1; i < n; ++i) sum = log::logAdd(sum, scores[i]);
        sum_ = sum;
        empty_ = false;
    }
    T value() const { return sum_; }

  private:
    T sum_ = kLogZero<T>;
    bool empty_ = true;
};

// All of `count` components.
template <class Term, class Items, class Finish>
typename Finish::Score mixtureScore(const Items& items, std::size_t count, std::size_t width, const Finish& finish) {
    using T = typename Finish::Score;
    LogSum<T> sum;
    const auto add = [&](std::size_t, const T* scores, std::size_t n) { sum.add(scores, n); };
    gauss::score<Term>(items, count, width, finish, add);
    return sum.value();
}

// Some of the items, in the order of a list of their numbers.
template <class Items>
struct Listed {
    const Items& items;
    const std::size_t* numbers;
    auto operator[](std::size_t i) const { return items[numbers[i]]; }
};

// The components whose bits are set.
template <class Term, class Items, class Finish>
typename Finish::Score selectedScore(const Items& items, SetBits selected, std::size_t width, const Finish& finish) {
    using T = typename Finish::Score;
    constexpr std::size_t kBlock = 64;
    std::size_t numbers[kBlock];
    typename Term::Sum sums[kBlock];
    T scores[kBlock];
    LogSum<T> sum;
    while (const std::size_t n = selected.take(numbers, kBlock)) {
        gauss::sumsOf<Term>(Listed<Items>{items, numbers}, 0, n, width, sums);
        for (std::size_t i = 0; i < n; ++i) scores[i] = finish(numbers[i], sums[i]);
        sum.add(scores, n);
    }
    return sum.value();
}

}  // namespace kels::mixture
