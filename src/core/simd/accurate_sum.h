// Sums and dot products that lose no more than an 80-bit accumulator would.
//
// Results of type float come from a plain double sum whose error is bounded at the same time: where every value within
// the bound rounds to the same float, that float is the exact sum rounded once.  Where it does not (the terms cancel),
// and for results of type double, the sum is compensated: Knuth's two-sum keeps the error of each addition, Dekker's
// and Kahan's product by fused multiply-add the error of each product (Ogita, Rump, Oishi, "Accurate Sum and Dot
// Product", SIAM J. Sci. Comput. 26(6), 2005).
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "core/simd/part_vector.h"
#include "core/simd/vec.h"
#include "kels/types.h"

namespace kels {

using Wide = Vec<Kel64f>;
inline constexpr std::size_t kWide = lanes<Kel64f>;

// What is summed, element i exact as a double: the elements of an array...
template <class T>
struct Elements {
    const T* x;
    Wide at(std::size_t i) const { return loadWide(x + i); }
    Kel64f one(std::size_t i) const { return x[i]; }
    long double extended(std::size_t i) const { return x[i]; }
    template <class Part>
    Wide at(std::size_t i, const Part& part) const {
        return part.loadWide(x + i);
    }
    Vec<T> rough(std::size_t i) const { return magnitude(load(x + i)); }
};

// ... or the products of two arrays of floats.
struct FloatProducts {
    const Kel32f *x, *y;
    Wide at(std::size_t i) const { return loadWide(x + i) * loadWide(y + i); }
    Kel64f one(std::size_t i) const { return Kel64f{x[i]} * y[i]; }
    long double extended(std::size_t i) const { return static_cast<long double>(x[i]) * y[i]; }
    template <class Part>
    Wide at(std::size_t i, const Part& part) const {
        return part.loadWide(x + i) * part.loadWide(y + i);
    }
    Vec<Kel32f> rough(std::size_t i) const { return magnitude(load(x + i) * load(y + i)); }
};

// Products of doubles are not exact as doubles.
struct DoubleProducts {
    const Kel64f *x, *y;
    long double extended(std::size_t i) const { return static_cast<long double>(x[i]) * y[i]; }
};

// The lanes of a vector added in extended precision.
inline long double extendedSum(const Wide& v) {
    long double sum = 0;
    for (std::size_t i = 0; i < kWide; ++i) sum += static_cast<Kel64f>(v[i]);
    return sum;
}

template <class Terms>
long double plainExtendedSum(Terms terms, std::size_t len) {
    long double sum[4] = {0, 0, 0, 0};
    std::size_t i = 0;
    for (; i + 4 <= len; i += 4) {
        for (std::size_t k = 0; k < 4; ++k) sum[k] += terms.extended(i + k);
    }
    for (; i < len; ++i) sum[0] += terms.extended(i);
    return (sum[0] + sum[1]) + (sum[2] + sum[3]);
}

// A running sum in each lane and what the additions lost.
class CompensatedLanes {
  public:
    void add(const Wide& x) {
        const TwoSum next(sum_, x);
        sum_ = next.sum;
        lost_ += next.lost;
    }
    void addLost(const Wide& x) { lost_ += x; }
    void add(const CompensatedLanes& other) {
        add(other.sum_);
        addLost(other.lost_);
    }
    long double total() const { return extendedSum(sum_) + stdx::reduce(lost_); }

