#include "resample/kernel_functions.h"

#include "core/check.h"
#include "kels/rank.h"

using namespace kels;

KelStatus kelsSinC_32f(const Kel32f* src, Kel32f* dst, int len) {
    if (anyNull(src, dst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    sinc(src, dst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsSinC_32f_I(Kel32f* srcDst, int len) {
    return kelsSinC_32f(srcDst, srcDst, len);
}

KelStatus kelsSinC_64f(const Kel64f* src, Kel64f* dst, int len) {
    if (anyNull(src, dst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    sinc(src, dst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsSinC_64f_I(Kel64f* srcDst, int len) {
    return kelsSinC_64f(srcDst, srcDst, len);
}

KelStatus kelsSinC_32f64f(const Kel32f* src, Kel64f* dst, int len) {
    if (anyNull(src, dst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    sinc(src, dst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsExpNegSqr_32f(const Kel32f* src, Kel32f* dst, int len) {
    if (anyNull(src, dst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    gaussian(src, dst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsExpNegSqr_32f_I(Kel32f* srcDst, int len) {
    return kelsExpNegSqr_32f(srcDst, srcDst, len);
}

KelStatus kelsExpNegSqr_64f(const Kel64f* src, Kel64f* dst, int len) {
    if (anyNull(src, dst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    gaussian(src, dst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsExpNegSqr_64f_I(Kel64f* srcDst, int len) {
    return kelsExpNegSqr_64f(srcDst, srcDst, len);
}

KelStatus kelsExpNegSqr_32f64f(const Kel32f* src, Kel64f* dst, int len) {
    if (anyNull(src, dst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    gaussian(src, dst, toSize(len));
    return kelStatusOk;
}
