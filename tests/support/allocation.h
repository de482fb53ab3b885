// Lets the n-th allocation of a call fail and counts what is not released.
#pragma once

#include <cstddef>

namespace test {

// While an object lives, this thread's calls of malloc are counted and the one with number `failAt` (from 0) gives
// null; -1 lets all succeed.
class AllocationWatch {
  public:
    explicit AllocationWatch(int failAt = -1);
    ~AllocationWatch();
    int calls() const;              // of malloc
    int unreleased() const;         // successful calls less calls of free
    std::size_t bytes() const;      // allocated at this moment
    std::size_t peakBytes() const;  // the most that has been
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

}  // namespace test
