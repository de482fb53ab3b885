// Rules of resampling.
#include "sweep/rules.h"

namespace sweep {

Rules resampleRules() {
    return {
        {"st>Resample window=2..40 steps=1..64 roll=0.1..1 alpha=1..20 hint=any",
         "NullPtr; Size: steps<1; BadArg: !(window>=2/steps); BadArg: !(roll>0)||roll>1; BadArg: "
         "!(alpha>=1)||alpha>700",
         {F(kelsResamplePolyphaseInitAlloc_32f), F(kelsResamplePolyphaseInitAlloc_16s)},
         "memory:AllocError"},
        {"st@Resample s[n] n=1..300 d[max(0,n)*factor+2] factor=0.1..4 norm "
         "+time[1]=st.reach/min(1,factor)+1e-9..st.reach/min(1,factor)+9 count[1]",
         "NullPtr; BadArg: !(factor>0)||factor-factor!=0||n<1",
         {F(kelsResamplePolyphase_32f), F(kelsResamplePolyphase_16s)},
         "mode"},
        {"st<Resample", "NullPtr", {F(kelsResamplePolyphaseFree_32f), F(kelsResamplePolyphaseFree_16s)}},
        {"st>Fixed in=1..20 out=1..20 len=1..40 roll=0.1..1 alpha=1..20 hint=any",
         "NullPtr; Size: in<1||out<1||len<1; BadArg: !(roll>0)||roll>1; BadArg: !(alpha>=1)||alpha>700",
         {F(kelsResamplePolyphaseFixedInitAlloc_32f), F(kelsResamplePolyphaseFixedInitAlloc_16s)},
         "memory:AllocError"},
        {"in=1..20 out=1..20 len=1..40 roll=0.1..1 alpha=1..20 hint=any size[1]",
         "NullPtr; Size: in<1||out<1||len<1; BadArg: !(roll>0)||roll>1; BadArg: !(alpha>=1)||alpha>700",
         {F(kelsResamplePolyphaseFixedGetSize_32f), F(kelsResamplePolyphaseFixedGetSize_16s)},
         "may:AllocError"},
        {"st[size(kelsResamplePolyphaseFixedGetSize_)] in=1..20 out=1..20 len=1..40 roll=0.1..1 alpha=1..20 "
         "hint=any",
         "NullPtr; Size: in<1||out<1||len<1; BadArg: !(roll>0)||roll>1; BadArg: !(alpha>=1)||alpha>700",
         {F(kelsResamplePolyphaseFixedInit_32f), F(kelsResamplePolyphaseFixedInit_16s)},
         "memory:AllocError may:AllocError mode"},
        {"st@Fixed s[n] n=1..300 d[max(0,n)*st.out/st.in+2] norm +time[1]=st.reach..st.reach+9 count[1]",
         "NullPtr; BadArg: n<1",
         {F(kelsResamplePolyphaseFixed_32f), F(kelsResamplePolyphaseFixed_16s)},
         "mode"},
        {"st@Fixed s[(h-1)*n+n+1] n h=1..12",
         "NullPtr; Size: n<1||h<1",
         {F(kelsResamplePolyphaseSetFixedFilter_32f), F(kelsResamplePolyphaseSetFixedFilter_16s)},
         "mode"},
        {"st@Fixed d[(h-1)*n+n+1] n h=1..12",
         "NullPtr; Size: n<1||h<1",
         {F(kelsResamplePolyphaseGetFixedFilter_32f), F(kelsResamplePolyphaseGetFixedFilter_16s)},
         "mode"},
        {"st<Fixed", "NullPtr", {F(kelsResamplePolyphaseFixedFree_32f), F(kelsResamplePolyphaseFixedFree_16s)}},
    };
}

}  // namespace sweep
