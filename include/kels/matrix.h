/** @defgroup matrix Matrix algebra
 *
 * What feature transforms and their estimation need of linear algebra: small dense matrices times vectors and times
 * every frame of a block, sums over rows and columns, columns chosen and normalised, singular values, QR and triangular
 * systems.
 *
 * @code{.c}
 * // Principal components of four centred frames: the rows of V' in the order of their variance.
 * const Kel64f frames[4][2] = {{2, 1}, {-2, -1}, {1, 2}, {-1, -2}};
 * Kel64f u[4][2], s[2], v[2][2], rows[2][2], components[4][2];
 * if (kelsSVD_64f_D2(frames[0], 2, u[0], 2, s, v[0], 2, 2, 4) == kelStatusOk) {
 *     for (int i = 0; i < 2; ++i) {
 *         for (int j = 0; j < 2; ++j) rows[i][j] = v[j][i];
 *     }
 *     kelsMatVecMulRows_64f_D2(frames[0], 2, rows[0], 2, NULL, components[0], 2, 2, 2, 4);
 *     printf("%.3f: the first frame along the main axis, whose variance is %.3f\n", components[0][0], s[0] * s[0] / 3);
 * }
 * @endcode
 *
 * ## Shapes and units
 * A matrix A has `height` rows of `width` values.  In the D2 forms it is one array, row i from element i * step on; the
 * step counts elements and is at least the width.  In the D2L forms it is an array of row pointers; rows need not be
 * contiguous or in order, and the pointers are only read.  Elements between the width and the step are neither read nor
 * written.
 *
 * In the argument lists every matrix is followed by its step.  Products with one vector, sums and AddNRows give each
 * vector's length behind it and any other size behind the matrix; the other functions give all sizes at the end.
 *
 * Sources and destinations do not overlap except in the I forms and where a function says so.  A source may be given
 * twice.
 *
 * ## Accuracy
 * u is 2^-24 for Kel32f and 2^-53 for Kel64f, n the number of terms of a sum.
 *
 * | functions                                    | bound of the error                                        |
 * |----------------------------------------------|-----------------------------------------------------------|
 * | MatVecMul, VecMatMul, sums of Kel32f         | 2^-24 of the result + (n + 2) 2^-53 of the sum of magnitudes |
 * | MatVecMul, VecMatMul, sums of Kel64f         | (n + 2) 2^-53 of the sum of magnitudes                    |
 * | the same of 16 bits                          | exact, then rounded once                                  |
 * | MatVecMulRows                                | (srcWidth + 1) u of the sum of magnitudes, the offset's included |
 * | NormalizeColumn                              | two operations of the element type, each rounded, never fused |
 * | SVD, QRTransColumn                           | 16 (height + width) u, relative to the norm of A          |
 * | SolveUpper                                   | backward: (len + 2) u of the magnitudes in each row       |
 *
 * They hold where nothing overflows; below the normal range the smallest positive number comes on top, once for each
 * term and for the result.
 *
 * ## Checks, in order
 * 1. kelStatusNullPtr: a null pointer; only pOffset may be null.
 * 2. kelStatusSize: a size below 1; in AddNRows an offset below 0; in QRTransColumn a height below the width.
 * 3. kelStatusStep, in D2 forms: a step shorter than what is used of a row; AddNRows and CopyColumn say what that is.
 * 4. kelStatusBadArg: an index out of range; kelStatusNoConverge: SVD of a matrix that is not finite.
 * 5. kelStatusNoMemory: SVD and QRTransColumn need scratch memory, taken from the stack up to 32 KiB.
 *
 * ## Threads
 * Nothing is kept between calls; calls with different destinations may run at once.
 *
 * ## Source
 * G. H. Golub, C. F. Van Loan, "Matrix Computations", 4th edition, 2013: 3.1 triangular systems, 5.1 and 5.2
 * Householder QR, 5.4 and 8.6 singular values.  N. J. Higham, "Accuracy and Stability of Numerical Algorithms", 2nd
 * edition, 2002.
 *
 * The functions are in `src/training/matrix/`.
 * @{
 */
