#include "support/allocation.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>

extern "C" {
void* __real_malloc(std::size_t size);
void __real_free(void* p);
}

namespace {
thread_local bool watching = false;
thread_local int failAtCall = -1;
thread_local int mallocCalls = 0;
thread_local int live = 0;
thread_local std::size_t liveBytes = 0, mostBytes = 0;
}  // namespace

extern "C" void* __wrap_malloc(std::size_t size) {
    if (!watching) return __real_malloc(size);
    if (mallocCalls++ == failAtCall) return nullptr;
    void* const p = __real_malloc(size);
    if (p == nullptr) return nullptr;
    ++live;
    liveBytes += malloc_usable_size(p);
    mostBytes = std::max(mostBytes, liveBytes);
    return p;
}

extern "C" void __wrap_free(void* p) {
    if (watching && p != nullptr) {
        --live;
        liveBytes -= malloc_usable_size(p);
    }
    __real_free(p);
}

namespace test {

AllocationWatch::AllocationWatch(int failAt) {
    watching = true;
    failAtCall = failAt;
    mallocCalls = 0;
    live = 0;
    liveBytes = mostBytes = 0;
}
AllocationWatch::~AllocationWatch() {
    watching = false;
}
int AllocationWatch::calls() const {
    return mallocCalls;
}
int AllocationWatch::unreleased() const {
    return live;
}
std::size_t AllocationWatch::bytes() const {
    return liveBytes;
}
std::size_t AllocationWatch::peakBytes() const {
    return mostBytes;
}

}  // namespace test
