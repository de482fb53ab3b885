#include "progress.h"

#include <unistd.h>

#include <cstdio>

namespace words {

using std::chrono::steady_clock;

Progress::Progress(std::string title, int total)
    : title_(std::move(title)), total_(total), shown_(isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() {
    if (shown_) std::fputs("\r\033[K", stderr);
}

void Progress::advance() {
    const int done = ++done_;
    if (!shown_) return;
    const std::unique_lock lock(guard_, std::try_to_lock);
    const auto now = steady_clock::now();
    if (!lock.owns_lock() || now - lastShown_ < std::chrono::milliseconds(100)) return;
    lastShown_ = now;
    std::fprintf(stderr, "\r\033[K%s: %d of %d (%d %%)", title_.c_str(), done, total_,
                 static_cast<int>(100.0 * done / total_));
}

}  // namespace words
