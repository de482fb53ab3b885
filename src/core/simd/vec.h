// Vectors: everything that kernels are written with.  A kernel is written once on Vec<T>, whose width is that of the
// build's target; every use of an intrinsic stands in this folder, but for a few that serve one family alone.
#pragma once

#include "core/simd/arithmetic.h"
#include "core/simd/load_store.h"
#include "core/simd/map.h"
#include "core/simd/permute.h"
#include "core/simd/widen.h"
