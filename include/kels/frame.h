/* Frame conditioning. */
#ifndef KELS_FRAME_H
#define KELS_FRAME_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* offset compensation */
KELS_API KelStatus kelsCompensateOffset_32f(const Kel32f* pSrc, Kel32f* pDst, int len, Kel32f* pSrcLast, Kel32f dstLast,
                                            Kel32f val);
KELS_API KelStatus kelsCompensateOffset_32f_I(Kel32f* pSrcDst, int len, Kel32f* pSrcLast, Kel32f dstLast, Kel32f val);
KELS_API KelStatus kelsCompensateOffset_16s(const Kel16s* pSrc, Kel16s* pDst, int len, Kel16s* pSrcLast, Kel16s dstLast,
                                            Kel32f val);
KELS_API KelStatus kelsCompensateOffset_16s_I(Kel16s* pSrcDst, int len, Kel16s* pSrcLast, Kel16s dstLast, Kel32f val);
KELS_API KelStatus kelsCompensateOffsetQ15_16s(const Kel16s* pSrc, Kel16s* pDst, int len, Kel16s* pSrcLast,
                                               Kel16s dstLast, Kel16s valQ15);
KELS_API KelStatus kelsCompensateOffsetQ15_16s_I(Kel16s* pSrcDst, int len, Kel16s* pSrcLast, Kel16s dstLast,
                                                 Kel16s valQ15);

/* zero mean */
KELS_API KelStatus kelsZeroMean_16s(Kel16s* pSrcDst, int len);

/* energy normalisation */
KELS_API KelStatus kelsNormEnergy_32f(Kel32f* pSrcDst, int step, int height, Kel32f silFloor, Kel32f enScale);
KELS_API KelStatus kelsNormEnergy_16s(Kel16s* pSrcDst, int step, int height, Kel16s silFloor, Kel16s valShift,
                                      Kel32f enScale);
KELS_API KelStatus kelsNormEnergy_RT_32f(Kel32f* pSrcDst, int step, int height, Kel32f silFloor, Kel32f maxE,
                                         Kel32f enScale);
KELS_API KelStatus kelsNormEnergy_RT_16s(Kel16s* pSrcDst, int step, int height, Kel16s silFloor, Kel16s maxE,
                                         Kel16s valShift, Kel32f enScale);

/* sign changes */
KELS_API KelStatus kelsSignChangeRate_16s(const Kel16s* pSrc, int len, Kel32s* pRes);
KELS_API KelStatus kelsSignChangeRate_32f(const Kel32f* pSrc, int len, Kel32f* pRes);
KELS_API KelStatus kelsSignChangeRate_Count0_16s(const Kel16s* pSrc, int len, Kel32s* pRes);
KELS_API KelStatus kelsSignChangeRate_Count0_32f(const Kel32f* pSrc, int len, Kel32f* pRes);
KELS_API KelStatus kelsSignChangeRateXor_32f(const Kel32f* pSrc, int len, Kel32s* pRes);

/* copy with padding */
KELS_API KelStatus kelsCopyWithPadding_16s(const Kel16s* pSrc, int lenSrc, Kel16s* pDst, int lenDst);
KELS_API KelStatus kelsCopyWithPadding_32f(const Kel32f* pSrc, int lenSrc, Kel32f* pDst, int lenDst);

#ifdef __cplusplus
}
#endif

#endif
