/* Scores of many feature vectors under one Gaussian, and of one feature vector under many Gaussians.
 *
 * Every score and distance is that of kels/gauss.h, with the same accuracy and the same rules for 16-bit models:
 *
 *     S     = sum over i < width of (x[i] - mean[i])^2 * ivar[i]
 *     score = gConst - S / 2,    dist = S
 *
 * Frames.  `height` vectors of `width` components are scored under one Gaussian; pResult has height values.
 * Gaussians (MultiMix).  One vector of `width` components is scored under `height` Gaussians, the rows of the mean and
 * the inverse-variance block.  pSrcDst has height values: on entry gConst of each Gaussian, on return its score.
 *
 * Layouts.  D2: one array, rows `step` elements (not bytes) apart; the mean and the inverse-variance block share the
 * step.  D2L: an array of height row pointers.  Of a row, only width elements are read.
 *
 * Checks.  D2, in this order: step below width (-37), null pointers (-8), width or height below 1 (-6).  D2L: null
 * pointers (-8), width or height below 1 (-6).  The step comes first: it is reported even beside a null pointer.
 *
 * The names with 1 and 2 (LogGauss1, MahDist1; LogGauss2, MahDist2) are other names of LogGauss and MahDist, and of
 * LogGaussMultiMix and MahDistMultiMix.
 */
#ifndef KELS_BLOCK_H
#define KELS_BLOCK_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- frames under one Gaussian ----------------------------------------------------------------------------------- */

KELS_API KelStatus kelsLogGauss_64f_D2(const Kel64f* pSrc, int step, const Kel64f* pMean, const Kel64f* pIvar,
                                       int width, Kel64f* pResult, int height, Kel64f gConst);
KELS_API KelStatus kelsLogGauss_64f_D2L(const Kel64f** ppSrc, const Kel64f* pMean, const Kel64f* pIvar, int width,
                                        Kel64f* pResult, int height, Kel64f gConst);
KELS_API KelStatus kelsLogGauss1_64f_D2(const Kel64f* pSrc, int step, const Kel64f* pMean, const Kel64f* pIvar,
                                        int width, Kel64f* pResult, int height, Kel64f gConst);
KELS_API KelStatus kelsLogGauss1_64f_D2L(const Kel64f** ppSrc, const Kel64f* pMean, const Kel64f* pIvar, int width,
                                         Kel64f* pResult, int height, Kel64f gConst);
KELS_API KelStatus kelsLogGauss_IdVar_64f_D2(const Kel64f* pSrc, int step, const Kel64f* pMean, int width,
                                             Kel64f* pResult, int height, Kel64f gConst);
KELS_API KelStatus kelsLogGauss_IdVar_64f_D2L(const Kel64f** ppSrc, const Kel64f* pMean, int width, Kel64f* pResult,
                                              int height, Kel64f gConst);
KELS_API KelStatus kelsLogGauss_32f_D2(const Kel32f* pSrc, int step, const Kel32f* pMean, const Kel32f* pIvar,
                                       int width, Kel32f* pResult, int height, Kel32f gConst);
KELS_API KelStatus kelsLogGauss_32f_D2L(const Kel32f** ppSrc, const Kel32f* pMean, const Kel32f* pIvar, int width,
                                        Kel32f* pResult, int height, Kel32f gConst);
KELS_API KelStatus kelsLogGauss1_32f_D2(const Kel32f* pSrc, int step, const Kel32f* pMean, const Kel32f* pIvar,
                                        int width, Kel32f* pResult, int height, Kel32f gConst);
KELS_API KelStatus kelsLogGauss1_32f_D2L(const Kel32f** ppSrc, const Kel32f* pMean, const Kel32f* pIvar, int width,
                                         Kel32f* pResult, int height, Kel32f gConst);
KELS_API KelStatus kelsLogGauss_IdVar_32f_D2(const Kel32f* pSrc, int step, const Kel32f* pMean, int width,
                                             Kel32f* pResult, int height, Kel32f gConst);
KELS_API KelStatus kelsLogGauss_IdVar_32f_D2L(const Kel32f** ppSrc, const Kel32f* pMean, int width, Kel32f* pResult,
                                              int height, Kel32f gConst);

