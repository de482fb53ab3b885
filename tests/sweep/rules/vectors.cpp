// Rules of the vector kernels, of log arithmetic and of model constants.
#include "sweep/rules.h"

namespace sweep {

Rules vectorRules() {
    return {
        // Fill, copy, convert.
        {"val=any d[n] n",
         "NullPtr; Size: n<1",
         {F(kelsSet_8u), F(kelsSet_16s), F(kelsSet_32s), F(kelsSet_32f), F(kelsSet_64f)}},
        {"d[n] n", "NullPtr; Size: n<1", {F(kelsZero_32f), F(kelsZero_64f), F(kelsZero_8u), F(kelsZero_16s)}},
        {"s[n] d[n] n",
         "NullPtr; Size: n<1",
         {F(kelsCopy_8u), F(kelsCopy_16s), F(kelsCopy_32f), F(kelsCopy_64f), F(kelsMove_32f)},
         "anymode"},
        {"s[n] d[n] n (sf)",
         "NullPtr; Size: n<1",
         {F(kelsConvert_8u32f), F(kelsConvert_16s32f), F(kelsConvert_32s32f), F(kelsConvert_16s32f_Sfs),
          F(kelsConvert_32s32f_Sfs), F(kelsConvert_16s64f_Sfs), F(kelsConvert_32s16s_Sfs), F(kelsConvert_64f32f)}},
        {"s[n] d[n] n mode=any sf",
         "NullPtr; Size: n<1",
         {F(kelsConvert_32f16s_Sfs), F(kelsConvert_32f32s_Sfs), F(kelsConvert_64f32s_Sfs)}},
        // Element by element.
        {"s[n] d[n]|s n (sf)",
         "NullPtr; Size: n<1",
         {F(kelsAbs_64f), F(kelsLn_32s_Sfs), F(kelsMagnitude_32fc), F(kelsMagnitude_32sc_Sfs)}},
        {"s[n] +d[n]|s n",
         "NullPtr; Size: n<1",
         {F(kelsAdd_32f_I), F(kelsAdd_64f_I), F(kelsSub_32f_I), F(kelsSub_64f_I), F(kelsMaxEvery_32f_I),
          F(kelsMinEvery_32f_I), F(kelsMinEvery_32s_I), F(kelsMulPackConj_32f_I)}},
        {"s[n] t[n] d[n]|s|t n (sf)",
         "NullPtr; Size: n<1",
         {F(kelsSub_32f), F(kelsSub_64f), F(kelsSub_16s), F(kelsMul_32f), F(kelsMul_16s_Sfs), F(kelsDiv_32f),
          F(kelsDiv_64f)}},
        {"s[n] c=any d[n]|s n", "NullPtr; Size: n<1", {F(kelsAddC_32f), F(kelsMulC_32f), F(kelsMulC_64f)}},
        {"c=any +d[n] n", "NullPtr; Size: n<1", {F(kelsMulC_32f_I), F(kelsMulC_64f_I)}},
        {"s[n] c d[n]|s n", "NullPtr; Size: n<1; DivByZeroErr: !(c<0)&&!(c>0)", {F(kelsDivC_32f), F(kelsDivC_64f)}},
        {"c +d[n] n", "NullPtr; Size: n<1; DivByZeroErr: !(c<0)&&!(c>0)", {F(kelsDivC_32f_I), F(kelsDivC_64f_I)}},
        {"+d[n] n (sf)", "NullPtr; Size: n<1", {F(kelsSqrt_64f_I), F(kelsLn_32s_ISfs)}},
        {"+d[n] n t=0.01..9 (sf)", "NullPtr; Size: n<1; BadArg: !(t>0)", {F(kelsRecSqrt_32f)}},
        {"+d[n] n t=1..9 sf", "NullPtr; Size: n<1; BadArg: t<1", {F(kelsRecSqrt_32s_Sfs)}},
        {"s[n] d[n] n t=1..9 sf", "NullPtr; Size: n<1; BadArg: t<1", {F(kelsRecSqrt_32s16s_Sfs)}},
        // Sums and extrema.
        {"s[n] t[n] n r[1]",
         "NullPtr; Size: n<1",
         {F(kelsDotProd_32f), F(kelsDotProd_64f), F(kelsDotProd_32f64f), F(kelsDotProd_16s64s), F(kelsDotProd_16s32f)}},
        {"s[n] n r[1] (mode=any)",
         "NullPtr; Size: n<1",
         {F(kelsSum_32f), F(kelsMax_32f), F(kelsMax_64f), F(kelsMin_32f), F(kelsMin_64f)}},
        {"s[n] n r[1] sf", "NullPtr; Size: n<1", {F(kelsSum_32s_Sfs), F(kelsSum_16s32s_Sfs)}},
        {"s[n] n r[1] x?[1]", "NullPtr; Size: n<1", {F(kelsMaxIndx_32f), F(kelsMaxIndx_64f)}},
        // Log arithmetic: the length comes first.
        {"s[n] +d[n]|s n (sf) hint=any",
         "Size: n<1; NullPtr",
         {F(kelsLogAdd_64f), F(kelsLogAdd_32f), F(kelsLogAdd_32s_Sfs), F(kelsLogAdd_16s_Sfs)}},
        {"s[n]=0..90 +d[n]=-90..-1 n (sf)",
         "Size: n<1; NullPtr",
         {F(kelsLogSub_64f), F(kelsLogSub_32f), F(kelsLogSub_32s_Sfs), F(kelsLogSub_16s_Sfs)}},
        {"s[n] r[1] n (sf)",
         "Size: n<1; NullPtr",
         {F(kelsLogSum_64f), F(kelsLogSum_32f), F(kelsLogSum_32s_Sfs), F(kelsLogSum_16s_Sfs)}},
        {"s![n] +d![n] n!", "", {F(kelsLogAddVec_32f_M6), F(kelsLogAddVec_32f_A6)}},
        // Model constants.
        {"s[n] n r[1]",
         "NullPtr; Size: n<1",
         {F(kelsUpdateGConst_32f), F(kelsUpdateGConst_64f), F(kelsUpdateGConst_DirectVar_32f),
          F(kelsUpdateGConst_DirectVar_64f)}},
        {"w[n] s[n] d[n]|w|s n",
         "NullPtr; Size: n<1",
         {F(kelsOutProbPreCalc_32f), F(kelsOutProbPreCalc_64f), F(kelsOutProbPreCalc_32s)}},
        {"w[n] +d[n]|w n",
         "NullPtr; Size: n<1",
         {F(kelsOutProbPreCalc_32f_I), F(kelsOutProbPreCalc_64f_I), F(kelsOutProbPreCalc_32s_I)}},
        {"b>Block rows[sum(sizes),9] sizes[k]=1..9 k=1..5",
         "NullPtr; Size: k<1",
         {F(kelsBlockDMatrixInitAlloc_16s), F(kelsBlockDMatrixInitAlloc_32f), F(kelsBlockDMatrixInitAlloc_64f)},
         "reads"},
        {"b<Block", "NullPtr", {F(kelsBlockDMatrixFree_16s), F(kelsBlockDMatrixFree_32f), F(kelsBlockDMatrixFree_64f)}},
    };
}

}  // namespace sweep
