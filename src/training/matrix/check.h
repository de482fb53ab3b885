// The one order of checks of this family: pointers, sizes, steps.
#pragma once

#include <cstdint>
#include <initializer_list>

#include "core/check.h"
#include "kels/types.h"

namespace kels::matrix {

// A matrix in one array: its step, and what a row has to hold.
struct RowRoom {
    int step;
    int64_t needed;
};

template <class... P>
constexpr KelStatus shapeFault(std::initializer_list<int64_t> sizes, std::initializer_list<RowRoom> rows,
                               const P*... pointers) {
    if (anyNull(pointers...)) return kelStatusNullPtr;
    for (const int64_t size : sizes) {
        if (size < 1) return kelStatusSize;
    }
    for (const RowRoom& row : rows) {
        if (row.step < row.needed) return kelStatusStep;
    }
    return kelStatusOk;
}

// The same of matrices given by row pointers, which have no step.
template <class... P>
constexpr KelStatus sizeFault(std::initializer_list<int64_t> sizes, const P*... pointers) {
    return shapeFault(sizes, {}, pointers...);
}

}  // namespace kels::matrix
