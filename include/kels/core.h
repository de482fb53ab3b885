/* Aligned memory, version record and one-dimensional vector kernels. */
#ifndef KELS_CORE_H
#define KELS_CORE_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Aligned memory, matrix allocation and version record */
typedef struct {
    Kel32s major, minor, majorBuild, build;
    char targetCpu[4];
    const char* name;
    const char* version;
    const char* buildDate;
} KelLibVersion;
KELS_API Kel8u* kelsMalloc_8u(int n);
KELS_API Kel16s* kelsMalloc_16s(int n);
KELS_API Kel32s* kelsMalloc_32s(int n);
KELS_API Kel32f* kelsMalloc_32f(int n);
KELS_API Kel64f* kelsMalloc_64f(int n);
KELS_API void kelsFree(void* ptr);
KELS_API const KelLibVersion* kelsrGetLibVersion(void);

/* Core vector arithmetic kernels: fill */
KELS_API KelStatus kelsSet_8u(Kel8u val, Kel8u* pDst, int len);
KELS_API KelStatus kelsSet_16s(Kel16s val, Kel16s* pDst, int len);
KELS_API KelStatus kelsSet_32s(Kel32s val, Kel32s* pDst, int len);
KELS_API KelStatus kelsSet_32f(Kel32f val, Kel32f* pDst, int len);
KELS_API KelStatus kelsSet_64f(Kel64f val, Kel64f* pDst, int len);
KELS_API KelStatus kelsZero_8u(Kel8u* pDst, int len);
KELS_API KelStatus kelsZero_16s(Kel16s* pDst, int len);
KELS_API KelStatus kelsZero_32f(Kel32f* pDst, int len);
KELS_API KelStatus kelsZero_64f(Kel64f* pDst, int len);

/* copy and move */
KELS_API KelStatus kelsCopy_8u(const Kel8u* pSrc, Kel8u* pDst, int len);
KELS_API KelStatus kelsCopy_16s(const Kel16s* pSrc, Kel16s* pDst, int len);
KELS_API KelStatus kelsCopy_32f(const Kel32f* pSrc, Kel32f* pDst, int len);
KELS_API KelStatus kelsCopy_64f(const Kel64f* pSrc, Kel64f* pDst, int len);
KELS_API KelStatus kelsMove_32f(const Kel32f* pSrc, Kel32f* pDst, int len);

/* convert */
KELS_API KelStatus kelsConvert_8u32f(const Kel8u* pSrc, Kel32f* pDst, int len);
KELS_API KelStatus kelsConvert_16s32f(const Kel16s* pSrc, Kel32f* pDst, int len);
KELS_API KelStatus kelsConvert_32s32f(const Kel32s* pSrc, Kel32f* pDst, int len);
KELS_API KelStatus kelsConvert_16s32f_Sfs(const Kel16s* pSrc, Kel32f* pDst, int len, int scaleFactor);
KELS_API KelStatus kelsConvert_32s32f_Sfs(const Kel32s* pSrc, Kel32f* pDst, int len, int scaleFactor);
KELS_API KelStatus kelsConvert_16s64f_Sfs(const Kel16s* pSrc, Kel64f* pDst, int len, int scaleFactor);
KELS_API KelStatus kelsConvert_32f16s_Sfs(const Kel32f* pSrc, Kel16s* pDst, int len, int rndMode, int scaleFactor);
KELS_API KelStatus kelsConvert_32f32s_Sfs(const Kel32f* pSrc, Kel32s* pDst, int len, int rndMode, int scaleFactor);
KELS_API KelStatus kelsConvert_64f32s_Sfs(const Kel64f* pSrc, Kel32s* pDst, int len, int rndMode, int scaleFactor);
KELS_API KelStatus kelsConvert_32s16s_Sfs(const Kel32s* pSrc, Kel16s* pDst, int len, int scaleFactor);
KELS_API KelStatus kelsConvert_64f32f(const Kel64f* pSrc, Kel32f* pDst, int len);

