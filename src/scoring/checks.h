// The orders of checks that the scorers of rows share.
#pragma once

#include "core/check.h"
#include "kels/types.h"

namespace kels::scoring {

// Row pointers.
template <class... P>
constexpr KelStatus rowsFault(int width, int height, const P*... pointers) {
    if (anyNull(pointers...)) return kelStatusNullPtr;
    return width < 1 || height < 1 ? kelStatusSize : kelStatusOk;
}

// One array of rows: the step is looked at before the pointers.
template <class... P>
constexpr KelStatus blockFault(int step, int width, int height, const P*... pointers) {
    if (stepTooSmall(step, width)) return kelStatusStep;
    return rowsFault(width, height, pointers...);
}

// A mixture in one array of rows: the step is looked at after the pointers.
template <class... P>
constexpr KelStatus mixtureFault(int step, int width, int height, const P*... pointers) {
    if (anyNull(pointers...)) return kelStatusNullPtr;
    if (stepTooSmall(step, width)) return kelStatusStep;
    return width < 1 || height < 1 ? kelStatusSize : kelStatusOk;
}

}  // namespace kels::scoring
