/** @defgroup vq Codebooks
 *
 * A codebook stands for a set of vectors by a few of them: it is built from training vectors, finds the codevector
 * nearest to a vector, and so turns vectors into small integers and back.
 *
 * @code{.c}
 * // 400 points around the corners of a square, and the corner that each belongs to.
 * enum { kPoints = 400 };
 * Kel32f points[kPoints][2];
 * for (int i = 0; i < kPoints; ++i) {
 *     points[i][0] = (i & 1 ? 10 : 0) + 0.1f * (i % 7);
 *     points[i][1] = (i & 2 ? 10 : 0) + 0.1f * (i % 5);
 * }
 * KelCdbk_32f* codebook;
 * if (kelsCdbkInitAlloc_L2_32f(&codebook, points[0], 2, 2, kPoints, 4, kelCdbkSplitWidest) >= 0) {
 *     Kel32s index[kPoints];
 *     Kel32f distance[kPoints];
 *     kelsVQDist_32f(points[0], 2, index, distance, kPoints, codebook);
 *     printf("point 0 is %.2f away from codevector %d\n", distance[0], index[0]);
 *     kelsCdbkFree_32f(codebook);
 * }
 * @endcode
 *
 * ## What it computes
 * A codebook holds codevectors of `width` components, numbered from 0, and a weight w_i >= 0 for each component.  The
 * distance of a vector x from a codevector c is
 *
 *     d(x, c) = sum over i of w_i * (x_i - c_i)^2
 *
 * Searches compare d.  A function that reports a distance reports the square root of it.
 *
 * Three kinds of codebooks are built:
 * - `kelCdbkExhaustive`: every training row is a codevector, in its order.
 * - `kelCdbkSplitWidest`: clusters of rows are split in two until there are enough.  The next one to be split is that
 *   of the largest spread, which is twice the largest distance of a member from the centroid.
 * - `kelCdbkSplitLargest`: the same, but the next one is that of the most members among those of a spread above 0.
 *
 * Splitting refines all clusters after each split: centroids and assignments follow each other in at most 20 passes,
 * until the total distance changes by no more than 1e-4 of itself.  A cluster never loses its last member.  The tree
 * of splits is kept for searches.
 *
 * An exhaustive codebook of width 1 or 2 with more than 10 codevectors may get a grid: cells over the line or the
 * plane, each with a list of the codevectors that can be nearest to a point of it.  The grid is kept where these
 * lists are short enough to be worth it.  It changes no result.
 *
 * Distances are compared with a small relative tolerance, so that differences of rounding do not decide:
 * - The nearest codevector: candidates are tried by ascending index, and one replaces the best so far if d * 1.000001
 *   < best.  Of equal distances the lowest index wins.
 * - Codevectors in order: behind a pick of distance p at index j comes the next index above j whose distance is
 *   within 1e-6 of p, relative to the larger of both.  Where there is none, the nearest of those not yet picked comes
 *   next. Equal distances therefore come by ascending index, and no index comes twice.
 *
 * A split codebook is searched through its tree.  At each node there are four grandchildren (a child that is a leaf
 * stands there for itself); with l and r for the least of their distances on either side, the search goes to the left
 * if l < 1.000001 * r.  From the leaf it climbs to the first of the leaf's neighbours with d * 1.000001 < d of the
 * leaf, and on from there while there is one.  This is several times faster than comparing all codevectors.  It finds
 * the nearest one in most cases and a near one in the others.
 *
 * ## Shapes and units
 * Rows of vectors are `step` elements apart.  16-bit codebooks have rows, weights and codevectors of 16-bit integers:
 * their clusters are formed as those of floats, and the centroids are rounded to the nearest integers (ties to even)
 * at the end.  The distances that they report are scaled by 2^-scaleFactor, rounded to the nearest (ties to even) and
 * saturated.
 *
 * ## Ownership
 * Codebooks from the `InitAlloc` functions go back with kelsCdbkFree.  Those made in memory of the caller by
 * kelsCdbkInit_L2 need no release.
 *
 * ## Accuracy
 * Float codebooks add up distances in single precision, in an order of their own; 16-bit codebooks compute them
 * exactly. The factors of the tolerance are single-precision numbers in the float forms and double-precision ones in
 * the others.
 *
 * ## Checks, in order
 * They are listed with each group of functions.  A codebook without codevectors counts as a null pointer everywhere.
 *
 * ## Threads
 * Searches of many rows only read the codebook, so threads may share it.  The searches of a single vector (`Sort`,
 * `Thresh`) keep distances in the codebook: it serves one such call at a time.
 *
 * ## Source
 * Y. Linde, A. Buzo, R. Gray, "An algorithm for vector quantizer design", IEEE Transactions on Communications 28
 * (1980), 84-95, for splitting with refinement; A. Gersho, R. Gray, "Vector Quantization and Signal Compression",
 * 1992, for tree searches and split quantisation.  The functions are in `src/training/codebook/`.
 * @{
 */
