// The mathematical constants of the library: each stands here and nowhere else.
#pragma once

#include <numbers>

#include "kels/types.h"

namespace kels {

inline constexpr Kel64f kPi = std::numbers::pi;
inline constexpr Kel64f kLn2 = std::numbers::ln2;
inline constexpr Kel64f kLn2Pi = 1.8378770664093453;

// ln 2 pi as the determinants of Gaussians hold it: cut after 13 decimals, so that a determinant computed here equals
// to the bit the one that a stored model brings along.
inline constexpr Kel64f kLn2PiOfModels = 1.8378770664093;

}  // namespace kels
