/** @defgroup model Constants and matrices of Gaussian models
 *
 * What a Gaussian model needs before it can be scored: the constant of each Gaussian, and block-diagonal inverse
 * covariances.
 *
 * @code{.c}
 * // The constant of one component with the weight 0.3, ready for kelsLogGaussSingle_32f.
 * const Kel32f ivar[3] = {4, 1, 0.5f}, logWeight = logf(0.3f);
 * Kel32f det, gConst;
 * kelsUpdateGConst_32f(ivar, 3, &det);
 * kelsOutProbPreCalc_32f(&logWeight, &det, &gConst, 1);
 *
 * // A matrix of two blocks, of 2 x 2 and 1 x 1.
 * const Kel32f first[2] = {4, 1}, second[2] = {1, 3}, third[1] = {2};
 * const Kel32f* rows[3] = {first, second, third};
 * const int sizes[2] = {2, 1};
 * KelBlockDMatrix_32f* matrix;
 * if (kelsBlockDMatrixInitAlloc_32f(&matrix, rows, sizes, 2) == kelStatusOk) kelsBlockDMatrixFree_32f(matrix);
 * @endcode
 *
 * ## What it computes
 * A diagonal Gaussian with the mean, the inverse variances ivar = 1 / var and the weight w scores a vector x as
 *
 *     gConst - 1/2 * sum of (x[i] - mean[i])^2 * ivar[i]
 *
 * which is the logarithm of its weighted density if
 *
 *     gConst = ln(w) - det / 2,    det = len * ln(2 pi) + sum of ln(var[i])
 *
 * In det, ln(2 pi) is 1.8378770664093, with these 13 decimals and no more, in all functions of the library.
 *
 * ## Ownership
 * A matrix belongs to the caller from InitAlloc to Free. The rows that it is made from are copied.
 *
 * ## Accuracy
 * Logarithms and their sum, in the order of the elements, are in double precision. The 32f forms round once, at the
 * end.
 *
 * ## Checks, in order
 * - kelStatusNullPtr: a pointer is null.
 * - kelStatusSize: len or nBlocks is below 1, or a block's size is.
 * - kelStatusNoMemory, InitAlloc only: memory is out, or there are more than 32767 blocks or rows.
 *
 * ## Threads
 * A matrix is only read by the functions that score with it; any number of threads may share it.
 *
 * Definitions: src/scoring/model.cpp; the scores with block-diagonal matrices stand in kels/gauss.h.
 * @{
 */
#ifndef KELS_MODEL_H
#define KELS_MODEL_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Determinants
 * *pDet = det, from len inverse variances, or in the DirectVar forms from len variances.
 *
 * The first element that has no logarithm decides what is stored instead, and which warning is returned:
 *
 * - a magnitude below the smallest normal number of the type, which includes zero: +infinity and kelStatusLogZero;
 * - a negative one: NaN and kelStatusLogNegative.
 *
 * Where neither occurs, an element that is NaN gives NaN and kelStatusOk.
 * @{ */
KELS_API KelStatus kelsUpdateGConst_32f(const Kel32f* pIVar, int len, Kel32f* pDet);
KELS_API KelStatus kelsUpdateGConst_64f(const Kel64f* pIVar, int len, Kel64f* pDet);
KELS_API KelStatus kelsUpdateGConst_DirectVar_32f(const Kel32f* pVar, int len, Kel32f* pDet);
KELS_API KelStatus kelsUpdateGConst_DirectVar_64f(const Kel64f* pVar, int len, Kel64f* pDet);
/** @} */

/** @name Constants
 * pGConst[i] = pLogWeight[i] - pDet[i] / 2. The _I forms work in place on the determinants. Arrays may overlap in any
 * way: element follows element, as in a loop.
 *
 * The integer forms round the half upward, so that a det of 3 subtracts 2 and one of -3 subtracts -1, and saturate.
 * @{ */
KELS_API KelStatus kelsOutProbPreCalc_32f(const Kel32f* pLogWeight, const Kel32f* pDet, Kel32f* pGConst, int len);
KELS_API KelStatus kelsOutProbPreCalc_64f(const Kel64f* pLogWeight, const Kel64f* pDet, Kel64f* pGConst, int len);
KELS_API KelStatus kelsOutProbPreCalc_32f_I(const Kel32f* pLogWeight, Kel32f* pDetGConst, int len);
KELS_API KelStatus kelsOutProbPreCalc_64f_I(const Kel64f* pLogWeight, Kel64f* pDetGConst, int len);
KELS_API KelStatus kelsOutProbPreCalc_32s(const Kel32s* pLogWeight, const Kel32s* pDet, Kel32s* pGConst, int len);
KELS_API KelStatus kelsOutProbPreCalc_32s_I(const Kel32s* pLogWeight, Kel32s* pDetGConst, int len);
/** @} */

/** @name Block-diagonal matrices
 * A matrix with nBlocks square blocks on its diagonal, block b of pSizes[b] rows and columns. Its dimension is the sum
 * of the sizes.
 *
 * ppSrc has a pointer for every row of the matrix, to the values of that row inside its block: pSizes[b] of them for
 * each row of block b. *ppMatrix is written only with kelStatusOk.
 * @{ */
typedef struct KelBlockDMatrix_16s KelBlockDMatrix_16s;
typedef struct KelBlockDMatrix_32f KelBlockDMatrix_32f;
typedef struct KelBlockDMatrix_64f KelBlockDMatrix_64f;

KELS_API KelStatus kelsBlockDMatrixInitAlloc_16s(KelBlockDMatrix_16s** ppMatrix, const Kel16s** ppSrc,
                                                 const int* pSizes, int nBlocks);
KELS_API KelStatus kelsBlockDMatrixInitAlloc_32f(KelBlockDMatrix_32f** ppMatrix, const Kel32f** ppSrc,
                                                 const int* pSizes, int nBlocks);
KELS_API KelStatus kelsBlockDMatrixInitAlloc_64f(KelBlockDMatrix_64f** ppMatrix, const Kel64f** ppSrc,
                                                 const int* pSizes, int nBlocks);
KELS_API KelStatus kelsBlockDMatrixFree_16s(KelBlockDMatrix_16s* pMatrix);
KELS_API KelStatus kelsBlockDMatrixFree_32f(KelBlockDMatrix_32f* pMatrix);
KELS_API KelStatus kelsBlockDMatrixFree_64f(KelBlockDMatrix_64f* pMatrix);
/** @} */

#ifdef __cplusplus
}
#endif

/** @} */

#endif
