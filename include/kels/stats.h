/* Statistics of feature vectors for training. */
#ifndef KELS_STATS_H
#define KELS_STATS_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Accumulation of one vector that counts val (its probability of belonging to a Gaussian), about that Gaussian's mean:
 *
 *   d = pSrc[k] - pMean[k],  pDstMeanAcc[k] += val * d,  pDstVarAcc[k] += d * (val * d)
 *
 * kelsUpdateMean_* and kelsUpdateVar_* turn the sums into parameters.  Checks: a null pointer -8; len below 1 -6.
 */
KELS_API KelStatus kelsMeanVarAcc_32f(const Kel32f* pSrc, const Kel32f* pMean, Kel32f* pDstMeanAcc, Kel32f* pDstVarAcc,
                                      int len, Kel32f val);
KELS_API KelStatus kelsMeanVarAcc_64f(const Kel64f* pSrc, const Kel64f* pMean, Kel64f* pDstMeanAcc, Kel64f* pDstVarAcc,
                                      int len, Kel64f val);

#ifdef __cplusplus
}
#endif

#endif
