#include "kels/log.h"

#include "core/check.h"
#include "scoring/log/vectors.h"

using namespace kels;

KelStatus kelsLogAdd_64f(const Kel64f* pSrc, Kel64f* pSrcDst, int len, int hint) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pSrc, pSrcDst)) return kelStatusNullPtr;
    logAddByHint(pSrc, pSrcDst, toSize(len), hint);
    return kelStatusOk;
}

KelStatus kelsLogAdd_32f(const Kel32f* pSrc, Kel32f* pSrcDst, int len, int hint) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pSrc, pSrcDst)) return kelStatusNullPtr;
    logAddByHint(pSrc, pSrcDst, toSize(len), hint);
    return kelStatusOk;
}

KelStatus kelsLogAdd_32s_Sfs(const Kel32s* pSrc, Kel32s* pSrcDst, int len, int scaleFactor, int hint) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pSrc, pSrcDst)) return kelStatusNullPtr;
    logAddScaled(pSrc, pSrcDst, toSize(len), scaleFactor, hint);
    return kelStatusOk;
}

KelStatus kelsLogAdd_16s_Sfs(const Kel16s* pSrc, Kel16s* pSrcDst, int len, int scaleFactor, int hint) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pSrc, pSrcDst)) return kelStatusNullPtr;
    logAddScaled(pSrc, pSrcDst, toSize(len), scaleFactor, hint);
    return kelStatusOk;
}

void kelsLogAddVec_32f_M6(const Kel32f* pSrc, Kel32f* pSrcDst, int len) {
    if (len > 0) logAddVector(pSrc, pSrcDst, toSize(len));
}

void kelsLogAddVec_32f_A6(const Kel32f* pSrc, Kel32f* pSrcDst, int len) {
    if (len > 0) logAddVectorFast(pSrc, pSrcDst, toSize(len));
}

KelStatus kelsLogSub_64f(const Kel64f* pSrc, Kel64f* pSrcDst, int len) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pSrc, pSrcDst)) return kelStatusNullPtr;
    if (anyNotSmaller(pSrcDst, pSrc, toSize(len))) return kelStatusOutOfRange;
    logSubtractVector(pSrc, pSrcDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsLogSub_32f(const Kel32f* pSrc, Kel32f* pSrcDst, int len) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pSrc, pSrcDst)) return kelStatusNullPtr;
    if (anyNotSmaller(pSrcDst, pSrc, toSize(len))) return kelStatusOutOfRange;
    logSubtractVector(pSrc, pSrcDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsLogSub_32s_Sfs(const Kel32s* pSrc, Kel32s* pSrcDst, int len, int scaleFactor) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pSrc, pSrcDst)) return kelStatusNullPtr;
    if (anyNotSmaller(pSrcDst, pSrc, toSize(len))) return kelStatusOutOfRange;
    logSubtractScaled(pSrc, pSrcDst, toSize(len), scaleFactor);
    return kelStatusOk;
}

KelStatus kelsLogSub_16s_Sfs(const Kel16s* pSrc, Kel16s* pSrcDst, int len, int scaleFactor) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pSrc, pSrcDst)) return kelStatusNullPtr;
    if (anyNotSmaller(pSrcDst, pSrc, toSize(len))) return kelStatusOutOfRange;
    logSubtractScaled(pSrc, pSrcDst, toSize(len), scaleFactor);
    return kelStatusOk;
}

KelStatus kelsLogSum_64f(const Kel64f* pSrc, Kel64f* pSum, int len) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pSrc, pSum)) return kelStatusNullPtr;
    logSum(pSrc, pSum, toSize(len));
    return kelStatusOk;
}

KelStatus kelsLogSum_32f(const Kel32f* pSrc, Kel32f* pSum, int len) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pSrc, pSum)) return kelStatusNullPtr;
    logSum(pSrc, pSum, toSize(len));
    return kelStatusOk;
}

KelStatus kelsLogSum_32s_Sfs(const Kel32s* pSrc, Kel32s* pSum, int len, int scaleFactor) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pSrc, pSum)) return kelStatusNullPtr;
    logSumScaled(pSrc, pSum, toSize(len), scaleFactor);
    return kelStatusOk;
}

KelStatus kelsLogSum_16s_Sfs(const Kel16s* pSrc, Kel16s* pSum, int len, int scaleFactor) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pSrc, pSum)) return kelStatusNullPtr;
    logSumScaled(pSrc, pSum, toSize(len), scaleFactor);
    return kelStatusOk;
}
