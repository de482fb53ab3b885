// Aligned memory for the library's own use.  Everything here is released by kelsFree and reports failure by null.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "kels/core.h"

namespace kels {

inline constexpr std::size_t kBlockAlignment = 32;  // of whatever is allocated here

// `count` elements of T; null when count is below 1, the size does not fit, or memory is out.
void* allocateBytes(int64_t count, std::size_t elementSize);

template <class T>
T* allocate(int64_t count) {
    return static_cast<T*>(allocateBytes(count, sizeof(T)));
}

// The same with every byte zero.
template <class T>
T* allocateCleared(int64_t count) {
    T* const elements = allocate<T>(count);
    if (elements != nullptr) std::memset(elements, 0, static_cast<std::size_t>(count) * sizeof(T));
    return elements;
}

template <class T>
constexpr T roundUp(T n, T multiple) {
    return (n + multiple - 1) / multiple * multiple;
}

// Scratch of `count` elements for the length of a call: on the stack up to N, from the allocator above that.
template <class T, std::size_t N>
class Scratch {
  public:
    explicit Scratch(int64_t count)
        : data_(count <= static_cast<int64_t>(N) ? reinterpret_cast<T*>(local_) : allocate<T>(count)) {}
    ~Scratch() {
        if (data_ != reinterpret_cast<T*>(local_)) kelsFree(data_);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    bool failed() const { return data_ == nullptr; }
    T* data() { return data_; }
    T& operator[](std::size_t i) { return data_[i]; }

  private:
    alignas(64) unsigned char local_[N * sizeof(T)];
    T* data_;
};

}  // namespace kels
