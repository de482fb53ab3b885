// Tables of rows are allocated and laid out here.
#include "core/row_table.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "core/layout.h"

namespace kels {
namespace {

constexpr int64_t paddedLength(int cols) {
    return roundUp<int64_t>(cols, 8);
}

// Bytes of a block of `rows` rows, or -1 where an int does not hold them.  The table and the gap between it and the
// rows take no more than a pointer for each row and kMostGap.
template <class T>
int blockBytes(int rows, int cols) {
    constexpr int kMostGap = 28;
    const int64_t rowBytes = int64_t{sizeof(T)} * paddedLength(cols) + int64_t{sizeof(T*)};
    int64_t bytes;
    if (__builtin_mul_overflow(rows, rowBytes, &bytes)) return -1;
    if (bytes <= -kMostGap || bytes > std::numeric_limits<int>::max() - kMostGap) return -1;
    return static_cast<int>(bytes) + kMostGap;
}

}  // namespace

template <class T>
T** allocateRows(int rows, int cols) {
    if (rows > 0 && cols < 0) return nullptr;
    void* const block = kelsMalloc_8u(blockBytes<T>(rows, cols));
    if (block == nullptr) return nullptr;
    Layout layout(block);
    T** const table = layout.take<T*>(std::max(rows, 0));
    T* row = layout.take<T>(0);
    for (int i = 0; i < rows; ++i, row += paddedLength(cols)) table[i] = row;
    return table;
}

template Kel32f** allocateRows(int rows, int cols);
template Kel32s** allocateRows(int rows, int cols);

Kel32f** Alloc2_32f(int rows, int cols) {
    return allocateRows<Kel32f>(rows, cols);
}
Kel32f** Alloc2_32fd(int rows, int cols) {
    return allocateRows<Kel32f>(rows, cols);
}
Kel32s** Alloc2_32s(int rows, int cols) {
    return allocateRows<Kel32s>(rows, cols);
}
Kel32f** RLsAlloc2(int rows, int cols) {
    return rows < 1 || cols < 1 ? nullptr : allocateRows<Kel32f>(rows, cols);
}
void Free2(void* array) {
    kelsFree(array);
}
void Free2d(void* array) {
    kelsFree(array);
}

}  // namespace kels
