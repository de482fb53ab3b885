// Where frames lie in a signal, how many there are, and which samples stand for those outside it.
#pragma once

#include <algorithm>
#include <cstdint>

#include "frontend/features/config.h"

namespace kels::features {

class FrameGrid {
  public:
    FrameGrid() = default;
    explicit FrameGrid(const KelFeatureConfig& c)
        : kind_(edgeKind(c)), dropLast_(dropsLast(c) ? 1 : 0), length_(c.frameLen), shift_(c.frameShift) {
        first_ = kind_ == kelFeatSnip ? 0 : kind_ == kelFeatMirror ? shift_ / 2 - length_ / 2 : -(length_ / 2);
    }

    int64_t length() const { return length_; }
    int64_t shift() const { return shift_; }

    // The first sample of a frame; negative before the signal.
    int64_t begin(int64_t frame) const { return frame * shift_ + first_; }

    // The frames of a signal of n samples.
    int64_t count(int64_t n) const { return std::max<int64_t>(allFrames(n) - dropLast_, 0); }

    // The frames that need none but the first n samples of a longer signal: they end among them, and what mirrors them
    // to the left is there.  A frame that may yet be dropped as the last one counts too.
    int64_t inside(int64_t n) const {
        if (!leftIsKnown(n)) return 0;
        const int64_t fitting = n - length_ - first_;  // begin(t) + length <= n
        return fitting < 0 ? 0 : std::min(fitting / shift_ + 1, allFrames(n));
    }
    // Of these, the frames that no later sample can change or drop.
    int64_t settled(int64_t n) const { return std::min(inside(n), count(n)); }

    // The sample of a signal of n samples that stands for number i; -1: a zero.
    int64_t source(int64_t i, int64_t n) const {
        if (0 <= i && i < n) return i;
        if (kind_ == kelFeatMirror) {
            const int64_t phase = remainder(i, 2 * n);
            return phase < n ? phase : 2 * n - 1 - phase;
        }
        if (kind_ == kelFeatCentreReflect) {
            if (n == 1) return 0;
            const int64_t phase = remainder(i, 2 * n - 2);
            return phase < n ? phase : 2 * n - 2 - phase;
        }
        return -1;
    }

  private:
    int64_t allFrames(int64_t n) const {
        if (n < 1) return 0;
        if (kind_ == kelFeatSnip) return n < length_ ? 0 : 1 + (n - length_) / shift_;
        return kind_ == kelFeatMirror ? (n + shift_ / 2) / shift_ : 1 + n / shift_;
    }
    bool leftIsKnown(int64_t n) const {
        if (kind_ == kelFeatMirror) return -first_ <= n;
        return kind_ != kelFeatCentreReflect || -first_ < n;
    }
    static int64_t remainder(int64_t i, int64_t period) {
        const int64_t r = i % period;
        return r < 0 ? r + period : r;
    }

    int kind_ = 0;
    int64_t dropLast_ = 0, length_ = 0, shift_ = 0, first_ = 0;
};

}  // namespace kels::features
