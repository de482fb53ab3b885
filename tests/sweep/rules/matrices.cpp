// Rules of products, sums and decompositions of matrices.
#include "sweep/rules.h"

namespace sweep {

Rules matrixRules() {
    return {
        // Products.
        {"a[h,step,w] (step=w..w+5) x[w] w d[h] h (sf)",
         "NullPtr; Size: w<1||h<1; Step: step<w",
         {F(kelsMatVecMul_32f_D2), F(kelsMatVecMul_64f_D2), F(kelsMatVecMul_16s_D2Sfs), F(kelsMatVecMul_32f_D2L),
          F(kelsMatVecMul_64f_D2L), F(kelsMatVecMul_16s_D2LSfs)}},
        {"x[h] h a[h,step,w] (step=w..w+5) d[w] w",
         "NullPtr; Size: w<1||h<1; Step: step<w",
         {F(kelsVecMatMul_32f_D2), F(kelsVecMatMul_64f_D2), F(kelsVecMatMul_32f_D2L), F(kelsVecMatMul_64f_D2L)}},
        {"s[h,step,n] (step=n..n+5) a[w,across,n] (across=n..n+5) o?[w] d[h,to,w] (to=w..w+5) n w h",
         "NullPtr; Size: n<1||w<1||h<1; Step: step<n||across<n||to<w",
         {F(kelsMatVecMulRows_32f_D2), F(kelsMatVecMulRows_64f_D2), F(kelsMatVecMulRows_32f_D2L),
          F(kelsMatVecMulRows_64f_D2L)}},
        // Sums.
        {"a[h,step,w] (step=w..w+5) h d[w] w (sf)",
         "NullPtr; Size: w<1||h<1; Step: step<w",
         {F(kelsSumColumn_32f_D2), F(kelsSumColumn_64f_D2), F(kelsSumColumn_16s32s_D2Sfs), F(kelsSumColumn_32f_D2L),
          F(kelsSumColumn_64f_D2L), F(kelsSumColumn_16s32s_D2LSfs)}},
        {"a[h,step,w] (step=w..w+5) w d[h] h (sf)",
         "NullPtr; Size: w<1||h<1; Step: step<w",
         {F(kelsSumRow_32f_D2), F(kelsSumRow_64f_D2), F(kelsSumRow_16s32s_D2Sfs), F(kelsSumRow_32f_D2L),
          F(kelsSumRow_64f_D2L), F(kelsSumRow_16s32s_D2LSfs)}},
        {"a[h,step,from+w] (step=from+w..from+w+5) h from=0..9 x[n]=0..h-1 n d[w] w",
         "NullPtr; Size: h<1||n<1||w<1||from<0; Step: step<from+w",
         {F(kelsAddNRows_32f_D2), F(kelsAddNRows_64f_D2), F(kelsAddNRows_32f_D2L), F(kelsAddNRows_64f_D2L)},
         "may:BadArg reads"},
        // Columns.
        {"s[h,step,step] step=1..40 x[w]=0..step-1 d[h,to,w] to=w..w+5 w h",
         "NullPtr; Size: w<1||h<1; Step: to<w",
         {F(kelsCopyColumn_Indirect_16s_D2), F(kelsCopyColumn_Indirect_32f_D2), F(kelsCopyColumn_Indirect_64f_D2)},
         "may:Step may:BadArg reads anymode"},
        {"s[h,20] x[w]=0..19 d[h,w] w h",
         "NullPtr; Size: w<1||h<1",
         {F(kelsCopyColumn_Indirect_16s_D2L), F(kelsCopyColumn_Indirect_32f_D2L), F(kelsCopyColumn_Indirect_64f_D2L)},
         "may:BadArg reads anymode"},
        {"s[h,step,w] (step=w..w+5) m[w] k[w] d[h,to,w] (to=w..w+5) w h",
         "NullPtr; Size: w<1||h<1; Step: step<w||to<w",
         {F(kelsNormalizeColumn_32f_D2), F(kelsNormalizeColumn_64f_D2), F(kelsNormalizeColumn_32f_D2L),
          F(kelsNormalizeColumn_64f_D2L)}},
        {"m[w] k[w] +d[h,step,w] (step=w..w+5) w h",
         "NullPtr; Size: w<1||h<1; Step: step<w",
         {F(kelsNormalizeColumn_32f_D2_I), F(kelsNormalizeColumn_64f_D2_I), F(kelsNormalizeColumn_32f_D2L_I),
          F(kelsNormalizeColumn_64f_D2L_I)}},
        // Decompositions.
        {"a[h,step,w] (step=w..w+5) u[h,uTo,min(w,h)] (uTo=min(w,h)..w+5) s[min(w,h)] v[w,vTo,min(w,h)] "
         "(vTo=min(w,h)..w+5) w h",
         "NullPtr; Size: w<1||h<1; Step: step<w||uTo<min(w,h)||vTo<min(w,h)",
         {F(kelsSVD_64f_D2), F(kelsSVD_64f_D2L)},
         "may:NoConverge"},
        {"+a[h,step,w]=-9..9 (step=w..w+5) s[min(w,h)] v[w,vTo,min(w,h)] (vTo=min(w,h)..w+5) w h",
         "NullPtr; Size: w<1||h<1; Step: step<w||vTo<min(w,h)",
         {F(kelsSVD_64f_D2_I), F(kelsSVD_64f_D2L_I)}},
        {"+a[h,step,w]=-9..9 (step=w..w+5) r[w,to,w] (to=w..w+5) w h=w..w+9",
         "NullPtr; Size: w<1||h<w; Step: step<w||to<w",
         {F(kelsQRTransColumn_64f_D2), F(kelsQRTransColumn_64f_D2L)}},
        {"r[n,step,n] (step=n..n+5) b[n] d[n]|b n",
         "NullPtr; Size: n<1; Step: step<n",
         {F(kelsSolveUpper_64f_D2), F(kelsSolveUpper_64f_D2L)}},
    };
}

}  // namespace sweep
