#include "support/allocation.h"

#include <cstddef>

namespace {
thread_local bool watching = false;
thread_local int failAtCall, mallocCalls, live;
}  // namespace

extern "C" {
void* __real_malloc(std::size_t size);
void __real_free(void* p);

void* __wrap_malloc(std::size_t size) {
    if (watching && mallocCalls++ == failAtCall) return nullptr;
    void* const p = __real_malloc(size);
    live += watching && p != nullptr;
    return p;
}
void __wrap_free(void* p) {
    live -= watching && p != nullptr;
    __real_free(p);
}
}

namespace test {

AllocationWatch::AllocationWatch(int failAt) {
    watching = true;
    failAtCall = failAt;
    mallocCalls = live = 0;
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

}  // namespace test
