// Rules of the echo canceller.
#include "sweep/rules.h"

namespace sweep {

Rules echoRules() {
    return {
        {"n=32..4096 size[1]",
         "NullPtr; OutOfRange: n<32||n>4096",
         {F(kelsControllerGetSizeAEC_32f), F(kelsControllerGetSizeAEC_32s)}},
        {"rate=8000..48000 n=32..4096 st[size(kelsControllerGetSizeAEC_)]",
         "NullPtr; OutOfRange: rate<8000||rate>48000||n<32||n>4096",
         {F(kelsControllerInitAEC_32f), F(kelsControllerInitAEC_32s)},
         "mode"},
        {"x[st.n] d[st.n] e[st.n] st@AEC f[1] g[1] flag[1]",
         "NullPtr",
         {F(kelsControllerUpdateAEC_32f), F(kelsControllerUpdateAEC_32s)},
         "mode"},
        {"x[p,n] h[p,n] y[n] n p",
         "NullPtr; LengthRange: n<1||n>4097; Size: p<1",
         {F(kelsFilterAECNLMS_32fc), F(kelsFilterAECNLMS_32sc)}},
        {"x[p,n] h[p,n] e[n] +near[n]=0..900 +var[p,n]=0..900 step[p,n] n p factor=0..1 forget=0..1 smooth=0..1",
         "NullPtr; LengthRange: n<1||n>4097; Size: p<1;"
         "BadArg: !(factor>=0&&factor<=1&&forget>=0&&forget<=1&&smooth>=0&&smooth<=1)",
         {F(kelsStepSizeUpdateAECNLMS_32f), F(kelsStepSizeUpdateAECNLMS_32s)}},
        {"x[p,n] e[n] s[p,n] +h[p,n] n p",
         "NullPtr; LengthRange: n<1||n>4097; Size: p<1",
         {F(kelsCoefUpdateAECNLMS_32fc_I), F(kelsCoefUpdateAECNLMS_32sc_I)}},
    };
}

}  // namespace sweep
