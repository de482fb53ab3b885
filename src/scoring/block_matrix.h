// The block-diagonal matrices that callers hold as opaque pointers.
#pragma once

#include <algorithm>

#include "core/memory.h"
#include "kels/model.h"

namespace kels {

inline BlockMatrix<Kel16s>* blockMatrix(KelBlockDMatrix_16s* p) {
    return reinterpret_cast<BlockMatrix<Kel16s>*>(p);
}
inline BlockMatrix<Kel32f>* blockMatrix(KelBlockDMatrix_32f* p) {
    return reinterpret_cast<BlockMatrix<Kel32f>*>(p);
}
inline BlockMatrix<Kel64f>* blockMatrix(KelBlockDMatrix_64f* p) {
    return reinterpret_cast<BlockMatrix<Kel64f>*>(p);
}
inline const BlockMatrix<Kel16s>* blockMatrix(const KelBlockDMatrix_16s* p) {
    return reinterpret_cast<const BlockMatrix<Kel16s>*>(p);
}
inline const BlockMatrix<Kel32f>* blockMatrix(const KelBlockDMatrix_32f* p) {
    return reinterpret_cast<const BlockMatrix<Kel32f>*>(p);
}
inline const BlockMatrix<Kel64f>* blockMatrix(const KelBlockDMatrix_64f* p) {
    return reinterpret_cast<const BlockMatrix<Kel64f>*>(p);
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

}  // namespace kels
