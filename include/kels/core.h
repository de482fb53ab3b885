/** @defgroup core Memory, version and vectors
 *
 * Aligned memory, the version record, and functions on one-dimensional arrays.
 *
 * @code{.c}
 * float* x = kelsMalloc_32f(100);
 * float energy = 0;
 * if (x != NULL && kelsSet_32f(0.5f, x, 100) == kelStatusOk && kelsDotProd_32f(x, x, 100, &energy) == kelStatusOk) {
 *     printf("%.1f\n", energy);
 * }
 * kelsFree(x);
 * @endcode
 *
 * ## Ownership
 * Arrays belong to the caller.  The destination may be the same array as a source; otherwise arrays must not overlap
 * unless a group allows it.
 *
 * ## Accuracy
 * Element-wise results are those of one IEEE operation in the caller's rounding mode, or a stated number of units in
 * the last place (ULP) from the exact value.  Integer results are rounded as stated in every rounding mode of the
 * caller.
 *
 * ## Checks, in order
 * 1. kelStatusNullPtr: a pointer is null.
 * 2. kelStatusSize: len is below 1.
 * 3. What a group states.
 *
 * ## Threads
 * There is no shared state, except that the allocator is that of the C library.
 *
 * ## Source
 * Sums follow T. Ogita, S. M. Rump and S. Oishi, "Accurate Sum and Dot Product", SIAM J. Sci. Comput. 26(6), 2005.
 * @{
 */