#ifndef KELS_VQ_H
#define KELS_VQ_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** The kinds of codebooks. */
enum { kelCdbkExhaustive = 1, kelCdbkSplitWidest = 2, kelCdbkSplitLargest = 3 };

/** Bits of KelCdbk_32f.flags. */
enum { kelCdbkHasGrid = 1, kelCdbkWeighted = 2 };

/** A cluster of the tree of splits.  It may be read by everyone and is written by the library alone. */
typedef struct KelCdbkNode {
    Kel32f spread;                    /* twice the largest distance (squared, weighted) of a member to the centroid */
    Kel32f* centroid;                 /* width components */
    Kel32s index;                     /* of a leaf: its codevector */
    Kel32s count;                     /* members; of an inner node: when it was split */
    Kel32s isLeaf;                    /* 1 or 0 */
    Kel32s depth;                     /* 1 at the root */
    struct KelCdbkNode *left, *right; /* null in a leaf */
    Kel32s neighbourCount;            /* of a leaf: how many of the nearest other leaves are listed ... */
    struct KelCdbkNode** neighbours;  /* ... here, nearest first */
    void* fastBlock; /* widths 1, 2, 4 and 8.  Inner node: the centroids of its four grandchildren.  Leaf: those of its
                        neighbours, then (from the next pointer boundary on) a copy of the neighbour list. */
} KelCdbkNode;

/** A codebook of floats.  It may be read by everyone and is written by the library alone. */
typedef struct {
    Kel32s lastIndexOrDepth; /* exhaustive: number of codevectors less 1; split: the greatest depth of a leaf */
    Kel32s cdbkSize;         /* number of codevectors held */
    Kel32s width;
    Kel32s rowStep; /* elements from one codevector to the next */
    Kel32s kind;
    Kel32f* codevectors;
    KelCdbkNode* treeRoot; /* null in an exhaustive codebook */
    Kel32s flags;
    Kel32f* weights;  /* width weights */
    void* grid;       /* or null */
    Kel32s indexBits; /* bits of one packed index: those of cdbkSize - 1.  Not written by kelsCdbkInit_L2_32f. */
    Kel32f* work;     /* cdbkSize distances */
} KelCdbk_32f;

/** A codebook of 16-bit integers.  It begins with the same five words. */
typedef struct KelCdbk_16s KelCdbk_16s;

/** @name Construction
 * These build a codebook of cdbkSize codevectors from `height` rows of `width` elements, `step` apart.  The `L2`
 * forms have weights of 1, the `WgtL2` forms those of pWgt.  *ppCdbk is written only when there is a codebook: with
 * kelStatusOk, and with the warning kelStatusCdbkShrunk, which says that its number of codevectors is not the one
 * asked for.  An exhaustive codebook always has one for each row; a split one has fewer when no cluster of a spread
 * above 0 is left to split.
 *
 * Checks, in this order:
 * - `L2` forms first: a width below 1 is kelStatusSize; memory for the weights that is out is kelStatusNoMemory;
 * - a null pointer: kelStatusNullPtr;
 * - width, step, height or cdbkSize below 1, step below width, cdbkSize above 16383 or above height: kelStatusSize;
 * - a negative weight: kelStatusBadArg;
 * - an unknown kind: kelStatusModeNotSupported;
 * - no memory: kelStatusNoMemory;
 * - of the split kinds, a cluster to be split that has no member farther than 1e-5 (squared) from its centroid, among
 *   them two or more codevectors of identical rows: kelStatusBadArg.
 *
 * Rows of codevectors are `width` elements apart for widths 1, 2, 4 and 8, else step rounded up to a multiple of 4.
 * Besides the result, splitting takes about 28 bytes for each row and 12 for each component of a codevector.
 * @{ */
