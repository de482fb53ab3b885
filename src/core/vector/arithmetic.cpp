// Entry points: element-wise arithmetic.
#include "core/vector/arithmetic.h"

#include "core/check.h"
#include "kels/core.h"

using namespace kels;

KelStatus kelsAdd_32f_I(const Kel32f* pSrc, Kel32f* pSrcDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pSrcDst)) return fault;
    add(pSrc, pSrcDst, pSrcDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsAdd_64f_I(const Kel64f* pSrc, Kel64f* pSrcDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pSrcDst)) return fault;
    add(pSrc, pSrcDst, pSrcDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsAddC_32f(const Kel32f* pSrc, Kel32f val, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    addConstant(pSrc, val, pDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsSub_32f(const Kel32f* pSrc1, const Kel32f* pSrc2, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc1, pSrc2, pDst)) return fault;
    subtract(pSrc2, pSrc1, pDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsSub_64f(const Kel64f* pSrc1, const Kel64f* pSrc2, Kel64f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc1, pSrc2, pDst)) return fault;
    subtract(pSrc2, pSrc1, pDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsSub_16s(const Kel16s* pSrc1, const Kel16s* pSrc2, Kel16s* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc1, pSrc2, pDst)) return fault;
    subtractSaturated(pSrc1, pSrc2, pDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsSub_32f_I(const Kel32f* pSrc, Kel32f* pSrcDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pSrcDst)) return fault;
    subtract(pSrcDst, pSrc, pSrcDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsSub_64f_I(const Kel64f* pSrc, Kel64f* pSrcDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pSrcDst)) return fault;
    subtract(pSrcDst, pSrc, pSrcDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsMul_32f(const Kel32f* pSrc1, const Kel32f* pSrc2, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc1, pSrc2, pDst)) return fault;
    multiply(pSrc1, pSrc2, pDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsMul_16s_Sfs(const Kel16s* pSrc1, const Kel16s* pSrc2, Kel16s* pDst, int len, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc1, pSrc2, pDst)) return fault;
    multiplyScaled(pSrc1, pSrc2, pDst, toSize(len), scaleFactor);
    return kelStatusOk;
}

KelStatus kelsMulC_32f(const Kel32f* pSrc, Kel32f val, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    multiplyByConstant(pSrc, val, pDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsMulC_64f(const Kel64f* pSrc, Kel64f val, Kel64f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    multiplyByConstant(pSrc, val, pDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsMulC_32f_I(Kel32f val, Kel32f* pSrcDst, int len) {
    return kelsMulC_32f(pSrcDst, val, pSrcDst, len);
}

KelStatus kelsMulC_64f_I(Kel64f val, Kel64f* pSrcDst, int len) {
    return kelsMulC_64f(pSrcDst, val, pSrcDst, len);
}

KelStatus kelsDiv_32f(const Kel32f* pSrc1, const Kel32f* pSrc2, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc1, pSrc2, pDst)) return fault;
    return divide(pSrc1, pSrc2, pDst, toSize(len));
}

KelStatus kelsDiv_64f(const Kel64f* pSrc1, const Kel64f* pSrc2, Kel64f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc1, pSrc2, pDst)) return fault;
    return divide(pSrc1, pSrc2, pDst, toSize(len));
}

KelStatus kelsDivC_32f(const Kel32f* pSrc, Kel32f val, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    if (val == 0 || val != val) return kelStatusDivByZeroErr;
    multiplyByConstant(pSrc, 1 / val, pDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsDivC_32f_I(Kel32f val, Kel32f* pSrcDst, int len) {
    return kelsDivC_32f(pSrcDst, val, pSrcDst, len);
}

KelStatus kelsDivC_64f(const Kel64f* pSrc, Kel64f val, Kel64f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    if (val == 0 || val != val) return kelStatusDivByZeroErr;
    multiplyByConstant(pSrc, 1 / val, pDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsDivC_64f_I(Kel64f val, Kel64f* pSrcDst, int len) {
    return kelsDivC_64f(pSrcDst, val, pSrcDst, len);
}

KelStatus kelsMaxEvery_32f_I(const Kel32f* pSrc, Kel32f* pSrcDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pSrcDst)) return fault;
    keepGreater(pSrc, pSrcDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsMinEvery_32f_I(const Kel32f* pSrc, Kel32f* pSrcDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pSrcDst)) return fault;
    keepLesser(pSrc, pSrcDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsMinEvery_32s_I(const Kel32s* pSrc, Kel32s* pSrcDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pSrcDst)) return fault;
    keepLesser(pSrc, pSrcDst, toSize(len));
    return kelStatusOk;
}
