// A table of row pointers and the rows that it points to, in one block.
//
// Alloc2_*, RLsAlloc2, Free2 and Free2d are names that the interface fixes; inside, allocateRows<T> and kelsFree do.
#pragma once

#include "kels/core.h"

namespace kels {

// Each row is 32-byte aligned and padded to a multiple of 8 elements; nothing is cleared.  With rows < 1 a block
// without pointers, or null where the size of that block is below 1; null, too, where the size does not fit an int.
template <class T>
T** allocateRows(int rows, int cols);

Kel32f** Alloc2_32f(int rows, int cols);
Kel32f** Alloc2_32fd(int rows, int cols);
Kel32s** Alloc2_32s(int rows, int cols);
Kel32f** RLsAlloc2(int rows, int cols);  // null for rows or cols below 1
void Free2(void* array);
void Free2d(void* array);

}  // namespace kels
