// Speech at 8 kHz, without what lies below and above the first harmonics of voices.
#ifndef PITCH_NARROW_BAND_H
#define PITCH_NARROW_BAND_H

#include <cstddef>
#include <memory>
#include <vector>

#include "common/stream.h"

namespace pitch {

inline constexpr int kRate = 8000;  // Hz

// A stream of any rate in, as many seconds of kRate out; sample 0 stays sample 0.
class NarrowBand {
  public:
    explicit NarrowBand(int rate);  // throws std::runtime_error
    void feed(const float* samples, std::size_t count);
    void finish();

    // What has come out since the last clear().
    const std::vector<float>& samples() const { return samples_; }
    void clear() { samples_.clear(); }

  private:
    void filter(const float* samples, std::size_t count);

    std::size_t rate_, taken_ = 0, given_ = 0;
    std::unique_ptr<Resampler> resampler_;  // none at kRate
    std::unique_ptr<Channel> channel_;
    std::vector<float> taps_, kept_, resampled_, samples_;
};

}  // namespace pitch

#endif
