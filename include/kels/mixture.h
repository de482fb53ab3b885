/* Scores of Gaussian mixtures, and the running maxima and sums that they are built up with.
 *
 * A component is a Gaussian with the logarithm of its weight in gConst; its score s = gConst - S / 2 is that of
 * kels/gauss.h and kels/block.h, with the accuracy and the rules for 16-bit models that stand there.  Scores are
 * combined by their maximum (the best component) or by log-add,
 *
 *     logadd(a, b) = ln(e^a + e^b)                         (the likelihood of the whole mixture),
 *
 * which follows kels/log.h in single precision for 32f and 16s32f results and in double precision for 64f:
 *
 *               smaller operand ignored if that far below       log of zero     kept from below by
 *   single      15.3195879547406                                -4500000        max(larger, -4500000)
 *   double      23.0258509299405                                -1e10           larger if >= -9e9, else -1e10
 *
 * The floor holds only where the smaller operand is ignored: two values close together below it are added up there.
 * Two equal values give the value + 0.6931471827215062 in single precision and + 0.6931471805599475 in double.
 *
 * Kinds of functions, with the shapes of their arrays:
 *
 *   LogGaussMax, LogGaussAdd                  `height` vectors under one Gaussian; pMean and pIvar have width values
 *   LogGaussMaxMultiMix, LogGaussAddMultiMix  one vector of width values under `height` Gaussians
 *   LogGaussMixture                           one vector under one mixture of `height` components
 *   LogGaussMixture_Select                    the same with some of the components
 *
 * The first four read and write pSrcDst, `height` running results: the caller sets them before the first component,
 * for example to the logarithm of zero.  The Mixture forms write one value, *pResult, whatever was there.
 *
 * Layouts.  D2: one array, rows `step` elements (not bytes) apart; mean and inverse-variance blocks share the step.
 * D2L: an array of height row pointers.  Of a row, only width elements are read.  IdVar forms have no inverse variances
 * and take them as 1.
 *
 * 16-bit models.  16s32f: S is multiplied by 2^-(scaleFactor + 1); forms without a scaleFactor use 0.  The Low forms
 * equal their twins.  16s32s (Sfs): S is exact, shifted by scaleFactor + 1 places, and the score saturated to 32 bits,
 * or in the Low forms cut to its low 32 bits, before it is compared.
 *
 * Checks, in this order
 *   Max, Add, MaxMultiMix, AddMultiMix   D2: step below width (-37), null pointers (-8), width or height below 1 (-6)
 *   Mixture, Mixture_Select              D2: null pointers (-8), step below width (-37), width or height below 1 (-6)
 *   all of them                          D2L: null pointers (-8), width or height below 1 (-6)
 * A negative offset of the Select forms is a faulty size.  No check looks at the row pointers.
 *
 * Sources: mixtures in the log domain as in Rabiner and Juang, "Fundamentals of Speech Recognition" (1993), section
 * 6.6; selection of Gaussians as in Bocchieri, "Vector quantization for the efficient computation of continuous density
 * likelihoods", ICASSP 1993.
 */
#ifndef KELS_MIXTURE_H
#define KELS_MIXTURE_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- maximum over frames ----------------------------------------------------------------------------------------- */

/* pSrcDst[f] = max(pSrcDst[f], s_f), s_f the score of vector f.  Of equal values s_f is stored, which shows only in the
 * sign of a zero; a score, or a running result, that is not a number leaves the running result as it is.  Max1 is
 * another name of Max.
 */
KELS_API KelStatus kelsLogGaussMax1_32f_D2(const Kel32f* pSrc, int step, const Kel32f* pMean, const Kel32f* pIvar,
                                           int width, Kel32f* pSrcDst, int height, Kel32f gConst);
KELS_API KelStatus kelsLogGaussMax_32f_D2(const Kel32f* pSrc, int step, const Kel32f* pMean, const Kel32f* pIvar,
                                          int width, Kel32f* pSrcDst, int height, Kel32f gConst);
KELS_API KelStatus kelsLogGaussMax_32f_D2L(const Kel32f** ppSrc, const Kel32f* pMean, const Kel32f* pIvar, int width,
                                           Kel32f* pSrcDst, int height, Kel32f gConst);
KELS_API KelStatus kelsLogGaussMax_64f_D2(const Kel64f* pSrc, int step, const Kel64f* pMean, const Kel64f* pIvar,
                                          int width, Kel64f* pSrcDst, int height, Kel64f gConst);
