// One channel on its way from one sampling rate to another, in blocks of any size and with constant memory.
#ifndef RESAMPLE_STREAM_H
#define RESAMPLE_STREAM_H

#include <kels.h>

#include <memory>
#include <string_view>
#include <vector>

struct Quality {
    std::string_view name;
    float window;  // input samples, or output samples where those are the slower ones
    int nStep;
    float rollf, alpha;
};
// From the table in kels/resample.h.
inline constexpr Quality kQualities[] = {
    {"fast", 46, 128, 0.86F, 6}, {"good", 190, 1024, 0.956F, 13}, {"best", 298, 2048, 0.969F, 15.5F}};

// The filter for a pair of rates: the fixed form, or the general form where the fixed one would have too many phases.
class Resampler {
  public:
    Resampler(int inRate, int outRate, const Quality& quality);  // throws std::runtime_error
    double reach() const { return reach_; }                      // of the filter to either side, in input samples
    // Resamples src[0 .. len) from *time on and appends to out; src reaches back far enough.
    void run(const float* src, int len, double* time, std::vector<float>& out) const;

  private:
    template <auto Free>
    struct Freeing {
        template <class State>
        void operator()(State* state) const {
            Free(state);
        }
    };
    double factor_, reach_;
    std::unique_ptr<KelResamplePolyphase_32f, Freeing<kelsResamplePolyphaseFree_32f>> general_;
    std::unique_ptr<KelResamplePolyphaseFixed_32f, Freeing<kelsResamplePolyphaseFixedFree_32f>> fixed_;
};

class Channel {
  public:
    explicit Channel(const Resampler& resampler);
    // Takes more of the signal and appends what that allows to out.
    void feed(const float* samples, int n, std::vector<float>& out);

  private:
    const Resampler* resampler_;
    std::vector<float> kept_;  // the signal that the next output still needs; begins with silence before the signal
    double time_;              // of the next output, relative to kept_
};

#endif