/* 16-bit frames, integer scores: S is exact, shifted by scaleFactor + 1 places, and the score saturated to 32 bits or,
 * in the Low forms, cut to its low 32 bits.
 */
KELS_API KelStatus kelsLogGauss_16s32s_D2Sfs(const Kel16s* pSrc, int step, const Kel16s* pMean, const Kel16s* pIvar,
                                             int width, Kel32s* pResult, int height, Kel32s gConst, int scaleFactor);
KELS_API KelStatus kelsLogGauss_16s32s_D2LSfs(const Kel16s** ppSrc, const Kel16s* pMean, const Kel16s* pIvar, int width,
                                              Kel32s* pResult, int height, Kel32s gConst, int scaleFactor);
KELS_API KelStatus kelsLogGauss_Low_16s32s_D2Sfs(const Kel16s* pSrc, int step, const Kel16s* pMean, const Kel16s* pIvar,
                                                 int width, Kel32s* pResult, int height, Kel32s gConst,
                                                 int scaleFactor);
KELS_API KelStatus kelsLogGauss_Low_16s32s_D2LSfs(const Kel16s** ppSrc, const Kel16s* pMean, const Kel16s* pIvar,
                                                  int width, Kel32s* pResult, int height, Kel32s gConst,
                                                  int scaleFactor);
KELS_API KelStatus kelsLogGauss_IdVar_16s32s_D2Sfs(const Kel16s* pSrc, int step, const Kel16s* pMean, int width,
                                                   Kel32s* pResult, int height, Kel32s gConst, int scaleFactor);
KELS_API KelStatus kelsLogGauss_IdVar_16s32s_D2LSfs(const Kel16s** ppSrc, const Kel16s* pMean, int width,
                                                    Kel32s* pResult, int height, Kel32s gConst, int scaleFactor);
KELS_API KelStatus kelsLogGauss_IdVarLow_16s32s_D2Sfs(const Kel16s* pSrc, int step, const Kel16s* pMean, int width,
                                                      Kel32s* pResult, int height, Kel32s gConst, int scaleFactor);
KELS_API KelStatus kelsLogGauss_IdVarLow_16s32s_D2LSfs(const Kel16s** ppSrc, const Kel16s* pMean, int width,
                                                       Kel32s* pResult, int height, Kel32s gConst, int scaleFactor);

/* 16-bit frames, float scores: S is multiplied by 2^-(scaleFactor + 1), and by 1/2 where there is no scaleFactor.  The
 * Low forms equal their twins.
 */
KELS_API KelStatus kelsLogGauss_Scaled_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, const Kel16s* pIvar,
                                                 int width, Kel32f* pResult, int height, Kel32f gConst,
                                                 int scaleFactor);
KELS_API KelStatus kelsLogGauss_Scaled_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, const Kel16s* pIvar,
                                                  int width, Kel32f* pResult, int height, Kel32f gConst,
                                                  int scaleFactor);
KELS_API KelStatus kelsLogGauss_LowScaled_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean,
                                                    const Kel16s* pIvar, int width, Kel32f* pResult, int height,
                                                    Kel32f gConst, int scaleFactor);
KELS_API KelStatus kelsLogGauss_LowScaled_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, const Kel16s* pIvar,
                                                     int width, Kel32f* pResult, int height, Kel32f gConst,
                                                     int scaleFactor);
KELS_API KelStatus kelsLogGauss_IdVarScaled_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, int width,
                                                      Kel32f* pResult, int height, Kel32f gConst, int scaleFactor);
KELS_API KelStatus kelsLogGauss_IdVarScaled_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, int width,
                                                       Kel32f* pResult, int height, Kel32f gConst, int scaleFactor);
KELS_API KelStatus kelsLogGauss_IdVarLowScaled_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, int width,
                                                         Kel32f* pResult, int height, Kel32f gConst, int scaleFactor);
KELS_API KelStatus kelsLogGauss_IdVarLowScaled_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, int width,
                                                          Kel32f* pResult, int height, Kel32f gConst, int scaleFactor);
KELS_API KelStatus kelsLogGauss_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, const Kel16s* pIvar,
                                          int width, Kel32f* pResult, int height, Kel32f gConst);
KELS_API KelStatus kelsLogGauss_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, const Kel16s* pIvar, int width,
                                           Kel32f* pResult, int height, Kel32f gConst);
