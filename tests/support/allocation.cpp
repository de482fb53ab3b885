// malloc and free as tests see them: counted, and failing on demand.
#include "support/allocation.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {
thread_local test::AllocationWatch* watching = nullptr;
}

extern "C" {
// Sizes that no machine has are refused under the sanitizers as they are without them, not reported as errors.
const char* __asan_default_options() {
    return "allocator_may_return_null=1";
}
const char* __tsan_default_options() {
    return "allocator_may_return_null=1";
}

void* __real_malloc(std::size_t size);
void __real_free(void* p);

void* __wrap_malloc(std::size_t size) {
    return watching == nullptr ? __real_malloc(size) : watching->allocate(size, __real_malloc);
}
void __wrap_free(void* p) {
    if (watching != nullptr) watching->release(p);
    __real_free(p);
}
}

namespace test {

AllocationWatch::AllocationWatch(int failAt) : failAt_(failAt), outer_(watching) {
    watching = this;
}
AllocationWatch::~AllocationWatch() {
    watching = outer_;
}
void AllocationWatch::restart(int failAt, std::size_t largest, int fill) {
    failAt_ = failAt;
    largest_ = largest;
    fill_ = fill;
    calls_ = refusals_ = 0;
}
void* AllocationWatch::allocate(std::size_t size, void* (*allocator)(std::size_t)) {
    const bool refused = calls_++ == failAt_ || size > largest_;
    void* const p = refused ? nullptr : allocator(size);
    refusals_ += refused;
    if (p == nullptr) return p;
    if (fill_ >= 0) std::memset(p, fill_, size);
    ++unreleased_;
    blocks_.push_back({p, size});
    return p;
}
void AllocationWatch::release(void* p) {
    if (p == nullptr) return;
    --unreleased_;
    const auto found = std::find_if(blocks_.begin(), blocks_.end(), [p](const Block& b) { return b.at == p; });
    if (found != blocks_.end()) blocks_.erase(found);
}

}  // namespace test
