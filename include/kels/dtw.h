/* Dynamic time warping. */
#ifndef KELS_DTW_H
#define KELS_DTW_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

KELS_API KelStatus kelsDTW_L2_32f_D2L(const Kel32f** ppSrc1, int height1, const Kel32f** ppSrc2, int height2, int width,
                                      Kel32f* pDist, int delta, Kel32f beam);
KELS_API KelStatus kelsDTW_L2_32f_D2(const Kel32f* pSrc1, int height1, const Kel32f* pSrc2, int height2, int width,
                                     int srcStep, Kel32f* pDist, int delta, Kel32f beam);
KELS_API KelStatus kelsDTW_L2_8u32s_D2Sfs(const Kel8u* pSrc1, int height1, const Kel8u* pSrc2, int height2, int width,
                                          int srcStep, Kel32s* pDist, int delta, Kel32s beam, int scaleFactor);
KELS_API KelStatus kelsDTW_L2_8u32s_D2LSfs(const Kel8u** ppSrc1, int height1, const Kel8u** ppSrc2, int height2,
                                           int width, Kel32s* pDist, int delta, Kel32s beam, int scaleFactor);
KELS_API KelStatus kelsDTW_L2Low_16s32s_D2Sfs(const Kel16s* pSrc1, int height1, const Kel16s* pSrc2, int height2,
                                              int width, int srcStep, Kel32s* pDist, int delta, Kel32s beam,
                                              int scaleFactor);
KELS_API KelStatus kelsDTW_L2Low_16s32s_D2LSfs(const Kel16s** ppSrc1, int height1, const Kel16s** ppSrc2, int height2,
                                               int width, Kel32s* pDist, int delta, Kel32s beam, int scaleFactor);

#ifdef __cplusplus
}
#endif

#endif