KELS_API KelStatus kelsLogGaussMax_64f_D2L(const Kel64f** ppSrc, const Kel64f* pMean, const Kel64f* pIvar, int width,
                                           Kel64f* pSrcDst, int height, Kel64f gConst);
KELS_API KelStatus kelsLogGaussMax_IdVar_32f_D2(const Kel32f* pSrc, int step, const Kel32f* pMean, int width,
                                                Kel32f* pSrcDst, int height, Kel32f gConst);
KELS_API KelStatus kelsLogGaussMax_IdVar_32f_D2L(const Kel32f** ppSrc, const Kel32f* pMean, int width, Kel32f* pSrcDst,
                                                 int height, Kel32f gConst);
KELS_API KelStatus kelsLogGaussMax_IdVar_64f_D2(const Kel64f* pSrc, int step, const Kel64f* pMean, int width,
                                                Kel64f* pSrcDst, int height, Kel64f gConst);
KELS_API KelStatus kelsLogGaussMax_IdVar_64f_D2L(const Kel64f** ppSrc, const Kel64f* pMean, int width, Kel64f* pSrcDst,
                                                 int height, Kel64f gConst);

/* 16-bit vectors, integer scores. */
KELS_API KelStatus kelsLogGaussMax_16s32s_D2Sfs(const Kel16s* pSrc, int step, const Kel16s* pMean, const Kel16s* pIvar,
                                                int width, Kel32s* pSrcDst, int height, Kel32s gConst, int scaleFactor);
KELS_API KelStatus kelsLogGaussMax_16s32s_D2LSfs(const Kel16s** ppSrc, const Kel16s* pMean, const Kel16s* pIvar,
                                                 int width, Kel32s* pSrcDst, int height, Kel32s gConst,
                                                 int scaleFactor);
KELS_API KelStatus kelsLogGaussMax_IdVar_16s32s_D2Sfs(const Kel16s* pSrc, int step, const Kel16s* pMean, int width,
                                                      Kel32s* pSrcDst, int height, Kel32s gConst, int scaleFactor);
KELS_API KelStatus kelsLogGaussMax_IdVar_16s32s_D2LSfs(const Kel16s** ppSrc, const Kel16s* pMean, int width,
                                                       Kel32s* pSrcDst, int height, Kel32s gConst, int scaleFactor);
KELS_API KelStatus kelsLogGaussMax_Low_16s32s_D2Sfs(const Kel16s* pSrc, int step, const Kel16s* pMean,
                                                    const Kel16s* pIvar, int width, Kel32s* pSrcDst, int height,
                                                    Kel32s gConst, int scaleFactor);
KELS_API KelStatus kelsLogGaussMax_Low_16s32s_D2LSfs(const Kel16s** ppSrc, const Kel16s* pMean, const Kel16s* pIvar,
                                                     int width, Kel32s* pSrcDst, int height, Kel32s gConst,
                                                     int scaleFactor);
KELS_API KelStatus kelsLogGaussMax_IdVarLow_16s32s_D2Sfs(const Kel16s* pSrc, int step, const Kel16s* pMean, int width,
                                                         Kel32s* pSrcDst, int height, Kel32s gConst, int scaleFactor);
KELS_API KelStatus kelsLogGaussMax_IdVarLow_16s32s_D2LSfs(const Kel16s** ppSrc, const Kel16s* pMean, int width,
                                                          Kel32s* pSrcDst, int height, Kel32s gConst, int scaleFactor);

/* 16-bit vectors, float scores. */
KELS_API KelStatus kelsLogGaussMax_Scaled_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean,
                                                    const Kel16s* pIvar, int width, Kel32f* pSrcDst, int height,
                                                    Kel32f gConst, int scaleFactor);
KELS_API KelStatus kelsLogGaussMax_Scaled_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, const Kel16s* pIvar,
                                                     int width, Kel32f* pSrcDst, int height, Kel32f gConst,
                                                     int scaleFactor);
KELS_API KelStatus kelsLogGaussMax_IdVarScaled_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, int width,
                                                         Kel32f* pSrcDst, int height, Kel32f gConst, int scaleFactor);
KELS_API KelStatus kelsLogGaussMax_IdVarScaled_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, int width,
                                                          Kel32f* pSrcDst, int height, Kel32f gConst, int scaleFactor);
