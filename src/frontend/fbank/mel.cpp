// Conversions between frequencies and mel.
#include "frontend/fbank/mel.h"

#include "core/check.h"
#include "kels/fbank.h"

using namespace kels;
using namespace kels::fbank;

namespace {

KelStatus melFault(int len, Kel32f melMul, Kel32f melDiv, const void* pSrc, const void* pDst) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1 || !(melMul > 0) || !(melDiv > 0)) return kelStatusSize;
    return kelStatusOk;
}

}  // namespace

KelStatus kelsLinearToMel_32f(const Kel32f* pSrc, Kel32f* pDst, int len, Kel32f melMul, Kel32f melDiv) {
    if (const KelStatus fault = melFault(len, melMul, melDiv, pSrc, pDst)) return fault;
    linearToMel(pSrc, pDst, toSize(len), melMul, melDiv);
    return kelStatusOk;
}

KelStatus kelsMelToLinear_32f(const Kel32f* pSrc, Kel32f* pDst, int len, Kel32f melMul, Kel32f melDiv) {
    if (const KelStatus fault = melFault(len, melMul, melDiv, pSrc, pDst)) return fault;
    melToLinear(pSrc, pDst, toSize(len), melMul, melDiv);
    return kelStatusOk;
}
