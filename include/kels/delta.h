/** @defgroup delta Delta features
 *
 * Time derivatives of feature vectors, appended to each of them: deltas, and accelerations, which are deltas of the
 * deltas.
 *
 * @code{.c}
 * float statics[20 * 13], features[20 * 39];
 * for (int i = 0; i < 20 * 13; ++i) statics[i] = sinf(0.3f * (float)i);
 * KelStatus status = kelsDeltaDelta_Win2_32f_D2(statics, 13, features, 39, 20, 0.1f, 0.1f,
 *                                               kelDeltaBlockFirst | kelDeltaBlockLast);
 * if (status == kelStatusOk) printf("c1 of frame 10 rises by %.3f a frame\n", features[10 * 39 + 13]);
 * @endcode
 *
 * ## What it computes
 * The usual regression over neighbouring frames without its denominator, which is the caller's multiplier: 1 / 2 for
 * Win1 and 1 / 10 for Win2 give the slope of the best straight line.
 *
 *     Win1   d[t] = (s[t+1] - s[t-1]) * val
 *     Win2   d[t] = (s[t+1] - s[t-1] + 2 * (s[t+2] - s[t-2])) * val
 *
 * At the start of a stream the first row stands for the missing earlier ones, and at its end the last row for the
 * missing later ones.  The same holds for the deltas that accelerations are taken of.
 *
 * ## Shapes and units
 * Rows are frames.  An output row holds the statics in columns 0 .. width-1 and their deltas in width .. 2*width-1.
 * The DeltaDelta forms put the accelerations in columns 2*width .. 3*width-1.
 *
 * A stream comes in blocks.  pSrc holds the `height` new rows of `width` statics, without gaps.  `mode` is a set of
 * flags: kelDeltaBlockFirst for the block that starts the stream, kelDeltaBlockLast for the one that ends it, both for
 * a stream of one block, and 0 in between; other bits are ignored.
 *
 * The rows of the first block are written from row 0 of pDst on.  Before every other block the caller copies the last
 * H rows of the previous output to the top of pDst, and the new rows are written behind them, from row H on.  With W =
 * 1 or 2 for Win1 or Win2, H is also the least height of a first block:
 *
 *                      step at least   H
 *     Delta            2 * width       2 * W
 *     DeltaDelta       3 * width       3 * W
 *     Aurora           39              8
 *
 * Derivatives need later rows.  Those of the last W rows of a block (2 * W for accelerations, 4 for both derivatives
 * of Aurora) are not written until the next block completes them among its history rows.  kelDeltaBlockLast completes
 * all of them; with height 0 it does nothing else, and pSrc may be any pointer but null.  Results do not depend on how
 * a stream is cut into blocks.
 *
 * Source and destination must not overlap.
 *
 * ## Accuracy
 * Float forms compute in the order written above, each operation rounded to single precision and none of them fused.
 *
 * In the 16-bit forms a delta is the exact product of the difference and the 16-bit multiplier, times 2^-scaleFactor,
 * rounded toward minus infinity as an arithmetic shift does, and saturated.  One scaleFactor serves both orders, and
 * accelerations are computed from the deltas as they were stored.
 *
 * ## Checks, in order
 * 1. kelStatusNullPtr: a pointer is null.
 * 2. kelStatusSize: width is below 1 or height below 0, or height is 0 without kelDeltaBlockLast.
 * 3. kelStatusStep: dstStep is too small.
 * 4. kelStatusSize: a first block is shorter than the table says.
 *
 * Whole arrays and copies have orders of their own, which stand beside them.
 *
 * ## Threads
 * Nothing is kept between calls.
 *
 * ## Source
 * S. Furui, "Speaker-independent isolated word recognition using dynamic features of speech spectrum", IEEE Trans.
 * ASSP 34, 1986.
 * @{
 */
#ifndef KELS_DELTA_H
#define KELS_DELTA_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Flags of `mode`: the block starts the stream, the block ends it. */
enum { kelDeltaBlockFirst = 1, kelDeltaBlockLast = 2 };

/** @name Deltas
 * One multiplier for all columns.  Statics are copied.  The W functions do the same as the Win functions of their
 * number.
 * @{ */
KELS_API KelStatus kelsDelta_Win1_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height,
                                         Kel32f val, int mode);
KELS_API KelStatus kelsDelta_Win2_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height,
                                         Kel32f val, int mode);
