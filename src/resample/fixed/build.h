// Building the state of the fixed form: what it takes, and its filters.
#pragma once

#include "resample/fixed/state.h"

namespace kels::resample::fixed {

// What is asked for.
struct Design {
    int inRate, outRate, len;
    Kel32f rollf, alpha;
};

// The head of the state for a design without its offsets, and its size; false where that is not below 2^31 bytes.
bool measure(const Design& design, State& head, int& bytes);

// The state at an address that is a multiple of 4.  T is the type of the samples: 16-bit filters are stored as rounded.
template <class T>
void build(State* at, const State& head, const Design& design);

// Folds the filters again where that is possible: what a change of filters ends with.
void fold(State& state);

}  // namespace kels::resample::fixed
