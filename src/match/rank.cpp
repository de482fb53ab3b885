// Entry points of ranking, language-model scaling, normalisation into a range and the unit curve.
#include "kels/rank.h"

#include "core/check.h"
#include "core/memory.h"
#include "core/vector/fill_copy.h"
#include "match/language_model.h"
#include "match/nth_largest.h"
#include "match/range.h"
#include "match/unit_curve.h"

using namespace kels;
using namespace kels::rank;

namespace {

KelStatus rankFault(int len, int N, const void* src, const void* res) {
    if (const KelStatus fault = vectorFault(len, src, res)) return fault;
    return N < 0 || N >= len ? kelStatusBadArg : kelStatusOk;
}

// A cut, or a range, that is not a number fails the comparisons.
KelStatus rangeFault(int len, const Cuts& cuts, const void* src, const void* dst) {
    if (const KelStatus fault = vectorFault(len, src, dst)) return fault;
    const bool valid = 0 <= cuts.low && cuts.low < cuts.high && cuts.high <= 1 && cuts.range >= 0;
    return valid ? kelStatusOk : kelStatusBadArg;
}

// With scratch for the keys of all elements, and `asked` times as much of it as is used.
template <class T>
KelStatus nthLargest(const T* src, int len, int N, T* res, int asked) {
    Scratch<SortKey<T>, 4096 / sizeof(T)> scratch(int64_t{asked} * len);
    if (scratch.failed()) return kelStatusNoMemory;
    *res = NthLargest<T>::of(src, toSize(len), toSize(N), scratch.data());
    return kelStatusOk;
}

// The span decides after all checks: one of NaN is a fault, and one without extent gives zeros.
template <class S, class D>
KelStatus normaliseSpan(const S* src, D* dst, int len, const Extrema<S>& span, const Cuts& cuts) {
    if (!(span.least <= span.greatest)) return kelStatusBadArg;
    if (span.least == span.greatest) {
        zero(dst, toSize(len));
        return kelStatusNoOperation;
    }
    normalise(src, dst, toSize(len), span, cuts);
    return kelStatusOk;
}

// A number of fraction bits that 16 bits have no room for gives zeros.
void fixedUnitCurve(const Kel16s* src, Kel16s* dst, int len, int fracBits, int scaleFactor) {
    if (fracBits < 0 || fracBits > 14) return zero(dst, toSize(len));
    unitCurve(src, dst, toSize(len), fracBits, scaleFactor);
}

}  // namespace

KelStatus kelsNthMaxElement_32f(const Kel32f* src, int len, int N, Kel32f* res) {
    if (const KelStatus fault = rankFault(len, N, src, res)) return fault;
    return nthLargest(src, len, N, res, 1);
}

KelStatus kelsNthMaxElement_64f(const Kel64f* src, int len, int N, Kel64f* res) {
    if (const KelStatus fault = rankFault(len, N, src, res)) return fault;
    return nthLargest(src, len, N, res, 1);
}

KelStatus kelsNthMaxElement_32s(const Kel32s* src, int len, int N, Kel32s* res) {
    if (const KelStatus fault = rankFault(len, N, src, res)) return fault;
    return nthLargest(src, len, N, res, 4);
}

KelStatus kelsScaleLM_32f(const Kel32f* src, Kel32f* dst, int len, Kel32f val, Kel32f mul, Kel32f add) {
    if (const KelStatus fault = vectorFault(len, src, dst)) return fault;
    scaleFloored(src, dst, toSize(len), val, mul, add);
    return kelStatusOk;
}

KelStatus kelsLMThreshold_32f(Kel32f val, Kel32f mul, Kel32f add, const Kel32f* src, Kel32f* dst, int len) {
    if (const KelStatus fault = vectorFault(len, src, dst)) return fault;
    scaleFloored(src, dst, toSize(len), val, mul, add);
    return kelStatusOk;
}

KelStatus kelsScaleLM_16s32s(const Kel16s* src, Kel32s* dst, int len, Kel16s val, Kel16s mul, Kel32s add) {
    if (const KelStatus fault = vectorFault(len, src, dst)) return fault;
    scaleFloored(src, dst, toSize(len), val, mul, add);
    return kelStatusOk;
}

KelStatus kelsNormalizeInRange_32f(const Kel32f* src, Kel32f* dst, int len, Kel32f lowCut, Kel32f highCut,
                                   Kel32f range) {
    const Cuts cuts{lowCut, highCut, range};
    if (const KelStatus fault = rangeFault(len, cuts, src, dst)) return fault;
    return normaliseSpan(src, dst, len, extremaOf(src, toSize(len)), cuts);
}

KelStatus kelsNormalizeInRange_32f_I(Kel32f* srcDst, int len, Kel32f lowCut, Kel32f highCut, Kel32f range) {
    const Cuts cuts{lowCut, highCut, range};
    if (const KelStatus fault = rangeFault(len, cuts, srcDst, srcDst)) return fault;
    return normaliseSpan(srcDst, srcDst, len, extremaOf(srcDst, toSize(len)), cuts);
}

KelStatus kelsNormalizeInRange_16s(const Kel16s* src, Kel16s* dst, int len, Kel32f lowCut, Kel32f highCut,
                                   Kel32f range) {
    const Cuts cuts{lowCut, highCut, range};
    if (const KelStatus fault = rangeFault(len, cuts, src, dst)) return fault;
    return normaliseSpan(src, dst, len, extremaOf(src, toSize(len)), cuts);
}

KelStatus kelsNormalizeInRange_16s_I(Kel16s* srcDst, int len, Kel32f lowCut, Kel32f highCut, Kel32f range) {
    const Cuts cuts{lowCut, highCut, range};
    if (const KelStatus fault = rangeFault(len, cuts, srcDst, srcDst)) return fault;
    return normaliseSpan(srcDst, srcDst, len, extremaOf(srcDst, toSize(len)), cuts);
}

