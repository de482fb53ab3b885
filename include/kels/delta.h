/* Delta and acceleration coefficients: time derivatives appended to a stream of feature vectors.
 *
 * Rows are frames.  An output row holds the statics in columns 0 .. width-1, their deltas in width .. 2*width-1 and, in
 * the DeltaDelta forms, the accelerations (deltas of the deltas) in 2*width .. 3*width-1.  Derivatives are the usual
 * regression over neighbouring frames without its denominator, which is the caller's multiplier: for W = 1 and 2
 * commonly 1 / 2 and 1 / 10.  (S. Furui, "Speaker-independent isolated word recognition using dynamic features of
 * speech spectrum", IEEE Trans. ASSP 34, 1986.)
 *
 *   Win1   d[t] = (s[t+1] - s[t-1]) * val
 *   Win2   d[t] = (s[t+1] - s[t-1] + 2 * (s[t+2] - s[t-2])) * val
 *
 * in this order of operations, each rounded to single precision in the float forms.  At the start of the stream the
 * first row stands for the missing earlier ones, at its end the last row for the missing later ones; the same goes for
 * the deltas below accelerations.
 *
 * Streams.  A stream comes in blocks.  pSrc holds the `height` new rows of `width` statics without gaps.  `mode` is a
 * set of flags: kelDeltaBlockFirst for the block that starts the stream, kelDeltaBlockLast for the one that ends it,
 * both for a stream of one block, 0 in between; other bits are ignored.  The first block's rows are written from row 0
 * of pDst. For every other block the caller first copies the last H rows of the previous output to the top of pDst, and
 * the new rows are written behind them, from row H:
 *
 *                    step at least   H and the least height of a first block
 *   Delta, W         2 * width       2 * W
 *   DeltaDelta, W    3 * width       3 * W
 *   Aurora           39              8
 *
 * Derivatives need later rows, so those of the last W rows (2 * W for accelerations; 4 for both of Aurora) of a block
 * are not written until the next block completes them among its history rows.  kelDeltaBlockLast completes all; with
 * height 0 it only completes the history rows, pSrc being any pointer but null.  Results do not depend on how a stream
 * is cut.
 *
 * 16-bit forms.  A delta is the exact product of the difference and the 16-bit multiplier, times 2^-scaleFactor,
 * rounded toward minus infinity as an arithmetic shift does, and saturated.  One scaleFactor serves both orders;
 * accelerations are computed from the deltas as stored.
 *
 * Source and destination do not overlap.
 *
 * Statuses, in order: -8 a null pointer; -6 width < 1, height < 0, or height 0 without kelDeltaBlockLast; -37 dstStep
 * too small; -6 a first block shorter than the table says.
 */
#ifndef KELS_DELTA_H
#define KELS_DELTA_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Flags of `mode`. */
enum { kelDeltaBlockFirst = 1, kelDeltaBlockLast = 2 };

/* Deltas, one multiplier for all columns; statics are copied. */
KELS_API KelStatus kelsDelta_Win1_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height,
                                         Kel32f val, int mode);
KELS_API KelStatus kelsDelta_Win2_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height,
                                         Kel32f val, int mode);
KELS_API KelStatus kelsDelta_Win1_16s_D2Sfs(const Kel16s* pSrc, int width, Kel16s* pDst, int dstStep, int height,
                                            Kel16s val, int mode, int scaleFactor);
KELS_API KelStatus kelsDelta_Win2_16s_D2Sfs(const Kel16s* pSrc, int width, Kel16s* pDst, int dstStep, int height,
                                            Kel16s val, int mode, int scaleFactor);

/* Deltas and accelerations, one multiplier each (valD, valDD) for all columns. */
KELS_API KelStatus kelsDeltaDelta_Win1_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height,
                                              Kel32f valD, Kel32f valDD, int mode);
KELS_API KelStatus kelsDeltaDelta_Win2_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height,
                                              Kel32f valD, Kel32f valDD, int mode);
KELS_API KelStatus kelsDeltaDelta_Win1_16s_D2Sfs(const Kel16s* pSrc, int width, Kel16s* pDst, int dstStep, int height,
                                                 Kel16s valD, Kel16s valDD, int mode, int scaleFactor);
KELS_API KelStatus kelsDeltaDelta_Win2_16s_D2Sfs(const Kel16s* pSrc, int width, Kel16s* pDst, int dstStep, int height,
                                                 Kel16s valD, Kel16s valDD, int mode, int scaleFactor);

/* The same with a multiplier for each column: pVal holds `width` values for the statics, `width` for the deltas and, in
 * DeltaDeltaMul, `width` for the accelerations.  Statics are stored multiplied (16-bit: scaled and saturated like the
 * deltas), and the deltas are those of the stored statics.  A null pVal is -8. */
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

