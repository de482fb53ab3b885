// Entry points of the kernel functions of interpolation and of windows.
#include "resample/kernel_functions.h"

#include "core/check.h"
#include "kels/rank.h"

using namespace kels;
using namespace kels::resample;

KelStatus kelsSinC_32f(const Kel32f* src, Kel32f* dst, int len) {
    if (const KelStatus fault = vectorFault(len, src, dst)) return fault;
    sinc(src, dst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsSinC_32f_I(Kel32f* srcDst, int len) {
    if (const KelStatus fault = vectorFault(len, srcDst)) return fault;
    sinc(srcDst, srcDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsSinC_64f(const Kel64f* src, Kel64f* dst, int len) {
    if (const KelStatus fault = vectorFault(len, src, dst)) return fault;
    sinc(src, dst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsSinC_64f_I(Kel64f* srcDst, int len) {
    if (const KelStatus fault = vectorFault(len, srcDst)) return fault;
    sinc(srcDst, srcDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsSinC_32f64f(const Kel32f* src, Kel64f* dst, int len) {
    if (const KelStatus fault = vectorFault(len, src, dst)) return fault;
    sinc(src, dst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsExpNegSqr_32f(const Kel32f* src, Kel32f* dst, int len) {
    if (const KelStatus fault = vectorFault(len, src, dst)) return fault;
    gaussian(src, dst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsExpNegSqr_32f_I(Kel32f* srcDst, int len) {
    if (const KelStatus fault = vectorFault(len, srcDst)) return fault;
    gaussian(srcDst, srcDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsExpNegSqr_64f(const Kel64f* src, Kel64f* dst, int len) {
    if (const KelStatus fault = vectorFault(len, src, dst)) return fault;
    gaussian(src, dst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsExpNegSqr_64f_I(Kel64f* srcDst, int len) {
    if (const KelStatus fault = vectorFault(len, srcDst)) return fault;
    gaussian(srcDst, srcDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsExpNegSqr_32f64f(const Kel32f* src, Kel64f* dst, int len) {
    if (const KelStatus fault = vectorFault(len, src, dst)) return fault;
    gaussian(src, dst, toSize(len));
    return kelStatusOk;
}
