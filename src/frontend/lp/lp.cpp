// Linear prediction of autocorrelations and of samples.
#include "kels/lp.h"

#include "core/check.h"
#include "core/memory.h"
#include "frontend/lp/recursion.h"
#include "frontend/lp/values.h"
#include "kels/core.h"
#include "kels/fft.h"

using namespace kels;

namespace {

using Recursion = LpSteps (*)(Kel64f* r, Kel64f* work, std::size_t order);

// The coefficients that the recursion has reached are stored in any case, the error only when it has come to the end.
template <class S, class D>
KelStatus recur(Recursion recursion, const S* src, const LpResult<D>& dst, int order, const LpResult<D>& error) {
    const std::size_t p = toSize(order);
    Scratch<Kel64f, 3 * kLpStackOrder> work(3 * (int64_t{order} + 1));
    if (work.failed()) return kelStatusNoMemory;
    Kel64f* const r = work.data();
    for (std::size_t i = 0; i <= p; ++i) r[i] = static_cast<Kel64f>(src[i]);
    const LpSteps steps = recursion(r, r + p + 1, p);
    for (std::size_t i = 1; i <= steps.done; ++i) dst.set(i - 1, steps.coefficients[i]);
    if (!steps.complete()) return kelStatusLpcCalc;
    if (error.data != nullptr) error.set(0, steps.error);
    return kelStatusOk;
}

// ---- autocorrelation method ----------------------------------------------------------------------------------------

KelStatus correlate(const Kel32f* src, int len, Kel32f* r, int lags) {
    return kelsAutoCorr_32f(src, len, r, lags);
}
KelStatus correlate(const Kel16s* src, int len, Kel32f* r, int lags) {
    for (int k = 0; k < lags; ++k) {
        if (k == len || kelsDotProd_16s32f(src, src + k, len - k, r + k) != kelStatusOk) r[k] = 0;
    }
    return kelStatusOk;
}

template <class T>
KelStatus predictByAutocorrelation(const T* src, int len, const LpResult<T>& dst, int order) {
    Scratch<Kel32f, kLpStackOrder> r(int64_t{order} + 1);
    if (r.failed()) return kelStatusNoMemory;
    const KelStatus status = correlate(src, len, r.data(), order + 1);
    if (status != kelStatusOk) return status;
    return recur(durbin, r.data(), dst, order, LpResult<T>{nullptr, 1});
}

// ---- covariance method ---------------------------------------------------------------------------------------------

Kel64f product(const Kel32f* a, const Kel32f* b, int len) {
    Kel64f sum = 0;
    kelsDotProd_32f64f(a, b, len, &sum);
    return sum;
}
Kel64f product(const Kel16s* a, const Kel16s* b, int len) {
    int64_t sum = 0;
    kelsDotProd_16s64s(a, b, len, &sum);
    return static_cast<Kel64f>(sum);
}

template <class T>
KelStatus predictByCovariance(const T* src, int len, const LpResult<T>& dst, int order) {
    const std::size_t p = toSize(order);
    const int64_t rows = int64_t{order} + 1;
    Scratch<Kel64f, 462> work(rows * (rows + 1));  // on the stack up to order 20
    if (work.failed()) return kelStatusNoMemory;
    Kel64f* const phi = work.data();
    Kel64f* const a = phi + (p + 1) * (p + 1);
    // The sums run over the len - order samples that have `order` samples before them; there may be none.
    for (int i = 0; i <= order; ++i) {
        phi[toSize(i) * (p + 1)] = len == order ? 0 : product(src + order, src + order - i, len - order);
    }
    fillCovariance(src, toSize(len), phi, p);
    if (!solveCovariance(phi, a, p)) return kelStatusLpcCalc;
    for (std::size_t i = 1; i <= p; ++i) dst.set(i - 1, a[i]);
    return kelStatusOk;
}

}  // namespace

// ---- from the autocorrelation --------------------------------------------------------------------------------------

KelStatus kelsDurbin_32f(const Kel32f* pSrc, Kel32f* pDst, int order, Kel32f* pErr) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (order < 1) return kelStatusSize;
    if (anyNull(pErr)) return kelStatusNullPtr;
    return recur(durbin, pSrc, floatResult(pDst), order, floatResult(pErr));
}
KelStatus kelsDurbin_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int order, Kel16s* pErr, int scaleFactor) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (order < 1) return kelStatusSize;
    if (anyNull(pErr)) return kelStatusNullPtr;
    const NearestScope nearest;
    return recur(durbin, pSrc, scaledResult(pDst, scaleFactor), order, scaledResult(pErr, scaleFactor));
}
KelStatus kelsSchur_32f(const Kel32f* pSrc, Kel32f* pDst, int order, Kel32f* pErr) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (order < 1) return kelStatusSize;
    if (anyNull(pErr)) return kelStatusNullPtr;
    return recur(schur, pSrc, floatResult(pDst), order, floatResult(pErr));
}
KelStatus kelsSchur_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int order, Kel16s* pErr, int scaleFactor) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (order < 1) return kelStatusSize;
    if (anyNull(pErr)) return kelStatusNullPtr;
    const NearestScope nearest;
    return recur(schur, pSrc, q15Result(pDst), order, scaledResult(pErr, scaleFactor));
}

// ---- from samples --------------------------------------------------------------------------------------------------

KelStatus kelsLinearPrediction_Auto_32f(const Kel32f* pSrc, int len, Kel32f* pDst, int order) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1 || order < 1 || order > len) return kelStatusSize;
    return predictByAutocorrelation(pSrc, len, floatResult(pDst), order);
}
KelStatus kelsLinearPrediction_Auto_16s_Sfs(const Kel16s* pSrc, int len, Kel16s* pDst, int order, int scaleFactor) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1 || order < 1 || order > len) return kelStatusSize;
    const NearestScope nearest;
    return predictByAutocorrelation(pSrc, len, scaledResult(pDst, scaleFactor), order);
}
KelStatus kelsLinearPredictionNeg_Auto_32f(const Kel32f* pSrc, int len, Kel32f* pDst, int order) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1 || order < 1 || order > len) return kelStatusSize;
    return predictByAutocorrelation(pSrc, len, negated(floatResult(pDst)), order);
}
KelStatus kelsLinearPredictionNeg_Auto_16s_Sfs(const Kel16s* pSrc, int len, Kel16s* pDst, int order, int scaleFactor) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1 || order < 1 || order > len) return kelStatusSize;
    const NearestScope nearest;
    return predictByAutocorrelation(pSrc, len, negated(scaledResult(pDst, scaleFactor)), order);
}
KelStatus kelsLinearPrediction_Cov_32f(const Kel32f* pSrc, int len, Kel32f* pDst, int order) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1 || order < 1 || order > len) return kelStatusSize;
    return predictByCovariance(pSrc, len, floatResult(pDst), order);
}
KelStatus kelsLinearPrediction_Cov_16s_Sfs(const Kel16s* pSrc, int len, Kel16s* pDst, int order, int scaleFactor) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1 || order < 1 || order > len) return kelStatusSize;
    const NearestScope nearest;
    return predictByCovariance(pSrc, len, scaledResult(pDst, scaleFactor), order);
}
