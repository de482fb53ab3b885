/* Codebooks: building them from training vectors, searching them, quantisation and its inverse.
 *
 * A codebook is a set of codevectors of `width` components, numbered from 0.  Its distance of a vector x and a
 * codevector c is d(x, c) = sum of w_i * (x_i - c_i)^2 with one weight w_i >= 0 for each component; wherever a function
 * reports a distance, it is the square root of that.  Float codebooks compute in single precision, in an order of
 * summation that is free; 16-bit codebooks exactly.
 *
 * Order of distances.  Distances are compared with a relative tolerance, so that rounding does not decide:
 *   nearest   candidates are tried by ascending index; one replaces the best so far if d * 1.000001 < best.  Of equal
 *             distances the lowest index wins.
 *   ordered   after a pick of distance p at index j comes the next index above j whose distance is within 1e-6 of p,
 *             relative to the larger of both; where there is none, the nearest of those not picked yet.  So equal
 *             distances come by ascending index, and no index comes twice.
 *   tree      descent and hill-climb as described below, with the same factor 1.000001.
 * In the 16-bit forms the factors are double-precision numbers, in the float forms single-precision ones.
 *
 * Kinds
 *   kelCdbkExhaustive     every training row is a codevector, in order.  With more than 10 of them, of width 1 or 2, a
 *                         grid of cells over the plane is tried, each cell with the list of the codevectors that can be
 *                         nearest to a point of it; it is kept if the lists are short enough.
 *   kelCdbkSplitWidest    clusters are split in two until there are enough, next the one of the largest spread...
 *   kelCdbkSplitLargest   ... or of the most members among those of a spread above 0.
 * After each split all clusters are refined: at most 20 passes of centroids and assignments, until the total distance
 * changes by no more than 1e-4 of itself.  A cluster never loses its last member.  The tree of splits is kept.
 *
 * Search.  Exhaustive codebooks compare all codevectors, or those in the grid cell of the vector, and find the nearest.
 * Split codebooks go down the tree: of a node's four grandchildren (a leaf child stands for itself) let l and r be the
 * least distances on the left and on the right; to the left if l < 1.000001 * r.  From the leaf the search climbs to the
 * first of the leaf's neighbours with d * 1.000001 < d of the leaf, and on from there while there is one.  That is
 * several times faster and finds the nearest codevector in most cases, a near one in the others.
 *
 * 16-bit codebooks.  Rows, weights and codevectors are 16-bit integers.  Clusters are formed as for floats, and their
 * centroids rounded to the nearest integers (ties to even) at the end.  Reported distances are rounded to the nearest
 * (ties to even) after scaling by 2^-scaleFactor, and saturated.
 *
 * Ownership and threads.  Codebooks from ...InitAlloc... go back with kelsCdbkFree; those made in caller memory with
 * kelsCdbkInit_L2 need no release.  The searches of a single vector (Sort, Thresh) use scratch inside the codebook: one
 * codebook serves one such call at a time.
 *
 * A null codevector array inside a codebook counts as a null pointer in all functions.
 *
 * Sources: Y. Linde, A. Buzo, R. Gray, An algorithm for vector quantizer design, IEEE Trans. Communications 28 (1980)
 * 84-95, for splitting with refinement; A. Gersho, R. Gray, Vector Quantization and Signal Compression, 1992, for tree
 * searches and split vector quantisation.
 */
#ifndef KELS_VQ_H
#define KELS_VQ_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

enum { kelCdbkExhaustive = 1, kelCdbkSplitWidest = 2, kelCdbkSplitLargest = 3 };

/* Bits of KelCdbk_32f.flags. */
enum { kelCdbkHasGrid = 1, kelCdbkWeighted = 2 };

/* A cluster of the split tree.  Readable by everyone, written by the library alone. */
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

/* Begins with the same five words. */
typedef struct KelCdbk_16s KelCdbk_16s;

/* ---- construction ------------------------------------------------------------------------------------------------ */

/* A codebook of cdbkSize codevectors from `height` rows of `width` elements, `step` apart; *ppCdbk is written with status
 * 0 or 31 only.
 *
 * Checks of the weighted forms, in this order: a null pointer -8; width, step, height or cdbkSize below 1, step below
 * width, cdbkSize above 16383 or above height -6; a negative weight -5; an unknown kind -66.  The L2 forms have weights
 * of 1; they first give -6 for a width below 1 and -9 where memory for the weights is out.
 *
 * Then -9 when memory is out.  Of the split kinds, -5 when a cluster that is to be split has no member farther than 1e-5
 * (squared) from its centroid, among them two or more codevectors of identical rows.  The warning 31 says that the
 * codebook holds another number of codevectors than asked for: an exhaustive one always one a row, a split one fewer
 * when no cluster of a spread above 0 is left.
 *
 * Rows of codevectors are `width` elements apart for widths 1, 2, 4 and 8, else step rounded up to a multiple of 4.
 * Besides the result, splitting takes about 24 bytes a row and 12 a component of a codevector.
 */
