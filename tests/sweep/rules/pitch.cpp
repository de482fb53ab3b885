// Rules of pitch and periodicity.
#include "sweep/rules.h"

namespace sweep {

Rules pitchRules() {
    return {
        {"x[n] y[n+m-1] n d[m] m",
         "NullPtr; Size: n<1||m<1",
         {F(kelsCrossCorrCoeff_32f), F(kelsCrossCorrCoeff_16s32f)}},
        {"x[n] y[n+b] n d[b-a+1] a!=0..50 b=a..a+150 bias=0..9",
         "NullPtr; Size: n<1; BadArg: b<a; OutOfRange: !(bias>=0)",
         {F(kelsCrossCorrCoeffPartial_32f), F(kelsCrossCorrCoeffPartial_16s32f)}},
        {"x[n] y[n+lag+1] n lag!=0..50 f[1] c[1]",
         "NullPtr; Size: n<1",
         {F(kelsCrossCorrCoeffInterpolation_32f), F(kelsCrossCorrCoeffInterpolation_16s32f)}},
        {"s[n] n w[b+1] d[b-a+1] a=0..n-1 b=a..n-1",
         "NullPtr; Size: n<1; BadArg: a<0||b<a||b>=n",
         {F(kelsPeriodicity_32f)}},
        {"s[n] n=2..1200 d[b-a+1] a=1..n-1 b=a..n-1",
         "NullPtr; Size: n<1; BadArg: a<1||b<a||b>=n",
         {F(kelsPeriodicityLSPE_32f), F(kelsPeriodicityLSPE_16s32f)}},
        {"s[n] d[n] n threshold distance",
         "NullPtr; LengthRange: n<1||n>65535; BadArg: distance<1",
         {F(kelsFindPeaks_32f8u)}},
        {"marks[n]=9*i..9*i+8 n f[m] s[m] m rate=8000..16000 low=50..100 high=low..500",
         "NullPtr; Size: n<1||m<1; BadArg: !(rate>0)||rate>3.5e38||!(low>0)||!(high>=low)",
         {F(kelsPitchmarkToF0Cand_32f)},
         "may:OutOfRange"},
        {"s[n] n e[1]", "NullPtr; Size: n<1", {F(kelsEntropy_32f)}, "anymode"},
    };
}

}  // namespace sweep
