// Walking through equally spaced times in the order of their fractions, without sorting them.
#pragma once

#include <algorithm>
#include <cmath>

#include "kels/types.h"

namespace kels::resample::general {

// The times t + n step, 0 <= n < count, by their fractions, from the lowest one on; equal ones from the last one on.
//
// By the three-gap theorem (Sós 1958) the one after n is always n + up, n - down or n + up - down, where `up` and
// `down` are the numbers of steps, together at least `count`, that move a fraction the least, up and down.  Rounding
// may exchange neighbours; every n comes exactly once all the same.
class FractionOrder {
  public:
    FractionOrder(Kel64f fraction, Kel64f step, int count) : count_(count) {
        Kel64f upBy = step - std::floor(step), downBy = 1 - upBy;
        for (;;) {
            // The next one below the lowest so far is as many steps further as first move it down, but not below 0.
            for (; downBy <= fraction && lowest_ + down_ < count; lowest_ += down_) fraction -= downBy;
            if (up_ + down_ >= count) break;
            if (upBy > downBy) {
                upBy -= downBy;
                up_ += down_;
            } else {
                downBy -= upBy;
                down_ += up_;
            }
        }
    }
    int lowest() const { return lowest_; }
    // Behind the highest one comes the lowest one.
    int after(int n) const {
        // Without branches, which would be hard to foresee.
        n += up_;
        n -= n >= count_ ? up_ + down_ : 0;
        return n + (n < 0 ? up_ : 0);
    }

    // The distance of most neighbours.
    int leastStep() const { return std::min(up_, down_); }

  private:
    int count_, up_ = 1, down_ = 1, lowest_ = 0;
};

}  // namespace kels::resample::general
