/* Constants that Gaussian models are scored with, and block-diagonal matrices of inverse covariances.
 *
 * A diagonal Gaussian with mean, inverse variances ivar = 1 / var and the weight w of its mixture scores a vector x as
 *
 *     gConst - 1/2 * sum (x_i - mean_i)^2 * ivar_i,   gConst = ln w - 1/2 * det,   det = len * ln(2 pi) + sum ln var_i
 *
 * which is the logarithm of the weighted density.  ln(2 pi) is 1.8378770664093, to these 13 decimals, in all functions.
 */
#ifndef KELS_MODEL_H
#define KELS_MODEL_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* *pDet = det, from len inverse variances or variances.  Logarithms and their sum, in the order of the elements, are in
 * double precision; the 32f forms round once, at the end.
 *
 * Checks: a null pointer -8; len below 1 -6.  Warnings, decided by the first element that has no logarithm: its
 * magnitude is below the smallest normal number of the type (zero and tiny negative ones included): 7 and *pDet =
 * +infinity; it is negative: 8 and *pDet = NaN.  NaN among the elements gives NaN and status 0.
 */
KELS_API KelStatus kelsUpdateGConst_32f(const Kel32f* pIVar, int len, Kel32f* pDet);
KELS_API KelStatus kelsUpdateGConst_64f(const Kel64f* pIVar, int len, Kel64f* pDet);
KELS_API KelStatus kelsUpdateGConst_DirectVar_32f(const Kel32f* pVar, int len, Kel32f* pDet);
KELS_API KelStatus kelsUpdateGConst_DirectVar_64f(const Kel64f* pVar, int len, Kel64f* pDet);

/* pGConst[i] = pLogWeight[i] - pDet[i] / 2; _I: from det in place.  Arrays may overlap in any way: element follows
 * element, as in a loop.  The integer forms round the half upward (det 3 subtracts 2, det -3 subtracts -1) and
 * saturate.  Checks: a null pointer -8; len below 1 -6.
 */
KELS_API KelStatus kelsOutProbPreCalc_32f(const Kel32f* pLogWeight, const Kel32f* pDet, Kel32f* pGConst, int len);
KELS_API KelStatus kelsOutProbPreCalc_64f(const Kel64f* pLogWeight, const Kel64f* pDet, Kel64f* pGConst, int len);
KELS_API KelStatus kelsOutProbPreCalc_32f_I(const Kel32f* pLogWeight, Kel32f* pDetGConst, int len);
KELS_API KelStatus kelsOutProbPreCalc_64f_I(const Kel64f* pLogWeight, Kel64f* pDetGConst, int len);
KELS_API KelStatus kelsOutProbPreCalc_32s(const Kel32s* pLogWeight, const Kel32s* pDet, Kel32s* pGConst, int len);
KELS_API KelStatus kelsOutProbPreCalc_32s_I(const Kel32s* pLogWeight, Kel32s* pDetGConst, int len);

/* A matrix with nBlocks square blocks on its diagonal, of pSizes[b] rows each; its dimension is the sum of the sizes.
 * For every row of the matrix, ppSrc holds a pointer to the values of that row inside its block: pSizes[b] of them for
 * each row of block b.  They are copied; the matrix belongs to the caller until Free.
 *
 * Checks of InitAlloc: a null ppMatrix, ppSrc or pSizes -8; nBlocks below 1 -6; a size below 1 -6; -9 when memory is
 * out, or there are more than 32767 blocks or rows.  *ppMatrix is written only with status 0.  Free of null is -8.
 */
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

#ifdef __cplusplus
}
#endif

#endif
