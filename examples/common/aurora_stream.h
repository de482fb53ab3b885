// The Aurora front end on a stream of any length in pieces of any length.  How it is cut makes no difference.
#ifndef COMMON_AURORA_STREAM_H
#define COMMON_AURORA_STREAM_H

#include <cstddef>
#include <functional>
#include <vector>

#include "aurora_chain.h"

namespace common {

class AuroraStream {
  public:
    static constexpr int kFeatures = 39;  // c1 .. c12 and a measure of energy, their slopes, their curvatures
    static constexpr int kFrame = 200;    // samples at 8 kHz; frames are kShift samples apart

    // Who is told what has come out, in order: each sample once, each frame that lies within the stream once.
    struct Listener {
        std::function<void(const float* samples, int count)> denoised;
        std::function<void(const float* row)> features;
        std::function<void(bool speech)> decision;
        std::function<void(const float* gains)> gains;  // of 25 mel bands, for each kShift samples of denoised
    };
    AuroraStream(int rate, Listener listener, float warp = 1);

    // Samples in the range of 16-bit integers.
    void feed(const float* samples, std::size_t count);
    // The stream has ended: the listener is told the rest.
    void finish();

  private:
    void take(const float* block);
    void put(const float* denoised, const float* statics);
    void decide(int decision);
    void derive(int mode);

    AuroraChain chain_;
    Listener listener_;
    std::vector<float> block_;                                         // begun, and not yet complete
    std::size_t samples_ = 0, wanted_ = static_cast<std::size_t>(-1);  // of the stream, and of its denoised form
    std::size_t given_ = 0, frames_ = 0, decisions_ = 0, rows_ = 0;    // that have come out
    std::size_t blocks_ = 0, silent_ = 0;                              // all, and those before the first sound
    bool begun_ = false;
    std::vector<float> statics_, history_;
};

}  // namespace common

#endif