KELS_API KelStatus kelsCdbkInitAlloc_L2_32f(KelCdbk_32f** ppCdbk, const Kel32f* pSrc, int width, int step, int height,
                                            int cdbkSize, int kind);
KELS_API KelStatus kelsCdbkInitAlloc_WgtL2_32f(KelCdbk_32f** ppCdbk, const Kel32f* pSrc, const Kel32f* pWgt, int width,
                                               int step, int height, int cdbkSize, int kind);
KELS_API KelStatus kelsCdbkInitAlloc_L2_16s(KelCdbk_16s** ppCdbk, const Kel16s* pSrc, int width, int step, int height,
                                            int cdbkSize, int kind);
KELS_API KelStatus kelsCdbkInitAlloc_WgtL2_16s(KelCdbk_16s** ppCdbk, const Kel16s* pSrc, const Kel16s* pWgt, int width,
                                               int step, int height, int cdbkSize, int kind);

/* An exhaustive codebook without a grid, with weights of 1, in caller memory; cdbkSize is the height.  GetSize gives the
 * bytes that it takes, at any address that suits a pointer.  Rows of codevectors are `width` elements apart for widths 1,
 * 2 and 4, else step rounded up to a multiple of 8.
 *
 * Checks, in this order: a kind other than 1 -66; null pointers -8; width, step, height or cdbkSize below 1, width above
 * step, cdbkSize above 16383, cdbkSize other than height -6; a size that does not fit an int -9.
 */
KELS_API KelStatus kelsCdbkGetSize_32f(int width, int step, int height, int cdbkSize, int kind, int* pSize);
KELS_API KelStatus kelsCdbkGetSize_16s(int width, int step, int height, int cdbkSize, int kind, int* pSize);
KELS_API KelStatus kelsCdbkInit_L2_32f(KelCdbk_32f* pCdbk, const Kel32f* pSrc, int width, int step, int height,
                                       int cdbkSize, int kind);
KELS_API KelStatus kelsCdbkInit_L2_16s(KelCdbk_16s* pCdbk, const Kel16s* pSrc, int width, int step, int height,
                                       int cdbkSize, int kind);

/* The number of codevectors.  Null pointers -8. */
KELS_API KelStatus kelsGetCdbkSize_32f(const KelCdbk_32f* pCdbk, int* pSize);
KELS_API KelStatus kelsGetCdbkSize_16s(const KelCdbk_16s* pCdbk, int* pSize);

/* The codevectors, to rows `step` apart.  Null pointers -8; step below 1 or below the width -6. */
KELS_API KelStatus kelsGetCodebook_32f(const KelCdbk_32f* pCdbk, Kel32f* pDst, int step);
KELS_API KelStatus kelsGetCodebook_16s(const KelCdbk_16s* pCdbk, Kel16s* pDst, int step);

/* Releases what InitAlloc built.  Null pointers -8; a kind other than 1, 2, 3 -9999, and nothing is released. */
KELS_API KelStatus kelsCdbkFree_32f(KelCdbk_32f* pCdbk);
KELS_API KelStatus kelsCdbkFree_16s(KelCdbk_16s* pCdbk);

/* ---- searches ---------------------------------------------------------------------------------------------------- */

/* The index, and the distance, for each of `height` rows, as the codebook's kind searches.  Null pointers -8; step or
 * height below 1 or step below the width -6; -9 when memory is out, which takes a width above 128.
 */
KELS_API KelStatus kelsVQ_32f(const Kel32f* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_32f* pCdbk);
KELS_API KelStatus kelsVQ_16s(const Kel16s* pSrc, int step, Kel32s* pIdx, int height, KelCdbk_16s* pCdbk);
KELS_API KelStatus kelsVQDist_32f(const Kel32f* pSrc, int step, Kel32s* pIdx, Kel32f* pDist, int height,
                                  KelCdbk_32f* pCdbk);
KELS_API KelStatus kelsVQDist_16s32s_Sfs(const Kel16s* pSrc, int step, Kel32s* pIdx, Kel32s* pDist, int height,
                                         KelCdbk_16s* pCdbk, int scaleFactor);

