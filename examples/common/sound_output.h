// A sound file that is written block by block and appears when it is complete.
#ifndef COMMON_SOUND_OUTPUT_H
#define COMMON_SOUND_OUTPUT_H

#include <sndfile.h>

#include <memory>

#include "output_file.h"

namespace common {

struct CloseSound {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
using SoundFile = std::unique_ptr<SNDFILE, CloseSound>;

// Samples beyond full scale are clipped.  Failures are thrown as std::runtime_error.
class SoundOutput {
  public:
    SoundOutput(const std::filesystem::path& file, SF_INFO info);
    // Samples of `frames` times, those of all channels side by side.
    void write(const float* samples, sf_count_t frames);
    void finish();

  private:
    OutputFile output_;
    SoundFile file_;  // closed before output_ goes
};

}  // namespace common

#endif
