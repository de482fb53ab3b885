// Block-diagonal matrices: what stands behind the opaque pointers that callers hold.
//
// allocMatrix_* are names that the interface fixes; inside, allocateBlockMatrix<T> does the work.
#pragma once

#include <algorithm>
#include <type_traits>

#include "kels/model.h"

namespace kels::scoring {

// Square blocks on the diagonal of a matrix: this header, the block sizes, the row pointers and the rows in one piece
// of memory.  A row holds the elements inside its square; it is padded to 16 bytes and starts on a 16-byte boundary.
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
template <class T>
BlockMatrix<T>* allocateBlockMatrix(const Kel32s* sizes, int nBlocks);

BlockMatrix<Kel16s>* allocMatrix_16s(const Kel32s* sizes, int nBlocks);
BlockMatrix<Kel32f>* allocMatrix_32f(const Kel32s* sizes, int nBlocks);
BlockMatrix<Kel64f>* allocMatrix_64f(const Kel32s* sizes, int nBlocks);

// The element type of an opaque matrix; named, never called.
Kel16s blockElement(const KelBlockDMatrix_16s*);
Kel32f blockElement(const KelBlockDMatrix_32f*);
Kel64f blockElement(const KelBlockDMatrix_64f*);

template <class Opaque>
auto& blocksOf(Opaque* matrix) {
    using Blocks = BlockMatrix<decltype(blockElement(matrix))>;
    return *reinterpret_cast<std::conditional_t<std::is_const_v<Opaque>, const Blocks, Blocks>*>(matrix);
}

// The values of rows, which begin where their block does, into the rows of the matrix.
template <class T>
void copyBlocks(const T* const* rows, BlockMatrix<T>& matrix) {
    T* const* dst = matrix.rowPointers;
    for (int b = 0; b < matrix.blockCount; ++b) {
        const int n = matrix.blockSizes[b];
        for (int i = 0; i < n; ++i) std::copy_n(*rows++, n, *dst++);
    }
}

}  // namespace kels::scoring