/* The n nearest codevectors of one vector in order, whatever the kind.  Null pointers -8; n below 1 or above the number
 * of codevectors -6.
 */
KELS_API KelStatus kelsVQSingle_Sort_32f(const Kel32f* pSrc, Kel32s* pIdx, KelCdbk_32f* pCdbk, int n);
KELS_API KelStatus kelsVQSingle_Sort_16s(const Kel16s* pSrc, Kel32s* pIdx, KelCdbk_16s* pCdbk, int n);
KELS_API KelStatus kelsVQDistSingle_Sort_32f(const Kel32f* pSrc, Kel32s* pIdx, Kel32f* pDist, KelCdbk_32f* pCdbk,
                                             int n);
KELS_API KelStatus kelsVQDistSingle_Sort_16s32s_Sfs(const Kel16s* pSrc, Kel32s* pIdx, Kel32s* pDist, KelCdbk_16s* pCdbk,
                                                    int n, int scaleFactor);

/* Every codevector within `factor` times the distance of the nearest one (and a relative 1e-6 of the square), in order,
 * whatever the kind; *pCount is their number.  pIdx and pDist have room for all codevectors.  Null pointers -8; a factor
 * not of 1 or above -5.
 */
KELS_API KelStatus kelsVQSingle_Thresh_32f(const Kel32f* pSrc, Kel32s* pIdx, KelCdbk_32f* pCdbk, Kel32f factor,
                                           Kel32s* pCount);
KELS_API KelStatus kelsVQSingle_Thresh_16s(const Kel16s* pSrc, Kel32s* pIdx, KelCdbk_16s* pCdbk, Kel32f factor,
                                           Kel32s* pCount);
KELS_API KelStatus kelsVQDistSingle_Thresh_32f(const Kel32f* pSrc, Kel32s* pIdx, Kel32f* pDist, KelCdbk_32f* pCdbk,
                                               Kel32f factor, Kel32s* pCount);
KELS_API KelStatus kelsVQDistSingle_Thresh_16s32s_Sfs(const Kel16s* pSrc, Kel32s* pIdx, Kel32s* pDist,
                                                      KelCdbk_16s* pCdbk, Kel32f factor, Kel32s* pCount,
                                                      int scaleFactor);

/* ---- split quantisation ------------------------------------------------------------------------------------------ */

/* Quantises rows in parts: a row is cut into nStream consecutive vectors of the codebooks' widths, and the k-th of them
 * quantised with codebook k.  Index k of row r is stored
 *   16s, 8u   at pDst[r * dstStep + k];
 *   1u        in as many bits as codebook k's indexBits, most significant first, from bit r * dstStep + (the bits of
 *             codebooks 0..k-1) on; bit 0 is the most significant bit of byte 0.  The (height * dstStep + 7) / 8 bytes
 *             are cleared first.
 * Checks, in this order: ppCdbks or pSrc null, pDst null, any codebook null -8; srcStep, dstStep, height or nStream below
 * 1 -6; widths that add up to more than srcStep -6; places of a row that exceed dstStep (nStream, or the bits in all) or
 * indices that exceed the layout (more than 256 codevectors in 8u, 32768 in 16s) -6.  -9 as in the searches.
 */
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

/* The inverse: rows of the codevectors that the indices name, one after the other.
 *
 * Checks, in this order: a null pointer or codebook -8; a step, height or nStream below 1 -6; widths that add up to more
 * than dstStep, places of a row that exceed srcStep -6; an index in any row that its codebook does not have -6.  Nothing
 * is written before all indices have passed.
 */
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

/* The same for one vector from plain tables: table k has pHeight[k] rows of pWidth[k] elements, pStep[k] apart.  The _2i_
 * and _4i_ forms build two and four vectors, one behind the other, from as many index arrays.
 *
 * Checks, in this order: a null pointer or table -8; nStream below 1 -6; a width or step below 1, or an index that its
 * table does not have -6.
 */
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

/* ---- search kernels ---------------------------------------------------------------------------------------------- */

/* The searches of kelsVQ with all weights taken as 1: Full compares all codevectors, KMeans goes through the tree.  The
 * number at the end is the width; without one, the width is an argument.  Null pointers -8; step or height below 1, a
 * width other than the codebook's or step below it -6; KMeans without a tree -66; -9 as in kelsVQ.
 */
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

#ifdef __cplusplus
}
#endif

#endif
