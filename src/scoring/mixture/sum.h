// The score of one vector under a mixture, or under those of its components that a row of bits selects:
//
//     *pResult = mixtureScore<Term>(gaussians(pSrc, means, ivars), height, width, Half(ConstantOf{pDets}));
//
// names term, items and finish as score() in gauss_walk.h does.  The components are added up in their order, and every
// intermediate sum is rounded to the type of the score.
#pragma once

#include <cstddef>

#include "scoring/bit_table.h"
#include "scoring/gauss/walk.h"
#include "scoring/log/add.h"

namespace kels {

inline Kel32f logZero(Kel32f) {
    return kLogZero32;
}
inline Kel64f logZero(Kel64f) {
    return kLogZero64;
}

// The first score is taken as it is; the sum of none is the logarithm of zero.
template <class T>
class LogSum {
  public:
    void add(const T* scores, std::size_t n) {
        T sum = empty_ ? scores[0] : logAdd(sum_, scores[0]);
        for (std::size_t i = 1; i < n; ++i) sum = logAdd(sum, scores[i]);
        sum_ = sum;
        empty_ = false;
    }
    T value() const { return sum_; }

  private:
    T sum_ = logZero(T());
    bool empty_ = true;
};

template <class Term, class Items, class Finish>
typename Finish::Score mixtureScore(const Items& items, std::size_t count, std::size_t width, const Finish& finish) {
    using T = typename Finish::Score;
    LogSum<T> sum;
    score<Term>(items, count, width, finish, [&](std::size_t, const T* scores, std::size_t n) { sum.add(scores, n); });
    return sum.value();
}

// Some of the items, or of what belongs to them, in the order of a list of their numbers.
template <class Items>
struct Listed {
    const Items& items;
    const std::size_t* numbers;
    auto operator[](std::size_t i) const { return items[numbers[i]]; }
};

template <class Term, class Items, class Finish>
typename Finish::Score selectedScore(const Items& items, SetBits selected, std::size_t width, const Finish& finish) {
    using T = typename Finish::Score;
    constexpr std::size_t kBlock = 64;
    std::size_t numbers[kBlock];
    typename Term::Sum sums[kBlock];
    T scores[kBlock];
    LogSum<T> sum;
    while (const std::size_t n = selected.take(numbers, kBlock)) {
        sumsOf<Term>(Listed<Items>{items, numbers}, 0, n, width, sums);
        for (std::size_t i = 0; i < n; ++i) scores[i] = finish(numbers[i], sums[i]);
        sum.add(scores, n);
    }
    return sum.value();
}

}  // namespace kels
