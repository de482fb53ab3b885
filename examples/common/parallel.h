// Independent pieces of work spread over the machine's processors.
#ifndef COMMON_PARALLEL_H
#define COMMON_PARALLEL_H

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace common {

inline int processorCount() {
    return static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
}

// Calls work(i) for every i in 0..count-1, several at a time, and returns when all are done.  Each call must write only
// to places of its own, so that results do not depend on the number of threads.  The first exception ends the rest and
// is thrown again.
template <class Work>
void forEachInParallel(int count, const Work& work) {
    std::atomic<int> next = 0;
    std::exception_ptr failure;
    std::mutex guard;
    const auto run = [&] {
        try {
            for (int i = next++; i < count; i = next++) work(i);
        } catch (...) {
            next = count;
            const std::lock_guard lock(guard);
            if (!failure) failure = std::current_exception();
        }
    };
    {
        std::vector<std::jthread> threads;
        for (int i = 1; i < std::min(processorCount(), count); ++i) threads.emplace_back(run);
        run();
    }
    if (failure) std::rethrow_exception(failure);
}

}  // namespace common

#endif
