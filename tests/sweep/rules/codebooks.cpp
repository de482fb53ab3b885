// Rules of codebooks and of vector quantisation.
#include "sweep/rules.h"

namespace sweep {

Rules codebookRules() {
    // Weights of 1 come first, and on i386 so many of them find no place.
    const char* const unweighted =
        sizeof(void*) == 4
            ? "Size: w<1; NoMemory: w>pow2(29); NullPtr; Size: step<1||h<1||k<1||step<w||k>16383||k>h; "
              "ModeNotSupported: kind<1||kind>3"
            : "Size: w<1; NullPtr; Size: step<1||h<1||k<1||step<w||k>16383||k>h; ModeNotSupported: kind<1||kind>3";
    return {
        {"b>Cdbk s[h,step,w] w=1..12 step=w..w+5 h=2..40 k=1..h kind=1..3",
         unweighted,
         {F(kelsCdbkInitAlloc_L2_32f), F(kelsCdbkInitAlloc_L2_16s)},
         "may:BadArg mode"},
        {"b>Cdbk s[h,step,w] c[w]=0..5 w=1..12 step=w..w+5 h=2..40 k=1..h kind=1..3",
         "NullPtr; Size: w<1||step<1||h<1||k<1||step<w||k>16383||k>h; ModeNotSupported: kind<1||kind>3",
         {F(kelsCdbkInitAlloc_WgtL2_32f), F(kelsCdbkInitAlloc_WgtL2_16s)},
         "may:BadArg mode reads"},
        {"w=1..12 step=w..w+5 h k=h kind=1 size[1]",
         "ModeNotSupported: kind!=1; NullPtr; Size: w<1||step<1||h<1||k<1||w>step||k>16383||k!=h",
         {F(kelsCdbkGetSize_32f), F(kelsCdbkGetSize_16s)},
         "may:NoMemory"},
        {"b[size(kelsCdbkGetSize_)] s[h,step,w] w=1..12 step=w..w+5 h k=h kind=1",
         "ModeNotSupported: kind!=1; NullPtr; Size: w<1||step<1||h<1||k<1||w>step||k>16383||k!=h",
         {F(kelsCdbkInit_L2_32f), F(kelsCdbkInit_L2_16s)},
         "may:NoMemory"},
        {"b@Cdbk size[1]", "NullPtr", {F(kelsGetCdbkSize_32f), F(kelsGetCdbkSize_16s)}},
        {"b@Cdbk d[b.size,step,b.width] step=b.width..b.width+5",
         "NullPtr; Size: step<1||step<b.width",
         {F(kelsGetCodebook_32f), F(kelsGetCodebook_16s)}},
        {"b<OwnCdbk", "NullPtr", {F(kelsCdbkFree_32f), F(kelsCdbkFree_16s)}},
        {"b@Cdbk size[1]", "NullPtr", {F(kelsCdbkGetPackedSize_32f), F(kelsCdbkGetPackedSize_16s)}},
        {"b@Cdbk d[b.packed] n=b.packed..b.packed+9",
         "NullPtr; Size: n<b.packed",
         {F(kelsCdbkPack_32f), F(kelsCdbkPack_16s)}},
        {"b>Cdbk s@PackedCdbk_32f n=s.bytes", "NullPtr; Size: n<1", {F(kelsCdbkUnpackAlloc_32f)}, "may:BadArg"},
        {"b>Cdbk s@PackedCdbk_16s n=s.bytes", "NullPtr; Size: n<1", {F(kelsCdbkUnpackAlloc_16s)}, "may:BadArg"},
        {"s[h,step,b.width] step=b.width..b.width+5 x[h] (d[h]) h b@Cdbk (sf)",
         "NullPtr; Size: step<1||h<1||step<b.width",
         {F(kelsVQ_32f), F(kelsVQDist_32f), F(kelsVQ_16s), F(kelsVQDist_16s32s_Sfs)},
         "floatmode shared"},
        {"s[b.width] x[k] (d[k]) b@Cdbk k=1..b.size (sf)",
         "NullPtr; Size: k<1||k>b.size",
         {F(kelsVQSingle_Sort_32f), F(kelsVQDistSingle_Sort_32f), F(kelsVQSingle_Sort_16s),
          F(kelsVQDistSingle_Sort_16s32s_Sfs)},
         "floatmode"},
        {"s[b.width] x[b.size] (d[b.size]) b@Cdbk f=1..4 r[1] (sf)",
         "NullPtr; BadArg: !(f>=1)",
         {F(kelsVQSingle_Thresh_32f), F(kelsVQDistSingle_Thresh_32f), F(kelsVQSingle_Thresh_16s),
          F(kelsVQDistSingle_Thresh_16s32s_Sfs)},
         "floatmode"},
        // Searches of all codevectors and through the tree, of any width and of one that the name ends with.
        {"s[h,step,b.width] step=b.width..b.width+5 x[h] h b@Cdbk w=b.width",
         "NullPtr; Size: step<1||h<1||w!=b.width||step<w",
         {F(kelsCdbk32VQFull_A6), F(kelsCdbk16VQFull_A6)},
         "floatmode shared"},
        {"s[h,step,b.width] step=b.width..b.width+5 x[h] h b@Cdbk w=b.width",
         "NullPtr; Size: step<1||h<1||w!=b.width||step<w; ModeNotSupported: b.tree==0",
         {F(kelsCdbk32VQKMeans_A6), F(kelsCdbk16VQKMeans_A6)},
         "floatmode shared"},
        {"s[h,step,b.width] step=b.width..b.width+5 x[h] h b@Cdbk:",
         "NullPtr; Size: step<b.width||h<1",
         {F(kelsCdbk32VQFull_A6_1), F(kelsCdbk32VQFull_A6_2), F(kelsCdbk32VQFull_A6_4), F(kelsCdbk32VQFull_A6_8),
          F(kelsCdbk16VQFull_A6_1), F(kelsCdbk16VQFull_A6_2), F(kelsCdbk16VQFull_A6_4), F(kelsCdbk16VQFull_A6_8)},
         "floatmode shared"},
        {"s[h,step,b.width] step=b.width..b.width+5 x[h] h b@Cdbk:",
         "NullPtr; Size: step<b.width||h<1; ModeNotSupported: b.tree==0",
         {F(kelsCdbk32VQKMeans_A6_1), F(kelsCdbk32VQKMeans_A6_2), F(kelsCdbk32VQKMeans_A6_4),
          F(kelsCdbk32VQKMeans_A6_8), F(kelsCdbk16VQKMeans_A6_1), F(kelsCdbk16VQKMeans_A6_2),
          F(kelsCdbk16VQKMeans_A6_4), F(kelsCdbk16VQKMeans_A6_8)},
         "floatmode shared"},
        // Streams of codebooks, a part of the row each.
        {"s[h,step,b.width] step=b.width..b.width+5 d[h,to,k] to=k..k+4 h b[k]@OwnCdbk k=1..5",
         "NullPtr; Size: step<1||to<1||h<1||k<1; Size: b.width>step; Size: k>to",
         {F(kelsSplitVQ_32f16s), F(kelsSplitVQ_32f8u), F(kelsSplitVQ_16s16s), F(kelsSplitVQ_16s8u)},
         "floatmode shared reads"},
        {"s[h,step,b.width] step=b.width..b.width+5 d[(h*to+7)//8] to=b.bits..b.bits+9 h b[k]@OwnCdbk k=1..5",
         "NullPtr; Size: step<1||to<1||h<1||k<1; Size: b.width>step; Size: b.bits>to",
         {F(kelsSplitVQ_32f1u), F(kelsSplitVQ_16s1u)},
         "floatmode shared reads"},
        {"s[h,step,k]=0..1 step=k..k+4 d[h,to,b.width] to=b.width..b.width+4 h b[k]@OwnCdbk k=1..5",
         "NullPtr; Size: step<1||to<1||h<1||k<1; Size: b.width>to; Size: k>step",
         {F(kelsFormVectorVQ_16s32f), F(kelsFormVectorVQ_8u32f), F(kelsFormVectorVQ_16s16s), F(kelsFormVectorVQ_8u16s)},
         "shared reads"},
        {"s[(h*step+7)//8]=0..3 step=b.bits..b.bits+9 d[h,to,b.width] to=b.width..b.width+4 h b[k]@OwnCdbk k=1..5",
         "NullPtr; Size: step<1||to<1||h<1||k<1; Size: b.width>to; Size: b.bits>step",
         {F(kelsFormVectorVQ_1u32f), F(kelsFormVectorVQ_1u16s)},
         "may:Size shared reads"},
        // Vectors from plain tables.
        {"x[k]=0..hh[i]-1 tables[k,(hh[i]-1)*st[i]+ww[i]] d[sum(ww)] hh[k]=1..6 ww[k]=1..5 st[k]=ww[i]..ww[i]+3 k=1..6",
         "NullPtr; Size: k<1",
         {F(kelsFormVector_8u16s), F(kelsFormVector_8u32f), F(kelsFormVector_16s16s), F(kelsFormVector_16s32f)},
         "reads"},
        {"x[k]=0..hh[i]-1 y[k]=0..hh[i]-1 tables[k,(hh[i]-1)*st[i]+ww[i]] d[2*sum(ww)] hh[k]=1..6 ww[k]=1..5 "
         "st[k]=ww[i]..ww[i]+3 k=1..6",
         "NullPtr; Size: k<1",
         {F(kelsFormVector_2i_8u16s), F(kelsFormVector_2i_16s16s), F(kelsFormVector_2i_8u32f),
          F(kelsFormVector_2i_16s32f)},
         "reads"},
        {"x[k]=0..hh[i]-1 y[k]=0..hh[i]-1 u[k]=0..hh[i]-1 v[k]=0..hh[i]-1 tables[k,(hh[i]-1)*st[i]+ww[i]] d[4*sum(ww)] "
         "hh[k]=1..6 ww[k]=1..5 st[k]=ww[i]..ww[i]+3 k=1..6",
         "NullPtr; Size: k<1",
         {F(kelsFormVector_4i_8u16s), F(kelsFormVector_4i_16s16s), F(kelsFormVector_4i_8u32f),
          F(kelsFormVector_4i_16s32f)},
         "reads"},
    };
}

}  // namespace sweep
