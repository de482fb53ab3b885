// Random choices, fast and repeatable; the first of them may be those of a fuzzer.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

namespace sweep {

class Dice {
  public:
    explicit Dice(uint64_t seed) : state_(seed * 0x9E3779B97F4A7C15U + 1) {}
    // Two bytes of `data` a choice, those before `from` left out; when they have run out, random ones that all of them
    // decide.
    Dice(const uint8_t* data, std::size_t size, std::size_t from) : data_(data + from), size_(size - from) {
        for (std::size_t i = 0; i < size; ++i) state_ = (state_ ^ data[i]) * 0x100000001B3U;
    }
    uint64_t bits() {
        if (size_ >= 2) {
            const uint64_t two = data_[0] | uint64_t{data_[1]} << 8;
            data_ += 2;
            size_ -= 2;
            return two;
        }
        state_ += 0x9E3779B97F4A7C15U;
        uint64_t z = state_;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
        return z ^ (z >> 31);
    }
    int64_t between(int64_t low, int64_t high) {  // both included
        // Without signs, so that no range overflows.
        const uint64_t values = static_cast<uint64_t>(high) - static_cast<uint64_t>(low) + 1;
        return static_cast<int64_t>(static_cast<uint64_t>(low) + (values == 0 ? bits() : bits() % values));
    }
    bool oneIn(int n) { return bits() % static_cast<uint64_t>(n) == 0; }
    double uniform() { return static_cast<double>(bits() >> 11) * 0x1p-53; }
    // A full random mantissa over some binades, of either sign.
    double ordinary() {
        const uint64_t b = bits();
        const double mantissa = 1 + static_cast<double>(b >> 11) * 0x1p-53;
        return std::bit_cast<double>(std::bit_cast<uint64_t>(mantissa) + ((b & 15) << 52) - (uint64_t{8} << 52)) *
               (b & 16 ? 1 : -1);
    }

  private:
    uint64_t state_ = 0xCBF29CE484222325U;
    const uint8_t* data_ = nullptr;
    std::size_t size_ = 0;
};

}  // namespace sweep
