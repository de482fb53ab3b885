// Lets the n-th allocation of a call fail and counts what is not released.
#pragma once

#include <gtest/gtest.h>

#include "kels/core.h"

namespace test {

// While an object lives, this thread's calls of malloc are counted and the one with number `failAt` (from 0) gives
// null; -1 lets all succeed.
class AllocationWatch {
  public:
    explicit AllocationWatch(int failAt = -1);
    ~AllocationWatch();
    int calls() const;       // of malloc
    int unreleased() const;  // successful calls less calls of free
};

// Runs `attempt` with its first allocation failing, then its second, and so on until it allocates no further.
// `attempt(n)` is called with the number that fails; the call in which nothing fails ends the walk and is the last.
template <class Attempt>
void failEachAllocation(Attempt attempt) {
    for (int n = 0;; ++n) {
        int calls;
        {
            const AllocationWatch watch(n);
            attempt(n, watch);
            calls = watch.calls();
        }
        if (calls <= n) return;
    }
}

// For objects whose release keeps their own small block: whichever allocation of make(&object) fails, the object is null
// (after the first) or `release` takes it, even twice; `released` sees it last.
template <class T, class Make, class Released>
void expectReleasable(Make make, KelStatus (*release)(T*), Released released) {
    failEachAllocation([&](int n, const AllocationWatch& watch) {
        auto* object = reinterpret_cast<T*>(&n);
        const KelStatus status = make(&object);
        EXPECT_EQ(status, watch.calls() > n ? kelStatusNoMemory : kelStatusOk);
        EXPECT_EQ(object == nullptr, n == 0);
        if (object == nullptr) return;
        for (int twice = 0; twice < 2; ++twice) {
            EXPECT_EQ(release(object), kelStatusOk);
            EXPECT_EQ(watch.unreleased(), 1);
        }
        released(object);
        kelsFree(object);
    });
}

}  // namespace test
