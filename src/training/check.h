// The orders in which functions on blocks of rows look for faults: a step shorter than a row, a null pointer, a size.
#pragma once

#include "core/check.h"
#include "kels/types.h"

namespace kels::training {

// A block in one array, as the caller describes it.
struct BlockShape {
    int step, height, width;
};

// Pointers, then sizes: of blocks given by row pointers, which have no step.
template <int leastHeight = 1, class... P>
constexpr KelStatus rowsFault(int height, int width, const P*... pointers) {
    if (anyNull(pointers...)) return kelStatusNullPtr;
    return height < leastHeight || width < 1 ? kelStatusSize : kelStatusOk;
}

template <int leastHeight = 1, class... P>
constexpr KelStatus stepFirstFault(const BlockShape& block, const P*... pointers) {
    if (stepTooSmall(block.step, block.width)) return kelStatusStep;
    return rowsFault<leastHeight>(block.height, block.width, pointers...);
}

// Pointers, the step, sizes.
template <int leastHeight = 1, class... P>
constexpr KelStatus stepSecondFault(const BlockShape& block, const P*... pointers) {
    if (anyNull(pointers...)) return kelStatusNullPtr;
    return stepFirstFault<leastHeight>(block, pointers...);
}

template <int leastHeight = 1, class... P>
constexpr KelStatus stepLastFault(const BlockShape& block, const P*... pointers) {
    if (const KelStatus fault = rowsFault<leastHeight>(block.height, block.width, pointers...)) return fault;
    return stepTooSmall(block.step, block.width) ? kelStatusStep : kelStatusOk;
}

}  // namespace kels::training
