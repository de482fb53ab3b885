// Sound files by libsndfile into an OutputFile.
#include "sound_output.h"

namespace common {

SoundOutput::SoundOutput(const std::filesystem::path& file, SF_INFO info)
    : output_(file), file_(sf_open(output_.path().c_str(), SFM_WRITE, &info)) {
    if (!file_) output_.fail(sf_strerror(nullptr));
    sf_command(file_.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
}

void SoundOutput::write(const float* samples, sf_count_t frames) {
    if (sf_writef_float(file_.get(), samples, frames) != frames) output_.fail(sf_strerror(file_.get()));
}

void SoundOutput::finish() {
    if (sf_close(file_.release()) != 0) output_.fail("closing failed");
    output_.finish();
}

}  // namespace common
