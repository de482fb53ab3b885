// Logarithms and the exponential of vectors: of floats (kels/features.h), and logarithms of integers (kels/core.h).
#include "core/vector/logarithms.h"

#include "core/check.h"
#include "core/scaling.h"
#include "core/simd/elementary.h"
#include "core/simd/map.h"
#include "kels/core.h"
#include "kels/features.h"

namespace kels {
namespace {

// The warning of a logarithm: the first element that has none decides.
template <class T>
KelStatus logarithmWarning(const T* src, std::size_t len) {
    std::size_t i = 0;
    for (; i + lanes<T> <= len; i += lanes<T>) {
        if (stdx::any_of(load(src + i) <= T(0))) break;
    }
    while (i < len && !(src[i] <= T(0))) ++i;
    if (i == len) return kelStatusOk;
    return src[i] == T(0) ? kelStatusLogZero : kelStatusLogNegative;
}

template <class T>
KelStatus naturalLogarithms(const T* src, T* dst, std::size_t len) {
    const NearestScope nearest;
    const KelStatus warning = logarithmWarning(src, len);
    const auto logarithmOf = [](const Vec<T>& x) { return logarithm(x); };
    map(dst, len, logarithmOf, T(1), src);
    return warning;
}

template <class T>
KelStatus decimalLogarithms(const T* src, T* dst, std::size_t len) {
    const NearestScope nearest;
    const KelStatus warning = logarithmWarning(src, len);
    const auto logarithmOf = [](const Vec<T>& x) { return logarithm10(x); };
    map(dst, len, logarithmOf, T(1), src);
    return warning;
}

template <class T>
void exponentials(const T* src, T* dst, std::size_t len) {
    const NearestScope nearest;
    const auto exponentialOf = [](const Vec<T>& x) { return exponential(x); };
    map(dst, len, exponentialOf, T(0), src);
}

}  // namespace
}  // namespace kels

using namespace kels;

KelStatus kelsLn_32f(const Kel32f* pSrc, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    return naturalLogarithms(pSrc, pDst, toSize(len));
}
KelStatus kelsLn_64f(const Kel64f* pSrc, Kel64f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    return naturalLogarithms(pSrc, pDst, toSize(len));
}
KelStatus kelsLn_32f_I(Kel32f* pSrcDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrcDst)) return fault;
    return naturalLogarithms(pSrcDst, pSrcDst, toSize(len));
}
KelStatus kelsLn_64f_I(Kel64f* pSrcDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrcDst)) return fault;
    return naturalLogarithms(pSrcDst, pSrcDst, toSize(len));
}

KelStatus kelsLog10_32f(const Kel32f* pSrc, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    return decimalLogarithms(pSrc, pDst, toSize(len));
}
KelStatus kelsLog10_64f(const Kel64f* pSrc, Kel64f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    return decimalLogarithms(pSrc, pDst, toSize(len));
}
KelStatus kelsLog10_32f_I(Kel32f* pSrcDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrcDst)) return fault;
    return decimalLogarithms(pSrcDst, pSrcDst, toSize(len));
}
KelStatus kelsLog10_64f_I(Kel64f* pSrcDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrcDst)) return fault;
    return decimalLogarithms(pSrcDst, pSrcDst, toSize(len));
}

KelStatus kelsExp_32f(const Kel32f* pSrc, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    exponentials(pSrc, pDst, toSize(len));
    return kelStatusOk;
}
KelStatus kelsExp_64f(const Kel64f* pSrc, Kel64f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    exponentials(pSrc, pDst, toSize(len));
    return kelStatusOk;
}
KelStatus kelsExp_32f_I(Kel32f* pSrcDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrcDst)) return fault;
    exponentials(pSrcDst, pSrcDst, toSize(len));
    return kelStatusOk;
}
KelStatus kelsExp_64f_I(Kel64f* pSrcDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrcDst)) return fault;
    exponentials(pSrcDst, pSrcDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsLn_32s_Sfs(const Kel32s* pSrc, Kel32s* pDst, int len, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    return integerLogarithm(pSrc, pDst, toSize(len), scaleFactor);
}
KelStatus kelsLn_32s_ISfs(Kel32s* pSrcDst, int len, int scaleFactor) {
    return kelsLn_32s_Sfs(pSrcDst, pSrcDst, len, scaleFactor);
}
