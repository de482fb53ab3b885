/** @defgroup mixture Gaussian mixtures
 *
 * The score of a vector under a mixture of Gaussians, and the running maxima and sums from which a caller builds such
 * scores for many vectors or many mixtures at a time.
 *
 * @code{.c}
 * // The log likelihood of x under two components; pDets holds what kelsOutProbPreCalc_32f gives for each of them.
 * const Kel32f x[2] = {1, 2}, means[2 * 2] = {1, 2, 3, 4}, ivars[2 * 2] = {4, 1, 1, 1}, constants[2] = {-1.5f, -2};
 * Kel32f whole, best = -1e30f;
 * kelsLogGaussMixture_32f_D2(x, means, ivars, 2, 2, 2, constants, &whole);
 * for (int m = 0; m < 2; ++m) {       // the best component, one of them after the other
 *     kelsLogGaussMax_32f_D2(x, 2, means + 2 * m, ivars + 2 * m, 2, &best, 1, constants[m]);
 * }
 * printf("%g %g\n", whole, best);     // -1.48895 and -1.5
 * @endcode
 *
 * ## What it computes
 * A component is a Gaussian whose constant includes the logarithm of its weight. Its score s = constant - S / 2 is that
 * of kels/gauss.h. Scores are combined in one of two ways:
 *
 * - by their maximum, which is the score of the best component;
 * - by logadd(a, b) = ln(e^a + e^b), which gives the likelihood of the whole mixture.
 *
 * The functions differ in what they score. All but the last two update `height` running results in pSrcDst, which the
 * caller sets before the first component, for example to the logarithm of zero.
 *
 *     LogGaussMax, LogGaussAdd                   height vectors under one Gaussian
 *     LogGaussMaxMultiMix, LogGaussAddMultiMix   one vector under height Gaussians
 *     LogGaussMixture                            one vector under one mixture of height components
 *     LogGaussMixture_Select                     the same, with some of the components
 *
 * logadd follows kels/log.h, in double precision for 64f results and in single precision for all others:
 *
 *                the smaller operand is ignored      the logarithm    where it is ignored,
 *                if it is lower by more than         of zero          the result is
 *     single     15.3195879547406                    -4500000         the larger one, at least -4500000
 *     double     23.0258509299405                    -1e10            the larger one if >= -9e9, else -1e10
 *
 * Operands close to each other are added up wherever they lie, below the logarithm of zero too. Two equal values give
 * the value + 0.6931471827215062 in single precision and + 0.6931471805599475 in double precision.
 *
 * ## Shapes and units
 * A vector has width elements. pMean and pIvar are one Gaussian of width elements each, or blocks of height rows.
 *
 * - D2: one array whose rows begin `step` elements (not bytes) apart. The mean and the inverse-variance block have the
 *   same step.
 * - D2L: an array of height row pointers.
 *
 * Of a row only width elements are read. IdVar forms have no inverse variances and use 1 for all of them.
 *
 * 16-bit models follow the rules of kels/gauss.h. Float scores (16s32f) multiply S by 2^-(scaleFactor + 1), with
 * scaleFactor 0 where there is none; their Low forms equal their twins. Integer scores (16s32s) shift the exact S by
 * scaleFactor + 1 places and saturate the score; their Low forms keep its low 32 bits. Scores are compared after that.
 *
 * ## Accuracy
 * Scores as in kels/gauss.h, sums of them as in kels/log.h.
 *
 * ## Checks, in order
 *                                               first               second              third
 *     Max, Add, MaxMultiMix, AddMultiMix, D2    kelStatusStep       kelStatusNullPtr    kelStatusSize
 *     Mixture, Mixture_Select, D2               kelStatusNullPtr    kelStatusStep       kelStatusSize
 *     all of them, D2L                          kelStatusNullPtr    kelStatusSize
 *
 * - kelStatusStep: step is below width.
 * - kelStatusNullPtr: a pointer is null. Row pointers are not looked at.
 * - kelStatusSize: width or height is below 1, or the offset of a Select form is negative.
 *
 * ## Source
 * Mixtures of logarithms: L. Rabiner, B.-H. Juang, "Fundamentals of Speech Recognition", 1993, section 6.6. Selection
 * of Gaussians: E. Bocchieri, "Vector quantization for the efficient computation of continuous density likelihoods",
 * ICASSP 1993.
 *
 * Definitions: src/scoring/mixture/, in max.cpp and add.cpp (frames), multimix.cpp (Gaussians), mixture.cpp and
 * selected.cpp.
 * @{
 */
#ifndef KELS_MIXTURE_H
#define KELS_MIXTURE_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Maximum over frames
 * pSrcDst[f] = max(pSrcDst[f], s), where s is the score of vector f. Of equal values s is stored, which shows only in
 * the sign of a zero. A score, or a running result, that is NaN leaves the running result as it is. Max1 is another
 * name of Max.
 * @{ */
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
/** @} */

/** @name Maximum over 16-bit frames, integer scores
 * @{ */
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
/** @} */

/** @name Maximum over 16-bit frames, float scores
 * @{ */
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
/** @} */

/** @name Log-add over frames
 * pSrcDst[f] = logadd(pSrcDst[f], s), where s is the score of vector f. Where pSrcDst[f] is the logarithm of zero and s
 * far above it, the result is s to the bit. Add1 is another name of Add.
 * @{ */
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
/** @} */

/** @name Log-add over 16-bit frames
 * @{ */
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
/** @} */

/** @name Maximum over Gaussians
 * pSrcDst[g] = max(pSrcDst[g], s), where s = pDets[g] - S / 2 is the score of pSrc under Gaussian g, whose mean and
 * inverse variances are rows g of the blocks. Equal values and NaN act as over frames. pDets may be pSrcDst.
 * @{ */
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
/** @} */

/** @name Maximum over 16-bit Gaussians
 * @{ */
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
/** @} */

/** @name Log-add over Gaussians
 * pSrcDst[g] = logadd(pSrcDst[g], s), with the s of the maximum over Gaussians. Add2 is another name of AddMultiMix.
 * @{ */
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
/** @} */

/** @name Log-add over 16-bit Gaussians
 * @{ */
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
/** @} */

/** @name Mixtures
 * *pResult = the logarithm of the sum of e^s over all components, s = pDets[m] - S / 2 for m = 0 .. height - 1. The
 * score of component 0 is taken as it is, even below the logarithm of zero. The others are added to it by logadd in
 * their order. *pResult is only written.
 * @{ */
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
/** @} */

/** @name Selected components
 * The same over those components m whose bit offset + m is set in the row pSign. Bits are counted from the most
 * significant one of the first byte on, as in the sign tables of kels/select.h. With no bit set, *pResult = -4500000.
 *
 * Bytes that hold none of the bits offset .. offset + height - 1 are not read.
 * @{ */
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
/** @} */

#ifdef __cplusplus
}
#endif

/** @} */

#endif
