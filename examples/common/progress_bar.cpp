#include "progress_bar.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>

namespace common {

ProgressBar::ProgressBar(std::int64_t total) : total_(total), shown_(isatty(STDERR_FILENO) == 1 && total > 0) {}

ProgressBar::~ProgressBar() {
    if (shown_) std::fputs("\r\033[K", stderr);
}

void ProgressBar::at(std::int64_t done) {
    if (!shown_) return;
    const std::unique_lock lock(guard_, std::try_to_lock);
    const auto now = std::chrono::steady_clock::now();
    if (!lock.owns_lock() || now - last_ < std::chrono::milliseconds(100)) return;
    last_ = now;
    constexpr int width = 40;
    const double part = std::min(1.0, static_cast<double>(done) / static_cast<double>(total_));
    const auto filled = static_cast<std::size_t>(part * width);
    const double seconds = std::chrono::duration<double>(now - start_).count();
    std::fprintf(stderr, "\r[%s%s] %3.0f %%  %.0f s left \033[K", std::string(filled, '#').c_str(),
                 std::string(width - filled, '.').c_str(), 100 * part, part > 0 ? seconds / part - seconds : 0);
}

}  // namespace common
