/* Real FFT of power-of-two lengths. */
#ifndef KELS_FFT_H
#define KELS_FFT_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct KelFFTSpec_R_32f KelFFTSpec_R_32f;
typedef struct KelFFTSpec_R_16s32s KelFFTSpec_R_16s32s;

enum { kelFftDivFwdByN = 1, kelFftDivInvByN = 2, kelFftDivBySqrtN = 4, kelFftNoDiv = 8 };

/* specifications */
KELS_API KelStatus kelsFFTInitAlloc_R_32f(KelFFTSpec_R_32f** ppFFTSpec, int order, int flag, int hint);
KELS_API KelStatus kelsFFTInitAlloc_R_16s32s(KelFFTSpec_R_16s32s** ppFFTSpec, int order, int flag, int hint);
KELS_API KelStatus kelsFFTFree_R_32f(KelFFTSpec_R_32f* pFFTSpec);
KELS_API KelStatus kelsFFTFree_R_16s32s(KelFFTSpec_R_16s32s* pFFTSpec);
KELS_API KelStatus kelsFFTGetBufSize_R_32f(const KelFFTSpec_R_32f* pFFTSpec, int* pSize);

/* transforms (pBuffer may be null) */
KELS_API KelStatus kelsFFTFwd_RToCCS_32f(const Kel32f* pSrc, Kel32f* pDst, const KelFFTSpec_R_32f* pFFTSpec,
                                         Kel8u* pBuffer);
KELS_API KelStatus kelsFFTFwd_RToPack_32f(const Kel32f* pSrc, Kel32f* pDst, const KelFFTSpec_R_32f* pFFTSpec,
                                          Kel8u* pBuffer);
KELS_API KelStatus kelsFFTInv_PackToR_32f(const Kel32f* pSrc, Kel32f* pDst, const KelFFTSpec_R_32f* pFFTSpec,
                                          Kel8u* pBuffer);
KELS_API KelStatus kelsFFTFwd_RToCCS_16s32s_Sfs(const Kel16s* pSrc, Kel32s* pDst, const KelFFTSpec_R_16s32s* pFFTSpec,
                                                int scaleFactor, Kel8u* pBuffer);

/* product of packed spectra, autocorrelation */
KELS_API KelStatus kelsMulPackConj_32f_I(const Kel32f* pSrc, Kel32f* pSrcDst, int len);
KELS_API KelStatus kelsAutoCorr_32f(const Kel32f* pSrc, int srcLen, Kel32f* pDst, int dstLen);

#ifdef __cplusplus
}
#endif

#endif
