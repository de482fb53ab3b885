/** @defgroup block Many vectors under one Gaussian, or one vector under many
 *
 * The scores and distances of kels/gauss.h, for all rows of a matrix in one call.
 *
 * @code{.c}
 * // Three frames of two features under one Gaussian, then one frame under three Gaussians.
 * const Kel32f frames[3 * 2] = {1, 2, 3, 4, 5, 6}, mean[2] = {1, 2}, ivar[2] = {4, 1};
 * Kel32f scores[3];
 * kelsLogGauss_32f_D2(frames, 2, mean, ivar, 2, scores, 3, -1.5f);
 *
 * const Kel32f means[3 * 2] = {1, 2, 3, 4, 5, 6}, ivars[3 * 2] = {4, 1, 4, 1, 4, 1};
 * Kel32f constants[3] = {-1.5f, -1.5f, -1.5f};                        // becomes the scores
 * kelsLogGaussMultiMix_32f_D2(means, ivars, 2, frames, 2, constants, 3);
 * printf("%g %g\n", scores[0], constants[0]);                         // -1.5 twice: at the mean
 * @endcode
 *
 * ## What it computes
 * For a vector x of `width` components under a Gaussian,
 *
 *     S        = sum over i < width of (x[i] - mean[i])^2 * ivar[i]
 *     score    = gConst - S / 2              (LogGauss)
 *     distance = S                           (MahDist)
 *
 * IdVar forms take no inverse variances and use 1 for all of them.
 *
 * - LogGauss and MahDist take frames: `height` vectors under one Gaussian. pResult has height values.
 * - LogGaussMultiMix and MahDistMultiMix take Gaussians: one vector under `height` of them, which are the rows of the
 *   mean and of the inverse-variance block. pSrcDst has height values, on entry gConst of each Gaussian and on return
 *   its score. pDst of the distances is only written.
 *
 * Some names stand for others: LogGauss1 for LogGauss, MahDist1 for MahDist, LogGauss2 for LogGaussMultiMix, and
 * MahDist2 for MahDistMultiMix.
 *
 * ## Shapes and units
 * - D2: one array whose rows begin `step` elements (not bytes) apart. The mean and the inverse-variance block have the
 *   same step.
 * - D2L: an array of height row pointers.
 *
 * Of a row only width elements are read.
 *
 * 16-bit models follow the rules of kels/gauss.h. Integer scores (16s32s) shift the exact S by scaleFactor + 1 places
 * and saturate; their Low forms keep the low 32 bits. Float scores (16s32f) multiply S by 2^-(scaleFactor + 1), with
 * scaleFactor 0 where there is none; their Low forms equal their twins.
 *
 * ## Accuracy
 * As in kels/gauss.h. How many rows a call scores changes the order of sums and nothing else.
 *
 * ## Checks, in order
 * - kelStatusStep, D2 only: step is below width. It is found even beside a null pointer.
 * - kelStatusNullPtr: a pointer is null. Row pointers are not looked at.
 * - kelStatusSize: width or height is below 1.
 *
 * ## Source
 * As in kels/gauss.h.
 *
 * Definitions: src/scoring/gauss/, frames of floats in frames.cpp, frames of 16-bit integers in frames_16s.cpp, and
 * Gaussians in multimix.cpp.
 * @{
 */
#ifndef KELS_BLOCK_H
#define KELS_BLOCK_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Frames of floats under one Gaussian
 * @{ */
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
/** @} */

/** @name 16-bit frames, integer scores
 * @{ */
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
/** @} */

/** @name 16-bit frames, float scores
 * @{ */
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
/** @} */

/** @name Mahalanobis distances of frames
 * @{ */
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
/** @} */

/** @name One vector under many Gaussians
 * @{ */
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
/** @} */

/** @name One 16-bit vector under many Gaussians
 * @{ */
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
/** @} */

/** @name Mahalanobis distances to many Gaussians
 * @{ */
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
/** @} */

#ifdef __cplusplus
}
#endif

/** @} */

#endif
