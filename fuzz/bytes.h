// Turns a fuzzer's bytes into the arguments of a call.
#pragma once

#include <xmmintrin.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "kels/types.h"
#include "support/guarded.h"

namespace fuzz {

using test::Guarded;

inline void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "broken: %s\n", what);
    std::abort();
}

class Bytes {
  public:
    Bytes(const uint8_t* data, size_t size) : data_(data), size_(size), control_(_mm_getcsr() & kControlBits) {}
    ~Bytes() { require((_mm_getcsr() & kControlBits) == control_, "the caller's floating-point control state"); }

    // The next bytes as a value of any bit pattern; zeros when the bytes have run out.
    template <class T>
    T any() {
        T value{};
        const size_t n = std::min(sizeof(T), size_);
        if (n > 0) std::memcpy(&value, data_, n);
        data_ += n;
        size_ -= n;
        return value;
    }
    // A size: -1 .. max, or now and then the largest or smallest int.
    int count(int max) {
        const int byte = any<uint8_t>();
        return byte == 255 ? INT32_MAX : byte == 254 ? INT32_MIN : byte % (max + 2) - 1;
    }
    // A mode, shift or the like: often small, sometimes any int.
    int scalar() { return any<uint8_t>() % 4 != 0 ? any<int8_t>() : any<int>(); }
    // Frequencies and other positive quantities, sometimes any float.
    float number() { return any<uint8_t>() % 8 != 0 ? any<uint16_t>() / 4.0F : any<float>(); }

    // n elements of any value with nothing behind them.
    template <class T>
    Guarded<T> array(size_t n) {
        std::vector<T> values(n);
        for (T& value : values) value = any<T>();
        return Guarded<T>(values);
    }

  private:
    static constexpr unsigned kControlBits = 0xFFC0;  // all but the exception flags
    const uint8_t* data_;
    size_t size_;
    unsigned control_;
};

// How many elements to provide for a size: none for one that the call must refuse.
inline size_t room(int count, int max) {
    return count >= 1 && count <= max ? static_cast<size_t>(count) : 0;
}

template <class T>
bool sameBits(const std::vector<T>& a, const std::vector<T>& b) {
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0);
}

// After an error a destination that was all zeros still is.
template <class T>
void requireUntouchedOnError(KelStatus status, const Guarded<T>& destination) {
    const auto* const first = reinterpret_cast<const uint8_t*>(destination.data());
    require(status >= 0 || std::all_of(first, first + destination.size() * sizeof(T), [](uint8_t b) { return b == 0; }),
            "nothing is written after an error");
}

}  // namespace fuzz