KELS_API KelStatus kelsLogGaussMax_IdVar_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, int width,
                                                   Kel32f* pSrcDst, int height, Kel32f gConst);
KELS_API KelStatus kelsLogGaussMax_IdVar_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, int width,
                                                    Kel32f* pSrcDst, int height, Kel32f gConst);
KELS_API KelStatus kelsLogGaussMax_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, const Kel16s* pIvar,
                                             int width, Kel32f* pSrcDst, int height, Kel32f gConst);
KELS_API KelStatus kelsLogGaussMax_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, const Kel16s* pIvar, int width,
                                              Kel32f* pSrcDst, int height, Kel32f gConst);
KELS_API KelStatus kelsLogGaussMax_LowScaled_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean,
                                                       const Kel16s* pIvar, int width, Kel32f* pSrcDst, int height,
                                                       Kel32f gConst, int scaleFactor);
KELS_API KelStatus kelsLogGaussMax_LowScaled_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, const Kel16s* pIvar,
                                                        int width, Kel32f* pSrcDst, int height, Kel32f gConst,
                                                        int scaleFactor);
KELS_API KelStatus kelsLogGaussMax_IdVarLowScaled_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean,
                                                            int width, Kel32f* pSrcDst, int height, Kel32f gConst,
                                                            int scaleFactor);
KELS_API KelStatus kelsLogGaussMax_IdVarLowScaled_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, int width,
                                                             Kel32f* pSrcDst, int height, Kel32f gConst,
                                                             int scaleFactor);

/* ---- log-add over frames ----------------------------------------------------------------------------------------- */

/* pSrcDst[f] = logadd(pSrcDst[f], s_f).  With pSrcDst[f] the logarithm of zero and s_f far above it, s_f to the bit.
 * Add1 is another name of Add.
 */
KELS_API KelStatus kelsLogGaussAdd1_32f_D2(const Kel32f* pSrc, int step, const Kel32f* pMean, const Kel32f* pIvar,
                                           int width, Kel32f* pSrcDst, int height, Kel32f gConst);
KELS_API KelStatus kelsLogGaussAdd_32f_D2(const Kel32f* pSrc, int step, const Kel32f* pMean, const Kel32f* pIvar,
                                          int width, Kel32f* pSrcDst, int height, Kel32f gConst);
KELS_API KelStatus kelsLogGaussAdd_32f_D2L(const Kel32f** ppSrc, const Kel32f* pMean, const Kel32f* pIvar, int width,
                                           Kel32f* pSrcDst, int height, Kel32f gConst);
KELS_API KelStatus kelsLogGaussAdd_64f_D2(const Kel64f* pSrc, int step, const Kel64f* pMean, const Kel64f* pIvar,
                                          int width, Kel64f* pSrcDst, int height, Kel64f gConst);
KELS_API KelStatus kelsLogGaussAdd_64f_D2L(const Kel64f** ppSrc, const Kel64f* pMean, const Kel64f* pIvar, int width,
                                           Kel64f* pSrcDst, int height, Kel64f gConst);
KELS_API KelStatus kelsLogGaussAdd_IdVar_32f_D2(const Kel32f* pSrc, int step, const Kel32f* pMean, int width,
                                                Kel32f* pSrcDst, int height, Kel32f gConst);
KELS_API KelStatus kelsLogGaussAdd_IdVar_32f_D2L(const Kel32f** ppSrc, const Kel32f* pMean, int width, Kel32f* pSrcDst,
                                                 int height, Kel32f gConst);
KELS_API KelStatus kelsLogGaussAdd_IdVar_64f_D2(const Kel64f* pSrc, int step, const Kel64f* pMean, int width,
                                                Kel64f* pSrcDst, int height, Kel64f gConst);
KELS_API KelStatus kelsLogGaussAdd_IdVar_64f_D2L(const Kel64f** ppSrc, const Kel64f* pMean, int width, Kel64f* pSrcDst,
                                                 int height, Kel64f gConst);

/* 16-bit vectors. */
KELS_API KelStatus kelsLogGaussAdd_Scaled_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean,
                                                    const Kel16s* pIvar, int width, Kel32f* pSrcDst, int height,
                                                    Kel32f gConst, int scaleFactor);
KELS_API KelStatus kelsLogGaussAdd_Scaled_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, const Kel16s* pIvar,
                                                     int width, Kel32f* pSrcDst, int height, Kel32f gConst,
                                                     int scaleFactor);
