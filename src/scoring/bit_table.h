// Tables of bits, eight to a byte with the most significant one first: bit p of a row is bit 7 - p % 8 of byte p / 8.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "kels/types.h"

namespace kels::scoring {

inline void toggleBit(Kel8u* row, std::size_t bit) {
    row[bit / 8] = static_cast<Kel8u>(row[bit / 8] ^ (0x80u >> (bit % 8)));
}

// ---- reading -------------------------------------------------------------------------------------------------------

// The numbers of the set bits among the `count` bits from bit `offset` of a row on, in ascending order.
class SetBits {
  public:
    SetBits(const Kel8u* row, std::size_t offset, std::size_t count)
        : row_(row), offset_(offset), at_(offset), end_(offset + count) {}

    // The next ones, `most` at the most; 0 when there are no more.
    std::size_t take(std::size_t* numbers, std::size_t most) {
        std::size_t n = 0;
        while (at_ < end_ && n < most) {
            const auto rest = static_cast<uint8_t>(row_[at_ / 8] << (at_ % 8));
            if (rest == 0) {
                at_ = at_ / 8 * 8 + 8;
                continue;
            }
            at_ += static_cast<std::size_t>(std::countl_zero(rest));
            if (at_ < end_) numbers[n++] = at_++ - offset_;
        }
        return n;
    }

  private:
    const Kel8u* row_;
    std::size_t offset_, at_, end_;
};

// ---- lists of numbers ----------------------------------------------------------------------------------------------

// How many numbers each list holds: the same in all of them, or an array of counts.
struct SameCount {
    int n;
    int operator[](std::size_t) const { return n; }
};

inline bool anyBelowOne(const Kel32s* counts, int n) {
    return std::any_of(counts, counts + n, [](Kel32s count) { return count < 1; });
}

// Lists that stand one behind the other: call(i, list, its length) for each of them; false as soon as a call gives
// false.
template <class Counts, class Call>
bool forEachList(const Kel32s* numbers, const Counts& counts, std::size_t lists, const Call& call) {
    for (std::size_t i = 0; i < lists; ++i) {
        const auto n = static_cast<std::size_t>(counts[i]);
        if (!call(i, numbers, n)) return false;
        numbers += n;
    }
    return true;
}

template <class Counts>
bool anyOutside(const Kel32s* numbers, const Counts& counts, std::size_t lists, Kel32s bound) {
    return !forEachList(numbers, counts, lists, [=](std::size_t, const Kel32s* list, std::size_t n) {
        return std::all_of(list, list + n, [=](Kel32s number) { return 0 <= number && number < bound; });
    });
}

// ---- shortlists ----------------------------------------------------------------------------------------------------

// Row i, bit offset + k is toggled for every k in list i.
template <class Counts>
void toggleInRows(const Kel32s* numbers, const Counts& counts, std::size_t lists, std::size_t offset, Kel8u** rows) {
    forEachList(numbers, counts, lists, [=](std::size_t i, const Kel32s* list, std::size_t n) {
        for (std::size_t k = 0; k < n; ++k) toggleBit(rows[i], offset + static_cast<std::size_t>(list[k]));
        return true;
    });
}

// Row k, bit offset + i is toggled for every k in list i.
template <class Counts>
void toggleInColumns(const Kel32s* numbers, const Counts& counts, std::size_t lists, std::size_t offset, Kel8u** rows) {
    forEachList(numbers, counts, lists, [=](std::size_t i, const Kel32s* list, std::size_t n) {
        for (std::size_t k = 0; k < n; ++k) toggleBit(rows[list[k]], offset + i);
        return true;
    });
}

// ---- sign tables ---------------------------------------------------------------------------------------------------

// dst, from its first bit on, |= the `width` bits of src from bit `offset` on; only bytes that hold one of them are
// read. The bits of dst's last byte that are too many take anything.
inline void orBits(const Kel8u* src, std::size_t offset, Kel8u* dst, std::size_t width) {
    src += offset / 8;
    const unsigned shift = offset % 8;
    const std::size_t bytes = (width + 7) / 8, last = (shift + width - 1) / 8;
    for (std::size_t b = 0; b < std::min(bytes, last); ++b) {
        dst[b] = static_cast<Kel8u>(dst[b] | (src[b] << shift) | (src[b + 1] >> (8 - shift)));
    }
    if (last < bytes) dst[last] = static_cast<Kel8u>(dst[last] | (src[last] << shift));
}

// Row i of dst, of whole bytes: the union of the rows of `shortlist` that list i names, from their bit `offset` on.
template <class Counts>
void uniteRows(const Kel32s* numbers, const Counts& counts, std::size_t lists, const Kel8u* const* shortlist,
               std::size_t offset, std::size_t width, Kel8u* dst) {
    const std::size_t bytes = (width + 7) / 8;
    const auto valid = static_cast<Kel8u>(0xff00u >> ((width - 1) % 8 + 1));  // in the last byte of a row
    forEachList(numbers, counts, lists, [=](std::size_t i, const Kel32s* list, std::size_t n) {
        Kel8u* const row = dst + i * bytes;
        std::fill_n(row, bytes, Kel8u{0});
        for (std::size_t k = 0; k < n; ++k) orBits(shortlist[list[k]], offset, row, width);
        row[bytes - 1] &= valid;
        return true;
    });
}

}  // namespace kels::scoring