#ifndef KELS_CORE_H
#define KELS_CORE_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Memory and version
 * @{ */

/* n elements, 32-byte aligned and not cleared; null when n is below 1, the size in bytes does not fit, or memory is
 * out.  The block belongs to the caller until kelsFree; the word just before it is the library's.
 */
KELS_API Kel8u* kelsMalloc_8u(int n);
KELS_API Kel16s* kelsMalloc_16s(int n);
KELS_API Kel32s* kelsMalloc_32s(int n);
KELS_API Kel32f* kelsMalloc_32f(int n);
KELS_API Kel64f* kelsMalloc_64f(int n);

/* Releases what a kelsMalloc function returned; null is allowed.  Any other pointer is undefined behaviour. */
KELS_API void kelsFree(void* ptr);

typedef struct {
    Kel32s major, minor, majorBuild, build;
    char targetCpu[4];
    const char* name;
    const char* version;
    const char* buildDate;
} KelLibVersion;

/* The library's constant version record: the same pointer on every call. */
KELS_API const KelLibVersion* kelsrGetLibVersion(void);
/** @} */

/** @name Fill, copy, move
 * @{ */

/* pDst[i] = val, or 0.  Arrays of some megabytes are written past the caches. */
KELS_API KelStatus kelsSet_8u(Kel8u val, Kel8u* pDst, int len);
KELS_API KelStatus kelsSet_16s(Kel16s val, Kel16s* pDst, int len);
KELS_API KelStatus kelsSet_32s(Kel32s val, Kel32s* pDst, int len);
KELS_API KelStatus kelsSet_32f(Kel32f val, Kel32f* pDst, int len);
KELS_API KelStatus kelsSet_64f(Kel64f val, Kel64f* pDst, int len);
KELS_API KelStatus kelsZero_8u(Kel8u* pDst, int len);
KELS_API KelStatus kelsZero_16s(Kel16s* pDst, int len);
KELS_API KelStatus kelsZero_32f(Kel32f* pDst, int len);
KELS_API KelStatus kelsZero_64f(Kel64f* pDst, int len);

/* pDst[i] = pSrc[i], to the bit.  For Copy the arrays must not overlap; for Move they may. */
KELS_API KelStatus kelsCopy_8u(const Kel8u* pSrc, Kel8u* pDst, int len);
KELS_API KelStatus kelsCopy_16s(const Kel16s* pSrc, Kel16s* pDst, int len);
KELS_API KelStatus kelsCopy_32f(const Kel32f* pSrc, Kel32f* pDst, int len);
KELS_API KelStatus kelsCopy_64f(const Kel64f* pSrc, Kel64f* pDst, int len);
KELS_API KelStatus kelsMove_32f(const Kel32f* pSrc, Kel32f* pDst, int len);
/** @} */

/** @name Conversion
 * @{ */

/* The same value in another type; 32s to 32f rounds to the nearest float, ties to even. */
KELS_API KelStatus kelsConvert_8u32f(const Kel8u* pSrc, Kel32f* pDst, int len);
KELS_API KelStatus kelsConvert_16s32f(const Kel16s* pSrc, Kel32f* pDst, int len);
KELS_API KelStatus kelsConvert_32s32f(const Kel32s* pSrc, Kel32f* pDst, int len);

/* pDst[i] = pSrc[i] * 2^-scaleFactor.  A scaleFactor outside of these ranges stands for their nearer end, so that no
 * product overflows: -112..126 for 16s32f, -96..126 for 32s32f, -1008..1022 for 16s64f.
 */
KELS_API KelStatus kelsConvert_16s32f_Sfs(const Kel16s* pSrc, Kel32f* pDst, int len, int scaleFactor);
KELS_API KelStatus kelsConvert_32s32f_Sfs(const Kel32s* pSrc, Kel32f* pDst, int len, int scaleFactor);
KELS_API KelStatus kelsConvert_16s64f_Sfs(const Kel16s* pSrc, Kel64f* pDst, int len, int scaleFactor);

/* pDst[i] = pSrc[i] * 2^-scaleFactor as an integer: rounded to the nearest with ties to even for rndMode 1, toward zero
 * for every other rndMode, and saturated.  NaN gives the smallest integer.  scaleFactor is held to -128..150.  The
 * caller's own rounding mode has no influence and is left as it is.
 */
KELS_API KelStatus kelsConvert_32f16s_Sfs(const Kel32f* pSrc, Kel16s* pDst, int len, int rndMode, int scaleFactor);
KELS_API KelStatus kelsConvert_32f32s_Sfs(const Kel32f* pSrc, Kel32s* pDst, int len, int rndMode, int scaleFactor);
KELS_API KelStatus kelsConvert_64f32s_Sfs(const Kel64f* pSrc, Kel32s* pDst, int len, int rndMode, int scaleFactor);

/* pDst[i] = pSrc[i] * 2^-scaleFactor, rounded half to even and saturated to 16 bits. */
KELS_API KelStatus kelsConvert_32s16s_Sfs(const Kel32s* pSrc, Kel16s* pDst, int len, int scaleFactor);

/* The nearest float; values beyond the largest float become +-3.4028235e38, and NaN becomes -3.4028235e38. */
KELS_API KelStatus kelsConvert_64f32f(const Kel64f* pSrc, Kel32f* pDst, int len);
/** @} */

/** @name Element-wise arithmetic
 * @{ */

/* pSrcDst[i] += pSrc[i]; pDst[i] = pSrc[i] + val, which for val 0 (of either sign) is a copy to the bit. */
KELS_API KelStatus kelsAdd_32f_I(const Kel32f* pSrc, Kel32f* pSrcDst, int len);
KELS_API KelStatus kelsAdd_64f_I(const Kel64f* pSrc, Kel64f* pSrcDst, int len);
KELS_API KelStatus kelsAddC_32f(const Kel32f* pSrc, Kel32f val, Kel32f* pDst, int len);

/* pDst[i] = pSrc2[i] - pSrc1[i]: the second source minus the first; in place pSrcDst[i] -= pSrc[i].  The 16-bit form
 * saturates.
 */
KELS_API KelStatus kelsSub_32f(const Kel32f* pSrc1, const Kel32f* pSrc2, Kel32f* pDst, int len);
KELS_API KelStatus kelsSub_64f(const Kel64f* pSrc1, const Kel64f* pSrc2, Kel64f* pDst, int len);
KELS_API KelStatus kelsSub_16s(const Kel16s* pSrc1, const Kel16s* pSrc2, Kel16s* pDst, int len);
KELS_API KelStatus kelsSub_32f_I(const Kel32f* pSrc, Kel32f* pSrcDst, int len);
KELS_API KelStatus kelsSub_64f_I(const Kel64f* pSrc, Kel64f* pSrcDst, int len);

/* pDst[i] = pSrc1[i] * pSrc2[i]; the 16-bit form times 2^-scaleFactor, rounded half to even and saturated. */
KELS_API KelStatus kelsMul_32f(const Kel32f* pSrc1, const Kel32f* pSrc2, Kel32f* pDst, int len);
KELS_API KelStatus kelsMul_16s_Sfs(const Kel16s* pSrc1, const Kel16s* pSrc2, Kel16s* pDst, int len, int scaleFactor);

/* pDst[i] = pSrc[i] * val.  For val 1 a copy to the bit (in place: nothing is touched); for val 0 of either sign all
 * elements become +0, infinities and NaN too.
 */
KELS_API KelStatus kelsMulC_32f(const Kel32f* pSrc, Kel32f val, Kel32f* pDst, int len);
KELS_API KelStatus kelsMulC_64f(const Kel64f* pSrc, Kel64f val, Kel64f* pDst, int len);
KELS_API KelStatus kelsMulC_32f_I(Kel32f val, Kel32f* pSrcDst, int len);
KELS_API KelStatus kelsMulC_64f_I(Kel64f val, Kel64f* pSrcDst, int len);

/* pDst[i] = pSrc2[i] / pSrc1[i]: the divisor comes first.  Where the divisor is 0 or NaN the result is +infinity for a
 * positive dividend, NaN for a dividend of 0, -infinity for any other (negative or NaN), and the call returns
 * kelStatusDivByZero after all elements are written.
 */
KELS_API KelStatus kelsDiv_32f(const Kel32f* pSrc1, const Kel32f* pSrc2, Kel32f* pDst, int len);
KELS_API KelStatus kelsDiv_64f(const Kel64f* pSrc1, const Kel64f* pSrc2, Kel64f* pDst, int len);

/* Multiplication by 1/val, with the particular cases of MulC for 1/val.  A val that is 0 or NaN gives
 * kelStatusDivByZeroErr, and nothing is written.
 */
KELS_API KelStatus kelsDivC_32f(const Kel32f* pSrc, Kel32f val, Kel32f* pDst, int len);
KELS_API KelStatus kelsDivC_32f_I(Kel32f val, Kel32f* pSrcDst, int len);
KELS_API KelStatus kelsDivC_64f(const Kel64f* pSrc, Kel64f val, Kel64f* pDst, int len);
KELS_API KelStatus kelsDivC_64f_I(Kel64f val, Kel64f* pSrcDst, int len);

/* The larger or smaller of pSrc[i] and pSrcDst[i]; where one of them is NaN, or they are equal, pSrcDst[i] stays. */
KELS_API KelStatus kelsMaxEvery_32f_I(const Kel32f* pSrc, Kel32f* pSrcDst, int len);
KELS_API KelStatus kelsMinEvery_32f_I(const Kel32f* pSrc, Kel32f* pSrcDst, int len);
KELS_API KelStatus kelsMinEvery_32s_I(const Kel32s* pSrc, Kel32s* pSrcDst, int len);
/** @} */

/** @name Sums and extrema
 * @{ */

/* *pDp = sum of pSrc1[i] * pSrc2[i].  The float forms lose no more than an 80-bit accumulator rounded once at the end,
 * also where the terms cancel; kelsDotProd_32f is in nearly all cases the correctly rounded sum.  The 16-bit forms sum
 * exactly in 64 bits; 16s32f converts that sum to float once.
 */
KELS_API KelStatus kelsDotProd_32f(const Kel32f* pSrc1, const Kel32f* pSrc2, int len, Kel32f* pDp);
KELS_API KelStatus kelsDotProd_64f(const Kel64f* pSrc1, const Kel64f* pSrc2, int len, Kel64f* pDp);
KELS_API KelStatus kelsDotProd_32f64f(const Kel32f* pSrc1, const Kel32f* pSrc2, int len, Kel64f* pDp);
KELS_API KelStatus kelsDotProd_16s64s(const Kel16s* pSrc1, const Kel16s* pSrc2, int len, int64_t* pDp);
KELS_API KelStatus kelsDotProd_16s32f(const Kel16s* pSrc1, const Kel16s* pSrc2, int len, Kel32f* pDp);

/* *pSum = sum of pSrc[i].  The hint kelHintFast sums in single precision within blocks of 32768 elements and adds the
 * blocks in extended precision; every other hint is as accurate as the dot product above.  An array that is not aligned
 * to 4 bytes is summed element by element in extended precision.
 */
KELS_API KelStatus kelsSum_32f(const Kel32f* pSrc, int len, Kel32f* pSum, int hint);

/* *pSum = exact sum * 2^-scaleFactor, rounded half to even and saturated. */
KELS_API KelStatus kelsSum_32s_Sfs(const Kel32s* pSrc, int len, Kel32s* pSum, int scaleFactor);
KELS_API KelStatus kelsSum_16s32s_Sfs(const Kel16s* pSrc, int len, Kel32s* pSum, int scaleFactor);

/* The largest or smallest element: the first of equal ones (of zeros with either sign too).  NaN is passed over unless
 * it is the first element, which is then the result.
 */
KELS_API KelStatus kelsMax_32f(const Kel32f* pSrc, int len, Kel32f* pMax);
KELS_API KelStatus kelsMax_64f(const Kel64f* pSrc, int len, Kel64f* pMax);
KELS_API KelStatus kelsMin_32f(const Kel32f* pSrc, int len, Kel32f* pMin);
KELS_API KelStatus kelsMin_64f(const Kel64f* pSrc, int len, Kel64f* pMin);

/* The same with its index, from 0.  A null pIndx is allowed: only the value is wanted. */
KELS_API KelStatus kelsMaxIndx_32f(const Kel32f* pSrc, int len, Kel32f* pMax, int* pIndx);
KELS_API KelStatus kelsMaxIndx_64f(const Kel64f* pSrc, int len, Kel64f* pMax, int* pIndx);
/** @} */

/** @name Absolute value, roots, logarithm, magnitude
 * @{ */

/* pDst[i] = |pSrc[i]|, exact; the sign of NaN is cleared too. */
KELS_API KelStatus kelsAbs_64f(const Kel64f* pSrc, Kel64f* pDst, int len);

/* pSrcDst[i] = its square root.  A negative element becomes NaN, and the call returns kelStatusSqrtNegative after all
 * elements are done.
 */
KELS_API KelStatus kelsSqrt_64f_I(Kel64f* pSrcDst, int len);

/* pDst[i] = ln(pSrc[i]) * 2^-scaleFactor.  For scaleFactor >= 0 the logarithm is first rounded to the nearest integer
 * (0..21) and then shifted right without rounding; for scaleFactor < 0 the scaled logarithm is computed in double
 * precision and rounded to the nearest, saturated.  0 and negative elements give -2147483648 whatever the scale; the
 * first of them decides the status, kelStatusLogZero or kelStatusLogNegative.
 */
KELS_API KelStatus kelsLn_32s_Sfs(const Kel32s* pSrc, Kel32s* pDst, int len, int scaleFactor);
KELS_API KelStatus kelsLn_32s_ISfs(Kel32s* pSrcDst, int len, int scaleFactor);

/* pDst[i] = sqrt(re^2 + im^2), without overflow or loss of small values on the way; within 1.5 ULP.  The integer form
 * multiplies by 2^-scaleFactor in double precision, rounds to the nearest and saturates.  pDst may begin where pSrc
 * does.
 */
KELS_API KelStatus kelsMagnitude_32fc(const Kel32fc* pSrc, Kel32f* pDst, int len);
KELS_API KelStatus kelsMagnitude_32sc_Sfs(const Kel32sc* pSrc, Kel32s* pDst, int len, int scaleFactor);

/* x becomes 1 / sqrt(x), in the integer forms times 2^-scaleFactor, rounded to the nearest and saturated.  An element
 * below the threshold is replaced by the threshold itself (not its root; in the integer forms unscaled).  A threshold
 * not above 0, or below 1 in the integer forms, gives kelStatusBadArg.  kelStatusNoOperation is returned when every
 * element was below it.  32s16s takes separate arrays.
 */
KELS_API KelStatus kelsRecSqrt_32f(Kel32f* pSrcDst, int len, Kel32f threshold);
KELS_API KelStatus kelsRecSqrt_32s_Sfs(Kel32s* pSrcDst, int len, Kel32s threshold, int scaleFactor);
KELS_API KelStatus kelsRecSqrt_32s16s_Sfs(const Kel32s* pSrc, Kel16s* pDst, int len, Kel32s threshold, int scaleFactor);
/** @} */

#ifdef __cplusplus
}
#endif
/** @} */
#endif
