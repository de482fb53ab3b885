#include "core/memory.h"

#include <cstdlib>
#include <cstring>
#include <limits>

namespace kels {
namespace {

constexpr std::size_t kPointer = sizeof(void*);

// The pointer that malloc gave stands in the word before the aligned address.
void** rawPointerSlot(void* aligned) {
    return static_cast<void**>(aligned) - 1;
}

// The table of `rows` row pointers, then the rows from the first aligned address after it.
template <class T>
T** layOutRows(void* block, int rows, int cols) {
    static_assert(sizeof(T) == 4);
    auto* const table = static_cast<T**>(block);
    if (table == nullptr) return nullptr;
    const std::size_t rowLength = roundUp<std::size_t>(static_cast<std::size_t>(cols), 8);
    const auto tableBytes = static_cast<std::size_t>(rows > 0 ? rows : 0) * kPointer;
    T* row = reinterpret_cast<T*>(static_cast<char*>(block) + roundUp(tableBytes, kBlockAlignment));
    for (int i = 0; i < rows; ++i, row += rowLength) table[i] = row;
    return table;
}

template <class T>
T** allocateRows(int rows, int cols) {
    if (rows > 0 && cols < 0) return nullptr;
    const int64_t rowBytes = 4 * roundUp<int64_t>(cols, 8) + static_cast<int64_t>(kPointer);
    constexpr int alignment = 28;
    int64_t bytes;
    if (__builtin_mul_overflow(rows, rowBytes, &bytes)) return nullptr;
    if (bytes <= -alignment || bytes > std::numeric_limits<int>::max() - alignment) return nullptr;
    return layOutRows<T>(kelsMalloc_8u(static_cast<int>(bytes) + alignment), rows, cols);
}

template <class T>
BlockMatrix<T>* allocateBlockMatrix(const Kel32s* sizes, int nBlocks) {
    if (nBlocks < 0 || nBlocks > std::numeric_limits<Kel16s>::max()) return nullptr;
    // Reserving the square of the padded row length in bytes is more than the rows need; sizes that callers reckon with
    // depend on it.
    int64_t rowCount = 0;
    int64_t dataBytes = 0;
    for (int b = 0; b < nBlocks; ++b) {
        if (sizes[b] < 1 || sizes[b] > std::numeric_limits<Kel16s>::max()) return nullptr;
        const auto rowBytes = roundUp<int64_t>(sizes[b] * static_cast<int64_t>(sizeof(T)), 16);
        rowCount += sizes[b];
        dataBytes += rowBytes * rowBytes;
    }
    if (rowCount > std::numeric_limits<Kel16s>::max()) return nullptr;

    constexpr auto headerBytes = roundUp<int64_t>(sizeof(BlockMatrix<T>), 16);
    const auto sizeBytes = roundUp<int64_t>(4 * static_cast<int64_t>(nBlocks), 16);
    const auto tableBytes = roundUp<int64_t>(static_cast<int64_t>(kPointer) * rowCount, 16);
    const int64_t bytes = sizeBytes + dataBytes + tableBytes + headerBytes + 15;
    if (bytes > std::numeric_limits<int>::max()) return nullptr;
    Kel8u* const block = kelsMalloc_8u(static_cast<int>(bytes));
    if (block == nullptr) return nullptr;

    auto* const matrix = reinterpret_cast<BlockMatrix<T>*>(block);
    matrix->rawBlock = block;
    matrix->blockCount = static_cast<Kel16s>(nBlocks);
    matrix->rowCount = static_cast<Kel16s>(rowCount);
    matrix->blockSizes = reinterpret_cast<Kel32s*>(block + sizeof(BlockMatrix<T>));
    if (nBlocks > 0) std::memcpy(matrix->blockSizes, sizes, static_cast<std::size_t>(nBlocks) * sizeof(Kel32s));
    const auto tableStart = roundUp<std::size_t>(sizeof(BlockMatrix<T>) + static_cast<std::size_t>(nBlocks) * 4, 16);
    matrix->rowPointers = reinterpret_cast<T**>(block + tableStart);

    Kel8u* row = block + tableStart + tableBytes;
    T** next = matrix->rowPointers;
    for (int b = 0; b < nBlocks; ++b) {
        const auto rowBytes = roundUp<std::size_t>(static_cast<std::size_t>(sizes[b]) * sizeof(T), 16);
        for (int i = 0; i < sizes[b]; ++i, row += rowBytes) *next++ = reinterpret_cast<T*>(row);
    }
    return matrix;
}

}  // namespace

void* allocateBytes(int64_t count, std::size_t elementSize) {
    constexpr std::size_t overhead = kBlockAlignment + kPointer;
    if (count < 1) return nullptr;
    if (static_cast<uint64_t>(count) > (PTRDIFF_MAX - overhead) / elementSize) return nullptr;
    void* const raw = std::malloc(static_cast<std::size_t>(count) * elementSize + overhead);
    if (raw == nullptr) return nullptr;
    const auto address = (reinterpret_cast<uintptr_t>(raw) + overhead - 1) / kBlockAlignment * kBlockAlignment;
    void* const aligned = reinterpret_cast<void*>(address);
    *rawPointerSlot(aligned) = raw;
    return aligned;
}

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

BlockMatrix<Kel16s>* allocMatrix_16s(const Kel32s* sizes, int nBlocks) {
    return allocateBlockMatrix<Kel16s>(sizes, nBlocks);
}
BlockMatrix<Kel32f>* allocMatrix_32f(const Kel32s* sizes, int nBlocks) {
    return allocateBlockMatrix<Kel32f>(sizes, nBlocks);
}
BlockMatrix<Kel64f>* allocMatrix_64f(const Kel32s* sizes, int nBlocks) {
    return allocateBlockMatrix<Kel64f>(sizes, nBlocks);
}

}  // namespace kels

using kels::allocate;

Kel8u* kelsMalloc_8u(int n) {
    return allocate<Kel8u>(n);
}
Kel16s* kelsMalloc_16s(int n) {
    return allocate<Kel16s>(n);
}
Kel32s* kelsMalloc_32s(int n) {
    return allocate<Kel32s>(n);
}
Kel32f* kelsMalloc_32f(int n) {
    return allocate<Kel32f>(n);
}
Kel64f* kelsMalloc_64f(int n) {
    return allocate<Kel64f>(n);
}

void kelsFree(void* ptr) {
    if (ptr != nullptr) std::free(*kels::rawPointerSlot(ptr));
}