KELS_API KelStatus kelsLogGauss_Low_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, const Kel16s* pIvar,
                                              int width, Kel32f* pResult, int height, Kel32f gConst);
KELS_API KelStatus kelsLogGauss_Low_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, const Kel16s* pIvar,
                                               int width, Kel32f* pResult, int height, Kel32f gConst);
KELS_API KelStatus kelsLogGauss_IdVar_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, int width,
                                                Kel32f* pResult, int height, Kel32f gConst);
KELS_API KelStatus kelsLogGauss_IdVar_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, int width, Kel32f* pResult,
                                                 int height, Kel32f gConst);
KELS_API KelStatus kelsLogGauss_IdVarLow_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, int width,
                                                   Kel32f* pResult, int height, Kel32f gConst);
KELS_API KelStatus kelsLogGauss_IdVarLow_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, int width,
                                                    Kel32f* pResult, int height, Kel32f gConst);

/* Mahalanobis distances. */
KELS_API KelStatus kelsMahDist_64f_D2(const Kel64f* pSrc, int step, const Kel64f* pMean, const Kel64f* pIvar, int width,
                                      Kel64f* pResult, int height);
KELS_API KelStatus kelsMahDist_64f_D2L(const Kel64f** ppSrc, const Kel64f* pMean, const Kel64f* pIvar, int width,
                                       Kel64f* pResult, int height);
KELS_API KelStatus kelsMahDist_32f_D2(const Kel32f* pSrc, int step, const Kel32f* pMean, const Kel32f* pIvar, int width,
                                      Kel32f* pResult, int height);
KELS_API KelStatus kelsMahDist_32f_D2L(const Kel32f** ppSrc, const Kel32f* pMean, const Kel32f* pIvar, int width,
                                       Kel32f* pResult, int height);
KELS_API KelStatus kelsMahDist1_64f_D2(const Kel64f* pSrc, int step, const Kel64f* pMean, const Kel64f* pIvar,
                                       int width, Kel64f* pResult, int height);
KELS_API KelStatus kelsMahDist1_64f_D2L(const Kel64f** ppSrc, const Kel64f* pMean, const Kel64f* pIvar, int width,
                                        Kel64f* pResult, int height);
KELS_API KelStatus kelsMahDist1_32f_D2(const Kel32f* pSrc, int step, const Kel32f* pMean, const Kel32f* pIvar,
                                       int width, Kel32f* pResult, int height);
KELS_API KelStatus kelsMahDist1_32f_D2L(const Kel32f** ppSrc, const Kel32f* pMean, const Kel32f* pIvar, int width,
                                        Kel32f* pResult, int height);

/* ---- one vector under many Gaussians ----------------------------------------------------------------------------- */

KELS_API KelStatus kelsLogGaussMultiMix_64f_D2(const Kel64f* pMean, const Kel64f* pIvar, int step, const Kel64f* pSrc,
                                               int width, Kel64f* pSrcDst, int height);
KELS_API KelStatus kelsLogGaussMultiMix_64f_D2L(const Kel64f** ppMean, const Kel64f** ppIvar, const Kel64f* pSrc,
                                                int width, Kel64f* pSrcDst, int height);
KELS_API KelStatus kelsLogGaussMultiMix_32f_D2(const Kel32f* pMean, const Kel32f* pIvar, int step, const Kel32f* pSrc,
                                               int width, Kel32f* pSrcDst, int height);
KELS_API KelStatus kelsLogGaussMultiMix_32f_D2L(const Kel32f** ppMean, const Kel32f** ppIvar, const Kel32f* pSrc,
                                                int width, Kel32f* pSrcDst, int height);
KELS_API KelStatus kelsLogGauss2_64f_D2(const Kel64f* pMean, const Kel64f* pIvar, int step, const Kel64f* pSrc,
                                        int width, Kel64f* pSrcDst, int height);
KELS_API KelStatus kelsLogGauss2_64f_D2L(const Kel64f** ppMean, const Kel64f** ppIvar, const Kel64f* pSrc, int width,
                                         Kel64f* pSrcDst, int height);
KELS_API KelStatus kelsLogGauss2_32f_D2(const Kel32f* pMean, const Kel32f* pIvar, int step, const Kel32f* pSrc,
                                        int width, Kel32f* pSrcDst, int height);
