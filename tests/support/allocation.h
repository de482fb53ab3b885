// Lets the n-th allocation of a call fail and counts what is not released.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace test {

// While an object lives, this thread's calls of malloc are counted and the one with number `failAt` (from 0) gives
// null; -1 lets all succeed.  Of several objects the youngest watches.
class AllocationWatch {
  public:
    struct Block {
        void* at;
        std::size_t size;
    };
    explicit AllocationWatch(int failAt = -1);
    ~AllocationWatch();
    AllocationWatch(const AllocationWatch&) = delete;
    AllocationWatch& operator=(const AllocationWatch&) = delete;

    int calls() const { return calls_; }                          // of malloc
    int refusals() const { return refusals_; }                    // of these, those that were given null
    int unreleased() const { return unreleased_; }                // successful calls less calls of free
    const std::vector<Block>& blocks() const { return blocks_; }  // what is not released

    // Counts calls from 0 again; refuses also what is larger than `largest`; fills blocks with a byte unless it is -1.
    void restart(int failAt, std::size_t largest = SIZE_MAX, int fill = -1);

    void* allocate(std::size_t size, void* (*allocator)(std::size_t));
    void release(void* p);

  private:
    int failAt_, fill_ = -1, calls_ = 0, refusals_ = 0, unreleased_ = 0;
    std::size_t largest_ = SIZE_MAX;
    std::vector<Block> blocks_;
    AllocationWatch* outer_;
};

}  // namespace test