/* element-wise arithmetic */
KELS_API KelStatus kelsAdd_32f_I(const Kel32f* pSrc, Kel32f* pSrcDst, int len);
KELS_API KelStatus kelsAdd_64f_I(const Kel64f* pSrc, Kel64f* pSrcDst, int len);
KELS_API KelStatus kelsAddC_32f(const Kel32f* pSrc, Kel32f val, Kel32f* pDst, int len);
KELS_API KelStatus kelsSub_32f(const Kel32f* pSrc1, const Kel32f* pSrc2, Kel32f* pDst, int len);
KELS_API KelStatus kelsSub_64f(const Kel64f* pSrc1, const Kel64f* pSrc2, Kel64f* pDst, int len);
KELS_API KelStatus kelsSub_16s(const Kel16s* pSrc1, const Kel16s* pSrc2, Kel16s* pDst, int len);
KELS_API KelStatus kelsSub_32f_I(const Kel32f* pSrc, Kel32f* pSrcDst, int len);
KELS_API KelStatus kelsSub_64f_I(const Kel64f* pSrc, Kel64f* pSrcDst, int len);
KELS_API KelStatus kelsMul_32f(const Kel32f* pSrc1, const Kel32f* pSrc2, Kel32f* pDst, int len);
KELS_API KelStatus kelsMul_16s_Sfs(const Kel16s* pSrc1, const Kel16s* pSrc2, Kel16s* pDst, int len, int scaleFactor);
KELS_API KelStatus kelsMulC_32f(const Kel32f* pSrc, Kel32f val, Kel32f* pDst, int len);
KELS_API KelStatus kelsMulC_64f(const Kel64f* pSrc, Kel64f val, Kel64f* pDst, int len);
KELS_API KelStatus kelsMulC_32f_I(Kel32f val, Kel32f* pSrcDst, int len);
KELS_API KelStatus kelsMulC_64f_I(Kel64f val, Kel64f* pSrcDst, int len);
KELS_API KelStatus kelsDiv_32f(const Kel32f* pSrc1, const Kel32f* pSrc2, Kel32f* pDst, int len);
KELS_API KelStatus kelsDiv_64f(const Kel64f* pSrc1, const Kel64f* pSrc2, Kel64f* pDst, int len);
KELS_API KelStatus kelsDivC_32f(const Kel32f* pSrc, Kel32f val, Kel32f* pDst, int len);
KELS_API KelStatus kelsDivC_32f_I(Kel32f val, Kel32f* pSrcDst, int len);
KELS_API KelStatus kelsDivC_64f(const Kel64f* pSrc, Kel64f val, Kel64f* pDst, int len);
KELS_API KelStatus kelsDivC_64f_I(Kel64f val, Kel64f* pSrcDst, int len);

/* reductions */
KELS_API KelStatus kelsDotProd_32f(const Kel32f* pSrc1, const Kel32f* pSrc2, int len, Kel32f* pDp);
KELS_API KelStatus kelsDotProd_64f(const Kel64f* pSrc1, const Kel64f* pSrc2, int len, Kel64f* pDp);
KELS_API KelStatus kelsDotProd_32f64f(const Kel32f* pSrc1, const Kel32f* pSrc2, int len, Kel64f* pDp);
KELS_API KelStatus kelsDotProd_16s64s(const Kel16s* pSrc1, const Kel16s* pSrc2, int len, int64_t* pDp);
KELS_API KelStatus kelsDotProd_16s32f(const Kel16s* pSrc1, const Kel16s* pSrc2, int len, Kel32f* pDp);
KELS_API KelStatus kelsSum_32f(const Kel32f* pSrc, int len, Kel32f* pSum, int hint);
KELS_API KelStatus kelsSum_32s_Sfs(const Kel32s* pSrc, int len, Kel32s* pSum, int scaleFactor);
KELS_API KelStatus kelsSum_16s32s_Sfs(const Kel16s* pSrc, int len, Kel32s* pSum, int scaleFactor);
KELS_API KelStatus kelsMax_32f(const Kel32f* pSrc, int len, Kel32f* pMax);
KELS_API KelStatus kelsMax_64f(const Kel64f* pSrc, int len, Kel64f* pMax);
KELS_API KelStatus kelsMin_32f(const Kel32f* pSrc, int len, Kel32f* pMin);
KELS_API KelStatus kelsMin_64f(const Kel64f* pSrc, int len, Kel64f* pMin);
KELS_API KelStatus kelsMaxIndx_32f(const Kel32f* pSrc, int len, Kel32f* pMax, int* pIndx);
KELS_API KelStatus kelsMaxIndx_64f(const Kel64f* pSrc, int len, Kel64f* pMax, int* pIndx);

/* the larger or smaller of two, absolute value, roots, logarithm, magnitude */
KELS_API KelStatus kelsMaxEvery_32f_I(const Kel32f* pSrc, Kel32f* pSrcDst, int len);
KELS_API KelStatus kelsMinEvery_32f_I(const Kel32f* pSrc, Kel32f* pSrcDst, int len);
KELS_API KelStatus kelsMinEvery_32s_I(const Kel32s* pSrc, Kel32s* pSrcDst, int len);
KELS_API KelStatus kelsAbs_64f(const Kel64f* pSrc, Kel64f* pDst, int len);
KELS_API KelStatus kelsSqrt_64f_I(Kel64f* pSrcDst, int len);
KELS_API KelStatus kelsLn_32s_Sfs(const Kel32s* pSrc, Kel32s* pDst, int len, int scaleFactor);
KELS_API KelStatus kelsLn_32s_ISfs(Kel32s* pSrcDst, int len, int scaleFactor);
KELS_API KelStatus kelsMagnitude_32fc(const Kel32fc* pSrc, Kel32f* pDst, int len);
KELS_API KelStatus kelsMagnitude_32sc_Sfs(const Kel32sc* pSrc, Kel32s* pDst, int len, int scaleFactor);
KELS_API KelStatus kelsRecSqrt_32f(Kel32f* pSrcDst, int len, Kel32f threshold);
KELS_API KelStatus kelsRecSqrt_32s_Sfs(Kel32s* pSrcDst, int len, Kel32s threshold, int scaleFactor);
KELS_API KelStatus kelsRecSqrt_32s16s_Sfs(const Kel32s* pSrc, Kel16s* pDst, int len, Kel32s threshold, int scaleFactor);

#ifdef __cplusplus
}
#endif

#endif
