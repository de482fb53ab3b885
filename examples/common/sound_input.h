// A sound file that is read block by block.  What is wrong with it is told in words that name it.
#ifndef COMMON_SOUND_INPUT_H
#define COMMON_SOUND_INPUT_H

#include <filesystem>
#include <string>

#include "sound_output.h"

namespace common {

// Failures are thrown as std::runtime_error: no such file, a folder, an empty file, no sound file, a damaged one,
// samples that are not finite numbers, and a file that ends without any sample.
class SoundInput {
  public:
    explicit SoundInput(std::filesystem::path file);
    const SF_INFO& info() const { return info_; }
    // At most `frames` times the samples of all channels, side by side; 0 at the end.  The header's length is not
    // trusted: what counts is what can be read.
    sf_count_t read(float* samples, sf_count_t frames);
    [[noreturn]] void fail(const std::string& why) const;

  private:
    std::filesystem::path path_;
    SF_INFO info_{};
    SoundFile file_;
    bool any_ = false;  // sample so far
};

}  // namespace common

#endif
