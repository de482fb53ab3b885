// A line on the terminal that tells how far a long piece of work has come.
#ifndef WORDS_PROGRESS_H
#define WORDS_PROGRESS_H

#include <atomic>
#include <chrono>
#include <mutex>
#include <string>

namespace words {

// Writes to standard error, and only if that is a terminal.  The line vanishes with the object.
class Progress {
  public:
    Progress(std::string title, int total);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // One more piece is done.  May be called from several threads at once.
    void advance();

  private:
    const std::string title_;
    const int total_;
    const bool shown_;
    std::atomic<int> done_ = 0;
    std::mutex guard_;
    std::chrono::steady_clock::time_point lastShown_{};
};

}  // namespace words

#endif
