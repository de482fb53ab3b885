// Rows quantised in parts, one codebook each, and put together again; how their indices are stored.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "training/codebook/search.h"

namespace kels {

// ---- index layouts -------------------------------------------------------------------------------------------------
// A row has places, counted in elements or in bits; a codebook's index takes `places` of them.

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

// ---- checks --------------------------------------------------------------------------------------------------------

template <class Record>
bool anyNullOf(Record* const* codebooks, int n) {
    return std::any_of(codebooks, codebooks + std::max(n, 0), isNull<Record>);
}

template <class Record>
int64_t widthOf(Record* const* codebooks, int n) {
    int64_t width = 0;
    for (int k = 0; k < n; ++k) width += codebooks[k]->width;
    return width;
}

// Whether rows of `step` places have those of all codebooks.
template <class Layout, class Record>
bool havePlaces(Record* const* codebooks, int n, int step) {
    int64_t places = 0;
    for (int k = 0; k < n; ++k) {
        const int some = Layout::places(*codebooks[k]);
        if (some < 0 || some > 31) return false;  // a record in caller memory may hold anything there
        places += some;
    }
    return places <= step;
}

// Whether every index of all codebooks fits into its places.
template <class Layout, class Record>
bool holdIndices(Record* const* codebooks, int n) {
    return std::all_of(codebooks, codebooks + n, [](const Record* codebook) { return Layout::holds(*codebook); });
}

// ---- kernels -------------------------------------------------------------------------------------------------------

template <class T, class Layout>
KelStatus quantiseParts(const StepRows<const T>& rows, int height, Codebook<T>* const* codebooks, int n,
                        const Layout& layout) {
    constexpr int kChunk = 256;
    Kel32s indices[kChunk];
    layout.clear(height);
    for (int first = 0; first < height; first += kChunk) {
        const int some = std::min(kChunk, height - first);
        std::ptrdiff_t column = 0;
        int64_t place = 0;
        for (int k = 0; k < n; ++k) {
            const Codebook<T>& codebook = *codebooks[k];
            const KelStatus status = quantise<T>(codebook, rows.from(first, column), toSize(some), indices);
            if (status != kelStatusOk) return status;
            const int places = Layout::places(codebook);
            for (int i = 0; i < some; ++i) layout.put(first + i, place, places, indices[i]);
            column += codebook.width;
            place += places;
        }
        if (first > std::numeric_limits<int>::max() - kChunk) break;
    }
    return kelStatusOk;
}

template <class T, class Layout>
bool haveAllIndices(int height, Codebook<T>* const* codebooks, int n, const Layout& layout) {
    for (int row = 0; row < height; ++row) {
        int64_t place = 0;
        for (int k = 0; k < n; ++k) {
            const int places = Layout::places(*codebooks[k]);
            const Kel32s index = layout.get(row, place, places);
            if (index < 0 || index >= codebooks[k]->cdbkSize) return false;
            place += places;
        }
    }
    return true;
}

template <class T, class Layout>
void joinParts(const Layout& layout, int height, Codebook<T>* const* codebooks, int n, const StepRows<T>& rows) {
    for (int row = 0; row < height; ++row) {
        int64_t place = 0;
        T* dst = rows[row];
        for (int k = 0; k < n; ++k) {
            const Codebook<T>& codebook = *codebooks[k];
            const int places = Layout::places(codebook);
            const T* const part = codevectorsOf(codebook)[layout.get(row, place, places)];
            dst = std::copy(part, part + codebook.width, dst);
            place += places;
        }
    }
}

}  // namespace kels
