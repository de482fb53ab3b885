// States that live in bytes of the caller.
#pragma once

#include <cstring>
#include <type_traits>

#include "kels/types.h"

namespace kels {

// The caller's bytes, of any alignment, as a state for the length of a call.
template <class State>
class CallerState {
  public:
    static_assert(std::is_trivially_copyable_v<State>);

    explicit CallerState(Kel8u* bytes) : bytes_(bytes) { std::memcpy(&state_, bytes, sizeof(state_)); }
    ~CallerState() { std::memcpy(bytes_, &state_, sizeof(state_)); }
    CallerState(const CallerState&) = delete;
    CallerState& operator=(const CallerState&) = delete;

    State& operator*() { return state_; }
    State* operator->() { return &state_; }

  private:
    Kel8u* bytes_;
    State state_;
};

template <class State>
void writeState(const State& state, Kel8u* bytes) {
    std::memcpy(bytes, &state, sizeof(state));
}

}  // namespace kels