/* Deltas of a whole array at once, in place: the statics of each of the `height` rows stand in columns offset ..
 * offset+width-1, the deltas go to columns offset+width .. offset+2*width-1.  With W = winHalf, sums over k = 1 .. W in
 * ascending order:
 *
 *   rows 0 .. W-1                d[t] = val * sum k * (x[t+k] - x[0])
 *   rows W .. height-W-1         d[t] = val * sum k * (x[t+k] - x[t-k])
 *   rows height-W .. height-1    d[t] = val * sum k * (x[height-1] - x[t-k])
 *
 * Near the ends every backward (forward) term uses the first (last) row, even where row t-k (t+k) exists; the streaming
 * functions replace missing rows only.  The Mul forms multiply the statics by the first `width` values of pVal in
 * place, then use the next `width` as multipliers of the deltas.  16-bit results as above; exact for winHalf up to
 * 2047, beyond that the product has the 53 bits of a double before it is scaled.
 *
 * Statuses, in order: -8 a null pointer; -6 height, width or winHalf < 1 or offset < 0; -6 height < 2*winHalf;
 * -37 step < offset + 2*width. */
KELS_API KelStatus kelsEvalDelta_32f_D2(Kel32f* pSrcDst, int height, int step, int width, int offset, int winHalf,
                                        Kel32f val);
KELS_API KelStatus kelsEvalDelta_16s_D2Sfs(Kel16s* pSrcDst, int height, int step, int width, int offset, int winHalf,
                                           Kel16s val, int scaleFactor);
KELS_API KelStatus kelsEvalDeltaMul_32f_D2(Kel32f* pSrcDst, const Kel32f* pVal, int height, int step, int width,
                                           int offset, int winHalf);
KELS_API KelStatus kelsEvalDeltaMul_16s_D2Sfs(Kel16s* pSrcDst, const Kel16s* pVal, int height, int step, int width,
                                              int offset, int winHalf, int scaleFactor);

/* Deltas and accelerations of the distributed speech recognition front-end (Aurora, ETSI ES 202 050 and its back-end
 * conventions), streamed as above.  Source rows hold 14 values: cepstra c1 .. c12, then c0, then the log energy. Output
 * rows hold 39:
 *
 *    0 .. 11   c1 .. c12
 *   12         0.6 * c0 / 23 + 0.4 * logE
 *   13 .. 25   slope of the 13 statics over +-4 rows, weights k / 4 for k = -4 .. 4
 *   26 .. 38   their curvature over +-4 rows, weights 1, 0.25, -0.285714, -0.607143, -0.714286, -0.607143, -0.285714,
 *              0.25, 1; the weights sum to zero, and statics without change give exactly zero
 *
 * Both derivatives are taken of the statics.  The Mul forms multiply the 13 statics of an output row by the 13 values
 * of pVal first.
 *
 * 16-bit forms: the decimal weights above are used exactly, as fractions of a million (slope: of 4; column 12: of 115),
 * and only the result is rounded, toward minus infinity: columns 13 .. 38 after multiplication by 2^-scaleFactor,
 * column 12, a static, without.  The multiplied statics of the Mul form are scaled like the deltas. */
KELS_API KelStatus kelsDeltaDelta_Aurora_32f_D2(const Kel32f* pSrc, Kel32f* pDst, int dstStep, int height, int mode);
KELS_API KelStatus kelsDeltaDelta_Aurora_16s_D2Sfs(const Kel16s* pSrc, Kel16s* pDst, int dstStep, int height, int mode,
                                                   int scaleFactor);
KELS_API KelStatus kelsDeltaDeltaMul_Aurora_32f_D2(const Kel32f* pSrc, const Kel32f* pVal, Kel32f* pDst, int dstStep,
                                                   int height, int mode);
KELS_API KelStatus kelsDeltaDeltaMul_Aurora_16s_D2Sfs(const Kel16s* pSrc, const Kel16s* pVal, Kel16s* pDst, int dstStep,
                                                      int height, int mode, int scaleFactor);

/* Older names of the Win1 and Win2 functions. */
KELS_API KelStatus kelsDeltaW1_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height, Kel32f val,
                                      int mode);
KELS_API KelStatus kelsDeltaW2_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height, Kel32f val,
                                      int mode);
KELS_API KelStatus kelsDeltaDeltaW1_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height,
                                           Kel32f valD, Kel32f valDD, int mode);
KELS_API KelStatus kelsDeltaDeltaW2_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height,
                                           Kel32f valD, Kel32f valDD, int mode);

/* Copies `height` rows of `width` values, stored without gaps, to the first columns of the rows of pDst; kelsCopyCol is
 * an older name.  Statuses, in order: -8 a null pointer; -6 height or width < 1; -37 dstStep < width. */
KELS_API KelStatus kelsCopyColumn_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height);
KELS_API KelStatus kelsCopyColumn_16s_D2(const Kel16s* pSrc, int width, Kel16s* pDst, int dstStep, int height);
KELS_API KelStatus kelsCopyCol_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height);

#ifdef __cplusplus
}
#endif

#endif
