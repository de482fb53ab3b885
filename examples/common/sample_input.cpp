// Sound files by libsndfile; standard input by the system, which gives what is there.
#include "sample_input.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace common {

SampleInput::SampleInput(const std::string& name, int rate)
    : name_(name == "-" ? "standard input" : name), rate_(rate) {
    if (name == "-") return;
    file_.emplace(name);
    if (file_->info().channels != 1) fail("has more channels than one");
    rate_ = file_->info().samplerate;
}

void SampleInput::fail(const std::string& why) const {
    throw std::runtime_error(name_ + ": " + why);
}

std::int64_t SampleInput::length() const {
    return file_ ? file_->info().frames : 0;
}

const std::vector<float>& SampleInput::read(std::size_t count) {
    samples_.resize(count);
    if (file_) {
        constexpr float kFullScale = 32768;
        const sf_count_t got = file_->read(samples_.data(), static_cast<sf_count_t>(count));
        samples_.resize(static_cast<std::size_t>(got));
        for (float& x : samples_) x *= kFullScale;
        return samples_;
    }
    integers_.resize(count);
    auto* const bytes = reinterpret_cast<char*>(integers_.data());
    for (std::size_t have = 0;;) {
        const ssize_t got = ::read(STDIN_FILENO, bytes + have, 2 * count - have);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) fail(std::strerror(errno));
        have += static_cast<std::size_t>(got);
        if (got > 0 && have % 2 != 0) continue;  // half a sample
        samples_.assign(integers_.begin(), integers_.begin() + static_cast<std::ptrdiff_t>(have / 2));
        return samples_;
    }
}

}  // namespace common
