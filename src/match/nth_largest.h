// The N-th largest element in linear time, by radix selection.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "kels/types.h"

namespace kels::rank {

template <class T>
using SortKey = std::conditional_t<sizeof(T) == 8, uint64_t, uint32_t>;

// An unsigned number for each value, in the order of the values, and back.
template <class T>
constexpr SortKey<T> sortKey(T v) {
    using U = SortKey<T>;
    constexpr U sign = U{1} << (8 * sizeof(U) - 1);
    const U bits = std::bit_cast<U>(v);
    if constexpr (std::is_integral_v<T>) return bits ^ sign;
    return bits ^ ((U{0} - (bits >> (8 * sizeof(U) - 1))) | sign);  // negative floats ascend as their bits descend
}
template <class T>
constexpr T fromSortKey(SortKey<T> key) {
    using U = SortKey<T>;
    constexpr U sign = U{1} << (8 * sizeof(U) - 1);
    if constexpr (std::is_integral_v<T>) return std::bit_cast<T>(key ^ sign);
    return std::bit_cast<T>((key & sign) != 0 ? key ^ sign : ~key);
}

// Each round splits the elements by the highest bits in which they differ, as many as there are elements to pay for the
// counters, and keeps the bin that holds the N-th.  A round costs as much as it has elements, and every round uses up
// at least five bits of the keys.
template <class T>
class NthLargest {
    using Key = SortKey<T>;

  public:
    // `scratch` has room for len keys.
    static T of(const T* src, std::size_t len, std::size_t n, Key* scratch) {
        for (std::size_t i = 0; i < len; ++i) scratch[i] = sortKey(src[i]);
        NthLargest rest{scratch, len, n};
        Key differing = rest.differingBits();
        while (differing != 0 && rest.len_ > kFew) {
            rest.keepBin(differing);
            differing = rest.differingBits();
        }
        return fromSortKey<T>(differing == 0 ? scratch[0] : rest.amongFew());
    }

  private:
    static constexpr std::size_t kFew = 32;
    static constexpr std::size_t kBlock = 16;
    static constexpr int kMostBits = 11;

    NthLargest(Key* keys, std::size_t len, std::size_t n) : keys_(keys), len_(len), n_(n) {}

    // All of them 0: equal keys.
    Key differingBits() const {
        Key differing = 0;
        for (std::size_t i = 1; i < len_; ++i) differing |= keys_[i] ^ keys_[0];
        return differing;
    }

    // Most blocks hold none of the bin, which vectors see at once.
    template <class Wanted>
    static bool anyInBlock(const Key* keys, Wanted wanted) {
        Key any = 0;
        for (std::size_t k = 0; k < kBlock; ++k) any |= wanted(keys[k]) ? 1 : 0;
        return any != 0;
    }

    void keepBin(Key differing) {
        const int bits = std::min(kMostBits, static_cast<int>(std::bit_width(len_)) - 1);
        const int shift = std::max(0, static_cast<int>(std::bit_width(differing)) - bits);
        const Key mask = (Key{1} << bits) - 1;
        const auto binOf = [=](Key key) { return (key >> shift) & mask; };

        uint32_t count[Key{1} << kMostBits];
        std::fill_n(count, std::size_t{1} << bits, 0u);
        for (std::size_t i = 0; i < len_; ++i) ++count[binOf(keys_[i])];
        Key bin = mask;
        for (; n_ >= count[bin]; --bin) n_ -= count[bin];

        std::size_t kept = 0;
        for (std::size_t i = 0; kept < count[bin]; i += kBlock) {
            const std::size_t end = std::min(i + kBlock, len_);
            if (end - i == kBlock && !anyInBlock(keys_ + i, [=](Key key) { return binOf(key) == bin; })) continue;
            for (std::size_t k = i; k < end; ++k) {
                const Key key = keys_[k];
                keys_[kept] = key;
                kept += binOf(key) == bin ? 1 : 0;
            }
        }
        len_ = kept;
    }

    // The key with no more than n_ above it, and more than n_ not below it.  Counting takes no branches.
    Key amongFew() const {
        for (std::size_t i = 0;; ++i) {
            Key above = 0, notBelow = 0;
            for (std::size_t k = 0; k < len_; ++k) {
                above += keys_[k] > keys_[i] ? 1 : 0;
                notBelow += keys_[k] >= keys_[i] ? 1 : 0;
            }
            if (above <= n_ && n_ < notBelow) return keys_[i];
        }
    }

    Key* keys_;
    std::size_t len_;
    std::size_t n_;
};

}  // namespace kels::rank
