/* Delta and acceleration coefficients. */
#ifndef KELS_DELTA_H
#define KELS_DELTA_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

enum { kelDeltaBlockFirst = 1, kelDeltaBlockLast = 2 };

/* deltas, one scalar multiplier */
KELS_API KelStatus kelsDelta_Win1_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height,
                                         Kel32f val, int mode);
KELS_API KelStatus kelsDelta_Win2_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height,
                                         Kel32f val, int mode);
KELS_API KelStatus kelsDelta_Win1_16s_D2Sfs(const Kel16s* pSrc, int width, Kel16s* pDst, int dstStep, int height,
                                            Kel16s val, int mode, int scaleFactor);
KELS_API KelStatus kelsDelta_Win2_16s_D2Sfs(const Kel16s* pSrc, int width, Kel16s* pDst, int dstStep, int height,
                                            Kel16s val, int mode, int scaleFactor);

/* deltas and accelerations, one scalar multiplier each */
KELS_API KelStatus kelsDeltaDelta_Win1_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height,
                                              Kel32f valD, Kel32f valDD, int mode);
KELS_API KelStatus kelsDeltaDelta_Win2_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height,
                                              Kel32f valD, Kel32f valDD, int mode);
KELS_API KelStatus kelsDeltaDelta_Win1_16s_D2Sfs(const Kel16s* pSrc, int width, Kel16s* pDst, int dstStep, int height,
                                                 Kel16s valD, Kel16s valDD, int mode, int scaleFactor);
KELS_API KelStatus kelsDeltaDelta_Win2_16s_D2Sfs(const Kel16s* pSrc, int width, Kel16s* pDst, int dstStep, int height,
                                                 Kel16s valD, Kel16s valDD, int mode, int scaleFactor);

/* the same with one multiplier a column; pVal holds 2*width values (statics, deltas), 3*width for DeltaDeltaMul */
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

/* whole array in place */
KELS_API KelStatus kelsEvalDelta_32f_D2(Kel32f* pSrcDst, int height, int step, int width, int offset, int winHalf,
                                        Kel32f val);
KELS_API KelStatus kelsEvalDelta_16s_D2Sfs(Kel16s* pSrcDst, int height, int step, int width, int offset, int winHalf,
                                           Kel16s val, int scaleFactor);
KELS_API KelStatus kelsEvalDeltaMul_32f_D2(Kel32f* pSrcDst, const Kel32f* pVal, int height, int step, int width,
                                           int offset, int winHalf);
KELS_API KelStatus kelsEvalDeltaMul_16s_D2Sfs(Kel16s* pSrcDst, const Kel16s* pVal, int height, int step, int width,
                                              int offset, int winHalf, int scaleFactor);

/* the Aurora front-end's form: rows of 14 values in, rows of 39 out, history of 8 rows */
KELS_API KelStatus kelsDeltaDelta_Aurora_32f_D2(const Kel32f* pSrc, Kel32f* pDst, int dstStep, int height, int mode);
KELS_API KelStatus kelsDeltaDelta_Aurora_16s_D2Sfs(const Kel16s* pSrc, Kel16s* pDst, int dstStep, int height, int mode,
                                                   int scaleFactor);
KELS_API KelStatus kelsDeltaDeltaMul_Aurora_32f_D2(const Kel32f* pSrc, const Kel32f* pVal, Kel32f* pDst, int dstStep,
                                                   int height, int mode);
KELS_API KelStatus kelsDeltaDeltaMul_Aurora_16s_D2Sfs(const Kel16s* pSrc, const Kel16s* pVal, Kel16s* pDst, int dstStep,
                                                      int height, int mode, int scaleFactor);

/* older names; each forwards to its Win1 or Win2 function */
KELS_API KelStatus kelsDeltaW1_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height, Kel32f val,
                                      int mode);
KELS_API KelStatus kelsDeltaW2_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height, Kel32f val,
                                      int mode);
KELS_API KelStatus kelsDeltaDeltaW1_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height,
                                           Kel32f valD, Kel32f valDD, int mode);
KELS_API KelStatus kelsDeltaDeltaW2_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height,
                                           Kel32f valD, Kel32f valDD, int mode);

/* copy of contiguous rows into a 2-D array */
KELS_API KelStatus kelsCopyColumn_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height);
KELS_API KelStatus kelsCopyColumn_16s_D2(const Kel16s* pSrc, int width, Kel16s* pDst, int dstStep, int height);
KELS_API KelStatus kelsCopyCol_32f_D2(const Kel32f* pSrc, int width, Kel32f* pDst, int dstStep, int height);

#ifdef __cplusplus
}
#endif

#endif