#ifndef KELS_MATRIX_H
#define KELS_MATRIX_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Products with a vector
 *
 *     MatVecMul   y = A x:  pDst[i] = sum over j of A[i][j] * pSrcVec[j]
 *     VecMatMul   y = x A:  pDst[j] = sum over i of pSrcVec[i] * A[i][j]
 *
 * Sums are formed in double precision and rounded once.  The 16-bit forms sum exactly, scale by 2^-scaleFactor, round
 * to the nearest integer with ties to even, and saturate: a transform with coefficients in Q14 takes scaleFactor 14.
 *
 * With A = (3 0; 4 5) and x = (1, 2), A x is (3, 14) and x A is (11, 10).
 * @{ */
KELS_API KelStatus kelsMatVecMul_32f_D2(const Kel32f* pSrcMatr, int srcStep, const Kel32f* pSrcVec, int width,
                                        Kel32f* pDst, int height);
KELS_API KelStatus kelsMatVecMul_32f_D2L(const Kel32f** ppSrcMatr, const Kel32f* pSrcVec, int width, Kel32f* pDst,
                                         int height);
KELS_API KelStatus kelsMatVecMul_64f_D2(const Kel64f* pSrcMatr, int srcStep, const Kel64f* pSrcVec, int width,
                                        Kel64f* pDst, int height);
KELS_API KelStatus kelsMatVecMul_64f_D2L(const Kel64f** ppSrcMatr, const Kel64f* pSrcVec, int width, Kel64f* pDst,
                                         int height);
KELS_API KelStatus kelsMatVecMul_16s_D2Sfs(const Kel16s* pSrcMatr, int srcStep, const Kel16s* pSrcVec, int width,
                                           Kel16s* pDst, int height, int scaleFactor);
KELS_API KelStatus kelsMatVecMul_16s_D2LSfs(const Kel16s** ppSrcMatr, const Kel16s* pSrcVec, int width, Kel16s* pDst,
                                            int height, int scaleFactor);
KELS_API KelStatus kelsVecMatMul_32f_D2(const Kel32f* pSrcVec, int height, const Kel32f* pSrcMatr, int srcStep,
                                        Kel32f* pDst, int width);
KELS_API KelStatus kelsVecMatMul_32f_D2L(const Kel32f* pSrcVec, int height, const Kel32f** ppSrcMatr, Kel32f* pDst,
                                         int width);
KELS_API KelStatus kelsVecMatMul_64f_D2(const Kel64f* pSrcVec, int height, const Kel64f* pSrcMatr, int srcStep,
                                        Kel64f* pDst, int width);
KELS_API KelStatus kelsVecMatMul_64f_D2L(const Kel64f* pSrcVec, int height, const Kel64f** ppSrcMatr, Kel64f* pDst,
                                         int width);
/** @} */

/** @name A matrix times every row of a block
 * An affine transform of a block of frames, such as LDA, PCA or CMLLR.  For each of `height` rows t
 *
 *     Dst[t][i] = pOffset[i] + sum over j of Matr[i][j] * Src[t][j],    i < dstWidth, j < srcWidth
 *
 * pOffset may be null for none.  With B as the block and A as the matrix this is B A', the product of two matrices
 * whose rows are at hand.
 *
 * These are the fast products: several rows and outputs at a time, in the element type.  The bits of a row depend on
 * that row, the matrix and the offset alone, never on the height of the block, steps, alignment or layout: frames may
 * come one by one or all at once.  A NaN in one row stays in it.
 * @{ */
KELS_API KelStatus kelsMatVecMulRows_32f_D2(const Kel32f* pSrc, int srcStep, const Kel32f* pMatr, int matrStep,
                                            const Kel32f* pOffset, Kel32f* pDst, int dstStep, int srcWidth,
                                            int dstWidth, int height);
KELS_API KelStatus kelsMatVecMulRows_32f_D2L(const Kel32f** ppSrc, const Kel32f** ppMatr, const Kel32f* pOffset,
                                             Kel32f** ppDst, int srcWidth, int dstWidth, int height);
KELS_API KelStatus kelsMatVecMulRows_64f_D2(const Kel64f* pSrc, int srcStep, const Kel64f* pMatr, int matrStep,
                                            const Kel64f* pOffset, Kel64f* pDst, int dstStep, int srcWidth,
                                            int dstWidth, int height);
KELS_API KelStatus kelsMatVecMulRows_64f_D2L(const Kel64f** ppSrc, const Kel64f** ppMatr, const Kel64f* pOffset,
                                             Kel64f** ppDst, int srcWidth, int dstWidth, int height);
/** @} */

/** @name Sums of columns and of rows
 *
 *     SumColumn   pDst[j] = sum over i of A[i][j]
 *     SumRow      pDst[i] = sum over j of A[i][j]
 *
 * Sums are formed in double precision and rounded once.  Sums of 16 bits are exact, scaled by 2^-scaleFactor, rounded
 * to the nearest integer with ties to even, and saturated.
 * @{ */
KELS_API KelStatus kelsSumColumn_32f_D2(const Kel32f* pSrc, int srcStep, int height, Kel32f* pDst, int width);
KELS_API KelStatus kelsSumColumn_32f_D2L(const Kel32f** ppSrc, int height, Kel32f* pDst, int width);
KELS_API KelStatus kelsSumColumn_64f_D2(const Kel64f* pSrc, int srcStep, int height, Kel64f* pDst, int width);
KELS_API KelStatus kelsSumColumn_64f_D2L(const Kel64f** ppSrc, int height, Kel64f* pDst, int width);
KELS_API KelStatus kelsSumColumn_16s32s_D2Sfs(const Kel16s* pSrc, int srcStep, int height, Kel32s* pDst, int width,
                                              int scaleFactor);
KELS_API KelStatus kelsSumColumn_16s32s_D2LSfs(const Kel16s** ppSrc, int height, Kel32s* pDst, int width,
                                               int scaleFactor);
KELS_API KelStatus kelsSumRow_32f_D2(const Kel32f* pSrc, int srcStep, int width, Kel32f* pDst, int height);
KELS_API KelStatus kelsSumRow_32f_D2L(const Kel32f** ppSrc, int width, Kel32f* pDst, int height);
KELS_API KelStatus kelsSumRow_64f_D2(const Kel64f* pSrc, int srcStep, int width, Kel64f* pDst, int height);
KELS_API KelStatus kelsSumRow_64f_D2L(const Kel64f** ppSrc, int width, Kel64f* pDst, int height);
KELS_API KelStatus kelsSumRow_16s32s_D2Sfs(const Kel16s* pSrc, int srcStep, int width, Kel32s* pDst, int height,
                                           int scaleFactor);
KELS_API KelStatus kelsSumRow_16s32s_D2LSfs(const Kel16s** ppSrc, int width, Kel32s* pDst, int height, int scaleFactor);
/** @} */

/** @name Sums of chosen rows
 *
 *     pDst[j] = sum over k < n of A[pIndx[k]][offset + j],    j < width
 *
 * A row counts as often as it is named: the frames of one class, or the rows of a table of weights that are switched
 * on.
 *
 * The step has to hold offset + width elements.  An index outside 0 .. height - 1 gives kelStatusBadArg; the whole
 * table is looked at before anything is written.
 * @{ */
KELS_API KelStatus kelsAddNRows_32f_D2(const Kel32f* pSrc, int srcStep, int height, int offset, const Kel32s* pIndx,
                                       int n, Kel32f* pDst, int width);
KELS_API KelStatus kelsAddNRows_32f_D2L(const Kel32f** ppSrc, int height, int offset, const Kel32s* pIndx, int n,
                                        Kel32f* pDst, int width);
KELS_API KelStatus kelsAddNRows_64f_D2(const Kel64f* pSrc, int srcStep, int height, int offset, const Kel32s* pIndx,
                                       int n, Kel64f* pDst, int width);
KELS_API KelStatus kelsAddNRows_64f_D2L(const Kel64f** ppSrc, int height, int offset, const Kel32s* pIndx, int n,
                                        Kel64f* pDst, int width);
/** @} */

/** @name Choice of columns
 *
 *     Dst[i][j] = Src[i][pIndx[j]],    j < width
 *
 * Indices may repeat and come in any order: 2 0 of the row 7 8 9 give 9 7.  Bits are copied as they are.
 *
 * The step of the source stands for the length of its rows: an index that it does not exceed gives kelStatusStep.  Then
 * a negative index gives kelStatusBadArg.  Row pointers tell no length; there the caller sees to the upper end.
 * @{ */
KELS_API KelStatus kelsCopyColumn_Indirect_16s_D2(const Kel16s* pSrc, int srcStep, const Kel32s* pIndx, Kel16s* pDst,
                                                  int dstStep, int width, int height);
KELS_API KelStatus kelsCopyColumn_Indirect_16s_D2L(const Kel16s** ppSrc, const Kel32s* pIndx, Kel16s** ppDst, int width,
                                                   int height);
KELS_API KelStatus kelsCopyColumn_Indirect_32f_D2(const Kel32f* pSrc, int srcStep, const Kel32s* pIndx, Kel32f* pDst,
                                                  int dstStep, int width, int height);
KELS_API KelStatus kelsCopyColumn_Indirect_32f_D2L(const Kel32f** ppSrc, const Kel32s* pIndx, Kel32f** ppDst, int width,
                                                   int height);
KELS_API KelStatus kelsCopyColumn_Indirect_64f_D2(const Kel64f* pSrc, int srcStep, const Kel32s* pIndx, Kel64f* pDst,
                                                  int dstStep, int width, int height);
KELS_API KelStatus kelsCopyColumn_Indirect_64f_D2L(const Kel64f** ppSrc, const Kel32s* pIndx, Kel64f** ppDst, int width,
                                                   int height);
/** @} */

/** @name Normalisation of columns
 *
 *     Dst[i][j] = (Src[i][j] - pMean[j]) * pScale[j]
 *
 * For unit variance pScale is the reciprocal of the standard deviation, which kelsRecSqrt_32f makes of a variance.
 * @{ */
KELS_API KelStatus kelsNormalizeColumn_32f_D2(const Kel32f* pSrc, int srcStep, const Kel32f* pMean,
                                              const Kel32f* pScale, Kel32f* pDst, int dstStep, int width, int height);
KELS_API KelStatus kelsNormalizeColumn_32f_D2L(const Kel32f** ppSrc, const Kel32f* pMean, const Kel32f* pScale,
                                               Kel32f** ppDst, int width, int height);
KELS_API KelStatus kelsNormalizeColumn_64f_D2(const Kel64f* pSrc, int srcStep, const Kel64f* pMean,
                                              const Kel64f* pScale, Kel64f* pDst, int dstStep, int width, int height);
KELS_API KelStatus kelsNormalizeColumn_64f_D2L(const Kel64f** ppSrc, const Kel64f* pMean, const Kel64f* pScale,
                                               Kel64f** ppDst, int width, int height);
KELS_API KelStatus kelsNormalizeColumn_32f_D2_I(const Kel32f* pMean, const Kel32f* pScale, Kel32f* pSrcDst,
                                                int srcDstStep, int width, int height);
KELS_API KelStatus kelsNormalizeColumn_32f_D2L_I(const Kel32f* pMean, const Kel32f* pScale, Kel32f** ppSrcDst,
                                                 int width, int height);
KELS_API KelStatus kelsNormalizeColumn_64f_D2_I(const Kel64f* pMean, const Kel64f* pScale, Kel64f* pSrcDst,
                                                int srcDstStep, int width, int height);
KELS_API KelStatus kelsNormalizeColumn_64f_D2L_I(const Kel64f* pMean, const Kel64f* pScale, Kel64f** ppSrcDst,
                                                 int width, int height);
/** @} */

/** @name Singular values
 * A = U diag(S) V', where k = min(height, width):
 *
 *     U   height rows of k values: orthonormal columns
 *     S   k values, descending, none below 0
 *     V   width rows of k values (V itself, not its transpose): orthonormal columns
 *
 * In place U takes the first k columns of A; further columns become 0.  The steps of U and V hold k elements at least.
 *
 * Columns are orthonormal whatever the rank of A, zero included.  In each column of V the element of the largest
 * magnitude, the first of equals, is positive.  The four forms give the same bits.  Of a symmetric matrix without
 * negative eigenvalues S are the eigenvalues and V the eigenvectors.
 *
 * Every finite matrix is taken, from the smallest to the largest numbers.  A singular value that does not fit becomes
 * +infinity, and the rest stands.  Small singular values are accurate relative to the largest one, not to themselves.
 * An infinity or a NaN gives kelStatusNoConverge, with nothing written; so would an iteration that does not settle
 * within
 * 60 steps for each value, which no finite matrix should need.
 * @{ */
KELS_API KelStatus kelsSVD_64f_D2(const Kel64f* pSrc, int srcStep, Kel64f* pDstU, int uStep, Kel64f* pDstS,
                                  Kel64f* pDstV, int vStep, int width, int height);
KELS_API KelStatus kelsSVD_64f_D2L(const Kel64f** ppSrc, Kel64f** ppDstU, Kel64f* pDstS, Kel64f** ppDstV, int width,
                                   int height);
KELS_API KelStatus kelsSVD_64f_D2_I(Kel64f* pSrcDst, int srcDstStep, Kel64f* pDstS, Kel64f* pDstV, int vStep, int width,
                                    int height);
KELS_API KelStatus kelsSVD_64f_D2L_I(Kel64f** ppSrcDst, Kel64f* pDstS, Kel64f** ppDstV, int width, int height);
/** @} */

/** @name QR decomposition
 * A = Q R, height >= width.  Q, whose columns are orthonormal, takes the place of A.  R has width x width elements,
 * none below 0 on its diagonal and zeros below it.
 *
 * With full rank this is unique; without it Q is still orthonormal, and R has small values or zeros on its diagonal.
 * It makes no difference how far apart the magnitudes of the columns lie: a column that is multiplied by a power of two
 * has its column of R multiplied and changes nothing else.  Of a matrix that is not finite the results are undefined.
 *
 * Least squares, min |A x - b|: QRTransColumn of A, VecMatMul of b and Q, SolveUpper.
 * @{ */
KELS_API KelStatus kelsQRTransColumn_64f_D2(Kel64f* pSrcDst, int srcDstStep, Kel64f* pDstR, int rStep, int width,
                                            int height);
KELS_API KelStatus kelsQRTransColumn_64f_D2L(Kel64f** ppSrcDst, Kel64f** ppDstR, int width, int height);
/** @} */

/** @name Triangular systems
 * x with R x = b, where pSrcVec is b and pDst is x; they may be the same array.  Nothing below the diagonal of R is
 * read.
 *
 * A zero on the diagonal, of either sign, gives infinity of the sign of the numerator, or NaN where the numerator is 0,
 * and the warning kelStatusDivByZero; the rows above go on with that value.
 * @{ */
KELS_API KelStatus kelsSolveUpper_64f_D2(const Kel64f* pSrc, int srcStep, const Kel64f* pSrcVec, Kel64f* pDst, int len);
KELS_API KelStatus kelsSolveUpper_64f_D2L(const Kel64f** ppSrc, const Kel64f* pSrcVec, Kel64f* pDst, int len);
/** @} */

#ifdef __cplusplus
}
#endif
/** @} */

#endif