KELS_API KelStatus kelsDelta_Win1_16s_D2Sfs(const Kel16s* pSrc, int width, Kel16s* pDst, int dstStep, int height,
                                            Kel16s val, int mode, int scaleFactor);
KELS_API KelStatus kelsDelta_Win2_16s_D2Sfs(const Kel16s* pSrc, int width, Kel16s* pDst, int dstStep, int height,
                                            Kel16s val, int mode, int scaleFactor);
KELS_API KelStatus kelsDeltaW1_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height, Kel32f val,
                                      int mode);
KELS_API KelStatus kelsDeltaW2_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height, Kel32f val,
                                      int mode);
/** @} */

/** @name Deltas and accelerations
 * Two multipliers for all columns: valD for deltas, valDD for accelerations.  The W functions do the same as the Win
 * functions of their number.
 * @{ */
KELS_API KelStatus kelsDeltaDelta_Win1_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height,
                                              Kel32f valD, Kel32f valDD, int mode);
KELS_API KelStatus kelsDeltaDelta_Win2_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height,
                                              Kel32f valD, Kel32f valDD, int mode);
KELS_API KelStatus kelsDeltaDelta_Win1_16s_D2Sfs(const Kel16s* pSrc, int width, Kel16s* pDst, int dstStep, int height,
                                                 Kel16s valD, Kel16s valDD, int mode, int scaleFactor);
KELS_API KelStatus kelsDeltaDelta_Win2_16s_D2Sfs(const Kel16s* pSrc, int width, Kel16s* pDst, int dstStep, int height,
                                                 Kel16s valD, Kel16s valDD, int mode, int scaleFactor);
KELS_API KelStatus kelsDeltaDeltaW1_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height,
                                           Kel32f valD, Kel32f valDD, int mode);
KELS_API KelStatus kelsDeltaDeltaW2_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height,
                                           Kel32f valD, Kel32f valDD, int mode);
/** @} */

/** @name Derivatives with a multiplier for each column
 * pVal holds `width` values for the statics, then `width` for the deltas and, in DeltaDeltaMul, `width` for the
 * accelerations.  Statics are stored multiplied; 16-bit ones are scaled, rounded and saturated as deltas are.  The
 * deltas are those of the stored statics.
 * @{ */
KELS_API KelStatus kelsDeltaMul_Win1_32f_D2(const Kel32f* pSrc, const Kel32f* pVal, int width, Kel32f* pDst,
                                            int dstStep, int height, int mode);
KELS_API KelStatus kelsDeltaMul_Win2_32f_D2(const Kel32f* pSrc, const Kel32f* pVal, int width, Kel32f* pDst,
                                            int dstStep, int height, int mode);
KELS_API KelStatus kelsDeltaMul_Win1_16s_D2Sfs(const Kel16s* pSrc, const Kel16s* pVal, int width, Kel16s* pDst,
                                               int dstStep, int height, int mode, int scaleFactor);
KELS_API KelStatus kelsDeltaMul_Win2_16s_D2Sfs(const Kel16s* pSrc, const Kel16s* pVal, int width, Kel16s* pDst,
                                               int dstStep, int height, int mode, int scaleFactor);
KELS_API KelStatus kelsDeltaDeltaMul_Win1_32f_D2(const Kel32f* pSrc, const Kel32f* pVal, int width, Kel32f* pDst,
                                                 int dstStep, int height, int mode);
KELS_API KelStatus kelsDeltaDeltaMul_Win2_32f_D2(const Kel32f* pSrc, const Kel32f* pVal, int width, Kel32f* pDst,
                                                 int dstStep, int height, int mode);
KELS_API KelStatus kelsDeltaDeltaMul_Win1_16s_D2Sfs(const Kel16s* pSrc, const Kel16s* pVal, int width, Kel16s* pDst,
                                                    int dstStep, int height, int mode, int scaleFactor);
KELS_API KelStatus kelsDeltaDeltaMul_Win2_16s_D2Sfs(const Kel16s* pSrc, const Kel16s* pVal, int width, Kel16s* pDst,
                                                    int dstStep, int height, int mode, int scaleFactor);
/** @} */