KELS_API KelStatus kelsLogGauss2_32f_D2L(const Kel32f** ppMean, const Kel32f** ppIvar, const Kel32f* pSrc, int width,
                                         Kel32f* pSrcDst, int height);

/* 16-bit models, by the rules of the frames above. */
KELS_API KelStatus kelsLogGaussMultiMix_16s32s_D2Sfs(const Kel16s* pMean, const Kel16s* pIvar, int step,
                                                     const Kel16s* pSrc, int width, Kel32s* pSrcDst, int height,
                                                     int scaleFactor);
KELS_API KelStatus kelsLogGaussMultiMix_16s32s_D2LSfs(const Kel16s** ppMean, const Kel16s** ppIvar, const Kel16s* pSrc,
                                                      int width, Kel32s* pSrcDst, int height, int scaleFactor);
KELS_API KelStatus kelsLogGaussMultiMix_Low_16s32s_D2Sfs(const Kel16s* pMean, const Kel16s* pIvar, int step,
                                                         const Kel16s* pSrc, int width, Kel32s* pSrcDst, int height,
                                                         int scaleFactor);
KELS_API KelStatus kelsLogGaussMultiMix_Low_16s32s_D2LSfs(const Kel16s** ppMean, const Kel16s** ppIvar,
                                                          const Kel16s* pSrc, int width, Kel32s* pSrcDst, int height,
                                                          int scaleFactor);
KELS_API KelStatus kelsLogGaussMultiMix_Scaled_16s32f_D2(const Kel16s* pMean, const Kel16s* pIvar, int step,
                                                         const Kel16s* pSrc, int width, Kel32f* pSrcDst, int height,
                                                         int scaleFactor);
KELS_API KelStatus kelsLogGaussMultiMix_Scaled_16s32f_D2L(const Kel16s** ppMean, const Kel16s** ppIvar,
                                                          const Kel16s* pSrc, int width, Kel32f* pSrcDst, int height,
                                                          int scaleFactor);
KELS_API KelStatus kelsLogGaussMultiMix_16s32f_D2(const Kel16s* pMean, const Kel16s* pIvar, int step,
                                                  const Kel16s* pSrc, int width, Kel32f* pSrcDst, int height);
KELS_API KelStatus kelsLogGaussMultiMix_16s32f_D2L(const Kel16s** ppMean, const Kel16s** ppIvar, const Kel16s* pSrc,
                                                   int width, Kel32f* pSrcDst, int height);

/* Mahalanobis distances; pDst is only written. */
KELS_API KelStatus kelsMahDistMultiMix_64f_D2(const Kel64f* pMean, const Kel64f* pIvar, int step, const Kel64f* pSrc,
                                              int width, Kel64f* pDst, int height);
KELS_API KelStatus kelsMahDistMultiMix_64f_D2L(const Kel64f** ppMean, const Kel64f** ppIvar, const Kel64f* pSrc,
                                               int width, Kel64f* pDst, int height);
KELS_API KelStatus kelsMahDistMultiMix_32f_D2(const Kel32f* pMean, const Kel32f* pIvar, int step, const Kel32f* pSrc,
                                              int width, Kel32f* pDst, int height);
KELS_API KelStatus kelsMahDistMultiMix_32f_D2L(const Kel32f** ppMean, const Kel32f** ppIvar, const Kel32f* pSrc,
                                               int width, Kel32f* pDst, int height);
KELS_API KelStatus kelsMahDist2_64f_D2(const Kel64f* pMean, const Kel64f* pIvar, int step, const Kel64f* pSrc,
                                       int width, Kel64f* pDst, int height);
KELS_API KelStatus kelsMahDist2_64f_D2L(const Kel64f** ppMean, const Kel64f** ppIvar, const Kel64f* pSrc, int width,
                                        Kel64f* pDst, int height);
KELS_API KelStatus kelsMahDist2_32f_D2(const Kel32f* pMean, const Kel32f* pIvar, int step, const Kel32f* pSrc,
                                       int width, Kel32f* pDst, int height);
KELS_API KelStatus kelsMahDist2_32f_D2L(const Kel32f** ppMean, const Kel32f** ppIvar, const Kel32f* pSrc, int width,
                                        Kel32f* pDst, int height);

#ifdef __cplusplus
}
#endif

#endif
