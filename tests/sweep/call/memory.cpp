// Pages for arrays.
#include "sweep/call/memory.h"

#include <sys/mman.h>

#include <cstdlib>

namespace sweep {

Memory::Memory() : mapped_(kPage + kSlots * slotStride()) {
    void* const raw = mmap(nullptr, mapped_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (raw == MAP_FAILED) std::abort();
    base_ = static_cast<uint8_t*>(raw);
    const auto open = [](uint8_t* at, std::size_t bytes) {
        if (mprotect(at, bytes, PROT_READ | PROT_WRITE) != 0) std::abort();
    };
    for (std::size_t n = 0; n < kSlots; ++n) {
        open(slot(n), kSlotBytes);
        open(rest(n), kSlotBytes);
        for (std::size_t r = 0; r < kRows; ++r) open(row(n, r), kRowBytes);
    }
}

Memory::~Memory() {
    munmap(base_, mapped_);
}

}  // namespace sweep
