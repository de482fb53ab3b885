// Block-diagonal matrices in one block of memory; allocMatrix_* are names that the interface fixes.
#include "scoring/block_matrix.h"

#include <cstdint>
#include <limits>

#include "core/layout.h"
#include "kels/core.h"

namespace kels::scoring {
namespace {

constexpr int64_t kRowAlignment = 16;

constexpr bool fitsHeader(int64_t count) {
    return count <= std::numeric_limits<Kel16s>::max();
}

template <class T>
constexpr int64_t rowBytesOf(Kel32s size) {
    return roundUp<int64_t>(size * int64_t{sizeof(T)}, kRowAlignment);
}

// Bytes of the whole block.  For the rows of a square its row length in bytes is squared, which is more than they need;
// the sizes of models that callers reckon with include it.
template <class T>
constexpr int64_t blockBytes(int nBlocks, int64_t rowCount, int64_t squaredRowBytes) {
    const auto padded = [](int64_t bytes) { return roundUp<int64_t>(bytes, kRowAlignment); };
    return padded(sizeof(BlockMatrix<T>)) + padded(int64_t{sizeof(Kel32s)} * nBlocks) +
           padded(int64_t{sizeof(T*)} * rowCount) + squaredRowBytes + kRowAlignment - 1;
}

}  // namespace

template <class T>
BlockMatrix<T>* allocateBlockMatrix(const Kel32s* sizes, int nBlocks) {
    if (nBlocks < 0 || !fitsHeader(nBlocks)) return nullptr;
    int64_t rowCount = 0;
    int64_t squaredRowBytes = 0;
    for (int b = 0; b < nBlocks; ++b) {
        if (sizes[b] < 1 || !fitsHeader(sizes[b])) return nullptr;
        rowCount += sizes[b];
        squaredRowBytes += rowBytesOf<T>(sizes[b]) * rowBytesOf<T>(sizes[b]);
    }
    if (!fitsHeader(rowCount)) return nullptr;
    const int64_t bytes = blockBytes<T>(nBlocks, rowCount, squaredRowBytes);
    if (bytes > std::numeric_limits<int>::max()) return nullptr;
    Kel8u* const block = kelsMalloc_8u(static_cast<int>(bytes));
    if (block == nullptr) return nullptr;

    Layout layout(block);
    auto* const matrix = layout.take<BlockMatrix<T>>(1);
    matrix->rawBlock = block;
    matrix->blockCount = static_cast<Kel16s>(nBlocks);
    matrix->rowCount = static_cast<Kel16s>(rowCount);
    matrix->blockSizes = layout.take<Kel32s>(nBlocks, alignof(Kel32s));
    std::copy_n(sizes, nBlocks, matrix->blockSizes);
    matrix->rowPointers = layout.take<T*>(rowCount, kRowAlignment);
    T** next = matrix->rowPointers;
    for (int b = 0; b < nBlocks; ++b) {
        for (int i = 0; i < sizes[b]; ++i) *next++ = layout.take<T>(sizes[b], kRowAlignment);
    }
    return matrix;
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

}  // namespace kels::scoring
