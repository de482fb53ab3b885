// Several arrays laid out one behind the other in one block of memory, each from an aligned address on.
//
// The same code measures the block and then places the arrays in it:
//
//     const auto arrange = [&](Layout& layout) {
//         means = layout.take<Kel32f>(count * width);
//         order = layout.take<Kel32s>(count);
//     };
//     void* const block = allocateArranged(arrange);  // null: no memory, and all places are null
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "core/memory.h"

namespace kels {

class Layout {
  public:
    // Measures: every place is null.
    Layout() = default;
    // Places the arrays from `start` on, which may be any address.
    explicit Layout(void* start) : start_(static_cast<int64_t>(reinterpret_cast<uintptr_t>(start))), next_(start_) {}

    // The place of `count` elements, at the next address that is a multiple of `alignment`.
    template <class T>
    T* take(int64_t count, std::size_t alignment = kBlockAlignment) {
        mostAligned_ = std::max(mostAligned_, static_cast<int64_t>(alignment));
        const int64_t place = roundUp(next_, static_cast<int64_t>(alignment));
        int64_t bytes;
        const bool counted = !__builtin_mul_overflow(count, int64_t{sizeof(T)}, &bytes) && bytes <= kTooMuch - place;
        next_ = counted ? place + bytes : kTooMuch;
        return start_ == 0 ? nullptr : reinterpret_cast<T*>(static_cast<uintptr_t>(place));
    }

    // What has been taken so far, in bytes.  Of a measuring layout: enough for every start that is a multiple of
    // `startAlignment`; a size that no allocation can meet where it cannot be counted.
    int64_t bytes(std::size_t startAlignment = kBlockAlignment) const {
        const int64_t used = next_ - start_;
        if (start_ != 0) return used;
        // From a multiple of the largest alignment on, the arrays take what was added up; from a lower start on they
        // end no later.
        return used + std::max<int64_t>(mostAligned_ - static_cast<int64_t>(startAlignment), 0);
    }

  private:
    static constexpr int64_t kTooMuch = int64_t{1} << 62;

    int64_t start_ = 0;
    int64_t next_ = 0;  // an address, or an offset when measuring
    int64_t mostAligned_ = 1;
};

// A block from the library's allocator with everything in it that arrange(Layout&) takes; null when memory is out.
template <class Arrange>
void* allocateArranged(const Arrange& arrange) {
    Layout measured;
    arrange(measured);
    void* const block = allocate<Kel8u>(measured.bytes());
    if (block == nullptr) return nullptr;
    Layout places(block);
    arrange(places);
    return block;
}

}  // namespace kels
