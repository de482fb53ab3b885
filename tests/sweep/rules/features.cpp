// Rules of features, and of the functions that came with them.
#include "sweep/rules.h"

namespace sweep {
// The rows of a push of n samples: of the frames that it settles, those that no delta waits for.
#define PUSH_ROWS                                                                                           \
    "max(0,(n>=st.reach&&n>=st.need)*min((n-st.reach)//st.shift+1,(n+st.plus)//st.shift-st.drop)-st.ahead)" \
    "-st.given"

Rules featureRules() {
    return {
        {"config[184] rate=1000..384000 preset=1..5",
         "NullPtr; Size: rate<1000||rate>384000; BadArg: preset<1||preset>5",
         {F(kelsFeaturePreset)}},
        {"spec>Feature config@FeatureConfig", "NullPtr", {F(kelsFeatureInitAlloc_32f)}},
        {"spec<Feature", "NullPtr", {F(kelsFeatureFree_32f)}},
        {"spec@Feature n=0..900 h[1] w[1]",
         "NullPtr; Size: n<0||(n+spec.plus)//spec.shift-spec.drop>2147483647",
         {F(kelsFeatureGetSize_32f)}},
        {"spec@Feature n=0..900 size[1]",
         "NullPtr; Size: n<0||(n+spec.plus)//spec.shift-spec.drop>2147483647",
         {F(kelsFeatureGetBufSize_32f)}},
        {"d[max(1,spec.filters),step,spec.bins] step=spec.bins..spec.bins+5 spec@Feature",
         "NullPtr; ModeNotSupported: spec.filters==0; Step: step<spec.bins",
         {F(kelsFeatureGetBank_32f_D2)}},
        {"s[n] n d[max(1,(n+spec.plus)//spec.shift-spec.drop),step,spec.width] step=spec.width..spec.width+5 "
         "spec@Feature ~b?[size(kelsFeatureGetBufSize_32f)]",
         "NullPtr; Size: n<1||(n+spec.plus)//spec.shift-spec.drop>2147483647; Step: step<spec.width",
         {F(kelsFeature_32f_D2), F(kelsFeature_16s32f_D2)}},
        {"st>FeatureStream spec@Feature", "NullPtr; ModeNotSupported: spec.whole", {F(kelsFeatureStreamInitAlloc_32f)}},
        {"st@FeatureStream n=0..900 h[1] flush[1]",
         "NullPtr; Size: n<0||" PUSH_ROWS ">2147483647",
         {F(kelsFeatureStreamGetSize_32f)}},
        {"s[n] n d[max(1,h),step,st.width] step=st.width..st.width+5 h=0..n//st.shift+2 got[1] st@FeatureStream",
         "NullPtr; Size: n<0||h<0; Step: step<st.width; Size: " PUSH_ROWS ">h",
         {F(kelsFeatureStream_32f_D2), F(kelsFeatureStream_16s32f_D2)}},
        {"d[max(1,h),step,st.width] step=st.width..st.width+5 h=0..st.flush+2 got[1] st@FeatureStream",
         "NullPtr; Size: h<0; Step: step<st.width; Size: st.flush>h",
         {F(kelsFeatureStreamFlush_32f_D2)}},
        {"st@FeatureStream", "NullPtr", {F(kelsFeatureStreamReset_32f)}},
        {"st<FeatureStream", "NullPtr", {F(kelsFeatureStreamFree_32f)}},
        // Vectors.
        {"s[n] d[n] n",
         "NullPtr; Size: n<1",
         {F(kelsLn_32f), F(kelsLn_64f), F(kelsLog10_32f), F(kelsLog10_64f), F(kelsExp_32f), F(kelsExp_64f)}},
        {"+d[n] n",
         "NullPtr; Size: n<1",
         {F(kelsLn_32f_I), F(kelsLn_64f_I), F(kelsLog10_32f_I), F(kelsLog10_64f_I), F(kelsExp_32f_I),
          F(kelsExp_64f_I)}},
        {"val=any +d[n] n", "NullPtr; Size: n<1", {F(kelsMaxEveryC_32f_I), F(kelsMinEveryC_32f_I)}},
        {"s[n] d[n]|s n", "NullPtr; Size: n<1", {F(kelsMagnitudeSqr_32fc)}},
        {"d[n] n kind=0..21 param=0..700",
         "NullPtr; Size: n<1; BadArg: kind<0||kind>21||kind%16>5||kind%16==5&&!(param>=0&&param<=700)",
         {F(kelsWindow_32f), F(kelsWindow_64f)}},
        {"+d[n] n kind=0..21 param=0..700",
         "NullPtr; Size: n<1; BadArg: kind<0||kind>21||kind%16>5||kind%16==5&&!(param>=0&&param<=700)",
         {F(kelsMulWindow_32f_I)}},
        {"s[n] d[n] n val +mem?[1]",
         "NullPtr; Size: n<1; BadArg: val-val!=0",
         {F(kelsPreEmphasis_32f), F(kelsPreEmphasis_16s32f)}},
        {"+d[n] n val +mem?[1]", "NullPtr; Size: n<1; BadArg: val-val!=0", {F(kelsPreEmphasis_32f_I)}},
        // Rows of frames.
        {"s[h,sstep,spec.n] sstep=spec.n..spec.n+5 d[h,dstep,spec.ccs] dstep=spec.ccs..spec.ccs+5 h spec@FFT "
         "~b?[spec.buffer]",
         "NullPtr; Size: h<1; Step: sstep<spec.n||dstep<spec.ccs",
         {F(kelsFFTFwd_RToCCS_32f_D2)}},
        {"s[h,sstep,b.src] sstep=b.src..b.src+5 d[h,dstep,b.n] dstep=b.n..b.n+5 h b@FBank",
         "NullPtr; Size: h<1; Step: sstep<b.src||dstep<b.n",
         {F(kelsEvalFBank_32f_D2)}},
        {"s[h,sstep,st.src] sstep=st.src..st.src+5 d[h,dstep,st.dst] dstep=st.dst..st.dst+5 h st@DCT",
         "NullPtr; Size: h<1; Step: sstep<st.src||dstep<st.dst",
         {F(kelsDCTLifter_32f_D2)}},
    };
}

}  // namespace sweep
