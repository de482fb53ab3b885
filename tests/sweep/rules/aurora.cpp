// Rules of the noise-robust front end.
#include "sweep/rules.h"

namespace sweep {

Rules auroraRules() {
    return {
        {"s[max(1,4*n-2)] d[n]|s n", "NullPtr; Size: n<1", {F(kelsPowerSpectrum_Aurora_32f)}},
        {"s[max(1,4*n-2)] +p[n] d[n] n", "NullPtr; Size: n<1", {F(kelsSmoothedPowerSpectrumAurora_32f)}},
        {"size[1]",
         "NullPtr",
         {F(kelsVADNestGetBufSize_Aurora_32f), F(kelsVADNestGetBufSize_Aurora_16s),
          F(kelsGainFactorizationGetBufSize_Aurora_32f), F(kelsLowHighFilterGetBufSize_Aurora_32f),
          F(kelsHighBandGetBufSize_Aurora_32f)}},
        {"st[20]", "NullPtr", {F(kelsVADNestInit_Aurora_32f), F(kelsVADNestInit_Aurora_16s)}},
        {"s[n] n r[1] k[1] st@Nest",
         "NullPtr; Size: n<1",
         {F(kelsVADNestDecision_Aurora_32f), F(kelsVADNestDecision_Aurora_16s)},
         "mode"},
        {"s[n]=0..1e6 +noise[n]=0.1..900 n frame=1..20 vad=1..2",
         "NullPtr; Size: n<1; BadArg: frame<1; BadArg: vad!=1&&vad!=2&&vad!=4",
         {F(kelsNoiseSpectrumUpdate_Aurora_32f)}},
        {"s[n]=0..1e6 m[n]=0..1e6 noise[n]=0.1..900 +den[n]=0..900 d[n]|s|m|noise n",
         "NullPtr; Size: n<1",
         {F(kelsWienerFilterDesign_Aurora_32f)}},
        {"st[24]", "NullPtr", {F(kelsGainFactorizationInit_Aurora_32f)}},
        {"den[n] n st@Gain", "NullPtr; Size: n<1", {F(kelsGainFactorizationUpdate_Aurora_32f)}},
        {"noise[n]=0.1..900 n s[k] d[k]|s k st@Gain", "NullPtr; Size: n<1||k<1", {F(kelsGainFactorization_Aurora_32f)}},
        {"s[25] d[17]", "NullPtr", {F(kelsTabsCalculation_Aurora_32f)}},
        {"s[n+16] t[17] d[n] n", "NullPtr; Size: n<1", {F(kelsResidualFilter_Aurora_32f)}},
        {"s[n] d[n]|s n=1..400", "NullPtr; Size: n<1", {F(kelsWaveProcessing_Aurora_32f)}},
        {"s[12] d[12]|s e +bias[12]", "NullPtr", {F(kelsBlindEqualization_Aurora_32f)}},
        {"s[n] ref[n] d[n]|s|ref n e +bias[n]", "NullPtr; Size: n<1", {F(kelsBlindEqualizationRef_Aurora_32f)}},
        {"st[472]", "NullPtr", {F(kelsLowHighFilterInit_Aurora_32f)}},
        {"s[n] d[n//2] e[n//2] n st@LowHigh",
         "NullPtr; Size: n<1||n%2!=0",
         {F(kelsLowHighFilter_Aurora_32f), F(kelsLowHighFilter_Aurora_16s32f)}},
        {"s[65] d[3]", "NullPtr", {F(kelsHighBandCodingRef_Aurora_32f)}},
        {"s[129] d[3]", "NullPtr", {F(kelsHighBandDecodingRef_Aurora_32f)}},
        {"r[3] s[3] d[9]", "NullPtr", {F(kelsHighBandCoding_Aurora_32f)}},
        {"r[3] s[9] d[3]|r", "NullPtr", {F(kelsHighBandDecoding_Aurora_32f)}},
        {"st[32]", "NullPtr", {F(kelsHighBandInit_Aurora_32f)}},
        {"s[3] d[3]|s st@HighBand", "NullPtr", {F(kelsHighBandSpectralSubtraction_Aurora_32f)}},
        {"c[3] h[3] +log[26] e[1]", "NullPtr", {F(kelsHighBandMerge_Aurora_32f)}},
    };
}

}  // namespace sweep
