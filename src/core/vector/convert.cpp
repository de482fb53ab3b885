// Entry points: conversions between types of elements.
#include "core/vector/convert.h"

#include "core/check.h"
#include "kels/core.h"

using namespace kels;

KelStatus kelsConvert_8u32f(const Kel8u* pSrc, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    convertWidening(pSrc, pDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsConvert_16s32f(const Kel16s* pSrc, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    convertWidening(pSrc, pDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsConvert_32s32f(const Kel32s* pSrc, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    const NearestScope scope;
    convertWidening(pSrc, pDst, toSize(len));
    return kelStatusOk;
}

// Within these ranges no product overflows, and the multiplier is a normal number.
KelStatus kelsConvert_16s32f_Sfs(const Kel16s* pSrc, Kel32f* pDst, int len, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    const auto multiplier = static_cast<Kel32f>(scaleMultiplier(scaleFactor, -112, 126));
    const NearestScope scope;
    convertScaledUp(pSrc, pDst, toSize(len), multiplier);
    return kelStatusOk;
}

KelStatus kelsConvert_32s32f_Sfs(const Kel32s* pSrc, Kel32f* pDst, int len, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    const auto multiplier = static_cast<Kel32f>(scaleMultiplier(scaleFactor, -96, 126));
    const NearestScope scope;
    convertScaledUp(pSrc, pDst, toSize(len), multiplier);
    return kelStatusOk;
}

KelStatus kelsConvert_16s64f_Sfs(const Kel16s* pSrc, Kel64f* pDst, int len, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    const Kel64f multiplier = scaleMultiplier(scaleFactor, -1008, 1022);
    const NearestScope scope;
    convertScaledUp(pSrc, pDst, toSize(len), multiplier);
    return kelStatusOk;
}

KelStatus kelsConvert_32f16s_Sfs(const Kel32f* pSrc, Kel16s* pDst, int len, int rndMode, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    convertToIntByMode(pSrc, pDst, toSize(len), rndMode, scaleFactor);
    return kelStatusOk;
}

KelStatus kelsConvert_32f32s_Sfs(const Kel32f* pSrc, Kel32s* pDst, int len, int rndMode, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    convertToIntByMode(pSrc, pDst, toSize(len), rndMode, scaleFactor);
    return kelStatusOk;
}

KelStatus kelsConvert_64f32s_Sfs(const Kel64f* pSrc, Kel32s* pDst, int len, int rndMode, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    convertToIntByMode(pSrc, pDst, toSize(len), rndMode, scaleFactor);
    return kelStatusOk;
}

KelStatus kelsConvert_32s16s_Sfs(const Kel32s* pSrc, Kel16s* pDst, int len, int scaleFactor) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    narrowScaled(pSrc, pDst, toSize(len), scaleFactor);
    return kelStatusOk;
}

KelStatus kelsConvert_64f32f(const Kel64f* pSrc, Kel32f* pDst, int len) {
    if (const KelStatus fault = vectorFault(len, pSrc, pDst)) return fault;
    narrowToFloat(pSrc, pDst, toSize(len));
    return kelStatusOk;
}
