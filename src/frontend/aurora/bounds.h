// The limits that keep the front end's states usable whatever comes in, and its counters.
#pragma once

#include <cmath>
#include <limits>

#include "kels/types.h"

namespace kels::aurora {

inline constexpr Kel32f kLeast = 4.539993e-5f;  // exp(-10): of energies that have a logarithm, and of noise
inline constexpr Kel64f kLeastLog = -10;

// x if it is above the floor; otherwise, and where it is not a number, the floor.
template <class T>
constexpr T notBelow(T x, T floor) {
    return x > floor ? x : floor;
}

inline Kel64f limitedLog(Kel64f e) {
    return e > kLeast ? std::log(e) : kLeastLog;
}

inline void countUp(Kel32s& count) {
    if (count < std::numeric_limits<Kel32s>::max()) ++count;
}

}  // namespace kels::aurora
