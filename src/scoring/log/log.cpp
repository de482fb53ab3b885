// Addition, subtraction and summation of logarithms.
#include "kels/log.h"

#include "core/check.h"
#include "scoring/log/vectors.h"

namespace {
using namespace kels;
using namespace kels::log;

template <class T>
KelStatus lengthThenPointersFault(int len, const T* pSrc, const T* pSrcDst) {
    if (len < 1) return kelStatusSize;
    return anyNull(pSrc, pSrcDst) ? kelStatusNullPtr : kelStatusOk;
}

template <class T>
KelStatus subtractionFault(int len, const T* pSrc, const T* pSrcDst) {
    if (const KelStatus fault = lengthThenPointersFault(len, pSrc, pSrcDst)) return fault;
    return anyNotSmaller(pSrcDst, pSrc, toSize(len)) ? kelStatusOutOfRange : kelStatusOk;
}

}  // namespace

KelStatus kelsLogAdd_64f(const Kel64f* pSrc, Kel64f* pSrcDst, int len, int hint) {
    if (const KelStatus fault = lengthThenPointersFault(len, pSrc, pSrcDst)) return fault;
    logAddByHint(pSrc, pSrcDst, toSize(len), hint);
    return kelStatusOk;
}

KelStatus kelsLogAdd_32f(const Kel32f* pSrc, Kel32f* pSrcDst, int len, int hint) {
    if (const KelStatus fault = lengthThenPointersFault(len, pSrc, pSrcDst)) return fault;
    logAddByHint(pSrc, pSrcDst, toSize(len), hint);
    return kelStatusOk;
}

KelStatus kelsLogAdd_32s_Sfs(const Kel32s* pSrc, Kel32s* pSrcDst, int len, int scaleFactor, int hint) {
    if (const KelStatus fault = lengthThenPointersFault(len, pSrc, pSrcDst)) return fault;
    logAddScaled(pSrc, pSrcDst, toSize(len), scaleFactor, hint);
    return kelStatusOk;
}

KelStatus kelsLogAdd_16s_Sfs(const Kel16s* pSrc, Kel16s* pSrcDst, int len, int scaleFactor, int hint) {
    if (const KelStatus fault = lengthThenPointersFault(len, pSrc, pSrcDst)) return fault;
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
    if (const KelStatus fault = subtractionFault(len, pSrc, pSrcDst)) return fault;
    logSubtractVector(pSrc, pSrcDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsLogSub_32f(const Kel32f* pSrc, Kel32f* pSrcDst, int len) {
    if (const KelStatus fault = subtractionFault(len, pSrc, pSrcDst)) return fault;
    logSubtractVector(pSrc, pSrcDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsLogSub_32s_Sfs(const Kel32s* pSrc, Kel32s* pSrcDst, int len, int scaleFactor) {
    if (const KelStatus fault = subtractionFault(len, pSrc, pSrcDst)) return fault;
    logSubtractScaled(pSrc, pSrcDst, toSize(len), scaleFactor);
    return kelStatusOk;
}

KelStatus kelsLogSub_16s_Sfs(const Kel16s* pSrc, Kel16s* pSrcDst, int len, int scaleFactor) {
    if (const KelStatus fault = subtractionFault(len, pSrc, pSrcDst)) return fault;
    logSubtractScaled(pSrc, pSrcDst, toSize(len), scaleFactor);
    return kelStatusOk;
}

KelStatus kelsLogSum_64f(const Kel64f* pSrc, Kel64f* pSum, int len) {
    if (const KelStatus fault = lengthThenPointersFault(len, pSrc, pSum)) return fault;
    logSum(pSrc, pSum, toSize(len));
    return kelStatusOk;
}

KelStatus kelsLogSum_32f(const Kel32f* pSrc, Kel32f* pSum, int len) {
    if (const KelStatus fault = lengthThenPointersFault(len, pSrc, pSum)) return fault;
    logSum(pSrc, pSum, toSize(len));
    return kelStatusOk;
}

KelStatus kelsLogSum_32s_Sfs(const Kel32s* pSrc, Kel32s* pSum, int len, int scaleFactor) {
    if (const KelStatus fault = lengthThenPointersFault(len, pSrc, pSum)) return fault;
    logSumScaled(pSrc, pSum, toSize(len), scaleFactor);
    return kelStatusOk;
}

KelStatus kelsLogSum_16s_Sfs(const Kel16s* pSrc, Kel16s* pSum, int len, int scaleFactor) {
    if (const KelStatus fault = lengthThenPointersFault(len, pSrc, pSum)) return fault;
    logSumScaled(pSrc, pSum, toSize(len), scaleFactor);
    return kelStatusOk;
}
