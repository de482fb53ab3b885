// A bar that tells how far a long piece of work has come, and how long the rest will take.
#ifndef COMMON_PROGRESS_BAR_H
#define COMMON_PROGRESS_BAR_H

#include <chrono>
#include <cstdint>
#include <mutex>

namespace common {

// On standard error, and only if that is a terminal.  The bar vanishes with the object.
class ProgressBar {
  public:
    explicit ProgressBar(std::int64_t total);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    // So much of the total is done.  May be called from several threads at once.
    void at(std::int64_t done);

  private:
    std::int64_t total_;
    bool shown_;
    std::mutex guard_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now(), last_{};
};

}  // namespace common

#endif
