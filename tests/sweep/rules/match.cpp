// Rules of time warping, of ranking and normalisation, and of window kernels.
#include "sweep/rules.h"

namespace sweep {

Rules matchRules() {
    return {
        {"a[h,step,w] h b[k,step,w] k w (step=w..w+5) r[1] delta=any beam=any",
         "NullPtr; Size: h<1||k<1||w<1; Size: step<w",
         {F(kelsDTW_L2_32f_D2), F(kelsDTW_L2_32f_D2L)}},
        {"a[h,step,w] h b[k,step,w] k w (step=w..w+5) r[1] delta=any beam=any sf",
         "NullPtr; Size: h<1||k<1||w<1; Size: step<w",
         {F(kelsDTW_L2_8u32s_D2Sfs), F(kelsDTW_L2Low_16s32s_D2Sfs), F(kelsDTW_L2_8u32s_D2LSfs),
          F(kelsDTW_L2Low_16s32s_D2LSfs)},
         "mode leaks"},
        {"s[n] n k=0..n-1 r[1]",
         "NullPtr; Size: n<1; BadArg: k<0||k>=n",
         {F(kelsNthMaxElement_32f), F(kelsNthMaxElement_64f), F(kelsNthMaxElement_32s)},
         "anymode"},
        {"s[n] d[n]|s n a=any b=any c=any", "NullPtr; Size: n<1", {F(kelsScaleLM_32f)}},
        {"s[n] d[n] n a=any b=any c=any", "NullPtr; Size: n<1", {F(kelsScaleLM_16s32s)}},
        {"a=any b=any c=any s[n] d[n]|s n", "NullPtr; Size: n<1", {F(kelsLMThreshold_32f)}},
        {"s[n] d[n]|s n lo=0..0.4 hi=0.5..1 range=0..300",
         "NullPtr; Size: n<1; BadArg: !(lo>=0)||!(lo<hi)||!(hi<=1)||!(range>=0)",
         {F(kelsNormalizeInRange_32f), F(kelsNormalizeInRange_16s), F(kelsNormalizeInRange_16s8u),
          F(kelsNormalizeInRange_32f16s), F(kelsNormalizeInRange_32f8u)},
         "may:BadArg mode"},
        {"+d[n] n lo=0..0.4 hi=0.5..1 range=0..300",
         "NullPtr; Size: n<1; BadArg: !(lo>=0)||!(lo<hi)||!(hi<=1)||!(range>=0)",
         {F(kelsNormalizeInRange_32f_I), F(kelsNormalizeInRange_16s_I)},
         "may:BadArg mode"},
        {"s[n] d[n]|s n mn=-90..90 mx=mn..999 lo=0..0.4 hi=0.5..1 range=0..300",
         "NullPtr; Size: n<1; BadArg: !(mn<=mx); BadArg: !(lo>=0)||!(lo<hi)||!(hi<=1)||!(range>=0)",
         {F(kelsNormalizeInRangeMinMax_32f), F(kelsNormalizeInRangeMinMax_16s), F(kelsNormalizeInRangeMinMax_16s8u),
          F(kelsNormalizeInRangeMinMax_32f16s), F(kelsNormalizeInRangeMinMax_32f8u)},
         "may:BadArg mode"},
        {"+d[n] n mn=-90..90 mx=mn..999 lo=0..0.4 hi=0.5..1 range=0..300",
         "NullPtr; Size: n<1; BadArg: !(mn<=mx); BadArg: !(lo>=0)||!(lo<hi)||!(hi<=1)||!(range>=0)",
         {F(kelsNormalizeInRangeMinMax_32f_I), F(kelsNormalizeInRangeMinMax_16s_I)},
         "may:BadArg mode"},
        {"s[n] d[n]|s n", "NullPtr; Size: n<1", {F(kelsUnitCurve_32f)}},
        {"+d[n] n", "NullPtr; Size: n<1", {F(kelsUnitCurve_32f_I)}},
        {"s[n] d[n]|s bits=any n sf", "NullPtr; Size: n<1", {F(kelsUnitCurve_16s_Sfs)}},
        {"+d[n] bits=any n sf", "NullPtr; Size: n<1", {F(kelsUnitCurve_16s_ISfs)}},
        {"s[n] d[n]|s n",
         "NullPtr; Size: n<1",
         {F(kelsSinC_32f), F(kelsSinC_64f), F(kelsExpNegSqr_32f), F(kelsExpNegSqr_64f)},
         "anymode"},
        {"s[n] d[n] n", "NullPtr; Size: n<1", {F(kelsSinC_32f64f), F(kelsExpNegSqr_32f64f)}, "anymode"},
        {"+d[n] n",
         "NullPtr; Size: n<1",
         {F(kelsSinC_32f_I), F(kelsSinC_64f_I), F(kelsExpNegSqr_32f_I), F(kelsExpNegSqr_64f_I)},
         "anymode"},
    };
}

}  // namespace sweep
