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

// A row-pointer table and its rows in one block; each row is 32-byte aligned and padded to a multiple of 8 elements.
// The rows are not cleared.  With rows < 1 the Alloc2 forms return a block without pointers, or null where the size of
// that block is below 1; RLsAlloc2 returns null for rows or cols below 1.
Kel32f** Alloc2_32f(int rows, int cols);
Kel32f** Alloc2_32fd(int rows, int cols);
Kel32s** Alloc2_32s(int rows, int cols);
Kel32f** RLsAlloc2(int rows, int cols);
void Free2(void* array);
void Free2d(void* array);

// Square blocks on the diagonal of a matrix: this header, the block sizes, the row pointers and the rows in one block.
// Every row is padded to 16 bytes and starts on a 16-byte boundary.
template <class T>
struct BlockMatrix {
    T** rowPointers;
    Kel32s* blockSizes;
    void* rawBlock;  // what kelsFree takes
    Kel16s blockCount;
    Kel16s rowCount;
};
#if defined(__i386__)
static_assert(sizeof(BlockMatrix<Kel32f>) == 16);
#endif

// Null when a size is below 1, the totals do not fit the header's fields, or memory is out.  Rows are not cleared.
BlockMatrix<Kel16s>* allocMatrix_16s(const Kel32s* sizes, int nBlocks);
BlockMatrix<Kel32f>* allocMatrix_32f(const Kel32s* sizes, int nBlocks);
BlockMatrix<Kel64f>* allocMatrix_64f(const Kel32s* sizes, int nBlocks);

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
