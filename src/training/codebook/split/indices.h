// How the indices of quantised rows are stored: each in an element of its own, or packed bit by bit.
//
// A row has places, counted in elements or in bits; a codebook's index takes `places` of them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "training/codebook/codebook.h"

namespace kels::codebook {

template <class I>
struct WholeIndices {
    using Element = I;
    I* base;
    std::ptrdiff_t step;

    template <class Record>
    static int places(const Record&) {
        return 1;
    }
    template <class Record>
    static bool holds(const Record& codebook) {
        return codebook.cdbkSize - 1 <= std::numeric_limits<std::remove_const_t<I>>::max();
    }
    void clear(int) const {}
    void put(int row, int64_t place, int, Kel32s index) const {
        base[row * step + static_cast<std::ptrdiff_t>(place)] = static_cast<I>(index);
    }
    Kel32s get(int row, int64_t place, int) const { return base[row * step + static_cast<std::ptrdiff_t>(place)]; }
};

// The most significant bit of a byte is its first one.
template <class I>
struct PackedIndices {
    using Element = I;
    I* base;
    int64_t step;

    template <class Record>
    static int places(const Record& codebook) {
        return codebook.indexBits;
    }
    template <class Record>
    static bool holds(const Record& codebook) {
        return codebook.indexBits >= indexBitsOf(codebook.cdbkSize);
    }
    void clear(int height) const { std::fill(base, base + (height * step + 7) / 8, I(0)); }

    void put(int row, int64_t place, int bits, Kel32s index) const {
        byBytes(row * step + place, bits, [&](I& byte, int shift, int mask, int rest) {
            byte = static_cast<I>(byte | ((index >> rest) & mask) << shift);
        });
    }
    Kel32s get(int row, int64_t place, int bits) const {
        Kel32s index = 0;
        byBytes(row * step + place, bits,
                [&](const I& byte, int shift, int mask, int rest) { index |= ((byte >> shift) & mask) << rest; });
        return index;
    }

  private:
    // The pieces of a field: a byte's bits `mask` from `shift` on are those of the field from `rest` on.
    template <class Piece>
    void byBytes(int64_t position, int bits, Piece piece) const {
        while (bits > 0) {
            const int room = 8 - static_cast<int>(position % 8);
            const int some = std::min(room, bits);
            piece(base[position / 8], room - some, (1 << some) - 1, bits - some);
            position += some;
            bits -= some;
        }
    }
};

}  // namespace kels::codebook
