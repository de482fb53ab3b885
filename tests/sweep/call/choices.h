// Ways in which an argument is chosen: what the sweep tries for each function, and the fuzzer in its own order.
#pragma once

#include <vector>

#include "sweep/call/call.h"

namespace sweep {

struct Choice {
    enum How { Null, Value, Below, Above, Beside } how;
    std::size_t argument;
    double value = 0;
    std::size_t other = 0;
    void apply(Call& call) const;
};

// Null for each pointer; for each scalar the ends of its type, zero, what overflows 32 bits when multiplied, what is
// next to the numbers of the checks, to its range and to the other scalars.
std::vector<Choice> choices(const Signature& s);

}  // namespace sweep
