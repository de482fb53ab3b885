// Sound files by libsndfile, with the checks that it leaves to its callers.
#include "sound_input.h"

#include <cmath>
#include <stdexcept>

namespace common {

SoundInput::SoundInput(std::filesystem::path file) : path_(std::move(file)) {
    // Asked first, because libsndfile words these differently from version to version.
    std::error_code error;
    const auto status = std::filesystem::status(path_, error);
    if (!std::filesystem::exists(status)) fail("no such file");
    if (std::filesystem::is_directory(status)) fail("is a folder, not a recording");
    if (std::filesystem::is_regular_file(status) && std::filesystem::file_size(path_, error) == 0 && !error) {
        fail("is empty");
    }
    file_.reset(sf_open(path_.c_str(), SFM_READ, &info_));
    if (!file_) fail(std::string("cannot be read as audio: ") + sf_strerror(nullptr));
    if (info_.samplerate < 1 || info_.channels < 1) fail("states no valid sampling rate or channel count");
}

sf_count_t SoundInput::read(float* samples, sf_count_t frames) {
    const sf_count_t got = sf_readf_float(file_.get(), samples, frames);
    if (got < 0 || sf_error(file_.get()) != SF_ERR_NO_ERROR) {
        fail(std::string("is damaged: ") + sf_strerror(file_.get()));
    }
    for (sf_count_t i = 0; i < got * info_.channels; ++i) {
        if (!std::isfinite(samples[i])) fail("holds samples that are not finite numbers");
    }
    any_ = any_ || got > 0;
    if (!any_) fail("holds no samples");
    return got;
}

void SoundInput::fail(const std::string& why) const {
    throw std::runtime_error(path_.string() + ": " + why);
}

}  // namespace common
