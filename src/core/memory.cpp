// The allocator that everything the library hands out comes from.
#include "core/memory.h"

#include <cstdlib>

namespace kels {
namespace {

constexpr std::size_t kPointer = sizeof(void*);

// The pointer that malloc gave stands in the word before the aligned address.
void** rawPointerSlot(void* aligned) {
    return static_cast<void**>(aligned) - 1;
}

}  // namespace

void* allocateBytes(int64_t count, std::size_t elementSize) {
    constexpr std::size_t overhead = kBlockAlignment + kPointer;
    if (count < 1) return nullptr;
    if (static_cast<uint64_t>(count) > (PTRDIFF_MAX - overhead) / elementSize) return nullptr;
    void* const raw = std::malloc(static_cast<std::size_t>(count) * elementSize + overhead);
    if (raw == nullptr) return nullptr;
    const auto address = (reinterpret_cast<uintptr_t>(raw) + overhead - 1) / kBlockAlignment * kBlockAlignment;
    void* const aligned = reinterpret_cast<void*>(address);
    *rawPointerSlot(aligned) = raw;
    return aligned;
}

}  // namespace kels

using kels::allocate;

Kel8u* kelsMalloc_8u(int n) {
    return allocate<Kel8u>(n);
}
Kel16s* kelsMalloc_16s(int n) {
    return allocate<Kel16s>(n);
}
Kel32s* kelsMalloc_32s(int n) {
    return allocate<Kel32s>(n);
}
Kel32f* kelsMalloc_32f(int n) {
    return allocate<Kel32f>(n);
}
Kel64f* kelsMalloc_64f(int n) {
    return allocate<Kel64f>(n);
}

void kelsFree(void* ptr) {
    if (ptr != nullptr) std::free(*kels::rawPointerSlot(ptr));
}
