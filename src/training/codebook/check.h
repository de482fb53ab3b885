// The orders in which functions on codebooks look for faults.
#pragma once

#include <algorithm>

#include "core/check.h"
#include "kels/vq.h"

namespace kels::codebook {

// A codebook without codevectors is none.
template <class Record>
bool isNull(const Record* codebook) {
    return codebook == nullptr || codebook->codevectors == nullptr;
}

inline bool isKnown(int kind) {
    return kind >= kelCdbkExhaustive && kind <= kelCdbkSplitLargest;
}

template <class T>
bool anyNegative(const T* weights, int width) {
    return std::any_of(weights, weights + width, [](T weight) { return weight < T(0); });
}

// Of a search for every row of a block.
template <class Record, class... P>
KelStatus searchFault(const Record* codebook, int step, int height, const P*... pointers) {
    if (isNull(codebook) || anyNull(pointers...)) return kelStatusNullPtr;
    return step < 1 || height < 1 || step < codebook->width ? kelStatusSize : kelStatusOk;
}

// The same where the caller says what width the codebook has.
template <class Record, class... P>
KelStatus searchFault(const Record* codebook, int width, int step, int height, const P*... pointers) {
    if (const KelStatus fault = searchFault(codebook, step, height, pointers...)) return fault;
    return width != codebook->width ? kelStatusSize : kelStatusOk;
}

// Of the n codevectors that are nearest to a vector.
template <class Record, class... P>
KelStatus nearestFault(const Record* codebook, int n, const P*... pointers) {
    if (anyNull(pointers...) || isNull(codebook)) return kelStatusNullPtr;
    return n < 1 || n > codebook->cdbkSize ? kelStatusSize : kelStatusOk;
}

// Of the codevectors within a factor of the nearest one's distance from a vector.
template <class Record, class... P>
KelStatus factorFault(const Record* codebook, Kel32f factor, const P*... pointers) {
    if (anyNull(pointers...) || isNull(codebook)) return kelStatusNullPtr;
    return factor >= 1 ? kelStatusOk : kelStatusBadArg;
}

}  // namespace kels::codebook
