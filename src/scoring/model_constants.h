// The constants of diagonal Gaussians and of their mixtures.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "core/constants.h"
#include "core/scaling.h"
#include "core/simd/elementary.h"
#include "core/simd/in_order.h"
#include "core/simd/vec.h"
#include "core/variance_form.h"
#include "core/vector/convert.h"

namespace kels::scoring {

// len * ln(2 pi) plus or minus (for inverse variances) the logarithms, summed in order in double precision.  The first
// value without a logarithm decides what is stored instead, and the status.
template <VarianceForm form, class T>
KelStatus logDeterminant(const T* v, std::size_t len, T* pDet) {
    for (std::size_t i = 0; i < len; ++i) {
        if (std::fabs(v[i]) < std::numeric_limits<T>::min()) {
            *pDet = std::numeric_limits<T>::infinity();
            return kelStatusLogZero;
        }
        if (v[i] < 0) {
            *pDet = std::numeric_limits<T>::quiet_NaN();
            return kelStatusLogNegative;
        }
    }
    Kel64f det = static_cast<Kel64f>(len) * kLn2PiOfModels;
    constexpr std::size_t kChunk = 128;
    alignas(64) Kel64f logs[kChunk];
    const auto logarithms = [](const Vec<Kel64f>& x) { return logarithm(x); };
    const NearestScope scope;
    for (std::size_t i = 0; i < len; i += kChunk) {
        const std::size_t n = std::min(kChunk, len - i);
        convertWidening(v + i, logs, n);
        map(logs, n, logarithms, 1.0, logs);
        for (std::size_t k = 0; k < n; ++k) det += form == VarianceForm::Direct ? logs[k] : -logs[k];
    }
    *pDet = static_cast<T>(det);
    return kelStatusOk;
}

// gConst = logWeight - det / 2, element after element wherever gConst overlaps the others.
template <class T>
void gaussianConstants(const T* logWeight, const T* det, T* gConst, std::size_t len) {
    const auto constant = [](const Vec<T>& w, const Vec<T>& x) { return w + x * T(-0.5); };
    mapInOrder(gConst, len, constant, T(), logWeight, det);
}
// Half the determinant term is rounded upward.
inline void gaussianConstants(const Kel32s* logWeight, const Kel32s* det, Kel32s* gConst, std::size_t len) {
    for (std::size_t i = 0; i < len; ++i) {
        gConst[i] = saturate<Kel32s>(int64_t{logWeight[i]} - shiftFloor(int64_t{det[i]} + 1, 1));
    }
}

}  // namespace kels::scoring
