// The orders in which functions on rows that are quantised in parts look for faults.
#pragma once

#include <algorithm>
#include <cstdint>

#include "training/codebook/check.h"

namespace kels::codebook {

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
template <class Indices, class Record>
bool havePlaces(Record* const* codebooks, int n, int step) {
    int64_t places = 0;
    for (int k = 0; k < n; ++k) {
        const int some = Indices::places(*codebooks[k]);
        if (some < 0 || some > 31) return false;  // not written in a float codebook in memory of the caller
        places += some;
    }
    return places <= step;
}

// Whether every index of all codebooks fits into its places.
template <class Indices, class Record>
bool holdIndices(Record* const* codebooks, int n) {
    return std::all_of(codebooks, codebooks + n, [](const Record* codebook) { return Indices::holds(*codebook); });
}

// Whether every index names a codevector.
template <class Indices, class Record>
bool haveAllIndices(int height, Record* const* codebooks, int n, const Indices& stored) {
    for (int row = 0; row < height; ++row) {
        int64_t place = 0;
        for (int k = 0; k < n; ++k) {
            const int places = Indices::places(*codebooks[k]);
            const Kel32s index = stored.get(row, place, places);
            if (index < 0 || index >= codebooks[k]->cdbkSize) return false;
            place += places;
        }
    }
    return true;
}

// Of a function between rows of vectors and rows of their indices, in either direction.
template <class Indices, class T, class I, class Record>
KelStatus partsFault(const T* vectors, int step, const I* indices, int indexStep, int height, Record* const* codebooks,
                     int n) {
    if (anyNull(vectors, indices, codebooks) || anyNullOf(codebooks, n)) return kelStatusNullPtr;
    if (step < 1 || indexStep < 1 || height < 1 || n < 1) return kelStatusSize;
    if (widthOf(codebooks, n) > step || !havePlaces<Indices>(codebooks, n, indexStep)) return kelStatusSize;
    return kelStatusOk;
}

}  // namespace kels::codebook
