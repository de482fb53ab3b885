/* Cosine transform and liftering. */
#ifndef KELS_DCT_H
#define KELS_DCT_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct KelDCTLifterState_32f KelDCTLifterState_32f;
typedef struct KelDCTLifterState_16s KelDCTLifterState_16s;

/* construction */
KELS_API KelStatus kelsDCTLifterInitAlloc_32f(KelDCTLifterState_32f** ppState, int lenDCT, int lenCeps, int nLifter,
                                              Kel32f val);
KELS_API KelStatus kelsDCTLifterInitAlloc_16s(KelDCTLifterState_16s** ppState, int lenDCT, int lenCeps, int nLifter,
                                              Kel32f val);
KELS_API KelStatus kelsDCTLifterInitAlloc_C0_32f(KelDCTLifterState_32f** ppState, int lenDCT, int lenCeps, int nLifter,
                                                 Kel32f val, Kel32f val0);
KELS_API KelStatus kelsDCTLifterInitAlloc_C0_16s(KelDCTLifterState_16s** ppState, int lenDCT, int lenCeps, int nLifter,
                                                 Kel32f val, Kel32f val0);
KELS_API KelStatus kelsDCTLifterInitAlloc_Mul_32f(KelDCTLifterState_32f** ppState, int lenDCT, const Kel32f* pLifter,
                                                  int lenCeps);
KELS_API KelStatus kelsDCTLifterInitAlloc_Mul_16s(KelDCTLifterState_16s** ppState, int lenDCT, const Kel32f* pLifter,
                                                  int lenCeps);
KELS_API KelStatus kelsDCTLifterInitAlloc_MulC0_32f(KelDCTLifterState_32f** ppState, int lenDCT, const Kel32f* pLifter,
                                                    int lenCeps);
KELS_API KelStatus kelsDCTLifterInitAlloc_MulC0_16s(KelDCTLifterState_16s** ppState, int lenDCT, const Kel32f* pLifter,
                                                    int lenCeps);
KELS_API KelStatus kelsDCTLifterGetSize_MulC0_16s(int lenDCT, int lenCeps, int* pSize);
KELS_API KelStatus kelsDCTLifterInit_MulC0_16s(Kel8u* pBuffer, int lenDCT, const Kel32s* pLifter, int lenCeps);

/* application */
KELS_API KelStatus kelsDCTLifter_32f(const Kel32f* pSrc, Kel32f* pDst, const KelDCTLifterState_32f* pState);
KELS_API KelStatus kelsDCTLifter_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, const KelDCTLifterState_16s* pState,
                                         int scaleFactor);
KELS_API KelStatus kelsDCTLifter_32s16s_Sfs(const Kel32s* pSrc, Kel16s* pDst, const KelDCTLifterState_16s* pState,
                                            int scaleFactor);

/* release */
KELS_API KelStatus kelsDCTLifterFree_32f(KelDCTLifterState_32f* pState);
KELS_API KelStatus kelsDCTLifterFree_16s(KelDCTLifterState_16s* pState);

#ifdef __cplusplus
}
#endif

#endif
