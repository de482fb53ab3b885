// Rules of features, and of the functions that came with them.
#include "sweep/rules.h"

namespace sweep {
// The rows of a push of n samples: of the frames that it settles, those that no delta waits for.
#define PUSH_ROWS                                                                                           \
    "max(0,(n>=st.reach&&n>=st.need)*min((n-st.reach)//st.shift+1,(n+st.plus)//st.shift-st.drop)-st.ahead)" \
    "-st.given"

// What is wrong with a configuration.  A field that the others make useless is not looked at.
// clang-format off
#define OUTSIDE(field, low, high) "(c." #field "<" #low "||c." #field ">" #high ")"
#define NOT_FINITE(field) "c." #field "-c." #field "!=0"
#define HAS_BANK "(c.output==1||c.output==2)"
#define HIGH "(c.highFreq+(c.highFreq<=0)*c.sampleRate/2)"
#define BAD_SIZES \
    OUTSIDE(sampleRate, 1000, 384000) "||" OUTSIDE(frameLen, 1, 65536) "||c.frameShift<1||" \
    OUTSIDE(fftLen, 2, 65536) "||c.fftLen%2!=0||c.fftLen<c.frameLen||" \
    HAS_BANK "&&" OUTSIDE(numFilters, 1, 1024) "||c.output==2&&(" OUTSIDE(numCeps, 0, c.numFilters-1) \
    "||c.lifter<0||c.numCeps==0&&c.energy%4==0)||" \
    OUTSIDE(deltaOrder, 0, 2) "||c.deltaOrder>0&&" OUTSIDE(deltaWin, 1, 64)
#define BAD_FREQUENCIES HAS_BANK "&&!(0<=c.lowFreq&&c.lowFreq<" HIGH "&&" HIGH "<=c.sampleRate/2)"
#define BAD_SPECTRUM \
    OUTSIDE(edges, 0, 3) "&&" OUTSIDE(edges, 16, 19) "||" OUTSIDE(window, 0, 5) "&&" OUTSIDE(window, 16, 21) \
    "||c.window%16==5&&!(c.windowParam>=0&&c.windowParam<=700)||" OUTSIDE(removeMean, 0, 1) \
    "||!(c.preEmphasis>=-1&&c.preEmphasis<=1)||c.scale16s==0||" NOT_FINITE(scale16s) "||" OUTSIDE(spectrum, 0, 1) \
    "||" HAS_BANK "&&(" OUTSIDE(melScale, 0, 1) "||" OUTSIDE(triangles, 0, 1) "||" OUTSIDE(bankNorm, 0, 1) ")"
#define BAD_LOGARITHM \
    OUTSIDE(logKind, 0, 3) "||c.logKind>0&&(!(c.logFloor>0)||" NOT_FINITE(logFloor) "||!(c.logRange>=0)||" \
    NOT_FINITE(logRange) "||" NOT_FINITE(logOffset) "||" NOT_FINITE(logScale) ")"
#define BAD_ROW \
    OUTSIDE(output, 0, 2) "||c.output==2&&(" OUTSIDE(dctScale, 0, 1) "||" OUTSIDE(energy, 0, 3) ")||" \
    "c.output==1&&c.energy!=0&&c.energy!=2||c.output==0&&c.energy!=0||c.energy!=0&&" OUTSIDE(energyPlace, 0, 1) \
    "||c.energy>=2&&(" OUTSIDE(energyRaw, 0, 1) "||!(c.energyFloor>0)||" NOT_FINITE(energyFloor) ")||" \
    "c.deltaOrder>0&&" OUTSIDE(deltaEdge, 0, 1) "||" OUTSIDE(norm, 0, 2) "||c.reserved!=0"
// clang-format on

Rules featureRules() {
    return {
        {"config[184] rate=1000..384000 preset=1..5",
         "NullPtr; Size: rate<1000||rate>384000; BadArg: preset<1||preset>5",
         {F(kelsFeaturePreset)}},
        {"spec>Feature c@FeatureConfig",
         "NullPtr; Size: " BAD_SIZES "; FBankFreq: " BAD_FREQUENCIES "; BadArg: " BAD_SPECTRUM "||" BAD_LOGARITHM
         "||" BAD_ROW,
         {F(kelsFeatureInitAlloc_32f)}},
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