KELS_API KelStatus kelsLogGaussAdd_IdVarScaled_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, int width,
                                                         Kel32f* pSrcDst, int height, Kel32f gConst, int scaleFactor);
KELS_API KelStatus kelsLogGaussAdd_IdVarScaled_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, int width,
                                                          Kel32f* pSrcDst, int height, Kel32f gConst, int scaleFactor);
KELS_API KelStatus kelsLogGaussAdd_LowScaled_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean,
                                                       const Kel16s* pIvar, int width, Kel32f* pSrcDst, int height,
                                                       Kel32f gConst, int scaleFactor);
KELS_API KelStatus kelsLogGaussAdd_LowScaled_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, const Kel16s* pIvar,
                                                        int width, Kel32f* pSrcDst, int height, Kel32f gConst,
                                                        int scaleFactor);
KELS_API KelStatus kelsLogGaussAdd_IdVarLowScaled_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean,
                                                            int width, Kel32f* pSrcDst, int height, Kel32f gConst,
                                                            int scaleFactor);
KELS_API KelStatus kelsLogGaussAdd_IdVarLowScaled_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, int width,
                                                             Kel32f* pSrcDst, int height, Kel32f gConst,
                                                             int scaleFactor);
KELS_API KelStatus kelsLogGaussAdd_IdVar_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, int width,
                                                   Kel32f* pSrcDst, int height, Kel32f gConst);
KELS_API KelStatus kelsLogGaussAdd_IdVar_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, int width,
                                                    Kel32f* pSrcDst, int height, Kel32f gConst);
KELS_API KelStatus kelsLogGaussAdd_16s32f_D2(const Kel16s* pSrc, int step, const Kel16s* pMean, const Kel16s* pIvar,
                                             int width, Kel32f* pSrcDst, int height, Kel32f gConst);
KELS_API KelStatus kelsLogGaussAdd_16s32f_D2L(const Kel16s** ppSrc, const Kel16s* pMean, const Kel16s* pIvar, int width,
                                              Kel32f* pSrcDst, int height, Kel32f gConst);

/* ---- maximum over Gaussians -------------------------------------------------------------------------------------- */

/* pSrcDst[g] = max(pSrcDst[g], s_g), s_g = pDets[g] - S_g / 2 the score of pSrc under Gaussian g, the rows g of the
 * mean and of the inverse-variance block.  Ties and what is not a number: as over frames.  pDets may be pSrcDst.
 */
KELS_API KelStatus kelsLogGaussMaxMultiMix_32f_D2(const Kel32f* pMean, const Kel32f* pIvar, int step,
                                                  const Kel32f* pSrc, int width, const Kel32f* pDets, Kel32f* pSrcDst,
                                                  int height);
KELS_API KelStatus kelsLogGaussMaxMultiMix_32f_D2L(const Kel32f** ppMean, const Kel32f** ppIvar, const Kel32f* pSrc,
                                                   int width, const Kel32f* pDets, Kel32f* pSrcDst, int height);
KELS_API KelStatus kelsLogGaussMaxMultiMix_64f_D2(const Kel64f* pMean, const Kel64f* pIvar, int step,
                                                  const Kel64f* pSrc, int width, const Kel64f* pDets, Kel64f* pSrcDst,
                                                  int height);
KELS_API KelStatus kelsLogGaussMaxMultiMix_64f_D2L(const Kel64f** ppMean, const Kel64f** ppIvar, const Kel64f* pSrc,
                                                   int width, const Kel64f* pDets, Kel64f* pSrcDst, int height);

/* 16-bit models. */
KELS_API KelStatus kelsLogGaussMaxMultiMix_16s32f_D2(const Kel16s* pMean, const Kel16s* pIvar, int step,
                                                     const Kel16s* pSrc, int width, const Kel32f* pDets,
                                                     Kel32f* pSrcDst, int height);
KELS_API KelStatus kelsLogGaussMaxMultiMix_16s32f_D2L(const Kel16s** ppMean, const Kel16s** ppIvar, const Kel16s* pSrc,
                                                      int width, const Kel32f* pDets, Kel32f* pSrcDst, int height);
KELS_API KelStatus kelsLogGaussMaxMultiMix_Scaled_16s32f_D2(const Kel16s* pMean, const Kel16s* pIvar, int step,
                                                            const Kel16s* pSrc, int width, const Kel32f* pDets,
                                                            Kel32f* pSrcDst, int height, int scaleFactor);
