#include "kels/log.h"

#include "core/check.h"
#include "scoring/log/vectors.h"

using namespace kels;

KelStatus kelsLogAdd_64f(const Kel64f* pSrc, Kel64f* pSrcDst, int len, int hint) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pSrc, pSrcDst)) return kelStatusNullPtr;
    logAddByHint(pSrc, pSrcDst, size(len), hint);
    return kelStatusOk;
}

KelStatus kelsLogAdd_32f(const Kel32f* pSrc, Kel32f* pSrcDst, int len, int hint) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pSrc, pSrcDst)) return kelStatusNullPtr;
    logAddByHint(pSrc, pSrcDst, size(len), hint);
    return kelStatusOk;
}

KelStatus kelsLogAdd_32s_Sfs(const Kel32s* pSrc, Kel32s* pSrcDst, int len, int scaleFactor, int hint) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pSrc, pSrcDst)) return kelStatusNullPtr;
    logAddScaled(pSrc, pSrcDst, size(len), scaleFactor, hint);
    return kelStatusOk;
}

KelStatus kelsLogAdd_16s_Sfs(const Kel16s* pSrc, Kel16s* pSrcDst, int len, int scaleFactor, int hint) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pSrc, pSrcDst)) return kelStatusNullPtr;
    logAddScaled(pSrc, pSrcDst, size(len), scaleFactor, hint);
    return kelStatusOk;
}

void kelsLogAddVec_32f_M6(const Kel32f* pSrc, Kel32f* pSrcDst, int len) {
    if (len > 0) logAddVector(pSrc, pSrcDst, size(len));
}

void kelsLogAddVec_32f_A6(const Kel32f* pSrc, Kel32f* pSrcDst, int len) {
    if (len > 0) logAddVectorFast(pSrc, pSrcDst, size(len));
}

KelStatus kelsLogSub_64f(const Kel64f* pSrc, Kel64f* pSrcDst, int len) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pSrc, pSrcDst)) return kelStatusNullPtr;
    if (anyNotSmaller(pSrcDst, pSrc, size(len))) return kelStatusOutOfRange;
    logSubtractVector(pSrc, pSrcDst, size(len));
    return kelStatusOk;
}

KelStatus kelsLogSub_32f(const Kel32f* pSrc, Kel32f* pSrcDst, int len) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pSrc, pSrcDst)) return kelStatusNullPtr;
    if (anyNotSmaller(pSrcDst, pSrc, size(len))) return kelStatusOutOfRange;
    logSubtractVector(pSrc, pSrcDst, size(len));
    return kelStatusOk;
}

KelStatus kelsLogSub_32s_Sfs(const Kel32s* pSrc, Kel32s* pSrcDst, int len, int scaleFactor) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pSrc, pSrcDst)) return kelStatusNullPtr;
    if (anyNotSmaller(pSrcDst, pSrc, size(len))) return kelStatusOutOfRange;
    logSubtractScaled(pSrc, pSrcDst, size(len), scaleFactor);
    return kelStatusOk;
}

KelStatus kelsLogSub_16s_Sfs(const Kel16s* pSrc, Kel16s* pSrcDst, int len, int scaleFactor) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pSrc, pSrcDst)) return kelStatusNullPtr;
    if (anyNotSmaller(pSrcDst, pSrc, size(len))) return kelStatusOutOfRange;
    logSubtractScaled(pSrc, pSrcDst, size(len), scaleFactor);
    return kelStatusOk;
}

KelStatus kelsLogSum_64f(const Kel64f* pSrc, Kel64f* pSum, int len) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pSrc, pSum)) return kelStatusNullPtr;
    logSum(pSrc, pSum, size(len));
    return kelStatusOk;
}

KelStatus kelsLogSum_32f(const Kel32f* pSrc, Kel32f* pSum, int len) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pSrc, pSum)) return kelStatusNullPtr;
    logSum(pSrc, pSum, size(len));
    return kelStatusOk;
}

KelStatus kelsLogSum_32s_Sfs(const Kel32s* pSrc, Kel32s* pSum, int len, int scaleFactor) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pSrc, pSum)) return kelStatusNullPtr;
    logSumScaled(pSrc, pSum, size(len), scaleFactor);
    return kelStatusOk;
}

KelStatus kelsLogSum_16s_Sfs(const Kel16s* pSrc, Kel16s* pSum, int len, int scaleFactor) {
    if (len < 1) return kelStatusSize;
    if (anyNull(pSrc, pSum)) return kelStatusNullPtr;
    logSumScaled(pSrc, pSum, size(len), scaleFactor);
    return kelStatusOk;
}