KELS_API KelStatus kelsCdbkInitAlloc_L2_32f(KelCdbk_32f** ppCdbk, const Kel32f* pSrc, int width, int step, int height,
                                            int cdbkSize, int kind);
KELS_API KelStatus kelsCdbkInitAlloc_WgtL2_32f(KelCdbk_32f** ppCdbk, const Kel32f* pSrc, const Kel32f* pWgt, int width,
                                               int step, int height, int cdbkSize, int kind);
KELS_API KelStatus kelsCdbkInitAlloc_L2_16s(KelCdbk_16s** ppCdbk, const Kel16s* pSrc, int width, int step, int height,
                                            int cdbkSize, int kind);
KELS_API KelStatus kelsCdbkInitAlloc_WgtL2_16s(KelCdbk_16s** ppCdbk, const Kel16s* pSrc, const Kel16s* pWgt, int width,
                                               int step, int height, int cdbkSize, int kind);

/** @} */

/** @name Construction in memory of the caller
 * Init makes an exhaustive codebook without a grid, with weights of 1; cdbkSize is the height.  GetSize gives the
 * bytes that it takes, at any address that suits a pointer.  Rows of codevectors are `width` elements apart for
 * widths 1, 2 and 4, else step rounded up to a multiple of 8.  Init writes neither indexBits of a float codebook nor
 * any byte behind the size.
 *
 * Checks, in this order: a kind other than kelCdbkExhaustive is kelStatusModeNotSupported; a null pointer is
 * kelStatusNullPtr; width, step, height or cdbkSize below 1, width above step, cdbkSize above 16383 or other than
 * height are kelStatusSize; a size that does not fit an int is kelStatusNoMemory.
 * @{ */
KELS_API KelStatus kelsCdbkGetSize_32f(int width, int step, int height, int cdbkSize, int kind, int* pSize);
KELS_API KelStatus kelsCdbkGetSize_16s(int width, int step, int height, int cdbkSize, int kind, int* pSize);
KELS_API KelStatus kelsCdbkInit_L2_32f(KelCdbk_32f* pCdbk, const Kel32f* pSrc, int width, int step, int height,
                                       int cdbkSize, int kind);
KELS_API KelStatus kelsCdbkInit_L2_16s(KelCdbk_16s* pCdbk, const Kel16s* pSrc, int width, int step, int height,
                                       int cdbkSize, int kind);

/** @} */

/** @name Access and release
 * GetCdbkSize gives the number of codevectors.  GetCodebook copies them to rows `step` apart.  Free releases what
 * InitAlloc built.  kels/store.h turns codebooks into bytes and back.
 *
 * Checks, in this order: a null pointer is kelStatusNullPtr; a step below 1 or below the width is kelStatusSize; a
 * kind of codebook that Free does not know is kelStatusUnknownKind, and nothing is released.
 * @{ */
KELS_API KelStatus kelsGetCdbkSize_32f(const KelCdbk_32f* pCdbk, int* pSize);
KELS_API KelStatus kelsGetCdbkSize_16s(const KelCdbk_16s* pCdbk, int* pSize);
KELS_API KelStatus kelsGetCodebook_32f(const KelCdbk_32f* pCdbk, Kel32f* pDst, int step);
KELS_API KelStatus kelsGetCodebook_16s(const KelCdbk_16s* pCdbk, Kel16s* pDst, int step);
KELS_API KelStatus kelsCdbkFree_32f(KelCdbk_32f* pCdbk);
KELS_API KelStatus kelsCdbkFree_16s(KelCdbk_16s* pCdbk);

/** @} */

/** @name Searches for rows
 * The index, and in the Dist forms the distance, for each of `height` rows, searched as the codebook's kind says.
 *
 * Checks, in this order: a null pointer is kelStatusNullPtr; step or height below 1, or step below the width, is
 * kelStatusSize; memory that is out is kelStatusNoMemory, which takes a width above 128.
 * @{ */
KELS_API KelStatus kelsVQ_32f(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk);
KELS_API KelStatus kelsVQ_16s(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk);
KELS_API KelStatus kelsVQDist_32f(const Kel32f* pSrc, int step, Kel32s* pIdx, Kel32f* pDist, int height,
                                  KelCdbk_32f* pCdbk);