KELS_API KelStatus kelsLogGaussMaxMultiMix_Scaled_16s32f_D2L(const Kel16s** ppMean, const Kel16s** ppIvar,
                                                             const Kel16s* pSrc, int width, const Kel32f* pDets,
                                                             Kel32f* pSrcDst, int height, int scaleFactor);
KELS_API KelStatus kelsLogGaussMaxMultiMix_16s32s_D2Sfs(const Kel16s* pMean, const Kel16s* pIvar, int step,
                                                        const Kel16s* pSrc, int width, const Kel32s* pDets,
                                                        Kel32s* pSrcDst, int height, int scaleFactor);
KELS_API KelStatus kelsLogGaussMaxMultiMix_16s32s_D2LSfs(const Kel16s** ppMean, const Kel16s** ppIvar,
                                                         const Kel16s* pSrc, int width, const Kel32s* pDets,
                                                         Kel32s* pSrcDst, int height, int scaleFactor);
KELS_API KelStatus kelsLogGaussMaxMultiMix_LowScaled_16s32f_D2(const Kel16s* pMean, const Kel16s* pIvar, int step,
                                                               const Kel16s* pSrc, int width, const Kel32f* pDets,
                                                               Kel32f* pSrcDst, int height, int scaleFactor);
KELS_API KelStatus kelsLogGaussMaxMultiMix_LowScaled_16s32f_D2L(const Kel16s** ppMean, const Kel16s** ppIvar,
                                                                const Kel16s* pSrc, int width, const Kel32f* pDets,
                                                                Kel32f* pSrcDst, int height, int scaleFactor);
KELS_API KelStatus kelsLogGaussMaxMultiMix_Low_16s32s_D2Sfs(const Kel16s* pMean, const Kel16s* pIvar, int step,
                                                            const Kel16s* pSrc, int width, const Kel32s* pDets,
                                                            Kel32s* pSrcDst, int height, int scaleFactor);
KELS_API KelStatus kelsLogGaussMaxMultiMix_Low_16s32s_D2LSfs(const Kel16s** ppMean, const Kel16s** ppIvar,
                                                             const Kel16s* pSrc, int width, const Kel32s* pDets,
                                                             Kel32s* pSrcDst, int height, int scaleFactor);

/* ---- log-add over Gaussians -------------------------------------------------------------------------------------- */

/* pSrcDst[g] = logadd(pSrcDst[g], s_g).  Add2 is another name of AddMultiMix. */
KELS_API KelStatus kelsLogGaussAdd2_32f_D2(const Kel32f* pMean, const Kel32f* pIvar, int step, const Kel32f* pSrc,
                                           int width, const Kel32f* pDets, Kel32f* pSrcDst, int height);
KELS_API KelStatus kelsLogGaussAddMultiMix_32f_D2(const Kel32f* pMean, const Kel32f* pIvar, int step,
                                                  const Kel32f* pSrc, int width, const Kel32f* pDets, Kel32f* pSrcDst,
                                                  int height);
KELS_API KelStatus kelsLogGaussAddMultiMix_32f_D2L(const Kel32f** ppMean, const Kel32f** ppIvar, const Kel32f* pSrc,
                                                   int width, const Kel32f* pDets, Kel32f* pSrcDst, int height);
KELS_API KelStatus kelsLogGaussAddMultiMix_64f_D2(const Kel64f* pMean, const Kel64f* pIvar, int step,
                                                  const Kel64f* pSrc, int width, const Kel64f* pDets, Kel64f* pSrcDst,
                                                  int height);
KELS_API KelStatus kelsLogGaussAddMultiMix_64f_D2L(const Kel64f** ppMean, const Kel64f** ppIvar, const Kel64f* pSrc,
                                                   int width, const Kel64f* pDets, Kel64f* pSrcDst, int height);

/* 16-bit models. */
KELS_API KelStatus kelsLogGaussAddMultiMix_Scaled_16s32f_D2(const Kel16s* pMean, const Kel16s* pIvar, int step,
                                                            const Kel16s* pSrc, int width, const Kel32f* pDets,
                                                            Kel32f* pSrcDst, int height, int scaleFactor);
KELS_API KelStatus kelsLogGaussAddMultiMix_Scaled_16s32f_D2L(const Kel16s** ppMean, const Kel16s** ppIvar,
                                                             const Kel16s* pSrc, int width, const Kel32f* pDets,
                                                             Kel32f* pSrcDst, int height, int scaleFactor);
