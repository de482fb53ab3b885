// Sorting by a small key, so that what is alike is done together.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace kels {

// The numbers 0 .. count - 1 in the order of their keys, equal keys in their own order.
template <std::size_t MostItems, std::size_t MostKeys>
class ByKey {
  public:
    static constexpr std::size_t kMostItems = MostItems, kMostKeys = MostKeys;
    static_assert(MostItems <= 65536 && MostKeys <= 65536);

    // key(n) is below `keys`.
    template <class Key>
    void sort(std::size_t count, std::size_t keys, Key key) {
        std::fill_n(ends_, keys + 1, uint16_t{0});
        for (std::size_t n = 0; n < count; ++n) {
            keys_[n] = static_cast<uint16_t>(key(n));
            ++ends_[keys_[n] + 1];
        }
        for (std::size_t k = 1; k <= keys; ++k) ends_[k] = static_cast<uint16_t>(ends_[k] + ends_[k - 1]);
        for (std::size_t n = 0; n < count; ++n) order_[ends_[keys_[n]]++] = static_cast<uint16_t>(n);
    }
    std::size_t operator[](std::size_t i) const { return order_[i]; }
    // How many have keys up to k.
    std::size_t end(std::size_t k) const { return ends_[k]; }

  private:
    uint16_t keys_[MostItems], order_[MostItems];
    uint16_t ends_[MostKeys + 1];  // while sorting, of the keys before
};

}  // namespace kels
