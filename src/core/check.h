// Argument checks of the entry points, one line each: `if (anyNull(pSrc, pDst)) return kelStatusNullPtr;`
#pragma once

#include <cstddef>

#include "kels/types.h"

namespace kels {

template <class... P>
constexpr bool anyNull(const P*... pointers) {
    return ((pointers == nullptr) || ...);
}

// A length that has passed its check, as the kernels take it.
constexpr std::size_t toSize(int len) {
    return static_cast<std::size_t>(len);
}

// The faults of the many functions that look at their pointers, then at the length of their vectors.
template <class... P>
constexpr KelStatus vectorFault(int len, const P*... pointers) {
    if (anyNull(pointers...)) return kelStatusNullPtr;
    return len < 1 ? kelStatusSize : kelStatusOk;
}

// True when a row of `step` elements cannot hold `parts * width + offset` elements; the product may exceed an int.
constexpr bool stepTooSmall(int step, int width, int parts = 1, int offset = 0) {
    return step < static_cast<int64_t>(parts) * width + offset;
}

// The status of a call meets several substitutions: the first one decides.
class FirstWarning {
  public:
    void note(KelStatus warning) {
        if (status_ == kelStatusOk) status_ = warning;
    }
    KelStatus status() const { return status_; }

  private:
    KelStatus status_ = kelStatusOk;
};

}  // namespace kels
