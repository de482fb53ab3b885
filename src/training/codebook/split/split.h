// Rows quantised in parts, one codebook each, and put together again.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "training/codebook/search.h"

namespace kels::codebook {

// Quantises each part of each row with its codebook and stores the indices.  All memory is taken before anything is
// stored.
template <class T, class Indices>
KelStatus quantiseParts(const StepRows<const T>& rows, int height, Codebook<T>* const* codebooks, int n,
                        const Indices& stored) {
    constexpr int kChunk = 256;
    Kel32s indices[kChunk];
    int widest = 0;
    for (int k = 0; k < n; ++k) widest = std::max(widest, turnedWidth<T>(*codebooks[k]));
    TurnedVectors<T> turned(widest);
    if (turned.failed()) return kelStatusNoMemory;
    stored.clear(height);
    for (int first = 0; first < height; first += kChunk) {
        const int some = std::min(kChunk, height - first);
        std::ptrdiff_t column = 0;
        int64_t place = 0;
        for (int k = 0; k < n; ++k) {
            const Codebook<T>& codebook = *codebooks[k];
            quantise<T>(codebook, rows.from(first, column), toSize(some), indices, turned);
            const int places = Indices::places(codebook);
            for (int i = 0; i < some; ++i) stored.put(first + i, place, places, indices[i]);
            column += codebook.width;
            place += places;
        }
        if (first > std::numeric_limits<int>::max() - kChunk) break;
    }
    return kelStatusOk;
}

// The inverse: rows of the codevectors that the indices name.
template <class T, class Indices>
void joinParts(const Indices& stored, int height, Codebook<T>* const* codebooks, int n, const StepRows<T>& rows) {
    for (int row = 0; row < height; ++row) {
        int64_t place = 0;
        T* dst = rows[row];
        for (int k = 0; k < n; ++k) {
            const Codebook<T>& codebook = *codebooks[k];
            const int places = Indices::places(codebook);
            const T* const part = codevectorsOf(codebook)[stored.get(row, place, places)];
            dst = std::copy(part, part + codebook.width, dst);
            place += places;
        }
    }
}

}  // namespace kels::codebook
