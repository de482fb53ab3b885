// Samples from a sound file, or live from standard input.
#ifndef COMMON_SAMPLE_INPUT_H
#define COMMON_SAMPLE_INPUT_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "sound_input.h"

namespace common {

// What goes wrong is thrown as a std::runtime_error that names the file.
class SampleInput {
  public:
    // A mono sound file of any format that libsndfile reads; or, for "-", raw 16-bit samples of this rate.
    SampleInput(const std::string& name, int rate);
    int rate() const { return rate_; }
    std::int64_t length() const;  // samples, as the file's header says; 0 of standard input
    [[noreturn]] void fail(const std::string& why) const;

    const std::vector<float>& samples() const { return samples_; }  // those of the last read
    // At most `count` samples in the range of 16-bit integers, as soon as there are some; none at the end.
    const std::vector<float>& read(std::size_t count);

  private:
    std::string name_;
    int rate_;
    std::optional<SoundInput> file_;  // none for standard input
    std::vector<float> samples_;
    std::vector<short> integers_;
};

}  // namespace common

#endif