/** @name Deltas of a whole array, in place
 * The statics of each of the `height` rows stand in columns offset .. offset+width-1, and the deltas go to the `width`
 * columns behind them.  With W = winHalf, sums run over k = 1 .. W in ascending order:
 *
 *     rows 0 .. W-1                d[t] = val * sum k * (x[t+k] - x[0])
 *     rows W .. height-W-1         d[t] = val * sum k * (x[t+k] - x[t-k])
 *     rows height-W .. height-1    d[t] = val * sum k * (x[height-1] - x[t-k])
 *
 * So near the ends every backward term uses the first row, and every forward term the last, even where row t-k or t+k
 * exists.  The streams above replace missing rows only.
 *
 * The Mul forms first multiply the statics by the first `width` values of pVal in place; the next `width` are the
 * multipliers of the deltas.  16-bit results are as above, exact for winHalf up to 2047.  Beyond that the product has
 * the 53 bits of a double before it is scaled.
 *
 * Checks, in order:
 * 1. kelStatusNullPtr: a pointer is null.
 * 2. kelStatusSize: height, width or winHalf is below 1, or offset below 0.
 * 3. kelStatusSize: height is below 2*winHalf.
 * 4. kelStatusStep: step is below offset + 2*width.
 * @{ */
KELS_API KelStatus kelsEvalDelta_32f_D2(Kel32f* pSrcDst, int height, int step, int width, int offset, int winHalf,
                                        Kel32f val);
KELS_API KelStatus kelsEvalDelta_16s_D2Sfs(Kel16s* pSrcDst, int height, int step, int width, int offset, int winHalf,
                                           Kel16s val, int scaleFactor);
KELS_API KelStatus kelsEvalDeltaMul_32f_D2(Kel32f* pSrcDst, const Kel32f* pVal, int height, int step, int width,
                                           int offset, int winHalf);
KELS_API KelStatus kelsEvalDeltaMul_16s_D2Sfs(Kel16s* pSrcDst, const Kel16s* pVal, int height, int step, int width,
                                              int offset, int winHalf, int scaleFactor);
/** @} */

/** @name Derivatives of the Aurora front-end
 * Streams as above for the features of distributed speech recognition.  Source rows hold 14 values: cepstra c1 .. c12,
 * then c0, then the log energy.  Output rows hold 39:
 *
 *     0 .. 11    c1 .. c12
 *     12         0.6 * c0 / 23 + 0.4 * logE
 *     13 .. 25   the slope of the 13 statics over +-4 rows, with the weights k / 4 for k = -4 .. 4
 *     26 .. 38   their curvature over +-4 rows, with the weights 1, 0.25, -0.285714, -0.607143, -0.714286 and the
 *                same in reverse
 *
 * Both derivatives are taken of the statics.  The weights of the curvature sum to zero, and statics without change
 * give exactly zero.  The Mul forms first multiply the 13 statics of an output row by the 13 values of pVal.
 *
 * In the 16-bit forms the decimal weights are used exactly, as fractions of a million (slope: of 4; column 12: of
 * 115), and only the result is rounded, toward minus infinity.  Columns 13 .. 38 are times 2^-scaleFactor before that;
 * column 12, a static, is not.  The multiplied statics of the Mul form are scaled as the derivatives are.
 *
 * Source: ETSI ES 202 050 and the conventions of its back-end.
 * @{ */
KELS_API KelStatus kelsDeltaDelta_Aurora_32f_D2(const Kel32f* pSrc, Kel32f* pDst, int dstStep, int height, int mode);
KELS_API KelStatus kelsDeltaDelta_Aurora_16s_D2Sfs(const Kel16s* pSrc, Kel16s* pDst, int dstStep, int height, int mode,
                                                   int scaleFactor);
KELS_API KelStatus kelsDeltaDeltaMul_Aurora_32f_D2(const Kel32f* pSrc, const Kel32f* pVal, Kel32f* pDst, int dstStep,
                                                   int height, int mode);
KELS_API KelStatus kelsDeltaDeltaMul_Aurora_16s_D2Sfs(const Kel16s* pSrc, const Kel16s* pVal, Kel16s* pDst, int dstStep,
                                                      int height, int mode, int scaleFactor);
/** @} */

/** @name Copy
 * Copies `height` rows of `width` values, stored without gaps, to the first columns of the rows of pDst.  kelsCopyCol
 * does the same as kelsCopyColumn.
 *
 * Checks, in order: kelStatusNullPtr; kelStatusSize where height or width is below 1; kelStatusStep where dstStep is
 * below width.
 * @{ */
KELS_API KelStatus kelsCopyColumn_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height);
KELS_API KelStatus kelsCopyColumn_16s_D2(const Kel16s* pSrc, int width, Kel16s* pDst, int dstStep, int height);
KELS_API KelStatus kelsCopyCol_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height);
/** @} */

#ifdef __cplusplus
}
#endif

/** @} */

#endif
