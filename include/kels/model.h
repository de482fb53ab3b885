/* Block-diagonal matrices of a model, built by the library and opaque to the caller. */
#ifndef KELS_MODEL_H
#define KELS_MODEL_H

#include "kels/types.h"

typedef struct KelBlockDMatrix_16s KelBlockDMatrix_16s;
typedef struct KelBlockDMatrix_32f KelBlockDMatrix_32f;
typedef struct KelBlockDMatrix_64f KelBlockDMatrix_64f;

#endif