KELS_API KelStatus kelsLogGaussAddMultiMix_LowScaled_16s32f_D2(const Kel16s* pMean, const Kel16s* pIvar, int step,
                                                               const Kel16s* pSrc, int width, const Kel32f* pDets,
                                                               Kel32f* pSrcDst, int height, int scaleFactor);
KELS_API KelStatus kelsLogGaussAddMultiMix_LowScaled_16s32f_D2L(const Kel16s** ppMean, const Kel16s** ppIvar,
                                                                const Kel16s* pSrc, int width, const Kel32f* pDets,
                                                                Kel32f* pSrcDst, int height, int scaleFactor);
KELS_API KelStatus kelsLogGaussAddMultiMix_16s32f_D2(const Kel16s* pMean, const Kel16s* pIvar, int step,
                                                     const Kel16s* pSrc, int width, const Kel32f* pDets,
                                                     Kel32f* pSrcDst, int height);
KELS_API KelStatus kelsLogGaussAddMultiMix_16s32f_D2L(const Kel16s** ppMean, const Kel16s** ppIvar, const Kel16s* pSrc,
                                                      int width, const Kel32f* pDets, Kel32f* pSrcDst, int height);

/* ---- mixtures ---------------------------------------------------------------------------------------------------- */

/* *pResult = ln of the sum of e^s_m over the components m = 0 .. height - 1, s_m = pDets[m] - S_m / 2: s_0 as it is,
 * even below the logarithm of zero, and the others added to it by logadd one after another in their order.
 */
KELS_API KelStatus kelsLogGaussMixture_32f_D2(const Kel32f* pSrc, const Kel32f* pMean, const Kel32f* pIvar, int height,
                                              int step, int width, const Kel32f* pDets, Kel32f* pResult);
KELS_API KelStatus kelsLogGaussMixture_32f_D2L(const Kel32f* pSrc, const Kel32f** ppMean, const Kel32f** ppIvar,
                                               int height, int width, const Kel32f* pDets, Kel32f* pResult);
KELS_API KelStatus kelsLogGaussMixture_64f_D2(const Kel64f* pSrc, const Kel64f* pMean, const Kel64f* pIvar, int height,
                                              int step, int width, const Kel64f* pDets, Kel64f* pResult);
KELS_API KelStatus kelsLogGaussMixture_64f_D2L(const Kel64f* pSrc, const Kel64f** ppMean, const Kel64f** ppIvar,
                                               int height, int width, const Kel64f* pDets, Kel64f* pResult);
KELS_API KelStatus kelsLogGaussMixture_IdVar_32f_D2(const Kel32f* pSrc, const Kel32f* pMean, int height, int step,
                                                    int width, const Kel32f* pDets, Kel32f* pResult);
KELS_API KelStatus kelsLogGaussMixture_IdVar_32f_D2L(const Kel32f* pSrc, const Kel32f** ppMean, int height, int width,
                                                     const Kel32f* pDets, Kel32f* pResult);
KELS_API KelStatus kelsLogGaussMixture_IdVar_64f_D2(const Kel64f* pSrc, const Kel64f* pMean, int height, int step,
                                                    int width, const Kel64f* pDets, Kel64f* pResult);
KELS_API KelStatus kelsLogGaussMixture_IdVar_64f_D2L(const Kel64f* pSrc, const Kel64f** ppMean, int height, int width,
                                                     const Kel64f* pDets, Kel64f* pResult);
KELS_API KelStatus kelsLogGaussMixture_Scaled_16s32f_D2(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pIvar,
                                                        int height, int step, int width, const Kel32f* pDets,
                                                        Kel32f* pResult, int scaleFactor);
KELS_API KelStatus kelsLogGaussMixture_Scaled_16s32f_D2L(const Kel16s* pSrc, const Kel16s** ppMean,
                                                         const Kel16s** ppIvar, int height, int width,
                                                         const Kel32f* pDets, Kel32f* pResult, int scaleFactor);
KELS_API KelStatus kelsLogGaussMixture_LowScaled_16s32f_D2(const Kel16s* pSrc, const Kel16s* pMean, const Kel16s* pIvar,
                                                           int height, int step, int width, const Kel32f* pDets,
                                                           Kel32f* pResult, int scaleFactor);
