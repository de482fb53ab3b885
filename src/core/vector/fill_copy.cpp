// Entry points: fill, clear, copy and move.
#include "core/vector/fill_copy.h"

#include "core/check.h"
#include "kels/core.h"

using namespace kels;

KelStatus kelsSet_8u(Kel8u val, Kel8u* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pDst)) return fault;
    fill(pDst, toSize(len), val);
    return kelStatusOk;
}

KelStatus kelsSet_16s(Kel16s val, Kel16s* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pDst)) return fault;
    fill(pDst, toSize(len), val);
    return kelStatusOk;
}

KelStatus kelsSet_32s(Kel32s val, Kel32s* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pDst)) return fault;
    fill(pDst, toSize(len), val);
    return kelStatusOk;
}

KelStatus kelsSet_32f(Kel32f val, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pDst)) return fault;
    fill(pDst, toSize(len), val);
    return kelStatusOk;
}

KelStatus kelsSet_64f(Kel64f val, Kel64f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pDst)) return fault;
    fill(pDst, toSize(len), val);
    return kelStatusOk;
}

KelStatus kelsZero_8u(Kel8u* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pDst)) return fault;
    zero(pDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsZero_16s(Kel16s* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pDst)) return fault;
    zero(pDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsZero_32f(Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pDst)) return fault;
    zero(pDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsZero_64f(Kel64f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pDst)) return fault;
    zero(pDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsCopy_8u(const Kel8u* pSrc, Kel8u* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    copy(pSrc, pDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsCopy_16s(const Kel16s* pSrc, Kel16s* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    copy(pSrc, pDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsCopy_32f(const Kel32f* pSrc, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    copy(pSrc, pDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsCopy_64f(const Kel64f* pSrc, Kel64f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    copy(pSrc, pDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsMove_32f(const Kel32f* pSrc, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    copy(pSrc, pDst, toSize(len));
    return kelStatusOk;
}
