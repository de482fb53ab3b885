// Rules of noise estimates and gains.
#include "sweep/rules.h"

namespace sweep {

Rules enhanceRules() {
    return {
        {"f=8..300 size[1]", "NullPtr; Size: f<8||f>8192", {F(kelsGetSizeMCRA_32f), F(kelsGetSizeMCRA_32s)}},
        {"rate=8000..48000 f=8..300 st[size(kelsGetSizeMCRA_)]",
         "NullPtr; OutOfRange: rate<8000||rate>48000; Size: f<8||f>8192",
         {F(kelsInitMCRA_32f), F(kelsInitMCRA_32s)},
         "mode"},
        {"rate=8000..48000 f=8..300 hop=1..f//2 st[size(kelsGetSizeMCRA_)]",
         "NullPtr; OutOfRange: rate<8000||rate>48000||hop<1||hop>f//2; Size: f<8||f>8192",
         {F(kelsAltInitMCRA_32f), F(kelsAltInitMCRA_32s)},
         "mode"},
        {"s[st.bins]=0..1e6 st@MCRA +d[st.bins]=0..1e6",
         "NullPtr",
         {F(kelsUpdateNoisePSDMCRA_32f_I), F(kelsUpdateNoisePSDMCRA_32s_I)},
         "mode"},
        {"s[n]=0..1e6 d[n]|s n",
         "NullPtr; LengthRange: n<1||n>65535",
         {F(kelsFilterUpdateWiener_32f), F(kelsFilterUpdateWiener_32s)}},
        {"s[n]=0..1e6 t[n]=0..1e6 d[n]|s|t n",
         "NullPtr; LengthRange: n<1||n>65535",
         {F(kelsFilterUpdateEMNS_32f), F(kelsFilterUpdateEMNS_32s)},
         "mode"},
    };
}

}  // namespace sweep
