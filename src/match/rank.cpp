#include "kels/rank.h"
#include "core/check.h"
#include "core/memory.h"
#include "match/normalise.h"
#include "match/nth_largest.h"

using namespace kels;

namespace {

// Scratch for one element after the other, `asked` times as much as is used.
template <class T>
KelStatus nthLargest(const T* src, int len, int N, T* res, int asked) {
    Scratch<SortKey<T>, 4096 / sizeof(T)> scratch(int64_t{asked} * len);
    if (scratch.failed()) return kelStatusNoMemory;
    *res = NthLargest<T>::of(src, toSize(len), toSize(N), scratch.data());
    return kelStatusOk;
}

}  // namespace

KelStatus kelsNthMaxElement_32f(const Kel32f* src, int len, int N, Kel32f* res) {
    if (anyNull(src, res)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    if (N < 0 || N >= len) return kelStatusBadArg;
    return nthLargest(src, len, N, res, 1);
}

KelStatus kelsNthMaxElement_64f(const Kel64f* src, int len, int N, Kel64f* res) {
    if (anyNull(src, res)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    if (N < 0 || N >= len) return kelStatusBadArg;
    return nthLargest(src, len, N, res, 1);
}

KelStatus kelsNthMaxElement_32s(const Kel32s* src, int len, int N, Kel32s* res) {
    if (anyNull(src, res)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    if (N < 0 || N >= len) return kelStatusBadArg;
    return nthLargest(src, len, N, res, 4);
}

KelStatus kelsScaleLM_32f(const Kel32f* src, Kel32f* dst, int len, Kel32f val, Kel32f mul, Kel32f add) {
    if (anyNull(src, dst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    scaleFloored(src, dst, toSize(len), val, mul, add);
    return kelStatusOk;
}

KelStatus kelsLMThreshold_32f(Kel32f val, Kel32f mul, Kel32f add, const Kel32f* src, Kel32f* dst, int len) {
    return kelsScaleLM_32f(src, dst, len, val, mul, add);
}

KelStatus kelsScaleLM_16s32s(const Kel16s* src, Kel32s* dst, int len, Kel16s val, Kel16s mul, Kel32s add) {
    if (anyNull(src, dst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    scaleFloored(src, dst, toSize(len), val, mul, add);
    return kelStatusOk;
}

KelStatus kelsNormalizeInRange_32f(const Kel32f* src, Kel32f* dst, int len, Kel32f lowCut, Kel32f highCut,
                                   Kel32f range) {
    if (anyNull(src, dst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    return normaliseOwnSpan(src, dst, toSize(len), Cuts{lowCut, highCut, range});
}

KelStatus kelsNormalizeInRange_32f_I(Kel32f* srcDst, int len, Kel32f lowCut, Kel32f highCut, Kel32f range) {
    return kelsNormalizeInRange_32f(srcDst, srcDst, len, lowCut, highCut, range);
}

KelStatus kelsNormalizeInRange_16s(const Kel16s* src, Kel16s* dst, int len, Kel32f lowCut, Kel32f highCut,
                                   Kel32f range) {
    if (anyNull(src, dst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    return normaliseOwnSpan(src, dst, toSize(len), Cuts{lowCut, highCut, range});
}

KelStatus kelsNormalizeInRange_16s_I(Kel16s* srcDst, int len, Kel32f lowCut, Kel32f highCut, Kel32f range) {
    return kelsNormalizeInRange_16s(srcDst, srcDst, len, lowCut, highCut, range);
}

KelStatus kelsNormalizeInRange_16s8u(const Kel16s* src, Kel8u* dst, int len, Kel32f lowCut, Kel32f highCut,
                                     Kel32f range) {
    if (anyNull(src, dst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    return normaliseOwnSpan(src, dst, toSize(len), Cuts{lowCut, highCut, range});
}

KelStatus kelsNormalizeInRange_32f16s(const Kel32f* src, Kel16s* dst, int len, Kel32f lowCut, Kel32f highCut,
                                      Kel32f range) {
    if (anyNull(src, dst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    return normaliseOwnSpan(src, dst, toSize(len), Cuts{lowCut, highCut, range});
}

KelStatus kelsNormalizeInRange_32f8u(const Kel32f* src, Kel8u* dst, int len, Kel32f lowCut, Kel32f highCut,
                                     Kel32f range) {
    if (anyNull(src, dst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    return normaliseOwnSpan(src, dst, toSize(len), Cuts{lowCut, highCut, range});
}

KelStatus kelsNormalizeInRangeMinMax_32f(const Kel32f* src, Kel32f* dst, int len, Kel32f valMin, Kel32f valMax,
                                         Kel32f lowCut, Kel32f highCut, Kel32f range) {
    if (anyNull(src, dst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    return normaliseSpan(src, dst, toSize(len), valMin, valMax, Cuts{lowCut, highCut, range});
}

KelStatus kelsNormalizeInRangeMinMax_32f_I(Kel32f* srcDst, int len, Kel32f valMin, Kel32f valMax, Kel32f lowCut,
                                           Kel32f highCut, Kel32f range) {
    return kelsNormalizeInRangeMinMax_32f(srcDst, srcDst, len, valMin, valMax, lowCut, highCut, range);
}

KelStatus kelsNormalizeInRangeMinMax_16s(const Kel16s* src, Kel16s* dst, int len, Kel16s valMin, Kel16s valMax,
                                         Kel32f lowCut, Kel32f highCut, Kel32f range) {
    if (anyNull(src, dst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    return normaliseSpan(src, dst, toSize(len), valMin, valMax, Cuts{lowCut, highCut, range});
}

KelStatus kelsNormalizeInRangeMinMax_16s_I(Kel16s* srcDst, int len, Kel16s valMin, Kel16s valMax, Kel32f lowCut,
                                           Kel32f highCut, Kel32f range) {
    return kelsNormalizeInRangeMinMax_16s(srcDst, srcDst, len, valMin, valMax, lowCut, highCut, range);
}

KelStatus kelsNormalizeInRangeMinMax_16s8u(const Kel16s* src, Kel8u* dst, int len, Kel16s valMin, Kel16s valMax,
                                           Kel32f lowCut, Kel32f highCut, Kel32f range) {
    if (anyNull(src, dst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    return normaliseSpan(src, dst, toSize(len), valMin, valMax, Cuts{lowCut, highCut, range});
}

KelStatus kelsNormalizeInRangeMinMax_32f16s(const Kel32f* src, Kel16s* dst, int len, Kel32f valMin, Kel32f valMax,
                                            Kel32f lowCut, Kel32f highCut, Kel32f range) {
    if (anyNull(src, dst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    return normaliseSpan(src, dst, toSize(len), valMin, valMax, Cuts{lowCut, highCut, range});
}

KelStatus kelsNormalizeInRangeMinMax_32f8u(const Kel32f* src, Kel8u* dst, int len, Kel32f valMin, Kel32f valMax,
                                           Kel32f lowCut, Kel32f highCut, Kel32f range) {
    if (anyNull(src, dst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    return normaliseSpan(src, dst, toSize(len), valMin, valMax, Cuts{lowCut, highCut, range});
}

KelStatus kelsUnitCurve_32f(const Kel32f* src, Kel32f* dst, int len) {
    if (anyNull(src, dst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    unitCurve(src, dst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsUnitCurve_32f_I(Kel32f* srcDst, int len) {
    return kelsUnitCurve_32f(srcDst, srcDst, len);
}

KelStatus kelsUnitCurve_16s_Sfs(const Kel16s* src, Kel16s* dst, int fracBits, int len, int scaleFactor) {
    if (anyNull(src, dst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    unitCurve(src, dst, toSize(len), fracBits, scaleFactor);
    return kelStatusOk;
}

KelStatus kelsUnitCurve_16s_ISfs(Kel16s* srcDst, int fracBits, int len, int scaleFactor) {
    return kelsUnitCurve_16s_Sfs(srcDst, srcDst, fracBits, len, scaleFactor);
}
