// Entry points: dot products, sums and extrema.
#include <cstring>

#include "core/check.h"
#include "core/scaling.h"
#include "core/simd/accurate_sum.h"
#include "core/vector/extrema.h"
#include "core/vector/reductions.h"
#include "kels/core.h"

using namespace kels;

namespace {

// For arrays that are not even aligned to their elements.
Kel32f misalignedSum(const Kel32f* src, std::size_t len) {
    long double sum = 0;
    const char* bytes = reinterpret_cast<const char*>(src);
    for (std::size_t i = 0; i < len; ++i, bytes += sizeof(Kel32f)) {
        Kel32f x;
        std::memcpy(&x, bytes, sizeof(x));
        sum += x;
    }
    return static_cast<Kel32f>(sum);
}

}  // namespace

KelStatus kelsDotProd_32f(const Kel32f* pSrc1, const Kel32f* pSrc2, int len, Kel32f* pDp) {
    if (const KelStatus fault = vectorFault(len, pSrc1, pSrc2, pDp)) return fault;
    *pDp = roundedSum(FloatProducts{pSrc1, pSrc2}, toSize(len));
    return kelStatusOk;
}

KelStatus kelsDotProd_64f(const Kel64f* pSrc1, const Kel64f* pSrc2, int len, Kel64f* pDp) {
    if (const KelStatus fault = vectorFault(len, pSrc1, pSrc2, pDp)) return fault;
    *pDp = static_cast<Kel64f>(extendedSum(DoubleProducts{pSrc1, pSrc2}, toSize(len)));
    return kelStatusOk;
}

KelStatus kelsDotProd_32f64f(const Kel32f* pSrc1, const Kel32f* pSrc2, int len, Kel64f* pDp) {
    if (const KelStatus fault = vectorFault(len, pSrc1, pSrc2, pDp)) return fault;
    *pDp = static_cast<Kel64f>(extendedSum(FloatProducts{pSrc1, pSrc2}, toSize(len)));
    return kelStatusOk;
}

KelStatus kelsDotProd_16s64s(const Kel16s* pSrc1, const Kel16s* pSrc2, int len, int64_t* pDp) {
    if (const KelStatus fault = vectorFault(len, pSrc1, pSrc2, pDp)) return fault;
    *pDp = integerDot(pSrc1, pSrc2, toSize(len));
    return kelStatusOk;
}

KelStatus kelsDotProd_16s32f(const Kel16s* pSrc1, const Kel16s* pSrc2, int len, Kel32f* pDp) {
    if (const KelStatus fault = vectorFault(len, pSrc1, pSrc2, pDp)) return fault;
    const NearestScope scope;
    *pDp = static_cast<Kel32f>(integerDot(pSrc1, pSrc2, toSize(len)));
    return kelStatusOk;
}

KelStatus kelsSum_32f(const Kel32f* pSrc, int len, Kel32f* pSum, int hint) {
    if (const KelStatus fault = vectorFault(len, pSrc, pSum)) return fault;
    if (reinterpret_cast<uintptr_t>(pSrc) % sizeof(Kel32f) != 0) {
        *pSum = misalignedSum(pSrc, toSize(len));
    } else if (hint == kelHintFast) {
        *pSum = fastSum(pSrc, toSize(len));
    } else {
        *pSum = roundedSum(Elements<Kel32f>{pSrc}, toSize(len));
    }
    return kelStatusOk;
}

KelStatus kelsSum_32s_Sfs(const Kel32s* pSrc, int len, Kel32s* pSum, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pSum)) return fault;
    *pSum = scaleHalfEven<Kel32s>(integerSum(pSrc, toSize(len)), scaleFactor);
    return kelStatusOk;
}

KelStatus kelsSum_16s32s_Sfs(const Kel16s* pSrc, int len, Kel32s* pSum, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pSum)) return fault;
    *pSum = scaleHalfEven<Kel32s>(integerSum(pSrc, toSize(len)), scaleFactor);
    return kelStatusOk;
}

KelStatus kelsMax_32f(const Kel32f* pSrc, int len, Kel32f* pMax) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMax)) return fault;
    *pMax = extremum<Greatest>(pSrc, toSize(len));
    return kelStatusOk;
}

KelStatus kelsMax_64f(const Kel64f* pSrc, int len, Kel64f* pMax) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMax)) return fault;
    *pMax = extremum<Greatest>(pSrc, toSize(len));
    return kelStatusOk;
}

KelStatus kelsMin_32f(const Kel32f* pSrc, int len, Kel32f* pMin) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMin)) return fault;
    *pMin = extremum<Least>(pSrc, toSize(len));
    return kelStatusOk;
}

KelStatus kelsMin_64f(const Kel64f* pSrc, int len, Kel64f* pMin) {
    if (const KelStatus fault = vectorFault(len, pSrc, pMin)) return fault;
    *pMin = extremum<Least>(pSrc, toSize(len));
    return kelStatusOk;
}

KelStatus kelsMaxIndx_32f(const Kel32f* pSrc, int len, Kel32f* pMax, int* pIndx) {
    if (pIndx == nullptr) return kelsMax_32f(pSrc, len, pMax);
    if (const KelStatus fault = vectorFault(len, pSrc, pMax)) return fault;
    const Place<Kel32f> place = extremumPlace<Greatest>(pSrc, toSize(len));
    *pMax = place.value;
    *pIndx = static_cast<int>(place.index);
    return kelStatusOk;
}

KelStatus kelsMaxIndx_64f(const Kel64f* pSrc, int len, Kel64f* pMax, int* pIndx) {
    if (pIndx == nullptr) return kelsMax_64f(pSrc, len, pMax);
    if (const KelStatus fault = vectorFault(len, pSrc, pMax)) return fault;
    const Place<Kel64f> place = extremumPlace<Greatest>(pSrc, toSize(len));
    *pMax = place.value;
    *pIndx = static_cast<int>(place.index);
    return kelStatusOk;
}