KelStatus kelsNormalizeInRange_16s8u(const Kel16s* src, Kel8u* dst, int len, Kel32f lowCut, Kel32f highCut,
                                     Kel32f range) {
    const Cuts cuts{lowCut, highCut, range};
    if (const KelStatus fault = rangeFault(len, cuts, src, dst)) return fault;
    return normaliseSpan(src, dst, len, extremaOf(src, toSize(len)), cuts);
}

KelStatus kelsNormalizeInRange_32f16s(const Kel32f* src, Kel16s* dst, int len, Kel32f lowCut, Kel32f highCut,
                                      Kel32f range) {
    const Cuts cuts{lowCut, highCut, range};
    if (const KelStatus fault = rangeFault(len, cuts, src, dst)) return fault;
    return normaliseSpan(src, dst, len, extremaOf(src, toSize(len)), cuts);
}

KelStatus kelsNormalizeInRange_32f8u(const Kel32f* src, Kel8u* dst, int len, Kel32f lowCut, Kel32f highCut,
                                     Kel32f range) {
    const Cuts cuts{lowCut, highCut, range};
    if (const KelStatus fault = rangeFault(len, cuts, src, dst)) return fault;
    return normaliseSpan(src, dst, len, extremaOf(src, toSize(len)), cuts);
}

KelStatus kelsNormalizeInRangeMinMax_32f(const Kel32f* src, Kel32f* dst, int len, Kel32f valMin, Kel32f valMax,
                                         Kel32f lowCut, Kel32f highCut, Kel32f range) {
    const Cuts cuts{lowCut, highCut, range};
    if (const KelStatus fault = rangeFault(len, cuts, src, dst)) return fault;
    return normaliseSpan(src, dst, len, {valMin, valMax}, cuts);
}

KelStatus kelsNormalizeInRangeMinMax_32f_I(Kel32f* srcDst, int len, Kel32f valMin, Kel32f valMax, Kel32f lowCut,
                                           Kel32f highCut, Kel32f range) {
    const Cuts cuts{lowCut, highCut, range};
    if (const KelStatus fault = rangeFault(len, cuts, srcDst, srcDst)) return fault;
    return normaliseSpan(srcDst, srcDst, len, {valMin, valMax}, cuts);
}

KelStatus kelsNormalizeInRangeMinMax_16s(const Kel16s* src, Kel16s* dst, int len, Kel16s valMin, Kel16s valMax,
                                         Kel32f lowCut, Kel32f highCut, Kel32f range) {
    const Cuts cuts{lowCut, highCut, range};
    if (const KelStatus fault = rangeFault(len, cuts, src, dst)) return fault;
    return normaliseSpan(src, dst, len, {valMin, valMax}, cuts);
}

KelStatus kelsNormalizeInRangeMinMax_16s_I(Kel16s* srcDst, int len, Kel16s valMin, Kel16s valMax, Kel32f lowCut,
                                           Kel32f highCut, Kel32f range) {
    const Cuts cuts{lowCut, highCut, range};
    if (const KelStatus fault = rangeFault(len, cuts, srcDst, srcDst)) return fault;
    return normaliseSpan(srcDst, srcDst, len, {valMin, valMax}, cuts);
}

KelStatus kelsNormalizeInRangeMinMax_16s8u(const Kel16s* src, Kel8u* dst, int len, Kel16s valMin, Kel16s valMax,
                                           Kel32f lowCut, Kel32f highCut, Kel32f range) {
    const Cuts cuts{lowCut, highCut, range};
    if (const KelStatus fault = rangeFault(len, cuts, src, dst)) return fault;
    return normaliseSpan(src, dst, len, {valMin, valMax}, cuts);
}

KelStatus kelsNormalizeInRangeMinMax_32f16s(const Kel32f* src, Kel16s* dst, int len, Kel32f valMin, Kel32f valMax,
                                            Kel32f lowCut, Kel32f highCut, Kel32f range) {
    const Cuts cuts{lowCut, highCut, range};
    if (const KelStatus fault = rangeFault(len, cuts, src, dst)) return fault;
    return normaliseSpan(src, dst, len, {valMin, valMax}, cuts);
}

KelStatus kelsNormalizeInRangeMinMax_32f8u(const Kel32f* src, Kel8u* dst, int len, Kel32f valMin, Kel32f valMax,
                                           Kel32f lowCut, Kel32f highCut, Kel32f range) {
    const Cuts cuts{lowCut, highCut, range};
    if (const KelStatus fault = rangeFault(len, cuts, src, dst)) return fault;
    return normaliseSpan(src, dst, len, {valMin, valMax}, cuts);
}

KelStatus kelsUnitCurve_32f(const Kel32f* src, Kel32f* dst, int len) {
    if (const KelStatus fault = vectorFault(len, src, dst)) return fault;
    unitCurve(src, dst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsUnitCurve_32f_I(Kel32f* srcDst, int len) {
    if (const KelStatus fault = vectorFault(len, srcDst)) return fault;
    unitCurve(srcDst, srcDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsUnitCurve_16s_Sfs(const Kel16s* src, Kel16s* dst, int fracBits, int len, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, src, dst)) return fault;
    fixedUnitCurve(src, dst, len, fracBits, scaleFactor);
    return kelStatusOk;
}

KelStatus kelsUnitCurve_16s_ISfs(Kel16s* srcDst, int fracBits, int len, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, srcDst)) return fault;
    fixedUnitCurve(srcDst, srcDst, len, fracBits, scaleFactor);
    return kelStatusOk;
}