KELS_API KelStatus kelsVQDist_16s32s_Sfs(const Kel16s* pSrc, int step, Kel32s* pIdx, Kel32s* pDist, int height,
                                         KelCdbk_16s* pCdbk, int scaleFactor);

/** @} */

/** @name Searches for a single vector
 * Sort gives the n nearest codevectors in order, Thresh every one within `factor` times the distance of the nearest
 * (and a relative 1e-6 of the square), also in order; *pCount is their number, and pIdx and pDist have room for all
 * codevectors. The order is that of the distances, whatever the kind of the codebook.
 *
 * Checks, in this order: a null pointer is kelStatusNullPtr; an n below 1 or above the number of codevectors is
 * kelStatusSize; a factor that is not 1 or more is kelStatusBadArg.
 * @{ */
KELS_API KelStatus kelsVQSingle_Sort_32f(const Kel32f* pSrc, Kel32s* pIdx, KelCdbk_32f* pCdbk, int n);
KELS_API KelStatus kelsVQSingle_Sort_16s(const Kel16s* pSrc, Kel32s* pIdx, KelCdbk_16s* pCdbk, int n);
KELS_API KelStatus kelsVQDistSingle_Sort_32f(const Kel32f* pSrc, Kel32s* pIdx, Kel32f* pDist, KelCdbk_32f* pCdbk,
                                             int n);
KELS_API KelStatus kelsVQDistSingle_Sort_16s32s_Sfs(const Kel16s* pSrc, Kel32s* pIdx, Kel32s* pDist, KelCdbk_16s* pCdbk,
                                                    int n, int scaleFactor);
KELS_API KelStatus kelsVQSingle_Thresh_32f(const Kel32f* pSrc, Kel32s* pIdx, KelCdbk_32f* pCdbk, Kel32f factor,
                                           Kel32s* pCount);
KELS_API KelStatus kelsVQSingle_Thresh_16s(const Kel16s* pSrc, Kel32s* pIdx, KelCdbk_16s* pCdbk, Kel32f factor,
                                           Kel32s* pCount);
KELS_API KelStatus kelsVQDistSingle_Thresh_32f(const Kel32f* pSrc, Kel32s* pIdx, Kel32f* pDist, KelCdbk_32f* pCdbk,
                                               Kel32f factor, Kel32s* pCount);
KELS_API KelStatus kelsVQDistSingle_Thresh_16s32s_Sfs(const Kel16s* pSrc, Kel32s* pIdx, Kel32s* pDist,
                                                      KelCdbk_16s* pCdbk, Kel32f factor, Kel32s* pCount,
                                                      int scaleFactor);

/** @} */

/** @name Quantisation in parts
 * A row is cut into nStream vectors of the codebooks' widths, one behind the other, and the k-th of them is quantised
 * with codebook k.  Index k of row r is stored
 * - in the 16s and 8u forms at pDst[r * dstStep + k];
 * - in the 1u forms in indexBits bits of codebook k, most significant first, from bit r * dstStep + (the bits of
 *   codebooks 0 .. k-1) on.  Bit 0 is the most significant bit of byte 0.  The (height * dstStep + 7) / 8 bytes are
 *   cleared first.
 *
 * Checks, in this order: a null pointer or codebook is kelStatusNullPtr; kelStatusSize stands for srcStep, dstStep,
 * height or nStream below 1, for widths that add up to more than srcStep, for more places in a row than dstStep
 * (nStream, or the bits in all), and for more codevectors than an index can name (256 in 8u, 32768 in 16s);
 * kelStatusNoMemory comes as in the searches, before anything is written.  The functions are in
 * `src/training/codebook/split/`.
 * @{ */
KELS_API KelStatus kelsSplitVQ_32f16s(const Kel32f* pSrc, int srcStep, Kel16s* pDst, int dstStep, int height,
                                      KelCdbk_32f** ppCdbks, int nStream);
KELS_API KelStatus kelsSplitVQ_32f8u(const Kel32f* pSrc, int srcStep, Kel8u* pDst, int dstStep, int height,
                                     KelCdbk_32f** ppCdbks, int nStream);
KELS_API KelStatus kelsSplitVQ_32f1u(const Kel32f* pSrc, int srcStep, Kel8u* pDst, int dstStep, int height,
                                     KelCdbk_32f** ppCdbks, int nStream);
