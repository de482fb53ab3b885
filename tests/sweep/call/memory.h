// Where the arrays of a call lie: each has pages to itself, and behind it (or before it) one that nobody may touch.
#pragma once

#include <cstddef>
#include <cstdint>

namespace sweep {

class Memory {
  public:
    static constexpr std::size_t kSlots = 14, kSlotBytes = std::size_t{1} << 20;  // arrays
    static constexpr std::size_t kRows = 40, kRowBytes = std::size_t{1} << 14;    // rows of their own of an array
    static constexpr std::size_t kMargin = 64;                                    // bytes kept beside an array

    Memory();
    ~Memory();
    Memory(const Memory&) = delete;
    Memory& operator=(const Memory&) = delete;

    uint8_t* slot(std::size_t n) { return base_ + kPage + n * slotStride(); }
    uint8_t* rest(std::size_t n) { return slot(n) + kSlotBytes + kPage; }  // for rows that are too many or too long
    uint8_t* row(std::size_t n, std::size_t r) { return rest(n) + kSlotBytes + kPage + r * (kRowBytes + kPage); }

  private:
    static constexpr std::size_t kPage = 4096;
    static constexpr std::size_t slotStride() { return 2 * (kSlotBytes + kPage) + kRows * (kRowBytes + kPage); }
    std::size_t mapped_ = 0;
    uint8_t* base_ = nullptr;
};

}  // namespace sweep