KELS_API KelStatus kelsLogGaussMixture_LowScaled_16s32f_D2L(const Kel16s* pSrc, const Kel16s** ppMean,
                                                            const Kel16s** ppIvar, int height, int width,
                                                            const Kel32f* pDets, Kel32f* pResult, int scaleFactor);
KELS_API KelStatus kelsLogGaussMixture_IdVarScaled_16s32f_D2(const Kel16s* pSrc, const Kel16s* pMean, int height,
                                                             int step, int width, const Kel32f* pDets, Kel32f* pResult,
                                                             int scaleFactor);
KELS_API KelStatus kelsLogGaussMixture_IdVarScaled_16s32f_D2L(const Kel16s* pSrc, const Kel16s** ppMean, int height,
                                                              int width, const Kel32f* pDets, Kel32f* pResult,
                                                              int scaleFactor);
KELS_API KelStatus kelsLogGaussMixture_IdVarLowScaled_16s32f_D2(const Kel16s* pSrc, const Kel16s* pMean, int height,
                                                                int step, int width, const Kel32f* pDets,
                                                                Kel32f* pResult, int scaleFactor);
KELS_API KelStatus kelsLogGaussMixture_IdVarLowScaled_16s32f_D2L(const Kel16s* pSrc, const Kel16s** ppMean, int height,
                                                                 int width, const Kel32f* pDets, Kel32f* pResult,
                                                                 int scaleFactor);

/* ---- selected components ----------------------------------------------------------------------------------------- */

/* The same over those components m whose bit offset + m of the row pSign is set: bits are counted from the most
 * significant one of the first byte, as in the sign tables of kels/select.h.  Bytes that hold none of the bits offset
 * .. offset + height - 1 are not read.  With none set *pResult = -4500000.
 */
KELS_API KelStatus kelsLogGaussMixture_Select_32f_D2(const Kel32f* pSrc, const Kel32f* pMean, const Kel32f* pIvar,
                                                     int height, int step, int width, const Kel32f* pDets,
                                                     Kel32f* pResult, const Kel8u* pSign, int offset);
KELS_API KelStatus kelsLogGaussMixture_Select_32f_D2L(const Kel32f* pSrc, const Kel32f** ppMean, const Kel32f** ppIvar,
                                                      int height, int width, const Kel32f* pDets, Kel32f* pResult,
                                                      const Kel8u* pSign, int offset);
KELS_API KelStatus kelsLogGaussMixture_SelectIdVar_32f_D2(const Kel32f* pSrc, const Kel32f* pMean, int height, int step,
                                                          int width, const Kel32f* pDets, Kel32f* pResult,
                                                          const Kel8u* pSign, int offset);
KELS_API KelStatus kelsLogGaussMixture_SelectIdVar_32f_D2L(const Kel32f* pSrc, const Kel32f** ppMean, int height,
                                                           int width, const Kel32f* pDets, Kel32f* pResult,
                                                           const Kel8u* pSign, int offset);
KELS_API KelStatus kelsLogGaussMixture_SelectScaled_16s32f_D2(const Kel16s* pSrc, const Kel16s* pMean,
                                                              const Kel16s* pIvar, int height, int step, int width,
                                                              const Kel32f* pDets, Kel32f* pResult, const Kel8u* pSign,
                                                              int offset, int scaleFactor);
KELS_API KelStatus kelsLogGaussMixture_SelectScaled_16s32f_D2L(const Kel16s* pSrc, const Kel16s** ppMean,
                                                               const Kel16s** ppIvar, int height, int width,
                                                               const Kel32f* pDets, Kel32f* pResult, const Kel8u* pSign,
                                                               int offset, int scaleFactor);
KELS_API KelStatus kelsLogGaussMixture_SelectIdVarScaled_16s32f_D2(const Kel16s* pSrc, const Kel16s* pMean, int height,
                                                                   int step, int width, const Kel32f* pDets,
                                                                   Kel32f* pResult, const Kel8u* pSign, int offset,
                                                                   int scaleFactor);
KELS_API KelStatus kelsLogGaussMixture_SelectIdVarScaled_16s32f_D2L(const Kel16s* pSrc, const Kel16s** ppMean,
                                                                    int height, int width, const Kel32f* pDets,
                                                                    Kel32f* pResult, const Kel8u* pSign, int offset,
                                                                    int scaleFactor);

#ifdef __cplusplus
}
#endif

#endif