KELS_API KelStatus kelsSplitVQ_16s16s(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, int height,
                                      KelCdbk_16s** ppCdbks, int nStream);
KELS_API KelStatus kelsSplitVQ_16s8u(const Kel16s* pSrc, int srcStep, Kel8u* pDst, int dstStep, int height,
                                     KelCdbk_16s** ppCdbks, int nStream);
KELS_API KelStatus kelsSplitVQ_16s1u(const Kel16s* pSrc, int srcStep, Kel8u* pDst, int dstStep, int height,
                                     KelCdbk_16s** ppCdbks, int nStream);

/** @} */

/** @name Rows from indices
 * The inverse: rows of the codevectors that the indices name, one behind the other.
 *
 * Checks, in this order: a null pointer or codebook is kelStatusNullPtr; kelStatusSize stands for a step, height or
 * nStream below 1, for widths that add up to more than dstStep, for more places in a row than srcStep, and for an
 * index in any row that its codebook does not have.  Nothing is written before all indices have passed.
 * @{ */
KELS_API KelStatus kelsFormVectorVQ_16s32f(const Kel16s* pSrc, int srcStep, Kel32f* pDst, int dstStep, int height,
                                           KelCdbk_32f** ppCdbks, int nStream);
KELS_API KelStatus kelsFormVectorVQ_8u32f(const Kel8u* pSrc, int srcStep, Kel32f* pDst, int dstStep, int height,
                                          KelCdbk_32f** ppCdbks, int nStream);
KELS_API KelStatus kelsFormVectorVQ_1u32f(const Kel8u* pSrc, int srcStep, Kel32f* pDst, int dstStep, int height,
                                          KelCdbk_32f** ppCdbks, int nStream);
KELS_API KelStatus kelsFormVectorVQ_16s16s(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, int height,
                                           KelCdbk_16s** ppCdbks, int nStream);
KELS_API KelStatus kelsFormVectorVQ_8u16s(const Kel8u* pSrc, int srcStep, Kel16s* pDst, int dstStep, int height,
                                          KelCdbk_16s** ppCdbks, int nStream);
KELS_API KelStatus kelsFormVectorVQ_1u16s(const Kel8u* pSrc, int srcStep, Kel16s* pDst, int dstStep, int height,
                                          KelCdbk_16s** ppCdbks, int nStream);

/** @} */

/** @name Vectors from plain tables
 * One vector from tables that are no codebooks: table k has pHeight[k] rows of pWidth[k] elements, pStep[k] apart.
 * The `2i` and `4i` forms build two and four vectors, one behind the other, from as many arrays of indices.
 *
 * Checks, in this order: a null pointer or table is kelStatusNullPtr; nStream below 1, a width or step below 1, and
 * an index that its table does not have are kelStatusSize.
 * @{ */
KELS_API KelStatus kelsFormVector_8u16s(const Kel8u* pSrc, const Kel16s** ppTables, Kel16s* pDst, const int* pHeight,
                                        const int* pWidth, const int* pStep, int nStream);
KELS_API KelStatus kelsFormVector_16s16s(const Kel16s* pSrc, const Kel16s** ppTables, Kel16s* pDst, const int* pHeight,
                                         const int* pWidth, const int* pStep, int nStream);
KELS_API KelStatus kelsFormVector_8u32f(const Kel8u* pSrc, const Kel32f** ppTables, Kel32f* pDst, const int* pHeight,
                                        const int* pWidth, const int* pStep, int nStream);
KELS_API KelStatus kelsFormVector_16s32f(const Kel16s* pSrc, const Kel32f** ppTables, Kel32f* pDst, const int* pHeight,
                                         const int* pWidth, const int* pStep, int nStream);
KELS_API KelStatus kelsFormVector_2i_8u16s(const Kel8u* pSrc1, const Kel8u* pSrc2, const Kel16s** ppTables,
                                           Kel16s* pDst, const int* pHeight, const int* pWidth, const int* pStep,
                                           int nStream);
KELS_API KelStatus kelsFormVector_2i_16s16s(const Kel16s* pSrc1, const Kel16s* pSrc2, const Kel16s** ppTables,
                                            Kel16s* pDst, const int* pHeight, const int* pWidth, const int* pStep,
                                            int nStream);