  private:
    Wide sum_{0.0}, lost_{0.0};
};

// addBlock(lanes, i) adds kWide terms from i on; the rest is added in extended precision.
template <class Terms, class AddBlock>
long double compensatedWalk(Terms terms, std::size_t len, AddBlock addBlock) {
    CompensatedLanes a, b;
    std::size_t i = 0;
    for (; i + 2 * kWide <= len; i += 2 * kWide) {
        addBlock(a, i);
        addBlock(b, i + kWide);
    }
    long double rest = 0;
    for (; i < len; ++i) rest += terms.extended(i);
    a.add(b);
    const long double sum = a.total() + rest;
    // Compensation turns an infinity, also one that only a double meets on the way, into NaN.
    return std::isfinite(sum) ? sum : plainExtendedSum(terms, len);
}

template <class Terms>
long double extendedSum(Terms terms, std::size_t len) {
    return compensatedWalk(terms, len, [=](CompensatedLanes& sum, std::size_t i) { sum.add(terms.at(i)); });
}

inline long double extendedSum(DoubleProducts terms, std::size_t len) {
    // Without a fused multiply-add the error of a product costs 17 operations: more than the x87 unit's sum does.
    if constexpr (!kFusedMulAdd) return plainExtendedSum(terms, len);
    return compensatedWalk(terms, len, [=](CompensatedLanes& sum, std::size_t i) {
        const Wide x = load(terms.x + i), y = load(terms.y + i);
        const Wide product = x * y;
        sum.add(product);
        sum.addLost(mulAdd(x, y, -product));
    });
}

// The exact sum of float terms rounded once to float, or what extended precision gives where that cannot be shown.
// Inlined, because terms passed by value would go through memory and stall short sums.
template <class Terms>
[[gnu::always_inline]] inline Kel32f roundedSum(Terms terms, std::size_t len) {
    constexpr std::size_t kBlock = 4096;
    constexpr std::size_t kRound = 4 * kWide;  // elements a round, in four accumulators
    static_assert(kRound == 2 * lanes<Kel32f>);
    Kel64f sum = 0;
    Kel64f magnitudes = 0;  // of all terms, but for the slack below
    Wide last(0.0), lastMagnitudes(0.0);
    std::size_t i = 0;
    while (i + kRound <= len) {
        const std::size_t end = i + std::min(kBlock, (len - i) / kRound * kRound);
        Wide s0(0.0), s1(0.0), s2(0.0), s3(0.0);
        Vec<Kel32f> m0(0.0f), m1(0.0f);
        for (; i < end; i += kRound) {
            s0 += terms.at(i);
            s1 += terms.at(i + kWide);
            m0 += terms.rough(i);
            s2 += terms.at(i + 2 * kWide);
            s3 += terms.at(i + 3 * kWide);
            m1 += terms.rough(i + 2 * kWide);
        }
        sum += stdx::reduce((s0 + s1) + (s2 + s3));
        magnitudes += stdx::reduce(m0 + m1);
    }
    for (; i + kWide <= len; i += kWide) {
        last += terms.at(i);
        lastMagnitudes += magnitude(terms.at(i));
    }
    if constexpr (kWide > 4) {  // up to three elements are added sooner one by one
        if (i < len) {
            const Wide rest = terms.at(i, PartVector(len - i));
            last += rest;
            lastMagnitudes += magnitude(rest);
            i = len;
        }
    }
    if (len >= kWide || i == len) {
        sum += stdx::reduce(last);
        magnitudes += stdx::reduce(lastMagnitudes);
    }
    for (; i < len; ++i) {
        sum += terms.one(i);
        magnitudes += std::fabs(terms.one(i));
    }
    // No term passes through more than kBlock / kRound additions in its block, one for each block, and a few dozen for
    // the reductions and the rest; each is wrong by at most 2^-53 of what has been summed.  The single-precision
    // magnitudes are low by less than a thousandth, and by 2^-126 for a product that underflows.
    const auto n = static_cast<Kel64f>(len);
    const Kel64f depth = n * (1.0 / kBlock) + kBlock / kRound + 40;
    const Kel64f bound = (1.01 * magnitudes + n * 0x1p-126) * depth * 0x1p-53;
    const auto low = static_cast<Kel32f>(sum - bound);
    const auto high = static_cast<Kel32f>(sum + bound);
    return low == high ? low : static_cast<Kel32f>(extendedSum(terms, len));
}

// Single-precision blocks, added up in extended precision.
inline Kel32f fastSum(const Kel32f* src, std::size_t len) {
    constexpr std::size_t kBlock = 32768;
    constexpr std::size_t w = lanes<Kel32f>;
    long double sum = 0;
    std::size_t i = 0;
    while (i + 4 * w <= len) {
        const std::size_t end = i + std::min(kBlock, (len - i) / (4 * w) * (4 * w));
        Vec<Kel32f> s0(0.0f), s1(0.0f), s2(0.0f), s3(0.0f);
        for (; i < end; i += 4 * w) {
            s0 += load(src + i);
            s1 += load(src + i + w);
            s2 += load(src + i + 2 * w);
            s3 += load(src + i + 3 * w);
        }
        sum += stdx::reduce((s0 + s1) + (s2 + s3));
    }
    Vec<Kel32f> rest(0.0f);
    for (; i + w <= len; i += w) rest += load(src + i);
    if (i < len) rest += loadPart(src + i, len - i);
    return static_cast<Kel32f>(sum + stdx::reduce(rest));
}

}  // namespace kels