KELS_API KelStatus kelsFormVector_2i_8u32f(const Kel8u* pSrc1, const Kel8u* pSrc2, const Kel32f** ppTables,
                                           Kel32f* pDst, const int* pHeight, const int* pWidth, const int* pStep,
                                           int nStream);
KELS_API KelStatus kelsFormVector_2i_16s32f(const Kel16s* pSrc1, const Kel16s* pSrc2, const Kel32f** ppTables,
                                            Kel32f* pDst, const int* pHeight, const int* pWidth, const int* pStep,
                                            int nStream);
KELS_API KelStatus kelsFormVector_4i_8u16s(const Kel8u* pSrc1, const Kel8u* pSrc2, const Kel8u* pSrc3,
                                           const Kel8u* pSrc4, const Kel16s** ppTables, Kel16s* pDst,
                                           const int* pHeight, const int* pWidth, const int* pStep, int nStream);
KELS_API KelStatus kelsFormVector_4i_16s16s(const Kel16s* pSrc1, const Kel16s* pSrc2, const Kel16s* pSrc3,
                                            const Kel16s* pSrc4, const Kel16s** ppTables, Kel16s* pDst,
                                            const int* pHeight, const int* pWidth, const int* pStep, int nStream);
KELS_API KelStatus kelsFormVector_4i_8u32f(const Kel8u* pSrc1, const Kel8u* pSrc2, const Kel8u* pSrc3,
                                           const Kel8u* pSrc4, const Kel32f** ppTables, Kel32f* pDst,
                                           const int* pHeight, const int* pWidth, const int* pStep, int nStream);
KELS_API KelStatus kelsFormVector_4i_16s32f(const Kel16s* pSrc1, const Kel16s* pSrc2, const Kel16s* pSrc3,
                                            const Kel16s* pSrc4, const Kel32f** ppTables, Kel32f* pDst,
                                            const int* pHeight, const int* pWidth, const int* pStep, int nStream);

/** @} */

/** @name Searches by name
 * The searches of kelsVQ with all weights taken as 1: Full compares all codevectors, KMeans goes through the tree.
 * The number at the end of a name is the width; where there is none, the width is an argument.  The functions are in
 * `src/training/codebook/fixed_width.cpp`.
 *
 * Checks, in this order: a null pointer is kelStatusNullPtr; step or height below 1, a width other than the
 * codebook's and a step below it are kelStatusSize; KMeans without a tree is kelStatusModeNotSupported;
 * kelStatusNoMemory comes as in kelsVQ.
 * @{ */
KELS_API KelStatus kelsCdbk32VQFull_A6(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk,
                                       int width);
KELS_API KelStatus kelsCdbk32VQFull_A6_1(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk);
KELS_API KelStatus kelsCdbk32VQFull_A6_2(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk);
KELS_API KelStatus kelsCdbk32VQFull_A6_4(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk);
KELS_API KelStatus kelsCdbk32VQFull_A6_8(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk);
KELS_API KelStatus kelsCdbk32VQKMeans_A6(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk,
                                         int width);
KELS_API KelStatus kelsCdbk32VQKMeans_A6_1(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk);
KELS_API KelStatus kelsCdbk32VQKMeans_A6_2(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk);
KELS_API KelStatus kelsCdbk32VQKMeans_A6_4(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk);
KELS_API KelStatus kelsCdbk32VQKMeans_A6_8(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk);
KELS_API KelStatus kelsCdbk16VQFull_A6(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk,
                                       int width);
KELS_API KelStatus kelsCdbk16VQFull_A6_1(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk);
KELS_API KelStatus kelsCdbk16VQFull_A6_2(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk);
KELS_API KelStatus kelsCdbk16VQFull_A6_4(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk);
KELS_API KelStatus kelsCdbk16VQFull_A6_8(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk);
KELS_API KelStatus kelsCdbk16VQKMeans_A6(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk,
                                         int width);
KELS_API KelStatus kelsCdbk16VQKMeans_A6_1(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk);
KELS_API KelStatus kelsCdbk16VQKMeans_A6_2(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk);
KELS_API KelStatus kelsCdbk16VQKMeans_A6_4(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk);
KELS_API KelStatus kelsCdbk16VQKMeans_A6_8(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk);

/** @} */

#ifdef __cplusplus
}
#endif
/** @} */

#endif
